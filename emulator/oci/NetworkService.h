#pragma once
// Virtual networking: VCNs, subnets, VNICs, and the compute API's VNIC
// attachments (an instance's link to a VNIC).
#include "oci/OciService.h"

namespace ocwemu {

class NetworkService : public OciService {
public:
    using OciService::OciService;
    void registerRoutes(Router& router) override;

    // Creates a VNIC in `subnet` and its attachment to `instance`, both going
    // through their provisioning states. Returns the attachment.
    Resource& attachNewVnic(const Resource& instance, const Resource& subnet, const JObject& createVnicDetails,
                            bool primary, std::int64_t nowMs, std::int64_t delayMs);
    // Detaches every VNIC of the instance and terminates the VNICs.
    void detachAll(const Resource& instance, std::int64_t nowMs);

    Resource& seedVcn(const std::string& compartmentId, const std::string& region, const std::string& name,
                      const std::string& cidr, std::int64_t nowMs);
    // `ad` empty: a regional subnet.
    Resource& seedSubnet(const Resource& vcn, const std::string& name, const std::string& cidr,
                         const std::string& ad, std::int64_t nowMs);

private:
    void createVcn(ApiRequest& req, ApiResponse& res);
    void deleteVcn(ApiRequest& req, ApiResponse& res, Resource& r);
    void createSubnet(ApiRequest& req, ApiResponse& res);
    void deleteSubnet(ApiRequest& req, ApiResponse& res, Resource& r);
    void attachVnic(ApiRequest& req, ApiResponse& res);
    void detachVnic(ApiRequest& req, ApiResponse& res, Resource& r);

    Resource& makeVcn(const std::string& compartmentId, const std::string& region, const std::string& name,
                      const std::string& cidr, std::int64_t nowMs, std::int64_t delayMs);
    Resource& makeSubnet(const Resource& vcn, const std::string& name, const std::string& cidr,
                         const std::string& ad, bool prohibitPublicIp, std::int64_t nowMs, std::int64_t delayMs);
    std::string nextPrivateIp(Resource& subnet);
};

}  // namespace ocwemu
