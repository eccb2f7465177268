#pragma once
#include <cstddef>
#include <string>
#include <vector>

#include "platform/EventBase.h"

namespace OracleCloudSDKWrapper {

enum HTTP_REQ_TYPE {
    HTTP_REQ_GET = 0,
    HTTP_REQ_POST = 1,
    HTTP_REQ_PUT = 2,
    HTTP_REQ_DELETE = 3,
    HTTP_REQ_HEAD = 4,
    HTTP_REQ_PATCH = 5,
};

enum HTTP_HEADER_TYPE {
    HTTP_HEADER_LINE = 0,         // "Name: value"
    HTTP_HEADER_BASIC_AUTH = 1,   // "user:password", sent as basic credentials
};

using HttpWriteCallback = size_t (*)(char* data, size_t size, size_t count, void* user);

// One HTTP transfer object. Each request runs on a fresh libcurl easy handle
// copied from one the client keeps with its configuration and options, so no
// libcurl state of one transfer reaches the next; connections, TLS sessions
// and resolved names live in a share object of the client and are reused
// across requests. The answer is kept in the client's own buffers.
// Not thread-safe: one client serves one thread at a time.
//
// Configuration (section "VirtualServer", read when the client is built):
//   sCACertFile                  extra CA bundle (PEM), trusted in addition to the
//                                system's; peer and host are always verified
//   nHttpConnectTimeoutSeconds   default 30
//   nHttpTransferTimeoutSeconds  default 600: a transfer that moves no byte (or below
//                                1 byte/s) for this long is aborted; 0 switches it off
//
// Per request the client resets method, body and the last response; the header
// list and basic credentials stay until FreeHeaderList(), options set through
// SetOption* stay for the life of the client. Nothing secret is logged: not
// header values, bodies or credentials.
class HttpClient {
public:
    HttpClient();
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    // Prepares the transfer; may be called again (the connection stays). The
    // content type is a header line ("Content-Type: application/json") or just
    // the media type; it is sent with every request unless the header list has
    // its own Content-Type. Null or empty sends none. The two flags are accepted
    // for interface compatibility. A write callback, when given, receives the
    // response body (with the pointer of SetWriteCallbackData) instead of the
    // client's buffer. False only when libcurl could not give a handle.
    bool HttpClientInit(const char* contentType, bool flag1, bool flag2, HttpWriteCallback callback = nullptr);
    void SetWriteCallbackData(void* user);

    // type 0: adds the header line ("Name: value"; "Name:" removes a header
    // libcurl would add) to the following requests; type 1: basic credentials
    // "user:password" for the following requests. False for an unknown type,
    // empty text or a line break in the text.
    bool AppendHeader(int type, const std::string& text);
    // Forgets the header lines and the basic credentials.
    void FreeHeaderList();

    // Set a libcurl option of matching kind (SetOptionInt: number options,
    // SetOptionString: text options) for all following requests. False when the
    // option is unknown, of another kind, rejected by libcurl, or would weaken
    // TLS verification or print headers (CURLOPT_SSL_VERIFY*, CURLOPT_VERBOSE).
    bool SetOptionInt(int curlOption, long value);
    bool SetOptionString(int curlOption, const std::string& value);

    // The object whose job id the client's log lines carry (null: its own).
    void SetLogContext(const EventBase* ctx);

    // Performs the request with the current header list and waits for the
    // answer (bounded by the connect and low-speed limits). The body is sent
    // exactly as given, with its Content-Length (also 0 for an empty POST/PUT/
    // PATCH); GET and HEAD send none, DELETE only a non-empty one. True only
    // when the transfer succeeded and the status is 2xx; status, headers and
    // body of the answer stay readable either way. logFailure logs a failed
    // request (method, URL, status or transfer error, logText) at error level.
    bool SendHttpRequest(HTTP_REQ_TYPE type, const std::string& url, const char* body, size_t bodyLength,
                         bool flag, bool logFailure, const char* logText);

    // Body of the last response (NUL-terminated; size without the NUL), or null
    // when there is none. Valid until the next request.
    const char* GetHttpResponse(size_t& size, bool flag);
    // The whole raw header line of the last response ("Name: value\r\n" as
    // received), the name matched without regard to case, with or without its
    // colon ("Set-Cookie:" finds "set-cookie: a=b\r\n"); the first of repeated
    // headers; null when absent. Only the final answer's headers count (not
    // those of a 100 Continue or a proxy's CONNECT reply). Valid until the next
    // request.
    const char* GetHttpResponseHeader(const char* name);
    // HTTP status of the last response; 0 when no answer arrived.
    long GetHttpErrorCode();
    // Transfer error text of the last request (libcurl's), empty when the
    // transfer worked (also when the status was not 2xx).
    std::string GetLastTransferError() const;
    // How many requests this client has put on the wire (transfers started),
    // so a caller can tell how many attempts one logical request took.
    unsigned long long GetRequestCount() const;

    // "GET", "POST", ... or "unknown".
    static const char* GetHttpReqTypeString(HTTP_REQ_TYPE type);
    // Percent-encodes everything but unreserved characters; result empty on
    // failure (and for an empty text).
    void UrlEscape(const std::string& text, std::string& result);
    // On: every transfer error is logged (error text only), whatever logFailure says.
    void toggleTrace(bool on);

private:
    struct Impl;
    Impl* m_impl;
};

}  // namespace OracleCloudSDKWrapper
