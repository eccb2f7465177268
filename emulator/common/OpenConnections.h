#pragma once
// The TLS connections a server has accepted and not yet closed, so that
// stopping does not have to wait for clients that keep a connection open.
//
// cpp-httplib keeps its accepted sockets to itself and, on stop, waits for
// each idle keep-alive connection to time out (and for a connection that has
// not sent its TLS handshake yet, for the read timeout). OpenSSL's hooks on
// the server's SSL_CTX show each connection instead: it is known from the
// start of its handshake until its SSL object is freed, which cpp-httplib
// does before it closes the socket, so a known descriptor is always still
// open and never one that was closed and handed out again.
//
// The server reports when it starts answering a request on a connection and
// when the answer is written, so close() can tell idle connections (shut down
// at once) from busy ones (shut down as soon as their answer is out: cutting
// the socket earlier would lose the answer). Thread-safe.
#include <openssl/types.h>

#include <map>
#include <mutex>

namespace ocwemu {

class OpenConnections {
public:
    OpenConnections() = default;
    OpenConnections(const OpenConnections&) = delete;
    OpenConnections& operator=(const OpenConnections&) = delete;

    // Follows the connections made through `ctx` from now on; this object
    // must outlive every connection of `ctx`. Forgets an earlier closeReading().
    void watch(SSL_CTX* ctx);
    // A request read from `ssl`'s connection is being answered / its answer
    // has been written.
    void requestStarted(const SSL* ssl);
    void requestFinished(const SSL* ssl);
    // Shuts down every idle connection now, every busy one once its answer
    // is written, and any that starts its handshake later (accepted just
    // before the listener closed). The server's worker then sees the end of
    // the stream and closes the connection. A request that is still arriving,
    // or read but not yet reported as started, gets no answer.
    void close();
    // Connections open now.
    std::size_t size() const;

private:
    // Where a pointer to this object is kept in the ex_data of the SSL_CTX
    // and of each SSL.
    static int CtxIndex();
    static int SslIndex();
    static void OnInfo(const SSL* ssl, int where, int ret);
    static void OnFree(void* parent, void* ptr, CRYPTO_EX_DATA* ad, int idx, long argl, void* argp);
    void add(SSL* ssl);
    void remove(const SSL* ssl);

    mutable std::mutex mutex_;
    struct Connection {
        int fd = -1;
        bool busy = false;
    };
    std::map<const SSL*, Connection> connections_;
    bool closing_ = false;
};

}  // namespace ocwemu
