#pragma once
// The demo's Cloud Classic half: the cycle with which the backup agent
// protects a Classic instance (capture its configuration and orchestrations,
// snapshot its volumes, restore them, let a helper instance see them,
// redeploy the instance from its saved orchestration), then one database
// service backup followed to its job's end. Everything created is removed.
#include <string>

#include "DemoSteps.h"
#include "Session.h"

namespace ocw {

// compute is connected through the Classic profile to Compute Classic, paas
// through the same profile to the database service; captured documents go
// into workDir. Returns false when a step failed.
bool RunClassicCycle(Session& compute, Session& paas, DemoSteps& steps, const std::string& workDir);

}  // namespace ocw
