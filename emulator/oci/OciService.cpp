#include "oci/OciService.h"

#include "oci/OciErrors.h"
#include "common/Ids.h"
#include "common/RenderCache.h"
#include "oci/Paging.h"
#include "common/TimeUtil.h"

#include <algorithm>

namespace ocwemu {

// Depends on nothing but the members, the kind and the state: RenderedJson
// relies on that to know when its remembered text is still right.
static JObject RenderIn(const Resource& r, const std::string& state) {
    JObject out;
    out.reserve(r.doc.size() + 4);
    for (const auto& kv : r.doc)
        if (kv.key().empty() || kv.key()[0] != '_') out.emplace(kv.key(), kv.value());
    if (r.kind == "bucket" || r.kind == "object") return out;  // object storage has no lifecycle member
    out["lifecycleState"] = state;
    if (r.kind == "volumeattachment") {
        // The iSCSI target is known once the attachment is complete.
        const bool attached = state == "ATTACHED" || state == "DETACHING";
        if (attached && JStr(r.doc, "attachmentType") == "iscsi") {
            out["ipv4"] = JStr(r.doc, "_ipv4");
            out["iqn"] = JStr(r.doc, "_iqn");
            out["port"] = 3260;
        }
    } else if (r.kind == "volume" || r.kind == "bootvolume") {
        out["isHydrated"] = state == "AVAILABLE";
    } else if (r.kind == "vnicattachment") {
        if (state == "ATTACHING") out["vnicId"] = nullptr;
    }
    return out;
}

JObject RenderResource(const Store& store, const Resource& r, std::int64_t nowMs) {
    return RenderIn(r, store.state(r, nowMs));
}

const std::string& RenderedJson(const Store& store, const Resource& r, std::int64_t nowMs) {
    static const RenderFn kRender = [](const Resource& res, const std::string& state) {
        return ToJson(RenderIn(res, state));
    };
    return CachedRender(store, r, nowMs, std::string(), kRender);
}

Resource OciService::newResource(const std::string& kind, const std::string& ocidType,
                                 const std::string& compartmentId, const std::string& region,
                                 std::int64_t nowMs) const {
    Resource r;
    r.kind = kind;
    r.region = region;
    r.compartmentId = compartmentId;
    r.id = MakeOcid(ocidType, region.empty() ? std::string() : world_.ocidRegion(region));
    r.createdMs = nowMs;
    r.doc.set("id", r.id);
    r.doc.set("compartmentId", compartmentId);
    r.doc.set("timeCreated", Rfc3339(nowMs));
    return r;
}

Resource& OciService::addResource(Resource r, std::int64_t nowMs,
                                  const std::vector<std::pair<std::string, std::int64_t>>& steps) {
    store_.schedule(r, nowMs, steps);
    return store_.add(std::move(r));
}

Resource* OciService::find(const ApiRequest& req, const std::string& id, const std::string& kind) const {
    Resource* r = store_.get(id, req.nowMs, kind);
    if (r && !r->region.empty() && !req.region.empty() && r->region != req.region) return nullptr;
    return r;
}

Handler OciService::withResource(const char* idParam, const char* kind, ResourceHandler then) const {
    return FindThen(
        [this, idParam, kind](const ApiRequest& req, ApiResponse& res) {
            Resource* r = find(req, req.path(idParam), kind);
            if (!r) err::NotAuthorizedOrNotFound(res);
            return r;
        },
        std::move(then));
}

Handler OciService::getOne(const char* idParam, const char* kind) const {
    return withResource(idParam, kind,
                        [this](ApiRequest& req, ApiResponse& res, Resource& r) { respondOne(res, r, req.nowMs); });
}

Handler OciService::listOf(ListRule rule, Compartment compartment, std::vector<const char*> required) const {
    return ListThen(
        [this, compartment, required](const ApiRequest& req, ApiResponse& res, const std::string& kind,
                                      std::vector<Resource*>& items) {
            std::string c;
            for (const char* name : required)
                if (!requireParam(req, res, name, c)) return false;
            const bool ok = compartment == Compartment::Required ? requireCompartment(req, res, c)
                                                                 : optionalCompartment(req, res, c);
            if (ok) items = listIn(req, kind, c);
            return ok;
        },
        std::move(rule),
        [this](const ApiRequest& req, ApiResponse& res, std::vector<Resource*> items) {
            respondList(req, res, std::move(items));
        });
}

void OciService::respondOne(ApiResponse& res, const Resource& r, std::int64_t nowMs, int status) const {
    res.jsonText(status, RenderedJson(store_, r, nowMs));
    res.setHeader("etag", std::to_string(r.seq) + "-" + std::to_string(r.timeline.front().atMs));
}

static std::string SortKey(const Resource& r, const std::string& sortBy) {
    if (sortBy == "DISPLAYNAME") return JStr(r.doc, "displayName");
    if (sortBy == "NAME") return JStr(r.doc, "name");
    if (sortBy == "DBNAME") return JStr(r.doc, "dbName");
    return {};
}

void OciService::respondList(const ApiRequest& req, ApiResponse& res, std::vector<Resource*> items) const {
    PageWindow w;
    if (!ReadPageWindow(req, world_.pageSize, world_.maxPageSize, w, res)) return;
    if (req.hasParam("lifecycleState")) {
        const std::string want = req.param("lifecycleState");
        items.erase(std::remove_if(items.begin(), items.end(),
                                   [&](Resource* r) { return store_.state(*r, req.nowMs) != want; }),
                    items.end());
    }
    const std::string sortBy = req.param("sortBy");
    std::string sortOrder = req.param("sortOrder");
    if (!sortBy.empty()) {
        if (sortBy != "TIMECREATED" && sortBy != "DISPLAYNAME" && sortBy != "NAME" && sortBy != "DBNAME") {
            err::InvalidParameter(res, "Invalid sortBy: " + sortBy);
            return;
        }
        if (sortOrder.empty()) sortOrder = sortBy == "TIMECREATED" ? "DESC" : "ASC";
        std::stable_sort(items.begin(), items.end(), [&](Resource* a, Resource* b) {
            if (sortBy == "TIMECREATED") return a->createdMs != b->createdMs ? a->createdMs < b->createdMs : a->seq < b->seq;
            return SortKey(*a, sortBy) < SortKey(*b, sortBy);
        });
    }
    if (!sortOrder.empty() && sortOrder != "ASC" && sortOrder != "DESC") {
        err::InvalidParameter(res, "Invalid sortOrder: " + sortOrder);
        return;
    }
    if (sortOrder == "DESC") std::reverse(items.begin(), items.end());
    // The same bytes as serialising the array of rendered documents, put
    // together from each resource's remembered text.
    const size_t end = std::min(items.size(), w.offset + w.limit);
    std::vector<const std::string*> texts;
    size_t bytes = 2;
    for (size_t i = w.offset; i < end; ++i) {
        texts.push_back(&RenderedJson(store_, *items[i], req.nowMs));
        bytes += texts.back()->size() + 1;
    }
    std::string body;
    body.reserve(bytes);
    body += '[';
    for (size_t i = 0; i < texts.size(); ++i) {
        if (i) body += ',';
        body += *texts[i];
    }
    body += ']';
    res.jsonText(200, std::move(body));
    SetNextPage(res, w, items.size());
}

bool OciService::parseBody(const ApiRequest& req, ApiResponse& res, JObject& body) {
    std::string error;
    if (ParseJsonObject(req.body, body, error)) return true;
    err::InvalidParameter(res, error);
    return false;
}

bool OciService::requireParam(const ApiRequest& req, ApiResponse& res, const char* name, std::string& out) {
    out = req.param(name);
    if (!out.empty()) return true;
    err::MissingParameter(res, name);
    return false;
}

void OciService::setWorkRequest(ApiResponse& res, const std::string& region) const {
    res.setHeader("opc-work-request-id", MakeOcid("coreservicesworkrequest", world_.ocidRegion(region)));
}

std::vector<Resource*> OciService::listIn(const ApiRequest& req, const std::string& kind,
                                          const std::string& compartmentId) const {
    std::vector<Resource*> items = store_.list(kind, compartmentId, req.nowMs);
    items.erase(std::remove_if(items.begin(), items.end(),
                               [&](Resource* r) { return !r->region.empty() && r->region != req.region; }),
                items.end());
    return items;
}

bool OciService::compartmentExists(const std::string& id, std::int64_t nowMs) const {
    if (id.empty()) return false;
    if (id == world_.tenancyId) return true;
    Resource* c = store_.get(id, nowMs, "compartment");
    if (!c) return false;
    const std::string s = store_.state(*c, nowMs);
    return s != "DELETED" && s != "DELETING";
}

bool OciService::requireCompartment(const ApiRequest& req, ApiResponse& res, std::string& out) const {
    if (!requireParam(req, res, "compartmentId", out)) return false;
    if (compartmentExists(out, req.nowMs)) return true;
    err::NotAuthorizedOrNotFound(res);
    return false;
}

bool OciService::optionalCompartment(const ApiRequest& req, ApiResponse& res, std::string& out) const {
    out = req.param("compartmentId");
    return out.empty() || requireCompartment(req, res, out);
}

}  // namespace ocwemu
