// Starts the log tap before the first test of a program that links this file
// (it does nothing unless OCW_TEST_LOG_DIR is set; see LogTap.h).
#include <gtest/gtest.h>

#include "LogTap.h"

namespace {

class LogTapEnvironment : public ::testing::Environment {
public:
    void SetUp() override { ocwtest::StartLogTap(); }
};

const ::testing::Environment* const kLogTap = ::testing::AddGlobalTestEnvironment(new LogTapEnvironment);

}  // namespace
