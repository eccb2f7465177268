#pragma once
// The one class a caller of the library needs: COracleCloudWrapper.
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "oraclecloud/EventBase.h"
#include "oraclecloud/Export.h"
#include "oraclecloud/OracleCloudRecords.h"

namespace OracleCloudSDKWrapper {

class COracleCloudParser;
class COracleCloudBaseConnection;
class COracleCloudBaseQueries;
class COracleCloudBaseOperations;
struct FacadeErrorSlot;

// Receives every log line of the library: level (0 = error, 1 = debug, higher =
// more detail), the full signature of the function that wrote it, and the text.
// Secrets (keys, pass phrases, passwords, cookies) never reach it.
using OracleCloudLogSink = std::function<void(int level, const char* signature, const std::string& text)>;

// Manages the resources of one cloud account of one cloud type.
//
// Use: construct with a cloud type, optionally SetWebProxy and
// SetOperationTimeout, Connect, then any number of queries and operations. One
// facade serves one thread at a time; create one facade per concurrent user.
//
// Every operation returns true on success and delivers results through its
// reference arguments. Every call is synchronous: operations on resources that
// the cloud changes asynchronously poll on the caller's thread until the end
// state or the operation timeout. When a call delegated to the backend fails,
// GetLastError() holds the backend's text; read it right after the false
// result, as success never clears it. Argument checks made by the facade itself
// only log and leave GetLastError() unchanged; the few operations that differ
// say so.
//
// "flags" is a 64-bit detail mask passed through to the backend: bit values 2
// (guest operating system), 16 (disks) and 32 (network) for a VM's details; bit
// 26 for networks, key pairs and security groups; bit 29 for a host's VMs.
// "region" empty means the account's current region (OCI only).
class OCW_API COracleCloudWrapper : public EventBase {
public:
    // 2 builds the OCI (Infrastructure) backend, every other value the Classic one.
    explicit COracleCloudWrapper(EOracleCloudType type);
    ~COracleCloudWrapper() override;

    COracleCloudWrapper(const COracleCloudWrapper&) = delete;
    COracleCloudWrapper& operator=(const COracleCloudWrapper&) = delete;

    // Routes the library's log lines (all facades, all threads) to sink; an
    // empty sink restores the default (stderr). The sink may be called from any
    // thread that uses a facade.
    static void SetLogSink(OracleCloudLogSink sink);
    // Lines above this level are dropped; errors (0) are always delivered.
    static void SetLogLevel(int level);

    // ---- Connection -------------------------------------------------------
    // Classic: server is the endpoint, user and password the account's (logs in).
    // OCI: server is the tenancy OCID, user "userOCID|fingerprint|keyFile[|region]"
    // (region default "us-phoenix-1"), password the key's pass phrase (may be
    // empty). Then checks the connection (OCI reads the tenancy). On false,
    // GetLastError() holds the connection's or the check's error text.
    bool Connect(const std::string& server, const std::string& user, const std::string& password,
                 EOracleServiceType service);
    bool CheckConnection();
    // Longest wait of the backend's operations; false only without a backend.
    bool SetOperationTimeout(unsigned int seconds);
    // proxy is "host:port"; may be called before Connect.
    bool SetWebProxy(const std::string& proxy, const std::string& user, const std::string& password);
    std::string GetDefaultRegion();
    // Text of the last delegated failure.
    std::string GetLastError() const { return m_lastError; }
    // Extension: the record of the failure behind GetLastError(), taken with
    // the text by the same rule (after a failed delegated call, and where the
    // facade writes a text of its own; a facade that keeps its text keeps its
    // record too). Its request part describes the last request that failed
    // during that call: status, the service's code and message, the service's
    // and the library's opc-request-id, the transfer error and the attempts.
    // A call that failed without a failed request (a wait that ran out, a
    // refused argument) leaves only the message.
    SOracleCloudFailureInfoLib GetLastFailure() const { return m_lastFailure; }
    // Extension: the library's version ("1.0.0"); OCI requests name it in
    // their User-Agent header.
    static std::string GetLibraryVersion();
    EOracleCloudType GetCloudType() const { return m_cloudType; }

