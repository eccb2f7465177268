// OCI documents as the services return them, read through the generic
// walkers of the base class (as the OCI backend does, through a base pointer).
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ParserTestSupport.h"
#include "parser/OracleCloudInfrastructureParser.h"

using namespace OracleCloudSDKWrapper;
using ParserTest::LogCapture;

namespace {

const char* kFlexInstance = R"({
  "availabilityDomain": "Uocm:PHX-AD-1",
  "capacityReservationId": null,
  "compartmentId": "ocid1.compartment.oc1..aaaaaaaa4xq3kqz5",
  "definedTags": {"Operations": {"CostCenter": "42"}},
  "displayName": "web-1",
  "extendedMetadata": {},
  "faultDomain": "FAULT-DOMAIN-2",
  "freeformTags": {"env": "prod"},
  "id": "ocid1.instance.oc1.phx.anyhqljtniwq6syc",
  "imageId": "ocid1.image.oc1.phx.aaaaaaaa6hooptnlbfwr5lwemqjbu3uqidntrlhnt45yihfj222zahe7p3wq",
  "launchMode": "PARAVIRTUALIZED",
  "launchOptions": {"bootVolumeType": "PARAVIRTUALIZED", "firmware": "UEFI_64", "networkType": "PARAVIRTUALIZED"},
  "lifecycleState": "RUNNING",
  "metadata": {"ssh_authorized_keys": "ssh-rsa AAAA jdoe"},
  "region": "phx",
  "shape": "VM.Standard.E4.Flex",
  "shapeConfig": {"ocpus": 1.5, "memoryInGBs": 16.5, "vcpus": 3, "baselineOcpuUtilization": null,
                  "processorDescription": "2.55 GHz AMD EPYC 7J13", "networkingBandwidthInGbps": 1.5,
                  "maxVnicAttachments": 2, "gpus": 0, "localDisks": 0},
  "sourceDetails": {"sourceType": "image",
                    "imageId": "ocid1.image.oc1.phx.aaaaaaaa6hooptnlbfwr5lwemqjbu3uqidntrlhnt45yihfj222zahe7p3wq",
                    "bootVolumeSizeInGBs": 50},
  "timeCreated": "2023-03-14T09:26:53.591Z"
})";

std::unique_ptr<COracleCloudParser> MakeParser() {
    return std::unique_ptr<COracleCloudParser>(new COracleCloudInfrastructureParser());
}

}  // namespace

TEST(OciVm, FlexInstanceTakesCpuAndMemoryFromShapeConfig) {
    auto parser = MakeParser();
    SVMInfoLib vm;
    ASSERT_TRUE(parser->ParseObject(kFlexInstance, vm));
    EXPECT_EQ("web-1", vm.vmName);
    EXPECT_EQ("ocid1.instance.oc1.phx.anyhqljtniwq6syc", vm.guid);
    EXPECT_EQ(vm.guid, vm.fullName);
    EXPECT_EQ("ocid1.compartment.oc1..aaaaaaaa4xq3kqz5", vm.compartmentId);
    EXPECT_EQ("Uocm:PHX-AD-1", vm.availabilityDomain);
    EXPECT_EQ("PARAVIRTUALIZED", vm.launchMode);
    EXPECT_EQ("phx", vm.region);
    EXPECT_EQ("VM.Standard.E4.Flex", vm.shape);
    EXPECT_EQ("RUNNING", vm.state);
    EXPECT_EQ("RUNNING", vm.status);
    EXPECT_EQ(1u, vm.cpuCount);          // 1.5 truncated
    EXPECT_EQ(16384ULL, vm.memoryMB);    // 16.5 -> 16 GB -> MB
    EXPECT_FALSE(vm.isTemplate);
    EXPECT_EQ(0u, vm.imageId.rfind("ocid1.image.oc1.phx.", 0));
    // One interface whose only known field is the subnet (absent here).
    ASSERT_EQ(1u, vm.vnics.size());
    EXPECT_EQ("", vm.vnics[0].subnetId);
    // Nothing Classic-only is filled.
    EXPECT_EQ("", vm.platform);
    EXPECT_TRUE(vm.disks.empty());
}

