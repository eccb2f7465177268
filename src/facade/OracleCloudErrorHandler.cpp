#include "facade/OracleCloudErrorHandler.h"

#include <cstdarg>
#include <cstdio>

#include "platform/DebugLog.h"
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

void COracleCloudErrorHandler::SetLastErrorFromFailedRequest(const std::string& response,
                                                             const std::string& senderError) {
    if (response.empty()) {
        m_lastError = senderError;
    } else {
        SetLastErrorFromResponse(response);
    }
}

bool COracleCloudErrorHandler::failWith(const EventBase* ctx, const char* signature, const char* fmt, ...) {
    char buffer[1024];
    va_list args;
    va_start(args, fmt);
    vsnprintf(buffer, sizeof buffer, fmt, args);
    va_end(args);
    DebugLog::Error(ctx, signature, "%s", buffer);
    m_lastError = buffer;
    return false;
}

}  // namespace OracleCloudSDKWrapper
