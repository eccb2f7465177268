#include "EmulatorClient.h"

#include "common/Api.h"
#include "common/Base64.h"
#include "common/TimeUtil.h"

#include "TestKeys.h"

#include <cctype>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace ocwtest {

std::string Response::header(const std::string& name) const {
    auto it = headers.find(name);
    return it == headers.end() ? std::string() : it->second;
}

JValue Response::json() const {
    boost::system::error_code ec;
    JValue v = boost::json::parse(body, ec);
    return ec ? JValue(nullptr) : v;
}

JObject Response::object() const {
    JValue v = json();
    return v.is_object() ? v.as_object() : JObject{};
}

JArray Response::array() const {
    JValue v = json();
    return v.is_array() ? v.as_array() : JArray{};
}

static std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

std::string UrlEncode(const std::string& s) { return ocwemu::PercentEncode(s); }

Response ToResponse(const httplib::Result& r) {
    Response out;
    if (!r) return out;
    out.status = r->status;
    out.body = r->body;
    out.headers = r->headers;
    return out;
}

EmulatorClient::EmulatorClient(const ocwemu::EmulatorInfo& info, std::string passPhrase)
    : info_(info), passPhrase_(std::move(passPhrase)) {
    http_ = std::make_unique<httplib::SSLClient>("127.0.0.1", info.port);
    http_->set_ca_cert_path(info.caFile.c_str());
    http_->enable_server_certificate_verification(true);
    http_->set_read_timeout(20, 0);
    http_->set_keep_alive(true);
    http_->set_url_encode(false);  // send targets exactly as signed
}

static std::string Lower(std::string s) {
    for (auto& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

Response EmulatorClient::send(const std::string& method, const std::string& target, const std::string& body,
                      const SignOptions& opt) {
    const bool bodyMethod = method == "POST" || method == "PUT" || method == "PATCH";
    const std::string host = opt.host.empty() ? "127.0.0.1:" + std::to_string(info_.port) : opt.host;
    const std::string date = ocwemu::HttpDate(ocwemu::NowMs() / 1000 + opt.dateOffsetSeconds);
    std::map<std::string, std::string> values{{"host", host},
                                              {opt.useXDate ? "x-date" : "date", date},
                                              {"(request-target)", Lower(method) + " " + (opt.signedTarget.empty() ? target : opt.signedTarget)}};
    httplib::Headers headers{{"Host", host}, {opt.useXDate ? "x-date" : "date", date}};
    if (bodyMethod) {
        values["content-length"] = opt.contentLength.empty() ? std::to_string(body.size()) : opt.contentLength;
        if (!opt.contentLength.empty()) headers.emplace("Content-Length", opt.contentLength);
        values["content-type"] = opt.contentType;
        values["x-content-sha256"] = opt.contentSha256.empty() ? Sha256Base64(body) : opt.contentSha256;
        headers.emplace("x-content-sha256", values["x-content-sha256"]);
    }
    for (const auto& h : opt.extraHeaders) {
        headers.emplace(h.first, h.second);
        values[Lower(h.first)] = h.second;
    }
    std::vector<std::string> names = opt.headers;
    if (names.empty()) {
        names = {opt.useXDate ? "x-date" : "date", "(request-target)", "host"};
        if (bodyMethod) names.insert(names.end(), {"content-length", "content-type", "x-content-sha256"});
    }
    if (opt.sign) {
        std::string signing, list;
        for (size_t i = 0; i < names.size(); ++i) {
            const std::string n = Lower(names[i]);
            if (i) {
                signing += "\n";
                list += " ";
            }
            signing += n + ": " + values[n];
            list += names[i];
        }
        const std::string keyPem = opt.keyPem.empty() ? ReadAll(info_.keyFile) : opt.keyPem;
        std::string sig = SignRsaSha256(keyPem, opt.keyPem.empty() ? passPhrase_ : std::string(), signing);
        if (opt.corruptSignature) sig[5] = sig[5] == 'A' ? 'B' : 'A';
        const std::string keyId = opt.keyId.empty() ? info_.tenancy + "/" + info_.user + "/" + info_.fingerprint : opt.keyId;
        std::string auth = "Signature ";
        if (opt.version != "-") auth += "version=\"" + opt.version + "\",";
        auth += "keyId=\"" + keyId + "\",algorithm=\"" + opt.algorithm + "\",headers=\"" + list + "\",signature=\"" + sig + "\"";
        headers.emplace("authorization", auth);
    }
    auto call = [&]() -> httplib::Result {
        if (method == "GET") return http_->Get(target.c_str(), headers);
        if (method == "HEAD") return http_->Head(target.c_str(), headers);
        if (method == "DELETE") return http_->Delete(target.c_str(), headers);
        if (method == "POST" && !opt.contentLength.empty())
            return http_->Post(
                target.c_str(), headers,
                [&body](size_t, httplib::DataSink& sink) {
                    sink.write(body.data(), body.size());
                    sink.done();
                    return true;
                },
                opt.contentType.c_str());
        if (method == "POST") return http_->Post(target.c_str(), headers, body, opt.contentType.c_str());
        if (method == "PUT") return http_->Put(target.c_str(), headers, body, opt.contentType.c_str());
        return http_->Patch(target.c_str(), headers, body, opt.contentType.c_str());
    };
    return ToResponse(call());
}

Response EmulatorClient::post(const std::string& target, const JValue& body, const SignOptions& opt) {
    return send("POST", target, ocwemu::ToJson(body), opt);
}

Response EmulatorClient::admin(const std::string& method, const std::string& path, const std::string& body) {
    SignOptions o;
    o.sign = false;
    return send(method, "/_emulator/" + path, body, o);
}

JArray EmulatorClient::listAll(const std::string& target, int* pages) {
    JArray all;
    std::string page;
    int count = 0;
    do {
        std::string t = target;
        if (!page.empty()) t += std::string(t.find('?') == std::string::npos ? "?" : "&") + "page=" + UrlEncode(page);
        Response r = get(t);
        if (r.status != 200) throw std::runtime_error("list " + t + " answered " + std::to_string(r.status) + " " + r.body);
        for (auto& v : r.array()) all.push_back(v);
        page = r.header("opc-next-page");
        ++count;
    } while (!page.empty() && count < 1000);
    if (pages) *pages = count;
    return all;
}

std::string EmulatorClient::compartment(const std::string& name) {
    for (const auto& c : listAll("/20160918/compartments?compartmentId=" + info_.tenancy +
                                 "&compartmentIdInSubtree=true&limit=100"))
        if (ocwemu::JStr(c.as_object(), "name") == name) return ocwemu::JStr(c.as_object(), "id");
    throw std::runtime_error("no compartment " + name);
}

}  // namespace ocwtest
