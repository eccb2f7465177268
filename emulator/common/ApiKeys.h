#pragma once
// API signing keys: generation, PEM files, OCI fingerprints, and the registry
// of public keys the signature check trusts.
#include <openssl/evp.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace ocwemu {

using PKeyPtr = std::shared_ptr<EVP_PKEY>;

// A new RSA key pair (2048 bits). Null on failure.
PKeyPtr GenerateRsaKey();

// Writes the private key as PEM with mode 0600: PKCS#8 when `passPhrase` is
// empty, else the traditional RSA form encrypted with AES-128-CBC (the form
// OCI's documentation produces, readable by OpenSSL and by the SDKs).
bool WritePrivateKeyPem(const std::string& file, EVP_PKEY* key, const std::string& passPhrase,
                        std::string& error);
// Null when the file is missing, not a key, or the pass phrase does not open it.
PKeyPtr LoadPrivateKeyPem(const std::string& file, const std::string& passPhrase);

std::string PublicKeyPem(EVP_PKEY* key);
PKeyPtr ParsePublicKeyPem(const std::string& pem);

// OCI's key fingerprint: MD5 of the DER SubjectPublicKeyInfo as 16 lower-case
// hex pairs joined by ':'.
std::string KeyFingerprint(EVP_PKEY* key);

// Public keys by keyId ("<tenancy>/<user>/<fingerprint>"). Thread-safe.
class KeyRegistry {
public:
    // Registers the key and returns its fingerprint. `permanent` keys survive
    // removeTemporary() (the seeded user's own key).
    std::string add(const std::string& tenancy, const std::string& user, PKeyPtr key, bool permanent);
    PKeyPtr find(const std::string& keyId) const;
    void removeTemporary();

private:
    struct Entry {
        PKeyPtr key;
        bool permanent;
    };
    mutable std::mutex mutex_;
    std::map<std::string, Entry> keys_;
};

}  // namespace ocwemu
