// Restore through an image, through the facade against the emulator: a disk
// image is uploaded into the tenant's namespace, imported as an image that the
// caller polls until it is available, and the object is removed afterwards;
// plus the probes a restore makes first (does the instance still exist, which
// availability domains the tenancy has).
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "common/TimeUtil.h"
#include "e2e/EmulatorFixture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::e2e::EmulatorTest;
using ocwtest::e2e::ScopedLogCapture;

constexpr const char* kBucket = "ocw-demo-bucket";

class BackupCycleImageImport : public EmulatorTest {
protected:
    std::string ObjectPath(const std::string& object) const {
        return "/n/" + info().namespaceName + "/b/" + kBucket + "/o/" + object;
    }
    size_t NamespaceLookups() const {
        size_t count = 0;
        for (const auto& request : Requests()) count += request.target == "/n" || request.target == "/n/";
        return count;
    }
};

TEST_F(BackupCycleImageImport, UploadedDiskIsImportedPolledUntilAvailableAndRemoved) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    // Binary, and under the emulator's request-log body cap so it can be compared whole.
    std::string content(200 * 1024 + 17, '\0');
    for (size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 31 % 251);

    ASSERT_TRUE(facade->UploadToObjectStorage(kBucket, "restore-disk.vmdk", content)) << facade->GetLastError();
    auto puts = RequestsTo("PUT", ObjectPath("restore-disk.vmdk"), "objectstorage.");
    ASSERT_EQ(puts.size(), 1u);
    EXPECT_FALSE(puts[0].bodyTruncated);
    EXPECT_TRUE(puts[0].body == content) << "sent " << puts[0].body.size() << " of " << content.size() << " bytes";

    SImageInfoLib image;
    image.displayName = "ocw-restored-image";
    image.compartmentId = FindResourceId("compartment", "ocw-demo");
    ASSERT_TRUE(facade->CreateImage(kBucket, "restore-disk.vmdk", image)) << facade->GetLastError();
    ASSERT_EQ(image.id.rfind("ocid1.image.", 0), 0u) << image.id;
    EXPECT_EQ(image.displayName, "ocw-restored-image");
    auto imports = RequestsTo("POST", "/20160918/images");
    ASSERT_EQ(imports.size(), 1u);
    EXPECT_NE(imports[0].body.find("\"namespaceName\":\"" + info().namespaceName + "\""), std::string::npos)
        << imports[0].body;

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

    ASSERT_TRUE(facade->DeleteStorageObject(kBucket, "restore-disk.vmdk")) << facade->GetLastError();
    EXPECT_EQ(CountRequests("DELETE", ObjectPath("restore-disk.vmdk")), 1u);
    EXPECT_FALSE(facade->DeleteStorageObject(kBucket, "restore-disk.vmdk")) << "already removed";
    EXPECT_FALSE(facade->GetLastError().empty());

    EXPECT_EQ(NamespaceLookups(), 1u) << "the namespace is read once and then answered from the cache";
}

TEST_F(BackupCycleImageImport, ImportThatEndsInAnotherStateIsReportedWithThatState) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SImageInfoLib image;
    image.displayName = "ocw-broken-image";
    image.compartmentId = FindResourceId("compartment", "ocw-demo");
    ASSERT_TRUE(facade->CreateImage(kBucket, "images/demo.vmdk", image)) << facade->GetLastError();
    HoldState(image.id, "DISABLED");

    bool completed = true;
    EXPECT_FALSE(facade->IsImageImportOperationCompleted(image.id, completed, ""));
    EXPECT_EQ(facade->GetLastError(), "Image [" + image.id + "] went into erroneous state [DISABLED] while importing.");
}

TEST_F(BackupCycleImageImport, ImportOfAMissingObjectCarriesTheServicesMessage) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SImageInfoLib image;
    image.displayName = "nothing";
    image.compartmentId = FindResourceId("compartment", "ocw-demo");
    EXPECT_FALSE(facade->CreateImage(kBucket, "no-such-object.vmdk", image));
    EXPECT_NE(facade->GetLastError().find("no-such-object.vmdk"), std::string::npos) << facade->GetLastError();
}

TEST_F(BackupCycleImageImport, UnreachableNamespaceStopsTheUploadBeforeAnyObjectRequest) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    AddStatusFault("GET", "/n", 503, -1, "objectstorage.");
    ScopedLogCapture log(0);
    EXPECT_FALSE(facade->UploadToObjectStorage(kBucket, "x.vmdk", "x"));
    EXPECT_EQ(log.matching("Could not obtain storage namespace for the tenant").size(), 1u);
    EXPECT_EQ(CountRequests("PUT", ""), 0u);
}

TEST_F(BackupCycleImageImport, InstanceExistenceIsAnsweredForLiveGoneAndTerminatedInstances) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string web1 = FindResourceId("instance", "ocw-web-1");
    bool exists = false;
    ASSERT_TRUE(facade->DoesVMExist("", web1, exists)) << facade->GetLastError();
    EXPECT_TRUE(exists);

    const std::string unknown = "ocid1.instance.oc1.phx.doesnotexist";
    ASSERT_TRUE(facade->DoesVMExist("", unknown, exists)) << facade->GetLastError();
    EXPECT_FALSE(exists);

    HoldState(web1, "TERMINATED");
    ASSERT_TRUE(facade->DoesVMExist("", web1, exists)) << facade->GetLastError();
    EXPECT_FALSE(exists);
    ReleaseState(web1);

    AddStatusFault("GET", "/20160918/instances/" + web1, 503, -1);
    EXPECT_FALSE(facade->DoesVMExist("", web1, exists)) << "an unanswered question is not an answer";
}

TEST_F(BackupCycleImageImport, AvailabilityDomainsOfTheTenancy) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    ClearRequestLog();
    std::vector<SAvailabilityDomainInfoLib> domains;
    ASSERT_TRUE(facade->GetAvailabilityDomainListForTenancy(domains, "")) << facade->GetLastError();
    ASSERT_FALSE(domains.empty());
    for (const auto& domain : domains) {
        EXPECT_NE(domain.name.find("AD-"), std::string::npos) << domain.name;
    }
    EXPECT_EQ(CountRequests("GET", "/20160918/availabilityDomains?compartmentId=" + info().tenancy, "identity."), 1u);
}

}  // namespace
