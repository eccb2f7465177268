#pragma once
// Shared by the targets that feed documents to the parsers: a parse failure
// logs the document with secret members masked, so any secret value that
// reaches a log line is a fault.
#include <cctype>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "platform/JsonHelper.h"

namespace ocwfuzz {

inline bool IsSecretName(const std::string& name) {
    std::string lower;
    for (char c : name) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower.find("password") != std::string::npos || lower.find("secret") != std::string::npos ||
           lower.find("pwd") != std::string::npos;
}

inline size_t SkipSpace(const std::string& text, size_t i) {
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\r' || text[i] == '\n')) ++i;
    return i;
}

// True when the text holds "key" : "value" literally (no escapes in either).
inline bool HasLiteralMember(const std::string& text, const std::string& key, const std::string& value) {
    const std::string quotedKey = "\"" + key + "\"";
    const std::string quotedValue = "\"" + value + "\"";
    for (size_t at = text.find(quotedKey); at != std::string::npos; at = text.find(quotedKey, at + 1)) {
        size_t i = SkipSpace(text, at + quotedKey.size());
        if (i >= text.size() || text[i] != ':') continue;
        i = SkipSpace(text, i + 1);
        if (text.compare(i, quotedValue.size(), quotedValue) == 0) return true;
    }
    return false;
}

// String values of secret-named members that occur exactly once in the text,
// written literally: if such a value shows up in a log line, it can only have
// come from that member.
inline void CollectSecrets(const OracleCloudSDKWrapper::JsonValue& v, const std::string& text,
                           std::vector<std::string>& out) {
    if (const OracleCloudSDKWrapper::JsonObject* o = v.if_object()) {
        for (const auto& member : *o) {
            std::string key(member.key().data(), member.key().size());
            const boost::json::string* s = member.value().if_string();
            if (s != nullptr && IsSecretName(key)) {
                std::string value(s->data(), s->size());
                if (value.size() >= 4 && value.find('*') == std::string::npos && text.find(value) == text.rfind(value) &&
                    HasLiteralMember(text, key, value)) {
                    out.push_back(value);
                }
            }
            CollectSecrets(member.value(), text, out);
        }
    } else if (const OracleCloudSDKWrapper::JsonArray* a = v.if_array()) {
        for (const auto& element : *a) CollectSecrets(element, text, out);
    }
}

// `doc` is `text` parsed. Checks every line logged since the last ResetLog().
inline void CheckNoSecretLogged(const std::string& text, const OracleCloudSDKWrapper::JsonValue& doc) {
    std::vector<std::string> secrets;
    CollectSecrets(doc, text, secrets);
    for (const std::string& line : LoggedLines()) {
        // "Exception parsing json ... - <reason>\n<text>": only the text part
        // may carry document content.
        size_t nl = line.find('\n');
        if (nl == std::string::npos) continue;
        for (const std::string& secret : secrets) {
            OCW_FUZZ_CHECK(line.find(secret, nl + 1) == std::string::npos,
                           "secret [" + Show(secret) + "] logged: " + Show(line));
        }
    }
}

}  // namespace ocwfuzz
