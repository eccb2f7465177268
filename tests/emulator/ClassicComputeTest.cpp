// Compute Classic as a client following the wire notes sees it: login and
// session cookie, the three kinds of GET, names, state timelines, 409/404,
// orchestrations, and the admin interface on Classic routes.
#include "ClassicClient.h"
#include "EmulatorFixture.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

namespace ocwtest {
namespace {

using ocwemu::JStr;

const std::string kInvalidToken = "{\"message\": \"Authorization token is invalid\"}";

class ClassicComputeTest : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        c_ = std::make_unique<ClassicClient>(info());
        ASSERT_EQ(c_->login().status, 204);
    }
    std::string u() const { return c_->u(); }
    // A name no other test uses.
    std::string fresh(const std::string& stem) {
        return stem + std::to_string(++counter_) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name();
    }
    JObject launch(const std::string& name, const std::string& bootVolume = {}) {
        JObject spec{{"shape", "oc3"}, {"name", u() + "/" + name}, {"label", name}};
        if (bootVolume.empty()) {
            spec["imagelist"] = "/oracle/public/OL_7.2_UEKR4_x86_64";
        } else {
            spec["storage_attachments"] = JArray{JObject{{"index", 1}, {"volume", bootVolume}}};
            spec["boot_order"] = JArray{1};
        }
        Response r = c_->post("/launchplan/", JObject{{"instances", JArray{spec}}});
        EXPECT_EQ(r.status, 201) << r.body;
        JArray instances = r.object()["instances"].as_array();
        return instances.empty() ? JObject{} : instances[0].as_object();
    }
    std::unique_ptr<ClassicClient> c_;
    int counter_ = 0;
};

TEST_F(ClassicComputeTest, LoginSetsOneNimbulaCookieAndRefusesWrongCredentialsWithTheServiceText) {
    ClassicClient fresh(c_->info());
    Response ok = fresh.login();
    EXPECT_EQ(ok.status, 204);
    EXPECT_EQ(ok.headers.count("Set-Cookie"), 1u);
    EXPECT_EQ(ok.header("Set-Cookie").rfind("nimbula=", 0), 0u);
    EXPECT_NE(ok.header("Set-Cookie").find("; Path=/; Max-Age=1800"), std::string::npos);
    EXPECT_TRUE(ok.body.empty());
    for (const auto& bad :
         std::vector<std::pair<std::string, std::string>>{{c_->u(), "wrong"},
                                                          {c_->info().classicUser, c_->info().classicPassword},
                                                          {"/Compute-other/jdoe", c_->info().classicPassword}}) {
        Response r = fresh.login(bad.first, bad.second);
        EXPECT_EQ(r.status, 401) << bad.first;
        EXPECT_EQ(r.body, "{\"message\": \"Incorrect username or password\"}");
    }
}

TEST_F(ClassicComputeTest, CookieIsTakenPlainOrAsTheWholeSetCookieValueAndAnythingElseGetsTheExact401) {
    const std::string setCookie = c_->cookie;
    const std::string token = setCookie.substr(8, setCookie.find(';') - 8);
    struct Case {
        std::string cookie;
        int status;
    } cases[] = {{"nimbula=" + token, 200},          {setCookie, 200}, {" " + setCookie, 200},
                 {"other=1; nimbula=" + token, 200}, {"", 401},        {"nimbula=forged", 401},
                 {"nimbula=" + token + "x", 401}};
    for (const Case& k : cases) {
        c_->cookie = k.cookie;
        Response r = c_->get("/shape/");
        EXPECT_EQ(r.status, k.status) << "[" << k.cookie << "]";
        if (k.status == 401) EXPECT_EQ(r.body, kInvalidToken);
    }
}

TEST_F(ClassicComputeTest, AdminEndsEverySessionAndRefreshNeedsALiveOne) {
    EXPECT_EQ(c_->get("/refresh/").status, 204);
    EmulatorClient admin(c_->info());
    EXPECT_EQ(ocwemu::JInt(admin.admin("GET", "classic/sessions").object(), "live").value_or(0) > 0, true);
    ASSERT_EQ(admin.admin("DELETE", "classic/sessions").status, 204);
    Response dead = c_->get("/shape/");
    EXPECT_EQ(dead.status, 401);
    EXPECT_EQ(dead.body, kInvalidToken);
    EXPECT_EQ(c_->get("/refresh/").status, 401);
    ASSERT_EQ(c_->login().status, 204);
    EXPECT_EQ(c_->get("/shape/").status, 200);
}

