#pragma once
// The secrets a test program hands to the library or sees it send (private
// keys, pass phrases, passwords, session cookies, basic credentials), written
// down while the log tap is on (OCW_TEST_LOG_DIR names a directory, see
// LogTap.h), so that the check of tests/secrets/ can prove that none of them
// reached the library's log. Header-only, as TestKeys.h records its keys here
// and the benchmarks use TestKeys.h without the support library.
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <mutex>
#include <set>
#include <sstream>
#include <string>

namespace ocwtest {

// The tap's directory; empty while it is off.
inline const std::string& LogTapDir() {
    static const std::string dir = [] {
        const char* d = std::getenv("OCW_TEST_LOG_DIR");
        return std::string(d != nullptr ? d : "");
    }();
    return dir;
}

// "<tap directory>/<program>-<pid><suffix>": one file per process, so the
// suites of one program, run in parallel by ctest, never share one.
inline std::string LogTapFile(const std::string& suffix) {
    std::string program;
    std::ifstream comm("/proc/self/comm");
    if (!std::getline(comm, program) || program.empty()) program = "test";
    return LogTapDir() + "/" + program + "-" + std::to_string(::getpid()) + suffix;
}

// Writes down `value` as a secret of `kind` ("key", "passphrase", "password",
// "cookie", "basic", or the member that carried it). Values under six
// characters would be found in any log by chance and are left out, as are
// masks ("*****") and multi-line values.
inline void RecordSecret(const std::string& kind, const std::string& value) {
    if (LogTapDir().empty() || value.size() < 6 || value.find_first_not_of('*') == std::string::npos ||
        value.find_first_of("\r\n") != std::string::npos) {
        return;
    }
    static std::mutex mutex;
    static std::set<std::string> seen;
    static std::ofstream out;
    std::lock_guard<std::mutex> lock(mutex);
    if (!seen.insert(kind + '\t' + value).second) return;
    if (!out.is_open()) out.open(LogTapFile(".secrets"), std::ios::app);
    out << kind << '\t' << value << '\n' << std::flush;
}

// Every line of a PEM private key but its "-----BEGIN"/"-----END" lines and
// the encryption headers: each carries key material.
inline void RecordPrivateKeyPem(const std::string& pem) {
    std::istringstream lines(pem);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.rfind("-----", 0) == 0 || line.find(':') != std::string::npos) continue;
        RecordSecret("key", line);
    }
}

inline void RecordPrivateKeyFile(const std::string& path) {
    std::ifstream in(path);
    std::stringstream pem;
    pem << in.rdbuf();
    RecordPrivateKeyPem(pem.str());
}

}  // namespace ocwtest
