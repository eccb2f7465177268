// Compute Classic documents as the service returns them: instances, volumes,
// snapshots, attachments, shapes, networks, keys, orchestrations, messages.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ParserTestSupport.h"
#include "parser/OracleCloudParser.h"

using namespace OracleCloudSDKWrapper;

namespace {

// A running Linux instance on the shared network (eth0) and two IP networks.
// The service writes the interfaces in no particular order.
const char* kRunningInstance = R"({
  "domain": "compute-acme.oraclecloud.internal.",
  "placement_requirements": ["/system/compute/placement/default", "/system/compute/allow_instances"],
  "ip": "10.196.12.34",
  "fingerprint": "1e:4b:93:09:5c:2d:7a:bb:0e:3d:41:9c:52:12:88:aa",
  "site": "",
  "shape": "oc3",
  "imagelist": null,
  "image_format": "raw",
  "relationships": [],
  "availability_domain": "/uscom-central-1a",
  "networking": {
    "eth2": {"ipnetwork": "/Compute-acme/jdoe/backup-net", "ip": "192.168.20.5", "address": "c6:b0:aa:00:00:02",
             "vnic": "/Compute-acme/jdoe/web1_eth2", "is_default_gateway": false, "nat": null},
    "eth0": {"model": "", "seclists": ["/Compute-acme/default/default", "/Compute-acme/jdoe/web-seclist"],
             "dns": ["8f3c2a.compute-acme.oraclecloud.internal."], "vethernet": "/oracle/public/default",
             "nat": "ipreservation:/Compute-acme/jdoe/web1-ip"},
    "eth1": {"ipnetwork": "/Compute-acme/jdoe/app-net", "ip": "192.168.10.5", "address": "c6:b0:aa:00:00:01",
             "vnic": "/Compute-acme/jdoe/web1_eth1", "vnicsets": ["/Compute-acme/jdoe/app-set"],
             "is_default_gateway": true, "nat": ["network/v1/ipreservation:/Compute-acme/jdoe/app-ip"]}
  },
  "storage_attachments": [
    {"index": 1, "storage_volume_name": "/Compute-acme/jdoe/web1_boot",
     "name": "/Compute-acme/jdoe/web1/8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10/0f6c1c4e-2d4a-4b6e-9c1e-6a1d3b7c9e21"},
    {"index": 2, "storage_volume_name": "/Compute-acme/jdoe/web1_data",
     "name": "/Compute-acme/jdoe/web1/8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10/5a2e9d0b-7c3f-4f4d-8e2a-1b9c6d0e4f32"}
  ],
  "hostname": "8f3c2a.compute-acme.oraclecloud.internal.",
  "quota_reservation": null,
  "disk_attach": "",
  "label": "web1",
  "priority": "/oracle/public/default",
  "platform": "linux",
  "state": "running",
  "virtio": null,
  "vnc": "10.196.12.33:5900",
  "desired_state": "running",
  "tags": ["backup"],
  "start_time": "2018-04-27T21:35:05Z",
  "quota": "/Compute-acme",
  "error_reason": "",
  "sshkeys": ["/Compute-acme/jdoe/deploy-key", "/Compute-acme/jdoe/ops-key"],
  "resolvers": null,
  "account": "/Compute-acme/default",
  "name": "/Compute-acme/jdoe/web1/8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10",
  "vcable_id": "/Compute-acme/jdoe/2c5b8e11-6f1a-4d77-9a3e-08b4c1f0d6a7",
  "hypervisor": {"mode": "hvm"},
  "uri": "https://compute.uscom-central-1.oraclecloud.com/instance/Compute-acme/jdoe/web1/8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10",
  "reverse_dns": true,
  "entry": null,
  "boot_order": [1],
  "attributes": {
    "dns": {"domain": "compute-acme.oraclecloud.internal.", "hostname": "8f3c2a.compute-acme.oraclecloud.internal.",
            "nimbula_vcable-eth0": "8f3c2a.compute-acme.oraclecloud.internal."},
    "network": {"nimbula_vcable-eth0": {"address": ["c6:b0:8f:3c:2a:1e", "10.196.12.34"], "dhcp_options": [],
                "id": "/Compute-acme/jdoe/2c5b8e11-6f1a-4d77-9a3e-08b4c1f0d6a7", "model": "",
                "vethernet": "/oracle/public/default", "vethernet_id": "0", "vethernet_type": "vlan"}},
    "sshkeys": ["ssh-rsa AAAAB3NzaC1yc2EAAAADAQABAAABAQC7 jdoe@host"]
  }
})";

