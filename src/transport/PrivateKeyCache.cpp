#include "transport/PrivateKeyCache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace OracleCloudSDKWrapper {

namespace {

std::string errnoText(int err)
{
    char buf[256];
    // GNU strerror_r: returns the message, which may or may not live in buf.
    return std::string(strerror_r(err, buf, sizeof(buf)));
}

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : m_fd(fd) {}
    ~FileDescriptor()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return m_fd; }

private:
    int m_fd;
};

// Reads the rest of the file straight into wiped memory, so the key text never
// sits in an ordinary heap buffer.
bool readAll(int fd, off_t sizeHint, SafeString& out, std::string& error)
{
    out.clear();
    if (sizeHint > 0) {
        out.reserve(static_cast<size_t>(sizeHint));
    }
    char buf[4096];
    bool ok = true;
    for (;;) {
        ssize_t n = ::read(fd, buf, sizeof(buf));
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            error = errnoText(errno);
            ok = false;
            break;
        }
        if (n == 0) {
            break;
        }
        out.append(buf, static_cast<size_t>(n));
    }
    OPENSSL_cleanse(buf, sizeof(buf));
    return ok;
}

}  // namespace

bool PrivateKeyCache::FileIdentity::operator==(const FileIdentity& o) const
{
    return device == o.device && inode == o.inode && size == o.size && modified.tv_sec == o.modified.tv_sec &&
           modified.tv_nsec == o.modified.tv_nsec && changed.tv_sec == o.changed.tv_sec &&
           changed.tv_nsec == o.changed.tv_nsec;
}

PrivateKeyCache& PrivateKeyCache::instance()
{
    static PrivateKeyCache cache;
    return cache;
}

std::shared_ptr<const RsaPrivateKey> PrivateKeyCache::get(const std::string& path, const SafeString& passphrase,
                                                          std::string& readError)
{
    FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.get() < 0) {
        readError = errnoText(errno);
        return nullptr;
    }
    struct stat st;
    if (::fstat(fd.get(), &st) != 0) {
        readError = errnoText(errno);
        return nullptr;
    }
    FileIdentity identity;
    identity.device = st.st_dev;
    identity.inode = st.st_ino;
    identity.size = st.st_size;
    identity.modified = st.st_mtim;
    identity.changed = st.st_ctim;

    if (auto key = find(path, passphrase, identity)) {
        return key;
    }

    SafeString pem;
    if (!readAll(fd.get(), st.st_size, pem, readError)) {
        return nullptr;
    }
    std::shared_ptr<const RsaPrivateKey> key = RsaPrivateKey::fromPEM(pem, passphrase);  // may throw
    store(path, passphrase, identity, key);
    return key;
}

std::shared_ptr<const RsaPrivateKey> PrivateKeyCache::find(const std::string& path, const SafeString& passphrase,
                                                           const FileIdentity& identity)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_enabled) {
        return nullptr;
    }
    for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
        if (it->path == path && it->passphrase == passphrase) {
            if (!(it->identity == identity)) {
                m_entries.erase(it);  // the file changed: the old key must not be used again
                return nullptr;
            }
            m_entries.splice(m_entries.begin(), m_entries, it);
            ++m_stats.hits;
            return m_entries.front().key;
        }
    }
    return nullptr;
}

void PrivateKeyCache::store(const std::string& path, const SafeString& passphrase, const FileIdentity& identity,
                            std::shared_ptr<const RsaPrivateKey> key)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_stats.loads;
    if (!m_enabled) {
        return;
    }
    for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
        if (it->path == path && it->passphrase == passphrase) {
            m_entries.erase(it);  // another thread loaded the same file meanwhile; keep the newest
            break;
        }
    }
    m_entries.push_front(Entry{path, passphrase, identity, std::move(key)});
    while (m_entries.size() > MaxEntries) {
        m_entries.pop_back();
    }
}

void PrivateKeyCache::setEnabled(bool enabled)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_enabled = enabled;
    m_entries.clear();
}

void PrivateKeyCache::clear()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
    m_stats = Stats();
}

PrivateKeyCache::Stats PrivateKeyCache::stats() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_stats;
}

}  // namespace OracleCloudSDKWrapper
