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

// OciSignatureUnsignedBody: object uploads, which the SDKs sign without the
// body headers; None: no credentials at all.
enum class RouteAuth { OciSignature, OciSignatureUnsignedBody, None };

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
};

}  // namespace ocwemu
