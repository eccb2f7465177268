#pragma once
// Reader of the standard OCI config file (~/.oci/config): "[PROFILE]" sections
// of key=value lines. Values of [DEFAULT] are inherited by every other profile,
// as the OCI SDKs and CLI do.
#include <map>
#include <string>
#include <vector>

namespace ocw {

// One resolved profile. passPhrase is a secret: never print or log it.
struct OciProfile {
    std::string name;
    std::string user;
    std::string fingerprint;
    std::string keyFile;      // absolute path after resolve()
    std::string tenancy;
    std::string region;
    std::string passPhrase;
};

class OciConfigFile {
public:
    // ~/.oci/config, or $OCI_CLI_CONFIG_FILE when set.
    static std::string DefaultPath();
    // "DEFAULT", or $OCI_CLI_PROFILE when set.
    static std::string DefaultProfile();
    // "~" or "~/..." becomes the home directory; anything else is unchanged.
    static std::string ExpandHome(const std::string& path);

    // Reads and parses the file. False when it cannot be read or a line is
    // neither a section, a key=value pair, a comment nor blank; error() says
    // which line. Key names match without regard to case.
    bool load(const std::string& path);
    // Parses text as if it were the file at path (path is used to resolve
    // relative key files and in messages).
    bool parse(const std::string& text, const std::string& path);

    std::vector<std::string> profileNames() const;

    using Section = std::map<std::string, std::string>;  // lower-case key -> value
    // The profile's values over those of [DEFAULT]; false with error() when
    // the profile is absent.
    bool merged(const std::string& profile, Section& out);
    // A profile that names a Compute Classic or PaaS endpoint is a Classic
    // account (see ClassicProfile.h); any other profile is an OCI one.
    bool isClassic(const std::string& profile);
    // A file named in the config file, made absolute: "~" is expanded, and a
    // relative name is looked up in the current directory, then beside the
    // config file.
    std::string locateFile(const std::string& name) const;

    // Fills out with the profile's values over those of [DEFAULT]. False with
    // error() when the profile is absent or a required key (user, fingerprint,
    // key_file, tenancy, and region unless regionOverride is given) is missing
    // or unusable. The key file is made absolute: "~" is expanded, and a
    // relative name is looked up in the current directory, then beside the
    // config file.
    bool resolve(const std::string& profile, const std::string& regionOverride, OciProfile& out);

    const std::string& error() const { return error_; }
    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::vector<std::string> order_;
    std::map<std::string, Section> sections_;
    std::string error_;
};

}  // namespace ocw
