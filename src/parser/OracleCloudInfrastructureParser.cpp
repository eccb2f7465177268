// OCI mappings: one JSON object of the core, block storage, identity,
// database and object storage services into one record.
#include "parser/OracleCloudInfrastructureParser.h"

#include <cmath>
#include <limits>

namespace OracleCloudSDKWrapper {
namespace {

constexpr unsigned long long kMaxU64 = std::numeric_limits<unsigned long long>::max();

// value << shift, saturating instead of wrapping for absurd sizes.
unsigned long long ShiftSaturating(unsigned long long value, unsigned shift) {
    if (value > (kMaxU64 >> shift)) return kMaxU64;
    return value << shift;
}

// Volumes and boot volumes report "sizeInMBs" (deprecated, still sent) and
// "sizeInGBs"; the MB figure wins when it is non-zero.
unsigned long long SizeInBytes(const JsonObject& obj) {
    unsigned long long mb = JsonHelper::GetUInt64Value(obj, "sizeInMBs");
    if (mb != 0) return ShiftSaturating(mb, 20);
    return ShiftSaturating(JsonHelper::GetUInt64Value(obj, "sizeInGBs"), 30);
}

// A real truncated toward zero; negative, NaN or huge values do not wrap.
unsigned long long TruncatedCount(double value, unsigned long long max) {
    if (!(value > 0)) return 0;
    double t = std::trunc(value);
    if (t >= static_cast<double>(max)) return max;
    return static_cast<unsigned long long>(t);
}

}  // namespace

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SVMInfoLib& out) {
    out.vmName = GetStringValue(obj, "displayName");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    out.availabilityDomain = GetStringValue(obj, "availabilityDomain");
    out.imageId = GetStringValue(obj, "imageId");
    if (out.imageId.empty()) {
        // "imageId" is deprecated in favour of the source details.
        if (const JsonObject* source = FindObjectValue(obj, "sourceDetails")) {
            if (GetStringValue(*source, "sourceType") == "image") out.imageId = GetStringValue(*source, "imageId");
        }
    }
    out.launchMode = GetStringValue(obj, "launchMode");
    out.region = GetStringValue(obj, "region");
    out.state = GetStringValue(obj, "lifecycleState");
    out.status = out.state;
    if (const JsonObject* shapeConfig = FindObjectValue(obj, "shapeConfig")) {
        out.cpuCount = static_cast<unsigned int>(
            TruncatedCount(GetFloatValue(*shapeConfig, "ocpus"), std::numeric_limits<unsigned int>::max()));
        out.memoryMB = ShiftSaturating(TruncatedCount(GetFloatValue(*shapeConfig, "memoryInGBs"), kMaxU64), 10);
    }
    out.guid = GetStringValue(obj, "id");
    out.isTemplate = out.guid.find(".image.") != std::string::npos;
    out.fullName = GetStringValue(obj, "id");
    out.shape = GetStringValue(obj, "shape");
    SVNicInfoLib vnic;
    vnic.subnetId = GetStringValue(obj, "subnetId");
    out.vnics.push_back(std::move(vnic));
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SNetworkInfoLib& out) {
    out.name = GetStringValue(obj, "displayName");
    out.domainName = GetStringValue(obj, "vcnDomainName");
    out.id = GetStringValue(obj, "id");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SDiskInfoLib& out) {
    out.guid = GetStringValue(obj, "id");
    out.name = GetStringValue(obj, "displayName");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    out.availabilityDomain = GetStringValue(obj, "availabilityDomain");
    out.sizeBytes = SizeInBytes(obj);
    out.status = GetStringValue(obj, "lifecycleState");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SStorageAttachmentInfoLib& out) {
    out.volumeName = GetStringValue(obj, "volumeId");
    if (out.volumeName.empty()) out.volumeName = GetStringValue(obj, "bootVolumeId");
    out.instanceName = GetStringValue(obj, "instanceId");
    out.state = GetStringValue(obj, "lifecycleState");
    out.name = GetStringValue(obj, "displayName");
    out.attachmentId = GetStringValue(obj, "id");
    out.attachmentType = GetStringValue(obj, "attachmentType");
    if (out.attachmentType == "iscsi") {
        out.iscsiIpv4 = GetStringValue(obj, "ipv4");
        out.iscsiIqn = GetStringValue(obj, "iqn");
        out.iscsiPort = GetValueText(obj, "port");
    }
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SOracleDBInstanceInfoLib& out) {
    out.serviceName = GetStringValue(obj, "hostname");
    out.version = GetStringValue(obj, "version");
    out.status = GetStringValue(obj, "lifecycleState");
    out.creationTime = ParseTimeUtc(GetStringValue(obj, "timeCreated"));
    out.databaseId = GetStringValue(obj, "id");
    out.numNodes = ClampToInt(GetIntValue(obj, "nodeCount"));
    out.edition = GetStringValue(obj, "databaseEdition");
    out.shape = GetStringValue(obj, "shape");
    out.numIpReservations = ClampToInt(GetIntValue(obj, "cpuCoreCount"));
    out.cloudStorageContainer = GetStringValue(obj, "compartmentId");
    out.sid = GetStringValue(obj, "subnetId");
    out.listenerPort = ClampToInt(GetIntValue(obj, "listenerPort"));
    out.computeSiteName = GetStringValue(obj, "availabilityDomain");
    out.backupSubnetId = GetStringValue(obj, "backupSubnetId");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SContainerInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.guid = GetStringValue(obj, "id");
    out.description = GetStringValue(obj, "description");
    out.state = GetStringValue(obj, "lifecycleState");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SImageInfoLib& out) {
    out.baseImageId = GetStringValue(obj, "baseImageId");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    out.displayName = GetStringValue(obj, "displayName");
    out.id = GetStringValue(obj, "id");
    out.lifecycleState = GetStringValue(obj, "lifecycleState");
    out.operatingSystem = GetStringValue(obj, "operatingSystem");
    out.operatingSystemVersion = GetStringValue(obj, "operatingSystemVersion");
    out.createImageAllowed = GetBoolValue(obj, "createImageAllowed");
    out.timeCreated = GetStringValue(obj, "timeCreated");
    out.launchMode = GetStringValue(obj, "launchMode");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SSubnetInfoLib& out) {
    out.availabilityDomain = GetStringValue(obj, "availabilityDomain");
    out.cidrBlock = GetStringValue(obj, "cidrBlock");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    out.dhcpOptionsId = GetStringValue(obj, "dhcpOptionsId");
    out.displayName = GetStringValue(obj, "displayName");
    out.dnsLabel = GetStringValue(obj, "dnsLabel");
    out.id = GetStringValue(obj, "id");
    out.lifecycleState = GetStringValue(obj, "lifecycleState");
    out.prohibitPublicIpOnVnic = GetBoolValue(obj, "prohibitPublicIpOnVnic");
    out.routeTableId = GetStringValue(obj, "routeTableId");
    ConvertNestedListString(obj, "securityListIds", out.securityListIds);
    out.subnetDomainName = GetStringValue(obj, "subnetDomainName");
    out.vcnId = GetStringValue(obj, "vcnId");
    out.virtualRouterIp = GetStringValue(obj, "virtualRouterIp");
    out.virtualRouterMac = GetStringValue(obj, "virtualRouterMac");
    out.timeCreated = GetStringValue(obj, "timeCreated");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SRegionInfoLib& out) {
    // Region subscriptions say "regionKey"/"regionName"; the plain region
    // list says "key"/"name".
    out.regionKey = GetStringValue(obj, "regionKey");
    if (out.regionKey.empty()) out.regionKey = GetStringValue(obj, "key");
    out.regionName = GetStringValue(obj, "regionName");
    if (out.regionName.empty()) out.regionName = GetStringValue(obj, "name");
    out.status = GetStringValue(obj, "status");
    out.isHomeRegion = GetBoolValue(obj, "isHomeRegion");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SAvailabilityDomainInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SInstanceShapeInfoLib& out) {
    out.name = GetStringValue(obj, "shape");
    out.uri = out.name;
    out.cpuCount = ClampToInt(getNumCPUFromOCIShape(out.name));
    out.memoryMB = ClampToInt(static_cast<int64_t>(getMemoryInGBsFromOCIShape(out.name)) << 10);
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SBootVolumeAttachmentInfo& out) {
    out.displayName = GetStringValue(obj, "displayName");
    out.instanceId = GetStringValue(obj, "instanceId");
    out.bootVolumeId = GetStringValue(obj, "bootVolumeId");
    out.lifecycleState = GetStringValue(obj, "lifecycleState");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SInstanceCredentialsInfoLib& out) {
    out.username = GetStringValue(obj, "username");
    out.password = GetStringValue(obj, "password");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, STenancyInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.homeRegionKey = GetStringValue(obj, "homeRegionKey");
    out.description = GetStringValue(obj, "description");
    // The service sends a map here; only text is kept, so a map reads as empty.
    out.freeformTags = GetStringValue(obj, "freeformTags");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SVnicAttachmentInfoLib& out) {
    out.id = GetStringValue(obj, "id");
    out.displayName = GetStringValue(obj, "displayName");
    out.availabilityDomain = GetStringValue(obj, "availabilityDomain");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    out.instanceId = GetStringValue(obj, "instanceId");
    out.vnicId = GetStringValue(obj, "vnicId");
    out.lifecycleState = GetStringValue(obj, "lifecycleState");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SVNicInfoLib& out) {
    out.name = GetStringValue(obj, "hostnameLabel");
    out.id = GetStringValue(obj, "id");
    out.privateIp = GetStringValue(obj, "privateIp");
    out.subnetId = GetStringValue(obj, "subnetId");
    out.publicIp = GetStringValue(obj, "publicIp");
    out.macAddress = GetStringValue(obj, "macAddress");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SOCIDbBackupConfigLib& out) {
    // Reads "dbBackupConfig" inside the object that SOCIDatabaseInfoLib's
    // conversion already took from "dbBackupConfig"; kept as the agent has it.
    out.autoBackupEnabled = GetBoolValue(obj, "dbBackupConfig");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SOCIDbBackupInfoLib& out) {
    out.availabilityDomain = GetStringValue(obj, "availabilityDomain");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    out.databaseId = GetStringValue(obj, "databaseId");
    out.displayName = GetStringValue(obj, "displayName");
    out.id = GetStringValue(obj, "id");
    out.lifecycleDetails = GetStringValue(obj, "lifecycleDetails");
    out.lifecycleState = GetStringValue(obj, "lifecycleState");
    out.timeEnded = GetStringValue(obj, "timeEnded");
    out.timeStarted = GetStringValue(obj, "timeStarted");
    out.type = GetStringValue(obj, "type");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SOCIDbHomeInfoLib& out) {
    out.compartmentId = GetStringValue(obj, "compartmentId");
    out.dbSystemId = GetStringValue(obj, "dbSystemId");
    out.dbVersion = GetStringValue(obj, "dbVersion");
    out.displayName = GetStringValue(obj, "displayName");
    out.id = GetStringValue(obj, "id");
    out.lastPatchHistoryEntryId = GetStringValue(obj, "lastPatchHistoryEntryId");
    out.lifecycleState = GetStringValue(obj, "lifecycleState");
    out.timeCreated = GetStringValue(obj, "timeCreated");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SOCIDbSystemInfoLib& out) {
    out.availabilityDomain = GetStringValue(obj, "availabilityDomain");
    out.backupSubnetId = GetStringValue(obj, "backupSubnetId");
    out.clusterName = GetStringValue(obj, "clusterName");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    out.databaseEdition = GetStringValue(obj, "databaseEdition");
    out.diskRedundancy = GetStringValue(obj, "diskRedundancy");
    out.displayName = GetStringValue(obj, "displayName");
    out.domain = GetStringValue(obj, "domain");
    out.hostname = GetStringValue(obj, "hostname");
    out.id = GetStringValue(obj, "id");
    out.lastPatchHistoryEntryId = GetStringValue(obj, "lastPatchHistoryEntryId");
    out.licenseModel = GetStringValue(obj, "licenseModel");
    out.lifecycleDetails = GetStringValue(obj, "lifecycleDetails");
    out.lifecycleState = GetStringValue(obj, "lifecycleState");
    out.scanDnsRecordId = GetStringValue(obj, "scanDnsRecordId");
    out.shape = GetStringValue(obj, "shape");
    out.subnetId = GetStringValue(obj, "subnetId");
    out.timeCreated = GetStringValue(obj, "timeCreated");
    out.version = GetStringValue(obj, "version");
    ConvertNestedListString(obj, "scanIpIds", out.scanIpIds);
    ConvertNestedListString(obj, "sshPublicKeys", out.sshPublicKeys);
    ConvertNestedListString(obj, "vipIds", out.vipIds);
    out.cpuCoreCount = ClampToInt(GetIntValue(obj, "cpuCoreCount"));
    out.dataStoragePercentage = ClampToInt(GetIntValue(obj, "dataStoragePercentage"));
    out.dataStorageSizeInGBs = ClampToInt(GetIntValue(obj, "dataStorageSizeInGBs"));
    out.listenerPort = ClampToInt(GetIntValue(obj, "listenerPort"));
    out.nodeCount = ClampToInt(GetIntValue(obj, "nodeCount"));
    out.recoStorageSizeInGB = ClampToInt(GetIntValue(obj, "recoStorageSizeInGB"));
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SOCIDatabaseInfoLib& out) {
    out.characterSet = GetStringValue(obj, "characterSet");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    out.dbHomeId = GetStringValue(obj, "dbHomeId");
    out.dbName = GetStringValue(obj, "dbName");
    out.dbUniqueName = GetStringValue(obj, "dbUniqueName");
    out.dbWorkload = GetStringValue(obj, "dbWorkload");
    out.id = GetStringValue(obj, "id");
    out.lifecycleDetails = GetStringValue(obj, "lifecycleDetails");
    out.lifecycleState = GetStringValue(obj, "lifecycleState");
    out.ncharacterSet = GetStringValue(obj, "ncharacterSet");
    out.pdbName = GetStringValue(obj, "pdbName");
    out.timeCreated = GetStringValue(obj, "timeCreated");
    ConvertNestedObject(obj, "dbBackupConfig", out.dbBackupConfig);
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SOCIDbNodeInfoLib& out) {
    out.dbSystemId = GetStringValue(obj, "dbSystemId");
    out.hostname = GetStringValue(obj, "hostname");
    out.id = GetStringValue(obj, "id");
    out.lifecycleState = GetStringValue(obj, "lifecycleState");
    out.timeCreated = GetStringValue(obj, "timeCreated");
    out.vnicId = GetStringValue(obj, "vnicId");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SStorageBucketInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.compartmentId = GetStringValue(obj, "compartmentId");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SStorageObjectInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.sizeBytes = GetUInt64Value(obj, "size");
    out.md5 = GetStringValue(obj, "md5");
    out.timeCreated = GetStringValue(obj, "timeCreated");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SSnapshotInfoLib& out) {
    out.snapshotId = GetStringValue(obj, "id");
    out.name = out.snapshotId;
    out.startTime = ParseTimeUtc(GetStringValue(obj, "timeCreated"));
    // Boot volume backups carry only "sizeInGBs"; volume backups both.
    out.sizeBytes = SizeInBytes(obj);
    out.status = GetStringValue(obj, "lifecycleState");
    out.volumeName = GetStringValue(obj, "volumeId");
    if (out.volumeName.empty()) out.volumeName = GetStringValue(obj, "bootVolumeId");
    out.description = GetStringValue(obj, "displayName");
    return true;
}

bool COracleCloudInfrastructureParser::Convert(const JsonObject& obj, SAPIErrorInfoLib& out) {
    out.code = GetStringValue(obj, "code");
    out.message = GetStringValue(obj, "message");
    return true;
}

bool COracleCloudInfrastructureParser::ConvertQueryItem(const JsonObject& obj, SNetworkInfoLib& out) {
    out.name = GetStringValue(obj, "displayName");
    out.id = GetStringValue(obj, "identifier");
    return true;
}

bool COracleCloudInfrastructureParser::ConvertQueryItem(const JsonObject& obj, SSubnetInfoLib& out) {
    out.id = GetStringValue(obj, "identifier");
    out.displayName = GetStringValue(obj, "displayName");
    out.availabilityDomain = GetStringValue(obj, "availabilityDomain");
    return true;
}

}  // namespace OracleCloudSDKWrapper
