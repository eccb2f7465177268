#include "oci/SearchService.h"

#include "oci/OciErrors.h"
#include "oci/Paging.h"
#include "oci/SearchQuery.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace ocwemu {

// Store kinds and the resourceType names search reports for them.
static const std::map<std::string, std::string>& SearchableKinds() {
    static const std::map<std::string, std::string> kKinds = {
        {"instance", "Instance"},         {"volume", "Volume"},
        {"bootvolume", "BootVolume"},     {"volumebackup", "VolumeBackup"},
        {"bootvolumebackup", "BootVolumeBackup"}, {"image", "Image"},
        {"vcn", "Vcn"},                   {"subnet", "Subnet"},
        {"vnic", "Vnic"},                 {"compartment", "Compartment"},
        {"dbsystem", "DbSystem"},         {"database", "Database"},
        {"dbhome", "DbHome"},             {"bucket", "Bucket"},
        {"volumeattachment", "VolumeAttachment"}, {"vnicattachment", "VnicAttachment"}};
    return kKinds;
}

static std::string Lower(std::string s) {
    for (auto& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

void SearchService::registerRoutes(Router& r) {
    r.add("POST", "/20180409/resources", [this](ApiRequest& q, ApiResponse& s) { searchResources(q, s); });
    r.add("GET", "/20180409/resourceTypes", [this](ApiRequest& q, ApiResponse& s) { listResourceTypes(q, s); });
}

JObject SearchService::summary(const Resource& r, std::int64_t nowMs, bool allFields) const {
    const JObject rendered = RenderResource(store_, r, nowMs);
    std::string name = JStr(r.doc, "displayName");
    if (name.empty()) name = JStr(r.doc, "name");
    JObject s{{"resourceType", SearchableKinds().at(r.kind)},
              {"identifier", JStr(r.doc, "id")},
              {"compartmentId", JStr(r.doc, "compartmentId")},
              {"timeCreated", JStr(r.doc, "timeCreated")},
              {"displayName", name},
              {"availabilityDomain", JHas(r.doc, "availabilityDomain") ? r.doc.at("availabilityDomain") : JValue(nullptr)},
              {"lifecycleState", r.kind == "bucket" ? "ACTIVE" : JStr(rendered, "lifecycleState")},
              {"freeformTags", JObj(r.doc, "freeformTags") ? r.doc.at("freeformTags") : JValue(JObject{})},
              {"definedTags", JObj(r.doc, "definedTags") ? r.doc.at("definedTags") : JValue(JObject{})},
              {"systemTags", JObject{}},
              {"searchContext", nullptr},
              {"identityContext", JObject{}},
              {"additionalDetails", allFields ? JValue(rendered) : JValue(JObject{})}};
    return s;
}

void SearchService::searchResources(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    PageWindow w;
    if (!ReadPageWindow(req, world_.pageSize, world_.maxPageSize, w, res)) return;
    const std::string type = JStr(body, "type");
    SearchQuery query;
    std::string freeText;
    if (type == "Structured") {
        std::string error;
        if (!JHas(body, "query")) return err::MissingParameter(res, "query");
        if (!query.parse(JStr(body, "query"), error)) return err::InvalidParameter(res, "Invalid query: " + error);
        for (const auto& t : query.types())
            if (!SearchableKinds().count(t)) return err::InvalidParameter(res, "Unknown resource type: " + t);
    } else if (type == "FreeText") {
        freeText = Lower(JStr(body, "text"));
    } else {
        return err::InvalidParameter(res, "Invalid search type: " + type);
    }

    std::vector<Resource*> hits;
    for (const auto& kv : SearchableKinds()) {
        const std::vector<std::string>& types = query.types();
        if (!types.empty() && std::find(types.begin(), types.end(), kv.first) == types.end()) continue;
        for (Resource* r : listIn(req, kv.first, "")) {
            if (kv.first == "image" && r->compartmentId.empty()) continue;  // platform images are nobody's
            const JObject s = summary(*r, req.nowMs, false);
            auto lookup = [&](const std::string& attr) -> std::string {
                for (const auto& m : s)
                    if (Lower(std::string(m.key())) == attr) return JStr(s, std::string(m.key()).c_str());
                for (const auto& m : r->doc)
                    if (!m.key().empty() && m.key()[0] != '_' && Lower(std::string(m.key())) == attr)
                        return JStr(r->doc, std::string(m.key()).c_str());
                return {};
            };
            if (type == "FreeText") {
                if (Lower(JStr(s, "displayName")).find(freeText) == std::string::npos) continue;
            } else if (!query.matches(lookup)) {
                continue;
            }
            hits.push_back(r);
        }
    }
    std::stable_sort(hits.begin(), hits.end(), [](Resource* a, Resource* b) { return a->seq < b->seq; });
    if (!query.sortAttribute().empty()) {
        const std::string attr = query.sortAttribute();
        std::stable_sort(hits.begin(), hits.end(), [&](Resource* a, Resource* b) {
            if (attr == "timecreated") return a->createdMs < b->createdMs;
            return Lower(JStr(a->doc, "displayName")) < Lower(JStr(b->doc, "displayName"));
        });
        if (query.sortDescending()) std::reverse(hits.begin(), hits.end());
    }
    JArray items;
    for (size_t i = w.offset; i < hits.size() && i < w.offset + w.limit; ++i)
        items.push_back(summary(*hits[i], req.nowMs, query.returnAllAdditionalFields()));
    res.json(200, JObject{{"items", std::move(items)}});
    SetNextPage(res, w, hits.size());
    if (w.offset > 0) res.setHeader("opc-previous-page", EncodePageToken(w.offset > w.limit ? w.offset - w.limit : 0));
}

void SearchService::listResourceTypes(ApiRequest&, ApiResponse& res) {
    JArray out;
    for (const auto& kv : SearchableKinds())
        out.push_back(JObject{{"name", kv.second}, {"fields", JArray{}}});
    res.json(200, out);
}

}  // namespace ocwemu
