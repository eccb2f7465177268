// Backup cycle, snapshot side, through the facade against the emulator: block
// and boot volume backups, integrity snapshots, volumes made from backups in
// their source's place, and the revert that replaces a volume by one made from
// its integrity snapshot and deletes the old one.
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <regex>
#include <thread>

#include "common/TimeUtil.h"
#include "e2e/EmulatorFixture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::e2e::EmulatorTest;
using ocwtest::e2e::ScopedLogCapture;

class BackupCycleSnapshots : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        web1 = FindResourceId("instance", "ocw-web-1");
        data1 = FindResourceId("volume", "ocw-data-1");
        scratch = FindResourceId("volume", "ocw-scratch");
        ASSERT_FALSE(web1.empty());
        ASSERT_FALSE(data1.empty());
        ASSERT_FALSE(scratch.empty());
    }

    // The boot volume of ocw-web-1, found through the facade.
    std::string BootVolumeOfWeb1(COracleCloudWrapper& facade) {
        SStorageAttachmentInfoLib boot;
        EXPECT_TRUE(facade.GetBootVolumeAttachmentForInstance(ResourceMember(web1, "availabilityDomain"),
                                                              ResourceMember(web1, "compartmentId"), web1, boot))
            << facade.GetLastError();
        return boot.volumeName;
    }

    // Polls the snapshot's status through the facade, as a caller would, until
    // it is AVAILABLE (the emulator settles in a fraction of a second).
    void WaitForSnapshot(COracleCloudWrapper& facade, const std::string& snapshot) {
        std::string status;
        for (int i = 0; i < 100; ++i) {
            ASSERT_TRUE(facade.GetSnapshotStatus(snapshot, status)) << facade.GetLastError();
            if (status == "AVAILABLE") return;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        FAIL() << "snapshot " << snapshot << " stayed " << status;
    }

    std::string StateOf(const std::string& id) {
        std::lock_guard<std::mutex> lock(emu().store().mutex());
        ocwemu::Resource* r = emu().store().get(id, ocwemu::NowMs());
        return r == nullptr ? std::string() : emu().store().state(*r, ocwemu::NowMs());
    }

    std::string web1, data1, scratch;
};

TEST_F(BackupCycleSnapshots, BlockAndBootVolumesAreBackedUpUnderTheirOwnCollections) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string bootVolume = BootVolumeOfWeb1(*facade);
    ASSERT_NE(bootVolume.find(".bootvolume."), std::string::npos) << bootVolume;

    std::string blockBackup, bootBackup;
    ASSERT_TRUE(facade->CreateVolumeSnapshot(data1, "nightly", "ocw-data-1-nightly", blockBackup))
        << facade->GetLastError();
    ASSERT_TRUE(facade->CreateVolumeSnapshot(bootVolume, "nightly", "ocw-web-1-boot-nightly", bootBackup))
        << facade->GetLastError();

    EXPECT_EQ(blockBackup.rfind("ocid1.volumebackup.", 0), 0u) << blockBackup;
    EXPECT_EQ(bootBackup.rfind("ocid1.bootvolumebackup.", 0), 0u) << bootBackup;
    EXPECT_EQ(ResourceMember(blockBackup, "volumeId"), data1);
    EXPECT_EQ(ResourceMember(blockBackup, "displayName"), "ocw-data-1-nightly");
    EXPECT_EQ(ResourceMember(bootBackup, "bootVolumeId"), bootVolume);
    EXPECT_EQ(CountRequests("POST", "/20160918/volumeBackups/"), 1u);
    EXPECT_EQ(CountRequests("POST", "/20160918/bootVolumeBackups/"), 1u);

    WaitForSnapshot(*facade, blockBackup);
    WaitForSnapshot(*facade, bootBackup);
}

TEST_F(BackupCycleSnapshots, IntegritySnapshotIsABackupOfTheVolume) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string backup;
    ASSERT_TRUE(facade->CreateIntegritySnapshot(data1, "before upgrade", "ocw-data-1-integrity", backup))
        << facade->GetLastError();
    EXPECT_EQ(ResourceMember(backup, "volumeId"), data1);
    WaitForSnapshot(*facade, backup);
}

TEST_F(BackupCycleSnapshots, SnapshotOfAnUnknownVolumeFailsWithoutTakingTheServicesText) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string backup = "untouched";
    EXPECT_FALSE(facade->CreateVolumeSnapshot("ocid1.volume.oc1.phx.nosuchvolume", "d", "n", backup));
    EXPECT_EQ(backup, "untouched");
    EXPECT_EQ(facade->GetLastError(), "") << "snapshot failures stay with the backend";
}

TEST_F(BackupCycleSnapshots, VolumeFromABackupIsMadeWhereItsSourceVolumeLives) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string backup;
    ASSERT_TRUE(facade->CreateVolumeSnapshot(data1, "d", "ocw-data-1-copy-source", backup));
    WaitForSnapshot(*facade, backup);

    std::string created;
    ASSERT_TRUE(facade->CreateVolumeFromSnapshot(backup, "ocw-data-1-copy", created)) << facade->GetLastError();

    EXPECT_EQ(created.rfind("ocid1.volume.", 0), 0u) << created;
    EXPECT_EQ(ResourceMember(created, "displayName"), "ocw-data-1-copy");
    EXPECT_EQ(ResourceMember(created, "availabilityDomain"), ResourceMember(data1, "availabilityDomain"));
    EXPECT_EQ(ResourceMember(created, "compartmentId"), ResourceMember(data1, "compartmentId"));
    auto posts = RequestsTo("POST", "/20160918/volumes");
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_NE(posts[0].body.find(R"("sourceDetails":{"type":"volumeBackup","id":")" + backup + "\"}"),
              std::string::npos)
        << posts[0].body;
}

