#include "Ocid.h"

#include <cctype>

namespace ocw {

const OcidKind kInstanceOcid{"instance", {"instance"}};
const OcidKind kVolumeOcid{"volume", {"volume", "bootvolume"}};
const OcidKind kBlockVolumeOcid{"block volume", {"volume"}};
const OcidKind kVolumeBackupOcid{"volume backup", {"volumebackup", "bootvolumebackup"}};
const OcidKind kBackupOcid{"backup", {"volumebackup", "bootvolumebackup", "dbbackup"}};
const OcidKind kImageOcid{"image", {"image"}};
const OcidKind kCompartmentOcid{"compartment", {"compartment", "tenancy"}};
const OcidKind kSubnetOcid{"subnet", {"subnet"}};
const OcidKind kDatabaseOcid{"database", {"database"}};
const OcidKind kDbSystemOcid{"DB system", {"dbsystem"}};

std::string CheckOcid(const std::string& value, const OcidKind& kind) {
    const std::string quoted = "\"" + value + "\"";
    const std::string article = std::string("aeiou").find(kind.noun[0]) != std::string::npos ? "an " : "a ";
    for (unsigned char c : value) {
        if (std::isspace(c) || std::iscntrl(c)) {
            return "not " + article + kind.noun + " OCID: " + quoted + " holds a blank or control character";
        }
    }
    for (const std::string& type : kind.types) {
        if (value.rfind("ocid1." + type + ".", 0) == 0) return std::string();
    }
    return "not " + article + kind.noun + " OCID: " + quoted + " (" + article + kind.noun + " OCID starts with ocid1." +
           kind.types.front() + ".)";
}

CLI::Validator OcidOf(const OcidKind& kind) {
    return CLI::Validator([kind](std::string& value) { return CheckOcid(value, kind); }, "");
}

}  // namespace ocw
