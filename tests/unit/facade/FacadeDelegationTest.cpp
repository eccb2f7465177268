// How the facade forwards to its backend: which arguments reach the backend,
// when the backend's error text becomes the facade's, and the few operations
// that add logic of their own (sorting, argument checks, DeleteVM, DeployVM,
// the SSH key lookup before a database creation).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FacadeTestBackends.h"

using namespace facadetest;
using ::testing::ElementsAre;

TEST(FacadeConnect, FailureAtTheConnectionLeavesTheConnectionsErrorText) {
    FakeFacade f;
    f.connection->connectSucceeds = false;
    EXPECT_FALSE(f.facade.Connect("ocid1.tenancy.oc1..t", "user|fp|key.pem", "secret", OCI_SERVICE_CORE));
    EXPECT_EQ(f.facade.GetLastError(), "login refused by the test");
    EXPECT_TRUE(f.queries->calls.empty()) << "no connection check after a failed connect";
}

TEST(FacadeConnect, SuccessfulConnectRunsTheCheckAndReportsItsError) {
    FakeFacade f;
    f.queries->failing = {"CheckConnection"};
    EXPECT_FALSE(f.facade.Connect("ocid1.tenancy.oc1..t", "user|fp|key.pem", "", OCI_SERVICE_IDENTITY));
    EXPECT_EQ(f.facade.GetLastError(), "CheckConnection failed in the backend");
    EXPECT_THAT(f.connection->calls, ElementsAre(R"(connect("ocid1.tenancy.oc1..t","user|fp|key.pem",6))"));

    f.queries->failing.clear();
    EXPECT_TRUE(f.facade.Connect("ocid1.tenancy.oc1..t", "user|fp|key.pem", "", OCI_SERVICE_IDENTITY));
}

TEST(FacadeDelegation, BackendFailureTextBecomesTheFacadesLastError) {
    FakeFacade f;
    f.facade.setLastError("older text");
    f.queries->failing = {"GetVMInfo"};
    SVMInfoLib vm;
    EXPECT_FALSE(f.facade.GetVMInfo("web01", "ocid1.instance.oc1..i", vm, 2, "us-ashburn-1"));
    EXPECT_EQ(f.facade.GetLastError(), "GetVMInfo failed in the backend");

    f.operations->failing = {"LaunchInstance"};
    EXPECT_FALSE(f.facade.LaunchInstance(vm));
    EXPECT_EQ(f.facade.GetLastError(), "LaunchInstance failed in the backend");
}

TEST(FacadeDelegation, SuccessKeepsThePreviousErrorText) {
    FakeFacade f;
    f.facade.setLastError("older text");
    SVMInfoLib vm;
    EXPECT_TRUE(f.facade.GetVMInfo("web01", "id", vm, 0, ""));
    EXPECT_EQ(f.facade.GetLastError(), "older text");
}

TEST(FacadeDelegation, ArgumentsArePassedOnWithTheDocumentedSubstitutions) {
    FakeFacade f;
    SHostInfoLib host;
    std::vector<SRegionInfoLib> regions;
    std::vector<SContainerInfoLib> containers;
    SContainerInfoLib container;
    std::vector<SAvailabilityDomainInfoLib> domains;
    SStorageAttachmentInfoLib attachment;
    bool exists = false;

    EXPECT_TRUE(f.facade.GetHostInfo("hostId", "hostName", "dropped", host, 5, "r1"));
    EXPECT_TRUE(f.facade.GetRegionList(regions));
    EXPECT_TRUE(f.facade.GetSubscribedRegionList(regions));
    EXPECT_TRUE(f.facade.GetContainerInfoList(containers, "parent", "r1"));
    EXPECT_TRUE(f.facade.GetContainerInfo("cid", "cname", container, 77, "r1"));
    EXPECT_TRUE(f.facade.GetAvailabilityDomainList(domains, "comp", "r1"));
    EXPECT_TRUE(f.facade.GetBootVolumeAttachmentForInstance("AD-1", "comp", "inst", attachment));
    EXPECT_TRUE(f.facade.CheckIfDiskExists("disk", exists));
    EXPECT_TRUE(exists);

    EXPECT_THAT(f.queries->calls,
                ElementsAre(R"(GetHostInfo("hostId","hostName",5,"r1"))", "GetRegionInfoList(0)",
                            "GetSubscribedRegionInfoList(0)", R"(GetContainerInfoList("parent",0,"r1"))",
                            R"(GetContainerInfo("cid","cname",0,"r1"))", R"(GetAvailabilityDomainList(0,"comp","r1"))",
                            R"(GetBootVolumeAttachmentForInstance("AD-1","comp","inst",""))",
                            R"(CheckIfDiskExists("disk",""))"));
}

