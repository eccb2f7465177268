// Inventory of the other services through the facade: networks through the
// search service, regions, subscriptions and domains, object storage, block
// storage probes and the database lists.
#include <gtest/gtest.h>

#include "EmulatorFixture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

class InventoryServices : public EmulatorTest {};

std::vector<std::string> SubnetNames(const SNetworkInfoLib& network) {
    std::vector<std::string> out;
    for (const auto& s : network.subnets) out.push_back(s.displayName);
    return out;
}

// ---- networks --------------------------------------------------------------------

TEST_F(InventoryServices, NetworksComeFromTheSearchServiceWithTheirSubnets) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string vcn = FindResourceId("vcn", "ocw-demo-vcn");
    std::vector<SNetworkInfoLib> networks;

    ASSERT_TRUE(facade->GetNetworkList(networks, "", "", "")) << facade->GetLastError();

    ASSERT_EQ(networks.size(), 1u);  // the other VCN is in the other region
    EXPECT_EQ(networks[0].name, "ocw-demo-vcn");
    EXPECT_EQ(networks[0].id, vcn);
    EXPECT_EQ(SubnetNames(networks[0]), (std::vector<std::string>{"ocw-demo-public", "ocw-demo-private-ad1"}));
    EXPECT_EQ(networks[0].subnets[0].id, FindResourceId("subnet", "ocw-demo-public"));
    EXPECT_TRUE(networks[0].subnets[0].availabilityDomain.empty());

    auto searches = RequestsTo("POST", "/20180409/resources");
    ASSERT_EQ(searches.size(), 2u);
    EXPECT_EQ(searches[0].host, "query." + info().region + ".oraclecloud.com");
    EXPECT_EQ(searches[0].body, R"({"type":"Structured","query":"query Vcn resources"})");
    EXPECT_EQ(searches[1].body,
              R"({"type":"Structured","query":"query Subnet resources where vcnId = ')" + vcn + R"('"})");
}

TEST_F(InventoryServices, SubnetsOfOtherDomainsAreDroppedButRegionalOnesStay) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::vector<SNetworkInfoLib> networks;

    ASSERT_TRUE(facade->GetNetworkList(networks, "", "Ocwe:PHX-AD-2", ""));
    ASSERT_EQ(networks.size(), 1u);
    EXPECT_EQ(SubnetNames(networks[0]), (std::vector<std::string>{"ocw-demo-public"}));

    // The domain is found in the subnet's without regard to case.
    networks.clear();
    ASSERT_TRUE(facade->GetNetworkList(networks, "", "phx-ad-1", ""));
    ASSERT_EQ(networks.size(), 1u);
    EXPECT_EQ(SubnetNames(networks[0]), (std::vector<std::string>{"ocw-demo-public", "ocw-demo-private-ad1"}));
}

TEST_F(InventoryServices, SearchesPageWithTheBodyUnchangedAndTheTokenInTheQuery) {
    WriteConfig({{"nOCIPageLimit", "1"}});
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::vector<SNetworkInfoLib> networks;

    ASSERT_TRUE(facade->GetNetworkList(networks, "", "", ""));

    ASSERT_EQ(networks.size(), 1u);
    EXPECT_EQ(networks[0].subnets.size(), 2u);
    auto subnetPages = RequestsTo("POST", "/20180409/resources?limit=1");
    // One VCN page, then two subnet pages (the second with a token).
    ASSERT_EQ(subnetPages.size(), 3u);
    EXPECT_EQ(subnetPages[2].body, subnetPages[1].body);
    EXPECT_NE(subnetPages[2].target.find("&page="), std::string::npos);
    EXPECT_EQ(subnetPages[2].status, 200);
}

// ---- regions and domains --------------------------------------------------------

