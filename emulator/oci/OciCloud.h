#pragma once
// The OCI half of the emulator put together: the service families, request
// authentication and the regional view of a Host header. Owned by Emulator.
#include "common/ApiKeys.h"
#include "common/Router.h"
#include "common/Store.h"
#include "oci/BlockStorageService.h"
#include "oci/ComputeService.h"
#include "oci/DatabaseService.h"
#include "oci/IdentityService.h"
#include "oci/ImageService.h"
#include "oci/NetworkService.h"
#include "oci/ObjectStorageService.h"
#include "oci/OciWorld.h"
#include "oci/SearchService.h"
#include "oci/SignatureVerifier.h"

namespace ocwemu {

class OciCloud {
public:
    OciCloud(Store& store, OciWorld& world, const KeyRegistry& keys);
    void registerRoutes(Router& router);

    // Pipeline::Authenticator for OCI routes: verifies the signature and on
    // refusal answers 401 NotAuthenticated with the service's message.
    bool authenticate(const ApiRequest& req, RouteAuth auth, ApiResponse& res, std::string& reason) const;
    // "iaas.us-ashburn-1.oraclecloud.com" -> "us-ashburn-1"; a host outside
    // the provider's domain (127.0.0.1:port) addresses the home region. As
    // in the cloud, a region the tenancy has not subscribed to refuses the
    // tenancy's credentials (401 NotAuthenticated), and a region that does
    // not exist cannot be reached at all (the connection is dropped without
    // an answer, the nearest the emulator comes to a name that does not
    // resolve). false with that answer written.
    bool resolveRegion(const ApiRequest& req, std::string& region, ApiResponse& res) const;

    // Fills the store with a starting world; the caller holds the store lock.
    // mode: "demo" (a small, realistic tenancy), "empty" (platform images only),
    // "scale" (`compartments` compartments sharing `instances` instances).
    // false with a reason on an unknown mode.
    bool seed(const std::string& mode, int compartments, int instances, std::int64_t nowMs, std::string& error);

    Store& store;
    OciWorld& world;
    IdentityService identity;
    NetworkService network;
    BlockStorageService blockStorage;
    ComputeService compute;
    ImageService images;
    ObjectStorageService objectStorage;
    SearchService search;
    DatabaseService database;

private:
    SignatureVerifier verifier_;
};

}  // namespace ocwemu
