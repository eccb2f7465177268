#pragma once
// Shared by the source files of COracleCloudInfrastructureOperations only.
#include <string>

#include "oci/OciLifecycleState.h"
#include "oci/OracleCloudInfrastructureOperations.h"
#include "oci/OracleCloudInfrastructureOperationsBodies.h"
#include "parser/OracleCloudParser.h"
#include "platform/StringUtil.h"
#include "transport/OracleCloudBaseConnection.h"

// Logs an error with the calling operation's signature, makes the text the
// last error and yields false.
#define OCI_OPS_FAIL(...) OCW_FAIL(__VA_ARGS__)

namespace OracleCloudSDKWrapper {
namespace ocioperations {

// Version prefix of the core and database services.
inline const std::string kApiVersion = "/20160918";

inline std::string CorePath(const char* collection) { return kApiVersion + collection; }
inline std::string CorePath(const char* collection, const std::string& id) { return kApiVersion + collection + "/" + id; }

}  // namespace ocioperations
}  // namespace OracleCloudSDKWrapper
