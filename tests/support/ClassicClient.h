#pragma once
// Test-side client for the emulator's Cloud Classic half, written from the
// wire notes (not from the library): Compute Classic with its login cookie
// and media types, and the PaaS services with basic credentials.
#include "EmulatorClient.h"

#include <functional>

namespace ocwtest {

inline const char* kJsonType = "application/oracle-compute-v3+json";
inline const char* kDirectoryType = "application/oracle-compute-v3+directory+json";

class ClassicClient {
public:
    explicit ClassicClient(const ocwemu::EmulatorInfo& info);

    // POST authenticate/; keeps the cookie line of a 204 (Set-Cookie value).
    Response login(const std::string& user, const std::string& password);
    Response login() {
        return login("/Compute-" + info_.identityDomain + "/" + info_.classicUser, info_.classicPassword);
    }
    // The Cookie header sent with every request ("" sends none).
    std::string cookie;

    // `path` is sent as it is (leading "/" included); `accept` empty sends no Accept.
    Response send(const std::string& method, const std::string& path, const std::string& body = {},
                  const std::string& accept = kJsonType);
    Response get(const std::string& path, const std::string& accept = kJsonType) {
        return send("GET", path, {}, accept);
    }
    Response post(const std::string& path, const JValue& body) { return send("POST", path, ocwemu::ToJson(body)); }
    Response put(const std::string& path, const JValue& body) { return send("PUT", path, ocwemu::ToJson(body)); }
    Response del(const std::string& path) { return send("DELETE", path); }

    // GETs `path` until `member` of the object reads `want` (or the object is
    // gone when `want` is "404"); the last value seen, "404" when gone.
    std::string waitFor(const std::string& path, const std::string& member, const std::string& want, int seconds = 10);

    // A PaaS request with basic credentials and X-ID-TENANT-NAME (not sent when empty).
    Response paas(const std::string& method, const std::string& path, const std::string& body = {},
                  const std::string& user = {}, const std::string& password = {}, const std::string& tenant = {});

    const ocwemu::EmulatorInfo& info() const { return info_; }
    std::string u() const { return "/Compute-" + info_.identityDomain + "/" + info_.classicUser; }

private:
    Response call(const std::string& method, const std::string& path, const std::string& body,
                  const httplib::Headers& headers, const std::string& contentType);
    ocwemu::EmulatorInfo info_;
    std::unique_ptr<httplib::SSLClient> http_;
};

}  // namespace ocwtest