TEST(OciVm, FixedShapeImagesAndOddShapeConfigs) {
    auto parser = MakeParser();

    SVMInfoLib fixed;
    ASSERT_TRUE(parser->ParseObject(R"({"id": "ocid1.instance.oc1.iad.abc", "shape": "VM.Standard2.1",
        "lifecycleState": "STOPPED", "subnetId": "ocid1.subnet.oc1.iad.s1",
        "sourceDetails": {"sourceType": "image", "imageId": "ocid1.image.oc1.iad.img"}})",
                                    fixed));
    EXPECT_EQ(0u, fixed.cpuCount);  // no shapeConfig: the shape rules are the queries' business
    EXPECT_EQ(0ULL, fixed.memoryMB);
    EXPECT_EQ("ocid1.image.oc1.iad.img", fixed.imageId);  // from the source details
    ASSERT_EQ(1u, fixed.vnics.size());
    EXPECT_EQ("ocid1.subnet.oc1.iad.s1", fixed.vnics[0].subnetId);

    SVMInfoLib image;
    ASSERT_TRUE(parser->ParseObject(R"({"id": "ocid1.image.oc1.phx.aaaa", "displayName": "Oracle-Linux-8.8"})", image));
    EXPECT_TRUE(image.isTemplate);

    SVMInfoLib bootVolumeSource;
    ASSERT_TRUE(parser->ParseObject(
        R"({"id": "i", "sourceDetails": {"sourceType": "bootVolume", "bootVolumeId": "ocid1.bootvolume.oc1.x"}})",
        bootVolumeSource));
    EXPECT_EQ("", bootVolumeSource.imageId);

    // Nonsense numbers never wrap into huge counts.
    SVMInfoLib odd;
    ASSERT_TRUE(parser->ParseObject(R"({"id": "i", "shapeConfig": {"ocpus": -2, "memoryInGBs": 1e300}})", odd));
    EXPECT_EQ(0u, odd.cpuCount);
    EXPECT_EQ(~0ULL, odd.memoryMB);
    SVMInfoLib text;
    ASSERT_TRUE(parser->ParseObject(R"({"id": "i", "shapeConfig": {"ocpus": "4", "memoryInGBs": null}})", text));
    EXPECT_EQ(0u, text.cpuCount);
    EXPECT_EQ(0ULL, text.memoryMB);
}

TEST(OciVm, ListThroughTheBasePointerUsesTheOciMapping) {
    auto parser = MakeParser();
    std::vector<SVMInfoLib> vms;
    ASSERT_TRUE(parser->ParseList(std::string("[") + kFlexInstance +
                                      R"(, {"id": "ocid1.instance.oc1.phx.b", "lifecycleState": "TERMINATED"}])",
                                  vms));
    ASSERT_EQ(2u, vms.size());
    EXPECT_EQ("web-1", vms[0].vmName);
    EXPECT_EQ("TERMINATED", vms[1].status);

    LogCapture log;
    std::vector<SVMInfoLib> none;
    EXPECT_FALSE(parser->ParseList(R"({"code": "NotAuthorizedOrNotFound", "message": "Authorization failed"})", none));
    EXPECT_EQ(1u, log.errorCount());
}

TEST(OciDisk, SizeInMegabytesWinsOverGigabytes) {
    auto parser = MakeParser();
    struct Case {
        const char* sizes;
        unsigned long long bytes;
    };
    const Case cases[] = {
        {R"("sizeInMBs": 0, "sizeInGBs": 50)", 53687091200ULL},
        {R"("sizeInMBs": 51200, "sizeInGBs": 50)", 53687091200ULL},
        {R"("sizeInMBs": 51200)", 53687091200ULL},
        {R"("sizeInGBs": 1024)", 1099511627776ULL},
        {R"("sizeInMBs": 1024, "sizeInGBs": 50)", 1073741824ULL},  // the deprecated figure still wins
        {R"("sizeInGBs": null)", 0},
        {R"("sizeInMBs": -1, "sizeInGBs": 2)", 2147483648ULL},
        {R"("sizeInGBs": 18446744073709551615)", ~0ULL},
    };
    for (const Case& c : cases) {
        SDiskInfoLib disk;
        ASSERT_TRUE(parser->ParseObject(std::string(R"({"id": "ocid1.volume.oc1.phx.v1", )") + c.sizes + "}", disk));
        EXPECT_EQ(c.bytes, disk.sizeBytes) << c.sizes;
    }
}

TEST(OciDisk, BootVolumeDocument) {
    auto parser = MakeParser();
    SDiskInfoLib disk;
    ASSERT_TRUE(parser->ParseObject(R"json({
      "availabilityDomain": "Uocm:PHX-AD-1", "compartmentId": "ocid1.compartment.oc1..c1",
      "displayName": "web-1 (Boot Volume)", "id": "ocid1.bootvolume.oc1.phx.abyhq", "imageId": "ocid1.image.oc1.phx.i",
      "isHydrated": true, "lifecycleState": "AVAILABLE", "sizeInGBs": 47, "sizeInMBs": 48128,
      "timeCreated": "2023-03-14T09:27:01.019Z", "vpusPerGB": 10})json",
                                    disk));
    EXPECT_EQ("ocid1.bootvolume.oc1.phx.abyhq", disk.guid);
    EXPECT_EQ("web-1 (Boot Volume)", disk.name);
    EXPECT_EQ("ocid1.compartment.oc1..c1", disk.compartmentId);
    EXPECT_EQ("Uocm:PHX-AD-1", disk.availabilityDomain);
    EXPECT_EQ("AVAILABLE", disk.status);
    EXPECT_EQ(47ULL << 30, disk.sizeBytes);
    EXPECT_FALSE(disk.bootable);  // the detail fill decides from the id
}

