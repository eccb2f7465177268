#pragma once
// What the command is doing in the cloud right now, for the messages of a
// failure and of Ctrl-C: the call under way, and the resource it created or
// changed with the last lifecycle state seen. The resource comes from the
// command (an OCID it was given or got back) or from the library's log (the
// id of an instance or volume a library call just created); states from ocw's
// own polls or the library's wait lines. Thread-safe: the interrupt watcher
// reads it while the main thread updates it.
#include <string>

#include "ExitCodes.h"

namespace ocw {
namespace InFlight {

// The call under way ("take snapshot of ..."); empty when none.
void SetCall(const std::string& what);
std::string Call();

// The resource the command now waits on; its last state is forgotten.
void Track(const std::string& resourceId);
// The last lifecycle state seen of the tracked resource.
void NoteState(const std::string& state);
ResourceInFlight Resource();

}  // namespace InFlight
}  // namespace ocw
