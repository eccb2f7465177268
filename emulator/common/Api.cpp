#include "common/Api.h"

#include <cctype>

namespace ocwemu {

std::string ApiRequest::header(const std::string& lowerName) const {
    auto it = headers.find(lowerName);
    return it == headers.end() ? std::string() : it->second;
}

bool ApiRequest::hasHeader(const std::string& lowerName) const { return headers.count(lowerName) != 0; }

std::string ApiRequest::param(const std::string& name) const {
    auto it = query.find(name);
    return it == query.end() ? std::string() : it->second;
}

bool ApiRequest::hasParam(const std::string& name) const { return query.count(name) != 0; }

const std::string& ApiRequest::path(const std::string& name) const {
    static const std::string kEmpty;
    auto it = pathParams.find(name);
    return it == pathParams.end() ? kEmpty : it->second;
}

void ApiResponse::setHeader(const std::string& name, const std::string& value) {
    for (auto& h : headers)
        if (h.first == name) {
            h.second = value;
            return;
        }
    headers.emplace_back(name, value);
}

void ApiResponse::json(int statusCode, const JValue& doc) {
    status = statusCode;
    body = ToJson(doc);
    contentType = "application/json";
}

void ApiResponse::jsonText(int statusCode, std::string text) {
    status = statusCode;
    body = std::move(text);
    contentType = "application/json";
}

void ApiResponse::error(int statusCode, const std::string& code, const std::string& message) {
    json(statusCode, JObject{{"code", code}, {"message", message}});
}

void ApiResponse::noContent(int statusCode) {
    status = statusCode;
    body.clear();
    contentType.clear();
}

static int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool PercentDecode(const std::string& in, std::string& out, bool plusIsSpace) {
    out.clear();
    out.reserve(in.size());
    for (size_t i = 0; i < in.size(); ++i) {
        char c = in[i];
        if (c == '%') {
            if (i + 2 >= in.size()) return false;
            int hi = HexValue(in[i + 1]), lo = HexValue(in[i + 2]);
            if (hi < 0 || lo < 0) return false;
            out.push_back(static_cast<char>(hi * 16 + lo));
            i += 2;
        } else if (c == '+' && plusIsSpace) {
            out.push_back(' ');
        } else {
            out.push_back(c);
        }
    }
    return true;
}

std::string PercentEncode(const std::string& in) {
    static const char* kHex = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : in) {
        if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '~') {
            out.push_back(static_cast<char>(c));
        } else {
            out.push_back('%');
            out.push_back(kHex[c >> 4]);
            out.push_back(kHex[c & 15]);
        }
    }
    return out;
}

bool ParseTarget(const std::string& target, std::string& rawPath, std::vector<std::string>& segments,
                 std::multimap<std::string, std::string>& query) {
    segments.clear();
    query.clear();
    size_t q = target.find('?');
    rawPath = target.substr(0, q);
    size_t pos = 0;
    while (pos < rawPath.size()) {
        if (rawPath[pos] == '/') {
            ++pos;
            continue;
        }
        size_t end = rawPath.find('/', pos);
        if (end == std::string::npos) end = rawPath.size();
        std::string seg;
        if (!PercentDecode(rawPath.substr(pos, end - pos), seg, false)) return false;
        segments.push_back(std::move(seg));
        pos = end;
    }
    if (q == std::string::npos) return true;
    std::string qs = target.substr(q + 1);
    size_t start = 0;
    while (start <= qs.size()) {
        size_t amp = qs.find('&', start);
        if (amp == std::string::npos) amp = qs.size();
        std::string pair = qs.substr(start, amp - start);
        if (!pair.empty()) {
            size_t eq = pair.find('=');
            std::string k, v;
            if (!PercentDecode(pair.substr(0, eq), k, true)) return false;
            if (eq != std::string::npos && !PercentDecode(pair.substr(eq + 1), v, true)) return false;
            query.emplace(std::move(k), std::move(v));
        }
        start = amp + 1;
    }
    return true;
}

}  // namespace ocwemu
