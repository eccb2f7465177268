// Volume composites: which slot and which record reach the attachment, how a
// batch detach carries on past bad volumes and what it waits for, the checks
// before a volume is created, and the volume reads that precede rewrites.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CompositeTestBackends.h"

using namespace facadetest;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

SDiskInfoLib DiskAt(int index, const std::string& name = "vol") {
    SDiskInfoLib disk;
    disk.index = index;
    disk.name = name;
    return disk;
}

SStorageAttachmentInfoLib AttachmentOf(const std::string& id, const std::string& instance,
                                       const std::string& name = std::string()) {
    SStorageAttachmentInfoLib attachment;
    attachment.attachmentId = id;
    attachment.instanceName = instance;
    attachment.name = name;
    return attachment;
}

}  // namespace

// ---- AttachVolume -----------------------------------------------------------

TEST(FacadeAttachVolume, ClassicComputeTakesTheFirstFreeSlotAndLogsIt) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    f.queries->vmToReturn.guid = "vm-uuid";
    f.queries->vmToReturn.disks = {DiskAt(1), DiskAt(2), DiskAt(4)};
    bool noFreeIndex = true;
    EXPECT_TRUE(f.facade.AttachVolume("/Compute-a/u/data1", "/Compute-a/u/web01", noFreeIndex));
    EXPECT_FALSE(noFreeIndex);
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetVMInfo("","/Compute-a/u/web01",16,""))",
                                              R"(GetAvailableIndexPos("vm-uuid",3))"));
    EXPECT_THAT(f.operations->calls,
                ElementsAre(R"(CreateVolumeAttachmentToInstance("/Compute-a/u/data1","/Compute-a/u/data1",3,"vm-uuid",false))"));
    EXPECT_TRUE(Logged(log, "Attaching volume [/Compute-a/u/data1] at Index [3]."));
    EXPECT_TRUE(log.errors.empty());
}

TEST(FacadeAttachVolume, NoFreeSlotSetsTheFlagAndRequestsNothing) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    f.queries->slotCount = 2;
    f.queries->vmToReturn.disks = {DiskAt(1), DiskAt(2)};
    bool noFreeIndex = false;
    EXPECT_FALSE(f.facade.AttachVolume("/Compute-a/u/data1", "/Compute-a/u/web01", noFreeIndex));
    EXPECT_TRUE(noFreeIndex);
    EXPECT_TRUE(f.operations->calls.empty());
    EXPECT_TRUE(LoggedError(log, "No free index to attach volume."));
}

TEST(FacadeAttachVolume, OtherCloudTypesUseNoSlotAndResetTheFlagBeforeAttaching) {
    for (EOracleCloudType type : {ORACLE_CLOUD_INFRASTRUCTURE, ORACLE_CLOUD_UNSPECIFIED, ORACLE_CLOUD_CLASSIC_PAAS}) {
        CompositeFacade f(type);
        f.queries->vmToReturn.guid = "ocid1.instance.oc1..i";
        bool flag = true;  // a stale value from an earlier call
        EXPECT_TRUE(f.facade.AttachVolume("ocid1.volume.oc1..v", "ocid1.instance.oc1..i", flag)) << type;
        EXPECT_FALSE(flag);
        EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetVMInfo("","ocid1.instance.oc1..i",16,""))")) << type;
        ASSERT_EQ(f.operations->calls.size(), 1u);
        EXPECT_THAT(f.operations->calls[0], HasSubstr(R"("ocid1.volume.oc1..v",)")) << type;
        EXPECT_THAT(f.operations->calls[0], HasSubstr(",0,\"ocid1.instance.oc1..i\",false)")) << "no slot, flag reset";
    }
}

TEST(FacadeAttachVolume, FailuresReportTheInstanceReadOrTheBackendsText) {
    LogCapture log;
    CompositeFacade f;
    f.queries->failing = {"GetVMInfo"};
    bool flag = false;
    EXPECT_FALSE(f.facade.AttachVolume("v", "i", flag));
    EXPECT_TRUE(LoggedError(log, "Failed to get Instance info."));
    EXPECT_EQ(f.facade.GetLastError(), "GetVMInfo failed in the backend");
    EXPECT_TRUE(f.operations->calls.empty());

    f.queries->failing.clear();
    f.operations->failing = {"CreateVolumeAttachmentToInstance"};
    f.operations->limitOnFailure = true;
    EXPECT_FALSE(f.facade.AttachVolume("v", "i", flag));
    EXPECT_TRUE(flag) << "the backend's limit answer reaches the caller";
    EXPECT_EQ(f.facade.GetLastError(), "CreateVolumeAttachmentToInstance failed in the backend");
}

