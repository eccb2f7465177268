// The Compute Classic side of the fault matrix (see FaultMatrixOciTest.cpp
// for what a cell must show). The Classic connection retries nothing but an
// expired session (one new login, then the request once more), so 429 and
// 500 end the call at once with the service's message.
//
// Where a fault hits, per call: list GET /instance/ (the directory walk),
// read GET /storage/volume/<user>/scratch, create POST /storage/volume/,
// delete DELETE /instance/ for status faults and the read before it for body
// faults (a DELETE answer has no body to cut).
//
// | fault                      | list  | read  | create+wait             | delete+wait |
// |----------------------------|-------|-------|-------------------------|-------------|
// | 429 past the retry count   | false (no retries on Classic) | false | false, nothing made | false, instance untouched |
// | 500, then success          | false (no retries on Classic) | false | false, nothing made | false, untouched |
// | reset in the middle of body| false | false | false, volume made, told: POST without whole answer | false, untouched |
// | body cut short             | false | false | as reset                | false, untouched |
// | stall past transfer timeout| false | false | as reset                | false, untouched |
// | emulator CA not trusted    | Connect false (the login goes over TLS) |
// | connection refused         | Connect false |
// | session expires meanwhile  | true, one new login: before the list and the read, in the create's wait, after the delete's first answer |
// | wrong password             | Connect false, "Incorrect username or password" |
// | key the cloud does not know| does not apply: Compute Classic has no API keys |
// | clock 10 minutes off       | does not apply: no request carries a signed date |
#include <gtest/gtest.h>

#include <chrono>

#include "EmulatorFixture.h"
#include "FaultMatrix.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

using Call = ocwtest::MatrixCall;
using Fault = ocwtest::MatrixFault;

class FaultMatrixClassic : public EmulatorTest {
protected:
    std::pair<std::string, std::string> Target(Call call, bool bodyFault) {
        switch (call) {
            case Call::List: return {"GET", "/instance/"};
            case Call::Read: return {"GET", "/storage/volume" + ClassicUserPath() + "/scratch"};
            case Call::CreateAndWait: return {"POST", "/storage/volume/"};
            case Call::DeleteAndWait: return {bodyFault ? "GET" : "DELETE", "/instance/"};
        }
        return {};
    }

    bool Run(COracleCloudWrapper& facade, Call call) {
        switch (call) {
            case Call::List: {
                std::vector<SVMInfoLib> vms;
                return facade.GetVMInfoList(vms, 0, "");
            }
            case Call::Read: {
                std::string status;
                return facade.GetVolumeStatus(ClassicUserPath() + "/scratch", status);
            }
            case Call::CreateAndWait: {
                SDiskInfoLib disk;
                disk.volumeName = "matrix";
                disk.sizeBytes = 10ULL << 30;
                return facade.CreateVolume(disk, "");
            }
            case Call::DeleteAndWait: return facade.DeleteVM("web1", "", false, true);
        }
        return false;
    }

    // Ends every session at the point of the call the cell names.
    std::unique_ptr<ocwtest::LogTrigger> ExpireSessionsDuring(Call call) {
        const std::string endpoint = info().classicEndpoint;
        switch (call) {
            case Call::List:
            case Call::Read: ExpireClassicSessions(); return nullptr;
            case Call::CreateAndWait:
                return std::make_unique<ocwtest::LogTrigger>(
                    "Computed URL [" + endpoint + "/storage/volume" + ClassicUserPath() + "/matrix]",
                    [this] { ExpireClassicSessions(); });
            case Call::DeleteAndWait:
                return std::make_unique<ocwtest::LogTrigger>("Response from [" + endpoint + "/instance",
                                                             [this] { ExpireClassicSessions(); });
        }
        return nullptr;
    }
};

}  // namespace

TEST_F(FaultMatrixClassic, EveryCallEndsAsDesignedUnderEveryFaultAndLeavesNothingUntold) {
    const std::vector<Fault> faults = {
        {"429 (no retries on Classic)", {}, R"("status":429)", false, false, "too many|429"},
        {"500 once (no retries on Classic)", {}, R"("status":500,"times":1)", false, false, "internal|500"},
        {"reset in the middle of the body", {}, R"("action":"reset","times":1)", true, false, "reset|recv failure"},
        {"body cut short", {}, R"("action":"truncate","times":1)", true, false, "bytes remaining|partial"},
        {"stall past the transfer timeout", {{"nHttpTransferTimeoutSeconds", "1"}},
         R"("action":"stall","delayMs":4000,"times":1)", true, false, "stalled"},
        {"emulator CA not trusted", {{"sCACertFile", ""}}, "", false, false, "certificate"},
        {"connection refused", {}, "", false, false, "couldn't connect|refused"},
        {"session expires during the call", {}, "", false, true, ""},
        {"wrong password", {}, "", false, false, "incorrect username or password"},
    };

    for (const Fault& fault : faults) {
        for (Call call : ocwtest::kMatrixCalls) {
            SCOPED_TRACE(std::string(fault.name) + " / " + ocwtest::CallName(call));
            ResetEmulator();
            WriteConfig(fault.config);
            const std::string name = fault.name;
            auto facade = std::make_unique<COracleCloudWrapper>(ORACLE_CLOUD_CLASSIC);
            const bool connected = facade->Connect(
                name == "connection refused" ? "https://127.0.0.1:1" : info().classicEndpoint,
                info().identityDomain + "/" + info().classicUser,
                name == "wrong password" ? "not-" + info().classicPassword : info().classicPassword,
                ORACLE_SERVICE_COMPUTE);
            if (*fault.rule != '\0') {
                const auto target = Target(call, fault.bodyFault);
                ASSERT_EQ(Admin("POST", "faults", ocwtest::FaultRuleJson(target.first, target.second, fault.rule)), 200);
            }
            const std::string web1 = ClassicResourceId("instance", ClassicUserPath() + "/web1/");
            ASSERT_FALSE(web1.empty());
            ClearRequestLog();

            std::unique_ptr<ocwtest::LogTrigger> expiry;
            if (name == "session expires during the call") expiry = ExpireSessionsDuring(call);
            const auto start = std::chrono::steady_clock::now();
            const bool ok = connected && Run(*facade, call);
            const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            const std::string learned = ocwtest::CheckCellOutcome(fault, call, ok, seconds, connected, *facade);
            if (expiry) EXPECT_TRUE(expiry->fired());
            if (name == "session expires during the call") {
                EXPECT_EQ(CountRequests("POST", "/authenticate/"), 1u) << "exactly one new login";
            }

            // Nothing left behind that the caller was not told of.
            const SOracleCloudFailureInfoLib failure = facade->GetLastFailure();
            const bool volumeMade = !ClassicResourceId("storage/volume", ClassicUserPath() + "/matrix").empty();
            if (call == Call::CreateAndWait && !ok && volumeMade) {
                // The create reached the service but its answer broke off.
                EXPECT_EQ(failure.request.rfind("POST storage/volume/", 0), 0u) << learned;
                EXPECT_FALSE(failure.transferError.empty()) << learned;
            } else {
                EXPECT_EQ(volumeMade, call == Call::CreateAndWait && ok);
            }
            if (call == Call::DeleteAndWait) {
                const std::string state = StateOf(web1);
                if (ok) {
                    EXPECT_TRUE(state.empty() || state == "stopping") << state;
                } else {
                    EXPECT_EQ(state, "running") << "a failed delete left the instance alone";
                }
            }
        }
    }
}
