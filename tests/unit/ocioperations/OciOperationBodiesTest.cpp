// Request bodies of the OCI operations, byte for byte: what goes on the wire
// for flexible shapes, boot volume sizes, subnets, SSH keys from PuTTY key
// texts, attachments, backups, restores, DB systems and image imports.
#include <gtest/gtest.h>

#include "oci/OracleCloudInfrastructureOperationsBodies.h"

using namespace OracleCloudSDKWrapper;
using namespace OracleCloudSDKWrapper::ocioperations;

namespace {

// A PuTTY key file as saved on Windows; the public part spans two lines.
const char* const kPuttyKeyCrlf =
    "PuTTY-User-Key-File-2: ssh-rsa\r\n"
    "Encryption: none\r\n"
    "Comment: rsa-key-20240101\r\n"
    "Public-Lines: 2\r\n"
    "AAAAB3NzaC1yc2EAAAABJQAAAQEAx1\r\n"
    "Y2Z3bw==\r\n"
    "Private-Lines: 1\r\n"
    "AAAAsecretprivatepart\r\n"
    "Private-MAC: 0123abcd\r\n";

std::string Text(const JsonObject& body) { return JsonHelper::Serialize(body); }

SVMInfoLib FlexVm() {
    SVMInfoLib vm;
    vm.vmName = "web-1";
    vm.shape = "VM.Standard.E4.Flex";
    vm.cpuCount = 2;
    vm.memoryMB = 16384;
    vm.bootVolumeSizeGB = 60;
    vm.imageId = "ocid1.image.oc1..img";
    vm.availabilityDomain = "Uocm:PHX-AD-1";
    vm.compartmentId = "ocid1.compartment.oc1..c";
    SVNicInfoLib vnic;
    vnic.subnetId = "ocid1.subnet.oc1..sn";
    vm.vnics.push_back(vnic);
    vm.sshKeys.push_back(kPuttyKeyCrlf);
    return vm;
}

}  // namespace

TEST(OciSshKeyLine, CrlfKeyFileGivesOneLineWithBodyAndComment) {
    EXPECT_EQ(SshAuthorizedKeyFromKeyText(kPuttyKeyCrlf), "ssh-rsa AAAAB3NzaC1yc2EAAAABJQAAAQEAx1Y2Z3bw== rsa-key-20240101");
}

TEST(OciSshKeyLine, BareNewlinesLoseTheLastCommentCharacter) {
    std::string lf = kPuttyKeyCrlf;
    for (size_t pos; (pos = lf.find('\r')) != std::string::npos;) lf.erase(pos, 1);
    EXPECT_EQ(SshAuthorizedKeyFromKeyText(lf), "ssh-rsa AAAAB3NzaC1yc2EAAAABJQAAAQEAx1Y2Z3bw== rsa-key-2024010");
}

TEST(OciSshKeyLine, PrefixIsRsaWhateverTheKeyType) {
    std::string ed = kPuttyKeyCrlf;
    ed.replace(ed.find("ssh-rsa"), 7, "ssh-ed25519");
    EXPECT_EQ(SshAuthorizedKeyFromKeyText(ed).rfind("ssh-rsa ", 0), 0u);
}

TEST(OciSshKeyLine, TextWithoutTheMarkersGivesNoKeyAndDoesNotThrow) {
    EXPECT_EQ(SshAuthorizedKeyFromKeyText(""), "");
    EXPECT_EQ(SshAuthorizedKeyFromKeyText("ssh-rsa AAAAB3Nza user@host"), "");
    EXPECT_EQ(SshAuthorizedKeyFromKeyText("Comment: x\r\nPublic-Lines: 1"), "");            // no line end after
    EXPECT_EQ(SshAuthorizedKeyFromKeyText("Comment: x\r\nPublic-Lines: 1\r\nAAAA\r\n"), "");  // no private part
    EXPECT_EQ(SshAuthorizedKeyFromKeyText("Private-Lines: 1\nComment: x\r\nPublic-Lines: 1\n"), "");
}

TEST(OciSshKeyLine, CommentLineTooShortGivesAnEmptyComment) {
    EXPECT_EQ(SshAuthorizedKeyFromKeyText("Comment:\nPublic-Lines: 1\nAAAA\nPrivate-Lines: 1\nB\n"), "ssh-rsa AAAA ");
}

TEST(OciLaunchBody, FlexibleShapeWithBootSizeSubnetAndKeyExactBytes) {
    EXPECT_EQ(Text(LaunchFromImageBody(FlexVm())),
              R"({"sourceDetails":{"sourceType":"image","imageId":"ocid1.image.oc1..img","bootVolumeSizeInGBs":60},)"
              R"("shape":"VM.Standard.E4.Flex","shapeConfig":{"ocpus":"2","memoryInGBs":"16"},"displayName":"web-1",)"
              R"("createVnicDetails":{"subnetId":"ocid1.subnet.oc1..sn"},"availabilityDomain":"Uocm:PHX-AD-1",)"
              R"("compartmentId":"ocid1.compartment.oc1..c",)"
              R"("metadata":{"ssh_authorized_keys":"ssh-rsa AAAAB3NzaC1yc2EAAAABJQAAAQEAx1Y2Z3bw== rsa-key-20240101"}})");
}

