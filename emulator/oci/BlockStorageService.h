#pragma once
// Block storage: volumes and boot volumes, their attachments to instances
// (iSCSI target once attached, per-instance limit), and their backups with
// restores into new volumes.
#include "oci/OciService.h"

namespace ocwemu {

class BlockStorageService : public OciService {
public:
    using OciService::OciService;
    void registerRoutes(Router& router) override;

    // Launch support: the boot volume of a new instance and its attachment.
    Resource& createBootVolume(const Resource& instance, const std::string& imageId, std::int64_t sizeInGBs,
                               std::int64_t nowMs, std::int64_t delayMs);
    Resource& attachBootVolume(const Resource& instance, const Resource& bootVolume, std::int64_t nowMs,
                               std::int64_t delayMs);
    // Terminate support: detaches every volume of the instance and, unless
    // preserved, terminates its boot volume.
    void releaseInstance(const Resource& instance, bool preserveBootVolume, std::int64_t nowMs);
    // True when the boot volume is attached (or attaching) to an instance.
    bool bootVolumeInUse(const Resource& bootVolume, std::int64_t nowMs) const;

    // Seeding helpers: resources that are settled at `nowMs`.
    Resource& seedVolume(const std::string& compartmentId, const std::string& region, const std::string& ad,
                         const std::string& name, std::int64_t sizeInGBs, std::int64_t nowMs);
    Resource& seedVolumeAttachment(const Resource& instance, const Resource& volume, std::int64_t nowMs);
    Resource& seedVolumeBackup(const Resource& volume, const std::string& name, std::int64_t nowMs);

private:
    void createVolume(ApiRequest& req, ApiResponse& res);
    void updateVolume(ApiRequest& req, ApiResponse& res, Resource& r);
    void createBootVolumeApi(ApiRequest& req, ApiResponse& res);
    void attachVolume(ApiRequest& req, ApiResponse& res);
    void detachVolume(ApiRequest& req, ApiResponse& res, Resource& r);
    void attachBootVolumeApi(ApiRequest& req, ApiResponse& res);
    void detachBootVolume(ApiRequest& req, ApiResponse& res, Resource& r);
    void createBackup(ApiRequest& req, ApiResponse& res, bool boot);
    void deleteBackup(ApiRequest& req, ApiResponse& res, Resource& b);

    void deleteAnyVolume(ApiRequest& req, ApiResponse& res, Resource& v);
    Resource& makeVolume(bool boot, const std::string& compartmentId, const std::string& region,
                         const std::string& ad, const std::string& name, std::int64_t sizeInGBs,
                         std::int64_t nowMs, const std::vector<std::pair<std::string, std::int64_t>>& steps);
    Resource& makeVolumeAttachment(const Resource& instance, const Resource& volume, const std::string& type,
                                   const JObject& body, std::int64_t nowMs, std::int64_t delayMs);
    Resource& makeBackup(bool boot, const Resource& volume, const std::string& name, const std::string& type,
                         std::int64_t nowMs, const std::vector<std::pair<std::string, std::int64_t>>& steps);
    bool volumeInUse(const Resource& volume, std::int64_t nowMs) const;
    int activeAttachments(const Resource& instance, std::int64_t nowMs) const;
};

}  // namespace ocwemu
