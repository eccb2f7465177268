#pragma once
// Reads and waits on Cloud Classic objects that several commands (and the
// demo) share. Classic objects are named by path: "web1" or
// "/Compute-acme/jdoe/web1/<uuid>" for an instance, "web1-data" or
// "/Compute-acme/jdoe/web1-data" for a volume.
#include <string>
#include <vector>

#include "Session.h"

namespace ocw {

// Guest operating system, disks and network of an instance.
constexpr unsigned long long kClassicAllDetails = 2 | 16 | 32;

// Every instance of the account (the library walks the directories), with
// their disks when details.
std::vector<OracleCloudSDKWrapper::SVMInfoLib> ListClassicInstances(Session& session, bool details);

// One instance by short or full name; not found ends the command with exit 4.
OracleCloudSDKWrapper::SVMInfoLib ReadClassicInstance(Session& session, const std::string& name,
                                                      unsigned long long flags = kClassicAllDetails);

// "/Compute-acme/jdoe/web1-data" for "web1-data"; full names stay as they are.
std::string ClassicFullName(Session& session, const std::string& name);

// ocw's own waits (Session::waitFor) on the states Compute Classic reports.
void WaitForClassicVolume(Session& session, const std::string& volume, const std::string& label);
void WaitForClassicSnapshot(Session& session, const std::string& snapshot, const std::string& label);
void WaitForClassicInstance(Session& session, const std::string& instance, const std::string& state,
                            const std::string& label);

}  // namespace ocw
