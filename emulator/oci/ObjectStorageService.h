#pragma once
// Object storage: the tenancy's namespace, buckets and objects (kept in
// memory). Paths have no version prefix; "/n" and "/n/" both answer the
// namespace.
#include "oci/OciService.h"

namespace ocwemu {

// Store ids of buckets and objects (their OCI names are not unique ids).
std::string BucketKey(const std::string& ns, const std::string& bucket);
std::string ObjectKey(const std::string& ns, const std::string& bucket, const std::string& object);
// Splits ".../n/<ns>/b/<bucket>/o/<object>" (an object storage URL); false
// when the text has no such path.
bool ParseObjectUri(const std::string& uri, std::string& ns, std::string& bucket, std::string& object);

class ObjectStorageService : public OciService {
public:
    using OciService::OciService;
    void registerRoutes(Router& router) override;

    Resource& seedBucket(const std::string& compartmentId, const std::string& region, const std::string& name,
                         std::int64_t nowMs);
    Resource& seedObject(const Resource& bucket, const std::string& name, const std::string& data,
                         std::int64_t nowMs);

private:
    void getNamespace(ApiRequest& req, ApiResponse& res);
    void getNamespaceMetadata(ApiRequest& req, ApiResponse& res);
    void listBuckets(ApiRequest& req, ApiResponse& res);
    void createBucket(ApiRequest& req, ApiResponse& res);
    void getBucket(ApiRequest& req, ApiResponse& res);
    void updateBucket(ApiRequest& req, ApiResponse& res);
    void deleteBucket(ApiRequest& req, ApiResponse& res);
    void listObjects(ApiRequest& req, ApiResponse& res);
    void putObject(ApiRequest& req, ApiResponse& res);
    void getObject(ApiRequest& req, ApiResponse& res);
    void deleteObject(ApiRequest& req, ApiResponse& res);

    bool checkNamespace(const ApiRequest& req, ApiResponse& res) const;
    Resource* findBucket(const ApiRequest& req, ApiResponse& res) const;
    JObject renderBucket(const Resource& b, bool summary, const std::string& fields, std::int64_t nowMs) const;
    Resource& writeObject(const Resource& bucket, const std::string& name, const std::string& data,
                          const std::string& contentType, const JObject& meta, std::int64_t nowMs);
};

}  // namespace ocwemu
