// Cloud Classic: instances list|show|launch|start|stop|reboot|delete and
// orchestrations capture|redeploy.
#include <sys/stat.h>

#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>

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

void RunList(Session& s, bool details) {
    const std::vector<SVMInfoLib> vms = ListClassicInstances(s, details);
    std::vector<Column> columns{{"name", "NAME"}, {"state", "STATE"}, {"shape", "SHAPE"}, {"fullName", "FULL_NAME"}};
    if (details) columns.insert(columns.begin() + 3, {"ipAddress", "IP_ADDRESS"});
    ListOutput out(columns);
    for (const SVMInfoLib& vm : vms) out.add(ClassicInstanceJson(vm, details));
    out.print(std::cout, s.json());
}

void RunShow(Session& s, const std::string& name) {
    PrintRecord(std::cout, ClassicInstanceJson(ReadClassicInstance(s, name), true), s.json());
}

struct LaunchOptions {
    std::string name, shape, bootVolume, imageList, network;
    std::vector<std::string> sshKeys, securityLists;
};

void RunLaunch(Session& s, const LaunchOptions& o) {
    if (o.bootVolume.empty() == o.imageList.empty()) {
        throw CliError(kExitUsage, "instances launch needs exactly one of --boot-volume and --image-list");
    }
    SVMInfoLib vm;
    vm.vmName = o.name;
    vm.shape = o.shape;
    vm.compartmentId = s.classicProfile().user;
    for (const std::string& key : o.sshKeys) vm.sshKeys.push_back(ClassicFullName(s, key));
    for (const std::string& list : o.securityLists) {
        OracleCloudSDKWrapper::SSecurityGroupInfoLib group;
        group.fullName = ClassicFullName(s, list);
        vm.securityGroups.push_back(group);
    }
    if (!o.network.empty()) {
        OracleCloudSDKWrapper::SVNicInfoLib vnic;
        vnic.id = ClassicFullName(s, o.network);
        vm.vnics.push_back(vnic);
    }
    {
        Progress progress("launch instance " + o.name);
        if (!o.bootVolume.empty()) {
            SDiskInfoLib boot;
            boot.index = 1;
            boot.bootable = true;
            boot.volumeName = ClassicFullName(s, o.bootVolume);
            vm.disks.push_back(boot);
            s.call("launch instance " + o.name, [&](COracleCloudWrapper& c) { return c.LaunchInstance(vm); });
        } else {
            vm.imageId = o.imageList;
            s.call("launch instance " + o.name + " from image list " + o.imageList,
                   [&](COracleCloudWrapper& c) { return c.DeployVM(vm, o.imageList, ""); });
        }
    }
    PrintResult(std::cout, "Launched instance " + o.name + ": " + vm.fullName + " (" + vm.state + ")",
                object{{"name", o.name}, {"fullName", vm.fullName}, {"state", vm.state}}, s.json());
}

enum class Power { Start, Stop, Reboot };

// The library returns once Compute Classic accepted the change; ocw waits
// for the state the user asked for.
void RunPower(Session& s, const std::string& name, Power action) {
    const char* verb = action == Power::Start ? "start" : action == Power::Stop ? "stop" : "reboot";
    const std::string full = ReadClassicInstance(s, name, 0).fullName;
    InFlight::Track(full);
    s.call(std::string(verb) + " instance " + full, [&](COracleCloudWrapper& c) {
        switch (action) {
            case Power::Start: return c.PowerOnInstance(full);
            case Power::Stop: return c.PowerOffInstance(full);
            case Power::Reboot: return c.RebootInstance(full);
        }
        return false;
    });
    const std::string state = action == Power::Stop ? "shutdown" : "running";
    WaitForClassicInstance(s, full, state, std::string(verb) + " instance " + name);
    PrintResult(std::cout, "Instance " + full + " is " + state, object{{"fullName", full}, {"state", state}},
                s.json());
}

