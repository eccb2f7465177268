#include "CliRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

namespace ocwtest {

std::string OcwPath() { return OCW_CLI_PATH; }

CliResult RunProgram(const std::string& program, const std::vector<std::string>& args, const CliRunOptions& options) {
    CliResult result;
    TempDir home;
    std::vector<std::string> envText{"HOME=" + home.path(), "PATH=/usr/bin:/bin", "LANG=C"};
    if (const char* tmp = std::getenv("TMPDIR")) envText.push_back(std::string("TMPDIR=") + tmp);
    for (const auto& kv : options.env) envText.push_back(kv.first + "=" + kv.second);
    std::vector<char*> envp;
    for (std::string& e : envText) envp.push_back(&e[0]);
    envp.push_back(nullptr);

    std::vector<std::string> argvText{program};
    argvText.insert(argvText.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : argvText) argv.push_back(&a[0]);
    argv.push_back(nullptr);

    int outPipe[2];
    int errPipe[2];
    if (::pipe2(outPipe, O_CLOEXEC) != 0 || ::pipe2(errPipe, O_CLOEXEC) != 0) return result;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], STDERR_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    pid_t pid = -1;
    const int rc = ::posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    if (options.readerGone) {
        ::close(outPipe[0]);
        outPipe[0] = -1;
    }
    if (rc != 0) {
        ::close(outPipe[0]);
        ::close(errPipe[0]);
        result.err = "cannot start " + program;
        return result;
    }

    const auto start = std::chrono::steady_clock::now();
    bool interrupted = false;
    bool killed = false;
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int open = options.readerGone ? 1 : 2;
    while (open > 0) {
        const auto elapsed =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
        if (!interrupted && options.interruptAfterMs >= 0 && elapsed >= options.interruptAfterMs) {
            ::kill(pid, SIGINT);
            interrupted = true;
        }
        if (!killed && elapsed >= options.timeoutMs) {
            ::kill(pid, SIGKILL);
            killed = true;
        }
        if (::poll(fds, 2, 50) <= 0) continue;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || (fds[i].revents & (POLLIN | POLLHUP)) == 0) continue;
            char buffer[8192];
            const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
            if (n <= 0) {
                ::close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            } else {
                (i == 0 ? result.out : result.err).append(buffer, static_cast<size_t>(n));
            }
        }
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (!killed && WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    return result;
}

}  // namespace ocwtest