TEST(ClassicSession, EndsAfterItsLifetime) {
    ocwemu::EmulatorOptions o;
    o.seed = "empty";
    o.classicSessionMs = 200;
    ocwemu::Emulator emu(o);
    ASSERT_TRUE(emu.start()) << emu.lastError();
    ClassicClient c(emu.info());
    ASSERT_EQ(c.login().status, 204);
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    EXPECT_EQ(c.get("/shape/").body, kInvalidToken);
    emu.expireClassicSessions();
}

TEST_F(ClassicComputeTest, DirectoryGetsListContainersThenChildrenWithSubContainersEndingInSlash) {
    const std::string u = this->u() + "/";
    struct Case {
        std::string path;
        std::vector<std::string> contains;
        size_t size;  // 0: at least the listed
    } cases[] = {{"/instance/", {"/Compute-acme/"}, 1},
                 {"/instance/Compute-acme", {u}, 1},
                 {"/instance/Compute-acme/", {u}, 1},
                 {"/instance" + u, {u + "web1/", u + "db1/", u + "web2/"}, 0},
                 {"/storage/volume" + u, {u + "web1-boot", u + "web1-data", u + "scratch"}, 0},
                 {"/machineimage/", {"/Compute-acme/", "/oracle/"}, 2},
                 {"/instance/Compute-other/", {}, 0}};
    for (const Case& k : cases) {
        Response r = c_->get(k.path, kDirectoryType);
        EXPECT_EQ(r.status, 200) << k.path;
        EXPECT_EQ(r.header("Content-Type"), kDirectoryType);
        std::vector<std::string> names;
        JObject listing = r.object();
        for (const JValue& v : listing["result"].as_array()) names.push_back(std::string(v.as_string().c_str()));
        for (const auto& want : k.contains)
            EXPECT_NE(std::find(names.begin(), names.end(), want), names.end()) << k.path << " lacks " << want;
        if (k.size) EXPECT_EQ(names.size(), k.size) << k.path;
        if (k.path == "/instance/Compute-other/") EXPECT_EQ(r.body, "{\"result\": []}");
    }
    // A prefix lists the instance under it: "<name>/<uuid>".
    Response web1 = c_->get("/instance" + u + "web1", kDirectoryType);
    ASSERT_EQ(web1.object()["result"].as_array().size(), 1u);
    EXPECT_EQ(std::string(web1.object()["result"].as_array()[0].as_string().c_str()).rfind(u + "web1/", 0), 0u);
}

TEST_F(ClassicComputeTest, JsonGetsAnswerDetailListsForSlashEndedPathsObjectsForNamesAnd404ForPrefixes) {
    const std::string vol = u() + "/web1-boot";
    Response list = c_->get("/storage/volume" + vol + "/");
    ASSERT_EQ(list.status, 200);
    JArray result = list.object()["result"].as_array();
    ASSERT_EQ(result.size(), 1u) << list.body;
    EXPECT_EQ(JStr(result[0].as_object(), "name"), vol);
    Response one = c_->get("/storage/volume" + vol, "");  // no Accept: the object type
    ASSERT_EQ(one.status, 200);
    EXPECT_EQ(JStr(one.object(), "uri"), c_->info().classicEndpoint + "/storage/volume" + vol);
    EXPECT_EQ(JStr(one.object(), "size"), "21474836480");
    EXPECT_NE(one.body.find("\"status\": \"Online\", "), std::string::npos) << "blanks after colons and commas";
    EXPECT_EQ(c_->get("/instance" + u() + "/web1").status, 404) << "an instance name without its uuid";
    Response missing = c_->get("/storage/volume" + u() + "/nothing");
    EXPECT_EQ(missing.status, 404);
    EXPECT_FALSE(JStr(missing.object(), "message").empty());
    // Filters of the user container; values may carry one trailing "/", paths double slashes.
    const std::string web1 =
        JStr(c_->get("/instance" + u() + "/web1/").object()["result"].as_array()[0].as_object(), "name");
    Response atts = c_->get("/storage/attachment/" + u() + "/?instance_name=" + web1 + "/");
    ASSERT_EQ(atts.status, 200);
    EXPECT_EQ(atts.object()["result"].as_array().size(), 2u) << atts.body;
    Response byVolume = c_->get("/storage/attachment/" + u() + "/?storage_volume_name=" + u() + "/web1-data/");
    ASSERT_EQ(byVolume.object()["result"].as_array().size(), 1u);
    EXPECT_EQ(ocwemu::JInt(byVolume.object()["result"].as_array()[0].as_object(), "index").value_or(0), 2);
}

