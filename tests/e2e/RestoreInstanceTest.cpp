// Restoring instances against the emulator: launching with a flexible shape
// and a PuTTY key text, launching from a preserved boot volume, deploying with
// data disks, power actions, adding a VNIC, and deleting with and without the
// wait, including the resource that never reaches its state.
#include <gtest/gtest.h>

#include <fstream>

#include "EmulatorFixture.h"
#include "LogCapture.h"
#include "TempDir.h"
#include "TestKeys.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::LogCapture;

// A PuTTY key file as saved on Windows (CRLF), public part over two lines.
const char* const kPuttyKeyText =
    "PuTTY-User-Key-File-2: ssh-rsa\r\n"
    "Encryption: none\r\n"
    "Comment: restore-key\r\n"
    "Public-Lines: 2\r\n"
    "AAAAB3NzaC1yc2EAAAADAQABAAABAQC7\r\n"
    "restoretestkeybody==\r\n"
    "Private-Lines: 1\r\n"
    "AAAAthisisprivate\r\n"
    "Private-MAC: 0a1b2c\r\n";
const char* const kExpectedKeyLine = "ssh-rsa AAAAB3NzaC1yc2EAAAADAQABAAABAQC7restoretestkeybody== restore-key";

// Where the demo world lets an instance be launched.
struct DemoPlacement {
    std::string compartmentId;
    std::string availabilityDomain;
    std::string publicSubnetId;
    std::string imageId;
};

class RestoreInstances : public ocwtest::EmulatorTest {
protected:
    DemoPlacement Place() {
        DemoPlacement p;
        p.compartmentId = FindResourceId("compartment", "ocw-demo");
        p.publicSubnetId = FindResourceId("subnet", "ocw-demo-public");
        p.imageId = FindResourceId("image", "Oracle-Linux-8.9-2024.01.26-0");
        p.availabilityDomain = ResourceMember(FindResourceId("instance", "ocw-web-1"), "availabilityDomain");
        return p;
    }

    SVMInfoLib NewVm(const std::string& name, const std::string& shape) {
        const DemoPlacement p = Place();
        SVMInfoLib vm;
        vm.vmName = name;
        vm.shape = shape;
        vm.compartmentId = p.compartmentId;
        vm.availabilityDomain = p.availabilityDomain;
        vm.imageId = p.imageId;
        SVNicInfoLib vnic;
        vnic.subnetId = p.publicSubnetId;
        vm.vnics.push_back(vnic);
        return vm;
    }

    // Requests for the instance itself (its polls), not for its sub-resources.
    size_t InstanceReads(const std::string& id) {
        size_t n = 0;
        for (const auto& r : RequestsTo("GET", "/20160918/instances/" + id)) {
            if (r.target == "/20160918/instances/" + id) ++n;
        }
        return n;
    }
};

TEST_F(RestoreInstances, LaunchWithFlexibleShapeAndKeyFileTextSendsShapeConfigAndOneKeyLine) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SVMInfoLib vm = NewVm("restored-flex", "VM.Standard.E4.Flex");
    vm.cpuCount = 2;
    vm.memoryMB = 16384;
    vm.bootVolumeSizeGB = 60;
    vm.sshKeys.push_back(kPuttyKeyText);

    ASSERT_TRUE(facade->LaunchInstance(vm)) << facade->GetLastError();
    EXPECT_FALSE(vm.guid.empty());
    EXPECT_EQ(vm.state, "RUNNING");
    EXPECT_EQ(StateOf(vm.guid), "RUNNING");

    auto posts = RequestsTo("POST", "/20160918/instances");
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_EQ(posts[0].target, "/20160918/instances/");
    EXPECT_EQ(posts[0].host, "iaas." + info().region + ".oraclecloud.com");
    EXPECT_EQ(posts[0].body.find("thisisprivate"), std::string::npos) << "the private part must never leave";
    // What the service made of it (the body's bytes are the request-body unit test's).
    const boost::json::value config = boost::json::parse(MemberJson(vm.guid, "shapeConfig"));
    EXPECT_EQ(config.at("ocpus").to_number<double>(), 2.0);
    EXPECT_EQ(config.at("memoryInGBs").to_number<double>(), 16.0);
    EXPECT_EQ(MemberJson(vm.guid, "metadata"), std::string(R"({"ssh_authorized_keys":")") + kExpectedKeyLine + "\"}");
    EXPECT_EQ(MemberJson(FindResourceId("bootvolume", "restored-flex (Boot Volume)"), "sizeInGBs"), "60");
    EXPECT_GE(InstanceReads(vm.guid), 1u) << "the launch must wait by reading the instance";
}

