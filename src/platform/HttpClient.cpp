#include "platform/HttpClient.h"

#include <curl/curl.h>
#include <curl/options.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <chrono>
#include <climits>
#include <memory>
#include <mutex>

#include "platform/DebugLog.h"
#include "platform/PlatformConfig.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {
namespace {

const char* const kSection = "VirtualServer";

// curl_global_init is not thread-safe and must run once before any handle;
// agents build clients on many threads.
void GlobalInitOnce() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

bool StartsWithNoCase(const std::string& text, const std::string& prefix) {
    return text.size() >= prefix.size() && StringUtil::FindNoCase(text.substr(0, prefix.size()), prefix) == 0;
}

// Overwrites a secret before its memory is given back.
void Wipe(std::string& s) {
    volatile char* p = s.empty() ? nullptr : &s[0];
    for (size_t i = 0; i < s.size(); ++i) p[i] = 0;
    s.clear();
}

// "https://user:pw@host/..." must not reach a log line.
std::string UrlForLog(const std::string& url) {
    size_t scheme = url.find("://");
    size_t hostStart = scheme == std::string::npos ? 0 : scheme + 3;
    size_t hostEnd = url.find_first_of("/?#", hostStart);
    size_t at = url.rfind('@', hostEnd == std::string::npos ? url.size() : hostEnd);
    if (at == std::string::npos || at < hostStart) return url;
    return url.substr(0, hostStart) + "***@" + url.substr(at + 1);
}

struct EasyCleanup {
    void operator()(CURL* h) const { curl_easy_cleanup(h); }
};
using EasyHandle = std::unique_ptr<CURL, EasyCleanup>;

}  // namespace

struct HttpClient::Impl {
    // Holds the configuration and the caller's options and never runs a
    // transfer itself: each request runs on a copy of it (see SendHttpRequest).
    CURL* base = nullptr;
    // Connection cache, TLS sessions and resolved names of all the client's
    // requests. It has no lock callbacks: the client serves one thread at a
    // time, so no two of its transfers ever touch the share at once.
    CURLSH* share = nullptr;
    char errorBuffer[CURL_ERROR_SIZE] = {0};

    // Set up once, kept across requests.
    std::string contentTypeLine;
    HttpWriteCallback userWrite = nullptr;
    void* userWriteData = nullptr;
    bool trace = false;
    DebugLog ownLog;
    const EventBase* logCtx = nullptr;
    std::vector<X509*> extraCaCerts;  // from sCACertFile
    long long stallSeconds = 0;       // 0: no stall watchdog

    // Progress of the running transfer, for the stall watchdog.
    curl_off_t progressBytes = 0;
    std::chrono::steady_clock::time_point progressTime;
    bool stalled = false;

    // Request state chosen by the caller, kept until FreeHeaderList().
    std::vector<std::string> headerLines;
    std::string basicCredentials;
    bool hasBasicCredentials = false;
    curl_slist* requestHeaders = nullptr;  // built per request, alive during it

    // Last response.
    long status = 0;
    std::string body;
    std::vector<std::string> responseHeaders;
    std::string transferError;
    unsigned long long requestCount = 0;  // transfers started by this client

    const EventBase* Ctx() const { return logCtx ? logCtx : &ownLog; }

    ~Impl() {
        if (base) curl_easy_cleanup(base);
        // After every handle that used it; closes the cached connections.
        if (share) curl_share_cleanup(share);
        curl_slist_free_all(requestHeaders);
        for (X509* c : extraCaCerts) X509_free(c);
        Wipe(basicCredentials);
    }

    static size_t OnBody(char* data, size_t size, size_t count, void* user) {
        auto* self = static_cast<Impl*>(user);
        size_t n = size * count;
        if (self->userWrite) return self->userWrite(data, size, count, self->userWriteData);
        self->body.append(data, n);
        return n;
    }

    // Each status line opens a new header block: what stays is the block of
    // the final answer, not that of a 100 Continue or a proxy CONNECT.
    static size_t OnHeader(char* data, size_t size, size_t count, void* user) {
        auto* self = static_cast<Impl*>(user);
        size_t n = size * count;
        std::string line(data, n);
        if (line.compare(0, 5, "HTTP/") == 0) {
            self->responseHeaders.clear();
        } else if (line != "\r\n" && line != "\n") {
            self->responseHeaders.push_back(std::move(line));
        }
        return n;
    }

