#pragma once
// Checks a received request the way the OCI services document it: the
// authorization header is read by parameter name, the signing string is rebuilt
// from the headers it lists as they arrived, the body headers are checked
// against the body, and the RSA-SHA256 signature is verified with the user's
// public key. Written with OpenSSL alone, independent of the library's signer
// and of the emulator's verifier.
#include <functional>
#include <string>

#include "TestKeys.h"

namespace ocwtest {

// Header value by lower-case name, empty when absent.
using HeaderLookup = std::function<std::string(const std::string& lowerName)>;

// The value of one parameter (name="value") of an authorization header.
std::string AuthParam(const std::string& authorization, const std::string& name);

// Empty: accepted. Otherwise the reason of the refusal.
std::string CheckOciSignature(EVP_PKEY* publicKey, const std::string& expectedKeyId, const std::string& method,
                              const std::string& target, const std::string& body, const HeaderLookup& header);

}  // namespace ocwtest
