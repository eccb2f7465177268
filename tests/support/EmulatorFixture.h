#pragma once
// The shared emulator fixture: one in-process emulator per test program, a
// clean cloud and a configuration file per test (SetUp), connected OCI facades
// and backends, and views of what the emulator received and holds. Used by the
// end-to-end, emulator and command-line tests; README.md beside this file
// describes the defaults and how to use it.
//
// Library objects read the configuration when they are built: call
// WriteConfig before ConnectFacade / ConnectBackend / constructing a facade.
// Tests of one program share the emulator and the process-wide configuration:
// they must not run in parallel within one program.
#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Emulator.h"
#include "oci/OracleCloudInfrastructureOperations.h"
#include "oci/OracleCloudInfrastructureQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "transport/OracleCloudInfrastructureConnection.h"

namespace ocwtest {

constexpr long long kProvisionMs = 300;
constexpr size_t kEmulatorPageSize = 10;
constexpr int kScaleCompartments = 3;
constexpr int kScaleInstances = 25;

// The program's emulator, started on first call. Fails the calling test
// (and returns null) when it cannot start.
ocwemu::Emulator* SharedEmulator();

// The OCI backend objects without the facade, connected as the emulator's
// user: for the calls the facade reaches only through composites or does not
// expose with every argument.
struct OciBackend {
    OracleCloudSDKWrapper::COracleCloudInfrastructureParser parser;
    OracleCloudSDKWrapper::COracleCloudInfrastructureConnection connection{&parser};
    OracleCloudSDKWrapper::COracleCloudInfrastructureQueries queries{&connection, &parser};
    OracleCloudSDKWrapper::COracleCloudInfrastructureOperations ops{&connection, &parser};
};

class EmulatorTest : public ::testing::Test {
protected:
    void SetUp() override;

    ocwemu::Emulator& emu() { return *emulator_; }
    const ocwemu::EmulatorInfo& info() const { return emulator_->info(); }

    // Clears counters, request log, faults, holds, limits and added keys, and
    // re-seeds ("demo", "empty" or "scale"). Fails the test when the emulator refuses.
    void ResetEmulator(const std::string& seed = "demo");
    // The emulator's admin interface (unsigned, loopback only): "POST", "limits", "{...}".
    // Returns the answer's status (0: no answer) and fills `answer` when given.
    int Admin(const std::string& method, const std::string& path, const std::string& body = std::string(),
              std::string* answer = nullptr);
    // How many block volumes one instance may have attached (reset with the emulator).
    void SetAttachmentLimit(int limit);

    // Writes the default configuration plus `overrides` (keys of section
    // "VirtualServer"; an empty value removes a default key) and makes it current.
    void WriteConfig(const std::map<std::string, std::string>& overrides = {});

    // The user text of Connect: "<user>|<fingerprint>|<keyFile>[|<region>]".
    std::string UserToken(const std::string& region = "", const std::string& keyFile = "") const;

    // A facade of cloud type 2 connected as the emulator's user (Connect with
    // the tenancy, UserToken(region, keyFile) and passPhrase, service core).
    // On failure the test fails (non-fatally) with the facade's error and null is
    // returned, so callers write ASSERT_TRUE(facade).
    std::unique_ptr<OracleCloudSDKWrapper::COracleCloudWrapper> ConnectFacade(const std::string& region = "",
                                                                              const std::string& keyFile = "",
                                                                              const std::string& passPhrase = "");
    // The backend objects connected in the home region (null after a recorded failure).
    std::unique_ptr<OciBackend> ConnectBackend();

