#include "Interrupt.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>

#include "ExitCodes.h"
#include "Failure.h"
#include "InFlight.h"

namespace ocw {
namespace Interrupt {

namespace {

std::mutex g_mutex;
std::map<int, std::function<void()>> g_cleanups;
int g_next = 1;
std::string g_hint;
std::atomic<bool> g_requested{false};
std::atomic<bool> g_json{false};

void Watch(sigset_t signals) {
    int sig = 0;
    while (sigwait(&signals, &sig) != 0) {
    }
    g_requested = true;
    std::fflush(stdout);
    std::map<int, std::function<void()>> cleanups;
    std::string hint;
    {
        std::lock_guard<std::mutex> lock(g_mutex);
        cleanups.swap(g_cleanups);
        hint = g_hint;
    }
    // What the cloud may still be doing: the call under way and the resource
    // it was waiting on, so nothing billable is left behind unnamed.
    const std::string call = InFlight::Call();
    const std::string tail = !hint.empty() ? hint : call.empty() ? std::string()
                                                                 : "the cloud may still be working on: " + call;
    FailureReport report;
    report.code = kExitInterrupted;
    report.message = std::string("interrupted by ") + (sig == SIGINT ? "Ctrl-C" : "SIGTERM") +
                     (tail.empty() ? "" : "; " + tail);
    report.resource = InFlight::Resource();
    std::ostringstream text;
    if (!g_json) text << '\n';
    PrintFailure(text, report, g_json);
    std::fputs(text.str().c_str(), stderr);
    for (auto it = cleanups.rbegin(); it != cleanups.rend(); ++it) {
        it->second();
    }
    std::fflush(stdout);
    std::fflush(stderr);
    // The main thread may be inside a library call; exit() would run static
    // destructors under its feet.
    _exit(kExitInterrupted);
}

}  // namespace

void Install() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread(Watch, signals).detach();
}

int Add(std::function<void()> cleanup) {
    std::lock_guard<std::mutex> lock(g_mutex);
    const int handle = g_next++;
    g_cleanups[handle] = std::move(cleanup);
    return handle;
}

void Remove(int handle) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_cleanups.erase(handle);
}

bool Requested() { return g_requested.load(); }

void ParkIfRequested() {
    while (g_requested.load()) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

void SetJsonErrors(bool json) { g_json = json; }

void SetHint(const std::string& hint) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_hint = hint;
}

}  // namespace Interrupt
}  // namespace ocw
