#include "DemoClassic.h"

#include <sys/stat.h>

#include <ctime>
#include <fstream>
#include <map>
#include <sstream>

#include "ClassicJson.h"
#include "ClassicWalk.h"
#include "PaaSJobs.h"

namespace ocw {

using OracleCloudSDKWrapper::COracleCloudWrapper;
using OracleCloudSDKWrapper::SDiskInfoLib;
using OracleCloudSDKWrapper::SVMInfoLib;

namespace {

std::string Gb(unsigned long long bytes) { return std::to_string(bytes >> 30) + " GB"; }

// One snapshot and the volume restored from it.
struct Copy {
    SDiskInfoLib original;
    std::string snapshot;
    std::string volume;
};

class ClassicCycle {
public:
    ClassicCycle(Session& compute, DemoSteps& steps, std::string workDir)
        : s_(compute), steps_(steps), workDir_(std::move(workDir)), stamp_(std::to_string(std::time(nullptr))),
          cleanup_(steps) {}

    bool run() {
        return connect() && listInstances() && capture() && snapshotVolumes() && restoreVolumes() &&
               attachToHelper() && detachFromHelper() && redeploy();
    }
    void cleanUp() { cleanup_.run(); }

private:
    bool connect() {
        return steps_.run("connect with the Classic profile", [&] {
            s_.cloud();
            const ClassicProfile& p = s_.classicProfile();
            return "/Compute-" + p.identityDomain + "/" + p.user + " at " + p.computeEndpoint +
                   " (session cookie; password from " + p.passwordSource + ")";
        });
    }

    bool listInstances() {
        return steps_.run("list instances (a walk of the directories)", [&] {
            instances_ = ListClassicInstances(s_, false);
            std::string names;
            for (const SVMInfoLib& vm : instances_) names += (names.empty() ? "" : ", ") + vm.vmName + " " + vm.state;
            return std::to_string(instances_.size()) + ": " + names;
        });
    }

    // The instance to protect is one that an orchestration started: its
    // orchestrations are what a redeployment needs.
    bool capture() {
        return steps_.run("capture an instance's config and orchestrations", [&] {
            ::mkdir(workDir_.c_str(), 0700);
            for (const SVMInfoLib& candidate : instances_) {
                if (candidate.state != "running") continue;
                std::map<std::string, std::string> configs;
                s_.call("capture the configuration of " + candidate.fullName, [&](COracleCloudWrapper& c) {
                    return c.GetInstanceConfigurations(candidate.fullName, configs);
                });
                if (configs["_instance.json"].empty()) continue;
                size_t bytes = 0;
                for (const auto& document : configs) {
                    std::ofstream out(workDir_ + "/" + candidate.vmName + document.first, std::ios::trunc);
                    out << document.second;
                    if (!out) throw CliError(kExitFailure, "cannot write into " + workDir_);
                    bytes += document.second.size();
                }
                vm_ = ReadClassicInstance(s_, candidate.fullName, 16);
                return vm_.vmName + ": " + std::to_string(configs.size()) + " documents (" + std::to_string(bytes) +
                       " bytes) in " + workDir_;
            }
            throw CliError(kExitNotFound, "no running instance was started by an orchestration");
        });
    }

    bool snapshotVolumes() {
        return steps_.run("snapshot its volumes, wait until completed", [&] {
            for (const SDiskInfoLib& disk : vm_.disks) {
                Copy copy;
                copy.original = disk;
                const std::string volume = disk.name.empty() ? disk.volumeName : disk.name;
                s_.call("snapshot " + volume, [&](COracleCloudWrapper& c) {
                    return c.CreateVolumeSnapshot(volume, "taken by ocw demo", "ocw-demo-" + stamp_, copy.snapshot);
                });
                const std::string snapshot = copy.snapshot;
                cleanup_.add("delete the snapshot", [this, snapshot] {
                    s_.call("delete snapshot " + snapshot,
                            [&](COracleCloudWrapper& c) { return c.DeleteVolumeSnapshot(snapshot); });
                    return snapshot;
                });
                copies_.push_back(copy);
            }
            if (copies_.empty()) throw CliError(kExitNotFound, vm_.vmName + " has no volumes");
            std::string detail;
            for (const Copy& copy : copies_) {
                WaitForClassicSnapshot(s_, copy.snapshot, "snapshot " + copy.snapshot);
                detail += (detail.empty() ? "" : ", ") + ClassicShortName(copy.original.name) + " -> " +
                          copy.snapshot.substr(copy.snapshot.rfind('/', copy.snapshot.rfind('/') - 1) + 1);
            }
            return detail + " completed";
        });
    }

