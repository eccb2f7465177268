// The retry loop: which answers are retried, how often, and how long it pauses.
// Attempts are counted on a real server; pauses are either real (0 s, 1 s) or
// recorded without sleeping to check the back-off arithmetic.
#include <atomic>
#include <chrono>

#include "OCIConnectionTestSupport.h"

using namespace OracleCloudSDKWrapper;
using namespace ocw_test;

namespace {

class OciConnectionRetry : public OciConnectionFixture {
protected:
    // Answers `failStatus` to the first `failures` requests, then 200; every
    // attempt must carry a valid signature of its own.
    void failFirst(int failStatus, int failures)
    {
        m_server.server().Get(R"(/.*)", [this, failStatus, failures](const httplib::Request&, httplib::Response& res) {
            int n = ++m_attempts;
            if (n <= failures) {
                res.status = failStatus;
                res.set_content("{\"code\":\"TooManyRequests\",\"message\":\"attempt " + std::to_string(n) + "\"}",
                                "application/json");
            } else {
                res.status = 200;
                res.set_content("[]", "application/json");
            }
        });
    }
    std::atomic<int> m_attempts{0};
};

int secondsSince(std::chrono::steady_clock::time_point start)
{
    return static_cast<int>(
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count() / 1000);
}

time_t g_tick = 1678179901;
time_t tickingClock() { return g_tick++; }

}  // namespace

TEST_F(OciConnectionRetry, TooManyRequestsIsRetriedWithZeroSecondPausesUntilSuccess)
{
    failFirst(429, 3);
    startServer({{"nOCIRequestRetryInitialIntervalInSeconds", "0"}});
    auto c = connected(OCI_SERVICE_CORE, false);  // really sleeps, 0 s each
    std::string response;
    auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(c->get("/20160918/instances", response, false, true));
    EXPECT_EQ(response, "[]");
    EXPECT_EQ(m_attempts.load(), 4);
    EXPECT_EQ(c->pauses, (std::vector<unsigned>{0, 0, 0}));
    EXPECT_LT(secondsSince(start), 2);
}

TEST_F(OciConnectionRetry, InternalErrorIsRetriedWithRealOneSecondPauses)
{
    failFirst(500, 100);
    startServer({{"nOCIRequestRetryInitialIntervalInSeconds", "1"},
                 {"sOCIRequestRetryIntervalMultiplier", "1.0"},
                 {"nOCIMaximumRequestRetryCount", "2"}});
    auto c = connected(OCI_SERVICE_CORE, false);
    std::string response;
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(c->get("/20160918/instances", response, false, true));
    int elapsed = secondsSince(start);
    EXPECT_EQ(m_attempts.load(), 3);
    EXPECT_EQ(c->pauses, (std::vector<unsigned>{1, 1}));
    EXPECT_GE(elapsed, 2);
    EXPECT_LT(elapsed, 5);
    // The last answer is what the caller gets.
    EXPECT_EQ(c->getLastHTTPErrorCode(), 500);
    EXPECT_EQ(response, "{\"code\":\"TooManyRequests\",\"message\":\"attempt 3\"}");
}

TEST_F(OciConnectionRetry, DefaultsGiveSevenAttemptsWithDoublingPauses)
{
    failFirst(429, 1000);
    startServer();
    auto c = connected();  // pauses recorded, not slept
    std::string response;
    EXPECT_FALSE(c->get("/20160918/instances", response, false, true));
    EXPECT_EQ(m_attempts.load(), 7);
    EXPECT_EQ(c->pauses, (std::vector<unsigned>{2, 4, 8, 16, 32, 64}));
    EXPECT_EQ(c->getLastHTTPErrorCode(), 429);
}

TEST_F(OciConnectionRetry, FractionalPausesAreTruncatedButKeepGrowingExactly)
{
    failFirst(500, 1000);
    startServer({{"sOCIRequestRetryIntervalMultiplier", "1.5"}});
    auto c = connected();
    std::string response;
    EXPECT_FALSE(c->get("/20160918/instances", response, false, true));
    EXPECT_EQ(c->pauses, (std::vector<unsigned>{2, 3, 4, 6, 10, 15}));
    EXPECT_EQ(m_attempts.load(), 7);
}

TEST_F(OciConnectionRetry, EveryAttemptIsSignedAgainWithAFreshDate)
{
    failFirst(429, 2);
    startServer({{"nOCIRequestRetryInitialIntervalInSeconds", "0"}});
    auto old = OCIConnectionUtils::SetTimeSource(&tickingClock);
    auto c = connected();
    std::string response;
    EXPECT_TRUE(c->get("/20160918/instances", response, false, true));
    OCIConnectionUtils::SetTimeSource(old);
    auto requests = m_server.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_NE(requests[0].header("Date"), requests[1].header("Date"));
    EXPECT_NE(requests[1].header("Date"), requests[2].header("Date"));
    for (const auto& r : requests) {
        EXPECT_EQ(verify(r), "");
    }
}

TEST_F(OciConnectionRetry, OtherFailuresAreNotRetried)
{
    std::atomic<int> status{404};
    m_server.server().Get(R"(/.*)", [this, &status](const httplib::Request&, httplib::Response& res) {
        ++m_attempts;
        res.status = status.load();
        res.set_content("{\"code\":\"X\",\"message\":\"m\"}", "application/json");
    });
    startServer();
    auto c = connected();
    std::string response;
    for (int s : {404, 502, 503, 401, 409}) {
        SCOPED_TRACE(s);
        status = s;
        m_attempts = 0;
        EXPECT_FALSE(c->get("/20160918/instances", response, false, true));
        EXPECT_EQ(m_attempts.load(), 1);
        EXPECT_EQ(c->getLastHTTPErrorCode(), s);
        EXPECT_EQ(response, "{\"code\":\"X\",\"message\":\"m\"}");
    }
    EXPECT_TRUE(c->pauses.empty());
}

TEST_F(OciConnectionRetry, RefusedConnectionIsNotRetried)
{
    // Bind and close a port so that nothing listens on it.
    int port;
    {
        ocwtest::LoopbackTlsServer closed;
        closed.start();
        port = closed.port();
    }
    configure({{"sOCIEndpointOverride", "https://127.0.0.1:" + std::to_string(port)}});
    auto c = connected();
    std::string response = "stale";
    EXPECT_FALSE(c->get("/20160918/instances", response, false, true));
    EXPECT_EQ(c->getLastHTTPErrorCode(), 0);
    EXPECT_EQ(response, "");
    EXPECT_TRUE(c->pauses.empty());
}

TEST_F(OciConnectionRetry, MaximumRetryCountZeroMeansOneAttempt)
{
    failFirst(429, 1000);
    startServer({{"nOCIMaximumRequestRetryCount", "0"}});
    auto c = connected();
    std::string response;
    EXPECT_FALSE(c->get("/20160918/instances", response, false, true));
    EXPECT_EQ(m_attempts.load(), 1);
    EXPECT_TRUE(c->pauses.empty());
}
