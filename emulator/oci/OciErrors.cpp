#include "oci/OciErrors.h"

namespace ocwemu {

namespace err {
void NotAuthorizedOrNotFound(ApiResponse& res) { res.error(404, "NotAuthorizedOrNotFound", kNotFoundMsg); }
void NoSuchOperation(ApiResponse& res) {
    res.error(404, "NotFound", "There is no operation at this path for this method.");
}
void InvalidParameter(ApiResponse& res, const std::string& message) { res.error(400, "InvalidParameter", message); }
void MissingParameter(ApiResponse& res, const std::string& name) {
    res.error(400, "MissingParameter", "Missing parameter: " + name);
}
void IncorrectState(ApiResponse& res, const std::string& message) { res.error(409, "IncorrectState", message); }
void Conflict(ApiResponse& res, const std::string& message) { res.error(409, "Conflict", message); }
void LimitExceeded(ApiResponse& res, const std::string& message) { res.error(400, "LimitExceeded", message); }
void RelatedNotFound(ApiResponse& res, const std::string& what) {
    res.error(400, "RelatedResourceNotAuthorizedOrNotFound",
              "The related resource " + what + " does not exist or you are not authorized to access it.");
}
}  // namespace err

void OciError(ApiResponse& res, int status, const std::string& code, const std::string& message) {
    res.error(status, code, message);
}

}  // namespace ocwemu
