// The wait arithmetic of the OCI operations on a scripted clock: when polls
// happen, when a wait gives up, which states end it, and what the bulk detach
// wait keeps polling. The states come from a scripted in-memory connection (the
// wire itself is covered by the end-to-end tests); time is a counter advanced by
// the wait's own pauses, so nothing here sleeps.
#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <tuple>

#include "LogCapture.h"
#include "LoopbackTlsServer.h"
#include "oci/OracleCloudInfrastructureOperations.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "transport/OracleCloudBaseConnection.h"

using namespace OracleCloudSDKWrapper;

namespace {

struct Answer {
    long code;
    std::string body;
};

// Answers GETs from per-path scripts; the last answer of a script repeats.
class ScriptedConnection : public COracleCloudBaseConnection {
public:
    explicit ScriptedConnection(COracleCloudParser* parser) : COracleCloudBaseConnection(parser) {}

    void script(const std::string& path, std::deque<Answer> answers) { m_scripts[path] = std::move(answers); }

    bool sendReq(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response, bool f1,
                 bool f2) override {
        return _sendReqFull(type, url, body, response, f1, f2);
    }
    bool _sendReqFull(HTTP_REQ_TYPE, const std::string& url, const std::string&, std::string& response, bool,
                      bool) override {
        reads.push_back(url);
        auto it = m_scripts.find(url);
        if (it == m_scripts.end() || it->second.empty()) {
            m_code = 0;
            response.clear();
            return false;
        }
        Answer a = it->second.front();
        if (it->second.size() > 1) it->second.pop_front();
        m_code = a.code;
        response = a.body;
        return a.code >= 200 && a.code < 300;
    }
    void LogResponse(const std::string&, const std::string&) override {}
    long getLastHTTPErrorCode() override { return m_code; }

    std::vector<std::string> reads;

private:
    std::map<std::string, std::deque<Answer>> m_scripts;
    long m_code = 0;
};

// The clock moves only when the wait pauses.
class ClockedOperations : public COracleCloudInfrastructureOperations {
public:
    using COracleCloudInfrastructureOperations::COracleCloudInfrastructureOperations;
    std::vector<uint64_t> pollTimes;  // clock value at each pause's end

protected:
    uint64_t monotonicSeconds() override { return m_now; }
    void pauseBetweenPolls(uint32_t seconds) override {
        m_now += seconds;
        pollTimes.push_back(m_now);
    }

private:
    uint64_t m_now = 1000;
};

Answer Instance(const std::string& state) {
    return {200, R"({"id":"ocid1.instance.oc1..i","displayName":"vm","lifecycleState":")" + state + R"("})"};
}
Answer Attachment(const std::string& id, const std::string& state) {
    return {200, R"({"id":")" + id + R"(","attachmentType":"iscsi","lifecycleState":")" + state + R"("})"};
}

class OciStateWait : public ::testing::Test {
protected:
    void configure(const std::string& waitTime, const std::string& timeout) {
        m_ops.reset();
        m_connection.reset();
        m_config.reset();  // before the next one: each restores the file it replaced
        m_config.reset(new ocwtest::ScopedConfigFile(
            {{"VirtualServer", {{"nOCIOperationWaitTime", waitTime}, {"nOCIOperationTimeout", timeout}}}}));
        m_connection.reset(new ScriptedConnection(&m_parser));
        m_ops.reset(new ClockedOperations(m_connection.get(), &m_parser));
    }

    COracleCloudInfrastructureParser m_parser;
    std::unique_ptr<ocwtest::ScopedConfigFile> m_config;
    std::unique_ptr<ScriptedConnection> m_connection;
    std::unique_ptr<ClockedOperations> m_ops;
};

const std::string kPath = "/20160918/instances/ocid1.instance.oc1..i";

}  // namespace

TEST_F(OciStateWait, TunablesComeFromConfigurationAndOutOfRangeValuesKeepTheDefaults) {
    const std::tuple<const char*, const char*, unsigned, unsigned> cases[] = {
        {"5", "12", 5, 12}, {"", "", 30, 2400}, {"-1", "99999999999", 30, 2400}};
    for (const auto& c : cases) {
        configure(std::get<0>(c), std::get<1>(c));
        EXPECT_EQ(m_ops->getOperationWaitTime(), std::get<2>(c)) << std::get<0>(c);
        EXPECT_EQ(m_ops->getOperationTimeout(), std::get<3>(c)) << std::get<1>(c);
    }
    EXPECT_FALSE(m_ops->SetOperationTimeout(5)) << "this backend takes its timeout from configuration only";
    EXPECT_EQ(m_ops->getOperationTimeout(), 2400u);
}

