#pragma once
// Request bodies of the Classic compute and PaaS operations, built from the
// caller's records. Pure functions: no request, no log. Members appear in the order
// written here, which is the order they go on the wire.
#include <cstdint>
#include <string>

#include "oraclecloud/OracleCloudRecords.h"
#include "platform/JsonHelper.h"

namespace OracleCloudSDKWrapper {
namespace classicoperations {

// The storage property of new volumes when the record names none.
inline const char* const kDefaultStorageProperty = "/oracle/public/storage/default";

// Size of a volume request: whole GiB of `bytes` (the remainder dropped) and "G".
std::string SizeText(unsigned long long bytes);

// The full name of a volume: volumeName itself when it is one (starts with
// "/"), otherwise userPath + "/" + volumeName.
std::string FullVolumeName(const std::string& volumeName, const std::string& userPath);

// The instance body of a launch plan or orchestration: "shape", "name"
// (domain + "/" + vm.compartmentId + "/" + vm.vmName), "label" (vm.vmName),
// "storage_attachments" [{"index", "volume"}] for every disk in order
// ("volume": the disk's volumeName, else its name), ["boot_order" [index]],
// ["sshkeys"], "networking" (eth0 = {"seclists", "nat"} when the VM has
// security lists, then one {"ipnetwork" [, "ip"]} per vnic), ["attributes"
// {"userdata" {["enable_rdp"], ["administrator_password"]}}]. The boot disk
// is the first disk marked bootable at index 1; false when there is none.
bool InstanceBody(const SVMInfoLib& vm, const std::string& domain, JsonObject& body);

// {"instances": [instance]}.
JsonObject LaunchPlanBody(const JsonObject& instance);

// The older launch of DeployVM: {"instances": [{"shape", "imagelist"
// ("/oracle/public/" + vm.imageId unless it starts with "/"), "name"
// (container + "/" + vm.vmName), "label", ["sshkeys"], ["networking" {"eth0"
// {"seclists", "nat"}}], ["attributes" {"userdata" {"enable_rdp",
// "administrator_password"}} when an administrator password is set]}]}.
JsonObject DeployVMBody(const SVMInfoLib& vm, const std::string& container);

// {"desired_state": "active", "objects": [{"template": instance, "label",
// "type": "Instance"}], "name": instance name + "_master", "description":
// "Norquell restored orchestration created at <now> for job id <jobId>"}.
JsonObject OrchestrationBody(const JsonObject& instance, const std::string& label, long now, long long jobId);

// {"size", "properties" [disk.properties or the default], "name", "description"}.
JsonObject CreateVolumeBody(const SDiskInfoLib& disk, const std::string& fullName);

// {"volume", "description", "property": collocated, "name": volume + "/" + name}.
JsonObject SnapshotBody(const std::string& volume, const std::string& description, const std::string& name);

// {"name", "description", "snapshot", "size", "properties"}.
JsonObject VolumeFromSnapshotBody(const std::string& fullName, const SSnapshotInfoLib& snapshot,
                                  const std::string& property);

// {"index", "storage_volume_name", "instance_name"}.
JsonObject AttachmentBody(int index, const std::string& volume, const std::string& instance);

// {"hard": true, "instance"}.
JsonObject RebootBody(const std::string& instance);

// {"desired_state": state}.
JsonObject PowerStateBody(const std::string& state);

// The whole volume with "bootable" true: {"bootable", "name", "properties"
// ["oracle/public/storage/default"] (no leading "/", kept so), "size", "description"}.
JsonObject BootableVolumeBody(const SDiskInfoLib& disk);

// The whole volume with an empty description: {"description": "", "bootable",
// "name", "properties" [its own], "size"}.
JsonObject ClearedDescriptionVolumeBody(const SDiskInfoLib& disk);

// ---- PaaS services ----------------------------------------------------------------
// Flags of the backup options go out as the JSON string "true" and only when
// set; text options only when not empty.

// The database service creation body. Top level: "serviceName",
// "description", ["edition"], "level", "shape", "subscriptionType", "version",
// "vmPublicKeyText" (db.sshPublicKey); when db.backupDestination is not "NONE"
// also "cloudStorageContainer", "cloudStorageUser" and "cloudStoragePwd":
// the record's own cloud storage user and password, or, when the record has
// no user, accountUser / accountPassword with "createStorageContainerIfMissing"
// true; last "parameters", a list of one object: "backupDestination",
// "adminPassword", ["listenerPort" (number, when > 0)], ["charset"],
// ["ncharset"], "sid", "type" (db.databaseType), "usableStorage", ["isRac",
// "disasterRecovery", "failoverDatabase", "goldenGate": "yes" each, when set;
// the service takes these flags as "yes"/"no"], ["timezone"], and with
// db.instantBackup "ibkup": "yes" followed either, when
// db.instantBackupOnPremise (the source is a backup of a cloud service), by
// "ibkupOnPremise": false and "ibkupServiceID", or by "ibkupDatabaseID",
// "ibkupCloudStorageContainer", "ibkupCloudStoragePassword",
// "ibkupCloudStorageUser", ["ibkupDecryptionKey"], ["ibkupWalletFileContent"].
JsonObject DBCreateBody(const SOracleDBInstanceInfoLib& db, const std::string& accountUser,
                        const std::string& accountPassword);

// {"additionalStorage", "usage" (only with additionalStorage), "shape"
// (db.newShape), "componentInstanceName"}, each when not empty.
JsonObject DBScaleBody(const SOracleDBInstanceInfoLib& db);

// {"lifecycleState": operation, ["vmName"]}.
JsonObject DBPowerBody(const std::string& operation, const SOracleDBInstanceInfoLib& db);

// {"keepForever": "true"} when keep-forever is set, else {}.
JsonObject DBBackupBody(const SPaaSBackupRestoreOptionsLib& options);

// The restore point, first found of: {"tag": tag}, {"latest": ""} (the key
// selects the latest backup; its value is empty on purpose), {"scn": scn},
// {"timestamp": timestamp}. False when the options name none.
bool DBRestoreBody(const SPaaSBackupRestoreOptionsLib& options, JsonObject& body);

// {["notes"], ["databaseIncluded"], ["full"], ["keepForever"]}.
JsonObject JavaBackupBody(const SPaaSBackupRestoreOptionsLib& options);

// {["backupId"], ["notes"], ["forcScaleIn"], ["pauseOTD"], ["resetBinaries"],
// ["restoreConfig"]}. "forcScaleIn" is spelled so on purpose: it is the key
// the service has always been sent.
JsonObject JavaRestoreBody(const SPaaSBackupRestoreOptionsLib& options);

// {["notes"], ["keepForever"]}.
JsonObject MySQLBackupBody(const SPaaSBackupRestoreOptionsLib& options);

// {["notes"], ["backupId"], ["restoreId"], ["restoreType"]}.
JsonObject MySQLRestoreBody(const SPaaSBackupRestoreOptionsLib& options);

// The deletion of a Java or MySQL backup: {["backupId"]}.
JsonObject DeleteBackupBody(const SPaaSBackupRestoreOptionsLib& options);

}  // namespace classicoperations
}  // namespace OracleCloudSDKWrapper
