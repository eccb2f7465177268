// Lifecycle states seen on the wire: every create and action goes through the
// service's intermediate states and settles after the provisioning delay, and
// requests that do not fit the state are refused. (What the library makes of
// the lifecycles runs end to end.)
#include "EmulatorClient.h"
#include "EmulatorFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace ocwtest {
namespace {

using ocwemu::JStr;

class LifecycleTest : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        c_ = std::make_unique<EmulatorClient>(info());
        demo_ = c_->compartment("ocw-demo");
        ad_ = JStr(c_->get("/20160918/availabilityDomains?compartmentId=" + c_->info().tenancy).array()[0].as_object(), "name");
        for (const auto& img : c_->listAll("/20160918/images?compartmentId=" + demo_))
            if (JStr(img.as_object(), "operatingSystem") == "Oracle Linux") image_ = JStr(img.as_object(), "id");
        for (const auto& s : c_->listAll("/20160918/subnets?compartmentId=" + demo_))
            if (s.as_object().at("availabilityDomain").is_null()) subnet_ = JStr(s.as_object(), "id");
    }
    std::string state(const std::string& path) { return JStr(c_->get(path).object(), "lifecycleState"); }
    // Polls until the state is reached (at most 3 s); returns the last state seen.
    std::string waitFor(const std::string& path, const std::string& want) {
        std::string s;
        for (int i = 0; i < 60; ++i) {
            s = state(path);
            if (s == want) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return s;
    }
    std::string launch(const JObject& extra = {}) {
        JObject body{{"compartmentId", demo_},
                     {"availabilityDomain", ad_},
                     {"shape", "VM.Standard2.1"},
                     {"displayName", "lifecycle-vm"},
                     {"sourceDetails", JObject{{"sourceType", "image"}, {"imageId", image_}}},
                     {"createVnicDetails", JObject{{"subnetId", subnet_}}}};
        for (const auto& kv : extra) body[kv.key()] = kv.value();
        Response r = c_->post("/20160918/instances/", body);
        EXPECT_EQ(r.status, 200) << r.body;
        return JStr(r.object(), "id");
    }
    std::string createVolume(int sizeGb = 50) {
        Response r = c_->post("/20160918/volumes/", JObject{{"compartmentId", demo_},
                                                            {"availabilityDomain", ad_},
                                                            {"displayName", "lifecycle-vol"},
                                                            {"sizeInGBs", std::to_string(sizeGb)}});
        EXPECT_EQ(r.status, 200) << r.body;
        return JStr(r.object(), "id");
    }
    std::unique_ptr<EmulatorClient> c_;
    std::string demo_, ad_, image_, subnet_;
};

TEST_F(LifecycleTest, PowerActionsPassThroughTheirTransitionalStates) {
    const std::string id = launch();
    const std::string path = "/20160918/instances/" + id;
    Response early = c_->post(path + "?action=STOP", JObject{});
    EXPECT_EQ(early.status, 409) << "no action while PROVISIONING";
    EXPECT_EQ(JStr(early.object(), "code"), "IncorrectState");
    ASSERT_EQ(waitFor(path, "RUNNING"), "RUNNING");
    Response stop = c_->send("POST", path + "?action=STOP");
    ASSERT_EQ(stop.status, 200) << stop.body;
    EXPECT_EQ(JStr(stop.object(), "lifecycleState"), "STOPPING");
    EXPECT_EQ(c_->send("POST", path + "?action=START").status, 409) << "START while STOPPING";
    EXPECT_EQ(waitFor(path, "STOPPED"), "STOPPED");
    EXPECT_EQ(JStr(c_->send("POST", path + "?action=STOP").object(), "lifecycleState"), "STOPPED") << "repeat is a no-op";
    EXPECT_EQ(JStr(c_->send("POST", path + "?action=START").object(), "lifecycleState"), "STARTING");
    ASSERT_EQ(waitFor(path, "RUNNING"), "RUNNING");
    Response reset = c_->send("POST", path + "?action=reset");  // the library sends it in lower case
    EXPECT_EQ(JStr(reset.object(), "lifecycleState"), "STOPPING");
    EXPECT_EQ(waitFor(path, "RUNNING"), "RUNNING");
    EXPECT_EQ(c_->send("POST", path + "?action=EXPLODE").status, 400);
    EXPECT_EQ(c_->send("POST", path).status, 400) << "action is required";
}