    bool restoreVolumes() {
        return steps_.run("volumes from the snapshots, wait until Online", [&] {
            std::string detail;
            for (Copy& copy : copies_) {
                const std::string name = ClassicShortName(copy.original.name) + "-restored-" + stamp_;
                s_.call("create volume " + name + " from " + copy.snapshot, [&](COracleCloudWrapper& c) {
                    return c.CreateVolumeFromSnapshot(copy.snapshot, name, copy.volume);
                });
                const std::string volume = copy.volume;
                cleanup_.add("delete the restored volume", [this, volume] {
                    s_.call("delete volume " + volume, [&](COracleCloudWrapper& c) { return c.DeleteVolume(volume); });
                    return volume;
                });
                WaitForClassicVolume(s_, copy.volume, "volume " + name);
                detail += (detail.empty() ? "" : ", ") + name + " " + Gb(copy.original.sizeBytes);
            }
            return detail;
        });
    }

    bool attachToHelper() {
        return steps_.run("attach them to a helper instance (backup proxy)", [&] {
            for (const SVMInfoLib& vm : instances_) {
                if (vm.state == "running" && vm.fullName != vm_.fullName) {
                    helper_ = vm;
                    break;
                }
            }
            if (helper_.fullName.empty()) throw CliError(kExitNotFound, "no second running instance");
            for (const Copy& copy : copies_) {
                bool noFreeIndex = false;
                const bool ok = s_.attempt("attach " + copy.volume + " to " + helper_.vmName, [&](COracleCloudWrapper& c) {
                    return c.AttachVolume(copy.volume, helper_.fullName, noFreeIndex);
                });
                if (!ok && noFreeIndex) throw CliError(kExitFailure, helper_.vmName + " has no free disk slot");
                if (!ok) throw s_.failure("attach " + copy.volume + " to " + helper_.vmName);
            }
            detachCleanup_ = cleanup_.add("detach the restored volumes", [this] { return detachAll(); });
            // The proxy must see each volume, as large as the one backed up.
            const SVMInfoLib proxy = ReadClassicInstance(s_, helper_.fullName, 16);
            std::string detail;
            for (const Copy& copy : copies_) {
                const SDiskInfoLib* seen = nullptr;
                for (const SDiskInfoLib& d : proxy.disks) {
                    if (d.name == copy.volume || d.volumeName == copy.volume) seen = &d;
                }
                if (seen == nullptr) throw CliError(kExitFailure, helper_.vmName + " does not list " + copy.volume);
                if (seen->sizeBytes != copy.original.sizeBytes) {
                    throw CliError(kExitFailure, ClassicShortName(copy.volume) + " has " + Gb(seen->sizeBytes) +
                                                     ", the original " + Gb(copy.original.sizeBytes));
                }
                detail += (detail.empty() ? "" : ", ") + helper_.vmName + " sees " + ClassicShortName(copy.volume) +
                          " as disk " + std::to_string(seen->index) + " (" + Gb(seen->sizeBytes) + ")";
            }
            return detail;
        });
    }

    std::string detachAll() {
        std::vector<std::string> volumes;
        for (const Copy& copy : copies_) volumes.push_back(copy.volume);
        s_.call("detach the restored volumes from " + helper_.vmName,
                [&](COracleCloudWrapper& c) { return c.DetachVolumes(volumes, helper_.fullName); });
        return std::to_string(volumes.size()) + " detached";
    }

