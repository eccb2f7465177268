// The failure record beside GetLastError(): what a failed request answered,
// both request ids, and a record that never carries an older request.
#include <gtest/gtest.h>

#include "EmulatorFixture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

class FailureRecord : public EmulatorTest {};

std::string Header(const ocwemu::LoggedRequest& request, const std::string& name) {
    for (const auto& h : request.headers) {
        if (h.first == name) return h.second;
    }
    return std::string();
}

TEST_F(FailureRecord, DescribesTheFailedRequestWhateverTheServiceAnswered) {
    struct Case {
        const char* what;
        ocwemu::FaultRule rule;
        long status;
        const char* code;        // of the error body; empty: none could be read
        bool transferError;      // no answer at all
        unsigned attempts;
    };
    const auto rule = [](const char* action, int status, const char* body) {
        ocwemu::FaultRule r;
        r.method = "GET";
        r.pathPrefix = "/20160918/instances/";
        r.action = action;
        r.status = status;
        r.body = body;
        return r;
    };
    const Case cases[] = {
        {"service error", rule("status", 503, ""), 503, "ServiceUnavailable", false, 1},
        {"proxy page", rule("status", 502, "<html>Bad Gateway</html>"), 502, "", false, 1},
        {"dropped connection", rule("close", 0, ""), 0, "", true, 1},
        {"500 on every retry", rule("status", 500, ""), 500, "InternalServerError", false, 7},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ResetEmulator();
        auto facade = ConnectFacade();
        ASSERT_TRUE(facade);
        ocwemu::FaultRule r = c.rule;
        if (r.status != 0) ocwemu::DefaultErrorFor(r.status, r.code, r.message);
        emu().faults().add(r);
        const std::string instance = FindResourceId("instance", "ocw-web-1");
        const std::string target = "/20160918/instances/" + instance;

        SVMInfoLib vm;
        ASSERT_FALSE(facade->GetVMInfo("", instance, vm, 0, ""));

        const SOracleCloudFailureInfoLib f = facade->GetLastFailure();
        EXPECT_EQ(f.message, facade->GetLastError());
        EXPECT_EQ(f.request, "GET " + target);
        EXPECT_EQ(f.httpStatus, c.status);
        EXPECT_EQ(f.serviceCode, c.code);
        EXPECT_EQ(f.transferError.empty(), !c.transferError) << f.transferError;
        EXPECT_EQ(f.attempts, c.attempts);
        // Every attempt carried the one id the record names, after the
        // designed headers and with the library's name as User-Agent
        // (libcurl itself tries a dropped keep-alive connection once more).
        const auto sent = RequestsTo("GET", target);
        ASSERT_GE(sent.size(), c.attempts);
        for (const auto& request : sent) {
            EXPECT_EQ(Header(request, "opc-request-id"), f.clientRequestId);
            EXPECT_EQ(Header(request, "user-agent"), "OracleCloudSDKWrapper/1.0.0");
        }
        EXPECT_EQ(f.clientRequestId.size(), 32u);
        // The emulator answers with the id it was sent, as the service echoes it.
        EXPECT_EQ(f.serviceRequestId, c.transferError ? "" : f.clientRequestId);
    }
}

TEST_F(FailureRecord, ACallThatFailsWithoutAFailedRequestCarriesNoOlderRequest) {
    WriteConfig({{"nOCIOperationTimeout", "1"}});
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SVMInfoLib vm;
    ASSERT_FALSE(facade->GetVMInfo("", "ocid1.instance.oc1.phx.aaaaaaaanothere", vm, 0, ""));
    ASSERT_EQ(facade->GetLastFailure().httpStatus, 404);

    // The stop is accepted, then the wait runs out on an instance held in STOPPING.
    const std::string instance = FindResourceId("instance", "ocw-web-1");
    HoldState(instance, "STOPPING");
    ASSERT_FALSE(facade->PowerOffInstance(instance));

    const SOracleCloudFailureInfoLib f = facade->GetLastFailure();
    EXPECT_EQ(f.message, facade->GetLastError());
    EXPECT_NE(f.message.find("Timeout waiting"), std::string::npos) << f.message;
    EXPECT_TRUE(f.request.empty()) << f.request;
    EXPECT_EQ(f.httpStatus, 0);
    EXPECT_TRUE(f.clientRequestId.empty());
    EXPECT_EQ(f.attempts, 0u);
}

}  // namespace
