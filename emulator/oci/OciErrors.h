#pragma once
// The error vocabulary of the OCI services: codes and messages as they
// answer them, all in the body {"code", "message"}.
#include "common/Api.h"

namespace ocwemu {

// Standard error texts of the OCI services.
namespace err {
inline const char* kNotFoundMsg = "Authorization failed or requested resource not found.";
// 404 for a resource named in the path or query that is missing (or, at the
// service, not visible to the caller).
void NotAuthorizedOrNotFound(ApiResponse& res);
// 404 for a path (and method) where the service has no operation at all.
void NoSuchOperation(ApiResponse& res);
void InvalidParameter(ApiResponse& res, const std::string& message);
void MissingParameter(ApiResponse& res, const std::string& name);
void IncorrectState(ApiResponse& res, const std::string& message);
void Conflict(ApiResponse& res, const std::string& message);
void LimitExceeded(ApiResponse& res, const std::string& message);
void RelatedNotFound(ApiResponse& res, const std::string& what);
}  // namespace err

// The manner of the OCI services for the answers the pipeline gives itself
// (see AuthScheme::error).
void OciError(ApiResponse& res, int status, const std::string& code, const std::string& message);

}  // namespace ocwemu
