#include "common/Base64.h"

#include <cstring>

namespace ocwemu {

static const char kB64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string Base64Encode(const std::string& bytes) {
    std::string out;
    size_t i = 0;
    const auto* b = reinterpret_cast<const unsigned char*>(bytes.data());
    for (; i + 2 < bytes.size(); i += 3) {
        unsigned v = (b[i] << 16) | (b[i + 1] << 8) | b[i + 2];
        out += kB64[(v >> 18) & 63];
        out += kB64[(v >> 12) & 63];
        out += kB64[(v >> 6) & 63];
        out += kB64[v & 63];
    }
    size_t rest = bytes.size() - i;
    if (rest == 1) {
        unsigned v = b[i] << 16;
        out += kB64[(v >> 18) & 63];
        out += kB64[(v >> 12) & 63];
        out += "==";
    } else if (rest == 2) {
        unsigned v = (b[i] << 16) | (b[i + 1] << 8);
        out += kB64[(v >> 18) & 63];
        out += kB64[(v >> 12) & 63];
        out += kB64[(v >> 6) & 63];
        out += '=';
    }
    return out;
}

bool Base64Decode(const std::string& text, std::string& bytes) {
    bytes.clear();
    if (text.size() % 4 != 0) return false;
    auto value = [](char c) -> int {
        const char* p = c ? std::strchr(kB64, c) : nullptr;
        return p ? static_cast<int>(p - kB64) : -1;
    };
    for (size_t i = 0; i < text.size(); i += 4) {
        int v[4];
        int pad = 0;
        for (int k = 0; k < 4; ++k) {
            char c = text[i + k];
            if (c == '=' && i + 4 == text.size() && k >= 2) {
                v[k] = 0;
                ++pad;
            } else {
                if (pad) return false;
                v[k] = value(c);
                if (v[k] < 0) return false;
            }
        }
        unsigned n = (v[0] << 18) | (v[1] << 12) | (v[2] << 6) | v[3];
        bytes += static_cast<char>((n >> 16) & 255);
        if (pad < 2) bytes += static_cast<char>((n >> 8) & 255);
        if (pad < 1) bytes += static_cast<char>(n & 255);
    }
    return true;
}

}  // namespace ocwemu
