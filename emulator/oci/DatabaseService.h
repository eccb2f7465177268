#pragma once
// Database service: DB systems (with their DB home, database and nodes),
// DB homes, databases, database backups, restores and node actions, all
// under "/20160918" only, as the service serves them.
#include "oci/OciService.h"

namespace ocwemu {

class DatabaseService : public OciService {
public:
    using OciService::OciService;
    void registerRoutes(Router& router) override;

    // Seeding helper: an AVAILABLE DB system with home, database and node.
    Resource& seedDbSystem(const std::string& compartmentId, const std::string& ad, const Resource& subnet,
                           const std::string& name, const std::string& dbName, std::int64_t nowMs);
    Resource& seedBackup(const Resource& database, const std::string& name, std::int64_t nowMs);

private:
    void launchDbSystem(ApiRequest& req, ApiResponse& res);
    void terminateDbSystem(ApiRequest& req, ApiResponse& res, Resource& r);
    void restoreDatabase(ApiRequest& req, ApiResponse& res, Resource& r);
    void createBackup(ApiRequest& req, ApiResponse& res);
    void deleteBackup(ApiRequest& req, ApiResponse& res, Resource& r);
    void dbNodeAction(ApiRequest& req, ApiResponse& res, Resource& r);

    // Validates a launch body and creates the system and its parts; on a
    // validation failure writes the answer and returns null.
    Resource* launch(const std::string& region, std::int64_t nowMs, const JObject& body, ApiResponse& res,
                     std::int64_t delayMs);
    Resource& makeBackup(const Resource& database, const std::string& name,
                         const std::vector<std::pair<std::string, std::int64_t>>& steps, std::int64_t nowMs);
};

}  // namespace ocwemu
