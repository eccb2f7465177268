// OCI documents read through the generic walkers of the base class (as the OCI
// backend does, through a base pointer), for the mapping rules the emulator's
// documents do not exercise: odd numbers, deprecated size fields, attachment
// types, and answers that are not what was asked for. The ordinary documents
// of every service are read end to end against the emulator.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "parser/OracleCloudInfrastructureParser.h"

using namespace OracleCloudSDKWrapper;
using ocwtest::LogCapture;

namespace {

std::unique_ptr<COracleCloudParser> MakeParser() {
    return std::unique_ptr<COracleCloudParser>(new COracleCloudInfrastructureParser());
}

template <class Record>
Record Parsed(const std::string& document) {
    Record record;
    EXPECT_TRUE(MakeParser()->ParseObject(document, record)) << document;
    return record;
}

}  // namespace

TEST(OciVm, ProcessorsAndMemoryComeFromTheShapeConfigWithoutWrappingAround) {
    struct Case {
        const char* shapeConfig;
        unsigned cpus;
        unsigned long long memoryMB;
    };
    const Case cases[] = {
        {R"({"ocpus": 1.5, "memoryInGBs": 16.5, "vcpus": 3})", 1, 16384},  // truncated, then GB to MB
        {R"({"ocpus": -2, "memoryInGBs": 1e300})", 0, ~0ULL},
        {R"({"ocpus": "4", "memoryInGBs": null})", 0, 0},
        {"null", 0, 0},  // a fixed shape: the shape rules are the queries' business
    };
    for (const Case& c : cases) {
        SVMInfoLib vm = Parsed<SVMInfoLib>(std::string(R"({"id": "i", "shape": "VM.Standard.E4.Flex", "shapeConfig": )") +
                                           c.shapeConfig + "}");
        EXPECT_EQ(vm.cpuCount, c.cpus) << c.shapeConfig;
        EXPECT_EQ(vm.memoryMB, c.memoryMB) << c.shapeConfig;
    }
}

TEST(OciVm, InstanceImageAndSubnetComeFromWhereTheServiceHasThemAndAnImageIsATemplate) {
    SVMInfoLib vm = Parsed<SVMInfoLib>(R"({"id": "ocid1.instance.oc1.iad.abc", "displayName": "web-1",
        "lifecycleState": "STOPPED", "subnetId": "ocid1.subnet.oc1.iad.s1", "region": "iad",
        "sourceDetails": {"sourceType": "image", "imageId": "ocid1.image.oc1.iad.img"}})");
    EXPECT_EQ(vm.guid + "|" + vm.fullName + "|" + vm.vmName + "|" + vm.state + "|" + vm.status + "|" + vm.region,
              "ocid1.instance.oc1.iad.abc|ocid1.instance.oc1.iad.abc|web-1|STOPPED|STOPPED|iad");
    EXPECT_EQ(vm.imageId, "ocid1.image.oc1.iad.img");
    ASSERT_EQ(vm.vnics.size(), 1u);
    EXPECT_EQ(vm.vnics[0].subnetId, "ocid1.subnet.oc1.iad.s1");
    EXPECT_FALSE(vm.isTemplate);
    EXPECT_EQ(Parsed<SVMInfoLib>(R"({"id": "i", "sourceDetails": {"sourceType": "bootVolume",
        "bootVolumeId": "ocid1.bootvolume.oc1.x"}})").imageId, "");
    EXPECT_TRUE(Parsed<SVMInfoLib>(R"({"id": "ocid1.image.oc1.phx.aaaa", "displayName": "Oracle-Linux-8.8"})").isTemplate);
}

TEST(OciDisk, SizeInMegabytesWinsOverGigabytes) {
    const std::pair<const char*, unsigned long long> cases[] = {
        {R"("sizeInMBs": 0, "sizeInGBs": 50)", 53687091200ULL},
        {R"("sizeInMBs": 51200, "sizeInGBs": 50)", 53687091200ULL},
        {R"("sizeInMBs": 51200)", 53687091200ULL},
        {R"("sizeInGBs": 1024)", 1099511627776ULL},
        {R"("sizeInMBs": 1024, "sizeInGBs": 50)", 1073741824ULL},  // the deprecated figure still wins
        {R"("sizeInGBs": null)", 0},
        {R"("sizeInMBs": -1, "sizeInGBs": 2)", 2147483648ULL},
        {R"("sizeInGBs": 18446744073709551615)", ~0ULL},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Parsed<SDiskInfoLib>(std::string(R"({"id": "ocid1.volume.oc1.phx.v1", )") + c.first + "}").sizeBytes,
                  c.second)
            << c.first;
    }
}

