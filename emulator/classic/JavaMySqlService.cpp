#include "classic/JavaMySqlService.h"

#include "common/TimeUtil.h"

namespace ocwemu {

// "Thu Apr 28 17:45:33 GMT 2016", as these services date backups and restores.
static std::string GmtDate(std::int64_t ms) { return FormatUtc(ms, "%a %b %d %H:%M:%S GMT %Y"); }

static const char* kRunning = "RUNNING";
static const char* kSucceeded = "SUCCEED";
static const char* kFailed = "FAILED";

void JavaMySqlService::registerRoutes(Router& r) {
    auto svc = [this](void (JavaMySqlService::*fn)(ApiRequest&, ApiResponse&, Resource&)) {
        return withService(type_, [this, fn](ApiRequest& q, ApiResponse& s, Resource& o) { (this->*fn)(q, s, o); });
    };
    const std::string b = "/paas/api/v1.1/instancemgmt/{dom}/services/" + type_ + "/instances";
    on(r, "GET", b, [this](ApiRequest& q, ApiResponse& s) { list(q, s); });
    on(r, "GET", b + "/{svc}", svc(&JavaMySqlService::get));
    on(r, "POST", b + "/{svc}/backups", svc(&JavaMySqlService::backup));
    on(r, "GET", b + "/{svc}/backups", svc(&JavaMySqlService::backups));
    on(r, "GET", b + "/{svc}/backups/{backupId}", svc(&JavaMySqlService::oneBackup));
    on(r, "POST", b + "/{svc}/restoredbackups", svc(&JavaMySqlService::restore));
    on(r, "GET", b + "/{svc}/restoredbackups", svc(&JavaMySqlService::restores));
    on(r, "GET", b + "/{svc}/restoredbackups/{jobId}", svc(&JavaMySqlService::restores));
    on(r, "POST", b + "/{svc}/deletedbackups", svc(&JavaMySqlService::deleteBackup));
}

Resource& JavaMySqlService::seedInstance(const std::string& name, std::int64_t nowMs) {
    const bool j = java();
    JObject doc{{"serviceId", static_cast<std::int64_t>(50000 + name.size())},
                {"serviceName", name},
                {"serviceType", j ? "JaaS" : "MySQLCS"},
                {"serviceDescription", j ? "seeded Java service" : "seeded MySQL service"},
                {"domainName", account_.identityDomain},
                {"serviceStateDisplayName", "Ready"},
                {"serviceVersion", j ? "12cRelease212" : "5.7"},
                {"releaseVersion", j ? "12.2.1.2.0" : "5.7.19"},
                {"edition", j ? "EE" : "EE"},
                {"editionDisplayName", "Enterprise Edition"},
                {"serviceLevel", "PAAS"},
                {"serviceLevelDisplayName", "Oracle Cloud Service"},
                {"meteringFrequency", "HOURLY"},
                {"meteringFrequencyDisplayName", "Hourly"},
                {"metaVersion", "18.1.1"},
                {"creator", account_.user},
                {"creationDate", GmtDate(nowMs)},
                {"computeSiteName", "US Commercial 2 (us2)"}};
    if (j) {
        doc["adminHostName"] = name + "-wls-1.compute-" + account_.identityDomain + ".oraclecloud.internal";
        doc["keyComponentInstance"] = "WLS";
        doc["WLS_ROOT"] = "https://129.150.20.1:7002";
        doc["FMW_ROOT"] = "https://129.150.20.1:7002/em";
        doc["totalSSDStorage"] = 0;
        doc["components"] = JObject{{"WLS", JObject{{"state", "READY"}, {"version", "12.2.1.2.0"}}}};
    } else {
        doc["BACKUP_DESTINATION"] = "BOTH";
        doc["CLOUD_STORAGE_CONTAINER"] = "Storage-" + account_.identityDomain + "/mysqlbackup";
        doc["DATA_VOLUME_SIZE"] = "25G";
        doc["MYSQL_PORT"] = "3306";
        doc["totalSharedStorage"] = 25;
        doc["attributes"] = JObject{{"MYSQL_PORT", JObject{{"displayName", "MySQL Port"}, {"value", "3306"}}}};
    }
    Resource& s = addService(type_, name, std::move(doc), nowMs, {{"READY", 0}});
    JObject done{{"_family", type_},          {"_service", name},
                 {"_op", "backup"},           {"backupId", std::to_string(nowMs - 3600000)},
                 {"notes", "nightly"},        {"full", true},
                 {"databaseIncluded", false}, {"keepForever", false}};
    addJob(std::move(done), nowMs - 3600000, {{kSucceeded, 0}});
    return s;
}

JObject JavaMySqlService::render(const Resource& s, std::int64_t nowMs) const {
    JObject out;
    for (const auto& kv : s.doc) out.emplace(kv.key(), kv.value());
    out["state"] = stateOf(s, nowMs);
    return out;
}

void JavaMySqlService::list(ApiRequest& req, ApiResponse& res) {
    // The Java list is an object keyed by service name, the MySQL list an array.
    JObject byName;
    JArray array;
    for (Resource* s : store_.list("paas:" + type_, "", req.nowMs)) {
        if (java())
            byName[JStr(s->doc, "serviceName")] = render(*s, req.nowMs);
        else
            array.push_back(render(*s, req.nowMs));
    }
    res.json(200, JObject{{"services", java() ? JValue(std::move(byName)) : JValue(std::move(array))}});
}

void JavaMySqlService::get(ApiRequest& req, ApiResponse& res, Resource& s) { res.json(200, render(s, req.nowMs)); }

Resource& JavaMySqlService::startJob(const ApiRequest& req, ApiResponse& res, const Resource& s,
                                     const std::string& operation, JObject details, bool fail) {
    details["_family"] = type_;
    details["_service"] = JStr(s.doc, "serviceName");
    details["_op"] = operation;
    Resource& j = addJob(std::move(details), req.nowMs, {{kRunning, 0}, {fail ? kFailed : kSucceeded, P()}});
    const std::string path = "/paas/api/v1.1/activitylog/" + account_.identityDomain + "/job/" + j.id;
    static const std::map<std::string, std::string> kNames = {
        {"backup", "start-backup"}, {"restore", "restore-backup"}, {"delete", "delete-backup"}};
    const JValue body = JObject{{"details", JObject{{"jobId", j.id}, {"message", "Submitted job " + j.id}}},
                                {"jobId", j.id},
                                {"operationName", kNames.at(operation)},
                                {"target_uri", "https://" + req.host + path}};
    accepted(req, res, path, &body);
    return j;
}

Resource* JavaMySqlService::completedBackup(const Resource& s, const std::string& backupId, std::int64_t nowMs) const {
    Resource* found = nullptr;
    for (Resource* j : jobs(type_, JStr(s.doc, "serviceName"), nowMs)) {
        if (JStr(j->doc, "backupId") != backupId) continue;
        const std::string op = JStr(j->doc, "_op");
        if (op == "backup" && stateOf(*j, nowMs) == kSucceeded) found = j;
        if (op == "delete" && stateOf(*j, nowMs) == kSucceeded) found = nullptr;
    }
    return found;
}

static bool FailRequested(const JObject& body) { return JStr(body, "notes").find("ocw-fail") != std::string::npos; }

void JavaMySqlService::backup(ApiRequest& req, ApiResponse& res, Resource& s) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (stateOf(s, req.nowMs) != "READY") return Error(res, 409, "The service is " + stateOf(s, req.nowMs));
    // Backup ids are the start instant in milliseconds, unique per service.
    std::int64_t id = req.nowMs;
    for (Resource* j : jobs(type_, JStr(s.doc, "serviceName"), req.nowMs))
        if (JStr(j->doc, "backupId") == std::to_string(id)) ++id;
    startJob(req, res, s, "backup",
             JObject{{"backupId", std::to_string(id)},
                     {"notes", JStr(body, "notes")},
                     {"full", java() ? Flag(body, "full") || !body.contains("full") : true},
                     {"databaseIncluded", java() && Flag(body, "databaseIncluded")},
                     {"keepForever", Flag(body, "keepForever")}},
             FailRequested(body));
}