    // ---- Inventory --------------------------------------------------------
    // unusedName is not passed on.
    bool GetHostInfo(const std::string& hostId, const std::string& hostName, const std::string& unusedName,
                     SHostInfoLib& host, unsigned long long flags, const std::string& region);
    bool GetHostInfoList(std::vector<SHostInfoLib>& hosts, const std::string& parentId, unsigned long long flags,
                         const std::string& region);
    // Classic reads by vmName, OCI by vmId.
    bool GetVMInfo(const std::string& vmName, const std::string& vmId, SVMInfoLib& vm, unsigned long long flags,
                   const std::string& region);
    bool GetVMInfoList(std::vector<SVMInfoLib>& vms, unsigned long long flags, const std::string& region);
    bool GetVMInfoListForHost(std::vector<SVMInfoLib>& vms, const std::string& hostId, const std::string& hostName,
                              unsigned long long flags, const std::string& region);
    bool GetTemplateInfoList(std::vector<SVMInfoLib>& templates, const std::string& compartmentId,
                             unsigned long long flags, unsigned long long flags2, const std::string& region);
    bool GetTemplateInfoListFilterByName(std::vector<SVMInfoLib>& templates, const std::string& compartmentId,
                                         const std::string& name, unsigned long long flags,
                                         unsigned long long flags2, const std::string& region);
    bool GetTemplateInfo(const std::string& templateId, SVMInfoLib& templateInfo, const std::string& region);
    // The three sorted getters sort ascending without regard to case (key pairs
    // by name, groups by fullName, networks by name). On failure they return
    // false without taking over the backend's error text.
    bool GetKeyPairList(std::vector<SKeyPairInfoLib>& keyPairs);
    bool GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>& groups, const std::string& unusedFilter);
    bool GetNetworkList(std::vector<SNetworkInfoLib>& networks, const std::string& compartmentId,
                        const std::string& availabilityDomain, const std::string& region);
    bool GetInstanceShapeList(std::vector<SInstanceShapeInfoLib>& shapes, const std::string& compartmentId,
                              const std::string& region);
    bool GetInstanceShapeListForImage(std::vector<SInstanceShapeInfoLib>& shapes, const std::string& compartmentId,
                                      const std::string& imageId, const std::string& availabilityDomain,
                                      const std::string& region);
    bool GetDCInfoList(std::vector<SDataCenterInfoLib>& dataCenters, unsigned long long flags,
                       unsigned long long flags2, const std::string& region);
    // Classic: waits up to timeoutSeconds for the VM to run (and to have an
    // address when asked). OCI: fetches the initial Windows credentials.
    bool WaitForBoot(SVMInfoLib& vm, int timeoutSeconds, bool waitForIPAddress, const std::string& region);
    bool GetRegionList(std::vector<SRegionInfoLib>& regions);
    bool GetSubscribedRegionList(std::vector<SRegionInfoLib>& regions);
    bool GetContainerInfoList(std::vector<SContainerInfoLib>& containers, const std::string& parentId,
                              const std::string& region);
    // unusedFlags is not passed on (the backend is asked with flags 0).
    bool GetContainerInfo(const std::string& containerId, const std::string& containerName,
                          SContainerInfoLib& container, unsigned long long unusedFlags, const std::string& region);
    bool GetAvailabilityDomainList(std::vector<SAvailabilityDomainInfoLib>& domains, const std::string& compartmentId,
                                   const std::string& region);
    bool GetBootVolumeAttachmentForInstance(const std::string& availabilityDomain, const std::string& compartmentId,
                                            const std::string& instanceId, SStorageAttachmentInfoLib& attachment);
    bool CheckIfDiskExists(const std::string& diskId, bool& exists);

    // ---- Detail fillers ---------------------------------------------------
    // flags 0: true at once, nothing read. Otherwise re-reads vm by its vmName and guid.
    bool FillVMInfoDetails(SVMInfoLib& vm, unsigned long long flags, const std::string& region);
    // Stops at the first failure.
    bool FillVMInfoListDetails(std::vector<SVMInfoLib>& vms, unsigned long long flags, const std::string& region);
    // Bit 29: the host's VMs (by hostId, hostName); bit 26: its networks when it
    // has none yet, in availabilityDomain.
    bool FillHostInfoDetails(SHostInfoLib& host, const std::string& availabilityDomain, unsigned long long flags,
                             const std::string& region);
    bool FillHostInfoListDetails(std::vector<SHostInfoLib>& hosts, unsigned long long flags,
                                 const std::string& region);
    // Bit 26 of flags: key pairs and security groups of the data centre.
    bool FillDCInfoDetails(SDataCenterInfoLib& dataCenter, unsigned long long flags, unsigned long long flags2,
                           const std::string& region);
    bool FillDCInfoListDetails(std::vector<SDataCenterInfoLib>& dataCenters, unsigned long long flags,
                               unsigned long long flags2, const std::string& region);

