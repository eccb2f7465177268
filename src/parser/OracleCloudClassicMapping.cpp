// Compute Classic mappings: instances, volumes, snapshots, attachments,
// names, shapes, networks and the service message body.
#include <cerrno>
#include <cstdlib>

#include "parser/OracleCloudParser.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {
namespace {

// Classic sends byte counts as decimal text ("21474836480"); a number is
// accepted as well.
unsigned long long GetSizeValue(const JsonObject& obj, const char* key) {
    const JsonValue* v = obj.if_contains(key);
    if (v == nullptr) return 0;
    if (const boost::json::string* s = v->if_string()) {
        // Only a plain byte count: "10G" is a request-side unit form, not bytes.
        std::string digits = StringUtil::Trim(std::string(s->data(), s->size()));
        if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) return 0;
        errno = 0;
        unsigned long long value = std::strtoull(digits.c_str(), nullptr, 10);
        return errno == ERANGE ? 0 : value;
    }
    return JsonHelper::GetUInt64Value(obj, key);
}

// User data is free-form: a flag may arrive as a JSON boolean or as text.
bool GetFlagValue(const JsonObject& obj, const char* key) {
    const JsonValue* v = obj.if_contains(key);
    if (v == nullptr) return false;
    if (v->is_bool()) return v->get_bool();
    if (const boost::json::string* s = v->if_string()) {
        std::string text(s->data(), s->size());
        return StringUtil::FindNoCase(text, "true") == 0 && text.size() == 4;
    }
    return false;
}

std::string NormalisePlatform(const std::string& platform) {
    if (platform == "windows") return "Windows";
    if (platform == "linux") return "Linux";
    return platform;
}

}  // namespace

bool COracleCloudParser::Convert(const JsonObject&, SHostInfoLib&) { return true; }

bool COracleCloudParser::Convert(const JsonObject& obj, SVMInfoLib& out) {
    std::string shape = GetStringValue(obj, "shape");
    out.fullName = GetStringValue(obj, "name");
    out.guid = GetRSubStrFromLastSlash(out.fullName);
    if (shape.empty()) {
        // An image list entry, not a running instance.
        out.vmName = out.guid;
        out.isTemplate = true;
    } else {
        out.vmName = GetRSubStrFromLastSlash(CutAtLastSlash(out.fullName));
        out.ipAddress = GetStringValue(obj, "ip");
        out.state = GetStringValue(obj, "state");
        out.status = out.state;
        out.isTemplate = false;
        ConvertNestedListString(obj, "sshkeys", out.sshKeys);
        if (const JsonObject* networking = FindObjectValue(obj, "networking"))
            ExtractIPNetworksAndSecurity(*networking, out.vnics, out.securityGroups);
        out.shape = shape;
        const JsonObject* attributes = FindObjectValue(obj, "attributes");
        const JsonObject* userdata = attributes ? FindObjectValue(*attributes, "userdata") : nullptr;
        if (userdata != nullptr) {
            out.enableRdp = GetFlagValue(*userdata, "enable_rdp");
            out.administratorPassword = GetStringValue(*userdata, "administrator_password");
        }
    }
    out.platform = NormalisePlatform(GetStringValue(obj, "platform"));
    out.vcableId = GetStringValue(obj, "vcable_id");
    // "/Compute-<domain>/<user>/<name>/<uuid>" splits into "", domain, user, ...
    std::vector<std::string> parts = StringUtil::Split(out.fullName, '/');
    out.compartmentId = parts.size() > 3 ? parts[2] : GetStringValue(obj, "hostname");
    ConvertNestedList(obj, "storage_attachments", out.disks);
    // An instance that boots from a volume says which slot in "boot_order";
    // its attachment entries carry no boot flag of their own, so the disk in
    // that slot is marked bootable (a saved document must launch again).
    if (const JsonArray* bootOrder = FindArrayValue(obj, "boot_order")) {
        if (!bootOrder->empty() && bootOrder->front().is_int64()) {
            out.bootDiskIndex = ClampToInt(bootOrder->front().get_int64());
            for (SDiskInfoLib& disk : out.disks) {
                if (disk.index == out.bootDiskIndex) disk.bootable = true;
            }
        }
    }
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SKeyPairInfoLib& out) {
    out.fullName = GetStringValue(obj, "name");
    out.name = GetRSubStrFromLastSlash(out.fullName);
    out.keyText = GetStringValue(obj, "key");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SIPAssociationLib& out) {
    out.name = GetStringValue(obj, "name");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SSecurityGroupInfoLib& out) {
    out.fullName = GetStringValue(obj, "name");
    out.name = GetRSubStrFromLastSlash(out.fullName);
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SInstanceShapeInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.uri = GetStringValue(obj, "uri");
    if (!out.uri.empty()) out.name = out.uri;
    out.cpuCount = ClampToInt(GetIntValue(obj, "cpus"));  // "cpus" is a real (2.0); truncated
    out.memoryMB = ClampToInt(GetIntValue(obj, "ram"));
    out.ioCount = ClampToInt(GetIntValue(obj, "io"));
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SNetworkInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.ipAddressPrefix = GetStringValue(obj, "ipAddressPrefix");
    out.publicNaptEnabled = GetBoolValue(obj, "publicNaptEnabledFlag");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SContainerInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.guid = GetStringValue(obj, "id");
    out.clusterUuid = GetStringValue(obj, "clusterUuid");
    out.maxCapacity = GetUInt64Value(obj, "maxCapacity");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SDiskInfoLib& out) {
    out.index = ClampToInt(GetIntOrText(obj, "index"));
    out.volumeName = GetStringValue(obj, "storage_volume_name");
    out.bootable = GetBoolValue(obj, "bootable");
    if (out.volumeName.empty()) out.volumeName = GetStringValue(obj, "volume");
    out.name = GetStringValue(obj, "name");
    out.parentName = GetRSubStrFromLastSlash(CutAtLastSlash(out.name));
    out.guid = GetRSubStrFromLastSlash(out.name);
    out.status = GetStringValue(obj, "status");
    out.sizeBytes = GetSizeValue(obj, "size");
    std::vector<std::string> properties;
    ConvertNestedListString(obj, "properties", properties);
    if (!properties.empty()) out.properties = properties.front();
    out.description = GetStringValue(obj, "description");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SSnapshotInfoLib& out) {
    out.snapshotId = GetStringValue(obj, "snapshot_id");
    out.name = GetStringValue(obj, "name");
    out.startTime = ParseTimeUtc(GetStringValue(obj, "start_timestamp"));
    out.status = GetStringValue(obj, "status");
    out.sizeBytes = GetSizeValue(obj, "size");
    out.volumeName = GetStringValue(obj, "volume");
    out.description = GetStringValue(obj, "description");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SStorageAttachmentInfoLib& out) {
    out.index = ClampToInt(GetIntOrText(obj, "index"));
    out.volumeName = GetStringValue(obj, "storage_volume_name");
    out.instanceName = GetStringValue(obj, "instance_name");
    out.state = GetStringValue(obj, "state");
    out.name = GetStringValue(obj, "name");
    return true;
}

