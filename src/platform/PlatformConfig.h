#pragma once
#include <string>

namespace OracleCloudSDKWrapper {

// The agent's INI configuration ("[VirtualServer]", "[Base]", ...). The file is
// the one set by the host program, else the one named by OCW_CONFIG; with
// neither, or when a key is absent, every getter returns the caller's default.
// The parsed file is cached process-wide and guarded, so many facades on many
// threads may read it; setConfigFile() (or reload()) re-reads it.
//
// Syntax: "[Section]" headers, "key = value" lines, whole-line comments starting
// with ';' or '#'. Names and values are trimmed; section and key names match
// without regard to case; a later duplicate key wins. Keys before the first
// section header belong to the section "". A value is taken as written (no
// inline comments, no quote removal), so it may contain ';', '#' and '='.
class PlatformConfig {
public:
    static void setConfigFile(const std::string& path);
    static std::string getConfigFile();
    static void reload();
    // Counts (re)loads, so callers may cache a derived value and notice changes.
    static unsigned long generation();

    // Integer value of section/key; a value that is not a number keeps the default.
    static long long getNumber(const std::string& section, const std::string& key, long long def);
    // Value with blanks, tabs and line ends trimmed from both ends.
    static std::string getStringTrim(const std::string& section, const std::string& key,
                                     const std::string& def = std::string());
    // Like getStringTrim, with trailing '/' removed (the root "/" stays).
    static std::string getDirectory(const std::string& section, const std::string& key,
                                    const std::string& def = std::string());
};

}  // namespace OracleCloudSDKWrapper
