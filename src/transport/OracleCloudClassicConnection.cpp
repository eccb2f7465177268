#include "transport/OracleCloudClassicConnection.h"

namespace OracleCloudSDKWrapper {

namespace {
const char* const kNotImplemented = "Classic requests are not implemented";
}  // namespace

COracleCloudClassicConnection::COracleCloudClassicConnection(COracleCloudParser* parser)
    : COracleCloudBaseConnection(parser) {}

COracleCloudClassicConnection::~COracleCloudClassicConnection() = default;

bool COracleCloudClassicConnection::sendReq(HTTP_REQ_TYPE type, const std::string& url, const std::string& body,
                                            std::string& response, bool flag1, bool flag2) {
    return _sendReqFull(type, url, body, response, flag1, flag2);
}

bool COracleCloudClassicConnection::_sendReqFull(HTTP_REQ_TYPE type, const std::string& url, const std::string&,
                                                 std::string& response, bool, bool) {
    response.clear();
    SetLastError(kNotImplemented);
    OCW_LOG_ERROR(&debugLog, "%s: %s %s", kNotImplemented, HttpClient::GetHttpReqTypeString(type), url.c_str());
    return false;
}

void COracleCloudClassicConnection::LogResponse(const std::string&, const std::string&) {}

}  // namespace OracleCloudSDKWrapper
