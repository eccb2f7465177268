// The Classic PaaS services through the facade against the emulator: a
// database service created, awaited, scaled, powered and deleted; database,
// Java and MySQL backups and restores started, their jobs polled to the end;
// failing jobs; and the refusals: no restore point, wrong credentials, an
// accepted request that names no job, an answer that is not JSON.
#include <gtest/gtest.h>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

class ClassicPaaS : public EmulatorTest {
protected:
    std::string DatabaseRoot() const { return "/paas/service/dbcs/api/v1.1/instances/" + info().identityDomain; }
    std::string ManagedRoot(const std::string& type) const {
        return "/paas/api/v1.1/instancemgmt/" + info().identityDomain + "/services/" + type + "/instances";
    }

    static SOracleDBInstanceInfoLib NewDatabase(const std::string& name) {
        SOracleDBInstanceInfoLib db;
        db.serviceName = name;
        db.description = "created by the agent";
        db.level = "PAAS";
        db.shape = "oc3";
        db.subscriptionType = "HOURLY";
        db.version = "12.2.0.1";
        db.sshPublicKey = "ssh-rsa AAAAB3Nza agent";
        db.backupDestination = "BOTH";
        db.cloudStorageContainer = "Storage-acme/dbbackups";
        db.adminPassword = "Adm1n-Secret#42";
        db.sid = "ORCL";
        db.databaseType = "db";
        db.usableStorage = "25";
        return db;
    }

    // The status of the database service as the library reads it.
    std::string PollDatabase(COracleCloudWrapper& facade, const std::string& name, const std::string& want) {
        return PollUntil(want, [&](std::string& status) {
            SOracleDBInstanceInfoLib db;
            const bool read = facade.GetDBInstanceInfo(name, db);
            status = db.status;
            return read;
        });
    }
    std::string PollDatabaseJob(COracleCloudWrapper& facade, const std::string& jobUri, const std::string& want,
                                SOracleJobInfoLib& job) {
        return PollUntil(want, [&](std::string& status) {
            const bool read = facade.QueryBackupRestoreJobStatus(jobUri, job);
            status = job.jobStatus;
            return read;
        });
    }
    std::string PollManagedJob(COracleCloudWrapper& facade, const std::string& jobUri, const std::string& want,
                               SJavaMySQLJobInfoLib& job) {
        return PollUntil(want, [&](std::string& status) {
            const bool read = facade.QueryJavaMySQLBackupRestoreJobStatus(jobUri, job);
            status = job.status;
            return read;
        });
    }
    // The number at the end of a job's URI: the emulator holds jobs by it.
    static std::string JobNumber(const std::string& jobUri) { return jobUri.substr(jobUri.rfind('/') + 1); }
};

