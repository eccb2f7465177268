#pragma once
// One in-process emulator per test program (each ctest runs one test in its
// own process, so tests never see each other's resources), and helpers to run
// ocw against it with the emulator's throw-away OCI config and agent ini.
#include <gtest/gtest.h>

#include <boost/json.hpp>

#include <memory>
#include <string>
#include <vector>

#include "CliRunner.h"
#include "Emulator.h"

namespace ocwtest {

class CliTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;

    static ocwemu::Emulator& Emu() { return *emulator_; }

    // ocw with --config-file and --ini of the emulator in front of args.
    CliResult Ocw(const std::vector<std::string>& args, const CliRunOptions& options = {});
    // ocw exactly as given.
    CliResult OcwRaw(const std::vector<std::string>& args, const CliRunOptions& options = {});

    // stdout parsed as JSON; fails the test (and returns null) when it is not.
    static boost::json::value Json(const CliResult& result);
    // The "id" of the element of a JSON list whose member key equals value.
    static std::string IdOf(const boost::json::value& list, const std::string& key, const std::string& value);

    // Number of requests the emulator has received so far.
    static size_t RequestCount();

    TempDir dir_;

private:
    static std::unique_ptr<ocwemu::Emulator> emulator_;
    static std::unique_ptr<TempDir> stateDir_;
};

// Emulator options for tests: quick transitions and a state directory that
// the returned TempDir removes (the emulator keeps a directory it was given).
ocwemu::EmulatorOptions TestEmulatorOptions(TempDir& stateDir, long long provisionMs = 100);

// Seeded names of the demo tenancy.
extern const char* const kSeededInstances[4];

}  // namespace ocwtest