void RunDelete(Session& s, const std::string& name, bool wait) {
    InFlight::Track(name);
    {
        Progress progress("delete instance " + name);
        s.call("delete instance " + name, [&](COracleCloudWrapper& c) { return c.DeleteVM(name, "", false, wait); });
    }
    PrintResult(std::cout, "Instance " + name + (wait ? " deleted" : " is being deleted") + " (its volumes are kept)",
                object{{"name", name}, {"state", wait ? "deleted" : "stopping"}}, s.json());
}

// The documents GetInstanceConfigurations returns, by key: ".json" (the
// instance), "_master.json", "_instance.json", "_storage.json".
const char* const kDocuments[] = {".json", "_master.json", "_instance.json", "_storage.json"};

void RunCapture(Session& s, const std::string& name, const std::string& directory) {
    const SVMInfoLib vm = ReadClassicInstance(s, name, 0);
    std::map<std::string, std::string> configs;
    s.call("capture the configuration of " + vm.fullName,
           [&](COracleCloudWrapper& c) { return c.GetInstanceConfigurations(vm.fullName, configs); });
    ::mkdir(directory.c_str(), 0700);
    ListOutput out({{"document", "DOCUMENT"}, {"bytes", "BYTES"}, {"file", "FILE"}});
    for (const char* key : kDocuments) {
        const std::string& text = configs[key];
        std::string file;
        if (!text.empty()) {
            file = directory + "/" + vm.vmName + key;
            std::ofstream write(file, std::ios::trunc);
            write << text;
            write.close();
            if (!write) throw CliError(kExitUsage, "cannot write " + file);
        }
        out.add(object{{"document", vm.vmName + key}, {"bytes", text.size()}, {"file", file}});
    }
    out.print(std::cout, s.json());
}

struct RedeployOptions {
    std::string directory, instance, name, bootVolume;
};

