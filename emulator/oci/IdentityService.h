#pragma once
// Identity: tenancy, regions and subscriptions, availability domains, the
// compartment tree, users.
#include "oci/OciService.h"

namespace ocwemu {

class IdentityService : public OciService {
public:
    using OciService::OciService;
    void registerRoutes(Router& router) override;

    // Seeding helper: a compartment that is ACTIVE from `nowMs` on.
    Resource& seedCompartment(const std::string& parentId, const std::string& name, std::int64_t nowMs);

private:
    void getTenancy(ApiRequest& req, ApiResponse& res);
    void listRegionSubscriptions(ApiRequest& req, ApiResponse& res);
    void listRegions(ApiRequest& req, ApiResponse& res);
    void listAvailabilityDomains(ApiRequest& req, ApiResponse& res);
    void listCompartments(ApiRequest& req, ApiResponse& res);
    void getCompartment(ApiRequest& req, ApiResponse& res);
    void createCompartment(ApiRequest& req, ApiResponse& res);
    void updateCompartment(ApiRequest& req, ApiResponse& res, Resource& r);
    void deleteCompartment(ApiRequest& req, ApiResponse& res, Resource& r);
    void getUser(ApiRequest& req, ApiResponse& res);
    JObject rootCompartment() const;
};

}  // namespace ocwemu
