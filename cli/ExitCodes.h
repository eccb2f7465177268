#pragma once
// Exit codes of ocw, and the error that ends a command with one of them.
// Scripts rely on these values; docs/cli.md lists them.
#include <stdexcept>
#include <string>

namespace ocw {

enum ExitCode {
    kExitOk = 0,
    kExitFailure = 1,      // the cloud or the library refused or failed the request
    kExitUsage = 2,        // bad command line, missing or unreadable input file
    kExitAuth = 3,         // OCI config, profile or key unusable, or the signature refused (401)
    kExitNotFound = 4,     // the named resource does not exist (404, or absent from a listing)
    kExitInterrupted = 130 // Ctrl-C (SIGINT) or SIGTERM during a command
};

// Thrown by a command to end with a message on stderr and a distinct exit code.
class CliError : public std::runtime_error {
public:
    CliError(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

}  // namespace ocw
