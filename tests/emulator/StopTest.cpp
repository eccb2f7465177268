// Stopping: stop() (and so SIGTERM) must not wait for clients that keep a
// connection open and idle, while a client that is using its connection keeps
// it across pauses and gets the answer to a request already in flight.
//
// The client here is a bare socket with OpenSSL on top, so the test sees
// exactly when the server closes the connection.
#include "EmulatorClient.h"
#include "EmulatorFixture.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>

namespace ocwtest {
namespace {

using Clock = std::chrono::steady_clock;

int ConnectTcp(int port) {
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
        ::close(fd);
        fd = -1;
    }
    return fd;
}

// True when the peer closes `fd` within `ms`: the stream ends (or is reset),
// whatever bytes come before the end. `read` reads once (>0 bytes, 0 end,
// <0 error).
template <class Read>
bool ClosedWithin(int fd, int ms, Read read) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd p{fd, POLLIN, 0};
        if (left <= 0 || ::poll(&p, 1, static_cast<int>(left)) <= 0) return false;
        if (read() <= 0) return true;
    }
}

// One TLS connection to the emulator, verified against its CA.
class TlsConnection {
public:
    TlsConnection(const ocwemu::EmulatorInfo& info) : info_(info) {
        ctx_ = SSL_CTX_new(TLS_client_method());
        SSL_CTX_load_verify_locations(ctx_, info.caFile.c_str(), nullptr);
        SSL_CTX_set_verify(ctx_, SSL_VERIFY_PEER, nullptr);
        fd_ = ConnectTcp(info.port);
        if (fd_ < 0) return;
        ssl_ = SSL_new(ctx_);
        SSL_set_fd(ssl_, fd_);
        SSL_set1_host(ssl_, "127.0.0.1");
        connected_ = SSL_connect(ssl_) == 1;
    }
    ~TlsConnection() {
        if (ssl_) SSL_free(ssl_);
        if (fd_ >= 0) ::close(fd_);
        SSL_CTX_free(ctx_);
    }
    bool connected() const { return connected_; }

    bool send(const std::string& method, const std::string& path) {
        const std::string req = method + " " + path + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(info_.port) +
                                "\r\nConnection: keep-alive\r\n\r\n";
        return SSL_write(ssl_, req.data(), static_cast<int>(req.size())) == static_cast<int>(req.size());
    }
    // One whole answer (head and a body of content-length bytes); empty when
    // the connection ends first.
    std::string readResponse() {
        std::string in;
        size_t headEnd = std::string::npos;
        size_t want = std::string::npos;
        char buf[4096];
        while (want == std::string::npos || in.size() < want) {
            int n = SSL_read(ssl_, buf, sizeof buf);
            if (n <= 0) return {};
            in.append(buf, static_cast<size_t>(n));
            if (headEnd == std::string::npos && (headEnd = in.find("\r\n\r\n")) != std::string::npos) {
                size_t cl = in.find("Content-Length: ");
                size_t len = cl == std::string::npos ? 0 : std::stoul(in.substr(cl + 16));
                want = headEnd + 4 + len;
            }
        }
        return in;
    }
    bool closedWithin(int ms) {
        char c;
        return ClosedWithin(fd_, ms, [&] { return SSL_read(ssl_, &c, 1); });
    }

private:
    const ocwemu::EmulatorInfo info_;
    SSL_CTX* ctx_ = nullptr;
    SSL* ssl_ = nullptr;
    int fd_ = -1;
    bool connected_ = false;
};

class EmulatorStop : public ::testing::Test {
protected:
    void SetUp() override {
        ocwemu::EmulatorOptions o;
        o.seed = "empty";
        emu_ = std::make_unique<ocwemu::Emulator>(o);
        ASSERT_TRUE(emu_->start()) << emu_->lastError();
    }
    // Runs stop() on another thread; the future gives how long it took.
    std::future<double> stopInBackground() {
        return std::async(std::launch::async, [this] {
            const auto t0 = Clock::now();
            emu_->stop();
            return std::chrono::duration<double>(Clock::now() - t0).count();
        });
    }
    std::unique_ptr<ocwemu::Emulator> emu_;
};

TEST_F(EmulatorStop, ClosesAnIdleKeepAliveConnectionAtOnce) {
    TlsConnection c(emu_->info());
    ASSERT_TRUE(c.connected());
    ASSERT_TRUE(c.send("GET", "/_emulator/info"));
    EXPECT_EQ(c.readResponse().rfind("HTTP/1.1 200", 0), 0u);
    // Keep-alive holds across a pause while the server runs.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    ASSERT_TRUE(c.send("GET", "/_emulator/info"));
    EXPECT_EQ(c.readResponse().rfind("HTTP/1.1 200", 0), 0u) << "the same connection serves a second request";
    ASSERT_FALSE(c.closedWithin(200)) << "still open while the server runs";

    std::future<double> stopped = stopInBackground();
    EXPECT_TRUE(c.closedWithin(2000)) << "the server closes the idle connection instead of waiting for its timeout";
    ASSERT_EQ(stopped.wait_for(std::chrono::seconds(4)), std::future_status::ready);
    EXPECT_LT(stopped.get(), 3.0);
}

TEST_F(EmulatorStop, ClosesAConnectionThatNeverStartedTls) {
    const int fd = ConnectTcp(emu_->info().port);
    ASSERT_GE(fd, 0);
    // Let the server take the connection and wait for the handshake.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::future<double> stopped = stopInBackground();
    char c;
    EXPECT_TRUE(ClosedWithin(fd, 2000, [&] { return ::recv(fd, &c, 1, 0); }));
    ASSERT_EQ(stopped.wait_for(std::chrono::seconds(4)), std::future_status::ready);
    EXPECT_LT(stopped.get(), 3.0);
    ::close(fd);
}

TEST_F(EmulatorStop, AnswersTheRequestInFlightBeforeClosing) {
    ocwemu::FaultRule slow;
    slow.action = "delay";
    slow.pathPrefix = "/20160918/slow";
    slow.delayMs = 500;
    emu_->faults().add(slow);
    TlsConnection c(emu_->info());
    ASSERT_TRUE(c.connected());
    ASSERT_TRUE(c.send("GET", "/20160918/slow"));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // the handler is waiting now
    std::future<double> stopped = stopInBackground();
    const std::string answer = c.readResponse();
    EXPECT_EQ(answer.rfind("HTTP/1.1 401", 0), 0u) << "a whole answer (unsigned request), not a cut connection";
    EXPECT_NE(answer.find("NotAuthenticated"), std::string::npos);
    EXPECT_TRUE(c.closedWithin(2000)) << "and then closes it";
    ASSERT_EQ(stopped.wait_for(std::chrono::seconds(4)), std::future_status::ready);
    EXPECT_LT(stopped.get(), 3.0);
}

}  // namespace
}  // namespace ocwtest
