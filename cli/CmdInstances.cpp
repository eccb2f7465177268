// instances list|show|launch|start|stop|reboot|delete
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

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

// Guest operating system, disks and network of an instance.
const unsigned long long kAllDetails = 2 | 16 | 32;

void RunList(Session& s, const std::string& compartment, bool details) {
    std::vector<oci::SVMInfoLib> vms = ListInstances(s, compartment);
    if (details) {
        // One instance at a time (as the library's list filler does), so that
        // thousands of instances show how far the reading is.
        Progress progress("read instance details", Progress::Mode::Listing);
        for (size_t i = 0; i < vms.size(); ++i) {
            progress.state(std::to_string(i) + " of " + std::to_string(vms.size()) + " instances read");
            s.call("read details of instance " + vms[i].guid,
                   [&](COracleCloudWrapper& c) { return c.FillVMInfoDetails(vms[i], kAllDetails, ""); });
        }
    }
    std::vector<Column> columns{{"displayName", "NAME"}, {"lifecycleState", "STATE"}, {"shape", "SHAPE"},
                                {"availabilityDomain", "AVAILABILITY_DOMAIN"}, {"id", "ID"}};
    if (details) {
        columns.insert(columns.begin() + 3, {"privateIp", "PRIVATE_IP"});
        columns.insert(columns.begin() + 4, {"operatingSystem", "OS"});
    }
    ListOutput out(columns);
    for (const oci::SVMInfoLib& vm : vms) out.add(ToJson(vm, details));
    out.print(std::cout, s.json());
}

oci::SVMInfoLib ReadInstance(Session& s, const std::string& id, unsigned long long flags) {
    oci::SVMInfoLib vm;
    s.call("read instance " + id, [&](COracleCloudWrapper& c) { return c.GetVMInfo("", id, vm, flags, ""); });
    return vm;
}

void RunShow(Session& s, const std::string& id) {
    const oci::SVMInfoLib vm = ReadInstance(s, id, kAllDetails);
    // The library leaves the list entry's placeholder (a VNIC without an id)
    // when the instance's network interfaces could not be read: an error,
    // not an instance without network.
    for (const oci::SVNicInfoLib& vnic : vm.vnics) {
        if (vnic.id.empty()) {
            throw CliError(kExitFailure, "read instance " + id +
                                             ": its network interfaces could not be read (run with -v for the "
                                             "library's log)");
        }
    }
    PrintRecord(std::cout, ToJson(vm, true), s.json());
}

struct LaunchOptions {
    std::string name, image, bootVolume, shape, compartment, domain, subnet, sshKeyFile;
    unsigned int ocpus = 0;
    unsigned long long memoryGb = 0;
    unsigned long long bootVolumeSizeGb = 0;
    bool assignPublicIp = false;
};

void RunLaunch(Session& s, const LaunchOptions& o) {
    if (o.image.empty() == o.bootVolume.empty()) {
        throw CliError(kExitUsage, "instances launch needs exactly one of --image and --boot-volume");
    }
    oci::SVMInfoLib vm;
    vm.vmName = o.name;
    vm.shape = o.shape;
    vm.compartmentId = s.compartmentOr(o.compartment);
    vm.availabilityDomain = o.domain.empty() ? FirstAvailabilityDomain(s, o.compartment) : o.domain;
    vm.imageId = o.image;
    vm.cpuCount = o.ocpus;
    vm.memoryMB = o.memoryGb * 1024;
    vm.bootVolumeSizeGB = o.bootVolumeSizeGb;
    if (!o.subnet.empty()) {
        oci::SVNicInfoLib vnic;
        vnic.subnetId = o.subnet;
        vnic.assignPublicIp = o.assignPublicIp;
        vm.vnics.push_back(vnic);
    }
    if (!o.sshKeyFile.empty()) {
        std::ifstream in(o.sshKeyFile, std::ios::binary);
        if (!in) throw CliError(kExitUsage, "cannot read the key file " + o.sshKeyFile);
        std::ostringstream text;
        text << in.rdbuf();
        vm.sshKeys.push_back(text.str());
    }
    {
        // The new instance's id arrives through the library's log (InFlight)
        // as soon as the launch was accepted, before the wait.
        Progress progress("launch instance " + o.name);
        if (o.bootVolume.empty()) {
            s.call("launch instance " + o.name, [&](COracleCloudWrapper& c) { return c.LaunchInstance(vm); });
        } else {
            s.call("launch instance " + o.name + " from boot volume " + o.bootVolume,
                   [&](COracleCloudWrapper& c) { return c.DeployVMFromBootDisk(vm, o.bootVolume); });
        }
    }
    const std::string id = vm.guid.empty() ? vm.fullName : vm.guid;
    PrintResult(std::cout, "Launched instance " + o.name + ": " + id,
                object{{"id", id}, {"displayName", o.name}, {"lifecycleState", "RUNNING"}}, s.json());
}

enum class Power { Start, Stop, Reboot };

