#pragma once
// Tolerant readers over Boost.JSON documents sent by clients.
//
// Deliberately lenient about member types: the library sends numbers as JSON
// strings ("sizeInGBs": "50", "ocpus": "2") and booleans as strings
// ("latest": "true"), so these readers take both forms. The service's models
// type these members as numbers and booleans; whether it also takes strings is
// not established, so the leniency is documented (docs/emulator.md) rather
// than claimed as the service's. Answers always carry real numbers and
// booleans. Every reader returns an empty optional (or "") when the member is
// absent, null or of a kind that cannot be converted ("sixty" counts as absent).
#include <boost/json.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace ocwemu {

using JObject = boost::json::object;
using JArray = boost::json::array;
using JValue = boost::json::value;

// Parses `text` as a JSON object. An empty text counts as an empty object
// (an action POST without body). false with a reason in `error` otherwise.
bool ParseJsonObject(const std::string& text, JObject& out, std::string& error);

std::string JStr(const JObject& o, const char* key);
std::optional<std::int64_t> JInt(const JObject& o, const char* key);
std::optional<double> JNum(const JObject& o, const char* key);
std::optional<bool> JBool(const JObject& o, const char* key);
const JObject* JObj(const JObject& o, const char* key);
const JArray* JArr(const JObject& o, const char* key);
bool JHas(const JObject& o, const char* key);  // present and not null

std::string ToJson(const JValue& v);

// Copies the members named in `keys` from `from` when present (tag maps and
// free-form members the service stores as given).
void CopyMembers(const JObject& from, JObject& to, std::initializer_list<const char*> keys);

}  // namespace ocwemu
