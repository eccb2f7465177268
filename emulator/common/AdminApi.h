#pragma once
// The unsigned admin interface under "/_emulator/" (loopback clients only,
// enforced by the Pipeline):
//   GET    /_emulator/info                 the ready line's members
//   GET    /_emulator/stats                request counters, signature rejections, faults
//   GET    /_emulator/requests?last=N      the last N requests (default 50) with headers and bodies
//   GET    /_emulator/faults               fault rules and held states
//   POST   /_emulator/faults               add a rule (see FaultRule) or {"resourceId","state"} to hold a state
//   DELETE /_emulator/faults[/{id}]        remove one rule ("hold:<resourceId>" releases a hold) or all
//   POST   /_emulator/keys                 {"publicKey": PEM[, "user": OCID]} -> {"fingerprint","keyId"}
//   GET    /_emulator/limits, POST /_emulator/limits   {"attachmentsPerInstance": N}
//   POST   /_emulator/reset                clear counters, log, faults, holds and added keys; reseed
//                                          (body {"seed": "demo"|"empty"|"scale"} optional)
#include "common/FaultRules.h"
#include "common/RequestLog.h"
#include "common/Router.h"
#include "common/Stats.h"
#include "common/Store.h"

#include <functional>

namespace ocwemu {

struct AdminHooks {
    std::function<JObject()> info;
    // Registers a public key; false with a reason on bad input.
    std::function<bool(const JObject& body, JObject& out, std::string& error)> addKey;
    std::function<JObject()> limits;
    std::function<bool(const JObject& body, std::string& error)> setLimits;
    // Clears the store and seeds it again; called with the store lock held.
    std::function<bool(const std::string& seed, std::string& error)> reseed;
    std::function<void()> resetKeysAndLimits;
};

class AdminApi {
public:
    AdminApi(Stats& stats, RequestLog& log, FaultRules& faults, Store& store, AdminHooks hooks)
        : stats_(stats), log_(log), faults_(faults), store_(store), hooks_(std::move(hooks)) {}
    void registerRoutes(Router& router);

private:
    void addFault(ApiRequest& req, ApiResponse& res);
    void deleteFault(ApiRequest& req, ApiResponse& res);
    void reset(ApiRequest& req, ApiResponse& res);

    Stats& stats_;
    RequestLog& log_;
    FaultRules& faults_;
    Store& store_;
    AdminHooks hooks_;
};

}  // namespace ocwemu
