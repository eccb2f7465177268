#pragma once
// Compute Classic block storage: storage volumes (Initializing -> Online,
// sizes as byte strings, bootable, from a collocated snapshot, whole-object
// PUT), storage snapshots (initializing -> completed, named under their
// volume) and storage attachments (attaching -> attached, detaching -> gone,
// indexes 1 to 10).
#include "classic/ClassicService.h"

namespace ocwemu {

class StorageService : public ClassicService {
public:
    using ClassicService::ClassicService;
    void registerRoutes(Router& router) override;

    // Launch and seeding support: a volume attached to an instance. At
    // launch the attachment is settled with the instance and cannot be
    // detached later. null with the answer written when not possible.
    Resource* attach(Resource& instance, const std::string& volumeName, std::int64_t index, bool atLaunch,
                     std::int64_t nowMs, std::int64_t delayMs, ApiResponse& res);
    // Instance deletion: its attachments go with it.
    void releaseInstance(Resource& instance, std::int64_t nowMs);
    // A volume as the create body describes it; null with the answer written.
    Resource* createVolume(const JObject& body, std::int64_t nowMs, const Timeline& steps, ApiResponse& res);
    Resource& seedSnapshot(const Resource& volume, const std::string& name, std::int64_t nowMs);

    // "10G", "10240M", "10737418240" -> bytes; false when malformed.
    static bool ParseSize(const std::string& text, std::int64_t& bytes);

private:
    void postVolume(ApiRequest& req, ApiResponse& res);
    void putVolume(ApiRequest& req, ApiResponse& res, Resource& v);
    void deleteVolume(ApiRequest& req, ApiResponse& res, Resource& v);
    void postSnapshot(ApiRequest& req, ApiResponse& res);
    void deleteSnapshot(ApiRequest& req, ApiResponse& res, Resource& s);
    void postAttachment(ApiRequest& req, ApiResponse& res);
    void deleteAttachment(ApiRequest& req, ApiResponse& res, Resource& a);
    Resource& makeSnapshot(const Resource& volume, const std::string& name, const JObject& body, std::int64_t nowMs,
                           const Timeline& steps);
    bool attached(const std::string& volumeName, std::int64_t nowMs) const;
};

}  // namespace ocwemu
