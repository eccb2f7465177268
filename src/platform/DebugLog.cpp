#include "platform/DebugLog.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include "platform/PlatformConfig.h"

namespace OracleCloudSDKWrapper {
namespace {

// A threshold set by SetThreshold wins; otherwise the configured one is used,
// re-read whenever the configuration has been reloaded since.
constexpr int kNoOverride = -1000;
std::atomic<int> g_override{kNoOverride};
std::atomic<int> g_configured{0};
std::atomic<unsigned long> g_configGeneration{0};
std::atomic<bool> g_configRead{false};

void DefaultSink(const LogRecord& rec) {
    std::string line;
    line.reserve(rec.text.size() + 128);
    line += rec.signature ? rec.signature : "";
    line += ": ";
    line += rec.text;
    if (line.empty() || line.back() != '\n') line += '\n';
    // One write per line keeps lines of concurrent threads whole.
    std::fwrite(line.data(), 1, line.size(), stderr);
}

struct SinkHolder {
    std::mutex mutex;
    std::shared_ptr<const LogSink> sink;  // null = default sink
};

SinkHolder& Sinks() {
    static SinkHolder holder;
    return holder;
}

int ConfiguredThreshold() {
    unsigned long gen = PlatformConfig::generation();
    if (!g_configRead.load(std::memory_order_acquire) || gen != g_configGeneration.load(std::memory_order_relaxed)) {
        long long level = PlatformConfig::getNumber("Base", "nLogLevel", 0);
        if (level < 0) level = 0;
        if (level > 1000) level = 1000;
        g_configured.store(static_cast<int>(level), std::memory_order_relaxed);
        g_configGeneration.store(gen, std::memory_order_relaxed);
        g_configRead.store(true, std::memory_order_release);
    }
    return g_configured.load(std::memory_order_relaxed);
}

void Emit(int level, const EventBase* ctx, const char* signature, const char* fmt, va_list args) {
    std::string text;
    if (fmt) {
        va_list copy;
        va_copy(copy, args);
        int needed = std::vsnprintf(nullptr, 0, fmt, copy);
        va_end(copy);
        if (needed > 0) {
            text.resize(static_cast<size_t>(needed) + 1);
            std::vsnprintf(&text[0], text.size(), fmt, args);
            text.resize(static_cast<size_t>(needed));
        }
    }
    std::shared_ptr<const LogSink> sink;
    {
        SinkHolder& h = Sinks();
        std::lock_guard<std::mutex> lock(h.mutex);
        sink = h.sink;
    }
    LogRecord rec{level, DebugLog::getJobId(ctx), signature ? signature : "", text};
    // The sink runs outside the lock, so a sink may itself log or swap sinks.
    if (sink && *sink)
        (*sink)(rec);
    else
        DefaultSink(rec);
}

}  // namespace

void DebugLog::Error(const EventBase* ctx, const char* signature, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    Emit(0, ctx, signature, fmt, args);
    va_end(args);
}

void DebugLog::Debug(const EventBase* ctx, const char* signature, const char* fmt, ...) {
    if (!IsEnabled(1)) return;
    va_list args;
    va_start(args, fmt);
    Emit(1, ctx, signature, fmt, args);
    va_end(args);
}

void DebugLog::DebugLvl(int level, const EventBase* ctx, const char* signature, const char* fmt, ...) {
    if (!IsEnabled(level)) return;
    va_list args;
    va_start(args, fmt);
    Emit(level < 0 ? 0 : level, ctx, signature, fmt, args);
    va_end(args);
}

void DebugLog::SetThreshold(int level) {
    g_override.store(level < 0 ? 0 : level, std::memory_order_relaxed);
}

void DebugLog::ResetThreshold() {
    g_override.store(kNoOverride, std::memory_order_relaxed);
}

int DebugLog::GetThreshold() {
    int o = g_override.load(std::memory_order_relaxed);
    return o != kNoOverride ? o : ConfiguredThreshold();
}

bool DebugLog::IsEnabled(int level) {
    return level <= 0 || level <= GetThreshold();
}

LogSink DebugLog::SetSink(LogSink sink) {
    auto next = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
    SinkHolder& h = Sinks();
    std::shared_ptr<const LogSink> prev;
    {
        std::lock_guard<std::mutex> lock(h.mutex);
        prev = std::move(h.sink);
        h.sink = std::move(next);
    }
    return prev ? *prev : LogSink();
}

unsigned long DebugLog::getJobId(const EventBase* ctx) {
    if (ctx) return ctx->getJobId();
    return EventBase().getJobId();
}

}  // namespace OracleCloudSDKWrapper