    bool detachFromHelper() {
        return steps_.run("detach them from the helper", [&] {
            const std::string detail = detachAll();
            cleanup_.cancel(detachCleanup_);
            return detail;
        });
    }

    // A new instance from the saved _instance orchestration, booting from
    // the restored copy of the boot volume.
    bool redeploy() {
        return steps_.run("redeploy the instance from its saved orchestration", [&] {
            std::ifstream in(workDir_ + "/" + vm_.vmName + "_instance.json");
            std::ostringstream text;
            text << in.rdbuf();
            SVMInfoLib saved;
            const std::string document = text.str();
            s_.call("read the saved orchestration",
                    [&](COracleCloudWrapper& c) { return c.ReadInstanceOrchestration(document, saved); });
            std::string boot;
            for (const Copy& copy : copies_) {
                if (copy.original.bootable || copy.original.index == 1) boot = copy.volume;
            }
            if (boot.empty()) throw CliError(kExitNotFound, vm_.vmName + " has no boot volume");
            s_.call("make " + boot + " bootable", [&](COracleCloudWrapper& c) { return c.MakeVolumeBootable(boot); });
            saved.vmName = vm_.vmName + "-restored-" + stamp_;
            for (SDiskInfoLib& d : saved.disks) {
                if (d.bootable || d.index == 1) d.volumeName = boot;
            }
            s_.call("redeploy " + saved.vmName,
                    [&](COracleCloudWrapper& c) { return c.DeployVMFromOrchestration(saved); });
            const std::string full = saved.fullName;
            cleanup_.add("delete the redeployed instance", [this, full] {
                s_.call("delete instance " + full, [&](COracleCloudWrapper& c) { return c.DeleteVM(full, "", false, true); });
                return full;
            });
            return saved.vmName + " " + saved.state + " on " + ClassicShortName(boot) + " (orchestration " +
                   ClassicShortName(full.substr(0, full.rfind('/'))) + "_master)";
        });
    }

    Session& s_;
    DemoSteps& steps_;
    const std::string workDir_;
    const std::string stamp_;
    DemoCleanup cleanup_;
    std::vector<SVMInfoLib> instances_;
    SVMInfoLib vm_;
    SVMInfoLib helper_;
    std::vector<Copy> copies_;
    size_t detachCleanup_ = 0;
};

bool DatabaseBackup(Session& paas, DemoSteps& steps) {
    return steps.run("back up a database service, follow its job", [&] {
        paas.setService(ServiceOf(PaaSKind::Database));
        std::vector<OracleCloudSDKWrapper::SOracleDBInstanceInfoLib> services;
        paas.call("list database services", [&](COracleCloudWrapper& c) { return c.GetDBInstanceList(services); });
        if (services.empty()) throw CliError(kExitNotFound, "the account has no database service");
        const OracleCloudSDKWrapper::SOracleDBInstanceInfoLib& db = services.front();
        std::string uri, info;
        paas.call("back up " + db.serviceName, [&](COracleCloudWrapper& c) {
            return c.BackupDBInstance(db, OracleCloudSDKWrapper::SPaaSBackupRestoreOptionsLib(), uri, info);
        });
        const boost::json::object job = FollowJob(paas, PaaSKind::Database, uri, "backup of " + db.serviceName);
        std::string tag;
        if (const boost::json::value* t = job.if_contains("tag")) tag = t->as_string().c_str();
        return db.serviceName + ": job " + ClassicShortName(uri) + " " + job.at("status").as_string().c_str() +
               (tag.empty() ? std::string() : ", tag " + tag);
    });
}

}  // namespace

bool RunClassicCycle(Session& compute, Session& paas, DemoSteps& steps, const std::string& workDir) {
    ClassicCycle cycle(compute, steps, workDir);
    const bool ok = cycle.run();
    cycle.cleanUp();
    return DatabaseBackup(paas, steps) && ok;
}

}  // namespace ocw
