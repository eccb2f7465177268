#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudTypes.h"
#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

// The read side of the Infrastructure backend. Every read is a recipe over
// four engines: one GET with a temporary region switch, a paged list, a
// search-service query, and an existence probe. The engines never retry
// (the connection retries 429 and 500 with back-off) and never wait
// otherwise; every call runs on the caller's thread.
//
// Contract shared by every operation:
// - true on success; false leaves the reason in GetLastError(): the
//   service's "message" of the failing answer, or the connection's own text
//   when no answer came (single reads), or a text named by the operation.
// - A non-empty region argument switches the connection to that region for
//   the call and back afterwards, on success and on failure alike (the
//   existence probe excepted: it leaves the switch in place). The service
//   type the connection addresses stays at the last one used.
// - Lists append to the caller's vector; on a failure after some pages the
//   pages already read stay appended.
//
// Configuration (section "VirtualServer", read when the object is built):
//   nOCIPageLimit  page size asked of lists; 0 (default) sends no limit.
//
// Not thread-safe: one object serves one caller at a time, and the region and
// service switches act on the shared connection.
class COracleCloudInfrastructureQueries : public COracleCloudBaseQueries {
public:
    // Neither pointer is owned.
    COracleCloudInfrastructureQueries(COracleCloudBaseConnection* connection, COracleCloudParser* parser);
    ~COracleCloudInfrastructureQueries() override;

    // Reads the tenancy (identity service).
    bool CheckConnection() override;

