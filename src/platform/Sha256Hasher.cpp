#include "platform/Sha256Hasher.h"

#include <openssl/evp.h>

#include "platform/PlatformException.h"

namespace OracleCloudSDKWrapper {

Sha256Hasher::Sha256Hasher() : m_ctx(EVP_MD_CTX_new())
{
    if (m_ctx == nullptr) {
        throw PlatformException::fromOpenSsl("Failed to create SHA-256 context.");
    }
    try {
        restart();
    } catch (...) {
        EVP_MD_CTX_free(m_ctx);
        throw;
    }
}

Sha256Hasher::~Sha256Hasher() { EVP_MD_CTX_free(m_ctx); }

void Sha256Hasher::restart()
{
    if (EVP_DigestInit_ex(m_ctx, EVP_sha256(), nullptr) != 1) {
        throw PlatformException::fromOpenSsl("Failed to initialise SHA-256 digest.");
    }
}

void Sha256Hasher::update(const void* data, size_t size)
{
    if (size == 0) {
        return;
    }
    if (EVP_DigestUpdate(m_ctx, data, size) != 1) {
        throw PlatformException::fromOpenSsl("Failed to update SHA-256 digest.");
    }
}

void Sha256Hasher::finish(unsigned char* out)
{
    unsigned int length = 0;
    if (EVP_DigestFinal_ex(m_ctx, out, &length) != 1 || length != DigestLength) {
        throw PlatformException::fromOpenSsl("Failed to finish SHA-256 digest.");
    }
    restart();
}

ByteBucket Sha256Hasher::finish()
{
    ByteBucket out(DigestLength);
    finish(out.data());
    return out;
}

ByteBucket Sha256Hasher::digest(const std::string& text)
{
    Sha256Hasher hasher;
    hasher.update(text);
    return hasher.finish();
}

}  // namespace OracleCloudSDKWrapper
