// The volume side of the backup cycle against the emulator: volumes created
// and waited for (here or in another region), iSCSI and paravirtualized
// attachments, the instance's attachment limit, disks added to an instance,
// and detaching one or many volumes, waiting until they are free.
#include <gtest/gtest.h>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::LogCapture;

class BackupVolumes : public ocwtest::EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        web1 = FindResourceId("instance", "ocw-web-1");
        data1 = FindResourceId("volume", "ocw-data-1");  // attached to ocw-web-1 by the seed
        scratch = FindResourceId("volume", "ocw-scratch");
        ASSERT_FALSE(web1.empty() || data1.empty() || scratch.empty());
    }

    // A disk record for a new volume in ocw-web-1's domain and compartment.
    SDiskInfoLib DiskBesideWeb1(const std::string& name) {
        SDiskInfoLib disk;
        disk.volumeName = name;
        disk.sizeBytes = 50ULL << 30;
        disk.availabilityDomain = ResourceMember(web1, "availabilityDomain");
        disk.compartmentId = ResourceMember(web1, "compartmentId");
        return disk;
    }

    std::string CreateVolumeBesideWeb1(COracleCloudWrapper& facade, const std::string& name) {
        SDiskInfoLib disk = DiskBesideWeb1(name);
        EXPECT_TRUE(facade.CreateVolume(disk, "")) << facade.GetLastError();
        return disk.guid;
    }

    // Ids of the attachments of a volume to ocw-web-1 that are neither detached nor detaching.
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

    std::string web1, data1, scratch;
};

TEST_F(BackupVolumes, NewVolumeIsWaitedForNamedByItsIdAndAttachedWithItsIscsiDetails) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SDiskInfoLib disk = DiskBesideWeb1("ocw-restore-1");
    ASSERT_TRUE(facade->CreateVolume(disk, "")) << facade->GetLastError();
    EXPECT_EQ(disk.name, disk.guid);
    EXPECT_EQ(disk.status, "AVAILABLE");
    EXPECT_EQ(StateOf(disk.guid), "AVAILABLE");
    EXPECT_EQ(ResourceMember(disk.guid, "displayName"), "ocw-restore-1");
    auto posts = RequestsTo("POST", "/20160918/volumes");
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_EQ(posts[0].target, "/20160918/volumes/");
    EXPECT_GE(CountRequests("GET", "/20160918/volumes/" + disk.guid), 1u);

    ClearRequestLog();
    LogCapture log(1);
    bool limitReached = false;
    SStorageAttachmentInfoLib attachment;  // no type: the backend asks for iSCSI
    ASSERT_TRUE(facade->AttachVolume(disk.guid, web1, limitReached, attachment)) << facade->GetLastError();
    EXPECT_FALSE(limitReached);
    EXPECT_EQ(attachment.state + "|" + attachment.attachmentType + "|" + attachment.volumeName + "|" +
                  attachment.instanceName + "|" + attachment.iscsiPort,
              "ATTACHED|iscsi|" + disk.guid + "|" + web1 + "|3260");
    EXPECT_EQ(attachment.iscsiIpv4.rfind("169.254.2.", 0), 0u) << attachment.iscsiIpv4;
    EXPECT_EQ(attachment.iscsiIqn.rfind("iqn.2015-12.com.oracleiaas:", 0), 0u) << attachment.iscsiIqn;
    EXPECT_EQ(LiveAttachmentsOf(disk.guid), std::vector<std::string>{attachment.attachmentId});
    auto attach = RequestsTo("POST", "/20160918/volumeAttachments");
    ASSERT_EQ(attach.size(), 1u);
    EXPECT_EQ(attach[0].body, R"({"instanceId":")" + web1 + R"(","volumeId":")" + disk.guid + R"(","type":"iscsi"})");
    EXPECT_EQ(attach[0].host, "iaas." + info().region + ".oraclecloud.com");
    // At least one poll for ATTACHED and then the re-read for the target.
    EXPECT_GE(CountRequests("GET", "/20160918/volumeAttachments/" + attachment.attachmentId), 2u);
    EXPECT_EQ(log.matching("Volume attachment type is not specified. Assuming attachment type \"iscsi\" ").size(), 1u);

    // The three-argument form attaches by name.
    bool noFreeIndex = true;
    ASSERT_TRUE(facade->AttachVolume(scratch, web1, noFreeIndex)) << facade->GetLastError();
    EXPECT_FALSE(noFreeIndex);
    ASSERT_EQ(LiveAttachmentsOf(scratch).size(), 1u);
    EXPECT_EQ(StateOf(LiveAttachmentsOf(scratch)[0]), "ATTACHED");

    // A volume of size zero is refused before anything is sent.
    ClearRequestLog();
    SDiskInfoLib empty;
    empty.volumeName = "empty";
    EXPECT_FALSE(facade->CreateVolume(empty, ""));
    EXPECT_TRUE(Requests().empty());
}

