#pragma once
// The one receiver of the library's log lines (installed with
// COracleCloudWrapper::SetLogSink). It
//   - prints lines up to the chosen verbosity on stderr (-v, -vv, -vvv),
//   - remembers the last error line, the explanation of last resort when a
//     failure left no text (a key file that cannot be read),
//   - follows the library's own waits: the id of an instance or volume that a
//     call has just created and the lifecycle states it polls go to InFlight
//     (named when the command fails or is interrupted) and to the active
//     Progress.
// What a failed request answered (status, code, request ids) comes from the
// facade's failure record, not from here.
#include <mutex>
#include <string>

namespace ocw {

class Progress;

class LogRouter {
public:
    static LogRouter& Instance();

    // verbosity 0: nothing printed; 1: errors and debug lines; 2: also URLs,
    // responses and request lines; 3: everything, signing strings included.
    void install(int verbosity);

    // Forgets what earlier calls left behind; call before a facade call whose
    // failure may have to be explained.
    void beginCall();
    // Text of the last error-level line since beginCall (first line only).
    std::string lastErrorLine() const;

    void setProgress(Progress* progress);

    // The sink itself (public so that tests can feed it lines).
    void onLine(int level, const char* signature, const std::string& text);

private:
    LogRouter() = default;

    mutable std::mutex mutex_;
    int printLevel_ = -1;
    std::string lastErrorLine_;
    Progress* progress_ = nullptr;
};

// "bool A::B::C::Method(args) const" -> "C::Method": enough to tell where a
// line comes from without the namespace and argument list.
std::string ShortSignature(const char* signature);

}  // namespace ocw
