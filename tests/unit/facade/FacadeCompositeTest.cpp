// The facade's composite operations where the emulator cannot show them: the
// Compute Classic branches (slots, look-ups by disk, names instead of ids) and
// the checks that decide per cloud type before anything is sent. The OCI side
// of every composite runs end to end against the emulator.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "FacadeFakes.h"
#include "LogCapture.h"

using namespace ocwtest;
using ::testing::ElementsAre;

namespace {

SStorageAttachmentInfoLib AttachedTo(const std::string& instance, const std::string& name) {
    SStorageAttachmentInfoLib attachment;
    attachment.instanceName = instance;
    attachment.name = name;
    return attachment;
}

}  // namespace

TEST(FacadeAttachVolume, OnlyClassicTakesASlotAndEveryTypeResetsTheFlag) {
    struct Case {
        EOracleCloudType type;
        int slotCount;
        bool attached;
        const char* attach;  // the backend call, or "" for none
    };
    const Case cases[] = {
        {ORACLE_CLOUD_CLASSIC, 10, true, R"(Attach("/C/u/data1",3,"vm-1",false))"},  // slots 1, 2 and 4 are taken
        {ORACLE_CLOUD_CLASSIC, 2, false, ""},
        {ORACLE_CLOUD_INFRASTRUCTURE, 10, true, R"(Attach("",0,"vm-1",false))"},
        {ORACLE_CLOUD_CLASSIC_PAAS, 10, true, R"(Attach("/C/u/data1",0,"vm-1",false))"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.type * 100 + c.slotCount);
        LogCapture log;
        FakeFacade f(c.type);
        f.queries->vm.guid = "vm-1";
        f.queries->vm.disks = {DiskAt(1), DiskAt(2), DiskAt(4)};
        f.queries->slotCount = c.slotCount;
        bool noFreeIndex = true;  // a stale value from an earlier call
        EXPECT_EQ(f.facade.AttachVolume("/C/u/data1", "/C/u/web01", noFreeIndex), c.attached);
        EXPECT_EQ(noFreeIndex, !c.attached);
        if (c.attached) {
            EXPECT_THAT(f.operations->log.calls, ElementsAre(c.attach));
        } else {
            EXPECT_TRUE(f.operations->log.calls.empty());
            EXPECT_THAT(log.errors(), ElementsAre("No free index to attach volume."));
        }
    }
}

TEST(FacadeOciOnly, OtherCloudsAreRefusedBeforeAnyCall) {
    LogCapture log;
    FakeFacade f(ORACLE_CLOUD_CLASSIC);
    bool flag = false;
    SStorageAttachmentInfoLib attachment;
    EXPECT_FALSE(f.facade.AttachVolume("v", "i", flag, attachment));
    EXPECT_FALSE(f.facade.IsImageImportOperationCompleted("image", flag, ""));
    EXPECT_THAT(log.errors(), ElementsAre("Not Implemented", "NOT IMPLEMENTED"));
    EXPECT_TRUE(f.queries->log.calls.empty());
    EXPECT_TRUE(f.operations->log.calls.empty());
}

TEST(FacadeDetachVolumes, ClassicLooksUpByDiskSkipsOtherInstancesAndWaitsForAttachmentNames) {
    LogCapture log;
    FakeFacade f;
    f.queries->attachments["/C/u/d1"] = AttachedTo("/C/u/web01", "/C/u/web01/att1");
    f.queries->attachments["/C/u/d2"] = AttachedTo("/C/u/other", "/C/u/other/att2");
    f.queries->attachments["/C/u/d4"] = AttachedTo("/C/u/web01", "/C/u/web01/att4");
    f.queries->unknownVolumes = {"/C/u/d5"};
    // d3 is attached to nothing: the look-up succeeds with an empty record.
    EXPECT_FALSE(f.facade.DetachVolumes({"/C/u/d1", "/C/u/d2", "/C/u/d3", "/C/u/d4", "/C/u/d5"}, "/C/u/web01"))
        << "a failed look-up fails the batch";
    EXPECT_THAT(f.operations->log.calls,
                ElementsAre(R"(DeleteStorageAttachment("/C/u/web01/att1",false))",
                            R"(DeleteStorageAttachment("/C/u/web01/att4",false))",
                            R"(AreAllAttachmentsDeleted("/C/u/web01/att1|/C/u/web01/att4"))"));
    EXPECT_THAT(log.errors(),
                ElementsAre("The volume [/C/u/d2] is not attached to the instance [/C/u/web01]!, proceeding to next volume",
                            "The volume [/C/u/d3] is not attached to the instance [/C/u/web01]!, proceeding to next volume",
                            "Only 2/5 volumes could be put on detach request"));
}

