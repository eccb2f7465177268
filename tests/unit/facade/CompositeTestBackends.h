#pragma once
// Backends for the facade's composite operations: the fakes of
// FacadeTestBackends.h plus the attachment, volume, snapshot, image, key and
// object storage calls the composites make. They answer from tables the test
// fills, record every call as text in the same `calls` lists, and fail an
// operation whose name is in `failing` with "<name> failed in the backend".
#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "FacadeTestBackends.h"

namespace facadetest {

inline std::string JoinNames(const std::vector<std::string>& names) {
    std::string joined;
    for (const std::string& name : names) {
        joined += (joined.empty() ? "" : "|") + name;
    }
    return joined;
}

// A connection whose last HTTP code and tenancy id are set by the test.
class StatusConnection : public CountingConnection {
public:
    long getLastHTTPErrorCode() override { return httpCode; }
    std::string getIdentityDomain() override { return tenancy; }

    long httpCode = 200;
    std::string tenancy = "ocid1.tenancy.oc1..t";
};

class CompositeQueries : public FakeQueries {
public:
    explicit CompositeQueries(COracleCloudBaseConnection* connection) : FakeQueries(connection) {}

    bool GetStorageAttachmentForDiskAndInstance(const std::string& volume, const std::string& instance,
                                                SStorageAttachmentInfoLib& attachment, bool& notAttached,
                                                const std::string& region) override {
        if (!Answer(Call("GetStorageAttachmentForDiskAndInstance", volume, instance, region))) return false;
        if (unknownVolumes.count(volume) != 0) {
            SetLastError("lookup of " + volume + " failed");
            return false;
        }
        const auto found = attachments.find(volume);
        if (found == attachments.end()) {
            notAttached = true;
            SetLastError("Storage attachment not found");
            return false;
        }
        attachment = found->second;
        return true;
    }
    // Classic rule: a volume attached to nothing is a success with the record untouched.
    bool GetStorageAttachmentForDisk(const std::string& volume, SStorageAttachmentInfoLib& attachment,
                                     const std::string& region) override {
        if (!Answer(Call("GetStorageAttachmentForDisk", volume, region))) return false;
        if (unknownVolumes.count(volume) != 0) return false;
        const auto found = attachments.find(volume);
        if (found != attachments.end()) attachment = found->second;
        return true;
    }
    // First free slot of 1..slotCount among the VM's disks, 0 when all are taken.
    int GetAvailableIndexPos(const SVMInfoLib& vm) override {
        calls.push_back(Call("GetAvailableIndexPos", vm.guid, static_cast<int>(vm.disks.size())));
        for (int slot = 1; slot <= slotCount; ++slot) {
            const bool used = std::any_of(vm.disks.begin(), vm.disks.end(),
                                          [slot](const SDiskInfoLib& d) { return d.index == slot; });
            if (!used) return slot;
        }
        return 0;
    }
    bool GetSnapshotInfoForSnapshotName(const std::string& name, SSnapshotInfoLib& snapshot) override {
        if (!Answer(Call("GetSnapshotInfoForSnapshotName", name))) return false;
        const auto found = snapshots.find(name);
        if (found == snapshots.end()) {
            SetLastError("no snapshot " + name);
            return false;
        }
        snapshot = found->second;
        return true;
    }
    bool GetVolumeInfo(SDiskInfoLib& disk, unsigned long long flags) override {
        if (!Answer(Call("GetVolumeInfo", disk.guid, disk.name, flags))) return false;
        const auto found = volumes.find(disk.guid);
        if (found == volumes.end()) {
            SetLastError("no volume " + disk.guid);
            return false;
        }
        disk = found->second;
        return true;
    }
    bool GetTemplateInfo(const std::string& templateId, SVMInfoLib& image, const std::string& region) override {
        if (!Answer(Call("GetTemplateInfo", templateId, region))) return false;
        image = imageToReturn;
        return true;
    }
    bool GetKeyInfoForKeyName(const std::string& keyName, SKeyPairInfoLib& key) override {
        if (!Answer(Call("GetKeyInfoForKeyName", keyName))) return false;
        const auto found = keys.find(keyName);
        if (found == keys.end()) return false;
        key = found->second;
        return true;
    }
    bool GetNamespaceForTenant(std::string& tenantNamespace) override {
        if (!Answer(Call("GetNamespaceForTenant"))) return false;
        tenantNamespace = namespaceToReturn;
        return true;
    }

    std::map<std::string, SStorageAttachmentInfoLib> attachments;  // by volume
    std::set<std::string> unknownVolumes;                           // look-ups that fail outright
    int slotCount = 10;
    std::map<std::string, SSnapshotInfoLib> snapshots;  // by name
    std::map<std::string, SDiskInfoLib> volumes;        // by guid
    SVMInfoLib imageToReturn;
    std::map<std::string, SKeyPairInfoLib> keys;
    std::string namespaceToReturn = "tenantns";
};

class CompositeOperations : public FakeOperations {
public:
    explicit CompositeOperations(COracleCloudBaseConnection* connection) : FakeOperations(connection) {}

