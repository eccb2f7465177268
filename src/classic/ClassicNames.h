#pragma once
// Resource paths of the Classic services and the few rules for joining them
// with object names. Paths are relative to the service root; the connection
// puts the server in front. Compute Classic objects have full names
// "/Compute-<domain>/<user>/<name>[/...]" that follow the collection path
// directly ("storage/volume" + "/Compute-acme/jdoe/vol1").
#include <string>

#include "platform/StringUtil.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {
namespace classicnames {

inline const char* const kInstance = "instance";
inline const char* const kLaunchPlan = "launchplan";
inline const char* const kVolume = "storage/volume";
inline const char* const kSnapshot = "storage/snapshot";
inline const char* const kAttachment = "storage/attachment";
inline const char* const kOrchestration = "platform/v1/orchestration";
inline const char* const kMachineImage = "machineimage";
inline const char* const kSshKey = "sshkey";
inline const char* const kSecList = "seclist";
inline const char* const kShape = "shape";
inline const char* const kIpNetwork = "network/v1/ipnetwork";
inline const char* const kIpAssociation = "ip/association";
inline const char* const kRebootRequest = "rebootinstancerequest";

inline const char* const kDatabaseRoot = "paas/service/dbcs/api/v1.1/instances";
inline const char* const kInstanceMgmtRoot = "paas/api/v1.1/instancemgmt";
inline const char* const kJavaInstances = "services/jaas/instances";
inline const char* const kMySQLInstances = "services/MySQLCS/instances";

// Levels of a walk down to the user containers: the collection root, the
// identity domain's container, the user's container.
constexpr int kUserContainerLevels = 3;

// a + "/" + b with exactly one "/" at the seam. Where a path is formed as
// "<collection>/<user path>" and the user path is a full name ("/Compute-acme/
// jdoe"), plain formatting would give "//": the services want one "/".
inline std::string Join(const std::string& a, const std::string& b) { return PathUtil::Join(a, b); }

// The URL of one object of a collection: the collection followed by the
// object's full name. A name without its leading "/" still gets one "/".
inline std::string ObjectLink(const char* collection, const std::string& fullName) {
    return Join(collection, fullName);
}

// The user path ("/Compute-acme/jdoe") of a user given as "jdoe" (inside the
// connection's identity domain), as a path already, or empty (the connected user).
inline std::string UserPath(const std::string& user, COracleCloudBaseConnection& connection) {
    if (user.empty()) return connection.getUser();
    if (user.front() == '/') return user;
    return "/" + connection.getIdentityDomain() + "/" + user;
}

// The user container of a full name: "/Compute-acme/jdoe/vol1/x" gives
// "/Compute-acme/jdoe"; empty when the name has fewer parts.
inline std::string ContainerOf(const std::string& fullName) {
    if (fullName.empty() || fullName.front() != '/') return std::string();
    const size_t second = fullName.find('/', 1);
    const size_t third = second == std::string::npos ? second : fullName.find('/', second + 1);
    return third == std::string::npos ? std::string() : fullName.substr(0, third);
}

// The part of a name before its last "/" (empty when it has none).
inline std::string Parent(const std::string& name) {
    const size_t slash = name.rfind('/');
    return slash == std::string::npos ? std::string() : name.substr(0, slash);
}

}  // namespace classicnames
}  // namespace OracleCloudSDKWrapper
