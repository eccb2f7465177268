#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "facade/OperationPoller.h"
#include "facade/OracleCloudBaseOperations.h"
#include "platform/DebugLog.h"
#include "platform/JsonHelper.h"

namespace OracleCloudSDKWrapper {

// The write side of the Classic backend: Compute Classic instances (launched
// through a launch plan or an orchestration), volumes, snapshots, storage
// attachments, reboot requests and power states; and the services of the
// PaaS half (database, Java and MySQL), which a connection of service type
// 2, 8 or 9 reaches with basic credentials.
//
// Contract shared by every operation:
// - true on success; false leaves the reason in GetLastError(): the
//   service's "message" for a refused request, the transfer's text when no
//   answer came, or the text logged here.
// - Names are full names ("/Compute-acme/jdoe/vol1"); object URLs are the
//   collection followed by the name; creations POST to "<collection>/".
// - A wait polls every nOracleCloudOperationWaitTime seconds (default 5; the
//   first poll one interval after the request) and gives up on the first
//   poll more than nOracleCloudOperationTimeout seconds (default 900, or
//   SetOperationTimeout) after it began. An object in "error" or
//   "terminal_error" ends a state wait at once with false.
// - Nothing is rolled back: a launch whose wait fails leaves the instance.
class COracleCloudClassicOperations : public COracleCloudBaseOperations, protected OperationPoller {
public:
    // Neither pointer is owned. Reads the two wait tunables.
    COracleCloudClassicOperations(COracleCloudBaseConnection* connection, COracleCloudParser* parser);
    ~COracleCloudClassicOperations() override;

    // ---- instances -------------------------------------------------------------
    // The older launch from an image list (vm.imageId) under the connected
    // user; waits for "running". source is not read.
    bool DeployVM(SVMInfoLib& vm, const std::string& source) override;
    // DELETE of the instance; with wait, until it answers 404. The instance is
    // vmId when that is a full name (the facade passes the VM's full name
    // there), else vmName.
    bool DeleteVM(const std::string& vmName, const std::string& vmId, bool wait, bool unused) override;
    // PUT of desired_state "shutdown" / "running"; no wait.
    bool PowerOffInstance(const std::string& instance) override;
    bool PowerOnInstance(const std::string& instance) override;
    // A hard reboot request, waited for until "complete".
    bool RebootInstance(const std::string& instance) override;
    // Launches vm through a launch plan (boot from its volumes, see
    // prepareInstanceJson) and waits for "running"; vm is replaced by the
    // launched instance's record (state "running").
    bool LaunchInstance(SVMInfoLib& vm) override;
    // POSTs body to "launchplan/" as given; result: the "id" of its first instance.
    bool DeployVMFromLaunchPlan(const std::string& body, std::string& result) override;
    // Creates orchestration "<instance name>_master" holding vm's instance and
    // waits for "active"; orchestration receives its record.
    bool DeployVMFromOrchestration(SVMInfoLib& vm, SOrchestrationInfoLib& orchestration) override;

    // ---- volumes, snapshots, attachments ---------------------------------------
    // Creates disk.volumeName (under user when given, else the connected
    // user) of disk.sizeBytes in whole GiB and waits for "Online"; disk
    // receives the volume's record.
    bool CreateVolume(SDiskInfoLib& disk, const std::string& user) override;
    // A collocated snapshot named volume + "/" + snapshotName; no wait (the
    // caller polls the snapshot). An integrity snapshot (isComplete false) is
    // taken the same way: the cloud knows no other kind.
    bool CreateSnapshotForVolume(const std::string& volume, const std::string& description,
                                 const std::string& snapshotName, SSnapshotInfoLib& snapshot) override;
    // Needs snapshot.status "completed". Creates disk.volumeName (a full name,
    // or a name put in the user container of the snapshot's volume) of the
    // snapshot's size; no wait. disk receives the new volume's record.
    bool CreateVolumeFromSnapshot(const SSnapshotInfoLib& snapshot, SDiskInfoLib& disk) override;
    bool DeleteVolumeSnapshot(const std::string& snapshot) override;
    bool DeleteVolume(const std::string& volume) override;
    // Attaches disk.name (disk.volumeName when empty) to vm.fullName at
    // disk.index and waits for "attached". limitReached is not set here.
    bool CreateVolumeAttachmentToInstance(const SDiskInfoLib& disk, const SVMInfoLib& vm, bool& limitReached,
                                          SStorageAttachmentInfoLib& attachment) override;
    // DELETE of attachment.name; with wait, until it answers 404.
    bool DeleteStorageAttachment(const SStorageAttachmentInfoLib& attachment, bool wait) override;
    // Waits until every named attachment answers 404; true at once for none.
    bool AreAllAttachmentsDeleted(const std::vector<std::string>& attachments) override;
    // Rewrite the whole volume (read into disk first by the caller) with
    // bootable true / an empty description, and check the answer.
    bool MakeVolumeBootable(SDiskInfoLib& disk) override;
    bool ClearDescriptionForVolume(SDiskInfoLib& disk) override;
    // True when the volume (a full name, or a name under user / the connected user) answers.
    bool DoesVolumeExist(const std::string& volumeName, const std::string& user) override;

