#include "ClassicWalk.h"

#include "Progress.h"

namespace ocw {

using OracleCloudSDKWrapper::COracleCloudWrapper;
using OracleCloudSDKWrapper::SVMInfoLib;

std::vector<SVMInfoLib> ListClassicInstances(Session& s, bool details) {
    std::vector<SVMInfoLib> vms;
    Progress progress("list instances", Progress::Mode::Listing);
    s.call("list instances", [&](COracleCloudWrapper& c) { return c.GetVMInfoList(vms, 0, ""); });
    if (details) {
        for (size_t i = 0; i < vms.size(); ++i) {
            progress.state(std::to_string(i) + " of " + std::to_string(vms.size()) + " instances read");
            s.call("read instance " + vms[i].fullName, [&](COracleCloudWrapper& c) {
                return c.GetVMInfo(vms[i].fullName, "", vms[i], kClassicAllDetails, "");
            });
        }
    }
    return vms;
}

SVMInfoLib ReadClassicInstance(Session& s, const std::string& name, unsigned long long flags) {
    SVMInfoLib vm;
    s.call("read instance " + name, [&](COracleCloudWrapper& c) { return c.GetVMInfo(name, "", vm, flags, ""); });
    return vm;
}

std::string ClassicFullName(Session& s, const std::string& name) {
    if (!name.empty() && name[0] == '/') return name;
    const ClassicProfile& p = s.classicProfile();
    return "/Compute-" + p.identityDomain + "/" + p.user + "/" + name;
}

void WaitForClassicVolume(Session& s, const std::string& volume, const std::string& label) {
    s.waitFor({label, volume, [&](std::string& st) { return s.cloud().GetVolumeStatus(volume, st); }, {"Online"},
               {"Error"}});
}

void WaitForClassicSnapshot(Session& s, const std::string& snapshot, const std::string& label) {
    s.waitFor({label, snapshot, [&](std::string& st) { return s.cloud().GetSnapshotStatus(snapshot, st); },
               {"completed"}, {"error"}});
}

void WaitForClassicInstance(Session& s, const std::string& instance, const std::string& state,
                            const std::string& label) {
    s.waitFor({label, instance,
               [&](std::string& st) {
                   SVMInfoLib vm;
                   if (!s.cloud().GetVMInfo(instance, "", vm, 0, "")) return false;
                   st = vm.state;
                   return true;
               },
               {state},
               {"error"}});
}

}  // namespace ocw
