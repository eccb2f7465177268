// The emulator accepts requests signed as OCI clients sign them and refuses
// every other request with 401 NotAuthenticated, counting the reason.
#include "EmulatorClient.h"
#include "EmulatorFixture.h"
#include "TestKeys.h"

#include <gtest/gtest.h>

#include <functional>

namespace ocwtest {
namespace {

class SignatureTest : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        client_ = std::make_unique<EmulatorClient>(info());
        tenancyPath_ = "/20160918/tenancies/" + client_->info().tenancy;
    }
    // The 401 and the rejection reason the admin statistics recorded for it.
    void ExpectRejected(const Response& r, const std::string& reason) {
        EXPECT_EQ(r.status, 401) << r.body;
        EXPECT_EQ(ocwemu::JStr(r.object(), "code"), "NotAuthenticated");
        EXPECT_FALSE(r.header("opc-request-id").empty());
        JObject stats = client_->admin("GET", "stats").object();
        const JObject& byReason = stats["signatureRejections"].as_object()["byReason"].as_object();
        EXPECT_TRUE(byReason.contains(reason)) << ocwemu::ToJson(stats);
    }
    std::unique_ptr<EmulatorClient> client_;
    std::string tenancyPath_;
};

TEST_F(SignatureTest, AcceptsTheTypeScriptSdkOrderWithXDateAndMixedCaseNames) {
    SignOptions o;
    o.useXDate = true;
    o.version = "-";  // placed first by that SDK, optional for the service
    o.headers = {"x-date", "(request-target)", "host", "Content-Type", "Content-Length", "x-content-sha256"};
    Response r = client_->post("/20160918/compartments",
                               JObject{{"compartmentId", client_->info().tenancy}, {"name", "ts-order"},
                                       {"description", "signed like the TypeScript SDK"}},
                               o);
    EXPECT_EQ(r.status, 200) << r.body;
}

TEST_F(SignatureTest, AcceptsAnyHostNameAndUsesItsRegion) {
    SignOptions o;
    o.host = "identity.us-ashburn-1.oci.oraclecloud.com";
    Response r = client_->get("/20160918/availabilityDomains?compartmentId=" + client_->info().tenancy, o);
    ASSERT_EQ(r.status, 200) << r.body;
    EXPECT_EQ(ocwemu::JStr(r.array().at(0).as_object(), "name").find("US-ASHBURN-AD-1") != std::string::npos, true);
}

TEST_F(SignatureTest, EveryBrokenPartOfTheSignatureIsRejectedWithItsReason) {
    const JObject body{{"compartmentId", client_->info().tenancy}, {"name", "x"}};
    struct Case {
        const char* reason;
        bool post;
        std::function<void(SignOptions&)> breakIt;
    };
    const Case cases[] = {
        {"missing_authorization", false, [](SignOptions& o) { o.sign = false; }},
        // Signed with a key the emulator never saw, under the real keyId.
        {"bad_signature", false, [](SignOptions& o) { o.keyPem = ToPem(GenerateRsaKey().get(), KeyFormat::Pkcs8); }},
        {"unknown_key", false, [this](SignOptions& o) {
             o.keyId = info().tenancy + "/" + info().user + "/00:11:22:33:44:55:66:77:88:99:aa:bb:cc:dd:ee:ff";
         }},
        {"bad_signature", false, [](SignOptions& o) { o.corruptSignature = true; }},
        {"bad_algorithm", false, [](SignOptions& o) { o.algorithm = "hmac-sha256"; }},
        {"bad_version", false, [](SignOptions& o) { o.version = "2"; }},
        {"stale_date", false, [](SignOptions& o) { o.dateOffsetSeconds = -301; }},
        {"stale_date", false, [](SignOptions& o) { o.dateOffsetSeconds = 400; }},
        {"missing_signed_header", false, [](SignOptions& o) { o.headers = {"date", "(request-target)"}; }},
        {"missing_signed_header", false, [](SignOptions& o) { o.headers = {"date", "host"}; }},
        {"missing_signed_header", true, [](SignOptions& o) { o.headers = {"date", "(request-target)", "host"}; }},
        {"missing_signed_header", true, [](SignOptions& o) {
             o.headers = {"date", "(request-target)", "host", "content-length", "content-type"};
         }},
        {"body_hash_mismatch", true, [](SignOptions& o) { o.contentSha256 = Sha256Base64("{\"something\":\"else\"}"); }},
        {"missing_header", false, [](SignOptions& o) { o.headers = {"date", "(request-target)", "host", "opc-retry-token"}; }},
        // The query is part of the signed target, exactly as sent.
        {"bad_signature", false, [this](SignOptions& o) { o.signedTarget = tenancyPath_ + "?a=1"; }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reason);
        SignOptions o;
        c.breakIt(o);
        ExpectRejected(c.post ? client_->post("/20160918/compartments", body, o) : client_->get(tenancyPath_ + "?a=2", o),
                       c.reason);
    }
    SignOptions near;
    near.dateOffsetSeconds = -200;
    EXPECT_EQ(client_->get(tenancyPath_ + "?a=2", near).status, 200) << "a date within five minutes is fine";
}