    // ---- Instances --------------------------------------------------------
    bool LaunchInstance(SVMInfoLib& vm);
    // Empty instance text is refused before any request (logged only).
    bool RebootInstance(const std::string& instance);
    bool PowerOnInstance(const std::string& instance);
    bool PowerOffInstance(const std::string& instance);
    // Reads the VM, then deletes it by its full name; the backend is always told
    // true for its first option (OCI: keep the boot volume; Classic: wait),
    // whatever unusedOption says.
    bool DeleteVM(const std::string& vmName, const std::string& vmId, bool unusedOption, bool wait);
    // Reads the template, deploys vm from it, then re-reads vm.
    bool DeployVM(SVMInfoLib& vm, const std::string& templateId, const std::string& region);
    // vm is replaced by the launched instance's record.
    bool DeployVMFromBootDisk(SVMInfoLib& vm, const std::string& bootVolumeId);
    bool DeleteImage(const std::string& imageId);
    bool AttachVnic(const SVMInfoLib& vm, const SVNicInfoLib& vnic);

    // ---- Volumes ----------------------------------------------------------
    // Empty text is refused before any request (logged only).
    bool DeleteVolumeSnapshot(const std::string& snapshot);
    bool DeleteVolume(const std::string& volume);
    bool DoesVolumeExist(const std::string& volumeName, const std::string& user);

    // ---- PaaS and OCI databases -------------------------------------------
    bool GetDBInstanceInfo(const std::string& name, SOracleDBInstanceInfoLib& instance);
    bool GetDBInstanceList(std::vector<SOracleDBInstanceInfoLib>& instances);
    bool GetSSHKeysList(std::vector<SOracleSSHKeyLib>& keys);
    bool GetSSHKeyByName(const std::string& name, SOracleSSHKeyLib& key);
    bool GetComputeNodeList(const std::string& name, std::vector<SOracleDBComputeNodeLib>& nodes);
    bool QueryBackupRestoreJobStatus(const std::string& jobUri, SOracleJobInfoLib& job);
    bool GetJavaInstanceList(std::vector<SJavaInstanceInfoLib>& instances);
    bool GetMySQLInstanceList(std::vector<SMySQLInstanceInfoLib>& instances);
    bool QueryJavaMySQLBackupRestoreJobStatus(const std::string& jobUri, SJavaMySQLJobInfoLib& job);
    bool GetDbSystemList(std::vector<SOCIDbSystemInfoLib>& systems, const std::string& compartmentId);
    bool GetDatabaseList(std::vector<SOCIDatabaseInfoLib>& databases, const std::string& compartmentId,
                         const std::string& dbHomeId);
    bool GetDbBackupList(std::vector<SOCIDbBackupInfoLib>& backups, const std::string& compartmentId,
                         const std::string& databaseId);
    bool GetDbHomeList(std::vector<SOCIDbHomeInfoLib>& homes, const std::string& compartmentId,
                       const std::string& dbSystemId);
    bool GetDbNodeList(std::vector<SOCIDbNodeInfoLib>& nodes, const std::string& compartmentId,
                       const std::string& dbSystemId);
    bool GetDatabaseInfo(SOCIDatabaseInfoLib& database, const std::string& databaseId);
    bool GetDbBackupInfo(SOCIDbBackupInfoLib& backup, const std::string& backupId);
    bool GetBucketListForCompartment(std::vector<SStorageBucketInfoLib>& buckets, const std::string& compartmentId,
                                     unsigned long long flags, const std::string& region);
    // When db names an SSH key but carries no public key, the key is looked up
    // first; a failed lookup sets GetLastError() to "Failed to find SSH key with
    // name <name>. Error [<queries' error>]" and creates nothing.
    bool CreateDBInstance(SOracleDBInstanceInfoLib& db);
    bool DeleteDBInstance(const SOracleDBInstanceInfoLib& db);
    bool ScaleDBInstance(const SOracleDBInstanceInfoLib& db);
    bool StartDBInstance(const SOracleDBInstanceInfoLib& db);
    bool StopDBInstance(const SOracleDBInstanceInfoLib& db);
    bool RestartDBInstance(const SOracleDBInstanceInfoLib& db);
    // Backup family: returns once the cloud accepted the job; jobUri is polled
    // with QueryBackupRestoreJobStatus / QueryJavaMySQLBackupRestoreJobStatus.
    bool BackupDBInstance(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib& options,
                          std::string& jobUri, std::string& jobInfo);
    bool RestoreDBInstance(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib& options,
                           std::string& jobUri, std::string& jobInfo);
    bool DeleteDBBackup(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib& options,
                        std::string& jobUri, std::string& jobInfo);
    bool BackupJavaInstance(const SJavaInstanceInfoLib& java, const SPaaSBackupRestoreOptionsLib& options,
                            std::string& jobUri, std::string& jobInfo);
    bool RestoreJavaInstance(const SJavaInstanceInfoLib& java, const SPaaSBackupRestoreOptionsLib& options,
                             std::string& jobUri, std::string& jobInfo);
    bool DeleteJavaBackup(const SJavaInstanceInfoLib& java, const SPaaSBackupRestoreOptionsLib& options,
                          std::string& jobUri, std::string& jobInfo);
    bool BackupMySQLInstance(const SMySQLInstanceInfoLib& mysql, const SPaaSBackupRestoreOptionsLib& options,
                             std::string& jobUri, std::string& jobInfo);
    bool RestoreMySQLInstance(const SMySQLInstanceInfoLib& mysql, const SPaaSBackupRestoreOptionsLib& options,
                              std::string& jobUri, std::string& jobInfo);
    bool DeleteMySQLBackup(const SMySQLInstanceInfoLib& mysql, const SPaaSBackupRestoreOptionsLib& options,
                           std::string& jobUri, std::string& jobInfo);
    bool BackupDBInstance(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib& options,
                          std::string& job);
    bool RestoreDBInstance(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib& options,
                           std::string& job);
    bool DeleteDBBackup(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib& options,
                        std::string& job);

