#pragma once
// Compute Classic instances: launch plans (names "<name>/<uuid>", queued ->
// initializing -> starting -> running), desired_state PUT for shutdown and
// start, delete through stopping, and reboot instance requests (active ->
// complete).
#include "classic/ClassicService.h"
#include "classic/StorageService.h"

namespace ocwemu {

class InstanceService : public ClassicService {
public:
    InstanceService(Store& store, ClassicAccount& account, StorageService& storage)
        : ClassicService(store, account), storage_(storage) {}
    void registerRoutes(Router& router) override;

    // An instance from a launch plan's instance entry, with its launch-time
    // storage attachments; `steps` is its timeline (empty: the launch
    // timeline). null with the answer written when the entry is refused.
    Resource* launch(const JObject& spec, std::int64_t nowMs, ApiResponse& res, const std::string& orchestration = {},
                     const Timeline& steps = {});
    // Deletion: stopping now, gone with its attachments after the provisioning time.
    void remove(Resource& instance, std::int64_t nowMs);

private:
    void postLaunchPlan(ApiRequest& req, ApiResponse& res);
    void putInstance(ApiRequest& req, ApiResponse& res, Resource& inst);
    void deleteInstance(ApiRequest& req, ApiResponse& res, Resource& inst);
    void postReboot(ApiRequest& req, ApiResponse& res);
    void deleteReboot(ApiRequest& req, ApiResponse& res, Resource& r);

    StorageService& storage_;
};

}  // namespace ocwemu
