// Block and boot volumes, their attachments and their backups.
#include "oci/OciRegionSwitch.h"
#include "oci/OracleCloudInfrastructureOperationsInternal.h"

namespace OracleCloudSDKWrapper {

using ocioperations::CorePath;

namespace {

// Boot or block is told from the OCID. Two tests exist and both are kept:
// with the dots for volumes and new backups, without them where a backup's
// volume reference or a backup id is looked at.
bool IsBootVolumeId(const std::string& id) { return id.find(".bootvolume.") != std::string::npos; }
bool MentionsBootVolume(const std::string& id) { return id.find("bootvolume") != std::string::npos; }

}  // namespace

bool COracleCloudInfrastructureOperations::CreateVolume(SDiskInfoLib& disk, const std::string& region) {
    OciRegionSwitch regionSwitch(m_connection, region, &m_debugLog);
    const std::string body = JsonHelper::Serialize(ocioperations::CreateVolumeBody(disk));
    if (body.empty()) {
        return OCI_OPS_FAIL("The Request json could not be formed for creating volume instance");
    }
    std::string response;
    if (!postJson(OCI_SERVICE_CORE, CorePath("/volumes") + "/", body, response)) return false;

    SDiskInfoLib created;
    if (!m_parser->ParseObject(response, created)) {
        return OCI_OPS_FAIL("Failed to parse response JSON");
    }
    // Like the launch's line: should the wait fail, the log names what exists.
    OCW_LOG_DEBUG(&m_debugLog, "Successfully submitted request to create volume:[%s][%s]", disk.volumeName.c_str(),
                  created.guid.c_str());
    if (!WaitForObjectToReachEndState(CorePath("/volumes", created.guid), disk, "AVAILABLE", "TERMINATED")) {
        return false;
    }
    disk.guid = created.guid;
    disk.name = created.guid;
    return true;
}

bool COracleCloudInfrastructureOperations::GetStorageAttachmentInfo(const std::string& attachmentId,
                                                                    SStorageAttachmentInfoLib& attachment) {
    m_connection->setService(OCI_SERVICE_CORE);
    std::string response;
    if (!m_connection->get(CorePath("/volumeAttachments", attachmentId), response, false, true)) {
        setLastErrorFromFailedRequest(response);
        return false;
    }
    SStorageAttachmentInfoLib read;
    if (!m_parser->ParseObject(response, read)) {
        return OCI_OPS_FAIL("Error while parsing json response");
    }
    attachment = read;
    return true;
}

bool COracleCloudInfrastructureOperations::CreateVolumeAttachmentToInstance(const SDiskInfoLib& disk,
                                                                            const SVMInfoLib& vm,
                                                                            bool& limitReached,
                                                                            SStorageAttachmentInfoLib& attachment) {
    if (attachment.attachmentType.empty()) {
        OCW_LOG_DEBUG(&m_debugLog, "Volume attachment type is not specified. Assuming attachment type \"iscsi\" ");
        attachment.attachmentType = "iscsi";
    }
    const std::string type = attachment.attachmentType;
    const std::string body = JsonHelper::Serialize(ocioperations::AttachVolumeBody(disk, vm, attachment));
    if (body.empty()) {
        return OCI_OPS_FAIL("The Request json could not be formed for creating volume instance");
    }
    std::string response;
    if (!postJson(OCI_SERVICE_CORE, CorePath("/volumeAttachments") + "/", body, response)) {
        // The one error body worth reading: it tells the caller that the
        // instance has no free attachment slot, so another volume layout is needed.
        SAPIErrorInfoLib apiError;
        if (!m_parser->ParseObject(response, apiError)) {
            OCW_LOG_DEBUG(&m_debugLog, "Failed to parse error response");
        } else if (apiError.code == "LimitExceeded") {
            limitReached = true;
        }
        return false;
    }

    SStorageAttachmentInfoLib created;
    if (!m_parser->ParseObject(response, created)) {
        return OCI_OPS_FAIL("Error parsing response json");
    }
    if (!WaitForObjectToReachEndState(CorePath("/volumeAttachments", created.attachmentId), created, "ATTACHED",
                                      std::string())) {
        return false;
    }
    // The iSCSI address, port and target appear only once the attachment is complete.
    if (type == "iscsi" && !GetStorageAttachmentInfo(created.attachmentId, created)) {
        return false;
    }
    attachment = created;
    return true;
}

bool COracleCloudInfrastructureOperations::DeleteStorageAttachment(const SStorageAttachmentInfoLib& attachment,
                                                                   bool wait) {
    const std::string path = CorePath("/volumeAttachments", attachment.attachmentId);
    m_connection->setService(OCI_SERVICE_CORE);
    return deleteAndWaitUntilGone<SStorageAttachmentInfoLib>(path, path, "DETACHED", wait);
}

bool COracleCloudInfrastructureOperations::AreAllAttachmentsDeleted(const std::vector<std::string>& attachmentIds) {
    if (attachmentIds.empty()) return true;
    std::vector<std::string> paths;
    paths.reserve(attachmentIds.size());
    for (const std::string& id : attachmentIds) paths.push_back(CorePath("/volumeAttachments", id));
    m_connection->setService(OCI_SERVICE_CORE);
    return WaitForAllItemsToBeDeleted<SStorageAttachmentInfoLib>(std::move(paths), "DETACHED");
}

bool COracleCloudInfrastructureOperations::DeleteVolume(const std::string& volumeId) {
    const char* collection = IsBootVolumeId(volumeId) ? "/bootVolumes" : "/volumes";
    m_connection->setService(OCI_SERVICE_CORE);
    if (!DeleteObjectFromLink(CorePath(collection, volumeId))) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to sent delete volume request");
        return false;
    }
    return true;
}

