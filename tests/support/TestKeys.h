#pragma once
// Keys and signatures for tests, done with OpenSSL alone (never with the
// library's own signer): keys are generated at run time, never checked in, and
// a test passes only when a standard verifier accepts what the library produced.
// Header-only, so benchmarks can use it without the test support library.
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include "TestSecrets.h"

namespace ocwtest {

struct PkeyFree {
    void operator()(EVP_PKEY* k) const { EVP_PKEY_free(k); }
};
using PkeyPtr = std::unique_ptr<EVP_PKEY, PkeyFree>;

enum class KeyFormat { Pkcs1, Pkcs1Encrypted, Pkcs8, Pkcs8Encrypted };

inline PkeyPtr GenerateRsaKey(unsigned bits = 2048) {
    PkeyPtr key(EVP_RSA_gen(bits));
    if (!key) throw std::runtime_error("RSA key generation failed");
    return key;
}

inline PkeyPtr GenerateEcKey() {
    PkeyPtr key(EVP_EC_gen("P-256"));
    if (!key) throw std::runtime_error("EC key generation failed");
    return key;
}

inline std::string Base64Encode(const std::string& bytes) {
    std::string out(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    int n = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&out[0]),
                            reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    out.resize(static_cast<size_t>(n));
    return out;
}

inline std::string Base64Decode(const std::string& text) {
    std::string out(text.size(), '\0');
    int n = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(&out[0]),
                            reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    if (n < 0) return std::string();
    size_t padding = 0;
    if (!text.empty() && text.back() == '=') padding = (text.size() >= 2 && text[text.size() - 2] == '=') ? 2 : 1;
    out.resize(static_cast<size_t>(n) - padding);
    return out;
}

inline std::string Sha256Base64(const std::string& data) {
    unsigned char md[EVP_MAX_MD_SIZE];
    unsigned int len = 0;
    EVP_Digest(data.data(), data.size(), md, &len, EVP_sha256(), nullptr);
    return Base64Encode(std::string(reinterpret_cast<char*>(md), len));
}

// The private key as PEM text in one of the formats key files come in.
inline std::string ToPem(EVP_PKEY* key, KeyFormat format, const std::string& passphrase = std::string()) {
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), &BIO_free);
    auto* pass = reinterpret_cast<const unsigned char*>(passphrase.data());
    int passLen = static_cast<int>(passphrase.size());
    int ok = 0;
    switch (format) {
    case KeyFormat::Pkcs1:
        ok = PEM_write_bio_PrivateKey_traditional(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
        break;
    case KeyFormat::Pkcs1Encrypted:
        ok = PEM_write_bio_PrivateKey_traditional(bio.get(), key, EVP_aes_128_cbc(), pass, passLen, nullptr, nullptr);
        break;
    case KeyFormat::Pkcs8:
        ok = PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
        break;
    case KeyFormat::Pkcs8Encrypted:
        ok = PEM_write_bio_PKCS8PrivateKey(bio.get(), key, EVP_aes_256_cbc(), passphrase.c_str(), passLen, nullptr,
                                           nullptr);
        break;
    }
    if (ok != 1) throw std::runtime_error("PEM encoding failed");
    char* data = nullptr;
    long len = BIO_get_mem_data(bio.get(), &data);
    std::string pem(data, static_cast<size_t>(len));
    RecordPrivateKeyPem(pem);
    RecordSecret("passphrase", passphrase);
    return pem;
}

inline std::string PublicPem(EVP_PKEY* key) {
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new(BIO_s_mem()), &BIO_free);
    PEM_write_bio_PUBKEY(bio.get(), key);
    char* data = nullptr;
    long len = BIO_get_mem_data(bio.get(), &data);
    return std::string(data, static_cast<size_t>(len));
}

// What OpenSSL alone makes of a PEM text: the key, or null.
inline PkeyPtr DecodePem(const std::string& pem, const std::string& passphrase = std::string()) {
    std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free);
    return PkeyPtr(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, const_cast<char*>(passphrase.c_str())));
}

