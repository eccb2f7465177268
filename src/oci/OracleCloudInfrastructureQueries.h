#pragma once
#include "facade/OracleCloudBaseQueries.h"
#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

// The read side of the Infrastructure backend. In this build it overrides nothing:
// every read answers false through the base defaults.
class COracleCloudInfrastructureQueries : public COracleCloudBaseQueries {
public:
    // Neither pointer is owned.
    COracleCloudInfrastructureQueries(COracleCloudBaseConnection* connection, COracleCloudParser* parser);
    ~COracleCloudInfrastructureQueries() override;

protected:
    DebugLog m_debugLog;
};

}  // namespace OracleCloudSDKWrapper
