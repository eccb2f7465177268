#include "classic/OracleCloudClassicOperationsBodies.h"

#include <cstdio>

namespace OracleCloudSDKWrapper {
namespace classicoperations {

namespace {

const char* const kPublicIpPool = "ippool:/oracle/public/ippool";

JsonArray SecurityListNames(const SVMInfoLib& vm) {
    JsonArray names;
    for (const SSecurityGroupInfoLib& group : vm.securityGroups) {
        names.emplace_back(group.fullName.empty() ? group.name : group.fullName);
    }
    return names;
}

JsonArray Strings(const std::vector<std::string>& texts) {
    JsonArray array;
    for (const std::string& text : texts) array.emplace_back(text);
    return array;
}

JsonObject SharedNetworkInterface(const SVMInfoLib& vm) {
    JsonObject nic;
    nic["seclists"] = SecurityListNames(vm);
    nic["nat"] = kPublicIpPool;
    return nic;
}

JsonArray OneProperty(const std::string& property) {
    JsonArray properties;
    properties.emplace_back(property);
    return properties;
}

std::string PropertyOf(const SDiskInfoLib& disk) {
    return disk.properties.empty() ? std::string(kDefaultStorageProperty) : disk.properties;
}

}  // namespace

std::string SizeText(unsigned long long bytes) { return std::to_string(bytes >> 30) + "G"; }

std::string FullVolumeName(const std::string& volumeName, const std::string& userPath) {
    if (!volumeName.empty() && volumeName.front() == '/') return volumeName;
    return userPath + "/" + volumeName;
}

bool InstanceBody(const SVMInfoLib& vm, const std::string& domain, JsonObject& body) {
    body = JsonObject();
    body["shape"] = vm.shape;
    body["name"] = domain + "/" + vm.compartmentId + "/" + vm.vmName;
    // The record has no label of its own; the instance's name serves.
    body["label"] = vm.vmName;
    JsonArray attachments;
    const SDiskInfoLib* boot = nullptr;
    for (const SDiskInfoLib& disk : vm.disks) {
        JsonObject attachment;
        attachment["index"] = disk.index;
        attachment["volume"] = disk.volumeName.empty() ? disk.name : disk.volumeName;
        attachments.emplace_back(std::move(attachment));
        if (boot == nullptr && disk.bootable && disk.index == 1) boot = &disk;
    }
    body["storage_attachments"] = std::move(attachments);
    if (boot == nullptr) {
        return false;
    }
    JsonArray bootOrder;
    bootOrder.emplace_back(boot->index);
    body["boot_order"] = std::move(bootOrder);
    if (!vm.sshKeys.empty()) {
        body["sshkeys"] = Strings(vm.sshKeys);
    }
    JsonObject networking;
    int counter = 0;
    char interfaceName[32];
    if (!vm.securityGroups.empty()) {
        std::snprintf(interfaceName, sizeof interfaceName, "%s%d", "eth", counter++);
        networking[interfaceName] = SharedNetworkInterface(vm);
    }
    for (const SVNicInfoLib& vnic : vm.vnics) {
        std::snprintf(interfaceName, sizeof interfaceName, "%s%d", "eth", counter++);
        JsonObject nic;
        nic["ipnetwork"] = vnic.id.empty() ? vnic.name : vnic.id;
        if (!vnic.privateIp.empty()) nic["ip"] = vnic.privateIp;
        networking[interfaceName] = std::move(nic);
    }
    body["networking"] = std::move(networking);
    JsonObject userdata;
    if (vm.enableRdp) userdata["enable_rdp"] = true;
    if (!vm.administratorPassword.empty()) userdata["administrator_password"] = vm.administratorPassword;
    if (!userdata.empty()) {
        JsonObject attributes;
        attributes["userdata"] = std::move(userdata);
        body["attributes"] = std::move(attributes);
    }
    return true;
}

JsonObject LaunchPlanBody(const JsonObject& instance) {
    JsonArray instances;
    instances.emplace_back(instance);
    JsonObject body;
    body["instances"] = std::move(instances);
    return body;
}

JsonObject DeployVMBody(const SVMInfoLib& vm, const std::string& container) {
    JsonObject instance;
    instance["shape"] = vm.shape;
    instance["imagelist"] = !vm.imageId.empty() && vm.imageId.front() == '/' ? vm.imageId : "/oracle/public/" + vm.imageId;
    instance["name"] = container + "/" + vm.vmName;
    instance["label"] = vm.vmName;
    if (!vm.sshKeys.empty()) {
        instance["sshkeys"] = Strings(vm.sshKeys);
    }
    if (!vm.securityGroups.empty()) {
        JsonObject networking;
        networking["eth0"] = SharedNetworkInterface(vm);
        instance["networking"] = std::move(networking);
    }
    if (!vm.administratorPassword.empty()) {
        JsonObject userdata;
        userdata["enable_rdp"] = vm.enableRdp;
        userdata["administrator_password"] = vm.administratorPassword;
        JsonObject attributes;
        attributes["userdata"] = std::move(userdata);
        instance["attributes"] = std::move(attributes);
    }
    return LaunchPlanBody(instance);
}

JsonObject OrchestrationBody(const JsonObject& instance, const std::string& label, long now, long long jobId) {
    JsonObject object;
    object["template"] = instance;
    object["label"] = label;
    object["type"] = "Instance";
    JsonArray objects;
    objects.emplace_back(std::move(object));
    JsonObject body;
    body["desired_state"] = "active";
    body["objects"] = std::move(objects);
    body["name"] = JsonHelper::GetStringValue(instance, "name") + "_master";
    char description[160];
    std::snprintf(description, sizeof description, "Norquell restored orchestration created at %ld for job id %lld",
                  now, jobId);
    body["description"] = description;
    return body;
}

JsonObject CreateVolumeBody(const SDiskInfoLib& disk, const std::string& fullName) {
    JsonObject body;
    body["size"] = SizeText(disk.sizeBytes);
    body["properties"] = OneProperty(PropertyOf(disk));
    body["name"] = fullName;
    body["description"] = disk.description;
    return body;
}

JsonObject SnapshotBody(const std::string& volume, const std::string& description, const std::string& name) {
    JsonObject body;
    body["volume"] = volume;
    body["description"] = description;
    body["property"] = "/oracle/private/storage/snapshot/collocated";
    body["name"] = volume + "/" + name;
    return body;
}

JsonObject VolumeFromSnapshotBody(const std::string& fullName, const SSnapshotInfoLib& snapshot,
                                  const std::string& property) {
    JsonObject body;
    body["name"] = fullName;
    body["description"] = "volume to read data and backup for Norquell";
    body["snapshot"] = snapshot.name;
    body["size"] = SizeText(snapshot.sizeBytes);
    body["properties"] = OneProperty(property.empty() ? std::string(kDefaultStorageProperty) : property);
    return body;
}

JsonObject AttachmentBody(int index, const std::string& volume, const std::string& instance) {
    JsonObject body;
    body["index"] = index;
    body["storage_volume_name"] = volume;
    body["instance_name"] = instance;
    return body;
}

JsonObject RebootBody(const std::string& instance) {
    JsonObject body;
    body["hard"] = true;
    body["instance"] = instance;
    return body;
}

JsonObject PowerStateBody(const std::string& state) {
    JsonObject body;
    body["desired_state"] = state;
    return body;
}

JsonObject BootableVolumeBody(const SDiskInfoLib& disk) {
    JsonObject body;
    body["bootable"] = true;
    body["name"] = disk.name;
    body["properties"] = OneProperty("oracle/public/storage/default");
    body["size"] = SizeText(disk.sizeBytes);
    body["description"] = disk.description;
    return body;
}

JsonObject ClearedDescriptionVolumeBody(const SDiskInfoLib& disk) {
    JsonObject body;
    body["description"] = "";
    body["bootable"] = disk.bootable;
    body["name"] = disk.name;
    body["properties"] = OneProperty(PropertyOf(disk));
    body["size"] = SizeText(disk.sizeBytes);
    return body;
}

// ---- PaaS services ----------------------------------------------------------------

namespace {

const char* const kTrue = "true";

void PutText(JsonObject& body, const char* key, const std::string& value) {
    if (!value.empty()) body[key] = value;
}

void PutFlag(JsonObject& body, const char* key, bool set) {
    if (set) body[key] = kTrue;
}

// The service's form of the database creation flags.
void PutYes(JsonObject& body, const char* key, bool set) {
    if (set) body[key] = "yes";
}

void PutInstantBackup(const SOracleDBInstanceInfoLib& db, JsonObject& parameter) {
    parameter["ibkup"] = "yes";
    if (db.instantBackupOnPremise) {
        parameter["ibkupOnPremise"] = false;
        parameter["ibkupServiceID"] = db.ibkupServiceId;
        return;
    }
    parameter["ibkupDatabaseID"] = db.ibkupDatabaseId;
    parameter["ibkupCloudStorageContainer"] = db.ibkupCloudStorageContainer;
    parameter["ibkupCloudStoragePassword"] = db.ibkupCloudStoragePassword;
    parameter["ibkupCloudStorageUser"] = db.ibkupCloudStorageUser;
    PutText(parameter, "ibkupDecryptionKey", db.ibkupDecryptionKey);
    PutText(parameter, "ibkupWalletFileContent", db.ibkupWalletFileContent);
}

}  // namespace

JsonObject DBCreateBody(const SOracleDBInstanceInfoLib& db, const std::string& accountUser,
                        const std::string& accountPassword) {
    JsonObject body;
    body["serviceName"] = db.serviceName;
    body["description"] = db.description;
    PutText(body, "edition", db.edition);
    body["level"] = db.level;
    body["shape"] = db.shape;
    body["subscriptionType"] = db.subscriptionType;
    body["version"] = db.version;
    body["vmPublicKeyText"] = db.sshPublicKey;
    JsonObject parameter;
    parameter["backupDestination"] = db.backupDestination;
    if (db.backupDestination != "NONE") {
        body["cloudStorageContainer"] = db.cloudStorageContainer;
        if (!db.cloudStorageUser.empty()) {
            body["cloudStorageUser"] = db.cloudStorageUser;
            body["cloudStoragePwd"] = db.cloudStoragePwd;
        } else {
            body["cloudStorageUser"] = accountUser;
            body["cloudStoragePwd"] = accountPassword;
            body["createStorageContainerIfMissing"] = true;
        }
    }
    parameter["adminPassword"] = db.adminPassword;
    if (db.listenerPort > 0) parameter["listenerPort"] = db.listenerPort;
    PutText(parameter, "charset", db.charset);
    PutText(parameter, "ncharset", db.ncharset);
    parameter["sid"] = db.sid;
    parameter["type"] = db.databaseType;
    parameter["usableStorage"] = db.usableStorage;
    PutYes(parameter, "isRac", db.racDatabase);
    PutYes(parameter, "disasterRecovery", db.disasterRecovery);
    PutYes(parameter, "failoverDatabase", db.failoverDatabase);
    PutYes(parameter, "goldenGate", db.goldenGate);
    PutText(parameter, "timezone", db.timezone);
    if (db.instantBackup) PutInstantBackup(db, parameter);
    JsonArray parameters;
    parameters.emplace_back(std::move(parameter));
    body["parameters"] = std::move(parameters);
    return body;
}

JsonObject DBScaleBody(const SOracleDBInstanceInfoLib& db) {
    JsonObject body;
    if (!db.additionalStorage.empty()) {
        body["additionalStorage"] = db.additionalStorage;
        PutText(body, "usage", db.usage);
    }
    PutText(body, "shape", db.newShape);
    PutText(body, "componentInstanceName", db.componentInstanceName);
    return body;
}

JsonObject DBPowerBody(const std::string& operation, const SOracleDBInstanceInfoLib& db) {
    JsonObject body;
    body["lifecycleState"] = operation;
    PutText(body, "vmName", db.vmName);
    return body;
}

JsonObject DBBackupBody(const SPaaSBackupRestoreOptionsLib& options) {
    JsonObject body;
    PutFlag(body, "keepForever", options.keepForever);
    return body;
}

bool DBRestoreBody(const SPaaSBackupRestoreOptionsLib& options, JsonObject& body) {
    body = JsonObject();
    if (!options.tag.empty()) {
        body["tag"] = options.tag;
    } else if (options.latest) {
        body["latest"] = "";
    } else if (!options.scn.empty()) {
        body["scn"] = options.scn;
    } else if (!options.timestamp.empty()) {
        body["timestamp"] = options.timestamp;
    } else {
        return false;
    }
    return true;
}

JsonObject JavaBackupBody(const SPaaSBackupRestoreOptionsLib& options) {
    JsonObject body;
    PutText(body, "notes", options.notes);
    PutFlag(body, "databaseIncluded", options.databaseIncluded);
    PutFlag(body, "full", options.fullBackup);
    PutFlag(body, "keepForever", options.keepForever);
    return body;
}

JsonObject JavaRestoreBody(const SPaaSBackupRestoreOptionsLib& options) {
    JsonObject body;
    PutText(body, "backupId", options.backupId);
    PutText(body, "notes", options.notes);
    PutFlag(body, "forcScaleIn", options.forceScaleIn);
    PutFlag(body, "pauseOTD", options.pauseOtd);
    PutFlag(body, "resetBinaries", options.resetBinaries);
    PutFlag(body, "restoreConfig", options.restoreConfig);
    return body;
}

JsonObject MySQLBackupBody(const SPaaSBackupRestoreOptionsLib& options) {
    JsonObject body;
    PutText(body, "notes", options.notes);
    PutFlag(body, "keepForever", options.keepForever);
    return body;
}

JsonObject MySQLRestoreBody(const SPaaSBackupRestoreOptionsLib& options) {
    JsonObject body;
    PutText(body, "notes", options.notes);
    PutText(body, "backupId", options.backupId);
    PutText(body, "restoreId", options.restoreId);
    PutText(body, "restoreType", options.restoreType);
    return body;
}

JsonObject DeleteBackupBody(const SPaaSBackupRestoreOptionsLib& options) {
    JsonObject body;
    PutText(body, "backupId", options.backupId);
    return body;
}

}  // namespace classicoperations
}  // namespace OracleCloudSDKWrapper
