#include "oci/SignatureVerifier.h"

#include "common/Base64.h"
#include "common/TimeUtil.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cctype>
#include <sstream>
#include <vector>

namespace ocwemu {

static std::string Lower(std::string s) {
    for (auto& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

bool SignatureVerifier::ParseParameters(const std::string& text, std::map<std::string, std::string>& out) {
    out.clear();
    size_t i = 0;
    const size_t n = text.size();
    while (i < n) {
        while (i < n && (text[i] == ' ' || text[i] == ',')) ++i;
        if (i >= n) break;
        size_t eq = text.find('=', i);
        if (eq == std::string::npos) return false;
        std::string name = text.substr(i, eq - i);
        while (!name.empty() && name.back() == ' ') name.pop_back();
        i = eq + 1;
        std::string value;
        if (i < n && text[i] == '"') {
            size_t close = text.find('"', i + 1);
            if (close == std::string::npos) return false;
            value = text.substr(i + 1, close - i - 1);
            i = close + 1;
        } else {
            size_t comma = text.find(',', i);
            if (comma == std::string::npos) comma = n;
            value = text.substr(i, comma - i);
            i = comma;
        }
        if (name.empty()) return false;
        out[name] = value;
    }
    return true;
}

static SignatureResult Reject(const char* reason, std::string detail) {
    SignatureResult r;
    r.reason = reason;
    r.detail = std::move(detail);
    return r;
}

static bool VerifyRsaSha256(EVP_PKEY* key, const std::string& data, const std::string& sig) {
    EVP_MD_CTX* ctx = EVP_MD_CTX_new();
    if (!ctx) return false;
    EVP_PKEY_CTX* pctx = nullptr;
    bool ok = EVP_DigestVerifyInit(ctx, &pctx, EVP_sha256(), nullptr, key) == 1 &&
              EVP_DigestVerify(ctx, reinterpret_cast<const unsigned char*>(sig.data()), sig.size(),
                               reinterpret_cast<const unsigned char*>(data.data()), data.size()) == 1;
    EVP_MD_CTX_free(ctx);
    return ok;
}

static std::string Sha256Base64(const std::string& body) {
    unsigned char md[EVP_MAX_MD_SIZE];
    unsigned int len = 0;
    EVP_Digest(body.data(), body.size(), md, &len, EVP_sha256(), nullptr);
    return Base64Encode(std::string(reinterpret_cast<char*>(md), len));
}

SignatureResult SignatureVerifier::verify(const ApiRequest& req, bool bodyHeadersRequired) const {
    if (!req.hasHeader("authorization")) return Reject("missing_authorization", "no authorization header");
    const std::string auth = req.header("authorization");
    static const std::string kScheme = "Signature ";
    if (auth.size() <= kScheme.size() || Lower(auth.substr(0, kScheme.size())) != "signature ")
        return Reject("bad_scheme", "authorization is not a Signature");
    std::map<std::string, std::string> p;
    if (!ParseParameters(auth.substr(kScheme.size()), p))
        return Reject("bad_parameters", "malformed signature parameters");
    if (p.count("version") && p["version"] != "1") return Reject("bad_version", "version " + p["version"]);
    if (!p.count("algorithm") || Lower(p["algorithm"]) != "rsa-sha256")
        return Reject("bad_algorithm", "algorithm " + p["algorithm"]);
    if (!p.count("keyId") || !p.count("signature")) return Reject("bad_parameters", "keyId or signature missing");
    PKeyPtr key = keys_.find(p["keyId"]);
    if (!key) return Reject("unknown_key", "unknown keyId " + p["keyId"]);

    std::vector<std::string> names;
    {
        std::istringstream in(p.count("headers") ? p["headers"] : std::string("date"));
        std::string name;
        while (in >> name) names.push_back(Lower(name));
    }
    auto signedHas = [&](const char* n) { return std::find(names.begin(), names.end(), n) != names.end(); };
    const bool hasXDate = signedHas("x-date");
    if (!signedHas("(request-target)") || !signedHas("host") || (!signedHas("date") && !hasXDate))
        return Reject("missing_signed_header", "(request-target), host and date must be signed");
    const bool bodyMethod = req.method == "POST" || req.method == "PUT" || req.method == "PATCH";
    if (bodyMethod && bodyHeadersRequired &&
        (!signedHas("content-length") || !signedHas("content-type") || !signedHas("x-content-sha256")))
        return Reject("missing_signed_header", "content-length, content-type and x-content-sha256 must be signed");

    std::string signingString;
    for (size_t i = 0; i < names.size(); ++i) {
        const std::string& n = names[i];
        std::string value;
        if (n == "(request-target)") {
            value = Lower(req.method) + " " + req.target;
        } else {
            if (!req.hasHeader(n)) return Reject("missing_header", "signed header " + n + " not sent");
            value = req.header(n);
        }
        if (i) signingString += '\n';
        signingString += n + ": " + value;
    }

    // The service uses x-date when both are sent.
    const std::string dateText = req.hasHeader("x-date") ? req.header("x-date") : req.header("date");
    std::int64_t dateSecs = 0;
    if (!ParseHttpDate(dateText, dateSecs)) return Reject("bad_date", "unreadable date " + dateText);
    const std::int64_t skew = dateSecs - req.nowMs / 1000;
    if (skew > maxSkew_ || skew < -maxSkew_) return Reject("stale_date", "date off by " + std::to_string(skew) + " s");

    if (signedHas("content-length") && req.header("content-length") != std::to_string(req.body.size()))
        return Reject("content_length_mismatch", "content-length does not match the body");
    if (signedHas("x-content-sha256") && req.header("x-content-sha256") != Sha256Base64(req.body))
        return Reject("body_hash_mismatch", "x-content-sha256 does not match the body");

    std::string sig;
    if (!Base64Decode(p["signature"], sig) ||
        !VerifyRsaSha256(key.get(), signingString, sig))
        return Reject("bad_signature", "signature does not verify");
    SignatureResult ok;
    ok.ok = true;
    ok.keyId = p["keyId"];
    return ok;
}

}  // namespace ocwemu
