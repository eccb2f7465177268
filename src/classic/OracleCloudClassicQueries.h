#pragma once
#include <string>
#include <vector>

#include "facade/OracleCloudBaseQueries.h"
#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

// The read side of the Classic backend: Compute Classic objects reached by
// links and directory walks, and the instance lists, SSH keys and job states
// of the PaaS services (database, Java, MySQL).
//
// Contract shared by every read:
// - true on success; false leaves the reason in GetLastError(): the service's
//   "message" for a refused request, the transfer's text when no answer came,
//   or the text logged here. Results are appended to lists and written over
//   single records; nothing is retried here (an expired session is renewed by
//   the connection).
// - Every URL is relative to the service root; object URLs are the collection
//   followed by the object's full name, lists end in "/" (see GetListFromLink).
// - Attachments, IP associations and the free disk index are read in the
//   connected user's container (getUser() of the connection).
//
// The inventory views, built from the same collections (no other resource):
// - data centre: one, the Compute site the connection talks to (name: the
//   identity domain "Compute-acme", guid: the server text);
// - cluster: one per data centre, the identity domain's container
//   ("/Compute-acme/"), holding the hosts;
// - host and container: a user container of the instance collection
//   ("/Compute-acme/jdoe/"); a host has hostId "/Compute-acme/jdoe" (the
//   user path its VMs and networks are listed under) and hostName "jdoe".
class COracleCloudClassicQueries : public COracleCloudBaseQueries {
public:
    // Neither pointer is owned. Reads nOracleCloudOperationWaitTime (the pause of WaitForBoot).
    COracleCloudClassicQueries(COracleCloudBaseConnection* connection, COracleCloudParser* parser);
    ~COracleCloudClassicQueries() override;

    // Deliberately true: the base's false would make every Classic Connect
    // fail after a good login. The compute login already proved the
    // credentials, and PaaS has no session to check.
    bool CheckConnection() override;

    // ---- inventory views (see the class comment) ------------------------------
    bool GetClusterInfo(const std::string& clusterId, SClusterInfoLib& cluster, unsigned long long flags,
                        const std::string& region) override;
    bool GetClusterInfoList(std::vector<SClusterInfoLib>& clusters, unsigned long long flags,
                            const std::string& region) override;
    // hostId or hostName names one user container ("/Compute-acme/jdoe" or "jdoe").
    bool GetHostInfo(const std::string& hostId, const std::string& hostName, SHostInfoLib& host,
                     unsigned long long flags, const std::string& region) override;
    bool GetHostInfoList(std::vector<SHostInfoLib>& hosts, const std::string& parentId, unsigned long long flags,
                         const std::string& region) override;
    bool GetContainerInfo(const std::string& containerId, const std::string& containerName,
                          SContainerInfoLib& container, unsigned long long flags, const std::string& region) override;
    bool GetContainerInfoList(std::vector<SContainerInfoLib>& containers, const std::string& parentId,
                              unsigned long long flags, const std::string& region) override;
    bool GetDCInfoList(std::vector<SDataCenterInfoLib>& dataCenters, unsigned long long flags,
                       unsigned long long flags2, const std::string& region) override;

