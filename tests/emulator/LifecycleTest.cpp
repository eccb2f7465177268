// Lifecycle timing: every create and action goes through the service's
// intermediate states and settles after the provisioning delay (300 ms here).
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

TEST_F(LifecycleTest, LaunchIsProvisioningThenRunningWithItsBootVolumeAndVnic) {
    const std::string id = launch();
    const std::string path = "/20160918/instances/" + id;
    EXPECT_EQ(state(path), "PROVISIONING");
    EXPECT_EQ(waitFor(path, "RUNNING"), "RUNNING");
    JObject inst = c_->get(path).object();
    EXPECT_EQ(JStr(inst, "region"), "phx");
    EXPECT_EQ(JStr(inst, "timeCreated").size(), 24u) << "RFC 3339 with milliseconds";
    JArray boot = c_->get("/20160918/bootVolumeAttachments/?availabilityDomain=" + UrlEncode(ad_) +
                          "&compartmentId=" + demo_ + "&instanceId=" + id).array();
    ASSERT_EQ(boot.size(), 1u);
    EXPECT_EQ(JStr(boot[0].as_object(), "lifecycleState"), "ATTACHED");
    JArray vnics = c_->get("/20160918/vnicAttachments?compartmentId=" + demo_ + "&instanceId=" + id).array();
    ASSERT_EQ(vnics.size(), 1u);
    JObject vnic = c_->get("/20160918/vnics/" + JStr(vnics[0].as_object(), "vnicId")).object();
    EXPECT_EQ(JStr(vnic, "privateIp").rfind("10.0.0.", 0), 0u);
}

TEST_F(LifecycleTest, FlexShapeTakesOcpusAndMemorySentAsStrings) {
    const std::string id = launch(JObject{{"shape", "VM.Standard.E4.Flex"},
                                          {"shapeConfig", JObject{{"ocpus", "2"}, {"memoryInGBs", "16"}}}});
    JObject cfg = c_->get("/20160918/instances/" + id).object()["shapeConfig"].as_object();
    ASSERT_TRUE(cfg["ocpus"].is_number()) << "answered as a number, whatever was sent";
    ASSERT_TRUE(cfg["memoryInGBs"].is_number());
    EXPECT_EQ(cfg["ocpus"].to_number<double>(), 2.0);
    EXPECT_EQ(cfg["memoryInGBs"].to_number<double>(), 16.0);
    Response tooMuch = c_->post("/20160918/instances", JObject{{"compartmentId", demo_},
                                                               {"availabilityDomain", ad_},
                                                               {"shape", "VM.Standard.E4.Flex"},
                                                               {"shapeConfig", JObject{{"ocpus", 1}, {"memoryInGBs", 500}}},
                                                               {"sourceDetails", JObject{{"sourceType", "image"}, {"imageId", image_}}},
                                                               {"createVnicDetails", JObject{{"subnetId", subnet_}}}});
    EXPECT_EQ(tooMuch.status, 400);
}

TEST_F(LifecycleTest, VolumeSizeSentAsAStringIsReadAndAnsweredAsANumber) {
    const std::string id = createVolume(60);  // "sizeInGBs": "60"
    JObject v = c_->get("/20160918/volumes/" + id).object();
    ASSERT_TRUE(v["sizeInGBs"].is_int64()) << ocwemu::ToJson(v);
    EXPECT_EQ(v["sizeInGBs"].as_int64(), 60);
    EXPECT_EQ(v["sizeInMBs"].as_int64(), 60 * 1024);
    Response tooSmall = c_->post("/20160918/volumes", JObject{{"compartmentId", demo_},
                                                              {"availabilityDomain", ad_},
                                                              {"sizeInGBs", "10"}});
    EXPECT_EQ(tooSmall.status, 400) << "a size sent as a string is checked like a number";
}

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

