#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "facade/OperationPoller.h"
#include "facade/OracleCloudBaseOperations.h"
#include "platform/DebugLog.h"
#include "platform/JsonHelper.h"

namespace OracleCloudSDKWrapper {

// The write side of the Infrastructure backend: instances, volumes and their
// attachments and backups, databases, images and object storage objects.
//
// Contract shared by every operation:
// - true on success; false leaves the reason in GetLastError(): the service's
//   "message" for a refused request, the connection's text when no answer came,
//   or one of the texts logged here (parse failures, waits).
// - Operations that end in a state wait block the caller's thread. A wait polls
//   every nOCIOperationWaitTime seconds (first poll after one interval) and
//   gives up on the first poll after nOCIOperationTimeout seconds, so it lasts
//   at most timeout + one interval. Both come from section "VirtualServer",
//   read once here; SetOperationTimeout has no effect on this backend.
// - Nothing is rolled back: a launch whose wait fails leaves the instance.
// - Requests go to core (service 3) under "/20160918", except the database
//   operations (service 4) and object storage (service 7, paths under "/n").
// Request bodies reach the log only through the connection, with secret
// members (adminPassword, ...) masked.
class COracleCloudInfrastructureOperations : public COracleCloudBaseOperations, protected OperationPoller {
public:
    // Neither pointer is owned. Reads the two wait tunables.
    COracleCloudInfrastructureOperations(COracleCloudBaseConnection* connection, COracleCloudParser* parser);
    ~COracleCloudInfrastructureOperations() override;

    // ---- instances (waits) ------------------------------------------------
    // Stores imageId into vm, launches it, then creates and attaches every
    // disk of vm.disks that is not bootable (compartment and domain copied from
    // vm). A failed volume creation stops with false; a failed attachment is
    // logged by its operation and skipped.
    bool DeployVM(SVMInfoLib& vm, const std::string& imageId) override;
    // Terminates the instance; preserveBootVolume keeps its boot volume. With
    // wait, waits for "TERMINATED"; an instance already gone (404) counts as
    // deleted, and so does a timed-out wait on an instance that still answers
    // (the service accepted the termination). vmName is not read.
    bool DeleteVM(const std::string& vmName, const std::string& vmId, bool preserveBootVolume, bool wait) override;
    // Power actions wait for the end state ("STOPPED", "RUNNING", "RUNNING").
    bool PowerOffInstance(const std::string& instanceId) override;
    bool PowerOnInstance(const std::string& instanceId) override;
    bool RebootInstance(const std::string& instanceId) override;
    // Launches from vm.imageId (see prepareInstanceJson) and waits for
    // "RUNNING" ("TERMINATED" fails at once). On true vm.guid holds the new id
    // and vm.state "RUNNING"; nothing else of vm changes.
    bool LaunchInstance(SVMInfoLib& vm) override;
    // Launches from an existing boot volume (subnet and public address flag from
    // vm.vnics[0]; no SSH key) and waits for "RUNNING". On true vm is replaced
    // by the launched instance's record.
    bool DeployVMFromBootDisk(SVMInfoLib& vm, const std::string& bootVolumeId) override;
    // Adds a VNIC in vnic.subnetId to instance vm.guid; waits for "ATTACHED".
    bool AttachVnic(const SVMInfoLib& vm, const SVNicInfoLib& vnic) override;

    // ---- volumes and attachments -------------------------------------------
    // Creates a block volume named disk.volumeName (disk.name when that is
    // empty) of disk.sizeBytes rounded down to whole GB, in disk.compartmentId
    // and disk.availabilityDomain, and waits for "AVAILABLE". On true disk.guid
    // and disk.name hold the new volume's id. A non-empty region different from
    // the connection's is used for this call only.
    bool CreateVolume(SDiskInfoLib& disk, const std::string& region) override;
    // Attaches volume disk.guid to instance vm.guid with attachment.attachmentType
    // (an empty type becomes "iscsi" in attachment) and display name
    // attachment.name (when given), waits
    // for "ATTACHED" and, for iSCSI, reads the attachment again for its address,
    // port and target. On true attachment holds the attachment. limitReached is
    // set only when the service refused with "LimitExceeded" (no free slot);
    // it is left as it was otherwise.
    bool CreateVolumeAttachmentToInstance(const SDiskInfoLib& disk, const SVMInfoLib& vm, bool& limitReached,
                                          SStorageAttachmentInfoLib& attachment) override;
    // Requests the detach of attachment.attachmentId; with wait, waits for
    // "DETACHED" under the same rules as DeleteVM.
    bool DeleteStorageAttachment(const SStorageAttachmentInfoLib& attachment, bool wait) override;
    // Waits until every attachment id answers "DETACHED" or 404; true at once
    // for an empty list. Fails on the first other read error or at the timeout.
    bool AreAllAttachmentsDeleted(const std::vector<std::string>& attachmentIds) override;
    // One read of an attachment (no wait).
    bool GetStorageAttachmentInfo(const std::string& attachmentId, SStorageAttachmentInfoLib& attachment);
    // Deletes a block volume, or a boot volume when the id contains ".bootvolume.". No wait.
    bool DeleteVolume(const std::string& volumeId) override;

