#include "OciConfigFile.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace ocw {

namespace {

std::string Trim(const std::string& text) {
    const char* blanks = " \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos) return std::string();
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

bool IsReadable(const std::string& path) { return ::access(path.c_str(), R_OK) == 0; }

std::string DirectoryOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string CurrentDirectory() {
    char buffer[4096];
    return ::getcwd(buffer, sizeof buffer) != nullptr ? std::string(buffer) : std::string(".");
}

std::string Absolute(const std::string& path) {
    if (!path.empty() && path[0] == '/') return path;
    return CurrentDirectory() + "/" + path;
}

}  // namespace

std::string OciConfigFile::DefaultPath() {
    const char* env = std::getenv("OCI_CLI_CONFIG_FILE");
    if (env != nullptr && *env != '\0') return ExpandHome(env);
    return ExpandHome("~/.oci/config");
}

std::string OciConfigFile::DefaultProfile() {
    const char* env = std::getenv("OCI_CLI_PROFILE");
    return env != nullptr && *env != '\0' ? std::string(env) : std::string("DEFAULT");
}

std::string OciConfigFile::ExpandHome(const std::string& path) {
    if (path.empty() || path[0] != '~' || (path.size() > 1 && path[1] != '/')) return path;
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home == '\0') return path;
    return std::string(home) + path.substr(1);
}

bool OciConfigFile::load(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error_ = "cannot read the OCI config file " + path;
        return false;
    }
    std::ostringstream text;
    text << in.rdbuf();
    return parse(text.str(), path);
}

bool OciConfigFile::parse(const std::string& text, const std::string& path) {
    path_ = path;
    order_.clear();
    sections_.clear();
    error_.clear();
    std::istringstream lines(text);
    std::string line;
    std::string current;
    bool inSection = false;
    int number = 0;
    while (std::getline(lines, line)) {
        ++number;
        const std::string trimmed = Trim(line);
        if (trimmed.empty() || trimmed[0] == '#' || trimmed[0] == ';') continue;
        if (trimmed.front() == '[') {
            if (trimmed.back() != ']' || trimmed.size() < 3) {
                error_ = path + ":" + std::to_string(number) + ": malformed section header";
                return false;
            }
            current = Trim(trimmed.substr(1, trimmed.size() - 2));
            inSection = true;
            if (sections_.find(current) == sections_.end()) {
                sections_[current];
                order_.push_back(current);
            }
            continue;
        }
        const size_t eq = trimmed.find('=');
        if (eq == std::string::npos || eq == 0) {
            error_ = path + ":" + std::to_string(number) + ": expected key=value";
            return false;
        }
        if (!inSection) {
            error_ = path + ":" + std::to_string(number) + ": key=value before the first [PROFILE] header";
            return false;
        }
        sections_[current][Lower(Trim(trimmed.substr(0, eq)))] = Trim(trimmed.substr(eq + 1));
    }
    return true;
}

std::vector<std::string> OciConfigFile::profileNames() const { return order_; }

bool OciConfigFile::merged(const std::string& profile, Section& out) {
    auto found = sections_.find(profile);
    if (found == sections_.end()) {
        std::string known;
        for (const std::string& name : order_) known += (known.empty() ? "" : ", ") + name;
        error_ = "profile [" + profile + "] not found in " + path_ +
                 (known.empty() ? std::string(" (the file has no profiles)") : " (profiles: " + known + ")");
        return false;
    }
    out.clear();
    auto defaults = sections_.find("DEFAULT");
    if (defaults != sections_.end()) out = defaults->second;
    for (const auto& kv : found->second) out[kv.first] = kv.second;
    return true;
}

bool OciConfigFile::isClassic(const std::string& profile) {
    Section values;
    if (!merged(profile, values)) return false;
    return values.count("compute_endpoint") != 0 || values.count("paas_endpoint") != 0;
}

std::string OciConfigFile::locateFile(const std::string& name) const {
    std::string file = ExpandHome(name);
    if (!file.empty() && file[0] != '/') {
        const std::string besideConfig = DirectoryOf(Absolute(path_)) + "/" + file;
        file = IsReadable(file) || !IsReadable(besideConfig) ? Absolute(file) : besideConfig;
    }
    return file;
}

bool OciConfigFile::resolve(const std::string& profile, const std::string& regionOverride, OciProfile& out) {
    Section merged;
    if (!this->merged(profile, merged)) return false;

    auto value = [&merged](const char* key) {
        auto it = merged.find(key);
        return it == merged.end() ? std::string() : it->second;
    };
    OciProfile p;
    p.name = profile;
    p.user = value("user");
    p.fingerprint = value("fingerprint");
    p.keyFile = value("key_file");
    p.tenancy = value("tenancy");
    p.region = regionOverride.empty() ? value("region") : regionOverride;
    p.passPhrase = value("pass_phrase");

    std::string missing;
    const std::pair<const char*, const std::string*> required[] = {
        {"user", &p.user}, {"fingerprint", &p.fingerprint}, {"key_file", &p.keyFile},
        {"tenancy", &p.tenancy}, {"region", &p.region}};
    for (const auto& r : required) {
        if (r.second->empty()) missing += (missing.empty() ? "" : ", ") + std::string(r.first);
    }
    if (!missing.empty()) {
        error_ = "profile [" + profile + "] in " + path_ + " lacks " + missing;
        return false;
    }
    // The library receives user, fingerprint, key file and region as one
    // '|'-separated text, so none of them may contain the separator.
    for (const std::string* field : {&p.user, &p.fingerprint, &p.keyFile, &p.region}) {
        if (field->find('|') != std::string::npos) {
            error_ = "profile [" + profile + "] in " + path_ + ": values must not contain '|'";
            return false;
        }
    }

    const std::string key = locateFile(p.keyFile);
    if (!IsReadable(key)) {
        error_ = "key_file " + key + " of profile [" + profile + "] cannot be read";
        return false;
    }
    p.keyFile = key;
    out = p;
    return true;
}

}  // namespace ocw
