// Volumes, snapshots, storage attachments and orchestrations.
#include <algorithm>

#include "classic/ClassicNames.h"
#include "classic/OracleCloudClassicQueries.h"
#include "classic/OracleCloudClassicQueriesEngine.h"

namespace OracleCloudSDKWrapper {

using namespace classicnames;

bool COracleCloudClassicQueries::GetVolumeInfo(SDiskInfoLib& disk, unsigned long long flags) {
    if (flags == 0) {
        return true;
    }
    // The facade names a volume it only knows from a snapshot by volumeName.
    const std::string name = disk.name.empty() ? disk.volumeName : disk.name;
    std::vector<SDiskInfoLib> volumes;
    if (!GetListFromLink(ObjectLink(kVolume, name), volumes, false)) {
        return false;
    }
    if (volumes.empty()) {
        SetLastError("Volume [" + name + "] was not found");
        return false;
    }
    // The list may also hold volumes named below this one.
    auto exact = std::find_if(volumes.begin(), volumes.end(), [&](const SDiskInfoLib& v) { return v.name == name; });
    disk = std::move(exact != volumes.end() ? *exact : volumes.front());
    return true;
}

bool COracleCloudClassicQueries::GetSnapshotInfo(SSnapshotInfoLib& snapshot, unsigned long long /*flags*/) {
    return GetObjectFromLink(ObjectLink(kSnapshot, snapshot.name), snapshot);
}

bool COracleCloudClassicQueries::GetSnapshotInfoForSnapshotName(const std::string& snapshotName,
                                                                SSnapshotInfoLib& snapshot) {
    return GetObjectFromLink(ObjectLink(kSnapshot, snapshotName), snapshot);
}

bool COracleCloudClassicQueries::GetAllSnapshotsInfoForUsers(std::vector<SSnapshotInfoLib>& snapshots,
                                                             const std::vector<std::string>& users) {
    for (const std::string& user : users) {
        if (!GetListFromLink(Join(Join(kSnapshot, m_connection->getIdentityDomain()), user), snapshots, false)) {
            OCW_LOG_ERROR(&m_debugLog, "Failed to get snapshot infor for user [%s]", user.c_str());
        }
    }
    return true;
}

bool COracleCloudClassicQueries::GetStorageAttachmentInfo(const std::string& /*compartmentId*/,
                                                          const std::string& instanceId,
                                                          std::vector<SStorageAttachmentInfoLib>& attachments,
                                                          unsigned long long /*flags*/,
                                                          const std::string& /*region*/) {
    return GetListFromLink(Join(kAttachment, m_connection->getUser()) + "/?instance_name=" + instanceId, attachments,
                           false);
}

bool COracleCloudClassicQueries::GetStorageAttachmentForDisk(const std::string& volumeName,
                                                             SStorageAttachmentInfoLib& attachment,
                                                             const std::string& /*region*/) {
    std::vector<SStorageAttachmentInfoLib> attachments;
    if (!GetListFromLink(Join(kAttachment, m_connection->getUser()) + "/?storage_volume_name=" + volumeName,
                         attachments, false)) {
        return false;
    }
    if (attachments.empty()) {
        // Deliberately a success: the caller looks at the untouched record.
        OCW_LOG_DEBUG(&m_debugLog, "volume [%s] is not attached to any instance", volumeName.c_str());
        return true;
    }
    if (attachments.size() > 1) {
        OCW_LOG_ERROR(&m_debugLog, "More than 1 matching storage attachements were found for volume [%s]",
                      volumeName.c_str());
        SetLastError("More than 1 matching storage attachements were found for volume [" + volumeName + "]");
        return false;
    }
    attachment = std::move(attachments.front());
    return true;
}

bool COracleCloudClassicQueries::GetOrchestrationForVM(const std::string& base, const std::string& kind,
                                                       std::string& orchestration) {
    // Listed with the object media type, each orchestration comes back as its
    // whole document (a JSON object turned back into text).
    std::vector<std::string> documents;
    if (!GetListFromLink(ObjectLink(kOrchestration, base + "_" + kind), documents, false)) {
        return false;
    }
    if (documents.empty()) {
        SetLastError("Orchestration [" + base + "_" + kind + "] was not found");
        return false;
    }
    orchestration = documents.front();
    return true;
}

bool COracleCloudClassicQueries::GetOrchestrationInfo(const std::string& name, SOrchestrationInfoLib& orchestration) {
    return GetObjectFromLink(ObjectLink(kOrchestration, name), orchestration);
}

}  // namespace OracleCloudSDKWrapper
