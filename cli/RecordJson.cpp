#include "RecordJson.h"

namespace ocw {

using boost::json::array;
using boost::json::object;

namespace {
std::uint64_t Gb(unsigned long long bytes) { return bytes >> 30; }
}  // namespace

object ToJson(const oci::SRegionInfoLib& region) {
    return object{{"name", region.regionName},
                  {"key", region.regionKey},
                  {"status", region.status},
                  {"isHomeRegion", region.isHomeRegion}};
}

object ToJson(const oci::SContainerInfoLib& c) {
    return object{{"name", c.name},
                  {"id", c.guid},
                  {"lifecycleState", c.state},
                  // The root compartment (the tenancy) names itself as its parent.
                  {"compartmentId", c.compartmentId == c.guid ? std::string() : c.compartmentId},
                  {"description", c.description}};
}

object ToJson(const oci::SDiskInfoLib& d) {
    object o{{"id", d.guid.empty() ? d.volumeName : d.guid},
             {"displayName", d.name.empty() ? d.volumeName : d.name},
             {"sizeInGBs", Gb(d.sizeBytes)},
             {"lifecycleState", d.status},
             {"bootable", d.bootable},
             {"availabilityDomain", d.availabilityDomain},
             {"compartmentId", d.compartmentId}};
    // Attachments without iSCSI details (paravirtualized, boot) leave ":".
    if (!d.iscsiPortal.empty() && d.iscsiPortal != ":") o["iscsiPortal"] = d.iscsiPortal;
    if (!d.iscsiTarget.empty()) o["iscsiTarget"] = d.iscsiTarget;
    return o;
}

object ToJson(const oci::SStorageAttachmentInfoLib& a) {
    object o{{"id", a.attachmentId},
             {"volumeId", a.volumeName},
             {"instanceId", a.instanceName},
             {"attachmentType", a.attachmentType},
             {"lifecycleState", a.state}};
    if (!a.iscsiIpv4.empty()) {
        o["ipv4"] = a.iscsiIpv4;
        o["port"] = a.iscsiPort;
        o["iqn"] = a.iscsiIqn;
    }
    return o;
}

object ToJson(const oci::SVNicInfoLib& v) {
    return object{{"id", v.id},
                  {"hostnameLabel", v.name},
                  {"privateIp", v.privateIp},
                  {"publicIp", v.publicIp},
                  {"subnetId", v.subnetId},
                  {"macAddress", v.macAddress}};
}

object ToJson(const oci::SVMInfoLib& vm, bool detailed) {
    object o{{"displayName", vm.vmName},
             {"id", vm.guid},
             {"lifecycleState", vm.state},
             {"shape", vm.shape},
             {"availabilityDomain", vm.availabilityDomain},
             {"compartmentId", vm.compartmentId},
             {"region", vm.region}};
    if (!detailed) return o;
    o["imageId"] = vm.imageId;
    o["operatingSystem"] = vm.platform;
    o["launchMode"] = vm.launchMode;
    o["ocpus"] = vm.cpuCount;
    o["memoryInGBs"] = vm.memoryMB / 1024;
    o["privateIp"] = vm.ipAddress;
    array disks;
    for (const oci::SDiskInfoLib& d : vm.disks) disks.push_back(ToJson(d));
    o["volumes"] = std::move(disks);
    array vnics;
    for (const oci::SVNicInfoLib& v : vm.vnics) vnics.push_back(ToJson(v));
    o["vnics"] = std::move(vnics);
    return o;
}

object ToJson(const oci::SInstanceShapeInfoLib& s) {
    return object{{"shape", s.name}, {"ocpus", s.cpuCount}, {"memoryInGBs", s.memoryMB / 1024}};
}

object ToJson(const oci::SImageInfoLib& i) {
    return object{{"displayName", i.displayName},
                  {"id", i.id},
                  {"lifecycleState", i.lifecycleState},
                  {"operatingSystem", i.operatingSystem},
                  {"operatingSystemVersion", i.operatingSystemVersion},
                  {"launchMode", i.launchMode},
                  {"compartmentId", i.compartmentId},
                  {"timeCreated", i.timeCreated}};
}

object ImageToJson(const oci::SVMInfoLib& i) {
    return object{{"displayName", i.vmName},
                  {"id", i.guid.empty() ? i.imageId : i.guid},
                  {"lifecycleState", i.state.empty() ? i.status : i.state},
                  {"operatingSystem", i.platform},
                  {"launchMode", i.launchMode},
                  {"compartmentId", i.compartmentId}};
}

object ToJson(const oci::SOCIDbSystemInfoLib& s) {
    return object{{"displayName", s.displayName},
                  {"id", s.id},
                  {"lifecycleState", s.lifecycleState},
                  {"shape", s.shape},
                  {"databaseEdition", s.databaseEdition},
                  {"hostname", s.hostname},
                  {"cpuCoreCount", s.cpuCoreCount},
                  {"nodeCount", s.nodeCount},
                  {"availabilityDomain", s.availabilityDomain},
                  {"compartmentId", s.compartmentId}};
}

object ToJson(const oci::SOCIDatabaseInfoLib& d) {
    return object{{"dbName", d.dbName},
                  {"id", d.id},
                  {"lifecycleState", d.lifecycleState},
                  {"dbUniqueName", d.dbUniqueName},
                  {"pdbName", d.pdbName},
                  {"dbHomeId", d.dbHomeId},
                  {"autoBackupEnabled", d.dbBackupConfig.autoBackupEnabled},
                  {"compartmentId", d.compartmentId}};
}

object ToJson(const oci::SOCIDbHomeInfoLib& h) {
    return object{{"displayName", h.displayName},
                  {"id", h.id},
                  {"lifecycleState", h.lifecycleState},
                  {"dbVersion", h.dbVersion},
                  {"dbSystemId", h.dbSystemId}};
}

object ToJson(const oci::SOCIDbBackupInfoLib& b) {
    return object{{"displayName", b.displayName},
                  {"id", b.id},
                  {"lifecycleState", b.lifecycleState},
                  {"type", b.type},
                  {"databaseId", b.databaseId},
                  {"timeStarted", b.timeStarted},
                  {"timeEnded", b.timeEnded}};
}

object ToJson(const oci::SAvailabilityDomainInfoLib& d) {
    return object{{"name", d.name}, {"compartmentId", d.compartmentId}};
}

}  // namespace ocw