TEST_F(BackupVolumes, VolumeInAnotherRegionIsCreatedThereAndTheRegionRestored) {
    auto backend = ConnectBackend();
    ASSERT_TRUE(backend);
    const std::string dr = "us-ashburn-1";
    SDiskInfoLib disk = DiskBesideWeb1("dr-vol");
    disk.availabilityDomain = ResourceMember(FindResourceId("instance", "ocw-dr-1"), "availabilityDomain");
    ASSERT_TRUE(backend->ops.CreateVolume(disk, dr)) << backend->ops.GetLastError();
    EXPECT_EQ(backend->connection.getRegion(), info().region);
    EXPECT_EQ(CountRequests("POST", "/20160918/volumes", "iaas." + dr + "."), 1u);
    EXPECT_GE(CountRequests("GET", "/20160918/volumes/" + disk.guid, "iaas." + dr + "."), 1u);
    EXPECT_EQ(CountRequests("", "/20160918/volumes", "iaas." + info().region + "."), 0u);
    EXPECT_FALSE(backend->ops.CreateVolume(disk, dr + "-nowhere"));
    EXPECT_EQ(backend->connection.getRegion(), info().region) << "restored after a failure as well";
}

TEST_F(BackupVolumes, ParavirtualizedAttachmentKeepsItsNameAndHasNoIscsiDetails) {
    auto backend = ConnectBackend();
    ASSERT_TRUE(backend);
    SVMInfoLib vm;
    vm.guid = web1;
    SDiskInfoLib disk;
    disk.guid = scratch;
    SStorageAttachmentInfoLib attachment;
    attachment.attachmentType = "paravirtualized";
    attachment.name = "scratch-pv";
    bool limitReached = false;
    ASSERT_TRUE(backend->ops.CreateVolumeAttachmentToInstance(disk, vm, limitReached, attachment))
        << backend->ops.GetLastError();
    EXPECT_EQ(attachment.name + "|" + attachment.attachmentType, "scratch-pv|paravirtualized");
    EXPECT_EQ(attachment.iscsiIpv4 + attachment.iscsiPort, "");
    EXPECT_EQ(BodyOf(RequestsTo("POST", "/20160918/volumeAttachments").at(0)).at("displayName").as_string(),
              "scratch-pv");
}

