// Restore through an image against the emulator: a disk image is uploaded
// into the tenant's namespace, imported as an image that the caller polls until
// it is available, and removed afterwards; plus the probe a restore makes first
// (does the instance still exist).
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::LogCapture;

constexpr const char* kBucket = "ocw-demo-bucket";

class RestoreImages : public ocwtest::EmulatorTest {
protected:
    SImageInfoLib ImageNamed(const std::string& name) {
        SImageInfoLib image;
        image.displayName = name;
        image.compartmentId = FindResourceId("compartment", "ocw-demo");
        return image;
    }
};

TEST_F(RestoreImages, UploadedDiskIsImportedPolledUntilAvailableAndCleanedUp) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    // Binary, and under the emulator's request-log body cap so it can be compared whole.
    std::string content(200 * 1024 + 17, '\0');
    for (size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 31 % 251);
    const std::string object = "restore/disk.vmdk";

    ASSERT_TRUE(facade->UploadToObjectStorage(kBucket, object, content)) << facade->GetLastError();
    auto puts = RequestsTo("PUT", "/n/");
    ASSERT_EQ(puts.size(), 1u);
    EXPECT_EQ(puts[0].target, "/n/" + info().namespaceName + "/b/" + kBucket + "/o/" + object);
    EXPECT_EQ(puts[0].host, "objectstorage." + info().region + ".oraclecloud.com");
    EXPECT_FALSE(puts[0].bodyTruncated);
    EXPECT_TRUE(puts[0].body == content) << "sent " << puts[0].body.size() << " of " << content.size() << " bytes";

    SImageInfoLib image = ImageNamed("ocw-restored-image");
    ASSERT_TRUE(facade->CreateImage(kBucket, object, image)) << facade->GetLastError();
    ASSERT_EQ(image.id.rfind("ocid1.image.", 0), 0u) << image.id;
    EXPECT_EQ(image.displayName + "|" + image.lifecycleState, "ocw-restored-image|IMPORTING");
    auto imports = RequestsTo("POST", "/20160918/images");
    ASSERT_EQ(imports.size(), 1u);
    EXPECT_EQ(boost::json::serialize(BodyOf(imports[0]).at("imageSourceDetails")),
              R"({"sourceType":"objectStorageTuple","namespaceName":")" + info().namespaceName +
                  R"(","bucketName":"ocw-demo-bucket","objectName":"restore/disk.vmdk","sourceImageType":"VMDK"})");

    // Held in IMPORTING, the poll answers "not yet" without failing.
    HoldState(image.id, "IMPORTING");
    bool completed = true;
    ASSERT_TRUE(facade->IsImageImportOperationCompleted(image.id, completed, "")) << facade->GetLastError();
    EXPECT_FALSE(completed);
    ReleaseState(image.id);
    for (int i = 0; i < 100 && !completed; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ASSERT_TRUE(facade->IsImageImportOperationCompleted(image.id, completed, "")) << facade->GetLastError();
    }
    EXPECT_TRUE(completed);

    ASSERT_TRUE(facade->DeleteStorageObject(kBucket, object)) << facade->GetLastError();
    EXPECT_EQ(CountRequests("DELETE", puts[0].target), 1u);
    EXPECT_FALSE(facade->DeleteStorageObject(kBucket, object)) << "already removed";
    EXPECT_FALSE(facade->GetLastError().empty());
    ASSERT_TRUE(facade->DeleteImage(image.id)) << facade->GetLastError();
    EXPECT_EQ(CountRequests("DELETE", "/20160918/images/" + image.id), 1u);
    EXPECT_EQ(StateOf(image.id), "DELETED");

    size_t namespaceReads = 0;
    for (const auto& request : Requests()) namespaceReads += request.target == "/n" || request.target == "/n/";
    EXPECT_EQ(namespaceReads, 1u) << "the namespace is read once and then answered from the cache";
}

TEST_F(RestoreImages, ImportThatFailsOrEndsInAnotherStateIsReportedWithItsReason) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SImageInfoLib missing = ImageNamed("nothing");
    EXPECT_FALSE(facade->CreateImage(kBucket, "no-such-object.vmdk", missing));
    EXPECT_NE(facade->GetLastError().find("no-such-object.vmdk"), std::string::npos) << facade->GetLastError();
    EXPECT_TRUE(missing.id.empty());

    SImageInfoLib image = ImageNamed("ocw-broken-image");
    ASSERT_TRUE(facade->CreateImage(kBucket, "images/demo.vmdk", image)) << facade->GetLastError();
    HoldState(image.id, "DISABLED");
    bool completed = true;
    EXPECT_FALSE(facade->IsImageImportOperationCompleted(image.id, completed, ""));
    EXPECT_EQ(facade->GetLastError(), "Image [" + image.id + "] went into erroneous state [DISABLED] while importing.");
}

TEST_F(RestoreImages, UnreachableNamespaceStopsTheUploadBeforeAnyObjectRequest) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    AddStatusFault("GET", "/n", 503, -1, "objectstorage.");
    LogCapture log(0);
    EXPECT_FALSE(facade->UploadToObjectStorage(kBucket, "x.vmdk", "x"));
    EXPECT_EQ(log.matching("Could not obtain storage namespace for the tenant").size(), 1u);
    EXPECT_EQ(CountRequests("PUT", ""), 0u);
}

TEST_F(RestoreImages, InstanceExistenceIsAnsweredForLiveGoneAndTerminatedInstances) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string web1 = FindResourceId("instance", "ocw-web-1");
    bool exists = false;
    ASSERT_TRUE(facade->DoesVMExist("", web1, exists)) << facade->GetLastError();
    EXPECT_TRUE(exists);
    ASSERT_TRUE(facade->DoesVMExist("", "ocid1.instance.oc1.phx.doesnotexist", exists)) << facade->GetLastError();
    EXPECT_FALSE(exists);
    HoldState(web1, "TERMINATED");
    exists = true;
    ASSERT_TRUE(facade->DoesVMExist("", web1, exists)) << facade->GetLastError();
    EXPECT_FALSE(exists);
    ReleaseState(web1);
    AddStatusFault("GET", "/20160918/instances/" + web1, 503, -1);
    EXPECT_FALSE(facade->DoesVMExist("", web1, exists)) << "an unanswered question is not an answer";
}

}  // namespace
