#pragma once
#include <cstddef>
#include <string>

#include "platform/ByteBucket.h"

struct evp_md_ctx_st;

namespace OracleCloudSDKWrapper {

// Incremental SHA-256 over OpenSSL's EVP interface. Feed any number of
// update() calls, then finish() once; after finish() the hasher starts over,
// so one object can digest several texts in turn.
// Every operation throws PlatformException when OpenSSL fails (in practice only
// when memory runs out or the provider is unavailable).
class Sha256Hasher {
public:
    static constexpr size_t DigestLength = 32;

    Sha256Hasher();
    ~Sha256Hasher();
    Sha256Hasher(const Sha256Hasher&) = delete;
    Sha256Hasher& operator=(const Sha256Hasher&) = delete;

    void update(const void* data, size_t size);
    void update(const std::string& text) { update(text.data(), text.size()); }

    // Writes the 32-byte digest into `out`, which must hold DigestLength bytes.
    void finish(unsigned char* out);
    ByteBucket finish();

    // One-shot digest of a text.
    static ByteBucket digest(const std::string& text);

private:
    void restart();
    evp_md_ctx_st* m_ctx;
};

}  // namespace OracleCloudSDKWrapper
