// Instances and what describes them: the instance reads and listings, the
// detail fill (guest OS, VNICs, disks), initial Windows credentials, images
// as templates, and shapes.
#include <algorithm>

#include "oci/OracleCloudInfrastructureQueries.h"
#include "oci/OracleCloudInfrastructureQueriesEngine.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {

namespace {

const char* const kCoreVersion = "/20160918";
const unsigned long long kGuestOsFlag = 2;
const unsigned long long kDisksFlag = 16;
const unsigned long long kNetworkFlag = 32;

// An image as the template record the facade's callers know.
void CopyImageToTemplate(const SImageInfoLib& image, SVMInfoLib& vm) {
    vm.guid = image.id;
    vm.fullName = image.id;
    vm.imageId = image.id;
    vm.vmName = image.displayName;
    vm.compartmentId = image.compartmentId;
    vm.platform = image.operatingSystem;
    vm.launchMode = image.launchMode;
    vm.state = image.lifecycleState;
    vm.status = image.lifecycleState;
    vm.isTemplate = true;
}

}  // namespace

// ---- instances ----------------------------------------------------------------

bool COracleCloudInfrastructureQueries::GetVMInfo(const std::string& vmName, const std::string& vmId, SVMInfoLib& vm,
                                                  unsigned long long flags, const std::string& region) {
    // The facade hands the instance id as the second argument; older callers
    // put it first.
    const std::string& id = vmId.empty() ? vmName : vmId;
    std::string path = std::string(kCoreVersion) + "/instances" + "/" + id;
    if (!_ReadSingle(path, OCI_SERVICE_CORE, region, vm)) {
        return false;
    }
    return _FillAdditionalVMDetails(vm, flags, region);
}

bool COracleCloudInfrastructureQueries::GetVMInfoListForHost(std::vector<SVMInfoLib>& vms, const std::string& hostId,
                                                             const std::string& /*hostName*/,
                                                             unsigned long long /*flags*/,
                                                             const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/instances" + "?compartmentId=" + hostId;
    if (!_GetPaginatedList(path, OCI_SERVICE_CORE, region, vms)) {
        return false;
    }
    _FilterDeletedItems(vms, "TERMINATED");
    return true;
}

bool COracleCloudInfrastructureQueries::GetVMInfoList(std::vector<SVMInfoLib>& vms, unsigned long long flags,
                                                      const std::string& region) {
    std::vector<SHostInfoLib> compartments;
    if (!GetHostInfoList(compartments, std::string(), flags, region)) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to get hostinfo list");
        return false;
    }
    vms.clear();
    for (const SHostInfoLib& compartment : compartments) {
        std::vector<SVMInfoLib> instances;
        if (!GetVMInfoListForHost(instances, compartment.hostId, compartment.hostName, flags, region)) {
            OCW_LOG_ERROR(&m_debugLog, "Failed to get vmlist for compartment %s", compartment.hostName.c_str());
            return false;
        }
        OCW_LOG_LVL(2, &m_debugLog, "Adding %d instances from compartment %s", static_cast<int>(instances.size()),
                    compartment.hostName.c_str());
        vms.insert(vms.end(), std::make_move_iterator(instances.begin()), std::make_move_iterator(instances.end()));
    }
    return true;
}

bool COracleCloudInfrastructureQueries::GetInstanceConfigJson(const std::string& instanceName, std::string& json) {
    std::string path = std::string(kCoreVersion) + "/instances" + "/" + instanceName;
    return _connectAndRunQuery(path, OCI_SERVICE_CORE, std::string(), json);
}

// ---- detail fill --------------------------------------------------------------

bool COracleCloudInfrastructureQueries::_FillAdditionalVMDetails(SVMInfoLib& vm, unsigned long long flags,
                                                                 const std::string& region) {
    if (flags & kGuestOsFlag) {
        vm.platform = _GetGuestOperatingSystem(vm.imageId, region);
        if (StringUtil::FindNoCase(vm.platform, "windows") != std::string::npos) {
            std::string userName;
            std::string password;
            if (GetWindowsInstanceInitialCredentials(vm.guid, userName, password, region)) {
                vm.administratorPassword = password;
            }
        }
    }
    if (flags & kNetworkFlag) {
        _FillNetworkDetails(vm, region);
    }
    if (flags & kDisksFlag) {
        _FillDiskDetails(vm, region);
    }
    return true;
}

