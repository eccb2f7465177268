// Read operations of the facade that forward to the queries object.
#include <strings.h>

#include <algorithm>

#include "facade/FacadeForward.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"

namespace OracleCloudSDKWrapper {

namespace {

using Queries = COracleCloudBaseQueries;

// Callers show these lists to people, so they are ordered as a person reads
// them: by name, without regard to case.
template <class Record>
void SortNoCase(std::vector<Record>& records, std::string Record::*key) {
    std::stable_sort(records.begin(), records.end(), [key](const Record& a, const Record& b) {
        return strcasecmp((a.*key).c_str(), (b.*key).c_str()) < 0;
    });
}

}  // namespace

bool COracleCloudWrapper::GetHostInfo(const std::string& hostId, const std::string& hostName,
                                      const std::string& /*unusedName*/, SHostInfoLib& host,
                                      unsigned long long flags, const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetHostInfo(hostId, hostName, host, flags, region); });
}

bool COracleCloudWrapper::GetHostInfoList(std::vector<SHostInfoLib>& hosts, const std::string& parentId,
                                          unsigned long long flags, const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetHostInfoList(hosts, parentId, flags, region); });
}

bool COracleCloudWrapper::GetVMInfo(const std::string& vmName, const std::string& vmId, SVMInfoLib& vm,
                                    unsigned long long flags, const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetVMInfo(vmName, vmId, vm, flags, region); });
}

bool COracleCloudWrapper::GetVMInfoList(std::vector<SVMInfoLib>& vms, unsigned long long flags,
                                        const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetVMInfoList(vms, flags, region); });
}

bool COracleCloudWrapper::GetVMInfoListForHost(std::vector<SVMInfoLib>& vms, const std::string& hostId,
                                               const std::string& hostName, unsigned long long flags,
                                               const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetVMInfoListForHost(vms, hostId, hostName, flags, region); });
}

bool COracleCloudWrapper::GetTemplateInfoList(std::vector<SVMInfoLib>& templates, const std::string& compartmentId,
                                              unsigned long long flags, unsigned long long flags2,
                                              const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) {
        return q.GetTemplateInfoList(templates, compartmentId, flags, flags2, region);
    });
}

bool COracleCloudWrapper::GetTemplateInfoListFilterByName(std::vector<SVMInfoLib>& templates,
                                                          const std::string& compartmentId, const std::string& name,
                                                          unsigned long long flags, unsigned long long flags2,
                                                          const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) {
        return q.GetTemplateInfoListFilterByName(templates, compartmentId, name, flags, flags2, region);
    });
}

bool COracleCloudWrapper::GetTemplateInfo(const std::string& templateId, SVMInfoLib& templateInfo,
                                          const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetTemplateInfo(templateId, templateInfo, region); });
}

// The three sorted getters deliberately keep the facade's last error on failure:
// callers treat an empty list as "nothing to offer", not as an error to report.
bool COracleCloudWrapper::GetKeyPairList(std::vector<SKeyPairInfoLib>& keyPairs) {
    if (m_queries == nullptr || !m_queries->GetKeyPairList(keyPairs)) {
        return false;
    }
    SortNoCase(keyPairs, &SKeyPairInfoLib::name);
    return true;
}

bool COracleCloudWrapper::GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>& groups,
                                               const std::string& /*unusedFilter*/) {
    if (m_queries == nullptr || !m_queries->GetSecurityGroupList(groups)) {
        return false;
    }
    SortNoCase(groups, &SSecurityGroupInfoLib::fullName);
    return true;
}

bool COracleCloudWrapper::GetNetworkList(std::vector<SNetworkInfoLib>& networks, const std::string& compartmentId,
                                         const std::string& availabilityDomain, const std::string& region) {
    if (m_queries == nullptr || !m_queries->GetNetworkList(networks, compartmentId, availabilityDomain, region)) {
        return false;
    }
    SortNoCase(networks, &SNetworkInfoLib::name);
    return true;
}

bool COracleCloudWrapper::GetInstanceShapeList(std::vector<SInstanceShapeInfoLib>& shapes,
                                               const std::string& compartmentId, const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetInstanceShapeList(shapes, compartmentId, region); });
}

bool COracleCloudWrapper::GetInstanceShapeListForImage(std::vector<SInstanceShapeInfoLib>& shapes,
                                                       const std::string& compartmentId, const std::string& imageId,
                                                       const std::string& availabilityDomain,
                                                       const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) {
        return q.GetInstanceShapeListForImage(shapes, compartmentId, imageId, availabilityDomain, region);
    });
}

bool COracleCloudWrapper::GetDCInfoList(std::vector<SDataCenterInfoLib>& dataCenters, unsigned long long flags,
                                        unsigned long long flags2, const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetDCInfoList(dataCenters, flags, flags2, region); });
}

bool COracleCloudWrapper::WaitForBoot(SVMInfoLib& vm, int timeoutSeconds, bool waitForIPAddress,
                                      const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.WaitForBoot(vm, timeoutSeconds, waitForIPAddress, region); });
}

bool COracleCloudWrapper::GetRegionList(std::vector<SRegionInfoLib>& regions) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetRegionInfoList(regions, 0); });
}

