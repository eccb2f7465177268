#pragma once
// Request bodies of the OCI operations, built from the caller's records. Pure
// functions: no request, no log, no failure (a missing field gives an empty or
// absent member and the service says what it misses). Members appear in the
// order written here, which is the order they go on the wire.
#include <string>

#include "oraclecloud/OracleCloudRecords.h"
#include "platform/JsonHelper.h"

namespace OracleCloudSDKWrapper {
namespace ocioperations {

// True when the shape name contains ".Flex" in any case (flexible shapes take
// their processors and memory from "shapeConfig").
bool IsFlexibleShape(const std::string& shape);

// The "ssh_authorized_keys" line for a key file in PuTTY's text layout:
// "ssh-rsa " + the public-key lines + " " + the "Comment:" text, with every
// line break removed. The comment ends two characters before "Public-Lines:"
// (the "\r\n" of the comment line; with bare "\n" its last character is lost).
// Only RSA is produced, whatever the file's own key type. Empty when the text
// lacks "Comment:", "Public-Lines:", a line end after it or "Private-Lines:".
std::string SshAuthorizedKeyFromKeyText(const std::string& keyFileText);

// Launch from vm.imageId: "sourceDetails" {"sourceType","imageId"[,
// "bootVolumeSizeInGBs" when vm.bootVolumeSizeGB is non-zero]}, "shape",
// ["shapeConfig" {"ocpus","memoryInGBs"} for flexible shapes, both strings:
// cpuCount and memoryMB in whole GB], "displayName", ["createVnicDetails"
// {"subnetId"} from vnics[0]], "availabilityDomain", "compartmentId",
// ["metadata" {"ssh_authorized_keys"} from the key text in sshKeys[0]].
JsonObject LaunchFromImageBody(const SVMInfoLib& vm);

// Launch from a boot volume: "displayName", "shape", ["shapeConfig"],
// "availabilityDomain", "compartmentId", ["createVnicDetails" {"assignPublicIp",
// "subnetId"} from vnics[0]], "sourceDetails" {"sourceType":"bootVolume",
// "bootVolumeId"}. No key: the boot volume carries its own.
JsonObject LaunchFromBootVolumeBody(const SVMInfoLib& vm, const std::string& bootVolumeId);

// "createVnicDetails" {"assignPublicIp","subnetId"}, "instanceId" = vm.guid.
JsonObject AttachVnicBody(const SVMInfoLib& vm, const SVNicInfoLib& vnic);

// "availabilityDomain", "compartmentId", "displayName" (volumeName, else name),
// "sizeInGBs" (sizeBytes in whole GB, as a string).
JsonObject CreateVolumeBody(const SDiskInfoLib& disk);

// "instanceId" = vm.guid, ["displayName" = attachment.name when non-empty],
// "volumeId" = disk.guid, "type" = attachment.attachmentType.
JsonObject AttachVolumeBody(const SDiskInfoLib& disk, const SVMInfoLib& vm,
                            const SStorageAttachmentInfoLib& attachment);

// "bootVolumeId" (boot) or "volumeId", "displayName".
JsonObject VolumeBackupBody(const std::string& volumeId, const std::string& displayName, bool boot);

// "availabilityDomain", "compartmentId", "displayName" (volumeName, else name),
// "sourceDetails" {"type": "bootVolumeBackup" or "volumeBackup", "id"}.
JsonObject VolumeFromBackupBody(const SDiskInfoLib& disk, const std::string& backupId, bool boot);

// "databaseId", "displayName".
JsonObject DbBackupBody(const std::string& databaseId, const std::string& displayName);

// At most one of "latest" (the string "true"), "databaseSCN", "timestamp", in
// that order of preference; none gives an empty object.
JsonObject DbRestoreBody(const SPaaSBackupRestoreOptionsLib& options);

// DB system launch from the record's OCI mapping: "availabilityDomain"
// (computeSiteName), "compartmentId" (cloudStorageContainer), ["cpuCoreCount"
// (numIpReservations) when non-zero], "databaseEdition" (edition), "hostname"
// (serviceName), "shape", "subnetId" (sid), "sshPublicKeys" [sshPublicKey],
// "dbHome" {"dbVersion" (version), "database" {"adminPassword",
// ["characterSet" (charset)], "dbName", ["pdbName"], ["ncharacterSet"
// (ncharset)]}}; bracketed members only when set. Holds the admin password:
// never log it unmasked.
JsonObject DbSystemBody(const SOracleDBInstanceInfoLib& db);

// "compartmentId", "displayName", ["launchMode" when set], "imageSourceDetails"
// {"sourceType":"objectStorageTuple", "namespaceName", "bucketName",
// "objectName", "sourceImageType":"VMDK"}.
JsonObject ImageImportBody(const std::string& tenantNamespace, const std::string& bucket,
                           const std::string& object, const SImageInfoLib& image);

}  // namespace ocioperations
}  // namespace OracleCloudSDKWrapper
