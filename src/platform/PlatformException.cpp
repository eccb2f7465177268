#include "platform/PlatformException.h"

#include <openssl/err.h>

namespace OracleCloudSDKWrapper {

PlatformException PlatformException::fromOpenSsl(const std::string& prefix)
{
    std::string message = prefix;
    // The last error queued is the outermost one, which names the operation
    // the caller attempted; earlier ones are its causes.
    unsigned long code = ERR_peek_last_error();
    if (code != 0) {
        const char* reason = ERR_reason_error_string(code);
        if (reason != nullptr) {
            message += " Reason: ";
            message += reason;
        }
    }
    ERR_clear_error();
    return PlatformException(message);
}

}  // namespace OracleCloudSDKWrapper
