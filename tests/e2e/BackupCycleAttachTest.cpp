// Backup cycle, attachment side, through the facade against the emulator:
// new volumes are created and attached to an instance (iSCSI details come back
// once attached), the instance's attachment limit is reported through the
// flag, and a batch detach carries on past volumes that are already gone and
// waits until the rest are detached.
#include <gtest/gtest.h>

#include <httplib.h>

#include <algorithm>

#include "common/TimeUtil.h"
#include "e2e/EmulatorFixture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::e2e::EmulatorTest;
using ocwtest::e2e::ScopedLogCapture;

class BackupCycleAttach : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        web1 = FindResourceId("instance", "ocw-web-1");
        data1 = FindResourceId("volume", "ocw-data-1");  // attached to ocw-web-1 by the seed
        scratch = FindResourceId("volume", "ocw-scratch");
        ASSERT_FALSE(web1.empty());
        ASSERT_FALSE(data1.empty());
        ASSERT_FALSE(scratch.empty());
    }

    // The lifecycle state the emulator holds for a resource now ("" when gone).
    std::string StateOf(const std::string& id) {
        std::lock_guard<std::mutex> lock(emu().store().mutex());
        ocwemu::Resource* r = emu().store().get(id, ocwemu::NowMs());
        return r == nullptr ? std::string() : emu().store().state(*r, ocwemu::NowMs());
    }

    // Ids of the attachments of a volume to ocw-web-1 that are not detached.
    std::vector<std::string> LiveAttachmentsOf(const std::string& volumeId) {
        std::vector<std::string> live;
        for (const std::string& id : ResourceIds("volumeattachment")) {
            const std::string state = StateOf(id);
            if (ResourceMember(id, "volumeId") == volumeId && ResourceMember(id, "instanceId") == web1 &&
                state != "DETACHED" && state != "DETACHING") {
                live.push_back(id);
            }
        }
        return live;
    }

    // A new block volume in ocw-web-1's domain and compartment, waited for until AVAILABLE.
    std::string CreateVolumeBesideWeb1(COracleCloudWrapper& facade, const std::string& name) {
        SDiskInfoLib disk;
        disk.volumeName = name;
        disk.sizeBytes = 50ULL << 30;
        disk.availabilityDomain = ResourceMember(web1, "availabilityDomain");
        disk.compartmentId = ResourceMember(web1, "compartmentId");
        EXPECT_TRUE(facade.CreateVolume(disk, "")) << facade.GetLastError();
        return disk.guid;
    }

    // The emulator's admin interface: how many volumes one instance may have attached.
    void SetAttachmentLimit(int limit) {
        httplib::SSLClient admin("127.0.0.1", info().port);
        admin.set_ca_cert_path(info().caFile.c_str());
        auto answer = admin.Post("/_emulator/limits", "{\"attachmentsPerInstance\":" + std::to_string(limit) + "}",
                                 "application/json");
        ASSERT_TRUE(answer) << httplib::to_string(answer.error());
        ASSERT_EQ(answer->status, 200) << answer->body;
    }

    std::string web1, data1, scratch;
};

TEST_F(BackupCycleAttach, AttachedVolumeComesBackWithItsISCSIDetails) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    bool limitReached = false;
    SStorageAttachmentInfoLib attachment;  // no type: the backend asks for iSCSI

    ASSERT_TRUE(facade->AttachVolume(scratch, web1, limitReached, attachment)) << facade->GetLastError();

    EXPECT_FALSE(limitReached);
    EXPECT_EQ(attachment.state, "ATTACHED");
    EXPECT_EQ(attachment.attachmentType, "iscsi");
    EXPECT_EQ(attachment.volumeName, scratch);
    EXPECT_EQ(attachment.instanceName, web1);
    EXPECT_EQ(attachment.iscsiIpv4.rfind("169.254.2.", 0), 0u) << attachment.iscsiIpv4;
    EXPECT_EQ(attachment.iscsiIqn.rfind("iqn.2015-12.com.oracleiaas:", 0), 0u) << attachment.iscsiIqn;
    EXPECT_EQ(attachment.iscsiPort, "3260");
    EXPECT_EQ(LiveAttachmentsOf(scratch), std::vector<std::string>{attachment.attachmentId});

    auto posts = RequestsTo("POST", "/20160918/volumeAttachments/");
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_NE(posts[0].body.find("\"type\":\"iscsi\""), std::string::npos) << posts[0].body;
    EXPECT_NE(posts[0].body.find("\"instanceId\":\"" + web1 + "\""), std::string::npos) << posts[0].body;
    EXPECT_NE(posts[0].body.find("\"volumeId\":\"" + scratch + "\""), std::string::npos) << posts[0].body;
    EXPECT_EQ(posts[0].host, "iaas." + info().region + ".oraclecloud.com");
}

