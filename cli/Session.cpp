#include "Session.h"

#include <algorithm>
#include <thread>

#include "Failure.h"
#include "InFlight.h"
#include "Interrupt.h"
#include "LogRouter.h"
#include "Progress.h"

namespace ocw {

using OracleCloudSDKWrapper::COracleCloudWrapper;
using OracleCloudSDKWrapper::SOracleCloudFailureInfoLib;

namespace {

bool SameRecord(const SOracleCloudFailureInfoLib& a, const SOracleCloudFailureInfoLib& b) {
    return a.message == b.message && a.request == b.request && a.clientRequestId == b.clientRequestId &&
           a.httpStatus == b.httpStatus && a.attempts == b.attempts && a.transferError == b.transferError;
}

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

bool Contains(const std::vector<std::string>& states, const std::string& state) {
    return std::find(states.begin(), states.end(), state) != states.end();
}

}  // namespace

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
    failureBefore_ = facade->GetLastFailure();
    if (!ConnectWithProfile(*facade, p)) {
        facade_ = std::move(facade);
        CliError error = failure("cannot connect to tenancy " + p.tenancy + " in " + p.region + " as profile [" +
                                 p.name + "]");
        // A tenancy that cannot be read with a valid signature is a credentials
        // problem from the user's point of view.
        FailureReport report = error.report();
        if (report.code != kExitFailure) report.code = kExitAuth;
        throw CliError(report);
    }
    facade_ = std::move(facade);
    return *facade_;
}

std::string Session::compartmentOr(const std::string& given) { return given.empty() ? profile().tenancy : given; }

bool Session::attempt(const std::string& what, const std::function<bool(COracleCloudWrapper&)>& run) {
    COracleCloudWrapper& facade = cloud();
    LogRouter::Instance().beginCall();
    failureBefore_ = facade.GetLastFailure();
    if (interruptHints_) InFlight::SetCall(what);
    const bool ok = run(facade);
    Interrupt::ParkIfRequested();
    return ok;
}

void Session::call(const std::string& what, const std::function<bool(COracleCloudWrapper&)>& run) {
    if (!attempt(what, run)) throw failure(what);
}

CliError Session::failure(const std::string& what) const {
    SOracleCloudFailureInfoLib record = facade_ ? facade_->GetLastFailure() : SOracleCloudFailureInfoLib();
    // The facade never clears its record: an unchanged one belongs to an
    // earlier call (a call that failed without taking over a text).
    if (SameRecord(record, failureBefore_)) record = SOracleCloudFailureInfoLib();

    std::string detail = record.serviceMessage;
    if (detail.empty()) detail = record.message;
    if (detail.empty() && record.httpStatus != 0) {
        // A proxy's page or a plain-text answer: the status is the explanation.
        detail = "the service answered HTTP " + std::to_string(record.httpStatus) +
                 " without an error document";
    }
    if (detail.empty()) detail = record.transferError;
    if (detail.empty()) detail = LogRouter::Instance().lastErrorLine();
    if (detail.empty()) detail = "no details (run with -v to see the library's log)";
    if (record.message.rfind("Timeout waiting", 0) == 0) {
        const AgentIni& tunables = const_cast<Session*>(this)->ini();
        detail = "the library gave up waiting after " + std::to_string(tunables.timeoutSeconds) +
                 " s; raise nOCIOperationTimeout in the agent configuration (--ini or OCW_CONFIG)";
    }

    // OCI's codes: "NotAuthenticated" (401); "NotAuthorizedOrNotFound" (404)
    // and object storage's "BucketNotFound", "ObjectNotFound", ...
    const bool codeSaysNotFound = EndsWith(record.serviceCode, "NotFound") &&
                                  record.serviceCode != "RelatedResourceNotAuthorizedOrNotFound";
    // A request that never went out could not be signed (key or pass phrase).
    const bool unsigned_ = !record.request.empty() && record.attempts == 0;
    ExitCode code = kExitFailure;
    if (record.serviceCode == "NotAuthenticated" || record.httpStatus == 401 || unsigned_ ||
        record.message.find("decrypt the private key") != std::string::npos) {
        code = kExitAuth;
    } else if (codeSaysNotFound || record.httpStatus == 404) {
        code = kExitNotFound;
    }
    if (!record.serviceCode.empty()) detail += " (" + record.serviceCode + ")";
    FailureReport report;
    report.code = code;
    report.message = what + ": " + detail;
    report.request = record;
    report.resource = InFlight::Resource();
    return CliError(report);
}

long long Session::timeLimitSeconds() {
    return options_.timeoutSeconds > 0 ? options_.timeoutSeconds : ini().timeoutSeconds;
}

std::string Session::timeLimitSetting() {
    return options_.timeoutSeconds > 0 ? std::string("--timeout")
                                       : std::string("--timeout (default: nOCIOperationTimeout of the agent configuration)");
}

std::string Session::waitFor(const WaitSpec& spec) {
    using std::chrono::milliseconds;
    using std::chrono::seconds;
    using Clock = std::chrono::steady_clock;
    const AgentIni& tunables = ini();
    InFlight::Track(spec.resourceId);
    Progress progress(spec.label);
    const milliseconds pause = tunables.waitSeconds > 0 ? milliseconds(tunables.waitSeconds * 1000) : milliseconds(200);
    const long long limit = timeLimitSeconds();
    const Clock::time_point deadline = start_ + seconds(limit);
    std::string state;
    milliseconds next = pause;
    unsigned retries = 0;
    SOracleCloudFailureInfoLib lastFailure;
    for (;;) {
        // As in the library's waits, the first read comes after a full pause:
        // right after the request the cloud may still report the state from
        // before it, which can be a done state (a restore of an AVAILABLE database).
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now());
        std::this_thread::sleep_for(std::max(milliseconds(0), std::min(next, left)));
        if (attempt(spec.label, [&](COracleCloudWrapper&) { return spec.read(state); })) {
            lastFailure = SOracleCloudFailureInfoLib();
            retries = 0;
            next = pause;
            progress.state(state);
            InFlight::NoteState(state);
            if (Contains(spec.done, state)) return state;
            if (Contains(spec.failed, state)) {
                progress.finish();
                FailureReport report;
                report.message = spec.label + ": " + spec.resourceId + " went into state " + state;
                report.resource = InFlight::Resource();
                throw CliError(report);
            }
        } else {
            CliError error = failure(spec.label);
            if (!IsTransient(error.report().request)) {
                progress.finish();
                throw error;
            }
            // A hiccup of the service or the network must not end a wait
            // that may last longer than the hiccup: try again, slower.
            lastFailure = error.report().request;
            ++retries;
            next = std::min<milliseconds>(milliseconds(60000),
                                          std::max(pause, milliseconds(1000)) * (1 << std::min(retries, 6u)));
            const std::string why = lastFailure.httpStatus != 0 ? "HTTP " + std::to_string(lastFailure.httpStatus)
                                                                : lastFailure.transferError;
            if (Clock::now() < deadline) {
                progress.state("poll failed (" + why + "), trying again in " +
                               std::to_string(std::chrono::duration_cast<seconds>(next).count()) + " s");
            }
        }
        if (Clock::now() >= deadline) {
            progress.finish();
            FailureReport report;
            report.message = spec.label + ": gave up after " + std::to_string(limit) + " s" +
                             (state.empty() ? std::string() : ", last state " + state) + "; raise " +
                             timeLimitSetting();
            report.request = lastFailure;
            report.resource = InFlight::Resource();
            throw CliError(report);
        }
    }
}

}  // namespace ocw
