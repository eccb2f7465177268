// The storage side of the backup cycle against the emulator, at the level of
// the OCI operations: volumes created and waited for, iSCSI attachments with
// their re-read, the attachment limit, detaching one or many, volume and boot
// volume backups, volumes made from them, and deletes that pick the boot or
// block path from the OCID.
#include <chrono>
#include <thread>

#include "RestoreSupport.h"

namespace {

using namespace OracleCloudSDKWrapper;
using namespace restoretest;
using ocwtest::e2e::EmulatorTest;
using ocwtest::e2e::ScopedLogCapture;

class BackupCycleOperations : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        m_compartment = FindResourceId("compartment", "ocw-demo");
        m_web1 = FindResourceId("instance", "ocw-web-1");
        m_ad = ResourceMember(m_web1, "availabilityDomain");
    }

    std::unique_ptr<DirectOperations> Direct() {
        auto d = std::make_unique<DirectOperations>();
        EXPECT_TRUE(d->connect(info(), UserToken(info().region))) << d->connection.GetLastError();
        return d;
    }

    SDiskInfoLib NewDisk(const std::string& name, unsigned long long gb) {
        SDiskInfoLib disk;
        disk.volumeName = name;
        disk.sizeBytes = gb << 30;
        disk.compartmentId = m_compartment;
        disk.availabilityDomain = m_ad;
        return disk;
    }

    bool WaitUntil(const std::string& id, const std::string& state) {
        for (int i = 0; i < 100; ++i) {
            if (StateOf(emu(), id) == state) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }

    std::string m_compartment;
    std::string m_web1;
    std::string m_ad;
};

TEST_F(BackupCycleOperations, CreatedVolumeIsWaitedForAndNamedByItsId) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SDiskInfoLib disk = NewDisk("cycle-vol", 50);
    ASSERT_TRUE(facade->CreateVolume(disk, "")) << facade->GetLastError();
    ASSERT_FALSE(disk.guid.empty());
    EXPECT_EQ(disk.name, disk.guid);
    EXPECT_EQ(disk.status, "AVAILABLE");
    EXPECT_EQ(StateOf(emu(), disk.guid), "AVAILABLE");
    EXPECT_EQ(ResourceMember(disk.guid, "displayName"), "cycle-vol");
    auto posts = RequestsTo("POST", "/20160918/volumes");
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_EQ(posts[0].target, "/20160918/volumes/");
    EXPECT_GE(CountRequests("GET", "/20160918/volumes/" + disk.guid), 1u);
}

TEST_F(BackupCycleOperations, VolumeInAnotherRegionIsCreatedThereAndTheRegionRestored) {
    auto direct = Direct();
    const std::string dr = "us-ashburn-1";
    SDiskInfoLib disk = NewDisk("dr-vol", 50);
    disk.availabilityDomain = ResourceMember(FindResourceId("instance", "ocw-dr-1"), "availabilityDomain");
    ASSERT_TRUE(direct->ops.CreateVolume(disk, dr)) << direct->ops.GetLastError();
    EXPECT_EQ(direct->connection.getRegion(), info().region);
    EXPECT_EQ(CountRequests("POST", "/20160918/volumes", "iaas." + dr + "."), 1u);
    EXPECT_GE(CountRequests("GET", "/20160918/volumes/" + disk.guid, "iaas." + dr + "."), 1u);
    EXPECT_EQ(CountRequests("", "/20160918/volumes", "iaas." + info().region + "."), 0u);

    ClearRequestLog();
    EXPECT_FALSE(direct->ops.CreateVolume(disk, dr + "-nowhere"));
    EXPECT_EQ(direct->connection.getRegion(), info().region) << "restored after a failure as well";
}

