// The OCI side of the fault matrix: every fault an agent meets in the field
// against every kind of call (a list, a read, a create that waits, a delete
// that waits), end to end against the emulator. Each cell must end as
// designed (true after a retried success, otherwise false with an error that
// names the cause), leave no resource behind that the caller was not told
// of, and end at all (the program's ctest timeout bounds it; the stall
// outlasts the transfer timeout, so a call that waited it out would succeed
// and fail the cell). Also here: a create whose answer is lost is retried
// under the same opc-retry-token and makes exactly one resource.
//
// Where a fault hits, per call: list GET /volumes, read GET /volumes/<id>,
// create POST /volumes, delete DELETE /instances/<id> for status faults and
// the read before it for body faults (a DELETE answer has no body to cut).
//
// | fault                      | list  | read  | create+wait             | delete+wait |
// |----------------------------|-------|-------|-------------------------|-------------|
// | 429 past the retry count   | false | false | false, nothing made     | false, instance untouched |
// | 500, then success          | true  | true  | true, one volume        | true, terminated |
// | reset in the middle of body| false | false | false, volume made, told: POST without answer | false, untouched |
// | body cut short             | false | false | as reset                | false, untouched |
// | stall past transfer timeout| false | false | as reset                | false, untouched |
// | emulator CA not trusted    | false | false | false, nothing sent     | false, nothing sent |
// | connection refused         | false | false | false                   | false |
// | Classic session expiry     | does not apply: OCI signs every request, there is no session |
// | wrong password (pass phrase)| false, nothing sent (the key cannot be read) for all four |
// | key the cloud does not know| false, 401 NotAuthenticated for all four |
// | clock 10 minutes off       | false, 401 NotAuthenticated for all four |
//
// Connect reads the tenancy, so the faults that stop every request (CA,
// refused, pass phrase, unknown key) show at Connect already and the call is
// not reached; the clock goes wrong after Connect and meets the call itself.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>

#include "EmulatorFixture.h"
#include "FaultMatrix.h"
#include "common/ApiKeys.h"
#include "transport/OCIConnectionUtils.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

using Call = ocwtest::MatrixCall;
using Fault = ocwtest::MatrixFault;

class FaultMatrixOci : public EmulatorTest {
protected:
    // A key the emulator knows, encrypted with `pass`; the user text to connect with it.
    std::string EncryptedKeyUser(const std::string& pass) {
        ocwemu::PKeyPtr key = ocwemu::GenerateRsaKey();
        const std::string file = ScratchDir() + "/encrypted-key.pem";
        std::string error;
        EXPECT_TRUE(ocwemu::WritePrivateKeyPem(file, key.get(), pass, error)) << error;
        boost::json::object body{{"publicKey", ocwemu::PublicKeyPem(key.get())}, {"user", info().user}};
        std::string answer;
        EXPECT_EQ(Admin("POST", "keys", boost::json::serialize(body), &answer), 200) << answer;
        const std::string fingerprint =
            boost::json::value_to<std::string>(boost::json::parse(answer).as_object().at("fingerprint"));
        return info().user + "|" + fingerprint + "|" + file + "|" + info().region;
    }

    // The request of `call` that a fault hits: method and path prefix.
    std::pair<std::string, std::string> Target(Call call, bool bodyFault) {
        switch (call) {
            case Call::List: return {"GET", "/20160918/volumes"};
            case Call::Read: return {"GET", "/20160918/volumes/" + scratch_};
            case Call::CreateAndWait: return {"POST", "/20160918/volumes"};
            case Call::DeleteAndWait:
                return {bodyFault ? "GET" : "DELETE", "/20160918/instances/" + web2_};
        }
        return {};
    }

