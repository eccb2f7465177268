#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace OracleCloudSDKWrapper {

// A growable buffer of raw bytes (digests, signatures). Unlike SafeString it
// does not wipe itself: it carries public values only.
class ByteBucket {
public:
    ByteBucket() = default;
    explicit ByteBucket(size_t size) : m_bytes(size, 0) {}
    ByteBucket(const void* data, size_t size) { append(data, size); }

    void append(const void* data, size_t size);
    void resize(size_t size) { m_bytes.resize(size, 0); }
    void clear() { m_bytes.clear(); }

    unsigned char* data() { return m_bytes.data(); }
    const unsigned char* data() const { return m_bytes.data(); }
    size_t size() const { return m_bytes.size(); }
    bool empty() const { return m_bytes.empty(); }

    // The bytes as a std::string (binary, may contain NULs).
    std::string toString() const;
    // Lower-case hexadecimal, two digits a byte; for logs and tests.
    std::string toHex() const;

    bool operator==(const ByteBucket& other) const { return m_bytes == other.m_bytes; }
    bool operator!=(const ByteBucket& other) const { return m_bytes != other.m_bytes; }

private:
    std::vector<unsigned char> m_bytes;
};

}  // namespace OracleCloudSDKWrapper