    bool CreateVolumeAttachmentToInstance(const SDiskInfoLib& disk, const SVMInfoLib& vm, bool& limitReached,
                                          SStorageAttachmentInfoLib& attachment) override {
        // The flag as the facade hands it over tells whether it was reset first.
        if (!Answer(Call("CreateVolumeAttachmentToInstance", disk.guid, disk.name, disk.index, vm.guid,
                         limitReached))) {
            limitReached = limitOnFailure;
            return false;
        }
        attachment.attachmentId = "ocid1.volumeattachment.oc1..for-" + disk.guid;
        attachment.volumeName = disk.guid;
        attachment.instanceName = vm.guid;
        attachment.state = "ATTACHED";
        attachment.iscsiIpv4 = "169.254.2.2";
        attachment.iscsiPort = "3260";
        return true;
    }
    bool CreateVolume(SDiskInfoLib& disk, const std::string& scope) override {
        if (!Answer(Call("CreateVolume", disk.volumeName, disk.sizeBytes, scope, disk.availabilityDomain,
                         disk.compartmentId))) {
            return false;
        }
        disk.name = "ocid1.volume.oc1..new-" + disk.volumeName;
        return true;
    }
    bool CreateSnapshotForVolume(const std::string& volume, const std::string& description, const std::string& name,
                                 SSnapshotInfoLib& snapshot) override {
        if (!Answer(Call("CreateSnapshotForVolume", volume, description, name, snapshot.isComplete))) return false;
        snapshot.name = "ocid1.volumebackup.oc1..of-" + volume;
        return true;
    }
    bool CreateVolumeFromSnapshot(const SSnapshotInfoLib& snapshot, SDiskInfoLib& disk) override {
        if (!Answer(Call("CreateVolumeFromSnapshot", snapshot.name, disk.volumeName, disk.compartmentId,
                         disk.properties, disk.availabilityDomain, disk.guid, disk.sizeBytes))) {
            return false;
        }
        disk.name = "ocid1.volume.oc1..restored-" + disk.volumeName;
        return true;
    }
    bool DeleteStorageAttachment(const SStorageAttachmentInfoLib& attachment, bool wait) override {
        const std::string id = attachment.attachmentId.empty() ? attachment.name : attachment.attachmentId;
        if (!Answer(Call("DeleteStorageAttachment", id, wait))) return false;
        if (refusedDetachments.count(id) != 0) {
            SetLastError("detach of " + id + " refused");
            return false;
        }
        return true;
    }
    bool AreAllAttachmentsDeleted(const std::vector<std::string>& attachments) override {
        return Answer(Call("AreAllAttachmentsDeleted", JoinNames(attachments)));
    }
    bool MakeVolumeBootable(SDiskInfoLib& disk) override {
        return Answer(Call("MakeVolumeBootable", disk.guid, disk.sizeBytes, disk.description));
    }
    bool ClearDescriptionForVolume(SDiskInfoLib& disk) override {
        return Answer(Call("ClearDescriptionForVolume", disk.guid, disk.sizeBytes, disk.description));
    }
    bool UploadToObjectStorage(const std::string& ns, const std::string& bucket, const std::string& object,
                               const std::string& content) override {
        return Answer(Call("UploadToObjectStorage", ns, bucket, object, content));
    }
    bool CreateImage(const std::string& ns, const std::string& bucket, const std::string& object,
                     SImageInfoLib& image) override {
        if (!Answer(Call("CreateImage", ns, bucket, object, image.displayName))) return false;
        image.id = "ocid1.image.oc1..imported";
        image.lifecycleState = "IMPORTING";
        return true;
    }
    bool DeleteStorageObject(const std::string& ns, const std::string& bucket, const std::string& object) override {
        return Answer(Call("DeleteStorageObject", ns, bucket, object));
    }

    bool limitOnFailure = false;
    std::set<std::string> refusedDetachments;
};

// A facade of the given cloud type over the composite fakes, all owned by it.
struct CompositeFacade {
    explicit CompositeFacade(EOracleCloudType type = ORACLE_CLOUD_INFRASTRUCTURE)
        : connection(new StatusConnection()),
          queries(new CompositeQueries(connection)),
          operations(new CompositeOperations(connection)),
          facade(type, nullptr, connection, queries, operations) {}

    StatusConnection* connection;
    CompositeQueries* queries;
    CompositeOperations* operations;
    TestableWrapper facade;
};

// True when some captured line (any level) carries exactly this text.
inline bool Logged(const LogCapture& log, const std::string& text) {
    return std::any_of(log.lines.begin(), log.lines.end(), [&](const std::string& line) {
        return line.size() >= text.size() + 3 && line.compare(line.size() - text.size() - 3, std::string::npos,
                                                              " | " + text) == 0;
    });
}

// True when an error-level line carries exactly this text.
inline bool LoggedError(const LogCapture& log, const std::string& text) {
    return std::find(log.errors.begin(), log.errors.end(), text) != log.errors.end();
}

}  // namespace facadetest