TEST(FacadeReConfigureVM, ClassicCreatesUnderTheUserAndGivesEachDiskTheNextFreeSlot) {
    FakeFacade f;
    f.queries->vm.guid = "vm-1";
    f.queries->vm.compartmentId = "user1";
    f.queries->vm.disks = {DiskAt(1, "boot"), DiskAt(3, "old")};
    std::vector<SDiskInfoLib> disks(2);
    disks[0].volumeName = "d1";
    disks[0].sizeBytes = 1ULL << 30;
    disks[1] = disks[0];
    disks[1].volumeName = "d2";
    EXPECT_TRUE(f.facade.ReConfigureVM("/C/user1/web01", disks));
    EXPECT_THAT(f.operations->log.calls,
                ElementsAre(R"(CreateVolume("d1","user1"))", R"(Attach("/Compute-a/u/d1",2,"vm-1",false))",
                            R"(CreateVolume("d2","user1"))", R"(Attach("/Compute-a/u/d2",4,"vm-1",false))"));
    EXPECT_TRUE(disks[1].isAttached);
}

TEST(FacadeReConfigureVM, StopsAtTheFirstFailureWithItsMessage) {
    std::vector<SDiskInfoLib> disks(2);
    disks[0].volumeName = "d1";
    disks[0].sizeBytes = 1ULL << 30;
    disks[1] = disks[0];
    struct Case {
        std::string failing;
        bool limit;
        int slots;
        const char* message;
    };
    const Case cases[] = {
        {"", false, 1, "No Free slot available to attach the disk to the instance [web01]"},
        {"CreateVolume", false, 10, "Creation of the disk failed."},
        {"Attach", false, 10, "Failed to attach disk to the instance [web01]"},
        {"Attach", true, 10, "No Free slot available to attach the disk to the instance [web01]"},
        {"GetVMInfo", false, 10, "Fetching the instance details for instance [web01] has failed"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        LogCapture log;
        FakeFacade f;
        f.queries->vm.disks = {DiskAt(1, "boot")};
        f.queries->slotCount = c.slots;
        f.queries->log.failing = {c.failing};
        f.operations->log.failing = {c.failing};
        f.operations->limitOnFailure = c.limit;
        EXPECT_FALSE(f.facade.ReConfigureVM("web01", disks));
        EXPECT_THAT(log.errors(), ::testing::Contains(c.message));
        EXPECT_LE(f.operations->log.calls.size(), 2u) << "the second disk is never touched";
    }
}

TEST(FacadeValidateRestore, ClassicNeedsSlottedVolumesWithABootOneAndEveryCloudNeedsNameUserAndShape) {
    SVMInfoLib good;
    good.vmName = "web01";
    good.compartmentId = "user1";
    good.shape = "oc3";
    SDiskInfoLib boot = DiskAt(1, "/C/u/boot");
    boot.bootable = true;
    good.disks = {boot, DiskAt(10, "/C/u/data")};
    auto with = [&](const std::function<void(SVMInfoLib&)>& change) {
        SVMInfoLib vm = good;
        change(vm);
        return vm;
    };
    struct Case {
        EOracleCloudType type;
        SVMInfoLib vm;
        const char* error;  // "" when the record is accepted
    };
    const Case cases[] = {
        {ORACLE_CLOUD_CLASSIC, good, ""},
        {ORACLE_CLOUD_CLASSIC, with([](SVMInfoLib& v) { v.disks[1].index = 11; }),
         "Cannot launch Instance [web01], invalid index [11] for volume [/C/u/data]"},
        {ORACLE_CLOUD_CLASSIC, with([](SVMInfoLib& v) { v.disks[1].index = 0; }),
         "Cannot launch Instance [web01], invalid index [0] for volume [/C/u/data]"},
        {ORACLE_CLOUD_CLASSIC, with([](SVMInfoLib& v) { v.disks[0].bootable = false; }),
         "Cannot launch Instance [web01], No bootable volume found"},
        {ORACLE_CLOUD_CLASSIC, with([](SVMInfoLib& v) { v.disks.clear(); }),
         "Cannot launch Instance [web01] without any volumes"},
        {ORACLE_CLOUD_INFRASTRUCTURE, with([](SVMInfoLib& v) { v.disks.clear(); }), ""},
        {ORACLE_CLOUD_UNSPECIFIED, with([](SVMInfoLib& v) { v.disks[0].index = 42; }), ""},
        {ORACLE_CLOUD_INFRASTRUCTURE, with([](SVMInfoLib& v) { v.shape.clear(); }),
         "Cannot launch Instance [web01] as instance shape is absent"},
        {ORACLE_CLOUD_CLASSIC, with([](SVMInfoLib& v) { v.compartmentId.clear(); }),
         "Cannot launch Instance [web01] as user account is absent"},
        {ORACLE_CLOUD_INFRASTRUCTURE, with([](SVMInfoLib& v) { v.vmName.clear(); }),
         "Cannot launch Instance as instance name is absent"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.type) + ": " + c.error);
        LogCapture log;
        FakeFacade f(c.type);
        EXPECT_EQ(f.facade.ValidateInstanceInfoForRestore(c.vm), std::string(c.error).empty());
        if (*c.error != '\0') {
            EXPECT_THAT(log.errors(), ElementsAre(c.error));
        }
        EXPECT_TRUE(f.queries->log.calls.empty() && f.operations->log.calls.empty());
    }
}

