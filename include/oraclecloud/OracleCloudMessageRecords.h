#pragma once
// Error bodies returned by the services.
#include <string>

namespace OracleCloudSDKWrapper {

// An API error body: "code" and "message" (OCI).
struct SAPIErrorInfoLib {
    std::string code;
    std::string message;
};

// A service message body: "message" (both clouds).
struct SMessageInfoLib {
    std::string message;
};

}  // namespace OracleCloudSDKWrapper
