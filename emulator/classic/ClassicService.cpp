#include "classic/ClassicService.h"

#include "classic/ClassicJson.h"
#include "common/RenderCache.h"
#include "common/TimeUtil.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace ocwemu {

namespace classic {
const ClassicKind kInstance{"instance", "state", "Instance"};
const ClassicKind kVolume{"storage/volume", "status", "Storage volume"};
const ClassicKind kSnapshot{"storage/snapshot", "status", "Storage snapshot"};
const ClassicKind kAttachment{"storage/attachment", "state", "Storage attachment"};
const ClassicKind kReboot{"rebootinstancerequest", "state", "Reboot instance request"};
const ClassicKind kOrchestration{"platform/v1/orchestration", "status", "Orchestration"};
const ClassicKind kMachineImage{"machineimage", "state", "Machine image"};
const ClassicKind kShape{"shape", "", "Shape"};
const ClassicKind kSshKey{"sshkey", "", "SSH key"};
const ClassicKind kSecList{"seclist", "", "Security list"};
const ClassicKind kIpNetwork{"network/v1/ipnetwork", "", "IP network"};
const ClassicKind kIpAssociation{"ip/association", "", "IP association"};
const ClassicKind kIpReservation{"ip/reservation", "", "IP reservation"};

const ClassicKind* KindOf(const Resource& r) {
    static const ClassicKind* const kAll[] = {&kInstance,      &kVolume,        &kSnapshot,     &kAttachment, &kReboot,
                                              &kOrchestration, &kMachineImage,  &kShape,        &kSshKey,     &kSecList,
                                              &kIpNetwork,     &kIpAssociation, &kIpReservation};
    for (const ClassicKind* k : kAll)
        if (r.kind.size() == 8 + std::char_traits<char>::length(k->base) &&
            r.kind.compare(8, std::string::npos, k->base) == 0)
            return k;
    return nullptr;
}
}  // namespace classic

using namespace classic;

std::string ClassicUri(const std::string& host, const std::string& base, const std::string& name) {
    std::string out = "https://" + host + "/" + base;
    out.reserve(out.size() + name.size() + 8);
    if (name.empty() || name[0] != '/') out += '/';
    for (char c : name) {
        if (c == '@')
            out += "%40";
        else
            out += c;
    }
    return out;
}

static bool Below(const std::string& nameIn, const std::string& prefix) {
    const std::string name = nameIn.empty() || nameIn[0] == '/' ? nameIn : "/" + nameIn;
    if (prefix.empty()) return true;
    std::string p = prefix;
    if (p.back() == '/') p.pop_back();
    return name == p || (name.size() > p.size() && name.compare(0, p.size(), p) == 0 && name[p.size()] == '/');
}

// Visible to the account: its identity domain's container and Oracle's public objects.
static bool Visible(const ClassicAccount& a, const std::string& name) {
    // Shapes ("/oc3" in a path) belong to no container.
    const bool containerless = name.find('/', 1) == std::string::npos;
    return name.empty() || containerless || Below(name, a.domainContainer()) || Below(name, "/oracle/public");
}

// --- objects -------------------------------------------------------------------

// Shapes are named without a container ("oc3"); every other name starts with "/".
static std::string PathPart(const std::string& name) { return !name.empty() && name[0] == '/' ? name : "/" + name; }

Resource* ClassicService::object(const ClassicKind& k, const std::string& name, std::int64_t nowMs) const {
    return store_.get("/" + std::string(k.base) + PathPart(name), nowMs, k.storeKind());
}

Resource& ClassicService::addObject(const ClassicKind& k, const std::string& name, JObject members, std::int64_t nowMs,
                                    const Timeline& steps) {
    const std::string id = "/" + std::string(k.base) + PathPart(name);
    if (!store_.get(id, nowMs)) store_.erase(id);  // a gone object's name is free again
    Resource r;
    r.id = id;
    r.kind = k.storeKind();
    // Objects of a user container are listed together; Oracle-owned ones by their root.
    const size_t third = name.find('/', name.find('/', 1) + 1);
    r.compartmentId = third == std::string::npos ? name : name.substr(0, third);
    r.createdMs = nowMs;
    JObject& doc = r.doc.edit();
    doc = std::move(members);
    doc["name"] = name;
    if (!doc.contains("account") && name.rfind(account_.domainContainer() + "/", 0) == 0)
        doc["account"] = account_.domainContainer() + "/default";
    store_.schedule(r, nowMs, steps.empty() ? Timeline{{"", 0}} : steps);
    return store_.add(std::move(r));
}

void ClassicService::removeObject(Resource& r, std::int64_t nowMs, const std::string& transitional) {
    Timeline steps{{transitional.empty() ? stateOf(r, nowMs) : transitional, 0}};
    store_.schedule(r, nowMs, steps, std::max<std::int64_t>(1, P()));
}