TEST_F(ClassicPaaS, DatabaseServiceIsCreatedAwaitedScaledPoweredAndDeletedWithoutAPasswordInTheLog) {
    ocwtest::LogCapture capture(99);
    auto facade = ConnectPaaSFacade();
    ASSERT_TRUE(facade);
    // The account's credentials stand in for cloud storage; the instant backup has its own.
    SOracleDBInstanceInfoLib db = NewDatabase("orders");
    db.instantBackup = true;
    db.ibkupDatabaseId = "1234";
    db.ibkupCloudStorageContainer = "Storage-acme/onprem";
    db.ibkupCloudStorageUser = "onprem";
    db.ibkupCloudStoragePassword = "Ibkup-Secret#42";
    db.ibkupDecryptionKey = "Decrypt-Secret#42";
    ASSERT_TRUE(facade->CreateDBInstance(db)) << facade->GetLastError();
    EXPECT_EQ(db.status, "Running");
    const auto creation = RequestsTo("POST", DatabaseRoot());
    ASSERT_EQ(creation.size(), 1u);
    EXPECT_EQ(creation[0].status, 202);
    const boost::json::object sent = BodyOf(creation[0]);
    EXPECT_EQ(sent.at("cloudStorageUser").as_string(), info().classicUser);
    EXPECT_TRUE(sent.at("createStorageContainerIfMissing").as_bool());
    EXPECT_GE(RequestsTo("GET", DatabaseRoot() + "/orders").size(), 1u) << "the creation waited";

    // Its own cloud storage credentials this time.
    SOracleDBInstanceInfoLib second = NewDatabase("reports");
    second.cloudStorageUser = "backup-user";
    second.cloudStoragePwd = "Storage-Secret#42";
    ASSERT_TRUE(facade->CreateDBInstance(second)) << facade->GetLastError();

    db.newShape = "oc4";
    ASSERT_TRUE(facade->ScaleDBInstance(db)) << facade->GetLastError();
    EXPECT_EQ(PollDatabase(*facade, "orders", "Running"), "Running");
    SOracleDBInstanceInfoLib scaled;
    ASSERT_TRUE(facade->GetDBInstanceInfo("orders", scaled)) << facade->GetLastError();
    EXPECT_EQ(scaled.shape, "oc4");
    ASSERT_TRUE(facade->StopDBInstance(db)) << facade->GetLastError();
    EXPECT_EQ(PollDatabase(*facade, "orders", "Stopped"), "Stopped");
    ASSERT_TRUE(facade->StartDBInstance(db)) << facade->GetLastError();
    EXPECT_EQ(PollDatabase(*facade, "orders", "Running"), "Running");
    ASSERT_TRUE(facade->RestartDBInstance(db)) << facade->GetLastError();
    EXPECT_EQ(PollDatabase(*facade, "orders", "Running"), "Running");
    const auto power = RequestsTo("POST", DatabaseRoot() + "/orders/");
    ASSERT_EQ(power.size(), 3u);
    EXPECT_EQ(power[0].body, R"({"lifecycleState":"stop"})");

    ASSERT_TRUE(facade->DeleteDBInstance(db)) << facade->GetLastError();
    EXPECT_EQ(PollUntil("gone",
                        [&](std::string& status) {
                            SOracleDBInstanceInfoLib now;
                            status = facade->GetDBInstanceInfo("orders", now) ? now.status : "gone";
                            return true;
                        }),
              "gone");

    // The creation bodies did reach the log, masked.
    EXPECT_EQ(capture.matching(R"("adminPassword":"********")").size(), 2u);
    for (const auto& line : capture.lines()) {
        for (const std::string& secret : {info().classicPassword, db.adminPassword, db.ibkupCloudStoragePassword,
                                          db.ibkupDecryptionKey, second.cloudStoragePwd}) {
            EXPECT_EQ(line.text.find(secret), std::string::npos) << line.signature << ": " << line.text;
        }
    }
}

