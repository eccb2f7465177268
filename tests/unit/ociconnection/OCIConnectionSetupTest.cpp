// Connection set-up without traffic: user identifiers, endpoints, URLs and
// the tunables read from configuration.
#include "OCIConnectionTestSupport.h"

using namespace OracleCloudSDKWrapper;
using namespace ocw_test;

namespace {

class OciConnectionSetup : public OciConnectionFixture {};

}  // namespace

TEST_F(OciConnectionSetup, EndpointFollowsServiceTypeAndRegion)
{
    configure({});
    auto c = connected();
    EXPECT_EQ(c->getRegion(), "us-ashburn-1");
    const std::pair<EOracleServiceType, const char*> expected[] = {
        {OCI_SERVICE_CORE, "iaas.us-ashburn-1.oraclecloud.com"},
        {OCI_SERVICE_DATABASE, "database.us-ashburn-1.oraclecloud.com"},
        {OCI_SERVICE_AUDIT, "audit.us-ashburn-1.oraclecloud.com"},
        {OCI_SERVICE_IDENTITY, "identity.us-ashburn-1.oraclecloud.com"},
        {OCI_SERVICE_OBJECT_STORAGE, "objectstorage.us-ashburn-1.oraclecloud.com"},
        {OCI_SERVICE_SEARCH, "query.us-ashburn-1.oraclecloud.com"},
    };
    for (const auto& e : expected) {
        c->setService(e.first);
        EXPECT_EQ(c->getEndPoint(), e.second);
    }
    c->setService(OCI_SERVICE_CORE);
    c->setRegion("eu-frankfurt-1");
    EXPECT_EQ(c->getRegion(), "eu-frankfurt-1");
    std::string url;
    EXPECT_TRUE(c->computeUrl("/20160918/instances?compartmentId=x", url));
    EXPECT_EQ(url, "https://iaas.eu-frankfurt-1.oraclecloud.com/20160918/instances?compartmentId=x");

    // Service types OCI does not have (Classic ones, garbage) give no host at all.
    for (int t : {0, 1, 2, 8, 9, 11, -1}) {
        c->setService(static_cast<EOracleServiceType>(t));
        EXPECT_EQ(c->getEndPoint(), "") << t;
    }
    EXPECT_TRUE(c->computeUrl("/20160918/instances", url));
    EXPECT_EQ(url, "https:///20160918/instances");
}

TEST_F(OciConnectionSetup, AbsoluteHttpsUrlIsKeptInAnyCaseAndSignedAsGiven)
{
    configure({{"sOCIEndpointOverride", "https://127.0.0.1:1"}});
    auto c = connected();
    std::string url;
    c->computeUrl("HTTPS://objectstorage.example/n/ns/b/bucket/o/x", url);
    EXPECT_EQ(url, "HTTPS://objectstorage.example/n/ns/b/bucket/o/x");
    EXPECT_EQ(c->buildRequestTarget("get", "HTTPS://objectstorage.example/n/x"), "get HTTPS://objectstorage.example/n/x");
    // Relative paths go to the override; the signature's host stays canonical.
    c->computeUrl("/20160918/volumes", url);
    EXPECT_EQ(url, "https://127.0.0.1:1/20160918/volumes");
    EXPECT_EQ(c->getEndPoint(), "iaas.us-ashburn-1.oraclecloud.com");
}

TEST_F(OciConnectionSetup, ApiDomainAndOverrideAreNormalised)
{
    configure({{"sOCIApiDomain", ".oraclecloud.eu"}, {"sOCIEndpointOverride", "https://127.0.0.1:8443/"}});
    auto c = connected(OCI_SERVICE_IDENTITY);
    EXPECT_EQ(c->getApiDomain(), "oraclecloud.eu");
    EXPECT_EQ(c->getEndpointOverride(), "https://127.0.0.1:8443");
    EXPECT_EQ(c->getEndPoint(), "identity.us-ashburn-1.oraclecloud.eu");
}

TEST_F(OciConnectionSetup, UserIdentifiersFillTheSignerAndDefaultTheRegion)
{
    std::string base = m_dir.path() + "/agent";
    configure({}, {{"dBASEHOME", base}});
    {
        TestConnection c(true);
        ASSERT_TRUE(c.connect(kTenancy, std::string(kUser) + "|" + kFingerprint + "|api.pem", "", OCI_SERVICE_CORE));
        EXPECT_EQ(c.getSignerInfo().userId, kUser);
        EXPECT_EQ(c.getSignerInfo().fingerprint, kFingerprint);
        EXPECT_EQ(c.getSignerInfo().keyFile, base + "/certificates/external/api.pem");
        EXPECT_EQ(c.getSignerInfo().tenancyId, kTenancy);
        EXPECT_EQ(c.getRegion(), "us-phoenix-1");
        EXPECT_EQ(c.getIdentityDomain(), kTenancy);
        EXPECT_EQ(c.getService(), OCI_SERVICE_CORE);
    }
    {
        TestConnection c(true);
        ASSERT_TRUE(c.connect(kTenancy, "u|f|/keys/k.pem|", "pp", OCI_SERVICE_SEARCH));
        EXPECT_EQ(c.getRegion(), "us-phoenix-1");  // empty fourth token
        EXPECT_EQ(c.getSignerInfo().keyFile, "/keys/k.pem");
        EXPECT_EQ(c.getSignerInfo().passphrase.str(), "pp");
    }
}

