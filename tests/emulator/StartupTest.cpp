// What the emulator leaves in its state directory for clients, and the edge
// cases of its query language and routing. (Numbers sent as text and HTTP dates
// are read on every end-to-end and SDK request.)
#include "EmulatorClient.h"
#include "EmulatorFixture.h"
#include "TempDir.h"
#include "common/ApiKeys.h"
#include "common/Router.h"
#include "common/TimeUtil.h"
#include "oci/SearchQuery.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace ocwtest {
namespace {

std::string ReadFile(const std::string& p) {
    std::ifstream in(p);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

class EmulatorStartup : public EmulatorTest {};

TEST_F(EmulatorStartup, WritesOciConfigAndIniThatPointAtItself) {
    const ocwemu::EmulatorInfo& i = info();
    EXPECT_EQ(i.endpoint, "https://127.0.0.1:" + std::to_string(i.port));
    const std::string cfg = ReadFile(i.ociConfig);
    EXPECT_EQ(cfg.rfind("[DEFAULT]\n", 0), 0u);
    for (const std::string& line : {"user=" + i.user, "fingerprint=" + i.fingerprint, "key_file=" + i.keyFile,
                                    "tenancy=" + i.tenancy, std::string("region=us-phoenix-1")})
        EXPECT_NE(cfg.find(line + "\n"), std::string::npos) << line;
    EXPECT_EQ(cfg.find("pass_phrase"), std::string::npos);
    const std::string ini = ReadFile(i.ini);
    EXPECT_NE(ini.find("[VirtualServer]"), std::string::npos);
    EXPECT_NE(ini.find("sOCIEndpointOverride=" + i.endpoint + "\n"), std::string::npos);
    EXPECT_NE(ini.find("sCACertFile=" + i.caFile + "\n"), std::string::npos);
    EXPECT_NE(ini.find("nOCIOperationWaitTime=1\n"), std::string::npos);
    // The ready line carries the members clients need.
    JObject line = boost::json::parse(i.toJsonLine()).as_object();
    for (const char* k : {"oci_endpoint", "ca_file", "oci_config", "ini", "tenancy", "user", "fingerprint", "key_file", "region"})
        EXPECT_FALSE(ocwemu::JStr(line, k).empty()) << k;
}

TEST_F(EmulatorStartup, FingerprintIsTheMd5OfTheDerPublicKey) {
    const ocwemu::EmulatorInfo& i = info();
    ocwemu::PKeyPtr key = ocwemu::LoadPrivateKeyPem(i.keyFile, "");
    ASSERT_TRUE(key);
    EXPECT_EQ(ocwemu::KeyFingerprint(key.get()), i.fingerprint);
    EXPECT_EQ(i.fingerprint.size(), 47u);
}

TEST(EmulatorRestart, ReusesItsStateDirectoryAndEncryptsTheKeyWithAPassPhrase) {
    TempDir dir;
    ocwemu::EmulatorOptions o;
    o.stateDir = dir.path();
    o.passPhrase = "s3cret phrase";
    o.seed = "empty";
    std::string tenancy, fingerprint;
    {
        ocwemu::Emulator e(o);
        ASSERT_TRUE(e.start()) << e.lastError();
        tenancy = e.info().tenancy;
        fingerprint = e.info().fingerprint;
        EXPECT_NE(ReadFile(e.info().keyFile).find("ENCRYPTED"), std::string::npos);
        EXPECT_FALSE(ocwemu::LoadPrivateKeyPem(e.info().keyFile, "wrong"));
        EXPECT_NE(ReadFile(e.info().ociConfig).find("pass_phrase=s3cret phrase\n"), std::string::npos);
        EmulatorClient c(e.info(), o.passPhrase);
        EXPECT_EQ(c.get("/20160918/tenancies/" + tenancy).status, 200) << "a client with the encrypted key signs";
    }
    ocwemu::Emulator again(o);
    ASSERT_TRUE(again.start()) << again.lastError();
    EXPECT_EQ(again.info().tenancy, tenancy);
    EXPECT_EQ(again.info().fingerprint, fingerprint);
    again.stop();
}

TEST(SearchQueryLanguage, ParsesTypesConditionsAndSorting) {
    ocwemu::SearchQuery q;
    std::string error;
    ASSERT_TRUE(q.parse("query Subnet resources where vcnId = 'ocid1.vcn.x'", error)) << error;
    EXPECT_EQ(q.types(), std::vector<std::string>{"subnet"});
    EXPECT_TRUE(q.matches([](const std::string& a) { return a == "vcnid" ? "ocid1.vcn.x" : ""; }));
    EXPECT_FALSE(q.matches([](const std::string&) { return std::string("other"); }));
    ASSERT_TRUE(q.parse("query instance, volume resources return allAdditionalFields where "
                        "(lifecycleState = 'RUNNING' || lifecycleState = 'STOPPED') && displayName =~ 'web' "
                        "sorted by timeCreated desc",
                        error))
        << error;
    EXPECT_EQ(q.types().size(), 2u);
    EXPECT_TRUE(q.returnAllAdditionalFields());
    EXPECT_TRUE(q.sortDescending());
    auto attrs = [](std::string state, std::string name) {
        return [state, name](const std::string& a) { return a == "lifecyclestate" ? state : a == "displayname" ? name : ""; };
    };
    EXPECT_TRUE(q.matches(attrs("STOPPED", "my-Web-1")));
    EXPECT_FALSE(q.matches(attrs("TERMINATED", "web")));
    EXPECT_FALSE(q.matches(attrs("RUNNING", "db")));
    ASSERT_TRUE(q.parse("query all resources", error));
    EXPECT_TRUE(q.types().empty());
    for (const char* bad : {"", "query", "query vcn", "select * from vcn", "query vcn resources where",
                            "query vcn resources where a = 'x", "query vcn resources where (a = 'x'"})
        EXPECT_FALSE(q.parse(bad, error)) << bad;
}

TEST(RouterMatching, IgnoresTrailingSlashesAndCollectsTails) {
    ocwemu::Router r;
    int hit = 0;
    r.add("GET", "/v/items", [&](ocwemu::ApiRequest&, ocwemu::ApiResponse&) { hit = 1; });
    r.add("GET", "/v/items/{id}", [&](ocwemu::ApiRequest&, ocwemu::ApiResponse&) { hit = 2; });
    r.add("PUT", "/n/{ns}/o/{*name}", [&](ocwemu::ApiRequest&, ocwemu::ApiResponse&) { hit = 3; });
    auto find = [&](const std::string& method, const std::string& target, ocwemu::ApiRequest& req) {
        req.method = method;
        req.target = target;
        EXPECT_TRUE(ocwemu::ParseTarget(target, req.rawPath, req.segments, req.query));
        return r.find(req);
    };
    ocwemu::ApiRequest a, b, c, d;
    EXPECT_EQ(find("GET", "/v/items/?x=1", a).pattern, "GET /v/items");
    EXPECT_EQ(a.param("x"), "1");
    EXPECT_EQ(find("GET", "/v/items/abc", b).pattern, "GET /v/items/{id}");
    EXPECT_EQ(b.path("id"), "abc");
    ocwemu::Router::Match m = find("PUT", "/n/ns1/o/dir%2Fa/b%20c.txt", c);
    EXPECT_EQ(m.pattern, "PUT /n/{ns}/o/{*name}");
    EXPECT_EQ(c.path("name"), "dir/a/b c.txt");
    ocwemu::Router::Match wrong = find("DELETE", "/v/items", d);
    EXPECT_EQ(wrong.handler, nullptr);
    EXPECT_TRUE(wrong.pathKnown);
    std::string raw;
    std::vector<std::string> segs;
    std::multimap<std::string, std::string> q;
    EXPECT_FALSE(ocwemu::ParseTarget("/v/%zz", raw, segs, q));
    ASSERT_TRUE(ocwemu::ParseTarget("/v?page=abc==&k=a+b", raw, segs, q));
    EXPECT_EQ(q.find("page")->second, "abc==");
    EXPECT_EQ(q.find("k")->second, "a b");
}

}  // namespace
}  // namespace ocwtest