    bool Run(COracleCloudWrapper& facade, Call call, std::string& createdVolume) {
        switch (call) {
            case Call::List: {
                std::vector<SDiskInfoLib> volumes;
                return facade.ListVolumes(volumes, demo_, "");
            }
            case Call::Read: {
                std::string status;
                return facade.GetVolumeStatus(scratch_, status);
            }
            case Call::CreateAndWait: {
                SDiskInfoLib disk;
                disk.volumeName = "matrix-volume";
                disk.sizeBytes = 50ULL << 30;
                disk.availabilityDomain = ResourceMember(web2_, "availabilityDomain");
                disk.compartmentId = demo_;
                const bool ok = facade.CreateVolume(disk, "");
                createdVolume = disk.guid;
                return ok;
            }
            case Call::DeleteAndWait: return facade.DeleteVM("", web2_, true, true);
        }
        return false;
    }

    void Seed() {
        ResetEmulator();
        demo_ = FindResourceId("compartment", "ocw-demo");
        scratch_ = FindResourceId("volume", "ocw-scratch");
        web2_ = FindResourceId("instance", "ocw-web-2");
        ASSERT_FALSE(demo_.empty() || scratch_.empty() || web2_.empty());
    }

    std::vector<std::string> VolumesNamed(const std::string& name) {
        std::vector<std::string> out;
        for (const std::string& id : ResourceIds("volume"))
            if (ResourceMember(id, "displayName") == name && StateOf(id) != "TERMINATED") out.push_back(id);
        return out;
    }

    std::string demo_, scratch_, web2_;
};

time_t TenMinutesAhead() { return time(nullptr) + 600; }

}  // namespace

TEST_F(FaultMatrixOci, EveryCallEndsAsDesignedUnderEveryFaultAndLeavesNothingUntold) {
    const std::string refused = "https://127.0.0.1:1";  // nothing listens on a privileged port here
    const std::vector<Fault> faults = {
        {"429 past the retry count", {{"nOCIMaximumRequestRetryCount", "2"}}, R"("status":429)", false, false,
         "toomanyrequests|429"},
        {"500 then success", {}, R"("status":500,"times":1)", false, true, ""},
        {"reset in the middle of the body", {}, R"("action":"reset","times":1)", true, false, "reset|recv failure"},
        {"body cut short", {}, R"("action":"truncate","times":1)", true, false, "bytes remaining|partial"},
        {"stall past the transfer timeout", {{"nHttpTransferTimeoutSeconds", "1"}},
         R"("action":"stall","delayMs":4000,"times":1)", true, false, "too slow|timed out|timeout|stalled"},
        {"emulator CA not trusted", {{"sCACertFile", ""}}, "", false, false, "certificate|ssl|tls"},
        {"connection refused", {{"sOCIEndpointOverride", refused}}, "", false, false, "connect|refused"},
        {"wrong pass phrase", {}, "", false, false, "decrypt"},
        {"key the cloud does not know", {}, "", false, false, "notauthenticated|401"},
        {"clock 10 minutes off", {}, "", false, false, "notauthenticated|401"},
    };

    for (const Fault& fault : faults) {
        for (Call call : ocwtest::kMatrixCalls) {
            SCOPED_TRACE(std::string(fault.name) + " / " + ocwtest::CallName(call));
            Seed();
            WriteConfig(fault.config);
            // Connect itself talks to the cloud: a fault that stops every
            // request shows there already, and the call is not reached.
            auto facade = std::make_unique<COracleCloudWrapper>(ORACLE_CLOUD_INFRASTRUCTURE);
            const std::string name = fault.name;
            std::string user = UserToken(info().region);
            std::string pass;
            if (name == "wrong pass phrase") {
                user = EncryptedKeyUser("the-right-pass");
                pass = "a-wrong-pass";
            } else if (name == "key the cloud does not know") {
                user = UserToken(info().region, WriteUnknownKeyFile());
            }
            const bool connected = facade->Connect(info().tenancy, user, pass, OCI_SERVICE_CORE);
            if (*fault.rule != '\0') {
                const auto target = Target(call, fault.bodyFault);
                ASSERT_EQ(Admin("POST", "faults", ocwtest::FaultRuleJson(target.first, target.second, fault.rule)), 200);
            }
            const size_t volumesBefore = VolumesNamed("matrix-volume").size();
            ClearRequestLog();

            // The clock goes wrong after Connect, so the call itself meets it.
            auto oldClock =
                OCIConnectionUtils::SetTimeSource(name == "clock 10 minutes off" ? &TenMinutesAhead : nullptr);
            const auto start = std::chrono::steady_clock::now();
            std::string created;
            const bool ok = connected && Run(*facade, call, created);
            const double seconds =
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            OCIConnectionUtils::SetTimeSource(oldClock);
            const std::string learned = ocwtest::CheckCellOutcome(fault, call, ok, seconds, connected, *facade);

            // Nothing left behind that the caller was not told of.
            const SOracleCloudFailureInfoLib failure = facade->GetLastFailure();
            const size_t volumesMade = VolumesNamed("matrix-volume").size() - volumesBefore;
            if (call == Call::CreateAndWait) {
                if (ok) {
                    EXPECT_EQ(VolumesNamed("matrix-volume"), std::vector<std::string>{created});
                } else if (volumesMade != 0) {
                    // The create reached the service but its answer was lost:
                    // the caller is told which request went unanswered.
                    EXPECT_EQ(volumesMade, 1u);
                    EXPECT_EQ(failure.request.rfind("POST /20160918/volumes", 0), 0u) << failure.request;
                    EXPECT_FALSE(failure.transferError.empty()) << learned;
                }
            } else {
                EXPECT_EQ(volumesMade, 0u);
            }
            if (call == Call::DeleteAndWait) {
                const std::string state = StateOf(web2_);
                if (ok) {
                    EXPECT_EQ(state, "TERMINATED");
                } else if (state != "RUNNING") {
                    EXPECT_NE(failure.request.find(web2_), std::string::npos) << learned;
                }
            }
        }
    }
}

