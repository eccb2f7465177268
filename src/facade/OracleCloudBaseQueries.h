#pragma once
#include <string>
#include <vector>

#include "facade/OracleCloudErrorHandler.h"
#include "oraclecloud/OracleCloudRecords.h"

namespace OracleCloudSDKWrapper {

class COracleCloudBaseConnection;

// The read side of a backend, as the facade sees it. Every operation returns
// true on success and delivers results through its reference arguments; on
// false the object's GetLastError() tells why.
//
// The defaults here stand for "this cloud has no such resource": they return
// false at once, send nothing, log nothing and leave the last error as it was.
// A backend overrides what its cloud supports. The slot order is part of the
// interface and must not change.
//
// "flags" is the caller's 64-bit detail mask (bit values 2: guest OS, 16:
// disks, 32: network; bit 26: networks, key pairs and security groups; bit 29:
// a host's VMs). "region" empty means the connection's current region.
class COracleCloudBaseQueries : public COracleCloudErrorHandler {
public:
    // Neither pointer is owned; both live as long as the facade that built this object.
    COracleCloudBaseQueries(COracleCloudBaseConnection* connection, COracleCloudParser* parser);
    virtual ~COracleCloudBaseQueries();

    // OCI: reads the tenancy.
    virtual bool CheckConnection();

