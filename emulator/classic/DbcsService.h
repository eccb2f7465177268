#pragma once
// Database Cloud Service ("paas/service/dbcs/api/v1.1/instances/{domain}"):
// service instances (In Progress -> Running; Maintenance for scale, start,
// stop, restart; Terminating -> gone), their compute nodes, on-demand
// backups whose finished job names the backup's tag, recovery by tag,
// latest, SCN or timestamp, jobs at ".../status/{request}/job/{id}", and the
// SSH key credentials of "paas/api/v1.1/instancemgmt/{domain}/services/dbaas".
#include "classic/PaasService.h"

namespace ocwemu {

class DbcsService : public PaasService {
public:
    using PaasService::PaasService;
    void registerRoutes(Router& router) override;

    // A running instance (seeding); the caller holds the store lock.
    Resource& seedInstance(const std::string& name, std::int64_t nowMs);

private:
    void list(ApiRequest& req, ApiResponse& res);
    void create(ApiRequest& req, ApiResponse& res);
    void get(ApiRequest& req, ApiResponse& res, Resource& s);
    void scale(ApiRequest& req, ApiResponse& res, Resource& s);
    void lifecycle(ApiRequest& req, ApiResponse& res, Resource& s);
    void remove(ApiRequest& req, ApiResponse& res, Resource& s);
    void servers(ApiRequest& req, ApiResponse& res, Resource& s);
    void backup(ApiRequest& req, ApiResponse& res, Resource& s);
    void backups(ApiRequest& req, ApiResponse& res, Resource& s);
    void recover(ApiRequest& req, ApiResponse& res, Resource& s);
    void recoveries(ApiRequest& req, ApiResponse& res, Resource& s);
    void job(ApiRequest& req, ApiResponse& res);
    void credentials(ApiRequest& req, ApiResponse& res);

    Resource& makeInstance(const std::string& name, const JObject& body, std::int64_t nowMs,
                           const std::vector<std::pair<std::string, std::int64_t>>& steps);
    // A job of `request` ("create", "backup", ...) for the service; answers 202.
    Resource& startJob(const ApiRequest& req, ApiResponse& res, const Resource& s, const std::string& request,
                       JObject details);
    JObject render(const ApiRequest& req, const Resource& s) const;
    std::string root(const ApiRequest& req) const;
};

}  // namespace ocwemu