TEST(OciAttachment, OnlyIscsiAttachmentsCarryTargetFields) {
    const char* attachments = R"([
      {"attachmentType": "iscsi", "availabilityDomain": "Uocm:PHX-AD-1", "compartmentId": "ocid1.compartment.oc1..c1",
       "device": "/dev/oracleoci/oraclevdb", "displayName": "volumeattachment20230314",
       "id": "ocid1.volumeattachment.oc1.phx.a1", "instanceId": "ocid1.instance.oc1.phx.i1",
       "isReadOnly": false, "isShareable": false, "lifecycleState": "ATTACHED",
       "timeCreated": "2023-03-14T09:40:00.000Z", "volumeId": "ocid1.volume.oc1.phx.v1",
       "ipv4": "169.254.2.2", "iqn": "iqn.2015-12.com.oracleiaas:6f5e4d3c-2b1a-4098-8765-43210fedcba9",
       "port": 3260, "chapUsername": null, "chapSecret": null, "isMultipath": false},
      {"attachmentType": "paravirtualized", "id": "ocid1.volumeattachment.oc1.phx.a2",
       "instanceId": "ocid1.instance.oc1.phx.i1", "lifecycleState": "ATTACHING", "volumeId": "ocid1.volume.oc1.phx.v2",
       "ipv4": "169.254.2.3", "iqn": "iqn.unexpected", "port": 3260},
      {"attachmentType": "ISCSI", "id": "a3", "volumeId": "v3", "ipv4": "10.0.0.1", "port": 3260}
    ])";
    auto parser = MakeParser();
    std::vector<SStorageAttachmentInfoLib> list;
    ASSERT_TRUE(parser->ParseList(attachments, list));
    ASSERT_EQ(3u, list.size());

    const SStorageAttachmentInfoLib& iscsi = list[0];
    EXPECT_EQ("ocid1.volume.oc1.phx.v1", iscsi.volumeName);
    EXPECT_EQ("ocid1.instance.oc1.phx.i1", iscsi.instanceName);
    EXPECT_EQ("ATTACHED", iscsi.state);
    EXPECT_EQ("volumeattachment20230314", iscsi.name);
    EXPECT_EQ("ocid1.volumeattachment.oc1.phx.a1", iscsi.attachmentId);
    EXPECT_EQ("iscsi", iscsi.attachmentType);
    EXPECT_EQ("169.254.2.2", iscsi.iscsiIpv4);
    EXPECT_EQ("iqn.2015-12.com.oracleiaas:6f5e4d3c-2b1a-4098-8765-43210fedcba9", iscsi.iscsiIqn);
    EXPECT_EQ("3260", iscsi.iscsiPort);

    EXPECT_EQ("paravirtualized", list[1].attachmentType);
    EXPECT_EQ("", list[1].iscsiIpv4);
    EXPECT_EQ("", list[1].iscsiIqn);
    EXPECT_EQ("", list[1].iscsiPort);
    // The type must match exactly.
    EXPECT_EQ("", list[2].iscsiIpv4);
}

TEST(OciAttachment, BootVolumeAttachmentNamesTheBootVolume) {
    const char* bootAttachment = R"({
      "availabilityDomain": "Uocm:PHX-AD-1", "bootVolumeId": "ocid1.bootvolume.oc1.phx.abyhq",
      "compartmentId": "ocid1.compartment.oc1..c1", "displayName": "Remote boot attachment for instance",
      "id": "ocid1.instance.oc1.phx.i1", "instanceId": "ocid1.instance.oc1.phx.i1",
      "isPvEncryptionInTransitEnabled": false, "lifecycleState": "ATTACHED",
      "timeCreated": "2023-03-14T09:27:05.125Z"})";
    auto parser = MakeParser();
    SStorageAttachmentInfoLib attachment;
    ASSERT_TRUE(parser->ParseObject(bootAttachment, attachment));
    EXPECT_EQ("ocid1.bootvolume.oc1.phx.abyhq", attachment.volumeName);
    EXPECT_EQ("ocid1.instance.oc1.phx.i1", attachment.instanceName);
    EXPECT_EQ("ATTACHED", attachment.state);
    EXPECT_EQ("", attachment.attachmentType);
    EXPECT_EQ("", attachment.iscsiPort);

    SBootVolumeAttachmentInfo boot;
    ASSERT_TRUE(parser->ParseObject(bootAttachment, boot));
    EXPECT_EQ("Remote boot attachment for instance", boot.displayName);
    EXPECT_EQ("ocid1.instance.oc1.phx.i1", boot.instanceId);
    EXPECT_EQ("ocid1.bootvolume.oc1.phx.abyhq", boot.bootVolumeId);
    EXPECT_EQ("ATTACHED", boot.lifecycleState);
}

