#include "classic/DbcsService.h"

#include "common/Ids.h"
#include "common/TimeUtil.h"


namespace ocwemu {

static const char* kBase = "/paas/service/dbcs/api/v1.1/instances/{dom}";

// "Tue May 3 0:35:23 UTC 2016", as the service writes its dates; backups
// "09-Jan-2017 18:26:06 UTC" and their tags "TAG20170109T182518".
static std::string JavaDate(std::int64_t ms) { return FormatUtc(ms, "%a %b %-d %-H:%M:%S UTC %Y"); }
static std::string BackupDate(std::int64_t ms) { return FormatUtc(ms, "%d-%b-%Y %H:%M:%S UTC"); }
static std::string Tag(std::int64_t ms) { return FormatUtc(ms, "TAG%Y%m%dT%H%M%S"); }

void DbcsService::registerRoutes(Router& r) {
    auto bind = [this](void (DbcsService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    auto svc = [this](void (DbcsService::*fn)(ApiRequest&, ApiResponse&, Resource&)) {
        return withService("dbcs", [this, fn](ApiRequest& q, ApiResponse& s, Resource& o) { (this->*fn)(q, s, o); });
    };
    const std::string b = kBase;
    on(r, "GET", b + "/status/{request}/job/{id}", bind(&DbcsService::job));
    on(r, "GET", b, bind(&DbcsService::list));
    on(r, "POST", b, bind(&DbcsService::create));
    on(r, "GET", b + "/{svc}", svc(&DbcsService::get));
    on(r, "PUT", b + "/{svc}", svc(&DbcsService::scale));
    on(r, "POST", b + "/{svc}", svc(&DbcsService::lifecycle));
    on(r, "DELETE", b + "/{svc}", svc(&DbcsService::remove));
    on(r, "GET", b + "/{svc}/servers", svc(&DbcsService::servers));
    on(r, "POST", b + "/{svc}/backups", svc(&DbcsService::backup));
    on(r, "GET", b + "/{svc}/backups", svc(&DbcsService::backups));
    on(r, "POST", b + "/{svc}/backups/recovery", svc(&DbcsService::recover));
    on(r, "GET", b + "/{svc}/backups/recovery/history", svc(&DbcsService::recoveries));
    on(r, "GET", "/paas/api/v1.1/instancemgmt/{dom}/services/dbaas/credentials", bind(&DbcsService::credentials));
}

std::string DbcsService::root(const ApiRequest& req) const {
    return "https://" + req.host + "/paas/service/dbcs/api/v1.1/instances/" + account_.identityDomain;
}

Resource& DbcsService::makeInstance(const std::string& name, const JObject& body, std::int64_t nowMs,
                                    const std::vector<std::pair<std::string, std::int64_t>>& steps) {
    const JObject* p = nullptr;
    if (const JArray* params = JArr(body, "parameters"))
        if (!params->empty() && (*params)[0].is_object()) p = &(*params)[0].as_object();
    const JObject none;
    const JObject& params = p ? *p : none;
    auto or_ = [](const std::string& v, const char* fallback) { return v.empty() ? std::string(fallback) : v; };
    const std::string sid = or_(JStr(params, "sid"), "ORCL"), pdb = or_(JStr(params, "pdbName"), "PDB1");
    const std::string host = name + "-db-1";
    JObject doc{{"service_name", name},
                {"version", or_(JStr(body, "version"), "12.2.0.1")},
                {"description", JStr(body, "description")},
                {"identity_domain", account_.identityDomain},
                {"creation_time", JavaDate(nowMs)},
                {"last_modified_time", JavaDate(nowMs)},
                {"created_by", account_.user},
                {"sm_plugin_version", "18.4.1-591"},
                {"backup_supported_version", "16.4.5"},
                {"edition", or_(JStr(body, "edition"), "EE")},
                {"level", or_(JStr(body, "level"), "PAAS")},
                {"shape", or_(JStr(body, "shape"), "oc3")},
                {"subscriptionType", or_(JStr(body, "subscriptionType"), "HOURLY")},
                {"sid", sid},
                {"pdbName", pdb},
                {"charset", or_(JStr(params, "charset"), "AL32UTF8")},
                {"ncharset", or_(JStr(params, "ncharset"), "AL16UTF16")},
                {"timezone", or_(JStr(params, "timezone"), "UTC")},
                {"backup_destination", or_(JStr(params, "backupDestination"), "BOTH")},
                {"cloud_storage_container", JStr(body, "cloudStorageContainer")},
                {"connect_descriptor", host + ":1521/" + pdb + "." + account_.identityDomain + ".oraclecloud.internal"},
                {"connect_descriptor_with_public_ip", "129.150.10.1:1521/" + pdb},
                {"em_url", "https://129.150.10.1:5500/em"},
                {"compute_site_name", "US Commercial 2 (us2)"},
                {"num_nodes", "1"},
                {"num_ip_reservations", 1},
                {"listenerPort", JInt(params, "listenerPort").value_or(1521)},
                {"total_shared_storage", JInt(params, "usableStorage").value_or(25)},
                {"rac_database", JStr(params, "isRac") == "yes"},
                {"failover_database", JStr(params, "failoverDatabase") == "yes"},
                {"isBYOL", JBool(body, "isBYOL").value_or(false)},
                {"_hostname", host}};
    return addService("dbcs", name, std::move(doc), nowMs, steps);
}

Resource& DbcsService::seedInstance(const std::string& name, std::int64_t nowMs) {
    return makeInstance(name, JObject{{"description", "seeded database"}}, nowMs, {{"Running", 0}});
}

JObject DbcsService::render(const ApiRequest& req, const Resource& s) const {
    JObject out;
    for (const auto& kv : s.doc)
        if (kv.key()[0] != '_') out.emplace(kv.key(), kv.value());
    out["status"] = stateOf(s, req.nowMs);
    out["service_uri"] = root(req) + "/" + JStr(s.doc, "service_name");
    return out;
}

Resource& DbcsService::startJob(const ApiRequest& req, ApiResponse& res, const Resource& s, const std::string& request,
                                JObject details) {
    details["_family"] = "dbcs";
    details["_service"] = JStr(s.doc, "service_name");
    details["_request"] = request;
    details["_start"] = req.nowMs;
    Resource& j = addJob(std::move(details), req.nowMs, {{"In Progress", 0}, {"Succeeded", P()}});
    accepted(
        req, res,
        "/paas/service/dbcs/api/v1.1/instances/" + account_.identityDomain + "/status/" + request + "/job/" + j.id);
    res.setHeader("Service-URI", root(req) + "/" + JStr(s.doc, "service_name"));
    return j;
}

void DbcsService::list(ApiRequest& req, ApiResponse& res) {
    JArray services;
    for (Resource* s : store_.list("paas:dbcs", "", req.nowMs)) services.push_back(render(req, *s));
    res.json(200, JObject{{"uri", root(req)},
                          {"service_type", "dbaas"},
                          {"implementation_version", "1.0"},
                          {"services", std::move(services)}});
}

void DbcsService::create(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string name = JStr(body, "serviceName");
    bool valid = !name.empty() && name.size() <= 50 && std::isalpha(static_cast<unsigned char>(name[0]));
    for (char c : name) valid = valid && (std::isalnum(static_cast<unsigned char>(c)) || c == '-');
    if (!valid)
        return Error(res, 400, "serviceName must start with a letter and hold at most 50 letters, digits and hyphens");
    const JArray* params = JArr(body, "parameters");
    if (!params || params->size() != 1 || !(*params)[0].is_object())
        return Error(res, 400, "parameters must hold one object of type db");
    if (JStr((*params)[0].as_object(), "adminPassword").empty()) return Error(res, 400, "adminPassword is required");
    if (service("dbcs", name, req.nowMs)) return Error(res, 409, "Service " + name + " already exists");
    Resource& s = makeInstance(name, body, req.nowMs, {{"In Progress", 0}, {"Running", P()}});
    Resource& j = startJob(req, res, s, "create", JObject{{"_op", "create"}});
    s.doc.set("creation_job_id", j.id);
}

void DbcsService::get(ApiRequest& req, ApiResponse& res, Resource& s) { res.json(200, render(req, s)); }

void DbcsService::scale(ApiRequest& req, ApiResponse& res, Resource& s) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (stateOf(s, req.nowMs) != "Running") return Error(res, 409, "The service is " + stateOf(s, req.nowMs));
    if (JHas(body, "shape")) s.doc.set("shape", JStr(body, "shape"));
    if (auto gb = JInt(body, "additionalStorage"))
        s.doc.set("total_shared_storage", JInt(s.doc, "total_shared_storage").value_or(0) + *gb);
    store_.schedule(s, req.nowMs, {{"Maintenance", 0}, {"Running", P()}});
    startJob(req, res, s, "scale", JObject{{"_op", "scale"}});
}

void DbcsService::lifecycle(ApiRequest& req, ApiResponse& res, Resource& s) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string op = JStr(body, "lifecycleState"), now = stateOf(s, req.nowMs);
    if (op != "start" && op != "stop" && op != "restart")
        return Error(res, 400, "lifecycleState must be start, stop or restart");
    if ((op == "start") != (now == "Stopped") || (now != "Running" && now != "Stopped"))
        return Error(res, 409, "The service is " + now + "; it cannot " + op);
    store_.schedule(s, req.nowMs, {{"Maintenance", 0}, {op == "stop" ? "Stopped" : "Running", P()}});
    startJob(req, res, s, "control", JObject{{"_op", op}});
}

void DbcsService::remove(ApiRequest& req, ApiResponse& res, Resource& s) {
    if (stateOf(s, req.nowMs) == "Terminating") return Error(res, 409, "The service is being deleted");
    store_.schedule(s, req.nowMs, {{"Terminating", 0}}, std::max<std::int64_t>(1, P()));
    startJob(req, res, s, "delete", JObject{{"_op", "delete"}});
}

void DbcsService::servers(ApiRequest& req, ApiResponse& res, Resource& s) {
    JArray nodes{JObject{{"hostname", JStr(s.doc, "_hostname")},
                         {"reservedIP", "129.150.10.1"},
                         {"shape", JStr(s.doc, "shape")},
                         {"sid", JStr(s.doc, "sid")},
                         {"pdbName", JStr(s.doc, "pdbName")},
                         {"listenerPort", s.doc.at("listenerPort")},
                         {"status", stateOf(s, req.nowMs)},
                         {"connect_descriptor", JStr(s.doc, "connect_descriptor")},
                         {"connect_descriptor_with_public_ip", JStr(s.doc, "connect_descriptor_with_public_ip")},
                         {"created_by", account_.user},
                         {"creation_job_id", JStr(s.doc, "creation_job_id")},
                         {"creation_time", JStr(s.doc, "creation_time")},
                         {"initialPrimary", true},
                         {"storageAllocated", s.doc.at("total_shared_storage")},
                         {"memoryAllocated", 7680},
                         {"numberOfCores", 2},
                         {"vmType", "db"}}};
    res.json(200, nodes);
}

// --- backups and recovery --------------------------------------------------------

void DbcsService::backup(ApiRequest& req, ApiResponse& res, Resource& s) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (stateOf(s, req.nowMs) != "Running") return Error(res, 409, "The service is " + stateOf(s, req.nowMs));
    // Tags name the second a backup starts; two in one second would collide.
    std::int64_t at = req.nowMs;
    for (Resource* j : jobs("dbcs", JStr(s.doc, "service_name"), req.nowMs))
        if (JStr(j->doc, "_op") == "backup" && JStr(j->doc, "tag") == Tag(at)) at += 1000;
    startJob(req, res, s, "backup",
             JObject{{"_op", "backup"}, {"tag", Tag(at)}, {"keepForever", Flag(body, "keepForever")}});
}