TEST_F(ClassicPaaS, DatabaseBackupJobEndsWithItsTagAndRestoresByTagAndByLatest) {
    auto facade = ConnectPaaSFacade();
    ASSERT_TRUE(facade);
    std::vector<SOracleDBInstanceInfoLib> databases;
    ASSERT_TRUE(facade->GetDBInstanceList(databases)) << facade->GetLastError();
    ASSERT_FALSE(databases.empty());
    const SOracleDBInstanceInfoLib& db = databases[0];

    SPaaSBackupRestoreOptionsLib options;
    std::string jobUri, jobInfo;
    ASSERT_TRUE(facade->BackupDBInstance(db, options, jobUri, jobInfo)) << facade->GetLastError();
    EXPECT_EQ(jobUri.rfind(info().paasEndpoint + DatabaseRoot() + "/status/backup/job/", 0), 0u) << jobUri;
    EXPECT_EQ(jobUri.find_first_of("\r\n"), std::string::npos);
    EXPECT_TRUE(jobInfo.empty());
    SOracleJobInfoLib job;
    ASSERT_EQ(PollDatabaseJob(*facade, jobUri, "Succeeded", job), "Succeeded");
    ASSERT_EQ(job.tag.rfind("TAG", 0), 0u) << job.message;

    // A tag wins over the latest flag.
    options.tag = job.tag;
    options.latest = true;
    std::string restoreUri;
    ASSERT_TRUE(facade->RestoreDBInstance(db, options, restoreUri, jobInfo)) << facade->GetLastError();
    const auto byTag = RequestsTo("POST", DatabaseRoot() + "/" + db.serviceName + "/backups/recovery/");
    ASSERT_EQ(byTag.size(), 1u);
    EXPECT_EQ(byTag[0].body, R"({"tag":")" + job.tag + R"("})");
    ASSERT_EQ(PollDatabaseJob(*facade, restoreUri, "Succeeded", job), "Succeeded");
    ASSERT_EQ(PollDatabase(*facade, db.serviceName, "Running"), "Running");

    ClearRequestLog();
    options.tag.clear();
    ASSERT_TRUE(facade->RestoreDBInstance(db, options, restoreUri, jobInfo)) << facade->GetLastError();
    const auto byLatest = RequestsTo("POST", DatabaseRoot() + "/" + db.serviceName + "/backups/recovery/");
    ASSERT_EQ(byLatest.size(), 1u);
    EXPECT_EQ(byLatest[0].body, R"({"latest":""})");
    EXPECT_EQ(PollDatabaseJob(*facade, restoreUri, "Succeeded", job), "Succeeded");
}

TEST_F(ClassicPaaS, JavaAndMySqlBackupsRestoresAndDeletionsRunToTheirEnds) {
    auto java = ConnectPaaSFacade(ORACLE_SERVICE_PAAS_JAVA);
    auto mysql = ConnectPaaSFacade(ORACLE_SERVICE_PAAS_MYSQL);
    ASSERT_TRUE(java && mysql);
    std::vector<SJavaInstanceInfoLib> javaServices;
    ASSERT_TRUE(java->GetJavaInstanceList(javaServices)) << java->GetLastError();
    std::vector<SMySQLInstanceInfoLib> mysqlServices;
    ASSERT_TRUE(mysql->GetMySQLInstanceList(mysqlServices)) << mysql->GetLastError();
    ASSERT_FALSE(javaServices.empty());
    ASSERT_FALSE(mysqlServices.empty());

    SPaaSBackupRestoreOptionsLib options;
    options.notes = "before patch";
    options.fullBackup = true;
    options.forceScaleIn = true;
    std::string jobUri, jobInfo;
    SJavaMySQLJobInfoLib job;
    ASSERT_TRUE(java->BackupJavaInstance(javaServices[0], options, jobUri, jobInfo)) << java->GetLastError();
    ASSERT_EQ(PollManagedJob(*java, jobUri, "SUCCEED", job), "SUCCEED");
    ASSERT_FALSE(job.backupId.empty());
    options.backupId = job.backupId;
    std::string restoreUri;
    ASSERT_TRUE(java->RestoreJavaInstance(javaServices[0], options, restoreUri, jobInfo)) << java->GetLastError();
    EXPECT_NE(restoreUri, jobUri);
    EXPECT_EQ(PollManagedJob(*java, restoreUri, "SUCCEED", job), "SUCCEED");
    ASSERT_TRUE(java->DeleteJavaBackup(javaServices[0], options, jobUri, jobInfo)) << java->GetLastError();
    EXPECT_EQ(PollManagedJob(*java, jobUri, "SUCCEED", job), "SUCCEED");
    const std::string javaService = ManagedRoot("jaas") + "/" + javaServices[0].serviceName;
    for (const char* action : {"/backups/", "/restoredbackups/", "/deletedbackups/"}) {
        EXPECT_EQ(CountRequests("POST", javaService + action), 1u) << action;
    }
    const auto restore = RequestsTo("POST", javaService + "/restoredbackups/");
    ASSERT_EQ(restore.size(), 1u);
    EXPECT_EQ(restore[0].body, R"({"backupId":")" + options.backupId +
                                   R"(","notes":"before patch","forcScaleIn":"true"})");

    options = SPaaSBackupRestoreOptionsLib();
    options.keepForever = true;
    ASSERT_TRUE(mysql->BackupMySQLInstance(mysqlServices[0], options, jobUri, jobInfo)) << mysql->GetLastError();
    ASSERT_EQ(PollManagedJob(*mysql, jobUri, "SUCCEED", job), "SUCCEED");
    options.backupId = job.backupId;
    ASSERT_TRUE(mysql->RestoreMySQLInstance(mysqlServices[0], options, jobUri, jobInfo)) << mysql->GetLastError();
    EXPECT_EQ(PollManagedJob(*mysql, jobUri, "SUCCEED", job), "SUCCEED");
    ASSERT_TRUE(mysql->DeleteMySQLBackup(mysqlServices[0], options, jobUri, jobInfo)) << mysql->GetLastError();
    EXPECT_EQ(PollManagedJob(*mysql, jobUri, "SUCCEED", job), "SUCCEED");
    const std::string mysqlService = ManagedRoot("MySQLCS") + "/" + mysqlServices[0].serviceName;
    for (const char* action : {"/backups/", "/restoredbackups/", "/deletedbackups/"}) {
        EXPECT_EQ(CountRequests("POST", mysqlService + action), 1u) << action;
    }
}

