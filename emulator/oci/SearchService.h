#pragma once
// Resource search (POST /20180409/resources): structured queries over the
// tenancy's resources in the addressed region, and free-text search on
// display names.
#include "oci/OciService.h"

namespace ocwemu {

class SearchService : public OciService {
public:
    using OciService::OciService;
    void registerRoutes(Router& router) override;

private:
    void searchResources(ApiRequest& req, ApiResponse& res);
    void listResourceTypes(ApiRequest& req, ApiResponse& res);
    JObject summary(const Resource& r, std::int64_t nowMs, bool allFields) const;
};

}  // namespace ocwemu