void DbcsService::backups(ApiRequest& req, ApiResponse& res, Resource& s) {
    JArray list;
    for (Resource* j : jobs("dbcs", JStr(s.doc, "service_name"), req.nowMs)) {
        if (JStr(j->doc, "_op") != "backup") continue;
        const std::string st = stateOf(*j, req.nowMs);
        list.push_back(JObject{
            {"dbTag", JStr(j->doc, "tag")},
            {"status", st == "Succeeded" ? "COMPLETED"
                       : st == "Failed"  ? "FAILED"
                                         : "IN PROGRESS"},
            {"backupCompleteDate", st == "Succeeded" ? JValue(BackupDate(j->timeline.back().atMs)) : JValue(nullptr)},
            {"keepForever", JBool(j->doc, "keepForever").value_or(false)},
            {"type", "incremental"}});
    }
    res.json(200, JObject{{"backupList", std::move(list)}});
}

void DbcsService::recover(ApiRequest& req, ApiResponse& res, Resource& s) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const int given = (body.contains("tag") ? 1 : 0) + (body.contains("latest") ? 1 : 0) +
                      (body.contains("scn") ? 1 : 0) + (body.contains("timestamp") ? 1 : 0);
    if (given != 1) return Error(res, 400, "Give exactly one of tag, latest, scn and timestamp");
    if (stateOf(s, req.nowMs) != "Running") return Error(res, 409, "The service is " + stateOf(s, req.nowMs));
    std::string tag = JStr(body, "tag"), latestTag;
    for (Resource* j : jobs("dbcs", JStr(s.doc, "service_name"), req.nowMs))
        if (JStr(j->doc, "_op") == "backup" && stateOf(*j, req.nowMs) == "Succeeded") {
            if (JStr(j->doc, "tag") == tag) latestTag = tag;
            if (body.contains("latest")) latestTag = JStr(j->doc, "tag");
        }
    if ((body.contains("tag") || body.contains("latest")) && latestTag.empty())
        return Error(
            res, 400,
            body.contains("tag") ? "No completed backup has the tag " + tag : "The service has no completed backup");
    if (body.contains("scn") && JStr(body, "scn").find_first_not_of("0123456789") != std::string::npos)
        return Error(res, 400, "scn must be a number");
    store_.schedule(s, req.nowMs, {{"Maintenance", 0}, {"Running", P()}});
    startJob(req, res, s, "recovery",
             JObject{{"_op", "recovery"},
                     {"dbTag", latestTag},
                     {"latest", body.contains("latest")},
                     {"scn", JStr(body, "scn")},
                     {"timestamp", JStr(body, "timestamp")}});
}

