#include "oci/IdentityService.h"

#include "oci/OciErrors.h"
#include "common/TimeUtil.h"

#include <algorithm>

namespace ocwemu {

static const char* kV = "/20160918";

void IdentityService::registerRoutes(Router& r) {
    auto bind = [this](void (IdentityService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    r.add("GET", std::string(kV) + "/tenancies/{tenancyId}", bind(&IdentityService::getTenancy));
    r.add("GET", std::string(kV) + "/tenancies/{tenancyId}/regionSubscriptions",
          bind(&IdentityService::listRegionSubscriptions));
    r.add("GET", std::string(kV) + "/regions", bind(&IdentityService::listRegions));
    r.add("GET", std::string(kV) + "/availabilityDomains", bind(&IdentityService::listAvailabilityDomains));
    r.add("GET", std::string(kV) + "/compartments", bind(&IdentityService::listCompartments));
    r.add("POST", std::string(kV) + "/compartments", bind(&IdentityService::createCompartment));
    r.add("GET", std::string(kV) + "/compartments/{compartmentId}", bind(&IdentityService::getCompartment));
    r.add("PUT", std::string(kV) + "/compartments/{compartmentId}",
          withResource("compartmentId", "compartment", bound(&IdentityService::updateCompartment)));
    r.add("DELETE", std::string(kV) + "/compartments/{compartmentId}",
          withResource("compartmentId", "compartment", bound(&IdentityService::deleteCompartment)));
    r.add("GET", std::string(kV) + "/users/{userId}", bind(&IdentityService::getUser));
}

Resource& IdentityService::seedCompartment(const std::string& parentId, const std::string& name,
                                           std::int64_t nowMs) {
    Resource c = newResource("compartment", "compartment", parentId, "", nowMs);
    c.doc.set("name", name);
    c.doc.set("description", "Compartment " + name);
    c.doc.set("isAccessible", true);
    c.doc.set("freeformTags", JObject{});
    c.doc.set("definedTags", JObject{});
    return addResource(std::move(c), nowMs, {{"ACTIVE", 0}});
}

void IdentityService::getTenancy(ApiRequest& req, ApiResponse& res) {
    if (req.path("tenancyId") != world_.tenancyId) return err::NotAuthorizedOrNotFound(res);
    res.json(200, JObject{{"id", world_.tenancyId},
                          {"name", world_.tenancyName},
                          {"description", "Tenancy of the OCI emulator"},
                          {"homeRegionKey", world_.regions.front().key},
                          {"upiIdcsCompatibilityLayerEndpoint", nullptr},
                          {"freeformTags", JObject{}},
                          {"definedTags", JObject{}}});
}

void IdentityService::listRegionSubscriptions(ApiRequest& req, ApiResponse& res) {
    if (req.path("tenancyId") != world_.tenancyId) return err::NotAuthorizedOrNotFound(res);
    JArray out;
    for (size_t i = 0; i < world_.regions.size(); ++i)
        out.push_back(JObject{{"regionKey", world_.regions[i].key},
                              {"regionName", world_.regions[i].name},
                              {"status", "READY"},
                              {"isHomeRegion", i == 0}});
    res.json(200, out);
}

void IdentityService::listRegions(ApiRequest&, ApiResponse& res) {
    // The service lists every region of the realm; the subscribed ones are
    // among them, followed by a few others.
    std::vector<std::string> names;
    for (const auto& r : world_.regions) names.push_back(r.name);
    for (const char* n : {"eu-frankfurt-1", "uk-london-1", "ap-tokyo-1", "ca-toronto-1"})
        if (std::find(names.begin(), names.end(), n) == names.end()) names.push_back(n);
    JArray out;
    for (const auto& n : names) out.push_back(JObject{{"key", RegionKeyFor(n)}, {"name", n}});
    res.json(200, out);
}

void IdentityService::listAvailabilityDomains(ApiRequest& req, ApiResponse& res) {
    std::string compartment;
    if (!requireCompartment(req, res, compartment)) return;
    JArray out;
    for (const auto& ad : world_.availabilityDomains(req.region))
        out.push_back(JObject{{"name", ad},
                              {"id", "ocid1.availabilitydomain.oc1.." + ad.substr(ad.find(':') + 1)},
                              {"compartmentId", world_.tenancyId}});
    res.json(200, out);
}

void IdentityService::listCompartments(ApiRequest& req, ApiResponse& res) {
    std::string parent;
    if (!requireCompartment(req, res, parent)) return;
    const std::string access = req.param("accessLevel");
    if (!access.empty() && access != "ANY" && access != "ACCESSIBLE")
        return err::InvalidParameter(res, "Invalid accessLevel: " + access);
    const bool subtree = req.param("compartmentIdInSubtree") == "true";
    if (subtree && parent != world_.tenancyId)
        return err::InvalidParameter(res, "compartmentIdInSubtree is only valid on the root compartment");
    std::vector<Resource*> items = store_.list("compartment", subtree ? std::string() : parent, req.nowMs);
    KeepMatching(req, items, {"name"});
    respondList(req, res, std::move(items));
}

JObject IdentityService::rootCompartment() const {
    return JObject{{"id", world_.tenancyId},
                   {"compartmentId", world_.tenancyId},
                   {"name", world_.tenancyName},
                   {"description", "Root compartment"},
                   {"timeCreated", Rfc3339(0)},
                   {"lifecycleState", "ACTIVE"},
                   {"isAccessible", true},
                   {"freeformTags", JObject{}},
                   {"definedTags", JObject{}}};
}

void IdentityService::getCompartment(ApiRequest& req, ApiResponse& res) {
    const std::string& id = req.path("compartmentId");
    if (id == world_.tenancyId) return res.json(200, rootCompartment());
    if (Resource* c = find(req, id, "compartment"))
        respondOne(res, *c, req.nowMs);
    else
        err::NotAuthorizedOrNotFound(res);
}

void IdentityService::createCompartment(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string parent = JStr(body, "compartmentId");
    const std::string name = JStr(body, "name");
    const std::string description = JStr(body, "description");
    if (parent.empty()) return err::MissingParameter(res, "compartmentId");
    if (name.empty()) return err::MissingParameter(res, "name");
    if (description.empty()) return err::MissingParameter(res, "description");
    if (!compartmentExists(parent, req.nowMs)) return err::RelatedNotFound(res, "compartment " + parent);
    for (Resource* sib : store_.list("compartment", parent, req.nowMs))
        if (JStr(sib->doc, "name") == name && stateOf(*sib, req.nowMs) != "DELETED")
            return res.error(409, "NotAuthorizedOrResourceAlreadyExists",
                             "A compartment named '" + name + "' already exists in the parent compartment.");
    Resource c = newResource("compartment", "compartment", parent, "", req.nowMs);
    c.doc.set("name", name);
    c.doc.set("description", description);
    c.doc.set("isAccessible", true);
    c.doc.set("freeformTags", body.contains("freeformTags") ? body["freeformTags"] : JValue(JObject{}));
    c.doc.set("definedTags", body.contains("definedTags") ? body["definedTags"] : JValue(JObject{}));
    Resource& added = addResource(std::move(c), req.nowMs, {{"CREATING", 0}, {"ACTIVE", P()}});
    respondOne(res, added, req.nowMs);
}

void IdentityService::updateCompartment(ApiRequest& req, ApiResponse& res, Resource& c) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (stateOf(c, req.nowMs) != "ACTIVE") return err::IncorrectState(res, "The compartment is not ACTIVE.");
    CopyMembers(body, c.doc.edit(), {"name", "description", "freeformTags", "definedTags"});
    respondOne(res, c, req.nowMs);
}

void IdentityService::deleteCompartment(ApiRequest& req, ApiResponse& res, Resource& c) {
    const std::string s = stateOf(c, req.nowMs);
    if (s == "DELETED" || s == "DELETING") return err::IncorrectState(res, "The compartment is already deleted.");
    for (Resource* child : store_.list("compartment", c.id, req.nowMs))
        if (stateOf(*child, req.nowMs) != "DELETED")
            return err::IncorrectState(res, "The compartment is not empty: it has child compartments.");
    store_.schedule(c, req.nowMs, {{"DELETING", 0}, {"DELETED", P()}}, world_.retentionMs);
    res.noContent(204);
    setWorkRequest(res, req.region);
}

void IdentityService::getUser(ApiRequest& req, ApiResponse& res) {
    if (req.path("userId") != world_.userId) return err::NotAuthorizedOrNotFound(res);
    res.json(200, JObject{{"id", world_.userId},
                          {"compartmentId", world_.tenancyId},
                          {"name", "ocw-emulator-user"},
                          {"description", "API user of the OCI emulator"},
                          {"timeCreated", Rfc3339(0)},
                          {"lifecycleState", "ACTIVE"}});
}

}  // namespace ocwemu
