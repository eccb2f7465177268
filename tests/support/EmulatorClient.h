#pragma once
// A raw HTTPS client for the emulator's own tests: it signs requests the way
// OCI clients do (with OpenSSL, independent of the library's signer) and has
// knobs to break every part of the signature.
#include "Emulator.h"
#include "common/JsonUtil.h"

#include <httplib.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ocwtest {

using ocwemu::JArray;
using ocwemu::JObject;
using ocwemu::JValue;

struct Response {
    int status = 0;  // 0: no HTTP answer (connection closed, cut body...)
    std::string body;
    httplib::Headers headers;
    std::string header(const std::string& name) const;
    JValue json() const;  // null when the body is not JSON
    JObject object() const;
    JArray array() const;
};

struct SignOptions {
    std::vector<std::string> headers;  // signed header names in order; empty: the library's default set
    bool useXDate = false;             // send and sign "x-date" instead of "date"
    std::int64_t dateOffsetSeconds = 0;
    std::string keyId;                 // empty: the emulator's own key
    std::string keyPem;                // empty: the emulator's key file
    std::string contentSha256;         // empty: the body's real digest
    std::string contentType = "application/json";
    // Non-empty: the content-length sent and signed instead of the body's
    // size; the body then goes out chunked so the server still reads all of it.
    std::string contentLength;
    std::string algorithm = "rsa-sha256";
    std::string version = "1";         // "-" leaves the parameter out
    bool sign = true;                  // false: no authorization header at all
    bool corruptSignature = false;
    std::string host;                  // empty: 127.0.0.1:<port>
    std::string signedTarget;          // empty: the target sent
    std::map<std::string, std::string> extraHeaders;
};

class EmulatorClient {
public:
    // `passPhrase` opens the emulator's key file when it is encrypted.
    explicit EmulatorClient(const ocwemu::EmulatorInfo& info, std::string passPhrase = {});
    Response send(const std::string& method, const std::string& target, const std::string& body = {},
                  const SignOptions& opt = {});
    Response get(const std::string& target, const SignOptions& opt = {}) { return send("GET", target, {}, opt); }
    Response post(const std::string& target, const JValue& body, const SignOptions& opt = {});
    Response admin(const std::string& method, const std::string& path, const std::string& body = {});

    // Every item of a paged list (following opc-next-page).
    JArray listAll(const std::string& target, int* pages = nullptr);
    // The id of the compartment with that name.
    std::string compartment(const std::string& name);

    const ocwemu::EmulatorInfo& info() const { return info_; }

private:
    ocwemu::EmulatorInfo info_;
    std::string passPhrase_;
    std::unique_ptr<httplib::SSLClient> http_;
};

std::string UrlEncode(const std::string& s);
// What a client call gave: status, body and headers (status 0 without an answer).
Response ToResponse(const httplib::Result& r);

}  // namespace ocwtest