    // ---- PaaS: database services -------------------------------------------------
    // Every PaaS URL holds the connection's identity domain. Request bodies:
    // see OracleCloudClassicOperationsBodies.h. A refused request leaves the
    // service's message ({"details": {"message"}} or {"message"}) as the last
    // error; nothing is retried.
    //
    // POSTs the creation body (cloud storage credentials from db, else the
    // connected account's user name and password) and waits until the service
    // reports "Running"; db.status is then "Running". The wait is the compute
    // one: poll interval and timeout as above.
    bool CreateDBInstance(SOracleDBInstanceInfoLib& db) override;
    // DELETE of the service; no wait (the service goes "Terminating", then 404).
    bool DeleteDBInstance(const SOracleDBInstanceInfoLib& db) override;
    // PUT of the scaling body; no wait (the service goes "Maintenance").
    bool ScaleDBInstance(const SOracleDBInstanceInfoLib& db) override;
    bool StartDBInstance(const SOracleDBInstanceInfoLib& db) override;
    bool StopDBInstance(const SOracleDBInstanceInfoLib& db) override;
    bool RestartDBInstance(const SOracleDBInstanceInfoLib& db) override;
    // POST of {"lifecycleState": operation [, "vmName"]}; no wait.
    bool DBInstancePowerOp(const std::string& operation, const SOracleDBInstanceInfoLib& db);

    // ---- PaaS: backups and restores ----------------------------------------------
    // The backup family returns once the service accepted the job: jobUri
    // receives the job's URI (as the service names it, usually absolute), to
    // be polled with QueryBackupRestoreJobStatus (database) or
    // QueryJavaMySQLBackupRestoreJobStatus (Java, MySQL). It is taken from the
    // answer's "location" header, except for a Java restore, whose answer
    // names it in "target_uri". Departure: an accepted request whose answer
    // names no job fails ("The answer of [<url>] named no job in [location]"
    // / "[target_uri]"), because an empty URI would have the caller poll the
    // server's root. jobUri is untouched on failure; jobInfo is never written.
    // The Java and MySQL forms also fail when the answer is not a JSON object
    // ("The response [%s] is not in valid JSON format.").
    bool BackupDBInstance(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib& options,
                          std::string& jobUri, std::string& jobInfo) override;
    // Restore point: options.tag, else options.latest, else options.scn, else
    // options.timestamp. With none of them nothing is sent and the call fails
    // with "The Request should contain valid restore input parmeters.
    // tag/latest/scn/timestamp" (the service's client has always said so).
    bool RestoreDBInstance(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib& options,
                           std::string& jobUri, std::string& jobInfo) override;
    // Not offered by this cloud's API: false without a request ("Deleting a
    // database backup is not supported on Oracle Cloud Classic").
    bool DeleteDBBackup(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib& options,
                        std::string& jobUri, std::string& jobInfo) override;
    bool BackupJavaInstance(const SJavaInstanceInfoLib& java, const SPaaSBackupRestoreOptionsLib& options,
                            std::string& jobUri, std::string& jobInfo) override;
    bool RestoreJavaInstance(const SJavaInstanceInfoLib& java, const SPaaSBackupRestoreOptionsLib& options,
                             std::string& jobUri, std::string& jobInfo) override;
    bool DeleteJavaBackup(const SJavaInstanceInfoLib& java, const SPaaSBackupRestoreOptionsLib& options,
                          std::string& jobUri, std::string& jobInfo) override;
    bool BackupMySQLInstance(const SMySQLInstanceInfoLib& mysql, const SPaaSBackupRestoreOptionsLib& options,
                             std::string& jobUri, std::string& jobInfo) override;
    bool RestoreMySQLInstance(const SMySQLInstanceInfoLib& mysql, const SPaaSBackupRestoreOptionsLib& options,
                              std::string& jobUri, std::string& jobInfo) override;
    bool DeleteMySQLBackup(const SMySQLInstanceInfoLib& mysql, const SPaaSBackupRestoreOptionsLib& options,
                           std::string& jobUri, std::string& jobInfo) override;