TEST(FacadeVolumeRewrite, StartsFromTheVolumesCurrentRecord) {
    FakeFacade f;
    SDiskInfoLib volume;
    volume.guid = "/C/u/d1";
    volume.sizeBytes = 10ULL << 30;
    volume.description = "nightly";
    f.queries->volumes[volume.guid] = volume;
    EXPECT_TRUE(f.facade.MakeVolumeBootable("/C/u/d1"));
    EXPECT_TRUE(f.facade.ClearDescriptionForVolume("/C/u/d1"));
    EXPECT_FALSE(f.facade.ClearDescriptionForVolume("/C/u/none"));
    EXPECT_THAT(f.operations->log.calls, ElementsAre(R"(MakeVolumeBootable("/C/u/d1",10737418240,"nightly"))",
                                                     R"(ClearDescriptionForVolume("/C/u/d1",10737418240,"nightly"))"));
}

TEST(FacadeSnapshots, IntegritySnapshotAsksTheBackendForAnIncompleteRecord) {
    FakeFacade f;
    std::string created;
    EXPECT_TRUE(f.facade.CreateVolumeSnapshot("/C/u/v", "nightly", "snap1", created));
    EXPECT_TRUE(f.facade.CreateIntegritySnapshot("/C/u/v", "before upgrade", "snap2", created));
    EXPECT_THAT(f.operations->log.calls, ElementsAre(R"(CreateSnapshotForVolume("/C/u/v",true))",
                                                     R"(CreateSnapshotForVolume("/C/u/v",false))"));
}

