#include "platform/PlatformConfig.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>

#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {
namespace {

using Section = std::map<std::string, std::string>;

struct ConfigState {
    std::mutex mutex;
    std::string explicitPath;  // set by the host program; empty = use OCW_CONFIG
    // Atomic so that generation() is a lock-free read once loaded: the logger
    // asks for it on every debug line.
    std::atomic<bool> loaded{false};
    std::atomic<unsigned long> generation{0};
    std::map<std::string, Section> sections;
};

ConfigState& State() {
    static ConfigState state;
    return state;
}

std::string Lower(std::string s) {
    for (auto& c : s)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return s;
}

std::string EffectivePath(const ConfigState& st) {
    if (!st.explicitPath.empty()) return st.explicitPath;
    const char* env = std::getenv("OCW_CONFIG");
    return env ? std::string(env) : std::string();
}

// Caller holds the mutex. A missing or unreadable file leaves an empty
// configuration: every getter then falls back to its default.
void LoadLocked(ConfigState& st) {
    st.sections.clear();
    struct Publish {
        ConfigState& st;
        ~Publish() {
            st.generation.fetch_add(1, std::memory_order_release);
            st.loaded.store(true, std::memory_order_release);
        }
    } publish{st};
    std::string path = EffectivePath(st);
    if (path.empty()) return;
    std::ifstream in(path);
    if (!in) return;
    std::string line;
    std::string section;
    while (std::getline(in, line)) {
        std::string t = StringUtil::Trim(line);
        if (t.empty() || t[0] == ';' || t[0] == '#') continue;
        if (t[0] == '[') {
            size_t close = t.find(']');
            if (close != std::string::npos) section = Lower(StringUtil::Trim(t.substr(1, close - 1)));
            continue;
        }
        size_t eq = t.find('=');
        if (eq == std::string::npos) continue;
        std::string key = Lower(StringUtil::Trim(t.substr(0, eq)));
        if (key.empty()) continue;
        st.sections[section][key] = StringUtil::Trim(t.substr(eq + 1));
    }
}

bool Lookup(const std::string& section, const std::string& key, std::string& value) {
    ConfigState& st = State();
    std::lock_guard<std::mutex> lock(st.mutex);
    if (!st.loaded) LoadLocked(st);
    auto s = st.sections.find(Lower(section));
    if (s == st.sections.end()) return false;
    auto k = s->second.find(Lower(key));
    if (k == s->second.end()) return false;
    value = k->second;
    return true;
}

}  // namespace

void PlatformConfig::setConfigFile(const std::string& path) {
    ConfigState& st = State();
    std::lock_guard<std::mutex> lock(st.mutex);
    st.explicitPath = path;
    LoadLocked(st);
}

std::string PlatformConfig::getConfigFile() {
    ConfigState& st = State();
    std::lock_guard<std::mutex> lock(st.mutex);
    return EffectivePath(st);
}

void PlatformConfig::reload() {
    ConfigState& st = State();
    std::lock_guard<std::mutex> lock(st.mutex);
    LoadLocked(st);
}

unsigned long PlatformConfig::generation() {
    ConfigState& st = State();
    if (!st.loaded.load(std::memory_order_acquire)) {
        std::lock_guard<std::mutex> lock(st.mutex);
        if (!st.loaded.load(std::memory_order_relaxed)) LoadLocked(st);
    }
    return st.generation.load(std::memory_order_acquire);
}

long long PlatformConfig::getNumber(const std::string& section, const std::string& key, long long def) {
    std::string value;
    if (!Lookup(section, key, value) || value.empty()) return def;
    errno = 0;
    char* end = nullptr;
    long long n = std::strtoll(value.c_str(), &end, 10);
    if (errno != 0 || end == value.c_str() || *end != '\0') return def;
    return n;
}

std::string PlatformConfig::getStringTrim(const std::string& section, const std::string& key,
                                          const std::string& def) {
    std::string value;
    if (!Lookup(section, key, value)) return def;
    return value;
}

std::string PlatformConfig::getDirectory(const std::string& section, const std::string& key,
                                         const std::string& def) {
    std::string value = getStringTrim(section, key, def);
    while (value.size() > 1 && value.back() == '/') value.pop_back();
    return value;
}

}  // namespace OracleCloudSDKWrapper