    // libcurl's low-speed check averages over a window of several seconds, so
    // a burst before a stall keeps a dead transfer alive well past its limit.
    // This watchdog aborts once no byte has moved either way for the limit.
    static int OnProgress(void* user, curl_off_t, curl_off_t dlnow, curl_off_t, curl_off_t ulnow) {
        auto* self = static_cast<Impl*>(user);
        auto now = std::chrono::steady_clock::now();
        curl_off_t moved = dlnow + ulnow;
        if (moved != self->progressBytes) {
            self->progressBytes = moved;
            self->progressTime = now;
            return 0;
        }
        if (now - self->progressTime >= std::chrono::seconds(self->stallSeconds)) {
            self->stalled = true;
            return 1;
        }
        return 0;
    }

    // Runs for every new TLS connection, after libcurl has loaded the default
    // CA store: the extra CAs are added to it rather than replacing it.
    static CURLcode OnSslContext(CURL*, void* sslCtx, void* user) {
        auto* self = static_cast<Impl*>(user);
        X509_STORE* store = SSL_CTX_get_cert_store(static_cast<SSL_CTX*>(sslCtx));
        if (!store) return CURLE_SSL_CERTPROBLEM;
        for (X509* cert : self->extraCaCerts) X509_STORE_add_cert(store, cert);
        // A CA already in the store (shared CA cache) is not an error.
        ERR_clear_error();
        return CURLE_OK;
    }

    void LoadExtraCa(const std::string& path) {
        BIO* bio = BIO_new_file(path.c_str(), "r");
        if (!bio) {
            ERR_clear_error();
            OCW_LOG_ERROR(Ctx(), "Cannot read CA file [%s] (sCACertFile); only the system's CAs are trusted",
                          path.c_str());
            return;
        }
        while (X509* cert = PEM_read_bio_X509(bio, nullptr, nullptr, nullptr)) extraCaCerts.push_back(cert);
        ERR_clear_error();  // the loop ends on "no start line"
        BIO_free(bio);
        if (extraCaCerts.empty())
            OCW_LOG_ERROR(Ctx(), "CA file [%s] (sCACertFile) holds no PEM certificate", path.c_str());
    }

    void CreateShare() {
        share = curl_share_init();
        CURLSHcode rc = share ? CURLSHE_OK : CURLSHE_NOMEM;
        for (curl_lock_data what : {CURL_LOCK_DATA_CONNECT, CURL_LOCK_DATA_SSL_SESSION, CURL_LOCK_DATA_DNS})
            if (rc == CURLSHE_OK) rc = curl_share_setopt(share, CURLSHOPT_SHARE, what);
        if (rc != CURLSHE_OK) {
            // Still correct, only slower: every request opens its own connection.
            OCW_LOG_ERROR(Ctx(), "Cannot share connections between requests: %s", curl_share_strerror(rc));
            if (share) curl_share_cleanup(share);
            share = nullptr;
        }
    }

