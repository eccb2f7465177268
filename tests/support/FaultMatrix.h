#pragma once
// Shared by the fault matrices of both clouds (tests/e2e/FaultMatrix*Test.cpp):
// what a caller can learn about a failure, whether it names the cause, the
// admin body of a fault rule, and one line per cell for the test's output.
#include <string>

#include "oraclecloud/OracleCloudWrapper.h"

namespace ocwtest {

// The last error and every member of the failure record, in one text.
std::string WhatTheCallerLearns(const OracleCloudSDKWrapper::COracleCloudWrapper& facade);
// True when `learned` holds (without regard to case) any of the '|'-separated
// words of `causes`.
bool NamesCause(const std::string& learned, const std::string& causes);
// {"method": ..., "pathPrefix": ..., <rule members>} for POST /_emulator/faults.
std::string FaultRuleJson(const std::string& method, const std::string& pathPrefix, const std::string& ruleMembers);
// Prints "[ cell ] <fault> <call> <result> <seconds> <what was learned>".
void PrintCell(const std::string& fault, const std::string& call, bool ok, double seconds, bool atConnect,
               const std::string& learned);

}  // namespace ocwtest
