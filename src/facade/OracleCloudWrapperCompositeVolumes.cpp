// Volume composites of the facade: attaching and detaching volumes (one or
// many), creating volumes alone or for an instance, and the reads and rewrites
// of one volume that need its record first.
#include "facade/FacadeForward.h"
#include "facade/OracleCloudBaseOperations.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

namespace {

// Flags the facade uses when it only needs a VM's basic record (with its disks).
constexpr unsigned long long kBasicVMFlags = 16;
// Any non-zero flag makes the Classic volume reader actually read.
constexpr unsigned long long kReadVolume = 1;

// A volume record that both backends can look up: OCI reads the id (guid),
// Classic the full name (name).
SDiskInfoLib VolumeNamed(const std::string& volume) {
    SDiskInfoLib disk;
    disk.volumeName = volume;
    disk.guid = volume;
    disk.name = volume;
    return disk;
}

}  // namespace

bool COracleCloudWrapper::AttachVolume(const std::string& volumeName, const std::string& instanceName,
                                       bool& noFreeIndex) {
    SVMInfoLib vm;
    if (!GetVMInfo(std::string(), instanceName, vm, kBasicVMFlags, std::string())) {
        OCW_LOG_ERROR(this, "Failed to get Instance info.");
        return false;
    }
    SDiskInfoLib disk;
    if (m_cloudType == ORACLE_CLOUD_CLASSIC) {
        // Compute Classic attaches at an explicit slot; the cloud does not pick one.
        const int index = m_queries->GetAvailableIndexPos(vm);
        if (index == 0) {
            OCW_LOG_ERROR(this, "No free index to attach volume.");
            noFreeIndex = true;
            return false;
        }
        OCW_LOG_DEBUG(this, "Attaching volume [%s] at Index [%d].", volumeName.c_str(), index);
        disk.index = index;
    }
    noFreeIndex = false;
    disk.guid = volumeName;
    disk.volumeName = volumeName;
    if (m_cloudType != ORACLE_CLOUD_INFRASTRUCTURE) {
        disk.name = volumeName;  // the Classic attachment names the volume by its full name
    }
    SStorageAttachmentInfoLib attachment;
    return ForwardToBackend(errorSlot(), m_operations, [&](COracleCloudBaseOperations& operations) {
        return operations.CreateVolumeAttachmentToInstance(disk, vm, noFreeIndex, attachment);
    });
}

bool COracleCloudWrapper::AttachVolume(const std::string& volumeId, const std::string& instanceId,
                                       bool& limitReached, SStorageAttachmentInfoLib& attachment) {
    if (m_cloudType != ORACLE_CLOUD_INFRASTRUCTURE) {
        OCW_LOG_ERROR(this, "Not Implemented");
        return false;
    }
    SVMInfoLib vm;
    if (!GetVMInfo(std::string(), instanceId, vm, 0, std::string())) {
        OCW_LOG_ERROR(this, "Failed to get Instance info.");
        return false;
    }
    SDiskInfoLib disk;
    disk.guid = volumeId;
    disk.volumeName = volumeId;
    return ForwardToBackend(errorSlot(), m_operations, [&](COracleCloudBaseOperations& operations) {
        return operations.CreateVolumeAttachmentToInstance(disk, vm, limitReached, attachment);
    });
}

