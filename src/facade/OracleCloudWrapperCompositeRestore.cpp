// Restore-side composites: checking a VM record before a launch, polling an
// image import, probing whether an instance still exists, and the tenancy's
// availability domains.
#include "facade/FacadeForward.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/DebugLog.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

namespace {

// Compute Classic disk slots.
constexpr int kFirstDiskIndex = 1;
constexpr int kLastDiskIndex = 10;

constexpr long kHttpNotFound = 404;

}  // namespace

bool COracleCloudWrapper::ValidateInstanceInfoForRestore(const SVMInfoLib& vm) {
    if (vm.vmName.empty()) {
        OCW_LOG_ERROR(this, "Cannot launch Instance as instance name is absent");
        return false;
    }
    if (vm.compartmentId.empty()) {
        OCW_LOG_ERROR(this, "Cannot launch Instance [%s] as user account is absent", vm.vmName.c_str());
        return false;
    }
    if (vm.shape.empty()) {
        OCW_LOG_ERROR(this, "Cannot launch Instance [%s] as instance shape is absent", vm.vmName.c_str());
        return false;
    }
    if (m_cloudType == ORACLE_CLOUD_CLASSIC) {
        // Compute Classic boots from one of the VM's own slotted volumes; OCI
        // brings its boot volume from the image or a boot volume id instead.
        if (vm.disks.empty()) {
            OCW_LOG_ERROR(this, "Cannot launch Instance [%s] without any volumes", vm.vmName.c_str());
            return false;
        }
        bool hasBootVolume = false;
        for (const SDiskInfoLib& disk : vm.disks) {
            if (disk.index < kFirstDiskIndex || disk.index > kLastDiskIndex) {
                OCW_LOG_ERROR(this, "Cannot launch Instance [%s], invalid index [%d] for volume [%s]",
                              vm.vmName.c_str(), disk.index, disk.name.c_str());
                return false;
            }
            hasBootVolume = hasBootVolume || disk.bootable;
        }
        if (!hasBootVolume) {
            OCW_LOG_ERROR(this, "Cannot launch Instance [%s], No bootable volume found", vm.vmName.c_str());
            return false;
        }
        if (vm.sshKeys.empty()) {
            OCW_LOG_DEBUG(this, "No SSH Keys will be added for instance [%s] ", vm.vmName.c_str());
        }
        if (vm.securityGroups.empty()) {
            OCW_LOG_DEBUG(this, "No security lists will be added for instance [%s] ", vm.vmName.c_str());
        }
    }
    if (vm.vnics.empty()) {
        OCW_LOG_DEBUG(this, "No network lists will be added for instance [%s] ", vm.vmName.c_str());
    }
    return true;
}

bool COracleCloudWrapper::IsImageImportOperationCompleted(const std::string& imageId, bool& completed,
                                                          const std::string& region) {
    if (m_cloudType != ORACLE_CLOUD_INFRASTRUCTURE) {
        OCW_LOG_ERROR(this, "NOT IMPLEMENTED");
        return false;
    }
    SVMInfoLib image;
    if (!ForwardToBackend(errorSlot(), m_queries, [&](COracleCloudBaseQueries& queries) {
            return queries.GetTemplateInfo(imageId, image, region);
        })) {
        return false;
    }
    // Both copies of the lifecycle state are filled from the image; status is
    // the one waits read, state the fallback should a mapping fill only one.
    const std::string& state = image.status.empty() ? image.state : image.status;
    if (state == "AVAILABLE") {
        completed = true;
        return true;
    }
    if (state == "IMPORTING") {
        completed = false;
        return true;
    }
    errorSlot().take("Image [" + imageId + "] went into erroneous state [" + state + "] while importing.",
                     errorSlot().mark());
    return false;
}

bool COracleCloudWrapper::DoesVMExist(const std::string& vmName, const std::string& vmId, bool& exists) {
    exists = false;
    if (m_queries == nullptr) {
        return false;
    }
    SVMInfoLib vm;
    const unsigned long long since = errorSlot().mark();
    if (m_queries->GetVMInfo(vmName, vmId, vm, 0, std::string())) {
        // OCI keeps answering for a terminated instance for a while.
        exists = vm.state != "TERMINATED";
        return true;
    }
    // Absent is an answer, not a failure: OCI says so with 404; Classic also
    // when its walk of the instances read fine but found no such name.
    const long code = m_connection != nullptr ? m_connection->getLastHTTPErrorCode() : 0;
    const bool classicWalkFoundNothing =
        m_cloudType != ORACLE_CLOUD_INFRASTRUCTURE && code >= 200 && code < 300;
    if (code == kHttpNotFound || classicWalkFoundNothing) {
        return true;
    }
    errorSlot().take(m_queries->GetLastError(), since);
    OCW_LOG_ERROR(this, "Fetching the instance details for instance [%s] has failed",
                  (vmId.empty() ? vmName : vmId).c_str());
    return false;
}

bool COracleCloudWrapper::GetAvailabilityDomainListForTenancy(std::vector<SAvailabilityDomainInfoLib>& domains,
                                                              const std::string& region) {
    // The domains are listed on the root compartment, whose id is the tenancy's.
    const std::string tenancy = m_connection != nullptr ? m_connection->getIdentityDomain() : std::string();
    return ForwardToBackend(errorSlot(), m_queries, [&](COracleCloudBaseQueries& queries) {
        return queries.GetAvailabilityDomainList(domains, 0, tenancy, region);
    });
}

}  // namespace OracleCloudSDKWrapper
