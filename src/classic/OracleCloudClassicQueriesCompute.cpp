// Instances, machine images, SSH keys, security lists, shapes, IP networks and
// IP associations, the two disk-slot rules and the boot wait.
#include <algorithm>
#include <chrono>

#include "classic/ClassicNames.h"
#include "classic/OracleCloudClassicQueries.h"
#include "classic/OracleCloudClassicQueriesEngine.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {

using namespace classicnames;

namespace {

constexpr int kDiskSlots = 10;

int64_t NowSeconds() {
    return static_cast<int64_t>(
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count());
}

}  // namespace

// ---- instances ------------------------------------------------------------------

bool COracleCloudClassicQueries::GetVMInfoList(std::vector<SVMInfoLib>& vms, unsigned long long /*flags*/,
                                               const std::string& /*region*/) {
    return GetListFromURITraversal(kInstance, kUserContainerLevels, vms);
}

bool COracleCloudClassicQueries::GetVMInfo(const std::string& vmName, const std::string& vmId, SVMInfoLib& vm,
                                           unsigned long long /*flags*/, const std::string& /*region*/) {
    // Callers pass fields of vm itself: copies, as vm is written below.
    const std::string name = vmName.empty() ? vmId : vmName;
    const std::string uuid = vmId;
    std::vector<SVMInfoLib> found;
    if (name.find('/') != std::string::npos) {
        // Listed, not read: the object comes first, and a name without its
        // uuid ("/Compute-acme/jdoe/web1") still finds the instance below it.
        if (!GetListFromLink(ObjectLink(kInstance, name), found, false)) {
            return false;
        }
    } else {
        std::vector<SVMInfoLib> all;
        if (!GetListFromURITraversal(kInstance, kUserContainerLevels, all)) {
            return false;
        }
        for (SVMInfoLib& candidate : all) {
            if (candidate.vmName == name) found.push_back(std::move(candidate));
        }
        // Two users may have instances of one short name: the uuid, when given, decides.
        std::stable_partition(found.begin(), found.end(), [&](const SVMInfoLib& v) { return v.guid == uuid; });
    }
    if (found.empty()) {
        OCW_LOG_ERROR(&m_debugLog, "Instance [%s] was not found", name.c_str());
        SetLastError("Instance [" + name + "] was not found");
        return false;
    }
    vm = std::move(found.front());
    return readDisksOfInstance(vm);
}

bool COracleCloudClassicQueries::readDisksOfInstance(SVMInfoLib& vm) {
    std::vector<SStorageAttachmentInfoLib> attachments;
    if (!GetStorageAttachmentInfo(std::string(), vm.fullName, attachments, 0, std::string())) {
        return false;
    }
    // The instance's own "storage_attachments" name the slots but not the
    // volumes' size or boot flag: the disks are read again, volume by volume.
    vm.disks.clear();
    for (const SStorageAttachmentInfoLib& attachment : attachments) {
        SDiskInfoLib disk;
        disk.name = attachment.volumeName;
        if (!GetVolumeInfo(disk, 1)) {
            OCW_LOG_ERROR(&m_debugLog, "Cannot find volume [%s]", attachment.volumeName.c_str());
            continue;
        }
        // volumeName holds the full volume name wherever a disk came from
        // (an instance's own attachment entries fill it the same way).
        disk.volumeName = attachment.volumeName;
        disk.index = attachment.index;
        disk.isAttached = true;
        disk.attachments.push_back(attachment);
        vm.disks.push_back(std::move(disk));
    }
    vm.diskCount = vm.disks.size();
    return true;
}

bool COracleCloudClassicQueries::GetVMInfoListForHost(std::vector<SVMInfoLib>& vms, const std::string& /*hostId*/,
                                                      const std::string& hostName, unsigned long long /*flags*/,
                                                      const std::string& /*region*/) {
    if (hostName.empty()) {
        OCW_LOG_ERROR(&m_debugLog, "Cannot fetch Instances with empty username");
        SetLastError("Cannot fetch Instances with empty username");
        return false;
    }
    return GetListFromLink(Join(kInstance, UserPath(hostName, *m_connection)), vms, false);
}

bool COracleCloudClassicQueries::GetInstanceConfigJson(const std::string& instanceName, std::string& json) {
    return readLink(ObjectLink(kInstance, instanceName), json, false);
}

int COracleCloudClassicQueries::GetAvailableIndexPos(const SVMInfoLib& vm) {
    bool used[kDiskSlots] = {};
    for (const SDiskInfoLib& disk : vm.disks) {
        // Indexes outside 1..10 name no slot of this table.
        if (disk.index >= 1 && disk.index <= kDiskSlots) used[disk.index - 1] = true;
    }
    for (int slot = 0; slot < kDiskSlots; ++slot) {
        if (!used[slot]) return slot + 1;
    }
    return 0;
}