TEST_F(ClassicComputeTest, NamesOutsideTheCallersContainerOrMalformedAreRefused) {
    struct Case {
        std::string name;
        int status;
    } cases[] = {{"/Compute-acme/other/v1", 403}, {"/Compute-beta/jdoe/v1", 403}, {"v1", 400},
                 {u() + "/bad name", 400},        {u() + "/a//b", 400},           {u() + "/ok-" + fresh("v"), 201}};
    for (const Case& k : cases)
        EXPECT_EQ(c_->post("/storage/volume/", JObject{{"name", k.name}, {"size", "1G"}}).status, k.status) << k.name;
}

TEST_F(ClassicComputeTest, LaunchedInstanceRunsThenShutsDownRestartsRebootsAndIsDeleted) {
    JObject queued = launch(fresh("vm"));
    const std::string name = JStr(queued, "name");
    EXPECT_EQ(JStr(queued, "state"), "queued");
    EXPECT_EQ(JStr(queued, "ip"), "0.0.0.0");
    EXPECT_EQ(name.substr(name.rfind('/') + 1), JStr(queued, "id"));
    const std::string path = "/instance" + name;
    EXPECT_EQ(c_->waitFor(path, "state", "running"), "running");
    Response off = c_->put(path, JObject{{"desired_state", "shutdown"}});
    EXPECT_EQ(off.status, 200);
    EXPECT_EQ(JStr(off.object(), "desired_state"), "shutdown");
    EXPECT_EQ(JStr(off.object(), "state"), "stopping");
    EXPECT_EQ(c_->waitFor(path, "state", "shutdown"), "shutdown");
    EXPECT_EQ(c_->post("/rebootinstancerequest/", JObject{{"hard", true}, {"instance", name}}).status, 409);
    EXPECT_EQ(c_->put(path, JObject{{"desired_state", "running"}}).status, 200);
    EXPECT_EQ(c_->waitFor(path, "state", "running"), "running");
    Response reboot = c_->post("/rebootinstancerequest/", JObject{{"hard", true}, {"instance", name}});
    ASSERT_EQ(reboot.status, 201);
    EXPECT_EQ(JStr(reboot.object(), "name").rfind(name + "/", 0), 0u);
    EXPECT_EQ(c_->waitFor("/rebootinstancerequest" + JStr(reboot.object(), "name"), "state", "complete"), "complete");
    EXPECT_EQ(c_->del(path).status, 204);
    EXPECT_EQ(JStr(c_->get(path).object(), "state"), "stopping");
    EXPECT_EQ(c_->waitFor(path, "state", "404"), "404");
}

