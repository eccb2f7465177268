// ocw-emulator: a local HTTPS cloud that behaves like OCI and Cloud Classic on the wire.
// Prints one JSON line when ready, serves until SIGINT or SIGTERM, exits 0.
#include "Emulator.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

namespace {

const char* kUsage =
    "usage: ocw-emulator [--listen HOST:PORT] [--state-dir DIR] [--seed demo|empty|scale]\n"
    "                    [--compartments N] [--instances N] [--provision-ms N] [--pass-phrase TEXT]\n"
    "                    [--region NAME]... [--page-size N] [--threads N] [--retention-ms N]\n"
    "                    [--classic on|off] [--identity-domain NAME] [--classic-user NAME]\n"
    "                    [--classic-session-ms N]\n"
    "\n"
    "  --listen HOST:PORT  address to serve on (default 127.0.0.1:0, a free port)\n"
    "  --state-dir DIR     keeps TLS material, the API key and the client files (default: a new temp dir)\n"
    "  --seed MODE         demo (a small tenancy), empty, or scale (see --compartments/--instances)\n"
    "  --compartments N    compartments of the scale seed (default 20)\n"
    "  --instances N       instances of the scale seed (default 1000)\n"
    "  --provision-ms N    how long lifecycle transitions take (default 1000)\n"
    "  --pass-phrase TEXT  encrypt the API key with this pass phrase\n"
    "  --region NAME       a subscribed region; repeat for more, the first is home\n"
    "                      (default us-phoenix-1 and us-ashburn-1)\n"
    "  --page-size N       default page size of lists (default 10)\n"
    "  --threads N         worker threads (default 32)\n"
    "  --retention-ms N    how long terminated resources stay readable (default 12 h)\n"
    "  --classic on|off    serve a Cloud Classic account (default on); its password is in the\n"
    "                      state directory's classic-profile, never on the command line\n"
    "  --identity-domain NAME  the Classic identity domain (default acme)\n"
    "  --classic-user NAME the Classic user (default jdoe)\n"
    "  --classic-session-ms N  lifetime of a Compute Classic login session (default 1800000)\n";

bool ParseInt(const std::string& text, long long min, long long max, long long& out) {
    char* end = nullptr;
    errno = 0;
    out = std::strtoll(text.c_str(), &end, 10);
    return !text.empty() && errno == 0 && *end == '\0' && out >= min && out <= max;
}

}  // namespace

int main(int argc, char** argv) {
    ocwemu::EmulatorOptions opts;
    bool regionsGiven = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            std::cout << kUsage;
            return 0;
        }
        if (i + 1 >= argc) {
            std::cerr << "ocw-emulator: " << arg << " needs a value (or is unknown)\n" << kUsage;
            return 2;
        }
        const std::string value = argv[++i];
        long long n = 0;
        bool ok = true;
        if (arg == "--listen") {
            const size_t colon = value.rfind(':');
            ok = colon != std::string::npos && ParseInt(value.substr(colon + 1), 0, 65535, n);
            if (ok) {
                std::string host = value.substr(0, colon);
                if (host.size() > 1 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
                opts.listenHost = host.empty() ? "127.0.0.1" : host;
                opts.port = static_cast<int>(n);
            }
        } else if (arg == "--state-dir") {
            opts.stateDir = value;
        } else if (arg == "--seed") {
            opts.seed = value;
            ok = value == "demo" || value == "empty" || value == "scale";
        } else if (arg == "--compartments") {
            ok = ParseInt(value, 0, 100000, n);
            opts.compartments = static_cast<int>(n);
        } else if (arg == "--instances") {
            ok = ParseInt(value, 0, 1000000, n);
            opts.instances = static_cast<int>(n);
        } else if (arg == "--provision-ms") {
            ok = ParseInt(value, 0, 3600000, n);
            opts.provisionMs = n;
        } else if (arg == "--pass-phrase") {
            opts.passPhrase = value;
        } else if (arg == "--region") {
            if (!regionsGiven) opts.regions.clear();
            regionsGiven = true;
            opts.regions.push_back(value);
            ok = !value.empty();
        } else if (arg == "--page-size") {
            ok = ParseInt(value, 1, 1000, n);
            opts.pageSize = static_cast<size_t>(n);
        } else if (arg == "--threads") {
            ok = ParseInt(value, 1, 1024, n);
            opts.threads = static_cast<int>(n);
        } else if (arg == "--retention-ms") {
            ok = ParseInt(value, 0, 100LL * 24 * 3600 * 1000, n);
            opts.retentionMs = n;
        } else if (arg == "--classic") {
            ok = value == "on" || value == "off";
            opts.classicAccount = value == "on";
        } else if (arg == "--identity-domain") {
            opts.classicIdentityDomain = value;
            ok = !value.empty() && value.find_first_of("/ \"") == std::string::npos;
        } else if (arg == "--classic-user") {
            opts.classicUser = value;
            ok = !value.empty() && value.find_first_of("/ \"") == std::string::npos;
        } else if (arg == "--classic-session-ms") {
            ok = ParseInt(value, 1, 24LL * 3600 * 1000, n);
            opts.classicSessionMs = n;
        } else {
            std::cerr << "ocw-emulator: unknown option " << arg << "\n" << kUsage;
            return 2;
        }
        if (!ok) {
            std::cerr << "ocw-emulator: bad value for " << arg << ": " << value << "\n";
            return 2;
        }
    }

    // Block the stop signals before any thread starts so that only sigwait sees them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    ocwemu::Emulator emulator(opts);
    if (!emulator.start()) {
        std::cerr << "ocw-emulator: " << emulator.lastError() << "\n";
        return 1;
    }
    std::cout << emulator.info().toJsonLine() << std::endl;

    int sig = 0;
    sigwait(&stopSignals, &sig);
    emulator.stop();
    return 0;
}
