#pragma once
// Backends for the facade's own logic where the emulator cannot show it (the
// Compute Classic branches above all): they answer from what the test set up,
// record each call as text with its arguments, and fail a call whose name is
// in `failing` with "<name> failed in the backend" as their last error.
#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "facade/OracleCloudBaseOperations.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "transport/OracleCloudBaseConnection.h"

namespace ocwtest {

using namespace OracleCloudSDKWrapper;

inline void AppendArg(std::ostringstream& out, const std::string& value) { out << '"' << value << '"'; }
inline void AppendArg(std::ostringstream& out, bool value) { out << (value ? "true" : "false"); }
template <class T>
void AppendArg(std::ostringstream& out, const T& value) {
    out << value;
}

// "Name(arg,...)" with strings quoted.
template <class... Args>
std::string Call(const std::string& name, const Args&... args) {
    std::ostringstream out;
    out << name << '(';
    bool first = true;
    (void)std::initializer_list<int>{(out << (first ? "" : ","), first = false, AppendArg(out, args), 0)...};
    out << ')';
    return out.str();
}

// Records a call and answers it: false, with the backend's last error set,
// when its name is in `failing`.
struct CallLog {
    std::vector<std::string> calls;
    std::set<std::string> failing;

    bool Answer(COracleCloudErrorHandler& backend, const std::string& call) {
        calls.push_back(call);
        const std::string name = call.substr(0, call.find('('));
        if (failing.count(name) == 0) return true;
        backend.SetLastError(name + " failed in the backend");
        return false;
    }
};

using DestroyLog = std::vector<std::string>;

// Sends nothing; the last HTTP code and the tenancy are set by the test.
class FakeConnection : public COracleCloudBaseConnection {
public:
    explicit FakeConnection(DestroyLog* destroyed = nullptr)
        : COracleCloudBaseConnection(nullptr), destroyed_(destroyed) {}
    ~FakeConnection() override {
        if (destroyed_ != nullptr) destroyed_->push_back("connection");
    }
    bool sendReq(HTTP_REQ_TYPE, const std::string&, const std::string&, std::string&, bool, bool) override {
        ++requests;
        return false;
    }
    bool _sendReqFull(HTTP_REQ_TYPE, const std::string&, const std::string&, std::string&, bool, bool) override {
        ++requests;
        return false;
    }
    void LogResponse(const std::string&, const std::string&) override {}
    long getLastHTTPErrorCode() override { return httpCode; }

    long httpCode = 200;
    int requests = 0;

private:
    DestroyLog* destroyed_;
};

class FakeQueries : public COracleCloudBaseQueries {
public:
    explicit FakeQueries(COracleCloudBaseConnection* connection, DestroyLog* destroyed = nullptr)
        : COracleCloudBaseQueries(connection, nullptr), destroyed_(destroyed) {}
    ~FakeQueries() override {
        if (destroyed_ != nullptr) destroyed_->push_back("queries");
    }

    bool GetVMInfo(const std::string& name, const std::string& id, SVMInfoLib& out, unsigned long long flags,
                   const std::string& region) override {
        if (!log.Answer(*this, Call("GetVMInfo", name, id, flags, region))) return false;
        out = vm;
        return true;
    }
    // Classic: a volume attached to nothing is a success with the record untouched.
    bool GetStorageAttachmentForDisk(const std::string& volume, SStorageAttachmentInfoLib& out,
                                     const std::string& region) override {
        if (!log.Answer(*this, Call("GetStorageAttachmentForDisk", volume, region))) return false;
        if (unknownVolumes.count(volume) != 0) return false;
        auto found = attachments.find(volume);
        if (found != attachments.end()) out = found->second;
        return true;
    }
    // The first free slot of 1..slotCount among the VM's disks, 0 when all are taken.
    int GetAvailableIndexPos(const SVMInfoLib& of) override {
        log.calls.push_back(Call("GetAvailableIndexPos", static_cast<int>(of.disks.size())));
        for (int slot = 1; slot <= slotCount; ++slot) {
            if (std::none_of(of.disks.begin(), of.disks.end(), [slot](const SDiskInfoLib& d) { return d.index == slot; }))
                return slot;
        }
        return 0;
    }
    bool GetVolumeInfo(SDiskInfoLib& disk, unsigned long long flags) override {
        if (!log.Answer(*this, Call("GetVolumeInfo", disk.guid, flags))) return false;
        auto found = volumes.find(disk.guid);
        if (found == volumes.end()) return false;
        disk = found->second;
        return true;
    }
    bool GetSnapshotInfoForSnapshotName(const std::string& name, SSnapshotInfoLib& out) override {
        if (!log.Answer(*this, Call("GetSnapshotInfoForSnapshotName", name))) return false;
        out.name = name;
        out.volumeName = sourceVolume.guid;
        return true;
    }
    bool GetKeyInfoForKeyName(const std::string& name, SKeyPairInfoLib& key) override {
        if (!log.Answer(*this, Call("GetKeyInfoForKeyName", name))) return false;
        auto found = keys.find(name);
        if (found == keys.end()) return false;
        key = found->second;
        return true;
    }
    bool GetSSHKeyByName(const std::string& name, SOracleSSHKeyLib& key) override {
        if (!log.Answer(*this, Call("GetSSHKeyByName", name))) return false;
        key.publicKey = "ssh-rsa AAAAB3Nza " + name;
        return true;
    }
    bool GetKeyPairList(std::vector<SKeyPairInfoLib>& out) override {
        out = keyPairList;
        return log.Answer(*this, Call("GetKeyPairList"));
    }
    bool GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>& out) override {
        out = groupList;
        return log.Answer(*this, Call("GetSecurityGroupList"));
    }
    bool GetNetworkList(std::vector<SNetworkInfoLib>& out, const std::string&, const std::string&,
                        const std::string&) override {
        out = networkList;
        return log.Answer(*this, Call("GetNetworkList"));
    }

