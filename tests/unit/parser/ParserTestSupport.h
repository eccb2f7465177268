#pragma once
#include <string>
#include <vector>

#include "platform/DebugLog.h"

namespace ParserTest {

// Collects every log line while alive and restores the previous sink after.
class LogCapture {
public:
    struct Line {
        int level;
        std::string signature;
        std::string text;
    };

    LogCapture() {
        m_previous = OracleCloudSDKWrapper::DebugLog::SetSink([this](const OracleCloudSDKWrapper::LogRecord& r) {
            m_lines.push_back(Line{r.level, r.signature ? r.signature : "", r.text});
        });
    }
    ~LogCapture() { OracleCloudSDKWrapper::DebugLog::SetSink(m_previous); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<Line>& lines() const { return m_lines; }
    size_t errorCount() const {
        size_t n = 0;
        for (const Line& l : m_lines) n += (l.level == 0) ? 1 : 0;
        return n;
    }

private:
    OracleCloudSDKWrapper::LogSink m_previous;
    std::vector<Line> m_lines;
};

}  // namespace ParserTest
