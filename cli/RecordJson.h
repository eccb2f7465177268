#pragma once
// The library's records as JSON objects: the one description from which both
// --json output and the tables are made. Member names follow OCI's own
// (camelCase; "id", "displayName", "lifecycleState", ...). Secrets such as an
// instance's administrator password are never included.
#include <boost/json.hpp>

#include "oraclecloud/OracleCloudRecords.h"
#include "oraclecloud/OracleCloudWrapper.h"

namespace ocw {

namespace oci = OracleCloudSDKWrapper;

boost::json::object ToJson(const oci::SRegionInfoLib& region);
boost::json::object ToJson(const oci::SContainerInfoLib& compartment);
// detailed adds platform, addresses, disks and VNICs (as read with detail flags).
boost::json::object ToJson(const oci::SVMInfoLib& vm, bool detailed);
boost::json::object ToJson(const oci::SDiskInfoLib& disk);
boost::json::object ToJson(const oci::SStorageAttachmentInfoLib& attachment);
boost::json::object ToJson(const oci::SVNicInfoLib& vnic);
boost::json::object ToJson(const oci::SInstanceShapeInfoLib& shape);
boost::json::object ToJson(const oci::SImageInfoLib& image);
boost::json::object ImageToJson(const oci::SVMInfoLib& image);  // an image read as a template
boost::json::object ToJson(const oci::SOCIDbSystemInfoLib& system);
boost::json::object ToJson(const oci::SOCIDatabaseInfoLib& database);
boost::json::object ToJson(const oci::SOCIDbHomeInfoLib& home);
boost::json::object ToJson(const oci::SOCIDbBackupInfoLib& backup);
boost::json::object ToJson(const oci::SAvailabilityDomainInfoLib& domain);

}  // namespace ocw