void RunPower(Session& s, const std::string& id, Power action) {
    const char* verb = action == Power::Start ? "start" : action == Power::Stop ? "stop" : "reboot";
    InFlight::Track(id);
    {
        Progress progress(std::string(verb) + " instance " + id);
        s.call(std::string(verb) + " instance " + id, [&](COracleCloudWrapper& c) {
            switch (action) {
                case Power::Start: return c.PowerOnInstance(id);
                case Power::Stop: return c.PowerOffInstance(id);
                case Power::Reboot: return c.RebootInstance(id);
            }
            return false;
        });
    }
    const char* state = action == Power::Stop ? "STOPPED" : "RUNNING";
    PrintResult(std::cout, std::string("Instance ") + id + " is " + state,
                object{{"id", id}, {"lifecycleState", state}}, s.json());
}

void RunDelete(Session& s, const std::string& id, bool wait) {
    InFlight::Track(id);
    {
        Progress progress("terminate instance " + id);
        s.call("terminate instance " + id, [&](COracleCloudWrapper& c) { return c.DeleteVM("", id, true, wait); });
    }
    const char* state = wait ? "TERMINATED" : "TERMINATING";
    PrintResult(std::cout, std::string("Instance ") + id + (wait ? " terminated" : " is terminating") +
                               " (its boot volume is kept)",
                object{{"id", id}, {"lifecycleState", state}}, s.json());
}

}  // namespace

void RegisterInstanceCommands(CLI::App& app, Action& action) {
    CLI::App* group = app.add_subcommand("instances", "compute instances");
    group->require_subcommand(1);
    {
        struct Opts { std::string compartment; bool details = false; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand("list", "list instances (of all compartments unless -c is given)");
        cmd->add_option("-c,--compartment", o->compartment, "only this compartment")->check(OcidOf(kCompartmentOcid));
        cmd->add_flag("-d,--details", o->details, "read each instance's addresses and operating system too");
        cmd->callback([&action, o] { action = [o](Session& s) { RunList(s, o->compartment, o->details); }; });
    }
    {
        auto id = std::make_shared<std::string>();
        CLI::App* cmd = group->add_subcommand("show", "show one instance with its volumes and network interfaces");
        cmd->add_option("instance", *id, "instance OCID")->required()->check(OcidOf(kInstanceOcid));
        cmd->callback([&action, id] { action = [id](Session& s) { RunShow(s, *id); }; });
    }
    {
        auto o = std::make_shared<LaunchOptions>();
        CLI::App* cmd = group->add_subcommand("launch", "launch an instance from an image or a boot volume and wait until it runs");
        cmd->add_option("-n,--name", o->name, "display name")->required();
        cmd->add_option("--shape", o->shape, "shape, e.g. VM.Standard2.1 or VM.Standard.E4.Flex")->required();
        cmd->add_option("--image", o->image, "image OCID to boot from")->check(OcidOf(kImageOcid));
        cmd->add_option("--boot-volume", o->bootVolume, "existing boot volume OCID to boot from (instead of --image)")
            ->check(OcidOf(kVolumeOcid));
        AddCompartmentOption(*cmd, o->compartment);
        cmd->add_option("--availability-domain", o->domain, "availability domain (default: the compartment's first)");
        // The cloud refuses a launch without one (MissingParameter).
        cmd->add_option("--subnet", o->subnet, "subnet OCID of the primary network interface")
            ->required()
            ->check(OcidOf(kSubnetOcid));
        cmd->add_flag("--assign-public-ip", o->assignPublicIp, "ask for a public address (with --boot-volume)");
        cmd->add_option("--ocpus", o->ocpus, "OCPUs of a flexible shape");
        cmd->add_option("--memory-gb", o->memoryGb, "memory in GB of a flexible shape");
        cmd->add_option("--boot-volume-size-gb", o->bootVolumeSizeGb, "boot volume size (default: the image's)");
        cmd->add_option("--ssh-key-file", o->sshKeyFile, "PuTTY private key file (.ppk) whose public key is installed")
            ->check(CLI::ExistingFile);
        cmd->callback([&action, o] { action = [o](Session& s) { RunLaunch(s, *o); }; });
    }
    const struct { const char* name; const char* help; Power power; } powers[] = {
        {"start", "start a stopped instance and wait until it runs", Power::Start},
        {"stop", "stop an instance and wait until it is stopped", Power::Stop},
        {"reboot", "reset an instance and wait until it runs again", Power::Reboot},
    };
    for (const auto& p : powers) {
        auto id = std::make_shared<std::string>();
        CLI::App* cmd = group->add_subcommand(p.name, p.help);
        cmd->add_option("instance", *id, "instance OCID")->required()->check(OcidOf(kInstanceOcid));
        const Power power = p.power;
        cmd->callback([&action, id, power] { action = [id, power](Session& s) { RunPower(s, *id, power); }; });
    }
    {
        struct Opts { std::string id; bool noWait = false; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand("delete", "terminate an instance (its boot volume is kept)");
        cmd->add_option("instance", o->id, "instance OCID")->required()->check(OcidOf(kInstanceOcid));
        cmd->add_flag("--no-wait", o->noWait, "return once the termination is accepted");
        cmd->callback([&action, o] { action = [o](Session& s) { RunDelete(s, o->id, !o->noWait); }; });
    }
}

}  // namespace ocw