bool COracleCloudInfrastructureOperations::CreateSnapshotForVolume(const std::string& volumeId,
                                                                   const std::string& description,
                                                                   const std::string& snapshotName,
                                                                   SSnapshotInfoLib& snapshot) {
    const bool boot = IsBootVolumeId(volumeId);
    const std::string& displayName = snapshotName.empty() ? description : snapshotName;
    const std::string body = JsonHelper::Serialize(ocioperations::VolumeBackupBody(volumeId, displayName, boot));
    if (body.empty()) {
        return OCI_OPS_FAIL("The Request json could not be formed for creating volume backup");
    }
    std::string response;
    const std::string path = CorePath(boot ? "/bootVolumeBackups" : "/volumeBackups") + "/";
    if (!postJson(OCI_SERVICE_CORE, path, body, response)) return false;

    SSnapshotInfoLib created;
    if (!m_parser->ParseObject(response, created)) {
        return OCI_OPS_FAIL("Failed to parse response JSON");
    }
    created.isComplete = snapshot.isComplete;
    snapshot = created;
    OCW_LOG_DEBUG(&m_debugLog, "Backup [%s] of volume [%s] requested, state [%s]", snapshot.name.c_str(),
                  volumeId.c_str(), snapshot.status.c_str());
    return true;
}

bool COracleCloudInfrastructureOperations::CreateVolumeFromSnapshot(const SSnapshotInfoLib& snapshot,
                                                                    SDiskInfoLib& disk) {
    if (MentionsBootVolume(snapshot.volumeName)) return CreateBootVolumeFromSnapshot(snapshot, disk);
    return createVolumeFromBackup(snapshot, disk, false);
}

bool COracleCloudInfrastructureOperations::CreateBootVolumeFromSnapshot(const SSnapshotInfoLib& snapshot,
                                                                        SDiskInfoLib& disk) {
    return createVolumeFromBackup(snapshot, disk, true);
}

bool COracleCloudInfrastructureOperations::createVolumeFromBackup(const SSnapshotInfoLib& snapshot, SDiskInfoLib& disk,
                                                                  bool boot) {
    const std::string body = JsonHelper::Serialize(ocioperations::VolumeFromBackupBody(disk, snapshot.name, boot));
    if (body.empty()) {
        return OCI_OPS_FAIL("The Request json could not be formed for creatign volume instance");
    }
    std::string response;
    if (!postJson(OCI_SERVICE_CORE, CorePath(boot ? "/bootVolumes" : "/volumes"), body, response)) return false;

    SDiskInfoLib created;
    if (!m_parser->ParseObject(response, created)) {
        return OCI_OPS_FAIL("Failed to parse response JSON");
    }
    disk.guid = created.guid;
    disk.name = created.guid;
    disk.status = created.status;
    disk.sizeBytes = created.sizeBytes;
    if (boot) disk.bootable = true;
    return true;
}

bool COracleCloudInfrastructureOperations::DeleteVolumeSnapshot(const std::string& backupId) {
    const char* collection = MentionsBootVolume(backupId) ? "/bootVolumeBackups" : "/volumeBackups";
    m_connection->setService(OCI_SERVICE_CORE);
    if (!DeleteObjectFromLink(CorePath(collection, backupId))) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to sent delete volume request");
        return false;
    }
    return true;
}

}  // namespace OracleCloudSDKWrapper