    CallLog log;
    SVMInfoLib vm;
    int slotCount = 10;
    std::map<std::string, SStorageAttachmentInfoLib> attachments;  // by volume
    std::set<std::string> unknownVolumes;
    std::map<std::string, SDiskInfoLib> volumes;  // by guid
    SDiskInfoLib sourceVolume;                    // the volume every snapshot was taken of
    std::map<std::string, SKeyPairInfoLib> keys;
    std::vector<SKeyPairInfoLib> keyPairList;
    std::vector<SSecurityGroupInfoLib> groupList;
    std::vector<SNetworkInfoLib> networkList;

private:
    DestroyLog* destroyed_;
};

class FakeOperations : public COracleCloudBaseOperations {
public:
    explicit FakeOperations(COracleCloudBaseConnection* connection, DestroyLog* destroyed = nullptr)
        : COracleCloudBaseOperations(connection, nullptr), destroyed_(destroyed) {}
    ~FakeOperations() override {
        if (destroyed_ != nullptr) destroyed_->push_back("operations");
    }

    bool CreateVolumeAttachmentToInstance(const SDiskInfoLib& disk, const SVMInfoLib& vm, bool& limitReached,
                                          SStorageAttachmentInfoLib& attachment) override {
        // The flag as handed over tells whether the facade reset it first.
        if (!log.Answer(*this, Call("Attach", disk.name, disk.index, vm.guid, limitReached))) {
            limitReached = limitOnFailure;
            return false;
        }
        attachment.attachmentId = "attachment-of-" + disk.name;
        return true;
    }
    bool CreateVolume(SDiskInfoLib& disk, const std::string& scope) override {
        if (!log.Answer(*this, Call("CreateVolume", disk.volumeName, scope))) return false;
        disk.name = "/Compute-a/u/" + disk.volumeName;
        return true;
    }
    bool CreateSnapshotForVolume(const std::string& volume, const std::string&, const std::string&,
                                 SSnapshotInfoLib& snapshot) override {
        return log.Answer(*this, Call("CreateSnapshotForVolume", volume, snapshot.isComplete));
    }
    bool CreateVolumeFromSnapshot(const SSnapshotInfoLib& snapshot, SDiskInfoLib& disk) override {
        if (!log.Answer(*this, Call("CreateVolumeFromSnapshot", snapshot.name, disk.volumeName))) return false;
        disk.name = disk.volumeName;
        return true;
    }
    bool DeleteVolume(const std::string& volume) override { return log.Answer(*this, Call("DeleteVolume", volume)); }
    bool DeleteStorageAttachment(const SStorageAttachmentInfoLib& attachment, bool wait) override {
        return log.Answer(*this, Call("DeleteStorageAttachment", attachment.name, wait));
    }
    bool AreAllAttachmentsDeleted(const std::vector<std::string>& names) override {
        std::string joined;
        for (const std::string& name : names) joined += (joined.empty() ? "" : "|") + name;
        return log.Answer(*this, Call("AreAllAttachmentsDeleted", joined));
    }
    bool MakeVolumeBootable(SDiskInfoLib& disk) override {
        return log.Answer(*this, Call("MakeVolumeBootable", disk.guid, disk.sizeBytes, disk.description));
    }
    bool ClearDescriptionForVolume(SDiskInfoLib& disk) override {
        return log.Answer(*this, Call("ClearDescriptionForVolume", disk.guid, disk.sizeBytes, disk.description));
    }
    bool CreateDBInstance(SOracleDBInstanceInfoLib& db) override {
        return log.Answer(*this, Call("CreateDBInstance", db.sshPublicKey));
    }
    bool DeleteObjectFromLink(const std::string& link) override { return log.Answer(*this, Call("Delete", link)); }

    CallLog log;
    bool limitOnFailure = false;

private:
    DestroyLog* destroyed_;
};

// A facade over injected backends, with its members in reach of the tests.
class TestableWrapper : public COracleCloudWrapper {
public:
    explicit TestableWrapper(EOracleCloudType type) : COracleCloudWrapper(type) {}
    TestableWrapper(EOracleCloudType type, COracleCloudParser* parser, COracleCloudBaseConnection* connection,
                    COracleCloudBaseQueries* queries, COracleCloudBaseOperations* operations)
        : COracleCloudWrapper(type, parser, connection, queries, operations) {}

    COracleCloudParser* parser() const { return m_parser; }
    COracleCloudBaseConnection* connection() const { return m_connection; }
    COracleCloudBaseQueries* queries() const { return m_queries; }
    COracleCloudBaseOperations* operations() const { return m_operations; }
};

// A facade of the given cloud type over the fakes, all owned by it.
struct FakeFacade {
    explicit FakeFacade(EOracleCloudType type = ORACLE_CLOUD_CLASSIC)
        : connection(new FakeConnection()),
          queries(new FakeQueries(connection)),
          operations(new FakeOperations(connection)),
          facade(type, nullptr, connection, queries, operations) {}

    FakeConnection* connection;
    FakeQueries* queries;
    FakeOperations* operations;
    TestableWrapper facade;
};

inline SDiskInfoLib DiskAt(int index, const std::string& name = "vol") {
    SDiskInfoLib disk;
    disk.index = index;
    disk.name = name;
    return disk;
}

}  // namespace ocwtest
