// Signed requests against a real HTTPS server on loopback: what arrives on
// the wire must be accepted by a verifier that follows the provider's rules.
#include <thread>

#include "OCIConnectionTestSupport.h"
#include "RawServer.h"
#include "platform/Sha256Hasher.h"

using namespace OracleCloudSDKWrapper;
using namespace ocw_test;

namespace {

class OciConnectionRequest : public OciConnectionFixture {
protected:
    void answerAll(int status, const std::string& body)
    {
        auto handler = [status, body](const httplib::Request&, httplib::Response& res) {
            res.status = status;
            res.set_content(body, "application/json");
        };
        const char* pattern = R"(/.*)";
        m_server.server().Get(pattern, handler);
        m_server.server().Post(pattern, handler);
        m_server.server().Put(pattern, handler);
        m_server.server().Delete(pattern, handler);
        m_server.server().Patch(pattern, handler);
    }
};

time_t clockAt2023() { return 1678179901; }  // Tue, 07 Mar 2023 09:05:01 GMT

}  // namespace

TEST_F(OciConnectionRequest, EveryVerbArrivesSignedForTheCanonicalHostThroughTheOverride)
{
    answerAll(200, "{\"id\":\"ocid1.instance.oc1..x\"}");
    startServer();
    auto c = connected();
    std::string response;

    ASSERT_TRUE(c->get("/20160918/instances?compartmentId=ocid1.compartment.oc1..c&limit=5", response, false, true));
    EXPECT_EQ(response, "{\"id\":\"ocid1.instance.oc1..x\"}");
    ASSERT_TRUE(c->post("/20160918/volumes", "{\"sizeInGBs\":50}", response));
    ASSERT_TRUE(c->put("/20160918/volumes/v1", "", response));
    ASSERT_TRUE(c->del("/20160918/volumes/v1", "", response));
    ASSERT_TRUE(c->sendReq(HTTP_REQ_PATCH, "/20160918/volumes/v1", "{\"displayName\":\"d\"}", response, false, true));

    auto requests = m_server.requests();
    ASSERT_EQ(requests.size(), 5u);
    const char* methods[] = {"GET", "POST", "PUT", "DELETE", "PATCH"};
    for (size_t i = 0; i < requests.size(); ++i) {
        SCOPED_TRACE(methods[i]);
        EXPECT_EQ(requests[i].method, methods[i]);
        EXPECT_EQ(requests[i].header("Host"), "iaas.us-ashburn-1.oraclecloud.com");
        EXPECT_EQ(requests[i].header("Accept"), "application/json");
        EXPECT_EQ(requests[i].header("Content-Type"), "application/json");
        EXPECT_EQ(verify(requests[i]), "");
    }
    EXPECT_EQ(requests[0].target, "/20160918/instances?compartmentId=ocid1.compartment.oc1..c&limit=5");
    EXPECT_EQ(requests[1].body, "{\"sizeInGBs\":50}");
    EXPECT_EQ(requests[1].header("x-content-sha256"), OCIConnectionUtils::Base64URLEncode(Sha256Hasher::digest("{\"sizeInGBs\":50}")));
    EXPECT_EQ(requests[2].header("Content-Length"), "0");
    EXPECT_EQ(requests[2].header("x-content-sha256"), "47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU=");
    EXPECT_FALSE(requests[0].hasHeader("x-content-sha256"));
    EXPECT_FALSE(requests[3].hasHeader("x-content-sha256"));
    // One handle, kept alive between requests.
    EXPECT_EQ(m_server.connectionCount(), 1u);
}