TEST(OciAttachment, OnlyAnAttachmentOfTypeIscsiCarriesTargetFields) {
    std::vector<SStorageAttachmentInfoLib> list;
    ASSERT_TRUE(MakeParser()->ParseList(R"([
      {"attachmentType": "iscsi", "id": "a1", "instanceId": "i1", "volumeId": "v1", "lifecycleState": "ATTACHED",
       "displayName": "att", "ipv4": "169.254.2.2", "iqn": "iqn.2015-12.com.oracleiaas:6f5e", "port": 3260},
      {"attachmentType": "paravirtualized", "id": "a2", "ipv4": "169.254.2.3", "iqn": "iqn.unexpected", "port": 3260},
      {"attachmentType": "ISCSI", "id": "a3", "ipv4": "10.0.0.1", "port": 3260}])",
                                        list));
    ASSERT_EQ(list.size(), 3u);
    const SStorageAttachmentInfoLib& a = list[0];
    EXPECT_EQ(a.attachmentId + "|" + a.volumeName + "|" + a.instanceName + "|" + a.state + "|" + a.name + "|" +
                  a.attachmentType,
              "a1|v1|i1|ATTACHED|att|iscsi");
    EXPECT_EQ(a.iscsiIpv4 + "|" + a.iscsiIqn + "|" + a.iscsiPort, "169.254.2.2|iqn.2015-12.com.oracleiaas:6f5e|3260");
    EXPECT_EQ(list[1].iscsiIpv4 + list[1].iscsiIqn + list[1].iscsiPort, "");
    EXPECT_EQ(list[2].iscsiIpv4, "") << "the type must match exactly";

    // A boot volume attachment names its boot volume.
    const char* boot = R"({"bootVolumeId": "ocid1.bootvolume.oc1.phx.b", "id": "x", "instanceId": "i1",
        "lifecycleState": "ATTACHED", "displayName": "Remote boot attachment for instance"})";
    const SStorageAttachmentInfoLib bootAttachment = Parsed<SStorageAttachmentInfoLib>(boot);
    EXPECT_EQ(bootAttachment.volumeName + "|" + bootAttachment.instanceName, "ocid1.bootvolume.oc1.phx.b|i1");
    EXPECT_EQ(Parsed<SBootVolumeAttachmentInfo>(boot).bootVolumeId, "ocid1.bootvolume.oc1.phx.b");
}

TEST(OciSnapshot, BackupsNameTheirVolumeAndKeepTheirTimeWithoutMilliseconds) {
    const SSnapshotInfoLib block = Parsed<SSnapshotInfoLib>(R"({"id": "ocid1.volumebackup.oc1.phx.b1",
        "displayName": "nightly", "lifecycleState": "AVAILABLE", "sizeInGBs": 50, "sizeInMBs": 51200,
        "timeCreated": "2020-01-02T03:04:05Z", "volumeId": "ocid1.volume.oc1.phx.v1"})");
    EXPECT_EQ(block.snapshotId + "|" + block.name + "|" + block.volumeName + "|" + block.description,
              "ocid1.volumebackup.oc1.phx.b1|ocid1.volumebackup.oc1.phx.b1|ocid1.volume.oc1.phx.v1|nightly");
    EXPECT_EQ(block.startTime, 1577934245);
    EXPECT_EQ(block.sizeBytes, 53687091200ULL);
    const SSnapshotInfoLib boot = Parsed<SSnapshotInfoLib>(R"({"id": "ocid1.bootvolumebackup.oc1.phx.b2",
        "bootVolumeId": "ocid1.bootvolume.oc1.phx.abyhq", "sizeInGBs": 47, "timeCreated": "2020-01-02T03:04:05.987Z"})");
    EXPECT_EQ(boot.volumeName, "ocid1.bootvolume.oc1.phx.abyhq");
    EXPECT_EQ(boot.startTime, 1577934245);
    EXPECT_EQ(boot.sizeBytes, 47ULL << 30) << "boot volume backups have no MB figure";
}