TEST_F(LifecycleTest, AttachmentShowsItsIscsiTargetOnlyOnceAttached) {
    const std::string inst = launch();
    const std::string vol = createVolume();
    ASSERT_EQ(waitFor("/20160918/instances/" + inst, "RUNNING"), "RUNNING");
    ASSERT_EQ(waitFor("/20160918/volumes/" + vol, "AVAILABLE"), "AVAILABLE");
    Response att = c_->post("/20160918/volumeAttachments/",
                            JObject{{"type", "iscsi"}, {"instanceId", inst}, {"volumeId", vol}});
    ASSERT_EQ(att.status, 200) << att.body;
    JObject a = att.object();
    EXPECT_EQ(JStr(a, "lifecycleState"), "ATTACHING");
    EXPECT_FALSE(a.contains("ipv4"));
    const std::string path = "/20160918/volumeAttachments/" + JStr(a, "id");
    ASSERT_EQ(waitFor(path, "ATTACHED"), "ATTACHED");
    a = c_->get(path).object();
    EXPECT_EQ(JStr(a, "attachmentType"), "iscsi");
    EXPECT_EQ(JStr(a, "ipv4").rfind("169.254.", 0), 0u);
    EXPECT_EQ(JStr(a, "iqn").rfind("iqn.", 0), 0u);
    EXPECT_EQ(ocwemu::JInt(a, "port").value_or(0), 3260);
    Response again = c_->post("/20160918/volumeAttachments", JObject{{"type", "iscsi"}, {"instanceId", inst}, {"volumeId", vol}});
    EXPECT_EQ(again.status, 409) << "a volume attaches once";
    EXPECT_EQ(c_->send("DELETE", "/20160918/volumes/" + vol).status, 409) << "attached volumes are not deleted";
    ASSERT_EQ(c_->send("DELETE", path).status, 204);
    EXPECT_EQ(state(path), "DETACHING");
    EXPECT_EQ(waitFor(path, "DETACHED"), "DETACHED");
    EXPECT_EQ(c_->send("DELETE", "/20160918/volumes/" + vol).status, 204);
    EXPECT_EQ(waitFor("/20160918/volumes/" + vol, "TERMINATED"), "TERMINATED");
}

TEST_F(LifecycleTest, TerminateDetachesVolumesAndDeletesTheBootVolumeUnlessPreserved) {
    for (bool preserve : {false, true}) {
        const std::string inst = launch();
        const std::string vol = createVolume();
        ASSERT_EQ(waitFor("/20160918/instances/" + inst, "RUNNING"), "RUNNING");
        ASSERT_EQ(waitFor("/20160918/volumes/" + vol, "AVAILABLE"), "AVAILABLE");
        const std::string att = JStr(c_->post("/20160918/volumeAttachments", JObject{{"type", "paravirtualized"}, {"instanceId", inst}, {"volumeId", vol}}).object(), "id");
        ASSERT_EQ(waitFor("/20160918/volumeAttachments/" + att, "ATTACHED"), "ATTACHED");
        JArray boot = c_->get("/20160918/bootVolumeAttachments?availabilityDomain=" + UrlEncode(ad_) +
                              "&compartmentId=" + demo_ + "&instanceId=" + inst).array();
        const std::string bootVolume = JStr(boot.at(0).as_object(), "bootVolumeId");
        Response del = c_->send("DELETE", "/20160918/instances/" + inst + (preserve ? "?preserveBootVolume=true" : ""));
        ASSERT_EQ(del.status, 204);
        EXPECT_FALSE(del.header("opc-work-request-id").empty());
        EXPECT_EQ(state("/20160918/instances/" + inst), "TERMINATING");
        EXPECT_EQ(waitFor("/20160918/instances/" + inst, "TERMINATED"), "TERMINATED");
        EXPECT_EQ(state("/20160918/volumeAttachments/" + att), "DETACHED");
        EXPECT_EQ(state("/20160918/volumes/" + vol), "AVAILABLE");
        EXPECT_EQ(state("/20160918/bootVolumes/" + bootVolume), preserve ? "AVAILABLE" : "TERMINATED");
        // The terminated instance stays listed, as the service keeps it for hours.
        bool listed = false;
        for (const auto& i : c_->listAll("/20160918/instances?compartmentId=" + demo_))
            listed |= JStr(i.as_object(), "id") == inst;
        EXPECT_TRUE(listed);
    }
}

