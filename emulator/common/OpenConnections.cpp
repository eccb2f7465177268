#include "common/OpenConnections.h"

#include <openssl/ssl.h>
#include <sys/socket.h>

namespace ocwemu {

int OpenConnections::CtxIndex() {
    static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

int OpenConnections::SslIndex() {
    // OnFree runs for every SSL object of the process that is freed; only
    // those carrying a pointer here are ours.
    static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, &OpenConnections::OnFree);
    return index;
}

void OpenConnections::watch(SSL_CTX* ctx) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        closing_ = false;
    }
    SslIndex();  // registers OnFree before the first connection
    SSL_CTX_set_ex_data(ctx, CtxIndex(), this);
    SSL_CTX_set_info_callback(ctx, &OpenConnections::OnInfo);
}

void OpenConnections::OnInfo(const SSL* ssl, int where, int /*ret*/) {
    // Signalled when SSL_accept begins, before anything is read from the client.
    if (!(where & SSL_CB_HANDSHAKE_START)) return;
    auto* self = static_cast<OpenConnections*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(ssl), CtxIndex()));
    if (self) self->add(const_cast<SSL*>(ssl));
}

void OpenConnections::OnFree(void* parent, void* ptr, CRYPTO_EX_DATA*, int, long, void*) {
    if (ptr) static_cast<OpenConnections*>(ptr)->remove(static_cast<const SSL*>(parent));
}

void OpenConnections::add(SSL* ssl) {
    const int fd = SSL_get_fd(ssl);
    if (fd < 0) return;
    std::lock_guard<std::mutex> lock(mutex_);
    SSL_set_ex_data(ssl, SslIndex(), this);
    connections_[ssl].fd = fd;  // a renegotiation finds it there already
    if (closing_) ::shutdown(fd, SHUT_RDWR);
}

void OpenConnections::remove(const SSL* ssl) {
    std::lock_guard<std::mutex> lock(mutex_);
    connections_.erase(ssl);
}

void OpenConnections::requestStarted(const SSL* ssl) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = connections_.find(ssl);
    if (it != connections_.end()) it->second.busy = true;
}

void OpenConnections::requestFinished(const SSL* ssl) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = connections_.find(ssl);
    if (it == connections_.end()) return;
    it->second.busy = false;
    if (closing_) ::shutdown(it->second.fd, SHUT_RDWR);
}

void OpenConnections::close() {
    std::lock_guard<std::mutex> lock(mutex_);
    closing_ = true;
    for (const auto& c : connections_)
        if (!c.second.busy) ::shutdown(c.second.fd, SHUT_RDWR);
}

std::size_t OpenConnections::size() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return connections_.size();
}

}  // namespace ocwemu
