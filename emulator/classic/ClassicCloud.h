#pragma once
// The Cloud Classic half of the emulator put together: Compute Classic (login
// and session cookie, the resource families), the PaaS services (database,
// Java, MySQL) with basic credentials, their authentication, the admin
// routes for sessions, and the seeds. Owned by Emulator.
#include "classic/CatalogService.h"
#include "classic/ClassicAccount.h"
#include "classic/DbcsService.h"
#include "classic/JavaMySqlService.h"
#include "classic/InstanceService.h"
#include "classic/OrchestrationService.h"
#include "classic/StorageService.h"
#include "common/Pipeline.h"
#include "common/Router.h"
#include "common/Store.h"

#include <map>

namespace ocwemu {

class ClassicCloud {
public:
    ClassicCloud(Store& store, ClassicAccount& account);
    // Every Classic route, and the areas of the paths they own (so unknown
    // Classic paths are refused and answered in Classic's manner).
    void registerRoutes(Router& router);
    // Under /_emulator/classic/: GET sessions ({"live": N}), DELETE sessions
    // (every session ends now).
    void registerAdminRoutes(Router& admin);
    // The authenticators of the Classic kinds of credentials.
    void addAuthSchemes(std::map<RouteAuth, AuthScheme>& schemes);

    // Fills the store; the caller holds the store lock. "demo": a small
    // account with instances, volumes, snapshots, an orchestration and the
    // rest; "empty": shapes and Oracle's images only; "scale": `instances`
    // instances (at most 500) with boot volumes. The demo account also has a
    // database, a Java and a MySQL service. Nothing without an account.
    bool seed(const std::string& mode, int instances, std::int64_t nowMs, std::string& error);

    void expireSessions() { sessions_.expireAll(); }

private:
    void login(ApiRequest& req, ApiResponse& res);
    void refresh(ApiRequest& req, ApiResponse& res);
    void setCookie(ApiResponse& res, const std::string& token) const;

    Store& store_;
    ClassicAccount& account_;
    ClassicSessions sessions_;
    StorageService storage_;
    InstanceService instances_;
    OrchestrationService orchestrations_;
    CatalogService catalog_;
    DbcsService dbcs_;
    JavaMySqlService java_;
    JavaMySqlService mysql_;
};

}  // namespace ocwemu
