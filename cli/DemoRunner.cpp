#include "DemoRunner.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>

#include "DemoClassic.h"
#include "DemoSteps.h"
#include "EmulatorProcess.h"
#include "Interrupt.h"
#include "Progress.h"
#include "Walk.h"

namespace ocw {

using OracleCloudSDKWrapper::COracleCloudWrapper;
using OracleCloudSDKWrapper::SDiskInfoLib;
using OracleCloudSDKWrapper::SVMInfoLib;

namespace {

const unsigned long long kDisksAndNetwork = 16 | 32;

std::string MakeStateDir() {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/ocw-demo-XXXXXX";
    if (::mkdtemp(&pattern[0]) == nullptr) throw CliError(kExitFailure, "cannot create a temporary directory");
    return pattern;
}

std::string Gb(unsigned long long bytes) { return std::to_string(bytes >> 30) + " GB"; }

// A stand-in for the disk image an agent would upload: a VMDK descriptor
// followed by zeroed sectors.
std::string DemoDiskImage() {
    std::string image =
        "# Disk DescriptorFile\nversion=1\nCID=fffffffe\nparentCID=ffffffff\ncreateType=\"monolithicSparse\"\n"
        "# Extent description\nRW 2048 SPARSE \"ocw-demo.vmdk\"\n";
    image.resize(64 * 1024, '\0');
    return image;
}

// The state of one walk through the cycle; each step fills what later steps
// and the clean-up need.
class Cycle {
public:
    Cycle(Session& session, DemoSteps& steps)
        : s_(session), steps_(steps), stamp_(std::to_string(std::time(nullptr))), cleanup_(steps) {}

    bool run() {
        return connect() && listCompartments() && listInstances() && pickInstance() && snapshotVolumes() &&
               restoreToHelper() && revertToIntegritySnapshot() && importImage() && launchRestoredInstance();
    }

    // Removes what the cycle created, newest first; every item is tried.
    void cleanUp() { cleanup_.run(); }

private:
    size_t onCleanup(const std::string& title, std::function<std::string()> action) {
        return cleanup_.add(title, std::move(action));
    }

    bool connect() {
        return steps_.run("connect with the throw-away OCI config", [&] {
            s_.cloud();
            return "profile [" + s_.profile().name + "], region " + s_.profile().region + ", tenancy " +
                   ShortId(s_.profile().tenancy);
        });
    }

    bool listCompartments() {
        return steps_.run("list compartments", [&] {
            const auto compartments = AllCompartments(s_);
            std::string names;
            for (const auto& c : compartments) names += (names.empty() ? "" : ", ") + c.name;
            return std::to_string(compartments.size()) + ": " + names;
        });
    }

    bool listInstances() {
        return steps_.run("list instances", [&] {
            instances_ = ListInstances(s_, "");
            size_t running = 0;
            for (const SVMInfoLib& vm : instances_) running += vm.state == "RUNNING" ? 1 : 0;
            return std::to_string(instances_.size()) + " instances, " + std::to_string(running) + " running";
        });
    }

    bool pickInstance() {
        return steps_.run("pick a running instance with a block volume", [&] {
            for (const SVMInfoLib& candidate : instances_) {
                if (candidate.state != "RUNNING") continue;
                SVMInfoLib vm;
                s_.call("read instance " + candidate.vmName,
                        [&](COracleCloudWrapper& c) { return c.GetVMInfo("", candidate.guid, vm, kDisksAndNetwork, ""); });
                const SDiskInfoLib* boot = nullptr;
                const SDiskInfoLib* block = nullptr;
                for (const SDiskInfoLib& d : vm.disks) (d.bootable ? boot : block) = &d;
                if (boot == nullptr || block == nullptr) continue;
                vm_ = vm;
                boot_ = *boot;
                block_ = *block;
                for (const auto& vnic : vm.vnics) {
                    if (subnet_.empty()) subnet_ = vnic.subnetId;
                }
                return vm.vmName + ": boot volume " + Gb(boot_.sizeBytes) + ", block volume " + block_.name + " " +
                       Gb(block_.sizeBytes);
            }
            throw CliError(kExitNotFound, "no running instance has both a boot and a block volume attached");
        });
    }

