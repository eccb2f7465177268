// The Classic backup cycle through the facade against the emulator: snapshot
// a volume, wait for it, make a volume from it, attach that to a helper
// instance at a free slot, detach and delete everything; a session that
// expires in the middle of a wait; and a restored instance that is launched,
// rebooted, powered off and on, deleted, or that goes into "error".
#include <gtest/gtest.h>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;
using ocwtest::LogTrigger;

class ClassicBackupCycle : public EmulatorTest {
protected:
    // A VM record to launch on a new volume made bootable through the library.
    SVMInfoLib VmOnNewBootVolume(COracleCloudWrapper& facade, const std::string& name) {
        SDiskInfoLib disk;
        disk.volumeName = name + "-boot";
        disk.sizeBytes = 20ULL << 30;
        disk.description = "restored boot volume";
        EXPECT_TRUE(facade.CreateVolume(disk, "")) << facade.GetLastError();
        EXPECT_EQ(disk.status, "Online");
        EXPECT_TRUE(facade.MakeVolumeBootable(disk.name)) << facade.GetLastError();
        SDiskInfoLib boot;
        boot.index = 1;
        boot.bootable = true;
        boot.volumeName = disk.name;
        SVMInfoLib vm;
        vm.vmName = name;
        vm.compartmentId = info().classicUser;
        vm.shape = "oc3";
        vm.disks = {boot};
        return vm;
    }
};

TEST_F(ClassicBackupCycle, SnapshotRestoreAttachToHelperDetachAndDelete) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    const std::string source = ClassicUserPath() + "/web1-data";

    std::string snapshot;
    ASSERT_TRUE(facade->CreateVolumeSnapshot(source, "before upgrade", "cycle", snapshot)) << facade->GetLastError();
    EXPECT_EQ(snapshot, source + "/cycle");
    EXPECT_EQ(PollUntil("completed", [&](std::string& s) { return facade->GetSnapshotStatus(snapshot, s); }),
              "completed");

    std::string restored;
    ASSERT_TRUE(facade->CreateVolumeFromSnapshot(snapshot, "web1-data-restored", restored)) << facade->GetLastError();
    EXPECT_EQ(restored, ClassicUserPath() + "/web1-data-restored");
    const auto creation = RequestsTo("POST", "/storage/volume/");
    ASSERT_EQ(creation.size(), 1u);
    EXPECT_NE(creation[0].body.find("\"size\":\"50G\""), std::string::npos) << creation[0].body;
    EXPECT_EQ(PollUntil("Online", [&](std::string& s) { return facade->GetVolumeStatus(restored, s); }), "Online");

    // db1 (the helper) uses slots 1 and 2: the volume goes into slot 3.
    SVMInfoLib helper;
    ASSERT_TRUE(facade->GetVMInfo("db1", "", helper, 16, "")) << facade->GetLastError();
    bool noFreeIndex = true;
    ASSERT_TRUE(facade->AttachVolume(restored, helper.fullName, noFreeIndex)) << facade->GetLastError();
    EXPECT_FALSE(noFreeIndex);
    const auto attach = RequestsTo("POST", "/storage/attachment/");
    ASSERT_EQ(attach.size(), 1u);
    EXPECT_EQ(attach[0].body, "{\"index\":3,\"storage_volume_name\":\"" + restored + "\",\"instance_name\":\"" +
                                  helper.fullName + "\"}");
    ASSERT_TRUE(facade->GetVMInfo(helper.fullName, "", helper, 16, ""));
    EXPECT_EQ(helper.disks.size(), 3u);

    ASSERT_TRUE(facade->DetachVolumes({restored}, helper.fullName)) << facade->GetLastError();
    ASSERT_TRUE(facade->GetVMInfo(helper.fullName, "", helper, 16, ""));
    EXPECT_EQ(helper.disks.size(), 2u);

    ASSERT_TRUE(facade->DeleteVolume(restored)) << facade->GetLastError();
    ASSERT_TRUE(facade->DeleteVolumeSnapshot(snapshot)) << facade->GetLastError();
    for (const std::string& gone : {"/storage/volume" + restored, "/storage/snapshot" + snapshot}) {
        const auto deletion = RequestsTo("DELETE", gone);
        ASSERT_EQ(deletion.size(), 1u) << gone;
        EXPECT_EQ(deletion[0].status, 204) << gone;
    }
}

