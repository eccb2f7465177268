// A Classic inventory through the facade against the emulator: lists found
// by walking the directory tree, one instance by short and by full name with
// its disks, the host and data-centre views, the PaaS lists and job states,
// and what an empty account or a damaged answer does to a walk.
#include <gtest/gtest.h>

#include <httplib.h>

#include <algorithm>

#include "classic/OracleCloudClassicQueries.h"
#include "classic/OracleCloudClassicQueriesEngine.h"
#include "EmulatorFixture.h"
#include "LogCapture.h"
#include "parser/OracleCloudParser.h"
#include "transport/OracleCloudClassicConnection.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

class ClassicInventory : public EmulatorTest {
protected:
    static std::vector<std::string> Names(const std::vector<SVMInfoLib>& vms) {
        std::vector<std::string> names;
        for (const SVMInfoLib& vm : vms) names.push_back(vm.vmName);
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(ClassicInventory, ListsAreFoundByWalkingDownToTheUserContainers) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    ClearRequestLog();
    std::vector<SVMInfoLib> vms;
    ASSERT_TRUE(facade->GetVMInfoList(vms, 0, "")) << facade->GetLastError();
    EXPECT_EQ(Names(vms), (std::vector<std::string>{"db1", "web1", "web2"}));
    // Root and domain are directory listings; the user container is read in detail.
    const std::vector<std::string> targets{"/instance/", "/instance/Compute-" + info().identityDomain + "/",
                                           "/instance" + ClassicUserPath() + "/"};
    ASSERT_EQ(Requests().size(), targets.size());
    for (size_t i = 0; i < targets.size(); ++i) EXPECT_EQ(Requests()[i].target, targets[i]);

    std::vector<SKeyPairInfoLib> keys;
    ASSERT_TRUE(facade->GetKeyPairList(keys)) << facade->GetLastError();
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].name, info().classicUser + "-key");
    EXPECT_NE(keys[0].keyText.find("ssh-rsa "), std::string::npos);
    std::vector<SSecurityGroupInfoLib> groups;
    ASSERT_TRUE(facade->GetSecurityGroupList(groups, "")) << facade->GetLastError();
    EXPECT_EQ(groups.back().fullName, ClassicUserPath() + "/web");
    std::vector<SInstanceShapeInfoLib> shapes;
    ASSERT_TRUE(facade->GetInstanceShapeList(shapes, "", "")) << facade->GetLastError();
    EXPECT_EQ(shapes.size(), 8u);
    std::vector<SNetworkInfoLib> networks;
    ASSERT_TRUE(facade->GetNetworkList(networks, "", "", "")) << facade->GetLastError();
    ASSERT_EQ(networks.size(), 1u);
    EXPECT_EQ(networks[0].ipAddressPrefix, "192.168.10.0/24");
}

TEST_F(ClassicInventory, InstanceByShortOrFullNameComesWithItsVolumesInTheirSlots) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    SVMInfoLib byShort;
    ASSERT_TRUE(facade->GetVMInfo("web1", "", byShort, 16, "")) << facade->GetLastError();
    SVMInfoLib byFull;
    ASSERT_TRUE(facade->GetVMInfo(byShort.fullName, "", byFull, 16, "")) << facade->GetLastError();
    EXPECT_EQ(byFull.fullName, byShort.fullName);
    EXPECT_EQ(byShort.fullName.rfind(ClassicUserPath() + "/web1/", 0), 0u) << byShort.fullName;
    EXPECT_EQ(byShort.compartmentId, info().classicUser);
    EXPECT_EQ(byShort.state, "running");

    for (const SVMInfoLib* vm : {&byShort, &byFull}) {
        ASSERT_EQ(vm->disks.size(), 2u);
        std::vector<SDiskInfoLib> disks = vm->disks;
        std::sort(disks.begin(), disks.end(), [](const SDiskInfoLib& a, const SDiskInfoLib& b) { return a.index < b.index; });
        EXPECT_EQ(disks[0].name, ClassicUserPath() + "/web1-boot");
        EXPECT_EQ(disks[0].index, 1);
        EXPECT_TRUE(disks[0].bootable);
        EXPECT_EQ(disks[0].sizeBytes, 20ULL << 30);
        EXPECT_EQ(disks[1].volumeName, ClassicUserPath() + "/web1-data");
        EXPECT_EQ(disks[1].index, 2);
        EXPECT_FALSE(disks[1].bootable);
        EXPECT_EQ(disks[1].sizeBytes, 50ULL << 30);
        ASSERT_EQ(disks[1].attachments.size(), 1u);
        EXPECT_EQ(disks[1].attachments[0].instanceName, byShort.fullName);
    }
    SVMInfoLib missing;
    EXPECT_FALSE(facade->GetVMInfo("web9", "", missing, 16, ""));
    EXPECT_EQ(facade->GetLastError(), "Instance [web9] was not found");
}