std::string COracleCloudInfrastructureQueries::_GetGuestOperatingSystem(const std::string& imageId,
                                                                        const std::string& region) {
    if (imageId.empty()) {
        OCW_LOG_DEBUG(&m_debugLog, "Image Id is empty");
        return std::string();
    }
    SVMInfoLib image;
    if (!GetTemplateInfo(imageId, image, region)) {
        OCW_LOG_DEBUG(&m_debugLog, "Failed to obtain image info");
        return std::string();
    }
    return image.platform;
}

void COracleCloudInfrastructureQueries::_FillNetworkDetails(SVMInfoLib& vm, const std::string& region) {
    std::vector<SVnicAttachmentInfoLib> attachments;
    if (!GetVnicAttachmentsInfoList(vm.compartmentId, vm.guid, attachments, region)) {
        return;
    }
    vm.vnics.clear();
    for (const SVnicAttachmentInfoLib& attachment : attachments) {
        if (attachment.lifecycleState != "ATTACHED") {
            continue;
        }
        SVNicInfoLib vnic;
        if (GetVNicInfolib(attachment.vnicId, vnic, region)) {
            vm.ipAddress = vnic.privateIp;
            vm.vnics.push_back(std::move(vnic));
        }
    }
    vm.nicCount = attachments.size();
}

void COracleCloudInfrastructureQueries::_FillDiskDetails(SVMInfoLib& vm, const std::string& region) {
    std::vector<SStorageAttachmentInfoLib> attachments;
    if (!GetStorageAttachmentInfo(vm.compartmentId, vm.guid, attachments, 0, region)) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to get storage attachment info");
        attachments.clear();
    }
    SStorageAttachmentInfoLib bootAttachment;
    if (GetBootVolumeAttachmentForInstance(vm.availabilityDomain, vm.compartmentId, vm.guid, bootAttachment,
                                           region)) {
        attachments.push_back(std::move(bootAttachment));
    } else {
        OCW_LOG_ERROR(&m_debugLog, "Failed to get storage attachment info");
    }
    for (const SStorageAttachmentInfoLib& attachment : attachments) {
        if (attachment.state != "ATTACHED") {
            continue;
        }
        SDiskInfoLib disk;
        if (!GetDiskInfo(attachment.volumeName, disk, 0, region)) {
            continue;
        }
        disk.iscsiPortal = StringUtil::Format("%s:%s", attachment.iscsiIpv4.c_str(), attachment.iscsiPort.c_str());
        disk.iscsiTarget = attachment.iscsiIqn;
        if (disk.guid.find(".bootvolume.") != std::string::npos) {
            disk.bootable = true;
        }
        vm.disks.push_back(std::move(disk));
    }
    vm.diskCount = vm.disks.size();
}

// ---- VNICs and credentials ----------------------------------------------------

bool COracleCloudInfrastructureQueries::GetVNicInfolib(const std::string& vnicId, SVNicInfoLib& vnic,
                                                       const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/vnics" + "/" + vnicId;
    return _ReadSingle(path, OCI_SERVICE_CORE, region, vnic);
}

bool COracleCloudInfrastructureQueries::GetVnicAttachmentsInfoList(const std::string& compartmentId,
                                                                   const std::string& instanceId,
                                                                   std::vector<SVnicAttachmentInfoLib>& attachments,
                                                                   const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/vnicAttachments" + "?compartmentId=" + compartmentId +
                       "&instanceId=" + instanceId;
    return _GetPaginatedList(path, OCI_SERVICE_CORE, region, attachments);
}

bool COracleCloudInfrastructureQueries::GetWindowsInstanceInitialCredentials(const std::string& instanceId,
                                                                             std::string& userName,
                                                                             std::string& password,
                                                                             const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/instances" + "/" + instanceId + "/initialCredentials";
    SInstanceCredentialsInfoLib credentials;
    if (!_ReadSingle(path, OCI_SERVICE_CORE, region, credentials)) {
        return false;
    }
    userName = credentials.username;
    password = credentials.password;
    return true;
}

