#include "platform/StringUtil.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <thread>

namespace OracleCloudSDKWrapper {
namespace {

char LowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

// strerror() is not thread-safe; the GNU strerror_r returns the text to use.
std::string ErrorText(int err) {
    char buf[256];
    return strerror_r(err, buf, sizeof(buf));
}

}  // namespace

std::vector<std::string> StringUtil::Split(const std::string& text, char sep) {
    std::vector<std::string> parts;
    if (text.empty()) return parts;
    size_t start = 0;
    while (true) {
        size_t pos = text.find(sep, start);
        if (pos == std::string::npos) {
            parts.push_back(text.substr(start));
            break;
        }
        parts.push_back(text.substr(start, pos - start));
        start = pos + 1;
    }
    return parts;
}

std::string StringUtil::Trim(const std::string& text, const char* chars) {
    if (!chars) chars = " \t\r\n";
    size_t first = text.find_first_not_of(chars);
    if (first == std::string::npos) return std::string();
    size_t last = text.find_last_not_of(chars);
    return text.substr(first, last - first + 1);
}

size_t StringUtil::FindNoCase(const std::string& haystack, const std::string& needle, size_t from) {
    if (from > haystack.size() || needle.size() > haystack.size() - from) return std::string::npos;
    for (size_t i = from; i + needle.size() <= haystack.size(); ++i) {
        size_t j = 0;
        while (j < needle.size() && LowerAscii(haystack[i + j]) == LowerAscii(needle[j])) ++j;
        if (j == needle.size()) return i;
    }
    return std::string::npos;
}

std::string StringUtil::Format(const char* fmt, ...) {
    if (!fmt) return std::string();
    va_list args;
    va_start(args, fmt);
    va_list copy;
    va_copy(copy, args);
    int needed = std::vsnprintf(nullptr, 0, fmt, copy);
    va_end(copy);
    std::string out;
    if (needed > 0) {
        out.resize(static_cast<size_t>(needed) + 1);
        std::vsnprintf(&out[0], out.size(), fmt, args);
        out.resize(static_cast<size_t>(needed));
    }
    va_end(args);
    return out;
}

std::string PathUtil::Join(const std::string& a, const std::string& b) {
    if (a.empty()) return b;
    if (b.empty()) return a;
    size_t end = a.find_last_not_of('/');
    std::string head = (end == std::string::npos) ? std::string() : a.substr(0, end + 1);
    size_t start = b.find_first_not_of('/');
    std::string tail = (start == std::string::npos) ? std::string() : b.substr(start);
    return head + "/" + tail;
}

bool FileUtil::ReadFile(const std::string& path, std::string& contents, std::string& error) {
    contents.clear();
    error.clear();
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = ErrorText(errno);
        return false;
    }
    struct stat st {};
    if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
        ::close(fd);
        error = ErrorText(EISDIR);
        return false;
    }
    char buf[65536];
    while (true) {
        ssize_t n = ::read(fd, buf, sizeof(buf));
        if (n > 0) {
            contents.append(buf, static_cast<size_t>(n));
        } else if (n == 0) {
            break;
        } else if (errno != EINTR) {
            error = ErrorText(errno);
            ::close(fd);
            contents.clear();
            return false;
        }
    }
    ::close(fd);
    return true;
}

void PlatformSleep(unsigned long milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace OracleCloudSDKWrapper
