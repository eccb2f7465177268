#include "classic/CatalogService.h"

#include "classic/ClassicJson.h"
#include "common/Ids.h"

namespace ocwemu {

using namespace classic;

namespace {

// What a client may set on an object of the kind, with the value a missing member gets.
struct Member {
    const char* key;
    JValue fallback;
};

struct CatalogKind {
    const ClassicKind* kind;
    std::vector<std::string> filters;
    std::vector<Member> members;
    bool putAllowed;
    bool autoName;  // a missing name becomes "<user container>/<uuid>"
};

const std::vector<CatalogKind>& Kinds() {
    static const std::vector<CatalogKind> kKinds = {
        {&kMachineImage,
         {"name"},
         {{"account", JValue()},
          {"attributes", JObject{}},
          {"audited", nullptr},
          {"description", ""},
          {"error_reason", ""},
          {"file", ""},
          {"hypervisor", JObject{{"mode", "hvm"}}},
          {"image_format", "raw"},
          {"no_upload", true},
          {"platform", "linux"},
          {"sizes", JObject{{"total", 0}}}},
         false,
         false},
        {&kSshKey, {"name"}, {{"key", ""}, {"enabled", true}}, true, false},
        {&kSecList,
         {"name"},
         {{"description", ""}, {"policy", "deny"}, {"outbound_cidr_policy", "permit"}},
         true,
         false},
        {&kIpNetwork,
         {"name", "tags"},
         {{"ipAddressPrefix", ""},
          {"ipNetworkExchange", nullptr},
          {"description", ""},
          {"publicNaptEnabledFlag", false},
          {"tags", JArray{}}},
         true,
         false},
        {&kIpReservation,
         {"permanent", "used", "tags"},
         {{"parentpool", "/oracle/public/ippool"},
          {"permanent", true},
          {"tags", JArray{}},
          {"used", false},
          {"quota", nullptr}},
         true,
         true},
        {&kIpAssociation,
         {"parentpool", "reservation", "vcable"},
         {{"vcable", ""}, {"parentpool", "ippool:/oracle/public/ippool"}, {"reservation", ""}},
         false,
         true},
    };
    return kKinds;
}

const CatalogKind* Find(const ClassicKind& k) {
    for (const auto& c : Kinds())
        if (c.kind == &k) return &c;
    return nullptr;
}

std::string PublicIp() {
    return "129.150." + std::to_string(std::rand() % 250) + "." + std::to_string(std::rand() % 250 + 2);
}

}  // namespace

Resource& CatalogService::make(const ClassicKind& k, const std::string& name, const JObject& body, std::int64_t nowMs) {
    JObject doc;
    const CatalogKind* c = Find(k);
    for (const Member& m : c ? c->members : std::vector<Member>{}) {
        const JValue* given = body.if_contains(m.key);
        if (given && !given->is_null())
            doc[m.key] = *given;
        else if (!m.fallback.is_null() || std::string(m.key) != "account")
            doc[m.key] = m.fallback;
    }
    for (const auto& kv : body)
        if (!doc.contains(kv.key()) && kv.key() != "name") doc[kv.key()] = kv.value();
    if (&k == &kIpReservation || &k == &kIpAssociation) doc["ip"] = PublicIp();
    if (&k == &kIpAssociation && JStr(doc, "reservation").empty()) {
        const std::string pool = JStr(doc, "parentpool");
        if (pool.rfind("ipreservation:", 0) == 0) doc["reservation"] = pool.substr(14);
    }
    const bool stateful = *k.stateMember != '\0';
    return addObject(k, name, std::move(doc), nowMs, stateful ? Timeline{{"available", 0}} : Timeline{});
}

void CatalogService::registerRoutes(Router& r) {
    addGetRoutes(r, kShape, {"name"});
    for (const CatalogKind& c : Kinds()) {
        const ClassicKind* k = c.kind;
        const std::string base = "/" + std::string(k->base);
        addGetRoutes(r, *k, c.filters);
        const bool autoName = c.autoName;
        on(r, "POST", base, [this, k, autoName](ApiRequest& req, ApiResponse& res) {
            JObject body;
            if (!parseBody(req, res, body)) return;
            std::string name = JStr(body, "name");
            if (name.empty() && autoName) name = account_.userContainer() + "/" + RandomUuid();
            if (!acceptNewName(res, name) || !requireAbsent(res, *k, name, req.nowMs)) return;
            if (k == &kIpAssociation && JStr(body, "vcable").empty())
                return ClassicMessage(res, 400, "An IP association needs the vcable of an instance");
            respondObject(req, res, make(*k, name, body, req.nowMs), 201);
        });
        if (c.putAllowed)
            on(r, "PUT", base + "/{*name}", withObject(*k, [this](ApiRequest& req, ApiResponse& res, Resource& o) {
                   JObject body;
                   if (!parseBody(req, res, body)) return;
                   if (JHas(body, "name") && JStr(body, "name") != JStr(o.doc, "name"))
                       return ClassicMessage(res, 400, "The name in the body differs from " + JStr(o.doc, "name"));
                   JObject& doc = o.doc.edit();
                   for (const auto& kv : body)
                       if (kv.key() != "name" && kv.key() != "uri") doc[kv.key()] = kv.value();
                   respondObject(req, res, o);
               }));
        on(r, "DELETE", base + "/{*name}", withObject(*k, [this](ApiRequest& req, ApiResponse& res, Resource& o) {
               store_.erase(o.id);
               res.noContent(204);
               (void)req;
           }));
    }
}

}  // namespace ocwemu
