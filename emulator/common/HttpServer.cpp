#include "common/HttpServer.h"

#include "common/TimeUtil.h"

#include <httplib.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <cctype>
#include <cerrno>
#include <chrono>
#include <thread>

namespace ocwemu {

HttpServer::HttpServer() = default;

HttpServer::~HttpServer() { stop(); }

static std::string Lower(std::string s) {
    for (auto& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

static void Serve(const HttpServer::Dispatch& dispatch, const httplib::Request& hreq, httplib::Response& hres) {
    ApiRequest req;
    req.method = hreq.method;
    req.target = hreq.target;
    for (const auto& h : hreq.headers) {
        std::string name = Lower(h.first);
        // cpp-httplib files the peer's and its own address among the headers.
        if (name == "remote_addr" || name == "remote_port" || name == "local_addr" || name == "local_port") continue;
        req.headers.emplace(std::move(name), h.second);
    }
    req.body = hreq.body;
    req.host = hreq.get_header_value("Host");
    req.remoteAddr = hreq.remote_addr;
    req.nowMs = NowMs();

    ApiResponse res;
    dispatch(req, res);

    if (res.transportFault == "close") {
        // Drop the connection under the client's feet: no status line at all.
        if (hreq.ssl) {
            int fd = SSL_get_fd(hreq.ssl);
            if (fd >= 0) ::shutdown(fd, SHUT_RDWR);
        }
        hres.status = 500;
        return;
    }
    hres.status = res.status;
    for (const auto& h : res.headers) hres.set_header(h.first, h.second);
    if ((res.transportFault == "truncate" || res.transportFault == "reset" || res.transportFault == "stall") &&
        !res.body.empty()) {
        // Headers and the first half of the body go out; then the body ends
        // early (truncate: an orderly close), the connection is reset (reset:
        // the peer sees ECONNRESET, not an end of stream) or nothing moves for
        // stallMs before the rest follows (stall).
        auto body = std::make_shared<std::string>(std::move(res.body));
        const std::string fault = res.transportFault;
        const int stallMs = res.stallMs;
        const int fd = hreq.ssl ? SSL_get_fd(hreq.ssl) : -1;
        hres.set_content_provider(
            body->size(), res.contentType.empty() ? "application/octet-stream" : res.contentType,
            [body, fault, stallMs, fd](size_t offset, size_t, httplib::DataSink& sink) {
                const size_t half = body->size() / 2;
                if (offset == 0) {
                    sink.write(body->data(), half);
                    if (fault == "truncate") return false;
                    if (fault == "reset") {
                        // Disconnecting a TCP socket aborts it with a reset and
                        // leaves the descriptor to its owner.
                        if (fd >= 0) {
                            sockaddr unspecified{};
                            unspecified.sa_family = AF_UNSPEC;
                            ::connect(fd, &unspecified, sizeof unspecified);
                        }
                        return false;
                    }
                    std::this_thread::sleep_for(std::chrono::milliseconds(stallMs));
                    return true;
                }
                sink.write(body->data() + offset, body->size() - offset);
                return true;
            });
        return;
    }
    if (!res.body.empty() || !res.contentType.empty()) {
        // What set_content does, without copying a list page of megabytes.
        hres.headers.erase("Content-Type");
        hres.set_header("Content-Type", res.contentType.empty() ? "application/octet-stream" : res.contentType);
        hres.body = std::move(res.body);
    }
    // Answers go out as they are (identity encoding). cpp-httplib compresses
    // a body for any client that accepts brotli, at brotli's slowest quality:
    // a page of 1,000 instances then cost the official SDK (which accepts
    // brotli) about 0.8 s instead of 0.05 s. It decides from the request's
    // Accept-Encoding after this handler returns and offers no switch, so the
    // header is taken out of the request here. (The request object is the
    // server's own non-const one, handed to handlers as const.)
    const_cast<httplib::Request&>(hreq).headers.erase("Accept-Encoding");
}

bool HttpServer::start(const std::string& host, int port, const std::string& certFile, const std::string& keyFile,
                       int threads, Dispatch dispatch, std::string& error) {
    server_ = std::make_unique<httplib::SSLServer>(certFile.c_str(), keyFile.c_str());
    if (!server_->is_valid()) {
        error = "cannot load the server certificate " + certFile;
        server_.reset();
        return false;
    }
    const size_t workers = threads > 0 ? static_cast<size_t>(threads) : 16;
    server_->new_task_queue = [workers] { return new httplib::ThreadPool(workers); };
    connections_.watch(server_->ssl_context());
    server_->set_keep_alive_max_count(1000000);
    // An idle keep-alive connection holds a worker thread this long (stop()
    // does not wait for it).
    server_->set_keep_alive_timeout(5);
    server_->set_read_timeout(30, 0);
    server_->set_write_timeout(30, 0);
    server_->set_tcp_nodelay(true);
    // Which connections are answering a request, so stop() closes only idle
    // ones at once. The logger runs once the answer is written.
    OpenConnections* open = &connections_;
    server_->set_pre_routing_handler([open](const httplib::Request& rq, httplib::Response&) {
        open->requestStarted(rq.ssl);
        return httplib::Server::HandlerResponse::Unhandled;
    });
    server_->set_logger([open](const httplib::Request& rq, const httplib::Response&) { open->requestFinished(rq.ssl); });
    auto handler = [dispatch](const httplib::Request& rq, httplib::Response& rs) { Serve(dispatch, rq, rs); };
    server_->Get(".*", handler);
    server_->Post(".*", handler);
    server_->Put(".*", handler);
    server_->Patch(".*", handler);
    server_->Delete(".*", handler);
    server_->Options(".*", handler);
    // SO_REUSEADDR only: cpp-httplib's default adds SO_REUSEPORT, which let a
    // second emulator listen on the port of a running one, each answering
    // half of the connections.
    server_->set_socket_options([](int sock) {
        int yes = 1;
        ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    errno = 0;
    if (port == 0) {
        port_ = server_->bind_to_any_port(host.c_str());
    } else {
        port_ = server_->bind_to_port(host.c_str(), port) ? port : -1;
    }
    if (port_ <= 0) {
        error =
            "cannot listen on " + host + ":" + std::to_string(port) + (errno == EADDRINUSE ? ": address in use" : "");
        server_.reset();
        port_ = 0;
        return false;
    }
    httplib::SSLServer* s = server_.get();
    thread_ = std::thread([s] { s->listen_after_bind(); });
    // stop() is a no-op until the accept loop runs, so a quick start/stop
    // would leave the loop running forever: wait for it here.
    for (int i = 0; i < 5000 && !s->is_running(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return true;
}

void HttpServer::stop() {
    // Closing the listener ends the accept loop, which then joins the
    // workers; a worker waits on its idle connection for the next request
    // until the keep-alive timeout, unless the connection is shut down.
    if (server_) server_->stop();
    connections_.close();
    if (thread_.joinable()) thread_.join();
    server_.reset();
}

}  // namespace ocwemu
