// demo: the backup-and-restore cycle against a local emulator.
#include <memory>

#include "Commands.h"
#include "DemoRunner.h"

namespace ocw {

void RegisterDemoCommand(CLI::App& app, Action& action) {
    auto o = std::make_shared<DemoOptions>();
    CLI::App* cmd = app.add_subcommand(
        "demo", "start a local emulator and walk the backup-and-restore cycles of both clouds through the library (needs no cloud account)");
    cmd->add_option("--provision-ms", o->provisionMs, "how long the emulator's resources take to change state")
        ->check(CLI::Range(0, 60000));
    cmd->add_option("--cloud", o->cloud, "run the cycle of one cloud only (default: OCI, then Cloud Classic)")
        ->check(CLI::IsMember({"oci", "classic"}));
    cmd->callback([&action, o] {
        action = [o](Session& s) {
            const int code = RunDemo(s.options(), *o);
            if (code != kExitOk) throw CliError(static_cast<ExitCode>(code), "the demo did not complete");
        };
    });
}

}  // namespace ocw
