#pragma once
// A Cloud Classic account in the OCI config file's format: a profile whose
// keys name a Compute Classic endpoint (compute_endpoint) or a PaaS endpoint
// (paas_endpoint). The emulator's "classic-profile" file is one.
//
// The password never comes from the command line (it would show in ps). In
// this order: "password" in the profile (the file must then be private to
// its owner), the first line of the file named by "password_file", the
// environment variable named by "password_env", the environment variable
// OCW_CLASSIC_PASSWORD.
#include <string>

#include "OciConfigFile.h"

namespace ocw {

// password is a secret: never print or log it.
struct ClassicProfile {
    std::string name;
    std::string computeEndpoint;  // may be empty when only PaaS is used
    std::string paasEndpoint;     // may be empty when only Compute Classic is used
    std::string identityDomain;
    std::string user;             // the plain user name ("jdoe")
    std::string password;
    std::string caFile;           // absolute; empty: the system's trust store only
    std::string passwordSource;   // for messages: where the password came from
};

// Fills out from the profile of config. False with error when a key is
// missing or unusable; every such failure is a credentials problem (exit 3).
bool ResolveClassicProfile(OciConfigFile& config, const std::string& profile, ClassicProfile& out,
                           std::string& error);

}  // namespace ocw
