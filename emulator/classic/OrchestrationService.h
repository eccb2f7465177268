#pragma once
// Orchestrations (v2, "platform/v1/orchestration"): documents of objects with
// templates. desired_state "active" creates the objects (instances from
// their launch-plan template, storage volumes) and the orchestration moves
// activating -> active; "inactive" removes them (deactivating -> inactive).
// A GET shows, in each object, the instances it started ("instances"), so a
// client can read the started instance's full name from the orchestration.
#include "classic/InstanceService.h"
#include "classic/StorageService.h"

namespace ocwemu {

class OrchestrationService : public ClassicService {
public:
    OrchestrationService(Store& store, ClassicAccount& account, InstanceService& instances, StorageService& storage)
        : ClassicService(store, account), instances_(instances), storage_(storage) {}
    void registerRoutes(Router& router) override;

    // Creates an orchestration from its document; with desired_state
    // "active" its objects are started. `settled` makes it (and what it
    // starts) reach its end state at once (seeding). null with the answer
    // written when the document is refused.
    Resource* create(const JObject& body, std::int64_t nowMs, bool settled, ApiResponse& res);

private:
    void post(ApiRequest& req, ApiResponse& res);
    void put(ApiRequest& req, ApiResponse& res, Resource& o);
    void del(ApiRequest& req, ApiResponse& res, Resource& o);
    // Starts the objects not running yet; false when one cannot start (its
    // health then holds the reason).
    bool activate(Resource& o, std::int64_t nowMs, bool settled);
    void deactivate(Resource& o, std::int64_t nowMs);

    InstanceService& instances_;
    StorageService& storage_;
};

}  // namespace ocwemu
