#pragma once
// The one check of OCIDs given on the command line, made before anything is
// sent: not empty, no blank or control character (a pasted OCID often ends in
// one, which curl refuses as a bad URL), and of the kind the command needs
// ("ocid1.<kind>."), so that a volume OCID given to "instances show" is named
// as such instead of coming back as the cloud's 404. A failed check is a usage
// error (exit 2).
#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace ocw {

// The kinds of OCID a command argument takes, and how to name them.
struct OcidKind {
    std::string noun;                // "instance", "volume backup", ...
    std::vector<std::string> types;  // "instance"; "volumebackup", "bootvolumebackup"
};

extern const OcidKind kInstanceOcid;
extern const OcidKind kVolumeOcid;        // block or boot volume
extern const OcidKind kBlockVolumeOcid;
extern const OcidKind kVolumeBackupOcid;  // volume or boot volume backup
extern const OcidKind kBackupOcid;        // also a database backup
extern const OcidKind kImageOcid;
extern const OcidKind kCompartmentOcid;   // also the tenancy (the root compartment)
extern const OcidKind kSubnetOcid;
extern const OcidKind kDatabaseOcid;
extern const OcidKind kDbSystemOcid;

// Empty when value is an OCID of the kind; otherwise why not
// ("not an instance OCID: \"ocid1.volume....\"").
std::string CheckOcid(const std::string& value, const OcidKind& kind);

// The check as a CLI11 validator for an option or positional argument.
CLI::Validator OcidOf(const OcidKind& kind);

}  // namespace ocw
