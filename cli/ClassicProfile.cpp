#include "ClassicProfile.h"

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

namespace ocw {

namespace {

std::string Value(const OciConfigFile::Section& values, const char* key) {
    auto it = values.find(key);
    return it == values.end() ? std::string() : it->second;
}

std::string FirstLine(const std::string& path, bool& readable) {
    std::ifstream in(path);
    readable = static_cast<bool>(in);
    std::string line;
    std::getline(in, line);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

bool ReadPassword(OciConfigFile& config, const OciConfigFile::Section& values, ClassicProfile& p,
                  std::string& error) {
    const std::string where = "profile [" + p.name + "] in " + config.path();
    if (values.count("password") != 0) {
        // Like ssh with a private key: a password in a file others can read
        // is no longer a secret.
        struct stat st {};
        if (::stat(config.path().c_str(), &st) == 0 && (st.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
            error = where + " holds a password, but the file can be read by others; chmod 600 " + config.path() +
                    " or use password_file / password_env";
            return false;
        }
        p.password = Value(values, "password");
        p.passwordSource = "the profile";
    } else if (values.count("password_file") != 0) {
        const std::string file = config.locateFile(Value(values, "password_file"));
        bool readable = false;
        p.password = FirstLine(file, readable);
        if (!readable) {
            error = "password_file " + file + " of " + where + " cannot be read";
            return false;
        }
        p.passwordSource = "password_file " + file;
    } else {
        std::string variable = Value(values, "password_env");
        if (variable.empty()) variable = "OCW_CLASSIC_PASSWORD";
        const char* env = std::getenv(variable.c_str());
        if (env != nullptr) p.password = env;
        p.passwordSource = "environment variable " + variable;
        if (env == nullptr && values.count("password_env") != 0) {
            error = where + " takes its password from the environment variable " + variable + ", which is not set";
            return false;
        }
    }
    if (p.password.empty()) {
        error = where + " has no password: set password_file=FILE or password_env=VARIABLE in the profile, or "
                "export OCW_CLASSIC_PASSWORD (a password is never taken from the command line)";
        return false;
    }
    return true;
}

}  // namespace

bool ResolveClassicProfile(OciConfigFile& config, const std::string& profile, ClassicProfile& out,
                           std::string& error) {
    OciConfigFile::Section values;
    if (!config.merged(profile, values)) {
        error = config.error();
        return false;
    }
    ClassicProfile p;
    p.name = profile;
    p.computeEndpoint = Value(values, "compute_endpoint");
    p.paasEndpoint = Value(values, "paas_endpoint");
    p.identityDomain = Value(values, "identity_domain");
    p.user = Value(values, "user");
    std::string missing;
    if (p.computeEndpoint.empty() && p.paasEndpoint.empty()) missing = "compute_endpoint or paas_endpoint";
    for (const auto& required : {std::make_pair("identity_domain", &p.identityDomain), std::make_pair("user", &p.user)}) {
        if (required.second->empty()) missing += (missing.empty() ? "" : ", ") + std::string(required.first);
    }
    if (!missing.empty()) {
        error = "profile [" + profile + "] in " + config.path() + " lacks " + missing;
        return false;
    }
    const std::string ca = Value(values, "ca_file");
    if (!ca.empty()) {
        p.caFile = config.locateFile(ca);
        std::ifstream in(p.caFile);
        if (!in) {
            error = "ca_file " + p.caFile + " of profile [" + profile + "] cannot be read";
            return false;
        }
    }
    if (!ReadPassword(config, values, p, error)) return false;
    out = p;
    return true;
}

}  // namespace ocw