TEST_F(BackupCycleSnapshots, BootVolumeFromABootBackupIsABootVolume) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string backup;
    ASSERT_TRUE(facade->CreateVolumeSnapshot(BootVolumeOfWeb1(*facade), "d", "boot", backup));
    WaitForSnapshot(*facade, backup);

    std::string created;
    ASSERT_TRUE(facade->CreateVolumeFromSnapshot(backup, "ocw-web-1-boot-copy", created)) << facade->GetLastError();
    EXPECT_EQ(created.rfind("ocid1.bootvolume.", 0), 0u) << created;
    EXPECT_EQ(CountRequests("POST", "/20160918/bootVolumes"), 1u);
}

TEST_F(BackupCycleSnapshots, VolumeFromAnUnknownBackupSendsNoCreation) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    ScopedLogCapture log(0);
    std::string created;
    EXPECT_FALSE(facade->CreateVolumeFromSnapshot("ocid1.volumebackup.oc1.phx.nosuch", "v", created));
    EXPECT_EQ(log.matching("Cannot find snapshot [ocid1.volumebackup.oc1.phx.nosuch]").size(), 1u);
    EXPECT_EQ(CountRequests("POST", "/20160918/volumes"), 0u);
}

TEST_F(BackupCycleSnapshots, RevertReplacesTheVolumeByANewOneNamedWithATimeSuffix) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string backup;
    ASSERT_TRUE(facade->CreateIntegritySnapshot(scratch, "integrity", "ocw-scratch-integrity", backup));
    WaitForSnapshot(*facade, backup);
    const long long before = static_cast<long long>(std::time(nullptr));

    std::string created;
    ASSERT_TRUE(facade->RevertToIntegritySnapshot(scratch, backup, created)) << facade->GetLastError();

    const long long after = static_cast<long long>(std::time(nullptr));
    ASSERT_EQ(created.rfind("ocid1.volume.", 0), 0u) << created;
    // An OCI volume URI has no "/": the whole id is the name's stem.
    const std::string name = ResourceMember(created, "displayName");
    std::smatch match;
    ASSERT_TRUE(std::regex_match(name, match, std::regex(std::regex_replace(scratch, std::regex("\\."), "\\.") +
                                                         "_([0-9]+)")))
        << name;
    EXPECT_GE(std::stoll(match[1]), before);
    EXPECT_LE(std::stoll(match[1]), after);
    EXPECT_EQ(ResourceMember(created, "availabilityDomain"), ResourceMember(scratch, "availabilityDomain"));
    EXPECT_EQ(CountRequests("DELETE", "/20160918/volumes/" + scratch), 1u);
    EXPECT_EQ(StateOf(scratch).rfind("TERMINAT", 0), 0u) << "old volume: " << StateOf(scratch);
    std::string status;
    ASSERT_TRUE(facade->GetVolumeStatus(created, status)) << facade->GetLastError();
    EXPECT_TRUE(status == "RESTORING" || status == "PROVISIONING" || status == "AVAILABLE") << status;
}

TEST_F(BackupCycleSnapshots, RevertOfAnAttachedVolumeKeepsTheOldOneAndStillSucceeds) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string backup;
    ASSERT_TRUE(facade->CreateIntegritySnapshot(data1, "integrity", "ocw-data-1-integrity", backup));
    WaitForSnapshot(*facade, backup);
    ScopedLogCapture log(0);

    std::string created;
    EXPECT_TRUE(facade->RevertToIntegritySnapshot(data1, backup, created));

    EXPECT_FALSE(created.empty());
    EXPECT_EQ(StateOf(data1), "AVAILABLE") << "the attached volume cannot be deleted";
    EXPECT_NE(facade->GetLastError().find("attached"), std::string::npos) << facade->GetLastError();
    EXPECT_EQ(log.matching("Could not delete volume  [" + data1 + "]").size(), 1u);
}

TEST_F(BackupCycleSnapshots, RevertToAMissingSnapshotCreatesAndDeletesNothing) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string created;
    EXPECT_FALSE(facade->RevertToIntegritySnapshot(scratch, "ocid1.volumebackup.oc1.phx.nosuch", created));
    EXPECT_EQ(CountRequests("POST", "/20160918/volumes"), 0u);
    EXPECT_EQ(CountRequests("DELETE", ""), 0u);
    EXPECT_EQ(StateOf(scratch), "AVAILABLE");
}

TEST_F(BackupCycleSnapshots, BackupIsDeletedUnderItsCollection) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string backup;
    ASSERT_TRUE(facade->CreateVolumeSnapshot(data1, "d", "to-delete", backup));
    WaitForSnapshot(*facade, backup);
    ASSERT_TRUE(facade->DeleteVolumeSnapshot(backup)) << facade->GetLastError();
    EXPECT_EQ(CountRequests("DELETE", "/20160918/volumeBackups/" + backup), 1u);
    EXPECT_EQ(StateOf(backup).rfind("TERMINAT", 0), 0u) << StateOf(backup);
}

}  // namespace
