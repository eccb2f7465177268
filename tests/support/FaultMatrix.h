#pragma once
// Shared by the fault matrices of both clouds (tests/e2e/FaultMatrix*Test.cpp):
// what a caller can learn about a failure, whether it names the cause, the
// admin body of a fault rule, and one line per cell for the test's output.
#include <map>
#include <string>

#include "oraclecloud/OracleCloudWrapper.h"

namespace ocwtest {

// The four kinds of call of a matrix row.
enum class MatrixCall { List, Read, CreateAndWait, DeleteAndWait };
const char* CallName(MatrixCall call);
constexpr MatrixCall kMatrixCalls[] = {MatrixCall::List, MatrixCall::Read, MatrixCall::CreateAndWait,
                                       MatrixCall::DeleteAndWait};

// A fault of a matrix: how it is set up, and how every call ends under it.
struct MatrixFault {
    const char* name;
    // Configuration entries of section VirtualServer (before the facade is built).
    std::map<std::string, std::string> config;
    // Emulator rule members without method and path (empty: no rule).
    const char* rule;
    // A body fault hits a read: a DELETE answer has no body to cut.
    bool bodyFault;
    bool succeeds;
    // Any of these words ('|' separated) in what the caller learns.
    const char* cause;
};

// The last error and every member of the failure record, in one text.
std::string WhatTheCallerLearns(const OracleCloudSDKWrapper::COracleCloudWrapper& facade);
// True when `learned` holds (without regard to case) any of the '|'-separated
// words of `causes`.
bool NamesCause(const std::string& learned, const std::string& causes);
// {"method": ..., "pathPrefix": ..., <rule members>} for POST /_emulator/faults.
std::string FaultRuleJson(const std::string& method, const std::string& pathPrefix, const std::string& ruleMembers);
// Prints the cell ("[ cell ] <fault> <call> <result> <seconds> <what was
// learned>") and checks its end: the result the fault calls for and, on
// false, the cause named. Returns what the caller learned.
std::string CheckCellOutcome(const MatrixFault& fault, MatrixCall call, bool ok, double seconds, bool connected,
                             const OracleCloudSDKWrapper::COracleCloudWrapper& facade);

}  // namespace ocwtest
