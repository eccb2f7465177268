#pragma once
// What every command needs: the global options, the resolved OCI profile,
// the agent configuration and one connected facade. The facade is built and
// connected on first use, so commands that fail on their arguments never
// touch the network.
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include "AgentIni.h"
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
};

class Session {
public:
    explicit Session(GlobalOptions options) : options_(std::move(options)) {}

    const GlobalOptions& options() const { return options_; }
    bool json() const { return options_.json; }

    // Reads the config file and the profile; CliError(kExitAuth) when either
    // cannot be used, CliError(kExitUsage) when --ini names an unreadable file.
    const OciProfile& profile();
    const AgentIni& ini();

    // The connected facade. CliError when the connection or the tenancy check fails.
    OracleCloudSDKWrapper::COracleCloudWrapper& cloud();

    // The given compartment, or the tenancy (the root compartment) when empty.
    std::string compartmentOr(const std::string& given);

    // Runs one facade call. On false ends the command: CliError with "what"
    // and the best explanation the library gave, classified into an exit code
    // (see ExitCodes.h). While the call runs, Ctrl-C reports that the cloud
    // may still be working on "what".
    void call(const std::string& what, const std::function<bool(OracleCloudSDKWrapper::COracleCloudWrapper&)>& run);

    // Like call(), but the caller decides about a false result; returns it.
    bool attempt(const std::string& what,
                 const std::function<bool(OracleCloudSDKWrapper::COracleCloudWrapper&)>& run);

    // Off: Ctrl-C does not claim that the cloud goes on with the interrupted
    // call (the demo's cloud goes away with it).
    void setInterruptHints(bool on) { interruptHints_ = on; }

    // The CliError for the last failed call.
    CliError failure(const std::string& what) const;

    // Polls read() every nOCIOperationWaitTime seconds (0: 200 ms), the first
    // time after one interval, until it yields one of the done states, with
    // progress on stderr. A failed state, a failed read or the timeout of the
    // agent configuration ends the command. Returns the final state.
    std::string waitForState(const std::string& label, const std::function<bool(std::string& state)>& read,
                             std::initializer_list<const char*> done, std::initializer_list<const char*> failed);

private:
    GlobalOptions options_;
    bool profileLoaded_ = false;
    OciProfile profile_;
    bool iniLoaded_ = false;
    AgentIni ini_;
    std::unique_ptr<OracleCloudSDKWrapper::COracleCloudWrapper> facade_;
    std::string lastErrorBefore_;
    bool interruptHints_ = true;
};

// Connects facade with an OCI profile: the tenancy as server, the user text
// "user|fingerprint|key_file|region", the pass phrase as password.
bool ConnectWithProfile(OracleCloudSDKWrapper::COracleCloudWrapper& facade, const OciProfile& profile);

}  // namespace ocw
