#pragma once
// A real HTTPS server on 127.0.0.1 for transport tests, and a scoped INI file
// that points the library's configuration at it.
//
// Destroy clients before the server: an open keep-alive connection holds a
// server worker until its idle timeout (Options::keepAliveTimeoutSeconds).
#include <httplib.h>

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "TempDir.h"

namespace ocwtest {

// One request as the server saw it, recorded before its answer was written,
// so it is visible as soon as the client has the answer.
struct RecordedRequest {
    std::string method;
    std::string target;  // path and query as sent
    std::string path;    // without the query
    httplib::Headers headers;
    std::string body;
    int status = 0;  // status the server answered with

    // First value of the header (name without regard to case), empty if absent.
    std::string header(const std::string& name) const;
    bool hasHeader(const std::string& name) const;
};

class LoopbackTlsServer {
public:
    struct Options {
        // Names the certificate is issued for; the server always listens on 127.0.0.1.
        std::vector<std::string> dnsNames{"localhost"};
        std::vector<std::string> ipAddresses{"127.0.0.1"};
        // Idle time after which the server closes a keep-alive connection; it
        // also bounds how long stopping waits for an idle connection.
        int keepAliveTimeoutSeconds = 1;
        // Requests one connection may carry (httplib's own default is 5).
        size_t keepAliveMaxCount = 1000;
        // TLS material directory; empty: one private temporary directory per
        // process, removed at exit.
        std::string tlsDir;
    };

    LoopbackTlsServer();
    explicit LoopbackTlsServer(Options options);
    // Stops the server and joins its thread.
    ~LoopbackTlsServer();
    LoopbackTlsServer(const LoopbackTlsServer&) = delete;
    LoopbackTlsServer& operator=(const LoopbackTlsServer&) = delete;

    // Register handlers here before start(); httplib's routes are not
    // guarded, so registering while serving is a data race. The pre- and
    // post-routing handlers are used for recording: leave them alone.
    httplib::Server& server();

    // Starts serving on the background thread and returns once the server
    // accepts connections. Throws std::runtime_error if it cannot.
    void start();
    // Stops serving (idempotent); the destructor calls it.
    void stop();

    int port() const { return m_port; }
    // "https://127.0.0.1:<port>" and that + path.
    std::string baseUrl() const;
    std::string url(const std::string& path) const;
    // The CA that issued the server's certificate (what a client must trust).
    const std::string& caFile() const { return m_caFile; }
    // [VirtualServer] entries that make the library's HTTP client trust this
    // server, with short timeouts fit for tests (connect 2 s, low-speed 5 s).
    std::vector<std::pair<std::string, std::string>> clientConfig() const;

    // TCP connections that carried at least one request (distinct client ports).
    size_t connectionCount() const;
    size_t requestCount() const;
    std::vector<RecordedRequest> requests() const;
    RecordedRequest lastRequest() const;  // default-constructed when none

private:
    void record(const httplib::Request& req, const httplib::Response& res);

    Options m_options;
    std::string m_caFile;
    std::unique_ptr<httplib::SSLServer> m_server;
    int m_port = 0;
    std::thread m_thread;
    bool m_started = false;

    mutable std::mutex m_mutex;
    std::set<int> m_remotePorts;
    std::vector<RecordedRequest> m_requests;
};

// Writes an INI file to a private temporary path and makes it the library's
// configuration (PlatformConfig::setConfigFile); the destructor restores the
// previous configuration file and deletes this one.
class ScopedConfigFile {
public:
    using Entries = std::vector<std::pair<std::string, std::string>>;
    using Sections = std::vector<std::pair<std::string, Entries>>;

    explicit ScopedConfigFile(const std::string& iniText);
    explicit ScopedConfigFile(const Sections& sections);
    ~ScopedConfigFile();
    ScopedConfigFile(const ScopedConfigFile&) = delete;
    ScopedConfigFile& operator=(const ScopedConfigFile&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
    std::string m_previous;
};

}  // namespace ocwtest