TEST_F(RestoreInstances, LaunchThatFailsLeavesTheServicesOrTheConnectionsReason) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SVMInfoLib vm = NewVm("bad-shape", "VM.NoSuchShape.1");
    EXPECT_FALSE(facade->LaunchInstance(vm));
    EXPECT_EQ(facade->GetLastError(), "Shape VM.NoSuchShape.1 is not valid.");
    EXPECT_TRUE(vm.guid.empty());
    EXPECT_EQ(CountRequests("GET", "/20160918/instances/"), 0u) << "nothing to wait for";

    // A request that never leaves (the key file now needs a pass phrase the
    // caller did not give) reports the connection's own reason.
    std::ifstream in(info().keyFile);
    const std::string pem((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ocwtest::TempDir dir;
    const std::string keyFile = dir.write("api_key.pem", pem);
    auto locked = ConnectFacade("", keyFile);
    ASSERT_TRUE(locked);
    dir.write("api_key.pem", ocwtest::ToPem(ocwtest::DecodePem(pem).get(), ocwtest::KeyFormat::Pkcs8Encrypted, "x"));
    ClearRequestLog();
    EXPECT_FALSE(locked->LaunchInstance(vm));
    EXPECT_EQ(locked->GetLastError(),
              "Failed to decrypt the private key. Please check if the private key passphrase provided is correct.");
    EXPECT_TRUE(Requests().empty());
}

TEST_F(RestoreInstances, LaunchFromPreservedBootVolumeReplacesTheRecordWithTheNewInstance) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    auto direct = ConnectBackend();
    ASSERT_TRUE(direct);
    SVMInfoLib source = NewVm("source-vm", "VM.Standard2.1");
    ASSERT_TRUE(direct->ops.LaunchInstance(source)) << direct->ops.GetLastError();
    ASSERT_TRUE(direct->ops.DeleteVM("", source.guid, true, true)) << direct->ops.GetLastError();
    EXPECT_EQ(StateOf(source.guid), "TERMINATED");
    ASSERT_EQ(RequestsTo("DELETE", "/20160918/instances/").size(), 1u);
    EXPECT_EQ(RequestsTo("DELETE", "/20160918/instances/")[0].target,
              "/20160918/instances/" + source.guid + "?preserveBootVolume=true");
    const std::string bootVolume = FindResourceId("bootvolume", "source-vm (Boot Volume)");
    ASSERT_FALSE(bootVolume.empty());
    EXPECT_EQ(StateOf(bootVolume), "AVAILABLE");

    ClearRequestLog();
    SVMInfoLib target = NewVm("from-boot-volume", "VM.Standard.E4.Flex");
    target.cpuCount = 1;
    target.memoryMB = 8192;
    target.vnics[0].assignPublicIp = true;
    target.sshKeys.push_back(kPuttyKeyText);
    ASSERT_TRUE(facade->DeployVMFromBootDisk(target, bootVolume)) << facade->GetLastError();

    EXPECT_NE(target.guid, source.guid);
    EXPECT_FALSE(target.guid.empty());
    EXPECT_EQ(target.state, "RUNNING");
    EXPECT_EQ(target.vmName, "from-boot-volume");
    EXPECT_EQ(target.shape, "VM.Standard.E4.Flex");
    EXPECT_EQ(target.cpuCount, 1u) << "the record is the launched instance's, read from the service";
    EXPECT_EQ(target.memoryMB, 8192u);
    EXPECT_TRUE(target.sshKeys.empty()) << "the caller's record is replaced, not merged";

    auto posts = RequestsTo("POST", "/20160918/instances");
    ASSERT_EQ(posts.size(), 1u);
    const boost::json::object body = BodyOf(posts[0]);
    EXPECT_EQ(boost::json::serialize(body.at("sourceDetails")),
              R"({"sourceType":"bootVolume","bootVolumeId":")" + bootVolume + "\"}");
    EXPECT_EQ(body.at("createVnicDetails").at("assignPublicIp"), true);
    EXPECT_EQ(body.if_contains("metadata"), nullptr) << "a boot volume brings its own keys";
}