bool COracleCloudInfrastructureQueries::WaitForBoot(SVMInfoLib& vm, int /*timeoutSeconds*/,
                                                    bool /*waitForIPAddress*/, const std::string& region) {
    std::string userName;
    std::string password;
    if (GetWindowsInstanceInitialCredentials(vm.guid.empty() ? vm.fullName : vm.guid, userName, password, region)) {
        vm.administratorPassword = password;
    }
    return true;
}

// ---- images as templates ------------------------------------------------------

bool COracleCloudInfrastructureQueries::GetTemplateInfo(const std::string& templateId, SVMInfoLib& templateInfo,
                                                        const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/images" + "/" + templateId;
    SImageInfoLib image;
    if (!_ReadSingle(path, OCI_SERVICE_CORE, region, image)) {
        return false;
    }
    if (image.lifecycleState == "DELETED") {
        OCW_LOG_DEBUG(&m_debugLog, "The image [%s][%s] has been deleted.", image.displayName.c_str(),
                      image.id.c_str());
        SetLastError(StringUtil::Format("The image [%s][%s] has been deleted.", image.displayName.c_str(),
                                        image.id.c_str()));
        return false;
    }
    CopyImageToTemplate(image, templateInfo);
    return true;
}

bool COracleCloudInfrastructureQueries::_GetImageList(std::vector<SImageInfoLib>& images,
                                                      const std::string& compartmentId, const std::string& name,
                                                      const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/images" + "?compartmentId=" + compartmentId;
    if (!name.empty()) {
        // Display names are free text (blanks, "&"); they must not break the query.
        path += "&displayName=" + m_connection->urlEncode(name);
    }
    if (!_GetPaginatedList(path, OCI_SERVICE_CORE, region, images)) {
        return false;
    }
    _FilterDeletedItems(images, "DELETED");
    return true;
}

bool COracleCloudInfrastructureQueries::GetTemplateInfoListFilterByName(std::vector<SVMInfoLib>& templates,
                                                                        const std::string& compartmentId,
                                                                        const std::string& name,
                                                                        unsigned long long /*flags*/,
                                                                        unsigned long long /*flags2*/,
                                                                        const std::string& region) {
    std::vector<SImageInfoLib> images;
    if (!_GetImageList(images, compartmentId, name, region)) {
        return false;
    }
    for (const SImageInfoLib& image : images) {
        SVMInfoLib vm;
        CopyImageToTemplate(image, vm);
        templates.push_back(std::move(vm));
    }
    return true;
}

bool COracleCloudInfrastructureQueries::GetTemplateInfoList(std::vector<SVMInfoLib>& templates,
                                                            const std::string& compartmentId,
                                                            unsigned long long flags, unsigned long long flags2,
                                                            const std::string& region) {
    return GetTemplateInfoListFilterByName(templates, compartmentId, std::string(), flags, flags2, region);
}

// ---- shapes -------------------------------------------------------------------

bool COracleCloudInfrastructureQueries::GetInstanceShapeListForImage(std::vector<SInstanceShapeInfoLib>& shapes,
                                                                     const std::string& compartmentId,
                                                                     const std::string& imageId,
                                                                     const std::string& availabilityDomain,
                                                                     const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/shapes" + "?compartmentId=" + compartmentId;
    if (!imageId.empty()) {
        path += "&imageId=" + imageId;
    }
    if (!availabilityDomain.empty()) {
        path += "&availabilityDomain=" + availabilityDomain;
    }
    if (!_GetPaginatedList(path, OCI_SERVICE_CORE, region, shapes)) {
        return false;
    }
    // Stable, so the first entry of each name in answer order is the one kept.
    std::stable_sort(shapes.begin(), shapes.end(), comparatorSInstanceShapeinfoLibSort);
    shapes.erase(std::unique(shapes.begin(), shapes.end(), comparatorSInstanceShapeinfoLib), shapes.end());
    return true;
}

bool COracleCloudInfrastructureQueries::GetInstanceShapeList(std::vector<SInstanceShapeInfoLib>& shapes,
                                                             const std::string& compartmentId,
                                                             const std::string& region) {
    return GetInstanceShapeListForImage(shapes, compartmentId, std::string(), std::string(), region);
}

}  // namespace OracleCloudSDKWrapper