std::vector<Resource*> ClassicService::objectsUnder(const ClassicKind& k, const std::string& prefix,
                                                    std::int64_t nowMs) const {
    std::vector<Resource*> out;
    for (Resource* r : store_.list(k.storeKind(), "", nowMs))
        if (Below(JStr(r->doc, "name"), prefix)) out.push_back(r);
    return out;
}

// --- rendering -----------------------------------------------------------------

static const char* StatusDetail(const ClassicKind& k, const std::string& state) {
    if (&k == &kVolume && state == "Initializing") return "The storage volume is currently being initialized.";
    if (&k == &kVolume && state == "Deleting") return "The storage volume is being deleted.";
    if (&k == &kSnapshot && state == "initializing") return "The storage snapshot is currently being initialized.";
    return "";
}

// The members a GET shows: the stored ones (not those starting with '_'),
// the state, the URI, and what depends on the state.
static JObject RenderMembers(const ClassicKind& k, const Resource& r, const std::string& state,
                             const std::string& host) {
    JObject out;
    out.reserve(r.doc.size() + 3);
    for (const auto& kv : r.doc)
        if (kv.key().empty() || kv.key()[0] != '_') out.emplace(kv.key(), kv.value());
    if (*k.stateMember) out[k.stateMember] = state;
    if (&k == &kVolume || &k == &kSnapshot) out["status_detail"] = StatusDetail(k, state);
    if (&k == &kInstance && state == "queued") {
        out["ip"] = "0.0.0.0";
        out["vcable_id"] = nullptr;
    }
    out["uri"] = ClassicUri(host, k.base, JStr(r.doc, "name"));
    return out;
}

std::string ClassicService::render(const ApiRequest& req, const Resource& r) const {
    const ClassicKind& k = *KindOf(r);
    if (&k != &kOrchestration) {
        const std::string& host = req.host;
        return CachedRender(store_, r, req.nowMs, host, [&k, &host](const Resource& res, const std::string& state) {
            return SpacedJson(RenderMembers(k, res, state, host));
        });
    }
    // An orchestration shows the instances its objects started, as they are now.
    JObject out = RenderMembers(k, r, stateOf(r, req.nowMs), req.host);
    if (JArray* objects = out.if_contains("objects") ? out["objects"].if_array() : nullptr) {
        for (JValue& v : *objects) {
            JObject* o = v.if_object();
            if (!o || !o->contains("_instance")) continue;
            JArray started;
            if (Resource* inst = object(kInstance, JStr(*o, "_instance"), req.nowMs))
                started.push_back(RenderMembers(kInstance, *inst, stateOf(*inst, req.nowMs), req.host));
            o->erase("_instance");
            (*o)["instances"] = std::move(started);
        }
    }
    return SpacedJson(out);
}

void ClassicService::respondObject(const ApiRequest& req, ApiResponse& res, const Resource& r, int status) const {
    res.status = status;
    res.body = render(req, r);
    res.contentType = kComputeJson;
}

void ClassicService::respondList(const ApiRequest& req, ApiResponse& res, const std::vector<Resource*>& items) const {
    std::string body = "{\"result\": [";
    for (size_t i = 0; i < items.size(); ++i) {
        if (i) body += ", ";
        body += render(req, *items[i]);
    }
    body += "]}";
    res.status = 200;
    res.body = std::move(body);
    res.contentType = kComputeJson;
}

// --- the three kinds of GET --------------------------------------------------------

void ClassicService::on(Router& r, const std::string& method, const std::string& pattern, Handler h) {
    r.add(
        method, pattern,
        [h = std::move(h)](ApiRequest& req, ApiResponse& res) {
            for (auto& q : req.query)
                if (!q.second.empty() && q.second.back() == '/') q.second.pop_back();
            h(req, res);
        },
        RouteAuth::ClassicSession);
}

void ClassicService::addGetRoutes(Router& r, const ClassicKind& k, std::vector<std::string> filters,
                                  std::function<void(const ApiRequest&, std::vector<Resource*>&)> refine) {
    ListRule rule{k.storeKind(), {}, {}};
    std::vector<std::string> special;
    for (auto& f : filters) (f == k.stateMember || f == "tags" ? special : rule.filters).push_back(f);
    rule.refine = [this, special, refine](const ApiRequest& req, std::vector<Resource*>& items) {
        for (const std::string& f : special) {
            if (!req.hasParam(f)) continue;
            const std::string want = req.param(f);
            items.erase(std::remove_if(items.begin(), items.end(),
                                       [&](Resource* o) {
                                           if (f != "tags") return stateOf(*o, req.nowMs) != want;
                                           const JArray* tags = JArr(o->doc, "tags");
                                           return !tags ||
                                                  std::find(tags->begin(), tags->end(), JValue(want)) == tags->end();
                                       }),
                        items.end());
        }
        if (refine) refine(req, items);
    };
    const ClassicKind* kind = &k;
    // A detail list: the objects at or below the name in the path.
    Handler detail = ListThen(
        [this, kind](const ApiRequest& req, ApiResponse&, const std::string&, std::vector<Resource*>& items) {
            const std::string name = req.tail.empty() ? std::string() : NameInPath(req);
            if (Visible(account_, name)) items = objectsUnder(*kind, name, req.nowMs);
            return true;
        },
        std::move(rule),
        [this](const ApiRequest& req, ApiResponse& res, std::vector<Resource*> items) {
            respondList(req, res, items);
        });
    Handler single =
        withObject(k, [this](ApiRequest& req, ApiResponse& res, Resource& o) { respondObject(req, res, o); });
    Handler h = [this, kind, detail, single](ApiRequest& req, ApiResponse& res) {
        if (req.header("accept").find("directory+json") != std::string::npos)
            return directory(*kind, req, res, req.tail.empty() ? std::string() : NameInPath(req));
        // A name without the trailing "/" is one object; the root and "<prefix>/" list details.
        (req.tail.empty() || req.rawPath.back() == '/' ? detail : single)(req, res);
    };
    on(r, "GET", "/" + std::string(k.base), h);
    on(r, "GET", "/" + std::string(k.base) + "/{*name}", h);
}