    std::string snapshot(const SDiskInfoLib& disk, const std::string& kind, bool integrity, std::string& backup) {
        const std::string name = "ocw-demo-" + kind + "-" + stamp_;
        s_.call("snapshot " + disk.guid, [&](COracleCloudWrapper& c) {
            return integrity ? c.CreateIntegritySnapshot(disk.guid, "taken by ocw demo", name, backup)
                             : c.CreateVolumeSnapshot(disk.guid, "taken by ocw demo", name, backup);
        });
        const std::string id = backup;
        onCleanup("delete the " + kind + " backup", [this, id] {
            s_.call("delete backup " + id, [&](COracleCloudWrapper& c) { return c.DeleteVolumeSnapshot(id); });
            return ShortId(id);
        });
        s_.waitFor({"backup " + name, id, [&](std::string& st) { return s_.cloud().GetSnapshotStatus(id, st); },
                    {"AVAILABLE"}, {"FAULTY", "TERMINATED"}});
        return ShortId(id) + " AVAILABLE";
    }

    bool snapshotVolumes() {
        return steps_.run("snapshot its boot volume", [&] {
                   return snapshot(boot_, "boot", false, bootBackup_);
               }) &&
               steps_.run("snapshot its block volume", [&] {
                   return snapshot(block_, "data", false, blockBackup_);
               });
    }

    bool restoreToHelper() {
        const bool created = steps_.run("create a volume from the block volume's backup", [&] {
            const std::string name = "ocw-demo-restored-" + stamp_;
            s_.call("create volume from " + blockBackup_,
                    [&](COracleCloudWrapper& c) { return c.CreateVolumeFromSnapshot(blockBackup_, name, restored_); });
            WaitForVolume(s_, restored_, "volume " + name);
            onCleanup("delete the restored volume", [this] {
                const std::string id = restored_;
                s_.call("delete volume " + id, [&](COracleCloudWrapper& c) { return c.DeleteVolume(id); });
                return ShortId(id);
            });
            return name + " = " + ShortId(restored_);
        });
        if (!created) return false;
        const bool attached = steps_.run("attach it to a helper instance (backup proxy)", [&] {
            for (const SVMInfoLib& vm : instances_) {
                if (vm.state == "RUNNING" && vm.guid != vm_.guid && vm.availabilityDomain == vm_.availabilityDomain) {
                    helper_ = vm;
                    break;
                }
            }
            if (helper_.guid.empty()) throw CliError(kExitNotFound, "no second running instance in " + vm_.availabilityDomain);
            OracleCloudSDKWrapper::SStorageAttachmentInfoLib attachment;
            attachment.attachmentType = "iscsi";
            bool noFreeSlot = false;
            s_.call("attach " + restored_ + " to " + helper_.vmName, [&](COracleCloudWrapper& c) {
                return c.AttachVolume(restored_, helper_.guid, noFreeSlot, attachment);
            });
            detachCleanup_ = onCleanup("detach the restored volume", [this] {
                s_.call("detach " + restored_, [&](COracleCloudWrapper& c) { return c.DetachVolume(restored_, helper_.guid); });
                return std::string("DETACHED");
            });
            // The proxy must see the volume, as large as the one backed up.
            SVMInfoLib proxy;
            s_.call("read instance " + helper_.vmName,
                    [&](COracleCloudWrapper& c) { return c.GetVMInfo("", helper_.guid, proxy, kDisksAndNetwork, ""); });
            const SDiskInfoLib* seen = nullptr;
            for (const SDiskInfoLib& d : proxy.disks) {
                if (d.guid == restored_) seen = &d;
            }
            if (seen == nullptr) throw CliError(kExitFailure, helper_.vmName + " does not list the attached volume");
            if (seen->sizeBytes != block_.sizeBytes) {
                throw CliError(kExitFailure, "the restored volume has " + Gb(seen->sizeBytes) + ", the original " +
                                                 Gb(block_.sizeBytes));
            }
            std::string where = helper_.vmName + " sees " + Gb(seen->sizeBytes);
            if (!attachment.iscsiIpv4.empty()) {
                where += ", iSCSI " + attachment.iscsiIpv4 + ":" + attachment.iscsiPort + " " + attachment.iscsiIqn;
            }
            return where;
        });
        if (!attached) return false;
        return steps_.run("detach it from the helper", [&] {
            s_.call("detach " + restored_ + " from " + helper_.vmName,
                    [&](COracleCloudWrapper& c) { return c.DetachVolume(restored_, helper_.guid); });
            cleanup_.cancel(detachCleanup_);
            return std::string("DETACHED");
        });
    }

    bool revertToIntegritySnapshot() {
        const bool taken = steps_.run("take an integrity snapshot of the restored volume", [&] {
            SDiskInfoLib disk;
            disk.guid = restored_;
            return snapshot(disk, "integrity", true, integrityBackup_);
        });
        return taken && steps_.run("revert the volume to its integrity snapshot", [&] {
            std::string replacement;
            const std::string old = restored_;
            s_.call("revert " + old + " to " + integrityBackup_, [&](COracleCloudWrapper& c) {
                return c.RevertToIntegritySnapshot(old, integrityBackup_, replacement);
            });
            // From here on the clean-up deletes the replacement.
            restored_ = replacement;
            WaitForVolume(s_, restored_, "replacement volume");
            std::string oldState = "unknown";
            s_.attempt("read volume " + old, [&](COracleCloudWrapper& c) { return c.GetVolumeStatus(old, oldState); });
            return ShortId(replacement) + " AVAILABLE, " + ShortId(old) + " " + oldState;
        });
    }

