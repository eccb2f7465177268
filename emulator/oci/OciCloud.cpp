#include "oci/OciCloud.h"

namespace ocwemu {

OciCloud::OciCloud(Store& s, OciWorld& w, const KeyRegistry& keys)
    : store(s), world(w), identity(s, w), network(s, w), blockStorage(s, w), compute(s, w, blockStorage, network),
      images(s, w), objectStorage(s, w), search(s, w), database(s, w), verifier_(keys) {}

void OciCloud::registerRoutes(Router& router) {
    identity.registerRoutes(router);
    compute.registerRoutes(router);
    network.registerRoutes(router);
    blockStorage.registerRoutes(router);
    images.registerRoutes(router);
    objectStorage.registerRoutes(router);
    search.registerRoutes(router);
    database.registerRoutes(router);
}

bool OciCloud::authenticate(const ApiRequest& req, RouteAuth auth, ApiResponse& res, std::string& reason) const {
    if (auth == RouteAuth::None) return true;
    SignatureResult r = verifier_.verify(req, auth == RouteAuth::OciSignature);
    if (r.ok) return true;
    reason = r.reason;
    const bool objectStorage = req.rawPath == "/n" || req.rawPath.rfind("/n/", 0) == 0;
    res.error(401, "NotAuthenticated",
              objectStorage ? "The required information to complete authentication was not provided."
                            : "The required information to complete authentication was not provided or was incorrect.");
    return false;
}

bool OciCloud::resolveRegion(const ApiRequest& req, std::string& region, ApiResponse& res) const {
    region = world.homeRegion();
    std::string name = req.host;
    if (!name.empty() && name[0] == '[') return true;  // IPv6 literal
    const size_t colon = name.find(':');
    if (colon != std::string::npos) name.resize(colon);
    const std::string domain = ".oraclecloud.com";
    if (name.size() <= domain.size() || name.compare(name.size() - domain.size(), domain.size(), domain) != 0)
        return true;
    const size_t first = name.find('.');
    const size_t second = name.find('.', first + 1);
    if (first == std::string::npos || second == std::string::npos) return true;
    const std::string label = name.substr(first + 1, second - first - 1);
    if (world.knownRegion(label)) {
        region = label;
        return true;
    }
    if (IsRealRegion(label)) {
        res.error(401, "NotAuthenticated",
                  "The required information to complete authentication was not provided or was incorrect.");
    } else {
        res.transportFault = "close";
    }
    return false;
}

}  // namespace ocwemu
