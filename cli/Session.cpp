#include "Session.h"

#include <unistd.h>

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

Session::~Session() {
    facade_.reset();
    if (!ini_.derived.empty()) ::unlink(ini_.derived.c_str());
}

OciConfigFile& Session::config() {
    if (!configLoaded_) {
        configPath_ =
            options_.configFile.empty() ? OciConfigFile::DefaultPath() : OciConfigFile::ExpandHome(options_.configFile);
        profileName_ = options_.profile.empty() ? OciConfigFile::DefaultProfile() : options_.profile;
        if (!config_.load(configPath_)) throw CliError(kExitAuth, config_.error());
        configLoaded_ = true;
    }
    return config_;
}

bool Session::classic() {
    try {
        return config().isClassic(profileName_);
    } catch (const CliError&) {
        return false;
    }
}

bool ProfileIsClassic(const GlobalOptions& options) {
    Session probe(options);
    return probe.classic();
}

const OciProfile& Session::profile() {
    if (!profileLoaded_) {
        OciConfigFile& file = config();
        if (file.isClassic(profileName_)) {
            throw CliError(kExitUsage, "profile [" + profileName_ + "] in " + configPath_ +
                                           " is a Cloud Classic account; this command needs an OCI profile");
        }
        if (!file.resolve(profileName_, options_.region, profile_)) throw CliError(kExitAuth, file.error());
        profileLoaded_ = true;
    }
    return profile_;
}

const ClassicProfile& Session::classicProfile() {
    if (!classicLoaded_) {
        OciConfigFile& file = config();
        if (!file.isClassic(profileName_)) {
            throw CliError(kExitUsage, "profile [" + profileName_ + "] in " + configPath_ +
                                           " is not a Cloud Classic account (it names no compute_endpoint or "
                                           "paas_endpoint)");
        }
        std::string error;
        if (!ResolveClassicProfile(file, profileName_, classicProfile_, error)) throw CliError(kExitAuth, error);
        classicLoaded_ = true;
    }
    return classicProfile_;
}

std::unique_ptr<COracleCloudWrapper> Session::connectClassic() {
    using namespace OracleCloudSDKWrapper;
    const ClassicProfile& p = classicProfile();
    ini();
    std::string error;
    if (!ini_.trust(p.caFile, error)) throw CliError(kExitFailure, error);
    const bool compute = service_ == ORACLE_SERVICE_COMPUTE;
    const std::string endpoint = compute ? p.computeEndpoint : p.paasEndpoint;
    if (endpoint.empty()) {
        throw CliError(kExitAuth, "profile [" + p.name + "] names no " +
                                      (compute ? "compute_endpoint" : "paas_endpoint") + " for this command");
    }
    auto facade = std::make_unique<COracleCloudWrapper>(compute ? ORACLE_CLOUD_CLASSIC : ORACLE_CLOUD_CLASSIC_PAAS);
    LogRouter::Instance().beginCall();
    failureBefore_ = facade->GetLastFailure();
    if (!facade->Connect(endpoint, p.identityDomain + "/" + p.user, p.password, service_)) {
        facade_ = std::move(facade);
        FailureReport report = failure("cannot log in to " + endpoint + " as " + p.identityDomain + "/" + p.user +
                                       " (profile [" + p.name + "], password from " + p.passwordSource + ")")
                                   .report();
        if (report.request.httpStatus == 401 || report.request.httpStatus == 403) report.code = kExitAuth;
        throw CliError(report);
    }
    return facade;
}

COracleCloudWrapper& Session::cloud() {
    if (facade_) return *facade_;
    if (classic()) {
        facade_ = connectClassic();
        return *facade_;
    }
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
        const bool classic = const_cast<Session*>(this)->classic();
        detail = "the library gave up waiting after " +
                 std::to_string(classic ? tunables.classicTimeoutSeconds : tunables.timeoutSeconds) + " s; raise " +
                 (classic ? "nOracleCloudOperationTimeout" : "nOCIOperationTimeout") +
                 " in the agent configuration (--ini or OCW_CONFIG)";
    }

    // Classic names a missing object in its own text when a directory or
    // listing did not hold it ("Instance [web9] was not found").
    const bool textSaysNotFound = record.httpStatus == 0 && detail.find("] was not found") != std::string::npos;
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
    } else if (codeSaysNotFound || record.httpStatus == 404 || textSaysNotFound) {
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
    if (options_.timeoutSeconds > 0) return options_.timeoutSeconds;
    return classic() ? ini().classicTimeoutSeconds : ini().timeoutSeconds;
}

std::string Session::timeLimitSetting() {
    if (options_.timeoutSeconds > 0) return "--timeout";
    return std::string("--timeout (default: ") + (classic() ? "nOracleCloudOperationTimeout" : "nOCIOperationTimeout") +
           " of the agent configuration)";
}

std::string Session::waitFor(const WaitSpec& spec) {
    using std::chrono::milliseconds;
    using std::chrono::seconds;
    using Clock = std::chrono::steady_clock;
    const AgentIni& tunables = ini();
    InFlight::Track(spec.resourceId);
    Progress progress(spec.label);
    // As fast as the library polls the same cloud.
    const long long waitSeconds = classic() ? tunables.classicWaitSeconds : tunables.waitSeconds;
    const milliseconds pause = waitSeconds > 0 ? milliseconds(waitSeconds * 1000) : milliseconds(200);
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