TEST(FacadeDelegation, EmptyInstanceOrVolumeTextIsRefusedBeforeTheBackend) {
    FakeFacade f;
    f.facade.setLastError("older text");
    LogCapture log;
    EXPECT_FALSE(f.facade.RebootInstance(""));
    EXPECT_FALSE(f.facade.PowerOnInstance(""));
    EXPECT_FALSE(f.facade.PowerOffInstance(""));
    EXPECT_FALSE(f.facade.DeleteVolumeSnapshot(""));
    EXPECT_FALSE(f.facade.DeleteVolume(""));
    EXPECT_TRUE(f.operations->calls.empty());
    EXPECT_EQ(f.facade.GetLastError(), "older text");
    EXPECT_THAT(log.errors, ElementsAre("Cannot reboot instance as URI was empty",
                                        "Cannot power on instance as URI was empty",
                                        "Cannot power off instance as URI was empty",
                                        "Cannot delete snapshot as snapshot URI is empty",
                                        "Cannot delete volume as volume URI is empty"));
    ASSERT_FALSE(log.lines.empty());
    EXPECT_NE(log.lines[0].find("COracleCloudWrapper::RebootInstance"), std::string::npos)
        << "the facade's own signature prefixes its lines: " << log.lines[0];

    EXPECT_TRUE(f.facade.RebootInstance("/Compute-acme/jdoe/vm1"));
    EXPECT_THAT(f.operations->calls, ElementsAre(R"(RebootInstance("/Compute-acme/jdoe/vm1"))"));
}

TEST(FacadeSortedGetters, ListsAreSortedWithoutRegardToCase) {
    FakeFacade f;
    f.queries->keyPairsToReturn = {{"zeta", "/C/u/zeta", ""}, {"Alpha", "/C/u/Alpha", ""}, {"beta", "/C/u/beta", ""}};
    f.queries->groupsToReturn = {{"x", "/C/u/web"}, {"y", "/C/u/DB"}, {"z", "/C/u/admin"}};
    SNetworkInfoLib n1, n2, n3;
    n1.name = "vcn-Prod";
    n2.name = "VCN-dev";
    n3.name = "backup";
    f.queries->networksToReturn = {n1, n2, n3};

    std::vector<SKeyPairInfoLib> keys;
    std::vector<SSecurityGroupInfoLib> groups;
    std::vector<SNetworkInfoLib> networks;
    ASSERT_TRUE(f.facade.GetKeyPairList(keys));
    ASSERT_TRUE(f.facade.GetSecurityGroupList(groups, "ignored"));
    ASSERT_TRUE(f.facade.GetNetworkList(networks, "comp", "AD-1", "r1"));

    ASSERT_EQ(keys.size(), 3u);
    EXPECT_EQ(keys[0].name, "Alpha");
    EXPECT_EQ(keys[1].name, "beta");
    EXPECT_EQ(keys[2].name, "zeta");
    ASSERT_EQ(groups.size(), 3u);
    EXPECT_EQ(groups[0].fullName, "/C/u/admin");
    EXPECT_EQ(groups[1].fullName, "/C/u/DB");
    EXPECT_EQ(groups[2].fullName, "/C/u/web");
    ASSERT_EQ(networks.size(), 3u);
    EXPECT_EQ(networks[0].name, "backup");
    EXPECT_EQ(networks[1].name, "VCN-dev");
    EXPECT_EQ(networks[2].name, "vcn-Prod");
    EXPECT_EQ(f.queries->calls.back(), R"(GetNetworkList("comp","AD-1","r1"))");
}

TEST(FacadeSortedGetters, FailureDoesNotTakeOverTheBackendsError) {
    FakeFacade f;
    f.facade.setLastError("older text");
    f.queries->failing = {"GetKeyPairList", "GetSecurityGroupList", "GetNetworkList"};
    std::vector<SKeyPairInfoLib> keys;
    std::vector<SSecurityGroupInfoLib> groups;
    std::vector<SNetworkInfoLib> networks;
    EXPECT_FALSE(f.facade.GetKeyPairList(keys));
    EXPECT_FALSE(f.facade.GetSecurityGroupList(groups, ""));
    EXPECT_FALSE(f.facade.GetNetworkList(networks, "", "", ""));
    EXPECT_EQ(f.facade.GetLastError(), "older text");
}

TEST(FacadeDeleteVM, ReadsTheVMThenAlwaysPassesTrueForTheFirstOption) {
    FakeFacade f;
    f.queries->vmToReturn.fullName = "ocid1.instance.oc1..full";
    EXPECT_TRUE(f.facade.DeleteVM("web01", "ocid1.instance.oc1..i", false, false));
    EXPECT_TRUE(f.facade.DeleteVM("web01", "ocid1.instance.oc1..i", false, true));
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetVMInfo("web01","ocid1.instance.oc1..i",16,""))",
                                              R"(GetVMInfo("web01","ocid1.instance.oc1..i",16,""))"));
    EXPECT_THAT(f.operations->calls, ElementsAre(R"(DeleteVM("web01","ocid1.instance.oc1..full",true,false))",
                                                 R"(DeleteVM("web01","ocid1.instance.oc1..full",true,true))"));
}

