#include "ClassicJson.h"

namespace ocw {

using boost::json::array;
using boost::json::object;

std::string ClassicShortName(const std::string& path) {
    std::string name = path;
    while (!name.empty() && name.back() == '/') name.pop_back();
    const size_t slash = name.rfind('/');
    return slash == std::string::npos ? name : name.substr(slash + 1);
}

object ClassicInstanceJson(const oc::SVMInfoLib& vm, bool detailed) {
    object o{{"name", vm.vmName}, {"state", vm.state}, {"shape", vm.shape}, {"fullName", vm.fullName}};
    if (!detailed) return o;
    o["uuid"] = vm.guid;
    o["ipAddress"] = vm.ipAddress;
    o["operatingSystem"] = vm.platform;
    o["imageList"] = vm.imageId;
    array disks;
    for (const oc::SDiskInfoLib& d : vm.disks) disks.push_back(ClassicDiskJson(d));
    o["disks"] = std::move(disks);
    array networks;
    for (const oc::SVNicInfoLib& v : vm.vnics) {
        networks.push_back(object{{"network", v.name}, {"ipAddress", v.privateIp}, {"macAddress", v.macAddress}});
    }
    o["networks"] = std::move(networks);
    return o;
}

object ClassicDiskJson(const oc::SDiskInfoLib& d) {
    const std::string full = d.name.empty() ? d.volumeName : d.name;
    return object{{"index", d.index},
                  {"name", ClassicShortName(full)},
                  {"sizeInGBs", d.sizeBytes >> 30},
                  {"bootable", d.bootable},
                  {"state", d.status},
                  {"fullName", full}};
}

object ClassicKeyPairJson(const oc::SKeyPairInfoLib& k) {
    return object{{"name", k.name}, {"fullName", k.fullName}, {"publicKey", k.keyText}};
}

object ClassicSecurityListJson(const oc::SSecurityGroupInfoLib& l) {
    return object{{"name", l.name}, {"fullName", l.fullName}};
}

object ClassicNetworkJson(const oc::SNetworkInfoLib& n) {
    return object{{"name", ClassicShortName(n.name)}, {"ipAddressPrefix", n.ipAddressPrefix}, {"fullName", n.name}};
}

object DbServiceJson(const oc::SOracleDBInstanceInfoLib& db, bool detailed) {
    object o{{"name", db.serviceName}, {"state", db.status}, {"version", db.version}, {"shape", db.shape}};
    if (!detailed) return o;
    o["edition"] = db.edition;
    o["level"] = db.level;
    o["sid"] = db.sid;
    o["description"] = db.description;
    o["backupDestination"] = db.backupDestination;
    o["cloudStorageContainer"] = db.cloudStorageContainer;
    o["serviceUri"] = db.serviceUri;
    return o;
}

object JavaMySqlServiceJson(const oc::SJavaMySQLInfoBaseLib& s, const std::string& state) {
    return object{{"name", s.serviceName},   {"state", state.empty() ? s.serviceStateDisplayName : state},
                  {"version", s.serviceVersion}, {"edition", s.edition},
                  {"level", s.serviceLevel},     {"creator", s.creator}};
}

}  // namespace ocw