// A backup as the backups list shows it, from its job.
static JObject BackupItem(const Store& store, const Resource& j, std::int64_t nowMs) {
    const std::string st = store.state(j, nowMs);
    JObject b{{"backupId", JStr(j.doc, "backupId")},
              {"jobId", j.id},
              {"backupStartDate", GmtDate(j.createdMs)},
              {"status", st == kSucceeded ? "COMPLETED"
                         : st == kFailed  ? "FAILED"
                                          : "IN_PROGRESS"},
              {"notes", JStr(j.doc, "notes")},
              {"full", j.doc.at("full")},
              {"databaseIncluded", j.doc.at("databaseIncluded")},
              {"keepForever", j.doc.at("keepForever")},
              {"initiatedBy", "USER"},
              {"local", false},
              {"localCopy", false}};
    if (st == kSucceeded) b["backupCompleteDate"] = GmtDate(j.timeline.back().atMs);
    return b;
}

void JavaMySqlService::backups(ApiRequest& req, ApiResponse& res, Resource& s) {
    JArray done, running, failed;
    for (Resource* j : jobs(type_, JStr(s.doc, "serviceName"), req.nowMs)) {
        if (JStr(j->doc, "_op") != "backup") continue;
        const std::string id = JStr(j->doc, "backupId"), st = stateOf(*j, req.nowMs);
        if (st == kSucceeded && !completedBackup(s, id, req.nowMs)) continue;  // deleted since
        (st == kSucceeded ? done : st == kFailed ? failed : running).push_back(BackupItem(store_, *j, req.nowMs));
    }
    if (java()) {
        for (auto& r : running) done.push_back(r);
        return res.json(200, JObject{{"backups", std::move(done)}});
    }
    res.json(200, JObject{{"backupInProgress", std::move(running)},
                          {"backups", std::move(done)},
                          {"lastFailedBackup", std::move(failed)}});
}