TEST_F(OciStateWait, PollsEveryIntervalAndFailsOnThePollPastTheTimeout) {
    configure("5", "12");
    m_connection->script(kPath, {Instance("STOPPING")});
    ocwtest::LogCapture log;
    SVMInfoLib vm;
    EXPECT_FALSE(m_ops->WaitForObjectToReachEndState(kPath, vm, "STOPPED", ""));
    EXPECT_EQ(m_ops->pollTimes, (std::vector<uint64_t>{1005, 1010, 1015}));
    EXPECT_EQ(m_connection->reads.size(), 3u);
    EXPECT_EQ(log.matching("Current  status : [STOPPING], waiting for status to change").size(), 3u);
    EXPECT_EQ(m_ops->GetLastError(), "Timeout waiting for status end state for  [ocid1.instance.oc1..i]");
    auto timeout = log.matching("Timeout waiting for status end state for  [ocid1.instance.oc1..i]");
    ASSERT_EQ(timeout.size(), 1u);
    EXPECT_EQ(timeout[0].level, 0);
    EXPECT_NE(timeout[0].signature.find("COracleCloudInfrastructureOperations::WaitForObjectToReachEndState"),
              std::string::npos);
    EXPECT_TRUE(vm.state.empty());
}

TEST_F(OciStateWait, ReachingTheEndStateCopiesOnlyTheState) {
    configure("1", "60");
    m_connection->script(kPath, {Instance("STARTING"), Instance("STARTING"), Instance("RUNNING")});
    SVMInfoLib vm;
    vm.vmName = "mine";
    EXPECT_TRUE(m_ops->WaitForObjectToReachEndState(kPath, vm, "RUNNING", "TERMINATED"));
    EXPECT_EQ(m_connection->reads.size(), 3u);
    EXPECT_EQ(vm.state, "RUNNING");
    EXPECT_EQ(vm.status, "RUNNING");
    EXPECT_EQ(vm.vmName, "mine");
    EXPECT_TRUE(vm.guid.empty());
}

TEST_F(OciStateWait, InvalidStateFailsAtOnceBeforeTheTimeout) {
    configure("1", "3600");
    m_connection->script(kPath, {Instance("PROVISIONING"), Instance("TERMINATED")});
    ocwtest::LogCapture log;
    SVMInfoLib vm;
    EXPECT_FALSE(m_ops->WaitForObjectToReachEndState(kPath, vm, "RUNNING", "TERMINATED"));
    EXPECT_EQ(m_connection->reads.size(), 2u);
    EXPECT_EQ(log.errors(), std::vector<std::string>{"Resource [ocid1.instance.oc1..i] went into invalid "
                                                      "state[TERMINATED], while waiting for status to reach end state"});
}

TEST_F(OciStateWait, FailedPollStopsTheWaitWithTheServiceMessage) {
    configure("0", "3600");
    m_connection->script(kPath, {Instance("STOPPING"), {404, R"({"code":"NotAuthorizedOrNotFound","message":"gone"})"}});
    SVMInfoLib vm;
    EXPECT_FALSE(m_ops->WaitForObjectToReachEndState(kPath, vm, "STOPPED", ""));
    EXPECT_EQ(m_ops->GetLastError(), "gone");
}

TEST_F(OciStateWait, BulkDetachKeepsPollingOnlyWhatIsStillAttached) {
    configure("2", "3600");
    const std::string a = "/20160918/volumeAttachments/a", b = "/20160918/volumeAttachments/b",
                      c = "/20160918/volumeAttachments/c";
    m_connection->script(a, {{404, R"({"code":"NotAuthorizedOrNotFound","message":"x"})"}});
    m_connection->script(b, {Attachment("b", "DETACHED")});
    m_connection->script(c, {Attachment("c", "ATTACHED"), Attachment("c", "DETACHING"), Attachment("c", "DETACHED")});
    EXPECT_TRUE(m_ops->AreAllAttachmentsDeleted({"a", "b", "c"}));
    EXPECT_EQ(m_connection->reads, (std::vector<std::string>{a, b, c, c, c}));
    EXPECT_EQ(m_ops->pollTimes.size(), 3u);
}

TEST_F(OciStateWait, BulkDetachChecksTheBudgetBeforeSleepingAndStopsOnOtherErrors) {
    configure("5", "12");
    const std::string c = "/20160918/volumeAttachments/c";
    m_connection->script(c, {Attachment("c", "ATTACHED")});
    EXPECT_FALSE(m_ops->AreAllAttachmentsDeleted({"c"}));
    // Checks at 1000, 1005, 1010, 1015: the last one is past the budget, so
    // three polls and no fourth pause.
    EXPECT_EQ(m_ops->pollTimes, (std::vector<uint64_t>{1005, 1010, 1015}));
    EXPECT_EQ(m_ops->GetLastError(), "Timeout waiting for all items to be deleted");

    configure("1", "3600");
    m_connection->script(c, {{500, R"({"code":"InternalServerError","message":"boom"})"}});
    EXPECT_FALSE(m_ops->AreAllAttachmentsDeleted({"c"}));
    EXPECT_EQ(m_ops->GetLastError(), "boom");
    EXPECT_TRUE(m_ops->AreAllAttachmentsDeleted({}));
}
