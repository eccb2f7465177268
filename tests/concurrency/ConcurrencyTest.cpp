// OCI and Classic facades side by side on many threads against one emulator,
// the way an agent runs them: inventories, waits, backups and volumes made
// from them, PaaS listings, while every Classic session is ended again and
// again under the running calls. Each thread's result must be the one the
// same job gives alone. Built with ThreadSanitizer by `./run tsan`, this is
// also the race check of the library and the emulator.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <sstream>
#include <thread>
#include <vector>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;

class Concurrency : public ocwtest::EmulatorTest {
protected:
    // One job of one agent thread. `tag` makes the names of what it creates
    // its own; the text it returns names them with "#" in place of the tag, so
    // jobs of one kind return the same text when nothing went wrong.
    using Job = std::function<std::string(const std::string& tag)>;

    // Polls a status reader (as an agent does) until it reads `want`, up to ten seconds.
    template <class Read>
    static std::string PollUntil(const std::string& want, Read read) {
        std::string status;
        for (int i = 0; i < 100 && status != want; ++i) {
            if (!read(status)) return "<read failed>";
            if (status != want) std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return status;
    }

    static std::string Untagged(std::string text, const std::string& tag) {
        for (size_t at = text.find(tag); at != std::string::npos; at = text.find(tag, at + 1)) {
            text.replace(at, tag.size(), "#");
        }
        return text;
    }

    // What a job saw, line by line.
    struct Report {
        COracleCloudWrapper& facade;
        std::ostringstream out;
        // Ends the report with the call that failed and the facade's error.
        std::string Failed(const char* call) const {
            return out.str() + " FAILED " + call + ": " + facade.GetLastError();
        }
        // Adds "name:state:shape" of each VM of the account, sorted (the order
        // of a walk is not part of the result); false when the list failed.
        bool ListVms() {
            std::vector<SVMInfoLib> vms;
            if (!facade.GetVMInfoList(vms, 0, "")) return false;
            std::vector<std::string> items;
            for (const SVMInfoLib& vm : vms) items.push_back(vm.vmName + ":" + vm.state + ":" + vm.shape);
            std::sort(items.begin(), items.end());
            out << "vms";
            for (const std::string& item : items) out << " " << item;
            out << "\n";
            return true;
        }
    };

    std::string OciJob(const std::string& tag) {
        auto facade = ConnectFacade();
        if (!facade) return "connect failed";
        Report report{*facade, {}};
        std::ostringstream& out = report.out;
        auto failed = [&report](const char* call) { return report.Failed(call); };
        if (!report.ListVms()) return failed("GetVMInfoList");
        std::vector<SContainerInfoLib> compartments;
        if (!facade->GetContainerInfoList(compartments, "", "")) return failed("GetContainerInfoList");
        out << "compartments";
        for (const SContainerInfoLib& c : compartments) out << " " << c.name;
        out << "\n";

        // A volume (the library waits for it), a backup of it, a volume made from the backup.
        const std::string web1 = FindResourceId("instance", "ocw-web-1");
        SDiskInfoLib disk;
        disk.volumeName = "conc-" + tag;
        disk.sizeBytes = 50ULL << 30;
        disk.availabilityDomain = ResourceMember(web1, "availabilityDomain");
        disk.compartmentId = ResourceMember(web1, "compartmentId");
        if (!facade->CreateVolume(disk, "")) return failed("CreateVolume");
        out << "volume " << disk.status << "\n";
        std::string backup;
        if (!facade->CreateVolumeSnapshot(disk.guid, "concurrent", "conc-" + tag + "-backup", backup)) {
            return failed("CreateVolumeSnapshot");
        }
        out << "backup " << PollUntil("AVAILABLE", [&](std::string& s) { return facade->GetSnapshotStatus(backup, s); })
            << " named " << ResourceMember(backup, "displayName") << "\n";
        std::string copy;
        if (!facade->CreateVolumeFromSnapshot(backup, "conc-" + tag + "-copy", copy)) {
            return failed("CreateVolumeFromSnapshot");
        }
        out << "copy " << PollUntil("AVAILABLE", [&](std::string& s) { return facade->GetVolumeStatus(copy, s); })
            << " named " << ResourceMember(copy, "displayName") << "\n";
        if (!facade->DeleteVolume(copy)) return failed("DeleteVolume copy");
        if (!facade->DeleteVolumeSnapshot(backup)) return failed("DeleteVolumeSnapshot");
        if (!facade->DeleteVolume(disk.guid)) return failed("DeleteVolume");
        out << "deleted\n";
        return Untagged(out.str(), tag);
    }

    std::string ClassicJob(const std::string& tag) {
        auto facade = ConnectClassicFacade();
        if (!facade) return "connect failed";
        Report report{*facade, {}};
        std::ostringstream& out = report.out;
        auto failed = [&report](const char* call) { return report.Failed(call); };
        if (!report.ListVms()) return failed("GetVMInfoList");
        std::vector<SKeyPairInfoLib> keys;
        if (!facade->GetKeyPairList(keys)) return failed("GetKeyPairList");
        std::vector<SNetworkInfoLib> networks;
        if (!facade->GetNetworkList(networks, "", "", "")) return failed("GetNetworkList");
        out << keys.size() << " keys, " << networks.size() << " networks\n";

        SDiskInfoLib disk;
        disk.volumeName = "conc-" + tag;
        disk.sizeBytes = 10ULL << 30;
        if (!facade->CreateVolume(disk, "")) return failed("CreateVolume");
        out << "volume " << disk.name << " " << disk.status << "\n";
        std::string snapshot;
        if (!facade->CreateVolumeSnapshot(disk.name, "concurrent", "backup", snapshot)) {
            return failed("CreateVolumeSnapshot");
        }
        out << "snapshot " << snapshot << " "
            << PollUntil("completed", [&](std::string& s) { return facade->GetSnapshotStatus(snapshot, s); }) << "\n";
        std::string copy;
        if (!facade->CreateVolumeFromSnapshot(snapshot, "conc-" + tag + "-copy", copy)) {
            return failed("CreateVolumeFromSnapshot");
        }
        out << "copy " << copy << " "
            << PollUntil("Online", [&](std::string& s) { return facade->GetVolumeStatus(copy, s); }) << "\n";
        if (!facade->DeleteVolume(copy)) return failed("DeleteVolume copy");
        if (!facade->DeleteVolumeSnapshot(snapshot)) return failed("DeleteVolumeSnapshot");
        if (!facade->DeleteVolume(disk.name)) return failed("DeleteVolume");
        out << "deleted\n";
        return Untagged(out.str(), tag);
    }

    std::string PaaSJob(const std::string&) {
        auto facade = ConnectPaaSFacade();
        if (!facade) return "connect failed";
        std::ostringstream out;
        std::vector<SOracleDBInstanceInfoLib> databases;
        if (!facade->GetDBInstanceList(databases)) return "FAILED GetDBInstanceList: " + facade->GetLastError();
        for (const SOracleDBInstanceInfoLib& db : databases) out << db.serviceName << ":" << db.status << " ";
        std::vector<SOracleSSHKeyLib> keys;
        if (!facade->GetSSHKeysList(keys)) return out.str() + " FAILED GetSSHKeysList: " + facade->GetLastError();
        for (const SOracleSSHKeyLib& key : keys) out << key.computeKeyName << " ";
        return out.str();
    }
};

TEST_F(Concurrency, OciAndClassicFacadesOnNineThreadsEachSeeWhatTheirJobSeesAlone) {
    const std::vector<std::pair<std::string, Job>> kinds{
        {"oci", [this](const std::string& tag) { return OciJob(tag); }},
        {"classic", [this](const std::string& tag) { return ClassicJob(tag); }},
        {"paas", [this](const std::string& tag) { return PaaSJob(tag); }},
    };
    std::map<std::string, std::string> alone;
    for (const auto& kind : kinds) {
        alone[kind.first] = kind.second("alone");
        ASSERT_EQ(alone[kind.first].find("FAILED"), std::string::npos) << alone[kind.first];
    }

    ResetEmulator("demo");
    ClearRequestLog();
    // Four OCI and four Classic agents and one PaaS agent at once.
    struct Agent {
        std::string kind;
        std::string tag;
        std::string result;
    };
    std::vector<Agent> agents;
    for (int i = 0; i < 4; ++i) {
        agents.push_back({"oci", "t" + std::to_string(i), ""});
        agents.push_back({"classic", "t" + std::to_string(i), ""});
    }
    agents.push_back({"paas", "t", ""});

    // The expired sessions' 401 answers are logged as errors: kept out of the output.
    ocwtest::LogCapture quiet(0);
    std::atomic<bool> done{false};
    std::atomic<int> expiries{0};
    // Every Classic session ends again and again while the agents run: each
    // Classic call may meet an expired cookie and must log in anew unseen.
    std::thread expirer([&] {
        while (!done.load()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            ExpireClassicSessions();
            ++expiries;
        }
    });
    std::vector<std::thread> threads;
    for (Agent& agent : agents) {
        const Job& job =
            std::find_if(kinds.begin(), kinds.end(), [&](const auto& k) { return k.first == agent.kind; })->second;
        threads.emplace_back([&agent, &job] { agent.result = job(agent.tag); });
    }
    for (std::thread& t : threads) t.join();
    done = true;
    expirer.join();

    for (const Agent& agent : agents) {
        EXPECT_EQ(agent.result, alone[agent.kind]) << agent.kind << " agent " << agent.tag;
    }
    EXPECT_GT(expiries.load(), 0);
    // Sessions did end under the Classic agents: they logged in again.
    EXPECT_GT(CountRequests("POST", "/authenticate/"), 4u);
}

}  // namespace