void JavaMySqlService::oneBackup(ApiRequest& req, ApiResponse& res, Resource& s) {
    Resource* j = completedBackup(s, req.path("backupId"), req.nowMs);
    if (!j) return Error(res, 404, "No backup " + req.path("backupId") + " of service " + JStr(s.doc, "serviceName"));
    res.json(200, BackupItem(store_, *j, req.nowMs));
}

void JavaMySqlService::restore(ApiRequest& req, ApiResponse& res, Resource& s) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (stateOf(s, req.nowMs) != "READY") return Error(res, 409, "The service is " + stateOf(s, req.nowMs));
    const std::string backupId = JStr(body, "backupId"), restoreType = JStr(body, "restoreType");
    const bool pointInTime = !java() && (restoreType == "PIT" || restoreType == "pit");
    if (pointInTime ? JStr(body, "restoreId").empty() : !completedBackup(s, backupId, req.nowMs))
        return Error(res, 400,
                     pointInTime ? "A point-in-time restore needs restoreId (MM/DD/YYYY HH:MM:SS)"
                                 : "No completed backup " + backupId + " of service " + JStr(s.doc, "serviceName"));
    store_.schedule(s, req.nowMs, {{"CONFIGURING", 0}, {"READY", P()}});
    JObject details{{"backupId", backupId}, {"notes", JStr(body, "notes")}};
    if (java()) {
        for (const char* k : {"forcScaleIn", "pauseOTD", "resetBinaries", "restoreConfig"}) details[k] = Flag(body, k);
    } else {
        details["restoreId"] = JStr(body, "restoreId");
        details["restoreType"] = pointInTime ? "pit" : "backup";
    }
    startJob(req, res, s, "restore", std::move(details), FailRequested(body));
}

