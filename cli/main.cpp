// ocw: the command-line tool over the library's public facade.
#include <CLI/CLI.hpp>

#include <iostream>

#include "Commands.h"
#include "ExitCodes.h"
#include "Interrupt.h"
#include "LogRouter.h"
#include "Session.h"

namespace {

const char* kFooter =
    "Exit codes: 0 success, 1 failure, 2 usage error, 3 credentials refused or unusable,\n"
    "4 resource not found, 130 interrupted (Ctrl-C).\n"
    "Configuration: the OCI config file (--config-file, default ~/.oci/config) and the\n"
    "agent configuration (--ini, default $OCW_CONFIG). See docs/cli.md.";

}  // namespace

int main(int argc, char** argv) {
    ocw::Interrupt::Install();

    ocw::GlobalOptions options;
    CLI::App app{"ocw - manage Oracle Cloud Infrastructure resources through the OracleCloudSDKWrapper library",
                 "ocw"};
    app.footer(kFooter);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--profile", options.profile, "profile of the OCI config file (default DEFAULT or $OCI_CLI_PROFILE)");
    app.add_option("--config-file", options.configFile,
                   "OCI config file (default ~/.oci/config or $OCI_CLI_CONFIG_FILE)");
    app.add_option("--ini", options.ini, "agent configuration file of the library (default $OCW_CONFIG)");
    app.add_option("--region", options.region, "region to work in (default: the profile's region)");
    app.add_flag("--json", options.json, "machine-readable output");
    app.add_flag("-v,--verbose", options.verbosity, "library log on stderr; -vv adds requests, -vvv everything");

    ocw::Action action;
    ocw::RegisterInventoryCommands(app, action);
    ocw::RegisterInstanceCommands(app, action);
    ocw::RegisterVolumeCommands(app, action);
    ocw::RegisterBackupCommands(app, action);
    ocw::RegisterImageCommands(app, action);
    ocw::RegisterDatabaseCommands(app, action);
    ocw::RegisterDemoCommand(app, action);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return ocw::kExitUsage;
    }
    if (!action) {
        std::cerr << "ocw: nothing to do; see ocw --help\n";
        return ocw::kExitUsage;
    }

    ocw::LogRouter::Instance().install(options.verbosity);
    ocw::Session session(options);
    try {
        action(session);
        ocw::Interrupt::ParkIfRequested();
    } catch (const ocw::CliError& e) {
        ocw::Interrupt::ParkIfRequested();
        std::cout.flush();
        std::cerr << "ocw: " << e.what() << '\n';
        return e.code();
    } catch (const std::exception& e) {
        ocw::Interrupt::ParkIfRequested();
        std::cout.flush();
        std::cerr << "ocw: unexpected error: " << e.what() << '\n';
        return ocw::kExitFailure;
    }
    std::cout.flush();
    return std::cout ? ocw::kExitOk : ocw::kExitFailure;
}
