// Records are filled field by field by the parsers; any field that a cloud
// does not send must stay at a well-known default, and records travel by value
// through vectors, so copies and moves must carry their nested lists.
#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "oraclecloud/OracleCloudRecords.h"

using namespace OracleCloudSDKWrapper;

namespace {

template <class T>
constexpr bool kValueRecord = std::is_default_constructible<T>::value && std::is_copy_constructible<T>::value &&
                              std::is_move_constructible<T>::value && std::is_copy_assignable<T>::value &&
                              std::is_move_assignable<T>::value && !std::is_polymorphic<T>::value;

static_assert(kValueRecord<SVMInfoLib>, "");
static_assert(kValueRecord<SHostInfoLib>, "");
static_assert(kValueRecord<SContainerInfoLib>, "");
static_assert(kValueRecord<SClusterInfoLib>, "");
static_assert(kValueRecord<SDataCenterInfoLib>, "");
static_assert(kValueRecord<SInstanceShapeInfoLib>, "");
static_assert(kValueRecord<SImageInfoLib>, "");
static_assert(kValueRecord<SKeyPairInfoLib>, "");
static_assert(kValueRecord<SOracleSSHKeyLib>, "");
static_assert(kValueRecord<SOrchestrationInfoLib>, "");
static_assert(kValueRecord<SDiskInfoLib>, "");
static_assert(kValueRecord<SSnapshotInfoLib>, "");
static_assert(kValueRecord<SStorageAttachmentInfoLib>, "");
static_assert(kValueRecord<SNetworkInfoLib>, "");
static_assert(kValueRecord<SSubnetInfoLib>, "");
static_assert(kValueRecord<SVNicInfoLib>, "");
static_assert(kValueRecord<SOracleDBInstanceInfoLib>, "");
static_assert(kValueRecord<SJavaInstanceInfoLib>, "");
static_assert(kValueRecord<SMySQLInstanceInfoLib>, "");
static_assert(kValueRecord<SOCIDbSystemInfoLib>, "");
static_assert(kValueRecord<SOCIDatabaseInfoLib>, "");
static_assert(kValueRecord<SPaaSBackupRestoreOptionsLib>, "");

// Enumeration values are part of the caller's contract (they are stored in the
// agent's job settings), so they are pinned here.
static_assert(ORACLE_CLOUD_CLASSIC == 1 && ORACLE_CLOUD_INFRASTRUCTURE == 2, "");
static_assert(ORACLE_SERVICE_COMPUTE == 1 && ORACLE_SERVICE_PAAS_DATABASE == 2 && ORACLE_SERVICE_PAAS_JAVA == 8 &&
                  ORACLE_SERVICE_PAAS_MYSQL == 9,
              "");
static_assert(OCI_SERVICE_CORE == 3 && OCI_SERVICE_DATABASE == 4 && OCI_SERVICE_AUDIT == 5 &&
                  OCI_SERVICE_IDENTITY == 6 && OCI_SERVICE_OBJECT_STORAGE == 7 && OCI_SERVICE_SEARCH == 10,
              "");

}  // namespace

TEST(RecordDefaults, SnapshotIsCompleteUnlessAskedOtherwise) {
    SSnapshotInfoLib snapshot;
    EXPECT_TRUE(snapshot.isComplete);
    EXPECT_EQ(snapshot.startTime, 0);
    EXPECT_EQ(snapshot.sizeBytes, 0u);
    EXPECT_TRUE(snapshot.name.empty());
    EXPECT_TRUE(snapshot.volumeName.empty());
}

