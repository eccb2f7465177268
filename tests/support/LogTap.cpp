#include "LogTap.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <mutex>

#include "TestSecrets.h"

namespace ocwtest {

using OracleCloudSDKWrapper::DebugLog;
using OracleCloudSDKWrapper::LogRecord;
using OracleCloudSDKWrapper::LogSink;

namespace {

struct Tap {
    std::mutex mutex;
    std::FILE* file = nullptr;
};

Tap& TheTap() {
    static Tap tap;
    return tap;
}

void WriteToTap(const LogRecord& r) {
    Tap& tap = TheTap();
    std::lock_guard<std::mutex> lock(tap.mutex);
    if (tap.file == nullptr) return;
    std::fprintf(tap.file, "%d %s: %s\n", r.level, r.signature, r.text.c_str());
}

}  // namespace

void StartLogTap() {
    if (LogTapDir().empty() || LogTapOn()) return;
    ::mkdir(LogTapDir().c_str(), 0700);
    std::FILE* file = std::fopen(LogTapFile(".log").c_str(), "a");
    if (file == nullptr) {
        std::fprintf(stderr, "the log tap cannot write to %s\n", LogTapDir().c_str());
        std::exit(2);
    }
    {
        std::lock_guard<std::mutex> lock(TheTap().mutex);
        TheTap().file = file;
    }
    DebugLog::SetSink(WriteToTap);
    DebugLog::SetThreshold(kLogTapLevel);
}

bool LogTapOn() {
    std::lock_guard<std::mutex> lock(TheTap().mutex);
    return TheTap().file != nullptr;
}

LogSink WithLogTap(LogSink sink, int level) {
    if (!LogTapOn()) return sink;
    return [sink, level](const LogRecord& r) {
        WriteToTap(r);
        if (level < 0 || r.level <= level) sink(r);
    };
}

int ThresholdWithLogTap(int level) { return LogTapOn() ? std::max(level, kLogTapLevel) : level; }

void RestoreThresholdWithLogTap() {
    if (LogTapOn()) {
        DebugLog::SetThreshold(kLogTapLevel);
    } else {
        DebugLog::ResetThreshold();
    }
}

}  // namespace ocwtest
