// Connecting a Classic facade to the emulator: the login as it goes on the
// wire for every form of server and user text, the PaaS connection that sends
// nothing until its first request, what a refused login and a refused service
// type leave behind, the one re-login after an expired session (and none for
// any other 401). That no password, cookie or basic credential reaches the
// log is shown for every test at once by secrets.NoSecretInAnyLog.
#include <gtest/gtest.h>

#include "EmulatorFixture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

class ClassicConnect : public EmulatorTest {
protected:
    // host:port of the emulator without scheme or trailing slash.
    std::string BareServer() const { return info().classicEndpoint.substr(std::string("https://").size()); }
    std::string LoginBody(const std::string& password) const {
        return "{\"password\": \"" + password + "\", \"user\": \"" + ClassicUserPath() + "\"}";
    }
};

TEST_F(ClassicConnect, EveryFormOfServerAndUserLogsInAsTheFullUserAndTheSessionServesRequests) {
    const std::string domainUser = info().identityDomain + "/" + info().classicUser;
    const struct {
        std::string server;
        std::string user;
    } forms[] = {
        {info().classicEndpoint, domainUser},           // user without "/Compute-"
        {info().classicEndpoint + "/", ClassicUserPath()},  // user already in full form, trailing "/"
        {BareServer(), domainUser},                     // no scheme, no trailing "/"
    };
    for (const auto& form : forms) {
        ClearRequestLog();
        COracleCloudWrapper facade(ORACLE_CLOUD_CLASSIC);
        ASSERT_TRUE(facade.Connect(form.server, form.user, info().classicPassword, ORACLE_SERVICE_COMPUTE))
            << form.server << " " << form.user << ": " << facade.GetLastError();
        const auto logins = RequestsTo("POST", "/authenticate/");
        ASSERT_EQ(logins.size(), 1u) << form.server;
        // The request log masks the password; the user is the full one, once.
        EXPECT_NE(logins[0].body.find("\"" + ClassicUserPath() + "\""), std::string::npos) << logins[0].body;
        EXPECT_EQ(logins[0].body.find("Compute-/Compute-"), std::string::npos) << logins[0].body;
        std::vector<SVMInfoLib> vms;
        EXPECT_TRUE(facade.GetVMInfoList(vms, 0, "")) << facade.GetLastError();
        EXPECT_EQ(CountRequests("POST", "/authenticate/"), 1u) << "the session cookie is reused";
    }
}

TEST_F(ClassicConnect, PaaSConnectsWithoutARequestAndSendsBasicCredentialsAndTheTenant) {
    auto facade = ConnectPaaSFacade();
    ASSERT_TRUE(facade);
    EXPECT_TRUE(Requests().empty());
    // The service refuses a request without both (401).
    std::vector<SOracleDBInstanceInfoLib> databases;
    ASSERT_TRUE(facade->GetDBInstanceList(databases)) << facade->GetLastError();
    EXPECT_EQ(CountRequests("GET", "/paas/service/dbcs/api/v1.1/instances/" + info().identityDomain), 1u);
}

TEST_F(ClassicConnect, RefusedLoginLeavesTheServiceMessageAndUnknownServiceTypeSendsNothing) {
    COracleCloudWrapper wrong(ORACLE_CLOUD_CLASSIC);
    EXPECT_FALSE(wrong.Connect(info().classicEndpoint, ClassicUserPath(), "not-the-password", ORACLE_SERVICE_COMPUTE));
    EXPECT_EQ(wrong.GetLastError(), "Incorrect username or password");

    ClearRequestLog();
    COracleCloudWrapper other(ORACLE_CLOUD_CLASSIC);
    EXPECT_FALSE(other.Connect(info().classicEndpoint, ClassicUserPath(), info().classicPassword, OCI_SERVICE_CORE));
    EXPECT_EQ(other.GetLastError(), "Received unsupported service type [3]");
    EXPECT_TRUE(Requests().empty());
}

TEST_F(ClassicConnect, ExpiredSessionLogsInOnceAndRepeatsTheRequestButAnyOther401IsFinal) {
    auto facade = ConnectClassicFacade();
    ASSERT_TRUE(facade);
    ExpireClassicSessions();
    ClearRequestLog();
    SVMInfoLib vm;
    ASSERT_TRUE(facade->GetVMInfo(ClassicUserPath() + "/web1", "", vm, 0, "")) << facade->GetLastError();
    EXPECT_EQ(CountRequests("POST", "/authenticate/"), 1u);
    EXPECT_EQ(CountRequests("GET", "/instance" + ClassicUserPath() + "/web1/"), 2u) << "refused, then repeated";

    // One character more than the expired-session text: not an expiry.
    ClearRequestLog();
    ocwemu::FaultRule rule;
    rule.method = "GET";
    rule.pathPrefix = "/instance/";
    rule.status = 401;
    rule.message = "Authorization token is invalid.";
    rule.times = 1;
    emu().faults().add(rule);
    EXPECT_FALSE(facade->GetVMInfo(ClassicUserPath() + "/web1", "", vm, 0, ""));
    EXPECT_EQ(facade->GetLastError(), "Authorization token is invalid.");
    EXPECT_EQ(CountRequests("POST", "/authenticate/"), 0u);
}

}  // namespace
