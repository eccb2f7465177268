#pragma once
#include <boost/json.hpp>
#include <cstdint>
#include <string>

#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

using JsonValue = boost::json::value;
using JsonObject = boost::json::object;
using JsonArray = boost::json::array;

// Typed access to JSON documents. The getters never throw: an absent key or a
// value of another kind yields empty text, 0 or false. Parse() returns false for
// text that is not JSON; only explicit conversions (as_object() and friends) on
// the caller's side can throw, which the parser turns into logged failures.
class JsonHelper {
public:
    JsonHelper() = default;
    virtual ~JsonHelper() = default;

    static bool Parse(const std::string& text, JsonValue& out);
    static std::string Serialize(const JsonValue& value);
    static std::string Serialize(const JsonObject& object);

    static std::string GetStringValue(const JsonObject& obj, const std::string& key);
    // Integers; a real is truncated toward zero; anything else yields 0.
    static int64_t GetIntValue(const JsonObject& obj, const std::string& key);
    static uint64_t GetUInt64Value(const JsonObject& obj, const std::string& key);
    static bool GetBoolValue(const JsonObject& obj, const std::string& key);
    // Reals and integers; anything else yields 0.0.
    static double GetFloatValue(const JsonObject& obj, const std::string& key);
    static const JsonObject* FindObjectValue(const JsonObject& obj, const std::string& key);
    static const JsonArray* FindArrayValue(const JsonObject& obj, const std::string& key);

protected:
    DebugLog m_debugLog;  // context of the parse-failure log lines
};

}  // namespace OracleCloudSDKWrapper
