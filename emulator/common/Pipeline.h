#pragma once
// What happens to every request between the socket and a service handler:
// request id, admin short-cut, fault rules, authentication, routing under the
// store lock, error bodies for failures, statistics and the request log.
#include "common/Api.h"
#include "common/FaultRules.h"
#include "common/RequestLog.h"
#include "common/Router.h"
#include "common/Stats.h"
#include "common/Store.h"

#include <functional>
#include <map>
#include <string>

namespace ocwemu {

class Pipeline {
public:
    // Checks a request's credentials for a route's auth mode. On refusal it
    // writes the 401 answer into `res`, sets `reason`, and returns false.
    using Authenticator = std::function<bool(const ApiRequest&, RouteAuth, ApiResponse&, std::string& reason)>;
    // The region a Host header addresses (the home region when it names none).
    using RegionResolver = std::function<std::string(const std::string& host)>;

    Pipeline(Router& routes, Router& admin, Store& store, Stats& stats, RequestLog& log, FaultRules& faults,
             Authenticator auth, RegionResolver region)
        : routes_(routes), admin_(admin), store_(store), stats_(stats), log_(log), faults_(faults),
          auth_(std::move(auth)), region_(std::move(region)) {}

    void handle(ApiRequest& req, ApiResponse& res);

    // Forgets the answers remembered for opc-retry-token (on reset). Call
    // with the store lock held.
    void clearRetryTokens() { retryAnswers_.clear(); }

private:
    void handleAdmin(ApiRequest& req, ApiResponse& res);
    Router& routes_;
    Router& admin_;
    Store& store_;
    Stats& stats_;
    RequestLog& log_;
    FaultRules& faults_;
    Authenticator auth_;
    RegionResolver region_;
    // A POST repeated with the same opc-retry-token gets the first answer
    // again instead of acting twice. Guarded by the store lock.
    std::map<std::string, ApiResponse> retryAnswers_;
};

// True for 127.0.0.0/8 and ::1 (also in IPv4-mapped form).
bool IsLoopback(const std::string& addr);

}  // namespace ocwemu
