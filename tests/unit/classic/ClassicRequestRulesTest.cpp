// The Classic backend's pure rules, byte for byte: request bodies, the login
// body and cookie of the session connection, URL building, and the two rules
// that need no request (free disk slot of a VM record, walk depth). What the
// services answer is covered end to end against the emulator.
#include <gtest/gtest.h>

#include "classic/OracleCloudClassicOperationsBodies.h"
#include "classic/OracleCloudClassicQueries.h"
#include "classic/OracleCloudClassicQueriesEngine.h"
#include "parser/OracleCloudParser.h"
#include "transport/OracleCloudClassicConnection.h"

using namespace OracleCloudSDKWrapper;
using namespace OracleCloudSDKWrapper::classicoperations;

namespace {

std::string Text(const JsonObject& body) { return JsonHelper::Serialize(body); }

SDiskInfoLib Disk(int index, const std::string& volume, bool bootable) {
    SDiskInfoLib disk;
    disk.index = index;
    disk.volumeName = volume;
    disk.bootable = bootable;
    return disk;
}

SVMInfoLib RestoredVm() {
    SVMInfoLib vm;
    vm.vmName = "web1";
    vm.compartmentId = "jdoe";
    vm.shape = "oc3";
    vm.disks = {Disk(2, "/Compute-acme/jdoe/data", false), Disk(1, "/Compute-acme/jdoe/boot", true)};
    vm.sshKeys = {"/Compute-acme/jdoe/key"};
    SSecurityGroupInfoLib group;
    group.fullName = "/Compute-acme/default/default";
    vm.securityGroups = {group};
    SVNicInfoLib vnic;
    vnic.id = "/Compute-acme/jdoe/net";
    vnic.privateIp = "192.168.1.5";
    vm.vnics = {vnic};
    vm.enableRdp = true;
    vm.administratorPassword = "Secret1";
    return vm;
}

}  // namespace

TEST(ClassicInstanceBody, SecurityListsTakeEth0AndBootDiskIsTheBootableOneAtIndexOne) {
    JsonObject body;
    ASSERT_TRUE(InstanceBody(RestoredVm(), "/Compute-acme", body));
    EXPECT_EQ(Text(body),
              R"({"shape":"oc3","name":"/Compute-acme/jdoe/web1","label":"web1",)"
              R"("storage_attachments":[{"index":2,"volume":"/Compute-acme/jdoe/data"},)"
              R"({"index":1,"volume":"/Compute-acme/jdoe/boot"}],"boot_order":[1],)"
              R"("sshkeys":["/Compute-acme/jdoe/key"],)"
              R"("networking":{"eth0":{"seclists":["/Compute-acme/default/default"],"nat":"ippool:/oracle/public/ippool"},)"
              R"("eth1":{"ipnetwork":"/Compute-acme/jdoe/net","ip":"192.168.1.5"}},)"
              R"("attributes":{"userdata":{"enable_rdp":true,"administrator_password":"Secret1"}}})");
}

TEST(ClassicInstanceBody, WithoutSecurityListsIpNetworksStartAtEth0AndNoUserdataMeansNoAttributes) {
    SVMInfoLib vm = RestoredVm();
    vm.securityGroups.clear();
    vm.sshKeys.clear();
    vm.enableRdp = false;
    vm.administratorPassword.clear();
    vm.vnics[0].privateIp.clear();
    JsonObject body;
    ASSERT_TRUE(InstanceBody(vm, "/Compute-acme", body));
    const std::string text = Text(body);
    EXPECT_NE(text.find(R"("networking":{"eth0":{"ipnetwork":"/Compute-acme/jdoe/net"}})"), std::string::npos) << text;
    EXPECT_EQ(text.find("attributes"), std::string::npos) << text;
    EXPECT_EQ(text.find("sshkeys"), std::string::npos) << text;
}

TEST(ClassicInstanceBody, NoBootableDiskAtIndexOneCannotBeLaunched) {
    SVMInfoLib vm = RestoredVm();
    vm.disks = {Disk(2, "/Compute-acme/jdoe/boot", true), Disk(1, "/Compute-acme/jdoe/data", false)};
    JsonObject body;
    EXPECT_FALSE(InstanceBody(vm, "/Compute-acme", body));
}

TEST(ClassicRequestBodies, VolumesSnapshotsAttachmentsAndRewritesExactBytes) {
    SDiskInfoLib volume;
    volume.name = "/Compute-acme/jdoe/vol1";
    volume.sizeBytes = (10ULL << 30) + 1;  // the odd byte is dropped
    volume.description = "data";
    SSnapshotInfoLib snapshot;
    snapshot.name = "/Compute-acme/jdoe/vol1/snap1";
    snapshot.sizeBytes = 20ULL << 30;
    SVMInfoLib imageVm;
    imageVm.vmName = "old";
    imageVm.shape = "oc3";
    imageVm.imageId = "OL_7.2";
    const struct {
        JsonObject body;
        const char* expected;
    } cases[] = {
        {CreateVolumeBody(volume, "/Compute-acme/jdoe/vol1"),
         R"({"size":"10G","properties":["/oracle/public/storage/default"],"name":"/Compute-acme/jdoe/vol1","description":"data"})"},
        {SnapshotBody("/Compute-acme/jdoe/vol1", "nightly", "snap1"),
         R"({"volume":"/Compute-acme/jdoe/vol1","description":"nightly",)"
         R"("property":"/oracle/private/storage/snapshot/collocated","name":"/Compute-acme/jdoe/vol1/snap1"})"},
        {VolumeFromSnapshotBody("/Compute-acme/jdoe/copy", snapshot, ""),
         R"({"name":"/Compute-acme/jdoe/copy","description":"volume to read data and backup for Norquell",)"
         R"("snapshot":"/Compute-acme/jdoe/vol1/snap1","size":"20G","properties":["/oracle/public/storage/default"]})"},
        {AttachmentBody(3, "/Compute-acme/jdoe/vol1", "/Compute-acme/jdoe/web1/u-1"),
         R"({"index":3,"storage_volume_name":"/Compute-acme/jdoe/vol1","instance_name":"/Compute-acme/jdoe/web1/u-1"})"},
        {RebootBody("/Compute-acme/jdoe/web1/u-1"), R"({"hard":true,"instance":"/Compute-acme/jdoe/web1/u-1"})"},
        {PowerStateBody("shutdown"), R"({"desired_state":"shutdown"})"},
        {BootableVolumeBody(volume),
         R"({"bootable":true,"name":"/Compute-acme/jdoe/vol1","properties":["oracle/public/storage/default"],)"
         R"("size":"10G","description":"data"})"},
        {ClearedDescriptionVolumeBody(volume),
         R"({"description":"","bootable":false,"name":"/Compute-acme/jdoe/vol1",)"
         R"("properties":["/oracle/public/storage/default"],"size":"10G"})"},
        {DeployVMBody(imageVm, "/Compute-acme/jdoe"),
         R"({"instances":[{"shape":"oc3","imagelist":"/oracle/public/OL_7.2","name":"/Compute-acme/jdoe/old","label":"old"}]})"},
    };
    for (const auto& c : cases) EXPECT_EQ(Text(c.body), c.expected);
}

