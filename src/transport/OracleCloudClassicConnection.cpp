#include "transport/OracleCloudClassicConnection.h"

#include <cstdio>

#include "platform/PlatformConfig.h"
#include "platform/StringUtil.h"
#include "transport/RequestBodyMask.h"

namespace OracleCloudSDKWrapper {

namespace {

const char* const kComputeContentType = "Content-Type: application/oracle-compute-v3+json";
const char* const kPaaSContentType = "Content-Type: application/json";
const char* const kLoginUrl = "authenticate/";
const char* const kExpiredSessionBody = "{\"message\": \"Authorization token is invalid\"}";
const size_t kSetCookiePrefixLength = 11;  // "Set-Cookie:"

bool IsPaaSService(EOracleServiceType service) {
    return service == ORACLE_SERVICE_PAAS_DATABASE || service == ORACLE_SERVICE_PAAS_JAVA ||
           service == ORACLE_SERVICE_PAAS_MYSQL;
}

bool StartsWithNoCase(const std::string& text, const char* prefix) {
    return StringUtil::FindNoCase(text, prefix) == 0;
}

// Answers of these resources carry credentials, tokens or keys.
bool IsUnloggableUrl(const std::string& url) {
    return url.find("authenticate/") != std::string::npos ||
           url.find("paas/api/v1.1/instancemgmt") != std::string::npos || url.find("sshkey") != std::string::npos;
}

void AppendJsonString(std::string& out, const std::string& text) {
    out += '"';
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
            out += escaped;
        } else {
            out += c;
        }
    }
    out += '"';
}

}  // namespace

const char* const COracleCloudClassicConnection::kComputeUserPrefix = "/Compute-";

COracleCloudClassicConnection::COracleCloudClassicConnection(COracleCloudParser* parser)
    : COracleCloudBaseConnection(parser), awaitingSessionCookie(true), reconnecting(false) {}

COracleCloudClassicConnection::~COracleCloudClassicConnection() = default;

bool COracleCloudClassicConnection::isPaaS() const { return IsPaaSService(service); }

std::string COracleCloudClassicConnection::BuildLoginBody(const std::string& userText,
                                                          const std::string& password) {
    std::string body = "{\"password\": ";
    AppendJsonString(body, password);
    body += ", \"user\": ";
    AppendJsonString(body, userText);
    body += "}";
    return body;
}

std::string COracleCloudClassicConnection::CookieFromSetCookieLine(const std::string& line) {
    if (line.size() <= kSetCookiePrefixLength) {
        return std::string();
    }
    std::string cookie = line.substr(kSetCookiePrefixLength);
    while (!cookie.empty() && (cookie.back() == '\r' || cookie.back() == '\n')) cookie.pop_back();
    // A line break inside cannot go back as one header line: the client would
    // refuse it and every request would leave without the session.
    if (cookie.find_first_of("\r\n") != std::string::npos) {
        return std::string();
    }
    return cookie;
}

bool COracleCloudClassicConnection::connect(const std::string& serverText, const std::string& userText,
                                            const std::string& password, EOracleServiceType serviceType) {
    // Unknown types are refused below, after the client is prepared like a compute one.
    const char* contentType = IsPaaSService(serviceType) ? kPaaSContentType : kComputeContentType;
    if (!httpClient->HttpClientInit(contentType, true, true, nullptr)) {
        OCW_LOG_ERROR(&debugLog, "Failed to Initialize Curl Library");
        SetLastError("Failed to Initialize Curl Library");
        return false;
    }
    httpClient->SetLogContext(&debugLog);
    logAllCurlErrors = PlatformConfig::getNumber("VirtualServer", "OracleCloudLogAllCurlError", 0) != 0;
    server = serverText;
    service = serviceType;

    if (serviceType == ORACLE_SERVICE_COMPUTE) {
        user = userText;
        pwd = password;
        connected = true;
        if (user.find(kComputeUserPrefix) == std::string::npos) {
            user = kComputeUserPrefix + user;
        }
        // A second connect on a live connection must take the new login's
        // cookie, not send the old one along.
        awaitingSessionCookie = true;
        std::string response;
        if (post(kLoginUrl, BuildLoginBody(user, pwd), response)) {
            return true;
        }
        // With no answer at all the transfer's error text is already the last error.
        if (!response.empty()) {
            SetLastErrorFromResponse(response);
        }
        return false;
    }
    if (IsPaaSService(serviceType)) {
        user = userText;
        pwd = password;
        connected = true;
        awaitingSessionCookie = false;
        return true;
    }
    OCW_LOG_ERROR(&debugLog, "Received unsupported service type [%d]", static_cast<int>(serviceType));
    char text[64];
    std::snprintf(text, sizeof text, "Received unsupported service type [%d]", static_cast<int>(serviceType));
    SetLastError(text);
    return false;
}

