// A backend overrides only what its cloud supports; everything else answers
// through the base defaults: false at once, no request, no log line, and the
// last error of the backend untouched (so the facade reports the text of the
// last real failure).
#include <gtest/gtest.h>

#include "FacadeTestBackends.h"

using namespace facadetest;

namespace {

struct BaseBackends {
    BaseBackends()
        : connection(new CountingConnection()),
          queries(new COracleCloudBaseQueries(connection, nullptr)),
          operations(new BareOperations(connection)),
          facade(ORACLE_CLOUD_INFRASTRUCTURE, nullptr, connection, queries, operations) {
        queries->SetLastError("earlier queries text");
        operations->SetLastError("earlier operations text");
    }
    CountingConnection* connection;
    COracleCloudBaseQueries* queries;
    BareOperations* operations;
    TestableWrapper facade;
};

}  // namespace

TEST(BaseDefaults, EveryQueryAnswersFalseQuietly) {
    BaseBackends b;
    COracleCloudBaseQueries& q = *b.queries;
    LogCapture log;
    std::string s;
    bool flag = false;
    SVMInfoLib vm;
    SDiskInfoLib disk;
    SSnapshotInfoLib snapshot;
    SStorageAttachmentInfoLib attachment;
    std::vector<std::string> names;

    EXPECT_FALSE(q.CheckConnection());
    SClusterInfoLib cluster;
    std::vector<SClusterInfoLib> clusters;
    EXPECT_FALSE(q.GetClusterInfo("c", cluster, 1, ""));
    EXPECT_FALSE(q.GetClusterInfoList(clusters, 1, ""));
    SHostInfoLib host;
    std::vector<SHostInfoLib> hosts;
    EXPECT_FALSE(q.GetHostInfo("h", "n", host, 1, ""));
    EXPECT_FALSE(q.GetHostInfoList(hosts, "p", 1, ""));
    std::vector<SVMInfoLib> vms;
    EXPECT_FALSE(q.GetVMInfo("n", "i", vm, 1, ""));
    EXPECT_FALSE(q.GetVMInfoList(vms, 1, ""));
    EXPECT_FALSE(q.GetVMInfoListForHost(vms, "h", "n", 1, ""));
    EXPECT_FALSE(q.GetInstanceConfigJson("i", s));
    EXPECT_FALSE(q.GetTemplateInfoList(vms, "c", 1, 2, ""));
    EXPECT_FALSE(q.GetTemplateInfoListFilterByName(vms, "c", "n", 1, 2, ""));
    EXPECT_FALSE(q.GetTemplateInfo("t", vm, ""));
    EXPECT_FALSE(q.GetStorageAttachmentForDisk("v", attachment, ""));
    EXPECT_FALSE(q.GetStorageAttachmentForDiskAndInstance("v", "i", attachment, flag, ""));
    SContainerInfoLib container;
    std::vector<SContainerInfoLib> containers;
    EXPECT_FALSE(q.GetContainerInfo("c", "n", container, 0, ""));
    EXPECT_FALSE(q.GetContainerInfoList(containers, "p", 0, ""));
    EXPECT_FALSE(q.GetSnapshotInfoForSnapshotName("s", snapshot));
    std::vector<SKeyPairInfoLib> keyPairs;
    SKeyPairInfoLib keyPair;
    EXPECT_FALSE(q.GetKeyPairList(keyPairs));
    EXPECT_FALSE(q.GetKeyInfoForKeyName("k", keyPair));
    std::vector<SSecurityGroupInfoLib> groups;
    EXPECT_FALSE(q.GetSecurityGroupList(groups));
    std::vector<SInstanceShapeInfoLib> shapes;
    EXPECT_FALSE(q.GetInstanceShapeList(shapes, "c", ""));
    EXPECT_FALSE(q.GetInstanceShapeListForImage(shapes, "c", "i", "a", ""));
    std::vector<SNetworkInfoLib> networks;
    EXPECT_FALSE(q.GetNetworkList(networks, "c", "a", ""));
    std::vector<SIPAssociationLib> associations;
    EXPECT_FALSE(q.GetIPAssocation("v", associations, 1));
    std::vector<SStorageAttachmentInfoLib> attachments;
    EXPECT_FALSE(q.GetStorageAttachmentInfo("c", "i", attachments, 1, ""));
    EXPECT_FALSE(q.GetVolumeInfo(disk, 1));
    EXPECT_FALSE(q.GetSnapshotInfo(snapshot, 1));
    std::vector<SSnapshotInfoLib> snapshots;
    EXPECT_FALSE(q.GetAllSnapshotsInfoForUsers(snapshots, {"u"}));
    EXPECT_FALSE(q.GetOrchestrationForVM("b", "master", s));
    EXPECT_EQ(q.GetAvailableDiskIndexForVM("v"), -1);
    SOrchestrationInfoLib orchestration;
    EXPECT_FALSE(q.GetOrchestrationInfo("o", orchestration));
    EXPECT_EQ(q.GetAvailableIndexPos(vm), 0);
    SOracleDBInstanceInfoLib db;
    std::vector<SOracleDBInstanceInfoLib> dbs;
    std::vector<SOracleDBComputeNodeLib> nodes;
    std::vector<SOracleSSHKeyLib> sshKeys;
    SOracleSSHKeyLib sshKey;
    EXPECT_FALSE(q.GetDBInstanceInfo("d", db));
    EXPECT_FALSE(q.GetDBInstanceList(dbs));
    EXPECT_FALSE(q.GetComputeNodeList("d", nodes));
    EXPECT_FALSE(q.GetSSHKeysList(sshKeys));
    EXPECT_FALSE(q.GetSSHKeyByName("k", sshKey));
    std::string s2, s3;
    EXPECT_FALSE(q.QueryBackupRestoreJobStatus("j", s, s2, s3));
    EXPECT_FALSE(q.WaitForBoot(vm, 1, true, ""));
    SOracleJobInfoLib job;
    EXPECT_FALSE(q.QueryBackupRestoreJobStatus("j", job));
    std::vector<SJavaInstanceInfoLib> javas;
    std::vector<SMySQLInstanceInfoLib> mysqls;
    SJavaMySQLJobInfoLib javaJob;
    EXPECT_FALSE(q.GetJavaInstanceList(javas));
    EXPECT_FALSE(q.GetMySQLInstanceList(mysqls));
    EXPECT_FALSE(q.QueryJavaMySQLBackupRestoreJobStatus("j", javaJob));
    std::vector<SRegionInfoLib> regions;
    EXPECT_FALSE(q.GetRegionInfoList(regions, 0));
    EXPECT_FALSE(q.GetSubscribedRegionInfoList(regions, 0));
    std::vector<SAvailabilityDomainInfoLib> domains;
    EXPECT_FALSE(q.GetAvailabilityDomainList(domains, 0, "c", ""));
    std::vector<SDataCenterInfoLib> dcs;
    EXPECT_FALSE(q.GetDCInfoList(dcs, 1, 2, ""));
    EXPECT_FALSE(q.GetBootVolumeAttachmentForInstance("a", "c", "i", attachment, ""));
    EXPECT_FALSE(q.CheckIfDiskExists("d", flag, ""));
    std::vector<SStorageBucketInfoLib> buckets;
    EXPECT_FALSE(q.GetBucketListForCompartment(buckets, "c", 0, ""));
    EXPECT_FALSE(q.GetNamespaceForTenant(s));
    std::vector<SOCIDbSystemInfoLib> systems;
    std::vector<SOCIDatabaseInfoLib> databases;
    std::vector<SOCIDbBackupInfoLib> backups;
    std::vector<SOCIDbHomeInfoLib> homes;
    std::vector<SOCIDbNodeInfoLib> dbNodes;
    SOCIDatabaseInfoLib database;
    SOCIDbBackupInfoLib backup;
    EXPECT_FALSE(q.GetDbSystemList(systems, "c"));
    EXPECT_FALSE(q.GetDatabaseList(databases, "c", "h"));
    EXPECT_FALSE(q.GetDbBackupList(backups, "c", "d"));
    EXPECT_FALSE(q.GetDbHomeList(homes, "c", "s"));
    EXPECT_FALSE(q.GetDbNodeList(dbNodes, "c", "s"));
    EXPECT_FALSE(q.GetDatabaseInfo(database, "d"));
    EXPECT_FALSE(q.GetDbBackupInfo(backup, "b"));
    EXPECT_FALSE(q.GetListFromLink("l", names));
    EXPECT_FALSE(q.GetListFromLink("l", sshKeys));
    EXPECT_FALSE(q.GetResourceNamesFromURITraversal("u", 3, names));

    EXPECT_EQ(b.connection->requests, 0);
    EXPECT_TRUE(log.lines.empty());
    EXPECT_EQ(q.GetLastError(), "earlier queries text");
    // Nothing was filled in either.
    EXPECT_TRUE(vms.empty() && names.empty() && regions.empty() && s.empty());
}