    // A host is a compartment: hostId = compartment id, hostName = its name,
    // parentId = the containing compartment. An empty hostId succeeds with
    // nothing filled.
    bool GetHostInfo(const std::string& hostId, const std::string& hostName, SHostInfoLib& host,
                     unsigned long long flags, const std::string& region) override;
    // One host per compartment of GetContainerInfoList (appended).
    bool GetHostInfoList(std::vector<SHostInfoLib>& hosts, const std::string& parentId, unsigned long long flags,
                         const std::string& region) override;
    // Reads the instance whose id is vmId, or vmName when vmId is empty, into
    // vm (parsed over the record as given), then fills the details the flags
    // ask for: 2 guest OS (and the initial Windows password), 32 VNICs and
    // address, 16 disks with their iSCSI portal/target. Only the instance read
    // itself can fail the call; a failed detail step leaves that detail out.
    bool GetVMInfo(const std::string& vmName, const std::string& vmId, SVMInfoLib& vm, unsigned long long flags,
                   const std::string& region) override;
    // Clears vms, then the instances of every compartment of the tenancy's
    // first level (and the tenancy), TERMINATED ones dropped. On a failing
    // compartment the instances of the earlier ones stay in vms.
    bool GetVMInfoList(std::vector<SVMInfoLib>& vms, unsigned long long flags, const std::string& region) override;
    // Appends the instances of compartment hostId, then drops every TERMINATED
    // instance of vms. List entries carry only what the list answer holds.
    bool GetVMInfoListForHost(std::vector<SVMInfoLib>& vms, const std::string& hostId, const std::string& hostName,
                              unsigned long long flags, const std::string& region) override;
    // The instance's own document, unparsed (instanceName is the instance id).
    bool GetInstanceConfigJson(const std::string& instanceName, std::string& json) override;
    // Images of a compartment (platform images included) as template records,
    // DELETED images dropped; appended.
    bool GetTemplateInfoList(std::vector<SVMInfoLib>& templates, const std::string& compartmentId,
                             unsigned long long flags, unsigned long long flags2, const std::string& region) override;
    bool GetTemplateInfoListFilterByName(std::vector<SVMInfoLib>& templates, const std::string& compartmentId,
                                         const std::string& name, unsigned long long flags,
                                         unsigned long long flags2, const std::string& region) override;
    // false for a DELETED image ("The image [name][id] has been deleted.").
    bool GetTemplateInfo(const std::string& templateId, SVMInfoLib& templateInfo, const std::string& region) override;
    // The attachment of volumeId to instanceId that is not DETACHED (the last
    // such one in list order). On false, notAttached is true when the request
    // worked but no such attachment exists.
    bool GetStorageAttachmentForDiskAndInstance(const std::string& volumeId, const std::string& instanceId,
                                                SStorageAttachmentInfoLib& attachment, bool& notAttached,
                                                const std::string& region) override;
    // The tenancy reads as its name followed by " (root)".
    bool GetContainerInfo(const std::string& containerId, const std::string& containerName,
                          SContainerInfoLib& container, unsigned long long flags, const std::string& region) override;
    // The direct children of parentId (the tenancy when empty) followed by the
    // parent itself; appended. No recursion into deeper levels.
    bool GetContainerInfoList(std::vector<SContainerInfoLib>& containers, const std::string& parentId,
                              unsigned long long flags, const std::string& region) override;
    // A volume backup, or a boot volume backup when the id says "bootvolume".
    bool GetSnapshotInfoForSnapshotName(const std::string& snapshotName, SSnapshotInfoLib& snapshot) override;
    // OCI has no key pairs or security groups: true, list untouched.
    bool GetKeyPairList(std::vector<SKeyPairInfoLib>& keyPairs) override;
    bool GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>& groups) override;
    // Shapes are appended, then the whole list is sorted by name and made
    // unique by name (so calls for several domains can share one list).
    bool GetInstanceShapeList(std::vector<SInstanceShapeInfoLib>& shapes, const std::string& compartmentId,
                              const std::string& region) override;
    bool GetInstanceShapeListForImage(std::vector<SInstanceShapeInfoLib>& shapes, const std::string& compartmentId,
                                      const std::string& imageId, const std::string& availabilityDomain,
                                      const std::string& region) override;
    // Every VCN of the region (search service) with its subnets; with an
    // availability domain, subnets of other domains are dropped (regional
    // subnets stay). compartmentId is not used: the search covers the tenancy.
    bool GetNetworkList(std::vector<SNetworkInfoLib>& networks, const std::string& compartmentId,
                        const std::string& availabilityDomain, const std::string& region) override;
    // Volume attachments of one instance (all states); appended.
    bool GetStorageAttachmentInfo(const std::string& compartmentId, const std::string& instanceId,
                                  std::vector<SStorageAttachmentInfoLib>& attachments, unsigned long long flags,
                                  const std::string& region) override;
    // Reads the volume or boot volume whose id is disk.guid (disk.volumeName
    // when guid is empty) into disk, in the current region.
    bool GetVolumeInfo(SDiskInfoLib& disk, unsigned long long flags) override;
    // Does not wait: fetches the initial Windows credentials of vm.guid into
    // vm.administratorPassword when the service has them. Always true.
    bool WaitForBoot(SVMInfoLib& vm, int timeoutSeconds, bool waitForIPAddress, const std::string& region) override;
    bool GetRegionInfoList(std::vector<SRegionInfoLib>& regions, unsigned long long flags) override;
    bool GetSubscribedRegionInfoList(std::vector<SRegionInfoLib>& regions, unsigned long long flags) override;
    bool GetAvailabilityDomainList(std::vector<SAvailabilityDomainInfoLib>& domains, unsigned long long flags,
                                   const std::string& compartmentId, const std::string& region) override;
    // One data centre per subscribed region (name and key); appended.
    bool GetDCInfoList(std::vector<SDataCenterInfoLib>& dataCenters, unsigned long long flags,
                       unsigned long long flags2, const std::string& region) override;
    // The first boot volume attachment of the instance; false when none.
    bool GetBootVolumeAttachmentForInstance(const std::string& availabilityDomain, const std::string& compartmentId,
                                            const std::string& instanceId, SStorageAttachmentInfoLib& attachment,
                                            const std::string& region) override;
    // true with exists=false for an answer 404 or 400 or a TERMINATED disk.
    // Leaves the connection switched to `region` when one is given.
    bool CheckIfDiskExists(const std::string& diskId, bool& exists, const std::string& region) override;
    bool GetBucketListForCompartment(std::vector<SStorageBucketInfoLib>& buckets, const std::string& compartmentId,
                                     unsigned long long flags, const std::string& region) override;
    // Asked of the service once; later calls answer from memory.
    bool GetNamespaceForTenant(std::string& tenantNamespace) override;
    // Database lists and reads run in the connection's current region.
    bool GetDbSystemList(std::vector<SOCIDbSystemInfoLib>& systems, const std::string& compartmentId) override;
    bool GetDatabaseList(std::vector<SOCIDatabaseInfoLib>& databases, const std::string& compartmentId,
                         const std::string& dbHomeId) override;
    bool GetDbBackupList(std::vector<SOCIDbBackupInfoLib>& backups, const std::string& compartmentId,
                         const std::string& databaseId) override;
    bool GetDbHomeList(std::vector<SOCIDbHomeInfoLib>& homes, const std::string& compartmentId,
                       const std::string& dbSystemId) override;
    bool GetDbNodeList(std::vector<SOCIDbNodeInfoLib>& nodes, const std::string& compartmentId,
                       const std::string& dbSystemId) override;
    bool GetDatabaseInfo(SOCIDatabaseInfoLib& database, const std::string& databaseId) override;
    bool GetDbBackupInfo(SOCIDbBackupInfoLib& backup, const std::string& backupId) override;

    // ---- Extensions: listings for finding what was left behind -------------
    // Volumes (block, then boot ones marked bootable), volume and boot volume
    // backups, and volume and boot volume attachments of one compartment; the
    // boot volume attachments are listed per availability domain of the
    // tenancy, as the service requires one. Appended; a failing page stops the
    // listing with false.
    bool ListVolumes(std::vector<SDiskInfoLib>& volumes, const std::string& compartmentId,
                     const std::string& region) override;
    bool ListVolumeBackups(std::vector<SSnapshotInfoLib>& backups, const std::string& compartmentId,
                           const std::string& region) override;
    bool ListVolumeAttachments(std::vector<SStorageAttachmentInfoLib>& attachments, const std::string& compartmentId,
                               const std::string& region) override;
    // Every object of the bucket (bucket and object names are sent encoded).
    bool ListObjects(std::vector<SStorageObjectInfoLib>& objects, const std::string& nameSpace,
                     const std::string& bucket) override;

    // ---- reads used by the detail fill and by the operations ---------------
    // A volume, or a boot volume when the id contains ".bootvolume.".
    bool GetDiskInfo(const std::string& diskId, SDiskInfoLib& disk, unsigned long long flags,
                     const std::string& region);
    bool GetVNicInfolib(const std::string& vnicId, SVNicInfoLib& vnic, const std::string& region);
    // VNIC attachments of one instance (all states); appended.
    bool GetVnicAttachmentsInfoList(const std::string& compartmentId, const std::string& instanceId,
                                    std::vector<SVnicAttachmentInfoLib>& attachments, const std::string& region);
    // password is a secret: never logged.
    bool GetWindowsInstanceInitialCredentials(const std::string& instanceId, std::string& userName,
                                              std::string& password, const std::string& region);

    uint32_t GetPageLimit() const { return pageLimit; }