TEST_F(ClassicPaaS, FailingJobsEndFailedAndAreReadAsSuch) {
    auto facade = ConnectPaaSFacade();
    ASSERT_TRUE(facade);
    std::vector<SOracleDBInstanceInfoLib> databases;
    ASSERT_TRUE(facade->GetDBInstanceList(databases)) << facade->GetLastError();
    ASSERT_FALSE(databases.empty());
    SPaaSBackupRestoreOptionsLib options;
    std::string jobUri, jobInfo;
    ASSERT_TRUE(facade->BackupDBInstance(databases[0], options, jobUri, jobInfo)) << facade->GetLastError();
    HoldState(JobNumber(jobUri), "Failed");
    SOracleJobInfoLib job;
    EXPECT_EQ(PollDatabaseJob(*facade, jobUri, "Failed", job), "Failed");
    EXPECT_TRUE(job.tag.empty()) << "a failed backup names no tag to restore";

    std::vector<SJavaInstanceInfoLib> java;
    ASSERT_TRUE(facade->GetJavaInstanceList(java)) << facade->GetLastError();
    ASSERT_FALSE(java.empty());
    options.notes = "ocw-fail on purpose";
    ASSERT_TRUE(facade->BackupJavaInstance(java[0], options, jobUri, jobInfo)) << facade->GetLastError();
    SJavaMySQLJobInfoLib javaJob;
    EXPECT_EQ(PollManagedJob(*facade, jobUri, "FAILED", javaJob), "FAILED");
    EXPECT_FALSE(javaJob.statusDetails.empty());
}

