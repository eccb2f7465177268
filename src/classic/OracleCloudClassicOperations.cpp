#include "classic/OracleCloudClassicOperations.h"

#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

COracleCloudClassicOperations::COracleCloudClassicOperations(COracleCloudBaseConnection* connection,
                                                             COracleCloudParser* parser)
    : COracleCloudBaseOperations(connection, parser) {}

COracleCloudClassicOperations::~COracleCloudClassicOperations() = default;

bool COracleCloudClassicOperations::DeleteObjectFromLink(const std::string& link) {
    std::string response;
    if (m_connection->del(link, std::string(), response)) {
        return true;
    }
    SetLastErrorFromResponse(response);
    return false;
}

}  // namespace OracleCloudSDKWrapper
