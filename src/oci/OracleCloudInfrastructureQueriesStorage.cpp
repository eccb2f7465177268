// Block storage and object storage reads: volumes and boot volumes, their
// attachments and backups, the tenancy's namespace and its buckets.
#include "oci/OracleCloudInfrastructureQueries.h"
#include "oci/OracleCloudInfrastructureQueriesEngine.h"

namespace OracleCloudSDKWrapper {

namespace {

const char* const kCoreVersion = "/20160918";

// GetDiskInfo and CheckIfDiskExists tell boot volumes by ".bootvolume.";
// GetVolumeInfo by "bootvolume" alone. The two tests differ on purpose.
std::string DiskPath(const std::string& diskId) {
    bool boot = diskId.find(".bootvolume.") != std::string::npos;
    return std::string(kCoreVersion) + (boot ? "/bootVolumes" : "/volumes") + "/" + diskId;
}

}  // namespace

// ---- volumes ------------------------------------------------------------------

bool COracleCloudInfrastructureQueries::GetDiskInfo(const std::string& diskId, SDiskInfoLib& disk,
                                                    unsigned long long /*flags*/, const std::string& region) {
    return _ReadSingle(DiskPath(diskId), OCI_SERVICE_CORE, region, disk);
}

bool COracleCloudInfrastructureQueries::GetVolumeInfo(SDiskInfoLib& disk, unsigned long long /*flags*/) {
    std::string id = disk.guid.empty() ? disk.volumeName : disk.guid;
    bool boot = id.find("bootvolume") != std::string::npos;
    std::string path = std::string(kCoreVersion) + (boot ? "/bootVolumes" : "/volumes") + "/" + id;
    return _ReadSingle(path, OCI_SERVICE_CORE, std::string(), disk);
}

bool COracleCloudInfrastructureQueries::CheckIfDiskExists(const std::string& diskId, bool& exists,
                                                          const std::string& region) {
    return _CheckIfResourceExists<SDiskInfoLib>(DiskPath(diskId), exists, OCI_SERVICE_CORE, region);
}

bool COracleCloudInfrastructureQueries::GetSnapshotInfoForSnapshotName(const std::string& snapshotName,
                                                                       SSnapshotInfoLib& snapshot) {
    bool boot = snapshotName.find("bootvolume") != std::string::npos;
    std::string path =
        std::string(kCoreVersion) + (boot ? "/bootVolumeBackups" : "/volumeBackups") + "/" + snapshotName;
    return _ReadSingle(path, OCI_SERVICE_CORE, std::string(), snapshot);
}

// ---- attachments --------------------------------------------------------------

bool COracleCloudInfrastructureQueries::GetStorageAttachmentInfo(const std::string& compartmentId,
                                                                 const std::string& instanceId,
                                                                 std::vector<SStorageAttachmentInfoLib>& attachments,
                                                                 unsigned long long /*flags*/,
                                                                 const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/volumeAttachments" + "?compartmentId=" + compartmentId +
                       "&instanceId=" + instanceId;
    return _GetPaginatedList(path, OCI_SERVICE_CORE, region, attachments);
}

bool COracleCloudInfrastructureQueries::GetStorageAttachmentForDiskAndInstance(const std::string& volumeId,
                                                                               const std::string& instanceId,
                                                                               SStorageAttachmentInfoLib& attachment,
                                                                               bool& notAttached,
                                                                               const std::string& region) {
    notAttached = false;
    SVMInfoLib vm;
    if (!GetVMInfo(std::string(), instanceId, vm, 0, region)) {
        OCW_LOG_ERROR(&m_debugLog, "Could not get instance information");
        return false;
    }
    std::string path = std::string(kCoreVersion) + "/volumeAttachments" + "/" + "?compartmentId=" +
                       vm.compartmentId + "&volumeId=" + volumeId + "&instanceId=" + instanceId;
    std::vector<SStorageAttachmentInfoLib> attachments;
    if (!_GetPaginatedList(path, OCI_SERVICE_CORE, region, attachments)) {
        return false;
    }
    if (attachments.empty()) {
        OCW_LOG_ERROR(&m_debugLog, "Storage attachment not found");
        SetLastError("Storage attachment not found");
        notAttached = true;
        return false;
    }
    if (!_GetFirstNonDeletedItemFromList(attachments, "DETACHED", attachment)) {
        OCW_LOG_ERROR(&m_debugLog, "Storage attachment not found in list");
        SetLastError("Storage attachment not found in list");
        notAttached = true;
        return false;
    }
    return true;
}

bool COracleCloudInfrastructureQueries::GetBootVolumeAttachmentForInstance(const std::string& availabilityDomain,
                                                                           const std::string& compartmentId,
                                                                           const std::string& instanceId,
                                                                           SStorageAttachmentInfoLib& attachment,
                                                                           const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/bootVolumeAttachments" + "/" +
                       "?availabilityDomain=" + availabilityDomain + "&compartmentId=" + compartmentId +
                       "&instanceId=" + instanceId;
    std::vector<SStorageAttachmentInfoLib> attachments;
    if (!_GetPaginatedList(path, OCI_SERVICE_CORE, region, attachments)) {
        return false;
    }
    if (attachments.empty()) {
        OCW_LOG_ERROR(&m_debugLog, "No resource found");
        SetLastError("No resource found");
        return false;
    }
    attachment = attachments.front();
    return true;
}

// ---- object storage -----------------------------------------------------------

bool COracleCloudInfrastructureQueries::GetNamespaceForTenant(std::string& tenantNamespaceOut) {
    if (!tenantNamespace.empty()) {
        tenantNamespaceOut = tenantNamespace;
        return true;
    }
    std::string response;
    if (!_connectAndRunQuery("/n", OCI_SERVICE_OBJECT_STORAGE, std::string(), response)) {
        return false;
    }
    // The answer is a JSON string literal: the name between two quotes.
    if (response.size() < 3) {
        OCW_LOG_DEBUG(&m_debugLog, "Empty namespace returned for tenant");
        SetLastError("Empty namespace returned for tenant");
        return false;
    }
    tenantNamespace = response.substr(1, response.size() - 2);
    tenantNamespaceOut = tenantNamespace;
    OCW_LOG_DEBUG(&m_debugLog, "Tenant's ObjectStorage Namespace: %s", tenantNamespace.c_str());
    return true;
}

bool COracleCloudInfrastructureQueries::GetBucketListForCompartment(std::vector<SStorageBucketInfoLib>& buckets,
                                                                    const std::string& compartmentId,
                                                                    unsigned long long /*flags*/,
                                                                    const std::string& region) {
    std::string ns;
    if (!GetNamespaceForTenant(ns)) {
        OCW_LOG_DEBUG(&m_debugLog, "Failed to get tenant namespace");
        return false;
    }
    std::string path = std::string("/n") + "/" + ns + "/b" + "/" + "?compartmentId=" + compartmentId;
    return _GetPaginatedList(path, OCI_SERVICE_OBJECT_STORAGE, region, buckets);
}

}  // namespace OracleCloudSDKWrapper
