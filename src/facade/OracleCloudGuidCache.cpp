#include "facade/OracleCloudGuidCache.h"

namespace OracleCloudSDKWrapper {

void COracleCloudGuidCache::AddURItoCache(const std::string& key, const std::string& uri) {
    m_cache.emplace(key, uri);
}

bool COracleCloudGuidCache::GetURIFromCache(const std::string& key, std::string& uri) const {
    auto it = m_cache.find(key);
    if (it == m_cache.end()) {
        return false;
    }
    uri = it->second;
    return true;
}

}  // namespace OracleCloudSDKWrapper
