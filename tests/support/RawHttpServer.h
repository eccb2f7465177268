#pragma once
// A minimal HTTP/1.1 server on 127.0.0.1 for what a server library cannot
// give or would not write: it records each request's header lines exactly in
// the order they arrived, and answers with scripted bytes, byte for byte. The
// n-th connection gets the n-th answer (the last one repeats), one request per
// connection, and is closed after it. With a TLS directory it speaks HTTPS with
// a certificate from a private CA (caFile()); without one it is plain HTTP,
// which also makes it a stand-in proxy.
#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

typedef struct ssl_ctx_st SSL_CTX;

namespace ocwtest {

struct RawRequest {
    std::string requestLine;               // "GET /x HTTP/1.1"
    std::vector<std::string> headerLines;  // "Name: value", in arrival order
    std::string body;

    std::vector<std::string> headerNames() const;
};

class RawHttpServer {
public:
    explicit RawHttpServer(std::vector<std::string> answers, const std::string& tlsDir = std::string());
    ~RawHttpServer();
    RawHttpServer(const RawHttpServer&) = delete;
    RawHttpServer& operator=(const RawHttpServer&) = delete;

    int port() const { return port_; }
    std::string baseUrl() const;
    const std::string& caFile() const { return caFile_; }
    std::vector<RawRequest> requests() const;

private:
    void Serve();
    void Handle(int fd, const std::string& answer);

    std::vector<std::string> answers_;
    std::string caFile_;
    SSL_CTX* ctx_ = nullptr;
    int listen_ = -1;
    int port_ = 0;
    std::atomic<bool> stop_{false};
    std::thread thread_;
    mutable std::mutex mutex_;
    std::vector<RawRequest> requests_;
};

}  // namespace ocwtest