TEST_F(OciConnectionRequest, SignatureStateMatchesTheFixedClock)
{
    answerAll(200, "{}");
    startServer();
    auto old = OCIConnectionUtils::SetTimeSource(&clockAt2023);
    auto c = connected();
    std::string response;
    c->setService(OCI_SERVICE_SEARCH);
    ASSERT_TRUE(c->post("/20180409/resources", "{}", response));  // this server does not check clock skew
    OCIConnectionUtils::SetTimeSource(old);

    EXPECT_EQ(c->getDateString(), "Tue, 07 Mar 2023 09:05:01 GMT");
    EXPECT_EQ(c->getRequestTarget(), "post /20180409/resources");
    EXPECT_EQ(c->getContentSha256Header(), "x-content-sha256: RBNvo1WzZ4oRRq0W9+hknpT7T8If536DEMBg9hyq/4o=");
    const std::string& auth = c->getAuthorizationHeader();
    const std::string prefix =
        "authorization: Signature version=\"1\",algorithm=\"rsa-sha256\",headers=\"date (request-target) host "
        "content-length content-type x-content-sha256\",keyId=\"" + keyId() + "\",signature=\"";
    ASSERT_EQ(auth.substr(0, prefix.size()), prefix);
    std::string signature = base64Decode(authParam(auth, "signature"));
    EXPECT_EQ(signature.size(), 256u);
    EXPECT_TRUE(verifyRsaSha256(connectionKey(),
                                "date: Tue, 07 Mar 2023 09:05:01 GMT\n"
                                "(request-target): post /20180409/resources\n"
                                "host: query.us-ashburn-1.oraclecloud.com\n"
                                "content-length: 2\n"
                                "content-type: application/json\n"
                                "x-content-sha256: RBNvo1WzZ4oRRq0W9+hknpT7T8If536DEMBg9hyq/4o=",
                                signature));
    // A later read keeps the write's body header but does not send it.
    c->get("/20180409/resourceTypes", response, false, true);
    EXPECT_EQ(c->getContentSha256Header(), "x-content-sha256: RBNvo1WzZ4oRRq0W9+hknpT7T8If536DEMBg9hyq/4o=");
    EXPECT_FALSE(m_server.lastRequest().hasHeader("x-content-sha256"));
    EXPECT_EQ(verify(m_server.lastRequest()), "");
}

TEST_F(OciConnectionRequest, HeadersArriveInTheOrderTheConnectionBuildsThem)
{
    TempDir tls;
    RawServer raw(tls.path(), "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 2\r\nConnection: close\r\n\r\n{}");
    configure({{"sCACertFile", raw.caFile()}, {"sOCIEndpointOverride", raw.baseUrl()}});
    auto c = connected();
    std::string response;
    ASSERT_TRUE(c->get("/20160918/shapes", response, false, true));
    ASSERT_TRUE(c->post("/20160918/volumes", "{\"a\":1}", response));
    EXPECT_EQ(response, "{}");

    auto requests = raw.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[0].requestLine, "GET /20160918/shapes HTTP/1.1");
    // libcurl always puts Host right after the request line; every other
    // header follows the order the connection built, the content type of the
    // client's set-up first; the two extension headers come last.
    std::vector<std::string> expectedGet = {"Host", "content-type", "Accept", "Date", "Connection", "authorization",
                                            "User-Agent", "opc-request-id"};
    EXPECT_EQ(requests[0].headerNames(), expectedGet);
    std::vector<std::string> expectedPost = {"Host", "content-type", "Accept", "Date", "Content-Length",
                                             "x-content-sha256", "Connection", "authorization", "User-Agent",
                                             "opc-request-id"};
    EXPECT_EQ(requests[1].headerNames(), expectedPost);
    EXPECT_EQ(requests[1].body, "{\"a\":1}");
    EXPECT_EQ(requests[1].headerLines[0], "Host: iaas.us-ashburn-1.oraclecloud.com");
    EXPECT_EQ(requests[1].headerLines[4], "Content-Length: 7");
    EXPECT_EQ(requests[1].headerLines[6], "Connection: Keep-Alive");
}

TEST_F(OciConnectionRequest, ProxySettingsAreAppliedWithCredentials)
{
    RawServer proxy("", "HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    configure({{"sOCIEndpointOverride", "https://127.0.0.1:9"}});
    TestConnection c(true);
    c.SetWebProxy("127.0.0.1:" + std::to_string(proxy.port()), "proxyuser", "proxy-SECRET");
    ASSERT_TRUE(c.connect(kTenancy, std::string(kUser) + "|" + kFingerprint + "|" + m_keyFile, kPassphrase,
                          OCI_SERVICE_CORE));
    LogCapture log;
    std::string response;
    EXPECT_FALSE(c.get("/20160918/instances", response, false, true));

    auto requests = proxy.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].requestLine, "CONNECT 127.0.0.1:9 HTTP/1.1");
    bool sawCredentials = false;
    for (const auto& line : requests[0].headerLines) {
        if (line == "Proxy-Authorization: Basic " + OCIConnectionUtils::Base64URLEncode(std::string("proxyuser:proxy-SECRET"))) {
            sawCredentials = true;
        }
    }
    EXPECT_TRUE(sawCredentials);
    EXPECT_EQ(log.all().find("proxy-SECRET"), std::string::npos);
}