TEST_F(ClassicComputeTest, VolumesSnapshotRestoreAttachRewriteAndDelete) {
    const std::string vol = u() + "/" + fresh("data");
    Response created =
        c_->post("/storage/volume/",
                 JObject{{"name", vol}, {"size", "10G"}, {"properties", JArray{"/oracle/public/storage/default"}}});
    ASSERT_EQ(created.status, 201) << created.body;
    EXPECT_EQ(JStr(created.object(), "size"), "10737418240");
    EXPECT_EQ(JStr(created.object(), "status"), "Initializing");
    EXPECT_EQ(c_->post("/storage/volume/", JObject{{"name", vol}, {"size", "10G"}}).status, 409);
    EXPECT_EQ(c_->waitFor("/storage/volume" + vol, "status", "Online"), "Online");

    Response outside = c_->post("/storage/snapshot/", JObject{{"volume", vol}, {"name", u() + "/elsewhere"}});
    EXPECT_EQ(outside.status, 400) << "a snapshot is named under its volume";
    Response snap =
        c_->post("/storage/snapshot/", JObject{{"volume", vol},
                                               {"name", vol + "/s1"},
                                               {"description", "d"},
                                               {"property", "/oracle/private/storage/snapshot/collocated"}});
    ASSERT_EQ(snap.status, 201) << snap.body;
    EXPECT_EQ(c_->waitFor("/storage/snapshot" + vol + "/s1", "status", "completed"), "completed");
    const std::string copy = vol + "-copy";
    Response restored =
        c_->post("/storage/volume/", JObject{{"name", copy}, {"snapshot", vol + "/s1"}, {"size", "10G"}});
    ASSERT_EQ(restored.status, 201) << restored.body;
    EXPECT_EQ(c_->waitFor("/storage/volume" + copy, "status", "Online"), "Online");
    EXPECT_EQ(c_->del("/storage/snapshot" + vol + "/s1").status, 409) << "its volume still exists";

    // The whole-object rewrite answers the volume with the URI the client used.
    Response bootable =
        c_->put("/storage/volume" + copy, JObject{{"bootable", true},
                                                  {"name", copy},
                                                  {"size", "10G"},
                                                  {"properties", JArray{"oracle/public/storage/default"}},
                                                  {"description", ""}});
    ASSERT_EQ(bootable.status, 200) << bootable.body;
    EXPECT_EQ(JStr(bootable.object(), "uri"), c_->info().classicEndpoint + "/storage/volume" + copy);
    EXPECT_TRUE(ocwemu::JBool(bootable.object(), "bootable").value_or(false));
    EXPECT_EQ(JStr(bootable.object(), "description"), "");

    JObject inst = launch(fresh("host"));
    const std::string instance = JStr(inst, "name");
    ASSERT_EQ(c_->waitFor("/instance" + instance, "state", "running"), "running");
    Response att = c_->post("/storage/attachment/",
                            JObject{{"index", 3}, {"storage_volume_name", vol}, {"instance_name", instance}});
    ASSERT_EQ(att.status, 201) << att.body;
    EXPECT_EQ(JStr(att.object(), "state"), "attaching");
    const std::string attPath = "/storage/attachment" + JStr(att.object(), "name");
    EXPECT_EQ(c_->waitFor(attPath, "state", "attached"), "attached");
    EXPECT_EQ(c_->post("/storage/attachment/",
                       JObject{{"index", 3}, {"storage_volume_name", copy}, {"instance_name", instance}})
                  .status,
              409);
    EXPECT_EQ(c_->post("/storage/attachment/",
                       JObject{{"index", 11}, {"storage_volume_name", copy}, {"instance_name", instance}})
                  .status,
              400);
    EXPECT_EQ(c_->del("/storage/volume" + vol).status, 409) << "attached";
    EXPECT_EQ(c_->del(attPath).status, 204);
    EXPECT_EQ(JStr(c_->get(attPath).object(), "state"), "detaching");
    EXPECT_EQ(c_->waitFor(attPath, "state", "404"), "404");
    EXPECT_EQ(c_->del("/storage/volume" + copy).status, 204);
    EXPECT_EQ(c_->waitFor("/storage/volume" + copy, "status", "404"), "404");
    EXPECT_EQ(c_->del("/storage/snapshot" + vol + "/s1").status, 204);
    EXPECT_EQ(c_->del("/storage/volume" + vol).status, 204);
}