TEST_F(BackupVolumes, AttachmentLimitSetsTheFlagInBothFormsAndOtherRefusalsDoNot) {
    SetAttachmentLimit(1);  // ocw-data-1 already takes the one slot
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    bool limitReached = false;
    SStorageAttachmentInfoLib attachment;
    EXPECT_FALSE(facade->AttachVolume(scratch, web1, limitReached, attachment));
    EXPECT_TRUE(limitReached);
    EXPECT_NE(facade->GetLastError().find("limit of 1"), std::string::npos) << facade->GetLastError();
    EXPECT_TRUE(attachment.attachmentId.empty());
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeAttachments/"), 0u) << "nothing to wait for";
    bool noFreeIndex = false;
    EXPECT_FALSE(facade->AttachVolume(scratch, web1, noFreeIndex));
    EXPECT_TRUE(noFreeIndex) << "the three-argument form reports the same answer";
    EXPECT_TRUE(LiveAttachmentsOf(scratch).empty());

    limitReached = false;
    HoldState(scratch, "PROVISIONING");
    EXPECT_FALSE(facade->AttachVolume(scratch, FindResourceId("instance", "ocw-web-2"), limitReached, attachment));
    EXPECT_FALSE(limitReached) << "only LimitExceeded means no free slot";
    EXPECT_EQ(facade->GetLastError(), "The volume is not AVAILABLE.");
}

TEST_F(BackupVolumes, ReConfigureVMCreatesEachNamedDiskInTheInstancesPlaceAndAttachesIt) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    LogCapture log(0);
    std::vector<SDiskInfoLib> disks(3);
    disks[0].volumeName = "added-1";
    disks[0].sizeBytes = 50ULL << 30;
    disks[2].volumeName = "added-2";
    disks[2].sizeBytes = 60ULL << 30;
    ASSERT_TRUE(facade->ReConfigureVM(web1, disks)) << facade->GetLastError();
    EXPECT_EQ(log.errors(), std::vector<std::string>{"Disk name is empty , continuing with the next disk"});
    EXPECT_FALSE(disks[1].isAttached);
    for (const SDiskInfoLib* disk : {&disks[0], &disks[2]}) {
        SCOPED_TRACE(disk->volumeName);
        EXPECT_TRUE(disk->isAttached);
        EXPECT_EQ(ResourceMember(disk->guid, "availabilityDomain"), ResourceMember(web1, "availabilityDomain"));
        EXPECT_EQ(ResourceMember(disk->guid, "compartmentId"), ResourceMember(web1, "compartmentId"));
        ASSERT_EQ(disk->attachments.size(), 1u);
        EXPECT_EQ(LiveAttachmentsOf(disk->guid), std::vector<std::string>{disk->attachments[0].attachmentId});
    }
    EXPECT_EQ(MemberJson(disks[2].guid, "sizeInGBs"), "60");
}

TEST_F(BackupVolumes, DetachWithWaitEndsDetachedAndTheBulkWaitAcceptsAttachmentsAlreadyGone) {
    auto backend = ConnectBackend();
    ASSERT_TRUE(backend);
    SVMInfoLib vm;
    vm.guid = web1;
    bool limitReached = false;
    SDiskInfoLib disk;
    disk.guid = scratch;
    SStorageAttachmentInfoLib first;
    ASSERT_TRUE(backend->ops.CreateVolumeAttachmentToInstance(disk, vm, limitReached, first));
    ASSERT_TRUE(backend->ops.DeleteStorageAttachment(first, true)) << backend->ops.GetLastError();
    EXPECT_EQ(StateOf(first.attachmentId), "DETACHED");
    EXPECT_EQ(RequestsTo("DELETE", "/20160918/volumeAttachments/").at(0).target,
              "/20160918/volumeAttachments/" + first.attachmentId);

    // Two detaches requested without waiting, then one wait for both and for
    // an attachment the service no longer knows.
    SStorageAttachmentInfoLib again, seeded;
    ASSERT_TRUE(backend->ops.CreateVolumeAttachmentToInstance(disk, vm, limitReached, again));
    ASSERT_TRUE(backend->ops.GetStorageAttachmentInfo(LiveAttachmentsOf(data1).at(0), seeded));
    ASSERT_TRUE(backend->ops.DeleteStorageAttachment(again, false));
    ASSERT_TRUE(backend->ops.DeleteStorageAttachment(seeded, false));
    EXPECT_EQ(StateOf(again.attachmentId), "DETACHING");
    ClearRequestLog();
    const std::string gone = "ocid1.volumeattachment.oc1.phx.nosuchattachment";
    ASSERT_TRUE(backend->ops.AreAllAttachmentsDeleted({again.attachmentId, gone, seeded.attachmentId}))
        << backend->ops.GetLastError();
    EXPECT_EQ(StateOf(again.attachmentId), "DETACHED");
    EXPECT_EQ(StateOf(seeded.attachmentId), "DETACHED");
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeAttachments/" + gone), 1u) << "a 404 is read once";
}

