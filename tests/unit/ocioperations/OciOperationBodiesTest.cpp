// Request bodies of the OCI operations, byte for byte, where the end-to-end
// tests cannot see them whole: members the emulator reads loosely (numbers as
// text, member order), choices among optional members, and secrets that the
// emulator's request log masks. The bodies the emulator logs exactly are
// checked end to end.
#include <gtest/gtest.h>

#include <functional>

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

SVMInfoLib FixedVm() {
    SVMInfoLib vm = FlexVm();
    vm.shape = "VM.Standard2.1";
    vm.bootVolumeSizeGB = 0;
    vm.vnics.clear();
    vm.sshKeys = {"not a key file"};  // no public part: no metadata
    return vm;
}

SDiskInfoLib Disk(const std::string& volumeName, unsigned long long sizeBytes = 0) {
    SDiskInfoLib disk;
    disk.availabilityDomain = "AD-1";
    disk.compartmentId = "c1";
    disk.volumeName = volumeName;
    disk.sizeBytes = sizeBytes;
    disk.guid = "ocid1.volume.oc1..v";
    return disk;
}

SOracleDBInstanceInfoLib DbSystem(bool optionals) {
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
    if (optionals) {
        db.numIpReservations = 4;
        db.charset = "AL32UTF8";
        db.pdbName = "PDB1";
        db.ncharset = "AL16UTF16";
    }
    return db;
}

SPaaSBackupRestoreOptionsLib Restore(bool latest, const std::string& scn, const std::string& timestamp) {
    SPaaSBackupRestoreOptionsLib options;
    options.latest = latest;
    options.scn = scn;
    options.timestamp = timestamp;
    return options;
}

}  // namespace

