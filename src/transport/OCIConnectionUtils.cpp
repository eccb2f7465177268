#include "transport/OCIConnectionUtils.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <random>

#include "platform/PlatformConfig.h"
#include "platform/PlatformException.h"
#include "platform/RsaSigner.h"
#include "platform/Sha256Hasher.h"
#include "platform/StringUtil.h"
#include "transport/PrivateKeyCache.h"

namespace OracleCloudSDKWrapper {

DebugLog OCIConnectionUtils::s_debugLog;

namespace {

const char* const kDayNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char* const kMonthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

time_t systemTime() { return ::time(nullptr); }

std::atomic<OCIConnectionUtils::TimeSource> g_timeSource{&systemTime};

}  // namespace

bool OCIConnectionUtils::SignWithRSA_SHA256(const std::string& keyFile, const std::string& data,
                                            const SafeString& passphrase, bool& decryptFailed, ByteBucket& signature)
{
    ByteBucket digest;
    if (!DigestWithSHA256(data, digest)) {
        OCW_LOG_LVL(3, &s_debugLog, "Failed to calculate SHA256 digest");
        return false;
    }
    OCW_LOG_LVL(7, &s_debugLog, "SHA 256 digest length: %d", static_cast<int>(digest.size()));
    ByteBucket sig;
    if (!SignDigestWithRSA(digest, keyFile, passphrase, decryptFailed, sig)) {
        OCW_LOG_LVL(3, &s_debugLog, "Failed to sign SHA256 digest");
        return false;
    }
    OCW_LOG_LVL(7, &s_debugLog, "RSA signature length: %d", static_cast<int>(sig.size()));
    signature = std::move(sig);
    return true;
}

bool OCIConnectionUtils::DigestWithSHA256(const std::string& data, ByteBucket& digest)
{
    try {
        Sha256Hasher hasher;
        hasher.update(data);
        digest = hasher.finish();
        return true;
    } catch (const PlatformException& e) {
        OCW_LOG_ERROR(&s_debugLog, "Failed to calculate disgest.");
        return false;
    }
}

bool OCIConnectionUtils::SignDigestWithRSA(const ByteBucket& digest, const std::string& keyFile,
                                           const SafeString& passphrase, bool& decryptFailed, ByteBucket& signature)
{
    try {
        // The cache stats the file before every use: a replaced key file takes
        // effect at this very signature, an unchanged one is not decrypted again.
        std::string readError;
        std::shared_ptr<const RsaPrivateKey> key = PrivateKeyCache::instance().get(keyFile, passphrase, readError);
        if (!key) {
            OCW_LOG_ERROR(&s_debugLog, "Failed to read private key file. Error[%s]", readError.c_str());
            return false;
        }
        RsaSigner signer;
        signer.enablePadding(false);
        signer.setPrivateKey(std::move(key));
        signature = signer.sign(digest);
        return true;
    } catch (const PlatformException& e) {
        if (std::strstr(e.what(), "Failed to import private key.") != nullptr) {
            decryptFailed = true;
        }
        OCW_LOG_ERROR(&s_debugLog, "Failed to sign the digest.");
        OCW_LOG_LVL(3, &s_debugLog, "Signer reported: %s", e.what());
        return false;
    } catch (const std::exception& e) {
        // Allocation failures and the like: still a failed signature, never a crash.
        OCW_LOG_ERROR(&s_debugLog, "Failed to sign the digest.");
        return false;
    }
}

std::string OCIConnectionUtils::Base64EncodeWithEncodeString(const unsigned char* bytes, int length,
                                                             const char* alphabet)
{
    if (length < 0 || (bytes == nullptr && length > 0) || alphabet == nullptr || std::strlen(alphabet) < 64) {
        return std::string();
    }
    size_t n = static_cast<size_t>(length);
    std::string out;
    out.reserve(((n + 2) / 3) * 4);
    size_t i = 0;
    for (; i + 3 <= n; i += 3) {
        unsigned v = (unsigned(bytes[i]) << 16) | (unsigned(bytes[i + 1]) << 8) | unsigned(bytes[i + 2]);
        out.push_back(alphabet[(v >> 18) & 0x3f]);
        out.push_back(alphabet[(v >> 12) & 0x3f]);
        out.push_back(alphabet[(v >> 6) & 0x3f]);
        out.push_back(alphabet[v & 0x3f]);
    }
    size_t rest = n - i;
    if (rest == 1) {
        unsigned v = unsigned(bytes[i]) << 16;
        out.push_back(alphabet[(v >> 18) & 0x3f]);
        out.push_back(alphabet[(v >> 12) & 0x3f]);
        out += "==";
    } else if (rest == 2) {
        unsigned v = (unsigned(bytes[i]) << 16) | (unsigned(bytes[i + 1]) << 8);
        out.push_back(alphabet[(v >> 18) & 0x3f]);
        out.push_back(alphabet[(v >> 12) & 0x3f]);
        out.push_back(alphabet[(v >> 6) & 0x3f]);
        out.push_back('=');
    }
    return out;
}

std::string OCIConnectionUtils::Base64URLEncode(const std::string& bytes)
{
    return Base64EncodeWithEncodeString(reinterpret_cast<const unsigned char*>(bytes.data()),
                                        static_cast<int>(bytes.size()), kBase64Alphabet);
}

std::string OCIConnectionUtils::Base64URLEncode(const ByteBucket& bytes)
{
    return Base64EncodeWithEncodeString(bytes.data(), static_cast<int>(bytes.size()), kBase64Alphabet);
}

const char* OCIConnectionUtils::asctimeBMC(const struct tm* time)
{
    // Per thread, so that facades on different threads can sign at the same time.
    static thread_local char buffer[64];
    if (time == nullptr) {
        buffer[0] = '\0';
        return buffer;
    }
    const char* day = (time->tm_wday >= 0 && time->tm_wday < 7) ? kDayNames[time->tm_wday] : "???";
    const char* month = (time->tm_mon >= 0 && time->tm_mon < 12) ? kMonthNames[time->tm_mon] : "???";
    std::snprintf(buffer, sizeof(buffer), "%.3s, %.2d %.3s %d %.2d:%.2d:%.2d GMT", day, time->tm_mday, month,
                  time->tm_year + 1900, time->tm_hour, time->tm_min, time->tm_sec);
    return buffer;
}

std::string OCIConnectionUtils::GetCurrentGMTTimeString()
{
    time_t now = g_timeSource.load()();
    struct tm broken;
    if (gmtime_r(&now, &broken) == nullptr) {
        std::memset(&broken, 0, sizeof(broken));
    }
    return asctimeBMC(&broken);
}

std::string OCIConnectionUtils::GetFullKeyFilePath(const std::string& name)
{
    if (name.find('/') != std::string::npos) {
        return name;
    }
    std::string base = PlatformConfig::getDirectory("Base", "dBASEHOME");
    return PathUtil::Join(PathUtil::Join(PathUtil::Join(base, "certificates"), "external"), name);
}

SOCISigningParts OCIConnectionUtils::ComposeSigningString(const std::string& method, const std::string& date,
                                                          const std::string& requestTarget, const std::string& host,
                                                          const std::string& body)
{
    SOCISigningParts parts;
    parts.headers = "date (request-target) host";
    parts.signingString = "date: " + date + "\n(request-target): " + requestTarget + "\nhost: " + host;
    if (method == "put" || method == "post" || method == "patch") {
        ByteBucket digest;
        std::string bodyHash;
        if (DigestWithSHA256(body, digest)) {
            bodyHash = Base64URLEncode(digest);
        }
        parts.contentSha256Header = "x-content-sha256: " + bodyHash;
        parts.signingString += "\ncontent-length: " + std::to_string(body.size()) +
                               "\ncontent-type: application/json\n" + parts.contentSha256Header;
        parts.headers += " content-length content-type x-content-sha256";
    }
    return parts;
}

std::string OCIConnectionUtils::NewRequestId()
{
    // Not a secret, only unique: a per-thread generator seeded once is enough
    // and needs no lock between facades.
    thread_local std::mt19937_64 generator(std::random_device{}());
    char text[33];
    std::snprintf(text, sizeof text, "%016llX%016llX", static_cast<unsigned long long>(generator()),
                  static_cast<unsigned long long>(generator()));
    return text;
}

std::string OCIConnectionUtils::KeyId(const SSignerInfoLib& signer)
{
    return signer.tenancyId + "/" + signer.userId + "/" + signer.fingerprint;
}

std::string OCIConnectionUtils::FormatAuthorizationHeader(const std::string& headers, const std::string& keyId,
                                                          const std::string& signatureBase64)
{
    return "authorization: Signature version=\"1\",algorithm=\"rsa-sha256\",headers=\"" + headers + "\",keyId=\"" +
           keyId + "\",signature=\"" + signatureBase64 + "\"";
}

OCIConnectionUtils::TimeSource OCIConnectionUtils::SetTimeSource(TimeSource source)
{
    return g_timeSource.exchange(source != nullptr ? source : &systemTime);
}

}  // namespace OracleCloudSDKWrapper