bool COracleCloudWrapper::DetachVolumes(const std::vector<std::string>& volumeNames,
                                        const std::string& instanceName) {
    if (m_queries == nullptr || m_operations == nullptr) {
        return false;
    }
    std::vector<std::string> pending;
    bool result = true;
    for (const std::string& volume : volumeNames) {
        OCW_LOG_DEBUG(this, "Detaching volume [%s] from Instance [%s].", volume.c_str(), instanceName.c_str());
        SStorageAttachmentInfoLib attachment;
        if (m_cloudType != ORACLE_CLOUD_CLASSIC) {
            bool notAttached = false;
            if (!m_queries->GetStorageAttachmentForDiskAndInstance(volume, instanceName, attachment, notAttached,
                                                                   std::string())) {
                if (notAttached) {
                    OCW_LOG_DEBUG(this, "Volume [%s] is not attached to instance[%s]. Skipping detachment.",
                                  volume.c_str(), instanceName.c_str());
                } else {
                    OCW_LOG_ERROR(this, "Failed to find storage attachment for volumeID: %s instanceID: %s",
                                  volume.c_str(), instanceName.c_str());
                    result = false;
                }
                continue;
            }
        } else {
            if (!m_queries->GetStorageAttachmentForDisk(volume, attachment, std::string())) {
                result = false;
                continue;
            }
            // The Classic look-up succeeds with an untouched record when the
            // volume is attached to nothing, so the instance check covers that too.
            if (attachment.instanceName != instanceName) {
                OCW_LOG_ERROR(this, "The volume [%s] is not attached to the instance [%s]!, proceeding to next volume",
                              volume.c_str(), instanceName.c_str());
                continue;
            }
        }
        // No wait per volume: all detachments run in the cloud at once and are
        // waited for together below.
        if (!m_operations->DeleteStorageAttachment(attachment, false)) {
            OCW_LOG_ERROR(this, "Could not remove attachment for volume [%s] from [%s]", volume.c_str(),
                          instanceName.c_str());
            result = false;
            continue;
        }
        pending.push_back(m_cloudType == ORACLE_CLOUD_CLASSIC ? attachment.name : attachment.attachmentId);
    }
    if (pending.size() < volumeNames.size()) {
        OCW_LOG_ERROR(this, "Only %d/%d volumes could be put on detach request", static_cast<int>(pending.size()),
                      static_cast<int>(volumeNames.size()));
    }
    OCW_LOG_DEBUG(this, "Waiting for deletion of [%d] attachments ", static_cast<int>(pending.size()));
    const bool allGone = m_operations->AreAllAttachmentsDeleted(pending);
    return allGone && result;
}

bool COracleCloudWrapper::DetachVolume(const std::string& volumeName, const std::string& instanceName) {
    if (m_queries == nullptr || m_operations == nullptr) {
        return false;
    }
    SStorageAttachmentInfoLib attachment;
    bool notAttached = false;
    if (!m_queries->GetStorageAttachmentForDiskAndInstance(volumeName, instanceName, attachment, notAttached,
                                                           std::string())) {
        if (notAttached) {
            OCW_LOG_DEBUG(this, "Volume [%s] is not attached to instance[%s]. Skipping detachment.",
                          volumeName.c_str(), instanceName.c_str());
            return true;
        }
        OCW_LOG_ERROR(this, "Failed to find storage attachment for volumeID: %s instanceID: %s", volumeName.c_str(),
                      instanceName.c_str());
        return false;
    }
    // A single detachment is waited for here, so the caller sees the volume free.
    if (!m_operations->DeleteStorageAttachment(attachment, true)) {
        OCW_LOG_ERROR(this, "Could not detach volume [%s] from [%s]", volumeName.c_str(), instanceName.c_str());
        return false;
    }
    return true;
}

bool COracleCloudWrapper::CreateVolume(SDiskInfoLib& disk, const std::string& scope) {
    if (disk.volumeName.empty()) {
        OCW_LOG_ERROR(this, "Cannot create volume with an empty name");
        return false;
    }
    if (disk.sizeBytes == 0) {
        OCW_LOG_ERROR(this, "Cannot create volume [%s] with incorrect disk size [%llu]", disk.volumeName.c_str(),
                      disk.sizeBytes);
        return false;
    }
    const unsigned long long since = errorSlot().mark();
    if (m_operations == nullptr || !m_operations->CreateVolume(disk, scope)) {
        OCW_LOG_ERROR(this, "Failed to create volume [%s]", disk.volumeName.c_str());
        // A create that broke off may have made the volume: the record says
        // which request failed and how, even though the text stays.
        errorSlot().record(m_operations != nullptr ? m_operations->GetLastError() : std::string(), since);
        return false;
    }
    return true;
}

