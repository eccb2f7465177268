// The snapshot side of the backup cycle against the emulator: block and boot
// volume backups (plain and integrity), volumes made from them where their
// source lived, the revert that replaces a volume by one made from its
// integrity snapshot, and deletes that pick the boot or block path from the id.
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <regex>
#include <thread>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::LogCapture;

class BackupSnapshots : public ocwtest::EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        web1 = FindResourceId("instance", "ocw-web-1");
        data1 = FindResourceId("volume", "ocw-data-1");
        scratch = FindResourceId("volume", "ocw-scratch");
        bootVolume = FindResourceId("bootvolume", "ocw-web-1 (Boot Volume)");
        ASSERT_FALSE(web1.empty() || data1.empty() || scratch.empty() || bootVolume.empty());
    }

    // Polls the snapshot's status through the facade, as a caller would, until it is AVAILABLE.
    void WaitForSnapshot(COracleCloudWrapper& facade, const std::string& snapshot) {
        std::string status;
        for (int i = 0; i < 100; ++i) {
            ASSERT_TRUE(facade.GetSnapshotStatus(snapshot, status)) << facade.GetLastError();
            if (status == "AVAILABLE") return;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        FAIL() << "snapshot " << snapshot << " stayed " << status;
    }

    // An integrity snapshot of `volume`, waited for until AVAILABLE.
    std::string IntegrityBackupOf(COracleCloudWrapper& facade, const std::string& volume) {
        std::string backup;
        EXPECT_TRUE(facade.CreateIntegritySnapshot(volume, "integrity", volume + "-integrity", backup))
            << facade.GetLastError();
        WaitForSnapshot(facade, backup);
        return backup;
    }

    std::string web1, data1, scratch, bootVolume;
};

TEST_F(BackupSnapshots, BlockAndBootVolumesAreBackedUpUnderTheirOwnCollectionsWithoutWaiting) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string blockBackup, bootBackup, integrity;
    ASSERT_TRUE(facade->CreateVolumeSnapshot(data1, "nightly", "ocw-data-1-nightly", blockBackup))
        << facade->GetLastError();
    ASSERT_TRUE(facade->CreateVolumeSnapshot(bootVolume, "boot backup", "", bootBackup)) << facade->GetLastError();
    ASSERT_TRUE(facade->CreateIntegritySnapshot(data1, "before upgrade", "ocw-data-1-integrity", integrity))
        << facade->GetLastError();

    EXPECT_EQ(blockBackup.rfind("ocid1.volumebackup.", 0), 0u) << blockBackup;
    EXPECT_EQ(bootBackup.rfind("ocid1.bootvolumebackup.", 0), 0u) << bootBackup;
    EXPECT_EQ(ResourceMember(bootBackup, "bootVolumeId"), bootVolume);
    EXPECT_EQ(ResourceMember(bootBackup, "displayName"), "boot backup") << "the description names an unnamed backup";
    EXPECT_EQ(ResourceMember(integrity, "volumeId"), data1);
    auto block = RequestsTo("POST", "/20160918/volumeBackups");
    ASSERT_EQ(block.size(), 2u);
    EXPECT_EQ(block[0].target, "/20160918/volumeBackups/");
    EXPECT_EQ(block[0].body, R"({"volumeId":")" + data1 + R"(","displayName":"ocw-data-1-nightly"})");
    EXPECT_EQ(CountRequests("POST", "/20160918/bootVolumeBackups/"), 1u);
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeBackups/"), 0u) << "backups are not waited for";
    WaitForSnapshot(*facade, blockBackup);
    WaitForSnapshot(*facade, bootBackup);
}

TEST_F(BackupSnapshots, SnapshotRecordOfTheBackendCarriesTheBackupAndKeepsItsIntegrityFlag) {
    auto backend = ConnectBackend();
    ASSERT_TRUE(backend);
    SSnapshotInfoLib snapshot;
    snapshot.isComplete = false;
    ASSERT_TRUE(backend->ops.CreateSnapshotForVolume(data1, "the description", "nightly", snapshot))
        << backend->ops.GetLastError();
    EXPECT_EQ(snapshot.name, snapshot.snapshotId);
    EXPECT_EQ(snapshot.volumeName + "|" + snapshot.status, data1 + "|REQUEST_RECEIVED");
    EXPECT_FALSE(snapshot.isComplete);
    EXPECT_EQ(snapshot.sizeBytes, 100ULL << 30);
}

