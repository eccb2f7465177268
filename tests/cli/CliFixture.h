#pragma once
// ocw run as a child process against the program's shared emulator (a clean
// demo cloud per test), with the emulator's throw-away OCI config and agent ini.
#include <gtest/gtest.h>

#include <boost/json.hpp>

#include <string>
#include <vector>

#include "CliRunner.h"
#include "EmulatorFixture.h"
#include "TempDir.h"

namespace ocwtest {

class CliTest : public EmulatorTest {
protected:
    // ocw with --config-file and --ini of the shared emulator in front of args.
    CliResult Ocw(const std::vector<std::string>& args, const CliRunOptions& options = {});
    // ocw with the emulator's Classic profile (--config-file) and --ini in front of args.
    CliResult OcwClassic(const std::vector<std::string>& args, const CliRunOptions& options = {});
    // ocw exactly as given.
    CliResult OcwRaw(const std::vector<std::string>& args, const CliRunOptions& options = {});

    // stdout parsed as JSON; fails the test (and returns null) when it is not.
    static boost::json::value Json(const CliResult& result);
    // The "id" of the element of a JSON list whose member key equals value.
    static std::string IdOf(const boost::json::value& list, const std::string& key, const std::string& value);
    // The string member `key` of a JSON object, or of the element of a JSON
    // list whose member match equals value ("" when there is none).
    static std::string Text(const boost::json::value& v, const std::string& key);
    static std::string TextOf(const boost::json::value& list, const std::string& match, const std::string& value,
                              const std::string& key);

    TempDir dir_;
};

// Options of an emulator of its own, for a test that needs other timings or
// an encrypted key, with a state directory the returned TempDir removes.
ocwemu::EmulatorOptions OwnEmulatorOptions(TempDir& stateDir, long long provisionMs = kProvisionMs);

// Seeded names of the demo tenancy.
extern const char* const kSeededInstances[4];

}  // namespace ocwtest
