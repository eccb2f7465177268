#pragma once
#include <string>

#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

// The connection of the Classic backend (Compute Classic session cookie, PaaS
// basic credentials). This build does not send Classic requests yet: every
// send fails with the last error "Classic requests are not implemented".
class COracleCloudClassicConnection : public COracleCloudBaseConnection {
public:
    explicit COracleCloudClassicConnection(COracleCloudParser* parser);
    ~COracleCloudClassicConnection() override;

    bool sendReq(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                 bool flag1, bool flag2) override;
    bool _sendReqFull(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                      bool flag1, bool flag2) override;
    void LogResponse(const std::string& url, const std::string& response) override;
};

}  // namespace OracleCloudSDKWrapper