TEST(RecordDefaults, ComputeRecordsStartAtZeroAndFalse) {
    SVMInfoLib vm;
    EXPECT_EQ(vm.cpuCount, 0u);
    EXPECT_EQ(vm.memoryMB, 0u);
    EXPECT_EQ(vm.nicCount, 0u);
    EXPECT_EQ(vm.diskCount, 0u);
    EXPECT_EQ(vm.sizeBytes, 0u);
    EXPECT_EQ(vm.bootDiskIndex, 0);
    EXPECT_EQ(vm.bootVolumeSizeGB, 0u);
    EXPECT_FALSE(vm.isTemplate);
    EXPECT_FALSE(vm.enableRdp);
    EXPECT_TRUE(vm.disks.empty() && vm.securityGroups.empty() && vm.sshKeys.empty() && vm.vnics.empty());
    EXPECT_TRUE(vm.vmName.empty() && vm.guid.empty() && vm.fullName.empty() && vm.state.empty());

    SHostInfoLib host;
    EXPECT_EQ(host.cpuCount, 0u);
    EXPECT_EQ(host.memoryMB, 0u);
    EXPECT_EQ(host.vmCount, 0u);
    EXPECT_EQ(host.diskCount, 0u);
    EXPECT_FALSE(host.isConnected);
    EXPECT_FALSE(host.isInMaintenance);

    EXPECT_EQ(SContainerInfoLib().maxCapacity, 0u);
    SInstanceShapeInfoLib shape;
    EXPECT_EQ(shape.cpuCount, 0);
    EXPECT_EQ(shape.memoryMB, 0);
    EXPECT_EQ(shape.ioCount, 0);
    EXPECT_FALSE(SImageInfoLib().createImageAllowed);
    EXPECT_TRUE(SOrchestrationInfoLib().vm.fullName.empty());
}

TEST(RecordDefaults, StorageAndNetworkRecordsStartAtZeroAndFalse) {
    SDiskInfoLib disk;
    EXPECT_EQ(disk.index, 0);
    EXPECT_EQ(disk.sizeBytes, 0u);
    EXPECT_FALSE(disk.isAttached);
    EXPECT_FALSE(disk.bootable);
    EXPECT_TRUE(disk.attachments.empty());
    EXPECT_EQ(SStorageAttachmentInfoLib().index, 0);

    SNetworkInfoLib network;
    EXPECT_FALSE(network.publicNaptEnabled);
    EXPECT_TRUE(network.subnets.empty());
    EXPECT_FALSE(SSubnetInfoLib().prohibitPublicIpOnVnic);
    SVNicInfoLib vnic;
    EXPECT_EQ(vnic.flags, 0u);
    EXPECT_FALSE(vnic.assignPublicIp);
    EXPECT_FALSE(SRegionInfoLib().isHomeRegion);
}

TEST(RecordDefaults, DatabaseRecordsStartAtZeroAndFalse) {
    SOracleDBInstanceInfoLib db;
    EXPECT_EQ(db.creationTime, 0);
    EXPECT_EQ(db.lastModifiedTime, 0);
    EXPECT_EQ(db.numNodes, 0);
    EXPECT_EQ(db.numIpReservations, 0);
    EXPECT_EQ(db.listenerPort, 0);
    EXPECT_FALSE(db.failoverDatabase);
    EXPECT_FALSE(db.racDatabase);
    EXPECT_FALSE(db.isClone);
    EXPECT_FALSE(db.disasterRecovery);
    EXPECT_FALSE(db.goldenGate);
    EXPECT_FALSE(db.instantBackup);
    EXPECT_FALSE(db.instantBackupOnPremise);
    EXPECT_TRUE(db.computeNodes.empty());

    SOracleDBComputeNodeLib node;
    EXPECT_EQ(node.creationTime, 0);
    EXPECT_EQ(node.listenerPort, 0);
    EXPECT_FALSE(node.initialPrimary);

    SJavaInstanceInfoLib java;
    EXPECT_EQ(java.serviceId, 0);
    EXPECT_EQ(java.totalSsdStorage, 0);
    EXPECT_EQ(SMySQLInstanceInfoLib().serviceId, 0);

    SJavaMySQLJobInfoLib job;
    EXPECT_FALSE(job.full || job.local || job.localCopy || job.databaseIncluded || job.staticDataIncluded ||
                 job.configDataIncluded || job.otdIncluded);

    SPaaSBackupRestoreOptionsLib options;
    EXPECT_FALSE(options.keepForever || options.fullBackup || options.databaseIncluded || options.latest ||
                 options.forceScaleIn || options.pauseOtd || options.resetBinaries || options.restoreConfig);
    EXPECT_TRUE(options.tag.empty() && options.scn.empty() && options.timestamp.empty());

    SOCIDbSystemInfoLib system;
    EXPECT_EQ(system.cpuCoreCount, 0);
    EXPECT_EQ(system.dataStoragePercentage, 0);
    EXPECT_EQ(system.dataStorageSizeInGBs, 0);
    EXPECT_EQ(system.listenerPort, 0);
    EXPECT_EQ(system.nodeCount, 0);
    EXPECT_EQ(system.recoStorageSizeInGB, 0);
    EXPECT_FALSE(SOCIDatabaseInfoLib().dbBackupConfig.autoBackupEnabled);
}