TEST(BaseDefaults, EveryOperationAnswersFalseQuietly) {
    BaseBackends b;
    COracleCloudBaseOperations& o = *b.operations;
    LogCapture log;
    SVMInfoLib vm;
    SDiskInfoLib disk;
    SSnapshotInfoLib snapshot;
    SStorageAttachmentInfoLib attachment;
    SOrchestrationInfoLib orchestration;
    SOracleDBInstanceInfoLib db;
    SJavaInstanceInfoLib java;
    SMySQLInstanceInfoLib mysql;
    SOCIDatabaseInfoLib database;
    SPaaSBackupRestoreOptionsLib options;
    SImageInfoLib image;
    SVNicInfoLib vnic;
    std::string a, c;
    bool flag = false;

    EXPECT_FALSE(o.DeployVM(vm, "s"));
    EXPECT_FALSE(o.DeleteVM("n", "i", true, true));
    EXPECT_FALSE(o.PowerOffInstance("i"));
    EXPECT_FALSE(o.PowerOnInstance("i"));
    EXPECT_FALSE(o.CreateVolumeAttachmentToInstance(disk, vm, flag, attachment));
    EXPECT_FALSE(o.CreateVolume(disk, "u"));
    EXPECT_FALSE(o.CreateSnapshotForVolume("v", "d", "n", snapshot));
    EXPECT_FALSE(o.CreateVolumeFromSnapshot(snapshot, disk));
    EXPECT_FALSE(o.DeleteVolumeSnapshot("s"));
    EXPECT_FALSE(o.DeleteVolume("v"));
    EXPECT_FALSE(o.DeleteStorageAttachment(attachment, true));
    EXPECT_FALSE(o.AreAllAttachmentsDeleted({"a"}));
    EXPECT_FALSE(o.MakeVolumeBootable(disk));
    EXPECT_FALSE(o.ClearDescriptionForVolume(disk));
    EXPECT_FALSE(o.DoesVolumeExist("v", "u"));
    EXPECT_FALSE(o.DeployVMFromOrchestration(vm, orchestration));
    EXPECT_FALSE(o.DeployVMFromLaunchPlan("{}", a));
    EXPECT_FALSE(o.LaunchInstance(vm));
    EXPECT_FALSE(o.RebootInstance("i"));
    EXPECT_FALSE(o.CreateDBInstance(db));
    EXPECT_FALSE(o.DeleteDBInstance(db));
    EXPECT_FALSE(o.ScaleDBInstance(db));
    EXPECT_FALSE(o.StartDBInstance(db));
    EXPECT_FALSE(o.StopDBInstance(db));
    EXPECT_FALSE(o.RestartDBInstance(db));
    EXPECT_FALSE(o.BackupDBInstance(db, options, a, c));
    EXPECT_FALSE(o.RestoreDBInstance(db, options, a, c));
    EXPECT_FALSE(o.DeleteDBBackup(db, options, a, c));
    EXPECT_FALSE(o.BackupJavaInstance(java, options, a, c));
    EXPECT_FALSE(o.RestoreJavaInstance(java, options, a, c));
    EXPECT_FALSE(o.DeleteJavaBackup(java, options, a, c));
    EXPECT_FALSE(o.BackupMySQLInstance(mysql, options, a, c));
    EXPECT_FALSE(o.RestoreMySQLInstance(mysql, options, a, c));
    EXPECT_FALSE(o.DeleteMySQLBackup(mysql, options, a, c));
    EXPECT_FALSE(o.BackupDBInstance(database, options, a));
    EXPECT_FALSE(o.RestoreDBInstance(database, options, a));
    EXPECT_FALSE(o.DeleteDBBackup(database, options, a));
    EXPECT_FALSE(o.SetOperationTimeout(10));
    EXPECT_FALSE(o.UploadToObjectStorage("n", "b", "o", "content"));
    EXPECT_FALSE(o.CreateImage("n", "b", "o", image));
    EXPECT_FALSE(o.DeployVMFromBootDisk(vm, "bv"));
    EXPECT_FALSE(o.DeleteStorageObject("n", "b", "o"));
    EXPECT_FALSE(o.DeleteImage("i"));
    EXPECT_FALSE(o.AttachVnic(vm, vnic));

    EXPECT_EQ(b.connection->requests, 0);
    EXPECT_TRUE(log.lines.empty());
    EXPECT_EQ(o.GetLastError(), "earlier operations text");
    EXPECT_TRUE(a.empty() && c.empty());
}

