#include "LogRouter.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "InFlight.h"
#include "Progress.h"
#include "oraclecloud/OracleCloudWrapper.h"

namespace ocw {

namespace {

bool StartsWith(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

// Text between the first '[' after marker and the next ']'.
bool Bracketed(const std::string& text, const char* marker, std::string& out) {
    const size_t at = text.find(marker);
    if (at == std::string::npos) return false;
    const size_t open = text.find('[', at);
    const size_t close = open == std::string::npos ? open : text.find(']', open + 1);
    if (close == std::string::npos) return false;
    out = text.substr(open + 1, close - open - 1);
    return true;
}

// "Successfully submitted request to create VM:[name][id]" (and "volume"):
// the id of what a launch or a volume creation made before it waits.
bool CreatedId(const std::string& text, std::string& id) {
    if (!StartsWith(text, "Successfully submitted request to create ")) return false;
    const size_t second = text.find("][");
    if (second == std::string::npos) return false;
    const size_t close = text.find(']', second + 2);
    if (close == std::string::npos) return false;
    id = text.substr(second + 2, close - second - 2);
    return !id.empty();
}

}  // namespace

std::string ShortSignature(const char* signature) {
    if (signature == nullptr) return std::string();
    std::string text(signature);
    const size_t paren = text.find('(');
    if (paren != std::string::npos) text.erase(paren);
    const size_t space = text.rfind(' ');
    if (space != std::string::npos) text.erase(0, space + 1);
    // Keep the last two scope parts: class and method.
    size_t cut = text.rfind("::");
    if (cut != std::string::npos && cut > 0) {
        cut = text.rfind("::", cut - 1);
        if (cut != std::string::npos) text.erase(0, cut + 2);
    }
    return text;
}

LogRouter& LogRouter::Instance() {
    static LogRouter router;
    return router;
}

void LogRouter::install(int verbosity) {
    static const int kPrintLevels[] = {-1, 1, 4, 7};
    const int v = verbosity < 0 ? 0 : (verbosity > 3 ? 3 : verbosity);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        printLevel_ = kPrintLevels[v];
    }
    // Level 1 carries the library's wait lines (states, created ids), which
    // ocw follows whatever it prints.
    OracleCloudSDKWrapper::COracleCloudWrapper::SetLogLevel(printLevel_ > 1 ? printLevel_ : 1);
    OracleCloudSDKWrapper::COracleCloudWrapper::SetLogSink(
        [this](int level, const char* signature, const std::string& text) { onLine(level, signature, text); });
}

void LogRouter::beginCall() {
    std::lock_guard<std::mutex> lock(mutex_);
    lastErrorLine_.clear();
}

std::string LogRouter::lastErrorLine() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lastErrorLine_;
}

void LogRouter::setProgress(Progress* progress) {
    std::lock_guard<std::mutex> lock(mutex_);
    progress_ = progress;
}

void LogRouter::onLine(int level, const char* signature, const std::string& text) {
    Progress* progress = nullptr;
    std::string state;
    std::string created;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (level == 0) {
            lastErrorLine_ = text.substr(0, text.find('\n'));
        }
        if (StartsWith(text, "Current  status : [") || StartsWith(text, "Current status : [")) {
            Bracketed(text, "status", state);
            if (!state.empty()) InFlight::NoteState(state);
        } else if (StartsWith(text, "Waiting for ") && text.find("to be deleted") != std::string::npos) {
            state = text.substr(12);
        } else if (StartsWith(text, "Encountered a retryable error")) {
            std::string seconds;
            state = Bracketed(text, "after", seconds) ? "throttled, retrying in " + seconds + " s" : "retrying";
        } else if (CreatedId(text, created)) {
            InFlight::Track(created);
        }
        progress = progress_;

        if (level <= printLevel_) {
            // A live progress line is cleared first so the log line starts clean.
            const char* clear = progress_ != nullptr && ::isatty(STDERR_FILENO) == 1 ? "\r\033[K" : "";
            const std::string tag = level == 0 ? std::string("error") : "debug" + std::to_string(level);
            std::fprintf(stderr, "%s[%s] %s: %s\n", clear, tag.c_str(), ShortSignature(signature).c_str(),
                         text.c_str());
        }
    }
    if (progress != nullptr && !state.empty()) progress->state(state);
}

}  // namespace ocw
