// Compute Classic documents as the service returns them (no emulator serves
// them yet): the rules that turn names, paths and strings into the records.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "parser/OracleCloudParser.h"

using namespace OracleCloudSDKWrapper;
using ::testing::ElementsAre;

namespace {

// A running Linux instance on the shared network (eth0) and two IP networks,
// which the service writes in no particular order.
const char* kRunningInstance = R"({
  "domain": "compute-acme.oraclecloud.internal.", "ip": "10.196.12.34", "shape": "oc3", "imagelist": null,
  "networking": {
    "eth2": {"ipnetwork": "/Compute-acme/jdoe/backup-net", "ip": "192.168.20.5", "vnic": "/Compute-acme/jdoe/web1_eth2"},
    "eth0": {"seclists": ["/Compute-acme/default/default", "/Compute-acme/jdoe/web-seclist"],
             "vethernet": "/oracle/public/default", "nat": "ipreservation:/Compute-acme/jdoe/web1-ip"},
    "eth1": {"ipnetwork": "/Compute-acme/jdoe/app-net", "ip": "192.168.10.5", "vnicsets": ["/Compute-acme/jdoe/app-set"]}
  },
  "storage_attachments": [
    {"index": 1, "storage_volume_name": "/Compute-acme/jdoe/web1_boot",
     "name": "/Compute-acme/jdoe/web1/8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10/0f6c1c4e-2d4a-4b6e-9c1e-6a1d3b7c9e21"},
    {"index": 2, "storage_volume_name": "/Compute-acme/jdoe/web1_data", "name": "/Compute-acme/jdoe/web1/8f3c/5a2e"}
  ],
  "hostname": "8f3c2a.compute-acme.oraclecloud.internal.", "label": "web1", "platform": "linux",
  "state": "running", "desired_state": "running", "start_time": "2018-04-27T21:35:05Z",
  "sshkeys": ["/Compute-acme/jdoe/deploy-key", "/Compute-acme/jdoe/ops-key"],
  "name": "/Compute-acme/jdoe/web1/8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10",
  "vcable_id": "/Compute-acme/jdoe/2c5b8e11-6f1a-4d77-9a3e-08b4c1f0d6a7",
  "attributes": {"dns": {"domain": "compute-acme.oraclecloud.internal."},
                 "sshkeys": ["ssh-rsa AAAAB3NzaC1yc2EAAAADAQABAAABAQC7 jdoe@host"]}
})";

}  // namespace

TEST(ClassicVm, RunningInstanceMapsNamesStateNetworksAndDisks) {
    COracleCloudParser parser;
    SVMInfoLib vm;
    ASSERT_TRUE(parser.ParseObject(kRunningInstance, vm));
    EXPECT_EQ(vm.fullName, "/Compute-acme/jdoe/web1/8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10");
    EXPECT_EQ(vm.guid, "8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10");
    EXPECT_EQ(vm.vmName, "web1");
    EXPECT_EQ(vm.compartmentId, "jdoe") << "the user: third element of the path";
    EXPECT_FALSE(vm.isTemplate);
    EXPECT_EQ(vm.shape + "|" + vm.state + "|" + vm.status + "|" + vm.ipAddress + "|" + vm.platform + "|" + vm.vcableId,
              "oc3|running|running|10.196.12.34|Linux|/Compute-acme/jdoe/2c5b8e11-6f1a-4d77-9a3e-08b4c1f0d6a7");
    EXPECT_THAT(vm.sshKeys, ElementsAre("/Compute-acme/jdoe/deploy-key", "/Compute-acme/jdoe/ops-key"));
    EXPECT_FALSE(vm.enableRdp);
    // Interfaces in key order (eth1 before eth2); eth0 only gives security lists.
    ASSERT_EQ(vm.vnics.size(), 2u);
    EXPECT_EQ(vm.vnics[0].id + "|" + vm.vnics[0].name, "/Compute-acme/jdoe/app-net|app-net");
    EXPECT_EQ(vm.vnics[1].name, "backup-net");
    ASSERT_EQ(vm.securityGroups.size(), 2u);
    EXPECT_EQ(vm.securityGroups[0].fullName + "|" + vm.securityGroups[0].name, "/Compute-acme/default/default|default");
    EXPECT_EQ(vm.securityGroups[1].name, "web-seclist");
    ASSERT_EQ(vm.disks.size(), 2u);
    EXPECT_EQ(vm.disks[0].index, 1);
    EXPECT_EQ(vm.disks[0].volumeName, "/Compute-acme/jdoe/web1_boot");
    EXPECT_EQ(vm.disks[0].guid, "0f6c1c4e-2d4a-4b6e-9c1e-6a1d3b7c9e21");
    EXPECT_EQ(vm.disks[1].index, 2);
}

