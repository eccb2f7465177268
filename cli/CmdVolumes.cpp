// volumes list|show|create|delete|snapshot|restore|attach|detach
#include <ctime>
#include <iostream>
#include <map>
#include <memory>

#include "Commands.h"
#include "InFlight.h"
#include "Ocid.h"
#include "Output.h"
#include "Progress.h"
#include "RecordJson.h"
#include "Walk.h"

namespace ocw {

using boost::json::object;
using OracleCloudSDKWrapper::COracleCloudWrapper;

namespace {

const unsigned long long kDiskDetails = 16;

const std::vector<Column> kVolumeColumns{{"displayName", "NAME"}, {"sizeInGBs", "SIZE_GB"},
                                         {"lifecycleState", "STATE"}, {"bootable", "BOOT"},
                                         {"compartment", "COMPARTMENT"}, {"attachedTo", "ATTACHED_TO"},
                                         {"id", "ID"}};

bool Attached(const oci::SStorageAttachmentInfoLib& a) { return a.state == "ATTACHED" || a.state == "ATTACHING"; }

// Every volume of the compartments walked, attached or not, with the
// instances it is attached to: the list to find what restores left behind.
void RunListAll(Session& s, const std::string& compartment) {
    std::vector<std::pair<oci::SDiskInfoLib, std::string>> volumes;  // volume, compartment name
    std::map<std::string, std::vector<std::string>> attachedTo;      // volume id -> instance ids
    ForEachCompartment(s, compartment, "list volumes", [&](const oci::SContainerInfoLib& c) {
        std::vector<oci::SDiskInfoLib> list;
        s.call("list volumes of compartment " + c.guid,
               [&](COracleCloudWrapper& f) { return f.ListVolumes(list, c.guid, ""); });
        std::vector<oci::SStorageAttachmentInfoLib> attachments;
        s.call("list volume attachments of compartment " + c.guid,
               [&](COracleCloudWrapper& f) { return f.ListVolumeAttachments(attachments, c.guid, ""); });
        for (const auto& a : attachments) {
            if (Attached(a)) attachedTo[a.volumeName].push_back(a.instanceName);
        }
        size_t kept = 0;
        for (oci::SDiskInfoLib& disk : list) {
            if (disk.status == "TERMINATED") continue;
            volumes.emplace_back(std::move(disk), c.name);
            ++kept;
        }
        return kept;
    });
    ListOutput out(kVolumeColumns);
    for (const auto& v : volumes) {
        object row = ToJson(v.first);
        row["compartment"] = v.second;
        boost::json::array instances;
        for (const std::string& id : attachedTo[v.first.guid]) instances.push_back(boost::json::value(id));
        row["attachedTo"] = std::move(instances);
        out.add(std::move(row));
    }
    out.print(std::cout, s.json());
}

// The volumes of one instance with their iSCSI details. The library reads
// them leniently (a volume it cannot read is left out), so the attachments
// are counted as well: a volume that could not be read is an error, not a
// shorter list.
void RunListForInstance(Session& s, const std::string& instance) {
    oci::SVMInfoLib vm;
    s.call("read instance " + instance,
           [&](COracleCloudWrapper& c) { return c.GetVMInfo("", instance, vm, kDiskDetails, ""); });
    std::vector<oci::SStorageAttachmentInfoLib> attachments;
    s.call("list volume attachments of compartment " + vm.compartmentId,
           [&](COracleCloudWrapper& f) { return f.ListVolumeAttachments(attachments, vm.compartmentId, ""); });
    size_t expected = 0;
    for (const auto& a : attachments) {
        if (a.instanceName == instance && a.state == "ATTACHED") ++expected;
    }
    if (vm.disks.size() < expected) {
        throw CliError(kExitFailure, "read the volumes of instance " + instance + ": " +
                                         std::to_string(expected - vm.disks.size()) + " of " +
                                         std::to_string(expected) +
                                         " attached volumes could not be read (run with -v for the library's log)");
    }
    oci::SContainerInfoLib compartment;
    s.call("read compartment " + vm.compartmentId,
           [&](COracleCloudWrapper& c) { return c.GetContainerInfo(vm.compartmentId, "", compartment, 0, ""); });
    ListOutput out(kVolumeColumns);
    for (const oci::SDiskInfoLib& disk : vm.disks) {
        object row = ToJson(disk);
        row["compartment"] = compartment.name;
        row["attachedTo"] = boost::json::array{boost::json::value(vm.guid)};
        out.add(std::move(row));
    }
    out.print(std::cout, s.json());
}

void RunShow(Session& s, const std::string& id) {
    bool exists = false;
    s.call("look up volume " + id, [&](COracleCloudWrapper& c) { return c.CheckIfDiskExists(id, exists); });
    if (!exists) throw CliError(kExitNotFound, "volume " + id + " does not exist");
    std::string status;
    s.call("read volume " + id, [&](COracleCloudWrapper& c) { return c.GetVolumeStatus(id, status); });
    PrintRecord(std::cout, object{{"id", id}, {"lifecycleState", status}}, s.json());
}

struct CreateOptions {
    std::string name, compartment, domain, fromBackup;
    unsigned long long sizeGb = 0;
};

void RunCreate(Session& s, const CreateOptions& o) {
    std::string id;
    if (!o.fromBackup.empty()) {
        if (o.sizeGb != 0 || !o.domain.empty() || !o.compartment.empty()) {
            throw CliError(kExitUsage, "a volume made from a backup takes its size, compartment and availability "
                                       "domain from the backup's volume");
        }
        s.call("create volume " + o.name + " from backup " + o.fromBackup,
               [&](COracleCloudWrapper& c) { return c.CreateVolumeFromSnapshot(o.fromBackup, o.name, id); });
        WaitForVolume(s, id, "create volume " + o.name + " from " + o.fromBackup);
    } else {
        if (o.sizeGb == 0) throw CliError(kExitUsage, "volumes create needs --size-gb (or --from-backup)");
        oci::SDiskInfoLib disk;
        disk.volumeName = o.name;
        disk.sizeBytes = o.sizeGb << 30;
        disk.compartmentId = s.compartmentOr(o.compartment);
        disk.availabilityDomain = o.domain.empty() ? FirstAvailabilityDomain(s, o.compartment) : o.domain;
        // The new volume's id arrives through the library's log (InFlight)
        // as soon as the cloud accepted it, before the library's wait.
        Progress progress("create volume " + o.name);
        s.call("create volume " + o.name, [&](COracleCloudWrapper& c) { return c.CreateVolume(disk, ""); });
        id = disk.guid.empty() ? disk.name : disk.guid;
    }
    PrintResult(std::cout, "Created volume " + o.name + ": " + id,
                object{{"id", id}, {"displayName", o.name}, {"lifecycleState", "AVAILABLE"}}, s.json());
}

void RunDelete(Session& s, const std::string& id) {
    s.call("delete volume " + id, [&](COracleCloudWrapper& c) { return c.DeleteVolume(id); });
    PrintResult(std::cout, "Volume " + id + " is being deleted", object{{"id", id}, {"lifecycleState", "TERMINATING"}},
                s.json());
}

struct SnapshotOptions {
    std::string volume, name, description;
    bool integrity = false;
    bool noWait = false;
};

void RunSnapshot(Session& s, const SnapshotOptions& o) {
    const std::string name = o.name.empty() ? "ocw-backup-" + std::to_string(std::time(nullptr)) : o.name;
    std::string backup;
    const std::string what = std::string(o.integrity ? "take integrity snapshot of " : "take snapshot of ") + o.volume;
    s.call(what, [&](COracleCloudWrapper& c) {
        return o.integrity ? c.CreateIntegritySnapshot(o.volume, o.description, name, backup)
                           : c.CreateVolumeSnapshot(o.volume, o.description, name, backup);
    });
    std::string state = "CREATING";
    if (!o.noWait) {
        state = s.waitFor({"backup " + name, backup,
                           [&](std::string& st) { return s.cloud().GetSnapshotStatus(backup, st); },
                           {"AVAILABLE"},
                           {"FAULTY", "TERMINATED"}});
    }
    PrintResult(std::cout, "Backup " + name + " of " + o.volume + ": " + backup + " (" + state + ")",
                object{{"id", backup}, {"displayName", name}, {"volumeId", o.volume}, {"lifecycleState", state}},
                s.json());
}

struct RestoreOptions {
    std::string backup, name, replace;
};

void RunRestore(Session& s, const RestoreOptions& o) {
    if (o.name.empty() == o.replace.empty()) {
        throw CliError(kExitUsage, "volumes restore needs exactly one of --name (a new volume) and --replace VOLUME");
    }
    std::string created;
    if (!o.replace.empty()) {
        s.call("revert volume " + o.replace + " to backup " + o.backup,
               [&](COracleCloudWrapper& c) { return c.RevertToIntegritySnapshot(o.replace, o.backup, created); });
        WaitForVolume(s, created, "revert " + o.replace + " to " + o.backup);
        PrintResult(std::cout, "Volume " + o.replace + " replaced by " + created + ", made from " + o.backup,
                    object{{"id", created}, {"replacedVolumeId", o.replace}, {"backupId", o.backup}}, s.json());
        return;
    }
    s.call("restore backup " + o.backup + " as volume " + o.name,
           [&](COracleCloudWrapper& c) { return c.CreateVolumeFromSnapshot(o.backup, o.name, created); });
    WaitForVolume(s, created, "restore " + o.backup + " as " + o.name);
    PrintResult(std::cout, "Restored " + o.backup + " as volume " + o.name + ": " + created,
                object{{"id", created}, {"displayName", o.name}, {"backupId", o.backup}}, s.json());
}

void RunAttach(Session& s, const std::string& volume, const std::string& instance, const std::string& type) {
    InFlight::Track(volume);
    oci::SStorageAttachmentInfoLib attachment;
    attachment.attachmentType = type;
    bool noFreeSlot = false;
    {
        Progress progress("attach " + volume);
        if (!s.attempt("attach volume " + volume + " to " + instance, [&](COracleCloudWrapper& c) {
                return c.AttachVolume(volume, instance, noFreeSlot, attachment);
            })) {
            progress.finish();
            if (noFreeSlot) throw CliError(kExitFailure, "instance " + instance + " has no free attachment slot");
            throw s.failure("attach volume " + volume + " to " + instance);
        }
    }
    object record = ToJson(attachment);
    if (s.json()) {
        PrintRecord(std::cout, record, true);
        return;
    }
    std::cout << "Attached " << volume << " to " << instance << "\n";
    PrintRecord(std::cout, record, false);
}

void RunDetach(Session& s, const std::string& volume, const std::string& instance) {
    // The library counts a volume that is not attached to the instance as
    // detached; an operator who named the wrong instance must hear it.
    oci::SVMInfoLib vm;
    s.call("read instance " + instance, [&](COracleCloudWrapper& c) { return c.GetVMInfo("", instance, vm, 0, ""); });
    std::vector<oci::SStorageAttachmentInfoLib> attachments;
    s.call("list volume attachments of compartment " + vm.compartmentId,
           [&](COracleCloudWrapper& f) { return f.ListVolumeAttachments(attachments, vm.compartmentId, ""); });
    bool attached = false;
    for (const auto& a : attachments) attached = attached || (a.volumeName == volume && a.instanceName == instance && Attached(a));
    if (!attached) throw CliError(kExitFailure, "detach volume " + volume + ": not attached to " + instance);
    InFlight::Track(volume);
    {
        Progress progress("detach " + volume);
        s.call("detach volume " + volume + " from " + instance,
               [&](COracleCloudWrapper& c) { return c.DetachVolume(volume, instance); });
    }
    PrintResult(std::cout, "Detached " + volume + " from " + instance,
                object{{"volumeId", volume}, {"instanceId", instance}, {"lifecycleState", "DETACHED"}}, s.json());
}

}  // namespace

void RegisterVolumeCommands(CLI::App& app, Action& action) {
    CLI::App* group = app.add_subcommand("volumes", "block and boot volumes, their backups and attachments");
    group->require_subcommand(1);
    {
        struct Opts { std::string compartment, instance; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand(
            "list", "list every block and boot volume, attached or not, with the instances it is attached to");
        cmd->add_option("-c,--compartment", o->compartment, "only this compartment (default: every compartment)")
            ->check(OcidOf(kCompartmentOcid));
        auto* instance = cmd->add_option("--instance", o->instance, "only the volumes attached to this instance")
                             ->check(OcidOf(kInstanceOcid));
        instance->excludes("--compartment");
        cmd->callback([&action, o] {
            action = [o](Session& s) {
                if (o->instance.empty()) {
                    RunListAll(s, o->compartment);
                } else {
                    RunListForInstance(s, o->instance);
                }
            };
        });
    }
    {
        auto id = std::make_shared<std::string>();
        CLI::App* cmd = group->add_subcommand("show", "show whether a volume exists and its state");
        cmd->add_option("volume", *id, "volume or boot volume OCID")->required()->check(OcidOf(kVolumeOcid));
        cmd->callback([&action, id] { action = [id](Session& s) { RunShow(s, *id); }; });
    }
    {
        auto o = std::make_shared<CreateOptions>();
        CLI::App* cmd = group->add_subcommand("create", "create an empty block volume, or one from a backup");
        cmd->add_option("-n,--name", o->name, "display name")->required();
        cmd->add_option("--size-gb", o->sizeGb, "size in GB");
        cmd->add_option("--from-backup", o->fromBackup, "volume backup OCID to make the volume from")
            ->check(OcidOf(kVolumeBackupOcid));
        AddCompartmentOption(*cmd, o->compartment);
        cmd->add_option("--availability-domain", o->domain, "availability domain (default: the compartment's first)");
        cmd->callback([&action, o] { action = [o](Session& s) { RunCreate(s, *o); }; });
    }
    {
        auto id = std::make_shared<std::string>();
        CLI::App* cmd = group->add_subcommand("delete", "delete a volume or boot volume");
        cmd->add_option("volume", *id, "volume OCID")->required()->check(OcidOf(kVolumeOcid));
        cmd->callback([&action, id] { action = [id](Session& s) { RunDelete(s, *id); }; });
    }
    {
        auto o = std::make_shared<SnapshotOptions>();
        CLI::App* cmd = group->add_subcommand("snapshot", "back up a volume (a volume backup) and wait until it is available");
        cmd->add_option("volume", o->volume, "volume or boot volume OCID")->required()->check(OcidOf(kVolumeOcid));
        cmd->add_option("-n,--name", o->name, "backup display name (default ocw-backup-<time>)");
        cmd->add_option("--description", o->description, "description");
        cmd->add_flag("--integrity", o->integrity, "an integrity snapshot, for a later 'volumes restore --replace'");
        cmd->add_flag("--no-wait", o->noWait, "return once the backup is requested");
        cmd->callback([&action, o] { action = [o](Session& s) { RunSnapshot(s, *o); }; });
    }
    {
        auto o = std::make_shared<RestoreOptions>();
        CLI::App* cmd = group->add_subcommand("restore", "make a new volume from a backup, or replace a volume by one");
        cmd->add_option("backup", o->backup, "volume backup OCID")->required()->check(OcidOf(kVolumeBackupOcid));
        cmd->add_option("-n,--name", o->name, "name of the new volume");
        cmd->add_option("--replace", o->replace,
                        "volume OCID to replace: a new volume is made from the backup, then this one is deleted")
            ->check(OcidOf(kVolumeOcid));
        cmd->callback([&action, o] { action = [o](Session& s) { RunRestore(s, *o); }; });
    }
    {
        struct Opts { std::string volume, instance, type = "iscsi"; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand("attach", "attach a volume to an instance and wait until attached");
        cmd->add_option("volume", o->volume, "volume OCID")->required()->check(OcidOf(kBlockVolumeOcid));
        cmd->add_option("instance", o->instance, "instance OCID")->required()->check(OcidOf(kInstanceOcid));
        cmd->add_option("--type", o->type, "attachment type")->check(CLI::IsMember({"iscsi", "paravirtualized"}));
        cmd->callback([&action, o] { action = [o](Session& s) { RunAttach(s, o->volume, o->instance, o->type); }; });
    }
    {
        struct Opts { std::string volume, instance; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand("detach", "detach a volume from an instance and wait until detached");
        cmd->add_option("volume", o->volume, "volume OCID")->required()->check(OcidOf(kVolumeOcid));
        cmd->add_option("instance", o->instance, "instance OCID")->required()->check(OcidOf(kInstanceOcid));
        cmd->callback([&action, o] { action = [o](Session& s) { RunDetach(s, o->volume, o->instance); }; });
    }
}

}  // namespace ocw
