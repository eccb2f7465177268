// The OCI queries object on its own connection, for the reads the facade
// reaches only through composites: attachment look-ups, volume and backup
// reads, the namespace cache, the raw instance document, and the existence
// probe that leaves its region switched.
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

TEST_F(InventoryBackendQueries, AttachmentOfAVolumeToItsInstanceIsFound) {
    std::string web1 = FindResourceId("instance", "ocw-web-1");
    std::string data = FindResourceId("volume", "ocw-data-1");
    SStorageAttachmentInfoLib attachment;
    bool notAttached = true;

    ASSERT_TRUE(queries_->GetStorageAttachmentForDiskAndInstance(data, web1, attachment, notAttached, ""))
        << queries_->GetLastError();

    EXPECT_FALSE(notAttached);
    EXPECT_EQ(attachment.volumeName, data);
    EXPECT_EQ(attachment.instanceName, web1);
    EXPECT_EQ(attachment.state, "ATTACHED");
    EXPECT_EQ(attachment.attachmentType, "iscsi");
    EXPECT_EQ(attachment.iscsiPort, "3260");
    EXPECT_EQ(attachment.iscsiIqn, ResourceMember(attachment.attachmentId, "_iqn"));
    auto lookups = RequestsTo("GET", "/20160918/volumeAttachments/?compartmentId=");
    ASSERT_EQ(lookups.size(), 1u);
    EXPECT_EQ(lookups[0].target, "/20160918/volumeAttachments/?compartmentId=" +
                                     FindResourceId("compartment", "ocw-demo") + "&volumeId=" + data +
                                     "&instanceId=" + web1);
}

TEST_F(InventoryBackendQueries, VolumeNotAttachedOrOnlyDetachedIsReportedAsNotAttached) {
    std::string web1 = FindResourceId("instance", "ocw-web-1");
    SStorageAttachmentInfoLib attachment;
    bool notAttached = false;

    EXPECT_FALSE(queries_->GetStorageAttachmentForDiskAndInstance(FindResourceId("volume", "ocw-scratch"), web1,
                                                                  attachment, notAttached, ""));
    EXPECT_TRUE(notAttached);
    EXPECT_EQ(queries_->GetLastError(), "Storage attachment not found");

    std::string data = FindResourceId("volume", "ocw-data-1");
    HoldState(ResourceIds("volumeattachment").at(0), "DETACHED");
    notAttached = false;
    EXPECT_FALSE(queries_->GetStorageAttachmentForDiskAndInstance(data, web1, attachment, notAttached, ""));
    EXPECT_TRUE(notAttached);
    EXPECT_EQ(queries_->GetLastError(), "Storage attachment not found in list");
}

TEST_F(InventoryBackendQueries, AttachmentLookUpOfAnUnknownInstanceIsAFailureNotANotAttached) {
    SStorageAttachmentInfoLib attachment;
    bool notAttached = true;

    EXPECT_FALSE(queries_->GetStorageAttachmentForDiskAndInstance(FindResourceId("volume", "ocw-data-1"),
                                                                  "ocid1.instance.oc1.phx.none", attachment,
                                                                  notAttached, ""));

    EXPECT_FALSE(notAttached);
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeAttachments"), 0u);
}

TEST_F(InventoryBackendQueries, VolumeAndBootVolumeReadsPickTheirPathsFromTheId) {
    std::string data = FindResourceId("volume", "ocw-data-1");
    std::string boot = ResourceIds("bootvolume").at(0);

    SDiskInfoLib disk;
    ASSERT_TRUE(queries_->GetDiskInfo(boot, disk, 0, ""));
    EXPECT_EQ(disk.guid, boot);
    EXPECT_EQ(disk.status, "AVAILABLE");

    SDiskInfoLib byRecord;
    byRecord.guid = data;
    ASSERT_TRUE(queries_->GetVolumeInfo(byRecord, 0));
    EXPECT_EQ(byRecord.name, "ocw-data-1");
    EXPECT_EQ(byRecord.sizeBytes, 100ULL << 30);

    SDiskInfoLib bootByRecord;
    bootByRecord.guid = boot;
    ASSERT_TRUE(queries_->GetVolumeInfo(bootByRecord, 0));

    EXPECT_EQ(CountRequests("GET", "/20160918/bootVolumes/" + boot), 2u);
    EXPECT_EQ(CountRequests("GET", "/20160918/volumes/" + data), 1u);
}

TEST_F(InventoryBackendQueries, VolumeBackupIsReadAsASnapshot) {
    std::string backup = ResourceIds("volumebackup").at(0);
    SSnapshotInfoLib snapshot;

    ASSERT_TRUE(queries_->GetSnapshotInfoForSnapshotName(backup, snapshot)) << queries_->GetLastError();

    EXPECT_EQ(snapshot.name, backup);
    EXPECT_EQ(snapshot.volumeName, FindResourceId("volume", "ocw-data-1"));
    EXPECT_EQ(snapshot.status, "AVAILABLE");
    EXPECT_GT(snapshot.startTime, 0);
}

TEST_F(InventoryBackendQueries, NamespaceIsCachedForTheLifeOfTheObject) {
    std::string first;
    std::string second;

    ASSERT_TRUE(queries_->GetNamespaceForTenant(first));
    ASSERT_TRUE(queries_->GetNamespaceForTenant(second));

    EXPECT_EQ(first, info().namespaceName);
    EXPECT_EQ(second, first);
    EXPECT_EQ(CountRequests("GET", "/n"), 1u);
    EXPECT_EQ(RequestsTo("GET", "/n").at(0).host, "objectstorage." + info().region + ".oraclecloud.com");
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

TEST_F(InventoryBackendQueries, PageLimitIsReadFromTheConfiguration) {
    WriteConfig({{"nOCIPageLimit", "50"}});
    COracleCloudInfrastructureQueries configured(&backend_->connection, &backend_->parser);
    std::vector<SRegionInfoLib> regions;

    ASSERT_TRUE(configured.GetRegionInfoList(regions, 0));

    EXPECT_EQ(configured.GetPageLimit(), 50u);
    EXPECT_EQ(CountRequests("GET", "/20160918/regions?limit=50"), 1u);
    EXPECT_EQ(queries_->GetPageLimit(), 0u);
}

}  // namespace
