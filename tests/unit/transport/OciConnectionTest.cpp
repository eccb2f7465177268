// The OCI connection against real HTTPS servers on loopback, for what the
// emulator cannot show: the exact order of the header lines, the back-off
// arithmetic of the retry loop, the proxy, pass phrase and secret handling,
// and how the connection reads its user text and tunables. (What the requests
// do to the cloud runs end to end against the emulator.)
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "LogCapture.h"
#include "LoopbackTlsServer.h"
#include "RawHttpServer.h"
#include "SignatureCheck.h"
#include "TestKeys.h"
#include "transport/OCIConnectionUtils.h"
#include "transport/OracleCloudInfrastructureConnection.h"

using namespace OracleCloudSDKWrapper;
using namespace ocwtest;
using ::testing::ElementsAre;

namespace {

constexpr const char* kTenancy = "ocid1.tenancy.oc1..aaaatenancy";
constexpr const char* kUser = "ocid1.user.oc1..aaaauser";
constexpr const char* kFingerprint = "20:3b:97:13:55:1c:5b:0d:d3:37:d8:50:4e:c5:3a:34";
constexpr const char* kPassphrase = "conn-Pass-phrase-QUUX";

EVP_PKEY* ConnectionKey() {
    static PkeyPtr key = GenerateRsaKey();
    return key.get();
}

std::string KeyId() { return std::string(kTenancy) + "/" + kUser + "/" + kFingerprint; }

// Records the pauses instead of sleeping them.
class TestConnection : public COracleCloudInfrastructureConnection {
public:
    TestConnection() : COracleCloudInfrastructureConnection(nullptr) {}
    std::vector<unsigned> pauses;

protected:
    void sleepBeforeRetry(unsigned seconds) override { pauses.push_back(seconds); }
};

class OciConnection : public ::testing::Test {
protected:
    using Entries = ScopedConfigFile::Entries;

    void SetUp() override {
        keyFile_ = dir_.write("api_key.pem", ToPem(ConnectionKey(), KeyFormat::Pkcs8Encrypted, kPassphrase));
    }

    // Answers every request with `status` and `body` for the first `failures`
    // requests, 200 and "{}" after them.
    void AnswerAll(int status, const std::string& body, int failures = 1 << 30) {
        auto handler = [this, status, body, failures](const httplib::Request&, httplib::Response& res) {
            const bool fail = ++attempts_ <= failures;
            res.status = fail ? status : 200;
            res.set_content(fail ? body : "{}", "application/json");
        };
        httplib::Server& s = server_.server();
        s.Get(R"(/.*)", handler).Post(R"(/.*)", handler).Put(R"(/.*)", handler);
        s.Delete(R"(/.*)", handler).Patch(R"(/.*)", handler);
    }

    // Starts the server and sends every request there; `extra` entries join
    // section VirtualServer.
    void StartServer(const Entries& extra = {}) {
        server_.start();
        Entries vs = server_.clientConfig();
        vs.emplace_back("sOCIEndpointOverride", server_.baseUrl());
        vs.insert(vs.end(), extra.begin(), extra.end());
        Configure(vs);
    }

    void Configure(const Entries& virtualServer, const Entries& base = {}) {
        config_.reset();  // before the next one: each restores the file it replaced
        config_ = std::make_unique<ScopedConfigFile>(
            ScopedConfigFile::Sections{{"VirtualServer", virtualServer}, {"Base", base}});
    }

    std::unique_ptr<TestConnection> Connected(EOracleServiceType service = OCI_SERVICE_CORE) {
        auto c = std::make_unique<TestConnection>();
        EXPECT_TRUE(c->connect(kTenancy, std::string(kUser) + "|" + kFingerprint + "|" + keyFile_ + "|us-ashburn-1",
                               kPassphrase, service));
        return c;
    }

    static std::string Verify(const RecordedRequest& r) {
        return CheckOciSignature(ConnectionKey(), KeyId(), r.method, r.target, r.body,
                                 [&](const std::string& name) { return r.header(name); });
    }

