// Document walking and the text helpers shared by both mappings.
#include "parser/OracleCloudParser.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {
namespace {

bool IsBlank(const std::string& text) {
    for (char c : text) {
        if (!std::isspace(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

const char* KindName(const JsonValue& v) {
    switch (v.kind()) {
        case boost::json::kind::object: return "an object";
        case boost::json::kind::array: return "a list";
        case boost::json::kind::string: return "a string";
        case boost::json::kind::bool_: return "a boolean";
        case boost::json::kind::null: return "null";
        default: return "a number";
    }
}

// Reads "hh", "hhmm" or "hh:mm" after a sign; returns seconds east of UTC, or
// 0 when the text is not an offset.
long ParseUtcOffset(const char* p) {
    int sign = (*p == '-') ? -1 : 1;
    ++p;
    int digits[4];
    int n = 0;
    while (n < 4 && *p) {
        if (*p == ':' && n == 2) {
            ++p;
            continue;
        }
        if (!std::isdigit(static_cast<unsigned char>(*p))) break;
        digits[n++] = *p - '0';
        ++p;
    }
    if (n != 2 && n != 4) return 0;
    long hours = digits[0] * 10 + digits[1];
    long minutes = (n == 4) ? digits[2] * 10 + digits[3] : 0;
    return sign * (hours * 3600 + minutes * 60);
}

std::time_t ParseIsoTime(const char* text) {
    struct tm tm;
    std::memset(&tm, 0, sizeof(tm));
    const char* p = strptime(text, "%Y-%m-%dT%H:%M:%S", &tm);
    if (p == nullptr) return 0;
    // OCI sends milliseconds ("...:29.600Z"); the record format stops at
    // whole seconds, so a fraction is skipped rather than failing the parse.
    if (*p == '.') {
        ++p;
        while (std::isdigit(static_cast<unsigned char>(*p))) ++p;
    }
    long offset = 0;
    if (*p == '+' || *p == '-') offset = ParseUtcOffset(p);
    return timegm(&tm) - offset;
}

// The PaaS services print Java dates: "Tue May 3 0:35:23 UTC 2016".
std::time_t ParseJavaDate(const char* text) {
    struct tm tm;
    std::memset(&tm, 0, sizeof(tm));
    const char* p = strptime(text, "%a %b %d %H:%M:%S", &tm);
    if (p == nullptr) return 0;
    while (*p == ' ') ++p;
    if (std::strncmp(p, "UTC", 3) != 0 && std::strncmp(p, "GMT", 3) != 0) return 0;
    p += 3;
    while (*p == ' ') ++p;
    if (strptime(p, "%Y", &tm) == nullptr) return 0;
    return timegm(&tm);
}

bool IsSecretName(const std::string& name) {
    std::string lower;
    lower.reserve(name.size());
    for (char c : name) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (const char* word : {"password", "pwd", "passphrase", "secret", "privatekey", "private_key"}) {
        if (lower.find(word) != std::string::npos) return true;
    }
    return false;
}

// Index of the quote that closes the string starting at `from`, or npos when
// the text ends first.
size_t FindStringEnd(const std::string& text, size_t from) {
    for (size_t i = from; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            return i;
        }
    }
    return std::string::npos;
}

bool IsJsonSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

// ---- entry points -----------------------------------------------------------

// Works on the text rather than on a document because the texts logged here
// are the ones that did not parse, often cut off in the middle of a value.
std::string COracleCloudParser::TextForLog(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    size_t i = 0;
    while (i < text.size()) {
        if (text[i] != '"') {
            out += text[i++];
            continue;
        }
        size_t end = FindStringEnd(text, i + 1);
        if (end == std::string::npos) {
            out.append(text, i, std::string::npos);
            break;
        }
        std::string token = text.substr(i + 1, end - i - 1);
        out.append(text, i, end - i + 1);
        i = end + 1;
        size_t j = i;
        while (j < text.size() && IsJsonSpace(text[j])) ++j;
        if (j >= text.size() || text[j] != ':' || !IsSecretName(token)) continue;
        ++j;
        while (j < text.size() && IsJsonSpace(text[j])) ++j;
        out.append(text, i, j - i);
        i = j;
        if (i >= text.size()) break;
        if (text[i] == '"') {
            size_t valueEnd = FindStringEnd(text, i + 1);
            out += "\"********\"";
            i = (valueEnd == std::string::npos) ? text.size() : valueEnd + 1;
        } else if (text[i] != '{' && text[i] != '[') {
            // A number or literal; nested values are scanned member by member.
            size_t valueEnd = text.find_first_of(",}] \t\r\n", i);
            out += "********";
            i = (valueEnd == std::string::npos) ? text.size() : valueEnd;
        }
    }
    return out;
}

bool COracleCloudParser::ReadDocument(const std::string& text, JsonValue& doc) {
    if (IsBlank(text)) return false;
    if (Parse(text, doc)) return true;
    // Parse() only says no; a second pass finds the reason for the log line.
    boost::json::stream_parser parser;
    boost::json::error_code ec;
    size_t used = parser.write_some(text.data(), text.size(), ec);
    if (!ec) parser.finish(ec);
    std::string reason = ec ? ec.message() : std::string("not a JSON document");
    throw std::runtime_error(reason + " at offset " + std::to_string(used));
}

const JsonObject& COracleCloudParser::RequireObject(const JsonValue& doc) {
    const JsonObject* obj = doc.if_object();
    if (obj == nullptr) throw std::runtime_error(std::string("document is ") + KindName(doc) + ", not an object");
    return *obj;
}

const JsonArray& COracleCloudParser::RequireArray(const JsonValue& doc) {
    const JsonArray* array = doc.if_array();
    if (array == nullptr) throw std::runtime_error(std::string("document is ") + KindName(doc) + ", not a list");
    return *array;
}

const JsonValue& COracleCloudParser::RequireListMember(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = obj.if_contains(boost::json::string_view(key.data(), key.size()));
    if (v == nullptr) throw std::runtime_error("no member \"" + key + "\"");
    if (!v->is_array() && !v->is_object())
        throw std::runtime_error("member \"" + key + "\" is " + KindName(*v) + ", not a list");
    return *v;
}

std::vector<const JsonArray*> COracleCloudParser::FindListsAlongPath(const JsonObject& root,
                                                                     const std::vector<std::string>& keyPath) {
    if (keyPath.empty()) throw std::runtime_error("empty key path");
    std::vector<const JsonObject*> level{&root};
    std::vector<const JsonArray*> lists;
    for (size_t i = 0; i < keyPath.size(); ++i) {
        bool last = (i + 1 == keyPath.size());
        std::vector<const JsonObject*> next;
        for (const JsonObject* node : level) {
            const JsonValue* v = node->if_contains(keyPath[i]);
            if (v == nullptr) continue;
            if (const JsonArray* array = v->if_array()) {
                if (last) {
                    lists.push_back(array);
                    continue;
                }
                for (const JsonValue& element : *array) {
                    if (const JsonObject* o = element.if_object()) next.push_back(o);
                }
            } else if (const JsonObject* o = v->if_object()) {
                if (!last) next.push_back(o);
            }
        }
        level.swap(next);
    }
    if (lists.empty()) throw std::runtime_error("no list along the key path");
    return lists;
}

std::string COracleCloudParser::JoinKeyPath(const std::vector<std::string>& keyPath) {
    std::string joined;
    for (const std::string& key : keyPath) {
        if (!joined.empty()) joined += '/';
        joined += key;
    }
    return joined;
}

int COracleCloudParser::ParseListAsStrings(const std::string& text, const std::string& listKey,
                                           std::vector<std::string>& out) {
    try {
        JsonValue doc;
        if (!ReadDocument(text, doc)) return 0;
        const JsonValue& list = RequireListMember(RequireObject(doc), listKey);
        const JsonArray* array = list.if_array();
        if (array == nullptr) throw std::runtime_error("member \"" + listKey + "\" is an object, not a list");
        size_t before = out.size();
        ConvertListString(*array, out);
        return static_cast<int>(out.size() - before);
    } catch (const std::exception& e) {
        OCW_LOG_ERROR(&m_debugLog, "Exception parsing json list [%s] - %s\n%s", listKey.c_str(), e.what(),
                      TextForLog(text).c_str());
        return 0;
    }
}

bool COracleCloudParser::ConvertNestedListString(const JsonObject& obj, const std::string& key,
                                                 std::vector<std::string>& out) {
    const JsonArray* array = FindArrayValue(obj, key);
    if (array == nullptr) return false;
    return ConvertListString(*array, out);
}

bool COracleCloudParser::ConvertListString(const JsonArray& array, std::vector<std::string>& out) {
    for (const JsonValue& v : array) {
        if (const boost::json::string* s = v.if_string()) out.emplace_back(s->data(), s->size());
    }
    return true;
}

// ---- helpers ----------------------------------------------------------------

std::string COracleCloudParser::GetRSubStrFromLastSlash(const std::string& s) {
    size_t pos = s.rfind('/');
    if (pos == std::string::npos) return std::string();
    return s.substr(pos + 1);
}

std::string COracleCloudParser::CutAtLastSlash(const std::string& s) {
    size_t pos = s.rfind('/');
    return pos == std::string::npos ? s : s.substr(0, pos);
}

std::time_t COracleCloudParser::ParseTimeUtc(const std::string& text) {
    if (text.empty()) return 0;
    std::time_t t = ParseIsoTime(text.c_str());
    if (t != 0) return t;
    return ParseJavaDate(text.c_str());
}

std::string COracleCloudParser::GetValueText(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = obj.if_contains(boost::json::string_view(key.data(), key.size()));
    if (v == nullptr) return std::string();
    switch (v->kind()) {
        case boost::json::kind::string: return std::string(v->get_string().data(), v->get_string().size());
        case boost::json::kind::int64: return std::to_string(v->get_int64());
        case boost::json::kind::uint64: return std::to_string(v->get_uint64());
        case boost::json::kind::double_: {
            char buf[64];
            std::snprintf(buf, sizeof(buf), "%.15g", v->get_double());
            return buf;
        }
        case boost::json::kind::bool_: return v->get_bool() ? "true" : "false";
        case boost::json::kind::null: return std::string();
        default: return Serialize(*v);
    }
}

int64_t COracleCloudParser::GetIntOrText(const JsonObject& obj, const std::string& key) {
    const JsonValue* v = obj.if_contains(boost::json::string_view(key.data(), key.size()));
    if (v == nullptr) return 0;
    if (const boost::json::string* s = v->if_string()) {
        std::string digits(s->data(), s->size());
        errno = 0;
        long long value = std::strtoll(digits.c_str(), nullptr, 10);
        return errno == ERANGE ? 0 : value;
    }
    return GetIntValue(obj, key);
}

int COracleCloudParser::ClampToInt(int64_t value) {
    if (value > 2147483647LL) return 2147483647;
    if (value < -2147483647LL - 1) return -2147483647 - 1;
    return static_cast<int>(value);
}

bool COracleCloudParser::ExtractIPNetworksAndSecurity(const JsonObject& networking, std::vector<SVNicInfoLib>& vnics,
                                                      std::vector<SSecurityGroupInfoLib>& groups) {
    // Boost.JSON keeps the document's member order; interfaces are visited in
    // key order (eth0, eth1, ...) whatever order the service wrote them in.
    std::vector<std::pair<std::string, const JsonObject*>> interfaces;
    for (const auto& member : networking) {
        if (const JsonObject* nic = member.value().if_object())
            interfaces.emplace_back(std::string(member.key().data(), member.key().size()), nic);
    }
    std::sort(interfaces.begin(), interfaces.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& entry : interfaces) {
        // An instance without security lists has its first IP network on
        // eth0 (that is how launches number them): only an eth0 without
        // "ipnetwork" is the shared network.
        if (entry.first == "eth0" && entry.second->if_contains("ipnetwork") == nullptr) {
            ConvertNestedList(*entry.second, "seclists", groups);
            continue;
        }
        SVNicInfoLib vnic;
        vnic.id = GetStringValue(*entry.second, "ipnetwork");
        vnic.name = GetRSubStrFromLastSlash(vnic.id);
        // The interface's static address, so that a relaunch keeps it.
        vnic.privateIp = GetStringValue(*entry.second, "ip");
        vnics.push_back(std::move(vnic));
    }
    return true;
}

bool COracleCloudParser::ExtractOraStatusAndTag(const std::string& text, SOracleJobInfoLib& job) {
    static const std::string kMarker = "Database backup completed with [";
    try {
        JsonValue doc;
        if (!ReadDocument(text, doc)) return false;
        const JsonObject& obj = RequireObject(doc);
        job.jobStatus = GetStringValue(obj, "job_status");
        std::vector<std::string> messages;
        ConvertNestedListString(obj, "message", messages);
        job.message.clear();
        for (const std::string& m : messages) {
            if (!job.message.empty()) job.message += '\n';
            job.message += m;
        }
        for (const std::string& m : messages) {
            size_t at = m.find(kMarker);
            if (at == std::string::npos) {
                job.tag.clear();
                continue;
            }
            std::string rest = m.substr(at);
            size_t open = rest.find('[');
            size_t close = rest.find(']', open);
            job.tag = rest.substr(open + 1, close == std::string::npos ? std::string::npos : close - open - 1);
        }
        return true;
    } catch (const std::exception& e) {
        OCW_LOG_ERROR(&m_debugLog, "Exception parsing json object - %s\n%s", e.what(), TextForLog(text).c_str());
        return false;
    }
}

// Object listings exist only on OCI.
bool COracleCloudParser::Convert(const JsonObject&, SStorageObjectInfoLib&) { return false; }

}  // namespace OracleCloudSDKWrapper
