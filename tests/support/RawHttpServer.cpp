#include "RawHttpServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

#include "common/TlsMaterial.h"

namespace ocwtest {

std::vector<std::string> RawRequest::headerNames() const {
    std::vector<std::string> names;
    for (const std::string& line : headerLines) names.push_back(line.substr(0, line.find(':')));
    return names;
}

RawHttpServer::RawHttpServer(std::vector<std::string> answers, const std::string& tlsDir)
    : answers_(std::move(answers)) {
    if (!tlsDir.empty()) {
        ocwemu::TlsMaterial m = ocwemu::EnsureTlsMaterial(tlsDir, {"localhost"}, {"127.0.0.1"});
        caFile_ = m.caCertFile;
        ctx_ = SSL_CTX_new(TLS_server_method());
        if (ctx_ == nullptr || SSL_CTX_use_certificate_chain_file(ctx_, m.serverCertFile.c_str()) != 1 ||
            SSL_CTX_use_PrivateKey_file(ctx_, m.serverKeyFile.c_str(), SSL_FILETYPE_PEM) != 1) {
            throw std::runtime_error("raw server TLS setup failed");
        }
    }
    listen_ = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof(addr);
    if (listen_ < 0 || ::bind(listen_, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0 ||
        ::listen(listen_, 16) != 0 || ::getsockname(listen_, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
        throw std::runtime_error("raw server cannot listen");
    }
    port_ = ntohs(addr.sin_port);
    thread_ = std::thread([this] { Serve(); });
}

RawHttpServer::~RawHttpServer() {
    stop_ = true;
    thread_.join();
    ::close(listen_);
    if (ctx_ != nullptr) SSL_CTX_free(ctx_);
}

std::string RawHttpServer::baseUrl() const {
    return (ctx_ ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(port_);
}

std::vector<RawRequest> RawHttpServer::requests() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

void RawHttpServer::Serve() {
    for (size_t n = 0; !stop_;) {
        pollfd p{listen_, POLLIN, 0};
        if (::poll(&p, 1, 50) <= 0) continue;
        int fd = ::accept(listen_, nullptr, nullptr);
        if (fd < 0) continue;
        Handle(fd, answers_.empty() ? std::string() : answers_[std::min(n++, answers_.size() - 1)]);
        ::shutdown(fd, SHUT_RDWR);
        ::close(fd);
    }
}

void RawHttpServer::Handle(int fd, const std::string& answer) {
    timeval timeout{5, 0};  // a client that never finishes its request must not hold the test
    ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
    SSL* ssl = nullptr;
    if (ctx_ != nullptr) {
        ssl = SSL_new(ctx_);
        SSL_set_fd(ssl, fd);
        if (SSL_accept(ssl) != 1) {
            SSL_free(ssl);
            ERR_clear_error();
            return;
        }
    }
    auto readSome = [&](char* buf, int n) { return ssl ? SSL_read(ssl, buf, n) : static_cast<int>(::read(fd, buf, n)); };
    std::string data;
    char buf[4096];
    size_t headEnd = std::string::npos;
    while (headEnd == std::string::npos) {
        int n = readSome(buf, sizeof(buf));
        if (n <= 0) break;
        data.append(buf, static_cast<size_t>(n));
        headEnd = data.find("\r\n\r\n");
    }
    if (headEnd != std::string::npos) {
        RawRequest req;
        const std::string head = data.substr(0, headEnd);
        size_t pos = head.find("\r\n");
        req.requestLine = head.substr(0, pos);
        size_t contentLength = 0;
        while (pos != std::string::npos) {
            size_t next = head.find("\r\n", pos + 2);
            std::string line = head.substr(pos + 2, next == std::string::npos ? std::string::npos : next - pos - 2);
            if (line.size() > 15 && strncasecmp(line.c_str(), "content-length:", 15) == 0) {
                contentLength = std::stoul(line.substr(15));
            }
            req.headerLines.push_back(line);
            pos = next;
        }
        req.body = data.substr(headEnd + 4);
        while (req.body.size() < contentLength) {
            int n = readSome(buf, sizeof(buf));
            if (n <= 0) break;
            req.body.append(buf, static_cast<size_t>(n));
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            requests_.push_back(std::move(req));
        }
        if (ssl) {
            SSL_write(ssl, answer.data(), static_cast<int>(answer.size()));
        } else {
            (void)!::send(fd, answer.data(), answer.size(), MSG_NOSIGNAL);
        }
    }
    if (ssl) {
        SSL_shutdown(ssl);
        SSL_free(ssl);
    }
}

}  // namespace ocwtest
