#pragma once
// Maps (method, path) to a handler. Routes are matched on the decoded path
// segments only, so every Host reaches the same routes and a trailing "/" on a
// collection path changes nothing.
//
// Pattern syntax: literal segments, "{name}" for one segment, and a final
// "{*name}" for one or more remaining segments (object names with "/").
#include "common/Api.h"

#include <functional>
#include <string>
#include <vector>

namespace ocwemu {

using Handler = std::function<void(ApiRequest&, ApiResponse&)>;

// Which credentials a route takes; each cloud registers the authenticator of
// its kinds with the Pipeline.
//   OciSignature              OCI request signature (oci/SignatureVerifier.h)
//   OciSignatureUnsignedBody  the same for object uploads, which the SDKs sign
//                             without the body headers
//   ClassicSession            Compute Classic session cookie ("nimbula")
//   PaasBasic                 basic credentials plus X-ID-TENANT-NAME (Classic PaaS)
//   Admin                     the emulator's admin interface (loopback clients)
//   None                      no credentials at all (the Classic login itself)
enum class RouteAuth { OciSignature, OciSignatureUnsignedBody, ClassicSession, PaasBasic, Admin, None };

class Router {
public:
    // Registers a handler; later registrations do not override earlier ones
    // for the same method and path.
    void add(const std::string& method, const std::string& pattern, Handler handler,
             RouteAuth auth = RouteAuth::OciSignature);

    struct Match {
        const Handler* handler = nullptr;  // null: no route for this method
        bool pathKnown = false;            // some method matches the path (405 instead of 404)
        std::string pattern;               // "GET /20160918/instances/{instanceId}" for statistics
        RouteAuth auth = RouteAuth::OciSignature;
    };

    // Fills req.pathParams and req.tail on success.
    // A path that matches no route is still answered in the manner of the
    // cloud that owns its area: the longest registered prefix decides which
    // authenticator refuses it and how its error body looks. Paths outside
    // every area belong to `fallback`.
    void area(const std::string& pathPrefix, RouteAuth auth);
    void setFallback(RouteAuth auth) { fallback_ = auth; }
    RouteAuth areaOf(const std::string& rawPath) const;

    // Fills req.pathParams and req.tail on success. Without a handler, `auth`
    // is the area's.
    Match find(ApiRequest& req) const;

private:
    struct Route {
        std::string method;
        std::vector<std::string> parts;
        std::string pattern;
        Handler handler;
        RouteAuth auth;
    };
    static bool matches(const Route& r, const ApiRequest& req, std::map<std::string, std::string>& params,
                        std::string& tail);
    std::vector<Route> routes_;
    std::vector<std::pair<std::string, RouteAuth>> areas_;
    RouteAuth fallback_ = RouteAuth::OciSignature;
};

}  // namespace ocwemu
