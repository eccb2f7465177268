// How inventory reads behave when the cloud throttles or fails, and when a
// read is aimed at another region.
#include <gtest/gtest.h>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;
using ocwtest::LogCapture;

class InventoryFaults : public EmulatorTest {};

std::vector<int> Statuses(const std::vector<ocwemu::LoggedRequest>& requests) {
    std::vector<int> out;
    for (const auto& r : requests) out.push_back(r.status);
    return out;
}

// ---- retries -----------------------------------------------------------------------

TEST_F(InventoryFaults, ThrottlingBurstIsRetriedUntilTheListSucceeds) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    AddStatusFault("GET", "/20160918/instances", 429, 3);
    std::vector<SVMInfoLib> vms;

    ASSERT_TRUE(facade->GetVMInfoListForHost(vms, FindResourceId("compartment", "ocw-demo"), "", 0, ""))
        << facade->GetLastError();

    EXPECT_EQ(vms.size(), 3u);
    EXPECT_EQ(Statuses(RequestsTo("GET", "/20160918/instances")), (std::vector<int>{429, 429, 429, 200}));
}

TEST_F(InventoryFaults, InternalErrorBurstOnASecondPageIsRetriedAndNoPageIsLost) {
    WriteConfig({{"nOCIPageLimit", "2"}});
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string demo = FindResourceId("compartment", "ocw-demo");
    std::vector<SVMInfoLib> vms;
    {
        // The first page goes through; the service then fails twice.
        ocwtest::LogTrigger trigger("partial list size: [2]",
                                               [this] { AddStatusFault("GET", "/20160918/instances", 500, 2); });
        ASSERT_TRUE(facade->GetVMInfoListForHost(vms, demo, "", 0, "")) << facade->GetLastError();
        EXPECT_TRUE(trigger.fired());
    }

    std::vector<std::string> names;
    for (const auto& vm : vms) names.push_back(vm.vmName);
    EXPECT_EQ(names, (std::vector<std::string>{"ocw-web-1", "ocw-web-2", "ocw-win-1"}));
    auto sent = RequestsTo("GET", "/20160918/instances");
    EXPECT_EQ(Statuses(sent), (std::vector<int>{200, 500, 500, 200}));
    ASSERT_EQ(sent.size(), 4u);
    // Every attempt of the second page carries the same token.
    EXPECT_EQ(sent[1].target, sent[3].target);
    EXPECT_NE(sent[3].target.find("&page="), std::string::npos);
}

TEST_F(InventoryFaults, ServiceUnavailableFailsAtOnceWithTheServiceMessage) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    AddStatusFault("GET", "/20160918/instances", 503, 1);
    std::vector<SVMInfoLib> vms;

    EXPECT_FALSE(facade->GetVMInfoListForHost(vms, FindResourceId("compartment", "ocw-demo"), "", 0, ""));

    auto sent = RequestsTo("GET", "/20160918/instances");
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].status, 503);
    EXPECT_FALSE(facade->GetLastError().empty());
    EXPECT_NE(sent[0].responseBody.find(facade->GetLastError()), std::string::npos) << facade->GetLastError();
    EXPECT_TRUE(vms.empty());
}

TEST_F(InventoryFaults, RetriesEndAfterTheConfiguredCount) {
    WriteConfig({{"nOCIMaximumRequestRetryCount", "2"}});
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    AddStatusFault("GET", "/20160918/instances", 429, -1);
    std::vector<SVMInfoLib> vms;

    EXPECT_FALSE(facade->GetVMInfoListForHost(vms, FindResourceId("compartment", "ocw-demo"), "", 0, ""));

    EXPECT_EQ(CountRequests("GET", "/20160918/instances"), 3u);
    EXPECT_FALSE(facade->GetLastError().empty());
}

// ---- region switch ----------------------------------------------------------------

TEST_F(InventoryFaults, ReadInAnotherRegionGoesToItsHostAndComesBack) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string demo = FindResourceId("compartment", "ocw-demo");
    std::vector<SVMInfoLib> vms;
    {
        LogCapture log(2);
        ASSERT_TRUE(facade->GetVMInfoListForHost(vms, demo, "", 0, "us-ashburn-1")) << facade->GetLastError();
        EXPECT_EQ(log.matching("Region set to: us-ashburn-1").size(), 1u);
        EXPECT_EQ(log.matching("Region reset to: " + info().region).size(), 1u);
    }

    ASSERT_EQ(vms.size(), 1u);
    EXPECT_EQ(vms[0].vmName, "ocw-dr-1");
    EXPECT_EQ(CountRequests("GET", "/20160918/instances?", "iaas.us-ashburn-1.oraclecloud.com"), 1u);
    EXPECT_EQ(facade->GetDefaultRegion(), info().region);

    // The next read without a region is the home region's again.
    vms.clear();
    ASSERT_TRUE(facade->GetVMInfoListForHost(vms, demo, "", 0, ""));
    EXPECT_EQ(vms.size(), 3u);
    EXPECT_EQ(CountRequests("GET", "/20160918/instances?", "iaas." + info().region + "."), 1u);
}

TEST_F(InventoryFaults, FailedReadInAnotherRegionStillComesBack) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    AddStatusFault("POST", "/20180409/resources", 404, -1, "us-ashburn-1");
    std::vector<SNetworkInfoLib> networks;

    EXPECT_FALSE(facade->GetNetworkList(networks, "", "", "us-ashburn-1"));
    EXPECT_EQ(facade->GetDefaultRegion(), info().region);

    ASSERT_TRUE(facade->GetNetworkList(networks, "", "", "")) << facade->GetLastError();
    ASSERT_EQ(networks.size(), 1u);
    EXPECT_EQ(networks[0].name, "ocw-demo-vcn");
    auto searches = RequestsTo("POST", "/20180409/resources");
    ASSERT_EQ(searches.size(), 3u);
    EXPECT_EQ(searches[0].host, "query.us-ashburn-1.oraclecloud.com");
    EXPECT_EQ(searches[1].host, "query." + info().region + ".oraclecloud.com");
}

TEST_F(InventoryFaults, RegionEqualToTheCurrentOneSwitchesNothing) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::vector<SVMInfoLib> vms;
    LogCapture log(2);

    ASSERT_TRUE(facade->GetVMInfoListForHost(vms, FindResourceId("compartment", "ocw-demo"), "", 0, info().region));

    EXPECT_TRUE(log.matching("Region set to").empty());
    EXPECT_TRUE(log.matching("Region reset to").empty());
}

}  // namespace