TEST(OciLaunchBody, FixedShapeWithoutKeysSubnetOrBootSizeSendsOnlyTheBasics) {
    SVMInfoLib vm = FlexVm();
    vm.shape = "VM.Standard2.1";
    vm.bootVolumeSizeGB = 0;
    vm.vnics.clear();
    vm.sshKeys.clear();
    EXPECT_EQ(Text(LaunchFromImageBody(vm)),
              R"({"sourceDetails":{"sourceType":"image","imageId":"ocid1.image.oc1..img"},"shape":"VM.Standard2.1",)"
              R"("displayName":"web-1","availabilityDomain":"Uocm:PHX-AD-1","compartmentId":"ocid1.compartment.oc1..c"})");
}

TEST(OciLaunchBody, FlexMemoryIsWholeGigabytesAndShapeTestIgnoresCase) {
    SVMInfoLib vm = FlexVm();
    vm.shape = "vm.standard.a1.FLEX";
    vm.cpuCount = 1;
    vm.memoryMB = 1500;
    const JsonObject body = LaunchFromImageBody(vm);
    ASSERT_NE(body.if_contains("shapeConfig"), nullptr);
    EXPECT_EQ(Text(body.at("shapeConfig").as_object()), R"({"ocpus":"1","memoryInGBs":"1"})");
    EXPECT_TRUE(IsFlexibleShape("VM.Standard3.Flex"));
    EXPECT_FALSE(IsFlexibleShape("VM.Standard2.4"));
}

TEST(OciLaunchBody, KeyTextWithoutPublicPartSendsNoMetadata) {
    SVMInfoLib vm = FlexVm();
    vm.sshKeys = {"not a key file"};
    EXPECT_EQ(LaunchFromImageBody(vm).if_contains("metadata"), nullptr);
}

TEST(OciLaunchBody, BootVolumeLaunchCarriesPublicAddressFlagAndNoKey) {
    SVMInfoLib vm = FlexVm();
    vm.vnics[0].assignPublicIp = true;
    EXPECT_EQ(Text(LaunchFromBootVolumeBody(vm, "ocid1.bootvolume.oc1..bv")),
              R"({"displayName":"web-1","shape":"VM.Standard.E4.Flex","shapeConfig":{"ocpus":"2","memoryInGBs":"16"},)"
              R"("availabilityDomain":"Uocm:PHX-AD-1","compartmentId":"ocid1.compartment.oc1..c",)"
              R"("createVnicDetails":{"assignPublicIp":true,"subnetId":"ocid1.subnet.oc1..sn"},)"
              R"("sourceDetails":{"sourceType":"bootVolume","bootVolumeId":"ocid1.bootvolume.oc1..bv"}})");
}

TEST(OciVnicBody, AttachVnicNamesInstanceAndSubnet) {
    SVMInfoLib vm;
    vm.guid = "ocid1.instance.oc1..i";
    SVNicInfoLib vnic;
    vnic.subnetId = "ocid1.subnet.oc1..s2";
    EXPECT_EQ(Text(AttachVnicBody(vm, vnic)),
              R"({"createVnicDetails":{"assignPublicIp":false,"subnetId":"ocid1.subnet.oc1..s2"},)"
              R"("instanceId":"ocid1.instance.oc1..i"})");
}

TEST(OciVolumeBodies, SizeIsWholeGigabytesAsTextAndNameFallsBackToDisplayName) {
    SDiskInfoLib disk;
    disk.availabilityDomain = "AD-1";
    disk.compartmentId = "c1";
    disk.volumeName = "data";
    disk.sizeBytes = (50ULL << 30) + 12345;  // a remainder below one GB is dropped
    EXPECT_EQ(Text(CreateVolumeBody(disk)),
              R"({"availabilityDomain":"AD-1","compartmentId":"c1","displayName":"data","sizeInGBs":"50"})");
    disk.volumeName.clear();
    disk.name = "fallback";
    EXPECT_EQ(CreateVolumeBody(disk).at("displayName").as_string(), "fallback");
}

TEST(OciVolumeBodies, AttachmentSendsDisplayNameOnlyWhenGiven) {
    SDiskInfoLib disk;
    disk.guid = "ocid1.volume.oc1..v";
    SVMInfoLib vm;
    vm.guid = "ocid1.instance.oc1..i";
    SStorageAttachmentInfoLib attachment;
    attachment.attachmentType = "iscsi";
    EXPECT_EQ(Text(AttachVolumeBody(disk, vm, attachment)),
              R"({"instanceId":"ocid1.instance.oc1..i","volumeId":"ocid1.volume.oc1..v","type":"iscsi"})");
    attachment.name = "data-att";
    EXPECT_EQ(Text(AttachVolumeBody(disk, vm, attachment)),
              R"({"instanceId":"ocid1.instance.oc1..i","displayName":"data-att","volumeId":"ocid1.volume.oc1..v",)"
              R"("type":"iscsi"})");
}