// An RSASSA-PKCS1-v1_5 SHA-256 signature ("rsa-sha256") over `message`, base64.
inline std::string SignRsaSha256(const std::string& keyPem, const std::string& passphrase, const std::string& message) {
    PkeyPtr key = DecodePem(keyPem, passphrase);
    if (!key) throw std::runtime_error("test key does not load");
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    size_t len = 0;
    const auto* data = reinterpret_cast<const unsigned char*>(message.data());
    EVP_DigestSignInit(ctx.get(), nullptr, EVP_sha256(), nullptr, key.get());
    EVP_DigestSign(ctx.get(), nullptr, &len, data, message.size());
    std::string signature(len, '\0');
    EVP_DigestSign(ctx.get(), reinterpret_cast<unsigned char*>(&signature[0]), &len, data, message.size());
    signature.resize(len);
    return Base64Encode(signature);
}

// Verifies a raw rsa-sha256 signature over `message` with the public half of `key`,
// the way a service does.
inline bool VerifyRsaSha256(EVP_PKEY* key, const std::string& message, const std::string& signature) {
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    EVP_PKEY_CTX* pctx = nullptr;
    if (EVP_DigestVerifyInit(ctx.get(), &pctx, EVP_sha256(), nullptr, key) != 1) return false;
    EVP_PKEY_CTX_set_rsa_padding(pctx, RSA_PKCS1_PADDING);
    return EVP_DigestVerify(ctx.get(), reinterpret_cast<const unsigned char*>(signature.data()), signature.size(),
                            reinterpret_cast<const unsigned char*>(message.data()), message.size()) == 1;
}

// The PEM text of a 2048-bit `key` with one byte flipped so that the file still
// decodes but the key's numbers no longer belong together, as one mistyped
// character does. Byte 100 of the DER lies inside the modulus in PKCS#1 (bytes
// 11-267) and PKCS#8 (37-293). For an encrypted PKCS#8 key the flip is at byte
// 100 of the cipher text: CBC garbles plain bytes 96-111 and one bit of byte
// 116, all inside the modulus, and keeps the padding of the last block intact.
inline std::string DamagedPem(EVP_PKEY* key, KeyFormat format, const std::string& passphrase = std::string()) {
    auto split = [](const std::string& pem, std::string& head, std::string& body, std::string& tail) {
        std::istringstream in(pem);
        std::string line;
        while (std::getline(in, line)) {
            if (line.compare(0, 9, "-----END ") == 0) {
                tail = line + "\n";
            } else if (body.empty() &&
                       (line.empty() || line.compare(0, 5, "-----") == 0 || line.find(':') != std::string::npos)) {
                head += line + "\n";  // BEGIN, Proc-Type, DEK-Info and the blank line after them
            } else {
                body += line;
            }
        }
    };
    std::string head, body, tail;
    split(ToPem(key, format, passphrase), head, body, tail);
    std::string der = Base64Decode(body);
    size_t cipherStart = 0;
    if (format == KeyFormat::Pkcs8Encrypted) {
        // The cipher text closes the structure: the PKCS#8 plain text padded to whole AES blocks.
        std::string plainHead, plainBody, plainTail;
        split(ToPem(key, KeyFormat::Pkcs8), plainHead, plainBody, plainTail);
        cipherStart = der.size() - (Base64Decode(plainBody).size() / 16 + 1) * 16;
    }
    const size_t at = cipherStart + 100;
    if (EVP_PKEY_get_bits(key) != 2048 || at >= der.size()) throw std::runtime_error("DamagedPem expects a 2048-bit key");
    der[at] = static_cast<char>(der[at] ^ 0x01);
    const std::string encoded = Base64Encode(der);
    std::string out = head;
    for (size_t i = 0; i < encoded.size(); i += 64) out += encoded.substr(i, 64) + "\n";
    return out + tail;
}

}  // namespace ocwtest
