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
    // "truncate" sends the headers and only part of the body.
    std::string transportFault;

    void setHeader(const std::string& name, const std::string& value);
    void json(int statusCode, const JValue& doc);
    // A body that already is serialised JSON.
    void jsonText(int statusCode, std::string text);
    // {"code": code, "message": message} with the status, as every service answers errors.
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

// Standard error texts of the services.
namespace err {
inline const char* kNotFoundMsg = "Authorization failed or requested resource not found.";
// 404 for a resource named in the path or query that is missing (or, at the
// service, not visible to the caller).
void NotAuthorizedOrNotFound(ApiResponse& res);
// 404 for a path (and method) where the service has no operation at all.
void NoSuchOperation(ApiResponse& res);
void InvalidParameter(ApiResponse& res, const std::string& message);
void MissingParameter(ApiResponse& res, const std::string& name);
void IncorrectState(ApiResponse& res, const std::string& message);
void Conflict(ApiResponse& res, const std::string& message);
void LimitExceeded(ApiResponse& res, const std::string& message);
void RelatedNotFound(ApiResponse& res, const std::string& what);
}  // namespace err

}  // namespace ocwemu
