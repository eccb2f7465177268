#pragma once
// Backends for facade tests: they answer from what the test set up, record the
// calls they receive (name and arguments as text), and report their own
// destruction, so facade logic can be checked without any HTTP.
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "facade/OracleCloudBaseOperations.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/DebugLog.h"
#include "transport/OracleCloudBaseConnection.h"

namespace facadetest {

using namespace OracleCloudSDKWrapper;

inline void AppendArg(std::ostringstream& out, const std::string& value) { out << '"' << value << '"'; }
inline void AppendArg(std::ostringstream& out, const char* value) { out << '"' << value << '"'; }
inline void AppendArg(std::ostringstream& out, bool value) { out << (value ? "true" : "false"); }
template <class T>
void AppendArg(std::ostringstream& out, const T& value) {
    out << value;
}

template <class... Args>
std::string Call(const std::string& name, const Args&... args) {
    std::ostringstream out;
    out << name << '(';
    bool first = true;
    (void)std::initializer_list<int>{(out << (first ? "" : ","), first = false, AppendArg(out, args), 0)...};
    out << ')';
    return out.str();
}

// What every fake backend does with a call: records it in calls and fails it,
// with "<name> failed in the backend" as the backend's last error, when its
// name is in failing.
inline bool RecordAndAnswer(COracleCloudErrorHandler& backend, std::vector<std::string>& calls,
                            const std::set<std::string>& failing, const std::string& call) {
    calls.push_back(call);
    const std::string name = call.substr(0, call.find('('));
    if (failing.count(name) != 0) {
        backend.SetLastError(name + " failed in the backend");
        return false;
    }
    return true;
}

// Shared record of the order in which backend objects were destroyed.
using DestroyLog = std::vector<std::string>;

// Counts sends instead of making them; connect answers as configured.
class CountingConnection : public COracleCloudBaseConnection {
public:
    explicit CountingConnection(DestroyLog* destroyed = nullptr)
        : COracleCloudBaseConnection(nullptr), m_destroyed(destroyed) {}
    ~CountingConnection() override {
        if (m_destroyed != nullptr) m_destroyed->push_back("connection");
    }

    bool connect(const std::string& server, const std::string& user, const std::string&,
                 EOracleServiceType service) override {
        calls.push_back(Call("connect", server, user, static_cast<int>(service)));
        if (!connectSucceeds) SetLastError("login refused by the test");
        return connectSucceeds;
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
    std::string getRegion() override { return region; }

    bool connectSucceeds = true;
    std::string region;
    int requests = 0;
    std::vector<std::string> calls;

private:
    DestroyLog* m_destroyed;
};

// Queries that succeed unless their name is in `failing`; on failure the last
// error becomes "<name> failed in the backend".
class FakeQueries : public COracleCloudBaseQueries {
public:
    explicit FakeQueries(COracleCloudBaseConnection* connection, DestroyLog* destroyed = nullptr)
        : COracleCloudBaseQueries(connection, nullptr), m_destroyed(destroyed) {}
    ~FakeQueries() override {
        if (m_destroyed != nullptr) m_destroyed->push_back("queries");
    }

