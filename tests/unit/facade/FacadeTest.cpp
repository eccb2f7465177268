// What the facade decides on its own: which backend a cloud type gets, the
// order in which it releases them, the last error taken from a service's error
// body, the Classic GUID cache, and the record defaults callers rely on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

#include "FacadeFakes.h"
#include "LogCapture.h"
#include "classic/OracleCloudClassicOperations.h"
#include "classic/OracleCloudClassicQueries.h"
#include "facade/OracleCloudGuidCache.h"
#include "oci/OracleCloudInfrastructureOperations.h"
#include "oci/OracleCloudInfrastructureQueries.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "transport/OracleCloudClassicConnection.h"
#include "transport/OracleCloudInfrastructureConnection.h"

using namespace ocwtest;
using ::testing::ElementsAre;

// Enumeration values are stored in the agent's job settings: they must not move.
static_assert(ORACLE_CLOUD_CLASSIC == 1 && ORACLE_CLOUD_INFRASTRUCTURE == 2, "");
static_assert(ORACLE_SERVICE_COMPUTE == 1 && ORACLE_SERVICE_PAAS_DATABASE == 2 && ORACLE_SERVICE_PAAS_JAVA == 8 &&
                  ORACLE_SERVICE_PAAS_MYSQL == 9,
              "");
static_assert(OCI_SERVICE_CORE == 3 && OCI_SERVICE_DATABASE == 4 && OCI_SERVICE_AUDIT == 5 &&
                  OCI_SERVICE_IDENTITY == 6 && OCI_SERVICE_OBJECT_STORAGE == 7 && OCI_SERVICE_SEARCH == 10,
              "");
// Records travel by value through the caller's vectors.
static_assert(std::is_copy_assignable<SVMInfoLib>::value && std::is_move_assignable<SVMInfoLib>::value &&
                  !std::is_polymorphic<SVMInfoLib>::value,
              "");

TEST(RecordDefaults, ASnapshotIsCompleteAndCountsStartAtZero) {
    // A default snapshot record asks for a complete snapshot, not an integrity one.
    EXPECT_TRUE(SSnapshotInfoLib().isComplete);
    EXPECT_EQ(SDiskInfoLib().index, 0) << "0 is \"no slot\" to the Classic attach";
    EXPECT_EQ(SVMInfoLib().cpuCount + SVMInfoLib().memoryMB + SVMInfoLib().sizeBytes, 0u);
}

TEST(FacadeConstruction, TypeTwoBuildsTheInfrastructureBackendAndEveryOtherTypeTheClassicOne) {
    for (int type : {0, 1, 2, 3, 42}) {
        SCOPED_TRACE(type);
        TestableWrapper facade(static_cast<EOracleCloudType>(type));
        const bool oci = type == ORACLE_CLOUD_INFRASTRUCTURE;
        EXPECT_EQ(dynamic_cast<COracleCloudInfrastructureParser*>(facade.parser()) != nullptr, oci);
        EXPECT_EQ(dynamic_cast<COracleCloudInfrastructureConnection*>(facade.connection()) != nullptr, oci);
        EXPECT_EQ(dynamic_cast<COracleCloudInfrastructureQueries*>(facade.queries()) != nullptr, oci);
        EXPECT_EQ(dynamic_cast<COracleCloudInfrastructureOperations*>(facade.operations()) != nullptr, oci);
        EXPECT_EQ(dynamic_cast<COracleCloudClassicConnection*>(facade.connection()) != nullptr, !oci);
        EXPECT_EQ(dynamic_cast<COracleCloudClassicQueries*>(facade.queries()) != nullptr, !oci);
        EXPECT_EQ(dynamic_cast<COracleCloudClassicOperations*>(facade.operations()) != nullptr, !oci);
    }
}

TEST(FacadeConstruction, DestructionReleasesOperationsQueriesParserThenConnection) {
    struct RecordingParser : COracleCloudParser {
        explicit RecordingParser(DestroyLog* log) : log(log) {}
        ~RecordingParser() override { log->push_back("parser"); }
        DestroyLog* log;
    };
    DestroyLog destroyed;
    {
        auto* connection = new FakeConnection(&destroyed);
        TestableWrapper facade(ORACLE_CLOUD_INFRASTRUCTURE, new RecordingParser(&destroyed), connection,
                               new FakeQueries(connection, &destroyed), new FakeOperations(connection, &destroyed));
    }
    EXPECT_THAT(destroyed, ElementsAre("operations", "queries", "parser", "connection"));
}

TEST(ErrorHandler, LastErrorIsTheMessageOfTheServicesErrorBody) {
    struct Case {
        const char* body;
        const char* lastError;  // before: "older"
        bool logged;
    };
    const Case cases[] = {
        {R"({"code":"NotAuthorizedOrNotFound","message":"Authorization failed"})", "Authorization failed", false},
        {"", "older", false},                               // nothing to read: the earlier text stays
        {R"({"code":"LimitExceeded"})", "", false},         // a body without a message says nothing
        {"<html>502 Bad Gateway</html>", "", true},         // a proxy's page
    };
    COracleCloudParser parser;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.body);
        LogCapture log;
        COracleCloudErrorHandler handler(&parser);
        handler.SetLastError("older");
        handler.SetLastErrorFromResponse(c.body);
        EXPECT_EQ(handler.GetLastError(), c.lastError);
        EXPECT_EQ(log.matching("Exception parsing json object - ").size(), c.logged ? 1u : 0u);
    }
}

TEST(GuidCache, FirstUriStoredForAKeyWinsAndKeysMatchExactly) {
    COracleCloudGuidCache cache;
    cache.AddURItoCache("vm-guid", "/Compute-acme/jdoe/vm1/first");
    cache.AddURItoCache("vm-guid", "/Compute-acme/jdoe/vm1/second");
    std::string uri;
    ASSERT_TRUE(cache.GetURIFromCache("vm-guid", uri));
    EXPECT_EQ(uri, "/Compute-acme/jdoe/vm1/first");
    EXPECT_FALSE(cache.GetURIFromCache("VM-GUID", uri));
    EXPECT_EQ(uri, "/Compute-acme/jdoe/vm1/first") << "a miss leaves the output alone";
}
