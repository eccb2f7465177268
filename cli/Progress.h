#pragma once
// Progress of one long operation on stderr: elapsed time and the current
// lifecycle state. The state arrives from the library's log lines (see
// LogRouter) or from ocw's own polling. On a terminal the line is redrawn in
// place several times a second; otherwise one line is written per new state,
// so logs and tests see every transition exactly once.
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace ocw {

class Progress {
public:
    // Wait: shown at once, every new state. Listing: for walks over many
    // requests (a listing with details reads thousands): nothing for the first
    // second, so a quick listing stays silent; after that on a terminal the
    // line is redrawn, otherwise a state line is written at most every 2 s.
    enum class Mode { Wait, Listing };

    // Registers itself as the receiver of state lines until destroyed.
    explicit Progress(std::string label, Mode mode = Mode::Wait);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void state(const std::string& text);
    double elapsedSeconds() const;

    // Ends the display (clears the redrawn line); idempotent.
    void finish();

    // Off: nothing is written (used by --quiet callers and by the demo, which
    // prints its own step lines).
    static void SetEnabled(bool enabled);

private:
    void draw();
    void tick();

    std::string label_;
    Mode mode_;
    std::chrono::steady_clock::time_point start_;
    double lastLine_ = -1.0;  // elapsed seconds of the last state line written (Listing, not live)
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::string state_;
    bool finished_ = false;
    bool live_ = false;
    std::thread ticker_;
};

}  // namespace ocw
