#pragma once
// Base of the Classic PaaS services (database, Java, MySQL): basic
// credentials with X-ID-TENANT-NAME, error bodies, service instances, and
// the asynchronous jobs every mutation answers with (202 and the absolute
// URL of the job in Location). Handlers run with the store lock held.
//
// A job is a Resource with the id of its number (the digits that end its
// URL) and a timeline in its family's words: database jobs "In Progress" ->
// "Succeeded", Java and MySQL jobs "RUNNING" -> "SUCCEED". Holding a job in
// "Failed" (database) or "FAILED" (Java, MySQL) through the admin interface
// makes it fail; so does "ocw-fail" in the notes of a Java or MySQL request
// (Extension).
#include "classic/ClassicAccount.h"
#include "common/Handlers.h"
#include "common/Pipeline.h"
#include "common/Router.h"
#include "common/Store.h"

#include <map>
#include <string>

namespace ocwemu {

class PaasService {
public:
    PaasService(Store& store, ClassicAccount& account) : store_(store), account_(account) {}
    virtual ~PaasService() = default;
    virtual void registerRoutes(Router& router) = 0;

    // The PaasBasic authenticator: "Authorization: Basic user:password" of
    // the account (the plain user name) and X-ID-TENANT-NAME equal to the
    // identity domain, which the path must name as well; else 401.
    static AuthScheme Scheme(const ClassicAccount& account);
    // {"details": {"message": message}} with the status.
    static void Error(ApiResponse& res, int status, const std::string& message);

protected:
    // A route taking basic credentials.
    void on(Router& r, const std::string& method, const std::string& pattern, Handler h);
    // Declared "find or 404": the service instance of `kind` named by the
    // path parameter "svc".
    Handler withService(const std::string& kind, ResourceHandler then) const;
    Resource* service(const std::string& kind, const std::string& name, std::int64_t nowMs) const;
    Resource& addService(const std::string& kind, const std::string& name, JObject doc, std::int64_t nowMs,
                         const std::vector<std::pair<std::string, std::int64_t>>& steps);

    // A new job: `doc` holds what its documents show; `steps` its timeline.
    Resource& addJob(JObject doc, std::int64_t nowMs, const std::vector<std::pair<std::string, std::int64_t>>& steps);
    // The jobs of a family (and service, when not empty) in creation order.
    std::vector<Resource*> jobs(const std::string& family, const std::string& serviceName, std::int64_t nowMs) const;
    // 202 with Location: "https://<host>" + path.
    static void accepted(const ApiRequest& req, ApiResponse& res, const std::string& path,
                         const JValue* body = nullptr);
    static bool parseBody(const ApiRequest& req, ApiResponse& res, JObject& body);
    // "true" as the JSON string the library sends, or JSON true.
    static bool Flag(const JObject& body, const char* key);

    std::int64_t P() const { return account_.provisionMs; }
    std::string stateOf(const Resource& r, std::int64_t nowMs) const { return store_.state(r, nowMs); }

    Store& store_;
    ClassicAccount& account_;
};

}  // namespace ocwemu