TEST_F(RestoreInstances, DeployWithDataDisksCreatesAndAttachesEveryDiskButTheBootDisk) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const DemoPlacement p = Place();
    SVMInfoLib vm = NewVm("deployed", "VM.Standard2.1");
    vm.imageId.clear();
    SDiskInfoLib boot;
    boot.volumeName = "deployed-boot";
    boot.bootable = true;
    SDiskInfoLib dataA;
    dataA.volumeName = "deployed-data-a";
    dataA.sizeBytes = 50ULL << 30;
    SDiskInfoLib dataB;
    dataB.volumeName = "deployed-data-b";
    dataB.sizeBytes = (60ULL << 30) + 4096;
    vm.disks = {boot, dataA, dataB};

    ASSERT_TRUE(facade->DeployVM(vm, p.imageId, "")) << facade->GetLastError();
    ASSERT_FALSE(vm.guid.empty());
    EXPECT_EQ(StateOf(vm.guid), "RUNNING");

    auto launches = RequestsTo("POST", "/20160918/instances");
    ASSERT_EQ(launches.size(), 1u);
    EXPECT_EQ(BodyOf(launches[0]).at("sourceDetails").at("imageId").as_string(), p.imageId);

    auto creates = RequestsTo("POST", "/20160918/volumes");
    ASSERT_EQ(creates.size(), 2u);
    EXPECT_EQ(boost::json::serialize(BodyOf(creates[0])),
              R"({"availabilityDomain":")" + p.availabilityDomain + R"(","compartmentId":")" + p.compartmentId +
                  R"(","displayName":"deployed-data-a","sizeInGBs":"50"})");
    EXPECT_EQ(BodyOf(creates[1]).at("sizeInGBs").as_string(), "60");
    EXPECT_TRUE(FindResourceId("volume", "deployed-boot").empty());

    const std::string a = FindResourceId("volume", "deployed-data-a");
    const std::string b = FindResourceId("volume", "deployed-data-b");
    ASSERT_FALSE(a.empty());
    ASSERT_FALSE(b.empty());
    EXPECT_EQ(StateOf(a), "AVAILABLE");
    EXPECT_EQ(MemberJson(b, "sizeInGBs"), "60");

    std::vector<std::string> attachedVolumes;
    for (const std::string& id : ResourceIds("volumeattachment", p.compartmentId)) {
        if (ResourceMember(id, "instanceId") != vm.guid) continue;
        EXPECT_EQ(StateOf(id), "ATTACHED");
        EXPECT_EQ(ResourceMember(id, "attachmentType"), "iscsi");
        attachedVolumes.push_back(ResourceMember(id, "volumeId"));
    }
    EXPECT_EQ(attachedVolumes, (std::vector<std::string>{a, b}));
}

TEST_F(RestoreInstances, PowerOffOnAndRebootEachWaitForTheirEndState) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string id = FindResourceId("instance", "ocw-web-1");
    const std::string path = "/20160918/instances/" + id;

    ASSERT_TRUE(facade->PowerOffInstance(id)) << facade->GetLastError();
    EXPECT_EQ(StateOf(id), "STOPPED");
    ASSERT_TRUE(facade->PowerOnInstance(id)) << facade->GetLastError();
    EXPECT_EQ(StateOf(id), "RUNNING");
    ASSERT_TRUE(facade->RebootInstance(id)) << facade->GetLastError();
    EXPECT_EQ(StateOf(id), "RUNNING");

    auto actions = RequestsTo("POST", path);
    ASSERT_EQ(actions.size(), 3u);
    EXPECT_EQ(actions[0].target, path + "?action=STOP");
    EXPECT_EQ(actions[1].target, path + "?action=START");
    EXPECT_EQ(actions[2].target, path + "?action=reset");
    EXPECT_GE(InstanceReads(id), 3u);

    ClearRequestLog();
    EXPECT_FALSE(facade->PowerOnInstance(""));
    EXPECT_TRUE(Requests().empty());
}

TEST_F(RestoreInstances, PowerActionRefusedInTheCurrentStateLeavesTheServiceMessage) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string id = FindResourceId("instance", "ocw-web-1");
    HoldState(id, "TERMINATING");
    EXPECT_FALSE(facade->RebootInstance(id));
    EXPECT_EQ(facade->GetLastError(), "Instance is in TERMINATING state; cannot RESET.");
}

