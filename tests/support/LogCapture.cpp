#include "LogCapture.h"

#include <mutex>

#include "LogTap.h"
#include "platform/DebugLog.h"

namespace ocwtest {

using OracleCloudSDKWrapper::DebugLog;
using OracleCloudSDKWrapper::LogRecord;
using OracleCloudSDKWrapper::LogSink;

namespace {

// Installs `sink` at `level` (beside the log tap when it runs); the returned
// function puts the previous sink back.
std::function<void()> InstallSink(LogSink sink, int level) {
    LogSink previous = DebugLog::SetSink(WithLogTap(std::move(sink), level));
    if (level >= 0) DebugLog::SetThreshold(ThresholdWithLogTap(level));
    return [previous] {
        DebugLog::SetSink(previous);
        RestoreThresholdWithLogTap();
    };
}

}  // namespace

struct LogCapture::State {
    mutable std::mutex mutex;
    std::vector<LogLine> lines;
};

LogCapture::LogCapture(int level) : state_(std::make_shared<State>()) {
    std::shared_ptr<State> state = state_;
    restore_ = InstallSink(
        [state](const LogRecord& r) {
            std::lock_guard<std::mutex> lock(state->mutex);
            state->lines.push_back(LogLine{r.level, r.jobId, r.signature ? r.signature : "", r.text});
        },
        level);
}

LogCapture::~LogCapture() { restore_(); }

std::vector<LogLine> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->lines;
}

std::vector<LogLine> LogCapture::matching(const std::string& needle) const {
    std::vector<LogLine> out;
    for (LogLine& line : lines()) {
        if (line.text.find(needle) != std::string::npos) out.push_back(std::move(line));
    }
    return out;
}

std::vector<std::string> LogCapture::errors() const {
    std::vector<std::string> out;
    for (LogLine& line : lines()) {
        if (line.level == 0) out.push_back(std::move(line.text));
    }
    return out;
}

std::string LogCapture::all() const {
    std::string out;
    for (const LogLine& line : lines()) out += std::to_string(line.level) + " " + line.signature + " " + line.text + "\n";
    return out;
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> lock(state_->mutex);
    state_->lines.clear();
}

LogTrigger::LogTrigger(const std::string& needle, std::function<void()> action, int level)
    : fired_(std::make_shared<bool>(false)) {
    std::shared_ptr<bool> fired = fired_;
    restore_ = InstallSink(
        [needle, action, fired](const LogRecord& r) {
            if (!*fired && r.text.find(needle) != std::string::npos) {
                *fired = true;
                action();
            }
        },
        level);
}

LogTrigger::~LogTrigger() { restore_(); }

}  // namespace ocwtest
