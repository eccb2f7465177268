#include "facade/OracleCloudBaseOperations.h"

#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

COracleCloudBaseOperations::COracleCloudBaseOperations(COracleCloudBaseConnection* connection,
                                                       COracleCloudParser* parser)
    : COracleCloudErrorHandler(parser), m_connection(connection) {}

COracleCloudBaseOperations::~COracleCloudBaseOperations() { m_connection = nullptr; }

std::string COracleCloudBaseOperations::getUser() const {
    return m_connection != nullptr ? m_connection->getUser() : std::string();
}

std::string COracleCloudBaseOperations::getDomain() const {
    if (m_connection == nullptr) {
        return std::string();
    }
    // Deliberate: a compute connection's identity domain is "Compute-acme",
    // while object names begin "/Compute-acme/"; the operations build full
    // names as getDomain() + "/" + user + "/" + name, so on a compute
    // connection the leading "/" is put in front here. Other connections
    // (PaaS, OCI) answer their identity domain unchanged.
    const std::string domain = m_connection->getIdentityDomain();
    if (m_connection->getService() == ORACLE_SERVICE_COMPUTE && !domain.empty()) {
        return "/" + domain;
    }
    return domain;
}

// Unsupported operations fail quietly: nothing was attempted, so there is nothing
// to log, and the last error must keep the text of the last real failure.
bool COracleCloudBaseOperations::DeployVM(SVMInfoLib&, const std::string&) { return false; }
bool COracleCloudBaseOperations::DeleteVM(const std::string&, const std::string&, bool, bool) { return false; }
bool COracleCloudBaseOperations::PowerOffInstance(const std::string&) { return false; }
bool COracleCloudBaseOperations::PowerOnInstance(const std::string&) { return false; }
bool COracleCloudBaseOperations::CreateVolumeAttachmentToInstance(const SDiskInfoLib&, const SVMInfoLib&, bool&,
                                                                  SStorageAttachmentInfoLib&) {
    return false;
}
bool COracleCloudBaseOperations::CreateVolume(SDiskInfoLib&, const std::string&) { return false; }
bool COracleCloudBaseOperations::CreateSnapshotForVolume(const std::string&, const std::string&, const std::string&,
                                                         SSnapshotInfoLib&) {
    return false;
}
bool COracleCloudBaseOperations::CreateVolumeFromSnapshot(const SSnapshotInfoLib&, SDiskInfoLib&) { return false; }
bool COracleCloudBaseOperations::DeleteVolumeSnapshot(const std::string&) { return false; }
bool COracleCloudBaseOperations::DeleteVolume(const std::string&) { return false; }
bool COracleCloudBaseOperations::DeleteStorageAttachment(const SStorageAttachmentInfoLib&, bool) { return false; }
bool COracleCloudBaseOperations::AreAllAttachmentsDeleted(const std::vector<std::string>&) { return false; }
bool COracleCloudBaseOperations::MakeVolumeBootable(SDiskInfoLib&) { return false; }
bool COracleCloudBaseOperations::ClearDescriptionForVolume(SDiskInfoLib&) { return false; }
bool COracleCloudBaseOperations::DoesVolumeExist(const std::string&, const std::string&) { return false; }
bool COracleCloudBaseOperations::DeployVMFromOrchestration(SVMInfoLib&, SOrchestrationInfoLib&) { return false; }
bool COracleCloudBaseOperations::DeployVMFromLaunchPlan(const std::string&, std::string&) { return false; }
bool COracleCloudBaseOperations::LaunchInstance(SVMInfoLib&) { return false; }
bool COracleCloudBaseOperations::RebootInstance(const std::string&) { return false; }
bool COracleCloudBaseOperations::CreateDBInstance(SOracleDBInstanceInfoLib&) { return false; }
bool COracleCloudBaseOperations::DeleteDBInstance(const SOracleDBInstanceInfoLib&) { return false; }
bool COracleCloudBaseOperations::ScaleDBInstance(const SOracleDBInstanceInfoLib&) { return false; }
bool COracleCloudBaseOperations::StartDBInstance(const SOracleDBInstanceInfoLib&) { return false; }
bool COracleCloudBaseOperations::StopDBInstance(const SOracleDBInstanceInfoLib&) { return false; }
bool COracleCloudBaseOperations::RestartDBInstance(const SOracleDBInstanceInfoLib&) { return false; }
bool COracleCloudBaseOperations::BackupDBInstance(const SOracleDBInstanceInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                  std::string&, std::string&) {
    return false;
}
bool COracleCloudBaseOperations::RestoreDBInstance(const SOracleDBInstanceInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                   std::string&, std::string&) {
    return false;
}
bool COracleCloudBaseOperations::DeleteDBBackup(const SOracleDBInstanceInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                std::string&, std::string&) {
    return false;
}
bool COracleCloudBaseOperations::BackupJavaInstance(const SJavaInstanceInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                    std::string&, std::string&) {
    return false;
}
bool COracleCloudBaseOperations::RestoreJavaInstance(const SJavaInstanceInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                     std::string&, std::string&) {
    return false;
}
bool COracleCloudBaseOperations::DeleteJavaBackup(const SJavaInstanceInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                  std::string&, std::string&) {
    return false;
}
bool COracleCloudBaseOperations::BackupMySQLInstance(const SMySQLInstanceInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                     std::string&, std::string&) {
    return false;
}
bool COracleCloudBaseOperations::RestoreMySQLInstance(const SMySQLInstanceInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                      std::string&, std::string&) {
    return false;
}
bool COracleCloudBaseOperations::DeleteMySQLBackup(const SMySQLInstanceInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                   std::string&, std::string&) {
    return false;
}
bool COracleCloudBaseOperations::BackupDBInstance(const SOCIDatabaseInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                  std::string&) {
    return false;
}
bool COracleCloudBaseOperations::RestoreDBInstance(const SOCIDatabaseInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                   std::string&) {
    return false;
}
bool COracleCloudBaseOperations::DeleteDBBackup(const SOCIDatabaseInfoLib&, const SPaaSBackupRestoreOptionsLib&,
                                                std::string&) {
    return false;
}
bool COracleCloudBaseOperations::SetOperationTimeout(unsigned int) { return false; }
bool COracleCloudBaseOperations::UploadToObjectStorage(const std::string&, const std::string&, const std::string&,
                                                       const std::string&) {
    return false;
}
bool COracleCloudBaseOperations::CreateImage(const std::string&, const std::string&, const std::string&,
                                             SImageInfoLib&) {
    return false;
}
bool COracleCloudBaseOperations::DeployVMFromBootDisk(SVMInfoLib&, const std::string&) { return false; }
bool COracleCloudBaseOperations::DeleteStorageObject(const std::string&, const std::string&, const std::string&) {
    return false;
}
bool COracleCloudBaseOperations::DeleteImage(const std::string&) { return false; }
bool COracleCloudBaseOperations::AttachVnic(const SVMInfoLib&, const SVNicInfoLib&) { return false; }

}  // namespace OracleCloudSDKWrapper
