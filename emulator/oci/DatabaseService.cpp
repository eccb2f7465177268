#include "oci/DatabaseService.h"

#include "oci/OciErrors.h"
#include "common/Ids.h"
#include "common/TimeUtil.h"

#include <algorithm>
#include <cctype>

namespace ocwemu {

// "systemId" names the database's system; "dbName" matches without regard to case.
static void KeepDatabasesOfSystemAndName(const ApiRequest& req, std::vector<Resource*>& items) {
    if (req.hasParam("systemId")) {
        const std::string sys = req.param("systemId");
        items.erase(
            std::remove_if(items.begin(), items.end(), [&](Resource* r) { return JStr(r->doc, "dbSystemId") != sys; }),
            items.end());
    }
    if (req.hasParam("dbName")) {
        auto lower = [](std::string s) {
            for (auto& ch : s) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
            return s;
        };
        const std::string want = lower(req.param("dbName"));
        items.erase(std::remove_if(items.begin(), items.end(),
                                   [&](Resource* r) { return lower(JStr(r->doc, "dbName")) != want; }),
                    items.end());
    }
}

void DatabaseService::registerRoutes(Router& r) {
    auto bind = [this](void (DatabaseService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    // Only the versioned paths: the service answers "/dbNodes" and
    // "/dbSystems/{id}" without "/20160918" as unknown paths.
    const std::string v = "/20160918";
    r.add("GET", v + "/dbSystems", listOf({"dbsystem", {"availabilityDomain", "displayName"}}));
    r.add("POST", v + "/dbSystems", bind(&DatabaseService::launchDbSystem));
    r.add("GET", v + "/dbSystems/{dbSystemId}", getOne("dbSystemId", "dbsystem"));
    r.add("DELETE", v + "/dbSystems/{dbSystemId}",
          withResource("dbSystemId", "dbsystem", bound(&DatabaseService::terminateDbSystem)));
    r.add("GET", v + "/dbHomes", listOf({"dbhome", {"dbSystemId", "displayName", "dbVersion"}}));
    r.add("GET", v + "/dbHomes/{dbHomeId}", getOne("dbHomeId", "dbhome"));
    r.add("GET", v + "/databases", listOf({"database", {"dbHomeId"}, KeepDatabasesOfSystemAndName}));
    r.add("GET", v + "/databases/{databaseId}", getOne("databaseId", "database"));
    r.add("POST", v + "/databases/{databaseId}/actions/restore",
          withResource("databaseId", "database", bound(&DatabaseService::restoreDatabase)));
    r.add("GET", v + "/backups",
          [list = listOf({"dbbackup", {"databaseId", "type"}}, Compartment::Optional)](ApiRequest& q, ApiResponse& s) {
              if (q.param("databaseId").empty() && q.param("compartmentId").empty())
                  return err::MissingParameter(s, "databaseId or compartmentId");
              list(q, s);
          });
    r.add("POST", v + "/backups", bind(&DatabaseService::createBackup));
    r.add("GET", v + "/backups/{backupId}", getOne("backupId", "dbbackup"));
    r.add("DELETE", v + "/backups/{backupId}",
          withResource("backupId", "dbbackup", bound(&DatabaseService::deleteBackup)));
    r.add("GET", v + "/dbNodes", listOf({"dbnode", {"dbSystemId"}}));
    r.add("GET", v + "/dbNodes/{dbNodeId}", getOne("dbNodeId", "dbnode"));
    r.add("POST", v + "/dbNodes/{dbNodeId}", withResource("dbNodeId", "dbnode", bound(&DatabaseService::dbNodeAction)));
}

static bool ValidEdition(const std::string& e) {
    return e == "STANDARD_EDITION" || e == "ENTERPRISE_EDITION" || e == "ENTERPRISE_EDITION_HIGH_PERFORMANCE" ||
           e == "ENTERPRISE_EDITION_EXTREME_PERFORMANCE" || e == "ENTERPRISE_EDITION_DEVELOPER";
}

Resource* DatabaseService::launch(const std::string& region, std::int64_t nowMs, const JObject& body,
                                  ApiResponse& res, std::int64_t delayMs) {
    for (const char* k : {"compartmentId", "availabilityDomain", "subnetId", "shape", "hostname", "databaseEdition"})
        if (JStr(body, k).empty()) return err::MissingParameter(res, k), nullptr;
    const JArray* keys = JArr(body, "sshPublicKeys");
    if (!keys || keys->empty()) return err::MissingParameter(res, "sshPublicKeys"), nullptr;
    const JObject* home = JObj(body, "dbHome");
    if (!home) return err::MissingParameter(res, "dbHome"), nullptr;
    const JObject* db = JObj(*home, "database");
    if (!db) return err::MissingParameter(res, "dbHome.database"), nullptr;
    const std::string dbName = JStr(*db, "dbName");
    if (dbName.empty()) return err::MissingParameter(res, "dbHome.database.dbName"), nullptr;
    if (JStr(*db, "adminPassword").empty()) return err::MissingParameter(res, "dbHome.database.adminPassword"), nullptr;
    const std::string dbVersion = JStr(*home, "dbVersion");
    if (dbVersion.empty()) return err::MissingParameter(res, "dbHome.dbVersion"), nullptr;
    const std::string c = JStr(body, "compartmentId"), ad = JStr(body, "availabilityDomain");
    if (!compartmentExists(c, nowMs)) return err::RelatedNotFound(res, "compartment " + c), nullptr;
    if (!world_.knownAvailabilityDomain(region, ad))
        return err::InvalidParameter(res, "Invalid availabilityDomain: " + ad), nullptr;
    const std::string edition = JStr(body, "databaseEdition");
    if (!ValidEdition(edition)) return err::InvalidParameter(res, "Invalid databaseEdition: " + edition), nullptr;
    Resource* subnet = store_.get(JStr(body, "subnetId"), nowMs, "subnet");
    if (!subnet || subnet->region != region) return err::RelatedNotFound(res, "subnet " + JStr(body, "subnetId")), nullptr;

    const std::vector<std::pair<std::string, std::int64_t>> steps{{"PROVISIONING", 0}, {"AVAILABLE", delayMs}};
    std::string name = JStr(body, "displayName");
    if (name.empty()) name = "dbsystem" + std::to_string(nowMs % 100000000);
    const std::int64_t nodes = JInt(body, "nodeCount").value_or(1);
    Resource sys = newResource("dbsystem", "dbsystem", c, region, nowMs);
    sys.doc.set("displayName", name);
    sys.doc.set("availabilityDomain", ad);
    sys.doc.set("subnetId", subnet->id);
    sys.doc.set("shape", JStr(body, "shape"));
    sys.doc.set("sshPublicKeys", *keys);
    sys.doc.set("hostname", JStr(body, "hostname"));
    std::string domain = JStr(body, "domain");
    sys.doc.set("domain", domain.empty() ? JStr(subnet->doc, "subnetDomainName") : domain);
    sys.doc.set("databaseEdition", edition);
    sys.doc.set("cpuCoreCount", JInt(body, "cpuCoreCount").value_or(1));
    sys.doc.set("dataStorageSizeInGBs", JInt(body, "initialDataStorageSizeInGB").value_or(256));
    sys.doc.set("recoStorageSizeInGB", 256);
    sys.doc.set("dataStoragePercentage", 80);
    sys.doc.set("nodeCount", nodes);
    sys.doc.set("version", dbVersion);
    sys.doc.set("osVersion", "8.8");
    sys.doc.set("licenseModel", JHas(body, "licenseModel") ? JStr(body, "licenseModel") : "LICENSE_INCLUDED");
    sys.doc.set("diskRedundancy", JHas(body, "diskRedundancy") ? JStr(body, "diskRedundancy") : "HIGH");
    sys.doc.set("listenerPort", 1521);
    sys.doc.set("scanIpIds", JArray{});
    sys.doc.set("vipIds", JArray{});
    sys.doc.set("scanDnsName", nullptr);
    sys.doc.set("faultDomains", JArray{JValue("FAULT-DOMAIN-1")});
    sys.doc.set("lifecycleDetails", nullptr);
    sys.doc.set("timeZone", "UTC");
    sys.doc.set("dbSystemOptions", JObject{{"storageManagement", "LVM"}});
    sys.doc.set("freeformTags", JObj(body, "freeformTags") ? body.at("freeformTags") : JValue(JObject{}));
    sys.doc.set("definedTags", JObject{});
    Resource& s = addResource(std::move(sys), nowMs, steps);

    Resource h = newResource("dbhome", "dbhome", c, region, nowMs);
    h.doc.set("displayName", JHas(*home, "displayName") ? JStr(*home, "displayName") : "dbhome" + std::to_string(nowMs % 100000));
    h.doc.set("dbSystemId", s.id);
    h.doc.set("dbVersion", dbVersion);
    h.doc.set("dbHomeLocation", "/u01/app/oracle/product/" + dbVersion.substr(0, dbVersion.find('.')) + ".0.0.0/dbhome_1");
    h.doc.set("lastPatchHistoryEntryId", nullptr);
    h.doc.set("freeformTags", JObject{});
    h.doc.set("definedTags", JObject{});
    Resource& hm = addResource(std::move(h), nowMs, steps);

    Resource d = newResource("database", "database", c, region, nowMs);
    d.doc.set("dbName", dbName);
    d.doc.set("dbUniqueName", dbName + "_" + RandomAlnum(8));
    d.doc.set("dbHomeId", hm.id);
    d.doc.set("dbSystemId", s.id);
    d.doc.set("pdbName", JHas(*db, "pdbName") ? JValue(JStr(*db, "pdbName")) : JValue(nullptr));
    d.doc.set("characterSet", JHas(*db, "characterSet") ? JStr(*db, "characterSet") : "AL32UTF8");
    d.doc.set("ncharacterSet", JHas(*db, "ncharacterSet") ? JStr(*db, "ncharacterSet") : "AL16UTF16");
    d.doc.set("dbWorkload", JHas(*db, "dbWorkload") ? JStr(*db, "dbWorkload") : "OLTP");
    d.doc.set("isCdb", true);
    d.doc.set("lifecycleDetails", nullptr);
    d.doc.set("lastBackupTimestamp", nullptr);
    const JObject* cfg = JObj(*db, "dbBackupConfig");
    d.doc.set("dbBackupConfig", JObject{{"autoBackupEnabled", cfg ? JBool(*cfg, "autoBackupEnabled").value_or(false) : false}});
    const std::string host = JStr(body, "hostname") + "." + JStr(s.doc, "domain");
    d.doc.set("connectionStrings", JObject{{"cdbDefault", host + ":1521/" + JStr(d.doc, "dbUniqueName") + "." + JStr(s.doc, "domain")},
                                           {"cdbIpDefault", nullptr},
                                           {"allConnectionStrings", JObject{}}});
    d.doc.set("freeformTags", JObject{});
    d.doc.set("definedTags", JObject{});
    addResource(std::move(d), nowMs, steps);

    for (std::int64_t i = 0; i < nodes; ++i) {
        Resource n = newResource("dbnode", "dbnode", c, region, nowMs);
        n.doc.edit().erase("compartmentId");  // DbNode carries no compartment member
        n.doc.set("dbSystemId", s.id);
        n.doc.set("vnicId", MakeOcid("vnic", world_.ocidRegion(region)));
        n.doc.set("backupVnicId", nullptr);
        n.doc.set("hostname", JStr(body, "hostname") + (nodes > 1 ? std::to_string(i + 1) : ""));
        n.doc.set("faultDomain", "FAULT-DOMAIN-" + std::to_string(1 + i % 3));
        n.doc.set("softwareStorageSizeInGB", 200);
        n.doc.set("maintenanceType", nullptr);
        addResource(std::move(n), nowMs, steps);
    }
    return &s;
}

Resource& DatabaseService::seedDbSystem(const std::string& compartmentId, const std::string& ad,
                                        const Resource& subnet, const std::string& name, const std::string& dbName,
                                        std::int64_t nowMs) {
    JObject body{{"compartmentId", compartmentId},
                 {"availabilityDomain", ad},
                 {"subnetId", subnet.id},
                 {"shape", "VM.Standard2.2"},
                 {"sshPublicKeys", JArray{JValue("ssh-rsa AAAAB3NzaC1yc2EAAAADAQABAAABAQ emulator")}},
                 {"hostname", "dbhost"},
                 {"displayName", name},
                 {"databaseEdition", "ENTERPRISE_EDITION"},
                 {"dbHome", JObject{{"dbVersion", "19.0.0.0"},
                                    {"database", JObject{{"dbName", dbName}, {"adminPassword", RandomAlnum(12) + "A1#"}}}}}};
    ApiResponse res;
    Resource* s = launch(subnet.region, nowMs, body, res, 0);
    if (!s) throw std::runtime_error("cannot seed DB system: " + res.body);
    return *s;
}

Resource& DatabaseService::makeBackup(const Resource& database, const std::string& name,
                                      const std::vector<std::pair<std::string, std::int64_t>>& steps,
                                      std::int64_t nowMs) {
    Resource* sys = store_.get(JStr(database.doc, "dbSystemId"), nowMs, "dbsystem");
    Resource b = newResource("dbbackup", "dbbackup", database.compartmentId, database.region, nowMs);
    b.doc.set("databaseId", database.id);
    b.doc.set("displayName", name);
    b.doc.set("availabilityDomain", sys ? JStr(sys->doc, "availabilityDomain") : std::string());
    b.doc.set("type", "FULL");
    b.doc.set("timeStarted", Rfc3339(nowMs));
    b.doc.set("timeEnded", Rfc3339(nowMs + steps.back().second));
    b.doc.set("databaseEdition", sys ? JStr(sys->doc, "databaseEdition") : std::string());
    b.doc.set("databaseSizeInGBs", 42.5);
    b.doc.set("shape", sys ? JStr(sys->doc, "shape") : std::string());
    b.doc.set("version", sys ? JStr(sys->doc, "version") : std::string());
    b.doc.set("backupDestinationType", "OBJECT_STORE");
    b.doc.set("lifecycleDetails", nullptr);
    b.doc.set("kmsKeyId", nullptr);
    b.doc.set("isUsingOracleManagedKeys", true);
    b.doc.edit().erase("timeCreated");  // Backup reports timeStarted/timeEnded instead
    return addResource(std::move(b), nowMs, steps);
}

Resource& DatabaseService::seedBackup(const Resource& database, const std::string& name, std::int64_t nowMs) {
    return makeBackup(database, name, {{"ACTIVE", 0}}, nowMs);
}

void DatabaseService::launchDbSystem(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    Resource* s = launch(req.region, req.nowMs, body, res, P());
    if (!s) return;
    respondOne(res, *s, req.nowMs);
    setWorkRequest(res, req.region);
}

void DatabaseService::terminateDbSystem(ApiRequest& req, ApiResponse& res, Resource& s) {
    const std::string st = stateOf(s, req.nowMs);
    if (st == "TERMINATED") return err::NotAuthorizedOrNotFound(res);
    if (st == "TERMINATING") return res.noContent(204);
    const std::vector<std::pair<std::string, std::int64_t>> steps{{"TERMINATING", 0}, {"TERMINATED", P()}};
    store_.schedule(s, req.nowMs, steps, world_.retentionMs);
    for (const char* kind : {"dbhome", "database", "dbnode"})
        for (Resource* r : listIn(req, kind, s.compartmentId))
            if (JStr(r->doc, "dbSystemId") == s.id) store_.schedule(*r, req.nowMs, steps, world_.retentionMs);
    res.noContent(204);
    setWorkRequest(res, req.region);
}

void DatabaseService::restoreDatabase(ApiRequest& req, ApiResponse& res, Resource& d) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const int given = (JBool(body, "latest").value_or(false) ? 1 : 0) + (JHas(body, "databaseSCN") ? 1 : 0) +
                      (JHas(body, "timestamp") ? 1 : 0);
    if (given != 1)
        return err::InvalidParameter(res, "Exactly one of latest, databaseSCN and timestamp must be given.");
    if (stateOf(d, req.nowMs) != "AVAILABLE") return err::IncorrectState(res, "The database is not AVAILABLE.");
    store_.schedule(d, req.nowMs, {{"UPDATING", 0}, {"AVAILABLE", P()}});
    respondOne(res, d, req.nowMs);
    setWorkRequest(res, req.region);
}

void DatabaseService::createBackup(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string dbId = JStr(body, "databaseId"), name = JStr(body, "displayName");
    if (dbId.empty()) return err::MissingParameter(res, "databaseId");
    if (name.empty()) return err::MissingParameter(res, "displayName");
    Resource* d = find(req, dbId, "database");
    if (!d) return err::NotAuthorizedOrNotFound(res);
    if (stateOf(*d, req.nowMs) != "AVAILABLE") return err::IncorrectState(res, "The database is not AVAILABLE.");
    store_.schedule(*d, req.nowMs, {{"BACKUP_IN_PROGRESS", 0}, {"AVAILABLE", P()}});
    d->doc.set("lastBackupTimestamp", Rfc3339(req.nowMs + P()));
    Resource& b = makeBackup(*d, name, {{"CREATING", 0}, {"ACTIVE", P()}}, req.nowMs);
    if (auto days = JInt(body, "retentionPeriodInDays")) b.doc.set("retentionPeriodInDays", *days);
    respondOne(res, b, req.nowMs);
    setWorkRequest(res, req.region);
}

void DatabaseService::deleteBackup(ApiRequest& req, ApiResponse& res, Resource& b) {
    const std::string s = stateOf(b, req.nowMs);
    if (s == "DELETED") return err::NotAuthorizedOrNotFound(res);
    if (s == "DELETING") return res.noContent(204);
    if (s != "ACTIVE" && s != "FAILED") return err::IncorrectState(res, "The backup is " + s + ".");
    store_.schedule(b, req.nowMs, {{"DELETING", 0}, {"DELETED", P()}}, world_.retentionMs);
    res.noContent(204);
    setWorkRequest(res, req.region);
}

void DatabaseService::dbNodeAction(ApiRequest& req, ApiResponse& res, Resource& n) {
    std::string action;
    if (!requireParam(req, res, "action", action)) return;
    std::transform(action.begin(), action.end(), action.begin(), [](unsigned char ch) { return std::toupper(ch); });
    const std::string s = stateOf(n, req.nowMs);
    if (action == "STOP") {
        if (s != "AVAILABLE") return err::IncorrectState(res, "The node is " + s + ".");
        store_.schedule(n, req.nowMs, {{"STOPPING", 0}, {"STOPPED", P()}});
    } else if (action == "START") {
        if (s != "STOPPED") return err::IncorrectState(res, "The node is " + s + ".");
        store_.schedule(n, req.nowMs, {{"STARTING", 0}, {"AVAILABLE", P()}});
    } else if (action == "RESET" || action == "SOFTRESET") {
        if (s != "AVAILABLE") return err::IncorrectState(res, "The node is " + s + ".");
        store_.schedule(n, req.nowMs, {{"STOPPING", 0}, {"STARTING", P() / 2}, {"AVAILABLE", P()}});
    } else {
        return err::InvalidParameter(res, "Invalid action: " + req.param("action"));
    }
    respondOne(res, n, req.nowMs);
    setWorkRequest(res, req.region);
}

}  // namespace ocwemu
