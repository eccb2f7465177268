#pragma once
#include <cstddef>
#include <string>
#include <vector>

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

// One HTTP transfer object over one libcurl easy handle. The handle is kept for
// the life of the client so that connections and TLS sessions are reused.
// Not thread-safe: one client serves one thread at a time.
//
// Configuration (section "VirtualServer", read when the client is built):
//   sCACertFile                  extra CA bundle (PEM); peer and host are always verified
//   nHttpConnectTimeoutSeconds   default 30
//   nHttpTransferTimeoutSeconds  default 600: a transfer below 1 byte/s for this long is aborted
class HttpClient {
public:
    HttpClient();
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    // Prepares the transfer; contentType is sent as the request's Content-Type.
    // The two flags are accepted for interface compatibility. A write callback,
    // when given, receives the response body instead of the client's buffer.
    bool HttpClientInit(const char* contentType, bool flag1, bool flag2, HttpWriteCallback callback = nullptr);

    // type 0: adds the header line to the next request; type 1: basic credentials.
    bool AppendHeader(int type, const std::string& text);
    void FreeHeaderList();

    bool SetOptionInt(int curlOption, long value);
    bool SetOptionString(int curlOption, const std::string& value);

    // Performs the request with the current header list. True only when the
    // transfer succeeded and the status is 2xx; status, headers and body of the
    // answer stay readable either way.
    bool SendHttpRequest(HTTP_REQ_TYPE type, const std::string& url, const char* body, size_t bodyLength,
                         bool flag, bool logFailure, const char* logText);

    // Body of the last response (NUL-terminated), or null when there is none.
    const char* GetHttpResponse(size_t& size, bool flag);
    // The whole raw header line of the last response ("Name: value\r\n" as
    // received), the name matched without regard to case; null when absent.
    const char* GetHttpResponseHeader(const char* name);
    long GetHttpErrorCode();
    // Transfer error text of the last request (libcurl's), empty after success.
    std::string GetLastTransferError() const;

    static const char* GetHttpReqTypeString(HTTP_REQ_TYPE type);
    void UrlEscape(const std::string& text, std::string& result);
    void toggleTrace(bool on);

private:
    struct Impl;
    Impl* m_impl;
};

}  // namespace OracleCloudSDKWrapper