    bool CheckConnection() override { return Answer(Call("CheckConnection")); }
    bool GetHostInfo(const std::string& hostId, const std::string& hostName, SHostInfoLib&, unsigned long long flags,
                     const std::string& region) override {
        return Answer(Call("GetHostInfo", hostId, hostName, flags, region));
    }
    bool GetVMInfo(const std::string& vmName, const std::string& vmId, SVMInfoLib& vm, unsigned long long flags,
                   const std::string& region) override {
        if (!Answer(Call("GetVMInfo", vmName, vmId, flags, region))) return false;
        vm = vmToReturn;
        return true;
    }
    bool GetVMInfoListForHost(std::vector<SVMInfoLib>& vms, const std::string& hostId, const std::string& hostName,
                              unsigned long long flags, const std::string& region) override {
        if (!Answer(Call("GetVMInfoListForHost", hostId, hostName, flags, region))) return false;
        vms.push_back(vmToReturn);
        return true;
    }
    bool GetTemplateInfo(const std::string& templateId, SVMInfoLib&, const std::string& region) override {
        return Answer(Call("GetTemplateInfo", templateId, region));
    }
    bool GetContainerInfo(const std::string& id, const std::string& name, SContainerInfoLib&, unsigned long long flags,
                          const std::string& region) override {
        return Answer(Call("GetContainerInfo", id, name, flags, region));
    }
    bool GetContainerInfoList(std::vector<SContainerInfoLib>&, const std::string& parentId, unsigned long long flags,
                              const std::string& region) override {
        return Answer(Call("GetContainerInfoList", parentId, flags, region));
    }
    bool GetKeyPairList(std::vector<SKeyPairInfoLib>& keyPairs) override {
        if (!Answer(Call("GetKeyPairList"))) return false;
        keyPairs = keyPairsToReturn;
        return true;
    }
    bool GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>& groups) override {
        if (!Answer(Call("GetSecurityGroupList"))) return false;
        groups = groupsToReturn;
        return true;
    }
    bool GetNetworkList(std::vector<SNetworkInfoLib>& networks, const std::string& compartmentId,
                        const std::string& availabilityDomain, const std::string& region) override {
        if (!Answer(Call("GetNetworkList", compartmentId, availabilityDomain, region))) return false;
        networks = networksToReturn;
        return true;
    }
    bool GetRegionInfoList(std::vector<SRegionInfoLib>&, unsigned long long flags) override {
        return Answer(Call("GetRegionInfoList", flags));
    }
    bool GetSubscribedRegionInfoList(std::vector<SRegionInfoLib>&, unsigned long long flags) override {
        return Answer(Call("GetSubscribedRegionInfoList", flags));
    }
    bool GetAvailabilityDomainList(std::vector<SAvailabilityDomainInfoLib>&, unsigned long long flags,
                                   const std::string& compartmentId, const std::string& region) override {
        return Answer(Call("GetAvailabilityDomainList", flags, compartmentId, region));
    }
    bool GetBootVolumeAttachmentForInstance(const std::string& ad, const std::string& compartmentId,
                                            const std::string& instanceId, SStorageAttachmentInfoLib&,
                                            const std::string& region) override {
        return Answer(Call("GetBootVolumeAttachmentForInstance", ad, compartmentId, instanceId, region));
    }
    bool CheckIfDiskExists(const std::string& diskId, bool& exists, const std::string& region) override {
        if (!Answer(Call("CheckIfDiskExists", diskId, region))) return false;
        exists = true;
        return true;
    }
    bool GetSSHKeyByName(const std::string& name, SOracleSSHKeyLib& key) override {
        if (!Answer(Call("GetSSHKeyByName", name))) return false;
        key.computeKeyName = name;
        key.publicKey = "ssh-rsa AAAAB3Nza demo@host";
        return true;
    }

    std::set<std::string> failing;
    std::vector<std::string> calls;
    SVMInfoLib vmToReturn;
    std::vector<SKeyPairInfoLib> keyPairsToReturn;
    std::vector<SSecurityGroupInfoLib> groupsToReturn;
    std::vector<SNetworkInfoLib> networksToReturn;

protected:
    bool Answer(const std::string& call) { return RecordAndAnswer(*this, calls, failing, call); }

private:
    DestroyLog* m_destroyed;
};

// Operations that succeed unless their name is in `failing`.
class FakeOperations : public COracleCloudBaseOperations {
public:
    explicit FakeOperations(COracleCloudBaseConnection* connection, DestroyLog* destroyed = nullptr)
        : COracleCloudBaseOperations(connection, nullptr), m_destroyed(destroyed) {}
    ~FakeOperations() override {
        if (m_destroyed != nullptr) m_destroyed->push_back("operations");
    }

