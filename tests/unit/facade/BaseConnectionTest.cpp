// The base connection over a real HTTPS server on loopback: the verbs reach
// the backend's send with the right method, body and flags, the answer's body,
// status and raw header lines stay readable after a failure, and the URL
// helpers build what the backends put on the wire.
#include <gtest/gtest.h>

#include "FacadeTestBackends.h"
#include "LoopbackTlsServer.h"

using namespace facadetest;

namespace {

// A backend reduced to one plain transfer per send, recording the flags.
class DirectConnection : public COracleCloudBaseConnection {
public:
    DirectConnection() : COracleCloudBaseConnection(nullptr) {}

    bool sendReq(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                 bool flag1, bool flag2) override {
        flags.push_back(std::string(flag1 ? "1" : "0") + (flag2 ? "1" : "0"));
        return _sendReqFull(type, url, body, response, flag1, flag2);
    }
    bool _sendReqFull(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                      bool, bool) override {
        if (!httpClient->HttpClientInit("Content-Type: application/json", true, true)) return false;
        httpClient->FreeHeaderList();
        const bool ok = httpClient->SendHttpRequest(type, url, body.data(), body.size(), false, false, nullptr);
        recvResp(response);
        return ok;
    }
    void LogResponse(const std::string&, const std::string&) override {}

    std::vector<std::string> flags;
};

class BaseConnectionOverTls : public ::testing::Test {
protected:
    void SetUp() override {
        auto echo = [](const httplib::Request& req, httplib::Response& res) {
            res.set_header("X-Echo-Method", req.method);
            res.set_content("{\"body\":\"" + req.body + "\"}", "application/json");
        };
        m_server.server().Get("/items", echo);
        m_server.server().Post("/items", echo);
        m_server.server().Put("/items", echo);
        m_server.server().Delete("/items", echo);
        m_server.server().Get("/missing", [](const httplib::Request&, httplib::Response& res) {
            res.status = 404;
            res.set_header("opc-request-id", "req-42");
            res.set_content(R"({"code":"NotAuthorizedOrNotFound","message":"no such item"})", "application/json");
        });
        m_server.server().Get("/empty", [](const httplib::Request&, httplib::Response& res) { res.status = 204; });
        m_server.start();
        m_config.reset(new ocwtest::ScopedConfigFile({{"VirtualServer", m_server.clientConfig()}}));
        m_connection.reset(new DirectConnection());
    }
    void TearDown() override {
        m_connection.reset();  // before the server: an idle keep-alive connection holds a worker
        m_config.reset();
    }

    ocwtest::LoopbackTlsServer m_server;
    std::unique_ptr<ocwtest::ScopedConfigFile> m_config;
    std::unique_ptr<DirectConnection> m_connection;
};

}  // namespace

TEST_F(BaseConnectionOverTls, VerbsSendTheirMethodBodyAndFlags) {
    std::string response;
    ASSERT_TRUE(m_connection->get(m_server.url("/items"), response, true, false));
    EXPECT_EQ(m_server.lastRequest().method, "GET");
    ASSERT_TRUE(m_connection->post(m_server.url("/items"), "p", response));
    EXPECT_EQ(response, R"({"body":"p"})");
    ASSERT_TRUE(m_connection->put(m_server.url("/items"), "u", response));
    EXPECT_EQ(m_server.lastRequest().method, "PUT");
    EXPECT_EQ(m_server.lastRequest().body, "u");
    ASSERT_TRUE(m_connection->del(m_server.url("/items"), "", response));
    EXPECT_EQ(m_server.lastRequest().method, "DELETE");
    EXPECT_EQ(m_connection->getLastHTTPErrorCode(), 200);
    // get passes its flags through; the write verbs always ask for (false, true).
    EXPECT_EQ(m_connection->flags, (std::vector<std::string>{"10", "01", "01", "01"}));
}

TEST_F(BaseConnectionOverTls, FailedRequestLeavesBodyStatusAndRawHeaderLines) {
    std::string response;
    EXPECT_FALSE(m_connection->get(m_server.url("/missing"), response, false, true));
    EXPECT_EQ(response, R"({"code":"NotAuthorizedOrNotFound","message":"no such item"})");
    EXPECT_EQ(m_connection->getLastHTTPErrorCode(), 404);
    // The whole raw line, as the page-token reader and cookie capture expect it.
    EXPECT_EQ(m_connection->getHttpResponseHeader("OPC-Request-Id"), "opc-request-id: req-42\r\n");
    EXPECT_EQ(m_connection->getHttpResponseHeader("opc-next-page"), "");
    EXPECT_EQ(m_connection->getHttpResponseHeader(nullptr), "");
}

TEST_F(BaseConnectionOverTls, AnswerWithoutBodyClearsTheResponse) {
    std::string response = "left over from an earlier call";
    EXPECT_TRUE(m_connection->get(m_server.url("/empty"), response, false, true));
    EXPECT_EQ(response, "");
    EXPECT_EQ(m_connection->getLastHTTPErrorCode(), 204);
}

TEST(BaseConnection, QueryArgumentsAreChainedUnencoded) {
    DirectConnection connection;
    std::string query;
    connection.appendQueryStringArgument(query, "a=b");
    EXPECT_EQ(query, "?a=b");
    connection.appendQueryStringArgument(query, "c=d e");
    EXPECT_EQ(query, "?a=b&c=d e");
}

TEST(BaseConnection, UrlEncodeEscapesAndReportsAnEmptyResult) {
    DirectConnection connection;
    LogCapture log;
    EXPECT_EQ(connection.urlEncode("abc== /x"), "abc%3D%3D%20%2Fx");
    EXPECT_EQ(connection.urlEncode(""), "");
    ASSERT_EQ(log.errors.size(), 1u);
    EXPECT_EQ(log.errors[0], "Failed to encode [] - result empty");
}

TEST(BaseConnection, ProxyIsStoredAndServiceIsAPlainAccessor) {
    DirectConnection connection;
    EXPECT_TRUE(connection.SetWebProxy("proxy.example:3128", "puser", "ppass"));
    EXPECT_EQ(connection.getService(), ORACLE_SERVICE_UNKNOWN);
    connection.setService(OCI_SERVICE_OBJECT_STORAGE);
    EXPECT_EQ(connection.getService(), OCI_SERVICE_OBJECT_STORAGE);
    EXPECT_EQ(connection.getServer(), "");
    EXPECT_EQ(connection.getUser(), "");
    EXPECT_EQ(connection.getPwd(), "");
    EXPECT_FALSE(connection.checkConnection());
}