TEST_F(BackupCycleOperations, IscsiAttachmentIsReadAgainForAddressPortAndTarget) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string volume = FindResourceId("volume", "ocw-scratch");
    ScopedLogCapture capture(1);
    bool limitReached = false;
    SStorageAttachmentInfoLib attachment;
    ASSERT_TRUE(facade->AttachVolume(volume, m_web1, limitReached, attachment)) << facade->GetLastError();
    EXPECT_FALSE(limitReached);
    EXPECT_EQ(attachment.state, "ATTACHED");
    EXPECT_EQ(attachment.attachmentType, "iscsi");
    EXPECT_EQ(attachment.volumeName, volume);
    EXPECT_EQ(attachment.instanceName, m_web1);
    EXPECT_FALSE(attachment.iscsiIpv4.empty());
    EXPECT_EQ(attachment.iscsiIqn.rfind("iqn.", 0), 0u);
    EXPECT_EQ(attachment.iscsiPort, "3260");

    auto posts = RequestsTo("POST", "/20160918/volumeAttachments");
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_EQ(posts[0].body, R"({"instanceId":")" + m_web1 + R"(","volumeId":")" + volume + R"(","type":"iscsi"})");
    // At least one poll for ATTACHED and then the re-read.
    EXPECT_GE(CountRequests("GET", "/20160918/volumeAttachments/" + attachment.attachmentId), 2u);
    EXPECT_EQ(capture.matching("Volume attachment type is not specified. Assuming attachment type \"iscsi\" ").size(),
              1u);
}

TEST_F(BackupCycleOperations, ParavirtualizedAttachmentKeepsItsNameAndHasNoIscsiDetails) {
    auto direct = Direct();
    SVMInfoLib vm;
    vm.guid = m_web1;
    SDiskInfoLib disk;
    disk.guid = FindResourceId("volume", "ocw-scratch");
    SStorageAttachmentInfoLib attachment;
    attachment.attachmentType = "paravirtualized";
    attachment.name = "scratch-pv";
    bool limitReached = false;
    ASSERT_TRUE(direct->ops.CreateVolumeAttachmentToInstance(disk, vm, limitReached, attachment))
        << direct->ops.GetLastError();
    EXPECT_EQ(attachment.name, "scratch-pv");
    EXPECT_EQ(attachment.attachmentType, "paravirtualized");
    EXPECT_TRUE(attachment.iscsiIpv4.empty());
    EXPECT_TRUE(attachment.iscsiPort.empty());
    EXPECT_EQ(BodyOf(RequestsTo("POST", "/20160918/volumeAttachments")[0]).at("displayName").as_string(),
              "scratch-pv");
}

TEST_F(BackupCycleOperations, AttachmentLimitReachedSetsTheFlagAndOtherRefusalsDoNot) {
    ASSERT_TRUE(SetAttachmentLimit(info(), 1));  // ocw-web-1 already holds ocw-data-1
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string volume = FindResourceId("volume", "ocw-scratch");
    bool limitReached = false;
    SStorageAttachmentInfoLib attachment;
    EXPECT_FALSE(facade->AttachVolume(volume, m_web1, limitReached, attachment));
    EXPECT_TRUE(limitReached);
    EXPECT_NE(facade->GetLastError().find("limit of 1"), std::string::npos) << facade->GetLastError();
    EXPECT_TRUE(attachment.attachmentId.empty());
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeAttachments/"), 0u);

    limitReached = false;
    HoldState(volume, "PROVISIONING");
    EXPECT_FALSE(facade->AttachVolume(volume, FindResourceId("instance", "ocw-web-2"), limitReached, attachment));
    EXPECT_FALSE(limitReached) << "only LimitExceeded means no free slot";
    EXPECT_EQ(facade->GetLastError(), "The volume is not AVAILABLE.");
}