    void Configure() {
        CURL* curl = base;
        curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, errorBuffer);
        curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &Impl::OnBody);
        curl_easy_setopt(curl, CURLOPT_WRITEDATA, this);
        curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, &Impl::OnHeader);
        curl_easy_setopt(curl, CURLOPT_HEADERDATA, this);
        curl_easy_setopt(curl, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
        curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "https,http");
        curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 0L);
        curl_easy_setopt(curl, CURLOPT_TCP_KEEPALIVE, 1L);
        curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L);
        curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L);

        long long connectTimeout = PlatformConfig::getNumber(kSection, "nHttpConnectTimeoutSeconds", 30);
        if (connectTimeout < 0) connectTimeout = 30;
        curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, static_cast<long>(connectTimeout));
        long long lowSpeedTime = PlatformConfig::getNumber(kSection, "nHttpTransferTimeoutSeconds", 600);
        if (lowSpeedTime > 0) {
            curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
            curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, static_cast<long>(lowSpeedTime));
            stallSeconds = lowSpeedTime;
            curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &Impl::OnProgress);
            curl_easy_setopt(curl, CURLOPT_XFERINFODATA, this);
            curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
        }

        std::string caFile = PlatformConfig::getStringTrim(kSection, "sCACertFile");
        if (!caFile.empty()) {
            LoadExtraCa(caFile);
            if (!extraCaCerts.empty()) {
                CURLcode rc = curl_easy_setopt(curl, CURLOPT_SSL_CTX_FUNCTION, &Impl::OnSslContext);
                if (rc == CURLE_OK) rc = curl_easy_setopt(curl, CURLOPT_SSL_CTX_DATA, this);
                if (rc != CURLE_OK) {
                    // A TLS backend without context hooks: trust the file alone
                    // rather than not at all.
                    OCW_LOG_ERROR(Ctx(), "TLS backend cannot extend the CA store (%s); trusting only [%s]",
                                  curl_easy_strerror(rc), caFile.c_str());
                    curl_easy_setopt(curl, CURLOPT_CAINFO, caFile.c_str());
                }
            }
        }
    }

    void ResetResponse() {
        status = 0;
        body.clear();
        responseHeaders.clear();
        transferError.clear();
        errorBuffer[0] = '\0';
        progressBytes = 0;
        progressTime = std::chrono::steady_clock::now();
        stalled = false;
    }

    bool HeaderListHasContentType() const {
        for (const auto& h : headerLines)
            if (StartsWithNoCase(h, "content-type:") || StartsWithNoCase(h, "content-type;")) return true;
        return false;
    }

    bool BuildHeaders(CURL* curl) {
        curl_slist_free_all(requestHeaders);
        requestHeaders = nullptr;
        std::vector<std::string> lines;
        if (!HeaderListHasContentType()) {
            // Without a content type of our own libcurl would label a body as
            // a form; "Content-Type:" keeps it from adding any.
            lines.push_back(contentTypeLine.empty() ? std::string("Content-Type:") : contentTypeLine);
        }
        lines.insert(lines.end(), headerLines.begin(), headerLines.end());
        // No "Expect: 100-continue": bodies go out at once, with no wait for a
        // go-ahead the server may never send.
        lines.emplace_back("Expect:");
        for (const auto& l : lines) {
            curl_slist* next = curl_slist_append(requestHeaders, l.c_str());
            if (!next) return false;
            requestHeaders = next;
        }
        return curl_easy_setopt(curl, CURLOPT_HTTPHEADER, requestHeaders) == CURLE_OK;
    }

    // The handle copies the caller's options, which may include method or body
    // options of their own: every request states its whole method setup.
    bool SetMethod(CURL* curl, HTTP_REQ_TYPE type, const char* data, size_t length) {
        static const char kEmpty[] = "";
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(-1));
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, static_cast<const char*>(nullptr));
        curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, static_cast<const char*>(nullptr));
        curl_easy_setopt(curl, CURLOPT_HTTPGET, 1L);  // also clears NOBODY and UPLOAD
        auto withBody = [&](const char* method) {
            curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(data ? length : 0));
            curl_easy_setopt(curl, CURLOPT_POSTFIELDS, data ? data : kEmpty);
            if (method) curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, method);
        };
        switch (type) {
            case HTTP_REQ_GET:
                return true;
            case HTTP_REQ_HEAD:
                curl_easy_setopt(curl, CURLOPT_NOBODY, 1L);
                return true;
            case HTTP_REQ_POST:
                withBody(nullptr);
                return true;
            case HTTP_REQ_PUT:
                withBody("PUT");
                return true;
            case HTTP_REQ_PATCH:
                withBody("PATCH");
                return true;
            case HTTP_REQ_DELETE:
                if (data && length > 0)
                    withBody("DELETE");
                else
                    curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, "DELETE");
                return true;
        }
        return false;
    }
};

HttpClient::HttpClient() : m_impl(new Impl) {
    GlobalInitOnce();
    m_impl->base = curl_easy_init();
    if (m_impl->base) {
        m_impl->Configure();
        m_impl->CreateShare();
    } else {
        OCW_LOG_ERROR(m_impl->Ctx(), "curl_easy_init failed");
    }
}

HttpClient::~HttpClient() { delete m_impl; }