TEST(OciSnapshot, VolumeAndBootVolumeBackups) {
    auto parser = MakeParser();
    SSnapshotInfoLib volumeBackup;
    ASSERT_TRUE(parser->ParseObject(R"({
      "compartmentId": "ocid1.compartment.oc1..c1", "displayName": "nightly-web-1-data",
      "expirationTime": null, "id": "ocid1.volumebackup.oc1.phx.b1", "kmsKeyId": null,
      "lifecycleState": "AVAILABLE", "sizeInGBs": 50, "sizeInMBs": 51200, "sourceType": "MANUAL",
      "timeCreated": "2020-01-02T03:04:05Z", "timeRequestReceived": "2020-01-02T03:04:01.112Z",
      "type": "FULL", "uniqueSizeInGBs": 3, "uniqueSizeInMbs": 3072, "volumeId": "ocid1.volume.oc1.phx.v1"})",
                                    volumeBackup));
    EXPECT_EQ("ocid1.volumebackup.oc1.phx.b1", volumeBackup.snapshotId);
    EXPECT_EQ("ocid1.volumebackup.oc1.phx.b1", volumeBackup.name);
    EXPECT_EQ(1577934245, volumeBackup.startTime);
    EXPECT_EQ(53687091200ULL, volumeBackup.sizeBytes);
    EXPECT_EQ("AVAILABLE", volumeBackup.status);
    EXPECT_EQ("ocid1.volume.oc1.phx.v1", volumeBackup.volumeName);
    EXPECT_EQ("nightly-web-1-data", volumeBackup.description);
    EXPECT_TRUE(volumeBackup.isComplete);

    SSnapshotInfoLib bootBackup;
    ASSERT_TRUE(parser->ParseObject(R"({"id": "ocid1.bootvolumebackup.oc1.phx.b2",
      "bootVolumeId": "ocid1.bootvolume.oc1.phx.abyhq", "displayName": "web-1 boot",
      "lifecycleState": "CREATING", "sizeInGBs": 47, "timeCreated": "2020-01-02T03:04:05.987Z", "type": "FULL"})",
                                    bootBackup));
    EXPECT_EQ("ocid1.bootvolume.oc1.phx.abyhq", bootBackup.volumeName);
    EXPECT_EQ(1577934245, bootBackup.startTime);  // milliseconds do not spoil the time
    EXPECT_EQ(47ULL << 30, bootBackup.sizeBytes);  // boot volume backups have no MB figure
}

TEST(OciDatabase, DbSystemArraysAndNumbers) {
    const char* dbSystems = R"([{
      "availabilityDomain": "Uocm:PHX-AD-1", "backupSubnetId": null, "clusterName": null,
      "compartmentId": "ocid1.compartment.oc1..c1", "cpuCoreCount": 4, "dataStoragePercentage": 80,
      "dataStorageSizeInGBs": 256, "databaseEdition": "ENTERPRISE_EDITION", "diskRedundancy": "HIGH",
      "displayName": "dbsys-1", "domain": "sub1.vcn1.oraclevcn.com", "faultDomains": ["FAULT-DOMAIN-1"],
      "hostname": "dbhost", "id": "ocid1.dbsystem.oc1.phx.d1", "lastPatchHistoryEntryId": null,
      "licenseModel": "LICENSE_INCLUDED", "lifecycleDetails": null, "lifecycleState": "AVAILABLE",
      "listenerPort": 1521, "nodeCount": 2, "recoStorageSizeInGB": 256, "scanDnsRecordId": "ocid1.vcndnsrecord.oc1.phx.r",
      "scanIpIds": ["ocid1.privateip.oc1.phx.s1", "ocid1.privateip.oc1.phx.s2", 5],
      "shape": "VM.Standard2.4", "sshPublicKeys": ["ssh-rsa AAAA jdoe"], "subnetId": "ocid1.subnet.oc1.phx.s",
      "timeCreated": "2023-03-01T12:00:00.000Z", "version": "19.18.0.0.0",
      "vipIds": ["ocid1.privateip.oc1.phx.v1", "ocid1.privateip.oc1.phx.v2"]}])";
    auto parser = MakeParser();
    std::vector<SOCIDbSystemInfoLib> systems;
    ASSERT_TRUE(parser->ParseList(dbSystems, systems));
    ASSERT_EQ(1u, systems.size());
    const SOCIDbSystemInfoLib& s = systems[0];
    EXPECT_EQ("dbsys-1", s.displayName);
    EXPECT_EQ("", s.backupSubnetId);
    EXPECT_EQ("ENTERPRISE_EDITION", s.databaseEdition);
    EXPECT_EQ("sub1.vcn1.oraclevcn.com", s.domain);
    EXPECT_EQ("ocid1.vcndnsrecord.oc1.phx.r", s.scanDnsRecordId);
    EXPECT_EQ("2023-03-01T12:00:00.000Z", s.timeCreated);  // kept as text here
    EXPECT_EQ((std::vector<std::string>{"ocid1.privateip.oc1.phx.s1", "ocid1.privateip.oc1.phx.s2"}), s.scanIpIds);
    EXPECT_EQ(1u, s.sshPublicKeys.size());
    EXPECT_EQ(2u, s.vipIds.size());
    EXPECT_EQ(4, s.cpuCoreCount);
    EXPECT_EQ(80, s.dataStoragePercentage);
    EXPECT_EQ(256, s.dataStorageSizeInGBs);
    EXPECT_EQ(1521, s.listenerPort);
    EXPECT_EQ(2, s.nodeCount);
    EXPECT_EQ(256, s.recoStorageSizeInGB);

    // The same document seen as a service instance for the caller.
    std::vector<SOracleDBInstanceInfoLib> instances;
    ASSERT_TRUE(parser->ParseList(dbSystems, instances));
    ASSERT_EQ(1u, instances.size());
    const SOracleDBInstanceInfoLib& i = instances[0];
    EXPECT_EQ("dbhost", i.serviceName);
    EXPECT_EQ("ocid1.dbsystem.oc1.phx.d1", i.databaseId);
    EXPECT_EQ("AVAILABLE", i.status);
    EXPECT_EQ("19.18.0.0.0", i.version);
    EXPECT_EQ(2, i.numNodes);
    EXPECT_EQ(4, i.numIpReservations);
    EXPECT_EQ("ENTERPRISE_EDITION", i.edition);
    EXPECT_EQ("ocid1.compartment.oc1..c1", i.cloudStorageContainer);
    EXPECT_EQ("ocid1.subnet.oc1.phx.s", i.sid);
    EXPECT_EQ("Uocm:PHX-AD-1", i.computeSiteName);
    EXPECT_EQ(1677672000, i.creationTime);
    EXPECT_EQ(1521, i.listenerPort);
}

