#include "platform/RsaSigner.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <cstring>
#include <limits>

#include "platform/PlatformException.h"

namespace OracleCloudSDKWrapper {

namespace {

// DER header of DigestInfo { AlgorithmIdentifier sha256 with NULL params, OCTET STRING (32) }
// (RFC 8017, section 9.2, note 1).
const unsigned char kSha256DigestInfoHeader[] = {0x30, 0x31, 0x30, 0x0d, 0x06, 0x09, 0x60, 0x86, 0x48, 0x01,
                                                 0x65, 0x03, 0x04, 0x02, 0x01, 0x05, 0x00, 0x04, 0x20};

struct PassPhraseSource {
    const SafeString* passphrase;
    bool asked;  // OpenSSL wanted a pass phrase: the key is encrypted
};

// Supplies the pass phrase so that OpenSSL never falls back to prompting on a tty.
int passPhraseCallback(char* buf, int size, int /*rwflag*/, void* user)
{
    auto* source = static_cast<PassPhraseSource*>(user);
    source->asked = true;
    const SafeString& phrase = *source->passphrase;
    if (phrase.empty() || size <= 0 || phrase.size() > static_cast<size_t>(size)) {
        return 0;  // refuse: decryption fails and is reported as an import failure
    }
    std::memcpy(buf, phrase.data(), phrase.size());
    return static_cast<int>(phrase.size());
}

struct BioFree {
    void operator()(BIO* b) const { BIO_free(b); }
};
struct PkeyCtxFree {
    void operator()(EVP_PKEY_CTX* c) const { EVP_PKEY_CTX_free(c); }
};

// Signs a fixed digest with `key` and verifies the result with the same key's
// public half. Throws PlatformException when OpenSSL cannot sign with it (for
// example a modulus too short for a SHA-256 DigestInfo) or the signature does
// not verify.
void checkSignsVerifiably(EVP_PKEY* key)
{
    static const unsigned char kProbeDigest[RsaSigner::DigestLength] = {
        0x6f, 0x63, 0x77, 0x20, 0x6b, 0x65, 0x79, 0x20, 0x70, 0x72, 0x6f, 0x62, 0x65, 0x00, 0x01, 0x02,
        0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f, 0x10, 0x11, 0x12};
    const char* const kUnusable = "Private key text is not a valid PEM private key.";

    ERR_clear_error();
    std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> ctx(EVP_PKEY_CTX_new_from_pkey(nullptr, key, nullptr));
    int size = EVP_PKEY_get_size(key);
    if (!ctx || size <= 0) {
        throw PlatformException::fromOpenSsl(kUnusable);
    }
    ByteBucket signature(static_cast<size_t>(size));
    size_t sigLength = signature.size();
    // The same operation RsaSigner::sign performs, so a key that passes here signs there.
    if (EVP_PKEY_sign_init(ctx.get()) != 1 || EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_PADDING) != 1 ||
        EVP_PKEY_CTX_set_signature_md(ctx.get(), EVP_sha256()) != 1 ||
        EVP_PKEY_sign(ctx.get(), signature.data(), &sigLength, kProbeDigest, sizeof(kProbeDigest)) != 1) {
        throw PlatformException::fromOpenSsl(kUnusable);
    }
    bool verified = EVP_PKEY_verify_init(ctx.get()) == 1 &&
                    EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_PADDING) == 1 &&
                    EVP_PKEY_CTX_set_signature_md(ctx.get(), EVP_sha256()) == 1 &&
                    EVP_PKEY_verify(ctx.get(), signature.data(), sigLength, kProbeDigest, sizeof(kProbeDigest)) == 1;
    ERR_clear_error();
    if (!verified) {
        throw PlatformException(std::string(kUnusable) + " Reason: key parameters are inconsistent");
    }
}

}  // namespace