std::string COracleCloudClassicConnection::getIdentityDomain() {
    const size_t lastSlash = user.rfind('/');
    if (user.empty() || lastSlash == std::string::npos) {
        return std::string();
    }
    if (isPaaS()) {
        return user.substr(0, lastSlash);
    }
    // "/Compute-acme/jdoe" gives "Compute-acme": the leading "/" is dropped.
    return lastSlash == 0 ? std::string() : user.substr(1, lastSlash - 1);
}

void COracleCloudClassicConnection::computeUrl(const std::string& serverText, const std::string& url,
                                               std::string& full) {
    if (StartsWithNoCase(url, "https://") || StartsWithNoCase(url, "http://")) {
        full = url;
    } else {
        std::string base = serverText;
        if (base.empty() || base.back() != '/') {
            base += '/';
        }
        full = base + url;
        if (!StartsWithNoCase(serverText, "https://")) {
            full = "https://" + full;
        }
    }
    OCW_LOG_LVL(2, &debugLog, "Computed URL [%s]", full.c_str());
}

bool COracleCloudClassicConnection::addLoginCurlHeaders() {
    const size_t lastSlash = user.rfind('/');
    const std::string userPart = lastSlash == std::string::npos ? user : user.substr(lastSlash + 1);
    return httpClient->AppendHeader(HTTP_HEADER_BASIC_AUTH, userPart + ":" + pwd);
}

bool COracleCloudClassicConnection::setCommonCurlHeaders(bool directory) {
    httpClient->FreeHeaderList();
    const char* accept = isPaaS()    ? "Accept: application/json"
                         : directory ? "Accept: application/oracle-compute-v3+directory+json"
                                     : "Accept: application/oracle-compute-v3+json";
    if (!httpClient->AppendHeader(HTTP_HEADER_LINE, accept)) {
        OCW_LOG_ERROR(&debugLog, "Failed to set CURL Accept header[%s]", accept);
    }
    if (!httpClient->AppendHeader(HTTP_HEADER_LINE, "User-Agent: curl/7.32.0")) {
        OCW_LOG_ERROR(&debugLog, "Failed to set CURL UserAgent header");
        return false;
    }
    if (awaitingSessionCookie) {
        return true;
    }
    if (service != ORACLE_SERVICE_COMPUTE) {
        // The header carries the password: neither it nor its failure text goes to the log.
        addLoginCurlHeaders();
        if (!httpClient->AppendHeader(HTTP_HEADER_LINE, "X-ID-TENANT-NAME: " + getIdentityDomain())) {
            OCW_LOG_ERROR(&debugLog, "Failed to set CURL X-ID-TENANT-NAME header");
            return false;
        }
        return true;
    }
    if (!httpClient->AppendHeader(HTTP_HEADER_LINE, "Cookie:" + sessionCookie)) {
        OCW_LOG_ERROR(&debugLog, "Failed to set CURL Cookie header");
        return false;
    }
    return true;
}