bool HttpClient::HttpClientInit(const char* contentType, bool, bool, HttpWriteCallback callback) {
    if (!m_impl->base) return false;
    std::string ct = contentType ? StringUtil::Trim(contentType) : std::string();
    if (ct.find_first_of("\r\n") != std::string::npos) {
        OCW_LOG_ERROR(m_impl->Ctx(), "Content type contains a line break");
        return false;
    }
    if (!ct.empty() && ct.find(':') == std::string::npos) ct = "Content-Type: " + ct;
    m_impl->contentTypeLine = ct;
    m_impl->userWrite = callback;
    return true;
}

void HttpClient::SetWriteCallbackData(void* user) { m_impl->userWriteData = user; }

bool HttpClient::AppendHeader(int type, const std::string& text) {
    if (text.empty() || text.find_first_of("\r\n") != std::string::npos) return false;
    switch (type) {
        case HTTP_HEADER_LINE:
            m_impl->headerLines.push_back(text);
            return true;
        case HTTP_HEADER_BASIC_AUTH:
            Wipe(m_impl->basicCredentials);
            m_impl->basicCredentials = text;
            m_impl->hasBasicCredentials = true;
            return true;
        default:
            return false;
    }
}

void HttpClient::FreeHeaderList() {
    m_impl->headerLines.clear();
    Wipe(m_impl->basicCredentials);
    m_impl->hasBasicCredentials = false;
}

bool HttpClient::SetOptionInt(int curlOption, long value) {
    if (!m_impl->base) return false;
    const curl_easyoption* info = curl_easy_option_by_id(static_cast<CURLoption>(curlOption));
    if (!info || (info->type != CURLOT_LONG && info->type != CURLOT_VALUES && info->type != CURLOT_OFF_T)) {
        OCW_LOG_ERROR(m_impl->Ctx(), "Option %d is not a number option", curlOption);
        return false;
    }
    switch (info->id) {
        case CURLOPT_SSL_VERIFYPEER:
        case CURLOPT_PROXY_SSL_VERIFYPEER:
            if (value == 1) return true;
            OCW_LOG_ERROR(m_impl->Ctx(), "Refusing to switch TLS peer verification off");
            return false;
        case CURLOPT_SSL_VERIFYHOST:
        case CURLOPT_PROXY_SSL_VERIFYHOST:
            if (value == 2) return true;
            OCW_LOG_ERROR(m_impl->Ctx(), "Refusing to weaken TLS host verification");
            return false;
        case CURLOPT_VERBOSE:
            if (value == 0) return true;
            // libcurl's own trace prints request headers, secrets included.
            OCW_LOG_ERROR(m_impl->Ctx(), "Refusing CURLOPT_VERBOSE: it would print request headers");
            return false;
        default:
            break;
    }
    CURLcode rc = info->type == CURLOT_OFF_T
                      ? curl_easy_setopt(m_impl->base, info->id, static_cast<curl_off_t>(value))
                      : curl_easy_setopt(m_impl->base, info->id, value);
    return rc == CURLE_OK;
}

bool HttpClient::SetOptionString(int curlOption, const std::string& value) {
    if (!m_impl->base) return false;
    const curl_easyoption* info = curl_easy_option_by_id(static_cast<CURLoption>(curlOption));
    if (!info || info->type != CURLOT_STRING) {
        OCW_LOG_ERROR(m_impl->Ctx(), "Option %d is not a text option", curlOption);
        return false;
    }
    // libcurl copies text options, so the caller's string may go away.
    return curl_easy_setopt(m_impl->base, info->id, value.c_str()) == CURLE_OK;
}

void HttpClient::SetLogContext(const EventBase* ctx) { m_impl->logCtx = ctx; }

