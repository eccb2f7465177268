#pragma once
// HTTPS listener over cpp-httplib: a pool of worker threads, keep-alive
// limits raised for benchmarks, and every method and path handed to one
// dispatch function as an ApiRequest.
#include "common/Api.h"
#include "common/OpenConnections.h"

#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace httplib {
class SSLServer;
}

namespace ocwemu {

class HttpServer {
public:
    using Dispatch = std::function<void(ApiRequest&, ApiResponse&)>;

    HttpServer();
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    // Binds `host`:`port` (0: a free port), then serves on a background
    // thread. Returns once the socket is listening; false with a reason in
    // `error` when the certificate cannot be loaded or the port not bound.
    bool start(const std::string& host, int port, const std::string& certFile, const std::string& keyFile,
               int threads, Dispatch dispatch, std::string& error);
    int port() const { return port_; }
    // Stops accepting, answers the requests already read, closes every
    // connection (idle keep-alive ones at once, without waiting for their
    // timeout) and joins the threads. A request whose body is still arriving
    // may be cut short. Idempotent.
    void stop();
    // Connections open now (accepted, not yet closed).
    std::size_t openConnections() const { return connections_.size(); }

private:
    OpenConnections connections_;  // declared first: outlives the server's connections
    std::unique_ptr<httplib::SSLServer> server_;
    std::thread thread_;
    int port_ = 0;
};

}  // namespace ocwemu
