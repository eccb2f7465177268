#pragma once
#include <string>

#include "platform/SafeString.h"

namespace OracleCloudSDKWrapper {

// The identity every OCI request is signed with. Filled by
// COracleCloudInfrastructureConnection::connect from its arguments:
// the user text "userOCID|fingerprint|keyFile[|region]", the tenancy OCID and
// the key's pass phrase.
struct SSignerInfoLib {
    std::string userId;       // OCID of the API user
    std::string fingerprint;  // fingerprint of the API public key
    std::string keyFile;      // full path of the PEM private key
    std::string tenancyId;    // OCID of the tenancy
    std::string region;       // region name, "us-phoenix-1" when not given
    SafeString passphrase;    // pass phrase of the key, may be empty; wiped on destruction, never logged
};

}  // namespace OracleCloudSDKWrapper
