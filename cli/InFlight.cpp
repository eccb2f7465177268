#include "InFlight.h"

#include <mutex>

namespace ocw {
namespace InFlight {

namespace {
std::mutex g_mutex;
std::string g_call;
ResourceInFlight g_resource;
}  // namespace

void SetCall(const std::string& what) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_call = what;
}

std::string Call() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_call;
}

void Track(const std::string& resourceId) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_resource = ResourceInFlight{resourceId, std::string()};
}

void NoteState(const std::string& state) {
    std::lock_guard<std::mutex> lock(g_mutex);
    if (!g_resource.id.empty()) g_resource.lastState = state;
}

ResourceInFlight Resource() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_resource;
}

}  // namespace InFlight
}  // namespace ocw