TEST_F(LifecycleTest, AttachmentsPastTheInstanceLimitAreLimitExceeded) {
    ASSERT_EQ(c_->admin("POST", "limits", "{\"attachmentsPerInstance\": 1}").status, 200);
    const std::string inst = launch();
    const std::string v1 = createVolume(), v2 = createVolume();
    ASSERT_EQ(waitFor("/20160918/instances/" + inst, "RUNNING"), "RUNNING");
    ASSERT_EQ(waitFor("/20160918/volumes/" + v2, "AVAILABLE"), "AVAILABLE");
    EXPECT_EQ(c_->post("/20160918/volumeAttachments", JObject{{"type", "iscsi"}, {"instanceId", inst}, {"volumeId", v1}}).status, 200);
    Response over = c_->post("/20160918/volumeAttachments", JObject{{"type", "iscsi"}, {"instanceId", inst}, {"volumeId", v2}});
    EXPECT_EQ(over.status, 400);
    EXPECT_EQ(JStr(over.object(), "code"), "LimitExceeded");
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

TEST_F(LifecycleTest, BackupGoesRequestReceivedCreatingAvailableAndRestores) {
    const std::string vol = createVolume(70);
    ASSERT_EQ(waitFor("/20160918/volumes/" + vol, "AVAILABLE"), "AVAILABLE");
    Response b = c_->post("/20160918/volumeBackups/", JObject{{"volumeId", vol}, {"displayName", "bk"}});
    ASSERT_EQ(b.status, 200) << b.body;
    EXPECT_EQ(JStr(b.object(), "lifecycleState"), "REQUEST_RECEIVED");
    const std::string path = "/20160918/volumeBackups/" + JStr(b.object(), "id");
    EXPECT_EQ(waitFor(path, "AVAILABLE"), "AVAILABLE");
    JObject backup = c_->get(path).object();
    EXPECT_EQ(ocwemu::JInt(backup, "sizeInMBs").value_or(0), 70 * 1024);
    EXPECT_TRUE(backup.contains("uniqueSizeInMbs"));
    Response restore = c_->post("/20160918/volumes", JObject{{"compartmentId", demo_},
                                                             {"availabilityDomain", ad_},
                                                             {"sourceDetails", JObject{{"type", "volumeBackup"}, {"id", JStr(backup, "id")}}}});
    ASSERT_EQ(restore.status, 200) << restore.body;
    EXPECT_EQ(JStr(restore.object(), "lifecycleState"), "RESTORING");
    EXPECT_EQ(ocwemu::JBool(restore.object(), "isHydrated"), false);
    const std::string restored = "/20160918/volumes/" + JStr(restore.object(), "id");
    EXPECT_EQ(waitFor(restored, "AVAILABLE"), "AVAILABLE");
    EXPECT_EQ(ocwemu::JInt(c_->get(restored).object(), "sizeInGBs").value_or(0), 70);
}

TEST_F(LifecycleTest, ImageImportFromAnObjectIsImportingThenAvailable) {
    Response img = c_->post("/20160918/images", JObject{{"compartmentId", demo_},
                                                       {"displayName", "imported"},
                                                       {"launchMode", "EMULATED"},
                                                       {"imageSourceDetails", JObject{{"sourceType", "objectStorageTuple"},
                                                                                      {"namespaceName", c_->info().namespaceName},
                                                                                      {"bucketName", "ocw-demo-bucket"},
                                                                                      {"objectName", "images/demo.vmdk"},
                                                                                      {"sourceImageType", "VMDK"}}}});
    ASSERT_EQ(img.status, 200) << img.body;
    EXPECT_EQ(JStr(img.object(), "lifecycleState"), "IMPORTING");
    const std::string path = "/20160918/images/" + JStr(img.object(), "id");
    EXPECT_EQ(waitFor(path, "AVAILABLE"), "AVAILABLE");
    EXPECT_EQ(c_->send("DELETE", path).status, 204);
    EXPECT_EQ(state(path), "DELETED");
    Response missing = c_->post("/20160918/images", JObject{{"compartmentId", demo_},
                                                           {"imageSourceDetails", JObject{{"sourceType", "objectStorageTuple"},
                                                                                          {"namespaceName", c_->info().namespaceName},
                                                                                          {"bucketName", "ocw-demo-bucket"},
                                                                                          {"objectName", "nope.vmdk"}}}});
    EXPECT_EQ(missing.status, 400);
}

TEST_F(LifecycleTest, DatabaseBackupAndRestoreMoveTheDatabaseThroughItsStates) {
    const std::string dbc = c_->compartment("ocw-demo-db");
    JArray dbs = c_->listAll("/20160918/databases?compartmentId=" + dbc);
    ASSERT_EQ(dbs.size(), 1u);
    const std::string db = JStr(dbs[0].as_object(), "id");
    Response b = c_->post("/20160918/backups/", JObject{{"databaseId", db}, {"displayName", "nightly"}});
    ASSERT_EQ(b.status, 200) << b.body;
    EXPECT_EQ(JStr(b.object(), "lifecycleState"), "CREATING");
    EXPECT_EQ(state("/20160918/databases/" + db), "BACKUP_IN_PROGRESS");
    EXPECT_EQ(waitFor("/20160918/backups/" + JStr(b.object(), "id"), "ACTIVE"), "ACTIVE");
    EXPECT_EQ(waitFor("/20160918/databases/" + db, "AVAILABLE"), "AVAILABLE");
    EXPECT_EQ(c_->post("/20160918/databases/" + db + "/actions/restore", JObject{}).status, 400) << "one restore target is required";
    Response r = c_->post("/20160918/databases/" + db + "/actions/restore", JObject{{"latest", "true"}});
    ASSERT_EQ(r.status, 200) << r.body;
    EXPECT_EQ(JStr(r.object(), "lifecycleState"), "UPDATING");
    EXPECT_EQ(waitFor("/20160918/databases/" + db, "AVAILABLE"), "AVAILABLE");
    EXPECT_EQ(c_->get("/20160918/dbNodes?compartmentId=" + dbc + "&dbSystemId=" + JStr(dbs[0].as_object(), "dbSystemId"))
                  .array()
                  .size(),
              1u);
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

}  // namespace
}  // namespace ocwtest

