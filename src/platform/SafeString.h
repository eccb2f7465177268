#pragma once
#include <openssl/crypto.h>

#include <cstddef>
#include <string>
#include <vector>

namespace OracleCloudSDKWrapper {

// Holds secret text (pass phrases, PEM key text). Every buffer it ever owned is
// wiped with OPENSSL_cleanse before it is released, including the buffers left
// behind when the text grows, so a secret does not linger in freed heap memory.
// There is deliberately no implicit conversion to std::string: copying the
// secret into an ordinary string must be a visible decision (str()).
class SafeString {
public:
    SafeString();
    SafeString(const char* text);  // NOLINT: implicit so that literals read naturally in tests
    SafeString(const char* data, size_t size);
    explicit SafeString(const std::string& text);
    SafeString(const SafeString& other);
    SafeString(SafeString&& other) noexcept;
    SafeString& operator=(const SafeString& other);
    SafeString& operator=(SafeString&& other) noexcept;
    ~SafeString();

    // Takes the text of `text` and wipes the caller's string afterwards, for
    // secrets that arrive in an ordinary string (a file just read, an argument).
    static SafeString takeFrom(std::string& text);

    void assign(const char* data, size_t size);
    void append(const char* data, size_t size);
    void clear();  // wipes and empties
    void reserve(size_t capacity);

    const char* c_str() const { return m_buf.data(); }  // always NUL-terminated
    const char* data() const { return m_buf.data(); }
    size_t size() const { return m_buf.size() - 1; }
    bool empty() const { return size() == 0; }

    // Compares in time independent of where the texts differ.
    bool equals(const SafeString& other) const;
    bool operator==(const SafeString& other) const { return equals(other); }
    bool operator!=(const SafeString& other) const { return !equals(other); }

    // An ordinary copy of the text; the caller becomes responsible for it.
    std::string str() const { return std::string(data(), size()); }

private:
    template <typename T>
    struct WipingAllocator {
        using value_type = T;
        WipingAllocator() = default;
        template <typename U>
        WipingAllocator(const WipingAllocator<U>&) {}
        T* allocate(size_t n) { return static_cast<T*>(::operator new(n * sizeof(T))); }
        void deallocate(T* p, size_t n)
        {
            OPENSSL_cleanse(p, n * sizeof(T));
            ::operator delete(p);
        }
        template <typename U>
        bool operator==(const WipingAllocator<U>&) const { return true; }
        template <typename U>
        bool operator!=(const WipingAllocator<U>&) const { return false; }
    };
    std::vector<char, WipingAllocator<char>> m_buf;  // text followed by one NUL
};

}  // namespace OracleCloudSDKWrapper
