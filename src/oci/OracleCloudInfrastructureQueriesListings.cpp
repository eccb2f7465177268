// Extension listings: what an operator needs to find what backups and
// restores left behind (volumes that are not attached, backups, objects).
// Each is a recipe over the shared page loop.
#include "oci/OracleCloudInfrastructureQueries.h"
#include "oci/OracleCloudInfrastructureQueriesEngine.h"

namespace OracleCloudSDKWrapper {

namespace {

std::string CoreList(const char* collection, const std::string& compartmentId) {
    return std::string("/20160918") + collection + "?compartmentId=" + compartmentId;
}

}  // namespace

bool COracleCloudInfrastructureQueries::ListVolumes(std::vector<SDiskInfoLib>& volumes,
                                                    const std::string& compartmentId, const std::string& region) {
    if (!_GetPaginatedList(CoreList("/volumes", compartmentId), OCI_SERVICE_CORE, region, volumes)) return false;
    std::vector<SDiskInfoLib> boot;
    if (!_GetPaginatedList(CoreList("/bootVolumes", compartmentId), OCI_SERVICE_CORE, region, boot)) return false;
    for (SDiskInfoLib& disk : boot) {
        disk.bootable = true;
        volumes.push_back(std::move(disk));
    }
    return true;
}

bool COracleCloudInfrastructureQueries::ListVolumeBackups(std::vector<SSnapshotInfoLib>& backups,
                                                          const std::string& compartmentId,
                                                          const std::string& region) {
    return _GetPaginatedList(CoreList("/volumeBackups", compartmentId), OCI_SERVICE_CORE, region, backups) &&
           _GetPaginatedList(CoreList("/bootVolumeBackups", compartmentId), OCI_SERVICE_CORE, region, backups);
}

bool COracleCloudInfrastructureQueries::ListVolumeAttachments(std::vector<SStorageAttachmentInfoLib>& attachments,
                                                              const std::string& compartmentId,
                                                              const std::string& region) {
    if (!_GetPaginatedList(CoreList("/volumeAttachments", compartmentId), OCI_SERVICE_CORE, region, attachments)) {
        return false;
    }
    std::vector<SAvailabilityDomainInfoLib> domains;
    if (!GetAvailabilityDomainList(domains, 0, m_connection->getIdentityDomain(), region)) return false;
    for (const SAvailabilityDomainInfoLib& domain : domains) {
        const std::string path = CoreList("/bootVolumeAttachments", compartmentId) +
                                 "&availabilityDomain=" + m_connection->urlEncode(domain.name);
        if (!_GetPaginatedList(path, OCI_SERVICE_CORE, region, attachments)) return false;
    }
    return true;
}

bool COracleCloudInfrastructureQueries::ListObjects(std::vector<SStorageObjectInfoLib>& objects,
                                                    const std::string& nameSpace, const std::string& bucket) {
    m_connection->setService(OCI_SERVICE_OBJECT_STORAGE);
    const std::string path = "/n/" + nameSpace + "/b/" + m_connection->urlEncode(bucket) +
                             "/o?fields=name,size,md5,timeCreated";
    return _CollectPages<PageKind::Objects>(path, std::string(), objects);
}

}  // namespace OracleCloudSDKWrapper