bool COracleCloudParser::Convert(const std::string& name, SKeyPairInfoLib& out) {
    out.fullName = name;
    out.name = GetRSubStrFromLastSlash(name);
    return true;
}

bool COracleCloudParser::Convert(const std::string& name, SSecurityGroupInfoLib& out) {
    out.fullName = name;
    out.name = GetRSubStrFromLastSlash(name);
    return true;
}

bool COracleCloudParser::Convert(const std::string& text, std::string& out) {
    out = text;
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SMessageInfoLib& out) {
    out.message = GetStringValue(obj, "message");
    // The PaaS instance-management API nests its text: {"details":{"message":...}}.
    if (out.message.empty()) {
        if (const JsonObject* details = FindObjectValue(obj, "details"))
            out.message = GetStringValue(*details, "message");
    }
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, std::string& out) {
    out = Serialize(obj);
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SRebootInstanceReqInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.state = GetStringValue(obj, "state");
    return true;
}

bool COracleCloudParser::Convert(const JsonObject& obj, SOrchestrationInfoLib& out) {
    out.name = GetStringValue(obj, "name");
    out.status = GetStringValue(obj, "status");
    const JsonArray* objects = FindArrayValue(obj, "objects");
    if (objects == nullptr) return true;
    for (const JsonValue& element : *objects) {
        const JsonObject* entry = element.if_object();
        if (entry == nullptr) continue;
        // An object that lists the instances it started (a launch-plan object,
        // or an orchestration object as the service shows it) names the real
        // instance; an empty list means it has not started one.
        if (const JsonArray* instances = FindArrayValue(*entry, "instances")) {
            for (const JsonValue& instance : *instances) {
                if (const JsonObject* vm = instance.if_object()) return Convert(*vm, out.vm);
            }
            continue;
        }
        // Otherwise an object of type "Instance" carries only the requested
        // instance in its template (a saved or an inactive orchestration).
        if (GetStringValue(*entry, "type") == "Instance") {
            if (const JsonObject* tmpl = FindObjectValue(*entry, "template")) {
                const bool converted = Convert(*tmpl, out.vm);
                ReadAsRequestedInstance(out.vm);
                return converted;
            }
        }
    }
    return true;
}

void COracleCloudParser::ReadAsRequestedInstance(SVMInfoLib& vm) {
    vm.vmName = GetRSubStrFromLastSlash(vm.fullName);
    vm.guid.clear();
}

// ---- records without a Classic source --------------------------------------

bool COracleCloudParser::Convert(const JsonObject&, SImageInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SSubnetInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SRegionInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SAvailabilityDomainInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SBootVolumeAttachmentInfo&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SInstanceCredentialsInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, STenancyInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SVnicAttachmentInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SVNicInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SOCIDbBackupConfigLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SOCIDbBackupInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SOCIDbHomeInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SOCIDbSystemInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SOCIDatabaseInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SOCIDbNodeInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SStorageBucketInfoLib&) { return false; }
bool COracleCloudParser::Convert(const JsonObject&, SAPIErrorInfoLib&) { return false; }
bool COracleCloudParser::ConvertQueryItem(const JsonObject&, SNetworkInfoLib&) { return false; }
bool COracleCloudParser::ConvertQueryItem(const JsonObject&, SSubnetInfoLib&) { return false; }

}  // namespace OracleCloudSDKWrapper
