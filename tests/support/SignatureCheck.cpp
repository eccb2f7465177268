#include "SignatureCheck.h"

#include <algorithm>
#include <sstream>

namespace ocwtest {

std::string AuthParam(const std::string& authorization, const std::string& name) {
    const std::string key = name + "=\"";
    size_t at = authorization.find(key);
    if (at == std::string::npos) return std::string();
    at += key.size();
    return authorization.substr(at, authorization.find('"', at) - at);
}

std::string CheckOciSignature(EVP_PKEY* publicKey, const std::string& expectedKeyId, const std::string& method,
                              const std::string& target, const std::string& body, const HeaderLookup& header) {
    const std::string auth = header("authorization");
    if (auth.rfind("Signature ", 0) != 0) return "no Signature authorization";
    if (AuthParam(auth, "algorithm") != "rsa-sha256" || AuthParam(auth, "version") != "1") return "algorithm or version";
    if (AuthParam(auth, "keyId") != expectedKeyId) return "keyId " + AuthParam(auth, "keyId");
    std::string lowerMethod = method;
    std::transform(lowerMethod.begin(), lowerMethod.end(), lowerMethod.begin(), ::tolower);
    const bool write = lowerMethod == "post" || lowerMethod == "put" || lowerMethod == "patch";
    const std::string headers = AuthParam(auth, "headers");
    const std::string required = write ? "date (request-target) host content-length content-type x-content-sha256"
                                       : "date (request-target) host";
    if (headers != required) return "headers list [" + headers + "]";
    if (write) {
        if (header("x-content-sha256") != Sha256Base64(body)) return "body hash";
        if (header("content-length") != std::to_string(body.size())) return "content-length";
    }
    std::string signingString;
    std::istringstream names(headers);
    std::string name;
    while (names >> name) {
        if (!signingString.empty()) signingString += "\n";
        signingString += name + ": " + (name == "(request-target)" ? lowerMethod + " " + target : header(name));
    }
    if (!VerifyRsaSha256(publicKey, signingString, Base64Decode(AuthParam(auth, "signature")))) {
        return "signature does not verify over [" + signingString + "]";
    }
    return std::string();
}

}  // namespace ocwtest