const char* kWindowsInstance = R"({
  "name": "/Compute-acme/jdoe/winsrv/3b9d4c10-1a2b-4c5d-8e9f-0a1b2c3d4e5f",
  "shape": "oc4",
  "state": "starting",
  "platform": "windows",
  "ip": "0.0.0.0",
  "vcable_id": null,
  "attributes": {"userdata": {"enable_rdp": "true", "administrator_password": "Welc0me#2018"}}
})";

}  // namespace

TEST(ClassicVm, RunningInstanceMapsNamesStateNetworksAndDisks) {
    COracleCloudParser parser;
    SVMInfoLib vm;
    ASSERT_TRUE(parser.ParseObject(kRunningInstance, vm));

    EXPECT_EQ("/Compute-acme/jdoe/web1/8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10", vm.fullName);
    EXPECT_EQ("8f3c2a1e-5b7d-4c2a-9e61-2d4b0c7a9f10", vm.guid);
    EXPECT_EQ("web1", vm.vmName);
    EXPECT_EQ("jdoe", vm.compartmentId);  // third element of the path
    EXPECT_FALSE(vm.isTemplate);
    EXPECT_EQ("oc3", vm.shape);
    EXPECT_EQ("running", vm.state);
    EXPECT_EQ("running", vm.status);
    EXPECT_EQ("10.196.12.34", vm.ipAddress);
    EXPECT_EQ("Linux", vm.platform);
    EXPECT_EQ("/Compute-acme/jdoe/2c5b8e11-6f1a-4d77-9a3e-08b4c1f0d6a7", vm.vcableId);
    EXPECT_EQ((std::vector<std::string>{"/Compute-acme/jdoe/deploy-key", "/Compute-acme/jdoe/ops-key"}), vm.sshKeys);
    EXPECT_FALSE(vm.enableRdp);
    EXPECT_EQ("", vm.administratorPassword);

    // Interfaces in key order (eth1 before eth2), eth0 only gives security lists.
    ASSERT_EQ(2u, vm.vnics.size());
    EXPECT_EQ("/Compute-acme/jdoe/app-net", vm.vnics[0].id);
    EXPECT_EQ("app-net", vm.vnics[0].name);
    EXPECT_EQ("/Compute-acme/jdoe/backup-net", vm.vnics[1].id);
    EXPECT_EQ("backup-net", vm.vnics[1].name);
    ASSERT_EQ(2u, vm.securityGroups.size());
    EXPECT_EQ("/Compute-acme/default/default", vm.securityGroups[0].fullName);
    EXPECT_EQ("default", vm.securityGroups[0].name);
    EXPECT_EQ("web-seclist", vm.securityGroups[1].name);

    ASSERT_EQ(2u, vm.disks.size());
    EXPECT_EQ(1, vm.disks[0].index);
    EXPECT_EQ("/Compute-acme/jdoe/web1_boot", vm.disks[0].volumeName);
    EXPECT_EQ("0f6c1c4e-2d4a-4b6e-9c1e-6a1d3b7c9e21", vm.disks[0].guid);
    EXPECT_EQ(2, vm.disks[1].index);
    EXPECT_EQ("/Compute-acme/jdoe/web1_data", vm.disks[1].volumeName);
}

TEST(ClassicVm, WindowsInstanceTakesPasswordAndRdpFromUserdata) {
    COracleCloudParser parser;
    SVMInfoLib vm;
    ASSERT_TRUE(parser.ParseObject(kWindowsInstance, vm));
    EXPECT_EQ("Windows", vm.platform);
    EXPECT_TRUE(vm.enableRdp);
    EXPECT_EQ("Welc0me#2018", vm.administratorPassword);
    EXPECT_EQ("winsrv", vm.vmName);
    EXPECT_EQ("", vm.vcableId);  // null while queued
    EXPECT_TRUE(vm.vnics.empty());
    EXPECT_TRUE(vm.disks.empty());

    SVMInfoLib boolFlag;
    ASSERT_TRUE(parser.ParseObject(
        R"({"name": "/Compute-acme/jdoe/w/1", "shape": "oc3", "attributes": {"userdata": {"enable_rdp": true}}})",
        boolFlag));
    EXPECT_TRUE(boolFlag.enableRdp);
}