TEST(FacadeRevert, ClassicVolumeIsReplacedByOneNamedAfterItsLastPathPart) {
    FakeFacade f;
    f.queries->sourceVolume.guid = "/C/u/vol7";
    f.queries->volumes["/C/u/vol7"] = f.queries->sourceVolume;
    std::string created;
    EXPECT_TRUE(f.facade.RevertToIntegritySnapshot("/C/u/vol7", "/C/u/vol7/snap", created));
    EXPECT_TRUE(std::regex_match(created, std::regex("vol7_[0-9]{10}"))) << created;
    EXPECT_THAT(f.operations->log.calls.back(), R"(DeleteVolume("/C/u/vol7"))");

    LogCapture log;
    EXPECT_FALSE(f.facade.RevertToIntegritySnapshot("///", "/C/u/vol7/snap", created));
    EXPECT_THAT(log.errors(), ElementsAre("Cannot perform revert operation. Volume URI is incorrect [///]"));
}

TEST(FacadeDoesVMExist, ClassicWalkThatReadFineButFoundNoNameMeansAbsent) {
    FakeFacade f;
    f.queries->log.failing = {"GetVMInfo"};
    bool exists = true;
    EXPECT_TRUE(f.facade.DoesVMExist("web01", "user1", exists));
    EXPECT_FALSE(exists);
    f.connection->httpCode = 0;  // no answer at all is no answer
    EXPECT_FALSE(f.facade.DoesVMExist("web01", "user1", exists));
    EXPECT_EQ(f.facade.GetLastError(), "GetVMInfo failed in the backend");
}

TEST(FacadeCreateDBInstance, NamedSshKeyIsLookedUpFirstAndAMissingOneStopsTheCreation) {
    FakeFacade f;
    SOracleDBInstanceInfoLib db;
    db.sshKeyName = "ops-key";
    EXPECT_TRUE(f.facade.CreateDBInstance(db));
    EXPECT_THAT(f.operations->log.calls, ElementsAre(R"(CreateDBInstance("ssh-rsa AAAAB3Nza ops-key"))"));

    FakeFacade g;
    g.queries->log.failing = {"GetSSHKeyByName"};
    SOracleDBInstanceInfoLib other;
    other.sshKeyName = "gone";
    EXPECT_FALSE(g.facade.CreateDBInstance(other));
    EXPECT_TRUE(g.operations->log.calls.empty());
    EXPECT_EQ(g.facade.GetLastError(), "Failed to find SSH key with name gone. Error [GetSSHKeyByName failed in the backend]");
}

TEST(FacadeSortedGetters, KeysGroupsAndNetworksAreSortedWithoutRegardToCase) {
    FakeFacade f;
    f.queries->keyPairList = {{"zeta", "/C/u/zeta", ""}, {"Alpha", "/C/u/Alpha", ""}, {"beta", "/C/u/beta", ""}};
    f.queries->groupList = {{"x", "/C/u/web"}, {"y", "/C/u/DB"}, {"z", "/C/u/admin"}};
    f.queries->networkList.resize(3);
    f.queries->networkList[0].name = "vcn-Prod";
    f.queries->networkList[1].name = "VCN-dev";
    f.queries->networkList[2].name = "backup";
    std::vector<SKeyPairInfoLib> keys;
    std::vector<SSecurityGroupInfoLib> groups;
    std::vector<SNetworkInfoLib> networks;
    ASSERT_TRUE(f.facade.GetKeyPairList(keys));
    ASSERT_TRUE(f.facade.GetSecurityGroupList(groups, ""));
    ASSERT_TRUE(f.facade.GetNetworkList(networks, "", "", ""));
    std::vector<std::string> order;
    for (const auto& k : keys) order.push_back(k.name);
    for (const auto& g : groups) order.push_back(g.fullName);
    for (const auto& n : networks) order.push_back(n.name);
    EXPECT_THAT(order, ElementsAre("Alpha", "beta", "zeta", "/C/u/admin", "/C/u/DB", "/C/u/web", "backup", "VCN-dev",
                                   "vcn-Prod"));
}