TEST(FacadeAttachVolumeWithRecord, RefusedOutsideOCIBeforeAnyRequest) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    bool limit = false;
    SStorageAttachmentInfoLib attachment;
    EXPECT_FALSE(f.facade.AttachVolume("v", "i", limit, attachment));
    EXPECT_TRUE(LoggedError(log, "Not Implemented"));
    EXPECT_TRUE(f.queries->calls.empty());
    EXPECT_TRUE(f.operations->calls.empty());
}

TEST(FacadeAttachVolumeWithRecord, ReadsTheInstanceWithoutDetailsAndReturnsTheAttachment) {
    CompositeFacade f;
    f.queries->vmToReturn.guid = "ocid1.instance.oc1..i";
    bool limit = false;
    SStorageAttachmentInfoLib attachment;
    attachment.attachmentType = "iscsi";
    EXPECT_TRUE(f.facade.AttachVolume("ocid1.volume.oc1..v", "ocid1.instance.oc1..i", limit, attachment));
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetVMInfo("","ocid1.instance.oc1..i",0,""))"));
    EXPECT_EQ(attachment.attachmentId, "ocid1.volumeattachment.oc1..for-ocid1.volume.oc1..v");
    EXPECT_EQ(attachment.attachmentType, "iscsi") << "the caller's record is handed to the backend";
    EXPECT_EQ(attachment.iscsiPort, "3260");

    f.operations->failing = {"CreateVolumeAttachmentToInstance"};
    f.operations->limitOnFailure = true;
    EXPECT_FALSE(f.facade.AttachVolume("ocid1.volume.oc1..v", "ocid1.instance.oc1..i", limit, attachment));
    EXPECT_TRUE(limit);
    EXPECT_EQ(f.facade.GetLastError(), "CreateVolumeAttachmentToInstance failed in the backend");
}

// ---- DetachVolumes / DetachVolume --------------------------------------------

TEST(FacadeDetachVolumes, OCIDetachesWhatItCanAndWaitsForThoseOnly) {
    LogCapture log;
    CompositeFacade f;
    f.queries->attachments["v1"] = AttachmentOf("a1", "i");
    f.queries->attachments["v3"] = AttachmentOf("a3", "i");
    f.queries->attachments["v4"] = AttachmentOf("a4", "i");
    f.queries->unknownVolumes = {"v5"};
    f.operations->refusedDetachments = {"a4"};
    // v2 is attached to nothing: skipped without harm.
    EXPECT_FALSE(f.facade.DetachVolumes({"v1", "v2", "v3", "v4", "v5"}, "i"));

    EXPECT_THAT(f.operations->calls,
                ElementsAre(R"(DeleteStorageAttachment("a1",false))", R"(DeleteStorageAttachment("a3",false))",
                            R"(DeleteStorageAttachment("a4",false))", R"(AreAllAttachmentsDeleted("a1|a3"))"));
    EXPECT_TRUE(Logged(log, "Volume [v2] is not attached to instance[i]. Skipping detachment."));
    EXPECT_FALSE(LoggedError(log, "Volume [v2] is not attached to instance[i]. Skipping detachment."));
    EXPECT_TRUE(LoggedError(log, "Could not remove attachment for volume [v4] from [i]"));
    EXPECT_TRUE(LoggedError(log, "Failed to find storage attachment for volumeID: v5 instanceID: i"));
    EXPECT_TRUE(LoggedError(log, "Only 2/5 volumes could be put on detach request"));
    EXPECT_TRUE(Logged(log, "Waiting for deletion of [2] attachments "));
    EXPECT_EQ(f.facade.GetLastError(), "") << "the batch detach reports through the log only";
}

TEST(FacadeDetachVolumes, AVolumeAlreadyGoneDoesNotMakeTheBatchFail) {
    LogCapture log;
    CompositeFacade f;
    f.queries->attachments["v1"] = AttachmentOf("a1", "i");
    EXPECT_TRUE(f.facade.DetachVolumes({"v1", "gone"}, "i"));
    EXPECT_THAT(f.operations->calls.back(), R"(AreAllAttachmentsDeleted("a1"))");
    EXPECT_TRUE(LoggedError(log, "Only 1/2 volumes could be put on detach request"));
}

