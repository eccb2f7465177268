#pragma once
// The emulator's own view of one HTTP exchange, independent of the HTTP
// server underneath: what a service handler reads and what it answers.
#include "common/JsonUtil.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ocwemu {

struct ApiRequest {
    std::string method;                 // upper case: GET, POST, ...
    std::string target;                 // raw request target, exactly as received
    std::string rawPath;                // target up to '?'
    std::vector<std::string> segments;  // percent-decoded path segments; a trailing "/" adds none
    std::multimap<std::string, std::string> query;  // decoded query parameters
    std::multimap<std::string, std::string> headers;  // names lower case
    std::string body;
    std::string host;        // Host header
    std::string region;      // region addressed through the host name (or the home region)
    std::string remoteAddr;
    std::int64_t nowMs = 0;  // one clock reading for the whole request
    std::map<std::string, std::string> pathParams;  // "{name}" segments of the matched route
    std::string tail;        // raw remainder matched by a "{*name}" route segment

    std::string header(const std::string& lowerName) const;
    bool hasHeader(const std::string& lowerName) const;
    std::string param(const std::string& name) const;
    bool hasParam(const std::string& name) const;
    const std::string& path(const std::string& name) const;
};

struct ApiResponse {
    int status = 200;
    std::string body;
    std::string contentType = "application/json";
    std::vector<std::pair<std::string, std::string>> headers;
    // Set by fault injection: "close" drops the connection without an answer,
    // "truncate" sends the headers and only part of the body, "reset" resets
    // the connection after part of the body, "stall" pauses stallMs there.
    std::string transportFault;
    int stallMs = 0;

    void setHeader(const std::string& name, const std::string& value);
    void json(int statusCode, const JValue& doc);
    // A body that already is serialised JSON.
    void jsonText(int statusCode, std::string text);
    // {"code": code, "message": message} with the status: OCI's error body,
    // also used by the admin interface.
    void error(int statusCode, const std::string& code, const std::string& message);
    void noContent(int statusCode = 204);
};

// Splits and decodes a request target. Percent-escapes are decoded per path
// segment (so "%2F" inside an object name stays inside its segment) and per
// query component ('+' is a blank there). false when an escape is malformed.
bool ParseTarget(const std::string& target, std::string& rawPath, std::vector<std::string>& segments,
                 std::multimap<std::string, std::string>& query);

bool PercentDecode(const std::string& in, std::string& out, bool plusIsSpace);
std::string PercentEncode(const std::string& in);

}  // namespace ocwemu
