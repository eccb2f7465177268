// Classic PaaS mappings: database (DBCS) instances and compute nodes, service
// SSH keys, Java (JCS) and MySQL service instances and their backup jobs.
#include "parser/OracleCloudParser.h"

namespace OracleCloudSDKWrapper {
namespace {

// JCS and MySQLCS mirror some attributes at the top level ("WLS_ROOT",
// "MYSQL_PORT") and keep all of them in the "attributes" map as
// {"displayName", "value", ...}; the top level wins, the map is the fallback.
std::string GetTopLevelOrAttribute(const JsonObject& obj, const std::string& key,
                                   std::string (*text)(const JsonObject&, const std::string&)) {
    std::string value = text(obj, key);
    if (!value.empty()) return value;
    const JsonObject* attributes = JsonHelper::FindObjectValue(obj, "attributes");
    if (attributes == nullptr) return value;
    if (const JsonObject* attribute = JsonHelper::FindObjectValue(*attributes, key)) return text(*attribute, "value");
    return text(*attributes, key);
}

}  // namespace

bool COracleCloudParser::Convert(const JsonObject& obj, SOracleDBInstanceInfoLib& out) {
    out.serviceName = GetStringValue(obj, "service_name");
    out.version = GetStringValue(obj, "version");
    out.status = GetStringValue(obj, "status");
    out.description = GetStringValue(obj, "description");
    out.identityDomain = GetStringValue(obj, "identity_domain");
    out.creationTime = ParseTimeUtc(GetStringValue(obj, "creation_time"));
    out.lastModifiedTime = ParseTimeUtc(GetStringValue(obj, "last_modified_time"));
    out.createdBy = GetStringValue(obj, "created_by");
    out.smPluginVersion = GetStringValue(obj, "sm_plugin_version");
    out.toolsVersion = GetStringValue(obj, "tools_version");
    out.backupSupportedVersion = GetStringValue(obj, "backup_supported_version");
    out.serviceUri = GetStringValue(obj, "service_uri");
    out.databaseId = GetValueText(obj, "database_id");
    out.numNodes = ClampToInt(GetIntOrText(obj, "num_nodes"));  // DBCS sends it as text
    out.level = GetStringValue(obj, "level");
    out.edition = GetStringValue(obj, "edition");
    out.shape = GetStringValue(obj, "shape");
    out.subscriptionType = GetStringValue(obj, "subscriptionType");
    out.creationJobId = GetValueText(obj, "creation_job_id");
    out.numIpReservations = ClampToInt(GetIntOrText(obj, "num_ip_reservations"));
    out.backupDestination = GetStringValue(obj, "backup_destination");
    out.cloudStorageContainer = GetStringValue(obj, "cloud_storage_container");
    out.failoverDatabase = GetBoolValue(obj, "failover_database");
    out.racDatabase = GetBoolValue(obj, "rac_database");
    out.currentVersion = GetStringValue(obj, "current_version");
    out.sid = GetStringValue(obj, "sid");
    out.demoPdb = GetStringValue(obj, "demoPdb");
    out.listenerPort = ClampToInt(GetIntOrText(obj, "listenerPort"));
    out.timezone = GetStringValue(obj, "timezone");
    out.charset = GetStringValue(obj, "charset");
    out.ncharset = GetStringValue(obj, "ncharset");
    out.isClone = GetBoolValue(obj, "is_clone");
    out.cloneSupportedVersion = GetStringValue(obj, "clone_supported_version");
    out.computeSiteName = GetStringValue(obj, "compute_site_name");
    out.jaasInstancesUsingService = GetValueText(obj, "jaas_instances_using_service");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SOracleDBComputeNodeLib& out) {
    out.connectDescriptor = GetStringValue(obj, "connect_descriptor");
    out.connectDescriptorWithPublicIp = GetStringValue(obj, "connect_descriptor_with_public_ip");
    out.createdBy = GetStringValue(obj, "created_by");
    out.creationJobId = GetValueText(obj, "creation_job_id");
    out.creationTime = ParseTimeUtc(GetStringValue(obj, "creation_time"));
    out.hostname = GetStringValue(obj, "hostname");
    out.initialPrimary = GetBoolValue(obj, "initialPrimary");
    out.listenerPort = ClampToInt(GetIntOrText(obj, "listenerPort"));
    out.pdbName = GetStringValue(obj, "pdbName");
    out.reservedIp = GetStringValue(obj, "reservedIP");
    out.shape = GetStringValue(obj, "shape");
    out.sid = GetStringValue(obj, "sid");
    out.status = GetStringValue(obj, "status");
    out.storageAllocated = GetValueText(obj, "storageAllocated");  // GB, a number on the wire
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SOracleSSHKeyLib& out) {
    out.computeKeyName = GetStringValue(obj, "computeKeyName");
    out.publicKey = GetStringValue(obj, "publicKey");
    out.description = GetStringValue(obj, "description");
    out.serviceName = GetStringValue(obj, "serviceName");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SJavaMySQLInfoBaseLib& out) {
    out.serviceName = GetStringValue(obj, "serviceName");
    out.serviceType = GetStringValue(obj, "serviceType");
    out.serviceVersion = GetStringValue(obj, "serviceVersion");
    out.releaseVersion = GetStringValue(obj, "releaseVersion");
    out.serviceId = ClampToInt(GetIntOrText(obj, "serviceId"));
    out.serviceLevel = GetStringValue(obj, "serviceLevel");
    out.serviceLevelDisplayName = GetStringValue(obj, "serviceLevelDisplayName");
    out.serviceStateDisplayName = GetStringValue(obj, "serviceStateDisplayName");
    out.edition = GetStringValue(obj, "edition");
    out.editionDisplayName = GetStringValue(obj, "editionDisplayName");
    out.metaVersion = GetStringValue(obj, "metaVersion");
    out.meteringFrequency = GetStringValue(obj, "meteringFrequency");
    out.meteringFrequencyDisplayName = GetStringValue(obj, "meteringFrequencyDisplayName");
    out.computeSiteName = GetStringValue(obj, "computeSiteName");
    out.creator = GetStringValue(obj, "creator");
    out.domainName = GetStringValue(obj, "domainName");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SJavaInstanceInfoLib& out) {
    Convert(obj, static_cast<SJavaMySQLInfoBaseLib&>(out));
    out.adminHostName = GetStringValue(obj, "adminHostName");
    if (out.adminHostName.empty()) {
        // Older answers name the admin host only inside the WebLogic component.
        if (const JsonObject* components = FindObjectValue(obj, "components")) {
            if (const JsonObject* wls = FindObjectValue(*components, "WLS"))
                out.adminHostName = GetStringValue(*wls, "adminHostName");
        }
    }
    out.creationDate = GetStringValue(obj, "creationDate");
    out.fmwRoot = GetTopLevelOrAttribute(obj, "FMW_ROOT", &COracleCloudParser::GetValueText);
    out.wlsRoot = GetTopLevelOrAttribute(obj, "WLS_ROOT", &COracleCloudParser::GetValueText);
    out.keyComponentInstance = GetStringValue(obj, "keyComponentInstance");
    out.state = GetStringValue(obj, "state");
    out.totalSsdStorage = ClampToInt(GetIntOrText(obj, "totalSSDStorage"));
    out.allAssociations = GetValueText(obj, "allAssociations");
    out.patching = GetValueText(obj, "patching");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SMySQLInstanceInfoLib& out) {
    Convert(obj, static_cast<SJavaMySQLInfoBaseLib&>(out));
    out.backupDestination = GetTopLevelOrAttribute(obj, "BACKUP_DESTINATION", &COracleCloudParser::GetValueText);
    out.cloudStorageContainer =
        GetTopLevelOrAttribute(obj, "CLOUD_STORAGE_CONTAINER", &COracleCloudParser::GetValueText);
    out.dataVolumeSize = GetTopLevelOrAttribute(obj, "DATA_VOLUME_SIZE", &COracleCloudParser::GetValueText);
    out.localBackupVolumeMount =
        GetTopLevelOrAttribute(obj, "LOCAL_BACKUP_VOLUME_MOUNT", &COracleCloudParser::GetValueText);
    out.localBackupVolumeSize =
        GetTopLevelOrAttribute(obj, "LOCAL_BACKUP_VOLUME_SIZE", &COracleCloudParser::GetValueText);
    out.mysqlPort = GetTopLevelOrAttribute(obj, "MYSQL_PORT", &COracleCloudParser::GetValueText);
    out.totalSharedStorage = GetValueText(obj, "totalSharedStorage");
    out.patching = GetValueText(obj, "patching");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SJavaMySQLJobInfoLib& out) {
    out.backupId = GetValueText(obj, "backupId");
    out.backupStartDate = GetStringValue(obj, "backupStartDate");
    out.backupCompleteDate = GetStringValue(obj, "backupCompleteDate");
    out.backupDate = GetStringValue(obj, "backupDate");
    out.expirationDate = GetStringValue(obj, "expirationDate");
    out.initiatedBy = GetStringValue(obj, "initiatedBy");
    out.jobId = GetValueText(obj, "jobId");
    out.recoveryStartDate = GetStringValue(obj, "recoveryStartDate");
    out.recoveryCompleteDate = GetStringValue(obj, "recoveryCompleteDate");
    out.size = GetValueText(obj, "size");
    out.sizeInBytes = GetValueText(obj, "sizeInBytes");
    out.tag = GetStringValue(obj, "tag");
    out.status = GetStringValue(obj, "status");
    out.statusDetails = GetValueText(obj, "statusDetails");
    out.storageContainer = GetStringValue(obj, "storageContainer");
    out.href = GetStringValue(obj, "href");
    out.jobHistory = GetValueText(obj, "jobHistory");
    // The whole job document, for callers that report what the service said.
    out.fullInfo = Serialize(obj);
    out.full = GetBoolValue(obj, "full");
    out.local = GetBoolValue(obj, "local");
    out.localCopy = GetBoolValue(obj, "localCopy");
    out.databaseIncluded = GetBoolValue(obj, "databaseIncluded");
    out.staticDataIncluded = GetBoolValue(obj, "staticDataIncluded");
    out.configDataIncluded = GetBoolValue(obj, "configDataIncluded");
    out.otdIncluded = GetBoolValue(obj, "otdIncluded");
    return true;
}

}  // namespace OracleCloudSDKWrapper