TEST_F(BackupVolumes, BulkWaitFailsOnTheTimeoutWhileAnAttachmentStaysAttached) {
    WriteConfig({{"nOCIOperationTimeout", "1"}});
    auto backend = ConnectBackend();
    ASSERT_TRUE(backend);
    const std::string attachment = LiveAttachmentsOf(data1).at(0);
    EXPECT_FALSE(backend->ops.AreAllAttachmentsDeleted({attachment}));
    EXPECT_EQ(backend->ops.GetLastError(), "Timeout waiting for all items to be deleted");
    // How many polls fit into the budget is the scripted-clock unit test's business.
    EXPECT_GE(CountRequests("GET", "/20160918/volumeAttachments/" + attachment), 1u);
}

TEST_F(BackupVolumes, BatchDetachSkipsVolumesAlreadyGoneAndWaitsForTheRest) {
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
    const std::string data1Attachment = LiveAttachmentsOf(data1).at(0);
    const std::string extraAttachment = LiveAttachmentsOf(extra).at(0);
    ClearRequestLog();
    LogCapture log(1);

    EXPECT_TRUE(facade->DetachVolumes({data1, scratch, extra, deleted}, web1)) << facade->GetLastError();

    EXPECT_EQ(StateOf(data1Attachment), "DETACHED");
    EXPECT_EQ(StateOf(extraAttachment), "DETACHED");
    EXPECT_EQ(CountRequests("DELETE", "/20160918/volumeAttachments/"), 2u);
    EXPECT_GE(CountRequests("GET", "/20160918/volumeAttachments/" + extraAttachment), 1u)
        << "the batch waited for the detachments";
    EXPECT_EQ(log.matching("Only 2/4 volumes could be put on detach request").size(), 1u);
    EXPECT_EQ(log.matching("Skipping detachment.").size(), 2u);
    EXPECT_EQ(log.matching("Waiting for deletion of [2] attachments ").size(), 1u);
    EXPECT_TRUE(facade->DeleteVolume(extra)) << "the volume is free again: " << facade->GetLastError();
}

TEST_F(BackupVolumes, BatchDetachFailsWhenTheCloudRefusesOneButDetachesTheOthers) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    bool flag = false;
    ASSERT_TRUE(facade->AttachVolume(scratch, web1, flag)) << facade->GetLastError();
    const std::string refused = LiveAttachmentsOf(data1).at(0);
    AddStatusFault("DELETE", "/20160918/volumeAttachments/" + refused, 409, -1);
    LogCapture log(0);
    EXPECT_FALSE(facade->DetachVolumes({data1, scratch}, web1));
    EXPECT_EQ(StateOf(refused), "ATTACHED");
    EXPECT_TRUE(LiveAttachmentsOf(scratch).empty());
    EXPECT_EQ(log.matching("Could not remove attachment for volume [" + data1 + "] from [" + web1 + "]").size(), 1u);
}

TEST_F(BackupVolumes, DeleteOfAnAttachedVolumeFailsWithTheServiceMessage) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    LogCapture log(0);
    EXPECT_FALSE(facade->DeleteVolume(data1));
    EXPECT_EQ(facade->GetLastError(), "The volume is attached to an instance and cannot be deleted.");
    EXPECT_EQ(log.matching("Failed to sent delete volume request").size(), 1u);
}

}  // namespace
