#pragma once
#include <memory>
#include <string>

#include "facade/OracleCloudErrorHandler.h"
#include "oraclecloud/OracleCloudMessageRecords.h"
#include "oraclecloud/OracleCloudTypes.h"
#include "platform/DebugLog.h"
#include "platform/HttpClient.h"

namespace OracleCloudSDKWrapper {

// The HTTP connection shared by both backends. It owns one HttpClient (so
// keep-alive and TLS sessions survive between requests), the proxy settings, the
// service the next requests go to and the connected flag. The four verbs funnel
// into sendReq, which each backend implements with its own authentication and
// retry policy. Not thread-safe: one connection serves one thread at a time.
//
// Every send returns true only for a completed request with a 2xx answer; the
// answer's body is left in `response` either way, and its status stays readable
// through getLastHTTPErrorCode(). A backend puts its failure text in the last
// error (COracleCloudErrorHandler).
class COracleCloudBaseConnection : public COracleCloudErrorHandler {
public:
    explicit COracleCloudBaseConnection(COracleCloudParser* parser);
    virtual ~COracleCloudBaseConnection();

    COracleCloudBaseConnection(const COracleCloudBaseConnection&) = delete;
    COracleCloudBaseConnection& operator=(const COracleCloudBaseConnection&) = delete;

    // Backends log in (Classic) or set up request signing (OCI). The base cannot
    // connect and returns false.
    virtual bool connect(const std::string& server, const std::string& user, const std::string& password,
                         EOracleServiceType service);
    // false: no backend checks a connection at this level.
    virtual bool checkConnection();
    // Stores the proxy ("host:port"; empty = none) and its credentials; the
    // backend decides whether and when to apply them. Returns true.
    virtual bool SetWebProxy(const std::string& proxyServer, const std::string& proxyUser,
                             const std::string& proxyPassword);

    // The two flags are handed to sendReq unchanged (their meaning is the backend's).
    virtual bool get(const std::string& url, std::string& response, bool flag1, bool flag2);
    virtual bool post(const std::string& url, const std::string& body, std::string& response);
    virtual bool del(const std::string& url, const std::string& body, std::string& response);
    virtual bool put(const std::string& url, const std::string& body, std::string& response);

    // Appends "?" + argument to an empty query, "&" + argument otherwise. The
    // argument ("name=value") is not encoded here.
    virtual void appendQueryStringArgument(std::string& query, const std::string& argument);

    virtual std::string getServer();
    virtual std::string getUser();
    virtual std::string getPwd();
    // Empty in the base; Classic: the identity domain; OCI: the tenancy id.
    virtual std::string getIdentityDomain();
    // HTTP status of the last request (0 when no answer was received).
    virtual long getLastHTTPErrorCode();
    // The whole raw header line of the last answer ("Name: value\r\n"), or empty
    // when name is null or the answer had no such header.
    virtual std::string getHttpResponseHeader(const char* name);
    // The value of a raw header line as getHttpResponseHeader returns it: the
    // text after the first colon without surrounding blanks and line ends;
    // empty for an empty line or one without a colon. Both backends read the
    // headers they need (OCI's next page, the PaaS job location) through it.
    static std::string headerLineValue(const std::string& line);
    virtual EOracleServiceType getService();
    virtual void setService(const EOracleServiceType& service);
    // Region of the next requests; the base has none (OCI overrides both).
    virtual void setRegion(const std::string& region);
    virtual std::string getRegion();

    // One request with the backend's policy (session renewal, retries).
    virtual bool sendReq(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                         bool flag1, bool flag2) = 0;
    // Exactly one request: headers, send, receive, log.
    virtual bool _sendReqFull(HTTP_REQ_TYPE type, const std::string& url, const std::string& body,
                              std::string& response, bool flag1, bool flag2) = 0;
    // Copies the body of the last answer into response (empty when there was none).
    virtual void recvResp(std::string& response);
    virtual void LogResponse(const std::string& url, const std::string& response) = 0;

    // Percent-encodes text for a URL. When encoding yields nothing (also for an
    // empty text) the failure is logged and the text is returned unchanged.
    std::string urlEncode(const std::string& text);

    // Extension: the record of the last failed request. Every request made
    // through get, post, put and del is numbered; when one fails, its record
    // (method and path, status, the error body's code and message, both
    // request ids, the transfer error, the attempts it took; no message) is
    // kept with its number until the next failure. The facade takes it over
    // together with the error text of a failed call.
    unsigned long long getRequestSequence() const { return requestSequence; }
    unsigned long long getFailedRequestSequence() const { return failedRequestSequence; }
    const SOracleCloudFailureInfoLib& getLastRequestFailure() const { return lastRequestFailure; }

protected:
    // The "opc-request-id" a backend sends with the current request (OCI
    // only), for the failure record; cleared before every request.
    std::string clientRequestId;
    std::unique_ptr<HttpClient> httpClient;
    bool connected;
    DebugLog debugLog;
    std::string server;
    std::string user;
    std::string pwd;                    // secret: never logged
    bool logResponsesAlways;            // log answers at level 0 instead of 2
    bool logAllCurlErrors;
    EOracleServiceType service;
    std::string proxyServer;
    std::string proxyUser;
    std::string proxyPassword;          // secret: never logged

private:
    // sendReq, numbered, with the failure record kept when it fails.
    bool sendCounted(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                     bool flag1, bool flag2);
    void recordFailure(HTTP_REQ_TYPE type, const std::string& url, const std::string& response,
                       unsigned long long attempts);

    unsigned long long requestSequence = 0;
    unsigned long long failedRequestSequence = 0;
    SOracleCloudFailureInfoLib lastRequestFailure;
};

}  // namespace OracleCloudSDKWrapper