TEST_F(ClassicComputeTest, ActiveOrchestrationStartsItsInstanceAndShowsItsFullName) {
    const std::string inst = u() + "/" + fresh("orch");
    JObject tmpl{{"shape", "oc3"}, {"name", inst}, {"label", "x"}, {"imagelist", "/oracle/public/OL_7.2_UEKR4_x86_64"}};
    Response o =
        c_->post("/platform/v1/orchestration/",
                 JObject{{"desired_state", "active"},
                         {"objects", JArray{JObject{{"template", tmpl}, {"label", "x"}, {"type", "Instance"}}}},
                         {"name", inst + "_master"},
                         {"description", "d"}});
    ASSERT_EQ(o.status, 201) << o.body;
    const std::string path = "/platform/v1/orchestration" + inst + "_master";
    EXPECT_EQ(c_->waitFor(path, "status", "active"), "active");
    Response listed = c_->get(path + "/");
    ASSERT_EQ(listed.object()["result"].as_array().size(), 1u) << listed.body;
    JObject object = listed.object()["result"].as_array()[0].as_object()["objects"].as_array()[0].as_object();
    ASSERT_EQ(object["instances"].as_array().size(), 1u);
    const std::string started = JStr(object["instances"].as_array()[0].as_object(), "name");
    EXPECT_EQ(started.rfind(inst + "/", 0), 0u);
    EXPECT_EQ(JStr(c_->get("/instance" + started).object(), "state"), "running");
    EXPECT_EQ(c_->del(path).status, 409) << "active orchestrations are deactivated first";
    EXPECT_EQ(c_->put(path + "?desired_state=inactive", JObject{}).status, 200);
    EXPECT_EQ(c_->waitFor(path, "status", "inactive"), "inactive");
    EXPECT_EQ(c_->get("/instance" + started).status, 404);
    // The seed's orchestration-started instance has the three saved orchestrations.
    for (const char* suffix : {"_master", "_instance", "_storage"})
        EXPECT_EQ(
            c_->get("/platform/v1/orchestration" + u() + "/web2" + suffix + "/").object()["result"].as_array().size(),
            1u)
            << suffix;
}

TEST_F(ClassicComputeTest, FaultsHoldsAndTheRequestLogCoverClassicRoutes) {
    EmulatorClient admin(c_->info());
    Response rule = admin.admin(
        "POST", "faults", ocwemu::ToJson(JObject{{"pathPrefix", "/storage/volume"}, {"status", 503}, {"times", 1}}));
    ASSERT_EQ(rule.status, 200);
    Response hit = c_->get("/storage/volume" + u() + "/scratch");
    EXPECT_EQ(hit.status, 503);
    EXPECT_EQ(hit.body.rfind("{\"message\": ", 0), 0u) << hit.body;
    const std::string id = "/storage/volume" + u() + "/scratch";
    ASSERT_EQ(admin.admin("POST", "faults", ocwemu::ToJson(JObject{{"resourceId", id}, {"state", "Error"}})).status,
              200);
    EXPECT_EQ(JStr(c_->get(id).object(), "status"), "Error");
    ASSERT_EQ(admin.admin("DELETE", "faults/hold:" + UrlEncode(id)).status, 204) << "slashes travel encoded";
    EXPECT_EQ(JStr(c_->get(id).object(), "status"), "Online");
    // Neither the login password nor the session cookie reach the log.
    c_->login();
    JArray last = admin.admin("GET", "requests?last=2").array();
    ASSERT_EQ(last.size(), 2u);
    const std::string log = ocwemu::ToJson(last);
    EXPECT_EQ(log.find(c_->info().classicPassword), std::string::npos);
    const std::string token = c_->cookie.substr(8, c_->cookie.find(';') - 8);
    EXPECT_EQ(log.find(token), std::string::npos);
}

TEST(ClassicStartup, WritesAPrivateProfileAndNamesItInTheReadyLineWithoutThePassword) {
    const ocwemu::EmulatorInfo& i = SharedEmulator()->info();
    std::ifstream in(i.classicProfile);
    std::stringstream text;
    text << in.rdbuf();
    for (const std::string& line : {"compute_endpoint=" + i.classicEndpoint, "paas_endpoint=" + i.paasEndpoint,
                                    "identity_domain=" + i.identityDomain, "user=" + i.classicUser,
                                    "password=" + i.classicPassword, "ca_file=" + i.caFile})
        EXPECT_NE(text.str().find("\n" + line + "\n"), std::string::npos) << line;
    struct stat st {};
    ASSERT_EQ(::stat(i.classicProfile.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600);
    JObject line = boost::json::parse(i.toJsonLine()).as_object();
    for (const char* k : {"classic_endpoint", "paas_endpoint", "identity_domain", "classic_user", "classic_profile"})
        EXPECT_FALSE(JStr(line, k).empty()) << k;
    EXPECT_EQ(i.toJsonLine().find(i.classicPassword), std::string::npos);
}

}  // namespace
}  // namespace ocwtest
