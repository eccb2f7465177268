#include "oci/OracleCloudInfrastructureOperationsBodies.h"

#include <cstdint>

#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {
namespace ocioperations {

namespace {

const std::string& DisplayNameOf(const SDiskInfoLib& disk) {
    return disk.volumeName.empty() ? disk.name : disk.volumeName;
}

// Both members are strings on the wire, as the agent has always sent them;
// the service reads numbers from them.
void AddShapeConfig(const SVMInfoLib& vm, JsonObject& body) {
    if (!IsFlexibleShape(vm.shape)) return;
    JsonObject config;
    config["ocpus"] = StringUtil::Format("%u", vm.cpuCount);
    config["memoryInGBs"] = StringUtil::Format("%llu", vm.memoryMB >> 10);
    body["shapeConfig"] = std::move(config);
}

}  // namespace

bool IsFlexibleShape(const std::string& shape) { return StringUtil::FindNoCase(shape, ".Flex") != std::string::npos; }

std::string SshAuthorizedKeyFromKeyText(const std::string& text) {
    static const std::string kComment = "Comment:";
    static const std::string kPublic = "Public-Lines:";
    static const std::string kPrivate = "Private-Lines:";
    const size_t c = text.find(kComment);
    if (c == std::string::npos) return std::string();
    const size_t p = text.find(kPublic, c);
    if (p == std::string::npos) return std::string();
    const size_t n = text.find('\n', p);
    if (n == std::string::npos) return std::string();
    const size_t q = text.find(kPrivate, p);
    if (q == std::string::npos || q <= n) return std::string();

    // "Comment: " is nine characters; the comment stops two characters short
    // of "Public-Lines:". A comment line too short for that yields no comment.
    std::string comment;
    if (p >= c + 11) comment = text.substr(c + 9, p - c - 11);
    const std::string body = text.substr(n + 1, q - n - 1);

    const std::string line = "ssh-rsa " + body + " " + comment;
    std::string key;
    key.reserve(line.size());
    for (char ch : line) {
        if (ch != '\n' && ch != '\r') key += ch;
    }
    return key;
}

JsonObject LaunchFromImageBody(const SVMInfoLib& vm) {
    JsonObject body;
    JsonObject source;
    source["sourceType"] = "image";
    source["imageId"] = vm.imageId;
    if (vm.bootVolumeSizeGB != 0) source["bootVolumeSizeInGBs"] = static_cast<uint64_t>(vm.bootVolumeSizeGB);
    body["sourceDetails"] = std::move(source);
    body["shape"] = vm.shape;
    AddShapeConfig(vm, body);
    body["displayName"] = vm.vmName;
    if (!vm.vnics.empty()) {
        JsonObject vnic;
        vnic["subnetId"] = vm.vnics.front().subnetId;
        body["createVnicDetails"] = std::move(vnic);
    }
    body["availabilityDomain"] = vm.availabilityDomain;
    body["compartmentId"] = vm.compartmentId;
    const std::string key = vm.sshKeys.empty() ? std::string() : SshAuthorizedKeyFromKeyText(vm.sshKeys.front());
    if (!key.empty()) {
        JsonObject metadata;
        metadata["ssh_authorized_keys"] = key;
        body["metadata"] = std::move(metadata);
    }
    return body;
}

JsonObject LaunchFromBootVolumeBody(const SVMInfoLib& vm, const std::string& bootVolumeId) {
    JsonObject body;
    body["displayName"] = vm.vmName;
    body["shape"] = vm.shape;
    AddShapeConfig(vm, body);
    body["availabilityDomain"] = vm.availabilityDomain;
    body["compartmentId"] = vm.compartmentId;
    if (!vm.vnics.empty()) {
        JsonObject vnic;
        vnic["assignPublicIp"] = vm.vnics.front().assignPublicIp;
        vnic["subnetId"] = vm.vnics.front().subnetId;
        body["createVnicDetails"] = std::move(vnic);
    }
    JsonObject source;
    source["sourceType"] = "bootVolume";
    source["bootVolumeId"] = bootVolumeId;
    body["sourceDetails"] = std::move(source);
    return body;
}

JsonObject AttachVnicBody(const SVMInfoLib& vm, const SVNicInfoLib& vnic) {
    JsonObject details;
    details["assignPublicIp"] = vnic.assignPublicIp;
    details["subnetId"] = vnic.subnetId;
    JsonObject body;
    body["createVnicDetails"] = std::move(details);
    body["instanceId"] = vm.guid;
    return body;
}

JsonObject CreateVolumeBody(const SDiskInfoLib& disk) {
    JsonObject body;
    body["availabilityDomain"] = disk.availabilityDomain;
    body["compartmentId"] = disk.compartmentId;
    body["displayName"] = DisplayNameOf(disk);
    body["sizeInGBs"] = StringUtil::Format("%llu", disk.sizeBytes >> 30);
    return body;
}

JsonObject AttachVolumeBody(const SDiskInfoLib& disk, const SVMInfoLib& vm,
                            const SStorageAttachmentInfoLib& attachment) {
    JsonObject body;
    body["instanceId"] = vm.guid;
    if (!attachment.name.empty()) body["displayName"] = attachment.name;
    body["volumeId"] = disk.guid;
    body["type"] = attachment.attachmentType;
    return body;
}

JsonObject VolumeBackupBody(const std::string& volumeId, const std::string& displayName, bool boot) {
    JsonObject body;
    body[boot ? "bootVolumeId" : "volumeId"] = volumeId;
    body["displayName"] = displayName;
    return body;
}

JsonObject VolumeFromBackupBody(const SDiskInfoLib& disk, const std::string& backupId, bool boot) {
    JsonObject source;
    source["type"] = boot ? "bootVolumeBackup" : "volumeBackup";
    source["id"] = backupId;
    JsonObject body;
    body["availabilityDomain"] = disk.availabilityDomain;
    body["compartmentId"] = disk.compartmentId;
    body["displayName"] = DisplayNameOf(disk);
    body["sourceDetails"] = std::move(source);
    return body;
}

JsonObject DbBackupBody(const std::string& databaseId, const std::string& displayName) {
    JsonObject body;
    body["databaseId"] = databaseId;
    body["displayName"] = displayName;
    return body;
}

JsonObject DbRestoreBody(const SPaaSBackupRestoreOptionsLib& options) {
    JsonObject body;
    if (options.latest) {
        body["latest"] = "true";
    } else if (!options.scn.empty()) {
        body["databaseSCN"] = options.scn;
    } else if (!options.timestamp.empty()) {
        body["timestamp"] = options.timestamp;
    }
    return body;
}

JsonObject DbSystemBody(const SOracleDBInstanceInfoLib& db) {
    JsonObject database;
    database["adminPassword"] = db.adminPassword;
    if (!db.charset.empty()) database["characterSet"] = db.charset;
    database["dbName"] = db.dbName;
    if (!db.pdbName.empty()) database["pdbName"] = db.pdbName;
    if (!db.ncharset.empty()) database["ncharacterSet"] = db.ncharset;
    JsonObject home;
    home["dbVersion"] = db.version;
    home["database"] = std::move(database);

    JsonArray keys;
    if (!db.sshPublicKey.empty()) keys.emplace_back(db.sshPublicKey);

    JsonObject body;
    body["availabilityDomain"] = db.computeSiteName;
    body["compartmentId"] = db.cloudStorageContainer;
    if (db.numIpReservations != 0) body["cpuCoreCount"] = db.numIpReservations;
    body["databaseEdition"] = db.edition;
    body["hostname"] = db.serviceName;
    body["shape"] = db.shape;
    body["subnetId"] = db.sid;
    body["sshPublicKeys"] = std::move(keys);
    body["dbHome"] = std::move(home);
    return body;
}

JsonObject ImageImportBody(const std::string& tenantNamespace, const std::string& bucket,
                           const std::string& object, const SImageInfoLib& image) {
    JsonObject source;
    source["sourceType"] = "objectStorageTuple";
    source["namespaceName"] = tenantNamespace;
    source["bucketName"] = bucket;
    source["objectName"] = object;
    source["sourceImageType"] = "VMDK";
    JsonObject body;
    body["compartmentId"] = image.compartmentId;
    body["displayName"] = image.displayName;
    if (!image.launchMode.empty()) body["launchMode"] = image.launchMode;
    body["imageSourceDetails"] = std::move(source);
    return body;
}

}  // namespace ocioperations
}  // namespace OracleCloudSDKWrapper
