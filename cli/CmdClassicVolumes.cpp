// Cloud Classic: volumes list|show|create|snapshot|restore|attach|detach|
// bootable|delete and snapshots show|delete. Volumes and snapshots are named
// as the cloud names them, or by the part after the account's path
// ("web1-data", "web1-data/nightly").
#include <cctype>
#include <ctime>
#include <iostream>
#include <memory>

#include "ClassicJson.h"
#include "ClassicWalk.h"
#include "Commands.h"
#include "InFlight.h"
#include "Output.h"
#include "Progress.h"

namespace ocw {

using boost::json::object;
using OracleCloudSDKWrapper::COracleCloudWrapper;
using OracleCloudSDKWrapper::SDiskInfoLib;
using OracleCloudSDKWrapper::SVMInfoLib;

namespace {

// The library reads Classic volumes through the instances that use them.
void RunList(Session& s, const std::string& instance) {
    std::vector<SVMInfoLib> vms;
    if (instance.empty()) {
        vms = ListClassicInstances(s, true);
    } else {
        vms.push_back(ReadClassicInstance(s, instance));
    }
    ListOutput out({{"name", "NAME"},
                    {"sizeInGBs", "SIZE_GB"},
                    {"bootable", "BOOT"},
                    {"index", "INDEX"},
                    {"instance", "INSTANCE"},
                    {"fullName", "FULL_NAME"}});
    for (const SVMInfoLib& vm : vms) {
        for (const SDiskInfoLib& d : vm.disks) {
            object row = ClassicDiskJson(d);
            row["instance"] = vm.vmName;
            out.add(std::move(row));
        }
    }
    out.print(std::cout, s.json());
}

void RunShow(Session& s, const std::string& name) {
    const std::string full = ClassicFullName(s, name);
    std::string state;
    s.call("read volume " + full, [&](COracleCloudWrapper& c) { return c.GetVolumeStatus(full, state); });
    PrintRecord(std::cout, object{{"fullName", full}, {"state", state}}, s.json());
}

struct CreateOptions {
    std::string name, description;
    unsigned long long sizeGb = 0;
};

void RunCreate(Session& s, const CreateOptions& o) {
    SDiskInfoLib disk;
    disk.volumeName = o.name;
    disk.sizeBytes = o.sizeGb << 30;
    disk.description = o.description;
    {
        Progress progress("create volume " + o.name);
        s.call("create volume " + o.name, [&](COracleCloudWrapper& c) { return c.CreateVolume(disk, ""); });
    }
    PrintResult(std::cout, "Created volume " + disk.name + " (" + disk.status + ")",
                object{{"fullName", disk.name}, {"state", disk.status}, {"sizeInGBs", o.sizeGb}}, s.json());
}

struct SnapshotOptions {
    std::string volume, name, description;
    bool noWait = false;
};

void RunSnapshot(Session& s, const SnapshotOptions& o) {
    const std::string volume = ClassicFullName(s, o.volume);
    const std::string name = o.name.empty() ? "ocw-" + std::to_string(std::time(nullptr)) : o.name;
    // Compute Classic refuses a snapshot without a description.
    const std::string description = o.description.empty() ? "taken by ocw" : o.description;
    std::string snapshot;
    s.call("snapshot volume " + volume,
           [&](COracleCloudWrapper& c) { return c.CreateVolumeSnapshot(volume, description, name, snapshot); });
    if (!o.noWait) WaitForClassicSnapshot(s, snapshot, "snapshot " + name);
    const std::string state = o.noWait ? "initializing" : "completed";
    PrintResult(std::cout, "Snapshot " + snapshot + " is " + state,
                object{{"fullName", snapshot}, {"volume", volume}, {"state", state}}, s.json());
}

struct RestoreOptions {
    std::string snapshot, name, replace;
};

void RunRestore(Session& s, const RestoreOptions& o) {
    if (o.name.empty() == o.replace.empty()) {
        throw CliError(kExitUsage, "volumes restore needs exactly one of -n/--name and --replace");
    }
    const std::string snapshot = ClassicFullName(s, o.snapshot);
    std::string volume;
    if (o.replace.empty()) {
        s.call("create volume " + o.name + " from " + snapshot,
               [&](COracleCloudWrapper& c) { return c.CreateVolumeFromSnapshot(snapshot, o.name, volume); });
    } else {
        const std::string old = ClassicFullName(s, o.replace);
        s.call("revert " + old + " to " + snapshot,
               [&](COracleCloudWrapper& c) { return c.RevertToIntegritySnapshot(old, snapshot, volume); });
    }
    WaitForClassicVolume(s, volume, "volume " + volume);
    PrintResult(std::cout, "Restored volume " + volume + " from " + snapshot,
                object{{"fullName", volume}, {"snapshot", snapshot}, {"state", "Online"}}, s.json());
}

// The slot the library chose is read back from the instance.
void RunAttach(Session& s, const std::string& volumeName, const std::string& instance) {
    const std::string volume = ClassicFullName(s, volumeName);
    const SVMInfoLib vm = ReadClassicInstance(s, instance, 16);
    bool noFreeIndex = false;
    const bool ok = s.attempt("attach " + volume + " to " + vm.fullName, [&](COracleCloudWrapper& c) {
        return c.AttachVolume(volume, vm.fullName, noFreeIndex);
    });
    if (!ok && noFreeIndex) {
        throw CliError(kExitFailure, "attach " + volume + ": instance " + vm.vmName +
                                         " has no free disk slot (Compute Classic allows 10)");
    }
    if (!ok) throw s.failure("attach " + volume + " to " + vm.fullName);
    int index = 0;
    for (const SDiskInfoLib& d : ReadClassicInstance(s, vm.fullName, 16).disks) {
        if (d.name == volume || d.volumeName == volume) index = d.index;
    }
    PrintResult(std::cout, "Attached " + volume + " to " + vm.vmName + " as disk " + std::to_string(index),
                object{{"volume", volume}, {"instance", vm.fullName}, {"index", index}}, s.json());
}

void RunDetach(Session& s, const std::string& volumeName, const std::string& instance) {
    const std::string volume = ClassicFullName(s, volumeName);
    const SVMInfoLib vm = ReadClassicInstance(s, instance, 0);
    // DetachVolumes finds the attachment by volume and instance (the single
    // form of the facade needs a look-up Compute Classic does not have).
    s.call("detach " + volume + " from " + vm.fullName,
           [&](COracleCloudWrapper& c) { return c.DetachVolumes({volume}, vm.fullName); });
    PrintResult(std::cout, "Detached " + volume + " from " + vm.vmName,
                object{{"volume", volume}, {"instance", vm.fullName}, {"state", "detached"}}, s.json());
}

// One call on one named object, and the line that says it was done.
struct SimpleCommand {
    const char* group;
    const char* name;
    const char* help;
    const char* argument;
    const char* doneText;
    bool (COracleCloudWrapper::*call)(const std::string&);
};

const SimpleCommand kSimpleCommands[] = {
    {"volumes", "bootable", "mark a volume bootable (it can then be an instance's disk 1)", "volume",
     "is bootable", &COracleCloudWrapper::MakeVolumeBootable},
    {"volumes", "delete", "delete a volume (returns once accepted)", "volume", "deleted",
     &COracleCloudWrapper::DeleteVolume},
    {"snapshots", "delete", "delete a snapshot", "snapshot", "deleted", &COracleCloudWrapper::DeleteVolumeSnapshot},
};

void RunSimple(Session& s, const SimpleCommand& command, const std::string& name) {
    const std::string full = ClassicFullName(s, name);
    s.call(std::string(command.name) + " " + command.argument + " " + full,
           [&](COracleCloudWrapper& c) { return (c.*command.call)(full); });
    PrintResult(std::cout, std::string(1, static_cast<char>(std::toupper(command.argument[0]))) +
                               (command.argument + 1) + " " + full + " " + command.doneText,
                object{{"fullName", full}, {"done", command.name}}, s.json());
}

void RunSnapshotShow(Session& s, const std::string& name) {
    const std::string full = ClassicFullName(s, name);
    std::string state;
    s.call("read snapshot " + full, [&](COracleCloudWrapper& c) { return c.GetSnapshotStatus(full, state); });
    PrintRecord(std::cout, object{{"fullName", full}, {"state", state}}, s.json());
}

}  // namespace

void RegisterClassicVolumeCommands(CLI::App& app, Action& action) {
    CLI::App* volumes = app.add_subcommand("volumes", "Compute Classic storage volumes");
    volumes->require_subcommand(1);
    CLI::App* snapshots = app.add_subcommand("snapshots", "Compute Classic storage snapshots");
    snapshots->require_subcommand(1);
    {
        auto instance = std::make_shared<std::string>();
        CLI::App* cmd = volumes->add_subcommand("list", "the volumes of every instance (or of one), by disk slot");
        cmd->add_option("--instance", *instance, "only this instance's volumes");
        cmd->callback([&action, instance] { action = [instance](Session& s) { RunList(s, *instance); }; });
    }
    AddOneArgumentCommand(*volumes, action, "show", "whether a volume exists and its state (exit 4 if not)", "volume",
                          "volume name or full name", RunShow);
    {
        auto o = std::make_shared<CreateOptions>();
        CLI::App* cmd = volumes->add_subcommand("create", "an empty volume, waiting until it is Online");
        cmd->add_option("-n,--name", o->name, "volume name")->required();
        cmd->add_option("--size-gb", o->sizeGb, "size in GB")->required()->check(CLI::Range(1ULL, 2048ULL));
        cmd->add_option("--description", o->description, "description");
        cmd->callback([&action, o] { action = [o](Session& s) { RunCreate(s, *o); }; });
    }
    {
        auto o = std::make_shared<SnapshotOptions>();
        CLI::App* cmd = volumes->add_subcommand("snapshot", "a snapshot of a volume, waiting until it is completed");
        cmd->add_option("volume", o->volume, "volume name or full name")->required();
        cmd->add_option("-n,--name", o->name, "snapshot name (default ocw-<epoch seconds>)");
        cmd->add_option("--description", o->description, "description (default \"taken by ocw\")");
        cmd->add_flag("--no-wait", o->noWait, "return once the snapshot is accepted");
        cmd->callback([&action, o] { action = [o](Session& s) { RunSnapshot(s, *o); }; });
    }
    {
        auto o = std::make_shared<RestoreOptions>();
        CLI::App* cmd = volumes->add_subcommand(
            "restore", "a new volume from a snapshot, or --replace a volume by one, waiting until it is Online");
        cmd->add_option("snapshot", o->snapshot, "snapshot (VOLUME/NAME or full name)")->required();
        cmd->add_option("-n,--name", o->name, "name of the new volume");
        cmd->add_option("--replace", o->replace, "volume to replace by a new one made from the snapshot");
        cmd->callback([&action, o] { action = [o](Session& s) { RunRestore(s, *o); }; });
    }
    const struct { const char* name; const char* help; bool attach; } pairs[] = {
        {"attach", "attach a volume to an instance at its first free disk slot", true},
        {"detach", "detach a volume from an instance and wait until it is detached", false},
    };
    for (const auto& p : pairs) {
        struct Opts { std::string volume, instance; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = volumes->add_subcommand(p.name, p.help);
        cmd->add_option("volume", o->volume, "volume name or full name")->required();
        cmd->add_option("instance", o->instance, "instance name or full name")->required();
        const bool attach = p.attach;
        cmd->callback([&action, o, attach] {
            action = [o, attach](Session& s) {
                attach ? RunAttach(s, o->volume, o->instance) : RunDetach(s, o->volume, o->instance);
            };
        });
    }
    for (const SimpleCommand& command : kSimpleCommands) {
        const SimpleCommand* c = &command;
        AddOneArgumentCommand(std::string(command.group) == "volumes" ? *volumes : *snapshots, action, command.name,
                              command.help, command.argument, std::string(command.argument) + " name or full name",
                              [c](Session& s, const std::string& name) { RunSimple(s, *c, name); });
    }
    AddOneArgumentCommand(*snapshots, action, "show", "the state of a snapshot (exit 4 if it does not exist)",
                          "snapshot", "snapshot (VOLUME/NAME or full name)", RunSnapshotShow);
}

}  // namespace ocw