TEST(OciDatabase, DatabasesHomesNodesAndBackups) {
    auto parser = MakeParser();
    SOCIDatabaseInfoLib db;
    ASSERT_TRUE(parser->ParseObject(R"({"characterSet": "AL32UTF8", "compartmentId": "c1",
      "dbBackupConfig": {"autoBackupEnabled": true, "recoveryWindowInDays": 30, "autoBackupWindow": "SLOT_TWO"},
      "dbHomeId": "ocid1.dbhome.oc1.phx.h1", "dbName": "ORCL", "dbUniqueName": "ORCL_phx1xy", "dbWorkload": "OLTP",
      "id": "ocid1.database.oc1.phx.db1", "lifecycleState": "BACKUP_IN_PROGRESS", "ncharacterSet": "AL16UTF16",
      "pdbName": "PDB1", "timeCreated": "2023-03-01T12:30:00.000Z"})",
                                    db));
    EXPECT_EQ("ORCL_phx1xy", db.dbUniqueName);
    EXPECT_EQ("OLTP", db.dbWorkload);
    EXPECT_EQ("BACKUP_IN_PROGRESS", db.lifecycleState);
    EXPECT_EQ("PDB1", db.pdbName);
    // The nested settings object is read for a member of its own name, which
    // the service does not send: the flag stays off, as the agent expects.
    EXPECT_FALSE(db.dbBackupConfig.autoBackupEnabled);
    JsonValue nested;
    ASSERT_TRUE(JsonHelper::Parse(R"({"dbBackupConfig": true})", nested));
    SOCIDbBackupConfigLib config;
    EXPECT_TRUE(parser->Convert(nested.as_object(), config));
    EXPECT_TRUE(config.autoBackupEnabled);

    SOCIDbHomeInfoLib home;
    ASSERT_TRUE(parser->ParseObject(R"({"compartmentId": "c1", "dbSystemId": "ocid1.dbsystem.oc1.phx.d1",
      "dbVersion": "19.18.0.0.0", "displayName": "dbhome20230301", "id": "ocid1.dbhome.oc1.phx.h1",
      "lastPatchHistoryEntryId": null, "lifecycleState": "AVAILABLE", "dbHomeLocation": "/u01/app/oracle",
      "timeCreated": "2023-03-01T12:10:00.000Z"})",
                                    home));
    EXPECT_EQ("19.18.0.0.0", home.dbVersion);
    EXPECT_EQ("ocid1.dbsystem.oc1.phx.d1", home.dbSystemId);
    EXPECT_EQ("2023-03-01T12:10:00.000Z", home.timeCreated);

    std::vector<SOCIDbNodeInfoLib> nodes;
    ASSERT_TRUE(parser->ParseList(R"([{"dbSystemId": "d1", "hostname": "dbhost", "id": "ocid1.dbnode.oc1.phx.n1",
      "lifecycleState": "AVAILABLE", "timeCreated": "2023-03-01T12:05:00.000Z", "vnicId": "ocid1.vnic.oc1.phx.v"}])",
                                  nodes));
    ASSERT_EQ(1u, nodes.size());
    EXPECT_EQ("ocid1.vnic.oc1.phx.v", nodes[0].vnicId);

    SOCIDbBackupInfoLib backup;
    ASSERT_TRUE(parser->ParseObject(R"({"availabilityDomain": "Uocm:PHX-AD-1", "compartmentId": "c1",
      "databaseEdition": "ENTERPRISE_EDITION", "databaseId": "ocid1.database.oc1.phx.db1",
      "databaseSizeInGBs": 2.5, "displayName": "before-upgrade", "id": "ocid1.dbbackup.oc1.phx.k1",
      "lifecycleDetails": null, "lifecycleState": "ACTIVE", "timeEnded": "2023-03-02T01:10:00.000Z",
      "timeStarted": "2023-03-02T01:00:00.000Z", "type": "FULL"})",
                                    backup));
    EXPECT_EQ("before-upgrade", backup.displayName);
    EXPECT_EQ("ACTIVE", backup.lifecycleState);
    EXPECT_EQ("2023-03-02T01:00:00.000Z", backup.timeStarted);
    EXPECT_EQ("FULL", backup.type);
}

