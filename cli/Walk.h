#pragma once
// Walks over the tenancy that several commands share.
#include <functional>
#include <string>
#include <vector>

#include "Session.h"

namespace ocw {

// Every compartment of the tenancy, the root first, then breadth first; the
// library lists one level at a time. Deleted compartments are left out.
std::vector<OracleCloudSDKWrapper::SContainerInfoLib> AllCompartments(Session& session);

// Runs list() for the given compartment (read for its name), or for every
// compartment of the tenancy when none is given, in order; list returns how
// many items it found. A listing that takes longer than a second shows its
// progress on stderr under `label`. Any failure ends the command.
void ForEachCompartment(Session& session, const std::string& compartment, const std::string& label,
                        const std::function<size_t(const OracleCloudSDKWrapper::SContainerInfoLib&)>& list);

// The instances of one compartment, or of all compartments when empty.
// Terminated instances are left out by the library.
std::vector<OracleCloudSDKWrapper::SVMInfoLib> ListInstances(Session& session, const std::string& compartment);

// The availability domain to use when the user names none: the first of the
// compartment's list.
std::string FirstAvailabilityDomain(Session& session, const std::string& compartment);

// Waits until a volume is AVAILABLE. The library returns from making a volume
// out of a backup as soon as the cloud accepted it; attaching or deleting it
// before it is provisioned fails.
void WaitForVolume(Session& session, const std::string& volumeId, const std::string& label);

}  // namespace ocw
