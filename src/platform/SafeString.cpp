#include "platform/SafeString.h"

#include <cstring>

namespace OracleCloudSDKWrapper {

SafeString::SafeString() : m_buf(1, '\0') {}

SafeString::SafeString(const char* text) : SafeString()
{
    if (text != nullptr) {
        assign(text, std::strlen(text));
    }
}

SafeString::SafeString(const char* data, size_t size) : SafeString() { assign(data, size); }

SafeString::SafeString(const std::string& text) : SafeString() { assign(text.data(), text.size()); }

SafeString::SafeString(const SafeString& other) : SafeString() { assign(other.data(), other.size()); }

SafeString::SafeString(SafeString&& other) noexcept : m_buf(std::move(other.m_buf))
{
    // A moved-from vector is empty; restore the invariant (one NUL) without throwing
    // from a noexcept context: a one-byte allocation failure is treated as fatal.
    other.m_buf.assign(1, '\0');
}

SafeString& SafeString::operator=(const SafeString& other)
{
    if (this != &other) {
        assign(other.data(), other.size());
    }
    return *this;
}

SafeString& SafeString::operator=(SafeString&& other) noexcept
{
    if (this != &other) {
        m_buf.swap(other.m_buf);
        other.clear();
    }
    return *this;
}

SafeString::~SafeString() = default;  // the allocator wipes the buffer

SafeString SafeString::takeFrom(std::string& text)
{
    SafeString result(text.data(), text.size());
    if (!text.empty()) {
        OPENSSL_cleanse(&text[0], text.size());
    }
    text.clear();
    return result;
}

void SafeString::assign(const char* data, size_t size)
{
    clear();
    append(data, size);
}

void SafeString::append(const char* data, size_t size)
{
    if (size == 0) {
        return;
    }
    // Grow through a fresh buffer so the old one goes back through the wiping
    // allocator instead of being left to the vector's growth policy.
    size_t oldSize = this->size();
    if (oldSize + size + 1 > m_buf.capacity()) {
        std::vector<char, WipingAllocator<char>> bigger;
        bigger.reserve(oldSize + size + 1);
        bigger.insert(bigger.end(), m_buf.begin(), m_buf.begin() + oldSize);
        m_buf.swap(bigger);
    } else {
        m_buf.pop_back();
    }
    m_buf.insert(m_buf.end(), data, data + size);
    m_buf.push_back('\0');
}

void SafeString::reserve(size_t capacity)
{
    if (capacity + 1 <= m_buf.capacity()) {
        return;
    }
    std::vector<char, WipingAllocator<char>> bigger;
    bigger.reserve(capacity + 1);
    bigger.insert(bigger.end(), m_buf.begin(), m_buf.end());
    m_buf.swap(bigger);
}

void SafeString::clear()
{
    OPENSSL_cleanse(m_buf.data(), m_buf.size());
    m_buf.assign(1, '\0');
}

bool SafeString::equals(const SafeString& other) const
{
    if (size() != other.size()) {
        return false;
    }
    return CRYPTO_memcmp(data(), other.data(), size()) == 0;
}

}  // namespace OracleCloudSDKWrapper
