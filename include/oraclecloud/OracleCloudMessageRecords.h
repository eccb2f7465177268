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

// Extension: what is known about the failure behind a facade's GetLastError()
// (COracleCloudWrapper::GetLastFailure): enough to tell a refused request from
// a lost connection and to take a failed request to the provider's support.
// The request fields are empty (and the numbers 0) when the failure was not a
// failed request: a wait that ran out, a body that did not parse, a refused
// argument.
struct SOracleCloudFailureInfoLib {
    std::string message;           // the text GetLastError() returned for this failure
    std::string request;           // method and URL path of the failed request, "GET /20160918/instances/..."
    long httpStatus = 0;           // status of its last answer; 0: no answer came (see transferError)
    std::string serviceCode;       // "code" of the answer's JSON error body ("NotAuthorizedOrNotFound", ...)
    std::string serviceMessage;    // "message" of that body (Classic PaaS: "message" under "details");
                                   // both empty when the answer was not JSON
    std::string serviceRequestId;  // the answer's "opc-request-id" header (OCI)
    std::string clientRequestId;   // the "opc-request-id" the library sent (OCI; one for all attempts)
    std::string transferError;     // why no (whole) answer came ("Connection refused", "Recv failure: ...");
                                   // with a status, the answer broke off in its body
    unsigned attempts = 0;         // HTTP requests sent for it: retries and a Classic re-login included
};

}  // namespace OracleCloudSDKWrapper