TEST(RecordCopy, CopyKeepsNestedListsAndLeavesSourceIndependent) {
    SVMInfoLib vm;
    vm.vmName = "web01";
    SDiskInfoLib disk;
    disk.name = "/Compute-acme/jdoe/boot";
    disk.index = 1;
    disk.bootable = true;
    SStorageAttachmentInfoLib attachment;
    attachment.attachmentId = "ocid1.volumeattachment.oc1..a";
    disk.attachments.push_back(attachment);
    vm.disks.push_back(disk);
    vm.sshKeys = {"key1", "key2"};
    SVNicInfoLib vnic;
    vnic.subnetId = "ocid1.subnet.oc1..s";
    vm.vnics.push_back(vnic);

    SVMInfoLib copy = vm;
    ASSERT_EQ(copy.disks.size(), 1u);
    EXPECT_EQ(copy.disks[0].name, "/Compute-acme/jdoe/boot");
    ASSERT_EQ(copy.disks[0].attachments.size(), 1u);
    EXPECT_EQ(copy.disks[0].attachments[0].attachmentId, "ocid1.volumeattachment.oc1..a");
    EXPECT_EQ(copy.sshKeys, vm.sshKeys);
    EXPECT_EQ(copy.vnics[0].subnetId, "ocid1.subnet.oc1..s");

    copy.disks[0].index = 7;
    copy.sshKeys.push_back("key3");
    EXPECT_EQ(vm.disks[0].index, 1);
    EXPECT_EQ(vm.sshKeys.size(), 2u);
}

TEST(RecordCopy, MoveCarriesNestedListsOfHostsAndDatabases) {
    SHostInfoLib host;
    host.hostId = "ocid1.compartment.oc1..c";
    host.vms.resize(3);
    host.vms[2].guid = "third";
    SNetworkInfoLib network;
    network.name = "vcn";
    network.subnets.resize(2);
    network.subnets[1].securityListIds = {"sl1"};
    host.networks.push_back(network);

    SHostInfoLib moved(std::move(host));
    ASSERT_EQ(moved.vms.size(), 3u);
    EXPECT_EQ(moved.vms[2].guid, "third");
    ASSERT_EQ(moved.networks.size(), 1u);
    ASSERT_EQ(moved.networks[0].subnets.size(), 2u);
    EXPECT_EQ(moved.networks[0].subnets[1].securityListIds, std::vector<std::string>{"sl1"});

    SOracleDBInstanceInfoLib db;
    db.serviceName = "orcl";
    db.computeNodes.resize(2);
    db.computeNodes[1].hostname = "node2";
    SOracleDBInstanceInfoLib assigned;
    assigned = std::move(db);
    ASSERT_EQ(assigned.computeNodes.size(), 2u);
    EXPECT_EQ(assigned.computeNodes[1].hostname, "node2");

    std::vector<SOrchestrationInfoLib> orchestrations(1);
    orchestrations[0].vm.disks.resize(2);
    orchestrations.reserve(16);  // forces the element to be moved
    EXPECT_EQ(orchestrations[0].vm.disks.size(), 2u);
}