TEST_F(InventoryServices, RegionsSubscriptionsDataCentresAndDomains) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);

    std::vector<SRegionInfoLib> regions;
    ASSERT_TRUE(facade->GetRegionList(regions));
    ASSERT_GE(regions.size(), 2u);
    EXPECT_EQ(regions[0].regionName, "us-phoenix-1");
    EXPECT_EQ(regions[0].regionKey, "PHX");

    std::vector<SRegionInfoLib> subscribed;
    ASSERT_TRUE(facade->GetSubscribedRegionList(subscribed));
    ASSERT_EQ(subscribed.size(), 2u);
    EXPECT_EQ(subscribed[0].regionName, "us-phoenix-1");
    EXPECT_TRUE(subscribed[0].isHomeRegion);
    EXPECT_EQ(subscribed[1].regionName, "us-ashburn-1");
    EXPECT_EQ(subscribed[1].regionKey, "IAD");
    EXPECT_FALSE(subscribed[1].isHomeRegion);
    EXPECT_EQ(CountRequests("GET", "/20160918/tenancies/" + info().tenancy + "/regionSubscriptions"), 1u);

    std::vector<SDataCenterInfoLib> dataCenters;
    ASSERT_TRUE(facade->GetDCInfoList(dataCenters, 0, 0, ""));
    ASSERT_EQ(dataCenters.size(), 2u);
    EXPECT_EQ(dataCenters[1].name, "us-ashburn-1");
    EXPECT_EQ(dataCenters[1].regionKey, "IAD");

    std::vector<SAvailabilityDomainInfoLib> domains;  // of the tenancy the facade is connected to
    ASSERT_TRUE(facade->GetAvailabilityDomainListForTenancy(domains, "")) << facade->GetLastError();
    ASSERT_EQ(domains.size(), 3u);
    EXPECT_EQ(domains[0].name, "Ocwe:PHX-AD-1");
    EXPECT_EQ(CountRequests("GET", "/20160918/availabilityDomains?compartmentId=" + info().tenancy, "identity."), 1u);

    std::vector<SAvailabilityDomainInfoLib> otherDomains;
    ASSERT_TRUE(facade->GetAvailabilityDomainList(otherDomains, info().tenancy, "us-ashburn-1"));
    ASSERT_EQ(otherDomains.size(), 3u);
    EXPECT_NE(otherDomains[0].name.find("ASHBURN"), std::string::npos) << otherDomains[0].name;
    EXPECT_EQ(CountRequests("GET", "/20160918/availabilityDomains", "identity.us-ashburn-1."), 1u);
    EXPECT_EQ(facade->GetDefaultRegion(), info().region);
}

// ---- object storage --------------------------------------------------------------

TEST_F(InventoryServices, NamespaceIsAskedOnceAndBucketsAreListedUnderIt) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string demo = FindResourceId("compartment", "ocw-demo");

    std::vector<SStorageBucketInfoLib> buckets;
    ASSERT_TRUE(facade->GetBucketListForCompartment(buckets, demo, 0, "")) << facade->GetLastError();
    ASSERT_EQ(buckets.size(), 1u);
    EXPECT_EQ(buckets[0].name, "ocw-demo-bucket");
    EXPECT_EQ(buckets[0].compartmentId, demo);

    std::vector<SStorageBucketInfoLib> again;
    ASSERT_TRUE(facade->GetBucketListForCompartment(again, FindResourceId("compartment", "ocw-demo-db"), 0, ""));
    EXPECT_TRUE(again.empty());

    EXPECT_EQ(CountRequests("GET", "/n"), 3u);  // "/n" once, then two bucket lists
    auto ns = RequestsTo("GET", "/n", "objectstorage.");
    ASSERT_EQ(ns.size(), 3u);
    EXPECT_EQ(ns[0].target, "/n");
    EXPECT_EQ(ns[1].target, "/n/" + info().namespaceName + "/b/?compartmentId=" + demo);
}

// ---- block storage probes --------------------------------------------------------

