#pragma once
// "ocw demo": starts the emulator, then walks a backup-and-restore cycle
// through the library as a backup agent would, printing each step with its
// time, cleans up what it created and stops the emulator.
#include "Session.h"

namespace ocw {

struct DemoOptions {
    long long provisionMs = 200;  // how long the emulator's lifecycle transitions take
    std::string cloud = "all";    // "oci", "classic" or "all"
};

// Exit code: kExitOk only when every step, clean-up included, succeeded;
// otherwise the code of the first failed step.
int RunDemo(const GlobalOptions& global, const DemoOptions& options);

}  // namespace ocw
