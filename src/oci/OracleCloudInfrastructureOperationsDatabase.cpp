// Database systems, database backups and restores, custom images imported from
// object storage, and object storage objects.
#include <ctime>

#include "oci/OracleCloudInfrastructureOperationsInternal.h"

namespace OracleCloudSDKWrapper {

using ocioperations::CorePath;

namespace {

// Bucket and object names are the user's: each is encoded once, so that a
// blank, "#", "?", "+", "%" or a non-ASCII letter reaches the service as part
// of the name (curl would cut or refuse them), and the signature covers
// exactly the path that is sent. The "/" of pseudo-directories stays as it is
// (the service reads it either way; agents' logs keep showing the path).
std::string EncodeObjectName(COracleCloudBaseConnection& connection, const std::string& name) {
    std::string encoded;
    size_t start = 0;
    for (;;) {
        const size_t slash = name.find('/', start);
        const std::string piece = name.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
        if (!piece.empty()) encoded += connection.urlEncode(piece);
        if (slash == std::string::npos) return encoded;
        encoded += '/';
        start = slash + 1;
    }
}

std::string ObjectPath(COracleCloudBaseConnection& connection, const std::string& tenantNamespace,
                       const std::string& bucket, const std::string& object) {
    return "/n/" + tenantNamespace + "/b/" + connection.urlEncode(bucket) + "/o/" + EncodeObjectName(connection, object);
}

}  // namespace

bool COracleCloudInfrastructureOperations::CreateDBInstance(SOracleDBInstanceInfoLib& db) {
    // The body carries the admin password: it goes to the connection, which
    // logs bodies only with secret members masked, and nowhere else.
    const std::string body = JsonHelper::Serialize(ocioperations::DbSystemBody(db));
    if (body.empty()) {
        return OCI_OPS_FAIL("The Request json could not be formed for create db instance");
    }
    std::string response;
    if (!postJson(OCI_SERVICE_DATABASE, CorePath("/dbSystems"), body, response)) return false;

    SOracleDBInstanceInfoLib created;
    if (!m_parser->ParseObject(response, created)) {
        return OCI_OPS_FAIL("Failed to parse response JSON");
    }
    db.databaseId = created.databaseId;
    OCW_LOG_DEBUG(&m_debugLog, "Successfully submitted request to create DB system:[%s][%s]",
                  created.serviceName.c_str(), created.databaseId.c_str());
    // Versioned like every other database path; the unversioned form is not
    // served and would fail the wait at its first poll.
    return WaitForObjectToReachEndState(CorePath("/dbSystems", created.databaseId), db, "AVAILABLE", std::string());
}

bool COracleCloudInfrastructureOperations::DeleteDBInstance(const SOracleDBInstanceInfoLib& db) {
    m_connection->setService(OCI_SERVICE_DATABASE);
    return DeleteObjectFromLink(CorePath("/dbSystems", db.databaseId));
}

bool COracleCloudInfrastructureOperations::BackupDBInstance(const SOCIDatabaseInfoLib& database,
                                                            const SPaaSBackupRestoreOptionsLib& options,
                                                            std::string& job) {
    // The service insists on a display name; without a tag one is made from the
    // database name and the time, which keeps repeated backups apart.
    std::string displayName = options.tag;
    if (displayName.empty()) {
        displayName = StringUtil::Format("%s_%lld", database.dbName.empty() ? "backup" : database.dbName.c_str(),
                                         static_cast<long long>(std::time(nullptr)));
    }
    const std::string body = JsonHelper::Serialize(ocioperations::DbBackupBody(database.id, displayName));
    if (body.empty()) {
        return OCI_OPS_FAIL("The Request json could not be formed for creating db backup");
    }
    std::string response;
    if (!postJson(OCI_SERVICE_DATABASE, CorePath("/backups") + "/", body, response)) return false;

    SOCIDbBackupInfoLib backup;
    if (!m_parser->ParseObject(response, backup)) {
        return OCI_OPS_FAIL("Failed to parse response JSON");
    }
    job = backup.id;
    OCW_LOG_DEBUG(&m_debugLog, "Backup [%s][%s] of database [%s] requested, state [%s]", backup.displayName.c_str(),
                  backup.id.c_str(), database.id.c_str(), backup.lifecycleState.c_str());
    return true;
}

bool COracleCloudInfrastructureOperations::RestoreDBInstance(const SOCIDatabaseInfoLib& database,
                                                             const SPaaSBackupRestoreOptionsLib& options,
                                                             std::string& job) {
    const std::string body = JsonHelper::Serialize(ocioperations::DbRestoreBody(options));
    if (body.empty()) {
        return OCI_OPS_FAIL("The Request json could not be formed for restoring db backup");
    }
    std::string response;
    if (!postJson(OCI_SERVICE_DATABASE, CorePath("/databases", database.id) + "/actions/restore", body, response)) {
        return false;
    }
    SOCIDatabaseInfoLib restored;
    if (!m_parser->ParseObject(response, restored)) {
        return OCI_OPS_FAIL("Failed to parse response JSON");
    }
    job = restored.id;
    OCW_LOG_DEBUG(&m_debugLog, "Restore of database [%s] requested, state [%s]", restored.id.c_str(),
                  restored.lifecycleState.c_str());
    return true;
}

bool COracleCloudInfrastructureOperations::DeleteDBBackup(const SOCIDatabaseInfoLib& /*database*/,
                                                          const SPaaSBackupRestoreOptionsLib& options,
                                                          std::string& job) {
    if (options.backupId.empty()) {
        return OCI_OPS_FAIL("Cannot delete database backup as backup id is empty");
    }
    m_connection->setService(OCI_SERVICE_DATABASE);
    if (!DeleteObjectFromLink(CorePath("/backups", options.backupId))) return false;
    job = options.backupId;
    return true;
}

bool COracleCloudInfrastructureOperations::CreateImage(const std::string& tenantNamespace, const std::string& bucket,
                                                       const std::string& object, SImageInfoLib& image) {
    const std::string body =
        JsonHelper::Serialize(ocioperations::ImageImportBody(tenantNamespace, bucket, object, image));
    if (body.empty()) {
        // Same wording as the DB system launch, as the agent has it.
        return OCI_OPS_FAIL("The Request json could not be formed for create db instance");
    }
    std::string response;
    if (!postJson(OCI_SERVICE_CORE, CorePath("/images"), body, response)) return false;

    SImageInfoLib created;
    if (!m_parser->ParseObject(response, created)) {
        return OCI_OPS_FAIL("Could not parse HTTP response");
    }
    image = created;
    OCW_LOG_DEBUG(&m_debugLog, "Import of image [%s][%s] requested, state [%s]", image.displayName.c_str(),
                  image.id.c_str(), image.lifecycleState.c_str());
    return true;
}

bool COracleCloudInfrastructureOperations::DeleteImage(const std::string& imageId) {
    m_connection->setService(OCI_SERVICE_CORE);
    if (!DeleteObjectFromLink(CorePath("/images", imageId))) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to sent delete image request");
        return false;
    }
    return true;
}

bool COracleCloudInfrastructureOperations::UploadToObjectStorage(const std::string& tenantNamespace,
                                                                 const std::string& bucket,
                                                                 const std::string& object,
                                                                 const std::string& content) {
    m_connection->setService(OCI_SERVICE_OBJECT_STORAGE);
    std::string response;
    if (!m_connection->put(ObjectPath(*m_connection, tenantNamespace, bucket, object), content, response)) {
        setLastErrorFromFailedRequest(response);
        return false;
    }
    return true;
}

bool COracleCloudInfrastructureOperations::DeleteStorageObject(const std::string& tenantNamespace,
                                                               const std::string& bucket,
                                                               const std::string& object) {
    m_connection->setService(OCI_SERVICE_OBJECT_STORAGE);
    if (!DeleteObjectFromLink(ObjectPath(*m_connection, tenantNamespace, bucket, object))) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to sent delete storage object request");
        return false;
    }
    return true;
}

}  // namespace OracleCloudSDKWrapper
