#include "oci/OracleCloudInfrastructureQueries.h"

namespace OracleCloudSDKWrapper {

COracleCloudInfrastructureQueries::COracleCloudInfrastructureQueries(COracleCloudBaseConnection* connection,
                                                                     COracleCloudParser* parser)
    : COracleCloudBaseQueries(connection, parser) {}

COracleCloudInfrastructureQueries::~COracleCloudInfrastructureQueries() = default;

}  // namespace OracleCloudSDKWrapper