    TempDir dir_;
    std::string keyFile_;
    LoopbackTlsServer server_;
    std::unique_ptr<ScopedConfigFile> config_;
    std::atomic<int> attempts_{0};
};

}  // namespace

TEST_F(OciConnection, EveryVerbArrivesSignedForTheCanonicalHostThroughOneKeptAliveConnection) {
    AnswerAll(200, R"({"id":"ocid1.instance.oc1..x"})");
    StartServer();
    auto c = Connected();
    std::string response;
    ASSERT_TRUE(c->get("/20160918/instances?compartmentId=ocid1.compartment.oc1..c&limit=5", response, false, true));
    EXPECT_EQ(response, R"({"id":"ocid1.instance.oc1..x"})");
    ASSERT_TRUE(c->post("/20160918/volumes", R"({"sizeInGBs":50})", response));
    ASSERT_TRUE(c->put("/20160918/volumes/v1", "", response));
    ASSERT_TRUE(c->del("/20160918/volumes/v1", "", response));
    ASSERT_TRUE(c->sendReq(HTTP_REQ_PATCH, "/20160918/volumes/v1", R"({"displayName":"d"})", response, false, true));

    auto requests = server_.requests();
    ASSERT_EQ(requests.size(), 5u);
    for (const RecordedRequest& r : requests) {
        SCOPED_TRACE(r.method);
        EXPECT_EQ(r.header("Host"), "iaas.us-ashburn-1.oraclecloud.com");
        EXPECT_EQ(r.header("Accept"), "application/json");
        EXPECT_EQ(Verify(r), "");
        // The body headers of a write never leak into the next read.
        EXPECT_EQ(r.hasHeader("x-content-sha256"), r.method != "GET" && r.method != "DELETE");
    }
    EXPECT_EQ(requests[0].target, "/20160918/instances?compartmentId=ocid1.compartment.oc1..c&limit=5");
    EXPECT_EQ(requests[2].header("Content-Length"), "0");
    EXPECT_EQ(server_.connectionCount(), 1u);
}

TEST_F(OciConnection, HeaderLinesArriveInTheOrderTheConnectionBuildsThem) {
    RawHttpServer raw({"HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 2\r\n"
                       "Connection: close\r\n\r\n{}"},
                      dir_.path() + "/tls");
    Configure({{"sCACertFile", raw.caFile()}, {"sOCIEndpointOverride", raw.baseUrl()}});
    auto c = Connected();
    std::string response;
    ASSERT_TRUE(c->get("/20160918/shapes", response, false, true));
    ASSERT_TRUE(c->post("/20160918/volumes", R"({"a":1})", response));
    auto requests = raw.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].requestLine, "GET /20160918/shapes HTTP/1.1");
    // libcurl puts Host right after the request line; the rest follow the
    // connection's order, the content type of the client's set-up first and
    // the extension headers last (a POST's retry token after the other two).
    EXPECT_THAT(requests[0].headerNames(), ElementsAre("Host", "content-type", "Accept", "Date", "Connection",
                                                       "authorization", "User-Agent", "opc-request-id"));
    EXPECT_THAT(requests[1].headerNames(),
                ElementsAre("Host", "content-type", "Accept", "Date", "Content-Length", "x-content-sha256",
                            "Connection", "authorization", "User-Agent", "opc-request-id", "opc-retry-token"));
    EXPECT_EQ(requests[1].headerLines[0], "Host: iaas.us-ashburn-1.oraclecloud.com");
    EXPECT_EQ(requests[1].headerLines[6], "Connection: Keep-Alive");
}