bool HttpClient::SendHttpRequest(HTTP_REQ_TYPE type, const std::string& url, const char* body, size_t bodyLength,
                                 bool, bool logFailure, const char* logText) {
    Impl& d = *m_impl;
    d.ResetResponse();
    const char* method = GetHttpReqTypeString(type);
    if (!d.base) {
        d.transferError = "no transfer handle";
        return false;
    }
    if (url.empty()) {
        d.transferError = "no URL given";
        if (logFailure || d.trace) OCW_LOG_ERROR(d.Ctx(), "HTTP %s request without a URL", method);
        return false;
    }
    // A fresh handle per request: nothing libcurl keeps in a handle about one
    // transfer can reach the next (libcurl before 8.1.0 unfolded an answer's
    // folded first header line into the previous transfer's freed headers).
    // Connections and TLS sessions live in the share and are still reused.
    EasyHandle handle(curl_easy_duphandle(d.base));
    CURL* curl = handle.get();
    if (!curl) {
        d.transferError = "cannot create a transfer handle";
        if (logFailure || d.trace) OCW_LOG_ERROR(d.Ctx(), "HTTP %s: %s", method, d.transferError.c_str());
        return false;
    }
    if (d.share) curl_easy_setopt(curl, CURLOPT_SHARE, d.share);
    if (!d.SetMethod(curl, type, body, bodyLength)) {
        d.transferError = StringUtil::Format("unsupported request type %d", static_cast<int>(type));
        if (logFailure || d.trace) OCW_LOG_ERROR(d.Ctx(), "%s", d.transferError.c_str());
        return false;
    }
    if (!d.BuildHeaders(curl)) {
        d.transferError = "cannot build the request headers";
        if (logFailure || d.trace) OCW_LOG_ERROR(d.Ctx(), "%s", d.transferError.c_str());
        return false;
    }
    if (d.hasBasicCredentials) {
        curl_easy_setopt(curl, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
        curl_easy_setopt(curl, CURLOPT_USERPWD, d.basicCredentials.c_str());
    } else {
        curl_easy_setopt(curl, CURLOPT_USERPWD, static_cast<const char*>(nullptr));
    }
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());

    ++d.requestCount;
    CURLcode rc = curl_easy_perform(curl);
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &d.status);
    if (rc != CURLE_OK) {
        if (d.stalled)
            d.transferError = StringUtil::Format("Transfer stalled: no data moved for %lld seconds", d.stallSeconds);
        else
            d.transferError = d.errorBuffer[0] ? std::string(d.errorBuffer) : std::string(curl_easy_strerror(rc));
        if (logFailure || d.trace)
            OCW_LOG_ERROR(d.Ctx(), "HTTP %s [%s] failed: %s%s%s", method, UrlForLog(url).c_str(),
                          d.transferError.c_str(), logText ? " - " : "", logText ? logText : "");
        return false;
    }
    if (d.status < 200 || d.status > 299) {
        if (logFailure)
            OCW_LOG_ERROR(d.Ctx(), "HTTP %s [%s] answered with status %ld%s%s", method, UrlForLog(url).c_str(),
                          d.status, logText ? " - " : "", logText ? logText : "");
        return false;
    }
    return true;
}

const char* HttpClient::GetHttpResponse(size_t& size, bool) {
    size = m_impl->body.size();
    return m_impl->body.empty() ? nullptr : m_impl->body.c_str();
}

const char* HttpClient::GetHttpResponseHeader(const char* name) {
    if (!name) return nullptr;
    std::string wanted = StringUtil::Trim(name);
    if (!wanted.empty() && wanted.back() == ':') wanted.pop_back();
    if (wanted.empty()) return nullptr;
    wanted += ':';
    for (const auto& line : m_impl->responseHeaders)
        if (StartsWithNoCase(line, wanted)) return line.c_str();
    return nullptr;
}

long HttpClient::GetHttpErrorCode() { return m_impl->status; }

std::string HttpClient::GetLastTransferError() const { return m_impl->transferError; }

unsigned long long HttpClient::GetRequestCount() const { return m_impl->requestCount; }

const char* HttpClient::GetHttpReqTypeString(HTTP_REQ_TYPE type) {
    switch (type) {
        case HTTP_REQ_GET: return "GET";
        case HTTP_REQ_POST: return "POST";
        case HTTP_REQ_PUT: return "PUT";
        case HTTP_REQ_DELETE: return "DELETE";
        case HTTP_REQ_HEAD: return "HEAD";
        case HTTP_REQ_PATCH: return "PATCH";
    }
    return "unknown";
}

void HttpClient::UrlEscape(const std::string& text, std::string& result) {
    result.clear();
    if (text.empty() || text.size() > static_cast<size_t>(INT_MAX)) return;
    char* escaped = curl_easy_escape(m_impl->base, text.data(), static_cast<int>(text.size()));
    if (!escaped) return;
    result = escaped;
    curl_free(escaped);
}

void HttpClient::toggleTrace(bool on) { m_impl->trace = on; }

}  // namespace OracleCloudSDKWrapper
