#pragma once
// What happens to every request between the socket and a service handler:
// request id, admin short-cut, fault rules, authentication, routing under the
// store lock, error bodies for failures, statistics and the request log.
// Cloud-neutral: each route names its kind of credentials (RouteAuth), and
// the cloud behind that kind supplies the check and the manner of its error
// bodies (AuthScheme).
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

struct AuthScheme {
    // Checks a request's credentials (route already matched, so path
    // parameters are filled). On refusal it writes the answer into `res`,
    // sets `reason` (counted in the statistics and logged), returns false.
    std::function<bool(const ApiRequest&, RouteAuth, ApiResponse&, std::string& reason)> check;
    // Writes an error answer the way the services behind these credentials
    // do; used for the answers the pipeline gives itself (faults, unknown
    // paths, internal errors). `code` is the OCI-style code, which a cloud
    // without codes leaves out.
    std::function<void(ApiResponse&, int status, const std::string& code, const std::string& message)> error;
};

class Pipeline {
public:
    // The region a request's Host header addresses for a route of that kind
    // of credentials (the home region when it names none). false with the
    // answer written when the host names a region that cannot be reached or
    // is not the tenancy's.
    using RegionResolver = std::function<bool(const ApiRequest&, RouteAuth, std::string& region, ApiResponse& res)>;

    Pipeline(Router& routes, Router& admin, Store& store, Stats& stats, RequestLog& log, FaultRules& faults,
             std::map<RouteAuth, AuthScheme> schemes, RegionResolver region)
        : routes_(routes),
          admin_(admin),
          store_(store),
          stats_(stats),
          log_(log),
          faults_(faults),
          schemes_(std::move(schemes)),
          region_(std::move(region)) {}

    void handle(ApiRequest& req, ApiResponse& res);

    // Forgets the answers remembered for opc-retry-token (on reset). Call
    // with the store lock held.
    void clearRetryTokens() { retryAnswers_.clear(); }

private:
    void handleAdmin(ApiRequest& req, ApiResponse& res);
    // The answer of a "status" fault: a raw text, or the service's error document.
    static void answerFault(const AuthScheme& auth, const FaultDecision& fault, ApiResponse& res);
    Router& routes_;
    Router& admin_;
    Store& store_;
    Stats& stats_;
    RequestLog& log_;
    FaultRules& faults_;
    const AuthScheme& scheme(RouteAuth auth) const;
    std::map<RouteAuth, AuthScheme> schemes_;
    RegionResolver region_;
    // A POST repeated with the same opc-retry-token gets the first answer
    // again instead of acting twice. Guarded by the store lock.
    std::map<std::string, ApiResponse> retryAnswers_;
};

// True for 127.0.0.0/8 and ::1 (also in IPv4-mapped form).
bool IsLoopback(const std::string& addr);

}  // namespace ocwemu
