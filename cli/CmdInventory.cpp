// regions, compartments, shapes, networks: read-only views of the tenancy.
#include <iostream>
#include <memory>
#include <set>

#include "Commands.h"
#include "Ocid.h"
#include "Output.h"
#include "RecordJson.h"

namespace ocw {

using boost::json::object;
using OracleCloudSDKWrapper::COracleCloudWrapper;

void AddCompartmentOption(CLI::App& command, std::string& compartment) {
    command.add_option("-c,--compartment", compartment, "compartment OCID (default: the tenancy, the root compartment)")
        ->check(OcidOf(kCompartmentOcid));
}

namespace {

void RunRegions(Session& s, bool subscribedOnly) {
    std::vector<oci::SRegionInfoLib> all;
    std::vector<oci::SRegionInfoLib> subscribed;
    s.call("list subscribed regions", [&](COracleCloudWrapper& c) { return c.GetSubscribedRegionList(subscribed); });
    if (!subscribedOnly) {
        s.call("list regions", [&](COracleCloudWrapper& c) { return c.GetRegionList(all); });
    } else {
        all = subscribed;
    }
    ListOutput out({{"name", "NAME"}, {"key", "KEY"}, {"subscribed", "SUBSCRIBED"}, {"status", "STATUS"},
                    {"isHomeRegion", "HOME"}});
    for (const oci::SRegionInfoLib& region : all) {
        object row = ToJson(region);
        row["subscribed"] = false;
        for (const oci::SRegionInfoLib& sub : subscribed) {
            if (sub.regionName == region.regionName || (!sub.regionKey.empty() && sub.regionKey == region.regionKey)) {
                row = ToJson(sub);
                if (row["key"].as_string().empty()) row["key"] = region.regionKey;
                row["subscribed"] = true;
            }
        }
        out.add(std::move(row));
    }
    out.print(std::cout, s.json());
}

void RunCompartments(Session& s, const std::string& parent, bool recursive) {
    ListOutput out({{"name", "NAME"}, {"id", "ID"}, {"lifecycleState", "STATE"}, {"compartmentId", "PARENT"}});
    std::set<std::string> seen;
    std::vector<std::string> pending{parent};
    while (!pending.empty()) {
        const std::string current = pending.front();
        pending.erase(pending.begin());
        std::vector<oci::SContainerInfoLib> list;
        s.call("list compartments" + (current.empty() ? std::string() : " of " + current),
               [&](COracleCloudWrapper& c) { return c.GetContainerInfoList(list, current, ""); });
        for (const oci::SContainerInfoLib& compartment : list) {
            if (!seen.insert(compartment.guid).second) continue;
            out.add(ToJson(compartment));
            // The listing also returns the parent itself.
            const bool isParent = compartment.guid == current || (current.empty() && compartment.guid == s.profile().tenancy);
            if (recursive && !isParent && compartment.state != "DELETED") pending.push_back(compartment.guid);
        }
    }
    out.print(std::cout, s.json());
}

void RunShapes(Session& s, const std::string& compartment, const std::string& image, const std::string& domain) {
    std::vector<oci::SInstanceShapeInfoLib> shapes;
    const std::string c = s.compartmentOr(compartment);
    s.call("list shapes", [&](COracleCloudWrapper& f) {
        return f.GetInstanceShapeListForImage(shapes, c, image, domain, "");
    });
    ListOutput out({{"shape", "SHAPE"}, {"ocpus", "OCPUS"}, {"memoryInGBs", "MEMORY_GB"}});
    for (const oci::SInstanceShapeInfoLib& shape : shapes) out.add(ToJson(shape));
    out.print(std::cout, s.json());
}

void RunNetworks(Session& s, const std::string& compartment, const std::string& domain) {
    std::vector<oci::SNetworkInfoLib> networks;
    const std::string c = s.compartmentOr(compartment);
    s.call("list networks", [&](COracleCloudWrapper& f) { return f.GetNetworkList(networks, c, domain, ""); });
    if (s.json()) {
        boost::json::array list;
        for (const oci::SNetworkInfoLib& n : networks) {
            boost::json::array subnets;
            for (const oci::SSubnetInfoLib& sub : n.subnets) {
                subnets.push_back(object{{"displayName", sub.displayName},
                                         {"id", sub.id},
                                         {"cidrBlock", sub.cidrBlock},
                                         {"availabilityDomain", sub.availabilityDomain},
                                         {"lifecycleState", sub.lifecycleState}});
            }
            list.push_back(object{{"displayName", n.name},
                                  {"id", n.id},
                                  {"cidrBlock", n.ipAddressPrefix},
                                  {"subnets", std::move(subnets)}});
        }
        std::cout << boost::json::serialize(list) << '\n';
        return;
    }
    // People read one line per subnet, its network beside it.
    ListOutput out({{"vcn", "VCN"}, {"vcnId", "VCN_ID"}, {"subnet", "SUBNET"}, {"subnetId", "SUBNET_ID"},
                    {"availabilityDomain", "AVAILABILITY_DOMAIN"}});
    for (const oci::SNetworkInfoLib& n : networks) {
        if (n.subnets.empty()) out.add(object{{"vcn", n.name}, {"vcnId", n.id}});
        for (const oci::SSubnetInfoLib& sub : n.subnets) {
            out.add(object{{"vcn", n.name},
                           {"vcnId", n.id},
                           {"subnet", sub.displayName},
                           {"subnetId", sub.id},
                           {"availabilityDomain", sub.availabilityDomain.empty() ? "(regional)" : sub.availabilityDomain}});
        }
    }
    out.print(std::cout, false);
}

}  // namespace

void RegisterInventoryCommands(CLI::App& app, Action& action) {
    {
        auto subscribedOnly = std::make_shared<bool>(false);
        CLI::App* cmd = app.add_subcommand("regions", "list regions; subscribed and home regions are marked");
        cmd->add_flag("--subscribed", *subscribedOnly, "only the tenancy's subscribed regions");
        cmd->callback([&action, subscribedOnly] { action = [subscribedOnly](Session& s) { RunRegions(s, *subscribedOnly); }; });
    }
    {
        struct Opts { std::string parent; bool recursive = false; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = app.add_subcommand("compartments", "list compartments under a parent (and the parent itself)");
        cmd->add_option("--parent", o->parent, "parent compartment OCID (default: the tenancy)")
            ->check(OcidOf(kCompartmentOcid));
        cmd->add_flag("-r,--recursive", o->recursive, "walk the whole compartment tree");
        cmd->callback([&action, o] { action = [o](Session& s) { RunCompartments(s, o->parent, o->recursive); }; });
    }
    {
        struct Opts { std::string compartment, image, domain; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = app.add_subcommand("shapes", "list the instance shapes available");
        AddCompartmentOption(*cmd, o->compartment);
        cmd->add_option("--image", o->image, "only shapes compatible with this image OCID")->check(OcidOf(kImageOcid));
        cmd->add_option("--availability-domain", o->domain, "only shapes of this availability domain");
        cmd->callback([&action, o] { action = [o](Session& s) { RunShapes(s, o->compartment, o->image, o->domain); }; });
    }
    {
        struct Opts { std::string compartment, domain; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = app.add_subcommand("networks", "list virtual cloud networks and their subnets");
        AddCompartmentOption(*cmd, o->compartment);
        cmd->add_option("--availability-domain", o->domain, "keep only subnets of this availability domain (and regional ones)");
        cmd->callback([&action, o] { action = [o](Session& s) { RunNetworks(s, o->compartment, o->domain); }; });
    }
}

}  // namespace ocw
