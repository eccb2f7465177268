// ocw: the command-line tool over the library's public facade.
#include <CLI/CLI.hpp>

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <fstream>
#include <iostream>

#include "CommandDocs.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "Failure.h"
#include "Interrupt.h"
#include "LogRouter.h"
#include "Session.h"

#ifndef OCW_VERSION
#define OCW_VERSION "0.0.0"
#endif

namespace {

const char* kFooter =
    "Exit codes: 0 success, 1 failure, 2 usage error, 3 credentials refused or unusable,\n"
    "4 resource not found, 130 interrupted (Ctrl-C).\n"
    "Configuration: the OCI config file (--config-file, default ~/.oci/config) and the\n"
    "agent configuration (--ini, default $OCW_CONFIG). See docs/cli.md and man ocw.\n";

// A reader that went away (ocw ... | head -1) has all it wanted: that is
// not an error to report. The write end of a pipe without readers polls as
// an error.
bool StdoutReaderGone() {
    pollfd out{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&out, 1, 0) == 1 && (out.revents & POLLERR) != 0;
}

int Finish(int code) {
    std::cout.flush();
    if (!std::cout) return StdoutReaderGone() ? ocw::kExitOk : ocw::kExitFailure;
    return code;
}

// Errors before the options are parsed still honour --json.
bool JsonAsked(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--json") return true;
    }
    return false;
}

int UsageError(const std::string& message, bool json) {
    ocw::PrintFailure(std::cerr, ocw::FailureReport{ocw::kExitUsage, message, {}, {}}, json);
    return ocw::kExitUsage;
}

// The value of a global option before the command line is parsed
// ("--profile NAME" or "--profile=NAME"): the profile decides which cloud's
// commands there are.
std::string PeekOption(const std::vector<std::string>& args, const std::string& name) {
    std::string value;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == name && i + 1 < args.size()) value = args[i + 1];
        if (args[i].rfind(name + "=", 0) == 0) value = args[i].substr(name.size() + 1);
    }
    return value;
}

bool WriteFile(const std::string& path, const std::function<void(std::ostream&)>& write) {
    std::ofstream out(path, std::ios::trunc);
    write(out);
    out.close();
    return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
    // Writes to a closed pipe fail with EPIPE instead of killing ocw; see Finish.
    ::signal(SIGPIPE, SIG_IGN);
    ocw::Interrupt::Install();

    ocw::GlobalOptions options;
    const std::string version = std::string("ocw ") + OCW_VERSION + " (OracleCloudSDKWrapper library " +
                                OracleCloudSDKWrapper::COracleCloudWrapper::GetLibraryVersion() + ")";
    CLI::App app{"ocw - manage Oracle Cloud Infrastructure resources through the OracleCloudSDKWrapper library",
                 "ocw"};
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", version, "print the versions of ocw and of the library");
    app.add_option("--profile", options.profile, "profile of the config file (default DEFAULT or $OCI_CLI_PROFILE); a profile with compute_endpoint or paas_endpoint is a Cloud Classic account");
    app.add_option("--config-file", options.configFile,
                   "OCI config file (default ~/.oci/config or $OCI_CLI_CONFIG_FILE)");
    app.add_option("--ini", options.ini, "agent configuration file of the library (default $OCW_CONFIG)");
    app.add_option("--region", options.region, "region to work in (default: the profile's region)");
    app.add_flag("--json", options.json, "machine-readable output; errors as JSON on stderr");
    app.add_option("--timeout", options.timeoutSeconds,
                   "longest time in seconds of ocw's own waits (default: nOCIOperationTimeout, for Cloud Classic "
                   "nOracleCloudOperationTimeout, of the agent "
                   "configuration)")
        ->check(CLI::Range(1LL, 100000000LL).description(""))
        ->type_name("SECONDS");
    app.add_flag("-v,--verbose", options.verbosity, "library log on stderr; -vv adds requests, -vvv everything");
    // Build steps write the man page and the bash completion from the
    // command definitions (hidden: an empty group).
    std::string manPage;
    std::string bashCompletion;
    app.add_option("--generate-man-page", manPage)->group("");
    app.add_option("--generate-bash-completion", bashCompletion)->group("");

    const bool json = JsonAsked(argc, argv);
    const std::vector<std::string> args(argv + 1, argv + argc);
    const bool generating = argc == 3 && (args[0] == "--generate-man-page" || args[0] == "--generate-bash-completion");

    ocw::GlobalOptions peek;
    peek.profile = PeekOption(args, "--profile");
    peek.configFile = PeekOption(args, "--config-file");
    ocw::Action action;
    if (!generating && ocw::ProfileIsClassic(peek)) {
        app.description("ocw - manage Oracle Cloud Classic resources (Compute Classic and the PaaS services) through "
                        "the OracleCloudSDKWrapper library");
        ocw::RegisterClassicInstanceCommands(app, action);
        ocw::RegisterClassicVolumeCommands(app, action);
        ocw::RegisterClassicInventoryCommands(app, action);
        ocw::RegisterPaaSCommands(app, action);
    } else {
        ocw::RegisterInventoryCommands(app, action);
        ocw::RegisterInstanceCommands(app, action);
        ocw::RegisterVolumeCommands(app, action);
        ocw::RegisterBackupCommands(app, action);
        ocw::RegisterImageCommands(app, action);
        ocw::RegisterDatabaseCommands(app, action);
    }
    ocw::RegisterDemoCommand(app, action);
    ocw::AddGlobalOptionsToHelp(app, kFooter);
    if (!generating) {
        const std::string wordError = ocw::CheckCommandWords(app, args);
        if (!wordError.empty()) return UsageError(wordError + " (see ocw --help)", json);
    }
    if (generating) app.require_subcommand(0);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& e) {
        return app.exit(e);  // --help, --version
    } catch (const CLI::ParseError& e) {
        return UsageError(std::string(e.what()) + " (see --help)", json);
    }
    if (!manPage.empty() || !bashCompletion.empty()) {
        CLI::App classic{"", "ocw"};
        ocw::Action unused;
        ocw::RegisterClassicInstanceCommands(classic, unused);
        ocw::RegisterClassicVolumeCommands(classic, unused);
        ocw::RegisterClassicInventoryCommands(classic, unused);
        ocw::RegisterPaaSCommands(classic, unused);
        const bool ok = (manPage.empty() || WriteFile(manPage, [&](std::ostream& out) {
                             ocw::WriteManPage(app, version, out, &classic);
                         })) &&
                        (bashCompletion.empty() ||
                         WriteFile(bashCompletion, [&](std::ostream& out) { ocw::WriteBashCompletion(app, out); }));
        return ok ? ocw::kExitOk : ocw::kExitFailure;
    }
    if (!action) return UsageError("nothing to do (see ocw --help)", json);

    ocw::Interrupt::SetJsonErrors(options.json);
    ocw::LogRouter::Instance().install(options.verbosity);
    ocw::Session session(options);
    try {
        action(session);
        ocw::Interrupt::ParkIfRequested();
    } catch (const ocw::CliError& e) {
        ocw::Interrupt::ParkIfRequested();
        std::cout.flush();
        ocw::PrintFailure(std::cerr, e.report(), options.json);
        return e.code();
    } catch (const std::exception& e) {
        ocw::Interrupt::ParkIfRequested();
        std::cout.flush();
        ocw::PrintFailure(std::cerr,
                          ocw::FailureReport{ocw::kExitFailure, std::string("unexpected error: ") + e.what(), {}, {}},
                          options.json);
        return ocw::kExitFailure;
    }
    return Finish(ocw::kExitOk);
}