int COracleCloudClassicQueries::GetAvailableDiskIndexForVM(const std::string& vmName) {
    std::vector<SStorageAttachmentInfoLib> attachments;
    if (!GetListFromLink(Join(kAttachment, m_connection->getUser()) + "/?instance_name=" + vmName, attachments,
                         false)) {
        return -1;
    }
    // Never fills a hole: one past the highest index in use.
    int highest = -1;
    for (const SStorageAttachmentInfoLib& attachment : attachments) highest = std::max(highest, attachment.index);
    const int next = highest + 1;
    return next == kDiskSlots ? -1 : next;
}

bool COracleCloudClassicQueries::WaitForBoot(SVMInfoLib& vm, int timeoutSeconds, bool waitForIPAddress,
                                             const std::string& region) {
    // Unlike the operations' waits this one reads at once and pauses after
    // every read, also the one that ends it.
    const int64_t start = NowSeconds();
    bool running = false;
    bool logged = false;
    for (;;) {
        const std::string name = vm.fullName.empty() ? vm.vmName : vm.fullName;
        const std::string uuid = vm.guid;
        if (!GetVMInfo(name, uuid, vm, 0, region)) {
            OCW_LOG_ERROR(&m_debugLog, "GetVMInfoForVM Failed for VM [%s]", name.c_str());
            return false;
        }
        running = running || vm.state == "running";
        bool done = running && (!vm.ipAddress.empty() || !waitForIPAddress);
        if (!done && !logged) {
            OCW_LOG_DEBUG(&m_debugLog, "Waiting for VM [%s] to boot", vm.vmName.c_str());
            logged = true;
        }
        if (NowSeconds() - start > timeoutSeconds) {
            if (!running) {
                OCW_LOG_ERROR(&m_debugLog, "Timeout waiting for VM [%s] to boot", vm.vmName.c_str());
                SetLastError("Timeout waiting for VM [" + vm.vmName + "] to boot");
                return false;
            }
            if (!done) {
                OCW_LOG_DEBUG(&m_debugLog, "VM [%s] has booted but did not obtain an IPaddress", vm.vmName.c_str());
                done = true;
            }
        }
        PlatformSleep(static_cast<unsigned long>(bootPollSeconds) * 1000UL);
        if (done) return true;
    }
}

// ---- images, keys, groups, shapes, networks ----------------------------------------

bool COracleCloudClassicQueries::GetTemplateInfoList(std::vector<SVMInfoLib>& templates,
                                                     const std::string& /*compartmentId*/,
                                                     unsigned long long /*flags*/, unsigned long long /*flags2*/,
                                                     const std::string& /*region*/) {
    return GetListFromURITraversal(kMachineImage, kUserContainerLevels, templates);
}

bool COracleCloudClassicQueries::GetTemplateInfo(const std::string& templateId, SVMInfoLib& templateInfo,
                                                 const std::string& /*region*/) {
    return GetObjectFromLink(ObjectLink(kMachineImage, templateId), templateInfo);
}

bool COracleCloudClassicQueries::GetKeyPairList(std::vector<SKeyPairInfoLib>& keyPairs) {
    return GetListFromURITraversal(kSshKey, kUserContainerLevels, keyPairs);
}

bool COracleCloudClassicQueries::GetKeyInfoForKeyName(const std::string& keyName, SKeyPairInfoLib& keyPair) {
    return GetObjectFromLink(ObjectLink(kSshKey, keyName), keyPair);
}

bool COracleCloudClassicQueries::GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>& groups) {
    return GetListFromURITraversal(kSecList, kUserContainerLevels, groups);
}

bool COracleCloudClassicQueries::GetInstanceShapeList(std::vector<SInstanceShapeInfoLib>& shapes,
                                                      const std::string& /*compartmentId*/,
                                                      const std::string& /*region*/) {
    return GetListFromLink(kShape, shapes, false);
}

bool COracleCloudClassicQueries::GetNetworkList(std::vector<SNetworkInfoLib>& networks,
                                                const std::string& compartmentId,
                                                const std::string& /*availabilityDomain*/,
                                                const std::string& /*region*/) {
    return GetListFromLink(Join(kIpNetwork, UserPath(compartmentId, *m_connection)) + "/", networks, false);
}

bool COracleCloudClassicQueries::GetIPAssocation(const std::string& vcableId,
                                                 std::vector<SIPAssociationLib>& associations,
                                                 unsigned long long flags) {
    if (flags == 0) {
        return true;
    }
    return GetListFromLink(Join(kIpAssociation, m_connection->getUser()) + "/?vcable=" + vcableId, associations,
                           false);
}

}  // namespace OracleCloudSDKWrapper
