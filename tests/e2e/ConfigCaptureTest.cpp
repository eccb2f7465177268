// Configuration capture and restore through the facade against the emulator:
// the documents an agent saves beside an instance's data (OCI: the instance;
// Classic: the instance and its three orchestrations), read back into a VM
// record, and a Classic instance recreated under an orchestration from them.
#include <gtest/gtest.h>

#include <map>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

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

TEST_F(ConfigCapture, ClassicInstanceIsCapturedWithItsOrchestrationsAndRedeployedFromThem) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    // A Classic name is a path: a bare one is refused before any request.
    ClearRequestLog();
    std::map<std::string, std::string> configs;
    EXPECT_FALSE(facade->GetInstanceConfigurations("web2", configs));
    EXPECT_TRUE(Requests().empty());

    SVMInfoLib web2;
    ASSERT_TRUE(facade->GetVMInfo("web2", "", web2, 16, "")) << facade->GetLastError();
    ASSERT_TRUE(facade->GetInstanceConfigurations(web2.fullName, configs)) << facade->GetLastError();
    ASSERT_EQ(configs.size(), 4u);
    for (const char* key : {".json", "_master.json", "_instance.json", "_storage.json"}) {
        EXPECT_FALSE(configs[key].empty()) << key;
    }
    // web1 was launched without orchestrations: best effort, three empty documents.
    SVMInfoLib web1;
    ASSERT_TRUE(facade->GetVMInfo("web1", "", web1, 16, "")) << facade->GetLastError();
    std::map<std::string, std::string> plain;
    ASSERT_TRUE(facade->GetInstanceConfigurations(web1.fullName, plain)) << facade->GetLastError();
    EXPECT_EQ(plain.size(), 4u);
    EXPECT_FALSE(plain[".json"].empty());
    EXPECT_TRUE(plain["_master.json"].empty() && plain["_instance.json"].empty() && plain["_storage.json"].empty());

    SVMInfoLib saved;
    ASSERT_TRUE(facade->ReadInstanceConfig(configs[".json"], saved));
    EXPECT_EQ(saved.fullName, web2.fullName);
    SVMInfoLib requested;
    ASSERT_TRUE(facade->ReadInstanceOrchestration(configs["_instance.json"], requested));
    EXPECT_EQ(requested.vmName, "web2");
    EXPECT_EQ(requested.compartmentId, info().classicUser);
    ASSERT_EQ(requested.disks.size(), 1u);
    EXPECT_TRUE(requested.disks[0].bootable);

    // Redeploy as a new instance on a copy of its boot volume.
    SDiskInfoLib copy;
    copy.volumeName = "web2-copy-boot";
    copy.sizeBytes = 20ULL << 30;
    ASSERT_TRUE(facade->CreateVolume(copy, "")) << facade->GetLastError();
    ASSERT_TRUE(facade->MakeVolumeBootable(copy.name)) << facade->GetLastError();
    requested.vmName = "web2-copy";
    requested.disks[0].volumeName = copy.name;
    ASSERT_TRUE(facade->DeployVMFromOrchestration(requested)) << facade->GetLastError();
    EXPECT_EQ(requested.fullName.rfind(ClassicUserPath() + "/web2-copy", 0), 0u) << requested.fullName;
    EXPECT_FALSE(requested.guid.empty());
    std::map<std::string, std::string> redeployed;
    ASSERT_TRUE(facade->GetInstanceConfigurations(requested.fullName, redeployed)) << facade->GetLastError();
    EXPECT_FALSE(redeployed["_master.json"].empty());
}

}  // namespace
