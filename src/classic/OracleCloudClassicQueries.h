#pragma once
#include "facade/OracleCloudBaseQueries.h"
#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

// The read side of the Classic backend. In this build it overrides nothing:
// every read answers false through the base defaults.
class COracleCloudClassicQueries : public COracleCloudBaseQueries {
public:
    // Neither pointer is owned.
    COracleCloudClassicQueries(COracleCloudBaseConnection* connection, COracleCloudParser* parser);
    ~COracleCloudClassicQueries() override;

protected:
    DebugLog m_debugLog;
};

}  // namespace OracleCloudSDKWrapper