TEST(OciSearch, QueryResultPageGivesNetworksAndSubnets) {
    const char* vcns = R"({"items": [
      {"resourceType": "Vcn", "identifier": "ocid1.vcn.oc1.phx.vcn1", "compartmentId": "c1",
       "displayName": "prod-vcn", "availabilityDomain": null, "lifecycleState": "AVAILABLE",
       "timeCreated": "2022-11-02T10:00:00.000Z", "freeformTags": {}, "definedTags": {}, "systemTags": {},
       "searchContext": null, "identityContext": {}, "additionalDetails": {}},
      "noise",
      {"resourceType": "Vcn", "identifier": "ocid1.vcn.oc1.phx.vcn2", "displayName": "test-vcn"}]})";
    auto parser = MakeParser();
    std::vector<SNetworkInfoLib> networks;
    ASSERT_TRUE(parser->ParseQueryResult(vcns, networks));
    ASSERT_EQ(2u, networks.size());
    EXPECT_EQ("prod-vcn", networks[0].name);
    EXPECT_EQ("ocid1.vcn.oc1.phx.vcn1", networks[0].id);
    EXPECT_EQ("test-vcn", networks[1].name);

    std::vector<SSubnetInfoLib> subnets;
    ASSERT_TRUE(parser->ParseQueryResult(R"({"items": [{"resourceType": "Subnet",
      "identifier": "ocid1.subnet.oc1.phx.s1", "displayName": "app-subnet", "availabilityDomain": "Uocm:PHX-AD-2",
      "compartmentId": "c1", "lifecycleState": "AVAILABLE"}]})",
                                         subnets));
    ASSERT_EQ(1u, subnets.size());
    EXPECT_EQ("ocid1.subnet.oc1.phx.s1", subnets[0].id);
    EXPECT_EQ("app-subnet", subnets[0].displayName);
    EXPECT_EQ("Uocm:PHX-AD-2", subnets[0].availabilityDomain);
    EXPECT_EQ("", subnets[0].compartmentId);  // a search item is not a subnet document

    // An empty page is a page.
    EXPECT_TRUE(parser->ParseQueryResult(R"({"items": []})", subnets));
    EXPECT_EQ(1u, subnets.size());

    for (const char* body : {R"([{"identifier": "x"}])", R"({"code": "NotAuthenticated"})", R"({"items": {}})",
                             R"({"items": [)"}) {
        LogCapture log;
        EXPECT_FALSE(parser->ParseQueryResult(body, subnets)) << body;
        ASSERT_EQ(1u, log.lines().size()) << body;
        EXPECT_EQ(0u, log.lines()[0].text.rfind("Exception parsing json list [items] - ", 0)) << log.lines()[0].text;
    }
    EXPECT_EQ(1u, subnets.size());
}