TEST(FacadeDetachVolumes, AFailedWaitFailsTheBatchAndAFullBatchWritesNoOnlyLine) {
    LogCapture log;
    CompositeFacade f;
    f.queries->attachments["v1"] = AttachmentOf("a1", "i");
    f.operations->failing = {"AreAllAttachmentsDeleted"};
    EXPECT_FALSE(f.facade.DetachVolumes({"v1"}, "i"));
    for (const std::string& error : log.errors) {
        EXPECT_THAT(error, ::testing::Not(HasSubstr("Only "))) << error;
    }
}

TEST(FacadeDetachVolumes, ClassicComputeLooksUpByDiskAndWaitsForAttachmentNames) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    f.queries->attachments["/C/u/d1"] = AttachmentOf("", "/C/u/web01", "/C/u/web01/att1");
    f.queries->attachments["/C/u/d2"] = AttachmentOf("", "/C/u/other", "/C/u/other/att2");
    // d3 is attached to nothing: the look-up succeeds with an empty record.
    EXPECT_TRUE(f.facade.DetachVolumes({"/C/u/d1", "/C/u/d2", "/C/u/d3"}, "/C/u/web01"));
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetStorageAttachmentForDisk("/C/u/d1",""))",
                                              R"(GetStorageAttachmentForDisk("/C/u/d2",""))",
                                              R"(GetStorageAttachmentForDisk("/C/u/d3",""))"));
    EXPECT_THAT(f.operations->calls, ElementsAre(R"(DeleteStorageAttachment("/C/u/web01/att1",false))",
                                                 R"(AreAllAttachmentsDeleted("/C/u/web01/att1"))"));
    EXPECT_TRUE(LoggedError(
        log, "The volume [/C/u/d2] is not attached to the instance [/C/u/web01]!, proceeding to next volume"));
    EXPECT_TRUE(LoggedError(log, "Only 1/3 volumes could be put on detach request"));
}

TEST(FacadeDetachVolumes, ClassicLookupFailureFailsTheBatchButTheRestIsDetached) {
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    f.queries->attachments["/C/u/d2"] = AttachmentOf("", "/C/u/web01", "/C/u/web01/att2");
    f.queries->unknownVolumes = {"/C/u/d1"};
    EXPECT_FALSE(f.facade.DetachVolumes({"/C/u/d1", "/C/u/d2"}, "/C/u/web01"));
    EXPECT_THAT(f.operations->calls, ElementsAre(R"(DeleteStorageAttachment("/C/u/web01/att2",false))",
                                                 R"(AreAllAttachmentsDeleted("/C/u/web01/att2"))"));
}

TEST(FacadeDetachVolume, NotAttachedIsSuccessAndAFoundAttachmentIsDeletedWithWaiting) {
    LogCapture log;
    CompositeFacade f;
    EXPECT_TRUE(f.facade.DetachVolume("v", "i"));
    EXPECT_TRUE(Logged(log, "Volume [v] is not attached to instance[i]. Skipping detachment."));
    EXPECT_TRUE(f.operations->calls.empty());

    f.queries->attachments["v"] = AttachmentOf("a", "i");
    EXPECT_TRUE(f.facade.DetachVolume("v", "i"));
    EXPECT_THAT(f.operations->calls, ElementsAre(R"(DeleteStorageAttachment("a",true))"));

    f.operations->refusedDetachments = {"a"};
    EXPECT_FALSE(f.facade.DetachVolume("v", "i"));
    EXPECT_TRUE(LoggedError(log, "Could not detach volume [v] from [i]"));

    f.queries->unknownVolumes = {"v"};
    EXPECT_FALSE(f.facade.DetachVolume("v", "i"));
    EXPECT_TRUE(LoggedError(log, "Failed to find storage attachment for volumeID: v instanceID: i"));
}

// ---- CreateVolume / ReConfigureVM ---------------------------------------------