TEST_F(OciConnectionRequest, WrongPassPhraseSetsTheDecryptErrorAndSendsNothing)
{
    answerAll(500, "{}");  // would be retried if anything were sent
    startServer();
    TestConnection c(true);
    ASSERT_TRUE(c.connect(kTenancy, std::string(kUser) + "|" + kFingerprint + "|" + m_keyFile, "not-the-phrase",
                          OCI_SERVICE_CORE));
    std::string response;
    EXPECT_FALSE(c.get("/20160918/instances", response, false, true));
    EXPECT_EQ(c.GetLastError(),
              "Failed to decrypt the private key. Please check if the private key passphrase provided is correct.");
    EXPECT_EQ(m_server.requestCount(), 0u);
    EXPECT_TRUE(c.pauses.empty());

    // A missing key file is not a pass phrase problem: the last error stays as it was.
    TestConnection missing(true);
    ASSERT_TRUE(missing.connect(kTenancy, "u|f|" + m_dir.path() + "/absent.pem", kPassphrase, OCI_SERVICE_CORE));
    missing.SetLastError("before");
    EXPECT_FALSE(missing.get("/20160918/instances", response, false, true));
    EXPECT_EQ(missing.GetLastError(), "before");
    EXPECT_EQ(m_server.requestCount(), 0u);
}

TEST_F(OciConnectionRequest, SecretsNeverReachTheLogAtAnyLevel)
{
    answerAll(200, "{\"username\":\"opc\",\"password\":\"Initial-PW-4242\"}");
    startServer({{"OracleCloudLogAllCurlError", "1"}});
    LogCapture log;
    auto c = connected();
    std::string response;
    ASSERT_TRUE(c->post("/20160918/dbSystems", "{\"dbHome\":{\"database\":{\"adminPassword\":\"Admin-PW-1717\"}}}", response));
    ASSERT_TRUE(c->get("/20160918/instances/i/initialCredentials", response, false, true));
    EXPECT_EQ(response, "{\"username\":\"opc\",\"password\":\"Initial-PW-4242\"}");  // the caller gets it unmasked

    std::string logged = log.all();
    EXPECT_NE(logged.find("Signing String: date: "), std::string::npos);
    EXPECT_NE(logged.find("Response from ["), std::string::npos);
    EXPECT_NE(logged.find("\"adminPassword\":\"********\""), std::string::npos);
    for (const char* secret : {"QUUX", "Admin-PW-1717", "Initial-PW-4242", "PRIVATE KEY"}) {
        EXPECT_EQ(logged.find(secret), std::string::npos) << secret;
    }
    // The authorization header is logged without its replayable signature.
    std::string signature = authParam(c->getAuthorizationHeader(), "signature");
    EXPECT_EQ(logged.find(signature), std::string::npos);
}

TEST_F(OciConnectionRequest, ConnectionsOnTwoThreadsSignConcurrently)
{
    // Verify in the handler, as a service would (the body is read by then).
    auto verifying = [](const httplib::Request& req, httplib::Response& res) {
        std::string why = checkOciSignature(connectionKey(), keyId(), req.method, req.target, req.body,
                                            [&](const std::string& n) { return req.get_header_value(n); });
        res.status = why.empty() ? 200 : 401;
        res.set_content(why.empty() ? "{}" : "{\"code\":\"NotAuthenticated\",\"message\":\"" + why + "\"}",
                        "application/json");
    };
    m_server.server().Get(R"(/.*)", verifying);
    m_server.server().Post(R"(/.*)", verifying);
    startServer();
    auto worker = [this](EOracleServiceType service, int* accepted) {
        auto c = connected(service);
        std::string response;
        for (int i = 0; i < 40; ++i) {
            std::string path = "/20160918/volumes/" + std::to_string(i);
            if ((i % 2 ? c->post(path, "{\"n\":" + std::to_string(i) + "}", response)
                       : c->get(path, response, false, true))) {
                ++*accepted;
            }
        }
    };
    int a = 0;
    int b = 0;
    std::thread t1(worker, OCI_SERVICE_CORE, &a);
    std::thread t2(worker, OCI_SERVICE_DATABASE, &b);
    t1.join();
    t2.join();
    EXPECT_EQ(a, 40);
    EXPECT_EQ(b, 40);
}