    // ---- volume backups (no waits: callers poll) ------------------------------
    // Backs up a block volume, or a boot volume when the id contains
    // ".bootvolume.", with display name snapshotName (description when that is
    // empty). snapshot receives the new backup; its isComplete is kept.
    bool CreateSnapshotForVolume(const std::string& volumeId, const std::string& description,
                                 const std::string& snapshotName, SSnapshotInfoLib& snapshot) override;
    // Creates a volume named disk.volumeName from backup snapshot.name in
    // disk.compartmentId / disk.availabilityDomain; a backup of a boot volume
    // (snapshot.volumeName contains "bootvolume") becomes a boot volume. On
    // true disk.guid and disk.name hold the new id, disk.status its state.
    bool CreateVolumeFromSnapshot(const SSnapshotInfoLib& snapshot, SDiskInfoLib& disk) override;
    bool CreateBootVolumeFromSnapshot(const SSnapshotInfoLib& snapshot, SDiskInfoLib& disk);
    // Deletes a volume backup, or a boot volume backup when the id contains "bootvolume".
    bool DeleteVolumeSnapshot(const std::string& backupId) override;

    // ---- databases -------------------------------------------------------------
    // Launches a DB system from db (see the body builder for the fields read) and
    // waits for "AVAILABLE". On true db.databaseId holds the DB system id.
    bool CreateDBInstance(SOracleDBInstanceInfoLib& db) override;
    // Terminates DB system db.databaseId. No wait.
    bool DeleteDBInstance(const SOracleDBInstanceInfoLib& db) override;
    // Backs up database.id with display name options.tag (a generated name when
    // empty); job receives the backup id. No wait.
    bool BackupDBInstance(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib& options,
                          std::string& job) override;
    // Restores database.id to the latest state (options.latest), else to
    // options.scn, else to options.timestamp; job receives the database id. No wait.
    bool RestoreDBInstance(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib& options,
                           std::string& job) override;
    // Deletes backup options.backupId; job receives that id. No wait.
    bool DeleteDBBackup(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib& options,
                        std::string& job) override;

    // ---- images and object storage ------------------------------------------------
    // Uploads content unchanged as the object's bytes.
    bool UploadToObjectStorage(const std::string& tenantNamespace, const std::string& bucket,
                               const std::string& object, const std::string& content) override;
    bool DeleteStorageObject(const std::string& tenantNamespace, const std::string& bucket,
                             const std::string& object) override;
    // Imports a VMDK object as an image in image.compartmentId named
    // image.displayName (launch mode image.launchMode when given). image
    // receives the new image, normally "IMPORTING"; no wait.
    bool CreateImage(const std::string& tenantNamespace, const std::string& bucket, const std::string& object,
                     SImageInfoLib& image) override;
    bool DeleteImage(const std::string& imageId) override;

    // DELETE of link with an empty body; on failure the answer's "message"
    // becomes the last error.
    bool DeleteObjectFromLink(const std::string& link) override;

    // ---- building blocks ------------------------------------------------------------
    // The launch-from-image body of vm. False (and no body) is reserved for a
    // record that cannot be expressed; every record can today.
    bool prepareInstanceJson(const SVMInfoLib& vm, JsonObject& body);
    // POST action to the instance, then waits for endState.
    bool changeInstancePowerState(const std::string& instanceId, const std::string& action,
                                  const std::string& endState);
    // Polls path until the resource's lifecycle state is endState (true; only
    // the state is written into record) or invalidState (when non-empty; false
    // at once), or the timeout passes (false). Instantiated for SVMInfoLib,
    // SDiskInfoLib, SStorageAttachmentInfoLib, SOracleDBInstanceInfoLib and
    // SVnicAttachmentInfoLib.
    template <typename T>
    bool WaitForObjectToReachEndState(const std::string& path, T& record, const std::string& endState,
                                      const std::string& invalidState);
    // Polls every path until each answers deletedState or 404 (true), another
    // read fails (false) or the timeout passes (false). Instantiated for
    // SStorageAttachmentInfoLib.
    template <typename T>
    bool WaitForAllItemsToBeDeleted(std::vector<std::string> paths, const std::string& deletedState);

    uint32_t getOperationTimeout() const { return operationTimeout; }
    uint32_t getOperationWaitTime() const { return operationWaitTime; }

protected:
    // Sets the last error after a failed request: the answer's "message", or
    // the connection's own text when no answer body came.
    void setLastErrorFromFailedRequest(const std::string& response);
    // POST of a serialised body to path on service; on failure the last error is set.
    bool postJson(EOracleServiceType service, const std::string& path, const std::string& body,
                  std::string& response);
    // DELETE of path, then (with wait) the wait for goneState on path without
    // its query; see DeleteVM for the rules.
    template <typename T>
    bool deleteAndWaitUntilGone(const std::string& deletePath, const std::string& resourcePath,
                                const std::string& goneState, bool wait);
    // Posts a launch body (empty: false, nothing sent), reads the new instance
    // into launched and waits for "RUNNING" ("TERMINATED" fails at once).
    bool launchAndWaitUntilRunning(const std::string& body, SVMInfoLib& launched);
    // The body of CreateVolumeFromSnapshot and CreateBootVolumeFromSnapshot;
    // boot picks the boot volume collection and source type.
    bool createVolumeFromBackup(const SSnapshotInfoLib& snapshot, SDiskInfoLib& disk, bool boot);

    DebugLog m_debugLog;
    uint32_t operationTimeout;
    uint32_t operationWaitTime;
};

}  // namespace OracleCloudSDKWrapper