void ClassicService::directory(const ClassicKind& k, const ApiRequest& req, ApiResponse& res,
                               const std::string& name) const {
    std::set<std::string> names;
    if (name.empty()) {
        // The root lists the containers the caller can see.
        names.insert(account_.domainContainer() + "/");
        for (Resource* o : store_.list(k.storeKind(), "", req.nowMs)) {
            const std::string n = JStr(o->doc, "name");
            if (Below(n, "/oracle/public")) names.insert("/oracle/");
        }
    } else if (Visible(account_, name)) {
        std::string prefix = name;
        if (prefix.back() != '/') prefix += '/';
        if (prefix == account_.domainContainer() + "/") names.insert(account_.userContainer() + "/");
        for (Resource* o : store_.list(k.storeKind(), "", req.nowMs)) {
            std::string n = JStr(o->doc, "name");
            if (n.empty() || n[0] != '/') n = "/" + n;
            if (n.size() <= prefix.size() || n.compare(0, prefix.size(), prefix) != 0) continue;
            const size_t slash = n.find('/', prefix.size());
            names.insert(slash == std::string::npos ? n : n.substr(0, slash + 1));
        }
    }
    JArray result;
    for (const auto& n : names) result.push_back(JValue(n));
    res.status = 200;
    res.body = SpacedJson(JObject{{"result", std::move(result)}});
    res.contentType = kComputeDirectoryJson;
}

Handler ClassicService::withObject(const ClassicKind& k, ResourceHandler then) const {
    const ClassicKind* kind = &k;
    return FindThen(
        [this, kind](const ApiRequest& req, ApiResponse& res) {
            const std::string name = NameInPath(req);
            Resource* o = Visible(account_, name) ? object(*kind, name, req.nowMs) : nullptr;
            if (!o) notFound(res, *kind, name);
            return o;
        },
        std::move(then));
}

// --- checks --------------------------------------------------------------------

bool ClassicService::parseBody(const ApiRequest& req, ApiResponse& res, JObject& body) {
    std::string error;
    if (ParseJsonObject(req.body, body, error)) return true;
    ClassicMessage(res, 400, "The request body is not a JSON object: " + error);
    return false;
}

bool ClassicService::acceptNewName(ApiResponse& res, const std::string& name) const {
    const std::string own = account_.userContainer() + "/";
    if (name.size() < 2 || name[0] != '/' || std::count(name.begin(), name.end(), '/') < 3) {
        ClassicMessage(res, 400, "Invalid name " + name + ": a name must be a full name such as " + own + "<name>");
        return false;
    }
    if (name.compare(0, own.size(), own) != 0) {
        ClassicMessage(res, 403,
                       "Forbidden: " + account_.userContainer() + " may not create objects in " +
                           name.substr(0, name.find('/', name.find('/', 1) + 1) + 1));
        return false;
    }
    for (size_t i = own.size(); i < name.size(); ++i) {
        const char c = name[i];
        if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == '.' || c == '/') ||
            (c == '/' && (i + 1 == name.size() || name[i + 1] == '/'))) {
            ClassicMessage(
                res, 400, "Invalid name " + name + ": object names may contain only letters, digits, '-', '_' and '.'");
            return false;
        }
    }
    return true;
}

bool ClassicService::requireAbsent(ApiResponse& res, const ClassicKind& k, const std::string& name,
                                   std::int64_t nowMs) const {
    if (!object(k, name, nowMs)) return true;
    ClassicMessage(res, 409, "Conflict: " + std::string(k.display) + " " + name + " already exists");
    return false;
}

std::string ClassicService::Timestamp(std::int64_t epochMs) {
    return FormatUtc(epochMs, "%Y-%m-%dT%H:%M:%SZ");
}

void ClassicService::notFound(ApiResponse& res, const ClassicKind& k, const std::string& name) {
    ClassicMessage(res, 404, std::string(k.display) + " " + name + " does not exist");
}

}  // namespace ocwemu