bool COracleCloudWrapper::GetSubscribedRegionList(std::vector<SRegionInfoLib>& regions) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetSubscribedRegionInfoList(regions, 0); });
}

bool COracleCloudWrapper::GetContainerInfoList(std::vector<SContainerInfoLib>& containers,
                                               const std::string& parentId, const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetContainerInfoList(containers, parentId, 0, region); });
}

bool COracleCloudWrapper::GetContainerInfo(const std::string& containerId, const std::string& containerName,
                                           SContainerInfoLib& container, unsigned long long /*unusedFlags*/,
                                           const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) {
        return q.GetContainerInfo(containerId, containerName, container, 0, region);
    });
}

bool COracleCloudWrapper::GetAvailabilityDomainList(std::vector<SAvailabilityDomainInfoLib>& domains,
                                                    const std::string& compartmentId, const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) {
        return q.GetAvailabilityDomainList(domains, 0, compartmentId, region);
    });
}

bool COracleCloudWrapper::GetBootVolumeAttachmentForInstance(const std::string& availabilityDomain,
                                                             const std::string& compartmentId,
                                                             const std::string& instanceId,
                                                             SStorageAttachmentInfoLib& attachment) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) {
        return q.GetBootVolumeAttachmentForInstance(availabilityDomain, compartmentId, instanceId, attachment,
                                                    std::string());
    });
}

bool COracleCloudWrapper::CheckIfDiskExists(const std::string& diskId, bool& exists) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.CheckIfDiskExists(diskId, exists, std::string()); });
}

bool COracleCloudWrapper::GetDBInstanceInfo(const std::string& name, SOracleDBInstanceInfoLib& instance) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetDBInstanceInfo(name, instance); });
}

bool COracleCloudWrapper::GetDBInstanceList(std::vector<SOracleDBInstanceInfoLib>& instances) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetDBInstanceList(instances); });
}

bool COracleCloudWrapper::GetSSHKeysList(std::vector<SOracleSSHKeyLib>& keys) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetSSHKeysList(keys); });
}

bool COracleCloudWrapper::GetSSHKeyByName(const std::string& name, SOracleSSHKeyLib& key) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetSSHKeyByName(name, key); });
}

bool COracleCloudWrapper::GetComputeNodeList(const std::string& name, std::vector<SOracleDBComputeNodeLib>& nodes) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetComputeNodeList(name, nodes); });
}

bool COracleCloudWrapper::QueryBackupRestoreJobStatus(const std::string& jobUri, SOracleJobInfoLib& job) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.QueryBackupRestoreJobStatus(jobUri, job); });
}

bool COracleCloudWrapper::GetJavaInstanceList(std::vector<SJavaInstanceInfoLib>& instances) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetJavaInstanceList(instances); });
}

bool COracleCloudWrapper::GetMySQLInstanceList(std::vector<SMySQLInstanceInfoLib>& instances) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetMySQLInstanceList(instances); });
}

bool COracleCloudWrapper::QueryJavaMySQLBackupRestoreJobStatus(const std::string& jobUri, SJavaMySQLJobInfoLib& job) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.QueryJavaMySQLBackupRestoreJobStatus(jobUri, job); });
}

bool COracleCloudWrapper::GetDbSystemList(std::vector<SOCIDbSystemInfoLib>& systems, const std::string& compartmentId) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetDbSystemList(systems, compartmentId); });
}

bool COracleCloudWrapper::GetDatabaseList(std::vector<SOCIDatabaseInfoLib>& databases,
                                          const std::string& compartmentId, const std::string& dbHomeId) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetDatabaseList(databases, compartmentId, dbHomeId); });
}

bool COracleCloudWrapper::GetDbBackupList(std::vector<SOCIDbBackupInfoLib>& backups, const std::string& compartmentId,
                                          const std::string& databaseId) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetDbBackupList(backups, compartmentId, databaseId); });
}

bool COracleCloudWrapper::GetDbHomeList(std::vector<SOCIDbHomeInfoLib>& homes, const std::string& compartmentId,
                                        const std::string& dbSystemId) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetDbHomeList(homes, compartmentId, dbSystemId); });
}

bool COracleCloudWrapper::GetDbNodeList(std::vector<SOCIDbNodeInfoLib>& nodes, const std::string& compartmentId,
                                        const std::string& dbSystemId) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetDbNodeList(nodes, compartmentId, dbSystemId); });
}

bool COracleCloudWrapper::GetDatabaseInfo(SOCIDatabaseInfoLib& database, const std::string& databaseId) {
    return ForwardToBackend(errorSlot(), m_queries,
                            [&](Queries& q) { return q.GetDatabaseInfo(database, databaseId); });
}

bool COracleCloudWrapper::GetDbBackupInfo(SOCIDbBackupInfoLib& backup, const std::string& backupId) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) { return q.GetDbBackupInfo(backup, backupId); });
}

bool COracleCloudWrapper::GetBucketListForCompartment(std::vector<SStorageBucketInfoLib>& buckets,
                                                      const std::string& compartmentId, unsigned long long flags,
                                                      const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](Queries& q) {
        return q.GetBucketListForCompartment(buckets, compartmentId, flags, region);
    });
}

}  // namespace OracleCloudSDKWrapper
