#include "EmulatorProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/json.hpp>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

extern char** environ;

namespace ocw {

namespace {

bool IsExecutable(const std::string& path) { return !path.empty() && ::access(path.c_str(), X_OK) == 0; }

std::string SelfDirectory() {
    char buffer[4096];
    const ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (n <= 0) return std::string();
    std::string path(buffer, static_cast<size_t>(n));
    return path.substr(0, path.rfind('/'));
}

std::string Member(const boost::json::object& o, const char* key) {
    const boost::json::value* v = o.if_contains(key);
    return v != nullptr && v->is_string() ? std::string(v->get_string()) : std::string();
}

}  // namespace

std::string EmulatorProcess::FindBinary(std::string& searched) {
    std::vector<std::string> candidates;
    if (const char* env = std::getenv("OCW_EMULATOR")) {
        if (*env != '\0') candidates.push_back(env);
    }
    const std::string self = SelfDirectory();
    if (!self.empty()) candidates.push_back(self + "/ocw-emulator");
#ifdef OCW_EMULATOR_BUILD_PATH
    candidates.push_back(OCW_EMULATOR_BUILD_PATH);
#endif
    if (const char* path = std::getenv("PATH")) {
        std::string dirs(path);
        size_t start = 0;
        while (start <= dirs.size()) {
            const size_t colon = dirs.find(':', start);
            const std::string dir = dirs.substr(start, colon == std::string::npos ? std::string::npos : colon - start);
            if (!dir.empty()) candidates.push_back(dir + "/ocw-emulator");
            if (colon == std::string::npos) break;
            start = colon + 1;
        }
    }
    searched.clear();
    for (const std::string& c : candidates) {
        if (IsExecutable(c)) return c;
        if (searched.size() < 400) searched += (searched.empty() ? "" : ", ") + c;
    }
    return std::string();
}

bool EmulatorProcess::start(const std::string& binary, const std::vector<std::string>& args,
                            const std::string& stateDir, int timeoutMs, std::string& error) {
    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) != 0) {
        error = std::string("pipe: ") + std::strerror(errno);
        return false;
    }
    const std::string logFile = stateDir + "/emulator.log";

    std::vector<std::string> argvText{binary};
    argvText.insert(argvText.end(), args.begin(), args.end());
    argvText.push_back("--state-dir");
    argvText.push_back(stateDir);
    std::vector<char*> argv;
    for (std::string& a : argvText) argv.push_back(&a[0]);
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, logFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawnattr_t attr;
    posix_spawnattr_init(&attr);
    // ocw blocks SIGINT for its watcher thread; the child must not inherit
    // that, and it gets its own process group so that Ctrl-C in the terminal
    // reaches ocw alone, which then stops the child in order.
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attr, &none);
    posix_spawnattr_setpgroup(&attr, 0);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    pid_t pid = -1;
    const int rc = ::posix_spawn(&pid, binary.c_str(), &actions, &attr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attr);
    ::close(pipeFds[1]);
    if (rc != 0) {
        ::close(pipeFds[0]);
        error = "cannot start " + binary + ": " + std::strerror(rc);
        return false;
    }
    pid_ = pid;
    stdoutFd_ = pipeFds[0];
    const int fd = pipeFds[0];

    std::string line;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (line.find('\n') == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            error = "the emulator printed no ready line within " + std::to_string(timeoutMs / 1000) + " s (see " +
                    logFile + ")";
            stop();
            return false;
        }
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, static_cast<int>(left.count())) <= 0) continue;
        char buffer[4096];
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n <= 0) {
            int status = 0;
            ::waitpid(pid_.exchange(-1), &status, 0);
            error = "the emulator ended before it was ready (exit status " +
                    std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)) + "; see " +
                    logFile + ")";
            stop();
            return false;
        }
        line.append(buffer, static_cast<size_t>(n));
    }
    line.erase(line.find('\n'));

    boost::system::error_code ec;
    const boost::json::value v = boost::json::parse(line, ec);
    if (ec || !v.is_object()) {
        error = "the emulator's ready line is not a JSON object: " + line.substr(0, 200);
        stop();
        return false;
    }
    const boost::json::object& o = v.get_object();
    info_.endpoint = Member(o, "oci_endpoint");
    info_.caFile = Member(o, "ca_file");
    info_.ociConfig = Member(o, "oci_config");
    info_.ini = Member(o, "ini");
    info_.tenancy = Member(o, "tenancy");
    info_.region = Member(o, "region");
    info_.stateDir = Member(o, "state_dir");
    info_.classicProfile = Member(o, "classic_profile");
    if (info_.endpoint.empty() || info_.ociConfig.empty() || info_.ini.empty()) {
        error = "the emulator's ready line lacks oci_endpoint, oci_config or ini";
        stop();
        return false;
    }
    return true;
}

void EmulatorProcess::stop() {
    // May run on the interrupt watcher while the main thread also stops: the
    // exchanges make sure only one of them reaps the child and closes the pipe.
    const pid_t pid = pid_.exchange(-1);
    if (pid > 0) {
        ::kill(pid, SIGTERM);
        int status = 0;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (::waitpid(pid, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                ::kill(pid, SIGKILL);
                ::waitpid(pid, &status, 0);
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    const int fd = stdoutFd_.exchange(-1);
    if (fd >= 0) ::close(fd);
}

}  // namespace ocw
