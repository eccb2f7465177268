#pragma once
#include <string>

namespace OracleCloudSDKWrapper {

class COracleCloudParser;
class EventBase;

// Holds the text of the most recent failure of one backend object (connection,
// queries or operations). The facade copies it after a delegated call returned
// false, so the text must be read right after that call: success never clears it.
class COracleCloudErrorHandler {
public:
    // parser: shared by the backend, owned by the facade; may be null, in which
    // case error bodies cannot be read and yield an empty text.
    explicit COracleCloudErrorHandler(COracleCloudParser* parser);
    ~COracleCloudErrorHandler();

    COracleCloudErrorHandler(const COracleCloudErrorHandler&) = delete;
    COracleCloudErrorHandler& operator=(const COracleCloudErrorHandler&) = delete;

    // An empty response keeps the previous text. Otherwise the last error becomes
    // the "message" member of the response object, or the empty text when the
    // response is not a JSON object with such a member (the parser logs why).
    void SetLastErrorFromResponse(const std::string& response);

    std::string GetLastError() const { return m_lastError; }
    void SetLastError(const std::string& text) { m_lastError = text; }

protected:
    // After a failed request: the answer's "message" (as above), or, when no
    // answer body came, senderError (the connection's text for a transfer or
    // signing failure).
    void SetLastErrorFromFailedRequest(const std::string& response, const std::string& senderError);
    // Logs the formatted text as an error under `signature` (the caller's
    // __PRETTY_FUNCTION__; see OCW_FAIL), makes it the last error and returns false.
    bool failWith(const EventBase* ctx, const char* signature, const char* fmt, ...)
        __attribute__((format(printf, 4, 5)));

    std::string m_lastError;
    COracleCloudParser* m_parser;
};

}  // namespace OracleCloudSDKWrapper

// In a backend class with a DebugLog m_debugLog: fail with a logged text that
// becomes the last error; yields false.
#define OCW_FAIL(...) failWith(&m_debugLog, __PRETTY_FUNCTION__, __VA_ARGS__)
