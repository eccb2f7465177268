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


}  // namespace
}  // namespace ocwtest
