#pragma once
// The one receiver of the library's log lines (installed with
// COracleCloudWrapper::SetLogSink). It
//   - prints lines up to the chosen verbosity on stderr (-v, -vv, -vvv),
//   - remembers what the last failed request answered (the service's error
//     "code" and "message") and whether signing failed, so that ocw can tell
//     an authentication failure from a missing resource,
//   - feeds lifecycle states of the library's waits to the active Progress.
// The public facade reports only true/false and a text; everything else ocw
// knows about a failure comes through here.
#include <mutex>
#include <string>

namespace ocw {

class Progress;

struct CallFailure {
    std::string serviceCode;     // "code" of the last error body, e.g. "NotAuthenticated"
    std::string serviceMessage;  // "message" of that body
    std::string lastErrorLine;   // text of the last error-level line
    std::string transportError;  // why the last transfer failed without an answer ("Could not resolve host: ...")
    int httpStatus = 0;          // status of the last failed request, 0 when none was answered
    bool signingFailed = false;  // a request could not be signed (key or pass phrase)
    bool requestFailed = false;  // a request was sent and failed
};

class LogRouter {
public:
    static LogRouter& Instance();

    // verbosity 0: nothing printed; 1: errors and debug lines; 2: also URLs,
    // responses and request lines; 3: everything, signing strings included.
    void install(int verbosity);

    // Forgets what earlier calls left behind; call before a facade call whose
    // failure may have to be explained.
    void beginCall();
    CallFailure failure() const;

    void setProgress(Progress* progress);

    // The sink itself (public so that tests can feed it lines).
    void onLine(int level, const char* signature, const std::string& text);

private:
    LogRouter() = default;

    mutable std::mutex mutex_;
    int printLevel_ = -1;
    bool awaitingErrorBody_ = false;
    CallFailure failure_;
    Progress* progress_ = nullptr;
};

// "bool A::B::C::Method(args) const" -> "C::Method": enough to tell where a
// line comes from without the namespace and argument list.
std::string ShortSignature(const char* signature);

}  // namespace ocw
