#pragma once
// Request bodies of the Classic compute operations, built from the caller's
// records. Pure functions: no request, no log. Members appear in the order
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

}  // namespace classicoperations
}  // namespace OracleCloudSDKWrapper