    // Replaces the operation timeout (seconds). True.
    bool SetOperationTimeout(unsigned int seconds) override;
    // DELETE of link with an empty body; on failure the answer's "message"
    // becomes the last error.
    bool DeleteObjectFromLink(const std::string& link) override;

    // ---- building blocks ------------------------------------------------------------
    // The instance body of vm; false (logged) when vm has no bootable disk at index 1.
    bool prepareInstanceJson(const SVMInfoLib& vm, JsonObject& body);
    bool changeInstancePowerState(const std::string& instance, const std::string& state);
    bool PutObjectToLink(const std::string& link, const std::string& body);
    bool PostObjectToLink(const std::string& link, const std::string& body);
    bool PostObjectToLinkAndGetResult(const std::string& link, const std::string& body, std::string& response);
    template <typename T>
    bool PostObjectToLinkAndGetResult(const std::string& link, const std::string& body, T& record);
    template <typename T>
    bool PutObjectToLinkAndGetResult(const std::string& link, const std::string& body, T& record);
    // Polls link until the object's status is endState (true; only the status
    // is written into record), "error" or "terminal_error" (false at once),
    // or the timeout passes (false).
    template <typename T>
    bool WaitForObjectToReachEndState(const std::string& link, T& record, const std::string& endState);
    // Polls link until it answers 404 (true) or the timeout passes (false).
    bool WaitForLinkTo404(const std::string& link);

    uint32_t getOperationTimeout() const { return operationTimeout; }
    uint32_t getOperationWaitTime() const { return operationWaitTime; }

protected:
    // Sends one request; on failure the last error is set (service message
    // or transfer text). PUT when put, else POST.
    bool sendBody(bool put, const std::string& link, const std::string& body, std::string& response);
    // POSTs a launch plan, takes its first instance into vm and waits for "running".
    bool launchAndWaitUntilRunning(const JsonObject& plan, SVMInfoLib& vm);
    // Sends body (PUT when put, else POST) and parses the answer into record.
    template <typename T>
    bool sendAndParse(bool put, const std::string& link, const std::string& body, T& record);
    // The whole-volume rewrite shared by MakeVolumeBootable and ClearDescriptionForVolume.
    bool rewriteVolume(SDiskInfoLib& disk, const JsonObject& body, const char* inconsistentUriText,
                       bool (*changed)(const SDiskInfoLib&), const std::string& unchangedText);

    // The body as text; false (logged: "The Request json could not be formed
    // for " + operation) when it cannot be written.
    bool formBody(const JsonObject& body, const char* operation, std::string& text);
    // Serializes body and sends it (PUT when put, else POST) to link.
    bool sendPaaSBody(bool put, const std::string& link, const JsonObject& body, const char* operation,
                      std::string& response);
    // A database service job: POST of body to link; the job from "location".
    bool startDatabaseJob(const std::string& link, const JsonObject& body, const char* operation,
                          std::string& jobUri);
    // A Java or MySQL service job: POST of body to "<collection>/<service>/<action>/";
    // the answer must be a JSON object; the job from "target_uri" when
    // jobInTargetUri, else from "location".
    bool startManagedServiceJob(const char* collection, const std::string& service, const char* action,
                                const JsonObject& body, const char* operation, bool jobInTargetUri,
                                std::string& jobUri);
    // jobUri = candidate; false (logged) when candidate is empty.
    bool takeJobUri(const std::string& candidate, const std::string& link, const char* source, std::string& jobUri);

    DebugLog m_debugLog;
    uint32_t operationTimeout;
    uint32_t operationWaitTime;
};

}  // namespace OracleCloudSDKWrapper