TEST_F(BackupCycleOperations, DetachWithWaitEndsDetachedAndBulkWaitAcceptsAttachmentsAlreadyGone) {
    auto direct = Direct();
    SVMInfoLib vm;
    vm.guid = m_web1;
    bool limitReached = false;

    SDiskInfoLib scratch;
    scratch.guid = FindResourceId("volume", "ocw-scratch");
    SStorageAttachmentInfoLib first;
    ASSERT_TRUE(direct->ops.CreateVolumeAttachmentToInstance(scratch, vm, limitReached, first))
        << direct->ops.GetLastError();
    ASSERT_TRUE(direct->ops.DeleteStorageAttachment(first, true)) << direct->ops.GetLastError();
    EXPECT_EQ(StateOf(emu(), first.attachmentId), "DETACHED");
    EXPECT_EQ(RequestsTo("DELETE", "/20160918/volumeAttachments/")[0].target,
              "/20160918/volumeAttachments/" + first.attachmentId);

    // Two detaches requested without waiting, then one wait for both and for
    // an attachment the service no longer knows.
    SStorageAttachmentInfoLib again;
    ASSERT_TRUE(direct->ops.CreateVolumeAttachmentToInstance(scratch, vm, limitReached, again));
    SStorageAttachmentInfoLib data;
    ASSERT_TRUE(direct->ops.GetStorageAttachmentInfo(
        ResourceIds("volumeattachment", m_compartment).front(), data));
    ASSERT_EQ(data.volumeName, FindResourceId("volume", "ocw-data-1"));
    ASSERT_TRUE(direct->ops.DeleteStorageAttachment(again, false));
    ASSERT_TRUE(direct->ops.DeleteStorageAttachment(data, false));
    EXPECT_EQ(StateOf(emu(), again.attachmentId), "DETACHING");

    ClearRequestLog();
    const std::string gone = "ocid1.volumeattachment.oc1.phx.nosuchattachment";
    ASSERT_TRUE(direct->ops.AreAllAttachmentsDeleted({again.attachmentId, gone, data.attachmentId}))
        << direct->ops.GetLastError();
    EXPECT_EQ(StateOf(emu(), again.attachmentId), "DETACHED");
    EXPECT_EQ(StateOf(emu(), data.attachmentId), "DETACHED");
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeAttachments/" + gone), 1u) << "a 404 is read once";
    EXPECT_TRUE(direct->ops.AreAllAttachmentsDeleted({}));
}

TEST_F(BackupCycleOperations, BulkDetachWaitFailsOnTheTimeoutWhileAnAttachmentStaysAttached) {
    WriteConfig({{"nOCIOperationTimeout", "1"}});
    auto direct = Direct();
    const std::string attachment = ResourceIds("volumeattachment", m_compartment).front();
    EXPECT_FALSE(direct->ops.AreAllAttachmentsDeleted({attachment}));
    EXPECT_EQ(direct->ops.GetLastError(), "Timeout waiting for all items to be deleted");
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeAttachments/" + attachment), 2u);
}

TEST_F(BackupCycleOperations, BackupsOfBlockAndBootVolumesAndVolumesMadeFromThem) {
    auto direct = Direct();
    const std::string volume = FindResourceId("volume", "ocw-data-1");
    const std::string bootVolume = FindResourceId("bootvolume", "ocw-web-1 (Boot Volume)");
    ASSERT_FALSE(bootVolume.empty());

    SSnapshotInfoLib block;
    block.isComplete = false;  // an integrity snapshot keeps asking for one
    ASSERT_TRUE(direct->ops.CreateSnapshotForVolume(volume, "the description", "nightly", block))
        << direct->ops.GetLastError();
    EXPECT_EQ(block.name, block.snapshotId);
    EXPECT_EQ(block.volumeName, volume);
    EXPECT_EQ(block.status, "REQUEST_RECEIVED");
    EXPECT_FALSE(block.isComplete);
    EXPECT_EQ(block.sizeBytes, 100ULL << 30);

    SSnapshotInfoLib boot;
    ASSERT_TRUE(direct->ops.CreateSnapshotForVolume(bootVolume, "boot backup", "", boot));
    EXPECT_EQ(boot.volumeName, bootVolume);
    EXPECT_EQ(ResourceMember(boot.name, "displayName"), "boot backup") << "the description names an unnamed backup";

    auto blockPost = RequestsTo("POST", "/20160918/volumeBackups");
    ASSERT_EQ(blockPost.size(), 1u);
    EXPECT_EQ(blockPost[0].target, "/20160918/volumeBackups/");
    EXPECT_EQ(blockPost[0].body, R"({"volumeId":")" + volume + R"(","displayName":"nightly"})");
    auto bootPost = RequestsTo("POST", "/20160918/bootVolumeBackups");
    ASSERT_EQ(bootPost.size(), 1u);
    EXPECT_EQ(BodyOf(bootPost[0]).at("bootVolumeId").as_string(), bootVolume);
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeBackups/"), 0u) << "backups are not waited for";

    ASSERT_TRUE(WaitUntil(block.name, "AVAILABLE"));
    ASSERT_TRUE(WaitUntil(boot.name, "AVAILABLE"));

    SDiskInfoLib restored = NewDisk("restored-data", 0);
    ASSERT_TRUE(direct->ops.CreateVolumeFromSnapshot(block, restored)) << direct->ops.GetLastError();
    EXPECT_EQ(restored.name, restored.guid);
    EXPECT_EQ(restored.status, "RESTORING");
    EXPECT_EQ(ResourceMember(restored.guid, "displayName"), "restored-data");
    EXPECT_EQ(MemberJson(emu(), restored.guid, "sizeInGBs"), "100") << "size comes from the backup";

    SDiskInfoLib restoredBoot = NewDisk("restored-boot", 0);
    ASSERT_TRUE(direct->ops.CreateVolumeFromSnapshot(boot, restoredBoot)) << direct->ops.GetLastError();
    EXPECT_TRUE(restoredBoot.bootable);
    EXPECT_NE(restoredBoot.guid.find(".bootvolume."), std::string::npos);

    auto volumePost = RequestsTo("POST", "/20160918/volumes");
    ASSERT_EQ(volumePost.size(), 1u);
    EXPECT_EQ(boost::json::serialize(BodyOf(volumePost[0]).at("sourceDetails")),
              R"({"type":"volumeBackup","id":")" + block.name + "\"}");
    auto bootVolumePost = RequestsTo("POST", "/20160918/bootVolumes");
    ASSERT_EQ(bootVolumePost.size(), 1u);
    EXPECT_EQ(boost::json::serialize(BodyOf(bootVolumePost[0]).at("sourceDetails")),
              R"({"type":"bootVolumeBackup","id":")" + boot.name + "\"}");
}

