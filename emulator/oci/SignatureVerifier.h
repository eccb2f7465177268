#pragma once
// Checks the HTTP signature ("Signature version=\"1\",keyId=...") that OCI
// requires on every request, the way the service does.
//
// Accepted: version "1" or absent; algorithm "rsa-sha256"; a keyId registered
// in the KeyRegistry; a signed-header list (names compared case-insensitively,
// in any order) that covers "(request-target)", "host" and "date" or
// "x-date", and for POST/PUT/PATCH also "content-length", "content-type" and
// "x-content-sha256" (unless the route is an object upload); a date within
// the allowed skew; a body whose length and SHA-256 match the signed values;
// and an RSASSA-PKCS1-v1_5 SHA-256 signature over the rebuilt signing string.
#include "common/Api.h"
#include "common/ApiKeys.h"

#include <map>
#include <string>

namespace ocwemu {

struct SignatureResult {
    bool ok = false;
    // Machine-readable rejection reason, counted by the admin statistics:
    // missing_authorization, bad_scheme, bad_parameters, bad_version,
    // bad_algorithm, unknown_key, missing_signed_header, missing_header,
    // bad_date, stale_date, content_length_mismatch, body_hash_mismatch,
    // bad_signature.
    std::string reason;
    std::string detail;  // human-readable, for the request log
    std::string keyId;
};

class SignatureVerifier {
public:
    explicit SignatureVerifier(const KeyRegistry& keys, std::int64_t maxSkewSeconds = 300)
        : keys_(keys), maxSkew_(maxSkewSeconds) {}

    // `bodyHeadersRequired` is false for object uploads, which the SDKs sign
    // without the body headers.
    SignatureResult verify(const ApiRequest& req, bool bodyHeadersRequired) const;

    // Parses the parameters after "Signature " (name="value" pairs, any order).
    // false on malformed text.
    static bool ParseParameters(const std::string& text, std::map<std::string, std::string>& out);

private:
    const KeyRegistry& keys_;
    std::int64_t maxSkew_;
};

}  // namespace ocwemu
