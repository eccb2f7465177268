#pragma once
// Cloud Classic records as JSON objects (the one description from which both
// --json output and the tables are made). Classic names its objects by path:
// "name" is the short name, "fullName" the path the cloud knows it by.
// Secrets (passwords, cloud storage credentials) are never included.
#include <boost/json.hpp>

#include "oraclecloud/OracleCloudRecords.h"

namespace ocw {

namespace oc = OracleCloudSDKWrapper;

// "/Compute-acme/jdoe/web1-data" -> "web1-data" (trailing "/" ignored).
std::string ClassicShortName(const std::string& path);

boost::json::object ClassicInstanceJson(const oc::SVMInfoLib& vm, bool detailed);
boost::json::object ClassicDiskJson(const oc::SDiskInfoLib& disk);
boost::json::object ClassicKeyPairJson(const oc::SKeyPairInfoLib& key);
boost::json::object ClassicSecurityListJson(const oc::SSecurityGroupInfoLib& list);
boost::json::object ClassicNetworkJson(const oc::SNetworkInfoLib& network);
boost::json::object DbServiceJson(const oc::SOracleDBInstanceInfoLib& db, bool detailed);
boost::json::object JavaMySqlServiceJson(const oc::SJavaMySQLInfoBaseLib& service, const std::string& state);

}  // namespace ocw