TEST_F(BackupCycleOperations, DeletesPickTheBootOrBlockPathFromTheId) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    auto direct = Direct();
    const std::string backup = FindResourceId("volumebackup", "ocw-data-1-backup");
    ASSERT_TRUE(facade->DeleteVolumeSnapshot(backup)) << facade->GetLastError();
    EXPECT_EQ(RequestsTo("DELETE", "/20160918/volumeBackups/" + backup).size(), 1u);

    SSnapshotInfoLib boot;
    ASSERT_TRUE(direct->ops.CreateSnapshotForVolume(FindResourceId("bootvolume", "ocw-web-1 (Boot Volume)"), "",
                                                    "boot", boot));
    ASSERT_TRUE(WaitUntil(boot.name, "AVAILABLE"));
    ASSERT_TRUE(facade->DeleteVolumeSnapshot(boot.name)) << facade->GetLastError();
    EXPECT_EQ(RequestsTo("DELETE", "/20160918/bootVolumeBackups/" + boot.name).size(), 1u);
    EXPECT_EQ(StateOf(emu(), boot.name), "TERMINATING");

    const std::string web2 = FindResourceId("instance", "ocw-web-2");
    ASSERT_TRUE(direct->ops.DeleteVM("", web2, true, true));
    const std::string bootVolume = FindResourceId("bootvolume", "ocw-web-2 (Boot Volume)");
    ASSERT_TRUE(facade->DeleteVolume(bootVolume)) << facade->GetLastError();
    EXPECT_EQ(RequestsTo("DELETE", "/20160918/bootVolumes/" + bootVolume).size(), 1u);

    const std::string scratch = FindResourceId("volume", "ocw-scratch");
    ASSERT_TRUE(facade->DeleteVolume(scratch)) << facade->GetLastError();
    EXPECT_EQ(RequestsTo("DELETE", "/20160918/volumes/" + scratch).size(), 1u);
    EXPECT_EQ(StateOf(emu(), scratch), "TERMINATING");
}

TEST_F(BackupCycleOperations, DeleteOfAnAttachedVolumeFailsWithTheServiceMessage) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    ScopedLogCapture capture(0);
    EXPECT_FALSE(facade->DeleteVolume(FindResourceId("volume", "ocw-data-1")));
    EXPECT_EQ(facade->GetLastError(), "The volume is attached to an instance and cannot be deleted.");
    EXPECT_EQ(capture.matching("Failed to sent delete volume request").size(), 1u);
}

}  // namespace
