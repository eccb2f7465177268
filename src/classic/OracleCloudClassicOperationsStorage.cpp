// Volumes, snapshots and storage attachments: creation, deletion, the
// whole-volume rewrites and the attachment of a volume to an instance.
#include "classic/ClassicNames.h"
#include "classic/OracleCloudClassicOperations.h"
#include "classic/OracleCloudClassicOperationsBodies.h"
#include "parser/OracleCloudParser.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

using namespace classicnames;
using namespace classicoperations;

namespace {

std::string CollectionLink(const char* collection) { return std::string(collection) + "/"; }

}  // namespace

bool COracleCloudClassicOperations::CreateVolume(SDiskInfoLib& disk, const std::string& user) {
    // Under the connected user, or under the user named (inside this identity domain).
    const std::string fullName = FullVolumeName(disk.volumeName, UserPath(user, *m_connection));
    if (!PostObjectToLinkAndGetResult(CollectionLink(kVolume), JsonHelper::Serialize(CreateVolumeBody(disk, fullName)),
                                      disk)) {
        return false;
    }
    return WaitForObjectToReachEndState(ObjectLink(kVolume, disk.name), disk, "Online");
}

bool COracleCloudClassicOperations::CreateVolumeFromSnapshot(const SSnapshotInfoLib& snapshot, SDiskInfoLib& disk) {
    if (snapshot.status != "completed") {
        return OCW_FAIL("Cannot create volume from snapshot [%s] which is in [%s] state", snapshot.name.c_str(),
                        snapshot.status.c_str());
    }
    // A short name lands beside the snapshot's volume (in its user's container).
    const std::string container = ContainerOf(snapshot.volumeName);
    const std::string fullName = FullVolumeName(disk.volumeName, container.empty() ? getUser() : container);
    return PostObjectToLinkAndGetResult(CollectionLink(kVolume),
                                        JsonHelper::Serialize(VolumeFromSnapshotBody(fullName, snapshot, disk.properties)),
                                        disk);
}

bool COracleCloudClassicOperations::CreateSnapshotForVolume(const std::string& volume, const std::string& description,
                                                            const std::string& snapshotName,
                                                            SSnapshotInfoLib& snapshot) {
    if (volume.empty()) {
        return OCW_FAIL("Volume name is not specified for creation");
    }
    if (description.empty()) {
        return OCW_FAIL("Volume description is not specified for creation");
    }
    return PostObjectToLinkAndGetResult(CollectionLink(kSnapshot),
                                        JsonHelper::Serialize(SnapshotBody(volume, description, snapshotName)),
                                        snapshot);
}

bool COracleCloudClassicOperations::DeleteVolumeSnapshot(const std::string& snapshot) {
    return DeleteObjectFromLink(ObjectLink(kSnapshot, snapshot));
}

bool COracleCloudClassicOperations::DeleteVolume(const std::string& volume) {
    return DeleteObjectFromLink(ObjectLink(kVolume, volume));
}

bool COracleCloudClassicOperations::DoesVolumeExist(const std::string& volumeName, const std::string& user) {
    const std::string fullName = FullVolumeName(volumeName, UserPath(user, *m_connection));
    std::string response;
    return m_connection->get(ObjectLink(kVolume, fullName), response, false, false);
}

bool COracleCloudClassicOperations::CreateVolumeAttachmentToInstance(const SDiskInfoLib& disk, const SVMInfoLib& vm,
                                                                     bool& /*limitReached*/,
                                                                     SStorageAttachmentInfoLib& attachment) {
    const std::string& volume = disk.name.empty() ? disk.volumeName : disk.name;
    if (!PostObjectToLinkAndGetResult(CollectionLink(kAttachment),
                                      JsonHelper::Serialize(AttachmentBody(disk.index, volume, vm.fullName)),
                                      attachment)) {
        return false;
    }
    return WaitForObjectToReachEndState(ObjectLink(kAttachment, attachment.name), attachment, "attached");
}

bool COracleCloudClassicOperations::DeleteStorageAttachment(const SStorageAttachmentInfoLib& attachment, bool wait) {
    const std::string link = ObjectLink(kAttachment, attachment.name);
    if (!DeleteObjectFromLink(link)) {
        return false;
    }
    return !wait || WaitForLinkTo404(link);
}

// ---- whole-volume rewrites -----------------------------------------------------------

namespace {

bool IsBootable(const SDiskInfoLib& disk) { return disk.bootable; }
bool HasNoDescription(const SDiskInfoLib& disk) { return disk.description.empty(); }

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string PercentDecoded(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 && HexValue(text[i + 2]) >= 0) {
            out += static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

// Whether the "uri" of an answer names the object at link (a path relative to
// the server). The service writes its own host and port, and percent-encodes
// "@" of e-mail user names, so the path after the server is compared, decoded.
bool UriNamesLink(const std::string& uri, const std::string& link) {
    const std::string decoded = PercentDecoded(uri);
    const std::string tail = "/" + link;
    return decoded.size() >= tail.size() && decoded.compare(decoded.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

bool COracleCloudClassicOperations::rewriteVolume(SDiskInfoLib& disk, const JsonObject& body,
                                                  const char* inconsistentUriText,
                                                  bool (*changed)(const SDiskInfoLib&), const std::string& unchangedText) {
    const std::string text = JsonHelper::Serialize(body);
    if (text.empty()) {
        return OCW_FAIL("Unable to serialize volume update body");
    }
    const std::string link = ObjectLink(kVolume, disk.name);
    std::string response;
    if (!sendBody(true, link, text, response)) {
        return false;
    }
    JsonValue document;
    const JsonObject* volume = JsonHelper::Parse(response, document) ? document.if_object() : nullptr;
    if (volume == nullptr || JsonHelper::GetStringValue(*volume, "name").empty()) {
        return OCW_FAIL("Response for update request doesn't contain a volume object");
    }
    if (!UriNamesLink(JsonHelper::GetStringValue(*volume, "uri"), link)) {
        return OCW_FAIL("%s", inconsistentUriText);
    }
    SDiskInfoLib updated;
    m_parser->ParseObject(response, updated);
    if (!changed(updated)) {
        return OCW_FAIL("%s", unchangedText.c_str());
    }
    disk = std::move(updated);
    return true;
}

bool COracleCloudClassicOperations::MakeVolumeBootable(SDiskInfoLib& disk) {
    return rewriteVolume(disk, BootableVolumeBody(disk), "the updated volume uri is inconsistent with the original uri",
                         &IsBootable,
                         "Changing the volume to bootable has failed, please check [" + disk.name + "] volume is bootable");
}

bool COracleCloudClassicOperations::ClearDescriptionForVolume(SDiskInfoLib& disk) {
    return rewriteVolume(disk, ClearedDescriptionVolumeBody(disk),
                         "The updated volume uri is inconsistent with the original uri", &HasNoDescription,
                         "Changing the description has failed for volume [" + disk.name + "].");
}

}  // namespace OracleCloudSDKWrapper
