#include "common/Paging.h"

#include <cstdlib>
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

// Plain ASCII without '>', '?' and '~' never encodes to '+' or '/'; the '.'
// tail keeps the raw length off a multiple of three so there is always padding.
static const std::string kTokenPrefix = "ocw-page:";

std::string EncodePageToken(std::size_t offset) {
    std::string raw = kTokenPrefix + std::to_string(offset);
    if (raw.size() % 3 == 0) raw += '.';
    return Base64Encode(raw);
}

bool DecodePageToken(const std::string& token, std::size_t& offset) {
    std::string raw;
    if (!Base64Decode(token, raw)) return false;
    if (raw.compare(0, kTokenPrefix.size(), kTokenPrefix) != 0) return false;
    std::string digits = raw.substr(kTokenPrefix.size());
    if (!digits.empty() && digits.back() == '.') digits.pop_back();
    if (digits.empty() || digits.size() > 12 || digits.find_first_not_of("0123456789") != std::string::npos)
        return false;
    offset = static_cast<std::size_t>(std::strtoull(digits.c_str(), nullptr, 10));
    return true;
}

bool ReadPageWindow(const ApiRequest& req, std::size_t defaultLimit, std::size_t maxLimit, PageWindow& out,
                    ApiResponse& res) {
    out.offset = 0;
    out.limit = defaultLimit;
    if (req.hasParam("limit")) {
        const std::string v = req.param("limit");
        char* end = nullptr;
        long long n = std::strtoll(v.c_str(), &end, 10);
        if (v.empty() || *end != '\0' || n < 1 || static_cast<unsigned long long>(n) > maxLimit) {
            err::InvalidParameter(res, "Invalid limit: must be an integer between 1 and " + std::to_string(maxLimit));
            return false;
        }
        out.limit = static_cast<std::size_t>(n);
    }
    if (req.hasParam("page")) {
        if (!DecodePageToken(req.param("page"), out.offset)) {
            err::InvalidParameter(res, "Invalid page token");
            return false;
        }
    }
    return true;
}

void SetNextPage(ApiResponse& res, const PageWindow& w, std::size_t total) {
    if (w.offset + w.limit < total) res.setHeader("opc-next-page", EncodePageToken(w.offset + w.limit));
}

}  // namespace ocwemu