TEST(ClassicVm, ObjectWithoutShapeIsATemplateNamedByItsLastPathPart) {
    COracleCloudParser parser;
    SVMInfoLib image;
    ASSERT_TRUE(parser.ParseObject(
        R"({"name": "/Compute-acme/jdoe/OL_7.6_UEKR5", "platform": "linux", "state": "available", "ip": "1.2.3.4"})",
        image));
    EXPECT_TRUE(image.isTemplate);
    EXPECT_EQ("OL_7.6_UEKR5", image.guid);
    EXPECT_EQ(image.guid, image.vmName);
    EXPECT_EQ("Linux", image.platform);
    EXPECT_EQ("jdoe", image.compartmentId);
    // Instance-only fields are not read for a template.
    EXPECT_EQ("", image.state);
    EXPECT_EQ("", image.ipAddress);

    // A short name: no path parts, the host name stands for the owner.
    SVMInfoLib shortName;
    ASSERT_TRUE(parser.ParseObject(
        R"({"name": "web1", "shape": "oc3", "hostname": "web1.compute-acme.oraclecloud.internal.", "platform": "solaris"})",
        shortName));
    EXPECT_EQ("", shortName.guid);
    EXPECT_EQ("", shortName.vmName);
    EXPECT_EQ("web1.compute-acme.oraclecloud.internal.", shortName.compartmentId);
    EXPECT_EQ("solaris", shortName.platform);  // only "windows" and "linux" are reworded
}

TEST(ClassicDisk, VolumeDocumentGivesSizeStatusAndNames) {
    const char* volume = R"({
      "managed": true, "snapshot_account": null, "machineimage_name": "/oracle/public/OL_7.2_UEKR4_x86_64",
      "snapshot_id": null, "imagelist": "/oracle/public/OL_7.2_UEKR4_x86_64", "writecache": false,
      "size": "21474836480", "storage_pool": "/Compute-acme/storagepool/iscsi/thruput_1", "shared": false,
      "status": "Online", "description": null, "tags": [], "quota": null,
      "status_detail": "The storage volume is online.", "properties": ["/oracle/public/storage/default"],
      "account": "/Compute-acme/default", "name": "/Compute-acme/jdoe/web1_boot", "bootable": true,
      "hypervisor": null, "uri": "https://compute.uscom-central-1.oraclecloud.com/storage/volume/Compute-acme/jdoe/web1_boot",
      "imagelist_entry": 1, "snapshot": null, "readonly": false, "platform": "linux",
      "status_timestamp": "2016-04-18T14:24:05Z"})";
    COracleCloudParser parser;
    SDiskInfoLib disk;
    ASSERT_TRUE(parser.ParseObject(volume, disk));
    EXPECT_EQ("/Compute-acme/jdoe/web1_boot", disk.name);
    EXPECT_EQ("web1_boot", disk.guid);
    EXPECT_EQ("jdoe", disk.parentName);
    EXPECT_EQ(21474836480ULL, disk.sizeBytes);
    EXPECT_EQ("Online", disk.status);
    EXPECT_TRUE(disk.bootable);
    EXPECT_EQ("/oracle/public/storage/default", disk.properties);
    EXPECT_EQ("", disk.description);  // null
    EXPECT_EQ("", disk.volumeName);
    EXPECT_EQ(0, disk.index);
}

