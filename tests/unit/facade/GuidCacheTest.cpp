#include <gtest/gtest.h>

#include "facade/OracleCloudGuidCache.h"

using OracleCloudSDKWrapper::COracleCloudGuidCache;

TEST(GuidCache, FirstUriStoredForAKeyWins) {
    COracleCloudGuidCache cache;
    cache.AddURItoCache("vm-guid", "/Compute-acme/jdoe/vm1/first");
    cache.AddURItoCache("vm-guid", "/Compute-acme/jdoe/vm1/second");
    std::string uri;
    ASSERT_TRUE(cache.GetURIFromCache("vm-guid", uri));
    EXPECT_EQ(uri, "/Compute-acme/jdoe/vm1/first");
}

TEST(GuidCache, UnknownKeyLeavesTheOutputAlone) {
    COracleCloudGuidCache cache;
    cache.AddURItoCache("a", "uri-a");
    std::string uri = "untouched";
    EXPECT_FALSE(cache.GetURIFromCache("A", uri)) << "keys match exactly";
    EXPECT_EQ(uri, "untouched");
}