namespace ocwtest {
namespace {

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

TEST_F(LifecycleTest, WindowsInstancesHaveInitialCredentialsOthersDoNot) {
    std::string windows;
    for (const auto& img : c_->listAll("/20160918/images?compartmentId=" + demo_ + "&operatingSystem=Windows"))
        windows = JStr(img.as_object(), "id");
    ASSERT_FALSE(windows.empty());
    const std::string win = launch(JObject{{"sourceDetails", JObject{{"sourceType", "image"}, {"imageId", windows}}}});
    Response creds = c_->get("/20160918/instances/" + win + "/initialCredentials");
    ASSERT_EQ(creds.status, 200);
    EXPECT_EQ(JStr(creds.object(), "username"), "opc");
    EXPECT_GE(JStr(creds.object(), "password").size(), 12u);
    EXPECT_EQ(c_->get("/20160918/instances/" + launch() + "/initialCredentials").status, 404);
}

TEST_F(LifecycleTest, AnotherRegionSeesOnlyItsOwnResources) {
    SignOptions ashburn;
    ashburn.host = "iaas.us-ashburn-1.oraclecloud.com";
    JArray there = c_->get("/20160918/instances?compartmentId=" + demo_, ashburn).array();
    ASSERT_EQ(there.size(), 1u);
    EXPECT_EQ(JStr(there[0].as_object(), "region"), "iad");
    const std::string drId = JStr(there[0].as_object(), "id");
    EXPECT_EQ(c_->get("/20160918/instances/" + drId).status, 404) << "not visible from the home region";
    EXPECT_EQ(c_->get("/20160918/instances/" + drId, ashburn).status, 200);
}

}  // namespace
}  // namespace ocwtest
