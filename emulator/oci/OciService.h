#pragma once
// Base of the OCI service families: shared mechanics of creating, finding,
// rendering and listing resources, so each family file holds only its own
// rules. Handlers run with the store lock held (see Pipeline).
#include "common/Api.h"
#include "common/Handlers.h"
#include "common/Router.h"
#include "common/Store.h"
#include "oci/OciWorld.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace ocwemu {

// The JSON a GET returns for a resource: its stored members (those whose
// name starts with '_' are private to the emulator), "lifecycleState", and
// the members that depend on the state (iSCSI target once attached, ...).
JObject RenderResource(const Store& store, const Resource& r, std::int64_t nowMs);
// The same document as JSON text, kept in the resource (common/RenderCache.h).
// Call with the store lock held; the reference is valid until the resource
// is rendered again or erased.
const std::string& RenderedJson(const Store& store, const Resource& r, std::int64_t nowMs);

class OciService {
public:
    OciService(Store& store, OciWorld& world) : store_(store), world_(world) {}
    virtual ~OciService() = default;
    virtual void registerRoutes(Router& router) = 0;

protected:
    // A resource with "id", "compartmentId" and "timeCreated" filled; a
    // regional resource gets the region key in its OCID.
    Resource newResource(const std::string& kind, const std::string& ocidType, const std::string& compartmentId,
                         const std::string& region, std::int64_t nowMs) const;
    // Adds it with the given initial timeline.
    Resource& addResource(Resource r, std::int64_t nowMs,
                          const std::vector<std::pair<std::string, std::int64_t>>& steps);

    // The resource of that kind as the request's region sees it, or null.
    Resource* find(const ApiRequest& req, const std::string& id, const std::string& kind) const;
    // Resources of a kind in one compartment (all when empty) that belong to
    // the request's region; global kinds are never filtered out.
    std::vector<Resource*> listIn(const ApiRequest& req, const std::string& kind,
                                  const std::string& compartmentId) const;
    // Declared handlers (common/Handlers.h). withResource: the resource of
    // that kind named by the path parameter, as the request's region sees
    // it, or 404 NotAuthorizedOrNotFound. getOne: a GET answering it.
    Handler withResource(const char* idParam, const char* kind, ResourceHandler then) const;
    Handler getOne(const char* idParam, const char* kind) const;
    // A member function as a ResourceHandler.
    template <class S>
    ResourceHandler bound(void (S::*fn)(ApiRequest&, ApiResponse&, Resource&)) {
        S* self = static_cast<S*>(this);
        return [self, fn](ApiRequest& q, ApiResponse& s, Resource& r) { (self->*fn)(q, s, r); };
    }
    // A list of one kind in the query's "compartmentId" (404 when it names no
    // compartment; when required, 400 if absent, else all compartments),
    // filtered by the rule, answered a page at a time by respondList.
    // `required` query parameters are checked first (400 MissingParameter).
    enum class Compartment { Required, Optional };
    Handler listOf(ListRule rule, Compartment compartment = Compartment::Required,
                   std::vector<const char*> required = {}) const;
    std::string stateOf(const Resource& r, std::int64_t nowMs) const { return store_.state(r, nowMs); }

    // 200 (or `status`) with the rendered resource and its etag.
    void respondOne(ApiResponse& res, const Resource& r, std::int64_t nowMs, int status = 200) const;
    // Filters by lifecycleState when asked, sorts by sortBy/sortOrder, and
    // answers one page of the rendered items.
    void respondList(const ApiRequest& req, ApiResponse& res, std::vector<Resource*> items) const;

    // Parses the JSON body; writes 400 InvalidParameter and returns false when malformed.
    static bool parseBody(const ApiRequest& req, ApiResponse& res, JObject& body);
    // The query parameter, or false with 400 MissingParameter written.
    static bool requireParam(const ApiRequest& req, ApiResponse& res, const char* name, std::string& out);
    void setWorkRequest(ApiResponse& res, const std::string& region) const;

    // The compartment exists (the tenancy counts) and is not deleted.
    bool compartmentExists(const std::string& id, std::int64_t nowMs) const;
    // The "compartmentId" query parameter of a list: false with 400
    // MissingParameter written when it is absent, or with 404
    // NotAuthorizedOrNotFound when it names no compartment (the service's
    // answer for any resource in the path or query it cannot find).
    bool requireCompartment(const ApiRequest& req, ApiResponse& res, std::string& out) const;
    // The same for lists where the compartment is optional: true when absent.
    bool optionalCompartment(const ApiRequest& req, ApiResponse& res, std::string& out) const;

    std::int64_t P() const { return world_.provisionMs; }

    Store& store_;
    OciWorld& world_;
};

}  // namespace ocwemu
