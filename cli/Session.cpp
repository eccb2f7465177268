#include "Session.h"

#include <chrono>
#include <thread>

#include "Interrupt.h"
#include "LogRouter.h"
#include "Progress.h"

namespace ocw {

using OracleCloudSDKWrapper::COracleCloudWrapper;

bool ConnectWithProfile(COracleCloudWrapper& facade, const OciProfile& profile) {
    const std::string user = profile.user + "|" + profile.fingerprint + "|" + profile.keyFile + "|" + profile.region;
    return facade.Connect(profile.tenancy, user, profile.passPhrase, OracleCloudSDKWrapper::OCI_SERVICE_IDENTITY);
}

const AgentIni& Session::ini() {
    if (!iniLoaded_) {
        std::string error;
        if (!ini_.locate(options_.ini, error)) throw CliError(kExitUsage, error);
        iniLoaded_ = true;
    }
    return ini_;
}

const OciProfile& Session::profile() {
    if (!profileLoaded_) {
        OciConfigFile config;
        const std::string path =
            options_.configFile.empty() ? OciConfigFile::DefaultPath() : OciConfigFile::ExpandHome(options_.configFile);
        const std::string name = options_.profile.empty() ? OciConfigFile::DefaultProfile() : options_.profile;
        if (!config.load(path) || !config.resolve(name, options_.region, profile_)) {
            throw CliError(kExitAuth, config.error());
        }
        profileLoaded_ = true;
    }
    return profile_;
}

COracleCloudWrapper& Session::cloud() {
    if (facade_) return *facade_;
    const OciProfile& p = profile();
    ini();  // OCW_CONFIG must be in place before the facade reads its configuration
    auto facade = std::make_unique<COracleCloudWrapper>(OracleCloudSDKWrapper::ORACLE_CLOUD_INFRASTRUCTURE);
    LogRouter::Instance().beginCall();
    lastErrorBefore_ = facade->GetLastError();
    if (!ConnectWithProfile(*facade, p)) {
        facade_ = std::move(facade);
        CliError error = failure("cannot connect to tenancy " + p.tenancy + " in " + p.region + " as profile [" +
                                 p.name + "]");
        // A tenancy that cannot be read with a valid signature is a credentials
        // problem from the user's point of view.
        throw CliError(error.code() == kExitFailure ? kExitFailure : kExitAuth, error.what());
    }
    facade_ = std::move(facade);
    return *facade_;
}

std::string Session::compartmentOr(const std::string& given) { return given.empty() ? profile().tenancy : given; }

bool Session::attempt(const std::string& what, const std::function<bool(COracleCloudWrapper&)>& run) {
    COracleCloudWrapper& facade = cloud();
    LogRouter::Instance().beginCall();
    lastErrorBefore_ = facade.GetLastError();
    if (interruptHints_) Interrupt::SetHint("the cloud may still be working on: " + what);
    const bool ok = run(facade);
    Interrupt::ParkIfRequested();
    if (interruptHints_) Interrupt::SetHint("");
    return ok;
}

void Session::call(const std::string& what, const std::function<bool(COracleCloudWrapper&)>& run) {
    if (!attempt(what, run)) throw failure(what);
}

CliError Session::failure(const std::string& what) const {
    const CallFailure f = LogRouter::Instance().failure();
    const std::string libraryText = facade_ ? facade_->GetLastError() : std::string();
    // The facade never clears its text, so an unchanged one may belong to an
    // earlier call; the service's own answer is the freshest explanation.
    std::string detail = f.serviceMessage;
    if (detail.empty() && !libraryText.empty() && libraryText != lastErrorBefore_) detail = libraryText;
    if (detail.empty()) detail = f.transportError;
    if (detail.empty()) detail = f.lastErrorLine;
    if (detail.empty()) detail = "no details (run with -v to see the library's log)";

    // OCI's codes: "NotAuthenticated" (401); "NotAuthorizedOrNotFound" (404)
    // and object storage's "BucketNotFound", "ObjectNotFound", ...
    const bool codeSaysNotFound = f.serviceCode.size() >= 8 &&
                                  f.serviceCode.compare(f.serviceCode.size() - 8, 8, "NotFound") == 0 &&
                                  f.serviceCode != "RelatedResourceNotAuthorizedOrNotFound";
    ExitCode code = kExitFailure;
    if (f.serviceCode == "NotAuthenticated" || f.httpStatus == 401 || f.signingFailed ||
        libraryText.find("decrypt the private key") != std::string::npos) {
        code = kExitAuth;
    } else if (codeSaysNotFound || f.httpStatus == 404) {
        code = kExitNotFound;
    }
    if (!f.serviceCode.empty()) detail += " (" + f.serviceCode + ")";
    return CliError(code, what + ": " + detail);
}

std::string Session::waitForState(const std::string& label, const std::function<bool(std::string&)>& read,
                                  std::initializer_list<const char*> done, std::initializer_list<const char*> failed) {
    const AgentIni& tunables = ini();
    Progress progress(label);
    const auto pause = tunables.waitSeconds > 0 ? std::chrono::milliseconds(tunables.waitSeconds * 1000)
                                                : std::chrono::milliseconds(200);
    std::string state;
    for (;;) {
        // As in the library's waits, the first read comes after a full pause:
        // right after the request the cloud may still report the state from
        // before it, which can be a done state (a restore of an AVAILABLE database).
        std::this_thread::sleep_for(pause);
        if (!attempt(label, [&](COracleCloudWrapper&) { return read(state); })) {
            progress.finish();
            throw failure(label);
        }
        progress.state(state);
        for (const char* d : done) {
            if (state == d) return state;
        }
        for (const char* f : failed) {
            if (state == f) {
                progress.finish();
                throw CliError(kExitFailure, label + ": the resource went into state " + state);
            }
        }
        if (progress.elapsedSeconds() > static_cast<double>(tunables.timeoutSeconds)) {
            progress.finish();
            throw CliError(kExitFailure, label + ": still " + state + " after " +
                                             std::to_string(tunables.timeoutSeconds) + " s (nOCIOperationTimeout)");
        }
    }
}

}  // namespace ocw