void DbcsService::recoveries(ApiRequest& req, ApiResponse& res, Resource& s) {
    JArray list;
    for (Resource* j : jobs("dbcs", JStr(s.doc, "service_name"), req.nowMs)) {
        if (JStr(j->doc, "_op") != "recovery") continue;
        const std::string st = stateOf(*j, req.nowMs);
        list.push_back(JObject{{"dbTag", JStr(j->doc, "dbTag")},
                               {"latest", j->doc.at("latest")},
                               {"scn", JStr(j->doc, "scn")},
                               {"timestamp", JStr(j->doc, "timestamp")},
                               {"status", st == "Succeeded" ? "COMPLETED"
                                          : st == "Failed"  ? "FAILED"
                                                            : "IN PROGRESS"},
                               {"recoveryStartDate", BackupDate(j->createdMs)},
                               {"recoveryCompleteDate",
                                st == "Succeeded" ? JValue(BackupDate(j->timeline.back().atMs)) : JValue(nullptr)}});
    }
    res.json(200, JObject{{"recoveryList", std::move(list)}});
}

// --- jobs and credentials --------------------------------------------------------

void DbcsService::job(ApiRequest& req, ApiResponse& res) {
    Resource* j = store_.get(req.path("id"), req.nowMs, "paas:job");
    if (!j || JStr(j->doc, "_family") != "dbcs" || JStr(j->doc, "_request") != req.path("request"))
        return Error(res, 404, "No job " + req.path("id") + " of request " + req.path("request"));
    const std::string svc = JStr(j->doc, "_service"), op = JStr(j->doc, "_op"), st = stateOf(*j, req.nowMs);
    JArray messages{JValue("Submitted " + op + " of service [" + svc + "]")};
    if (st != "In Progress") {
        if (st == "Failed")
            messages.push_back(
                JValue(op == "backup" ? "Database backup failed" : "The " + op + " of service [" + svc + "] failed"));
        else if (op == "backup")
            messages.push_back(JValue("Database backup completed with [" + JStr(j->doc, "tag") + "]"));
        else if (op == "recovery")
            messages.push_back(JValue("Database recovery completed with [" + JStr(j->doc, "dbTag") + "]"));
        else
            messages.push_back(JValue("The " + op + " of service [" + svc + "] completed"));
    }
    Resource* s = service("dbcs", svc, req.nowMs);
    res.json(200, JObject{{"service_name", svc},
                          {"version", s ? JStr(s->doc, "version") : std::string()},
                          {"status", s ? JValue(stateOf(*s, req.nowMs)) : JValue("Terminated")},
                          {"description", s ? JStr(s->doc, "description") : std::string()},
                          {"identity_domain", account_.identityDomain},
                          {"creation_time", s ? JStr(s->doc, "creation_time") : std::string()},
                          {"last_modified_time", s ? JStr(s->doc, "last_modified_time") : std::string()},
                          {"created_by", account_.user},
                          {"service-uri", root(req) + "/" + svc},
                          {"message", std::move(messages)},
                          {"job_start_date", JavaDate(j->createdMs)},
                          {"job_status", st},
                          {"job_operation", op},
                          {"job_request_params", JObject{{"operationName", op},
                                                         {"tenant", account_.identityDomain},
                                                         {"serviceInstance", svc},
                                                         {"serviceType", "dbaas"},
                                                         {"namespace", "dbaas"}}}});
}

