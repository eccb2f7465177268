#pragma once
#include <string>
#include <vector>

#include "facade/OracleCloudErrorHandler.h"
#include "oraclecloud/OracleCloudRecords.h"

namespace OracleCloudSDKWrapper {

class COracleCloudBaseConnection;

// The write side of a backend, as the facade sees it. Every operation returns
// true on success; on false the object's GetLastError() tells why. Operations
// that the cloud carries out asynchronously wait for the end state on the
// caller's thread unless their comment says otherwise.
//
// The defaults stand for "this cloud cannot do that": they return false at once,
// send nothing, log nothing and leave the last error as it was. The slot order
// is part of the interface and must not change.
class COracleCloudBaseOperations : public COracleCloudErrorHandler {
public:
    // Neither pointer is owned; both live as long as the facade that built this object.
    COracleCloudBaseOperations(COracleCloudBaseConnection* connection, COracleCloudParser* parser);
    virtual ~COracleCloudBaseOperations();

    // Classic: source is the user (container) to launch under; OCI: the image id.
    virtual bool DeployVM(SVMInfoLib& vm, const std::string& source);
    // OCI: option keeps the boot volume; Classic: option waits until the instance is gone.
    virtual bool DeleteVM(const std::string& vmName, const std::string& vmId, bool option, bool wait);
    virtual bool PowerOffInstance(const std::string& instance);
    virtual bool PowerOnInstance(const std::string& instance);
    // The disk names the volume (Classic: full name and index; OCI: guid). On
    // false, limitReached tells that the instance has no free attachment slot.
    virtual bool CreateVolumeAttachmentToInstance(const SDiskInfoLib& disk, const SVMInfoLib& vm, bool& limitReached,
                                                  SStorageAttachmentInfoLib& attachment);
    // Classic: scope is the user the volume is created under; OCI: the region.
    virtual bool CreateVolume(SDiskInfoLib& disk, const std::string& scope);
    // Does not wait: the caller polls the snapshot. snapshot.isComplete false asks
    // for an integrity snapshot.
    virtual bool CreateSnapshotForVolume(const std::string& volume, const std::string& description,
                                         const std::string& snapshotName, SSnapshotInfoLib& snapshot);
    virtual bool CreateVolumeFromSnapshot(const SSnapshotInfoLib& snapshot, SDiskInfoLib& disk);
    virtual bool DeleteVolumeSnapshot(const std::string& snapshot);
    virtual bool DeleteVolume(const std::string& volume);
    virtual bool DeleteStorageAttachment(const SStorageAttachmentInfoLib& attachment, bool wait);
    // Waits until every attachment (Classic names, OCI ids) is gone; true for an empty list.
    virtual bool AreAllAttachmentsDeleted(const std::vector<std::string>& attachments);
    virtual bool MakeVolumeBootable(SDiskInfoLib& disk);
    virtual bool ClearDescriptionForVolume(SDiskInfoLib& disk);
    // true when the volume answers.
    virtual bool DoesVolumeExist(const std::string& volumeName, const std::string& user);
    virtual bool DeployVMFromOrchestration(SVMInfoLib& vm, SOrchestrationInfoLib& orchestration);
    // result: the id of the first instance of the launch plan.
    virtual bool DeployVMFromLaunchPlan(const std::string& body, std::string& result);
    virtual bool LaunchInstance(SVMInfoLib& vm);
    virtual bool RebootInstance(const std::string& instance);
    virtual bool CreateDBInstance(SOracleDBInstanceInfoLib& db);
    virtual bool DeleteDBInstance(const SOracleDBInstanceInfoLib& db);
    virtual bool ScaleDBInstance(const SOracleDBInstanceInfoLib& db);
    virtual bool StartDBInstance(const SOracleDBInstanceInfoLib& db);
    virtual bool StopDBInstance(const SOracleDBInstanceInfoLib& db);
    virtual bool RestartDBInstance(const SOracleDBInstanceInfoLib& db);
    // PaaS backup family: do not wait; jobUri receives the URI of the cloud's job,
    // which the caller polls with the queries' job-status operations.
    virtual bool BackupDBInstance(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib& options,
                                  std::string& jobUri, std::string& jobInfo);
    virtual bool RestoreDBInstance(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib& options,
                                   std::string& jobUri, std::string& jobInfo);
    virtual bool DeleteDBBackup(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib& options,
                                std::string& jobUri, std::string& jobInfo);
    virtual bool BackupJavaInstance(const SJavaInstanceInfoLib& java, const SPaaSBackupRestoreOptionsLib& options,
                                    std::string& jobUri, std::string& jobInfo);
    virtual bool RestoreJavaInstance(const SJavaInstanceInfoLib& java, const SPaaSBackupRestoreOptionsLib& options,
                                     std::string& jobUri, std::string& jobInfo);
    virtual bool DeleteJavaBackup(const SJavaInstanceInfoLib& java, const SPaaSBackupRestoreOptionsLib& options,
                                  std::string& jobUri, std::string& jobInfo);
    virtual bool BackupMySQLInstance(const SMySQLInstanceInfoLib& mysql, const SPaaSBackupRestoreOptionsLib& options,
                                     std::string& jobUri, std::string& jobInfo);
    virtual bool RestoreMySQLInstance(const SMySQLInstanceInfoLib& mysql, const SPaaSBackupRestoreOptionsLib& options,
                                      std::string& jobUri, std::string& jobInfo);
    virtual bool DeleteMySQLBackup(const SMySQLInstanceInfoLib& mysql, const SPaaSBackupRestoreOptionsLib& options,
                                   std::string& jobUri, std::string& jobInfo);
    // OCI database forms: job receives the id of the backup or database acted on.
    virtual bool BackupDBInstance(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib& options,
                                  std::string& job);
    virtual bool RestoreDBInstance(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib& options,
                                   std::string& job);
    virtual bool DeleteDBBackup(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib& options,
                                std::string& job);
    // Longest wait of the following operations, in seconds.
    virtual bool SetOperationTimeout(unsigned int seconds);
    virtual bool UploadToObjectStorage(const std::string& tenantNamespace, const std::string& bucket,
                                       const std::string& object, const std::string& content);
    // Imports the object as an image; the display name, compartment and launch
    // mode are taken from `image`, which receives the new image's record.
    virtual bool CreateImage(const std::string& tenantNamespace, const std::string& bucket, const std::string& object,
                             SImageInfoLib& image);
    // vm is replaced by the launched instance's record.
    virtual bool DeployVMFromBootDisk(SVMInfoLib& vm, const std::string& bootVolumeId);
    virtual bool DeleteStorageObject(const std::string& tenantNamespace, const std::string& bucket,
                                     const std::string& object);
    virtual bool DeleteImage(const std::string& imageId);
    virtual bool AttachVnic(const SVMInfoLib& vm, const SVNicInfoLib& vnic);
    // Sends a DELETE for link; on failure the answer's message becomes the last error.
    virtual bool DeleteObjectFromLink(const std::string& link) = 0;

    // Leading parts of Compute Classic object names, from the connection.
    // getUser() is the connection's user ("/Compute-acme/jdoe" once a compute
    // connection logged in); getDomain() is "/Compute-acme" on a compute
    // connection (the identity domain with a leading "/"), the identity domain
    // otherwise. So getDomain() + "/" + user + "/" + name is the full name of
    // an object that user owns.
    std::string getUser() const;
    std::string getDomain() const;

protected:
    COracleCloudBaseConnection* m_connection;
};

}  // namespace OracleCloudSDKWrapper
