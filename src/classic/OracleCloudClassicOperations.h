#pragma once
#include <string>

#include "facade/OracleCloudBaseOperations.h"
#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

// The write side of the Classic backend. In this build only deletion by link
// exists; every other operation answers false through the base defaults.
class COracleCloudClassicOperations : public COracleCloudBaseOperations {
public:
    // Neither pointer is owned.
    COracleCloudClassicOperations(COracleCloudBaseConnection* connection, COracleCloudParser* parser);
    ~COracleCloudClassicOperations() override;

    // DELETE of link with an empty body; on failure the answer's "message"
    // becomes the last error.
    bool DeleteObjectFromLink(const std::string& link) override;

protected:
    DebugLog m_debugLog;
};

}  // namespace OracleCloudSDKWrapper
