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

inline std::string base64Encode(const std::string& bytes)
{
    std::string out(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    int n = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&out[0]),
                            reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    out.resize(static_cast<size_t>(n));
    return out;
}

// What OpenSSL alone makes of a PEM text: the key, or null.
inline PkeyPtr decodePem(const std::string& pem, const std::string& passphrase = std::string())
{
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free);
    return PkeyPtr(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, const_cast<char*>(passphrase.c_str())));
}

// The PEM text of `key` with one byte of its DER (or cipher text) flipped so
// that the file still decodes but the key's numbers no longer belong together,
// as a single mistyped character does. Byte 100 of the DER lies inside the
// modulus of a 2048-bit key in PKCS#1 (modulus at bytes 11-267) and PKCS#8
// (37-293). For an encrypted key the flip is made at byte 100 of the cipher
// text: CBC garbles plain text bytes 96-111 and flips one bit of byte 116,
// all inside the modulus, and leaves the padding of the last block intact.
inline std::string damagedPem(EVP_PKEY* key, KeyFormat format, const std::string& passphrase = std::string())
{
    const std::string pem = toPem(key, format, passphrase);
    // Header lines (BEGIN, Proc-Type, DEK-Info, the blank line after them) stay as they are.
    std::istringstream in(pem);
    std::string line;
    std::string head;
    std::string body;
    std::string tail;
    while (std::getline(in, line)) {
        if (line.compare(0, 9, "-----END ") == 0) {
            tail = line + "\n";
        } else if (body.empty() && (line.empty() || line.compare(0, 5, "-----") == 0 ||
                                    line.find(':') != std::string::npos)) {
            head += line + "\n";
        } else {
            body += line;
        }
    }
    std::string der = base64Decode(body);
    size_t cipherStart = 0;
    if (format == KeyFormat::Pkcs8Encrypted) {
        // The cipher text closes the structure: the PKCS#8 plain text padded to whole AES blocks.
        std::istringstream plain(toPem(key, KeyFormat::Pkcs8));
        std::string plainBody;
        while (std::getline(plain, line)) {
            if (line.compare(0, 5, "-----") != 0) {
                plainBody += line;
            }
        }
        const size_t plainLength = base64Decode(plainBody).size();
        cipherStart = der.size() - (plainLength / 16 + 1) * 16;
    }
    const size_t at = cipherStart + 100;
    if (EVP_PKEY_get_bits(key) != 2048 || at >= der.size()) {
        throw std::runtime_error("damagedPem expects a 2048-bit key");
    }
    der[at] = static_cast<char>(der[at] ^ 0x01);

    std::string encoded = base64Encode(der);
    std::string out = head;
    for (size_t i = 0; i < encoded.size(); i += 64) {
        out += encoded.substr(i, 64) + "\n";
    }
    return out + tail;
}

// Key files live in the shared temporary directory; the signing, connection
// and benchmark code name it ocw_test::TempDir.
using ocwtest::TempDir;

}  // namespace ocw_test
