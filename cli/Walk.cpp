#include "Walk.h"

#include <set>

#include "Progress.h"

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

void ForEachCompartment(Session& s, const std::string& compartment, const std::string& label,
                        const std::function<size_t(const SContainerInfoLib&)>& list) {
    Progress progress(label, Progress::Mode::Listing);
    std::vector<SContainerInfoLib> compartments;
    if (compartment.empty()) {
        compartments = AllCompartments(s);
    } else {
        SContainerInfoLib one;
        s.call("read compartment " + compartment,
               [&](COracleCloudWrapper& c) { return c.GetContainerInfo(compartment, "", one, 0, ""); });
        if (one.guid.empty()) one.guid = compartment;
        compartments.push_back(one);
    }
    size_t found = 0;
    for (size_t i = 0; i < compartments.size(); ++i) {
        progress.state("compartment " + std::to_string(i + 1) + " of " + std::to_string(compartments.size()) + ", " +
                       std::to_string(found) + " found");
        found += list(compartments[i]);
    }
}

std::vector<SVMInfoLib> ListInstances(Session& s, const std::string& compartment) {
    std::vector<SVMInfoLib> result;
    ForEachCompartment(s, compartment, "list instances", [&](const SContainerInfoLib& c) {
        std::vector<SVMInfoLib> list;
        s.call("list instances of compartment " + c.guid,
               [&](COracleCloudWrapper& f) { return f.GetVMInfoListForHost(list, c.guid, "", 0, ""); });
        result.insert(result.end(), list.begin(), list.end());
        return list.size();
    });
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
    s.waitFor({label, id, [&](std::string& state) { return s.cloud().GetVolumeStatus(id, state); }, {"AVAILABLE"},
               {"FAULTY", "TERMINATED"}});
}

}  // namespace ocw
