// Key files are text the agent's user hands over: the OCI API key (PEM,
// perhaps encrypted) and the PuTTY key file whose public part becomes the
// instance's "ssh_authorized_keys". Input: the first line is the pass phrase
// (may be empty), the rest is the key file text. Checks:
// - RsaPrivateKey::fromPEM either gives an RSA key or throws
//   PlatformException (anything else escapes and is reported as a crash);
//   its message never carries the pass phrase or a base64 line of the key;
// - whatever a decoded key signs (padding option on or off) is as long as the
//   modulus and verifies with the key's public half;
// - the authorized-keys line is empty or "ssh-rsa ..." on one line, and never
//   carries anything from the private part of the key file.
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "FuzzSupport.h"
#include "oci/OracleCloudInfrastructureOperationsBodies.h"
#include "platform/PlatformException.h"
#include "platform/RsaSigner.h"

namespace {

using namespace OracleCloudSDKWrapper;

bool IsBase64Char(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/' ||
           c == '=';
}

// A pass phrase with a byte outside printable ASCII cannot occur by chance in
// an error text (those are printable), so finding it there means it leaked.
bool IsDistinctive(const std::string& passphrase) {
    if (passphrase.size() < 4) return false;
    for (unsigned char c : passphrase) {
        if (c < 0x20 || c >= 0x7f) return true;
    }
    return false;
}

void CheckMessage(const std::string& message, const std::string& passphrase, const std::string& keyText) {
    if (IsDistinctive(passphrase)) {
        OCW_FUZZ_CHECK(message.find(passphrase) == std::string::npos, "pass phrase in: " + ocwfuzz::Show(message));
    }
    size_t start = 0;
    while (start < keyText.size()) {
        size_t end = keyText.find('\n', start);
        if (end == std::string::npos) end = keyText.size();
        std::string line = keyText.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        bool base64 = line.size() >= 32;
        for (char c : line) base64 = base64 && IsBase64Char(c);
        if (base64) {
            OCW_FUZZ_CHECK(message.find(line) == std::string::npos, "key text in: " + ocwfuzz::Show(message));
        }
        start = end + 1;
    }
}

// RSASSA-PKCS1-v1_5 / SHA-256 verification with the key's public half, as a
// server checks an HTTP signature.
bool Verifies(const RsaPrivateKey& key, const unsigned char* digest, size_t length, const ByteBucket& signature) {
    EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new_from_pkey(nullptr, key.native(), nullptr);
    bool ok = ctx != nullptr && EVP_PKEY_verify_init(ctx) == 1 &&
              EVP_PKEY_CTX_set_rsa_padding(ctx, RSA_PKCS1_PADDING) == 1 &&
              EVP_PKEY_CTX_set_signature_md(ctx, EVP_sha256()) == 1 &&
              EVP_PKEY_verify(ctx, signature.data(), signature.size(), digest, length) == 1;
    EVP_PKEY_CTX_free(ctx);
    return ok;
}

// A signer may refuse a key it cannot use (PlatformException), but whatever
// it signs must verify, with the padding option on and off alike.
void CheckSigning(const std::shared_ptr<const RsaPrivateKey>& key) {
    OCW_FUZZ_CHECK(EVP_PKEY_get_base_id(key->native()) == EVP_PKEY_RSA, "fromPEM gave a key that is not RSA");
    unsigned char digest[RsaSigner::DigestLength];
    for (size_t i = 0; i < sizeof(digest); ++i) digest[i] = static_cast<unsigned char>(i * 7 + 1);

    for (bool padding : {true, false}) {
        RsaSigner signer;
        signer.setPrivateKey(key);
        signer.enablePadding(padding);
        ByteBucket signature;
        try {
            signature = signer.sign(digest, sizeof(digest));
        } catch (const PlatformException&) {
            continue;
        }
        const std::string where = std::string(padding ? "padded" : "bare") + " signature with a " +
                                  std::to_string(key->modulusSize() * 8) + "-bit key";
        OCW_FUZZ_CHECK(signature.size() == key->modulusSize(), where + ": wrong size");
        OCW_FUZZ_CHECK(Verifies(*key, digest, sizeof(digest), signature), where + ": does not verify");
    }
}

void CheckPrivateKeyText(const std::string& passphrase, const std::string& keyText) {
    try {
        std::shared_ptr<const RsaPrivateKey> key =
            RsaPrivateKey::fromPEM(SafeString(keyText), SafeString(passphrase));
        OCW_FUZZ_CHECK(key != nullptr, "fromPEM returned no key and did not throw");
        CheckSigning(key);
    } catch (const PlatformException& e) {
        CheckMessage(e.what(), passphrase, keyText);
    }
}

void CheckAuthorizedKeyLine(const std::string& keyText) {
    const std::string line = ocioperations::SshAuthorizedKeyFromKeyText(keyText);
    const std::string where = "key text [" + ocwfuzz::Show(keyText) + "] gives [" + ocwfuzz::Show(line) + "]";
    if (!line.empty()) {
        OCW_FUZZ_CHECK(line.compare(0, 8, "ssh-rsa ") == 0, where);
        OCW_FUZZ_CHECK(line.find_first_of("\r\n") == std::string::npos, where);
    }
    // Whatever the public part looks like, a private part that follows it
    // stays out of the line.
    static const std::string kMarker = "PRIVATE+PART+must+not+leak";
    if (keyText.find(kMarker) != std::string::npos) return;
    const std::string withPrivate = keyText + "\r\nPrivate-Lines: 1\r\n" + kMarker + "\r\nPrivate-MAC: 00\r\n";
    const std::string line2 = ocioperations::SshAuthorizedKeyFromKeyText(withPrivate);
    OCW_FUZZ_CHECK(line2.find(kMarker) == std::string::npos,
                   "private part leaks: key text [" + ocwfuzz::Show(withPrivate) + "] gives [" + ocwfuzz::Show(line2) + "]");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ocwfuzz::ResetLog();
    const std::string input(reinterpret_cast<const char*>(data), size);
    size_t nl = input.find('\n');
    std::string passphrase = nl == std::string::npos ? std::string() : input.substr(0, nl);
    if (!passphrase.empty() && passphrase.back() == '\r') passphrase.pop_back();
    const std::string keyText = nl == std::string::npos ? input : input.substr(nl + 1);

    CheckPrivateKeyText(passphrase, keyText);
    CheckAuthorizedKeyLine(keyText);
    return 0;
}
