// The log: what a line carries to the sink, which lines the threshold lets
// through, and the default sink's format.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "LoopbackTlsServer.h"
#include "platform/DebugLog.h"

using namespace OracleCloudSDKWrapper;
using ocwtest::LogCapture;

namespace {

struct Worker : EventBase {
    void Run(int n) { OCW_LOG_ERROR(this, "failed [%d] of [%s]", n, "vol-1"); }
};

}  // namespace

TEST(DebugLog, LineCarriesFormattedTextCallerSignatureAndJobId) {
    LogCapture log(-1);
    EventBase::setDefaultJobId(7);
    Worker w;
    w.setJobId(42);
    w.Run(3);
    DebugLog plain;
    OCW_LOG_ERROR(&plain, "a");
    OCW_LOG_ERROR(nullptr, "%s|end", std::string(10000, 'z').c_str());
    EventBase::setDefaultJobId(0);
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].level, 0);
    EXPECT_EQ(lines[0].jobId, 42u);
    EXPECT_EQ(lines[0].text, "failed [3] of [vol-1]");
    EXPECT_NE(lines[0].signature.find("Worker::Run(int)"), std::string::npos) << lines[0].signature;
    EXPECT_EQ(lines[1].jobId, 7u) << "contexts without an id of their own take the default";
    EXPECT_EQ(lines[2].jobId, 7u);
    EXPECT_EQ(lines[2].text, std::string(10000, 'z') + "|end") << "long lines stay whole";
}

TEST(DebugLog, ConfiguredThresholdDropsHigherLevelsUntilAnExplicitOneOverridesIt) {
    LogCapture log(-1);
    DebugLog ctx;
    {
        ocwtest::ScopedConfigFile cfg("[Base]\nnLogLevel=2\n");
        OCW_LOG_DEBUG(&ctx, "level one");
        OCW_LOG_LVL(2, &ctx, "level two");
        OCW_LOG_LVL(3, &ctx, "level three");
        DebugLog::SetThreshold(7);
        OCW_LOG_LVL(7, &ctx, "signing string");
        DebugLog::ResetThreshold();
        EXPECT_EQ(DebugLog::GetThreshold(), 2);
    }
    // Without the file the threshold is 0 again: errors only.
    OCW_LOG_DEBUG(&ctx, "dropped");
    OCW_LOG_ERROR(&ctx, "kept");
    std::vector<std::string> texts;
    for (const auto& line : log.lines()) texts.push_back(line.text);
    EXPECT_EQ(texts, (std::vector<std::string>{"level one", "level two", "signing string", "kept"}));
}

TEST(DebugLog, DefaultSinkWritesSignaturePrefixedLinesToStderr) {
    DebugLog::SetSink(nullptr);
    testing::internal::CaptureStderr();
    DebugLog::Error(nullptr, "bool X::Y(int)", "value [%s] %d%%", "v", 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "bool X::Y(int): value [v] 5%\n");
}

TEST(DebugLog, AcceptsLinesFromManyThreads) {
    LogCapture log;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            EventBase ctx;
            ctx.setJobId(static_cast<unsigned long>(t));
            for (int i = 0; i < 250; ++i) DebugLog::Error(&ctx, "sig", "t%d i%d", t, i);
        });
    for (auto& th : threads) th.join();
    EXPECT_EQ(log.lines().size(), 1000u);
}
