#include "transport/RequestBodyMask.h"

#include <algorithm>
#include <cctype>

#include "platform/JsonHelper.h"

namespace OracleCloudSDKWrapper {

namespace {

bool isSecretName(const boost::json::string_view name)
{
    std::string lower(name.data(), name.size());
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    // The last two are the key and wallet that open a database's backups
    // (ibkupDecryptionKey, ibkupWalletFileContent).
    for (const char* word :
         {"password", "pwd", "passphrase", "secret", "privatekey", "private_key", "decryptionkey", "walletfile"}) {
        if (lower.find(word) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void maskValue(JsonValue& value)
{
    if (value.is_object()) {
        for (auto& member : value.get_object()) {
            if (isSecretName(member.key())) {
                member.value() = "********";
            } else {
                maskValue(member.value());
            }
        }
    } else if (value.is_array()) {
        for (auto& element : value.get_array()) {
            maskValue(element);
        }
    }
}

}  // namespace

std::string MaskSecretsInBody(const std::string& body, bool keepNonJson)
{
    if (body.empty()) {
        return body;
    }
    JsonValue doc;
    if (!JsonHelper::Parse(body, doc)) {
        if (keepNonJson) {
            return body;
        }
        return "<" + std::to_string(body.size()) + " bytes, not JSON, not shown>";
    }
    maskValue(doc);
    return JsonHelper::Serialize(doc);
}

}  // namespace OracleCloudSDKWrapper