    bool importImage() {
        const bool uploaded = steps_.run("upload a disk image to object storage", [&] {
            std::vector<OracleCloudSDKWrapper::SStorageBucketInfoLib> buckets;
            s_.call("list buckets", [&](COracleCloudWrapper& c) {
                return c.GetBucketListForCompartment(buckets, vm_.compartmentId, 0, "");
            });
            if (buckets.empty()) throw CliError(kExitNotFound, "the instance's compartment has no bucket");
            bucket_ = buckets.front().name;
            object_ = "ocw-demo-restore-" + stamp_ + ".vmdk";
            const std::string content = DemoDiskImage();
            s_.call("upload " + object_, [&](COracleCloudWrapper& c) { return c.UploadToObjectStorage(bucket_, object_, content); });
            onCleanup("delete the uploaded object", [this] {
                s_.call("delete " + object_, [&](COracleCloudWrapper& c) { return c.DeleteStorageObject(bucket_, object_); });
                return bucket_ + "/" + object_;
            });
            return bucket_ + "/" + object_ + " (" + std::to_string(content.size() / 1024) + " KiB)";
        });
        return uploaded && steps_.run("import it as a custom image", [&] {
            OracleCloudSDKWrapper::SImageInfoLib image;
            image.displayName = "ocw-demo-image-" + stamp_;
            image.compartmentId = vm_.compartmentId;
            image.launchMode = "PARAVIRTUALIZED";
            s_.call("import " + object_, [&](COracleCloudWrapper& c) { return c.CreateImage(bucket_, object_, image); });
            image_ = image.id;
            onCleanup("delete the image", [this] {
                s_.call("delete image " + image_, [&](COracleCloudWrapper& c) { return c.DeleteImage(image_); });
                return ShortId(image_);
            });
            s_.waitFor({"import " + image.displayName, image_,
                        [&](std::string& st) {
                            bool completed = false;
                            if (!s_.cloud().IsImageImportOperationCompleted(image_, completed, "")) return false;
                            st = completed ? "AVAILABLE" : "IMPORTING";
                            return true;
                        },
                        {"AVAILABLE"},
                        {}});
            return image.displayName + " = " + ShortId(image_) + " AVAILABLE";
        });
    }

    bool launchRestoredInstance() {
        return steps_.run("launch a restored instance from the image", [&] {
            SVMInfoLib vm;
            vm.vmName = "ocw-demo-restored-" + stamp_;
            vm.shape = vm_.shape;
            vm.cpuCount = vm_.cpuCount;
            vm.memoryMB = vm_.memoryMB;
            vm.compartmentId = vm_.compartmentId;
            vm.availabilityDomain = vm_.availabilityDomain;
            vm.imageId = image_;
            if (!subnet_.empty()) {
                OracleCloudSDKWrapper::SVNicInfoLib vnic;
                vnic.subnetId = subnet_;
                vm.vnics.push_back(vnic);
            }
            s_.call("launch " + vm.vmName, [&](COracleCloudWrapper& c) { return c.LaunchInstance(vm); });
            launched_ = vm.guid;
            onCleanup("terminate the restored instance", [this] { return terminateLaunched(); });
            return vm.vmName + " = " + ShortId(launched_) + " RUNNING (" + vm.shape + ")";
        });
    }

    // Termination keeps the boot volume, so it is looked up first and deleted after.
    std::string terminateLaunched() {
        OracleCloudSDKWrapper::SStorageAttachmentInfoLib boot;
        const bool haveBoot = s_.attempt("find the boot volume", [&](COracleCloudWrapper& c) {
            return c.GetBootVolumeAttachmentForInstance(vm_.availabilityDomain, vm_.compartmentId, launched_, boot);
        });
        s_.call("terminate " + launched_, [&](COracleCloudWrapper& c) { return c.DeleteVM("", launched_, true, true); });
        if (!haveBoot || boot.volumeName.empty()) return "TERMINATED (boot volume not found)";
        s_.call("delete boot volume " + boot.volumeName,
                [&](COracleCloudWrapper& c) { return c.DeleteVolume(boot.volumeName); });
        return "TERMINATED, boot volume " + ShortId(boot.volumeName) + " deleted";
    }