TEST(ClassicDisk, SizeMustBeAPlainByteCount) {
    COracleCloudParser parser;
    struct Case {
        const char* size;
        unsigned long long bytes;
    };
    const Case cases[] = {{R"("10737418240")", 10737418240ULL}, {"10737418240", 10737418240ULL},
                          {R"(" 42 ")", 42},   {R"("10G")", 0},   {R"("-5")", 0}, {R"("")", 0},
                          {R"("99999999999999999999999")", 0}, {"null", 0}, {"-3", 0}};
    for (const Case& c : cases) {
        SDiskInfoLib disk;
        ASSERT_TRUE(parser.ParseObject(std::string(R"({"name": "/C/u/v", "size": )") + c.size + "}", disk));
        EXPECT_EQ(c.bytes, disk.sizeBytes) << c.size;
    }
}

TEST(ClassicDisk, VolumeNameFallsBackToVolumeKey) {
    COracleCloudParser parser;
    SDiskInfoLib fromAttachment;
    ASSERT_TRUE(parser.ParseObject(
        R"({"index": 3, "storage_volume_name": "/C/u/data", "volume": "/C/u/other"})", fromAttachment));
    EXPECT_EQ("/C/u/data", fromAttachment.volumeName);
    EXPECT_EQ(3, fromAttachment.index);

    SDiskInfoLib fromVolumeKey;
    ASSERT_TRUE(parser.ParseObject(R"({"storage_volume_name": "", "volume": "/C/u/other", "description": "x"})",
                                   fromVolumeKey));
    EXPECT_EQ("/C/u/other", fromVolumeKey.volumeName);
    EXPECT_EQ("x", fromVolumeKey.description);
}

TEST(ClassicSnapshot, SnapshotDocumentGivesIdTimeSizeAndVolume) {
    const char* snapshot = R"({
      "account": "/Compute-acme/cloud_storage", "status": "completed", "description": "nightly",
      "tags": [], "snapshot_timestamp": "2017-01-09T18:25:18Z", "start_timestamp": "2017-01-09T18:25:18Z",
      "parent_volume_bootable": "false", "size": "107374182400", "status_detail": "",
      "property": "/oracle/private/storage/snapshot/collocated", "machineimage_name": null,
      "platform": null, "volume": "/Compute-acme/jdoe/web1_data",
      "snapshot_id": "dc14ed57f5a44d2c8f8c0e05c3a8d2a1b7f5e6c9d0a1b2c3d4e5f60718293a15d",
      "name": "/Compute-acme/jdoe/web1_data/dc14ed57f5a44d2c8f8c0e05c3a8d2a1b7f5e6c9d0a1b2c3d4e5f60718293a15d",
      "uri": "https://compute.uscom-central-1.oraclecloud.com/storage/snapshot/Compute-acme/jdoe/web1_data/dc14"})";
    COracleCloudParser parser;
    SSnapshotInfoLib snap;
    ASSERT_TRUE(parser.ParseObject(snapshot, snap));
    EXPECT_EQ("dc14ed57f5a44d2c8f8c0e05c3a8d2a1b7f5e6c9d0a1b2c3d4e5f60718293a15d", snap.snapshotId);
    EXPECT_EQ(0u, snap.name.rfind("/Compute-acme/jdoe/web1_data/dc14ed57", 0));
    EXPECT_EQ(1483986318, snap.startTime);
    EXPECT_EQ(107374182400ULL, snap.sizeBytes);
    EXPECT_EQ("completed", snap.status);
    EXPECT_EQ("/Compute-acme/jdoe/web1_data", snap.volumeName);
    EXPECT_EQ("nightly", snap.description);
    EXPECT_TRUE(snap.isComplete);  // not the parser's to decide
    EXPECT_EQ("", snap.guid);
}

