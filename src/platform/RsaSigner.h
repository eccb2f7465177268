#pragma once
#include <cstddef>
#include <memory>

#include "platform/ByteBucket.h"
#include "platform/SafeString.h"

struct evp_pkey_st;

namespace OracleCloudSDKWrapper {

// An RSA private key decoded from PEM text. Immutable once built, so one
// object may be shared by many signers on many threads.
class RsaPrivateKey {
public:
    // Accepts PKCS#1 ("RSA PRIVATE KEY", optionally with a Proc-Type/DEK-Info
    // encryption header) and PKCS#8 ("PRIVATE KEY", "ENCRYPTED PRIVATE KEY").
    // The pass phrase is handed to OpenSSL through a callback, so OpenSSL never
    // prompts on a terminal; it is ignored for an unencrypted key.
    // A decoded key must sign: one signature of a fixed digest is made and
    // verified with the key's public half before the key is returned, so a
    // damaged key that still decodes fails here, not at the service.
    // Throws PlatformException:
    //  - "Failed to import private key. ..." when the key is encrypted and the
    //    pass phrase does not decrypt it (wrong or empty pass phrase, damaged key);
    //  - "Private key text is not a valid PEM private key. ..." for other text,
    //    and for a key that decodes but cannot sign or whose signature does not
    //    verify (" Reason: key parameters are inconsistent");
    //  - "Private key is not an RSA key." for a key of another type (EC, ...).
    // Messages never contain the key text or the pass phrase.
    static std::shared_ptr<const RsaPrivateKey> fromPEM(const SafeString& pem, const SafeString& passphrase);

    ~RsaPrivateKey();
    RsaPrivateKey(const RsaPrivateKey&) = delete;
    RsaPrivateKey& operator=(const RsaPrivateKey&) = delete;

    // Size of the modulus in bytes, which is also the size of every signature.
    size_t modulusSize() const;
    evp_pkey_st* native() const { return m_key; }

private:
    explicit RsaPrivateKey(evp_pkey_st* key) : m_key(key) {}
    evp_pkey_st* m_key;
};

// Signs SHA-256 digests with RSASSA-PKCS1-v1_5 (the "rsa-sha256" of HTTP
// signatures): the result verifies with any standard RSA/SHA-256 verifier over
// the message whose digest was signed.
//
// Padding option: with padding enabled (the default) OpenSSL wraps the digest
// into its DigestInfo structure; with it disabled the signer prepends the fixed
// SHA-256 DigestInfo header itself and OpenSSL applies only the PKCS#1 v1.5
// block. Both give the same bytes; the option exists because callers written
// for the agent's platform switch it off before signing a bare digest.
//
// Not thread-safe per object; use one signer per thread (the key may be shared).
class RsaSigner {
public:
    static constexpr size_t DigestLength = 32;

    RsaSigner() = default;

    void enablePadding(bool on) { m_padding = on; }
    bool isPaddingEnabled() const { return m_padding; }

    // Decodes and keeps the key; throws as RsaPrivateKey::fromPEM.
    void setPriKeyPEM(const SafeString& pem, const SafeString& passphrase);
    // Uses a key decoded earlier (for example one kept in a cache).
    void setPrivateKey(std::shared_ptr<const RsaPrivateKey> key) { m_key = std::move(key); }
    bool hasKey() const { return static_cast<bool>(m_key); }

    // The signature size of the loaded key; 0 without a key.
    size_t getSignatureSize() const { return m_key ? m_key->modulusSize() : 0; }

    // Signs a 32-byte SHA-256 digest. Throws PlatformException without a key,
    // for a digest of another length, or when OpenSSL fails.
    ByteBucket sign(const unsigned char* digest, size_t length) const;
    ByteBucket sign(const ByteBucket& digest) const { return sign(digest.data(), digest.size()); }

private:
    std::shared_ptr<const RsaPrivateKey> m_key;
    bool m_padding = true;
};

}  // namespace OracleCloudSDKWrapper