    // ---- Composite operations ---------------------------------------------
    // Attach volumeName to instanceName (read with flags 16); on a Classic
    // compute facade (type 1) the first free disk slot is chosen, and when none
    // is left noFreeIndex is set and nothing is requested. Otherwise
    // noFreeIndex is reset before the attachment; the backend sets it again
    // when the cloud reports its attachment limit. Waits for the attachment.
    bool AttachVolume(const std::string& volumeName, const std::string& instanceName, bool& noFreeIndex);
    // OCI only (other types log "Not Implemented"): attachment is filled, with
    // the iSCSI address, port and target for "iscsi"; limitReached tells that
    // the instance has no free slot. Waits for the attachment.
    bool AttachVolume(const std::string& volumeId, const std::string& instanceId, bool& limitReached,
                      SStorageAttachmentInfoLib& attachment);
    // Puts every volume it can on detach request (a volume attached elsewhere
    // or to nothing is skipped), then waits for all of them together. False if
    // any volume failed or the wait did; the reasons go to the log only.
    bool DetachVolumes(const std::vector<std::string>& volumeNames, const std::string& instanceName);
    // Waits for the detachment; a volume not attached to the instance is success.
    bool DetachVolume(const std::string& volumeName, const std::string& instanceName);
    // Refuses an empty name or size 0 before any request; a backend failure is
    // logged and leaves GetLastError() unchanged (Extension: GetLastFailure()
    // holds the backend's text and the failed request, so a create whose
    // answer was lost is known as such).
    bool CreateVolume(SDiskInfoLib& disk, const std::string& scope);
    // Checks that vm can be launched; sends nothing, logs why not.
    bool ValidateInstanceInfoForRestore(const SVMInfoLib& vm);
    // OCI only; does not wait: completed tells whether the import has finished
    // ("AVAILABLE") or is still running ("IMPORTING"). Any other state is false
    // with GetLastError() naming it.
    bool IsImageImportOperationCompleted(const std::string& imageId, bool& completed, const std::string& region);
    // Creates each named disk (unnamed ones are skipped) and attaches it to the
    // instance, in order; stops at the first failure, keeping what was done.
    // OCI disks default to the instance's domain and compartment. Created disks
    // get their ids and attachments filled. GetLastError() holds the backend's
    // text of a failed creation or attachment.
    bool ReConfigureVM(const std::string& instanceName, std::vector<SDiskInfoLib>& disks);
    // true with exists=false when the cloud says the instance is not there
    // (OCI: 404 or TERMINATED); false only when the question could not be answered.
    bool DoesVMExist(const std::string& vmName, const std::string& vmId, bool& exists);
    // Lifecycle text of a snapshot (OCI backup) or a volume as the cloud reports it.
    bool GetSnapshotStatus(const std::string& snapshot, std::string& status);
    bool GetVolumeStatus(const std::string& volume, std::string& status);
    // Classic: the volume is read first, as the cloud rewrites it whole.
    bool MakeVolumeBootable(const std::string& volume);
    bool ClearDescriptionForVolume(const std::string& volume);
    // OCI: the domains of the tenancy (its root compartment).
    bool GetAvailabilityDomainListForTenancy(std::vector<SAvailabilityDomainInfoLib>& domains,
                                             const std::string& region);