TEST_F(BackupCycleAttach, NewVolumeIsCreatedAvailableAndAttachedByName) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string created = CreateVolumeBesideWeb1(*facade, "ocw-restore-1");
    ASSERT_FALSE(created.empty());
    EXPECT_EQ(StateOf(created), "AVAILABLE");
    EXPECT_EQ(ResourceMember(created, "displayName"), "ocw-restore-1");

    bool noFreeIndex = true;
    ASSERT_TRUE(facade->AttachVolume(created, web1, noFreeIndex)) << facade->GetLastError();
    EXPECT_FALSE(noFreeIndex);
    ASSERT_EQ(LiveAttachmentsOf(created).size(), 1u);
    EXPECT_EQ(StateOf(LiveAttachmentsOf(created)[0]), "ATTACHED");
}

TEST_F(BackupCycleAttach, VolumeOfSizeZeroIsRefusedWithoutARequest) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    ClearRequestLog();
    SDiskInfoLib disk;
    disk.volumeName = "empty";
    EXPECT_FALSE(facade->CreateVolume(disk, ""));
    EXPECT_TRUE(Requests().empty());
}

TEST_F(BackupCycleAttach, AttachmentLimitOfTheInstanceSetsTheFlag) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SetAttachmentLimit(1);  // ocw-data-1 already takes the one slot

    bool limitReached = false;
    SStorageAttachmentInfoLib attachment;
    EXPECT_FALSE(facade->AttachVolume(scratch, web1, limitReached, attachment));
    EXPECT_TRUE(limitReached);
    EXPECT_NE(facade->GetLastError().find("limit"), std::string::npos) << facade->GetLastError();

    bool noFreeIndex = false;
    EXPECT_FALSE(facade->AttachVolume(scratch, web1, noFreeIndex));
    EXPECT_TRUE(noFreeIndex) << "the three-argument form reports the same answer";
    EXPECT_TRUE(LiveAttachmentsOf(scratch).empty());
}

TEST_F(BackupCycleAttach, BatchDetachSkipsVolumesAlreadyGoneAndWaitsForTheRest) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string extra = CreateVolumeBesideWeb1(*facade, "ocw-restore-2");
    const std::string deleted = CreateVolumeBesideWeb1(*facade, "ocw-restore-3");
    bool flag = false;
    ASSERT_TRUE(facade->AttachVolume(scratch, web1, flag)) << facade->GetLastError();
    ASSERT_TRUE(facade->AttachVolume(extra, web1, flag)) << facade->GetLastError();
    // Gone before the batch: scratch's attachment is detached, one volume deleted.
    ASSERT_TRUE(facade->DetachVolume(scratch, web1)) << facade->GetLastError();
    EXPECT_TRUE(LiveAttachmentsOf(scratch).empty()) << "the single detach waited";
    ASSERT_TRUE(facade->DeleteVolume(deleted)) << facade->GetLastError();
    const std::vector<std::string> data1Attachments = LiveAttachmentsOf(data1);
    const std::vector<std::string> extraAttachments = LiveAttachmentsOf(extra);
    ASSERT_EQ(data1Attachments.size(), 1u);
    ASSERT_EQ(extraAttachments.size(), 1u);
    ClearRequestLog();
    ScopedLogCapture log(1);

    EXPECT_TRUE(facade->DetachVolumes({data1, scratch, extra, deleted}, web1)) << facade->GetLastError();

    EXPECT_EQ(StateOf(data1Attachments[0]), "DETACHED");
    EXPECT_EQ(StateOf(extraAttachments[0]), "DETACHED");
    EXPECT_EQ(CountRequests("DELETE", "/20160918/volumeAttachments/"), 2u);
    EXPECT_GE(CountRequests("GET", "/20160918/volumeAttachments/" + extraAttachments[0]), 1u)
        << "the batch waited for the detachments";
    EXPECT_EQ(log.matching("Only 2/4 volumes could be put on detach request").size(), 1u);
    EXPECT_EQ(log.matching("Skipping detachment.").size(), 2u);
    EXPECT_EQ(log.matching("Waiting for deletion of [2] attachments ").size(), 1u);

    // The volumes are free again: they can be deleted.
    EXPECT_TRUE(facade->DeleteVolume(extra)) << facade->GetLastError();
    EXPECT_EQ(StateOf(extra).rfind("TERMINAT", 0), 0u) << StateOf(extra);
}

TEST_F(BackupCycleAttach, BatchDetachFailsWhenTheCloudRefusesOneButDetachesTheOthers) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    bool flag = false;
    ASSERT_TRUE(facade->AttachVolume(scratch, web1, flag)) << facade->GetLastError();
    const std::string refused = LiveAttachmentsOf(data1).at(0);
    AddStatusFault("DELETE", "/20160918/volumeAttachments/" + refused, 409, -1);

    EXPECT_FALSE(facade->DetachVolumes({data1, scratch}, web1));

    EXPECT_EQ(StateOf(refused), "ATTACHED");
    EXPECT_TRUE(LiveAttachmentsOf(scratch).empty());
}

}  // namespace