TEST_F(LifecycleTest, MalformedJsonIs400AndNeverACrash) {
    for (const char* body : {"{", "[1,2]", "{\"a\":", "\"text\"", "{\"compartmentId\": 5}"}) {
        Response r = c_->send("POST", "/20160918/instances", body);
        EXPECT_EQ(r.status, 400) << body;
        EXPECT_FALSE(JStr(r.object(), "code").empty()) << body;
    }
    EXPECT_EQ(c_->get("/20160918/tenancies/" + c_->info().tenancy).status, 200) << "still serving";
}

TEST_F(LifecycleTest, UnknownPathsAre404NotFoundUnknownIds404NotAuthorizedOrNotFound) {
    // No operation at the path: the service's NotFound.
    for (const char* path : {"/20160918/nonsense", "/whatever", "/20160918/instances/x/y/z", "/instances"}) {
        Response r = c_->get(path);
        EXPECT_EQ(r.status, 404) << path;
        EXPECT_EQ(JStr(r.object(), "code"), "NotFound") << path;
        EXPECT_FALSE(JStr(r.object(), "message").empty()) << path;
        EXPECT_FALSE(r.header("opc-request-id").empty());
    }
    // An operation that exists, for a resource that does not.
    for (const char* path : {"/20160918/instances/ocid1.instance.oc1.phx.none", "/20160918/volumes/ocid1.volume.oc1.phx.none"}) {
        Response r = c_->get(path);
        EXPECT_EQ(r.status, 404) << path;
        EXPECT_EQ(JStr(r.object(), "code"), "NotAuthorizedOrNotFound") << path;
        EXPECT_EQ(JStr(r.object(), "message"), "Authorization failed or requested resource not found.");
    }
    // A path that exists, with a method it has no operation for.
    Response patch = c_->send("PATCH", "/20160918/instances/ocid1.instance.oc1.phx.none", "{}");
    EXPECT_EQ(patch.status, 405);
    EXPECT_EQ(JStr(patch.object(), "code"), "MethodNotAllowed");
    // Credentials are checked first: an unsigned request to an unknown path is 401.
    SignOptions unsigned_;
    unsigned_.sign = false;
    EXPECT_EQ(c_->get("/20160918/nonsense", unsigned_).status, 401);
}


TEST_F(LifecycleTest, ARepeatedRetryTokenReturnsTheFirstAnswerInsteadOfActingTwice) {
    SignOptions o;
    o.extraHeaders = {{"opc-retry-token", "token-one"}};
    const JObject body{{"compartmentId", demo_}, {"availabilityDomain", ad_}, {"displayName", "once"}, {"sizeInGBs", 50}};
    Response first = c_->post("/20160918/volumes", body, o);
    Response again = c_->post("/20160918/volumes", body, o);
    ASSERT_EQ(first.status, 200);
    EXPECT_EQ(JStr(again.object(), "id"), JStr(first.object(), "id"));
    size_t named = 0;
    for (const auto& v : c_->listAll("/20160918/volumes?compartmentId=" + demo_))
        named += JStr(v.as_object(), "displayName") == "once";
    EXPECT_EQ(named, 1u);
}

}  // namespace
}  // namespace ocwtest
