#pragma once
#include <functional>
#include <string>

#include "oraclecloud/Export.h"
#include "platform/EventBase.h"

namespace OracleCloudSDKWrapper {

// Log levels: Error is 0 and always delivered; Debug is 1; DebugLvl(n) is n.
// By convention 2 = URLs and responses, 4 = request lines, 7 = signing strings.
struct LogRecord {
    int level;                 // 0 for errors
    unsigned long jobId;       // from the context object
    const char* signature;     // __PRETTY_FUNCTION__ of the caller
    const std::string& text;   // the formatted message, no prefix
};
using LogSink = std::function<void(const LogRecord&)>;

// Every call names a context object and the caller's full signature, which the
// default sink puts in front of the line. Callers use the OCW_LOG_* macros so
// the signature is always the compiler's own.
class OCW_API DebugLog : public EventBase {
public:
    DebugLog() = default;

    static void Error(const EventBase* ctx, const char* signature, const char* fmt, ...)
        __attribute__((format(printf, 3, 4)));
    static void Debug(const EventBase* ctx, const char* signature, const char* fmt, ...)
        __attribute__((format(printf, 3, 4)));
    static void DebugLvl(int level, const EventBase* ctx, const char* signature, const char* fmt, ...)
        __attribute__((format(printf, 4, 5)));

    // Lines above the threshold are dropped before formatting. The default
    // threshold comes from "nLogLevel" of section "Base" (0 when absent).
    static void SetThreshold(int level);
    // Drops the SetThreshold override: the configured threshold applies again.
    static void ResetThreshold();
    static int GetThreshold();
    static bool IsEnabled(int level);

    // Replaces the sink (nullptr restores the default stderr sink). Returns the
    // previous one so tests and tools can chain or restore it.
    static LogSink SetSink(LogSink sink);

    static unsigned long getJobId(const EventBase* ctx);
};

}  // namespace OracleCloudSDKWrapper

#define OCW_LOG_ERROR(ctx, ...) ::OracleCloudSDKWrapper::DebugLog::Error((ctx), __PRETTY_FUNCTION__, __VA_ARGS__)
#define OCW_LOG_DEBUG(ctx, ...) ::OracleCloudSDKWrapper::DebugLog::Debug((ctx), __PRETTY_FUNCTION__, __VA_ARGS__)
#define OCW_LOG_LVL(lvl, ctx, ...) ::OracleCloudSDKWrapper::DebugLog::DebugLvl((lvl), (ctx), __PRETTY_FUNCTION__, __VA_ARGS__)