    // ---- Cloud Classic --------------------------------------------------------
    // "/Compute-<identity domain>/<user>": the emulator's user as Compute
    // Classic names it (the leading part of its objects' full names).
    std::string ClassicUserPath() const;
    // A facade of `type` connected to the Compute Classic endpoint as the
    // emulator's user ("<domain>/<user>", logged in), or to the PaaS endpoint
    // with `service`; null after recording a failure, like ConnectFacade.
    std::unique_ptr<OracleCloudSDKWrapper::COracleCloudWrapper> ConnectClassicFacade(
        OracleCloudSDKWrapper::EOracleCloudType type = OracleCloudSDKWrapper::ORACLE_CLOUD_CLASSIC);
    std::unique_ptr<OracleCloudSDKWrapper::COracleCloudWrapper> ConnectPaaSFacade(
        OracleCloudSDKWrapper::EOracleServiceType service = OracleCloudSDKWrapper::ORACLE_SERVICE_PAAS_DATABASE);
    // Ends every Compute Classic session now (the next request with an old cookie gets the expiry 401).
    void ExpireClassicSessions();
    // A PaaS POST with the account's basic credentials and tenant; the job's
    // "Location" (empty when the answer had none, which fails the test).
    std::string PaaSPost(const std::string& path, const std::string& body);
    // Store id of the first live Classic object of `kind` ("instance",
    // "storage/volume", ...) whose full name starts with namePrefix; empty when none.
    std::string ClassicResourceId(const std::string& kind, const std::string& namePrefix);
    // Polls a status reader of the library the way an agent does (every
    // 100 ms, at most ten seconds) until it reads `want`. Returns the last
    // status read, or "<read failed>" when a read failed.
    template <class Read>
    std::string PollUntil(const std::string& want, Read read) {
        std::string status;
        for (int i = 0; i < 100 && status != want; ++i) {
            if (!read(status)) return "<read failed>";
            if (status != want) std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return status;
    }

    // A new RSA key file that the emulator does not know (mode 0600), in the
    // test's scratch directory.
    std::string WriteUnknownKeyFile();
    // A directory private to this test program run.
    std::string ScratchDir() const;

    // ---- what the emulator received (since the last reset / clear) -------
    std::vector<ocwemu::LoggedRequest> Requests() const;
    // Requests with this method (empty: any) whose target (path and query as
    // sent) starts with targetPrefix and whose Host header contains hostPart
    // (empty: any).
    std::vector<ocwemu::LoggedRequest> RequestsTo(const std::string& method, const std::string& targetPrefix,
                                                  const std::string& hostPart = "") const;
    size_t CountRequests(const std::string& method, const std::string& targetPrefix,
                         const std::string& hostPart = "") const;
    void ClearRequestLog();
    // The request's body as a JSON object (empty when it is not one).
    static boost::json::object BodyOf(const ocwemu::LoggedRequest& request);

    // ---- faults and states -------------------------------------------------
    // Answers `status` to the next `times` matching requests (-1: all) and
    // returns the rule id. Body code/message default to the service's.
    std::string AddStatusFault(const std::string& method, const std::string& pathPrefix, int status, int times,
                               const std::string& hostPart = "");
    // Reads of the resource show `state` until released.
    void HoldState(const std::string& resourceId, const std::string& state);
    void ReleaseState(const std::string& resourceId);

    // ---- store look-ups (under the store lock) ----------------------------
    // Id of the first live resource of `kind` ("instance", "volume",
    // "compartment", "image", "vcn", "subnet", "dbsystem", ...) whose
    // "displayName" (or "name") is `name`; empty when none.
    std::string FindResourceId(const std::string& kind, const std::string& name);
    // Ids of the live resources of `kind`, optionally of one compartment, in creation order.
    std::vector<std::string> ResourceIds(const std::string& kind, const std::string& compartmentId = "");
    // A string member of the stored document ("" when absent or not a string).
    std::string ResourceMember(const std::string& id, const std::string& member);
    // Any member of the stored document as JSON text ("" when absent).
    std::string MemberJson(const std::string& id, const std::string& member);
    // The lifecycle state the emulator would answer now ("" when unknown).
    std::string StateOf(const std::string& id);
    // Waits (polling the store every 20 ms, at most 5 s) until StateOf(id) is `state`.
    bool WaitForState(const std::string& id, const std::string& state);

private:
    ocwemu::Emulator* emulator_ = nullptr;
    std::string configFile_;
};

}  // namespace ocwtest