TEST(OciDatabase, DbSystemSeenAsAServiceInstanceAndTheBackupSettingsQuirk) {
    const char* dbSystem = R"({"availabilityDomain": "Uocm:PHX-AD-1", "compartmentId": "c1", "cpuCoreCount": 4,
        "databaseEdition": "ENTERPRISE_EDITION", "hostname": "dbhost", "id": "ocid1.dbsystem.oc1.phx.d1",
        "lifecycleState": "AVAILABLE", "listenerPort": 1521, "nodeCount": 2, "subnetId": "s",
        "scanIpIds": ["p1", "p2", 5], "timeCreated": "2023-03-01T12:00:00.000Z", "version": "19.18.0.0.0"})";
    const SOracleDBInstanceInfoLib i = Parsed<SOracleDBInstanceInfoLib>(dbSystem);
    EXPECT_EQ(i.serviceName + "|" + i.databaseId + "|" + i.status + "|" + i.version + "|" + i.edition + "|" +
                  i.cloudStorageContainer + "|" + i.sid + "|" + i.computeSiteName,
              "dbhost|ocid1.dbsystem.oc1.phx.d1|AVAILABLE|19.18.0.0.0|ENTERPRISE_EDITION|c1|s|Uocm:PHX-AD-1");
    EXPECT_EQ(i.numNodes, 2);
    EXPECT_EQ(i.numIpReservations, 4) << "the core count";
    EXPECT_EQ(i.creationTime, 1677672000);
    const SOCIDbSystemInfoLib s = Parsed<SOCIDbSystemInfoLib>(dbSystem);
    EXPECT_EQ(s.scanIpIds, (std::vector<std::string>{"p1", "p2"}));
    EXPECT_EQ(s.timeCreated, "2023-03-01T12:00:00.000Z") << "kept as text here";

    // The nested settings object is read for a member of its own name, which the
    // service does not send: the flag stays off, as the agent expects.
    EXPECT_FALSE(Parsed<SOCIDatabaseInfoLib>(R"({"id": "d", "dbBackupConfig": {"autoBackupEnabled": true}})")
                     .dbBackupConfig.autoBackupEnabled);
}

TEST(OciSearch, QueryResultPagesGiveNetworksAndSubnetsOrFailWithOneLine) {
    auto parser = MakeParser();
    std::vector<SNetworkInfoLib> networks;
    ASSERT_TRUE(parser->ParseQueryResult(R"({"items": [
      {"resourceType": "Vcn", "identifier": "ocid1.vcn.oc1.phx.vcn1", "displayName": "prod-vcn", "availabilityDomain": null},
      "noise", {"resourceType": "Vcn", "identifier": "ocid1.vcn.oc1.phx.vcn2", "displayName": "test-vcn"}]})",
                                         networks));
    ASSERT_EQ(networks.size(), 2u);
    EXPECT_EQ(networks[0].name + "|" + networks[0].id, "prod-vcn|ocid1.vcn.oc1.phx.vcn1");
    std::vector<SSubnetInfoLib> subnets;
    ASSERT_TRUE(parser->ParseQueryResult(R"({"items": [{"resourceType": "Subnet", "identifier": "s1",
      "displayName": "app", "availabilityDomain": "Uocm:PHX-AD-2", "compartmentId": "c1"}]})",
                                         subnets));
    ASSERT_EQ(subnets.size(), 1u);
    EXPECT_EQ(subnets[0].id + "|" + subnets[0].availabilityDomain + "|" + subnets[0].compartmentId,
              "s1|Uocm:PHX-AD-2|") << "a search item is not a subnet document";
    EXPECT_TRUE(parser->ParseQueryResult(R"({"items": []})", subnets)) << "an empty page is a page";
    for (const char* body : {R"([{"identifier": "x"}])", R"({"items": {}})"}) {
        LogCapture log;
        EXPECT_FALSE(parser->ParseQueryResult(body, subnets)) << body;
        ASSERT_EQ(log.errors().size(), 1u) << body;
        EXPECT_EQ(log.errors()[0].rfind("Exception parsing json list [items] - ", 0), 0u) << log.errors()[0];
    }
    EXPECT_EQ(subnets.size(), 1u);
}
