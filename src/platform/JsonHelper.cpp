#include "platform/JsonHelper.h"

#include <cmath>
#include <limits>

namespace OracleCloudSDKWrapper {
namespace {

const JsonValue* Find(const JsonObject& obj, const std::string& key) {
    return obj.if_contains(boost::json::string_view(key.data(), key.size()));
}

}  // namespace

bool JsonHelper::Parse(const std::string& text, JsonValue& out) {
    try {
        boost::json::error_code ec;
        JsonValue v = boost::json::parse(boost::json::string_view(text.data(), text.size()), ec);
        if (ec) return false;
        out = std::move(v);
        return true;
    } catch (const std::exception&) {
        // Only allocation failures or nesting beyond the parser's depth limit
        // get here; to the caller both are "not a usable document".
        return false;
    }
}

std::string JsonHelper::Serialize(const JsonValue& value) {
    return boost::json::serialize(value);
}

std::string JsonHelper::Serialize(const JsonObject& object) {
    return boost::json::serialize(object);
}

std::string JsonHelper::GetStringValue(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = Find(obj, key);
    if (!v || !v->is_string()) return std::string();
    const boost::json::string& s = v->get_string();
    return std::string(s.data(), s.size());
}

int64_t JsonHelper::GetIntValue(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = Find(obj, key);
    if (!v) return 0;
    if (v->is_int64()) return v->get_int64();
    if (v->is_uint64()) {
        uint64_t u = v->get_uint64();
        return u > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) ? std::numeric_limits<int64_t>::max()
                                                                                : static_cast<int64_t>(u);
    }
    if (v->is_double()) {
        double d = std::trunc(v->get_double());
        if (std::isnan(d)) return 0;
        // Converting an out-of-range double is undefined; saturate instead.
        if (d >= 9223372036854775807.0) return std::numeric_limits<int64_t>::max();
        if (d <= -9223372036854775808.0) return std::numeric_limits<int64_t>::min();
        return static_cast<int64_t>(d);
    }
    return 0;
}

uint64_t JsonHelper::GetUInt64Value(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = Find(obj, key);
    if (!v) return 0;
    if (v->is_uint64()) return v->get_uint64();
    if (v->is_int64()) return v->get_int64() < 0 ? 0 : static_cast<uint64_t>(v->get_int64());
    if (v->is_double()) {
        double d = std::trunc(v->get_double());
        if (std::isnan(d) || d <= 0) return 0;
        if (d >= 18446744073709551615.0) return std::numeric_limits<uint64_t>::max();
        return static_cast<uint64_t>(d);
    }
    return 0;
}

bool JsonHelper::GetBoolValue(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = Find(obj, key);
    return v && v->is_bool() && v->get_bool();
}

double JsonHelper::GetFloatValue(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = Find(obj, key);
    if (!v) return 0.0;
    if (v->is_double()) return v->get_double();
    if (v->is_int64()) return static_cast<double>(v->get_int64());
    if (v->is_uint64()) return static_cast<double>(v->get_uint64());
    return 0.0;
}

const JsonObject* JsonHelper::FindObjectValue(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = Find(obj, key);
    return v ? v->if_object() : nullptr;
}

const JsonArray* JsonHelper::FindArrayValue(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = Find(obj, key);
    return v ? v->if_array() : nullptr;
}

}  // namespace OracleCloudSDKWrapper