TEST(OciIdentity, RegionsTenancyCompartmentsAndDomains) {
    auto parser = MakeParser();
    std::vector<SRegionInfoLib> subscriptions;
    ASSERT_TRUE(parser->ParseList(R"([
      {"regionKey": "PHX", "regionName": "us-phoenix-1", "status": "READY", "isHomeRegion": true},
      {"regionKey": "IAD", "regionName": "us-ashburn-1", "status": "IN_PROGRESS", "isHomeRegion": false}])",
                                  subscriptions));
    ASSERT_EQ(2u, subscriptions.size());
    EXPECT_EQ("PHX", subscriptions[0].regionKey);
    EXPECT_TRUE(subscriptions[0].isHomeRegion);
    EXPECT_EQ("IN_PROGRESS", subscriptions[1].status);

    std::vector<SRegionInfoLib> regions;
    ASSERT_TRUE(parser->ParseList(R"([{"key": "FRA", "name": "eu-frankfurt-1"}])", regions));
    ASSERT_EQ(1u, regions.size());
    EXPECT_EQ("FRA", regions[0].regionKey);
    EXPECT_EQ("eu-frankfurt-1", regions[0].regionName);

    STenancyInfoLib tenancy;
    ASSERT_TRUE(parser->ParseObject(R"({"id": "ocid1.tenancy.oc1..t", "name": "acme", "description": "ACME Corp",
      "homeRegionKey": "PHX", "upiIdcsCompatibilityLayerEndpoint": null, "freeformTags": {"owner": "ops"},
      "definedTags": {}})",
                                    tenancy));
    EXPECT_EQ("acme", tenancy.name);
    EXPECT_EQ("PHX", tenancy.homeRegionKey);
    EXPECT_EQ("ACME Corp", tenancy.description);
    EXPECT_EQ("", tenancy.freeformTags);  // a map, read as text

    std::vector<SContainerInfoLib> compartments;
    ASSERT_TRUE(parser->ParseList(R"([{"compartmentId": "ocid1.tenancy.oc1..t", "description": "Production",
      "id": "ocid1.compartment.oc1..c1", "inactiveStatus": null, "isAccessible": true, "lifecycleState": "ACTIVE",
      "name": "prod", "timeCreated": "2021-06-01T08:00:00.000Z"}])",
                                  compartments));
    ASSERT_EQ(1u, compartments.size());
    EXPECT_EQ("prod", compartments[0].name);
    EXPECT_EQ("ocid1.compartment.oc1..c1", compartments[0].guid);
    EXPECT_EQ("Production", compartments[0].description);
    EXPECT_EQ("ACTIVE", compartments[0].state);
    EXPECT_EQ("ocid1.tenancy.oc1..t", compartments[0].compartmentId);

    std::vector<SAvailabilityDomainInfoLib> domains;
    ASSERT_TRUE(parser->ParseList(R"([{"compartmentId": "ocid1.tenancy.oc1..t", "id": "ocid1.availabilitydomain.oc1..a",
      "name": "Uocm:PHX-AD-1"}])",
                                  domains));
    ASSERT_EQ(1u, domains.size());
    EXPECT_EQ("Uocm:PHX-AD-1", domains[0].name);
}

