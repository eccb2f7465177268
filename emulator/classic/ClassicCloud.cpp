#include "classic/ClassicCloud.h"

#include "classic/ClassicJson.h"
#include "common/TimeUtil.h"

namespace ocwemu {

using namespace classic;

ClassicCloud::ClassicCloud(Store& store, ClassicAccount& account)
    : store_(store),
      account_(account),
      storage_(store, account),
      instances_(store, account, storage_),
      orchestrations_(store, account, instances_, storage_),
      catalog_(store, account),
      dbcs_(store, account),
      java_(store, account, "jaas"),
      mysql_(store, account, "MySQLCS") {}

void ClassicCloud::registerRoutes(Router& r) {
    if (!account_.exists) return;
    r.add(
        "POST", "/authenticate", [this](ApiRequest& q, ApiResponse& s) { login(q, s); }, RouteAuth::None);
    r.area("/authenticate", RouteAuth::None);
    r.add(
        "GET", "/refresh", [this](ApiRequest& q, ApiResponse& s) { refresh(q, s); }, RouteAuth::ClassicSession);
    for (const char* base : {"/instance",      "/launchplan",   "/storage/",       "/rebootinstancerequest",
                             "/platform/",     "/machineimage", "/imagelist",      "/shape",
                             "/sshkey",        "/seclist",      "/secapplication", "/secassociation",
                             "/seciplist",     "/secrule",      "/network/",       "/ip/",
                             "/orchestration", "/snapshot",     "/account",        "/property",
                             "/refresh"})
        r.area(base, RouteAuth::ClassicSession);
    storage_.registerRoutes(r);
    instances_.registerRoutes(r);
    orchestrations_.registerRoutes(r);
    catalog_.registerRoutes(r);
    r.area("/paas", RouteAuth::PaasBasic);
    dbcs_.registerRoutes(r);
    java_.registerRoutes(r);
    mysql_.registerRoutes(r);
    r.add(
        "GET", "/paas/api/v1.1/activitylog/{dom}/job/{id}",
        [this](ApiRequest& q, ApiResponse& s) { java_.jobDocument(q, s); }, RouteAuth::PaasBasic);
}

void ClassicCloud::registerAdminRoutes(Router& admin) {
    admin.add(
        "GET", "/_emulator/classic/sessions",
        [this](ApiRequest& req, ApiResponse& res) {
            res.json(200, JObject{{"live", static_cast<std::int64_t>(sessions_.live(req.nowMs))}});
        },
        RouteAuth::Admin);
    admin.add(
        "DELETE", "/_emulator/classic/sessions",
        [this](ApiRequest&, ApiResponse& res) {
            sessions_.expireAll();
            res.noContent(204);
        },
        RouteAuth::Admin);
}

void ClassicCloud::addAuthSchemes(std::map<RouteAuth, AuthScheme>& schemes) {
    schemes[RouteAuth::ClassicSession] =
        AuthScheme{[this](const ApiRequest& req, RouteAuth, ApiResponse& res, std::string& reason) {
                       const std::string token = NimbulaToken(req.header("cookie"));
                       if (!token.empty() && sessions_.valid(token, req.nowMs)) return true;
                       reason = token.empty() ? "no_session_cookie" : "invalid_session_cookie";
                       ClassicMessage(res, 401, "Authorization token is invalid");
                       return false;
                   },
                   ClassicError};
    schemes[RouteAuth::PaasBasic] = PaasService::Scheme(account_);
}

void ClassicCloud::setCookie(ApiResponse& res, const std::string& token) const {
    res.setHeader("Set-Cookie", "nimbula=" + token +
                                    "; Path=/; Max-Age=" + std::to_string((account_.sessionLifetimeMs + 999) / 1000));
}

void ClassicCloud::login(ApiRequest& req, ApiResponse& res) {
    JObject body;
    std::string error;
    if (!ParseJsonObject(req.body, body, error))
        return ClassicMessage(res, 400, "The request body is not JSON: " + error);
    if (JStr(body, "user") != account_.userContainer() || JStr(body, "password") != account_.password)
        return ClassicMessage(res, 401, "Incorrect username or password");
    res.noContent(204);
    setCookie(res, sessions_.open(account_, req.nowMs));
}

void ClassicCloud::refresh(ApiRequest& req, ApiResponse& res) {
    const std::string token = NimbulaToken(req.header("cookie"));
    if (!sessions_.refresh(token, account_, req.nowMs))
        return ClassicMessage(res, 401, "Authorization token is invalid");
    res.noContent(204);
    setCookie(res, token);
}

}  // namespace ocwemu