    // Snapshots. The snapshot creations do not take over the backend's error
    // text; the revert does (always the operations' text).
    // createdSnapshot / createdVolume receive the new object's name (OCI: its
    // id). Snapshots are not waited for (poll GetSnapshotStatus). A volume from
    // a snapshot is made in the compartment and domain of the snapshot's volume.
    bool CreateVolumeSnapshot(const std::string& volumeUri, const std::string& description,
                              const std::string& snapshotName, std::string& createdSnapshot);
    bool CreateIntegritySnapshot(const std::string& volumeUri, const std::string& description,
                                 const std::string& snapshotName, std::string& createdSnapshot);
    bool CreateVolumeFromSnapshot(const std::string& snapshotUri, const std::string& volumeName,
                                  std::string& createdVolume);
    // Replaces the volume by a new one made from the snapshot, named after the
    // volume's last path part + "_" + the time in seconds; true once the new
    // volume exists, even if the old one could not be deleted.
    bool RevertToIntegritySnapshot(const std::string& volumeUri, const std::string& snapshotUri,
                                   std::string& createdVolume);

    // Configuration capture and orchestration restore.
    // GetInstanceConfigurations assigns configs[".json"] (the instance's own
    // document) and, on Classic, "_master.json", "_instance.json" and
    // "_storage.json": the orchestrations "<name>_master", "_instance" and
    // "_storage" beside the instance, each empty when it cannot be read (logged,
    // not a failure). A Classic instanceName must be a full name (with "/").
    bool GetInstanceConfigurations(const std::string& instanceName, std::map<std::string, std::string>& configs);
    // vm from a saved ".json" document.
    bool ReadInstanceConfig(const std::string& json, SVMInfoLib& vm);
    // vm from the first instance of a saved orchestration ("oplans", "objects",
    // "instances"); vm is left as it was when there is none.
    bool ReadInstanceOrchestration(const std::string& json, SVMInfoLib& vm);
    // Classic: checks vm as for a restore, creates orchestration
    // "<full name>_master" holding its instance, waits until it is active and
    // replaces vm by the started instance's record. Waits on the caller's thread.
    bool DeployVMFromOrchestration(SVMInfoLib& vm);

    // Object storage (OCI): the tenant's namespace is looked up on every call.
    bool UploadToObjectStorage(const std::string& bucket, const std::string& object, const std::string& content);
    bool CreateImage(const std::string& bucket, const std::string& object, SImageInfoLib& image);
    bool DeleteStorageObject(const std::string& bucket, const std::string& object);
    // Public key text of a key pair; failures are logged at debug level only.
    bool GetPublicKeyForKeyName(const std::string& keyName, std::string& publicKey);

    // ---- Extensions: listings for finding what was left behind (OCI) -------
    // Not in the designed interface; a Classic facade answers false. Each lists
    // one compartment (appended to the vector); GetLastError() explains a false.
    // Block and boot volumes, attached or not (boot volumes are bootable).
    bool ListVolumes(std::vector<SDiskInfoLib>& volumes, const std::string& compartmentId, const std::string& region);
    // Volume and boot volume backups.
    bool ListVolumeBackups(std::vector<SSnapshotInfoLib>& backups, const std::string& compartmentId,
                           const std::string& region);
    // Volume and boot volume attachments, of every state.
    bool ListVolumeAttachments(std::vector<SStorageAttachmentInfoLib>& attachments, const std::string& compartmentId,
                               const std::string& region);
    // The objects of a bucket of the tenant's namespace (looked up as for the
    // other object storage calls).
    bool ListObjects(const std::string& bucket, std::vector<SStorageObjectInfoLib>& objects);

protected:
    // For tests and embedding: takes ownership of the four backend objects
    // (any may be null) instead of building them from the cloud type. The type
    // still selects the cloud-specific rules of the composite operations.
    COracleCloudWrapper(EOracleCloudType type, COracleCloudParser* parser, COracleCloudBaseConnection* connection,
                        COracleCloudBaseQueries* queries, COracleCloudBaseOperations* operations);

    // The last error text and failure record, for ForwardToBackend.
    FacadeErrorSlot errorSlot();

    std::string m_lastError;
    COracleCloudBaseConnection* m_connection;
    COracleCloudParser* m_parser;
    COracleCloudBaseQueries* m_queries;
    COracleCloudBaseOperations* m_operations;
    EOracleCloudType m_cloudType;
    SOracleCloudFailureInfoLib m_lastFailure;  // Extension: goes with m_lastError
};

}  // namespace OracleCloudSDKWrapper
