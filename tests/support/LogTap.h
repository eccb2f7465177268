#pragma once
// The log tap: while OCW_TEST_LOG_DIR names a directory, a test program that
// starts the tap (tests/secrets/ links the starter into the end-to-end and
// transport programs) writes every line the library logs, at its most verbose
// level, to "<dir>/<program>-<pid>.log", and its fixtures write every secret
// they used beside it (TestSecrets.h). A LogCapture or LogTrigger keeps the
// tap running while it holds the sink. ctest runs the tapped programs with
// the variable set, then "secrets.NoSecretInAnyLog" searches the logs for the
// secrets.
#include "platform/DebugLog.h"

namespace ocwtest {

// Every level the library logs at.
constexpr int kLogTapLevel = 99;

// Opens the log file, installs the tap as the sink and raises the threshold.
// Does nothing while OCW_TEST_LOG_DIR is unset.
void StartLogTap();
bool LogTapOn();

// `sink` with the tap beside it: the tap gets every line, `sink` the lines up
// to `level` (all of them when level < 0).
OracleCloudSDKWrapper::LogSink WithLogTap(OracleCloudSDKWrapper::LogSink sink, int level);
// The threshold to set for a sink of `level`, and the one to return to when
// that sink is removed.
int ThresholdWithLogTap(int level);
void RestoreThresholdWithLogTap();

}  // namespace ocwtest
