#pragma once
// Verifies a received request the way the OCI services document it: parse
// the authorization header by parameter name, rebuild the signing string from
// the headers it lists as they arrived, check the body headers against the
// body, and verify the RSA-SHA256 signature with the user's public key.
#include <algorithm>
#include <functional>
#include <sstream>
#include <string>

#include "../signing/TestRsaKeys.h"
#include "platform/Sha256Hasher.h"
#include "transport/OCIConnectionUtils.h"

namespace ocw_test {

using HeaderLookup = std::function<std::string(const std::string& lowerName)>;

inline std::string authParam(const std::string& auth, const std::string& name)
{
    std::string key = name + "=\"";
    size_t at = auth.find(key);
    if (at == std::string::npos) {
        return std::string();
    }
    at += key.size();
    return auth.substr(at, auth.find('"', at) - at);
}

// Empty result: accepted. Otherwise the reason of the refusal.
inline std::string checkOciSignature(EVP_PKEY* publicKey, const std::string& expectedKeyId, const std::string& method,
                                     const std::string& target, const std::string& body, const HeaderLookup& header)
{
    std::string auth = header("authorization");
    if (auth.rfind("Signature ", 0) != 0) {
        return "no Signature authorization";
    }
    if (authParam(auth, "algorithm") != "rsa-sha256" || authParam(auth, "version") != "1") {
        return "algorithm or version";
    }
    if (authParam(auth, "keyId") != expectedKeyId) {
        return "keyId " + authParam(auth, "keyId");
    }
    std::string headers = authParam(auth, "headers");
    std::string lowerMethod = method;
    std::transform(lowerMethod.begin(), lowerMethod.end(), lowerMethod.begin(), ::tolower);
    bool write = lowerMethod == "post" || lowerMethod == "put" || lowerMethod == "patch";
    std::string required = write ? "date (request-target) host content-length content-type x-content-sha256"
                                 : "date (request-target) host";
    if (headers != required) {
        return "headers list [" + headers + "]";
    }
    if (write) {
        if (header("x-content-sha256") !=
            OracleCloudSDKWrapper::OCIConnectionUtils::Base64URLEncode(OracleCloudSDKWrapper::Sha256Hasher::digest(body))) {
            return "body hash";
        }
        if (header("content-length") != std::to_string(body.size())) {
            return "content-length";
        }
    }
    std::string signingString;
    std::istringstream names(headers);
    std::string name;
    while (names >> name) {
        if (!signingString.empty()) {
            signingString += "\n";
        }
        std::string value = name == "(request-target)" ? lowerMethod + " " + target : header(name);
        signingString += name + ": " + value;
    }
    if (!verifyRsaSha256(publicKey, signingString, base64Decode(authParam(auth, "signature")))) {
        return "signature does not verify over [" + signingString + "]";
    }
    return std::string();
}

}  // namespace ocw_test
