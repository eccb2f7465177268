// Snapshot composites: the integrity flag the backend receives, where a volume
// made from a snapshot is placed, and the revert's naming, error texts and
// tolerance of an old volume that will not go.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

#include "CompositeTestBackends.h"

using namespace facadetest;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

namespace {

// A backup of the volume "ocid1.volume.oc1..src", which lives in AD-1.
void AddSnapshotOfSourceVolume(CompositeQueries& queries, const std::string& snapshotName = "backup1") {
    SSnapshotInfoLib snapshot;
    snapshot.name = snapshotName;
    snapshot.volumeName = "ocid1.volume.oc1..src";
    snapshot.status = "AVAILABLE";
    queries.snapshots[snapshotName] = snapshot;

    SDiskInfoLib source;
    source.guid = "ocid1.volume.oc1..src";
    source.compartmentId = "ocid1.compartment.oc1..c";
    source.properties = "/oracle/public/storage/default";
    source.availabilityDomain = "AD-1";
    source.sizeBytes = 50ULL << 30;
    source.description = "not copied";
    queries.volumes[source.guid] = source;
}

}  // namespace

TEST(FacadeSnapshots, IntegritySnapshotAsksTheBackendForAnIncompleteRecord) {
    CompositeFacade f;
    std::string created;
    EXPECT_TRUE(f.facade.CreateVolumeSnapshot("ocid1.volume.oc1..v", "nightly", "snap1", created));
    EXPECT_EQ(created, "ocid1.volumebackup.oc1..of-ocid1.volume.oc1..v");
    EXPECT_TRUE(f.facade.CreateIntegritySnapshot("ocid1.volume.oc1..v", "before upgrade", "snap2", created));
    EXPECT_THAT(f.operations->calls,
                ElementsAre(R"(CreateSnapshotForVolume("ocid1.volume.oc1..v","nightly","snap1",true))",
                            R"(CreateSnapshotForVolume("ocid1.volume.oc1..v","before upgrade","snap2",false))"));
}

TEST(FacadeSnapshots, EmptyVolumeIsRefusedAndBackendFailuresKeepTheirTextToThemselves) {
    LogCapture log;
    CompositeFacade f;
    std::string created = "untouched";
    EXPECT_FALSE(f.facade.CreateVolumeSnapshot("", "d", "n", created));
    EXPECT_TRUE(LoggedError(log, "Cannot create snapshot as Volume uri was empty"));
    EXPECT_FALSE(f.facade.CreateIntegritySnapshot("", "d", "n", created));
    EXPECT_TRUE(LoggedError(log, "Cannot create integrity snapshot as Volume uri was empty"));
    EXPECT_TRUE(f.operations->calls.empty());

    f.facade.setLastError("older text");
    f.operations->failing = {"CreateSnapshotForVolume"};
    EXPECT_FALSE(f.facade.CreateVolumeSnapshot("v", "d", "n", created));
    EXPECT_FALSE(f.facade.CreateIntegritySnapshot("v", "d", "n", created));
    EXPECT_EQ(f.facade.GetLastError(), "older text");
    EXPECT_EQ(created, "untouched");
}

TEST(FacadeVolumeFromSnapshot, NewVolumeTakesOnlyThePlaceOfTheSnapshotsVolume) {
    CompositeFacade f;
    AddSnapshotOfSourceVolume(*f.queries);
    std::string created;
    EXPECT_TRUE(f.facade.CreateVolumeFromSnapshot("backup1", "restored1", created));
    EXPECT_EQ(created, "ocid1.volume.oc1..restored-restored1");
    EXPECT_THAT(f.queries->calls,
                ElementsAre(R"(GetSnapshotInfoForSnapshotName("backup1"))",
                            R"(GetVolumeInfo("ocid1.volume.oc1..src","",1))"));
    // Size and description are the snapshot's business, not the source volume's.
    EXPECT_THAT(f.operations->calls,
                ElementsAre(R"(CreateVolumeFromSnapshot("backup1","restored1","ocid1.compartment.oc1..c","/oracle/public/storage/default","AD-1","",0))"));
}

TEST(FacadeVolumeFromSnapshot, MissingSnapshotOrVolumeStopsBeforeTheOperations) {
    LogCapture log;
    CompositeFacade f;
    std::string created;
    EXPECT_FALSE(f.facade.CreateVolumeFromSnapshot("nosuch", "v", created));
    EXPECT_TRUE(LoggedError(log, "Cannot find snapshot [nosuch]"));

    AddSnapshotOfSourceVolume(*f.queries);
    f.queries->volumes.clear();
    EXPECT_FALSE(f.facade.CreateVolumeFromSnapshot("backup1", "v", created));
    EXPECT_TRUE(LoggedError(log, "Cannot find volume [ocid1.volume.oc1..src]"));
    EXPECT_TRUE(f.operations->calls.empty());
    EXPECT_EQ(f.facade.GetLastError(), "");

    AddSnapshotOfSourceVolume(*f.queries);
    f.operations->failing = {"CreateVolumeFromSnapshot"};
    EXPECT_FALSE(f.facade.CreateVolumeFromSnapshot("backup1", "v", created));
    EXPECT_EQ(f.facade.GetLastError(), "") << "no error text taken over";
}