TEST_F(ClassicPaaS, RefusedCallsSayWhyAndLeaveTheJobUriAlone) {
    auto facade = ConnectPaaSFacade();
    ASSERT_TRUE(facade);
    std::vector<SOracleDBInstanceInfoLib> databases;
    ASSERT_TRUE(facade->GetDBInstanceList(databases)) << facade->GetLastError();
    std::vector<SJavaInstanceInfoLib> java;
    ASSERT_TRUE(facade->GetJavaInstanceList(java)) << facade->GetLastError();
    ASSERT_FALSE(databases.empty() || java.empty());
    const SOracleDBInstanceInfoLib& db = databases[0];
    SPaaSBackupRestoreOptionsLib options;
    std::string jobUri = "untouched", jobInfo;
    ClearRequestLog();

    // Nothing to restore to, and a deletion this cloud does not offer: nothing is sent.
    EXPECT_FALSE(facade->RestoreDBInstance(db, options, jobUri, jobInfo));
    EXPECT_EQ(facade->GetLastError(),
              "The Request should contain valid restore input parmeters. tag/latest/scn/timestamp");
    EXPECT_FALSE(facade->DeleteDBBackup(db, options, jobUri, jobInfo));
    EXPECT_FALSE(facade->GetLastError().empty());
    EXPECT_TRUE(Requests().empty());

    // The service refuses: its message is the last error, with the failed request's record.
    options.tag = "TAG19990101T000000";
    EXPECT_FALSE(facade->RestoreDBInstance(db, options, jobUri, jobInfo));
    EXPECT_EQ(facade->GetLastError(), "No completed backup has the tag TAG19990101T000000");
    EXPECT_EQ(facade->GetLastFailure().httpStatus, 400);
    EXPECT_EQ(facade->GetLastFailure().serviceMessage, facade->GetLastError());

    SOracleDBInstanceInfoLib taken = NewDatabase(db.serviceName);
    EXPECT_FALSE(facade->CreateDBInstance(taken));
    EXPECT_EQ(facade->GetLastError(), "Service " + db.serviceName + " already exists");
    EXPECT_EQ(CountRequests("GET", DatabaseRoot() + "/" + db.serviceName), 0u) << "no wait after a refusal";

    COracleCloudWrapper wrong(ORACLE_CLOUD_CLASSIC_PAAS);
    ASSERT_TRUE(wrong.Connect(info().paasEndpoint, info().identityDomain + "/" + info().classicUser,
                              info().classicPassword + "x", ORACLE_SERVICE_PAAS_DATABASE));
    EXPECT_FALSE(wrong.BackupDBInstance(db, options, jobUri, jobInfo));
    EXPECT_EQ(wrong.GetLastFailure().httpStatus, 401);
    EXPECT_FALSE(wrong.GetLastError().empty());
    EXPECT_EQ(wrong.GetLastFailure().serviceMessage, wrong.GetLastError());

    // Accepted, but no job named: no "location", no "target_uri", an answer that is not JSON.
    ocwemu::FaultRule noLocation;
    noLocation.method = "POST";
    noLocation.pathPrefix = DatabaseRoot() + "/" + db.serviceName + "/backups/";
    noLocation.status = 202;
    noLocation.body = "{}";
    noLocation.contentType = "application/json";
    noLocation.times = 1;
    emu().faults().add(noLocation);
    EXPECT_FALSE(facade->BackupDBInstance(db, options, jobUri, jobInfo));
    EXPECT_EQ(facade->GetLastError(), "The answer of [" + DatabaseRoot().substr(1) + "/" + db.serviceName +
                                          "/backups/] named no job in [location]");
    const std::string javaService = ManagedRoot("jaas") + "/" + java[0].serviceName;
    ocwemu::FaultRule noTarget = noLocation;
    noTarget.pathPrefix = javaService + "/restoredbackups/";
    emu().faults().add(noTarget);
    EXPECT_FALSE(facade->RestoreJavaInstance(java[0], options, jobUri, jobInfo));
    EXPECT_EQ(facade->GetLastError(),
              "The answer of [" + javaService.substr(1) + "/restoredbackups/] named no job in [target_uri]");
    ocwemu::FaultRule page = noLocation;
    page.pathPrefix = javaService + "/backups/";
    page.body = "<html>Accepted</html>";
    page.contentType = "text/html";
    emu().faults().add(page);
    EXPECT_FALSE(facade->BackupJavaInstance(java[0], options, jobUri, jobInfo));
    EXPECT_EQ(facade->GetLastError(), "The response [<html>Accepted</html>] is not in valid JSON format.");
    EXPECT_EQ(jobUri, "untouched");
}

}  // namespace