    bool DeployVM(SVMInfoLib& vm, const std::string& source) override {
        if (!Answer(Call("DeployVM", vm.vmName, source))) return false;
        vm.guid = "deployed-guid";
        return true;
    }
    bool DeleteVM(const std::string& vmName, const std::string& vmId, bool option, bool wait) override {
        return Answer(Call("DeleteVM", vmName, vmId, option, wait));
    }
    bool PowerOffInstance(const std::string& instance) override { return Answer(Call("PowerOffInstance", instance)); }
    bool PowerOnInstance(const std::string& instance) override { return Answer(Call("PowerOnInstance", instance)); }
    bool DeleteVolumeSnapshot(const std::string& snapshot) override {
        return Answer(Call("DeleteVolumeSnapshot", snapshot));
    }
    bool DeleteVolume(const std::string& volume) override { return Answer(Call("DeleteVolume", volume)); }
    bool LaunchInstance(SVMInfoLib& vm) override { return Answer(Call("LaunchInstance", vm.vmName)); }
    bool RebootInstance(const std::string& instance) override { return Answer(Call("RebootInstance", instance)); }
    bool CreateDBInstance(SOracleDBInstanceInfoLib& db) override {
        return Answer(Call("CreateDBInstance", db.serviceName, db.sshPublicKey));
    }
    bool BackupDBInstance(const SOracleDBInstanceInfoLib& db, const SPaaSBackupRestoreOptionsLib&, std::string& jobUri,
                          std::string&) override {
        if (!Answer(Call("BackupDBInstance/paas", db.serviceName))) return false;
        jobUri = "paas/job/1";
        return true;
    }
    bool BackupDBInstance(const SOCIDatabaseInfoLib& database, const SPaaSBackupRestoreOptionsLib&,
                          std::string& job) override {
        if (!Answer(Call("BackupDBInstance/oci", database.id))) return false;
        job = "ocid1.dbbackup.oc1..b";
        return true;
    }
    bool SetOperationTimeout(unsigned int seconds) override {
        Answer(Call("SetOperationTimeout", seconds));
        return false;  // the facade must not pass this on
    }
    bool DeleteObjectFromLink(const std::string& link) override { return Answer(Call("DeleteObjectFromLink", link)); }

    std::set<std::string> failing;
    std::vector<std::string> calls;

protected:
    bool Answer(const std::string& call) { return RecordAndAnswer(*this, calls, failing, call); }

private:
    DestroyLog* m_destroyed;
};

// Operations with nothing but the one operation every backend must provide.
class BareOperations : public COracleCloudBaseOperations {
public:
    explicit BareOperations(COracleCloudBaseConnection* connection) : COracleCloudBaseOperations(connection, nullptr) {}
    bool DeleteObjectFromLink(const std::string&) override { return false; }
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
    void setLastError(const std::string& text) { m_lastError = text; }
};

// A facade over a CountingConnection, FakeQueries and FakeOperations, all owned by it.
struct FakeFacade {
    explicit FakeFacade(EOracleCloudType type = ORACLE_CLOUD_INFRASTRUCTURE, DestroyLog* destroyed = nullptr)
        : connection(new CountingConnection(destroyed)),
          queries(new FakeQueries(connection, destroyed)),
          operations(new FakeOperations(connection, destroyed)),
          facade(type, nullptr, connection, queries, operations) {}

    CountingConnection* connection;
    FakeQueries* queries;
    FakeOperations* operations;
    TestableWrapper facade;
};

// Captures every log line (all levels) while alive.
class LogCapture {
public:
    LogCapture() : m_threshold(DebugLog::GetThreshold()) {
        DebugLog::SetThreshold(99);
        m_previous = DebugLog::SetSink([this](const LogRecord& record) {
            lines.push_back(std::string(record.signature) + " | " + record.text);
            if (record.level == 0) errors.push_back(record.text);
        });
    }
    ~LogCapture() {
        DebugLog::SetSink(m_previous);
        DebugLog::SetThreshold(m_threshold);
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines;
    std::vector<std::string> errors;

private:
    LogSink m_previous;
    int m_threshold;
};

}  // namespace facadetest
