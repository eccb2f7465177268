#include "classic/OracleCloudClassicQueries.h"

namespace OracleCloudSDKWrapper {

COracleCloudClassicQueries::COracleCloudClassicQueries(COracleCloudBaseConnection* connection,
                                                       COracleCloudParser* parser)
    : COracleCloudBaseQueries(connection, parser) {}

COracleCloudClassicQueries::~COracleCloudClassicQueries() = default;

}  // namespace OracleCloudSDKWrapper
