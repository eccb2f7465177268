#pragma once
#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "platform/RsaSigner.h"
#include "platform/SafeString.h"

namespace OracleCloudSDKWrapper {

// Process-wide cache of decoded private keys, one entry per (key file, pass
// phrase). Each lookup opens the file and compares its identity (device,
// inode, size, modification and change times) with the cached one, so a key
// file that is replaced or rewritten takes effect at the very next signature,
// while an unchanged one is neither re-read nor re-decrypted.
//
// Thread-safe: facades on many threads share it. Decoding happens outside the
// lock, so a slow decryption on one thread does not stall signatures of others.
// Failed decodes are not cached; the entry count is bounded (least recently
// used entries go first) and evicted pass phrases are wiped.
class PrivateKeyCache {
public:
    static constexpr size_t MaxEntries = 32;

    struct Stats {
        uint64_t hits = 0;   // identity unchanged: cached key used
        uint64_t loads = 0;  // file read and key decoded
    };

    static PrivateKeyCache& instance();

    // The key of `path` decoded with `passphrase`.
    // Returns null when the file cannot be opened or read, with the OS error
    // text (strerror) in `readError`. Throws PlatformException (from
    // RsaPrivateKey::fromPEM) when the text does not decode to an RSA key.
    std::shared_ptr<const RsaPrivateKey> get(const std::string& path, const SafeString& passphrase,
                                             std::string& readError);

    // Off: every call reads and decodes the file (the behaviour without a
    // cache); used to measure what the cache saves. Switching clears entries.
    void setEnabled(bool enabled);
    void clear();
    Stats stats() const;

private:
    struct FileIdentity {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0;
        struct timespec modified {};
        struct timespec changed {};
        bool operator==(const FileIdentity& o) const;
    };
    struct Entry {
        std::string path;
        SafeString passphrase;
        FileIdentity identity;
        std::shared_ptr<const RsaPrivateKey> key;
    };

    PrivateKeyCache() = default;
    std::shared_ptr<const RsaPrivateKey> find(const std::string& path, const SafeString& passphrase,
                                              const FileIdentity& identity);
    void store(const std::string& path, const SafeString& passphrase, const FileIdentity& identity,
               std::shared_ptr<const RsaPrivateKey> key);

    mutable std::mutex m_mutex;
    std::list<Entry> m_entries;  // most recently used first
    bool m_enabled = true;
    Stats m_stats;
};

}  // namespace OracleCloudSDKWrapper
