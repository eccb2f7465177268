#pragma once
#include <cstdint>
#include <string>

#include "transport/OracleCloudBaseConnection.h"
#include "transport/SignerInfo.h"

namespace OracleCloudSDKWrapper {

// The connection of the OCI backend: signs every request with the API user's
// RSA key (HTTP Signature "rsa-sha256"), sends it to the host of the current
// service type and region, and retries answers 429 and 500 with a growing pause.
//
// Configuration, read once in the constructor from section "VirtualServer":
//   nOCIRequestRetryInitialIntervalInSeconds  first pause, seconds (default 2)
//   sOCIRequestRetryIntervalMultiplier        growth of the pause, 1.0 to 2.0 (default 2.0)
//   nOCIMaximumRequestRetryCount              retries after the first attempt (default 6)
//   sOCIApiDomain                             domain after the region in host names ("oraclecloud.com")
//   sOCIEndpointOverride                      scheme://host[:port] every request is sent to instead of
//                                             the service host; the Host header and the signature keep
//                                             the service host (private endpoints, the emulator)
// and in connect(): OracleCloudLogAllCurlError (non-zero logs every failed transfer).
//
// Extension: after the designed headers, and outside the signature, every
// request carries "User-Agent: OracleCloudSDKWrapper/<version>" and an
// "opc-request-id" of 32 hex digits, the same for all attempts of one request
// (it lands in the failure record, see COracleCloudBaseConnection).
// Extension: every POST except a search (which only reads) also carries an
// "opc-retry-token" of 32 hex digits, unsigned like the two above and the same
// for every attempt of that request, so that a retried create whose first
// attempt did reach the service is not done twice.
//
// Every send waits on the caller's thread, pauses included (with the defaults a
// request can take 126 s of pauses plus seven transfers). Not thread-safe: one
// connection serves one thread at a time; connections on different threads may
// sign at the same time.
class COracleCloudInfrastructureConnection : public COracleCloudBaseConnection {
public:
    explicit COracleCloudInfrastructureConnection(COracleCloudParser* parser);
    ~COracleCloudInfrastructureConnection() override;

    // server: tenancy OCID; user: "userOCID|fingerprint|keyFile[|region]" (a
    // bare key file name is looked up under dBASEHOME/certificates/external);
    // password: the key's pass phrase (may be empty). Sends nothing: a wrong key
    // shows at the first request. False when the HTTP client cannot be prepared
    // or the user text has fewer than three tokens (then nothing changes).
    bool connect(const std::string& server, const std::string& user, const std::string& password,
                 EOracleServiceType service) override;
    // The tenancy OCID.
    std::string getIdentityDomain() override;
    // The region of the next requests' hosts.
    void setRegion(const std::string& region) override;
    std::string getRegion() override;

    // One request with retries: answers 429 and 500 are retried up to
    // nOCIMaximumRequestRetryCount times, each attempt signed anew. True for a
    // 2xx answer. On false the last answer's body is in `response` and its
    // status in getLastHTTPErrorCode() (0 when no answer came); when no answer
    // came or it broke off in its body, `response` is empty and GetLastError()
    // holds the transfer's error text. The flags are
    // accepted for the interface and ignored.
    bool sendReq(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                 bool flag1, bool flag2) override;
    // Exactly one signed attempt. False also when not connected, the method is
    // unknown or the request cannot be signed (a wrong pass phrase leaves
    // "Failed to decrypt the private key. ..." as the last error).
    bool _sendReqFull(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                      bool flag1, bool flag2) override;
    void LogResponse(const std::string& url, const std::string& response) override;

    // A url starting with "https://" (any case) is used as it is; otherwise the
    // base (the override, or "https://" + getEndPoint()) is put in front. True.
    bool computeUrl(const std::string& url, std::string& fullUrl);
    // "<label><region>.<domain>" for the current service type; empty for a
    // service type that OCI does not have.
    std::string getEndPoint();
    // Rebuilds the client's header list for one request from the last signature.
    bool setCurlHeaders(HTTP_REQ_TYPE type, const std::string& url, const std::string& body);
    // True exactly for 429 and 500.
    bool isRetryableHTTPError(long code);

    // method (lower case) + " " + url as passed to the verb.
    std::string buildRequestTarget(const std::string& method, const std::string& url);
    // Signs one request: fills dateString, requestTarget, contentSha256Header
    // (writes only) and authorizationHeader. False when the key cannot be used.
    bool getAuthorizationToken(const std::string& method, const std::string& url, const std::string& body);

    // Read-only views of the state above, for diagnostics and tests.
    const SSignerInfoLib& getSignerInfo() const { return signerInfo; }
    const std::string& getAuthorizationHeader() const { return authorizationHeader; }
    const std::string& getDateString() const { return dateString; }
    const std::string& getContentSha256Header() const { return contentSha256Header; }
    const std::string& getRequestTarget() const { return requestTarget; }
    uint32_t getRequestRetryInitialInterval() const { return requestRetryInitialInterval; }
    float getRequestRetryMultiplier() const { return requestRetryMultiplier; }
    uint32_t getMaxRequestRetryCount() const { return maxRequestRetryCount; }
    const std::string& getApiDomain() const { return apiDomain; }
    const std::string& getEndpointOverride() const { return endpointOverride; }

protected:
    // Pause between attempts; the only place the retry loop waits.
    virtual void sleepBeforeRetry(unsigned seconds);

    SSignerInfoLib signerInfo;
    std::string authorizationHeader;
    std::string dateString;
    std::string contentSha256Header;
    std::string requestTarget;
    uint32_t requestRetryInitialInterval;
    float requestRetryMultiplier;
    uint32_t maxRequestRetryCount;
    std::string apiDomain;         // without a leading dot
    std::string endpointOverride;  // without a trailing slash; empty = none
    std::string retryToken;        // of the POST being sent; empty for other requests
    bool m_lastAttemptSent = false;  // the last attempt reached the HTTP client
};

}  // namespace OracleCloudSDKWrapper
