#pragma once
// Ctrl-C handling. The library's calls block the main thread (state waits
// sleep on it), so a signal cannot be turned into a return value. Instead a
// watcher thread receives SIGINT and SIGTERM, says what may still be going on
// in the cloud (the call and the resource of InFlight), runs the registered
// clean-ups (stop the emulator child, remove temporary files), and ends the
// process with kExitInterrupted.
#include <functional>
#include <string>

namespace ocw {
namespace Interrupt {

// Blocks SIGINT and SIGTERM in the calling thread (and so in every thread
// started later) and starts the watcher. Call first thing in main.
void Install();

// Registers a clean-up; returns a handle for Remove. Clean-ups run in reverse
// order of registration, on the watcher thread, at most once.
int Add(std::function<void()> cleanup);
void Remove(int handle);

// True once a signal arrived; the watcher is then cleaning up and will end
// the process.
bool Requested();
// Blocks the calling thread for good when an interrupt is being handled, so
// that a library call failing because its clean-up pulled the emulator away
// does not print or exit on its own. Returns at once otherwise.
void ParkIfRequested();

// Text printed after "interrupted" instead of the call under way (see
// InFlight); empty restores the default.
void SetHint(const std::string& hint);

// On: the interrupt is reported as a JSON error document (--json).
void SetJsonErrors(bool json);

}  // namespace Interrupt
}  // namespace ocw
