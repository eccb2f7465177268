#pragma once
// The emulator as a child process: found beside ocw (installed tree), in the
// build tree, or on PATH; started on a free loopback port with its own state
// directory; its one JSON line read for the endpoint and the throw-away client
// files; stopped with SIGTERM (SIGKILL if it does not go within 5 s).
#include <sys/types.h>

#include <atomic>
#include <string>
#include <vector>

namespace ocw {

struct EmulatorEndpoint {
    std::string endpoint;    // "https://127.0.0.1:<port>"
    std::string caFile;
    std::string ociConfig;   // OCI config file, profile DEFAULT
    std::string ini;         // agent configuration pointing the library at the emulator
    std::string tenancy;
    std::string region;
    std::string stateDir;
    std::string classicProfile;  // Classic profile (compute_endpoint, paas_endpoint, ...); empty when not served
};

class EmulatorProcess {
public:
    EmulatorProcess() = default;
    ~EmulatorProcess() { stop(); }
    EmulatorProcess(const EmulatorProcess&) = delete;
    EmulatorProcess& operator=(const EmulatorProcess&) = delete;

    // $OCW_EMULATOR, then ocw-emulator beside this program, then the build
    // tree's, then PATH. Empty when none is found; searched lists the places.
    static std::string FindBinary(std::string& searched);

    // Starts binary with args (plus --state-dir stateDir) and waits up to
    // timeoutMs for its JSON line. The child's stderr goes to
    // <stateDir>/emulator.log. False with error (and the child stopped) on failure.
    bool start(const std::string& binary, const std::vector<std::string>& args, const std::string& stateDir,
               int timeoutMs, std::string& error);
    const EmulatorEndpoint& info() const { return info_; }
    pid_t pid() const { return pid_.load(); }

    // Idempotent; safe to call from the interrupt watcher.
    void stop();

private:
    std::atomic<pid_t> pid_{-1};
    std::atomic<int> stdoutFd_{-1};
    EmulatorEndpoint info_;
};

}  // namespace ocw
