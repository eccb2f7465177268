#include "transport/OracleCloudBaseConnection.h"

#include "platform/JsonHelper.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {

COracleCloudBaseConnection::COracleCloudBaseConnection(COracleCloudParser* parser)
    : COracleCloudErrorHandler(parser),
      httpClient(new HttpClient()),
      connected(false),
      logResponsesAlways(false),
      logAllCurlErrors(false),
      service(ORACLE_SERVICE_UNKNOWN) {}

COracleCloudBaseConnection::~COracleCloudBaseConnection() = default;

bool COracleCloudBaseConnection::connect(const std::string&, const std::string&, const std::string&,
                                         EOracleServiceType) {
    return false;
}

bool COracleCloudBaseConnection::checkConnection() { return false; }

bool COracleCloudBaseConnection::SetWebProxy(const std::string& proxyServerText, const std::string& proxyUserText,
                                             const std::string& proxyPasswordText) {
    proxyServer = proxyServerText;
    proxyUser = proxyUserText;
    proxyPassword = proxyPasswordText;
    return true;
}

bool COracleCloudBaseConnection::get(const std::string& url, std::string& response, bool flag1, bool flag2) {
    return sendCounted(HTTP_REQ_GET, url, std::string(), response, flag1, flag2);
}

bool COracleCloudBaseConnection::post(const std::string& url, const std::string& body, std::string& response) {
    return sendCounted(HTTP_REQ_POST, url, body, response, false, true);
}

bool COracleCloudBaseConnection::del(const std::string& url, const std::string& body, std::string& response) {
    return sendCounted(HTTP_REQ_DELETE, url, body, response, false, true);
}

bool COracleCloudBaseConnection::put(const std::string& url, const std::string& body, std::string& response) {
    return sendCounted(HTTP_REQ_PUT, url, body, response, false, true);
}

void COracleCloudBaseConnection::appendQueryStringArgument(std::string& query, const std::string& argument) {
    query += query.empty() ? "?" : "&";
    query += argument;
}

std::string COracleCloudBaseConnection::getServer() { return server; }
std::string COracleCloudBaseConnection::getUser() { return user; }
std::string COracleCloudBaseConnection::getPwd() { return pwd; }
std::string COracleCloudBaseConnection::getIdentityDomain() { return std::string(); }

long COracleCloudBaseConnection::getLastHTTPErrorCode() { return httpClient->GetHttpErrorCode(); }

std::string COracleCloudBaseConnection::getHttpResponseHeader(const char* name) {
    if (name == nullptr) {
        return std::string();
    }
    const char* line = httpClient->GetHttpResponseHeader(name);
    return line != nullptr ? std::string(line) : std::string();
}

std::string COracleCloudBaseConnection::headerLineValue(const std::string& line) {
    const size_t colon = line.find(':');
    if (colon == std::string::npos) {
        return std::string();
    }
    return StringUtil::Trim(line.substr(colon + 1), "\n\r ");
}

EOracleServiceType COracleCloudBaseConnection::getService() { return service; }
void COracleCloudBaseConnection::setService(const EOracleServiceType& newService) { service = newService; }

void COracleCloudBaseConnection::setRegion(const std::string&) {}
std::string COracleCloudBaseConnection::getRegion() { return std::string(); }

void COracleCloudBaseConnection::recvResp(std::string& response) {
    size_t size = 0;
    const char* body = httpClient->GetHttpResponse(size, false);
    if (body != nullptr) {
        response.assign(body, size);
    } else {
        response.clear();
    }
}

std::string COracleCloudBaseConnection::urlEncode(const std::string& text) {
    std::string encoded;
    httpClient->UrlEscape(text, encoded);
    if (encoded.empty()) {
        OCW_LOG_ERROR(&debugLog, "Failed to encode [%s] - result empty", text.c_str());
        return text;
    }
    OCW_LOG_LVL(2, &debugLog, "Encoded [%s]=>[%s]", text.c_str(), encoded.c_str());
    return encoded;
}

bool COracleCloudBaseConnection::sendCounted(HTTP_REQ_TYPE type, const std::string& url, const std::string& body,
                                             std::string& response, bool flag1, bool flag2) {
    ++requestSequence;
    const unsigned long long sequence = requestSequence;
    const unsigned long long sentBefore = httpClient->GetRequestCount();
    clientRequestId.clear();
    if (sendReq(type, url, body, response, flag1, flag2)) {
        return true;
    }
    recordFailure(type, url, response, httpClient->GetRequestCount() - sentBefore);
    failedRequestSequence = sequence;
    return false;
}

void COracleCloudBaseConnection::recordFailure(HTTP_REQ_TYPE type, const std::string& url,
                                               const std::string& response, unsigned long long attempts) {
    SOracleCloudFailureInfoLib record;
    record.request = std::string(HttpClient::GetHttpReqTypeString(type)) + " " + url;
    record.clientRequestId = clientRequestId;
    record.attempts = static_cast<unsigned>(attempts);
    // A request that never went out (not connected, not signed) has no answer
    // of its own: the client still holds the previous request's.
    if (attempts > 0) {
        record.httpStatus = getLastHTTPErrorCode();
        // Also after a status line: an answer cut off in its body is no answer.
        record.transferError = httpClient->GetLastTransferError();
        const std::string idLine = getHttpResponseHeader("opc-request-id");
        const size_t colon = idLine.find(':');
        if (colon != std::string::npos) {
            record.serviceRequestId = StringUtil::Trim(idLine.substr(colon + 1));
        }
        // Error bodies that are not JSON (a proxy's page) leave code and message empty.
        JsonValue document;
        if (JsonHelper::Parse(response, document) && document.is_object()) {
            record.serviceCode = JsonHelper::GetStringValue(document.get_object(), "code");
            record.serviceMessage = JsonHelper::GetStringValue(document.get_object(), "message");
            // The Classic PaaS services nest their text: {"details": {"message": ...}}.
            const JsonObject* details = JsonHelper::FindObjectValue(document.get_object(), "details");
            if (record.serviceMessage.empty() && details != nullptr) {
                record.serviceMessage = JsonHelper::GetStringValue(*details, "message");
            }
        }
    }
    lastRequestFailure = std::move(record);
}

}  // namespace OracleCloudSDKWrapper
