#pragma once
// Key material and verification for signing tests: keys are generated at run
// time (never checked in) and signatures are verified by OpenSSL itself, so a
// test passes only if a standard verifier accepts what the library produced.
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include "../../support/TempDir.h"

namespace ocw_test {

struct PkeyFree {
    void operator()(EVP_PKEY* k) const { EVP_PKEY_free(k); }
};
using PkeyPtr = std::unique_ptr<EVP_PKEY, PkeyFree>;

enum class KeyFormat { Pkcs1, Pkcs1Encrypted, Pkcs8, Pkcs8Encrypted };

inline PkeyPtr generateRsaKey(unsigned bits = 2048)
{
    PkeyPtr key(EVP_RSA_gen(bits));
    if (!key) {
        throw std::runtime_error("RSA key generation failed");
    }
    return key;
}

inline PkeyPtr generateEcKey()
{
    PkeyPtr key(EVP_EC_gen("P-256"));
    if (!key) {
        throw std::runtime_error("EC key generation failed");
    }
    return key;
}

inline std::string bioText(BIO* bio)
{
    char* data = nullptr;
    long len = BIO_get_mem_data(bio, &data);
    return std::string(data, static_cast<size_t>(len));
}

inline std::string toPem(EVP_PKEY* key, KeyFormat format, const std::string& passphrase = std::string())
{
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), &BIO_free);
    int ok = 0;
    auto* pass = reinterpret_cast<const unsigned char*>(passphrase.data());
    int passLen = static_cast<int>(passphrase.size());
    switch (format) {
    case KeyFormat::Pkcs1:
        ok = PEM_write_bio_PrivateKey_traditional(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
        break;
    case KeyFormat::Pkcs1Encrypted:
        ok = PEM_write_bio_PrivateKey_traditional(bio.get(), key, EVP_aes_128_cbc(), pass, passLen, nullptr,
                                                  nullptr);
        break;
    case KeyFormat::Pkcs8:
        ok = PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
        break;
    case KeyFormat::Pkcs8Encrypted:
        ok = PEM_write_bio_PKCS8PrivateKey(bio.get(), key, EVP_aes_256_cbc(), passphrase.c_str(), passLen, nullptr,
                                           nullptr);
        break;
    }
    if (ok != 1) {
        throw std::runtime_error("PEM encoding failed");
    }
    return bioText(bio.get());
}

// Verifies an RSASSA-PKCS1-v1_5 SHA-256 signature over `message` with the
// public half of `key`, the way a service verifies "rsa-sha256".
inline bool verifyRsaSha256(EVP_PKEY* key, const std::string& message, const std::string& signature)
{
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    EVP_PKEY_CTX* pctx = nullptr;
    if (EVP_DigestVerifyInit(ctx.get(), &pctx, EVP_sha256(), nullptr, key) != 1) {
        return false;
    }
    EVP_PKEY_CTX_set_rsa_padding(pctx, RSA_PKCS1_PADDING);
    return EVP_DigestVerify(ctx.get(), reinterpret_cast<const unsigned char*>(signature.data()), signature.size(),
                            reinterpret_cast<const unsigned char*>(message.data()), message.size()) == 1;
}

inline std::string base64Decode(const std::string& text)
{
    std::string out(text.size(), '\0');
    int n = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(&out[0]),
                            reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    if (n < 0) {
        return std::string();
    }
    size_t padding = 0;
    if (!text.empty() && text.back() == '=') {
        padding = (text.size() >= 2 && text[text.size() - 2] == '=') ? 2 : 1;
    }
    out.resize(static_cast<size_t>(n) - padding);
    return out;
}

// Key files live in the shared temporary directory; the signing, connection
// and benchmark code name it ocw_test::TempDir.
using ocwtest::TempDir;

}  // namespace ocw_test
