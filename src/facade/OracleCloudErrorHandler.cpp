#include "facade/OracleCloudErrorHandler.h"

#include "oraclecloud/OracleCloudMessageRecords.h"
#include "parser/OracleCloudParser.h"

namespace OracleCloudSDKWrapper {

COracleCloudErrorHandler::COracleCloudErrorHandler(COracleCloudParser* parser) : m_parser(parser) {}

COracleCloudErrorHandler::~COracleCloudErrorHandler() { m_parser = nullptr; }

void COracleCloudErrorHandler::SetLastErrorFromResponse(const std::string& response) {
    if (response.empty()) {
        return;
    }
    // The parse result is deliberately ignored: a body that is not a service
    // message must not leave an older, unrelated text behind.
    SMessageInfoLib message;
    if (m_parser != nullptr) {
        m_parser->ParseObject(response, message);
    }
    m_lastError = message.message;
}

}  // namespace OracleCloudSDKWrapper