TEST(ClassicRequestBodies, OrchestrationIsNamedAfterTheInstanceAndCarriesItsTemplate) {
    JsonObject instance;
    instance["name"] = "/Compute-acme/jdoe/web1";
    EXPECT_EQ(Text(OrchestrationBody(instance, "web1", 1700000000, 42)),
              R"({"desired_state":"active","objects":[{"template":{"name":"/Compute-acme/jdoe/web1"},"label":"web1",)"
              R"("type":"Instance"}],"name":"/Compute-acme/jdoe/web1_master",)"
              R"("description":"Norquell restored orchestration created at 1700000000 for job id 42"})");
}

TEST(ClassicConnectionRules, LoginBodyCookieAndUrls) {
    EXPECT_EQ(COracleCloudClassicConnection::BuildLoginBody("/Compute-acme/jdoe", "pw"),
              R"({"password": "pw", "user": "/Compute-acme/jdoe"})");
    // Only what JSON cannot carry as it is gets escaped.
    EXPECT_EQ(COracleCloudClassicConnection::BuildLoginBody("u", "a\"b\\c"), R"({"password": "a\"b\\c", "user": "u"})");

    EXPECT_EQ(COracleCloudClassicConnection::CookieFromSetCookieLine("Set-Cookie: nimbula=abc; Path=/\r\n"),
              " nimbula=abc; Path=/");
    EXPECT_EQ(COracleCloudClassicConnection::CookieFromSetCookieLine("Set-Cookie:"), "");

    COracleCloudParser parser;
    COracleCloudClassicConnection connection(&parser);
    const struct {
        const char* server;
        const char* url;
        const char* expected;
    } urls[] = {
        {"api.example.com", "instance/", "https://api.example.com/instance/"},
        {"HTTPS://api.example.com/", "instance/", "HTTPS://api.example.com/instance/"},
        {"api.example.com", "https://paas.example.com/job/7", "https://paas.example.com/job/7"},
        {"api.example.com", "http://paas.example.com/job/7", "http://paas.example.com/job/7"},
    };
    for (const auto& u : urls) {
        std::string full;
        connection.computeUrl(u.server, u.url, full);
        EXPECT_EQ(full, u.expected) << u.server << " + " << u.url;
    }
}

TEST(ClassicConnectionRules, PaaSConnectsWithoutARequestAndOtherServiceTypesAreRefused) {
    COracleCloudParser parser;
    COracleCloudClassicConnection paas(&parser);
    ASSERT_TRUE(paas.connect("paas.example.com", "acme/jdoe", "pw", ORACLE_SERVICE_PAAS_JAVA));
    EXPECT_EQ(paas.getIdentityDomain(), "acme");
    EXPECT_FALSE(paas.isAwaitingSessionCookie());

    COracleCloudClassicConnection other(&parser);
    EXPECT_FALSE(other.connect("api.example.com", "acme/jdoe", "pw", OCI_SERVICE_CORE));
    EXPECT_EQ(other.GetLastError(), "Received unsupported service type [3]");
    std::string response;
    EXPECT_FALSE(other.get("instance/", response, true, true));
}

TEST(ClassicQueryRules, FreeSlotAndWalkDepth) {
    COracleCloudParser parser;
    COracleCloudClassicConnection connection(&parser);
    COracleCloudClassicQueries queries(&connection, &parser);
    SVMInfoLib vm;
    for (int index : {1, 2, 4}) vm.disks.push_back(Disk(index, "v", false));
    EXPECT_EQ(queries.GetAvailableIndexPos(vm), 3);
    vm.disks.clear();
    for (int index = 1; index <= 10; ++index) vm.disks.push_back(Disk(index, "v", false));
    EXPECT_EQ(queries.GetAvailableIndexPos(vm), 0);

    // A walk needs the root and at least one level below it; nothing is sent.
    std::vector<std::string> names;
    std::vector<SVMInfoLib> vms;
    EXPECT_FALSE(queries.GetResourceNamesFromURITraversal("instance", 1, names));
    EXPECT_EQ(queries.GetLastError(), "[1] is not a valid number of levels to traverse");
    EXPECT_FALSE(queries.GetListFromURITraversal("instance", 0, vms));
    EXPECT_EQ(queries.GetLastError(), "[0] is not a valid number of levels to traverse");
}
