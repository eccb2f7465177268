#pragma once
// How Compute Classic writes JSON: a blank after every colon and comma
// ({"message": "Authorization token is invalid"}), which some clients compare
// byte for byte, and its error body {"message": text}.
#include "common/Api.h"

#include <string>

namespace ocwemu {

inline const char* kComputeJson = "application/oracle-compute-v3+json";
inline const char* kComputeDirectoryJson = "application/oracle-compute-v3+directory+json";

// `v` serialised with ": " and ", " separators (strings escaped as JSON).
std::string SpacedJson(const JValue& v);

// `status` with {"message": message} in Compute Classic's manner.
void ClassicMessage(ApiResponse& res, int status, const std::string& message);
// The same as an AuthScheme error writer (the code is not part of the body).
void ClassicError(ApiResponse& res, int status, const std::string& code, const std::string& message);

}  // namespace ocwemu
