#include "ClassicClient.h"

#include "common/Base64.h"

#include <chrono>
#include <thread>

namespace ocwtest {

ClassicClient::ClassicClient(const ocwemu::EmulatorInfo& info) : info_(info) {
    http_ = std::make_unique<httplib::SSLClient>("127.0.0.1", info.port);
    http_->set_ca_cert_path(info.caFile.c_str());
    http_->enable_server_certificate_verification(true);
    http_->set_keep_alive(true);
}

Response ClassicClient::call(const std::string& method, const std::string& path, const std::string& body,
                             const httplib::Headers& headers, const std::string& contentType) {
    auto send = [&]() -> httplib::Result {
        if (method == "GET") return http_->Get(path.c_str(), headers);
        if (method == "DELETE") return http_->Delete(path.c_str(), headers);
        if (method == "POST") return http_->Post(path.c_str(), headers, body, contentType.c_str());
        return http_->Put(path.c_str(), headers, body, contentType.c_str());
    };
    return ToResponse(send());
}

Response ClassicClient::login(const std::string& user, const std::string& password) {
    const std::string body = "{\"password\": \"" + password + "\", \"user\": \"" + user + "\"}";
    Response r = call("POST", "/authenticate/", body, {{"Accept", kJsonType}}, kJsonType);
    if (r.status == 204) cookie = r.header("Set-Cookie");
    return r;
}

Response ClassicClient::send(const std::string& method, const std::string& path, const std::string& body,
                             const std::string& accept) {
    httplib::Headers h;
    if (!accept.empty()) h.emplace("Accept", accept);
    if (!cookie.empty()) h.emplace("Cookie", cookie);
    return call(method, path, body, h, kJsonType);
}

std::string ClassicClient::waitFor(const std::string& path, const std::string& member, const std::string& want,
                                   int seconds) {
    std::string seen;
    for (int i = 0; i < seconds * 20; ++i) {
        Response r = get(path);
        seen = r.status == 404 ? "404" : ocwemu::JStr(r.object(), member.c_str());
        if (seen == want) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return seen;
}

Response ClassicClient::paas(const std::string& method, const std::string& path, const std::string& body,
                             const std::string& user, const std::string& password, const std::string& tenant) {
    httplib::Headers h{{"Accept", "application/json"}};
    const std::string u = user.empty() ? info_.classicUser : user;
    const std::string p = password.empty() ? info_.classicPassword : password;
    h.emplace("Authorization", "Basic " + ocwemu::Base64Encode(u + ":" + p));
    const std::string t = tenant.empty() ? info_.identityDomain : tenant;
    if (t != "-") h.emplace("X-ID-TENANT-NAME", t);
    return call(method, path, body, h, "application/json");
}

}  // namespace ocwtest
