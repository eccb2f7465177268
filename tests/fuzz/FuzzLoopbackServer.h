#pragma once
// A plain HTTP server on a loopback port for the targets that feed server
// text through the real HTTP client. Each connection gets the current answer
// and is closed after it, so no input can make the client wait.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>

#include "FuzzSupport.h"

namespace ocwfuzz {

// One answer per connection: reads the request head, writes the current
// answer, closes. Lives for the whole process.
class LoopbackServer {
public:
    LoopbackServer() {
        m_listen = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof(addr);
        if (m_listen < 0 || ::bind(m_listen, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0 ||
            ::listen(m_listen, 16) != 0 || ::getsockname(m_listen, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
            Fail(__FILE__, __LINE__, "loopback listener", std::strerror(errno));
        }
        m_port = ntohs(addr.sin_port);
        std::thread([this] { Serve(); }).detach();
    }

    unsigned short port() const { return m_port; }

    void SetAnswer(std::string answer) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_answer = std::move(answer);
    }

    // The head (and whatever came with it) of the last request served.
    std::string LastRequest() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_request;
    }

private:
    void Serve() {
        for (;;) {
            int fd = ::accept(m_listen, nullptr, nullptr);
            if (fd < 0) continue;
            std::string request;
            char buf[4096];
            while (request.find("\r\n\r\n") == std::string::npos) {
                ssize_t n = ::recv(fd, buf, sizeof(buf), 0);
                if (n <= 0) break;
                request.append(buf, static_cast<size_t>(n));
            }
            std::string answer;
            {
                std::lock_guard<std::mutex> lock(m_mutex);
                answer = m_answer;
                m_request = request;
            }
            size_t sent = 0;
            while (sent < answer.size()) {
                ssize_t n = ::send(fd, answer.data() + sent, answer.size() - sent, MSG_NOSIGNAL);
                if (n <= 0) break;
                sent += static_cast<size_t>(n);
            }
            ::shutdown(fd, SHUT_RDWR);
            ::close(fd);
        }
    }

    int m_listen = -1;
    unsigned short m_port = 0;
    std::mutex m_mutex;
    std::string m_answer;
    std::string m_request;
};

}  // namespace ocwfuzz
