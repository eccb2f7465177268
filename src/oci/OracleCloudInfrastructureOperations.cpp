#include "oci/OracleCloudInfrastructureOperations.h"

#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

COracleCloudInfrastructureOperations::COracleCloudInfrastructureOperations(COracleCloudBaseConnection* connection,
                                                                           COracleCloudParser* parser)
    : COracleCloudBaseOperations(connection, parser) {}

COracleCloudInfrastructureOperations::~COracleCloudInfrastructureOperations() = default;

bool COracleCloudInfrastructureOperations::DeleteObjectFromLink(const std::string& link) {
    std::string response;
    if (m_connection->del(link, std::string(), response)) {
        return true;
    }
    SetLastErrorFromResponse(response);
    return false;
}

}  // namespace OracleCloudSDKWrapper
