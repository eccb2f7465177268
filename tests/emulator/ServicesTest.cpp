// Service behaviour beyond lifecycles: the compartment tree, object storage
// listings, bucket rules, VNICs, images captured from instances, boot volumes
// from backups, DB node actions and free-text search.
#include "EmulatorClient.h"
#include "EmulatorFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <thread>

namespace ocwtest {
namespace {

using ocwemu::JStr;

class ServicesTest : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        c_ = std::make_unique<EmulatorClient>(info());
        ns_ = c_->info().namespaceName;
        demo_ = c_->compartment("ocw-demo");
    }
    std::string waitFor(const std::string& path, const std::string& want) {
        std::string s;
        for (int i = 0; i < 60 && s != want; ++i) {
            if (i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
            s = JStr(c_->get(path).object(), "lifecycleState");
        }
        return s;
    }
    std::set<std::string> names(const JArray& items, const char* key = "name") {
        std::set<std::string> out;
        for (const auto& v : items) out.insert(JStr(v.as_object(), key));
        return out;
    }
    std::unique_ptr<EmulatorClient> c_;
    std::string ns_, demo_;
};

TEST_F(ServicesTest, CompartmentListsShowChildrenOrTheWholeSubtree) {
    const std::string tenancy = c_->info().tenancy;
    EXPECT_EQ(names(c_->listAll("/20160918/compartments?compartmentId=" + tenancy)),
              (std::set<std::string>{"ocw-demo", "ocw-demo-db"}));
    EXPECT_EQ(names(c_->listAll("/20160918/compartments?compartmentId=" + demo_)),
              (std::set<std::string>{"ocw-demo-apps"}));
    EXPECT_EQ(c_->listAll("/20160918/compartments?compartmentId=" + tenancy + "&compartmentIdInSubtree=true").size(), 3u);
    EXPECT_EQ(c_->get("/20160918/compartments?compartmentId=" + demo_ + "&compartmentIdInSubtree=true").status, 400);
    JObject root = c_->get("/20160918/compartments/" + tenancy).object();
    EXPECT_EQ(JStr(root, "lifecycleState"), "ACTIVE");
    Response dup = c_->post("/20160918/compartments", JObject{{"compartmentId", tenancy}, {"name", "ocw-demo"}, {"description", "again"}});
    EXPECT_EQ(dup.status, 409);
    EXPECT_EQ(c_->send("DELETE", "/20160918/compartments/" + demo_).status, 409) << "it has a child";
}

TEST_F(ServicesTest, ListObjectsHonoursPrefixDelimiterFieldsAndLimit) {
    const std::string base = "/n/" + ns_ + "/b/ocw-demo-bucket/o";
    for (const char* name : {"a/1.txt", "a/2.txt", "b/x/3.txt", "c.txt"})
        ASSERT_EQ(c_->send("PUT", base + "/" + UrlEncode(name), std::string("data of ") + name).status, 200);
    Response listed = c_->get(base + "?delimiter=/&fields=name,size");
    ASSERT_EQ(listed.status, 200) << listed.body;
    JObject all = listed.object();
    EXPECT_EQ(names(all["objects"].as_array()), (std::set<std::string>{"c.txt", "hello.txt"}));
    std::set<std::string> prefixes;
    for (const auto& p : all["prefixes"].as_array()) prefixes.insert(std::string(p.as_string()));
    EXPECT_EQ(prefixes, (std::set<std::string>{"a/", "b/", "images/"}));
    EXPECT_EQ(ocwemu::JInt(all["objects"].as_array()[0].as_object(), "size").value_or(0), 13);
    JObject page = c_->get(base + "?prefix=a/&limit=1").object();
    ASSERT_EQ(page["objects"].as_array().size(), 1u);
    EXPECT_FALSE(page["objects"].as_array()[0].as_object().contains("size")) << "only the name unless asked";
    EXPECT_EQ(JStr(page, "nextStartWith"), "a/2.txt");
    JObject next = c_->get(base + "?prefix=a/&limit=1&start=a/2.txt").object();
    EXPECT_EQ(names(next["objects"].as_array()), (std::set<std::string>{"a/2.txt"}));
    EXPECT_FALSE(next.contains("nextStartWith"));
    Response head = c_->send("HEAD", base + "/c.txt");
    EXPECT_EQ(head.status, 200);
    EXPECT_FALSE(head.header("etag").empty());
    EXPECT_EQ(c_->get(base + "/missing.txt").status, 404);
    EXPECT_EQ(JStr(c_->get(base + "/missing.txt").object(), "code"), "ObjectNotFound");
}

TEST_F(ServicesTest, BucketsAreUniqueAndOnlyEmptyOnesAreDeleted) {
    const std::string b = "/n/" + ns_ + "/b/";
    Response created = c_->post(b, JObject{{"name", "fresh"}, {"compartmentId", demo_}});
    ASSERT_EQ(created.status, 200) << created.body;
    EXPECT_EQ(JStr(created.object(), "namespace"), ns_);
    EXPECT_EQ(c_->post(b, JObject{{"name", "fresh"}, {"compartmentId", demo_}}).status, 409);
    EXPECT_EQ(names(c_->listAll(b + "?compartmentId=" + demo_)), (std::set<std::string>{"fresh", "ocw-demo-bucket"}));
    ASSERT_EQ(c_->send("PUT", b + "fresh/o/thing", "x").status, 200);
    Response busy = c_->send("DELETE", b + "fresh");
    EXPECT_EQ(busy.status, 409);
    ASSERT_EQ(c_->send("DELETE", b + "fresh/o/thing").status, 204);
    EXPECT_EQ(c_->send("DELETE", b + "fresh").status, 204);
    EXPECT_EQ(JStr(c_->get(b + "fresh").object(), "code"), "BucketNotFound");
    EXPECT_EQ(JStr(c_->get("/n/othernamespace/b/fresh").object(), "code"), "NamespaceNotFound");
}

TEST_F(ServicesTest, SecondaryVnicAttachesAndDetachesButThePrimaryStays) {
    JArray inst = c_->listAll("/20160918/instances?compartmentId=" + demo_);
    const std::string id = JStr(inst[0].as_object(), "id");
    std::string subnet;
    for (const auto& s : c_->listAll("/20160918/subnets?compartmentId=" + demo_)) subnet = JStr(s.as_object(), "id");
    Response att = c_->post("/20160918/vnicAttachments", JObject{{"instanceId", id}, {"createVnicDetails", JObject{{"subnetId", subnet}, {"assignPublicIp", false}}}});
    ASSERT_EQ(att.status, 200) << att.body;
    const std::string path = "/20160918/vnicAttachments/" + JStr(att.object(), "id");
    ASSERT_EQ(waitFor(path, "ATTACHED"), "ATTACHED");
    JObject vnic = c_->get("/20160918/vnics/" + JStr(c_->get(path).object(), "vnicId")).object();
    EXPECT_TRUE(vnic.at("publicIp").is_null());
    EXPECT_EQ(ocwemu::JBool(vnic, "isPrimary"), false);
    EXPECT_EQ(c_->listAll("/20160918/vnicAttachments?compartmentId=" + demo_ + "&instanceId=" + id).size(), 2u);
    EXPECT_EQ(c_->send("DELETE", path).status, 204);
    EXPECT_EQ(waitFor(path, "DETACHED"), "DETACHED");
    for (const auto& a : c_->listAll("/20160918/vnicAttachments?compartmentId=" + demo_ + "&instanceId=" + id)) {
        if (ocwemu::JInt(a.as_object(), "nicIndex").value_or(-1) == 0) {
            EXPECT_EQ(c_->send("DELETE", "/20160918/vnicAttachments/" + JStr(a.as_object(), "id")).status, 400);
        }
    }
}

TEST_F(ServicesTest, CapturingAnImageMarksTheInstanceCreatingImage) {
    JArray inst = c_->listAll("/20160918/instances?compartmentId=" + demo_);
    const std::string id = JStr(inst[0].as_object(), "id");
    Response img = c_->post("/20160918/images", JObject{{"compartmentId", demo_}, {"instanceId", id}, {"displayName", "golden"}});
    ASSERT_EQ(img.status, 200) << img.body;
    EXPECT_EQ(JStr(img.object(), "lifecycleState"), "PROVISIONING");
    EXPECT_EQ(JStr(c_->get("/20160918/instances/" + id).object(), "lifecycleState"), "CREATING_IMAGE");
    EXPECT_EQ(waitFor("/20160918/images/" + JStr(img.object(), "id"), "AVAILABLE"), "AVAILABLE");
    EXPECT_EQ(JStr(c_->get("/20160918/instances/" + id).object(), "lifecycleState"), "RUNNING");
    EXPECT_EQ(names(c_->listAll("/20160918/images?compartmentId=" + demo_ + "&displayName=golden"), "displayName"),
              (std::set<std::string>{"golden"}));
}

TEST_F(ServicesTest, DbNodeActionsStopAndStartTheNode) {
    const std::string dbc = c_->compartment("ocw-demo-db");
    JArray nodes = c_->listAll("/20160918/dbNodes?compartmentId=" + dbc);
    ASSERT_EQ(nodes.size(), 1u);
    const std::string path = "/20160918/dbNodes/" + JStr(nodes[0].as_object(), "id");
    EXPECT_FALSE(nodes[0].as_object().contains("compartmentId"));
    EXPECT_EQ(JStr(c_->send("POST", path + "?action=STOP").object(), "lifecycleState"), "STOPPING");
    EXPECT_EQ(waitFor(path, "STOPPED"), "STOPPED");
    EXPECT_EQ(c_->send("POST", path + "?action=STOP").status, 409);
    EXPECT_EQ(JStr(c_->send("POST", path + "?action=START").object(), "lifecycleState"), "STARTING");
    EXPECT_EQ(waitFor(path, "AVAILABLE"), "AVAILABLE");
}

TEST_F(ServicesTest, TerminatingADbSystemTerminatesItsParts) {
    const std::string dbc = c_->compartment("ocw-demo-db");
    JArray systems = c_->listAll("/20160918/dbSystems?compartmentId=" + dbc);
    ASSERT_EQ(systems.size(), 1u);
    const std::string sys = JStr(systems[0].as_object(), "id");
    ASSERT_EQ(c_->send("DELETE", "/20160918/dbSystems/" + sys).status, 204);
    EXPECT_EQ(waitFor("/20160918/dbSystems/" + sys, "TERMINATED"), "TERMINATED");
    for (const char* kind : {"dbHomes", "databases", "dbNodes"})
        for (const auto& r : c_->listAll(std::string("/20160918/") + kind + "?compartmentId=" + dbc))
            EXPECT_EQ(JStr(r.as_object(), "lifecycleState"), "TERMINATED") << kind;
}

TEST_F(ServicesTest, FreeTextSearchMatchesDisplayNames) {
    Response r = c_->send("POST", "/20180409/resources?limit=100",
                          ocwemu::ToJson(JObject{{"type", "FreeText"}, {"text", "ocw-web"}}));
    ASSERT_EQ(r.status, 200);
    std::set<std::string> types;
    const JObject found = r.object();
    for (const auto& i : found.at("items").as_array()) {
        EXPECT_NE(JStr(i.as_object(), "displayName").find("ocw-web"), std::string::npos);
        types.insert(JStr(i.as_object(), "resourceType"));
    }
    EXPECT_TRUE(types.count("Instance"));
    EXPECT_EQ(c_->send("POST", "/20180409/resources", "{\"type\":\"Mystery\"}").status, 400);
}

}  // namespace
}  // namespace ocwtest
