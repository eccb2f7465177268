#include "facade/OracleCloudBaseQueries.h"

namespace OracleCloudSDKWrapper {

COracleCloudBaseQueries::COracleCloudBaseQueries(COracleCloudBaseConnection* connection, COracleCloudParser* parser)
    : COracleCloudErrorHandler(parser), m_connection(connection) {}

COracleCloudBaseQueries::~COracleCloudBaseQueries() { m_connection = nullptr; }

// Unsupported reads fail quietly: the caller asked a cloud for something it does
// not have, which is not worth a log line, and the last error must keep the text
// of the last real failure.
bool COracleCloudBaseQueries::CheckConnection() { return false; }
bool COracleCloudBaseQueries::GetClusterInfo(const std::string&, SClusterInfoLib&, unsigned long long,
                                             const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetClusterInfoList(std::vector<SClusterInfoLib>&, unsigned long long,
                                                 const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetHostInfo(const std::string&, const std::string&, SHostInfoLib&, unsigned long long,
                                          const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetHostInfoList(std::vector<SHostInfoLib>&, const std::string&, unsigned long long,
                                              const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetVMInfo(const std::string&, const std::string&, SVMInfoLib&, unsigned long long,
                                        const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetVMInfoList(std::vector<SVMInfoLib>&, unsigned long long, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetVMInfoListForHost(std::vector<SVMInfoLib>&, const std::string&, const std::string&,
                                                   unsigned long long, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetInstanceConfigJson(const std::string&, std::string&) { return false; }
bool COracleCloudBaseQueries::GetTemplateInfoList(std::vector<SVMInfoLib>&, const std::string&, unsigned long long,
                                                  unsigned long long, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetTemplateInfoListFilterByName(std::vector<SVMInfoLib>&, const std::string&,
                                                              const std::string&, unsigned long long,
                                                              unsigned long long, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetTemplateInfo(const std::string&, SVMInfoLib&, const std::string&) { return false; }
bool COracleCloudBaseQueries::GetStorageAttachmentForDisk(const std::string&, SStorageAttachmentInfoLib&,
                                                          const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetStorageAttachmentForDiskAndInstance(const std::string&, const std::string&,
                                                                     SStorageAttachmentInfoLib&, bool&,
                                                                     const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetContainerInfo(const std::string&, const std::string&, SContainerInfoLib&,
                                               unsigned long long, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetContainerInfoList(std::vector<SContainerInfoLib>&, const std::string&,
                                                   unsigned long long, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetSnapshotInfoForSnapshotName(const std::string&, SSnapshotInfoLib&) { return false; }
bool COracleCloudBaseQueries::GetKeyPairList(std::vector<SKeyPairInfoLib>&) { return false; }
bool COracleCloudBaseQueries::GetKeyInfoForKeyName(const std::string&, SKeyPairInfoLib&) { return false; }
bool COracleCloudBaseQueries::GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>&) { return false; }
bool COracleCloudBaseQueries::GetInstanceShapeList(std::vector<SInstanceShapeInfoLib>&, const std::string&,
                                                   const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetInstanceShapeListForImage(std::vector<SInstanceShapeInfoLib>&, const std::string&,
                                                           const std::string&, const std::string&, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetNetworkList(std::vector<SNetworkInfoLib>&, const std::string&, const std::string&,
                                             const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetIPAssocation(const std::string&, std::vector<SIPAssociationLib>&, unsigned long long) {
    return false;
}
bool COracleCloudBaseQueries::GetStorageAttachmentInfo(const std::string&, const std::string&,
                                                       std::vector<SStorageAttachmentInfoLib>&, unsigned long long,
                                                       const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetVolumeInfo(SDiskInfoLib&, unsigned long long) { return false; }
bool COracleCloudBaseQueries::GetSnapshotInfo(SSnapshotInfoLib&, unsigned long long) { return false; }
bool COracleCloudBaseQueries::GetAllSnapshotsInfoForUsers(std::vector<SSnapshotInfoLib>&,
                                                          const std::vector<std::string>&) {
    return false;
}
bool COracleCloudBaseQueries::GetOrchestrationForVM(const std::string&, const std::string&, std::string&) {
    return false;
}
int COracleCloudBaseQueries::GetAvailableDiskIndexForVM(const std::string&) { return -1; }
bool COracleCloudBaseQueries::GetOrchestrationInfo(const std::string&, SOrchestrationInfoLib&) { return false; }
int COracleCloudBaseQueries::GetAvailableIndexPos(const SVMInfoLib&) { return 0; }
bool COracleCloudBaseQueries::GetDBInstanceInfo(const std::string&, SOracleDBInstanceInfoLib&) { return false; }
bool COracleCloudBaseQueries::GetDBInstanceList(std::vector<SOracleDBInstanceInfoLib>&) { return false; }
bool COracleCloudBaseQueries::GetComputeNodeList(const std::string&, std::vector<SOracleDBComputeNodeLib>&) {
    return false;
}
bool COracleCloudBaseQueries::GetSSHKeysList(std::vector<SOracleSSHKeyLib>&) { return false; }
bool COracleCloudBaseQueries::GetSSHKeyByName(const std::string&, SOracleSSHKeyLib&) { return false; }
bool COracleCloudBaseQueries::QueryBackupRestoreJobStatus(const std::string&, std::string&, std::string&,
                                                          std::string&) {
    return false;
}
bool COracleCloudBaseQueries::WaitForBoot(SVMInfoLib&, int, bool, const std::string&) { return false; }
bool COracleCloudBaseQueries::QueryBackupRestoreJobStatus(const std::string&, SOracleJobInfoLib&) { return false; }
bool COracleCloudBaseQueries::GetJavaInstanceList(std::vector<SJavaInstanceInfoLib>&) { return false; }
bool COracleCloudBaseQueries::GetMySQLInstanceList(std::vector<SMySQLInstanceInfoLib>&) { return false; }
bool COracleCloudBaseQueries::QueryJavaMySQLBackupRestoreJobStatus(const std::string&, SJavaMySQLJobInfoLib&) {
    return false;
}
bool COracleCloudBaseQueries::GetRegionInfoList(std::vector<SRegionInfoLib>&, unsigned long long) { return false; }
bool COracleCloudBaseQueries::GetSubscribedRegionInfoList(std::vector<SRegionInfoLib>&, unsigned long long) {
    return false;
}
bool COracleCloudBaseQueries::GetAvailabilityDomainList(std::vector<SAvailabilityDomainInfoLib>&, unsigned long long,
                                                        const std::string&, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetDCInfoList(std::vector<SDataCenterInfoLib>&, unsigned long long, unsigned long long,
                                            const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetBootVolumeAttachmentForInstance(const std::string&, const std::string&,
                                                                 const std::string&, SStorageAttachmentInfoLib&,
                                                                 const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::CheckIfDiskExists(const std::string&, bool&, const std::string&) { return false; }
bool COracleCloudBaseQueries::GetBucketListForCompartment(std::vector<SStorageBucketInfoLib>&, const std::string&,
                                                          unsigned long long, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetNamespaceForTenant(std::string&) { return false; }
bool COracleCloudBaseQueries::GetDbSystemList(std::vector<SOCIDbSystemInfoLib>&, const std::string&) { return false; }
bool COracleCloudBaseQueries::GetDatabaseList(std::vector<SOCIDatabaseInfoLib>&, const std::string&,
                                              const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetDbBackupList(std::vector<SOCIDbBackupInfoLib>&, const std::string&,
                                              const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetDbHomeList(std::vector<SOCIDbHomeInfoLib>&, const std::string&, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetDbNodeList(std::vector<SOCIDbNodeInfoLib>&, const std::string&, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::GetDatabaseInfo(SOCIDatabaseInfoLib&, const std::string&) { return false; }
bool COracleCloudBaseQueries::GetDbBackupInfo(SOCIDbBackupInfoLib&, const std::string&) { return false; }
bool COracleCloudBaseQueries::GetListFromLink(const std::string&, std::vector<std::string>&) { return false; }
bool COracleCloudBaseQueries::GetListFromLink(const std::string&, std::vector<SOracleSSHKeyLib>&) { return false; }
bool COracleCloudBaseQueries::GetResourceNamesFromURITraversal(const std::string&, int, std::vector<std::string>&) {
    return false;
}
bool COracleCloudBaseQueries::ListVolumes(std::vector<SDiskInfoLib>&, const std::string&, const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::ListVolumeBackups(std::vector<SSnapshotInfoLib>&, const std::string&,
                                                const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::ListVolumeAttachments(std::vector<SStorageAttachmentInfoLib>&, const std::string&,
                                                    const std::string&) {
    return false;
}
bool COracleCloudBaseQueries::ListObjects(std::vector<SStorageObjectInfoLib>&, const std::string&,
                                          const std::string&) {
    return false;
}

}  // namespace OracleCloudSDKWrapper
