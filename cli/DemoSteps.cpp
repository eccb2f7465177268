#include "DemoSteps.h"

#include <chrono>
#include <cstdio>

#include "Interrupt.h"

namespace ocw {

std::string ShortId(const std::string& ocid) {
    if (ocid.rfind("ocid1.", 0) != 0) return ocid;
    const size_t dot = ocid.find('.', 6);
    const std::string type = ocid.substr(6, dot == std::string::npos ? std::string::npos : dot - 6);
    return type + " \u2026" + ocid.substr(ocid.size() > 6 ? ocid.size() - 6 : 0);
}

bool DemoSteps::run(const std::string& title, const std::function<std::string()>& body) {
    const auto start = std::chrono::steady_clock::now();
    bool ok = true;
    std::string detail;
    try {
        detail = body();
    } catch (const CliError& e) {
        ok = false;
        detail = e.what();
        if (firstFailure_ == kExitOk) firstFailure_ = e.code();
    }
    Interrupt::ParkIfRequested();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    steps_.push_back(boost::json::object{{"step", title}, {"seconds", seconds}, {"ok", ok}, {"detail", detail}});
    if (!json_) {
        std::printf("%3zu. %-50s %6.2f s  %s%s\n", steps_.size(), title.c_str(), seconds, ok ? "" : "FAILED: ",
                    detail.c_str());
        std::fflush(stdout);
    }
    return ok;
}

size_t DemoCleanup::add(const std::string& title, std::function<std::string()> action) {
    items_.push_back({title, std::move(action), true});
    return items_.size() - 1;
}

void DemoCleanup::run() {
    for (auto it = items_.rbegin(); it != items_.rend(); ++it) {
        if (it->active) steps_.run("clean up: " + it->title, it->action);
    }
    items_.clear();
}

}  // namespace ocw