TEST(FacadeDeleteVM, UnreadableVMIsNotDeleted) {
    FakeFacade f;
    f.queries->failing = {"GetVMInfo"};
    EXPECT_FALSE(f.facade.DeleteVM("web01", "id", true, true));
    EXPECT_TRUE(f.operations->calls.empty());
    EXPECT_EQ(f.facade.GetLastError(), "GetVMInfo failed in the backend");
}

TEST(FacadeDeployVM, ReadsTemplateDeploysAndReadsTheNewVMBack) {
    FakeFacade f;
    SVMInfoLib vm;
    vm.vmName = "restored";
    EXPECT_TRUE(f.facade.DeployVM(vm, "ocid1.image.oc1..img", "r1"));
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetTemplateInfo("ocid1.image.oc1..img","r1"))",
                                              R"(GetVMInfo("restored","deployed-guid",16,"r1"))"));
    EXPECT_THAT(f.operations->calls, ElementsAre(R"(DeployVM("restored","ocid1.image.oc1..img"))"));

    FakeFacade g;
    g.queries->failing = {"GetTemplateInfo"};
    EXPECT_FALSE(g.facade.DeployVM(vm, "missing", ""));
    EXPECT_TRUE(g.operations->calls.empty());
    EXPECT_EQ(g.facade.GetLastError(), "GetTemplateInfo failed in the backend");
}

TEST(FacadeCreateDBInstance, LooksUpTheNamedSshKeyFirst) {
    FakeFacade f;
    SOracleDBInstanceInfoLib db;
    db.serviceName = "orcl";
    db.sshKeyName = "ops-key";
    EXPECT_TRUE(f.facade.CreateDBInstance(db));
    EXPECT_EQ(db.sshPublicKey, "ssh-rsa AAAAB3Nza demo@host");
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetSSHKeyByName("ops-key"))"));
    EXPECT_THAT(f.operations->calls, ElementsAre(R"(CreateDBInstance("orcl","ssh-rsa AAAAB3Nza demo@host"))"));
}

TEST(FacadeCreateDBInstance, GivenPublicKeyIsUsedAsItIs) {
    FakeFacade f;
    SOracleDBInstanceInfoLib db;
    db.serviceName = "orcl";
    db.sshKeyName = "ops-key";
    db.sshPublicKey = "ssh-rsa given";
    EXPECT_TRUE(f.facade.CreateDBInstance(db));
    EXPECT_TRUE(f.queries->calls.empty());
    EXPECT_THAT(f.operations->calls, ElementsAre(R"(CreateDBInstance("orcl","ssh-rsa given"))"));
}

TEST(FacadeCreateDBInstance, MissingSshKeyStopsBeforeCreationWithItsOwnMessage) {
    FakeFacade f;
    f.queries->failing = {"GetSSHKeyByName"};
    SOracleDBInstanceInfoLib db;
    db.sshKeyName = "gone";
    EXPECT_FALSE(f.facade.CreateDBInstance(db));
    EXPECT_TRUE(f.operations->calls.empty());
    EXPECT_EQ(f.facade.GetLastError(), "Failed to find SSH key with name gone. Error [GetSSHKeyByName failed in the backend]");
}

TEST(FacadeDelegation, BothBackupFormsReachTheirOwnOverload) {
    FakeFacade f;
    SOracleDBInstanceInfoLib paas;
    paas.serviceName = "orcl";
    SOCIDatabaseInfoLib oci;
    oci.id = "ocid1.database.oc1..d";
    SPaaSBackupRestoreOptionsLib options;
    std::string jobUri, jobInfo, job;
    EXPECT_TRUE(f.facade.BackupDBInstance(paas, options, jobUri, jobInfo));
    EXPECT_TRUE(f.facade.BackupDBInstance(oci, options, job));
    EXPECT_EQ(jobUri, "paas/job/1");
    EXPECT_EQ(job, "ocid1.dbbackup.oc1..b");
    EXPECT_THAT(f.operations->calls,
                ElementsAre(R"(BackupDBInstance/paas("orcl"))", R"(BackupDBInstance/oci("ocid1.database.oc1..d"))"));
}

TEST(FacadeSettings, OperationTimeoutNeedsAnOperationsObjectAndIgnoresItsAnswer) {
    FakeFacade f;
    EXPECT_TRUE(f.facade.SetOperationTimeout(60));
    EXPECT_THAT(f.operations->calls, ElementsAre("SetOperationTimeout(60)"));

    TestableWrapper bare(ORACLE_CLOUD_CLASSIC, nullptr, nullptr, nullptr, nullptr);
    EXPECT_FALSE(bare.SetOperationTimeout(60));
    EXPECT_FALSE(bare.SetWebProxy("proxy:3128", "", ""));
    EXPECT_EQ(bare.GetDefaultRegion(), "");
}

TEST(FacadeSettings, ProxyAndRegionComeFromTheConnection) {
    FakeFacade f;
    f.connection->region = "eu-frankfurt-1";
    EXPECT_TRUE(f.facade.SetWebProxy("proxy.example:3128", "puser", "ppass"));
    EXPECT_EQ(f.facade.GetDefaultRegion(), "eu-frankfurt-1");
}