TEST(FacadeRevert, NewVolumeIsNamedAfterTheOldOneWithATimeSuffixAndTheOldOneIsDeleted) {
    CompositeFacade f;
    AddSnapshotOfSourceVolume(*f.queries);
    const long long before = static_cast<long long>(std::time(nullptr));
    std::string created;
    EXPECT_TRUE(f.facade.RevertToIntegritySnapshot("/Compute-a/u/vol7", "backup1", created));
    const long long after = static_cast<long long>(std::time(nullptr));

    ASSERT_EQ(f.operations->calls.size(), 2u);
    const std::string& create = f.operations->calls[0];
    const std::string prefix = R"(CreateVolumeFromSnapshot("backup1","vol7_)";
    ASSERT_EQ(create.compare(0, prefix.size(), prefix), 0) << create;
    const long long suffix = std::stoll(create.substr(prefix.size()));
    EXPECT_GE(suffix, before);
    EXPECT_LE(suffix, after);
    EXPECT_THAT(created, MatchesRegex("ocid1\\.volume\\.oc1\\.\\.restored-vol7_[0-9]+"));
    EXPECT_EQ(f.operations->calls[1], R"(DeleteVolume("/Compute-a/u/vol7"))");
}

TEST(FacadeRevert, AnOCIDVolumeIsNamedByItsWholeId) {
    CompositeFacade f;
    AddSnapshotOfSourceVolume(*f.queries);
    std::string created;
    EXPECT_TRUE(f.facade.RevertToIntegritySnapshot("ocid1.volume.oc1..src", "backup1", created));
    EXPECT_THAT(f.operations->calls[0], ::testing::HasSubstr(R"("ocid1.volume.oc1..src_)"));
}

TEST(FacadeRevert, EmptyOrSeparatorOnlyArgumentsAreRefusedBeforeAnyRequest) {
    LogCapture log;
    CompositeFacade f;
    std::string created;
    EXPECT_FALSE(f.facade.RevertToIntegritySnapshot("", "s", created));
    EXPECT_TRUE(LoggedError(log, "Cannot revert to integrity snapshot as Volume uri was empty"));
    EXPECT_FALSE(f.facade.RevertToIntegritySnapshot("v", "", created));
    EXPECT_TRUE(LoggedError(log, "Cannot revert to integrity snapshot as snapshot uri was empty"));
    EXPECT_FALSE(f.facade.RevertToIntegritySnapshot("///", "s", created));
    EXPECT_TRUE(LoggedError(log, "Cannot perform revert operation. Volume URI is incorrect [///]"));
    EXPECT_TRUE(f.queries->calls.empty());
    EXPECT_TRUE(f.operations->calls.empty());
}

TEST(FacadeRevert, FailedCreationTakesTheOperationsTextEvenWhenAQueryFailed) {
    LogCapture log;
    CompositeFacade f;
    f.operations->SetLastError("operations said no");
    std::string created;
    EXPECT_FALSE(f.facade.RevertToIntegritySnapshot("vol7", "nosuch", created));
    EXPECT_EQ(f.facade.GetLastError(), "operations said no");
    EXPECT_TRUE(LoggedError(log, "Could not create volume from integrity snapshot  [nosuch]: [operations said no]"));
    EXPECT_TRUE(f.operations->calls.empty()) << "no delete after a failed creation";
}

TEST(FacadeRevert, OldVolumeThatWillNotGoStillCountsAsReverted) {
    LogCapture log;
    CompositeFacade f;
    AddSnapshotOfSourceVolume(*f.queries);
    f.operations->failing = {"DeleteVolume"};
    std::string created;
    EXPECT_TRUE(f.facade.RevertToIntegritySnapshot("vol7", "backup1", created));
    EXPECT_THAT(created, MatchesRegex(".*restored-vol7_[0-9]+"));
    EXPECT_EQ(f.facade.GetLastError(), "DeleteVolume failed in the backend");
    EXPECT_TRUE(LoggedError(log, "Could not delete volume  [vol7]: [DeleteVolume failed in the backend]"));
}

TEST(FacadeSnapshotStatus, ReportsTheStatusOrTheLookupFailure) {
    LogCapture log;
    CompositeFacade f;
    AddSnapshotOfSourceVolume(*f.queries);
    std::string status;
    EXPECT_TRUE(f.facade.GetSnapshotStatus("backup1", status));
    EXPECT_EQ(status, "AVAILABLE");
    EXPECT_FALSE(f.facade.GetSnapshotStatus("gone", status));
    EXPECT_TRUE(LoggedError(log, "Cannot get snapshot details for [gone]"));
    EXPECT_EQ(f.facade.GetLastError(), "no snapshot gone");
}