TEST(ClassicAttachment, AttachmentListGivesIndexVolumeAndInstance) {
    const char* list = R"({"result": [
      {"account": null, "index": 1, "instance_name": "/Compute-acme/jdoe/web1/8f3c2a1e",
       "storage_volume_name": "/Compute-acme/jdoe/web1_boot", "hypervisor": null, "readonly": false,
       "state": "attached", "name": "/Compute-acme/jdoe/web1/8f3c2a1e/0f6c1c4e", "uri": "https://x/storage/attachment/0f6c"},
      {"index": 2, "instance_name": "/Compute-acme/jdoe/web1/8f3c2a1e",
       "storage_volume_name": "/Compute-acme/jdoe/web1_data", "state": "attaching",
       "name": "/Compute-acme/jdoe/web1/8f3c2a1e/5a2e9d0b"}]})";
    COracleCloudParser parser;
    std::vector<SStorageAttachmentInfoLib> attachments;
    ASSERT_TRUE(parser.ParseList(list, "result", attachments));
    ASSERT_EQ(2u, attachments.size());
    EXPECT_EQ(1, attachments[0].index);
    EXPECT_EQ("/Compute-acme/jdoe/web1_boot", attachments[0].volumeName);
    EXPECT_EQ("/Compute-acme/jdoe/web1/8f3c2a1e", attachments[0].instanceName);
    EXPECT_EQ("attached", attachments[0].state);
    EXPECT_EQ("/Compute-acme/jdoe/web1/8f3c2a1e/5a2e9d0b", attachments[1].name);
    EXPECT_EQ("attaching", attachments[1].state);
    EXPECT_EQ("", attachments[1].attachmentId);
}

TEST(ClassicShape, UriReplacesNameAndCpusAreTruncated) {
    const char* shapes = R"({"result": [
      {"nds_iops_limit": 0, "ram": 7680, "cpus": 2.0, "uri": "https://compute.uscom-central-1.oraclecloud.com/shape/oc3",
       "io": 200, "name": "oc3", "root_disk_size": 0, "gpus": 0, "is_root_ssd": false},
      {"ram": 15360, "cpus": 2.5, "io": 400, "name": "oc4x"}]})";
    COracleCloudParser parser;
    std::vector<SInstanceShapeInfoLib> list;
    ASSERT_TRUE(parser.ParseList(shapes, "result", list));
    ASSERT_EQ(2u, list.size());
    EXPECT_EQ("https://compute.uscom-central-1.oraclecloud.com/shape/oc3", list[0].name);
    EXPECT_EQ(list[0].uri, list[0].name);
    EXPECT_EQ(2, list[0].cpuCount);
    EXPECT_EQ(7680, list[0].memoryMB);
    EXPECT_EQ(200, list[0].ioCount);
    EXPECT_EQ("oc4x", list[1].name);
    EXPECT_EQ(2, list[1].cpuCount);
}

TEST(ClassicNames, NetworksContainersKeysAssociationsAndRebootRequests) {
    COracleCloudParser parser;

    SNetworkInfoLib net;
    ASSERT_TRUE(parser.ParseObject(R"({"name": "/Compute-acme/jdoe/app-net", "ipAddressPrefix": "192.168.10.0/24",
        "ipNetworkExchange": null, "description": null, "publicNaptEnabledFlag": true, "tags": []})",
                                   net));
    EXPECT_EQ("/Compute-acme/jdoe/app-net", net.name);
    EXPECT_EQ("192.168.10.0/24", net.ipAddressPrefix);
    EXPECT_TRUE(net.publicNaptEnabled);

    SContainerInfoLib container;
    ASSERT_TRUE(parser.ParseObject(
        R"({"name": "/Compute-acme/jdoe/", "id": "c-1", "clusterUuid": "u-9", "maxCapacity": 1099511627776})",
        container));
    EXPECT_EQ("c-1", container.guid);
    EXPECT_EQ("u-9", container.clusterUuid);
    EXPECT_EQ(1099511627776ULL, container.maxCapacity);

    SKeyPairInfoLib key;
    ASSERT_TRUE(parser.ParseObject(R"({"enabled": true, "key": "ssh-rsa AAAAB3NzaC1yc2E jdoe@host",
        "name": "/Compute-acme/jdoe/deploy-key", "uri": "https://x/sshkey/Compute-acme/jdoe/deploy-key"})",
                                   key));
    EXPECT_EQ("deploy-key", key.name);
    EXPECT_EQ("/Compute-acme/jdoe/deploy-key", key.fullName);
    EXPECT_EQ("ssh-rsa AAAAB3NzaC1yc2E jdoe@host", key.keyText);

    SSecurityGroupInfoLib group;
    ASSERT_TRUE(parser.ParseObject(R"({"name": "/Compute-acme/jdoe/web-seclist", "policy": "DENY",
        "outbound_cidr_policy": "PERMIT"})",
                                   group));
    EXPECT_EQ("web-seclist", group.name);

    SIPAssociationLib association;
    ASSERT_TRUE(parser.ParseObject(R"({"name": "/Compute-acme/jdoe/6c5f", "vcable": "/Compute-acme/jdoe/2c5b",
        "parentpool": "ippool:/oracle/public/ippool", "ip": "129.150.1.2"})",
                                   association));
    EXPECT_EQ("/Compute-acme/jdoe/6c5f", association.name);

    SRebootInstanceReqInfoLib reboot;
    ASSERT_TRUE(parser.ParseObject(R"({"name": "/Compute-acme/jdoe/web1/8f3c/77aa", "instance": "/Compute-acme/jdoe/web1/8f3c",
        "hard": false, "state": "active", "creation_time": "2016-05-10T16:08:10Z"})",
                                   reboot));
    EXPECT_EQ("/Compute-acme/jdoe/web1/8f3c/77aa", reboot.name);
    EXPECT_EQ("active", reboot.state);
}

