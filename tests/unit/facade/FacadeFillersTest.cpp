// Detail fillers complete records the caller already holds; which reads they
// run depends on the flag bits, and a list stops at its first failure.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FacadeTestBackends.h"

using namespace facadetest;
using ::testing::ElementsAre;

namespace {
constexpr unsigned long long kBit26 = 1ULL << 26;
constexpr unsigned long long kBit29 = 1ULL << 29;
}  // namespace

TEST(FacadeFillVMInfo, NoFlagsMeansNothingToReadAndSuccess) {
    FakeFacade f;
    f.queries->failing = {"GetVMInfo"};
    SVMInfoLib vm;
    vm.vmName = "web01";
    EXPECT_TRUE(f.facade.FillVMInfoDetails(vm, 0, "r1"));
    EXPECT_TRUE(f.queries->calls.empty());
    EXPECT_EQ(f.connection->requests, 0);
}

TEST(FacadeFillVMInfo, FlagsRereadTheVMByNameAndGuid) {
    FakeFacade f;
    f.queries->vmToReturn.vmName = "web01";
    f.queries->vmToReturn.platform = "Linux";
    SVMInfoLib vm;
    vm.vmName = "web01";
    vm.guid = "g1";
    EXPECT_TRUE(f.facade.FillVMInfoDetails(vm, 2 | 16, "r1"));
    EXPECT_EQ(vm.platform, "Linux");
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetVMInfo("web01","g1",18,"r1"))"));
}

TEST(FacadeFillVMInfo, ListStopsAtTheFirstFailure) {
    FakeFacade f;
    f.queries->failing = {"GetVMInfo"};
    std::vector<SVMInfoLib> vms(3);
    EXPECT_FALSE(f.facade.FillVMInfoListDetails(vms, 16, ""));
    EXPECT_EQ(f.queries->calls.size(), 1u);
    EXPECT_EQ(f.facade.GetLastError(), "GetVMInfo failed in the backend");

    f.queries->calls.clear();
    EXPECT_TRUE(f.facade.FillVMInfoListDetails(vms, 0, ""));
    EXPECT_TRUE(f.queries->calls.empty());
}

TEST(FacadeFillHostInfo, Bit29ReadsTheHostsVMsAndBit26ItsNetworks) {
    FakeFacade f;
    f.queries->vmToReturn.vmName = "vm-in-compartment";
    SNetworkInfoLib network;
    network.name = "vcn";
    f.queries->networksToReturn = {network};
    SHostInfoLib host;
    host.hostId = "ocid1.compartment.oc1..c";
    host.hostName = "prod";

    EXPECT_TRUE(f.facade.FillHostInfoDetails(host, "AD-2", kBit29 | kBit26, "r1"));
    ASSERT_EQ(host.vms.size(), 1u);
    EXPECT_EQ(host.vms[0].vmName, "vm-in-compartment");
    ASSERT_EQ(host.networks.size(), 1u);
    EXPECT_THAT(f.queries->calls,
                ElementsAre(R"(GetVMInfoListForHost("ocid1.compartment.oc1..c","prod",603979776,"r1"))",
                            R"(GetNetworkList("ocid1.compartment.oc1..c","AD-2","r1"))"));

    // Networks already present are kept and not read again.
    f.queries->calls.clear();
    EXPECT_TRUE(f.facade.FillHostInfoDetails(host, "", kBit26, ""));
    EXPECT_TRUE(f.queries->calls.empty());
}

TEST(FacadeFillHostInfo, FailedVMListStopsBeforeTheNetworks) {
    FakeFacade f;
    f.queries->failing = {"GetVMInfoListForHost"};
    std::vector<SHostInfoLib> hosts(2);
    EXPECT_FALSE(f.facade.FillHostInfoListDetails(hosts, kBit29 | kBit26, ""));
    EXPECT_EQ(f.queries->calls.size(), 1u);
    EXPECT_EQ(f.facade.GetLastError(), "GetVMInfoListForHost failed in the backend");
}

TEST(FacadeFillHostInfo, ListPassesAnEmptyAvailabilityDomain) {
    FakeFacade f;
    std::vector<SHostInfoLib> hosts(2);
    hosts[0].hostId = "c1";
    hosts[1].hostId = "c2";
    EXPECT_TRUE(f.facade.FillHostInfoListDetails(hosts, kBit26, "r9"));
    EXPECT_THAT(f.queries->calls,
                ElementsAre(R"(GetNetworkList("c1","","r9"))", R"(GetNetworkList("c2","","r9"))"));
}

TEST(FacadeFillDCInfo, Bit26ReadsKeyPairsAndSecurityGroupsSorted) {
    FakeFacade f;
    f.queries->keyPairsToReturn = {{"b", "/b", ""}, {"A", "/A", ""}};
    f.queries->groupsToReturn = {{"g", "/g"}};
    std::vector<SDataCenterInfoLib> dcs(2);

    EXPECT_TRUE(f.facade.FillDCInfoListDetails(dcs, 0, kBit26, ""));
    EXPECT_TRUE(f.queries->calls.empty()) << "only the first flag word selects the details";

    EXPECT_TRUE(f.facade.FillDCInfoListDetails(dcs, kBit26, 0, ""));
    ASSERT_EQ(dcs[1].keyPairs.size(), 2u);
    EXPECT_EQ(dcs[1].keyPairs[0].name, "A");
    EXPECT_EQ(dcs[1].securityGroups.size(), 1u);
    EXPECT_EQ(f.queries->calls.size(), 4u);
}

TEST(FacadeFillDCInfo, FailedSecurityGroupsFailTheDataCentre) {
    FakeFacade f;
    f.queries->failing = {"GetSecurityGroupList"};
    SDataCenterInfoLib dc;
    EXPECT_FALSE(f.facade.FillDCInfoDetails(dc, kBit26, 0, ""));
}
