#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace OracleCloudSDKWrapper {

class StringUtil {
public:
    // Splits at every occurrence of sep, keeping empty parts ("/a/b" gives "", "a",
    // "b"). An empty text gives no parts.
    static std::vector<std::string> Split(const std::string& text, char sep);
    // Removes every character of `chars` from both ends.
    static std::string Trim(const std::string& text, const char* chars = " \t\r\n");
    // Position of needle in haystack compared without regard to ASCII case, or npos.
    static size_t FindNoCase(const std::string& haystack, const std::string& needle, size_t from = 0);
    static std::string Format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
};

class PathUtil {
public:
    // Joins with exactly one '/' between the parts; an empty part is skipped.
    static std::string Join(const std::string& a, const std::string& b);
};

class FileUtil {
public:
    // Reads the whole file. On failure returns false and puts the OS error text
    // (strerror) into `error`.
    static bool ReadFile(const std::string& path, std::string& contents, std::string& error);
};

// Sleeps on the caller's thread.
void PlatformSleep(unsigned long milliseconds);

}  // namespace OracleCloudSDKWrapper
