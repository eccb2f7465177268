// Fault rules and the admin interface: injected statuses, delays, dropped
// connections, cut bodies, held states, counters and the request log.
#include "EmulatorClient.h"
#include "EmulatorFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace ocwtest {
namespace {

using ocwemu::JStr;

class FaultAdminTest : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        c_ = std::make_unique<EmulatorClient>(info());
        tenancy_ = "/20160918/tenancies/" + c_->info().tenancy;
    }
    std::string addFault(const JObject& rule) {
        Response r = c_->admin("POST", "faults", ocwemu::ToJson(rule));
        EXPECT_EQ(r.status, 200) << r.body;
        return JStr(r.object(), "id");
    }
    std::unique_ptr<EmulatorClient> c_;
    std::string tenancy_;
};

TEST_F(FaultAdminTest, StatusRuleAnswersNTimesThenLetsRequestsThrough) {
    addFault(JObject{{"method", "GET"}, {"pathPrefix", "/20160918/tenancies"}, {"status", 429}, {"times", 2}});
    Response first = c_->get(tenancy_);
    EXPECT_EQ(first.status, 429);
    EXPECT_EQ(JStr(first.object(), "code"), "TooManyRequests");
    EXPECT_FALSE(first.header("opc-request-id").empty());
    EXPECT_EQ(c_->get(tenancy_).status, 429);
    EXPECT_EQ(c_->get(tenancy_).status, 200);
    JObject stats = c_->admin("GET", "stats").object();
    EXPECT_EQ(ocwemu::JInt(stats["faults"].as_object(), "total").value_or(0), 2);
}

TEST_F(FaultAdminTest, RulesMatchOnlyTheirMethodPathAndHost) {
    addFault(JObject{{"method", "POST"}, {"status", 500}});
    addFault(JObject{{"pathPrefix", "/20160918/volumes"}, {"status", 503}});
    addFault(JObject{{"host", "database."}, {"status", 500}, {"code", "Custom"}, {"message", "custom text"}});
    EXPECT_EQ(c_->get(tenancy_).status, 200);
    EXPECT_EQ(c_->get("/20160918/volumes?compartmentId=" + c_->info().tenancy).status, 503);
    EXPECT_EQ(c_->post("/20160918/compartments", JObject{}).status, 500);
    SignOptions db;
    db.host = "database.us-phoenix-1.oraclecloud.com";
    Response r = c_->get(tenancy_, db);
    EXPECT_EQ(r.status, 500);
    EXPECT_EQ(JStr(r.object(), "message"), "custom text");
}

TEST_F(FaultAdminTest, ProbabilityZeroNeverFiresAndOneAlwaysDoes) {
    const std::string never = addFault(JObject{{"status", 500}, {"probability", 0.0}});
    for (int i = 0; i < 5; ++i) EXPECT_EQ(c_->get(tenancy_).status, 200);
    ASSERT_EQ(c_->admin("DELETE", "faults/" + never).status, 204);
    addFault(JObject{{"status", 500}, {"probability", 1.0}, {"times", 3}});
    for (int i = 0; i < 3; ++i) EXPECT_EQ(c_->get(tenancy_).status, 500);
    EXPECT_EQ(c_->get(tenancy_).status, 200);
}

TEST_F(FaultAdminTest, DelayHoldsTheAnswerBack) {
    addFault(JObject{{"action", "delay"}, {"delayMs", 300}, {"times", 1}});
    auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(c_->get(tenancy_).status, 200);
    auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - t0).count();
    EXPECT_GE(ms, 280);
}

TEST_F(FaultAdminTest, CloseDropsTheConnectionWithoutAnAnswer) {
    addFault(JObject{{"action", "close"}, {"times", 1}});
    Response r = c_->get(tenancy_);
    EXPECT_EQ(r.status, 0) << "no HTTP answer at all";
    EXPECT_EQ(c_->get(tenancy_).status, 200) << "the next request is served again";
}

TEST_F(FaultAdminTest, TruncateSendsOnlyPartOfTheBody) {
    addFault(JObject{{"action", "truncate"}, {"times", 1}});
    Response r = c_->get("/20160918/compartments?compartmentId=" + c_->info().tenancy);
    EXPECT_EQ(r.status, 0) << "the client sees a transfer cut short";
    EXPECT_EQ(c_->get(tenancy_).status, 200);
}

TEST_F(FaultAdminTest, HoldKeepsAResourceInAStateUntilReleased) {
    const std::string demo = c_->compartment("ocw-demo");
    JArray inst = c_->listAll("/20160918/instances?compartmentId=" + demo);
    const std::string id = JStr(inst.at(0).as_object(), "id");
    Response hold = c_->admin("POST", "faults", ocwemu::ToJson(JObject{{"resourceId", id}, {"state", "STOPPING"}}));
    ASSERT_EQ(hold.status, 200);
    EXPECT_EQ(JStr(c_->get("/20160918/instances/" + id).object(), "lifecycleState"), "STOPPING");
    EXPECT_EQ(c_->send("POST", "/20160918/instances/" + id + "?action=START").status, 409);
    ASSERT_EQ(c_->admin("DELETE", "faults/" + JStr(hold.object(), "id")).status, 204);
    EXPECT_EQ(JStr(c_->get("/20160918/instances/" + id).object(), "lifecycleState"), "RUNNING");
}

