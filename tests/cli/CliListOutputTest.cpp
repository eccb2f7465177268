// Lists as aligned tables and as --json, against the seeded demo tenancy.
#include <set>
#include <sstream>

#include "CliFixture.h"

namespace ocwtest {
namespace {

using CliLists = CliTest;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) lines.push_back(line);
    return lines;
}

TEST_F(CliLists, InstanceJsonCarriesTheCloudsIdsAndStates) {
    const CliResult r = Ocw({"instances", "list", "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const boost::json::value list = Json(r);
    ASSERT_TRUE(list.is_array());
    ASSERT_EQ(list.get_array().size(), 4u);
    std::set<std::string> names;
    for (const boost::json::value& item : list.get_array()) {
        names.insert(std::string(item.at("displayName").as_string()));
        const boost::json::object& o = item.get_object();
        EXPECT_EQ(o.at("lifecycleState").as_string(), "RUNNING");
        EXPECT_EQ(std::string(o.at("id").as_string()).rfind("ocid1.instance.", 0), 0u);
        EXPECT_FALSE(o.at("availabilityDomain").as_string().empty());
    }
    EXPECT_EQ(names, std::set<std::string>(std::begin(kSeededInstances), std::end(kSeededInstances)));
    // The same ids the cloud holds: each one can be shown.
    const std::string id = IdOf(list, "displayName", "ocw-web-1");
    const CliResult shown = Ocw({"--json", "instances", "show", id});
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    const boost::json::value vm = Json(shown);
    EXPECT_EQ(vm.at("displayName").as_string(), "ocw-web-1");
    // ocw-web-1 has its boot volume and the block volume ocw-data-1.
    ASSERT_EQ(vm.at("volumes").as_array().size(), 2u);
    EXPECT_FALSE(vm.at("vnics").as_array().empty());
}

TEST_F(CliLists, CompartmentsWalkTheWholeTreeWhenRecursive) {
    const CliResult flat = Ocw({"--json", "compartments"});
    const CliResult deep = Ocw({"compartments", "--recursive", "--json"});
    ASSERT_EQ(flat.exitCode, 0) << flat.err;
    ASSERT_EQ(deep.exitCode, 0) << deep.err;
    // ocw-demo-apps sits below ocw-demo: only the walk finds it.
    EXPECT_TRUE(IdOf(Json(flat), "name", "ocw-demo-apps").empty());
    EXPECT_FALSE(IdOf(Json(deep), "name", "ocw-demo-apps").empty());
    EXPECT_EQ(Json(deep).as_array().size(), 4u);
    // Instances of that nested compartment are listed too.
    const CliResult instances = Ocw({"--json", "instances", "list"});
    EXPECT_FALSE(IdOf(Json(instances), "displayName", "ocw-app-1").empty());
}

TEST_F(CliLists, RegionsMarkSubscribedAndHomeRegions) {
    const CliResult r = Ocw({"regions", "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    int home = 0;
    int subscribed = 0;
    const boost::json::value regions = Json(r);
    for (const boost::json::value& item : regions.as_array()) {
        home += item.at("isHomeRegion").as_bool() ? 1 : 0;
        subscribed += item.at("subscribed").as_bool() ? 1 : 0;
        if (item.at("isHomeRegion").as_bool()) {
            EXPECT_EQ(item.at("name").as_string(), "us-phoenix-1");
        }
    }
    EXPECT_EQ(home, 1);
    EXPECT_EQ(subscribed, 2);
}

TEST_F(CliLists, RegionOptionOverridesTheProfilesRegion) {
    const CliResult r = Ocw({"--json", "instances", "list", "--region", "us-ashburn-1"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const boost::json::value list = Json(r);
    ASSERT_EQ(list.as_array().size(), 1u) << r.out;
    EXPECT_FALSE(IdOf(list, "displayName", "ocw-dr-1").empty());
}

TEST_F(CliLists, EmptyListPrintsHeaderAndNone) {
    // A compartment without instances: the database compartment.
    const std::string dbCompartment = IdOf(Json(Ocw({"--json", "compartments"})), "name", "ocw-demo-db");
    ASSERT_FALSE(dbCompartment.empty());
    const CliResult table = Ocw({"instances", "list", "-c", dbCompartment});
    ASSERT_EQ(table.exitCode, 0) << table.err;
    EXPECT_EQ(Lines(table.out).size(), 2u) << table.out;
    EXPECT_NE(table.out.find("(none)"), std::string::npos);
    const CliResult json = Ocw({"instances", "list", "-c", dbCompartment, "--json"});
    EXPECT_EQ(json.out, "[]\n");
}

TEST_F(CliLists, NetworksShowEverySubnetBesideItsNetwork) {
    const CliResult r = Ocw({"networks"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("ocw-demo-public"), std::string::npos);
    EXPECT_NE(r.out.find("ocw-demo-private-ad1"), std::string::npos);
    const boost::json::value json = Json(Ocw({"networks", "--json"}));
    const std::string vcn = IdOf(json, "displayName", "ocw-demo-vcn");
    ASSERT_FALSE(vcn.empty()) << boost::json::serialize(json);
}

}  // namespace
}  // namespace ocwtest
