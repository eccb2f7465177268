#pragma once
#include <string>

namespace OracleCloudSDKWrapper {

// Runs one call on a backend object and, when it fails, takes over the
// backend's error text as the facade's last error. A missing backend (only
// possible with injected backends) fails without a request and without text.
template <class Backend, class Call>
bool ForwardToBackend(std::string& lastError, Backend* backend, Call&& call) {
    if (backend == nullptr) {
        return false;
    }
    if (call(*backend)) {
        return true;
    }
    lastError = backend->GetLastError();
    return false;
}

}  // namespace OracleCloudSDKWrapper
