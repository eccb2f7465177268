#pragma once
// Everything ocw says about its own command line is derived from the CLI11
// command definitions, so help, man page, shell completion and the usage
// errors cannot drift apart from the commands.
#include <CLI/CLI.hpp>

#include <ostream>
#include <string>
#include <vector>

namespace ocw {

// Every command's help ends with the global options (which may stand before
// or after the command) and `footer`.
void AddGlobalOptionsToHelp(CLI::App& app, const std::string& footer);

// Checks the command words of args (argv without the program) before CLI11
// parses them: an unknown word where a command is expected gives
// "unknown command 'lst' for 'ocw instances'; choices: list, show, ...", and
// a group named without its command gives "'ocw instances' needs a command:
// ...". Empty when the words are fine (or help or the version is asked for).
std::string CheckCommandWords(CLI::App& app, const std::vector<std::string>& args);

// A man page (roff, section 1) and a bash completion script of app; the man
// page lists the commands of classic (a Cloud Classic profile's) as well.
void WriteManPage(const CLI::App& app, const std::string& version, std::ostream& out,
                  const CLI::App* classic = nullptr);
void WriteBashCompletion(const CLI::App& app, std::ostream& out);

}  // namespace ocw
