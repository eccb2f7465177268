#pragma once
// Exit codes of ocw, what ocw knows about a failure, and the error that ends
// a command with both. Scripts rely on the codes; docs/cli.md lists them.
#include <stdexcept>
#include <string>

#include "oraclecloud/OracleCloudMessageRecords.h"

namespace ocw {

enum ExitCode {
    kExitOk = 0,
    kExitFailure = 1,      // the cloud or the library refused or failed the request
    kExitUsage = 2,        // bad command line, missing or unreadable input file
    kExitAuth = 3,         // OCI config, profile or key unusable, or the signature refused (401)
    kExitNotFound = 4,     // the named resource does not exist (404, or absent from a listing)
    kExitInterrupted = 130 // Ctrl-C (SIGINT) or SIGTERM during a command
};

// A resource the command created or changed and was waiting on.
struct ResourceInFlight {
    std::string id;         // its OCID
    std::string lastState;  // the last lifecycle state seen; empty when none was read
};

// Everything ocw says about a failed or interrupted command.
struct FailureReport {
    ExitCode code = kExitFailure;
    std::string message;  // "<what was attempted>: <explanation>"
    // The failed request behind it (the facade's failure record); an empty
    // `request` means no request failed.
    OracleCloudSDKWrapper::SOracleCloudFailureInfoLib request;
    ResourceInFlight resource;
};

// Thrown by a command to end with a message on stderr and a distinct exit code.
class CliError : public std::runtime_error {
public:
    CliError(ExitCode code, const std::string& message) : CliError(FailureReport{code, message, {}, {}}) {}
    explicit CliError(FailureReport report) : std::runtime_error(report.message), report_(std::move(report)) {}
    ExitCode code() const { return report_.code; }
    const FailureReport& report() const { return report_; }

private:
    FailureReport report_;
};

}  // namespace ocw
