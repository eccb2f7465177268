#pragma once
// Images: platform images visible from every compartment, custom images
// captured from instances or imported from an object (IMPORTING, then
// AVAILABLE), export, delete.
#include "oci/OciService.h"

namespace ocwemu {

class ImageService : public OciService {
public:
    using OciService::OciService;
    void registerRoutes(Router& router) override;

    // Seeding helper: a platform image (no compartment, every region).
    Resource& seedPlatformImage(const std::string& name, const std::string& os, const std::string& osVersion,
                                const std::string& launchMode, std::int64_t nowMs);

private:
    void listImages(ApiRequest& req, ApiResponse& res);
    void createImage(ApiRequest& req, ApiResponse& res);
    void updateImage(ApiRequest& req, ApiResponse& res, Resource& r);
    void deleteImage(ApiRequest& req, ApiResponse& res, Resource& r);
    void exportImage(ApiRequest& req, ApiResponse& res, Resource& r);
    Resource& makeImage(const std::string& compartmentId, const std::string& region, const std::string& name,
                        const std::string& os, const std::string& osVersion, const std::string& launchMode,
                        std::int64_t sizeInMBs, std::int64_t nowMs,
                        const std::vector<std::pair<std::string, std::int64_t>>& steps);
};

}  // namespace ocwemu
