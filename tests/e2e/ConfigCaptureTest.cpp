// Configuration capture and restore through the facade against the emulator:
// the documents an agent saves beside an instance's data, read back into a VM
// record.
#include <gtest/gtest.h>

#include <map>

#include "e2e/EmulatorFixture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::e2e::EmulatorTest;

class ConfigCapture : public EmulatorTest {};

TEST_F(ConfigCapture, OciInstanceDocumentRoundTripsIntoTheSameVmRecord) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string web1 = FindResourceId("instance", "ocw-web-1");
    ASSERT_FALSE(web1.empty());

    // An OCI id has no "/": accepted, and only the instance's own document is kept.
    std::map<std::string, std::string> configs{{"keep", "x"}};
    ASSERT_TRUE(facade->GetInstanceConfigurations(web1, configs)) << facade->GetLastError();
    EXPECT_EQ(configs.size(), 2u);
    EXPECT_EQ(configs["keep"], "x");
    ASSERT_FALSE(configs[".json"].empty());

    SVMInfoLib saved;
    ASSERT_TRUE(facade->ReadInstanceConfig(configs[".json"], saved));
    SVMInfoLib live;
    ASSERT_TRUE(facade->GetVMInfo("", web1, live, 0, "")) << facade->GetLastError();
    EXPECT_EQ(saved.guid, web1);
    EXPECT_EQ(saved.vmName, "ocw-web-1");
    EXPECT_EQ(saved.shape, live.shape);
    EXPECT_EQ(saved.availabilityDomain, live.availabilityDomain);
    EXPECT_EQ(saved.compartmentId, live.compartmentId);

    // A missing instance fails with nothing added; a damaged document does not parse.
    std::map<std::string, std::string> none;
    EXPECT_FALSE(facade->GetInstanceConfigurations("ocid1.instance.oc1..missing", none));
    EXPECT_TRUE(none.empty());
    EXPECT_FALSE(facade->ReadInstanceConfig(configs[".json"].substr(0, configs[".json"].size() / 2), saved));
}

}  // namespace
