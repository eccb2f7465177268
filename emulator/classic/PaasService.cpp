#include "classic/PaasService.h"

#include "common/Base64.h"

#include <algorithm>
#include <atomic>

namespace ocwemu {

void PaasService::Error(ApiResponse& res, int status, const std::string& message) {
    res.json(status, JObject{{"details", JObject{{"message", message}}}});
}

AuthScheme PaasService::Scheme(const ClassicAccount& account) {
    return AuthScheme{[&account](const ApiRequest& req, RouteAuth, ApiResponse& res, std::string& reason) {
                          const std::string auth = req.header("authorization");
                          std::string credentials;
                          if (auth.rfind("Basic ", 0) != 0 || !Base64Decode(auth.substr(6), credentials)) {
                              reason = "no_basic_credentials";
                          } else if (credentials != account.user + ":" + account.password) {
                              reason = "wrong_basic_credentials";
                          } else if (req.header("x-id-tenant-name") != account.identityDomain) {
                              reason = "wrong_tenant_header";
                          } else if (req.pathParams.count("dom") && req.path("dom") != account.identityDomain) {
                              reason = "wrong_identity_domain_in_path";
                          } else {
                              return true;
                          }
                          res.setHeader("WWW-Authenticate", "Basic realm=\"" + account.identityDomain + "\"");
                          Error(res, 401,
                                "Unauthorized: give the user name and password of identity domain " +
                                    account.identityDomain +
                                    " as basic credentials and the domain in X-ID-TENANT-NAME and in the path");
                          return false;
                      },
                      [](ApiResponse& res, int status, const std::string&, const std::string& message) {
                          Error(res, status, message);
                      }};
}

void PaasService::on(Router& r, const std::string& method, const std::string& pattern, Handler h) {
    r.add(method, pattern, std::move(h), RouteAuth::PaasBasic);
}

static std::string ServiceId(const std::string& kind, const std::string& name) { return "paas:" + kind + ":" + name; }

Resource* PaasService::service(const std::string& kind, const std::string& name, std::int64_t nowMs) const {
    return store_.get(ServiceId(kind, name), nowMs, "paas:" + kind);
}

Handler PaasService::withService(const std::string& kind, ResourceHandler then) const {
    return FindThen(
        [this, kind](const ApiRequest& req, ApiResponse& res) {
            Resource* s = service(kind, req.path("svc"), req.nowMs);
            if (!s) Error(res, 404, "No such service exits [" + req.path("svc") + "]");
            return s;
        },
        std::move(then));
}

Resource& PaasService::addService(const std::string& kind, const std::string& name, JObject doc, std::int64_t nowMs,
                                  const std::vector<std::pair<std::string, std::int64_t>>& steps) {
    Resource r;
    r.id = ServiceId(kind, name);
    if (!store_.get(r.id, nowMs)) store_.erase(r.id);
    r.kind = "paas:" + kind;
    r.compartmentId = account_.identityDomain;
    r.createdMs = nowMs;
    r.doc.edit() = std::move(doc);
    store_.schedule(r, nowMs, steps);
    return store_.add(std::move(r));
}

Resource& PaasService::addJob(JObject doc, std::int64_t nowMs,
                              const std::vector<std::pair<std::string, std::int64_t>>& steps) {
    // Numbers like the service's: seven digits and more, never reused.
    static std::atomic<std::int64_t> next{5744472};
    Resource r;
    r.id = std::to_string(next++);
    r.kind = "paas:job";
    r.compartmentId = JStr(doc, "_family");
    r.createdMs = nowMs;
    doc["_jobId"] = r.id;
    r.doc.edit() = std::move(doc);
    store_.schedule(r, nowMs, steps);
    return store_.add(std::move(r));
}

std::vector<Resource*> PaasService::jobs(const std::string& family, const std::string& serviceName,
                                         std::int64_t nowMs) const {
    std::vector<Resource*> out = store_.list("paas:job", family, nowMs);
    if (!serviceName.empty())
        out.erase(std::remove_if(out.begin(), out.end(),
                                 [&](Resource* j) { return JStr(j->doc, "_service") != serviceName; }),
                  out.end());
    return out;
}

void PaasService::accepted(const ApiRequest& req, ApiResponse& res, const std::string& path, const JValue* body) {
    if (body)
        res.json(202, *body);
    else
        res.jsonText(202, "");
    res.setHeader("Location", "https://" + req.host + path);
    res.setHeader("Retry-After", "60");
}

bool PaasService::parseBody(const ApiRequest& req, ApiResponse& res, JObject& body) {
    std::string error;
    if (ParseJsonObject(req.body, body, error)) return true;
    Error(res, 400, "The request body is not a JSON object: " + error);
    return false;
}

bool PaasService::Flag(const JObject& body, const char* key) { return JBool(body, key).value_or(false); }

}  // namespace ocwemu
