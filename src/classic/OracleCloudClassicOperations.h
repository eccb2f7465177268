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
// attachments, reboot requests and power states. The PaaS operations
// (database, Java and MySQL services) keep the base defaults in this build.
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

    DebugLog m_debugLog;
    uint32_t operationTimeout;
    uint32_t operationWaitTime;
};

}  // namespace OracleCloudSDKWrapper