TEST_F(SignatureTest, RejectsAContentLengthThatDoesNotMatchTheBody) {
    const JObject body{{"compartmentId", client_->info().tenancy}, {"name", "length-check"},
                       {"description", "streamed in chunks"}};
    const std::string size = std::to_string(ocwemu::ToJson(body).size());
    SignOptions longer;
    longer.contentLength = std::to_string(ocwemu::ToJson(body).size() + 10);
    ExpectRejected(client_->post("/20160918/compartments", body, longer), "content_length_mismatch");
    SignOptions padded;
    padded.contentLength = "0" + size;  // the same number, but not the length as signed
    ExpectRejected(client_->post("/20160918/compartments", body, padded), "content_length_mismatch");
    SignOptions exact;
    exact.contentLength = size;  // the same chunked request with the true length passes
    Response r = client_->post("/20160918/compartments", body, exact);
    EXPECT_EQ(r.status, 200) << r.body;
}

TEST_F(SignatureTest, ObjectUploadsNeedNoBodyHeaders) {
    const std::string ns = client_->info().namespaceName;
    SignOptions o;
    o.headers = {"date", "(request-target)", "host"};
    o.contentType = "application/octet-stream";
    Response put = client_->send("PUT", "/n/" + ns + "/b/ocw-demo-bucket/o/unsigned-body.bin", "raw bytes", o);
    EXPECT_EQ(put.status, 200) << put.body;
    EXPECT_FALSE(put.header("opc-content-md5").empty());
    Response get = client_->get("/n/" + ns + "/b/ocw-demo-bucket/o/unsigned-body.bin");
    EXPECT_EQ(get.body, "raw bytes");
}

TEST_F(SignatureTest, ObjectStorageUsesItsShorterMessage) {
    SignOptions o;
    o.sign = false;
    Response r = client_->get("/n/", o);
    EXPECT_EQ(r.status, 401);
    EXPECT_EQ(ocwemu::JStr(r.object(), "message"), "The required information to complete authentication was not provided.");
}

TEST_F(SignatureTest, AKeyRegisteredThroughTheAdminInterfaceIsAccepted) {
    PkeyPtr key = GenerateRsaKey();
    Response reg = client_->admin("POST", "keys", ocwemu::ToJson(JObject{{"publicKey", PublicPem(key.get())}}));
    ASSERT_EQ(reg.status, 200) << reg.body;
    SignOptions o;
    o.keyPem = ToPem(key.get(), KeyFormat::Pkcs8);
    o.keyId = ocwemu::JStr(reg.object(), "keyId");
    EXPECT_EQ(client_->get(tenancyPath_, o).status, 200);
    // A reset forgets it again.
    ASSERT_EQ(client_->admin("POST", "reset").status, 200);
    EXPECT_EQ(client_->get(tenancyPath_, o).status, 401);
}

}  // namespace
}  // namespace ocwtest
