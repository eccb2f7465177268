// The volume-level backup cycle: snapshots, integrity snapshots, volumes made
// from snapshots, and the revert that replaces a volume by one made from an
// integrity snapshot.
#include <ctime>

#include "facade/FacadeForward.h"
#include "facade/OracleCloudBaseOperations.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/DebugLog.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {

namespace {

// Detail flags for the source volume: any non-zero value makes the Classic
// reader actually read.
constexpr unsigned long long kReadVolume = 1;

// Shared by both snapshot kinds; the record's isComplete tells the backend
// which kind to take. The backend's error text stays with the backend: the
// caller of a snapshot learns only that it failed.
bool TakeSnapshot(COracleCloudBaseOperations* operations, const std::string& volumeUri,
                  const std::string& description, const std::string& snapshotName, bool isComplete,
                  std::string& createdSnapshot) {
    if (operations == nullptr) {
        return false;
    }
    SSnapshotInfoLib snapshot;
    snapshot.isComplete = isComplete;
    if (!operations->CreateSnapshotForVolume(volumeUri, description, snapshotName, snapshot)) {
        return false;
    }
    createdSnapshot = snapshot.name;
    return true;
}

// The last non-empty part of a "/"-separated URI; empty when there is none
// (an empty text, or one made of separators only).
std::string LastUriPart(const std::string& uri) {
    const std::vector<std::string> parts = StringUtil::Split(uri, '/');
    for (auto it = parts.rbegin(); it != parts.rend(); ++it) {
        if (!it->empty()) {
            return *it;
        }
    }
    return std::string();
}

}  // namespace

bool COracleCloudWrapper::CreateVolumeSnapshot(const std::string& volumeUri, const std::string& description,
                                               const std::string& snapshotName, std::string& createdSnapshot) {
    if (volumeUri.empty()) {
        OCW_LOG_ERROR(this, "Cannot create snapshot as Volume uri was empty");
        return false;
    }
    return TakeSnapshot(m_operations, volumeUri, description, snapshotName, true, createdSnapshot);
}

bool COracleCloudWrapper::CreateIntegritySnapshot(const std::string& volumeUri, const std::string& description,
                                                  const std::string& snapshotName, std::string& createdSnapshot) {
    if (volumeUri.empty()) {
        OCW_LOG_ERROR(this, "Cannot create integrity snapshot as Volume uri was empty");
        return false;
    }
    return TakeSnapshot(m_operations, volumeUri, description, snapshotName, false, createdSnapshot);
}

bool COracleCloudWrapper::CreateVolumeFromSnapshot(const std::string& snapshotUri, const std::string& volumeName,
                                                   std::string& createdVolume) {
    if (m_queries == nullptr || m_operations == nullptr) {
        return false;
    }
    SSnapshotInfoLib snapshot;
    if (!m_queries->GetSnapshotInfoForSnapshotName(snapshotUri, snapshot)) {
        OCW_LOG_ERROR(this, "Cannot find snapshot [%s]", snapshotUri.c_str());
        return false;
    }
    // The new volume lives where the snapshot's volume lived.
    SDiskInfoLib source;
    source.volumeName = snapshot.volumeName;
    source.guid = snapshot.volumeName;
    if (!m_queries->GetVolumeInfo(source, kReadVolume)) {
        OCW_LOG_ERROR(this, "Cannot find volume [%s]", source.volumeName.c_str());
        return false;
    }
    SDiskInfoLib disk;
    disk.volumeName = volumeName;
    disk.compartmentId = source.compartmentId;
    disk.properties = source.properties;
    disk.availabilityDomain = source.availabilityDomain;
    if (!m_operations->CreateVolumeFromSnapshot(snapshot, disk)) {
        return false;
    }
    createdVolume = disk.name;
    return true;
}

bool COracleCloudWrapper::RevertToIntegritySnapshot(const std::string& volumeUri, const std::string& snapshotUri,
                                                    std::string& createdVolume) {
    if (volumeUri.empty()) {
        OCW_LOG_ERROR(this, "Cannot revert to integrity snapshot as Volume uri was empty");
        return false;
    }
    if (snapshotUri.empty()) {
        OCW_LOG_ERROR(this, "Cannot revert to integrity snapshot as snapshot uri was empty");
        return false;
    }
    const std::string lastPart = LastUriPart(volumeUri);
    if (lastPart.empty()) {
        OCW_LOG_ERROR(this, "Cannot perform revert operation. Volume URI is incorrect [%s]", volumeUri.c_str());
        return false;
    }
    // The replacement must not collide with the volume it replaces, which still
    // exists until the end; the time suffix also tells reverts apart.
    const std::string newName = lastPart + "_" + std::to_string(static_cast<long long>(std::time(nullptr)));
    const auto operationsError = [this]() {
        return m_operations != nullptr ? m_operations->GetLastError() : std::string();
    };
    const unsigned long long since = errorSlot().mark();
    if (!CreateVolumeFromSnapshot(snapshotUri, newName, createdVolume)) {
        errorSlot().take(operationsError(), since);
        OCW_LOG_ERROR(this, "Could not create volume from integrity snapshot  [%s]: [%s]", snapshotUri.c_str(),
                      m_lastError.c_str());
        return false;
    }
    // The replacement exists: the revert has done its job even if the old
    // volume stays behind.
    if (!DeleteVolume(volumeUri)) {
        errorSlot().take(operationsError(), since);
        OCW_LOG_ERROR(this, "Could not delete volume  [%s]: [%s]", volumeUri.c_str(), m_lastError.c_str());
    }
    return true;
}

bool COracleCloudWrapper::GetSnapshotStatus(const std::string& snapshot, std::string& status) {
    SSnapshotInfoLib info;
    if (!ForwardToBackend(errorSlot(), m_queries, [&](COracleCloudBaseQueries& queries) {
            return queries.GetSnapshotInfoForSnapshotName(snapshot, info);
        })) {
        OCW_LOG_ERROR(this, "Cannot get snapshot details for [%s]", snapshot.c_str());
        return false;
    }
    status = info.status;
    return true;
}

}  // namespace OracleCloudSDKWrapper
