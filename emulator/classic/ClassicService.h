#pragma once
// Base of the Compute Classic resource families: object names and URIs, the
// three kinds of GET (directory listings, detail lists, single objects),
// answers in Compute Classic's JSON, and the declared "find or 404" and list
// shapes (common/Handlers.h) for Classic names. Handlers run with the store
// lock held (see Pipeline).
//
// Objects live in the Store with the id "/<base><name>" (the path of their
// URI, e.g. "/storage/volume/Compute-acme/jdoe/vol1"), which is also the id
// the admin interface holds states by, and the user container as the list key.
#include "classic/ClassicAccount.h"
#include "common/Handlers.h"
#include "common/Router.h"
#include "common/Store.h"

#include <string>
#include <utility>
#include <vector>

namespace ocwemu {

struct ClassicKind {
    const char* base;         // "storage/volume": the path after the endpoint
    const char* stateMember;  // "state", "status", or "" for objects without a lifecycle
    const char* display;      // "Storage volume", as messages name it
    std::string storeKind() const { return std::string("classic:") + base; }
};

namespace classic {
extern const ClassicKind kInstance, kVolume, kSnapshot, kAttachment, kReboot, kOrchestration, kMachineImage, kShape,
    kSshKey, kSecList, kIpNetwork, kIpAssociation, kIpReservation;
// The kind of a stored resource, or null when it is not a Classic object.
const ClassicKind* KindOf(const Resource& r);
}  // namespace classic

using Timeline = std::vector<std::pair<std::string, std::int64_t>>;

class ClassicService {
public:
    ClassicService(Store& store, ClassicAccount& account) : store_(store), account_(account) {}
    virtual ~ClassicService() = default;
    virtual void registerRoutes(Router& router) = 0;

    // The live object of that kind and full name, or null.
    Resource* object(const ClassicKind& k, const std::string& name, std::int64_t nowMs) const;
    // Stores a new object ("name" and "account" set) with its timeline; a gone
    // object of the same name is replaced.
    Resource& addObject(const ClassicKind& k, const std::string& name, JObject members, std::int64_t nowMs,
                        const Timeline& steps);
    // `transitional` now (when not empty), gone after the provisioning time.
    void removeObject(Resource& r, std::int64_t nowMs, const std::string& transitional);
    // The objects of a kind whose names equal `prefix` or lie below it ("" for all).
    std::vector<Resource*> objectsUnder(const ClassicKind& k, const std::string& prefix, std::int64_t nowMs) const;

    std::string stateOf(const Resource& r, std::int64_t nowMs) const { return store_.state(r, nowMs); }

protected:
    // GET routes of a kind: "/<base>" and "/<base>/{*name}", answering the
    // three kinds of GET. `filters` are the query filters of detail lists
    // (the state member compares the current state, "tags" looks into the
    // list; others compare stored strings).
    void addGetRoutes(Router& r, const ClassicKind& k, std::vector<std::string> filters,
                      std::function<void(const ApiRequest&, std::vector<Resource*>&)> refine = {});
    // A route of this family taking the session cookie; query values lose
    // the one trailing "/" some clients append to every link.
    void on(Router& r, const std::string& method, const std::string& pattern, Handler h);
    // Declared "find or 404": the object named by the path after the base.
    Handler withObject(const ClassicKind& k, ResourceHandler then) const;

    void respondObject(const ApiRequest& req, ApiResponse& res, const Resource& r, int status = 200) const;
    // {"result": [objects...]}
    void respondList(const ApiRequest& req, ApiResponse& res, const std::vector<Resource*>& items) const;

    // 400 {"message"} when the body is not a JSON object.
    static bool parseBody(const ApiRequest& req, ApiResponse& res, JObject& body);
    // A name a client asks to create must be a full name in the caller's
    // user container ("/Compute-acme/jdoe/<name>", object names of letters,
    // digits, '-', '_', '.'). 400 when it is not a full name or malformed,
    // 403 when it lies in another container.
    bool acceptNewName(ApiResponse& res, const std::string& name) const;
    // 409 when a live object of that kind and name exists.
    bool requireAbsent(ApiResponse& res, const ClassicKind& k, const std::string& name, std::int64_t nowMs) const;
    static void notFound(ApiResponse& res, const ClassicKind& k, const std::string& name);
    // The full name in the path after the base ("/" + the remaining segments).
    static std::string NameInPath(const ApiRequest& req) { return "/" + req.tail; }

    std::int64_t P() const { return account_.provisionMs; }
    // "2016-04-18T14:24:05Z", as Compute Classic writes its timestamps.
    static std::string Timestamp(std::int64_t epochMs);
    // The text of a resource as answered to `req` (its URIs name req's host).
    std::string render(const ApiRequest& req, const Resource& r) const;

    Store& store_;
    ClassicAccount& account_;

private:
    void directory(const ClassicKind& k, const ApiRequest& req, ApiResponse& res, const std::string& name) const;
};

// "https://<host>/<base><name>" with '@' percent-encoded, as Compute Classic
// writes the "uri" of its objects.
std::string ClassicUri(const std::string& host, const std::string& base, const std::string& name);

}  // namespace ocwemu
