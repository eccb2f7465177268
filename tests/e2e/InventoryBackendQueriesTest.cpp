// The OCI queries object on its own connection, for what the facade does not
// show: an attachment look-up that fails is not a "not attached", the raw
// instance document, lists that append, and the existence probe that leaves
// its region switched.
#include <gtest/gtest.h>

#include "EmulatorFixture.h"
#include "platform/JsonHelper.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

class InventoryBackendQueries : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        if (HasFatalFailure()) return;
        backend_ = ConnectBackend();
        ASSERT_TRUE(backend_);
        queries_ = &backend_->queries;
    }

    std::unique_ptr<ocwtest::OciBackend> backend_;
    OracleCloudSDKWrapper::COracleCloudInfrastructureQueries* queries_ = nullptr;
};

TEST_F(InventoryBackendQueries, AttachmentLookUpOfAnUnknownInstanceIsAFailureNotANotAttached) {
    SStorageAttachmentInfoLib attachment;
    bool notAttached = true;

    EXPECT_FALSE(queries_->GetStorageAttachmentForDiskAndInstance(FindResourceId("volume", "ocw-data-1"),
                                                                  "ocid1.instance.oc1.phx.none", attachment,
                                                                  notAttached, ""));

    EXPECT_FALSE(notAttached);
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeAttachments"), 0u);
}

TEST_F(InventoryBackendQueries, InstanceConfigurationIsTheDocumentAsSent) {
    std::string web1 = FindResourceId("instance", "ocw-web-1");
    std::string json;

    ASSERT_TRUE(queries_->GetInstanceConfigJson(web1, json));

    auto sent = RequestsTo("GET", "/20160918/instances/" + web1);
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(json, sent[0].responseBody);
    JsonValue doc;
    ASSERT_TRUE(JsonHelper::Parse(json, doc));
    EXPECT_EQ(JsonHelper::GetStringValue(doc.as_object(), "displayName"), "ocw-web-1");
}

TEST_F(InventoryBackendQueries, ExistenceProbeLeavesItsRegionSwitched) {
    bool exists = true;

    ASSERT_TRUE(queries_->CheckIfDiskExists(FindResourceId("volume", "ocw-data-1"), exists, "us-ashburn-1"));

    // The volume lives in the home region: the other region does not know it.
    EXPECT_FALSE(exists);
    EXPECT_EQ(backend_->connection.getRegion(), "us-ashburn-1");
    EXPECT_EQ(CountRequests("GET", "/20160918/volumes/", "iaas.us-ashburn-1."), 1u);
}

TEST_F(InventoryBackendQueries, ListsAppendToWhatTheCallerPassed) {
    std::vector<SAvailabilityDomainInfoLib> domains(2);

    ASSERT_TRUE(queries_->GetAvailabilityDomainList(domains, 0, info().tenancy, ""));

    EXPECT_EQ(domains.size(), 5u);
    EXPECT_TRUE(domains[0].name.empty());
    EXPECT_EQ(domains[2].name, "Ocwe:PHX-AD-1");
}

}  // namespace
