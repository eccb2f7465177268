#pragma once
// Shared by the fuzz targets. Log lines are kept in memory instead of going to
// stderr (at fuzzing speed the default sink would drown the fuzzer's own
// output, and the targets want to inspect what was logged), and a failed
// check aborts, which libFuzzer records as a crash together with the input.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/DebugLog.h"

namespace ocwfuzz {

// Lines logged since the last ResetLog(), message text only (no prefix).
inline std::vector<std::string>& LoggedLines() {
    static std::vector<std::string> lines;
    return lines;
}

// Installs the capturing sink on first use and empties the capture.
inline void ResetLog(int threshold = 0) {
    static const bool installed = [] {
        OracleCloudSDKWrapper::DebugLog::SetSink(
            [](const OracleCloudSDKWrapper::LogRecord& record) { LoggedLines().push_back(record.text); });
        return true;
    }();
    (void)installed;
    OracleCloudSDKWrapper::DebugLog::SetThreshold(threshold);
    LoggedLines().clear();
}

// Printable form of a text for a failure message: control bytes escaped,
// long texts cut.
inline std::string Show(const std::string& text) {
    std::string out;
    for (unsigned char c : text) {
        if (out.size() > 400) {
            out += "...";
            break;
        }
        if (c >= 0x20 && c < 0x7f && c != '\\') {
            out += static_cast<char>(c);
        } else {
            char buf[8];
            std::snprintf(buf, sizeof(buf), "\\x%02x", c);
            out += buf;
        }
    }
    return out;
}

[[noreturn]] inline void Fail(const char* file, int line, const char* condition, const std::string& detail) {
    std::fprintf(stderr, "%s:%d: fuzz check failed: %s\n  %s\n", file, line, condition, detail.c_str());
    std::fflush(stderr);
    std::abort();
}

}  // namespace ocwfuzz

// Aborts with the condition, the place and `detail` (a std::string) when
// `condition` is false.
#define OCW_FUZZ_CHECK(condition, detail)                                  \
    do {                                                                   \
        if (!(condition)) ::ocwfuzz::Fail(__FILE__, __LINE__, #condition, (detail)); \
    } while (0)
