#pragma once
// Runs the ocw program as a child process and collects what it printed and
// how it ended. The child gets a clean environment: HOME points at an empty
// directory (no ~/.oci/config of the machine is read) and neither OCW_CONFIG
// nor OCI_CLI_* are set unless the test adds them.
#include <map>
#include <string>
#include <vector>

#include "TempDir.h"

namespace ocwtest {

struct CliResult {
    int exitCode = -1;   // -1 when the child did not end on its own in time
    std::string out;
    std::string err;
};

struct CliRunOptions {
    int timeoutMs = 60000;
    int interruptAfterMs = -1;                 // >= 0: send SIGINT after this long
    std::map<std::string, std::string> env;    // added to the clean environment
    bool readerGone = false;                   // stdout is a pipe nobody reads (as "| head" after its line)
};

CliResult RunProgram(const std::string& program, const std::vector<std::string>& args,
                     const CliRunOptions& options = {});

// Path of the ocw binary under test.
std::string OcwPath();

}  // namespace ocwtest