TEST(FacadeCreateVolume, EmptyNameOrSizeZeroFailsBeforeAnyRequest) {
    LogCapture log;
    CompositeFacade f;
    SDiskInfoLib disk;
    disk.sizeBytes = 1ULL << 30;
    EXPECT_FALSE(f.facade.CreateVolume(disk, ""));
    EXPECT_TRUE(LoggedError(log, "Cannot create volume with an empty name"));

    disk.volumeName = "data1";
    disk.sizeBytes = 0;
    EXPECT_FALSE(f.facade.CreateVolume(disk, ""));
    EXPECT_TRUE(LoggedError(log, "Cannot create volume [data1] with incorrect disk size [0]"));
    EXPECT_TRUE(f.operations->calls.empty());
    EXPECT_EQ(f.connection->requests, 0);
}

TEST(FacadeCreateVolume, BackendFailureIsLoggedAndLeavesTheLastErrorAlone) {
    LogCapture log;
    CompositeFacade f;
    f.facade.setLastError("older text");
    f.operations->failing = {"CreateVolume"};
    SDiskInfoLib disk;
    disk.volumeName = "data1";
    disk.sizeBytes = 50ULL << 30;
    EXPECT_FALSE(f.facade.CreateVolume(disk, "us-ashburn-1"));
    EXPECT_TRUE(LoggedError(log, "Failed to create volume [data1]"));
    EXPECT_EQ(f.facade.GetLastError(), "older text");

    f.operations->failing.clear();
    EXPECT_TRUE(f.facade.CreateVolume(disk, "us-ashburn-1"));
    EXPECT_EQ(disk.name, "ocid1.volume.oc1..new-data1");
    EXPECT_EQ(f.operations->calls.back(), R"(CreateVolume("data1",53687091200,"us-ashburn-1","",""))");
}

TEST(FacadeReConfigureVM, OCICreatesEachNamedDiskInTheInstancesPlaceAndAttachesIt) {
    LogCapture log;
    CompositeFacade f;
    f.queries->vmToReturn.guid = "ocid1.instance.oc1..i";
    f.queries->vmToReturn.availabilityDomain = "AD-1";
    f.queries->vmToReturn.compartmentId = "ocid1.compartment.oc1..c";
    std::vector<SDiskInfoLib> disks(3);
    disks[0].volumeName = "data1";
    disks[0].sizeBytes = 50ULL << 30;
    disks[2].volumeName = "data2";
    disks[2].sizeBytes = 60ULL << 30;
    disks[2].availabilityDomain = "AD-2";  // the caller's own choice stays
    EXPECT_TRUE(f.facade.ReConfigureVM("ocid1.instance.oc1..i", disks));
    EXPECT_TRUE(LoggedError(log, "Disk name is empty , continuing with the next disk"));
    EXPECT_THAT(
        f.operations->calls,
        ElementsAre(
            R"(CreateVolume("data1",53687091200,"","AD-1","ocid1.compartment.oc1..c"))",
            R"(CreateVolumeAttachmentToInstance("ocid1.volume.oc1..new-data1","ocid1.volume.oc1..new-data1",0,"ocid1.instance.oc1..i",false))",
            R"(CreateVolume("data2",64424509440,"","AD-2","ocid1.compartment.oc1..c"))",
            R"(CreateVolumeAttachmentToInstance("ocid1.volume.oc1..new-data2","ocid1.volume.oc1..new-data2",0,"ocid1.instance.oc1..i",false))"));
    EXPECT_TRUE(disks[0].isAttached);
    EXPECT_FALSE(disks[1].isAttached);
    ASSERT_EQ(disks[2].attachments.size(), 1u);
    EXPECT_EQ(disks[2].attachments[0].attachmentId, "ocid1.volumeattachment.oc1..for-ocid1.volume.oc1..new-data2");
}

TEST(FacadeReConfigureVM, ClassicGivesEachNewDiskTheNextFreeSlot) {
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    f.queries->vmToReturn.guid = "vm-uuid";
    f.queries->vmToReturn.compartmentId = "user1";
    f.queries->vmToReturn.disks = {DiskAt(1, "boot"), DiskAt(3, "old")};
    std::vector<SDiskInfoLib> disks(2);
    disks[0].volumeName = "d1";
    disks[0].sizeBytes = 1ULL << 30;
    disks[1].volumeName = "d2";
    disks[1].sizeBytes = 1ULL << 30;
    EXPECT_TRUE(f.facade.ReConfigureVM("/C/user1/web01", disks));
    EXPECT_EQ(disks[0].index, 2);
    EXPECT_EQ(disks[1].index, 4) << "slot 2 was taken by the first new disk";
    EXPECT_EQ(f.operations->calls[0], R"(CreateVolume("d1",1073741824,"user1","",""))") << "created under the user";
}

