#pragma once
#include <string>

#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

// The connection of the Classic backend.
//
// Compute Classic (service 1): connect() logs in by posting user and password
// to "authenticate/", keeps the session cookie that the login answer sets and
// sends it with every later request. When a request is answered 401 with
// exactly {"message": "Authorization token is invalid"} the session has
// expired: the connection logs in again and repeats that request once.
// The PaaS services (2 database, 8 Java, 9 MySQL): nothing is sent by
// connect(); every request carries basic credentials and "X-ID-TENANT-NAME".
//
// URLs given to the verbs are relative to the server given to connect() (with
// or without "https://" and a trailing "/"). The Classic backend applies no
// proxy: SetWebProxy stores the values, which are never used.
//
// The two flags of get/sendReq/_sendReqFull: the first asks for a directory
// listing (Accept: application/oracle-compute-v3+directory+json), the second
// logs a failed request at error level (write verbs: false, true).
//
// On false the answer's body is in `response` and its status in
// getLastHTTPErrorCode(); when no answer came at all, or it broke off in its
// body, `response` is empty and GetLastError() holds the transfer's error text. Neither the password, the login body, the cookie nor
// the basic credentials reach the log at any level; answers of
// "authenticate/", "paas/api/v1.1/instancemgmt" and "sshkey" are never logged,
// other answers (level 2) and request bodies (level 4, and failures) with
// secret members masked. Not thread-safe: one connection serves one thread.
class COracleCloudClassicConnection : public COracleCloudBaseConnection {
public:
    explicit COracleCloudClassicConnection(COracleCloudParser* parser);
    ~COracleCloudClassicConnection() override;

    // Compute: "/Compute-" is put in front of a user that does not contain it
    // ("acme/jdoe" logs in as "/Compute-acme/jdoe"); true when the login
    // succeeded, otherwise the service's "message" is the last error. PaaS:
    // user is "<identity domain>/<user>"; true without a request. Any other
    // service type: "Received unsupported service type [%d]" and false.
    bool connect(const std::string& server, const std::string& user, const std::string& password,
                 EOracleServiceType service) override;
    // Compute: "Compute-<domain>" (the user's text between its leading "/" and
    // its last "/"); PaaS: the text before the user's last "/". Empty when the
    // user has no "/".
    std::string getIdentityDomain() override;

    bool sendReq(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                 bool directory, bool logFailure) override;
    bool _sendReqFull(HTTP_REQ_TYPE type, const std::string& url, const std::string& body, std::string& response,
                      bool directory, bool logFailure) override;
    void LogResponse(const std::string& url, const std::string& response) override;

    // full = server (with "/" added unless it ends in one) + url, with
    // "https://" in front unless the server starts with it (any case).
    // Departure: a url that already starts with "http://" or "https://" is
    // used unchanged, because the PaaS services answer a job's address as an
    // absolute URL (header "Location") and the caller polls it through this
    // same connection.
    void computeUrl(const std::string& serverText, const std::string& url, std::string& full);
    // Rebuilds the header list of the next request: Accept, User-Agent and,
    // once logged in, the session cookie (Compute) or basic credentials and
    // tenant header (PaaS). False when a header could not be set (logged).
    bool setCommonCurlHeaders(bool directory);
    // Basic credentials: the text after the last "/" of the user, and the password.
    bool addLoginCurlHeaders();
    // True only on a Compute connection whose last answer was 401 with
    // exactly the expired-session body.
    bool IsSessionCookieExpired(const std::string& response);

    // The login body: {"password": "<pw>", "user": "<user>"}, blank after
    // each colon and the comma. Departure: a '"', '\' or control character
    // in the values is escaped as JSON requires; any other text goes in as it
    // is, so ordinary credentials give exactly the bytes above.
    static std::string BuildLoginBody(const std::string& user, const std::string& password);
    // The cookie kept from a raw "Set-Cookie:" header line: the line from its
    // 12th character on (" nimbula=..."), without trailing "\r\n"; empty when
    // the line has 11 characters or fewer. It is sent as "Cookie:" + cookie.
    // Departure: also empty when a line break (a bare CR) remains inside, as
    // such a text cannot be sent back as one header line.
    static std::string CookieFromSetCookieLine(const std::string& line);
    // The text every Compute login user must contain.
    static const char* const kComputeUserPrefix;  // "/Compute-"

    // For diagnostics and tests; the cookie itself is never exposed.
    bool isAwaitingSessionCookie() const { return awaitingSessionCookie; }
    bool hasSessionCookie() const { return !sessionCookie.empty(); }

private:
    bool isPaaS() const;

    bool awaitingSessionCookie;  // the next successful answer is a login answer
    std::string sessionCookie;   // secret: never logged
    bool reconnecting;           // a re-login is under way: no second one from inside it
};

}  // namespace OracleCloudSDKWrapper
