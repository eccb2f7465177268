#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "LoopbackTlsServer.h"
#include "platform/DebugLog.h"

using namespace OracleCloudSDKWrapper;

namespace {

struct Captured {
    int level;
    unsigned long jobId;
    std::string signature;
    std::string text;
};

class DebugLogTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_prev = DebugLog::SetSink([this](const LogRecord& r) {
            std::lock_guard<std::mutex> lock(m_mutex);
            records.push_back({r.level, r.jobId, r.signature, r.text});
        });
    }
    void TearDown() override {
        DebugLog::SetSink(m_prev);
        DebugLog::ResetThreshold();
        EventBase::setDefaultJobId(0);
    }
    std::vector<Captured> records;
    std::mutex m_mutex;

private:
    LogSink m_prev;
};

struct Worker : EventBase {
    void Run(int n) { OCW_LOG_ERROR(this, "failed [%d] of [%s]", n, "vol-1"); }
};

TEST_F(DebugLogTest, DeliversFormattedTextWithCallerSignatureAndJobId) {
    Worker w;
    w.setJobId(42);
    w.Run(3);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].level, 0);
    EXPECT_EQ(records[0].jobId, 42u);
    EXPECT_EQ(records[0].text, "failed [3] of [vol-1]");
    EXPECT_NE(records[0].signature.find("Worker::Run(int)"), std::string::npos) << records[0].signature;
}

TEST_F(DebugLogTest, UsesDefaultJobIdForContextsWithoutOwnId) {
    EventBase::setDefaultJobId(7);
    DebugLog plain;
    EventBase tagged;
    tagged.setJobId(9);
    OCW_LOG_ERROR(&plain, "a");
    OCW_LOG_ERROR(&tagged, "b");
    OCW_LOG_ERROR(nullptr, "c");
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0].jobId, 7u);
    EXPECT_EQ(records[1].jobId, 9u);
    EXPECT_EQ(records[2].jobId, 7u);
}

TEST_F(DebugLogTest, DropsLinesAboveTheConfiguredThreshold) {
    DebugLog ctx;
    {
        ocwtest::ScopedConfigFile cfg("[Base]\nnLogLevel=2\n");
        EXPECT_EQ(DebugLog::GetThreshold(), 2);
        OCW_LOG_DEBUG(&ctx, "level one");
        OCW_LOG_LVL(2, &ctx, "level two");
        OCW_LOG_LVL(3, &ctx, "level three");
    }
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].level, 1);
    EXPECT_EQ(records[1].text, "level two");
    // Without the file the threshold is 0 again: errors only.
    EXPECT_EQ(DebugLog::GetThreshold(), 0);
    OCW_LOG_DEBUG(&ctx, "dropped");
    OCW_LOG_ERROR(&ctx, "kept");
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[2].text, "kept");
}

TEST_F(DebugLogTest, ExplicitThresholdOverridesConfigurationUntilReset) {
    ocwtest::ScopedConfigFile cfg("[Base]\nnLogLevel=1\n");
    DebugLog ctx;
    DebugLog::SetThreshold(7);
    EXPECT_TRUE(DebugLog::IsEnabled(7));
    OCW_LOG_LVL(7, &ctx, "signing string");
    DebugLog::SetThreshold(0);
    EXPECT_TRUE(DebugLog::IsEnabled(0)) << "errors are always delivered";
    EXPECT_FALSE(DebugLog::IsEnabled(1));
    DebugLog::ResetThreshold();
    EXPECT_EQ(DebugLog::GetThreshold(), 1);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].level, 7);
}

TEST_F(DebugLogTest, SetSinkReturnsPreviousSinkForChaining) {
    std::vector<std::string> second;
    LogSink first = DebugLog::SetSink([&](const LogRecord& r) { second.push_back(r.text); });
    ASSERT_TRUE(static_cast<bool>(first));
    OCW_LOG_ERROR(nullptr, "to second");
    DebugLog::SetSink(first);
    OCW_LOG_ERROR(nullptr, "to first");
    ASSERT_EQ(second.size(), 1u);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].text, "to first");
}

TEST_F(DebugLogTest, DefaultSinkWritesSignaturePrefixedLinesToStderr) {
    DebugLog::SetSink(nullptr);
    testing::internal::CaptureStderr();
    DebugLog::Error(nullptr, "bool X::Y(int)", "value [%s] %d%%", "v", 5);
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err, "bool X::Y(int): value [v] 5%\n");
}

TEST_F(DebugLogTest, KeepsLongLinesWhole) {
    std::string big(10000, 'z');
    OCW_LOG_ERROR(nullptr, "%s|end", big.c_str());
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].text, big + "|end");
}

TEST_F(DebugLogTest, AcceptsLinesFromManyThreads) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            EventBase ctx;
            ctx.setJobId(static_cast<unsigned long>(t));
            for (int i = 0; i < 250; ++i) DebugLog::Error(&ctx, "sig", "t%d i%d", t, i);
        });
    for (auto& th : threads) th.join();
    EXPECT_EQ(records.size(), 1000u);
}

}  // namespace