    virtual bool GetClusterInfo(const std::string& clusterId, SClusterInfoLib& cluster, unsigned long long flags,
                                const std::string& region);
    virtual bool GetClusterInfoList(std::vector<SClusterInfoLib>& clusters, unsigned long long flags,
                                    const std::string& region);
    // OCI: a host is a compartment (hostId = compartment id).
    virtual bool GetHostInfo(const std::string& hostId, const std::string& hostName, SHostInfoLib& host,
                             unsigned long long flags, const std::string& region);
    virtual bool GetHostInfoList(std::vector<SHostInfoLib>& hosts, const std::string& parentId,
                                 unsigned long long flags, const std::string& region);
    // Classic reads by name (a full path, or a short name looked up by walking
    // the instances); OCI reads by id.
    virtual bool GetVMInfo(const std::string& vmName, const std::string& vmId, SVMInfoLib& vm,
                           unsigned long long flags, const std::string& region);
    virtual bool GetVMInfoList(std::vector<SVMInfoLib>& vms, unsigned long long flags, const std::string& region);
    // Appends. OCI: hostId is the compartment id; Classic: hostName is the user.
    virtual bool GetVMInfoListForHost(std::vector<SVMInfoLib>& vms, const std::string& hostId,
                                      const std::string& hostName, unsigned long long flags,
                                      const std::string& region);
    // The instance's own document, unparsed.
    virtual bool GetInstanceConfigJson(const std::string& instanceName, std::string& json);
    virtual bool GetTemplateInfoList(std::vector<SVMInfoLib>& templates, const std::string& compartmentId,
                                     unsigned long long flags, unsigned long long flags2, const std::string& region);
    virtual bool GetTemplateInfoListFilterByName(std::vector<SVMInfoLib>& templates, const std::string& compartmentId,
                                                 const std::string& name, unsigned long long flags,
                                                 unsigned long long flags2, const std::string& region);
    virtual bool GetTemplateInfo(const std::string& templateId, SVMInfoLib& templateInfo, const std::string& region);
    // Classic: true with the record untouched when the volume is attached to nothing.
    virtual bool GetStorageAttachmentForDisk(const std::string& volumeName, SStorageAttachmentInfoLib& attachment,
                                             const std::string& region);
    // OCI: on false, notAttached tells "not attached" apart from a failed request.
    virtual bool GetStorageAttachmentForDiskAndInstance(const std::string& volumeId, const std::string& instanceId,
                                                        SStorageAttachmentInfoLib& attachment, bool& notAttached,
                                                        const std::string& region);
    virtual bool GetContainerInfo(const std::string& containerId, const std::string& containerName,
                                  SContainerInfoLib& container, unsigned long long flags, const std::string& region);
    virtual bool GetContainerInfoList(std::vector<SContainerInfoLib>& containers, const std::string& parentId,
                                      unsigned long long flags, const std::string& region);
    virtual bool GetSnapshotInfoForSnapshotName(const std::string& snapshotName, SSnapshotInfoLib& snapshot);
    virtual bool GetKeyPairList(std::vector<SKeyPairInfoLib>& keyPairs);
    virtual bool GetKeyInfoForKeyName(const std::string& keyName, SKeyPairInfoLib& keyPair);
    virtual bool GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>& groups);
    virtual bool GetInstanceShapeList(std::vector<SInstanceShapeInfoLib>& shapes, const std::string& compartmentId,
                                      const std::string& region);
    virtual bool GetInstanceShapeListForImage(std::vector<SInstanceShapeInfoLib>& shapes,
                                              const std::string& compartmentId, const std::string& imageId,
                                              const std::string& availabilityDomain, const std::string& region);
    virtual bool GetNetworkList(std::vector<SNetworkInfoLib>& networks, const std::string& compartmentId,
                                const std::string& availabilityDomain, const std::string& region);
    virtual bool GetIPAssocation(const std::string& vcableId, std::vector<SIPAssociationLib>& associations,
                                 unsigned long long flags);
    virtual bool GetStorageAttachmentInfo(const std::string& compartmentId, const std::string& instanceId,
                                          std::vector<SStorageAttachmentInfoLib>& attachments,
                                          unsigned long long flags, const std::string& region);
    // Reads the volume named by the record's full name (Classic) or id (OCI) into it.
    virtual bool GetVolumeInfo(SDiskInfoLib& disk, unsigned long long flags);
    virtual bool GetSnapshotInfo(SSnapshotInfoLib& snapshot, unsigned long long flags);
    virtual bool GetAllSnapshotsInfoForUsers(std::vector<SSnapshotInfoLib>& snapshots,
                                             const std::vector<std::string>& users);
    // Classic: the orchestration of kind "master", "storage" or "instance" under base.
    virtual bool GetOrchestrationForVM(const std::string& base, const std::string& kind, std::string& orchestration);
    // Classic: one past the highest attachment index in use, or -1 when full or
    // unreadable. The default answers -1.
    virtual int GetAvailableDiskIndexForVM(const std::string& vmName);
    virtual bool GetOrchestrationInfo(const std::string& name, SOrchestrationInfoLib& orchestration);
    // Classic: the first free disk slot (1..10) of the VM's disks, 0 when none is
    // free. The default answers 0.
    virtual int GetAvailableIndexPos(const SVMInfoLib& vm);
    virtual bool GetDBInstanceInfo(const std::string& name, SOracleDBInstanceInfoLib& instance);
    virtual bool GetDBInstanceList(std::vector<SOracleDBInstanceInfoLib>& instances);
    virtual bool GetComputeNodeList(const std::string& name, std::vector<SOracleDBComputeNodeLib>& nodes);
    virtual bool GetSSHKeysList(std::vector<SOracleSSHKeyLib>& keys);
    virtual bool GetSSHKeyByName(const std::string& name, SOracleSSHKeyLib& key);
    virtual bool QueryBackupRestoreJobStatus(const std::string& jobUri, std::string& status, std::string& message,
                                             std::string& tag);
    // Classic waits up to timeoutSeconds for "running" (and an address when asked);
    // OCI only fetches the initial Windows credentials.
    virtual bool WaitForBoot(SVMInfoLib& vm, int timeoutSeconds, bool waitForIPAddress, const std::string& region);
    virtual bool QueryBackupRestoreJobStatus(const std::string& jobUri, SOracleJobInfoLib& job);
    virtual bool GetJavaInstanceList(std::vector<SJavaInstanceInfoLib>& instances);
    virtual bool GetMySQLInstanceList(std::vector<SMySQLInstanceInfoLib>& instances);
    virtual bool QueryJavaMySQLBackupRestoreJobStatus(const std::string& jobUri, SJavaMySQLJobInfoLib& job);
    virtual bool GetRegionInfoList(std::vector<SRegionInfoLib>& regions, unsigned long long flags);
    virtual bool GetSubscribedRegionInfoList(std::vector<SRegionInfoLib>& regions, unsigned long long flags);
    virtual bool GetAvailabilityDomainList(std::vector<SAvailabilityDomainInfoLib>& domains, unsigned long long flags,
                                           const std::string& compartmentId, const std::string& region);
    virtual bool GetDCInfoList(std::vector<SDataCenterInfoLib>& dataCenters, unsigned long long flags,
                               unsigned long long flags2, const std::string& region);
    virtual bool GetBootVolumeAttachmentForInstance(const std::string& availabilityDomain,
                                                    const std::string& compartmentId, const std::string& instanceId,
                                                    SStorageAttachmentInfoLib& attachment, const std::string& region);
    // true with exists=false when the cloud answers that the disk is absent.
    virtual bool CheckIfDiskExists(const std::string& diskId, bool& exists, const std::string& region);
    virtual bool GetBucketListForCompartment(std::vector<SStorageBucketInfoLib>& buckets,
                                             const std::string& compartmentId, unsigned long long flags,
                                             const std::string& region);
    virtual bool GetNamespaceForTenant(std::string& tenantNamespace);
    virtual bool GetDbSystemList(std::vector<SOCIDbSystemInfoLib>& systems, const std::string& compartmentId);
    virtual bool GetDatabaseList(std::vector<SOCIDatabaseInfoLib>& databases, const std::string& compartmentId,
                                 const std::string& dbHomeId);
    virtual bool GetDbBackupList(std::vector<SOCIDbBackupInfoLib>& backups, const std::string& compartmentId,
                                 const std::string& databaseId);
    virtual bool GetDbHomeList(std::vector<SOCIDbHomeInfoLib>& homes, const std::string& compartmentId,
                               const std::string& dbSystemId);
    virtual bool GetDbNodeList(std::vector<SOCIDbNodeInfoLib>& nodes, const std::string& compartmentId,
                               const std::string& dbSystemId);
    virtual bool GetDatabaseInfo(SOCIDatabaseInfoLib& database, const std::string& databaseId);
    virtual bool GetDbBackupInfo(SOCIDbBackupInfoLib& backup, const std::string& backupId);
    // Classic directory walks: names listed under link (false when none), PaaS
    // SSH keys, and the full names found `levels` levels below uri.
    virtual bool GetListFromLink(const std::string& link, std::vector<std::string>& names);
    virtual bool GetListFromLink(const std::string& link, std::vector<SOracleSSHKeyLib>& keys);
    virtual bool GetResourceNamesFromURITraversal(const std::string& uri, int levels, std::vector<std::string>& names);

    // ---- Extensions (after the designed slots; OCI only, defaults false) --
    // Listings for finding what a backup or restore left behind: every block
    // and boot volume of a compartment (attached or not), every volume and
    // boot volume backup, every volume and boot volume attachment, and the
    // objects of a bucket in a namespace. Appended to the caller's vector.
    virtual bool ListVolumes(std::vector<SDiskInfoLib>& volumes, const std::string& compartmentId,
                             const std::string& region);
    virtual bool ListVolumeBackups(std::vector<SSnapshotInfoLib>& backups, const std::string& compartmentId,
                                   const std::string& region);
    virtual bool ListVolumeAttachments(std::vector<SStorageAttachmentInfoLib>& attachments,
                                       const std::string& compartmentId, const std::string& region);
    virtual bool ListObjects(std::vector<SStorageObjectInfoLib>& objects, const std::string& nameSpace,
                             const std::string& bucket);

protected:
    COracleCloudBaseConnection* m_connection;
};

}  // namespace OracleCloudSDKWrapper
