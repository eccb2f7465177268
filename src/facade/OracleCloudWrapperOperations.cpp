// Write operations of the facade that forward to the operations object.
#include "facade/FacadeForward.h"
#include "facade/OracleCloudBaseOperations.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/DebugLog.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {

namespace {
using Operations = COracleCloudBaseOperations;
}  // namespace

bool COracleCloudWrapper::LaunchInstance(SVMInfoLib& vm) {
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.LaunchInstance(vm); });
}

bool COracleCloudWrapper::RebootInstance(const std::string& instance) {
    if (instance.empty()) {
        OCW_LOG_ERROR(this, "Cannot reboot instance as URI was empty");
        return false;
    }
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.RebootInstance(instance); });
}

bool COracleCloudWrapper::PowerOnInstance(const std::string& instance) {
    if (instance.empty()) {
        OCW_LOG_ERROR(this, "Cannot power on instance as URI was empty");
        return false;
    }
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.PowerOnInstance(instance); });
}

bool COracleCloudWrapper::PowerOffInstance(const std::string& instance) {
    if (instance.empty()) {
        OCW_LOG_ERROR(this, "Cannot power off instance as URI was empty");
        return false;
    }
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.PowerOffInstance(instance); });
}

bool COracleCloudWrapper::DeployVMFromBootDisk(SVMInfoLib& vm, const std::string& bootVolumeId) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.DeployVMFromBootDisk(vm, bootVolumeId); });
}

bool COracleCloudWrapper::DeleteImage(const std::string& imageId) {
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.DeleteImage(imageId); });
}

bool COracleCloudWrapper::AttachVnic(const SVMInfoLib& vm, const SVNicInfoLib& vnic) {
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.AttachVnic(vm, vnic); });
}

bool COracleCloudWrapper::DeleteVolumeSnapshot(const std::string& snapshot) {
    if (snapshot.empty()) {
        OCW_LOG_ERROR(this, "Cannot delete snapshot as snapshot URI is empty");
        return false;
    }
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.DeleteVolumeSnapshot(snapshot); });
}

bool COracleCloudWrapper::DeleteVolume(const std::string& volume) {
    if (volume.empty()) {
        OCW_LOG_ERROR(this, "Cannot delete volume as volume URI is empty");
        return false;
    }
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.DeleteVolume(volume); });
}

bool COracleCloudWrapper::DoesVolumeExist(const std::string& volumeName, const std::string& user) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.DoesVolumeExist(volumeName, user); });
}

bool COracleCloudWrapper::CreateDBInstance(SOracleDBInstanceInfoLib& db) {
    if (!db.sshKeyName.empty() && db.sshPublicKey.empty()) {
        SOracleSSHKeyLib key;
        const unsigned long long since = errorSlot().mark();
        if (m_queries == nullptr || !m_queries->GetSSHKeyByName(db.sshKeyName, key)) {
            const std::string reason = m_queries != nullptr ? m_queries->GetLastError() : std::string();
            errorSlot().take(StringUtil::Format("Failed to find SSH key with name %s. Error [%s]",
                                                db.sshKeyName.c_str(), reason.c_str()),
                             since);
            return false;
        }
        db.sshPublicKey = key.publicKey;
    }
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.CreateDBInstance(db); });
}

bool COracleCloudWrapper::DeleteDBInstance(const SOracleDBInstanceInfoLib& db) {
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.DeleteDBInstance(db); });
}

bool COracleCloudWrapper::ScaleDBInstance(const SOracleDBInstanceInfoLib& db) {
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.ScaleDBInstance(db); });
}

bool COracleCloudWrapper::StartDBInstance(const SOracleDBInstanceInfoLib& db) {
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.StartDBInstance(db); });
}

bool COracleCloudWrapper::StopDBInstance(const SOracleDBInstanceInfoLib& db) {
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.StopDBInstance(db); });
}

bool COracleCloudWrapper::RestartDBInstance(const SOracleDBInstanceInfoLib& db) {
    return ForwardToBackend(errorSlot(), m_operations, [&](Operations& o) { return o.RestartDBInstance(db); });
}

bool COracleCloudWrapper::BackupDBInstance(const SOracleDBInstanceInfoLib& db,
                                           const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                           std::string& jobInfo) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.BackupDBInstance(db, options, jobUri, jobInfo); });
}

bool COracleCloudWrapper::RestoreDBInstance(const SOracleDBInstanceInfoLib& db,
                                            const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                            std::string& jobInfo) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.RestoreDBInstance(db, options, jobUri, jobInfo); });
}

bool COracleCloudWrapper::DeleteDBBackup(const SOracleDBInstanceInfoLib& db,
                                         const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                         std::string& jobInfo) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.DeleteDBBackup(db, options, jobUri, jobInfo); });
}

bool COracleCloudWrapper::BackupJavaInstance(const SJavaInstanceInfoLib& java,
                                             const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                             std::string& jobInfo) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.BackupJavaInstance(java, options, jobUri, jobInfo); });
}

bool COracleCloudWrapper::RestoreJavaInstance(const SJavaInstanceInfoLib& java,
                                              const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                              std::string& jobInfo) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.RestoreJavaInstance(java, options, jobUri, jobInfo); });
}

bool COracleCloudWrapper::DeleteJavaBackup(const SJavaInstanceInfoLib& java,
                                           const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                           std::string& jobInfo) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.DeleteJavaBackup(java, options, jobUri, jobInfo); });
}

bool COracleCloudWrapper::BackupMySQLInstance(const SMySQLInstanceInfoLib& mysql,
                                              const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                              std::string& jobInfo) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.BackupMySQLInstance(mysql, options, jobUri, jobInfo); });
}

bool COracleCloudWrapper::RestoreMySQLInstance(const SMySQLInstanceInfoLib& mysql,
                                               const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                               std::string& jobInfo) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.RestoreMySQLInstance(mysql, options, jobUri, jobInfo); });
}

bool COracleCloudWrapper::DeleteMySQLBackup(const SMySQLInstanceInfoLib& mysql,
                                            const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                            std::string& jobInfo) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.DeleteMySQLBackup(mysql, options, jobUri, jobInfo); });
}

bool COracleCloudWrapper::BackupDBInstance(const SOCIDatabaseInfoLib& database,
                                           const SPaaSBackupRestoreOptionsLib& options, std::string& job) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.BackupDBInstance(database, options, job); });
}

bool COracleCloudWrapper::RestoreDBInstance(const SOCIDatabaseInfoLib& database,
                                            const SPaaSBackupRestoreOptionsLib& options, std::string& job) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.RestoreDBInstance(database, options, job); });
}

bool COracleCloudWrapper::DeleteDBBackup(const SOCIDatabaseInfoLib& database,
                                         const SPaaSBackupRestoreOptionsLib& options, std::string& job) {
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](Operations& o) { return o.DeleteDBBackup(database, options, job); });
}

}  // namespace OracleCloudSDKWrapper
