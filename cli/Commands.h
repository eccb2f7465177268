#pragma once
// Registration of the command groups. Each group adds its subcommands to the
// application; the subcommand that the command line selects stores what to
// run in "action", which main runs once parsing is over (so a usage error is
// always found before any request is sent).
#include <CLI/CLI.hpp>

#include <functional>

#include "Session.h"

namespace ocw {

using Action = std::function<void(Session&)>;

void RegisterInventoryCommands(CLI::App& app, Action& action);  // regions, compartments, shapes, networks
void RegisterInstanceCommands(CLI::App& app, Action& action);
void RegisterVolumeCommands(CLI::App& app, Action& action);
void RegisterBackupCommands(CLI::App& app, Action& action);
void RegisterImageCommands(CLI::App& app, Action& action);      // images, objects
void RegisterDatabaseCommands(CLI::App& app, Action& action);
void RegisterDemoCommand(CLI::App& app, Action& action);

// The commands of a Cloud Classic profile (compute_endpoint / paas_endpoint).
void RegisterClassicInstanceCommands(CLI::App& app, Action& action);   // instances, orchestrations
void RegisterClassicVolumeCommands(CLI::App& app, Action& action);     // volumes, snapshots
void RegisterClassicInventoryCommands(CLI::App& app, Action& action);  // keypairs, security-lists, networks
void RegisterPaaSCommands(CLI::App& app, Action& action);              // db, java, mysql, jobs

// Shared by several groups.
void AddCompartmentOption(CLI::App& command, std::string& compartment);
// A command of group with one required argument, that runs run(session, argument).
CLI::App* AddOneArgumentCommand(CLI::App& group, Action& action, const std::string& name, const std::string& help,
                                const std::string& argument, const std::string& argumentHelp,
                                std::function<void(Session&, const std::string&)> run);

}  // namespace ocw
