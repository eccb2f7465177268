#pragma once
// Java Cloud Service ("jaas") and MySQL Cloud Service ("MySQLCS") instances
// under "paas/api/v1.1/instancemgmt/{domain}/services/{type}/instances":
// backups, restored backups and deleted backups, each answered 202 with the
// job's absolute URL in Location (and, for every one of them, a JSON body
// whose "target_uri" is that URL). A job document at
// "paas/api/v1.1/activitylog/{domain}/job/{id}" carries the activity-log
// members (jobId, status NEW/RUNNING -> SUCCEED/FAILED, operationType,
// messages) and the backup or restore's own (backupId, backupStartDate,
// backupCompleteDate, recoveryStartDate, recoveryCompleteDate, ...).
#include "classic/PaasService.h"

namespace ocwemu {

class JavaMySqlService : public PaasService {
public:
    // `type`: "jaas" or "MySQLCS".
    JavaMySqlService(Store& store, ClassicAccount& account, std::string type)
        : PaasService(store, account), type_(std::move(type)) {}
    void registerRoutes(Router& router) override;

    // A ready instance with one completed backup (seeding).
    Resource& seedInstance(const std::string& name, std::int64_t nowMs);

    // The job document of a Java or MySQL job (one route serves both types:
    // "paas/api/v1.1/activitylog/{dom}/job/{id}").
    void jobDocument(const ApiRequest& req, ApiResponse& res) const;

private:
    bool java() const { return type_ == "jaas"; }
    void list(ApiRequest& req, ApiResponse& res);
    void get(ApiRequest& req, ApiResponse& res, Resource& s);
    void backup(ApiRequest& req, ApiResponse& res, Resource& s);
    void backups(ApiRequest& req, ApiResponse& res, Resource& s);
    void oneBackup(ApiRequest& req, ApiResponse& res, Resource& s);
    void restore(ApiRequest& req, ApiResponse& res, Resource& s);
    void restores(ApiRequest& req, ApiResponse& res, Resource& s);
    void deleteBackup(ApiRequest& req, ApiResponse& res, Resource& s);

    // A job for the service; answers 202 with its URL and body.
    Resource& startJob(const ApiRequest& req, ApiResponse& res, const Resource& s, const std::string& operation,
                       JObject details, bool fail);
    // The completed backup with that id (not deleted), or null.
    Resource* completedBackup(const Resource& s, const std::string& backupId, std::int64_t nowMs) const;
    JObject render(const Resource& s, std::int64_t nowMs) const;

    std::string type_;
};

}  // namespace ocwemu
