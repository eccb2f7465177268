// The cloud type picks the backend at construction; the facade owns the four
// backend objects and releases them so that nothing outlives what it points to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FacadeTestBackends.h"
#include "classic/OracleCloudClassicOperations.h"
#include "classic/OracleCloudClassicQueries.h"
#include "oci/OracleCloudInfrastructureOperations.h"
#include "oci/OracleCloudInfrastructureQueries.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "parser/OracleCloudParser.h"
#include "transport/OracleCloudClassicConnection.h"
#include "transport/OracleCloudInfrastructureConnection.h"

using namespace facadetest;
using ::testing::ElementsAre;

namespace {

void ExpectClassicBackend(EOracleCloudType type) {
    SCOPED_TRACE(static_cast<int>(type));
    TestableWrapper facade(type);
    EXPECT_EQ(facade.GetCloudType(), type);
    ASSERT_NE(facade.parser(), nullptr);
    EXPECT_EQ(dynamic_cast<COracleCloudInfrastructureParser*>(facade.parser()), nullptr);
    EXPECT_NE(dynamic_cast<COracleCloudClassicConnection*>(facade.connection()), nullptr);
    EXPECT_NE(dynamic_cast<COracleCloudClassicQueries*>(facade.queries()), nullptr);
    EXPECT_NE(dynamic_cast<COracleCloudClassicOperations*>(facade.operations()), nullptr);
}

class RecordingParser : public COracleCloudParser {
public:
    explicit RecordingParser(DestroyLog* destroyed) : m_destroyed(destroyed) {}
    ~RecordingParser() override { m_destroyed->push_back("parser"); }

private:
    DestroyLog* m_destroyed;
};

}  // namespace

TEST(FacadeConstruction, TypeTwoBuildsTheInfrastructureBackend) {
    TestableWrapper facade(ORACLE_CLOUD_INFRASTRUCTURE);
    EXPECT_NE(dynamic_cast<COracleCloudInfrastructureParser*>(facade.parser()), nullptr);
    EXPECT_NE(dynamic_cast<COracleCloudInfrastructureConnection*>(facade.connection()), nullptr);
    EXPECT_NE(dynamic_cast<COracleCloudInfrastructureQueries*>(facade.queries()), nullptr);
    EXPECT_NE(dynamic_cast<COracleCloudInfrastructureOperations*>(facade.operations()), nullptr);
    EXPECT_EQ(facade.GetLastError(), "");
}

TEST(FacadeConstruction, EveryOtherTypeBuildsTheClassicBackend) {
    ExpectClassicBackend(ORACLE_CLOUD_UNSPECIFIED);
    ExpectClassicBackend(ORACLE_CLOUD_CLASSIC);
    ExpectClassicBackend(ORACLE_CLOUD_CLASSIC_PAAS);
    ExpectClassicBackend(static_cast<EOracleCloudType>(42));
}

TEST(FacadeConstruction, FreshFacadesAnswerWithoutSendingAnything) {
    for (EOracleCloudType type : {ORACLE_CLOUD_CLASSIC, ORACLE_CLOUD_INFRASTRUCTURE}) {
        COracleCloudWrapper facade(type);
        std::vector<SVMInfoLib> vms;
        EXPECT_FALSE(facade.GetVMInfoList(vms, 0, ""));
        EXPECT_TRUE(facade.SetOperationTimeout(30));
        EXPECT_TRUE(facade.SetWebProxy("proxy.example:3128", "", ""));
    }
}

TEST(FacadeConstruction, DestructionReleasesOperationsQueriesParserThenConnection) {
    DestroyLog destroyed;
    {
        auto* connection = new CountingConnection(&destroyed);
        TestableWrapper facade(ORACLE_CLOUD_INFRASTRUCTURE, new RecordingParser(&destroyed), connection,
                               new FakeQueries(connection, &destroyed), new FakeOperations(connection, &destroyed));
    }
    EXPECT_THAT(destroyed, ElementsAre("operations", "queries", "parser", "connection"));
}

TEST(FacadeConstruction, MissingBackendObjectsFailCallsWithoutCrashing) {
    TestableWrapper facade(ORACLE_CLOUD_CLASSIC, nullptr, nullptr, nullptr, nullptr);
    SVMInfoLib vm;
    std::vector<SKeyPairInfoLib> keys;
    EXPECT_FALSE(facade.Connect("s", "u", "p", ORACLE_SERVICE_COMPUTE));
    EXPECT_FALSE(facade.GetVMInfo("n", "i", vm, 16, ""));
    EXPECT_FALSE(facade.GetKeyPairList(keys));
    EXPECT_FALSE(facade.LaunchInstance(vm));
    EXPECT_FALSE(facade.DeleteVM("n", "i", true, true));
    EXPECT_EQ(facade.GetLastError(), "");
}
