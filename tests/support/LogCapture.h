#pragma once
// The library's log lines in memory, for tests that check what was reported
// (and that no secret was). While a LogCapture lives it is the log sink and the
// threshold is `level`; at its end the previous sink comes back and the
// configured threshold applies again. Lines arrive from any thread. While the
// log tap runs (LogTap.h) it keeps getting every line, and a capture still
// gets only the lines up to its level.
//
//   ocwtest::LogCapture log;            // every level
//   facade->DeleteVolume(id);
//   EXPECT_EQ(log.matching("Failed to sent delete volume request").size(), 1u);
//   EXPECT_EQ(log.all().find(secret), std::string::npos);
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ocwtest {

struct LogLine {
    int level;  // 0: error
    unsigned long jobId;
    std::string signature;
    std::string text;
};

class LogCapture {
public:
    // level < 0: the configured threshold stays in force.
    explicit LogCapture(int level = 99);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;
    // Lines whose text contains `needle`.
    std::vector<LogLine> matching(const std::string& needle) const;
    // Texts of the error lines (level 0), in order.
    std::vector<std::string> errors() const;
    // Every line as "<level> <signature> <text>\n": for "appears nowhere" checks.
    std::string all() const;
    void clear();

private:
    struct State;
    std::shared_ptr<State> state_;
    std::function<void()> restore_;
};

// Runs `action` once, the first time the library logs a line (up to `level`)
// containing `needle`, on the thread that logs it: the caller's. A way to
// change the cloud between two requests of one synchronous call (a fault after
// the first page of a list, ...). Restores the sink and threshold at its end.
class LogTrigger {
public:
    LogTrigger(const std::string& needle, std::function<void()> action, int level = 2);
    ~LogTrigger();
    LogTrigger(const LogTrigger&) = delete;
    LogTrigger& operator=(const LogTrigger&) = delete;
    bool fired() const { return *fired_; }

private:
    std::shared_ptr<bool> fired_;
    std::function<void()> restore_;
};

}  // namespace ocwtest
