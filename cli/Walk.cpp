#include "Walk.h"

#include <set>

namespace ocw {

using OracleCloudSDKWrapper::COracleCloudWrapper;
using OracleCloudSDKWrapper::SContainerInfoLib;
using OracleCloudSDKWrapper::SVMInfoLib;

std::vector<SContainerInfoLib> AllCompartments(Session& s) {
    const std::string tenancy = s.profile().tenancy;
    std::vector<SContainerInfoLib> result;
    std::set<std::string> seen;
    std::vector<std::string> pending{tenancy};
    for (size_t next = 0; next < pending.size(); ++next) {
        const std::string parent = pending[next];
        std::vector<SContainerInfoLib> list;
        s.call("list compartments of " + parent,
               [&](COracleCloudWrapper& c) { return c.GetContainerInfoList(list, parent, ""); });
        // The parent comes last in its own listing; the root is listed first here.
        for (const SContainerInfoLib& c : list) {
            if (c.guid == tenancy && seen.insert(c.guid).second) result.insert(result.begin(), c);
        }
        for (const SContainerInfoLib& c : list) {
            if (c.guid == parent || c.state == "DELETED" || !seen.insert(c.guid).second) continue;
            result.push_back(c);
            pending.push_back(c.guid);
        }
    }
    return result;
}

std::vector<SVMInfoLib> ListInstances(Session& s, const std::string& compartment) {
    std::vector<SVMInfoLib> result;
    std::vector<std::string> ids;
    if (!compartment.empty()) {
        ids.push_back(compartment);
    } else {
        for (const SContainerInfoLib& c : AllCompartments(s)) ids.push_back(c.guid);
    }
    for (const std::string& id : ids) {
        std::vector<SVMInfoLib> list;
        s.call("list instances of compartment " + id,
               [&](COracleCloudWrapper& c) { return c.GetVMInfoListForHost(list, id, "", 0, ""); });
        result.insert(result.end(), list.begin(), list.end());
    }
    return result;
}

std::string FirstAvailabilityDomain(Session& s, const std::string& compartment) {
    std::vector<OracleCloudSDKWrapper::SAvailabilityDomainInfoLib> domains;
    const std::string c = s.compartmentOr(compartment);
    s.call("list availability domains", [&](COracleCloudWrapper& f) { return f.GetAvailabilityDomainList(domains, c, ""); });
    if (domains.empty()) throw CliError(kExitFailure, "the region has no availability domain");
    return domains.front().name;
}

void WaitForVolume(Session& s, const std::string& id, const std::string& label) {
    s.waitForState(label, [&](std::string& state) { return s.cloud().GetVolumeStatus(id, state); }, {"AVAILABLE"},
                   {"FAULTY", "TERMINATED"});
}

}  // namespace ocw
