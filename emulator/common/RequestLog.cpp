#include "common/RequestLog.h"

#include "common/TimeUtil.h"

namespace ocwemu {

static bool MaskValue(JValue& v, const SecretWitness* witness) {
    static const char* const kSecret[] = {"adminPassword",
                                          "password",
                                          "cloudStoragePwd",
                                          "cloudStoragePassword",
                                          "administrator_password",
                                          "ibkupCloudStoragePassword",
                                          "ibkupDecryptionKey",
                                          "chapSecret",
                                          "mysqlUserPassword",
                                          "dbaPassword",
                                          "originalWLSAdminPassword",
                                          "originalEncryptionPassword",
                                          "hdgCloudStoragePassword"};
    bool changed = false;
    if (v.is_object()) {
        for (auto& kv : v.as_object()) {
            bool secret = false;
            for (const char* k : kSecret) secret |= kv.key() == k;
            if (secret && kv.value().is_string()) {
                if (witness != nullptr) (*witness)(kv.key(), std::string(kv.value().as_string()));
                kv.value() = "*****";
                changed = true;
            } else {
                changed |= MaskValue(kv.value(), witness);
            }
        }
    } else if (v.is_array()) {
        for (auto& e : v.as_array()) changed |= MaskValue(e, witness);
    }
    return changed;
}

std::string MaskSecrets(const std::string& body, const SecretWitness* witness) {
    const bool maybeSecret = body.find("ass") != std::string::npos || body.find("Pwd") != std::string::npos ||
                             body.find("chapSecret") != std::string::npos || body.find("Key") != std::string::npos;
    if (body.empty() || (body[0] != '{' && body[0] != '[') || !maybeSecret) return body;
    boost::system::error_code ec;
    JValue v = boost::json::parse(body, ec);
    if (ec || !MaskValue(v, witness)) return body;
    return ToJson(v);
}

// Credentials never reach the log: basic credentials and session cookies are
// masked, and of an OCI signature only the signature value (its keyId and
// signed header list stay, to check what a client signed).
static void MaskHeader(std::pair<std::string, std::string>& h, const SecretWitness* witness) {
    if (h.first == "authorization" && h.second.rfind("Basic ", 0) == 0) {
        if (witness != nullptr) (*witness)(h.first, h.second.substr(6));
        h.second = "Basic *****";
    } else if (h.first == "authorization") {
        const size_t at = h.second.find("signature=\"");
        const size_t end = at == std::string::npos ? at : h.second.find('"', at + 11);
        if (end != std::string::npos) h.second.replace(at + 11, end - at - 11, "*****");
    } else if (h.first == "cookie" || h.first == "set-cookie") {
        std::string out;
        size_t pos = 0;
        while (pos < h.second.size()) {
            size_t end = h.second.find(';', pos);
            if (end == std::string::npos) end = h.second.size();
            std::string part = h.second.substr(pos, end - pos);
            const size_t eq = part.find('=');
            if (eq != std::string::npos) {
                if (witness != nullptr) (*witness)(h.first, part.substr(eq + 1));
                part = part.substr(0, eq + 1) + "*****";
            }
            out += (pos ? ";" : "") + part;
            pos = end + 1;
        }
        h.second = out;
    }
}

void RequestLog::add(LoggedRequest entry) {
    std::shared_ptr<const SecretWitness> witness;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        witness = witness_;
    }
    for (auto& h : entry.headers) MaskHeader(h, witness.get());
    entry.body = MaskSecrets(entry.body, witness.get());
    // Large answers are lists without secrets; parsing them would only cost time.
    if (entry.responseBody.size() <= kMaxResponseBody) {
        entry.responseBody = MaskSecrets(entry.responseBody, witness.get());
    }
    if (entry.body.size() > kMaxBody) {
        entry.body.resize(kMaxBody);
        entry.bodyTruncated = true;
    }
    if (entry.responseBody.size() > kMaxResponseBody) entry.responseBody.resize(kMaxResponseBody);
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.push_back(std::move(entry));
    while (entries_.size() > capacity_) entries_.pop_front();
}

void RequestLog::setSecretWitness(SecretWitness witness) {
    std::lock_guard<std::mutex> lock(mutex_);
    witness_ = witness ? std::make_shared<const SecretWitness>(std::move(witness)) : nullptr;
}

std::vector<LoggedRequest> RequestLog::last(size_t n) const {
    std::lock_guard<std::mutex> lock(mutex_);
    size_t count = std::min(n, entries_.size());
    return std::vector<LoggedRequest>(entries_.end() - static_cast<std::ptrdiff_t>(count), entries_.end());
}

JArray RequestLog::toJson(size_t n) const {
    JArray out;
    for (const auto& e : last(n)) {
        JObject headers;
        for (const auto& h : e.headers) headers[h.first] = h.second;
        out.push_back(JObject{{"time", Rfc3339(e.timeMs)},
                              {"requestId", e.requestId},
                              {"method", e.method},
                              {"target", e.target},
                              {"host", e.host},
                              {"pattern", e.pattern},
                              {"headers", std::move(headers)},
                              {"body", e.body},
                              {"bodyTruncated", e.bodyTruncated},
                              {"status", e.status},
                              {"responseBody", e.responseBody},
                              {"rejection", e.rejection},
                              {"fault", e.fault}});
    }
    return out;
}

void RequestLog::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
}

}  // namespace ocwemu