    Session& s_;
    DemoSteps& steps_;
    const std::string stamp_;
    DemoCleanup cleanup_;
    std::vector<SVMInfoLib> instances_;
    SVMInfoLib vm_;
    SVMInfoLib helper_;
    SDiskInfoLib boot_;
    SDiskInfoLib block_;
    std::string subnet_;
    std::string bootBackup_, blockBackup_, integrityBackup_;
    std::string restored_;
    size_t detachCleanup_ = 0;
    std::string bucket_, object_, image_, launched_;
};

// The emulator's profile [DEFAULT] of configFile, its agent configuration,
// and the user's verbosity.
GlobalOptions DemoProfile(const GlobalOptions& global, const std::string& configFile, const std::string& ini) {
    GlobalOptions demo;
    demo.configFile = configFile;
    demo.profile = "DEFAULT";
    demo.ini = ini;
    demo.verbosity = global.verbosity;
    return demo;
}

void Heading(const GlobalOptions& global, const std::string& cloud) {
    if (global.json) return;
    std::printf(cloud.empty() ? "\n" : "\n%s\n", cloud.c_str());
    std::fflush(stdout);
}

}  // namespace

int RunDemo(const GlobalOptions& global, const DemoOptions& options) {
    const auto start = std::chrono::steady_clock::now();
    // Steps print their own lines; a live progress line would tear them.
    Progress::SetEnabled(false);
    if (!global.json) {
        std::printf("ocw demo: backup-and-restore cycles through the library, against a local emulator of both clouds\n");
        std::fflush(stdout);
    }
    DemoSteps steps(global.json);
    EmulatorProcess emulator;
    std::string stateDir;
    const int interruptHandle = Interrupt::Add([&emulator, &stateDir] {
        emulator.stop();
        std::error_code ec;
        if (!stateDir.empty()) std::filesystem::remove_all(stateDir, ec);
    });

    const bool started = steps.run("start the emulator", [&] {
        std::string searched;
        const std::string binary = EmulatorProcess::FindBinary(searched);
        if (binary.empty()) throw CliError(kExitFailure, "ocw-emulator not found (looked at " + searched + ")");
        stateDir = MakeStateDir();
        std::string error;
        if (!emulator.start(binary, {"--listen", "127.0.0.1:0", "--seed", "demo", "--provision-ms",
                                     std::to_string(options.provisionMs)},
                            stateDir, 30000, error)) {
            throw CliError(kExitFailure, error);
        }
        return emulator.info().endpoint + " (CA, API key, oci-config and ocw.ini in " + stateDir + ")";
    });

    if (started) {
        const bool oci = options.cloud != "classic";
        const bool classic = options.cloud != "oci";
        if (oci) {
            Heading(global, "OCI");
            const GlobalOptions demo = DemoProfile(global, emulator.info().ociConfig, emulator.info().ini);
            // The facade (and its keep-alive connection) is gone before the
            // emulator stops, which would otherwise wait for the connection.
            Session session(demo);
            session.setInterruptHints(false);
            Interrupt::SetHint("stopping the emulator and removing its files");
            Cycle cycle(session, steps);
            cycle.run();
            cycle.cleanUp();
        }
        if (classic) {
            Heading(global, "Cloud Classic");
            const GlobalOptions demo = DemoProfile(global, emulator.info().classicProfile, emulator.info().ini);
            Session compute(demo);
            Session paas(demo);
            compute.setInterruptHints(false);
            paas.setInterruptHints(false);
            Interrupt::SetHint("stopping the emulator and removing its files");
            if (demo.configFile.empty()) {
                steps.run("read the emulator's Classic profile", []() -> std::string {
                    throw CliError(kExitFailure, "the emulator names no classic_profile");
                });
            } else {
                RunClassicCycle(compute, paas, steps, stateDir + "/captured");
            }
        }
        Heading(global, "");
        steps.run("stop the emulator", [&] {
            emulator.stop();
            return std::string("stopped");
        });
    }
    Interrupt::Remove(interruptHandle);
    emulator.stop();
    if (!stateDir.empty()) {
        std::error_code ec;
        std::filesystem::remove_all(stateDir, ec);
    }

    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (global.json) {
        std::cout << boost::json::serialize(boost::json::object{
                         {"ok", steps.allOk()}, {"seconds", seconds}, {"steps", steps.toJson()}})
                  << '\n';
    } else if (steps.allOk()) {
        std::printf("\nThe cycle completed: %zu steps in %.1f s, everything it created was removed.\n", steps.count(),
                    seconds);
    } else {
        std::printf("\nThe cycle FAILED (see the steps above); %.1f s.\n", seconds);
    }
    std::fflush(stdout);
    return steps.firstFailure();
}

}  // namespace ocw