TEST(OciCompute, ImagesVnicsAttachmentsCredentialsBucketsAndErrors) {
    auto parser = MakeParser();
    std::vector<SImageInfoLib> images;
    ASSERT_TRUE(parser->ParseList(R"([{"agentFeatures": null, "baseImageId": null, "billableSizeInGBs": 2,
      "compartmentId": null, "createImageAllowed": true, "displayName": "Oracle-Linux-8.8-2023.09.26-0",
      "id": "ocid1.image.oc1.phx.img1", "launchMode": "NATIVE", "lifecycleState": "AVAILABLE",
      "listingType": "NONE", "operatingSystem": "Oracle Linux", "operatingSystemVersion": "8",
      "sizeInMBs": 47694, "timeCreated": "2023-09-27T20:01:42.383Z"}])",
                                  images));
    ASSERT_EQ(1u, images.size());
    EXPECT_EQ("Oracle Linux", images[0].operatingSystem);
    EXPECT_EQ("8", images[0].operatingSystemVersion);
    EXPECT_TRUE(images[0].createImageAllowed);
    EXPECT_EQ("", images[0].compartmentId);
    EXPECT_EQ("NATIVE", images[0].launchMode);
    EXPECT_EQ("2023-09-27T20:01:42.383Z", images[0].timeCreated);

    SVNicInfoLib vnic;
    ASSERT_TRUE(parser->ParseObject(R"({"availabilityDomain": "Uocm:PHX-AD-1", "compartmentId": "c1",
      "displayName": "web-1", "hostnameLabel": "web-1", "id": "ocid1.vnic.oc1.phx.vn1", "isPrimary": true,
      "lifecycleState": "AVAILABLE", "macAddress": "02:00:17:01:AB:CD", "privateIp": "10.0.1.12",
      "publicIp": "129.146.1.2", "skipSourceDestCheck": false, "subnetId": "ocid1.subnet.oc1.phx.s1",
      "timeCreated": "2023-03-14T09:26:54.000Z"})",
                                    vnic));
    EXPECT_EQ("web-1", vnic.name);
    EXPECT_EQ("ocid1.vnic.oc1.phx.vn1", vnic.id);
    EXPECT_EQ("10.0.1.12", vnic.privateIp);
    EXPECT_EQ("129.146.1.2", vnic.publicIp);
    EXPECT_EQ("02:00:17:01:AB:CD", vnic.macAddress);
    EXPECT_EQ("ocid1.subnet.oc1.phx.s1", vnic.subnetId);

    std::vector<SVnicAttachmentInfoLib> vnicAttachments;
    ASSERT_TRUE(parser->ParseList(R"([{"availabilityDomain": "Uocm:PHX-AD-1", "compartmentId": "c1",
      "displayName": null, "id": "ocid1.vnicattachment.oc1.phx.va1", "instanceId": "ocid1.instance.oc1.phx.i1",
      "lifecycleState": "ATTACHED", "nicIndex": 0, "subnetId": "s1", "vlanTag": 0, "vnicId": "ocid1.vnic.oc1.phx.vn1",
      "timeCreated": "2023-03-14T09:26:54.000Z"}])",
                                  vnicAttachments));
    ASSERT_EQ(1u, vnicAttachments.size());
    EXPECT_EQ("ocid1.vnic.oc1.phx.vn1", vnicAttachments[0].vnicId);
    EXPECT_EQ("ATTACHED", vnicAttachments[0].lifecycleState);
    EXPECT_EQ("", vnicAttachments[0].displayName);

    SInstanceCredentialsInfoLib credentials;
    ASSERT_TRUE(parser->ParseObject(R"({"username": "opc", "password": "Xy7#pQ2!"})", credentials));
    EXPECT_EQ("opc", credentials.username);
    EXPECT_EQ("Xy7#pQ2!", credentials.password);

    std::vector<SStorageBucketInfoLib> buckets;
    ASSERT_TRUE(parser->ParseList(R"([{"namespace": "axabcdefgh", "name": "vm-backups", "compartmentId": "c1",
      "createdBy": "ocid1.user.oc1..u", "timeCreated": "2022-01-01T00:00:00.000Z", "etag": "e1"}])",
                                  buckets));
    ASSERT_EQ(1u, buckets.size());
    EXPECT_EQ("vm-backups", buckets[0].name);
    EXPECT_EQ("c1", buckets[0].compartmentId);

    SAPIErrorInfoLib error;
    ASSERT_TRUE(parser->ParseObject(R"({"code": "IncorrectState",
      "message": "Volume ocid1.volume.oc1.phx.v1 is already attached"})",
                                    error));
    EXPECT_EQ("IncorrectState", error.code);
    EXPECT_EQ("Volume ocid1.volume.oc1.phx.v1 is already attached", error.message);

    // Message bodies are read by the inherited mapping.
    SMessageInfoLib message;
    ASSERT_TRUE(parser->ParseObject(R"({"code": "NotAuthorizedOrNotFound",
      "message": "Authorization failed or requested resource not found."})",
                                    message));
    EXPECT_EQ("Authorization failed or requested resource not found.", message.message);

    SNetworkInfoLib vcn;
    ASSERT_TRUE(parser->ParseObject(R"({"cidrBlock": "10.0.0.0/16", "displayName": "prod-vcn",
      "id": "ocid1.vcn.oc1.phx.vcn1", "vcnDomainName": "prod.oraclevcn.com"})",
                                    vcn));
    EXPECT_EQ("prod-vcn", vcn.name);
    EXPECT_EQ("prod.oraclevcn.com", vcn.domainName);
    EXPECT_EQ("ocid1.vcn.oc1.phx.vcn1", vcn.id);

    SSubnetInfoLib subnet;
    ASSERT_TRUE(parser->ParseObject(R"({"availabilityDomain": null, "cidrBlock": "10.0.1.0/24",
      "compartmentId": "c1", "dhcpOptionsId": "d1", "displayName": "app", "dnsLabel": "app",
      "id": "ocid1.subnet.oc1.phx.s1", "lifecycleState": "AVAILABLE", "prohibitPublicIpOnVnic": true,
      "routeTableId": "rt1", "securityListIds": ["sl1", "sl2"], "subnetDomainName": "app.prod.oraclevcn.com",
      "vcnId": "ocid1.vcn.oc1.phx.vcn1", "virtualRouterIp": "10.0.1.1", "virtualRouterMac": "00:00:17:AA:BB:CC",
      "timeCreated": "2022-11-02T10:01:00.000Z"})",
                                    subnet));
    EXPECT_EQ("10.0.1.0/24", subnet.cidrBlock);
    EXPECT_TRUE(subnet.prohibitPublicIpOnVnic);
    EXPECT_EQ((std::vector<std::string>{"sl1", "sl2"}), subnet.securityListIds);
    EXPECT_EQ("10.0.1.1", subnet.virtualRouterIp);
    EXPECT_EQ("", subnet.availabilityDomain);
}