TEST_F(RestoreInstances, AddedVnicIsWaitedForUntilAttached) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SVMInfoLib vm;
    vm.guid = FindResourceId("instance", "ocw-web-1");
    SVNicInfoLib vnic;
    vnic.subnetId = FindResourceId("subnet", "ocw-demo-private-ad1");
    const size_t before = ResourceIds("vnicattachment").size();

    ASSERT_TRUE(facade->AttachVnic(vm, vnic)) << facade->GetLastError();

    auto posts = RequestsTo("POST", "/20160918/vnicAttachments");
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_EQ(posts[0].body, R"({"createVnicDetails":{"assignPublicIp":false,"subnetId":")" + vnic.subnetId +
                                 R"("},"instanceId":")" + vm.guid + "\"}");
    std::vector<std::string> attachments = ResourceIds("vnicattachment");
    ASSERT_EQ(attachments.size(), before + 1);
    EXPECT_EQ(StateOf(attachments.back()), "ATTACHED");
    EXPECT_GE(CountRequests("GET", "/20160918/vnicAttachments/" + attachments.back()), 1u);
}

TEST_F(RestoreInstances, DeleteWithoutWaitReturnsRightAfterTheRequest) {
    auto direct = ConnectBackend();
    ASSERT_TRUE(direct);
    const std::string id = FindResourceId("instance", "ocw-web-2");
    ASSERT_TRUE(direct->ops.DeleteVM("ignored", id, false, false)) << direct->ops.GetLastError();
    auto deletes = RequestsTo("DELETE", "/20160918/instances/");
    ASSERT_EQ(deletes.size(), 1u);
    EXPECT_EQ(deletes[0].target, "/20160918/instances/" + id);
    EXPECT_EQ(InstanceReads(id), 0u);
    EXPECT_EQ(StateOf(id), "TERMINATING");
}

TEST_F(RestoreInstances, DeleteWithWaitReturnsOnceTerminatedAndKeepsTheBootVolume) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string id = FindResourceId("instance", "ocw-web-2");
    ASSERT_TRUE(facade->DeleteVM("ocw-web-2", id, false, true)) << facade->GetLastError();
    EXPECT_EQ(StateOf(id), "TERMINATED");
    auto deletes = RequestsTo("DELETE", "/20160918/instances/");
    ASSERT_EQ(deletes.size(), 1u);
    EXPECT_EQ(deletes[0].target, "/20160918/instances/" + id + "?preserveBootVolume=true");
    EXPECT_EQ(StateOf(FindResourceId("bootvolume", "ocw-web-2 (Boot Volume)")), "AVAILABLE");
}

TEST_F(RestoreInstances, DeleteOfAnInstanceThatReadsAsGoneSucceedsWithoutWaiting) {
    auto direct = ConnectBackend();
    ASSERT_TRUE(direct);
    const std::string id = FindResourceId("instance", "ocw-web-2");
    AddStatusFault("GET", "/20160918/instances/" + id, 404, 1);
    ASSERT_TRUE(direct->ops.DeleteVM("", id, false, true)) << direct->ops.GetLastError();
    EXPECT_EQ(InstanceReads(id), 1u);
}

TEST_F(RestoreInstances, DeleteWhoseWaitRunsOutStillSucceedsWhileTheInstanceAnswers) {
    WriteConfig({{"nOCIOperationTimeout", "1"}});
    auto direct = ConnectBackend();
    ASSERT_TRUE(direct);
    const std::string id = FindResourceId("instance", "ocw-web-2");
    HoldState(id, "TERMINATING");
    LogCapture capture(1);
    ASSERT_TRUE(direct->ops.DeleteVM("", id, false, true)) << direct->ops.GetLastError();
    EXPECT_EQ(capture.matching("Timeout waiting for status end state for  [" + id + "]").size(), 1u);
}

TEST_F(RestoreInstances, ResourceStuckInAStateTimesOutWithTheDesignedMessage) {
    WriteConfig({{"nOCIOperationTimeout", "1"}});
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string id = FindResourceId("instance", "ocw-web-1");
    HoldState(id, "STOPPING");
    LogCapture capture(1);
    EXPECT_FALSE(facade->PowerOffInstance(id));
    const std::string message = "Timeout waiting for status end state for  [" + id + "]";
    EXPECT_EQ(facade->GetLastError(), message);
    auto lines = capture.matching(message);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, 0);
    EXPECT_NE(lines[0].signature.find("WaitForObjectToReachEndState"), std::string::npos);
    EXPECT_FALSE(capture.matching("Current  status : [STOPPING], waiting for status to change").empty());
    // Polls at about 1 s and 2 s (never one right after the request); the second is past the 1 s budget.
    EXPECT_GE(InstanceReads(id), 1u);
    EXPECT_LE(InstanceReads(id), 2u);
}

}  // namespace