TEST_F(OciConnection, RetriesBackOffByTheConfiguredRulesAndTheLastAnswerIsKept) {
    struct Case {
        Entries config;
        int status;
        std::vector<unsigned> pauses;
    };
    const Case cases[] = {
        {{}, 429, {2, 4, 8, 16, 32, 64}},                                                  // defaults
        {{{"sOCIRequestRetryIntervalMultiplier", "1.5"}}, 500, {2, 3, 4, 6, 10, 15}},   // truncated, growing exactly
        {{{"nOCIRequestRetryInitialIntervalInSeconds", "0"}, {"nOCIMaximumRequestRetryCount", "2"}}, 429, {0, 0}},
        {{{"nOCIMaximumRequestRetryCount", "0"}}, 500, {}},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.pauses.size());
        LoopbackTlsServer server;
        std::atomic<int> attempts{0};
        server.server().Get(R"(/.*)", [&](const httplib::Request&, httplib::Response& res) {
            res.status = k.status;
            res.set_content(R"({"code":"X","message":"attempt )" + std::to_string(++attempts) + "\"}",
                            "application/json");
        });
        server.start();
        Entries vs = server.clientConfig();
        vs.emplace_back("sOCIEndpointOverride", server.baseUrl());
        vs.insert(vs.end(), k.config.begin(), k.config.end());
        Configure(vs);
        auto c = Connected();
        std::string response;
        EXPECT_FALSE(c->get("/20160918/instances", response, false, true));
        EXPECT_EQ(c->pauses, k.pauses);
        EXPECT_EQ(attempts.load(), static_cast<int>(k.pauses.size()) + 1);
        EXPECT_EQ(c->getLastHTTPErrorCode(), k.status);
        EXPECT_EQ(response, R"({"code":"X","message":"attempt )" + std::to_string(attempts.load()) + "\"}");
    }
}

TEST_F(OciConnection, EveryAttemptIsSignedAgainWithAFreshDate) {
    static time_t tick = 1678179901;
    auto old = OCIConnectionUtils::SetTimeSource([]() { return tick++; });
    AnswerAll(429, R"({"code":"TooManyRequests","message":"m"})", 2);
    StartServer();
    auto c = Connected();
    std::string response;
    EXPECT_TRUE(c->get("/20160918/instances", response, false, true));
    OCIConnectionUtils::SetTimeSource(old);
    auto requests = server_.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_NE(requests[0].header("Date"), requests[1].header("Date"));
    EXPECT_NE(requests[1].header("Date"), requests[2].header("Date"));
    for (const auto& r : requests) EXPECT_EQ(Verify(r), "");
}

TEST_F(OciConnection, RefusedConnectionIsNotRetriedAndLeavesNoAnswer) {
    int port;
    {
        LoopbackTlsServer closed;  // bound, then released: nothing listens there
        closed.start();
        port = closed.port();
    }
    Configure({{"sOCIEndpointOverride", "https://127.0.0.1:" + std::to_string(port)}});
    auto c = Connected();
    std::string response = "stale";
    EXPECT_FALSE(c->get("/20160918/instances", response, false, true));
    EXPECT_EQ(c->getLastHTTPErrorCode(), 0);
    EXPECT_EQ(response, "");
    EXPECT_TRUE(c->pauses.empty());
}

TEST_F(OciConnection, ProxyGetsTheCredentialsAndTheLogNeverSeesThem) {
    RawHttpServer proxy({"HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"});
    Configure({{"sOCIEndpointOverride", "https://127.0.0.1:9"}});
    TestConnection c;
    c.SetWebProxy("127.0.0.1:" + std::to_string(proxy.port()), "proxyuser", "proxy-SECRET");
    ASSERT_TRUE(c.connect(kTenancy, std::string(kUser) + "|" + kFingerprint + "|" + keyFile_, kPassphrase,
                          OCI_SERVICE_CORE));
    LogCapture log;
    std::string response;
    EXPECT_FALSE(c.get("/20160918/instances", response, false, true));
    auto requests = proxy.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].requestLine, "CONNECT 127.0.0.1:9 HTTP/1.1");
    EXPECT_THAT(requests[0].headerLines,
                ::testing::Contains("Proxy-Authorization: Basic " + Base64Encode("proxyuser:proxy-SECRET")));
    EXPECT_EQ(log.all().find("proxy-SECRET"), std::string::npos);
}

