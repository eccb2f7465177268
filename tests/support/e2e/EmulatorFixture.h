#pragma once
// The shared end-to-end fixture: one in-process emulator per test program,
// a configuration file per test, connected OCI facades, and views of what the
// emulator received.
//
// Typical use (tests/e2e/*.cpp are linked with this library):
//
//   class Inventory : public ocwtest::e2e::EmulatorTest {};
//
//   TEST_F(Inventory, ListsInstances) {
//       WriteConfig({{"nOCIPageLimit", "2"}});   // before the facade is built
//       auto facade = ConnectFacade();            // ASSERT-style: null after a failure
//       ASSERT_TRUE(facade);
//       std::vector<SVMInfoLib> vms;
//       ASSERT_TRUE(facade->GetVMInfoList(vms, 0, "")) << facade->GetLastError();
//       EXPECT_EQ(CountRequests("GET", "/20160918/instances"), 3u);
//   }
//
// The emulator starts on first use (127.0.0.1, free port, seed "demo",
// lifecycle transitions settle after kProvisionMs, default page size
// kEmulatorPageSize; the "scale" seed has kScaleCompartments compartments
// sharing kScaleInstances instances) and stops when the program ends.
//
// SetUp of every test: the emulator is reset (seed "demo": counters, request
// log, fault rules, held states and added keys cleared) and the default
// configuration is written and made current (PlatformConfig). So tests do not
// see each other's resources, faults or requests; they must not run in
// parallel within one program (they share the emulator and the configuration).
//
// Default configuration, section "VirtualServer" (overridable per test):
//   sOCIEndpointOverride = emulator endpoint, sCACertFile = emulator CA,
//   nOCIRequestRetryInitialIntervalInSeconds = 0 (retries do not pause),
//   sOCIRequestRetryIntervalMultiplier = 1.0, nOCIMaximumRequestRetryCount = 6,
//   nOCIOperationWaitTime = 1, nOCIOperationTimeout = 60,
//   nHttpConnectTimeoutSeconds = 5, nHttpTransferTimeoutSeconds = 30,
//   nOracleCloudOperationWaitTime = 1, nOracleCloudOperationTimeout = 60,
//   nOCIPageLimit unset (the emulator's page size applies);
// section "Base": dBASEHOME = the emulator's state directory (its key file
// is there under its bare name as well).
//
// Library objects read the configuration when they are built: call
// WriteConfig before ConnectFacade / constructing a facade.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Emulator.h"
#include "oraclecloud/OracleCloudWrapper.h"

namespace ocwtest {
namespace e2e {

constexpr long long kProvisionMs = 100;
constexpr size_t kEmulatorPageSize = 10;
constexpr int kScaleCompartments = 3;
constexpr int kScaleInstances = 25;

// The program's emulator, started on first call. Fails the calling test
// (and returns null) when it cannot start.
ocwemu::Emulator* SharedEmulator();

// One line the library logged.
struct CapturedLogLine {
    int level;
    std::string signature;
    std::string text;
};

// Routes the library's log lines into memory for its lifetime (all levels up
// to `level`), then restores the default sink and level 0.
class ScopedLogCapture {
public:
    explicit ScopedLogCapture(int level = 2);
    ~ScopedLogCapture();
    ScopedLogCapture(const ScopedLogCapture&) = delete;
    ScopedLogCapture& operator=(const ScopedLogCapture&) = delete;

    std::vector<CapturedLogLine> lines() const;
    // Lines whose text contains `needle`.
    std::vector<CapturedLogLine> matching(const std::string& needle) const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

// Runs `action` once, the first time the library logs a line (up to `level`)
// containing `needle`, on the thread that logs it: the caller's. A way to
// change the cloud between two requests of one synchronous call (add a fault
// after the first page, ...). Restores the default sink and level at its end.
class ScopedLogTrigger {
public:
    ScopedLogTrigger(const std::string& needle, std::function<void()> action, int level = 2);
    ~ScopedLogTrigger();
    ScopedLogTrigger(const ScopedLogTrigger&) = delete;
    ScopedLogTrigger& operator=(const ScopedLogTrigger&) = delete;
    bool fired() const { return *fired_; }

private:
    std::shared_ptr<bool> fired_;
};

class EmulatorTest : public ::testing::Test {
protected:
    void SetUp() override;

    ocwemu::Emulator& emu() { return *emulator_; }
    const ocwemu::EmulatorInfo& info() const { return emulator_->info(); }

    // Clears counters, request log, faults, holds and added keys, and re-seeds
    // ("demo", "empty" or "scale"). Fails the test when the emulator refuses.
    void ResetEmulator(const std::string& seed = "demo");

    // Writes the default configuration plus `overrides` (keys of section
    // "VirtualServer"; an empty value removes a default key) and makes it current.
    void WriteConfig(const std::map<std::string, std::string>& overrides = {});
    const std::string& configFile() const { return configFile_; }

    // The user text of Connect: "<user>|<fingerprint>|<keyFile>[|<region>]".
    std::string UserToken(const std::string& region = "", const std::string& keyFile = "") const;

    // A facade of cloud type 2 connected as the emulator's user (Connect with
    // the tenancy, UserToken(region, keyFile) and passPhrase, service core).
    // On failure the test fails (non-fatally) with the facade's error and null is
    // returned, so callers write ASSERT_TRUE(facade).
    std::unique_ptr<OracleCloudSDKWrapper::COracleCloudWrapper> ConnectFacade(const std::string& region = "",
                                                                              const std::string& keyFile = "",
                                                                              const std::string& passPhrase = "");

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

    // ---- faults and states -------------------------------------------------
    // Answers `status` to the next `times` matching requests (-1: all) and
    // returns the rule id. Body code/message default to the service's.
    std::string AddStatusFault(const std::string& method, const std::string& pathPrefix, int status, int times,
                               const std::string& hostPart = "");
    void RemoveFault(const std::string& id);
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

private:
    ocwemu::Emulator* emulator_ = nullptr;
    std::string configFile_;
};

}  // namespace e2e
}  // namespace ocwtest
