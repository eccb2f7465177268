// The Classic PaaS services as a client following the wire notes sees them:
// basic credentials with the tenant header, database instances through their
// states, backups and recoveries to their jobs' ends, Java and MySQL backup,
// restore and delete jobs, and failing jobs.
#include "ClassicClient.h"
#include "EmulatorFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <thread>

namespace ocwtest {
namespace {

using ocwemu::JStr;

class ClassicPaasTest : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        c_ = std::make_unique<ClassicClient>(info());
    }
    std::string dom() const { return c_->info().identityDomain; }
    std::string dbcs() const { return "/paas/service/dbcs/api/v1.1/instances/" + dom(); }
    std::string mgmt(const std::string& type) const {
        return "/paas/api/v1.1/instancemgmt/" + dom() + "/services/" + type + "/instances";
    }
    // The path of an absolute job URL on this emulator.
    std::string pathOf(const std::string& url) {
        const std::string host = c_->info().paasEndpoint;
        EXPECT_EQ(url.rfind(host + "/", 0), 0u) << url;
        return url.substr(host.size());
    }
    // Polls a job document until `member` leaves `running`; the final document.
    JObject finish(const std::string& url, const char* member, const std::string& running) {
        JObject doc;
        for (int i = 0; i < 200; ++i) {
            doc = c_->paas("GET", pathOf(url)).object();
            if (JStr(doc, member) != running) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return doc;
    }
    std::string waitStatus(const std::string& path, const char* member, const std::string& want) {
        std::string seen;
        for (int i = 0; i < 200 && seen != want; ++i) {
            Response r = c_->paas("GET", path);
            seen = r.status == 404 ? "404" : JStr(r.object(), member);
            if (seen != want) std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return seen;
    }
    std::unique_ptr<ClassicClient> c_;
};

TEST_F(ClassicPaasTest, BasicCredentialsAndTheTenantHeaderMustNameThePathsDomain) {
    const std::string user = c_->info().classicUser, pw = c_->info().classicPassword;
    struct Case {
        std::string path, user, password, tenant;
        int status;
    } cases[] = {{dbcs(), user, pw, dom(), 200},
                 {dbcs(), user, "wrong", dom(), 401},
                 {dbcs(), "/Compute-" + dom() + "/" + user, pw, dom(), 401},
                 {dbcs(), user, pw, "-", 401},
                 {dbcs(), user, pw, "other", 401},
                 {"/paas/service/dbcs/api/v1.1/instances/other", user, pw, "other", 401},
                 {"/paas/service/dbcs/api/v1.1/instances/other", user, pw, dom(), 401}};
    for (const Case& k : cases) {
        Response r = c_->paas("GET", k.path, {}, k.user, k.password, k.tenant);
        EXPECT_EQ(r.status, k.status) << k.path << " " << k.user << " " << k.tenant;
    }
    Response keys = c_->paas("GET", "/paas/api/v1.1/instancemgmt/" + dom() + "/services/dbaas/credentials");
    ASSERT_EQ(keys.status, 200);
    EXPECT_EQ(JStr(keys.object()["items"].as_array()[0].as_object(), "credName"), "vmspublickey");
}

TEST_F(ClassicPaasTest, DatabaseCreationProvisionsToRunningAndDeletionEndsIn404) {
    const std::string body = ocwemu::ToJson(JObject{{"serviceName", "made-db"},
                                                    {"description", "d"},
                                                    {"edition", "EE"},
                                                    {"level", "PAAS"},
                                                    {"shape", "oc3"},
                                                    {"subscriptionType", "HOURLY"},
                                                    {"version", "12.2.0.1"},
                                                    {"vmPublicKeyText", "ssh-rsa AAAA"},
                                                    {"parameters", JArray{JObject{{"backupDestination", "NONE"},
                                                                                  {"adminPassword", "Secret_1"},
                                                                                  {"sid", "ORCL"},
                                                                                  {"type", "db"},
                                                                                  {"usableStorage", "25"}}}}});
    Response created = c_->paas("POST", dbcs(), body);
    ASSERT_EQ(created.status, 202) << created.body;
    EXPECT_TRUE(std::regex_match(
        created.header("Location"),
        std::regex("https://.*/paas/service/dbcs/api/v1.1/instances/" + dom() + "/status/create/job/[0-9]+")))
        << created.header("Location");
    EXPECT_EQ(c_->paas("POST", dbcs(), body).status, 409);
    EXPECT_EQ(JStr(c_->paas("GET", dbcs() + "/made-db").object(), "status"), "In Progress");
    EXPECT_EQ(waitStatus(dbcs() + "/made-db", "status", "Running"), "Running");
    EXPECT_EQ(JStr(finish(created.header("Location"), "job_status", "In Progress"), "job_status"), "Succeeded");
    EXPECT_EQ(c_->paas("GET", dbcs() + "/made-db/servers").array().size(), 1u);
    Response stop = c_->paas("POST", dbcs() + "/made-db/", "{\"lifecycleState\": \"stop\"}");
    EXPECT_EQ(stop.status, 202);
    EXPECT_EQ(waitStatus(dbcs() + "/made-db", "status", "Stopped"), "Stopped");
    EXPECT_EQ(c_->paas("POST", dbcs() + "/made-db/backups/", "{}").status, 409) << "a stopped database takes no backup";
    EXPECT_EQ(c_->paas("DELETE", dbcs() + "/made-db").status, 202);
    EXPECT_EQ(JStr(c_->paas("GET", dbcs() + "/made-db").object(), "status"), "Terminating");
    EXPECT_EQ(waitStatus(dbcs() + "/made-db", "status", "404"), "404");
}

TEST_F(ClassicPaasTest, DatabaseBackupJobNamesTheTagThatARecoveryTakesAndRecoveriesNeedOneSelector) {
    const std::string db = dbcs() + "/orcl-db";
    Response backup = c_->paas("POST", db + "/backups/", "{\"keepForever\": \"true\"}");
    ASSERT_EQ(backup.status, 202) << backup.body;
    EXPECT_NE(backup.header("Location").find("/status/backup/job/"), std::string::npos);
    JObject job = finish(backup.header("Location"), "job_status", "In Progress");
    ASSERT_EQ(JStr(job, "job_status"), "Succeeded");
    const JArray& messages = job["message"].as_array();
    ASSERT_FALSE(messages.empty());
    const std::string last = messages.back().as_string().c_str();
    std::smatch m;
    ASSERT_TRUE(std::regex_search(last, m, std::regex("Database backup completed with \\[(TAG[0-9T]+)\\]"))) << last;
    const std::string tag = m[1];
    bool listed = false;
    JObject backups = c_->paas("GET", db + "/backups").object();
    for (const JValue& b : backups["backupList"].as_array())
        listed |= JStr(b.as_object(), "dbTag") == tag && JStr(b.as_object(), "status") == "COMPLETED";
    EXPECT_TRUE(listed);
    struct Case {
        std::string body;
        int status;
    } cases[] = {{"{}", 400},
                 {"{\"tag\": \"" + tag + "\", \"latest\": \"\"}", 400},
                 {"{\"tag\": \"TAG1\"}", 400},
                 {"{\"tag\": \"" + tag + "\"}", 202},
                 {"{\"latest\": \"\"}", 202},
                 {"{\"scn\": \"4711\"}", 202},
                 {"{\"timestamp\": \"09-Jan-2017 18:30:00\"}", 202}};
    for (const Case& k : cases) {
        Response r = c_->paas("POST", db + "/backups/recovery/", k.body);
        EXPECT_EQ(r.status, k.status) << k.body << " " << r.body;
        if (r.status != 202) continue;
        EXPECT_EQ(JStr(finish(r.header("Location"), "job_status", "In Progress"), "job_status"), "Succeeded");
        EXPECT_EQ(waitStatus(db, "status", "Running"), "Running");
    }
    EXPECT_GE(c_->paas("GET", db + "/backups/recovery/history").object()["recoveryList"].as_array().size(), 4u);
}

TEST_F(ClassicPaasTest, AJobHeldInFailedReportsTheFailure) {
    Response backup = c_->paas("POST", dbcs() + "/orcl-db/backups/", "{}");
    ASSERT_EQ(backup.status, 202);
    const std::string id = backup.header("Location").substr(backup.header("Location").rfind('/') + 1);
    EmulatorClient admin(c_->info());
    ASSERT_EQ(admin.admin("POST", "faults", ocwemu::ToJson(JObject{{"resourceId", id}, {"state", "Failed"}})).status,
              200);
    JObject job = c_->paas("GET", pathOf(backup.header("Location"))).object();
    EXPECT_EQ(JStr(job, "job_status"), "Failed");
    EXPECT_EQ(ocwemu::ToJson(job["message"]).find("completed with ["), std::string::npos);
    EXPECT_EQ(admin.admin("DELETE", "faults/hold:" + id).status, 204);
}

TEST_F(ClassicPaasTest, JavaAndMySqlBackupRestoreAndDeleteJobsRunToTheirEnds) {
    for (const std::string type : {"jaas", "MySQLCS"}) {
        SCOPED_TRACE(type);
        const bool java = type == "jaas";
        const std::string svc = mgmt(type) + (java ? "/shop-jcs" : "/shop-mysql");
        JObject list = c_->paas("GET", mgmt(type)).object();
        EXPECT_TRUE(java ? list["services"].is_object() : list["services"].is_array()) << "Java lists by name";
        Response backup =
            c_->paas("POST", svc + "/backups/", "{\"notes\": \"n\", \"full\": \"true\", \"keepForever\": \"true\"}");
        ASSERT_EQ(backup.status, 202) << backup.body;
        EXPECT_EQ(JStr(backup.object(), "target_uri"), backup.header("Location"));
        JObject job = finish(backup.header("Location"), "status", "RUNNING");
        EXPECT_EQ(JStr(job, "status"), "SUCCEED");
        const std::string backupId = JStr(job, "backupId");
        EXPECT_FALSE(backupId.empty());
        EXPECT_FALSE(JStr(job, "backupStartDate").empty());
        EXPECT_FALSE(JStr(job, "backupCompleteDate").empty());

        const std::string restoreBody =
            java ? "{\"backupId\": \"" + backupId + "\", \"notes\": \"r\", \"forcScaleIn\": \"true\"}"
                 : "{\"notes\": \"r\", \"backupId\": \"" + backupId + "\"}";
        Response restore = c_->paas("POST", svc + "/restoredbackups/", restoreBody);
        ASSERT_EQ(restore.status, 202) << restore.body;
        const std::string target = JStr(restore.object(), "target_uri");
        JObject restored = finish(target, "status", "RUNNING");
        EXPECT_EQ(JStr(restored, "status"), "SUCCEED");
        EXPECT_FALSE(JStr(restored, "recoveryCompleteDate").empty());
        EXPECT_EQ(c_->paas("POST", svc + "/restoredbackups/", "{\"backupId\": \"1\"}").status, 400);

        Response del = c_->paas("POST", svc + "/deletedbackups/", "{\"backupId\": \"" + backupId + "\"}");
        ASSERT_EQ(del.status, 202) << del.body;
        EXPECT_EQ(JStr(finish(del.header("Location"), "status", "RUNNING"), "status"), "SUCCEED");
        EXPECT_EQ(c_->paas("GET", svc + "/backups/" + backupId).status, 404);

        Response failing = c_->paas("POST", svc + "/backups/", "{\"notes\": \"ocw-fail\"}");
        ASSERT_EQ(failing.status, 202);
        EXPECT_EQ(JStr(finish(failing.header("Location"), "status", "RUNNING"), "status"), "FAILED");
    }
}

}  // namespace
}  // namespace ocwtest