std::shared_ptr<const RsaPrivateKey> RsaPrivateKey::fromPEM(const SafeString& pem, const SafeString& passphrase)
{
    ERR_clear_error();
    if (pem.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
        throw PlatformException("Private key text is not a valid PEM private key.");
    }
    std::unique_ptr<BIO, BioFree> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    if (!bio) {
        throw PlatformException::fromOpenSsl("Failed to import private key.");
    }
    PassPhraseSource source{&passphrase, false};
    EVP_PKEY* key = PEM_read_bio_PrivateKey(bio.get(), nullptr, passPhraseCallback, &source);
    if (key == nullptr) {
        if (source.asked) {
            throw PlatformException::fromOpenSsl("Failed to import private key.");
        }
        throw PlatformException::fromOpenSsl("Private key text is not a valid PEM private key.");
    }
    ERR_clear_error();
    std::shared_ptr<const RsaPrivateKey> decoded(new RsaPrivateKey(key));
    // RSA-PSS keys are refused too: they cannot make PKCS#1 v1.5 signatures.
    if (EVP_PKEY_get_base_id(key) != EVP_PKEY_RSA) {
        throw PlatformException("Private key is not an RSA key.");
    }
    // A key file with one changed character often still decodes: the damage
    // lands inside one of the big numbers, or inside a cipher block of an
    // encrypted key whose padding survives. The numbers then no longer belong
    // together and the service refuses every signature with 401, which hides
    // the cause. One signature checked with the key's own public half finds
    // this at load time for about the cost of one request signature; a full
    // pairwise check would also test the primes, hundreds of milliseconds for
    // a 4096-bit key. Callers keep decoded keys (PrivateKeyCache), so this is
    // paid once per key file, not per request.
    checkSignsVerifiably(key);
    return decoded;
}

RsaPrivateKey::~RsaPrivateKey() { EVP_PKEY_free(m_key); }

size_t RsaPrivateKey::modulusSize() const
{
    int size = EVP_PKEY_get_size(m_key);
    return size > 0 ? static_cast<size_t>(size) : 0;
}

void RsaSigner::setPriKeyPEM(const SafeString& pem, const SafeString& passphrase)
{
    m_key = RsaPrivateKey::fromPEM(pem, passphrase);
}

ByteBucket RsaSigner::sign(const unsigned char* digest, size_t length) const
{
    if (!m_key) {
        throw PlatformException("No private key loaded for signing.");
    }
    if (digest == nullptr || length != DigestLength) {
        throw PlatformException("Digest to sign must be a SHA-256 digest of 32 bytes.");
    }
    ERR_clear_error();
    std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> ctx(EVP_PKEY_CTX_new_from_pkey(nullptr, m_key->native(), nullptr));
    if (!ctx || EVP_PKEY_sign_init(ctx.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_PADDING) != 1) {
        throw PlatformException::fromOpenSsl("Failed to prepare RSA signature.");
    }

    const unsigned char* input = digest;
    size_t inputLength = length;
    unsigned char digestInfo[sizeof(kSha256DigestInfoHeader) + DigestLength];
    if (m_padding) {
        if (EVP_PKEY_CTX_set_signature_md(ctx.get(), EVP_sha256()) != 1) {
            throw PlatformException::fromOpenSsl("Failed to prepare RSA signature.");
        }
    } else {
        std::memcpy(digestInfo, kSha256DigestInfoHeader, sizeof(kSha256DigestInfoHeader));
        std::memcpy(digestInfo + sizeof(kSha256DigestInfoHeader), digest, DigestLength);
        input = digestInfo;
        inputLength = sizeof(digestInfo);
    }

    size_t sigLength = m_key->modulusSize();
    ByteBucket signature(sigLength);
    if (EVP_PKEY_sign(ctx.get(), signature.data(), &sigLength, input, inputLength) != 1) {
        throw PlatformException::fromOpenSsl("Failed to sign digest with RSA key.");
    }
    signature.resize(sigLength);
    return signature;
}

}  // namespace OracleCloudSDKWrapper