TEST_F(OciConnection, WrongPassPhraseSetsTheDecryptErrorAndSendsNothing) {
    AnswerAll(500, "{}");  // would be retried if anything were sent
    StartServer();
    TestConnection c;
    ASSERT_TRUE(c.connect(kTenancy, std::string(kUser) + "|" + kFingerprint + "|" + keyFile_, "not-the-phrase",
                          OCI_SERVICE_CORE));
    std::string response;
    EXPECT_FALSE(c.get("/20160918/instances", response, false, true));
    EXPECT_EQ(c.GetLastError(),
              "Failed to decrypt the private key. Please check if the private key passphrase provided is correct.");
    // A missing key file is not a pass phrase problem: the last error stays as it was.
    TestConnection missing;
    ASSERT_TRUE(missing.connect(kTenancy, "u|f|" + dir_.path() + "/absent.pem", kPassphrase, OCI_SERVICE_CORE));
    missing.SetLastError("before");
    EXPECT_FALSE(missing.get("/20160918/instances", response, false, true));
    EXPECT_EQ(missing.GetLastError(), "before");
    EXPECT_EQ(server_.requestCount(), 0u);
    EXPECT_TRUE(c.pauses.empty() && missing.pauses.empty());
}

TEST_F(OciConnection, SecretsNeverReachTheLogAtAnyLevel) {
    AnswerAll(200, R"({"username":"opc","password":"Initial-PW-4242"})");
    StartServer({{"OracleCloudLogAllCurlError", "1"}});
    LogCapture log;
    auto c = Connected();
    std::string response;
    ASSERT_TRUE(c->post("/20160918/dbSystems", R"({"dbHome":{"database":{"adminPassword":"Admin-PW-1717"}}})", response));
    ASSERT_TRUE(c->get("/20160918/instances/i/initialCredentials", response, false, true));
    EXPECT_EQ(response, R"({"username":"opc","password":"Initial-PW-4242"})") << "the caller gets it unmasked";
    const std::string logged = log.all();
    EXPECT_NE(logged.find("Signing String: date: "), std::string::npos);
    EXPECT_NE(logged.find(R"("adminPassword":"********")"), std::string::npos);
    for (const std::string& secret : {std::string("QUUX"), std::string("Admin-PW-1717"), std::string("Initial-PW-4242"),
                                      std::string("PRIVATE KEY"), AuthParam(c->getAuthorizationHeader(), "signature")}) {
        EXPECT_EQ(logged.find(secret), std::string::npos) << secret;
    }
}

TEST_F(OciConnection, ConnectionsOnTwoThreadsSignConcurrently) {
    auto verifying = [](const httplib::Request& req, httplib::Response& res) {
        const std::string why = CheckOciSignature(ConnectionKey(), KeyId(), req.method, req.target, req.body,
                                                  [&](const std::string& n) { return req.get_header_value(n); });
        res.status = why.empty() ? 200 : 401;
        res.set_content("{}", "application/json");
    };
    server_.server().Get(R"(/.*)", verifying);
    server_.server().Post(R"(/.*)", verifying);
    StartServer();
    auto worker = [this](EOracleServiceType service, int* accepted) {
        auto c = Connected(service);
        std::string response;
        for (int i = 0; i < 40; ++i) {
            const std::string path = "/20160918/volumes/" + std::to_string(i);
            *accepted += i % 2 ? c->post(path, "{\"n\":" + std::to_string(i) + "}", response)
                               : c->get(path, response, false, true);
        }
    };
    int a = 0, b = 0;
    std::thread t1(worker, OCI_SERVICE_CORE, &a);
    std::thread t2(worker, OCI_SERVICE_DATABASE, &b);
    t1.join();
    t2.join();
    EXPECT_EQ(a + b, 80);
}