void JavaMySqlService::restores(ApiRequest& req, ApiResponse& res, Resource& s) {
    JArray history, running;
    for (Resource* j : jobs(type_, JStr(s.doc, "serviceName"), req.nowMs)) {
        if (JStr(j->doc, "_op") != "restore" || (req.pathParams.count("jobId") && j->id != req.path("jobId"))) continue;
        const std::string st = stateOf(*j, req.nowMs);
        JObject r{{"jobId", j->id},
                  {"backupId", JStr(j->doc, "backupId")},
                  {"notes", JStr(j->doc, "notes")},
                  {"recoveryStartDate", GmtDate(j->createdMs)},
                  {"status", st == kSucceeded ? "Completed"
                             : st == kFailed  ? "Failed"
                                              : "Restore In Progress"}};
        if (st == kSucceeded) r["recoveryCompleteDate"] = GmtDate(j->timeline.back().atMs);
        if (req.pathParams.count("jobId")) return res.json(200, r);
        (st == kRunning ? running : history).push_back(std::move(r));
    }
    if (req.pathParams.count("jobId")) return Error(res, 404, "No restore job " + req.path("jobId"));
    res.json(200, JObject{{"restoreHistory", std::move(history)}, {"restoreInProgress", std::move(running)}});
}

void JavaMySqlService::deleteBackup(ApiRequest& req, ApiResponse& res, Resource& s) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string backupId = JStr(body, "backupId");
    if (!completedBackup(s, backupId, req.nowMs))
        return Error(res, 404, "No completed backup " + backupId + " of service " + JStr(s.doc, "serviceName"));
    startJob(req, res, s, "delete", JObject{{"backupId", backupId}, {"notes", JStr(body, "notes")}}, false);
}

void JavaMySqlService::jobDocument(const ApiRequest& req, ApiResponse& res) const {
    Store& store = store_;
    Resource* j = store.get(req.path("id"), req.nowMs, "paas:job");
    const std::string family = j ? JStr(j->doc, "_family") : std::string();
    if (!j || (family != "jaas" && family != "MySQLCS")) return Error(res, 404, "No job " + req.path("id"));
    const std::string st = store.state(*j, req.nowMs), op = JStr(j->doc, "_op"), svc = JStr(j->doc, "_service");
    static const std::map<std::string, std::string> kTypes = {
        {"backup", "BACKUP"}, {"restore", "RESTORE"}, {"delete", "DELETE_BACKUP"}};
    JArray messages{JObject{{"activityDate", GmtDate(j->createdMs)}, {"message", "Activity Submitted"}},
                    JObject{{"activityDate", GmtDate(j->createdMs)}, {"message", "Activity Started"}}};
    if (st != kRunning)
        messages.push_back(JObject{{"activityDate", GmtDate(j->timeline.back().atMs)},
                                   {"message", st == kFailed ? "Activity Failed" : "Activity Ended"}});
    JObject doc{{"activityLogId", std::stoll(j->id)},
                {"jobId", j->id},
                {"serviceName", svc},
                {"serviceType", family},
                {"identityDomain", req.path("dom")},
                {"initiatedBy", "USER"},
                {"operationType", kTypes.at(op)},
                {"summaryMessage", op + " of service " + svc},
                {"status", st},
                {"startDate", GmtDate(j->createdMs)},
                {"messages", std::move(messages)},
                {"statusDetails", st == kFailed ? "The " + op + " failed" : ""},
                {"backupId", JStr(j->doc, "backupId")},
                {"notes", JStr(j->doc, "notes")}};
    if (st != kRunning) doc["endDate"] = GmtDate(j->timeline.back().atMs);
    if (op == "backup") {
        doc["backupStartDate"] = GmtDate(j->createdMs);
        doc["full"] = j->doc.at("full");
        doc["databaseIncluded"] = j->doc.at("databaseIncluded");
        if (st == kSucceeded) doc["backupCompleteDate"] = GmtDate(j->timeline.back().atMs);
    } else if (op == "restore") {
        doc["recoveryStartDate"] = GmtDate(j->createdMs);
        if (st == kSucceeded) doc["recoveryCompleteDate"] = GmtDate(j->timeline.back().atMs);
    }
    res.json(200, doc);
}

}  // namespace ocwemu