TEST(OciVolumeBodies, BackupAndRestoreBodiesNameBootOrBlockSource) {
    EXPECT_EQ(Text(VolumeBackupBody("ocid1.bootvolume.oc1..b", "nightly", true)),
              R"({"bootVolumeId":"ocid1.bootvolume.oc1..b","displayName":"nightly"})");
    EXPECT_EQ(Text(VolumeBackupBody("ocid1.volume.oc1..v", "nightly", false)),
              R"({"volumeId":"ocid1.volume.oc1..v","displayName":"nightly"})");
    SDiskInfoLib disk;
    disk.availabilityDomain = "AD-1";
    disk.compartmentId = "c1";
    disk.volumeName = "vol7_1700000000";
    EXPECT_EQ(Text(VolumeFromBackupBody(disk, "ocid1.volumebackup.oc1..x", false)),
              R"({"availabilityDomain":"AD-1","compartmentId":"c1","displayName":"vol7_1700000000",)"
              R"("sourceDetails":{"type":"volumeBackup","id":"ocid1.volumebackup.oc1..x"}})");
    EXPECT_EQ(Text(VolumeFromBackupBody(disk, "ocid1.bootvolumebackup.oc1..y", true).at("sourceDetails").as_object()),
              R"({"type":"bootVolumeBackup","id":"ocid1.bootvolumebackup.oc1..y"})");
}

TEST(OciDatabaseBodies, RestoreSendsAtMostOneTargetInOrderOfPreference) {
    SPaaSBackupRestoreOptionsLib options;
    EXPECT_EQ(Text(DbRestoreBody(options)), "{}");
    options.timestamp = "2024-05-01T10:00:00Z";
    EXPECT_EQ(Text(DbRestoreBody(options)), R"({"timestamp":"2024-05-01T10:00:00Z"})");
    options.scn = "1234567";
    EXPECT_EQ(Text(DbRestoreBody(options)), R"({"databaseSCN":"1234567"})");
    options.latest = true;
    EXPECT_EQ(Text(DbRestoreBody(options)), R"({"latest":"true"})");
}

TEST(OciDatabaseBodies, DbSystemBodyMapsTheRecordAndLeavesOutUnsetOptionals) {
    SOracleDBInstanceInfoLib db;
    db.computeSiteName = "AD-1";
    db.cloudStorageContainer = "c1";
    db.edition = "ENTERPRISE_EDITION";
    db.serviceName = "dbhost";
    db.shape = "VM.Standard2.2";
    db.sid = "ocid1.subnet.oc1..s";
    db.sshPublicKey = "ssh-rsa AAAA k";
    db.version = "19.0.0.0";
    db.adminPassword = "Secr3t#Pass";
    db.dbName = "ORCL";
    EXPECT_EQ(Text(DbSystemBody(db)),
              R"({"availabilityDomain":"AD-1","compartmentId":"c1","databaseEdition":"ENTERPRISE_EDITION",)"
              R"("hostname":"dbhost","shape":"VM.Standard2.2","subnetId":"ocid1.subnet.oc1..s",)"
              R"("sshPublicKeys":["ssh-rsa AAAA k"],"dbHome":{"dbVersion":"19.0.0.0",)"
              R"("database":{"adminPassword":"Secr3t#Pass","dbName":"ORCL"}}})");
    db.numIpReservations = 4;
    db.charset = "AL32UTF8";
    db.pdbName = "PDB1";
    db.ncharset = "AL16UTF16";
    const JsonObject body = DbSystemBody(db);
    EXPECT_EQ(body.at("cpuCoreCount").as_int64(), 4);
    EXPECT_EQ(Text(body.at("dbHome").as_object().at("database").as_object()),
              R"({"adminPassword":"Secr3t#Pass","characterSet":"AL32UTF8","dbName":"ORCL","pdbName":"PDB1",)"
              R"("ncharacterSet":"AL16UTF16"})");
}

TEST(OciImageBody, ImportFromObjectStorageTupleAsVmdk) {
    SImageInfoLib image;
    image.compartmentId = "c1";
    image.displayName = "restored";
    EXPECT_EQ(Text(ImageImportBody("ns1", "images", "disk.vmdk", image)),
              R"({"compartmentId":"c1","displayName":"restored","imageSourceDetails":{"sourceType":"objectStorageTuple",)"
              R"("namespaceName":"ns1","bucketName":"images","objectName":"disk.vmdk","sourceImageType":"VMDK"}})");
    image.launchMode = "PARAVIRTUALIZED";
    EXPECT_EQ(ImageImportBody("ns1", "images", "disk.vmdk", image).at("launchMode").as_string(), "PARAVIRTUALIZED");
}