TEST(ClassicVm, WindowsPasswordAndRdpComeFromUserdataAndAShapelessObjectIsATemplate) {
    COracleCloudParser parser;
    SVMInfoLib windows;
    ASSERT_TRUE(parser.ParseObject(R"({"name": "/Compute-acme/jdoe/winsrv/3b9d", "shape": "oc4", "platform": "windows",
        "vcable_id": null, "attributes": {"userdata": {"enable_rdp": "true", "administrator_password": "Welc0me#2018"}}})",
                                   windows));
    EXPECT_EQ(windows.platform, "Windows");
    EXPECT_TRUE(windows.enableRdp);
    EXPECT_EQ(windows.administratorPassword, "Welc0me#2018");
    EXPECT_EQ(windows.vcableId, "") << "null while queued";
    SVMInfoLib boolFlag;
    ASSERT_TRUE(parser.ParseObject(
        R"({"name": "/C/u/w/1", "shape": "oc3", "attributes": {"userdata": {"enable_rdp": true}}})", boolFlag));
    EXPECT_TRUE(boolFlag.enableRdp);

    SVMInfoLib image;
    ASSERT_TRUE(parser.ParseObject(
        R"({"name": "/Compute-acme/jdoe/OL_7.6_UEKR5", "platform": "linux", "state": "available", "ip": "1.2.3.4"})",
        image));
    EXPECT_TRUE(image.isTemplate);
    EXPECT_EQ(image.guid + "|" + image.vmName + "|" + image.compartmentId, "OL_7.6_UEKR5|OL_7.6_UEKR5|jdoe");
    EXPECT_EQ(image.state + image.ipAddress, "") << "instance-only fields are not read for a template";

    // A short name: no path parts, the host name stands for the owner.
    SVMInfoLib shortName;
    ASSERT_TRUE(parser.ParseObject(
        R"({"name": "web1", "shape": "oc3", "hostname": "web1.compute-acme.oraclecloud.internal.", "platform": "solaris"})",
        shortName));
    EXPECT_EQ(shortName.guid + shortName.vmName, "");
    EXPECT_EQ(shortName.compartmentId, "web1.compute-acme.oraclecloud.internal.");
    EXPECT_EQ(shortName.platform, "solaris") << "only windows and linux are reworded";
}

TEST(ClassicDisk, VolumeSnapshotAndAttachmentDocuments) {
    COracleCloudParser parser;
    SDiskInfoLib disk;
    ASSERT_TRUE(parser.ParseObject(R"({"size": "21474836480", "status": "Online", "description": null,
        "properties": ["/oracle/public/storage/default"], "account": "/Compute-acme/default",
        "name": "/Compute-acme/jdoe/web1_boot", "bootable": true})",
                                   disk));
    EXPECT_EQ(disk.name + "|" + disk.guid + "|" + disk.parentName, "/Compute-acme/jdoe/web1_boot|web1_boot|jdoe");
    EXPECT_EQ(disk.sizeBytes, 21474836480ULL);
    EXPECT_TRUE(disk.bootable);
    EXPECT_EQ(disk.properties, "/oracle/public/storage/default");
    EXPECT_EQ(disk.volumeName + disk.description, "");

    // An attachment names the volume; a bare "volume" key stands in for it.
    SDiskInfoLib attached;
    ASSERT_TRUE(parser.ParseObject(R"({"index": 3, "storage_volume_name": "/C/u/data", "volume": "/C/u/other"})", attached));
    EXPECT_EQ(attached.volumeName, "/C/u/data");
    EXPECT_EQ(attached.index, 3);
    SDiskInfoLib fallback;
    ASSERT_TRUE(parser.ParseObject(R"({"storage_volume_name": "", "volume": "/C/u/other"})", fallback));
    EXPECT_EQ(fallback.volumeName, "/C/u/other");

    SSnapshotInfoLib snap;
    ASSERT_TRUE(parser.ParseObject(R"({"status": "completed", "description": "nightly",
        "start_timestamp": "2017-01-09T18:25:18Z", "size": "107374182400", "volume": "/Compute-acme/jdoe/web1_data",
        "snapshot_id": "dc14ed57f5a4", "name": "/Compute-acme/jdoe/web1_data/dc14ed57f5a4"})",
                                   snap));
    EXPECT_EQ(snap.snapshotId + "|" + snap.name + "|" + snap.volumeName + "|" + snap.status + "|" + snap.description,
              "dc14ed57f5a4|/Compute-acme/jdoe/web1_data/dc14ed57f5a4|/Compute-acme/jdoe/web1_data|completed|nightly");
    EXPECT_EQ(snap.startTime, 1483986318);
    EXPECT_EQ(snap.sizeBytes, 107374182400ULL);

    std::vector<SStorageAttachmentInfoLib> attachments;
    ASSERT_TRUE(parser.ParseList(R"({"result": [{"index": 1, "instance_name": "/Compute-acme/jdoe/web1/8f3c",
        "storage_volume_name": "/Compute-acme/jdoe/web1_boot", "state": "attached", "name": "/Compute-acme/jdoe/web1/8f3c/0f6c"}]})",
                                 "result", attachments));
    ASSERT_EQ(attachments.size(), 1u);
    EXPECT_EQ(attachments[0].index, 1);
    EXPECT_EQ(attachments[0].volumeName + "|" + attachments[0].instanceName + "|" + attachments[0].state + "|" +
                  attachments[0].name,
              "/Compute-acme/jdoe/web1_boot|/Compute-acme/jdoe/web1/8f3c|attached|/Compute-acme/jdoe/web1/8f3c/0f6c");
}

