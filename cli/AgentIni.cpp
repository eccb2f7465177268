#include "AgentIni.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "OciConfigFile.h"

namespace ocw {

namespace {

std::string Trim(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return std::string();
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool EqualNoCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
               return std::tolower(x) == std::tolower(y);
           });
}

// Same reading rules as the library: sections and keys without regard to
// case, whole-line comments, a later duplicate wins.
bool ReadValue(const std::string& path, const char* key, std::string& value) {
    std::ifstream in(path);
    std::string line;
    bool inSection = false;
    bool found = false;
    while (std::getline(in, line)) {
        line = Trim(line);
        if (line.empty() || line[0] == ';' || line[0] == '#') continue;
        if (line.front() == '[' && line.back() == ']') {
            inSection = EqualNoCase(Trim(line.substr(1, line.size() - 2)), "VirtualServer");
            continue;
        }
        const size_t eq = line.find('=');
        if (!inSection || eq == std::string::npos || !EqualNoCase(Trim(line.substr(0, eq)), key)) continue;
        value = Trim(line.substr(eq + 1));
        found = true;
    }
    return found;
}

// Values that are not numbers keep the default.
void ReadNumber(const std::string& path, const char* key, long long& value) {
    std::string text;
    if (!ReadValue(path, key, text)) return;
    char* end = nullptr;
    const long long parsed = std::strtoll(text.c_str(), &end, 10);
    if (!text.empty() && end != nullptr && *end == '\0' && parsed >= 0) value = parsed;
}

}  // namespace

bool AgentIni::locate(const std::string& given, std::string& error) {
    std::string file = given;
    if (file.empty()) {
        const char* env = std::getenv("OCW_CONFIG");
        if (env != nullptr) file = env;
    }
    if (file.empty()) {
        path.clear();
        return true;
    }
    file = OciConfigFile::ExpandHome(file);
    if (file[0] != '/') {
        char cwd[4096];
        if (::getcwd(cwd, sizeof cwd) != nullptr) file = std::string(cwd) + "/" + file;
    }
    if (::access(file.c_str(), R_OK) != 0) {
        error = "cannot read the agent configuration file " + file;
        return false;
    }
    path = file;
    ::setenv("OCW_CONFIG", path.c_str(), 1);
    ReadNumber(path, "nOCIOperationWaitTime", waitSeconds);
    ReadNumber(path, "nOCIOperationTimeout", timeoutSeconds);
    ReadNumber(path, "nOracleCloudOperationWaitTime", classicWaitSeconds);
    ReadNumber(path, "nOracleCloudOperationTimeout", classicTimeoutSeconds);
    return true;
}

bool AgentIni::trust(const std::string& caFile, std::string& error) {
    std::string current;
    if (caFile.empty() || (!path.empty() && ReadValue(path, "sCACertFile", current) && current == caFile)) return true;
    std::string text;
    if (!path.empty()) {
        std::ifstream in(path);
        std::ostringstream all;
        all << in.rdbuf();
        text = all.str();
    }
    // Appended last, so it wins over an sCACertFile of the given file.
    text += "\n[VirtualServer]\nsCACertFile=" + caFile + "\n";
    const char* tmp = std::getenv("TMPDIR");
    std::string name = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/ocw-ini-XXXXXX";
    const int fd = ::mkstemp(&name[0]);  // mode 0600
    if (fd < 0 || ::write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        if (fd >= 0) ::close(fd);
        error = "cannot write a temporary agent configuration in " + name;
        return false;
    }
    ::close(fd);
    derived = name;
    ::setenv("OCW_CONFIG", derived.c_str(), 1);
    return true;
}

}  // namespace ocw
