#pragma once
#include <ctime>
#include <string>

#include "platform/ByteBucket.h"
#include "platform/DebugLog.h"
#include "platform/SafeString.h"
#include "transport/SignerInfo.h"

namespace OracleCloudSDKWrapper {

// The parts of one OCI request signature that do not depend on the key.
struct SOCISigningParts {
    std::string headers;              // "date (request-target) host", plus the three body headers for writes
    std::string signingString;        // the text that is signed
    std::string contentSha256Header;  // "x-content-sha256: <base64>" for put/post/patch, else empty
};

// Stateless helpers of OCI request signing (HTTP Signature "rsa-sha256").
// Every operation is safe to call from many threads at once: the date text is
// formatted in a per-thread buffer and private keys come from a guarded cache
// (PrivateKeyCache) that re-checks the key file's identity before every use.
// Nothing here logs key text or pass phrases.
class OCIConnectionUtils {
public:
    // SHA-256 of `data`, then the RSASSA-PKCS1-v1_5 signature of that digest
    // with the key in `keyFile`. False on failure (logged); `decryptFailed` is
    // set when the pass phrase did not decrypt the key.
    static bool SignWithRSA_SHA256(const std::string& keyFile, const std::string& data, const SafeString& passphrase,
                                   bool& decryptFailed, ByteBucket& signature);

    // 32 raw bytes of SHA-256 into `digest`; false (logged) when OpenSSL fails.
    static bool DigestWithSHA256(const std::string& data, ByteBucket& digest);

    // Signs a SHA-256 digest with the key file's RSA key. False when the file
    // cannot be read ("Failed to read private key file. Error[...]"), or the key
    // cannot be decoded or used ("Failed to sign the digest."); a wrong pass
    // phrase also sets `decryptFailed`.
    static bool SignDigestWithRSA(const ByteBucket& digest, const std::string& keyFile, const SafeString& passphrase,
                                  bool& decryptFailed, ByteBucket& signature);

    // Standard base64 of `length` bytes with the given 64-character alphabet and
    // "=" padding. Empty for a negative length, null bytes or a null alphabet.
    static std::string Base64EncodeWithEncodeString(const unsigned char* bytes, int length, const char* alphabet);
    // Standard base64 ("+", "/", "=" padding) despite the name: the signature
    // and x-content-sha256 need exactly that.
    static std::string Base64URLEncode(const std::string& bytes);
    static std::string Base64URLEncode(const ByteBucket& bytes);

    // "Tue, 07 Mar 2023 09:05:01 GMT". The text lives in a buffer of the calling
    // thread, valid until that thread's next call.
    static const char* asctimeBMC(const struct tm* time);
    // The current time of the time source as an HTTP date in GMT.
    static std::string GetCurrentGMTTimeString();

    // A name containing "/" is returned unchanged; a bare name is looked up as
    // <dBASEHOME of section "Base">/certificates/external/<name>.
    static std::string GetFullKeyFilePath(const std::string& name);

    // The pure part of a signature: header list, signing string and, for
    // "put", "post" and "patch" (exact lower-case method), the body hash header.
    // A failed digest leaves the base64 text empty; the request is still signed.
    static SOCISigningParts ComposeSigningString(const std::string& method, const std::string& date,
                                                 const std::string& requestTarget, const std::string& host,
                                                 const std::string& body);
    // "<tenancy>/<user>/<fingerprint>"
    static std::string KeyId(const SSignerInfoLib& signer);
    // The whole "authorization: Signature version=..." header line.
    static std::string FormatAuthorizationHeader(const std::string& headers, const std::string& keyId,
                                                 const std::string& signatureBase64);

    // A fresh request id for the "opc-request-id" header: 32 upper-case hex
    // digits of random bits, as the provider's SDKs send.
    static std::string NewRequestId();

    // Clock seam: the source of "now" for request dates. Null restores time().
    // Returns the previous source. Tests set a fixed clock; process-wide.
    using TimeSource = time_t (*)();
    static TimeSource SetTimeSource(TimeSource source);

private:
    static DebugLog s_debugLog;
};

}  // namespace OracleCloudSDKWrapper