TEST_F(OciConnection, UserTextFillsTheSignerAndDefaultsTheRegion) {
    const std::string base = dir_.path() + "/agent";
    Configure({{"sOCIApiDomain", ".oraclecloud.eu"}, {"sOCIEndpointOverride", "https://127.0.0.1:8443/"}},
              {{"dBASEHOME", base}});
    TestConnection c;
    ASSERT_TRUE(c.connect(kTenancy, std::string(kUser) + "|" + kFingerprint + "|api.pem|", "", OCI_SERVICE_IDENTITY));
    EXPECT_EQ(c.getSignerInfo().userId, kUser);
    EXPECT_EQ(c.getSignerInfo().fingerprint, kFingerprint);
    EXPECT_EQ(c.getSignerInfo().keyFile, base + "/certificates/external/api.pem") << "a bare key name";
    EXPECT_EQ(c.getRegion(), "us-phoenix-1") << "an empty fourth token";
    EXPECT_EQ(c.getIdentityDomain(), kTenancy);
    // The domain loses its leading dot and the override its trailing slash;
    // the signed host stays canonical while requests go to the override.
    EXPECT_EQ(c.getEndPoint(), "identity.us-phoenix-1.oraclecloud.eu");
    std::string url;
    EXPECT_TRUE(c.computeUrl("/20160918/users", url));
    EXPECT_EQ(url, "https://127.0.0.1:8443/20160918/users");
    EXPECT_TRUE(c.computeUrl("HTTPS://objectstorage.example/n/ns", url));
    EXPECT_EQ(url, "HTTPS://objectstorage.example/n/ns") << "an absolute link is kept as it is";

    LogCapture log;
    for (const char* bad : {"", "only-user", "user|fingerprint"}) {
        EXPECT_FALSE(c.connect("other-tenancy", bad, "q", OCI_SERVICE_DATABASE)) << bad;
    }
    EXPECT_EQ(log.matching("Failed to Initialize User Identifiers ").size(), 3u);
    EXPECT_EQ(c.getSignerInfo().userId, kUser) << "a refused user text changes nothing";
    EXPECT_EQ(c.getIdentityDomain(), kTenancy);
    EXPECT_EQ(c.getService(), OCI_SERVICE_IDENTITY);
}

TEST_F(OciConnection, RetryTunablesKeepTheirDefaultsForValuesOutsideTheirRules) {
    struct Case {
        Entries config;
        unsigned initial;
        float multiplier;
        unsigned count;
    };
    const Case cases[] = {
        {{}, 2, 2.0f, 6},
        {{{"nOCIRequestRetryInitialIntervalInSeconds", "0"}, {"nOCIMaximumRequestRetryCount", "0"}}, 0, 2.0f, 0},
        {{{"sOCIRequestRetryIntervalMultiplier", " 1.5 "}}, 2, 1.5f, 6},
        {{{"sOCIRequestRetryIntervalMultiplier", "1"}}, 2, 1.0f, 6},
        {{{"sOCIRequestRetryIntervalMultiplier", "2.01"}}, 2, 2.0f, 6},  // allowed: 1 to 2
        {{{"sOCIRequestRetryIntervalMultiplier", "0.5"}}, 2, 2.0f, 6},
        {{{"sOCIRequestRetryIntervalMultiplier", "1.5x"}}, 2, 2.0f, 6},
        // A negative count must not turn into billions of retries.
        {{{"nOCIMaximumRequestRetryCount", "-1"}, {"nOCIRequestRetryInitialIntervalInSeconds", "x"}}, 2, 2.0f, 6},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.config.empty() ? "defaults" : k.config[0].second);
        Configure(k.config);
        TestConnection c;
        EXPECT_EQ(c.getRequestRetryInitialInterval(), k.initial);
        EXPECT_FLOAT_EQ(c.getRequestRetryMultiplier(), k.multiplier);
        EXPECT_EQ(c.getMaxRequestRetryCount(), k.count);
    }
}