TEST_F(FaultAdminTest, BadRulesAre400) {
    EXPECT_EQ(c_->admin("POST", "faults", "{\"status\": 99}").status, 400);
    EXPECT_EQ(c_->admin("POST", "faults", "{\"action\": \"explode\"}").status, 400);
    EXPECT_EQ(c_->admin("POST", "faults", "{\"status\": 500, \"probability\": 2}").status, 400);
    EXPECT_EQ(c_->admin("POST", "faults", "not json").status, 400);
    EXPECT_EQ(c_->admin("DELETE", "faults/fault-999999").status, 404);
}

TEST_F(FaultAdminTest, StatsCountRequestsByMethodPatternHostAndStatus) {
    c_->get(tenancy_);
    c_->get(tenancy_);
    SignOptions unsigned_;
    unsigned_.sign = false;
    c_->get(tenancy_, unsigned_);
    c_->get("/20160918/instances/ocid1.instance.oc1.phx.missing");
    JObject s = c_->admin("GET", "stats").object();
    EXPECT_EQ(ocwemu::JInt(s, "total").value_or(0), 4);
    EXPECT_EQ(ocwemu::JInt(s["byMethod"].as_object(), "GET").value_or(0), 4);
    EXPECT_EQ(ocwemu::JInt(s["byPattern"].as_object(), "GET /20160918/tenancies/{tenancyId}").value_or(0), 3);
    EXPECT_EQ(ocwemu::JInt(s["byPattern"].as_object(), "GET /20160918/instances/{instanceId}").value_or(0), 1);
    EXPECT_EQ(ocwemu::JInt(s["byStatus"].as_object(), "401").value_or(0), 1);
    EXPECT_EQ(ocwemu::JInt(s["byStatus"].as_object(), "404").value_or(0), 1);
    const std::string host = "127.0.0.1:" + std::to_string(c_->info().port);
    EXPECT_EQ(ocwemu::JInt(s["byHost"].as_object(), host.c_str()).value_or(0), 4);
    EXPECT_EQ(ocwemu::JInt(s["signatureRejections"].as_object(), "total").value_or(0), 1);
}

TEST_F(FaultAdminTest, RequestLogHoldsHeadersAndBodiesOfTheLastRequests) {
    c_->get(tenancy_);
    c_->post("/20160918/compartments", JObject{{"compartmentId", c_->info().tenancy}, {"name", "logged"}, {"description", "d"}});
    JArray last = c_->admin("GET", "requests?last=1").array();
    ASSERT_EQ(last.size(), 1u);
    JObject e = last[0].as_object();
    EXPECT_EQ(JStr(e, "method"), "POST");
    EXPECT_EQ(JStr(e, "target"), "/20160918/compartments");
    EXPECT_NE(JStr(e, "body").find("\"logged\""), std::string::npos);
    EXPECT_EQ(ocwemu::JInt(e, "status").value_or(0), 200);
    const JObject& headers = e["headers"].as_object();
    EXPECT_TRUE(headers.contains("x-content-sha256"));
    EXPECT_TRUE(headers.contains("authorization"));
    EXPECT_FALSE(headers.contains("remote_addr"));
    EXPECT_EQ(c_->admin("GET", "requests?last=10").array().size(), 2u);
}

TEST_F(FaultAdminTest, ResetClearsRulesCountersAndTheWorld) {
    addFault(JObject{{"status", 500}});
    c_->get(tenancy_);
    ASSERT_EQ(c_->admin("POST", "reset", "{\"seed\": \"empty\"}").status, 200);
    EXPECT_EQ(c_->get(tenancy_).status, 200);
    EXPECT_EQ(ocwemu::JInt(c_->admin("GET", "stats").object(), "total").value_or(0), 1) << "counted from the reset on";
    JArray comps = c_->get("/20160918/compartments?compartmentId=" + c_->info().tenancy).array();
    EXPECT_TRUE(comps.empty()) << "the empty seed has no compartments";
    EXPECT_EQ(c_->admin("POST", "reset", "{\"seed\": \"bogus\"}").status, 400);
}

TEST_F(FaultAdminTest, AdminRequestsAreNotCountedAndNeedNoSignature) {
    EXPECT_EQ(c_->admin("GET", "info").status, 200);
    EXPECT_EQ(JStr(c_->admin("GET", "info").object(), "tenancy"), c_->info().tenancy);
    EXPECT_EQ(ocwemu::JInt(c_->admin("GET", "stats").object(), "total").value_or(-1), 0);
    EXPECT_EQ(c_->admin("GET", "nothing-here").status, 404);
}

}  // namespace
}  // namespace ocwtest

namespace ocwtest {
namespace {

TEST_F(FaultAdminTest, RequestLogMasksPasswordsInBodies) {
    const std::string dbc = c_->compartment("ocw-demo-db");
    c_->post("/20160918/dbSystems", JObject{{"compartmentId", dbc},
                                           {"dbHome", JObject{{"database", JObject{{"adminPassword", "Sup3r#Secret"}}}}}});
    JArray last = c_->admin("GET", "requests?last=1").array();
    ASSERT_EQ(last.size(), 1u);
    const std::string body = JStr(last[0].as_object(), "body");
    EXPECT_EQ(body.find("Sup3r#Secret"), std::string::npos);
    EXPECT_NE(body.find("\"adminPassword\":\"*****\""), std::string::npos) << body;
}

}  // namespace
}  // namespace ocwtest