    // ---- instances, images, keys, groups, shapes, networks ----------------------
    // vmName with a "/" is a full name, read directly; otherwise the instances
    // are walked and the first whose short name is vmName is taken (preferring
    // one whose uuid is vmId). An empty vmName reads vmId as the name (the
    // facade's attach passes the instance there). The found VM's disk list is
    // then rebuilt from its storage attachments: one volume record per
    // attachment, with the attachment's index, the attachment itself and
    // isAttached set. False when not found ("Instance [%s] was not found") or
    // a read failed.
    bool GetVMInfo(const std::string& vmName, const std::string& vmId, SVMInfoLib& vm, unsigned long long flags,
                   const std::string& region) override;
    // Every instance of every user container (3-level walk of "instance").
    bool GetVMInfoList(std::vector<SVMInfoLib>& vms, unsigned long long flags, const std::string& region) override;
    // The instances of user hostName ("jdoe" or a user path); empty: false.
    bool GetVMInfoListForHost(std::vector<SVMInfoLib>& vms, const std::string& hostId, const std::string& hostName,
                              unsigned long long flags, const std::string& region) override;
    // The instance's own document (full name), unparsed.
    bool GetInstanceConfigJson(const std::string& instanceName, std::string& json) override;
    // Machine images of every user container.
    bool GetTemplateInfoList(std::vector<SVMInfoLib>& templates, const std::string& compartmentId,
                             unsigned long long flags, unsigned long long flags2, const std::string& region) override;
    // One machine image by full name.
    bool GetTemplateInfo(const std::string& templateId, SVMInfoLib& templateInfo, const std::string& region) override;
    bool GetKeyPairList(std::vector<SKeyPairInfoLib>& keyPairs) override;
    bool GetKeyInfoForKeyName(const std::string& keyName, SKeyPairInfoLib& keyPair) override;
    bool GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>& groups) override;
    bool GetInstanceShapeList(std::vector<SInstanceShapeInfoLib>& shapes, const std::string& compartmentId,
                              const std::string& region) override;
    // IP networks of the user path compartmentId (empty: the connected user).
    bool GetNetworkList(std::vector<SNetworkInfoLib>& networks, const std::string& compartmentId,
                        const std::string& availabilityDomain, const std::string& region) override;
    // flags 0 reads nothing and answers true.
    bool GetIPAssocation(const std::string& vcableId, std::vector<SIPAssociationLib>& associations,
                         unsigned long long flags) override;
    // First free disk slot 1..10 of vm.disks (their index - 1 marks a slot), 0 when all are used.
    int GetAvailableIndexPos(const SVMInfoLib& vm) override;
    // One past the highest attachment index of the instance (0 without
    // attachments); -1 when that is 10 or the read fails.
    int GetAvailableDiskIndexForVM(const std::string& vmName) override;
    // Re-reads vm (by full name when known) until it is "running" and, when
    // asked, has an address; pauses nOracleCloudOperationWaitTime seconds
    // (default 5) after every read, also the last. A running VM without an
    // address at the timeout is a success ("did not obtain an IPaddress").
    bool WaitForBoot(SVMInfoLib& vm, int timeoutSeconds, bool waitForIPAddress, const std::string& region) override;

    // ---- volumes, snapshots, attachments, orchestrations --------------------------
    // Reads the volume named disk.name (disk.volumeName when that is empty) into
    // disk; flags 0 reads nothing and answers true.
    bool GetVolumeInfo(SDiskInfoLib& disk, unsigned long long flags) override;
    // Reads snapshot.name into snapshot.
    bool GetSnapshotInfo(SSnapshotInfoLib& snapshot, unsigned long long flags) override;
    bool GetSnapshotInfoForSnapshotName(const std::string& snapshotName, SSnapshotInfoLib& snapshot) override;
    // Snapshots of each user ("Failed to get snapshot infor for user [%s]" skips one).
    bool GetAllSnapshotsInfoForUsers(std::vector<SSnapshotInfoLib>& snapshots,
                                     const std::vector<std::string>& users) override;
    // The attachments of instance instanceId (a full name; compartmentId is not read).
    bool GetStorageAttachmentInfo(const std::string& compartmentId, const std::string& instanceId,
                                  std::vector<SStorageAttachmentInfoLib>& attachments, unsigned long long flags,
                                  const std::string& region) override;
    // The one attachment of a volume; true with the record untouched when the
    // volume is attached to nothing; false for more than one.
    bool GetStorageAttachmentForDisk(const std::string& volumeName, SStorageAttachmentInfoLib& attachment,
                                     const std::string& region) override;
    // The document of orchestration base + "_" + kind ("master", "storage",
    // "instance"), as JSON text; false when it cannot be read.
    bool GetOrchestrationForVM(const std::string& base, const std::string& kind, std::string& orchestration) override;
    bool GetOrchestrationInfo(const std::string& name, SOrchestrationInfoLib& orchestration) override;

    // ---- PaaS ----------------------------------------------------------------------
    bool GetDBInstanceInfo(const std::string& name, SOracleDBInstanceInfoLib& instance) override;
    bool GetDBInstanceList(std::vector<SOracleDBInstanceInfoLib>& instances) override;
    bool GetComputeNodeList(const std::string& name, std::vector<SOracleDBComputeNodeLib>& nodes) override;
    bool GetSSHKeysList(std::vector<SOracleSSHKeyLib>& keys) override;
    // The first key whose computeKeyName is name (or ends in "/" + name).
    bool GetSSHKeyByName(const std::string& name, SOracleSSHKeyLib& key) override;
    // Departure: the Java service answers its "services" as an object keyed
    // by service name, not as a list; both forms are read (one record per
    // member value, in the answer's order).
    bool GetJavaInstanceList(std::vector<SJavaInstanceInfoLib>& instances) override;
    bool GetMySQLInstanceList(std::vector<SMySQLInstanceInfoLib>& instances) override;
    // GET of the job's URI (as the service gave it: absolute or relative);
    // the DBCS form fills status, message and backup tag, the Java/MySQL form
    // the job record.
    bool QueryBackupRestoreJobStatus(const std::string& jobUri, SOracleJobInfoLib& job) override;
    bool QueryJavaMySQLBackupRestoreJobStatus(const std::string& jobUri, SJavaMySQLJobInfoLib& job) override;

    // ---- link readers and directory walks ---------------------------------------------
    // The names of a directory listing (always the directory media type, list
    // "result"); false when the read fails or lists no name.
    bool GetListFromLink(const std::string& link, std::vector<std::string>& names) override;
    // PaaS SSH keys (list "items").
    bool GetListFromLink(const std::string& link, std::vector<SOracleSSHKeyLib>& keys) override;
    // The names `levels` levels below uri (2 or more); a branch that cannot be
    // read is logged and left out.
    bool GetResourceNamesFromURITraversal(const std::string& uri, int levels, std::vector<std::string>& names) override;

    // The list under "result" ("services" on a PaaS connection) of link,
    // which gets a trailing "/" first (also after a query string: the
    // services take "...?instance_name=x/"). Appends to list.
    template <typename T>
    bool GetListFromLink(const std::string& link, std::vector<T>& list, bool directoryListing);
    // One object.
    template <typename T>
    bool GetObjectFromLink(const std::string& link, T& record);
    // The objects `levels` levels below uri; any failure ends the walk with false.
    template <typename T>
    bool GetListFromURITraversal(const std::string& uri, int levels, std::vector<T>& list);

protected:
    // GET of link; on failure the last error is set (service message or
    // transfer text) and false returned.
    bool readLink(const std::string& link, std::string& response, bool directoryListing);
    // The user containers of the instance collection ("/Compute-acme/jdoe/").
    bool listUserContainers(std::vector<std::string>& containers);
    // A walk needs at least two levels; false (logged, last error) otherwise.
    bool isWalkDepth(int levels);
    // Fills vm.disks from the instance's attachments (see GetVMInfo).
    bool readDisksOfInstance(SVMInfoLib& vm);
    bool isPaaS();

    DebugLog m_debugLog;
    uint32_t bootPollSeconds;
};

}  // namespace OracleCloudSDKWrapper