TEST_F(BackupSnapshots, VolumesMadeFromBackupsLiveWhereTheirSourceLivedAndTakeTheBackupsSize) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string blockBackup, bootBackup;
    ASSERT_TRUE(facade->CreateVolumeSnapshot(data1, "d", "data-copy-source", blockBackup));
    ASSERT_TRUE(facade->CreateVolumeSnapshot(bootVolume, "d", "boot", bootBackup));
    WaitForSnapshot(*facade, blockBackup);
    WaitForSnapshot(*facade, bootBackup);
    ClearRequestLog();

    std::string created, createdBoot;
    ASSERT_TRUE(facade->CreateVolumeFromSnapshot(blockBackup, "ocw-data-1-copy", created)) << facade->GetLastError();
    ASSERT_TRUE(facade->CreateVolumeFromSnapshot(bootBackup, "ocw-web-1-boot-copy", createdBoot))
        << facade->GetLastError();
    EXPECT_EQ(created.rfind("ocid1.volume.", 0), 0u) << created;
    EXPECT_EQ(createdBoot.rfind("ocid1.bootvolume.", 0), 0u) << createdBoot;
    EXPECT_EQ(ResourceMember(created, "displayName"), "ocw-data-1-copy");
    EXPECT_EQ(ResourceMember(created, "availabilityDomain"), ResourceMember(data1, "availabilityDomain"));
    EXPECT_EQ(ResourceMember(created, "compartmentId"), ResourceMember(data1, "compartmentId"));
    EXPECT_EQ(MemberJson(created, "sizeInGBs"), "100") << "the size comes from the backup";
    auto volumes = RequestsTo("POST", "/20160918/volumes");
    ASSERT_EQ(volumes.size(), 1u);
    EXPECT_EQ(boost::json::serialize(BodyOf(volumes[0]).at("sourceDetails")),
              R"({"type":"volumeBackup","id":")" + blockBackup + "\"}");
    auto bootVolumes = RequestsTo("POST", "/20160918/bootVolumes");
    ASSERT_EQ(bootVolumes.size(), 1u);
    EXPECT_EQ(boost::json::serialize(BodyOf(bootVolumes[0]).at("sourceDetails")),
              R"({"type":"bootVolumeBackup","id":")" + bootBackup + "\"}");
}

TEST_F(BackupSnapshots, UnknownVolumesAndBackupsFailWithoutACreation) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string backup = "untouched";
    EXPECT_FALSE(facade->CreateVolumeSnapshot("ocid1.volume.oc1.phx.nosuchvolume", "d", "n", backup));
    EXPECT_EQ(backup, "untouched");
    EXPECT_EQ(facade->GetLastError(), "") << "snapshot failures stay with the backend";

    LogCapture log(0);
    std::string created;
    EXPECT_FALSE(facade->CreateVolumeFromSnapshot("ocid1.volumebackup.oc1.phx.nosuch", "v", created));
    EXPECT_EQ(log.matching("Cannot find snapshot [ocid1.volumebackup.oc1.phx.nosuch]").size(), 1u);
    EXPECT_FALSE(facade->RevertToIntegritySnapshot(scratch, "ocid1.volumebackup.oc1.phx.nosuch", created));
    EXPECT_EQ(CountRequests("POST", "/20160918/volumes"), 0u);
    EXPECT_EQ(CountRequests("DELETE", ""), 0u);
    EXPECT_EQ(StateOf(scratch), "AVAILABLE");
}

TEST_F(BackupSnapshots, RevertReplacesTheVolumeByANewOneNamedWithATimeSuffix) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string backup = IntegrityBackupOf(*facade, scratch);
    const long long before = static_cast<long long>(std::time(nullptr));
    std::string created;
    ASSERT_TRUE(facade->RevertToIntegritySnapshot(scratch, backup, created)) << facade->GetLastError();
    const long long after = static_cast<long long>(std::time(nullptr));

    ASSERT_EQ(created.rfind("ocid1.volume.", 0), 0u) << created;
    // An OCI volume id has no "/": the whole id is the name's stem.
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

TEST_F(BackupSnapshots, RevertOfAnAttachedVolumeKeepsTheOldOneAndStillSucceeds) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string backup = IntegrityBackupOf(*facade, data1);
    LogCapture log(0);
    std::string created;
    EXPECT_TRUE(facade->RevertToIntegritySnapshot(data1, backup, created));
    EXPECT_FALSE(created.empty());
    EXPECT_EQ(StateOf(data1), "AVAILABLE") << "the attached volume cannot be deleted";
    EXPECT_NE(facade->GetLastError().find("attached"), std::string::npos) << facade->GetLastError();
    EXPECT_EQ(log.matching("Could not delete volume  [" + data1 + "]").size(), 1u);
}

TEST_F(BackupSnapshots, DeletesPickTheBootOrBlockPathFromTheId) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string backup = FindResourceId("volumebackup", "ocw-data-1-backup");
    ASSERT_TRUE(facade->DeleteVolumeSnapshot(backup)) << facade->GetLastError();
    EXPECT_EQ(CountRequests("DELETE", "/20160918/volumeBackups/" + backup), 1u);
    EXPECT_EQ(StateOf(backup).rfind("TERMINAT", 0), 0u) << StateOf(backup);

    std::string boot;
    ASSERT_TRUE(facade->CreateVolumeSnapshot(bootVolume, "", "boot", boot));
    WaitForSnapshot(*facade, boot);
    ASSERT_TRUE(facade->DeleteVolumeSnapshot(boot)) << facade->GetLastError();
    EXPECT_EQ(CountRequests("DELETE", "/20160918/bootVolumeBackups/" + boot), 1u);

    auto backend = ConnectBackend();
    ASSERT_TRUE(backend);
    ASSERT_TRUE(backend->ops.DeleteVM("", FindResourceId("instance", "ocw-web-2"), true, true));
    const std::string web2Boot = FindResourceId("bootvolume", "ocw-web-2 (Boot Volume)");
    ASSERT_TRUE(facade->DeleteVolume(web2Boot)) << facade->GetLastError();
    EXPECT_EQ(CountRequests("DELETE", "/20160918/bootVolumes/" + web2Boot), 1u);
    ASSERT_TRUE(facade->DeleteVolume(scratch)) << facade->GetLastError();
    EXPECT_EQ(CountRequests("DELETE", "/20160918/volumes/" + scratch), 1u);
    EXPECT_EQ(StateOf(scratch), "TERMINATING");
}

}  // namespace