bool COracleCloudClassicConnection::_sendReqFull(HTTP_REQ_TYPE type, const std::string& url, const std::string& body,
                                                 std::string& response, bool directory, bool logFailure) {
    if (!connected) {
        OCW_LOG_ERROR(&debugLog, "Error:Connect module has to be called before making any queries.");
        SetLastError("Error:Connect module has to be called before making any queries.");
        return false;
    }
    std::string fullUrl;
    computeUrl(server, url, fullUrl);
    // The caller does not look at the result: a request goes out with the
    // headers that could be set, and the service says what is missing.
    setCommonCurlHeaders(directory);
    // The login body holds the password: it is never written, masked or not.
    const std::string loggableBody = awaitingSessionCookie ? std::string() : MaskSecretsInBody(body);
    if (DebugLog::IsEnabled(4)) {
        OCW_LOG_LVL(4, &debugLog, "Request:: type: [%d]. URL: [%s]. Request: [%s]", static_cast<int>(type),
                    fullUrl.c_str(), loggableBody.c_str());
    }
    if (logAllCurlErrors) {
        logFailure = true;
    }
    const bool ok = httpClient->SendHttpRequest(type, fullUrl, body.data(), body.size(), false, logFailure, nullptr);
    if (ok) {
        if (awaitingSessionCookie) {
            const std::string cookie = CookieFromSetCookieLine(getHttpResponseHeader("Set-Cookie:"));
            if (!cookie.empty()) {
                sessionCookie = cookie;
                awaitingSessionCookie = false;
            }
        }
    } else {
        if (logFailure) {
            OCW_LOG_ERROR(&debugLog, "Error: API failed. operation [%d]. URL[%s]. Request [%s]",
                          static_cast<int>(type), fullUrl.c_str(), loggableBody.c_str());
        }
    }
    const std::string transferError = httpClient->GetLastTransferError();
    if (!ok && !transferError.empty()) {
        // No answer, or one that broke off in its body: the transfer's own
        // text is all a caller can learn, and a cut body is no answer.
        SetLastError(transferError);
        response.clear();
    } else {
        recvResp(response);
    }
    LogResponse(fullUrl, response);
    return ok;
}

bool COracleCloudClassicConnection::sendReq(HTTP_REQ_TYPE type, const std::string& url, const std::string& body,
                                            std::string& response, bool directory, bool logFailure) {
    const bool ok = _sendReqFull(type, url, body, response, directory, logFailure);
    // A login that itself meets the expired text must not log in again from
    // inside the login: a request is tried at most twice.
    if (ok || reconnecting || !IsSessionCookieExpired(response)) {
        return ok;
    }
    OCW_LOG_DEBUG(&debugLog, "Reconnecting to server as HTTP session expired");
    awaitingSessionCookie = true;
    reconnecting = true;
    const bool relogged = connect(server, user, pwd, ORACLE_SERVICE_COMPUTE);
    reconnecting = false;
    if (!relogged) {
        OCW_LOG_ERROR(&debugLog, "Reconnect to server has failed!");
        return false;
    }
    awaitingSessionCookie = false;
    return _sendReqFull(type, url, body, response, directory, logFailure);
}

bool COracleCloudClassicConnection::IsSessionCookieExpired(const std::string& response) {
    return !isPaaS() && getLastHTTPErrorCode() == 401 && response == kExpiredSessionBody;
}

void COracleCloudClassicConnection::LogResponse(const std::string& url, const std::string& response) {
    if (IsUnloggableUrl(url)) {
        return;
    }
    const int level = logResponsesAlways ? 0 : 2;
    if (!DebugLog::IsEnabled(level)) {
        return;
    }
    // Instance documents carry a Windows administrator password in their user data.
    OCW_LOG_LVL(level, &debugLog, "Response from [%s]:\n%s ", url.c_str(), MaskSecretsInBody(response, true).c_str());
}

}  // namespace OracleCloudSDKWrapper
