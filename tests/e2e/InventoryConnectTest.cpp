// Connecting to the emulated tenancy: the tenancy read that checks the
// connection, and what a key the cloud does not know does.
#include <gtest/gtest.h>

#include "EmulatorFixture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

class InventoryConnect : public EmulatorTest {};

TEST_F(InventoryConnect, ConnectReadsTheTenancyOnceFromTheIdentityServiceOfTheHomeRegion) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);

    auto reads = RequestsTo("GET", "/20160918/tenancies/");
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].target, "/20160918/tenancies/" + info().tenancy);
    EXPECT_EQ(reads[0].host, "identity." + info().region + ".oraclecloud.com");
    EXPECT_EQ(reads[0].status, 200);
    EXPECT_EQ(Requests().size(), 1u);
    EXPECT_EQ(facade->GetDefaultRegion(), info().region);
}

TEST_F(InventoryConnect, ConnectInAnotherRegionAddressesThatRegionsHost) {
    auto facade = ConnectFacade("us-ashburn-1");
    ASSERT_TRUE(facade);
    EXPECT_EQ(CountRequests("GET", "/20160918/tenancies/", "identity.us-ashburn-1."), 1u);
}

TEST_F(InventoryConnect, UnknownKeyIsReportedWithTheServiceMessageAndNotRetried) {
    std::string keyFile = WriteUnknownKeyFile();
    ASSERT_FALSE(keyFile.empty());
    COracleCloudWrapper facade(ORACLE_CLOUD_INFRASTRUCTURE);

    EXPECT_FALSE(facade.Connect(info().tenancy, UserToken("", keyFile), "", OCI_SERVICE_CORE));

    auto sent = Requests();
    ASSERT_EQ(sent.size(), 1u) << "a 401 must not be retried";
    EXPECT_EQ(sent[0].status, 401);
    EXPECT_FALSE(sent[0].rejection.empty());
    EXPECT_FALSE(facade.GetLastError().empty());
    EXPECT_NE(sent[0].responseBody.find(facade.GetLastError()), std::string::npos)
        << "last error [" << facade.GetLastError() << "] is not the service's message: " << sent[0].responseBody;
}

}  // namespace
