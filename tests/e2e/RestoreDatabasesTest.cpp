// The database service against the emulator: database backup, restore by
// latest / SCN / timestamp, and a DB system created (with its password kept out
// of every log line) and deleted.
#include <gtest/gtest.h>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::LogCapture;

class RestoreDatabases : public ocwtest::EmulatorTest {
protected:
    SOCIDatabaseInfoLib DemoDatabase() {
        SOCIDatabaseInfoLib db;
        for (const std::string& id : ResourceIds("database")) {
            if (ResourceMember(id, "dbName") == "DEMODB") db.id = id;
        }
        db.dbName = "DEMODB";
        return db;
    }
};

TEST_F(RestoreDatabases, BackupThenRestoreToLatestScnAndTimestamp) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const SOCIDatabaseInfoLib db = DemoDatabase();
    ASSERT_FALSE(db.id.empty());

    SPaaSBackupRestoreOptionsLib options;
    options.tag = "before-restore";
    std::string job;
    ASSERT_TRUE(facade->BackupDBInstance(db, options, job)) << facade->GetLastError();
    ASSERT_FALSE(job.empty());
    EXPECT_EQ(ResourceMember(job, "databaseId"), db.id);
    auto backups = RequestsTo("POST", "/20160918/backups");
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(backups[0].host, "database." + info().region + ".oraclecloud.com");
    EXPECT_EQ(backups[0].body, R"({"databaseId":")" + db.id + R"(","displayName":"before-restore"})");
    ASSERT_TRUE(WaitForState(job, "ACTIVE"));
    ASSERT_TRUE(WaitForState(db.id, "AVAILABLE"));

    const std::string restorePath = "/20160918/databases/" + db.id + "/actions/restore";
    SPaaSBackupRestoreOptionsLib latest;
    latest.latest = true;
    SPaaSBackupRestoreOptionsLib scn;
    scn.scn = "1234567";
    SPaaSBackupRestoreOptionsLib timestamp;
    timestamp.timestamp = "2024-05-01T10:00:00Z";
    for (const auto* restore : {&latest, &scn, &timestamp}) {
        std::string restored;
        ASSERT_TRUE(facade->RestoreDBInstance(db, *restore, restored)) << facade->GetLastError();
        EXPECT_EQ(restored, db.id);
        EXPECT_EQ(StateOf(db.id), "UPDATING");
        ASSERT_TRUE(WaitForState(db.id, "AVAILABLE"));
    }
    auto restores = RequestsTo("POST", restorePath);
    ASSERT_EQ(restores.size(), 3u);
    EXPECT_EQ(restores[0].body, R"({"latest":"true"})");
    EXPECT_EQ(restores[1].body, R"({"databaseSCN":"1234567"})");
    EXPECT_EQ(restores[2].body, R"({"timestamp":"2024-05-01T10:00:00Z"})");

    SPaaSBackupRestoreOptionsLib remove;
    remove.backupId = job;
    std::string removed;
    ASSERT_TRUE(facade->DeleteDBBackup(db, remove, removed)) << facade->GetLastError();
    EXPECT_EQ(removed, job);
    EXPECT_EQ(RequestsTo("DELETE", "/20160918/backups/" + job).size(), 1u);
    EXPECT_EQ(StateOf(job), "DELETING");
}

TEST_F(RestoreDatabases, RestoreWithoutATargetIsSentAndRefusedWithTheServiceMessage) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string job;
    EXPECT_FALSE(facade->RestoreDBInstance(DemoDatabase(), SPaaSBackupRestoreOptionsLib(), job));
    EXPECT_EQ(facade->GetLastError(), "Exactly one of latest, databaseSCN and timestamp must be given.");
    ASSERT_EQ(RequestsTo("POST", "/20160918/databases/").size(), 1u);
    EXPECT_EQ(RequestsTo("POST", "/20160918/databases/")[0].body, "{}");
    EXPECT_TRUE(job.empty());
}

TEST_F(RestoreDatabases, BackupWithoutTagGetsAGeneratedNameAndDeleteNeedsABackupId) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const SOCIDatabaseInfoLib db = DemoDatabase();
    std::string job;
    ASSERT_TRUE(facade->BackupDBInstance(db, SPaaSBackupRestoreOptionsLib(), job)) << facade->GetLastError();
    EXPECT_EQ(ResourceMember(job, "displayName").rfind("DEMODB_", 0), 0u);

    ClearRequestLog();
    EXPECT_FALSE(facade->DeleteDBBackup(db, SPaaSBackupRestoreOptionsLib(), job));
    EXPECT_EQ(facade->GetLastError(), "Cannot delete database backup as backup id is empty");
    EXPECT_TRUE(Requests().empty());
}

TEST_F(RestoreDatabases, DbSystemIsCreatedWaitedForOnTheVersionedPathAndDeleted) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    const std::string password = "Rest0re#Secret_42";
    SOracleDBInstanceInfoLib db;
    db.computeSiteName = ResourceMember(FindResourceId("instance", "ocw-web-1"), "availabilityDomain");
    db.cloudStorageContainer = FindResourceId("compartment", "ocw-demo-db");
    db.edition = "ENTERPRISE_EDITION";
    db.serviceName = "restoredb";
    db.shape = "VM.Standard2.2";
    db.sid = FindResourceId("subnet", "ocw-demo-public");
    db.sshPublicKey = "ssh-rsa AAAAB3NzaC1yc2EAAAADAQABAAABAQC7 restore-key";
    db.version = "19.0.0.0";
    db.adminPassword = password;
    db.dbName = "RESTDB";
    db.pdbName = "RESTPDB";
    db.numIpReservations = 2;

    LogCapture capture(9);
    ASSERT_TRUE(facade->CreateDBInstance(db)) << facade->GetLastError();
    ASSERT_FALSE(db.databaseId.empty());
    EXPECT_EQ(db.status, "AVAILABLE");
    EXPECT_EQ(StateOf(db.databaseId), "AVAILABLE");
    EXPECT_EQ(ResourceMember(db.databaseId, "hostname"), "restoredb");
    EXPECT_EQ(MemberJson(db.databaseId, "cpuCoreCount"), "2");

    auto posts = RequestsTo("POST", "/20160918/dbSystems");
    ASSERT_EQ(posts.size(), 1u);
    const boost::json::object body = BodyOf(posts[0]);
    // The emulator's request log masks secret members, so only presence can be
    // checked here; the exact body bytes are covered by the request-body unit tests.
    EXPECT_EQ(body.at("dbHome").at("database").at("adminPassword").as_string(), "*****");
    EXPECT_EQ(body.at("sshPublicKeys").at(0).as_string(), db.sshPublicKey);
    EXPECT_GE(CountRequests("GET", "/20160918/dbSystems/" + db.databaseId), 1u);
    EXPECT_EQ(CountRequests("GET", "/dbSystems"), 0u) << "every database path carries the version";
    for (const auto& line : capture.lines()) {
        EXPECT_EQ(line.text.find(password), std::string::npos) << "password in the log: " << line.text;
    }
    EXPECT_FALSE(capture.matching("\"adminPassword\"").empty()) << "the masked body is still logged";

    ASSERT_TRUE(facade->DeleteDBInstance(db)) << facade->GetLastError();
    ASSERT_EQ(RequestsTo("DELETE", "/20160918/dbSystems/").size(), 1u);
    EXPECT_EQ(RequestsTo("DELETE", "/20160918/dbSystems/")[0].target, "/20160918/dbSystems/" + db.databaseId);
    EXPECT_EQ(StateOf(db.databaseId), "TERMINATING");
}

}  // namespace