TEST(OciRequestBodies, AreTheseBytes) {
    SVMInfoLib publicVnic = FlexVm();
    publicVnic.vnics[0].assignPublicIp = true;
    SDiskInfoLib remainder = Disk("data", (50ULL << 30) + 12345);  // a remainder below one GB is dropped
    SDiskInfoLib unnamed = Disk("");
    unnamed.name = "fallback";
    SStorageAttachmentInfoLib named;
    named.attachmentType = "iscsi";
    named.name = "data-att";
    SVMInfoLib instance;
    instance.guid = "ocid1.instance.oc1..i";
    SImageInfoLib image;
    image.compartmentId = "c1";
    image.displayName = "restored";
    image.launchMode = "PARAVIRTUALIZED";

    struct Case {
        const char* what;
        std::function<JsonObject()> body;
        const char* bytes;
    };
    const Case cases[] = {
        {"flexible launch", [] { return LaunchFromImageBody(FlexVm()); },
         R"({"sourceDetails":{"sourceType":"image","imageId":"ocid1.image.oc1..img","bootVolumeSizeInGBs":60},)"
         R"("shape":"VM.Standard.E4.Flex","shapeConfig":{"ocpus":"2","memoryInGBs":"16"},"displayName":"web-1",)"
         R"("createVnicDetails":{"subnetId":"ocid1.subnet.oc1..sn"},"availabilityDomain":"Uocm:PHX-AD-1",)"
         R"("compartmentId":"ocid1.compartment.oc1..c",)"
         R"("metadata":{"ssh_authorized_keys":"ssh-rsa AAAAB3NzaC1yc2EAAAABJQAAAQEAx1Y2Z3bw== rsa-key-20240101"}})"},
        {"fixed launch", [] { return LaunchFromImageBody(FixedVm()); },
         R"({"sourceDetails":{"sourceType":"image","imageId":"ocid1.image.oc1..img"},"shape":"VM.Standard2.1",)"
         R"("displayName":"web-1","availabilityDomain":"Uocm:PHX-AD-1","compartmentId":"ocid1.compartment.oc1..c"})"},
        {"boot volume launch", [&] { return LaunchFromBootVolumeBody(publicVnic, "ocid1.bootvolume.oc1..bv"); },
         R"({"displayName":"web-1","shape":"VM.Standard.E4.Flex","shapeConfig":{"ocpus":"2","memoryInGBs":"16"},)"
         R"("availabilityDomain":"Uocm:PHX-AD-1","compartmentId":"ocid1.compartment.oc1..c",)"
         R"("createVnicDetails":{"assignPublicIp":true,"subnetId":"ocid1.subnet.oc1..sn"},)"
         R"("sourceDetails":{"sourceType":"bootVolume","bootVolumeId":"ocid1.bootvolume.oc1..bv"}})"},
        {"volume", [&] { return CreateVolumeBody(remainder); },
         R"({"availabilityDomain":"AD-1","compartmentId":"c1","displayName":"data","sizeInGBs":"50"})"},
        {"volume without volume name", [&] { return CreateVolumeBody(unnamed); },
         R"({"availabilityDomain":"AD-1","compartmentId":"c1","displayName":"fallback","sizeInGBs":"0"})"},
        {"named attachment", [&] { return AttachVolumeBody(Disk("d"), instance, named); },
         R"({"instanceId":"ocid1.instance.oc1..i","displayName":"data-att","volumeId":"ocid1.volume.oc1..v",)"
         R"("type":"iscsi"})"},
        {"boot volume backup", [] { return VolumeBackupBody("ocid1.bootvolume.oc1..b", "nightly", true); },
         R"({"bootVolumeId":"ocid1.bootvolume.oc1..b","displayName":"nightly"})"},
        {"volume from backup", [] { return VolumeFromBackupBody(Disk("vol7_1700000000"), "ocid1.volumebackup.oc1..x", false); },
         R"({"availabilityDomain":"AD-1","compartmentId":"c1","displayName":"vol7_1700000000",)"
         R"("sourceDetails":{"type":"volumeBackup","id":"ocid1.volumebackup.oc1..x"}})"},
        {"boot volume from backup", [] { return VolumeFromBackupBody(Disk("b"), "ocid1.bootvolumebackup.oc1..y", true); },
         R"({"availabilityDomain":"AD-1","compartmentId":"c1","displayName":"b",)"
         R"("sourceDetails":{"type":"bootVolumeBackup","id":"ocid1.bootvolumebackup.oc1..y"}})"},
        // At most one restore target, in order of preference.
        {"restore to latest", [] { return DbRestoreBody(Restore(true, "1234567", "2024-05-01T10:00:00Z")); },
         R"({"latest":"true"})"},
        {"restore to an SCN", [] { return DbRestoreBody(Restore(false, "1234567", "2024-05-01T10:00:00Z")); },
         R"({"databaseSCN":"1234567"})"},
        {"db system", [] { return DbSystemBody(DbSystem(false)); },
         R"({"availabilityDomain":"AD-1","compartmentId":"c1","databaseEdition":"ENTERPRISE_EDITION",)"
         R"("hostname":"dbhost","shape":"VM.Standard2.2","subnetId":"ocid1.subnet.oc1..s",)"
         R"("sshPublicKeys":["ssh-rsa AAAA k"],"dbHome":{"dbVersion":"19.0.0.0",)"
         R"("database":{"adminPassword":"Secr3t#Pass","dbName":"ORCL"}}})"},
        {"db system with optionals", [] { return DbSystemBody(DbSystem(true)); },
         R"({"availabilityDomain":"AD-1","compartmentId":"c1","cpuCoreCount":4,"databaseEdition":"ENTERPRISE_EDITION",)"
         R"("hostname":"dbhost","shape":"VM.Standard2.2","subnetId":"ocid1.subnet.oc1..s",)"
         R"("sshPublicKeys":["ssh-rsa AAAA k"],"dbHome":{"dbVersion":"19.0.0.0",)"
         R"("database":{"adminPassword":"Secr3t#Pass","characterSet":"AL32UTF8","dbName":"ORCL","pdbName":"PDB1",)"
         R"("ncharacterSet":"AL16UTF16"}}})"},
        {"image import", [&] { return ImageImportBody("ns1", "images", "disk.vmdk", image); },
         R"({"compartmentId":"c1","displayName":"restored","launchMode":"PARAVIRTUALIZED",)"
         R"("imageSourceDetails":{"sourceType":"objectStorageTuple","namespaceName":"ns1","bucketName":"images",)"
         R"("objectName":"disk.vmdk","sourceImageType":"VMDK"}})"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(JsonHelper::Serialize(c.body()), c.bytes) << c.what;
    }
}

TEST(OciFlexibleShape, MemoryIsWholeGigabytesAndTheNameIsComparedWithoutCase) {
    SVMInfoLib vm = FlexVm();
    vm.shape = "vm.standard.a1.FLEX";
    vm.cpuCount = 1;
    vm.memoryMB = 1500;
    const JsonObject body = LaunchFromImageBody(vm);
    ASSERT_NE(body.if_contains("shapeConfig"), nullptr);
    EXPECT_EQ(JsonHelper::Serialize(body.at("shapeConfig").as_object()), R"({"ocpus":"1","memoryInGBs":"1"})");
    EXPECT_FALSE(IsFlexibleShape("VM.Standard2.4"));
}

TEST(OciSshKeyLine, PuttyKeyFileTextGivesOneAuthorizedKeyLine) {
    std::string lf = kPuttyKeyCrlf;
    for (size_t pos; (pos = lf.find('\r')) != std::string::npos;) lf.erase(pos, 1);
    std::string ed = kPuttyKeyCrlf;
    ed.replace(ed.find("ssh-rsa"), 7, "ssh-ed25519");
    const std::pair<std::string, std::string> cases[] = {
        {kPuttyKeyCrlf, "ssh-rsa AAAAB3NzaC1yc2EAAAABJQAAAQEAx1Y2Z3bw== rsa-key-20240101"},
        // Bare newlines lose the comment's last character (the CR the reader expects).
        {lf, "ssh-rsa AAAAB3NzaC1yc2EAAAABJQAAAQEAx1Y2Z3bw== rsa-key-2024010"},
        {ed, "ssh-rsa AAAAB3NzaC1yc2EAAAABJQAAAQEAx1Y2Z3bw== rsa-key-20240101"},  // the prefix is always ssh-rsa
        {"Comment:\nPublic-Lines: 1\nAAAA\nPrivate-Lines: 1\nB\n", "ssh-rsa AAAA "},
        // Without the markers there is no key, and no exception.
        {"", ""},
        {"ssh-rsa AAAAB3Nza user@host", ""},
        {"Comment: x\r\nPublic-Lines: 1", ""},
        {"Comment: x\r\nPublic-Lines: 1\r\nAAAA\r\n", ""},
        {"Private-Lines: 1\nComment: x\r\nPublic-Lines: 1\n", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(SshAuthorizedKeyFromKeyText(c.first), c.second) << c.first;
}
