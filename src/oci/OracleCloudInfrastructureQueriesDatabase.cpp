// Database service reads: DB systems, homes, databases, nodes and backups.
// They run in the connection's current region.
#include "oci/OracleCloudInfrastructureQueries.h"
#include "oci/OracleCloudInfrastructureQueriesEngine.h"

namespace OracleCloudSDKWrapper {

namespace {
const char* const kCoreVersion = "/20160918";
}  // namespace

bool COracleCloudInfrastructureQueries::GetDbSystemList(std::vector<SOCIDbSystemInfoLib>& systems,
                                                        const std::string& compartmentId) {
    std::string path = std::string(kCoreVersion) + "/dbSystems" + "?compartmentId=" + compartmentId;
    return _GetPaginatedList(path, OCI_SERVICE_DATABASE, std::string(), systems);
}

bool COracleCloudInfrastructureQueries::GetDatabaseList(std::vector<SOCIDatabaseInfoLib>& databases,
                                                        const std::string& compartmentId,
                                                        const std::string& dbHomeId) {
    std::string path =
        std::string(kCoreVersion) + "/databases" + "?compartmentId=" + compartmentId + "&dbHomeId=" + dbHomeId;
    return _GetPaginatedList(path, OCI_SERVICE_DATABASE, std::string(), databases);
}

bool COracleCloudInfrastructureQueries::GetDbBackupList(std::vector<SOCIDbBackupInfoLib>& backups,
                                                        const std::string& compartmentId,
                                                        const std::string& databaseId) {
    std::string path =
        std::string(kCoreVersion) + "/backups" + "?compartmentId=" + compartmentId + "&databaseId=" + databaseId;
    return _GetPaginatedList(path, OCI_SERVICE_DATABASE, std::string(), backups);
}

bool COracleCloudInfrastructureQueries::GetDbHomeList(std::vector<SOCIDbHomeInfoLib>& homes,
                                                      const std::string& compartmentId,
                                                      const std::string& dbSystemId) {
    std::string path =
        std::string(kCoreVersion) + "/dbHomes" + "?compartmentId=" + compartmentId + "&dbSystemId=" + dbSystemId;
    return _GetPaginatedList(path, OCI_SERVICE_DATABASE, std::string(), homes);
}

bool COracleCloudInfrastructureQueries::GetDbNodeList(std::vector<SOCIDbNodeInfoLib>& nodes,
                                                      const std::string& compartmentId,
                                                      const std::string& dbSystemId) {
    // Versioned like every other database path: the service has no "/dbNodes"
    // without the prefix.
    std::string path =
        std::string(kCoreVersion) + "/dbNodes" + "?compartmentId=" + compartmentId + "&dbSystemId=" + dbSystemId;
    return _GetPaginatedList(path, OCI_SERVICE_DATABASE, std::string(), nodes);
}

bool COracleCloudInfrastructureQueries::GetDatabaseInfo(SOCIDatabaseInfoLib& database,
                                                        const std::string& databaseId) {
    std::string path = std::string(kCoreVersion) + "/databases" + "/" + databaseId;
    return _ReadSingle(path, OCI_SERVICE_DATABASE, std::string(), database);
}

bool COracleCloudInfrastructureQueries::GetDbBackupInfo(SOCIDbBackupInfoLib& backup, const std::string& backupId) {
    std::string path = std::string(kCoreVersion) + "/backups" + "/" + backupId;
    return _ReadSingle(path, OCI_SERVICE_DATABASE, std::string(), backup);
}

}  // namespace OracleCloudSDKWrapper
