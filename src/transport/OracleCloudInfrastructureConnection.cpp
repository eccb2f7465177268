#include "transport/OracleCloudInfrastructureConnection.h"

#include <curl/curl.h>

#include <boost/lexical_cast.hpp>
#include <algorithm>
#include <cctype>
#include <limits>

#include "platform/LibraryVersion.h"
#include "platform/PlatformConfig.h"
#include "platform/StringUtil.h"
#include "transport/OCIConnectionUtils.h"
#include "transport/RequestBodyMask.h"

namespace OracleCloudSDKWrapper {

namespace {

const char kSection[] = "VirtualServer";
const uint32_t kDefaultRetryInitialInterval = 2;
const float kDefaultRetryMultiplier = 2.0f;
const uint32_t kDefaultMaxRetryCount = 6;
const char kDefaultRegion[] = "us-phoenix-1";
const char kDefaultApiDomain[] = "oraclecloud.com";

bool startsWithNoCase(const std::string& text, const char* prefix)
{
    return StringUtil::FindNoCase(text, prefix) == 0;
}

std::string toLower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

// The authorization header with the signature shortened: the line stays
// useful for diagnosis (headers, keyId) without putting a replayable
// credential into the log.
std::string authorizationForLog(const std::string& header)
{
    const std::string marker = "signature=\"";
    size_t at = header.rfind(marker);
    if (at == std::string::npos) {
        return header;
    }
    size_t start = at + marker.size();
    size_t end = header.find('"', start);
    size_t length = (end == std::string::npos ? header.size() : end) - start;
    if (length <= 8) {
        return header;
    }
    return header.substr(0, start + 8) + "...(" + std::to_string(length) + " characters)\"";
}

}  // namespace

COracleCloudInfrastructureConnection::COracleCloudInfrastructureConnection(COracleCloudParser* parser)
    : COracleCloudBaseConnection(parser),
      requestRetryInitialInterval(kDefaultRetryInitialInterval),
      requestRetryMultiplier(kDefaultRetryMultiplier),
      maxRequestRetryCount(kDefaultMaxRetryCount),
      apiDomain(kDefaultApiDomain)
{
    // An unsigned count taken from a negative or oversized number would mean
    // billions of retries; such values keep the default.
    auto readCount = [this](const char* key, uint32_t& target, const char* usedFormat) {
        if (PlatformConfig::getStringTrim(kSection, key).empty()) {
            return;
        }
        long long value = PlatformConfig::getNumber(kSection, key, static_cast<long long>(target));
        if (value < 0 || value > std::numeric_limits<uint32_t>::max()) {
            OCW_LOG_ERROR(&debugLog, "Value [%lld] of [%s] is out of range. Using default [%u]", value, key, target);
            return;
        }
        target = static_cast<uint32_t>(value);
        OCW_LOG_DEBUG(&debugLog, usedFormat, target);
    };
    readCount("nOCIRequestRetryInitialIntervalInSeconds", requestRetryInitialInterval,
              "Using request retry initial interval from registry: [%u]");

    std::string multiplierText = PlatformConfig::getStringTrim(kSection, "sOCIRequestRetryIntervalMultiplier");
    if (!multiplierText.empty()) {
        try {
            float value = boost::lexical_cast<float>(multiplierText);
            if (value >= 1.0f && value <= 2.0f) {
                requestRetryMultiplier = value;
                OCW_LOG_DEBUG(&debugLog, "Using request retry interval multiplier from registry: [%.3f]",
                              static_cast<double>(value));
            } else {
                OCW_LOG_DEBUG(&debugLog,
                              "Request retry interval from registry[%.3f] is not within allowable limit. Using "
                              "default multiplier",
                              static_cast<double>(value));
            }
        } catch (const std::exception& e) {
            OCW_LOG_ERROR(&debugLog,
                          "Exception while reading request retry interval multiplier from registry. Will use default "
                          "multiplier. String from registry:[%s], exception:[%s]",
                          multiplierText.c_str(), e.what());
        }
    }

    readCount("nOCIMaximumRequestRetryCount", maxRequestRetryCount,
              "Using maximum request retry count from registry: [%u]");

    std::string domain = PlatformConfig::getStringTrim(kSection, "sOCIApiDomain", kDefaultApiDomain);
    domain.erase(0, domain.find_first_not_of('.'));
    if (!domain.empty()) {
        apiDomain = domain;
    }
    endpointOverride = PlatformConfig::getStringTrim(kSection, "sOCIEndpointOverride");
    while (!endpointOverride.empty() && endpointOverride.back() == '/') {
        endpointOverride.pop_back();
    }
    if (!endpointOverride.empty()) {
        OCW_LOG_DEBUG(&debugLog, "Sending OCI requests to [%s]", endpointOverride.c_str());
    }
}

COracleCloudInfrastructureConnection::~COracleCloudInfrastructureConnection() = default;

bool COracleCloudInfrastructureConnection::connect(const std::string& serverText, const std::string& userText,
                                                   const std::string& password, EOracleServiceType serviceType)
{
    if (!httpClient->HttpClientInit("content-type: application/json", true, true, nullptr)) {
        OCW_LOG_ERROR(&debugLog, "Failed to Initialize Curl Library");
        return false;
    }
    if (!httpClient->SetOptionInt(CURLOPT_NOSIGNAL, 1)) {
        OCW_LOG_ERROR(&debugLog, "Not able to set curl option CURLOPT_NOSIGNAL - processing further");
    }
    if (!proxyServer.empty()) {
        if (!httpClient->SetOptionInt(CURLOPT_PROXYTYPE, CURLPROXY_HTTP)) {
            OCW_LOG_ERROR(&debugLog,
                          "Not able to set curl option CURLOPT_PROXYTYPE - skipping setting of proxy details");
        } else if (!httpClient->SetOptionString(CURLOPT_PROXY, proxyServer)) {
            OCW_LOG_ERROR(&debugLog,
                          "Not able to set curl option CURLOPT_PROXY - skipping setting of proxy username password");
        } else {
            SafeString credentials(proxyUser);
            credentials.append(":", 1);
            credentials.append(proxyPassword.data(), proxyPassword.size());
            if (!httpClient->SetOptionString(CURLOPT_PROXYUSERPWD, credentials.str())) {
                OCW_LOG_ERROR(&debugLog, "Not able to set curl option CURLOPT_PROXYUSERPWD - processing further");
            }
        }
    }

    logAllCurlErrors = PlatformConfig::getNumber(kSection, "OracleCloudLogAllCurlError", 0) != 0;
    httpClient->toggleTrace(logAllCurlErrors);

    std::vector<std::string> tokens = StringUtil::Split(userText, '|');
    if (tokens.size() < 3) {
        OCW_LOG_ERROR(&debugLog, "Failed to Initialize User Identifiers ");
        return false;
    }
    signerInfo.userId = tokens[0];
    signerInfo.fingerprint = tokens[1];
    signerInfo.keyFile = OCIConnectionUtils::GetFullKeyFilePath(tokens[2]);
    signerInfo.region = (tokens.size() > 3 && !tokens[3].empty()) ? tokens[3] : kDefaultRegion;
    signerInfo.tenancyId = serverText;
    signerInfo.passphrase = SafeString(password);
    service = serviceType;
    connected = true;
    OCW_LOG_DEBUG(&debugLog, "Received service type [%d] for OCID[%s]", static_cast<int>(serviceType),
                  signerInfo.userId.c_str());
    return true;
}

std::string COracleCloudInfrastructureConnection::getIdentityDomain() { return signerInfo.tenancyId; }

void COracleCloudInfrastructureConnection::setRegion(const std::string& region) { signerInfo.region = region; }

std::string COracleCloudInfrastructureConnection::getRegion() { return signerInfo.region; }

std::string COracleCloudInfrastructureConnection::getEndPoint()
{
    const char* label = nullptr;
    switch (static_cast<int>(service)) {
    case OCI_SERVICE_CORE: label = "iaas."; break;
    case OCI_SERVICE_DATABASE: label = "database."; break;
    case OCI_SERVICE_AUDIT: label = "audit."; break;
    case OCI_SERVICE_IDENTITY: label = "identity."; break;
    case OCI_SERVICE_OBJECT_STORAGE: label = "objectstorage."; break;
    case OCI_SERVICE_SEARCH: label = "query."; break;
    default: return std::string();
    }
    return label + signerInfo.region + "." + apiDomain;
}

bool COracleCloudInfrastructureConnection::computeUrl(const std::string& url, std::string& fullUrl)
{
    if (startsWithNoCase(url, "https://")) {
        fullUrl = url;
        return true;
    }
    fullUrl = (endpointOverride.empty() ? "https://" + getEndPoint() : endpointOverride) + url;
    OCW_LOG_LVL(2, &debugLog, "Computed URL [%s]", fullUrl.c_str());
    return true;
}

std::string COracleCloudInfrastructureConnection::buildRequestTarget(const std::string& method,
                                                                     const std::string& url)
{
    std::string target = method + " " + url;
    OCW_LOG_LVL(3, &debugLog, "Computed URL [%s]", target.c_str());
    return target;
}

bool COracleCloudInfrastructureConnection::getAuthorizationToken(const std::string& method, const std::string& url,
                                                                 const std::string& body)
{
    std::string keyId = OCIConnectionUtils::KeyId(signerInfo);
    dateString = OCIConnectionUtils::GetCurrentGMTTimeString();
    std::string host = getEndPoint();
    requestTarget = buildRequestTarget(method, url);
    SOCISigningParts parts = OCIConnectionUtils::ComposeSigningString(method, dateString, requestTarget, host, body);
    if (!parts.contentSha256Header.empty()) {
        contentSha256Header = parts.contentSha256Header;
    }
    OCW_LOG_LVL(7, &debugLog, "Signing String: %s", parts.signingString.c_str());

    bool decryptFailed = false;
    ByteBucket signature;
    if (!OCIConnectionUtils::SignWithRSA_SHA256(signerInfo.keyFile, parts.signingString, signerInfo.passphrase,
                                                decryptFailed, signature)) {
        if (decryptFailed) {
            SetLastError(
                "Failed to decrypt the private key. Please check if the private key passphrase provided is correct.");
        }
        OCW_LOG_LVL(3, &debugLog, "Failed to get signature for signing string[%s]", parts.signingString.c_str());
        return false;
    }
    authorizationHeader = OCIConnectionUtils::FormatAuthorizationHeader(
        parts.headers, keyId, OCIConnectionUtils::Base64URLEncode(signature));
    OCW_LOG_LVL(7, &debugLog, "authorization header: \n%s", authorizationForLog(authorizationHeader).c_str());
    return true;
}

bool COracleCloudInfrastructureConnection::setCurlHeaders(HTTP_REQ_TYPE type, const std::string& /*url*/,
                                                          const std::string& body)
{
    httpClient->FreeHeaderList();
    if (!httpClient->AppendHeader(HTTP_HEADER_LINE, "Accept: application/json") ||
        !httpClient->AppendHeader(HTTP_HEADER_LINE, "Date: " + dateString) ||
        !httpClient->AppendHeader(HTTP_HEADER_LINE, "Host: " + getEndPoint())) {
        OCW_LOG_ERROR(&debugLog, "Failed to set CURL Accept header");
        return false;
    }
    if (type == HTTP_REQ_POST || type == HTTP_REQ_PUT || type == HTTP_REQ_PATCH) {
        if (!httpClient->AppendHeader(HTTP_HEADER_LINE, "Content-Length: " + std::to_string(body.size())) ||
            !httpClient->AppendHeader(HTTP_HEADER_LINE, contentSha256Header)) {
            OCW_LOG_ERROR(&debugLog, "Failed to set CURL Accept authentication header");
            return false;
        }
    }
    if (!httpClient->AppendHeader(HTTP_HEADER_LINE, "Connection: Keep-Alive")) {
        OCW_LOG_ERROR(&debugLog, "Failed to set CURL Keep-Alive header");
        return false;
    }
    if (!httpClient->AppendHeader(HTTP_HEADER_LINE, authorizationHeader)) {
        OCW_LOG_ERROR(&debugLog, "Failed to set CURL Accept authentication header");
        return false;
    }
    // Extension headers, after the designed ones and outside the signature:
    // who is calling, and the id under which the provider's support can find
    // the request. Neither is worth failing a request for.
    if (!httpClient->AppendHeader(HTTP_HEADER_LINE, std::string("User-Agent: ") + LibraryUserAgent()) ||
        (!clientRequestId.empty() && !httpClient->AppendHeader(HTTP_HEADER_LINE, "opc-request-id: " + clientRequestId))) {
        OCW_LOG_ERROR(&debugLog, "Failed to set CURL User-Agent or opc-request-id header");
    }
    // A create whose first attempt reached the service but whose answer was
    // lost (500, 429 after the work was done) must not create twice when
    // retried: the service answers a repeated token with the first result.
    if (type == HTTP_REQ_POST && !retryToken.empty() &&
        !httpClient->AppendHeader(HTTP_HEADER_LINE, "opc-retry-token: " + retryToken)) {
        OCW_LOG_ERROR(&debugLog, "Failed to set CURL opc-retry-token header");
    }
    return true;
}

bool COracleCloudInfrastructureConnection::_sendReqFull(HTTP_REQ_TYPE type, const std::string& url,
                                                        const std::string& body, std::string& response,
                                                        bool /*flag1*/, bool /*flag2*/)
{
    m_lastAttemptSent = false;
    if (!connected) {
        OCW_LOG_ERROR(&debugLog, "Error:Connect module has to be called before making any queries.");
        return false;
    }
    std::string fullUrl;
    computeUrl(url, fullUrl);
    if (DebugLog::IsEnabled(4)) {
        OCW_LOG_LVL(4, &debugLog, "Request:: type: [%d]. URL: [%s]. Request: [%s]", static_cast<int>(type),
                    fullUrl.c_str(), MaskSecretsInBody(body).c_str());
    }
    std::string method = toLower(HttpClient::GetHttpReqTypeString(type));
    if (method == "unknown") {
        OCW_LOG_ERROR(&debugLog, "Error:failed to get method type for request[%d].", static_cast<int>(type));
        return false;
    }
    if (!getAuthorizationToken(method, url, body)) {
        OCW_LOG_LVL(2, &debugLog, "Failed to generate authorization header for request[%d][%s]",
                    static_cast<int>(type), url.c_str());
        return false;
    }
    if (!setCurlHeaders(type, url, body)) {
        return false;
    }
    m_lastAttemptSent = true;
    bool ok = httpClient->SendHttpRequest(type, fullUrl, body.data(), body.size(), false, true, nullptr);
    if (!ok) {
        OCW_LOG_ERROR(&debugLog, "Error: API failed. operation [%d]. URL[%s]. Request [%s]", static_cast<int>(type),
                      fullUrl.c_str(), MaskSecretsInBody(body).c_str());
    }
    const std::string transferError = httpClient->GetLastTransferError();
    if (!ok && !transferError.empty()) {
        // No answer, or one cut off in its body: the transfer's text is the
        // error, and a partial body is no answer to parse.
        SetLastError(transferError);
        response.clear();
        return false;
    }
    recvResp(response);
    LogResponse(fullUrl, response);
    return ok;
}

bool COracleCloudInfrastructureConnection::sendReq(HTTP_REQ_TYPE type, const std::string& url,
                                                   const std::string& body, std::string& response, bool flag1,
                                                   bool flag2)
{
    uint32_t attempt = 1;
    float wait = static_cast<float>(requestRetryInitialInterval);
    // One id for every attempt of this request, so support finds them all.
    clientRequestId = OCIConnectionUtils::NewRequestId();
    // Search only reads, although it is a POST; every other POST creates or
    // acts, and keeps one token over all its attempts.
    retryToken = type == HTTP_REQ_POST && service != OCI_SERVICE_SEARCH ? OCIConnectionUtils::NewRequestId()
                                                                        : std::string();
    for (;;) {
        response.clear();
        if (_sendReqFull(type, url, body, response, flag1, flag2)) {
            return true;
        }
        // An attempt that never reached the server (not connected, signing
        // failed) has no status of its own: the client's code would still be
        // that of an earlier request, so it must not cause a retry.
        if (!m_lastAttemptSent || !isRetryableHTTPError(getLastHTTPErrorCode())) {
            return false;
        }
        if (attempt > maxRequestRetryCount) {
            return false;
        }
        // The pause is truncated to whole seconds; the exact value keeps growing.
        unsigned seconds = wait >= 1.0e6f ? 1000000u : static_cast<unsigned>(wait);
        OCW_LOG_DEBUG(&debugLog, "Encountered a retryable error. Will retry the request after [%d] seconds.",
                      static_cast<int>(seconds));
        sleepBeforeRetry(seconds);
        ++attempt;
        wait *= requestRetryMultiplier;
    }
}

bool COracleCloudInfrastructureConnection::isRetryableHTTPError(long code) { return code == 429 || code == 500; }

void COracleCloudInfrastructureConnection::LogResponse(const std::string& url, const std::string& response)
{
    int level = logResponsesAlways ? 0 : 2;
    if (!DebugLog::IsEnabled(level)) {
        return;
    }
    OCW_LOG_LVL(level, &debugLog, "Response from [%s]:\n%s ", url.c_str(),
                MaskSecretsInBody(response, true).c_str());
}

void COracleCloudInfrastructureConnection::sleepBeforeRetry(unsigned seconds)
{
    PlatformSleep(static_cast<unsigned long>(seconds) * 1000UL);
}

}  // namespace OracleCloudSDKWrapper