void DbcsService::credentials(ApiRequest& req, ApiResponse& res) {
    JArray items;
    for (Resource* s : store_.list("paas:dbcs", "", req.nowMs)) {
        const std::string svc = JStr(s->doc, "service_name");
        if (req.hasParam("serviceName") && req.param("serviceName") != svc) continue;
        items.push_back(JObject{{"computeKeyName", "/Compute-" + account_.identityDomain + "/" + account_.user +
                                                       "/dbaas." + svc + ".DB.ora_user"},
                                {"publicKey", "ssh-rsa AAAAB3NzaC1yc2EAAAADAQABAAABAQDemulated " + svc},
                                {"description", "Service user ssh public key which can be updated by the customer"},
                                {"serviceName", svc},
                                {"serviceType", "DBaaS"},
                                {"serviceState", "RUNNING"},
                                {"identityDomain", account_.identityDomain},
                                {"credName", "vmspublickey"},
                                {"credType", "SSH"},
                                {"componentType", "DB"},
                                {"parentType", "SERVICE"},
                                {"osUserName", "opc"},
                                {"lastUpdateStatus", "SUCCESS"},
                                {"lastUpdateMessage", "SSH public key updated"},
                                {"lastUpdateTime", Rfc3339(s->createdMs)}});
    }
    res.json(200, JObject{{"hasMore", false},
                          {"totalResults", static_cast<std::int64_t>(items.size())},
                          {"items", std::move(items)}});
}

}  // namespace ocwemu
