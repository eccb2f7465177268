#pragma once
// Numbered, timed steps of the demo, printed as they finish:
//    7. snapshot its block volume                       0.62 s  ocw-data-1 -> volumebackup …k3x9q
// or, with --json, collected into one document at the end.
#include <boost/json.hpp>

#include <functional>
#include <string>
#include <vector>

#include "ExitCodes.h"

namespace ocw {

class DemoSteps {
public:
    explicit DemoSteps(bool json) : json_(json) {}

    // Runs body, which returns the detail text or throws CliError. Returns
    // false on failure (printed with the error text).
    bool run(const std::string& title, const std::function<std::string()>& body);

    bool allOk() const { return firstFailure_ == kExitOk; }
    ExitCode firstFailure() const { return firstFailure_; }
    size_t count() const { return steps_.size(); }
    boost::json::array toJson() const { return steps_; }

private:
    bool json_;
    ExitCode firstFailure_ = kExitOk;
    boost::json::array steps_;
};

// What a cycle created, removed newest first as clean-up steps; every item is
// tried, whatever failed before.
class DemoCleanup {
public:
    explicit DemoCleanup(DemoSteps& steps) : steps_(steps) {}
    // Returns the item's index, so that a later step can cancel it when it
    // has undone the change itself.
    size_t add(const std::string& title, std::function<std::string()> action);
    void cancel(size_t index) { items_[index].active = false; }
    void run();

private:
    struct Item {
        std::string title;
        std::function<std::string()> action;
        bool active;
    };
    DemoSteps& steps_;
    std::vector<Item> items_;
};

// "ocid1.volumebackup.oc1.phx.aaaa…" -> "volumebackup …" + its last 6 characters.
std::string ShortId(const std::string& ocid);

}  // namespace ocw
