#include "Interrupt.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <thread>

#include "ExitCodes.h"

namespace ocw {
namespace Interrupt {

namespace {

std::mutex g_mutex;
std::map<int, std::function<void()>> g_cleanups;
int g_next = 1;
std::string g_hint;
std::atomic<bool> g_requested{false};

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
    std::fprintf(stderr, "\nocw: interrupted by %s%s%s\n", sig == SIGINT ? "Ctrl-C" : "SIGTERM",
                 hint.empty() ? "" : "; ", hint.c_str());
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

void SetHint(const std::string& hint) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_hint = hint;
}

}  // namespace Interrupt
}  // namespace ocw