protected:
    // ---- engines (OracleCloudInfrastructureQueriesEngine.h) ----------------
    bool _connectAndRunQuery(const std::string& path, EOracleServiceType type, const std::string& region,
                             std::string& response);
    // Reads page after page of path until no next-page token comes back and
    // appends the items to out. Each page is a GET of a list, a POST of
    // searchBody read as a search result (Search), or a GET of an object
    // storage listing, whose items are under "objects" and whose next page
    // starts at its "nextStartWith" (Objects). Stops with false at the first
    // failure, keeping the items of the pages before it.
    enum class PageKind { List, Search, Objects };
    template <PageKind Kind, typename T>
    bool _CollectPages(const std::string& path, const std::string& searchBody, std::vector<T>& out);
    template <typename T>
    bool _GetPaginatedList(const std::string& path, EOracleServiceType type, const std::string& region,
                           std::vector<T>& out);
    template <typename T>
    bool _ExecuteSearchServiceQuery(const std::string& query, const std::string& region, std::vector<T>& out);
    template <typename T>
    bool _CheckIfResourceExists(const std::string& path, bool& exists, EOracleServiceType type,
                                const std::string& region);
    // path + "limit=" (when configured) + "page=" (or tokenName=) + the URL-encoded token.
    std::string _GetPageUrl(const std::string& path, const std::string& token, const char* tokenName = "page");
    // The value of a raw "opc-next-page: <token>\r\n" line; empty when the
    // line is empty or holds no ":".
    std::string _GetNextPageTokenFromHeader(const std::string& header);
    // One GET followed by ParseObject into record.
    template <typename T>
    bool _ReadSingle(const std::string& path, EOracleServiceType type, const std::string& region, T& record);

    template <typename T>
    void _FilterDeletedItems(std::vector<T>& items, const std::string& state);
    // Walks the whole list and leaves the LAST item not in `state` in record;
    // false (record untouched) when there is none.
    template <typename T>
    bool _GetFirstNonDeletedItemFromList(const std::vector<T>& items, const std::string& state, T& record);

    // ---- steps --------------------------------------------------------------
    bool _GetTenancy();
    bool _FillAdditionalVMDetails(SVMInfoLib& vm, unsigned long long flags, const std::string& region);
    std::string _GetGuestOperatingSystem(const std::string& imageId, const std::string& region);
    void _FillNetworkDetails(SVMInfoLib& vm, const std::string& region);
    void _FillDiskDetails(SVMInfoLib& vm, const std::string& region);
    bool _GetImageList(std::vector<SImageInfoLib>& images, const std::string& compartmentId, const std::string& name,
                       const std::string& region);
    bool _GetSubnetList(const std::string& vcnId, std::vector<SSubnetInfoLib>& subnets, const std::string& region);

    std::string tenantNamespace;
    uint32_t pageLimit;
    DebugLog m_debugLog;
};

}  // namespace OracleCloudSDKWrapper
