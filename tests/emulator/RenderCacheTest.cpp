// Answers are rendered once and reused: a resource's JSON text is kept until
// its members or its state change. These cases make sure a kept text never
// outlives the change that should replace it, and that lists built from kept
// texts are the same bytes a serialiser would write.
#include "EmulatorClient.h"
#include "EmulatorFixture.h"
#include "common/Store.h"
#include "oci/OciService.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace ocwtest {
namespace {

using ocwemu::JStr;

ocwemu::Resource& AddVolume(ocwemu::Store& store, std::int64_t now, std::int64_t settleMs) {
    ocwemu::Resource r;
    r.id = "ocid1.volume.oc1.phx.rendercache";
    r.kind = "volume";
    r.compartmentId = "ocid1.compartment.oc1..c";
    r.doc.set("id", r.id);
    r.doc.set("displayName", "before");
    store.schedule(r, now, {{"PROVISIONING", 0}, {"AVAILABLE", settleMs}});
    return store.add(std::move(r));
}

JObject Parse(const std::string& text) {
    JObject o;
    std::string error;
    EXPECT_TRUE(ocwemu::ParseJsonObject(text, o, error)) << error;
    return o;
}

TEST(RenderedJson, FollowsEveryEditStateStepAndHold) {
    ocwemu::Store store;
    const std::int64_t t0 = 1'000'000;
    ocwemu::Resource& v = AddVolume(store, t0, 100);

    JObject first = Parse(ocwemu::RenderedJson(store, v, t0));
    EXPECT_EQ(JStr(first, "lifecycleState"), "PROVISIONING");
    EXPECT_FALSE(first.at("isHydrated").as_bool()) << "members that follow the state are rendered with it";
    EXPECT_EQ(ocwemu::RenderedJson(store, v, t0 + 50), ocwemu::ToJson(first)) << "nothing changed";

    JObject settled = Parse(ocwemu::RenderedJson(store, v, t0 + 100));
    EXPECT_EQ(JStr(settled, "lifecycleState"), "AVAILABLE") << "the state settled without any write";
    EXPECT_TRUE(settled.at("isHydrated").as_bool());

    v.doc.set("displayName", "after");
    EXPECT_EQ(JStr(Parse(ocwemu::RenderedJson(store, v, t0 + 100)), "displayName"), "after");
    v.doc.edit().erase("displayName");
    EXPECT_FALSE(Parse(ocwemu::RenderedJson(store, v, t0 + 100)).contains("displayName"));

    store.hold(v.id, "FAULTY");
    EXPECT_EQ(JStr(Parse(ocwemu::RenderedJson(store, v, t0 + 100)), "lifecycleState"), "FAULTY");
    store.release(v.id);
    EXPECT_EQ(JStr(Parse(ocwemu::RenderedJson(store, v, t0 + 100)), "lifecycleState"), "AVAILABLE");

    store.schedule(v, t0 + 200, {{"TERMINATING", 0}, {"TERMINATED", 100}});
    EXPECT_EQ(JStr(Parse(ocwemu::RenderedJson(store, v, t0 + 200)), "lifecycleState"), "TERMINATING");
    EXPECT_EQ(ocwemu::RenderedJson(store, v, t0 + 200), ocwemu::ToJson(ocwemu::RenderResource(store, v, t0 + 200)))
        << "the kept text is what rendering afresh gives";
}

class RenderCacheTest : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        c_ = std::make_unique<EmulatorClient>(info());
        demo_ = c_->compartment("ocw-demo");
    }
    // The listed instance with that id (an empty object when absent).
    JObject listed(const std::string& id) {
        for (const auto& v : c_->listAll("/20160918/instances?compartmentId=" + demo_))
            if (JStr(v.as_object(), "id") == id) return v.as_object();
        return {};
    }
    std::unique_ptr<EmulatorClient> c_;
    std::string demo_;
};

TEST_F(RenderCacheTest, ListPagesAreTheBytesOfTheSerialisedDocuments) {
    Response page = c_->get("/20160918/instances?compartmentId=" + demo_ + "&limit=1000");
    ASSERT_EQ(page.status, 200);
    JArray items = page.array();
    ASSERT_GE(items.size(), 2u);
    EXPECT_EQ(page.body, ocwemu::ToJson(items)) << "compact, in order, nothing added between the documents";
    for (const auto& item : items) {
        Response one = c_->get("/20160918/instances/" + JStr(item.as_object(), "id"));
        EXPECT_EQ(one.body, ocwemu::ToJson(item)) << "a GET and a list show the same document";
    }
    Response empty = c_->get("/20160918/volumeBackups?compartmentId=" + demo_ + "&displayName=none");
    ASSERT_EQ(empty.status, 200);
    EXPECT_EQ(empty.body, "[]");
}

TEST_F(RenderCacheTest, ListsShowAnUpdateAndASettledStateRightAway) {
    JArray before = c_->listAll("/20160918/instances?compartmentId=" + demo_);
    ASSERT_FALSE(before.empty());
    const std::string id = JStr(before[0].as_object(), "id");
    ASSERT_EQ(JStr(listed(id), "lifecycleState"), "RUNNING");

    Response put = c_->send("PUT", "/20160918/instances/" + id, ocwemu::ToJson(JObject{{"displayName", "renamed"}}));
    ASSERT_EQ(put.status, 200) << put.body;
    EXPECT_EQ(JStr(listed(id), "displayName"), "renamed");

    ASSERT_EQ(c_->send("POST", "/20160918/instances/" + id + "?action=STOP").status, 200);
    EXPECT_EQ(JStr(listed(id), "lifecycleState"), "STOPPING");
    std::string state;
    for (int i = 0; i < 60 && state != "STOPPED"; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        state = JStr(listed(id), "lifecycleState");
    }
    EXPECT_EQ(state, "STOPPED") << "the list follows the timeline, not the last write";
}

}  // namespace
}  // namespace ocwtest
