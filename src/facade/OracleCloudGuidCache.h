#pragma once
#include <map>
#include <string>

namespace OracleCloudSDKWrapper {

// Remembers the URI found for a key (a name or guid), so a caller resolving the
// same resource twice can skip the second lookup. The first URI stored for a
// key wins. Not thread-safe.
class COracleCloudGuidCache {
public:
    // Keeps an existing entry for key unchanged.
    void AddURItoCache(const std::string& key, const std::string& uri);
    // false when key is absent (uri untouched).
    bool GetURIFromCache(const std::string& key, std::string& uri) const;

private:
    std::map<std::string, std::string> m_cache;
};

}  // namespace OracleCloudSDKWrapper