TEST(BaseDefaults, FacadeOverDefaultsAnswersFalseWithoutRequestsOrLogLines) {
    BaseBackends b;
    LogCapture log;
    std::vector<SVMInfoLib> vms;
    std::vector<SRegionInfoLib> regions;
    std::vector<SKeyPairInfoLib> keys;
    SVMInfoLib vm;
    SOracleDBInstanceInfoLib db;

    EXPECT_FALSE(b.facade.CheckConnection());
    EXPECT_FALSE(b.facade.GetVMInfoList(vms, 16, ""));
    EXPECT_FALSE(b.facade.GetRegionList(regions));
    EXPECT_FALSE(b.facade.GetKeyPairList(keys));
    EXPECT_FALSE(b.facade.LaunchInstance(vm));
    EXPECT_FALSE(b.facade.DeleteVM("n", "i", false, false));
    EXPECT_FALSE(b.facade.CreateDBInstance(db));
    EXPECT_EQ(b.connection->requests, 0);
    EXPECT_TRUE(log.lines.empty());
    // The facade reports what the backend last had to say.
    EXPECT_EQ(b.facade.GetLastError(), "earlier operations text");
}

TEST(BaseDefaults, BaseConnectionCannotConnectOrCheck) {
    CountingConnection connection;
    EXPECT_FALSE(connection.COracleCloudBaseConnection::connect("s", "u", "p", ORACLE_SERVICE_COMPUTE));
    EXPECT_FALSE(connection.checkConnection());
    EXPECT_EQ(connection.getIdentityDomain(), "");
    connection.COracleCloudBaseConnection::setRegion("us-ashburn-1");
    EXPECT_EQ(connection.COracleCloudBaseConnection::getRegion(), "");
    EXPECT_EQ(connection.requests, 0);
}