TEST(ClassicMessage, MessageBodiesOfComputeAndPaaS) {
    COracleCloudParser parser;
    SMessageInfoLib compute;
    ASSERT_TRUE(parser.ParseObject(R"({"message": "Incorrect username or password"})", compute));
    EXPECT_EQ("Incorrect username or password", compute.message);

    SMessageInfoLib paas;
    ASSERT_TRUE(parser.ParseObject(
        R"({"details": {"message": "Service [jcs1] not found.", "issues": ["JAAS-1"]}})", paas));
    EXPECT_EQ("Service [jcs1] not found.", paas.message);

    // The whole object as text, e.g. to keep a configuration document.
    std::string text;
    ASSERT_TRUE(parser.ParseObject(R"({ "a" : [1, {"b": null}], "c": "d" })", text));
    EXPECT_EQ(R"({"a":[1,{"b":null}],"c":"d"})", text);
}

TEST(ClassicOrchestration, EmbeddedInstanceComesFromTheFirstInstanceObject) {
    const char* orchestration = R"({
      "name": "/Compute-acme/jdoe/web1_master", "status": "active", "desired_state": "active", "version": 3,
      "objects": [
        {"label": "boot", "type": "StorageVolume", "template": {"name": "/Compute-acme/jdoe/web1_boot", "size": "20G"}},
        "junk",
        {"label": "web1", "type": "Instance", "persistent": false,
         "template": {"name": "/Compute-acme/jdoe/web1_master/web1/0a1b2c3d", "shape": "oc3", "platform": "linux",
                      "storage_attachments": [{"index": 1, "volume": "/Compute-acme/jdoe/web1_boot"}]},
         "health": {"status": "active"}},
        {"label": "web2", "type": "Instance", "template": {"name": "/Compute-acme/jdoe/web2/1", "shape": "oc4"}}
      ]})";
    COracleCloudParser parser;
    SOrchestrationInfoLib info;
    ASSERT_TRUE(parser.ParseObject(orchestration, info));
    EXPECT_EQ("/Compute-acme/jdoe/web1_master", info.name);
    EXPECT_EQ("active", info.status);
    EXPECT_EQ("/Compute-acme/jdoe/web1_master/web1/0a1b2c3d", info.vm.fullName);
    EXPECT_EQ("oc3", info.vm.shape);
    ASSERT_EQ(1u, info.vm.disks.size());
    EXPECT_EQ("/Compute-acme/jdoe/web1_boot", info.vm.disks[0].volumeName);

    // Launch-plan style objects list their instances.
    SOrchestrationInfoLib launchPlan;
    ASSERT_TRUE(parser.ParseObject(R"({"name": "o", "status": "ready",
        "objects": [{"instances": [{"name": "/C/u/i/9", "shape": "oc3"}]}]})",
                                   launchPlan));
    EXPECT_EQ("/C/u/i/9", launchPlan.vm.fullName);

    // Nothing came up yet: the embedded record stays empty.
    SOrchestrationInfoLib starting;
    ASSERT_TRUE(parser.ParseObject(R"({"name": "o", "status": "starting"})", starting));
    EXPECT_EQ("starting", starting.status);
    EXPECT_EQ("", starting.vm.fullName);
}