TEST(ClassicDisk, SizeMustBeAPlainByteCount) {
    COracleCloudParser parser;
    const std::pair<const char*, unsigned long long> cases[] = {
        {R"("10737418240")", 10737418240ULL}, {"10737418240", 10737418240ULL}, {R"(" 42 ")", 42}, {R"("10G")", 0},
        {R"("-5")", 0}, {R"("")", 0}, {R"("99999999999999999999999")", 0}, {"null", 0}, {"-3", 0}};
    for (const auto& c : cases) {
        SDiskInfoLib disk;
        ASSERT_TRUE(parser.ParseObject(std::string(R"({"name": "/C/u/v", "size": )") + c.first + "}", disk));
        EXPECT_EQ(disk.sizeBytes, c.second) << c.first;
    }
}

TEST(ClassicNames, ShapesKeysAndMessages) {
    COracleCloudParser parser;
    std::vector<SInstanceShapeInfoLib> shapes;
    ASSERT_TRUE(parser.ParseList(R"({"result": [{"ram": 7680, "cpus": 2.0, "io": 200, "name": "oc3",
        "uri": "https://compute.uscom-central-1.oraclecloud.com/shape/oc3"}, {"ram": 15360, "cpus": 2.5, "name": "oc4x"}]})",
                                 "result", shapes));
    ASSERT_EQ(shapes.size(), 2u);
    EXPECT_EQ(shapes[0].name, "https://compute.uscom-central-1.oraclecloud.com/shape/oc3") << "the URI replaces the name";
    EXPECT_EQ(shapes[0].memoryMB, 7680);
    EXPECT_EQ(shapes[0].ioCount, 200);
    EXPECT_EQ(shapes[1].name, "oc4x");
    EXPECT_EQ(shapes[1].cpuCount, 2) << "truncated";

    SKeyPairInfoLib key;
    ASSERT_TRUE(parser.ParseObject(R"({"enabled": true, "key": "ssh-rsa AAAAB3NzaC1yc2E jdoe@host",
        "name": "/Compute-acme/jdoe/deploy-key"})",
                                   key));
    EXPECT_EQ(key.name + "|" + key.fullName + "|" + key.keyText,
              "deploy-key|/Compute-acme/jdoe/deploy-key|ssh-rsa AAAAB3NzaC1yc2E jdoe@host");
    // Compute and PaaS say what went wrong in different places.
    SMessageInfoLib compute, paas;
    ASSERT_TRUE(parser.ParseObject(R"({"message": "Incorrect username or password"})", compute));
    ASSERT_TRUE(parser.ParseObject(R"({"details": {"message": "Service [jcs1] not found.", "issues": []}})", paas));
    EXPECT_EQ(compute.message + "|" + paas.message, "Incorrect username or password|Service [jcs1] not found.");
    // The whole object as text, e.g. to keep a configuration document.
    std::string text;
    ASSERT_TRUE(parser.ParseObject(R"({ "a" : [1, {"b": null}], "c": "d" })", text));
    EXPECT_EQ(text, R"({"a":[1,{"b":null}],"c":"d"})");
}

TEST(ClassicOrchestration, EmbeddedInstanceComesFromTheFirstInstanceObject) {
    COracleCloudParser parser;
    SOrchestrationInfoLib info;
    ASSERT_TRUE(parser.ParseObject(R"({"name": "/Compute-acme/jdoe/web1_master", "status": "active", "objects": [
        {"label": "boot", "type": "StorageVolume", "template": {"name": "/Compute-acme/jdoe/web1_boot", "size": "20G"}},
        "junk",
        {"label": "web1", "type": "Instance", "template": {"name": "/Compute-acme/jdoe/web1_master/web1/0a1b",
         "shape": "oc3", "storage_attachments": [{"index": 1, "volume": "/Compute-acme/jdoe/web1_boot"}]}},
        {"label": "web2", "type": "Instance", "template": {"name": "/Compute-acme/jdoe/web2/1", "shape": "oc4"}}]})",
                                   info));
    EXPECT_EQ(info.name + "|" + info.status, "/Compute-acme/jdoe/web1_master|active");
    EXPECT_EQ(info.vm.fullName, "/Compute-acme/jdoe/web1_master/web1/0a1b");
    ASSERT_EQ(info.vm.disks.size(), 1u);
    EXPECT_EQ(info.vm.disks[0].volumeName, "/Compute-acme/jdoe/web1_boot");
    // Launch-plan style objects list their instances; nothing up yet leaves the record empty.
    SOrchestrationInfoLib launchPlan, starting;
    ASSERT_TRUE(parser.ParseObject(R"({"name": "o", "objects": [{"instances": [{"name": "/C/u/i/9"}]}]})", launchPlan));
    ASSERT_TRUE(parser.ParseObject(R"({"name": "o", "status": "starting"})", starting));
    EXPECT_EQ(launchPlan.vm.fullName, "/C/u/i/9");
    EXPECT_EQ(starting.vm.fullName, "");
}
