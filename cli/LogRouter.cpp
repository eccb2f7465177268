#include "LogRouter.h"

#include <boost/json.hpp>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

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

void ReadErrorBody(const std::string& line, CallFailure& failure) {
    const size_t newline = line.find('\n');
    if (newline == std::string::npos) return;
    boost::system::error_code ec;
    boost::json::value body = boost::json::parse(line.substr(newline + 1), ec);
    if (ec || !body.is_object()) return;
    const boost::json::object& object = body.get_object();
    if (const boost::json::value* code = object.if_contains("code")) {
        if (code->is_string()) failure.serviceCode = std::string(code->get_string());
    }
    if (const boost::json::value* message = object.if_contains("message")) {
        if (message->is_string()) failure.serviceMessage = std::string(message->get_string());
    }
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
    // Level 2 carries the response bodies that explain a failure; ocw needs
    // them whatever it prints.
    OracleCloudSDKWrapper::COracleCloudWrapper::SetLogLevel(printLevel_ > 2 ? printLevel_ : 2);
    OracleCloudSDKWrapper::COracleCloudWrapper::SetLogSink(
        [this](int level, const char* signature, const std::string& text) { onLine(level, signature, text); });
}

void LogRouter::beginCall() {
    std::lock_guard<std::mutex> lock(mutex_);
    failure_ = CallFailure();
    awaitingErrorBody_ = false;
}

CallFailure LogRouter::failure() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return failure_;
}

void LogRouter::setProgress(Progress* progress) {
    std::lock_guard<std::mutex> lock(mutex_);
    progress_ = progress;
}

void LogRouter::onLine(int level, const char* signature, const std::string& text) {
    Progress* progress = nullptr;
    std::string state;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (level == 0) {
            failure_.lastErrorLine = text.substr(0, text.find('\n'));
        }
        const size_t transport = text.find("] failed: ");
        if (level == 0 && transport != std::string::npos) {
            failure_.transportError = text.substr(transport + 10, text.find('\n') - transport - 10);
        }
        const size_t answered = text.find("answered with status ");
        if (level == 0 && answered != std::string::npos) {
            failure_.httpStatus = std::atoi(text.c_str() + answered + 21);
        }
        if (StartsWith(text, "Error: API failed.")) {
            failure_.requestFailed = true;
            awaitingErrorBody_ = true;
        } else if (StartsWith(text, "Response from [")) {
            if (awaitingErrorBody_) ReadErrorBody(text, failure_);
            awaitingErrorBody_ = false;
        } else if (StartsWith(text, "Failed to generate authorization header")) {
            failure_.signingFailed = true;
        }

        if (StartsWith(text, "Current  status : [") || StartsWith(text, "Current status : [")) {
            Bracketed(text, "status", state);
        } else if (StartsWith(text, "Waiting for ") && text.find("to be deleted") != std::string::npos) {
            state = text.substr(12);
        } else if (StartsWith(text, "Encountered a retryable error")) {
            std::string seconds;
            state = Bracketed(text, "after", seconds) ? "throttled, retrying in " + seconds + " s" : "retrying";
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