TEST_F(FaultMatrixOci, CreateWhoseAnswerIsLostIsRetriedUnderOneTokenAndMakesOneVolume) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    // The volume is made, then the answer is lost in a 500.
    ASSERT_EQ(Admin("POST", "faults",
                    R"({"method":"POST","pathPrefix":"/20160918/volumes","status":500,"times":1,"afterEffect":true})"),
              200);
    SDiskInfoLib disk;
    disk.volumeName = "made-once";
    disk.sizeBytes = 50ULL << 30;
    disk.availabilityDomain = ResourceMember(FindResourceId("instance", "ocw-web-1"), "availabilityDomain");
    disk.compartmentId = FindResourceId("compartment", "ocw-demo");

    ASSERT_TRUE(facade->CreateVolume(disk, "")) << facade->GetLastError();

    std::vector<std::string> made;
    for (const std::string& id : ResourceIds("volume"))
        if (ResourceMember(id, "displayName") == "made-once") made.push_back(id);
    EXPECT_EQ(made, std::vector<std::string>{disk.guid});
    auto posts = RequestsTo("POST", "/20160918/volumes");
    ASSERT_EQ(posts.size(), 2u);
    EXPECT_EQ(posts[0].status, 500);
    EXPECT_EQ(posts[1].status, 200);
    auto token = [](const ocwemu::LoggedRequest& r) {
        for (const auto& h : r.headers)
            if (h.first == "opc-retry-token") return h.second;
        return std::string();
    };
    EXPECT_EQ(token(posts[0]).size(), 32u);
    EXPECT_EQ(token(posts[0]), token(posts[1]));
    // Another create is another request: a token of its own.
    SDiskInfoLib second = disk;
    second.volumeName = "made-once-more";
    ASSERT_TRUE(facade->CreateVolume(second, "")) << facade->GetLastError();
    posts = RequestsTo("POST", "/20160918/volumes");
    ASSERT_EQ(posts.size(), 3u);
    EXPECT_NE(token(posts[2]), token(posts[0]));
    EXPECT_EQ(token(posts[2]).size(), 32u);
}