TEST_F(ClassicBackupCycle, SessionExpiringInTheMiddleOfAWaitIsRenewedAndTheWaitEnds) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    // Right before the wait's first poll is sent, every session ends.
    LogTrigger expire("Computed URL [" + info().classicEndpoint + "/storage/volume" + ClassicUserPath() + "/fresh]",
                            [this] { ExpireClassicSessions(); });
    ClearRequestLog();
    SDiskInfoLib disk;
    disk.volumeName = "fresh";
    disk.sizeBytes = 10ULL << 30;
    ASSERT_TRUE(facade->CreateVolume(disk, "")) << facade->GetLastError();
    EXPECT_TRUE(expire.fired());
    EXPECT_EQ(disk.status, "Online");
    EXPECT_EQ(CountRequests("POST", "/authenticate/"), 1u);
    const auto polls = RequestsTo("GET", "/storage/volume" + ClassicUserPath() + "/fresh");
    ASSERT_GE(polls.size(), 2u);
    EXPECT_EQ(polls[0].status, 401);
    EXPECT_EQ(polls[1].status, 200);
}

TEST_F(ClassicBackupCycle, RestoredInstanceLaunchesRebootsPowersAndIsDeleted) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    SVMInfoLib vm = VmOnNewBootVolume(*facade, "restored");
    ASSERT_TRUE(facade->LaunchInstance(vm)) << facade->GetLastError();
    EXPECT_EQ(vm.state, "running");
    EXPECT_EQ(vm.fullName.rfind(ClassicUserPath() + "/restored/", 0), 0u) << vm.fullName;

    ASSERT_TRUE(facade->RebootInstance(vm.fullName)) << facade->GetLastError();
    // Power changes do not wait: the caller watches the state.
    const auto stateOf = [&](std::string& state) {
        SVMInfoLib now;
        const bool read = facade->GetVMInfo(vm.fullName, "", now, 16, "");
        state = now.state;
        return read;
    };
    ASSERT_TRUE(facade->PowerOffInstance(vm.fullName)) << facade->GetLastError();
    EXPECT_EQ(PollUntil("shutdown", stateOf), "shutdown");
    ASSERT_TRUE(facade->PowerOnInstance(vm.fullName)) << facade->GetLastError();
    EXPECT_EQ(PollUntil("running", stateOf), "running");
    EXPECT_EQ(RequestsTo("PUT", "/instance" + vm.fullName).size(), 2u);

    ASSERT_TRUE(facade->DeleteVM("restored", "", false, false)) << facade->GetLastError();
    bool exists = true;
    ASSERT_TRUE(facade->DoesVMExist(vm.fullName, "", exists));
    EXPECT_FALSE(exists);
}

TEST_F(ClassicBackupCycle, OlderLaunchFromAnImageListRunsAndBootsWithAnAddress) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    SVMInfoLib vm;
    vm.vmName = "from-image";
    vm.shape = "oc3";
    vm.imageId = "OL_7.2_UEKR4_x86_64";  // a public image list, named without its "/oracle/public/"
    ASSERT_TRUE(facade->DeployVM(vm, "/oracle/public/OL_7.2_UEKR4_x86_64", "")) << facade->GetLastError();
    const auto launch = RequestsTo("POST", "/launchplan/");
    ASSERT_EQ(launch.size(), 1u);
    EXPECT_NE(launch[0].body.find(R"("imagelist":"/oracle/public/OL_7.2_UEKR4_x86_64","name":")" + ClassicUserPath() +
                                  "/from-image\""),
              std::string::npos)
        << launch[0].body;
    EXPECT_EQ(vm.state, "running");
    ASSERT_TRUE(facade->WaitForBoot(vm, 30, true, "")) << facade->GetLastError();
    EXPECT_FALSE(vm.ipAddress.empty());
}

TEST_F(ClassicBackupCycle, InstanceGoingIntoErrorEndsTheLaunchWaitAtOnce) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    SVMInfoLib vm = VmOnNewBootVolume(*facade, "broken");
    // Before the first poll, the launched instance is made to fail.
    LogTrigger fail("Computed URL [" + info().classicEndpoint + "/instance" + ClassicUserPath() + "/broken/",
                          [this] { HoldState(ClassicResourceId("instance", ClassicUserPath() + "/broken/"), "error"); });
    EXPECT_FALSE(facade->LaunchInstance(vm));
    EXPECT_TRUE(fail.fired());
    EXPECT_EQ(facade->GetLastError().rfind("Error waiting for status to reach end state for [", 0), 0u)
        << facade->GetLastError();
    EXPECT_EQ(RequestsTo("GET", "/instance" + ClassicUserPath() + "/broken/").size(), 1u) << "no second poll";
}

}  // namespace
