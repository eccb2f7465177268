#include "common/ApiKeys.h"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace ocwemu {

static PKeyPtr Wrap(EVP_PKEY* k) { return PKeyPtr(k, EVP_PKEY_free); }

PKeyPtr GenerateRsaKey() { return Wrap(EVP_RSA_gen(2048)); }

bool WritePrivateKeyPem(const std::string& file, EVP_PKEY* key, const std::string& passPhrase,
                        std::string& error) {
    BIO* bio = BIO_new(BIO_s_mem());
    int ok = 0;
    if (passPhrase.empty()) {
        ok = PEM_write_bio_PKCS8PrivateKey(bio, key, nullptr, nullptr, 0, nullptr, nullptr);
    } else {
        ok = PEM_write_bio_PrivateKey_traditional(
            bio, key, EVP_aes_128_cbc(), reinterpret_cast<unsigned char*>(const_cast<char*>(passPhrase.data())),
            static_cast<int>(passPhrase.size()), nullptr, nullptr);
    }
    if (!ok) {
        BIO_free(bio);
        error = "cannot encode the private key";
        return false;
    }
    char* data = nullptr;
    long len = BIO_get_mem_data(bio, &data);
    std::string pem(data, static_cast<size_t>(len));
    BIO_free(bio);
    std::string tmp = file + ".tmp";
    {
        std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
        if (!out) {
            error = "cannot write " + tmp;
            return false;
        }
        ::chmod(tmp.c_str(), 0600);
        out << pem;
        if (!out) {
            error = "cannot write " + tmp;
            return false;
        }
    }
    if (std::rename(tmp.c_str(), file.c_str()) != 0) {
        error = "cannot rename " + tmp;
        return false;
    }
    return true;
}

PKeyPtr LoadPrivateKeyPem(const std::string& file, const std::string& passPhrase) {
    FILE* f = std::fopen(file.c_str(), "rb");
    if (!f) return nullptr;
    // An explicit (possibly empty) pass phrase keeps OpenSSL from prompting.
    EVP_PKEY* k = PEM_read_PrivateKey(f, nullptr, nullptr, const_cast<char*>(passPhrase.c_str()));
    std::fclose(f);
    return k ? Wrap(k) : nullptr;
}

std::string PublicKeyPem(EVP_PKEY* key) {
    BIO* bio = BIO_new(BIO_s_mem());
    std::string pem;
    if (PEM_write_bio_PUBKEY(bio, key)) {
        char* data = nullptr;
        long len = BIO_get_mem_data(bio, &data);
        pem.assign(data, static_cast<size_t>(len));
    }
    BIO_free(bio);
    return pem;
}

PKeyPtr ParsePublicKeyPem(const std::string& pem) {
    BIO* bio = BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size()));
    EVP_PKEY* k = PEM_read_bio_PUBKEY(bio, nullptr, nullptr, nullptr);
    BIO_free(bio);
    return k ? Wrap(k) : nullptr;
}

std::string KeyFingerprint(EVP_PKEY* key) {
    unsigned char* der = nullptr;
    int len = i2d_PUBKEY(key, &der);
    if (len <= 0) return {};
    unsigned char md[EVP_MAX_MD_SIZE];
    unsigned int mdLen = 0;
    EVP_Digest(der, static_cast<size_t>(len), md, &mdLen, EVP_md5(), nullptr);
    OPENSSL_free(der);
    std::string out;
    char hex[4];
    for (unsigned i = 0; i < mdLen; ++i) {
        std::snprintf(hex, sizeof hex, "%02x", md[i]);
        if (i) out += ':';
        out += hex;
    }
    return out;
}

std::string KeyRegistry::add(const std::string& tenancy, const std::string& user, PKeyPtr key, bool permanent) {
    std::string fp = KeyFingerprint(key.get());
    std::lock_guard<std::mutex> lock(mutex_);
    keys_[tenancy + "/" + user + "/" + fp] = Entry{std::move(key), permanent};
    return fp;
}

PKeyPtr KeyRegistry::find(const std::string& keyId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = keys_.find(keyId);
    return it == keys_.end() ? nullptr : it->second.key;
}

void KeyRegistry::removeTemporary() {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = keys_.begin(); it != keys_.end();)
        it = it->second.permanent ? std::next(it) : keys_.erase(it);
}

}  // namespace ocwemu
