#include "common/JsonUtil.h"

#include <cerrno>
#include <cstdlib>

namespace ocwemu {

bool ParseJsonObject(const std::string& text, JObject& out, std::string& error) {
    out.clear();
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) return true;
    boost::system::error_code ec;
    JValue v = boost::json::parse(text, ec);
    if (ec) {
        error = "Unable to parse the request body as JSON: " + ec.message();
        return false;
    }
    if (!v.is_object()) {
        error = "The request body must be a JSON object";
        return false;
    }
    out = std::move(v.as_object());
    return true;
}

static const JValue* Find(const JObject& o, const char* key) {
    auto it = o.find(key);
    if (it == o.end() || it->value().is_null()) return nullptr;
    return &it->value();
}

std::string JStr(const JObject& o, const char* key) {
    const JValue* v = Find(o, key);
    if (!v) return {};
    if (v->is_string()) return std::string(v->as_string());
    if (v->is_int64()) return std::to_string(v->as_int64());
    if (v->is_uint64()) return std::to_string(v->as_uint64());
    if (v->is_bool()) return v->as_bool() ? "true" : "false";
    return {};
}

std::optional<double> JNum(const JObject& o, const char* key) {
    const JValue* v = Find(o, key);
    if (!v) return std::nullopt;
    if (v->is_int64()) return static_cast<double>(v->as_int64());
    if (v->is_uint64()) return static_cast<double>(v->as_uint64());
    if (v->is_double()) return v->as_double();
    if (v->is_string()) {
        std::string s(v->as_string());
        if (s.empty()) return std::nullopt;
        char* end = nullptr;
        errno = 0;
        double d = std::strtod(s.c_str(), &end);
        if (errno != 0 || end == s.c_str() || *end != '\0') return std::nullopt;
        return d;
    }
    return std::nullopt;
}

std::optional<std::int64_t> JInt(const JObject& o, const char* key) {
    const JValue* v = Find(o, key);
    if (!v) return std::nullopt;
    if (v->is_int64()) return v->as_int64();
    if (v->is_uint64()) return static_cast<std::int64_t>(v->as_uint64());
    if (v->is_double()) return static_cast<std::int64_t>(v->as_double());
    if (v->is_string()) {
        std::string s(v->as_string());
        if (s.empty()) return std::nullopt;
        char* end = nullptr;
        errno = 0;
        long long n = std::strtoll(s.c_str(), &end, 10);
        if (errno != 0 || end == s.c_str() || *end != '\0') return std::nullopt;
        return n;
    }
    return std::nullopt;
}

std::optional<bool> JBool(const JObject& o, const char* key) {
    const JValue* v = Find(o, key);
    if (!v) return std::nullopt;
    if (v->is_bool()) return v->as_bool();
    if (v->is_string()) {
        if (v->as_string() == "true") return true;
        if (v->as_string() == "false") return false;
    }
    return std::nullopt;
}

const JObject* JObj(const JObject& o, const char* key) {
    const JValue* v = Find(o, key);
    return v && v->is_object() ? &v->as_object() : nullptr;
}

const JArray* JArr(const JObject& o, const char* key) {
    const JValue* v = Find(o, key);
    return v && v->is_array() ? &v->as_array() : nullptr;
}

bool JHas(const JObject& o, const char* key) { return Find(o, key) != nullptr; }

std::string ToJson(const JValue& v) { return boost::json::serialize(v); }

void CopyMembers(const JObject& from, JObject& to, std::initializer_list<const char*> keys) {
    for (const char* k : keys) {
        auto it = from.find(k);
        if (it != from.end()) to[k] = it->value();
    }
}

}  // namespace ocwemu
