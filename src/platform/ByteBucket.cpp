#include "platform/ByteBucket.h"

namespace OracleCloudSDKWrapper {

void ByteBucket::append(const void* data, size_t size)
{
    if (size == 0) {
        return;
    }
    const unsigned char* p = static_cast<const unsigned char*>(data);
    m_bytes.insert(m_bytes.end(), p, p + size);
}

std::string ByteBucket::toString() const
{
    return std::string(reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size());
}

std::string ByteBucket::toHex() const
{
    static const char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(m_bytes.size() * 2);
    for (unsigned char b : m_bytes) {
        out.push_back(digits[b >> 4]);
        out.push_back(digits[b & 0x0f]);
    }
    return out;
}

}  // namespace OracleCloudSDKWrapper