bool COracleCloudWrapper::ReConfigureVM(const std::string& instanceName, std::vector<SDiskInfoLib>& disks) {
    const unsigned long long since = errorSlot().mark();
    SVMInfoLib vm;
    if (!GetVMInfo(std::string(), instanceName, vm, kBasicVMFlags, std::string())) {
        OCW_LOG_ERROR(this, "Fetching the instance details for instance [%s] has failed", instanceName.c_str());
        return false;
    }
    const bool oci = m_cloudType == ORACLE_CLOUD_INFRASTRUCTURE;
    for (SDiskInfoLib& disk : disks) {
        if (disk.volumeName.empty()) {
            OCW_LOG_ERROR(this, "Disk name is empty , continuing with the next disk");
            continue;
        }
        if (oci) {
            // An OCI volume can only be attached inside the instance's own domain.
            if (disk.availabilityDomain.empty()) disk.availabilityDomain = vm.availabilityDomain;
            if (disk.compartmentId.empty()) disk.compartmentId = vm.compartmentId;
        }
        // Classic creates the volume under the instance's user; OCI in the current region.
        if (!CreateVolume(disk, oci ? std::string() : vm.compartmentId)) {
            OCW_LOG_ERROR(this, "Creation of the disk failed.");
            if (m_operations != nullptr) errorSlot().take(m_operations->GetLastError(), since);
            return false;
        }
        if (oci && disk.guid.empty()) {
            disk.guid = disk.name;
        }
        if (m_cloudType == ORACLE_CLOUD_CLASSIC) {
            const int index = m_queries->GetAvailableIndexPos(vm);
            if (index == 0) {
                OCW_LOG_ERROR(this, "No Free slot available to attach the disk to the instance [%s]",
                              instanceName.c_str());
                return false;
            }
            disk.index = index;
        }
        bool limitReached = false;
        SStorageAttachmentInfoLib attachment;
        if (!m_operations->CreateVolumeAttachmentToInstance(disk, vm, limitReached, attachment)) {
            errorSlot().take(m_operations->GetLastError(), since);
            if (limitReached) {
                OCW_LOG_ERROR(this, "No Free slot available to attach the disk to the instance [%s]",
                              instanceName.c_str());
            } else {
                OCW_LOG_ERROR(this, "Failed to attach disk to the instance [%s]", instanceName.c_str());
            }
            return false;
        }
        disk.isAttached = true;
        disk.attachments.push_back(attachment);
        // The next free slot must see this disk as taken.
        vm.disks.push_back(disk);
    }
    return true;
}

bool COracleCloudWrapper::GetVolumeStatus(const std::string& volume, std::string& status) {
    SDiskInfoLib disk = VolumeNamed(volume);
    if (!ForwardToBackend(errorSlot(), m_queries,
                          [&](COracleCloudBaseQueries& queries) { return queries.GetVolumeInfo(disk, kReadVolume); })) {
        OCW_LOG_ERROR(this, "Cannot get volume details for [%s]", volume.c_str());
        return false;
    }
    status = disk.status;
    return true;
}

bool COracleCloudWrapper::MakeVolumeBootable(const std::string& volume) {
    // The cloud rewrites the volume whole, so the update starts from its current record.
    SDiskInfoLib disk = VolumeNamed(volume);
    if (!ForwardToBackend(errorSlot(), m_queries,
                          [&](COracleCloudBaseQueries& queries) { return queries.GetVolumeInfo(disk, kReadVolume); })) {
        OCW_LOG_ERROR(this, "Cannot get volume details for [%s]", volume.c_str());
        return false;
    }
    return ForwardToBackend(errorSlot(), m_operations,
                            [&](COracleCloudBaseOperations& operations) { return operations.MakeVolumeBootable(disk); });
}

bool COracleCloudWrapper::ClearDescriptionForVolume(const std::string& volume) {
    SDiskInfoLib disk = VolumeNamed(volume);
    if (!ForwardToBackend(errorSlot(), m_queries,
                          [&](COracleCloudBaseQueries& queries) { return queries.GetVolumeInfo(disk, kReadVolume); })) {
        OCW_LOG_ERROR(this, "Cannot get volume details for [%s]", volume.c_str());
        return false;
    }
    return ForwardToBackend(errorSlot(), m_operations, [&](COracleCloudBaseOperations& operations) {
        return operations.ClearDescriptionForVolume(disk);
    });
}

}  // namespace OracleCloudSDKWrapper