TEST_F(OciConnectionSetup, FewerThanThreeUserTokensFailAndChangeNothing)
{
    configure({});
    LogCapture log;
    TestConnection c(true);
    ASSERT_TRUE(c.connect(kTenancy, "u|f|/k.pem|ap-tokyo-1", "p", OCI_SERVICE_CORE));
    for (const char* bad : {"", "only-user", "user|fingerprint"}) {
        EXPECT_FALSE(c.connect("other-tenancy", bad, "q", OCI_SERVICE_DATABASE)) << bad;
    }
    EXPECT_TRUE(log.contains("Failed to Initialize User Identifiers "));
    EXPECT_EQ(c.getSignerInfo().userId, "u");
    EXPECT_EQ(c.getRegion(), "ap-tokyo-1");
    EXPECT_EQ(c.getIdentityDomain(), kTenancy);
    EXPECT_EQ(c.getService(), OCI_SERVICE_CORE);

    TestConnection fresh(true);
    std::string response;
    EXPECT_FALSE(fresh.connect(kTenancy, "u|f", "p", OCI_SERVICE_CORE));
    EXPECT_FALSE(fresh.get("/20160918/instances", response, false, true));
    EXPECT_TRUE(log.contains("Error:Connect module has to be called before making any queries."));
}

TEST_F(OciConnectionSetup, RetryTunablesComeFromConfigurationWithTheirRules)
{
    struct Case {
        const char* multiplier;
        float expected;
        const char* logText;
    };
    const Case cases[] = {
        {"1", 1.0f, "Using request retry interval multiplier from registry: [1.000]"},
        {"2", 2.0f, "Using request retry interval multiplier from registry: [2.000]"},
        {"1.0", 1.0f, "Using request retry interval multiplier from registry: [1.000]"},
        {" 1.5 ", 1.5f, "Using request retry interval multiplier from registry: [1.500]"},
        {"2.01", 2.0f, "Request retry interval from registry[2.010] is not within allowable limit. Using default multiplier"},
        {"0.5", 2.0f, "Request retry interval from registry[0.500] is not within allowable limit. Using default multiplier"},
        {"abc", 2.0f, "Exception while reading request retry interval multiplier from registry. Will use default "
                      "multiplier. String from registry:[abc], exception:["},
        {"1.5x", 2.0f, "String from registry:[1.5x]"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.multiplier);
        configure({{"sOCIRequestRetryIntervalMultiplier", k.multiplier}});
        LogCapture log;
        TestConnection c(true);
        EXPECT_FLOAT_EQ(c.getRequestRetryMultiplier(), k.expected);
        EXPECT_TRUE(log.contains(k.logText)) << log.all();
    }

    configure({});
    {
        TestConnection c(true);
        EXPECT_EQ(c.getRequestRetryInitialInterval(), 2u);
        EXPECT_FLOAT_EQ(c.getRequestRetryMultiplier(), 2.0f);
        EXPECT_EQ(c.getMaxRequestRetryCount(), 6u);
        EXPECT_EQ(c.getApiDomain(), "oraclecloud.com");
        EXPECT_EQ(c.getEndpointOverride(), "");
    }
    configure({{"nOCIRequestRetryInitialIntervalInSeconds", "0"}, {"nOCIMaximumRequestRetryCount", "0"}});
    {
        LogCapture log;
        TestConnection c(true);
        EXPECT_EQ(c.getRequestRetryInitialInterval(), 0u);
        EXPECT_EQ(c.getMaxRequestRetryCount(), 0u);
        EXPECT_TRUE(log.contains("Using request retry initial interval from registry: [0]"));
        EXPECT_TRUE(log.contains("Using maximum request retry count from registry: [0]"));
    }
    // A negative count must not turn into billions of retries.
    configure({{"nOCIMaximumRequestRetryCount", "-1"}, {"nOCIRequestRetryInitialIntervalInSeconds", "x"}});
    {
        TestConnection c(true);
        EXPECT_EQ(c.getMaxRequestRetryCount(), 6u);
        EXPECT_EQ(c.getRequestRetryInitialInterval(), 2u);
    }
}

TEST(OciRetryPolicy, OnlyTooManyRequestsAndInternalErrorAreRetryable)
{
    TestConnection c(true);
    EXPECT_TRUE(c.isRetryableHTTPError(429));
    EXPECT_TRUE(c.isRetryableHTTPError(500));
    for (long code : {0L, 200L, 400L, 401L, 404L, 409L, 501L, 502L, 503L, 504L}) {
        EXPECT_FALSE(c.isRetryableHTTPError(code)) << code;
    }
}
