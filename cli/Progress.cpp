#include "Progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

#include "LogRouter.h"

namespace ocw {

namespace {
std::atomic<bool> g_enabled{true};
}

void Progress::SetEnabled(bool enabled) { g_enabled = enabled; }

Progress::Progress(std::string label, Mode mode)
    : label_(std::move(label)), mode_(mode), start_(std::chrono::steady_clock::now()) {
    LogRouter::Instance().setProgress(this);
    if (!g_enabled) {
        finished_ = true;
        return;
    }
    live_ = ::isatty(STDERR_FILENO) == 1;
    if (live_) {
        ticker_ = std::thread([this] { tick(); });
    } else if (mode_ == Mode::Wait) {
        std::fprintf(stderr, "[%6.1fs] %s\n", 0.0, label_.c_str());
    }
}

Progress::~Progress() {
    finish();
    LogRouter::Instance().setProgress(nullptr);
}

double Progress::elapsedSeconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void Progress::state(const std::string& text) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (finished_ || text == state_) return;
    state_ = text;
    if (live_) return;
    const double now = elapsedSeconds();
    if (mode_ == Mode::Listing && (now < 1.0 || (lastLine_ >= 0 && now - lastLine_ < 2.0))) return;
    lastLine_ = now;
    std::fprintf(stderr, "[%6.1fs] %s: %s\n", now, label_.c_str(), state_.c_str());
}

void Progress::finish() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (finished_) return;
        finished_ = true;
    }
    wake_.notify_all();
    if (ticker_.joinable()) ticker_.join();
    if (live_) {
        std::fprintf(stderr, "\r\033[K");
        std::fflush(stderr);
    }
}

void Progress::draw() {
    char head[32];
    std::snprintf(head, sizeof head, "[%6.1fs] ", elapsedSeconds());
    // The state matters more than the end of a long label: cut the label so
    // that the line never wraps (a wrapped line cannot be redrawn in place).
    const std::string tail = state_.empty() ? std::string() : ": " + state_;
    std::string label = label_;
    winsize size{};
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        const size_t room = size.ws_col - 1;
        const size_t fixed = std::string(head).size() + tail.size();
        if (fixed + label.size() > room) label = fixed + 4 < room ? label.substr(0, room - fixed - 3) + "..." : "";
    }
    std::fprintf(stderr, "\r\033[K%s%s%s", head, label.c_str(), tail.c_str());
    std::fflush(stderr);
}

void Progress::tick() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!finished_) {
        if (mode_ == Mode::Wait || elapsedSeconds() >= 1.0) draw();
        wake_.wait_for(lock, std::chrono::milliseconds(100));
    }
}

}  // namespace ocw
