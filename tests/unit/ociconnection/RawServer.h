#pragma once
// A minimal HTTP/1.1 server on 127.0.0.1 that keeps what cpp-httplib cannot
// give: the request's header lines exactly in the order they arrived. With
// TLS it presents a certificate issued by a private CA (caFile()); without TLS
// it serves as a stand-in proxy that records the CONNECT request and refuses it.
// One request per connection; the answer closes the connection.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "common/TlsMaterial.h"

namespace ocw_test {

struct RawRequest {
    std::string requestLine;
    std::vector<std::string> headerLines;  // "Name: value", arrival order
    std::string body;

    std::vector<std::string> headerNames() const
    {
        std::vector<std::string> names;
        for (const auto& l : headerLines) {
            names.push_back(l.substr(0, l.find(':')));
        }
        return names;
    }
};

class RawServer {
public:
    // tlsDir empty: plain TCP.
    RawServer(const std::string& tlsDir, std::string answer)
        : m_answer(std::move(answer))
    {
        if (!tlsDir.empty()) {
            ocwemu::TlsMaterial m = ocwemu::EnsureTlsMaterial(tlsDir, {"localhost"}, {"127.0.0.1"});
            m_caFile = m.caCertFile;
            m_ctx = SSL_CTX_new(TLS_server_method());
            if (m_ctx == nullptr || SSL_CTX_use_certificate_chain_file(m_ctx, m.serverCertFile.c_str()) != 1 ||
                SSL_CTX_use_PrivateKey_file(m_ctx, m.serverKeyFile.c_str(), SSL_FILETYPE_PEM) != 1) {
                throw std::runtime_error("raw server TLS setup failed");
            }
        }
        m_listen = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof(addr);
        if (m_listen < 0 || ::bind(m_listen, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0 ||
            ::listen(m_listen, 16) != 0 || ::getsockname(m_listen, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
            throw std::runtime_error("raw server cannot listen");
        }
        m_port = ntohs(addr.sin_port);
        m_thread = std::thread([this] { serve(); });
    }
    ~RawServer()
    {
        m_stop = true;
        m_thread.join();
        ::close(m_listen);
        if (m_ctx != nullptr) {
            SSL_CTX_free(m_ctx);
        }
    }

    int port() const { return m_port; }
    std::string baseUrl() const { return (m_ctx ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(m_port); }
    const std::string& caFile() const { return m_caFile; }
    std::vector<RawRequest> requests() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_requests;
    }

private:
    void serve()
    {
        while (!m_stop) {
            pollfd p{m_listen, POLLIN, 0};
            if (::poll(&p, 1, 50) <= 0) {
                continue;
            }
            int fd = ::accept(m_listen, nullptr, nullptr);
            if (fd < 0) {
                continue;
            }
            handle(fd);
            ::close(fd);
        }
    }

    void handle(int fd)
    {
        timeval tv{5, 0};
        ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof(tv));
        SSL* ssl = nullptr;
        if (m_ctx != nullptr) {
            ssl = SSL_new(m_ctx);
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
            if (n <= 0) {
                break;
            }
            data.append(buf, static_cast<size_t>(n));
            headEnd = data.find("\r\n\r\n");
        }
        if (headEnd != std::string::npos) {
            RawRequest req;
            std::string head = data.substr(0, headEnd);
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
                if (n <= 0) {
                    break;
                }
                req.body.append(buf, static_cast<size_t>(n));
            }
            {
                std::lock_guard<std::mutex> lock(m_mutex);
                m_requests.push_back(req);
            }
            if (ssl) {
                SSL_write(ssl, m_answer.data(), static_cast<int>(m_answer.size()));
            } else {
                (void)!::write(fd, m_answer.data(), m_answer.size());
            }
        }
        if (ssl) {
            SSL_shutdown(ssl);
            SSL_free(ssl);
        }
    }

    std::string m_answer;
    std::string m_caFile;
    SSL_CTX* m_ctx = nullptr;
    int m_listen = -1;
    int m_port = 0;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
    mutable std::mutex m_mutex;
    std::vector<RawRequest> m_requests;
};

}  // namespace ocw_test
