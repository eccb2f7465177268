#pragma once
// The fixed facts of the emulated tenancy and the knobs every OCI service
// reads: identities, regions and their availability domains, timing, page
// size and limits.
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace ocwemu {

struct OciRegion {
    std::string name;  // "us-phoenix-1"
    std::string key;   // "PHX"
};

struct OciWorld {
    std::string tenancyId;
    std::string tenancyName = "ocw-emulated-tenancy";
    std::string userId;
    std::string namespaceName;
    std::string adPrefix = "Ocwe";  // tenancy-specific prefix of availability domain names
    std::vector<OciRegion> regions;  // the first is the home region

    std::int64_t provisionMs = 1000;
    std::int64_t retentionMs = 12LL * 3600 * 1000;  // how long TERMINATED/DELETED stay visible
    std::size_t pageSize = 10;
    std::size_t maxPageSize = 1000;
    std::atomic<int> attachmentsPerInstance{32};

    const std::string& homeRegion() const { return regions.front().name; }
    bool knownRegion(const std::string& name) const;
    std::string regionKey(const std::string& name) const;  // "PHX"; "" when unknown
    // The lower-case key used inside OCIDs ("phx").
    std::string ocidRegion(const std::string& name) const;
    // Instance.region: "phx"/"iad" for the two oldest regions, the name otherwise.
    std::string instanceRegionValue(const std::string& name) const;
    std::vector<std::string> availabilityDomains(const std::string& region) const;
    bool knownAvailabilityDomain(const std::string& region, const std::string& ad) const;
};

// The key of a region name from the built-in table, or one derived from the
// name ("xx-city-1" -> "CIT") for names the table does not hold.
std::string RegionKeyFor(const std::string& name);
// True for the names of the provider's commercial regions (the built-in table).
bool IsRealRegion(const std::string& name);

}  // namespace ocwemu