std::string ReadText(const std::string& path, bool& found) {
    std::ifstream in(path, std::ios::binary);
    found = static_cast<bool>(in);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The instance orchestration holds what was asked for at launch (the
// agent's choice); an instance launched without one is redeployed from its
// own document.
SVMInfoLib SavedInstance(Session& s, const RedeployOptions& o) {
    bool found = false;
    SVMInfoLib vm;
    const std::string base = o.directory + "/" + o.instance;
    const std::string orchestration = ReadText(base + "_instance.json", found);
    if (found && !orchestration.empty()) {
        s.call("read " + base + "_instance.json",
               [&](COracleCloudWrapper& c) { return c.ReadInstanceOrchestration(orchestration, vm); });
        if (!vm.vmName.empty()) return vm;
    }
    const std::string document = ReadText(base + ".json", found);
    if (!found) throw CliError(kExitUsage, "no saved configuration of " + o.instance + " in " + o.directory);
    s.call("read " + base + ".json", [&](COracleCloudWrapper& c) { return c.ReadInstanceConfig(document, vm); });
    return vm;
}

void RunRedeploy(Session& s, const RedeployOptions& o) {
    SVMInfoLib vm = SavedInstance(s, o);
    if (!o.name.empty()) vm.vmName = o.name;
    if (!o.bootVolume.empty()) {
        bool replaced = false;
        for (SDiskInfoLib& d : vm.disks) {
            if (d.bootable || d.index == 1) {
                d.volumeName = ClassicFullName(s, o.bootVolume);
                replaced = true;
            }
        }
        if (!replaced) throw CliError(kExitUsage, "the saved configuration of " + o.instance + " has no boot disk");
    }
    {
        Progress progress("redeploy instance " + vm.vmName);
        s.call("redeploy instance " + vm.vmName,
               [&](COracleCloudWrapper& c) { return c.DeployVMFromOrchestration(vm); });
    }
    PrintResult(std::cout, "Redeployed instance " + vm.vmName + ": " + vm.fullName + " (" + vm.state + ")",
                object{{"name", vm.vmName}, {"fullName", vm.fullName}, {"state", vm.state}}, s.json());
}

}  // namespace

void RegisterClassicInstanceCommands(CLI::App& app, Action& action) {
    CLI::App* group = app.add_subcommand("instances", "Compute Classic instances");
    group->require_subcommand(1);
    {
        auto details = std::make_shared<bool>(false);
        CLI::App* cmd = group->add_subcommand("list", "list the account's instances (a walk of its directories)");
        cmd->add_flag("-d,--details", *details, "read each instance's address and disks too");
        cmd->callback([&action, details] { action = [details](Session& s) { RunList(s, *details); }; });
    }
    AddOneArgumentCommand(*group, action, "show", "show one instance with its disks and networks", "instance",
                          "instance name (web1) or full name", RunShow);
    {
        auto o = std::make_shared<LaunchOptions>();
        CLI::App* cmd = group->add_subcommand(
            "launch", "launch an instance through a launch plan and wait until it runs");
        cmd->add_option("-n,--name", o->name, "instance name")->required();
        cmd->add_option("--shape", o->shape, "shape, e.g. oc3")->required();
        cmd->add_option("--boot-volume", o->bootVolume, "bootable volume to boot from (disk 1)");
        cmd->add_option("--image-list", o->imageList, "image list to boot from instead, e.g. /oracle/public/OL_7.2_UEKR4_x86_64");
        cmd->add_option("--ssh-key", o->sshKeys, "SSH key pair to install (repeatable)");
        cmd->add_option("--security-list", o->securityLists, "security list of the interface (repeatable)");
        cmd->add_option("--network", o->network, "IP network of the interface (default: the shared network)");
        cmd->callback([&action, o] { action = [o](Session& s) { RunLaunch(s, *o); }; });
    }
    const struct { const char* name; const char* help; Power power; } powers[] = {
        {"start", "start a stopped instance and wait until it runs", Power::Start},
        {"stop", "stop an instance and wait until it is shut down", Power::Stop},
        {"reboot", "reboot an instance and wait until it runs again", Power::Reboot},
    };
    for (const auto& p : powers) {
        const Power power = p.power;
        AddOneArgumentCommand(*group, action, p.name, p.help, "instance", "instance name or full name",
                              [power](Session& s, const std::string& name) { RunPower(s, name, power); });
    }
    {
        struct Opts { std::string name; bool noWait = false; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand("delete", "delete an instance (its volumes are kept)");
        cmd->add_option("instance", o->name, "instance name or full name")->required();
        cmd->add_flag("--no-wait", o->noWait, "return once the deletion is accepted");
        cmd->callback([&action, o] { action = [o](Session& s) { RunDelete(s, o->name, !o->noWait); }; });
    }

    CLI::App* orchestrations =
        app.add_subcommand("orchestrations", "an instance's configuration and orchestrations, saved and redeployed");
    orchestrations->require_subcommand(1);
    {
        struct Opts { std::string instance, directory; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = orchestrations->add_subcommand(
            "capture", "save an instance's document and its _master, _instance and _storage orchestrations");
        cmd->add_option("instance", o->instance, "instance name or full name")->required();
        cmd->add_option("-d,--directory", o->directory, "directory to write NAME.json, NAME_master.json, ... into")
            ->required();
        cmd->callback([&action, o] { action = [o](Session& s) { RunCapture(s, o->instance, o->directory); }; });
    }
    {
        auto o = std::make_shared<RedeployOptions>();
        CLI::App* cmd = orchestrations->add_subcommand(
            "redeploy", "recreate an instance under an orchestration from its captured configuration");
        cmd->add_option("instance", o->instance, "name of the captured instance (the files' NAME)")->required();
        cmd->add_option("-d,--directory", o->directory, "directory the configuration was captured into")
            ->required()
            ->check(CLI::ExistingDirectory);
        cmd->add_option("-n,--name", o->name, "name of the new instance (default: the captured one)");
        cmd->add_option("--boot-volume", o->bootVolume, "bootable volume to use as disk 1 instead of the saved one");
        cmd->callback([&action, o] { action = [o](Session& s) { RunRedeploy(s, *o); }; });
    }
}

}  // namespace ocw
