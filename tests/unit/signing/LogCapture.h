#pragma once
// Collects every log line at the highest verbosity while alive, so tests can
// check both that a failure is reported and that no secret is ever written.
#include <mutex>
#include <string>
#include <vector>

#include "platform/DebugLog.h"

namespace ocw_test {

class LogCapture {
public:
    LogCapture()
    {
        m_oldThreshold = OracleCloudSDKWrapper::DebugLog::GetThreshold();
        OracleCloudSDKWrapper::DebugLog::SetThreshold(99);
        m_oldSink = OracleCloudSDKWrapper::DebugLog::SetSink([this](const OracleCloudSDKWrapper::LogRecord& r) {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_lines.push_back(std::to_string(r.level) + " " + r.signature + " " + r.text);
        });
    }
    ~LogCapture()
    {
        OracleCloudSDKWrapper::DebugLog::SetSink(m_oldSink);
        OracleCloudSDKWrapper::DebugLog::SetThreshold(m_oldThreshold);
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }
    std::string all() const
    {
        std::string joined;
        for (const auto& l : lines()) {
            joined += l;
            joined += '\n';
        }
        return joined;
    }
    bool contains(const std::string& text) const { return all().find(text) != std::string::npos; }
    void clear()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.clear();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
    OracleCloudSDKWrapper::LogSink m_oldSink;
    int m_oldThreshold = 0;
};

}  // namespace ocw_test
