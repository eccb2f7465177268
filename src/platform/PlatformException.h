#pragma once
#include <stdexcept>
#include <string>

namespace OracleCloudSDKWrapper {

// Raised by the crypto classes (Sha256Hasher, RsaSigner) and caught by their
// callers, which turn it into a logged failure; it never crosses a public
// operation. The text never carries key material or pass phrases, only what
// failed and, where useful, OpenSSL's reason (for example "bad decrypt").
class PlatformException : public std::runtime_error {
public:
    explicit PlatformException(const std::string& message) : std::runtime_error(message) {}

    // Same text as what(), under the name the agent's platform uses.
    std::string getMessage() const { return what(); }

    // Builds a message from `prefix` followed by the reason of the most recent
    // OpenSSL error of this thread (if any), and clears the thread's OpenSSL
    // error queue so that a later failure does not report a stale reason.
    static PlatformException fromOpenSsl(const std::string& prefix);
};

}  // namespace OracleCloudSDKWrapper