TEST_F(ClassicInventory, HostIsTheUserContainerWithItsInstancesAndNetworksInOneSite) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    std::vector<SHostInfoLib> hosts;
    ASSERT_TRUE(facade->GetHostInfoList(hosts, "", 0, "")) << facade->GetLastError();
    ASSERT_EQ(hosts.size(), 1u);
    EXPECT_EQ(hosts[0].hostId, ClassicUserPath());
    EXPECT_EQ(hosts[0].hostName, info().classicUser);
    ASSERT_TRUE(facade->FillHostInfoListDetails(hosts, (1ULL << 29) | (1ULL << 26), "")) << facade->GetLastError();
    EXPECT_EQ(Names(hosts[0].vms), (std::vector<std::string>{"db1", "web1", "web2"}));
    ASSERT_EQ(hosts[0].networks.size(), 1u);

    std::vector<SDataCenterInfoLib> sites;
    ASSERT_TRUE(facade->GetDCInfoList(sites, 0, 0, "")) << facade->GetLastError();
    ASSERT_EQ(sites.size(), 1u);
    EXPECT_EQ(sites[0].name, "Compute-" + info().identityDomain);
}

TEST_F(ClassicInventory, EmptyAccountListsNothingButAnEmptyDirectoryOrADamagedAnswerFailsTheWalk) {
    ResetEmulator("empty");
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    std::vector<SVMInfoLib> vms;
    ASSERT_TRUE(facade->GetVMInfoList(vms, 0, "")) << facade->GetLastError();
    EXPECT_TRUE(vms.empty());

    // Below the user container there is nothing: as a branch of a name walk it
    // is left out, in an object walk it ends the walk.
    COracleCloudParser parser;
    COracleCloudClassicConnection connection(&parser);
    ASSERT_TRUE(connection.connect(info().classicEndpoint, ClassicUserPath(), info().classicPassword,
                                   ORACLE_SERVICE_COMPUTE));
    COracleCloudClassicQueries queries(&connection, &parser);
    std::vector<std::string> names;
    EXPECT_TRUE(queries.GetResourceNamesFromURITraversal("instance", 3, names));
    EXPECT_TRUE(names.empty());
    EXPECT_FALSE(queries.GetListFromURITraversal("instance", 4, vms));
    EXPECT_EQ(queries.GetLastError(), "No names are listed under [instance/Compute-" + info().identityDomain + "/" +
                                          info().classicUser + "/]");

    ResetEmulator("demo");
    ocwemu::FaultRule cut;
    cut.method = "GET";
    cut.pathPrefix = "/instance" + ClassicUserPath() + "/";
    cut.action = "truncate";
    cut.times = 1;
    emu().faults().add(cut);
    EXPECT_FALSE(facade->GetVMInfoList(vms, 0, ""));
    EXPECT_TRUE(vms.empty());
}

TEST_F(ClassicInventory, PaaSListsKeysAndJobStatesReadThroughBasicCredentials) {
    auto facade = ConnectPaaSFacade();
    ASSERT_TRUE(facade);
    std::vector<SOracleDBInstanceInfoLib> databases;
    ASSERT_TRUE(facade->GetDBInstanceList(databases)) << facade->GetLastError();
    ASSERT_FALSE(databases.empty());
    SOracleDBInstanceInfoLib database;
    ASSERT_TRUE(facade->GetDBInstanceInfo(databases[0].serviceName, database)) << facade->GetLastError();
    EXPECT_EQ(database.serviceName, databases[0].serviceName);
    std::vector<SOracleDBComputeNodeLib> nodes;
    ASSERT_TRUE(facade->GetComputeNodeList(database.serviceName, nodes)) << facade->GetLastError();
    EXPECT_FALSE(nodes.empty());
    std::vector<SOracleSSHKeyLib> keys;
    ASSERT_TRUE(facade->GetSSHKeysList(keys)) << facade->GetLastError();
    std::vector<SJavaInstanceInfoLib> java;
    ASSERT_TRUE(facade->GetJavaInstanceList(java)) << facade->GetLastError();
    EXPECT_FALSE(java.empty());
    std::vector<SMySQLInstanceInfoLib> mysql;
    ASSERT_TRUE(facade->GetMySQLInstanceList(mysql)) << facade->GetLastError();
    EXPECT_FALSE(mysql.empty());

    // A job as the service names it: an absolute URL, polled through the same facade.
    const std::string dbJob = PaaSPost("/paas/service/dbcs/api/v1.1/instances/" + info().identityDomain + "/" +
                                       database.serviceName + "/backups", "{}");
    ASSERT_EQ(dbJob.rfind("https://", 0), 0u) << dbJob;
    SOracleJobInfoLib dbState;
    ASSERT_TRUE(facade->QueryBackupRestoreJobStatus(dbJob, dbState)) << facade->GetLastError();
    EXPECT_FALSE(dbState.jobStatus.empty());
    const std::string javaJob = PaaSPost("/paas/api/v1.1/instancemgmt/" + info().identityDomain +
                                         "/services/jaas/instances/" + java[0].serviceName + "/backups", "{}");
    SJavaMySQLJobInfoLib javaState;
    ASSERT_TRUE(facade->QueryJavaMySQLBackupRestoreJobStatus(javaJob, javaState)) << facade->GetLastError();
    EXPECT_FALSE(javaState.status.empty());
}

}  // namespace
