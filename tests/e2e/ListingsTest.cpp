// The listings for finding what backups and restores left behind, and object
// names that reach the service exactly as the caller wrote them.
#include <gtest/gtest.h>

#include <algorithm>

#include "EmulatorFixture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

class Listings : public EmulatorTest {};

template <class T, class Name>
std::vector<std::string> Names(const std::vector<T>& items, Name name) {
    std::vector<std::string> out;
    for (const T& item : items) out.push_back(name(item));
    std::sort(out.begin(), out.end());
    return out;
}

TEST_F(Listings, VolumesBackupsAndAttachmentsOfACompartmentAcrossPages) {
    WriteConfig({{"nOCIPageLimit", "2"}});
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string demo = FindResourceId("compartment", "ocw-demo");

    std::vector<SDiskInfoLib> volumes;
    ASSERT_TRUE(facade->ListVolumes(volumes, demo, "")) << facade->GetLastError();
    EXPECT_EQ(Names(volumes, [](const SDiskInfoLib& d) { return d.name + (d.bootable ? " [boot]" : ""); }),
              (std::vector<std::string>{"ocw-data-1", "ocw-scratch", "ocw-web-1 (Boot Volume) [boot]",
                                        "ocw-web-2 (Boot Volume) [boot]", "ocw-win-1 (Boot Volume) [boot]"}))
        << "the scratch volume, attached to nothing, is listed too";

    std::vector<SSnapshotInfoLib> backups;
    ASSERT_TRUE(facade->ListVolumeBackups(backups, demo, "")) << facade->GetLastError();
    EXPECT_EQ(Names(backups, [](const SSnapshotInfoLib& b) { return b.description; }),
              std::vector<std::string>{"ocw-data-1-backup"});

    std::vector<SStorageAttachmentInfoLib> attachments;
    ASSERT_TRUE(facade->ListVolumeAttachments(attachments, demo, "")) << facade->GetLastError();
    const std::string data = FindResourceId("volume", "ocw-data-1");
    const std::string web1 = FindResourceId("instance", "ocw-web-1");
    EXPECT_EQ(Names(attachments, [&](const SStorageAttachmentInfoLib& a) {
                  return std::string(a.volumeName == data ? "data" : a.volumeName.find(".bootvolume.") != std::string::npos ? "boot" : "other") +
                         (a.instanceName == web1 ? "@web1" : "");
              }),
              (std::vector<std::string>{"boot", "boot", "boot@web1", "data@web1"}));
    EXPECT_EQ(CountRequests("GET", "/20160918/bootVolumes?compartmentId=" + demo), 2u) << "three, two a page";
}

TEST_F(Listings, ObjectNamesRoundTripThroughUploadListingAndDeletion) {
    WriteConfig({{"nOCIPageLimit", "3"}});
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::vector<std::string> names = {"a b.txt", "hash#frag.txt", "q?x=1.txt", "plus+pct%41.txt",
                                            "caf\xC3\xA9.txt", "dir/sub name/x.txt"};
    for (const std::string& name : names) {
        ASSERT_TRUE(facade->UploadToObjectStorage("ocw-demo-bucket", name, "content of " + name))
            << name << ": " << facade->GetLastError();
    }
    // Signed as sent: the emulator verified every signature over the encoded path.
    for (const auto& put : RequestsTo("PUT", "/n/")) EXPECT_TRUE(put.rejection.empty()) << put.target;
    EXPECT_EQ(RequestsTo("PUT", "/n/").back().target.substr(RequestsTo("PUT", "/n/").back().target.find("/o/")),
              "/o/dir/sub%20name/x.txt");

    std::vector<SStorageObjectInfoLib> objects;
    ASSERT_TRUE(facade->ListObjects("ocw-demo-bucket", objects)) << facade->GetLastError();
    std::vector<std::string> expected = names;
    expected.insert(expected.end(), {"hello.txt", "images/demo.vmdk"});
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(Names(objects, [](const SStorageObjectInfoLib& o) { return o.name; }), expected);
    for (const SStorageObjectInfoLib& o : objects) {
        if (o.name == "a b.txt") EXPECT_EQ(o.sizeBytes, std::string("content of a b.txt").size());
    }
    EXPECT_EQ(CountRequests("GET", "/n/" + info().namespaceName + "/b/ocw-demo-bucket/o"), 3u) << "8 objects, 3 a page";

    for (const std::string& name : names) {
        ASSERT_TRUE(facade->DeleteStorageObject("ocw-demo-bucket", name)) << name << ": " << facade->GetLastError();
    }
    objects.clear();
    ASSERT_TRUE(facade->ListObjects("ocw-demo-bucket", objects));
    EXPECT_EQ(objects.size(), 2u);

    // A listing that cannot be made is a failure, not an empty bucket.
    EXPECT_FALSE(facade->ListObjects("no-such-bucket", objects));
    EXPECT_EQ(facade->GetLastFailure().serviceCode, "BucketNotFound");
}

}  // namespace