TEST(FacadeReConfigureVM, StopsAtTheFirstFailureWithItsMessage) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    f.queries->slotCount = 1;
    f.queries->vmToReturn.disks = {DiskAt(1, "boot")};
    std::vector<SDiskInfoLib> disks(2);
    disks[0].volumeName = "d1";
    disks[0].sizeBytes = 1ULL << 30;
    disks[1] = disks[0];
    EXPECT_FALSE(f.facade.ReConfigureVM("/C/u/web01", disks));
    EXPECT_TRUE(LoggedError(log, "No Free slot available to attach the disk to the instance [/C/u/web01]"));
    EXPECT_EQ(f.operations->calls.size(), 1u) << "created once, attached never, second disk untouched";

    CompositeFacade o;
    o.operations->failing = {"CreateVolume"};
    EXPECT_FALSE(o.facade.ReConfigureVM("i", disks));
    EXPECT_TRUE(LoggedError(log, "Creation of the disk failed."));
    EXPECT_EQ(o.facade.GetLastError(), "CreateVolume failed in the backend");

    o.operations->failing = {"CreateVolumeAttachmentToInstance"};
    EXPECT_FALSE(o.facade.ReConfigureVM("i", disks));
    EXPECT_TRUE(LoggedError(log, "Failed to attach disk to the instance [i]"));
    o.operations->limitOnFailure = true;
    log.errors.clear();
    EXPECT_FALSE(o.facade.ReConfigureVM("i", disks));
    EXPECT_TRUE(LoggedError(log, "No Free slot available to attach the disk to the instance [i]"));

    o.queries->failing = {"GetVMInfo"};
    EXPECT_FALSE(o.facade.ReConfigureVM("i", disks));
    EXPECT_TRUE(LoggedError(log, "Fetching the instance details for instance [i] has failed"));
}

// ---- Volume reads and rewrites -------------------------------------------------

TEST(FacadeVolumeStatus, ReadsTheVolumeByIdAndFullNameAndReportsItsStatus) {
    LogCapture log;
    CompositeFacade f;
    SDiskInfoLib volume;
    volume.guid = "ocid1.volume.oc1..v";
    volume.status = "AVAILABLE";
    f.queries->volumes[volume.guid] = volume;
    std::string status;
    EXPECT_TRUE(f.facade.GetVolumeStatus("ocid1.volume.oc1..v", status));
    EXPECT_EQ(status, "AVAILABLE");
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetVolumeInfo("ocid1.volume.oc1..v","ocid1.volume.oc1..v",1))"));

    EXPECT_FALSE(f.facade.GetVolumeStatus("ocid1.volume.oc1..missing", status));
    EXPECT_TRUE(LoggedError(log, "Cannot get volume details for [ocid1.volume.oc1..missing]"));
    EXPECT_EQ(f.facade.GetLastError(), "no volume ocid1.volume.oc1..missing");
}

TEST(FacadeVolumeRewrite, TheRewriteStartsFromTheVolumesCurrentRecord) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    SDiskInfoLib volume;
    volume.guid = "/C/u/d1";
    volume.sizeBytes = 10ULL << 30;
    volume.description = "nightly";
    f.queries->volumes[volume.guid] = volume;
    EXPECT_TRUE(f.facade.MakeVolumeBootable("/C/u/d1"));
    EXPECT_TRUE(f.facade.ClearDescriptionForVolume("/C/u/d1"));
    EXPECT_THAT(f.operations->calls, ElementsAre(R"(MakeVolumeBootable("/C/u/d1",10737418240,"nightly"))",
                                                 R"(ClearDescriptionForVolume("/C/u/d1",10737418240,"nightly"))"));

    f.operations->failing = {"MakeVolumeBootable"};
    EXPECT_FALSE(f.facade.MakeVolumeBootable("/C/u/d1"));
    EXPECT_EQ(f.facade.GetLastError(), "MakeVolumeBootable failed in the backend");

    EXPECT_FALSE(f.facade.ClearDescriptionForVolume("/C/u/none"));
    EXPECT_TRUE(LoggedError(log, "Cannot get volume details for [/C/u/none]"));
    EXPECT_EQ(f.operations->calls.size(), 3u) << "nothing rewritten for an unreadable volume";
}