TEST_F(InventoryServices, DiskExistenceTellsPresentAbsentAndTerminated) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string data = FindResourceId("volume", "ocw-data-1");
    std::string boot = ResourceIds("bootvolume").at(0);

    bool exists = false;
    ASSERT_TRUE(facade->CheckIfDiskExists(data, exists));
    EXPECT_TRUE(exists);
    ASSERT_TRUE(facade->CheckIfDiskExists(boot, exists));
    EXPECT_TRUE(exists);
    EXPECT_EQ(CountRequests("GET", "/20160918/bootVolumes/" + boot), 1u);

    ASSERT_TRUE(facade->CheckIfDiskExists("ocid1.volume.oc1.phx.nosuchvolume", exists));
    EXPECT_FALSE(exists);

    HoldState(data, "TERMINATED");
    exists = true;
    ASSERT_TRUE(facade->CheckIfDiskExists(data, exists));
    EXPECT_FALSE(exists);

    // Any other failure is not an answer: the flag stays as it was.
    ReleaseState(data);
    AddStatusFault("GET", "/20160918/volumes/", 503, 1);
    exists = true;
    EXPECT_FALSE(facade->CheckIfDiskExists(data, exists));
    EXPECT_TRUE(exists);
}

TEST_F(InventoryServices, BootVolumeAttachmentOfAnInstance) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string web1 = FindResourceId("instance", "ocw-web-1");
    std::string demo = FindResourceId("compartment", "ocw-demo");
    std::string ad = ResourceMember(web1, "availabilityDomain");
    SStorageAttachmentInfoLib attachment;

    ASSERT_TRUE(facade->GetBootVolumeAttachmentForInstance(ad, demo, web1, attachment));
    EXPECT_EQ(attachment.instanceName, web1);
    EXPECT_EQ(attachment.state, "ATTACHED");
    EXPECT_NE(attachment.volumeName.find(".bootvolume."), std::string::npos);

    EXPECT_FALSE(facade->GetBootVolumeAttachmentForInstance(ad, demo, "ocid1.instance.oc1.phx.none", attachment));
    EXPECT_EQ(facade->GetLastError(), "No resource found");
}

// ---- databases -----------------------------------------------------------------

TEST_F(InventoryServices, DatabaseListsFollowSystemHomeDatabaseAndBackups) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string dbc = FindResourceId("compartment", "ocw-demo-db");

    std::vector<SOCIDbSystemInfoLib> systems;
    ASSERT_TRUE(facade->GetDbSystemList(systems, dbc)) << facade->GetLastError();
    ASSERT_EQ(systems.size(), 1u);
    EXPECT_EQ(systems[0].displayName, "ocw-demo-db");
    EXPECT_EQ(systems[0].lifecycleState, "AVAILABLE");

    std::vector<SOCIDbHomeInfoLib> homes;
    ASSERT_TRUE(facade->GetDbHomeList(homes, dbc, systems[0].id));
    ASSERT_EQ(homes.size(), 1u);
    EXPECT_EQ(homes[0].dbSystemId, systems[0].id);

    std::vector<SOCIDbNodeInfoLib> nodes;
    ASSERT_TRUE(facade->GetDbNodeList(nodes, dbc, systems[0].id)) << facade->GetLastError();
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(nodes[0].dbSystemId, systems[0].id);
    EXPECT_EQ(CountRequests("GET", "/20160918/dbNodes?compartmentId=" + dbc + "&dbSystemId=" + systems[0].id,
                            "database."),
              1u);

    std::vector<SOCIDatabaseInfoLib> databases;
    ASSERT_TRUE(facade->GetDatabaseList(databases, dbc, homes[0].id));
    ASSERT_EQ(databases.size(), 1u);
    EXPECT_EQ(databases[0].dbName, "DEMODB");

    SOCIDatabaseInfoLib database;
    ASSERT_TRUE(facade->GetDatabaseInfo(database, databases[0].id));
    EXPECT_EQ(database.id, databases[0].id);
    EXPECT_EQ(database.dbHomeId, homes[0].id);

    std::vector<SOCIDbBackupInfoLib> backups;
    ASSERT_TRUE(facade->GetDbBackupList(backups, dbc, database.id));
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(backups[0].displayName, "ocw-demo-db-backup");

    SOCIDbBackupInfoLib backup;
    ASSERT_TRUE(facade->GetDbBackupInfo(backup, backups[0].id));
    EXPECT_EQ(backup.databaseId, database.id);
    EXPECT_EQ(backup.lifecycleState, "ACTIVE");

    for (const auto& r : RequestsTo("", "/20160918/d")) EXPECT_EQ(r.host, "database." + info().region + ".oraclecloud.com");
}

}  // namespace
