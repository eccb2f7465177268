#pragma once
// Compute: instances (launch from an image or a boot volume, power actions,
// terminate with its cascade, initial Windows credentials) and shapes.
#include "oci/BlockStorageService.h"
#include "oci/NetworkService.h"
#include "oci/OciService.h"

namespace ocwemu {

class ComputeService : public OciService {
public:
    ComputeService(Store& store, OciWorld& world, BlockStorageService& storage, NetworkService& network)
        : OciService(store, world), storage_(storage), network_(network) {}
    void registerRoutes(Router& router) override;

    // Seeding helper: a RUNNING instance from `image` in `subnet`, with its
    // boot volume, boot attachment and primary VNIC, all settled.
    Resource& seedInstance(const std::string& compartmentId, const std::string& ad, const std::string& name,
                           const std::string& shape, const Resource& image, const Resource& subnet,
                           std::int64_t nowMs);

private:
    void launchInstance(ApiRequest& req, ApiResponse& res);
    void updateInstance(ApiRequest& req, ApiResponse& res, Resource& r);
    void instanceAction(ApiRequest& req, ApiResponse& res, Resource& r);
    void terminateInstance(ApiRequest& req, ApiResponse& res, Resource& r);
    void initialCredentials(ApiRequest& req, ApiResponse& res, Resource& r);
    void listShapes(ApiRequest& req, ApiResponse& res);

    // Builds and stores the instance and everything a launch creates. On a
    // validation failure writes the error into `res` and returns null.
    Resource* launch(const std::string& region, std::int64_t nowMs, const JObject& body, ApiResponse& res,
                     std::int64_t delayMs);

    BlockStorageService& storage_;
    NetworkService& network_;
};

}  // namespace ocwemu
