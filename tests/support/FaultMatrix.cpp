#include "FaultMatrix.h"

#include <cctype>
#include <cstdio>

#include <gtest/gtest.h>

namespace ocwtest {

namespace {
std::string Lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}
}  // namespace

const char* CallName(MatrixCall call) {
    switch (call) {
        case MatrixCall::List: return "list";
        case MatrixCall::Read: return "read";
        case MatrixCall::CreateAndWait: return "create+wait";
        case MatrixCall::DeleteAndWait: return "delete+wait";
    }
    return "?";
}

std::string WhatTheCallerLearns(const OracleCloudSDKWrapper::COracleCloudWrapper& facade) {
    const OracleCloudSDKWrapper::SOracleCloudFailureInfoLib f = facade.GetLastFailure();
    return facade.GetLastError() + " | " + f.message + " | " + f.request + " | status " + std::to_string(f.httpStatus) +
           " | " + f.serviceCode + " | " + f.serviceMessage + " | " + f.transferError;
}

bool NamesCause(const std::string& learned, const std::string& causes) {
    const std::string text = Lower(learned);
    for (size_t at = 0; at <= causes.size();) {
        size_t bar = causes.find('|', at);
        if (bar == std::string::npos) bar = causes.size();
        const std::string word = Lower(causes.substr(at, bar - at));
        if (!word.empty() && text.find(word) != std::string::npos) return true;
        at = bar + 1;
    }
    return false;
}

std::string FaultRuleJson(const std::string& method, const std::string& pathPrefix, const std::string& ruleMembers) {
    return "{\"method\":\"" + method + "\",\"pathPrefix\":\"" + pathPrefix + "\"," + ruleMembers + "}";
}

std::string CheckCellOutcome(const MatrixFault& fault, MatrixCall call, bool ok, double seconds, bool connected,
                             const OracleCloudSDKWrapper::COracleCloudWrapper& facade) {
    const std::string learned = WhatTheCallerLearns(facade);
    std::printf("[ cell ] %-34s %-12s %-5s %5.2fs  %s%s\n", fault.name, CallName(call), ok ? "true" : "false", seconds,
                connected ? "" : "(at Connect) ", ok ? "" : learned.substr(0, 150).c_str());
    EXPECT_EQ(ok, fault.succeeds) << learned;
    if (!fault.succeeds) {
        EXPECT_TRUE(NamesCause(learned, fault.cause)) << "the cause (" << fault.cause << ") is not named: " << learned;
    }
    return learned;
}

}  // namespace ocwtest
