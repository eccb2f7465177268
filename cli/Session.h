#pragma once
// What every command needs: the global options, the resolved OCI profile,
// the agent configuration and one connected facade. The facade is built and
// connected on first use, so commands that fail on their arguments never
// touch the network.
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "AgentIni.h"
#include "ClassicProfile.h"
#include "ExitCodes.h"
#include "OciConfigFile.h"
#include "oraclecloud/OracleCloudWrapper.h"

namespace ocw {

struct GlobalOptions {
    std::string profile;     // empty: OciConfigFile::DefaultProfile()
    std::string configFile;  // empty: OciConfigFile::DefaultPath()
    std::string ini;         // empty: $OCW_CONFIG
    std::string region;      // empty: the profile's region
    bool json = false;
    int verbosity = 0;
    long long timeoutSeconds = 0;  // --timeout: limit of ocw's own waits; 0: nOCIOperationTimeout
};

// One wait of ocw's own on a resource the command created or changed.
struct WaitSpec {
    std::string label;       // "backup nightly": the progress line and the messages
    std::string resourceId;  // what is waited on; named when the wait stops early
    std::function<bool(std::string& state)> read;  // one poll through the facade
    std::vector<std::string> done;                 // states that end the wait
    std::vector<std::string> failed;               // states that fail it
};

class Session {
public:
    explicit Session(GlobalOptions options)
        : options_(std::move(options)), start_(std::chrono::steady_clock::now()) {}
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const GlobalOptions& options() const { return options_; }
    bool json() const { return options_.json; }

    // Reads the config file and the profile; CliError(kExitAuth) when either
    // cannot be used, CliError(kExitUsage) when --ini names an unreadable file.
    const OciProfile& profile();
    const AgentIni& ini();

    // Whether the profile is a Cloud Classic account (see ClassicProfile.h);
    // false when the config file cannot be read (profile() then says why).
    bool classic();
    // The Classic account; CliError(kExitAuth) when it cannot be used, also
    // when the profile is an OCI one.
    const ClassicProfile& classicProfile();
    // Classic: the service the facade connects to, before the first cloud()
    // (default Compute Classic; the PaaS services connect to paas_endpoint).
    void setService(OracleCloudSDKWrapper::EOracleServiceType service) { service_ = service; }

    // The connected facade. CliError when the connection or the tenancy check fails.
    OracleCloudSDKWrapper::COracleCloudWrapper& cloud();

    // The given compartment, or the tenancy (the root compartment) when empty.
    std::string compartmentOr(const std::string& given);

    // Runs one facade call. On false ends the command: CliError with "what"
    // and the best explanation the library gave, classified into an exit code
    // (see ExitCodes.h). While the call runs, Ctrl-C reports that the cloud
    // may still be working on "what" (and on the resource of InFlight).
    void call(const std::string& what, const std::function<bool(OracleCloudSDKWrapper::COracleCloudWrapper&)>& run);

    // Like call(), but the caller decides about a false result; returns it.
    bool attempt(const std::string& what,
                 const std::function<bool(OracleCloudSDKWrapper::COracleCloudWrapper&)>& run);

    // Off: Ctrl-C does not claim that the cloud goes on with the interrupted
    // call (the demo's cloud goes away with it).
    void setInterruptHints(bool on) { interruptHints_ = on; }

    // The CliError for the last failed call: the facade's text and failure
    // record (status, service code and message, request ids), the resource in
    // flight, and an exit code from the record (401: 3, 404 / "...NotFound": 4).
    CliError failure(const std::string& what) const;

    // The one wait of ocw's own: polls spec.read every nOCIOperationWaitTime
    // seconds (0: 200 ms), the first time after one interval, until a done
    // state, with progress on stderr. A transient failure of a poll (429,
    // 5xx, no answer) is tried again after a growing pause; a failed state,
    // another failure or the command's time limit ends the command, naming
    // the resource and its last state. Returns the final state.
    std::string waitFor(const WaitSpec& spec);

    // The command's time limit for ocw's own waits, seconds, and the setting that gives it.
    long long timeLimitSeconds();
    std::string timeLimitSetting();

private:
    GlobalOptions options_;
    std::chrono::steady_clock::time_point start_;
    OciConfigFile& config();
    std::unique_ptr<OracleCloudSDKWrapper::COracleCloudWrapper> connectClassic();

    bool configLoaded_ = false;
    OciConfigFile config_;
    std::string configPath_, profileName_;
    bool profileLoaded_ = false;
    OciProfile profile_;
    bool classicLoaded_ = false;
    ClassicProfile classicProfile_;
    OracleCloudSDKWrapper::EOracleServiceType service_ = OracleCloudSDKWrapper::ORACLE_SERVICE_COMPUTE;
    bool iniLoaded_ = false;
    AgentIni ini_;
    std::unique_ptr<OracleCloudSDKWrapper::COracleCloudWrapper> facade_;
    OracleCloudSDKWrapper::SOracleCloudFailureInfoLib failureBefore_;
    bool interruptHints_ = true;
};

// Whether the global options name a Classic profile, decided before the
// command line is parsed (the commands differ by cloud).
bool ProfileIsClassic(const GlobalOptions& options);

// Connects facade with an OCI profile: the tenancy as server, the user text
// "user|fingerprint|key_file|region", the pass phrase as password.
bool ConnectWithProfile(OracleCloudSDKWrapper::COracleCloudWrapper& facade, const OciProfile& profile);

}  // namespace ocw
