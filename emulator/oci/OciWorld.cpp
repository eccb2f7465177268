#include "oci/OciWorld.h"

#include <cctype>
#include <map>

namespace ocwemu {

static const std::map<std::string, std::string>& RegionKeys() {
    static const std::map<std::string, std::string> kKeys = {
        {"us-phoenix-1", "PHX"},      {"us-ashburn-1", "IAD"},   {"eu-frankfurt-1", "FRA"}, {"uk-london-1", "LHR"},
        {"ap-tokyo-1", "NRT"},        {"ca-toronto-1", "YYZ"},   {"ap-sydney-1", "SYD"},    {"eu-amsterdam-1", "AMS"},
        {"ap-mumbai-1", "BOM"},       {"sa-saopaulo-1", "GRU"},  {"us-sanjose-1", "SJC"},   {"eu-zurich-1", "ZRH"},
        {"ap-seoul-1", "ICN"},        {"ap-osaka-1", "KIX"},     {"us-chicago-1", "ORD"},   {"eu-madrid-1", "MAD"},
        {"eu-paris-1", "CDG"},        {"me-dubai-1", "DXB"},     {"ap-chuncheon-1", "YNY"}, {"ap-hyderabad-1", "HYD"},
        {"ap-melbourne-1", "MEL"},    {"ap-singapore-1", "SIN"}, {"ca-montreal-1", "YUL"},  {"eu-marseille-1", "MRS"},
        {"eu-milan-1", "LIN"},        {"eu-stockholm-1", "ARN"}, {"il-jerusalem-1", "MTZ"}, {"me-jeddah-1", "JED"},
        {"mx-queretaro-1", "QRO"},    {"sa-santiago-1", "SCL"},  {"sa-vinhedo-1", "VCP"},   {"uk-cardiff-1", "CWL"},
        {"af-johannesburg-1", "JNB"}, {"me-abudhabi-1", "AUH"},  {"mx-monterrey-1", "MTY"}, {"sa-bogota-1", "BOG"}};
    return kKeys;
}

bool IsRealRegion(const std::string& name) { return RegionKeys().count(name) != 0; }

std::string RegionKeyFor(const std::string& name) {
    const auto& kKeys = RegionKeys();
    auto it = kKeys.find(name);
    if (it != kKeys.end()) return it->second;
    size_t a = name.find('-');
    std::string city = a == std::string::npos ? name : name.substr(a + 1);
    std::string key;
    for (char c : city) {
        if (!std::isalpha(static_cast<unsigned char>(c))) break;
        key += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        if (key.size() == 3) break;
    }
    return key.empty() ? "XXX" : key;
}

bool OciWorld::knownRegion(const std::string& name) const {
    for (const auto& r : regions)
        if (r.name == name) return true;
    return false;
}

std::string OciWorld::regionKey(const std::string& name) const {
    for (const auto& r : regions)
        if (r.name == name) return r.key;
    return {};
}

std::string OciWorld::ocidRegion(const std::string& name) const {
    std::string k = regionKey(name);
    for (auto& c : k) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return k;
}

std::string OciWorld::instanceRegionValue(const std::string& name) const {
    if (name == "us-phoenix-1") return "phx";
    if (name == "us-ashburn-1") return "iad";
    return name;
}

std::vector<std::string> OciWorld::availabilityDomains(const std::string& region) const {
    std::vector<std::string> out;
    if (!knownRegion(region)) return out;
    std::string stem;
    if (region == "us-phoenix-1") {
        stem = "PHX";
    } else {
        size_t dash = region.rfind('-');
        stem = region.substr(0, dash);
        for (auto& c : stem) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    const int count = (region == "us-phoenix-1" || region == "us-ashburn-1") ? 3 : 1;
    for (int i = 1; i <= count; ++i) out.push_back(adPrefix + ":" + stem + "-AD-" + std::to_string(i));
    return out;
}

bool OciWorld::knownAvailabilityDomain(const std::string& region, const std::string& ad) const {
    for (const auto& a : availabilityDomains(region))
        if (a == ad) return true;
    return false;
}

}  // namespace ocwemu
