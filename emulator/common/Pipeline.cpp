#include "common/Pipeline.h"

#include "common/Ids.h"

#include <chrono>
#include <exception>
#include <thread>

namespace ocwemu {

bool IsLoopback(const std::string& addr) {
    return addr.rfind("127.", 0) == 0 || addr == "::1" || addr.rfind("::ffff:127.", 0) == 0;
}

const AuthScheme& Pipeline::scheme(RouteAuth auth) const {
    auto it = schemes_.find(auth);
    if (it != schemes_.end()) return it->second;
    // Kinds without a scheme of their own (OCI object uploads) share their family's.
    if (auth == RouteAuth::OciSignatureUnsignedBody) return scheme(RouteAuth::OciSignature);
    static const AuthScheme kRefuseAll{[](const ApiRequest&, RouteAuth, ApiResponse& res, std::string& reason) {
                                           reason = "no authenticator for this route";
                                           res.error(401, "NotAuthenticated", "No credentials are accepted here.");
                                           return false;
                                       },
                                       [](ApiResponse& res, int status, const std::string& code,
                                          const std::string& message) { res.error(status, code, message); }};
    return kRefuseAll;
}

void Pipeline::handleAdmin(ApiRequest& req, ApiResponse& res) {
    const AuthScheme& admin = scheme(RouteAuth::Admin);
    std::string reason;
    if (!admin.check(req, RouteAuth::Admin, res, reason)) return;
    Router::Match m = admin_.find(req);
    if (!m.handler) {
        admin.error(res, m.pathKnown ? 405 : 404, m.pathKnown ? "MethodNotAllowed" : "NotFound",
                    "No such admin operation.");
        return;
    }
    try {
        (*m.handler)(req, res);
    } catch (const std::exception& e) {
        admin.error(res, 500, "InternalServerError", e.what());
    }
}

void Pipeline::answerFault(const AuthScheme& auth, const FaultDecision& fault, ApiResponse& res) {
    if (!fault.body.empty()) {
        // What a proxy or load balancer in front of the service answers.
        res.status = fault.status;
        res.body = fault.body;
        res.contentType = fault.contentType;
        return;
    }
    auth.error(res, fault.status, fault.code, fault.message);
    if (fault.status == 429 || fault.status == 503) res.setHeader("retry-after", "1");
}

void Pipeline::handle(ApiRequest& req, ApiResponse& res) {
    const std::string requestId = req.hasHeader("opc-request-id") ? req.header("opc-request-id") : MakeRequestId();
    std::string pattern = "unmatched";
    LoggedRequest entry;
    if (!ParseTarget(req.target, req.rawPath, req.segments, req.query)) {
        scheme(routes_.areaOf(req.rawPath)).error(res, 400, "InvalidParameter", "The request URL is malformed.");
    } else if (req.rawPath.rfind("/_emulator/", 0) == 0 || req.rawPath == "/_emulator") {
        handleAdmin(req, res);
        res.setHeader("opc-request-id", requestId);
        return;  // admin traffic stays out of the statistics and the log
    } else {
        Router::Match m = routes_.find(req);
        const AuthScheme& auth = scheme(m.auth);
        if (m.handler) pattern = m.pattern;
        FaultDecision fault = faults_.match(req.method, req.rawPath, req.host);
        if (!fault.ruleId.empty()) {
            stats_.recordFault(fault.ruleId);
            entry.fault = fault.ruleId;
        }
        if (fault.delayMs > 0) std::this_thread::sleep_for(std::chrono::milliseconds(fault.delayMs));
        std::string reason;
        const bool answerFirst = fault.action == "status" && !fault.afterEffect;
        if (answerFirst && !fault.body.empty()) {
            // What a proxy or load balancer in front of the service answers.
            res.status = fault.status;
            res.body = fault.body;
            res.contentType = fault.contentType;
        } else if (answerFirst) {
            answerFault(auth, fault, res);
        } else if (fault.action == "close") {
            res.transportFault = "close";
        } else if (!region_(req, m.auth, req.region, res)) {
            entry.rejection = "region";
        } else if (!auth.check(req, m.auth, res, reason)) {
            stats_.recordRejection(reason);
            entry.rejection = reason;
        } else if (!m.handler) {
            if (m.pathKnown)
                auth.error(res, 405, "MethodNotAllowed",
                           "The method " + req.method + " is not allowed on this resource.");
            else
                auth.error(res, 404, "NotFound", "There is no operation at this path for this method.");
        } else {
            try {
                std::lock_guard<std::mutex> lock(store_.mutex());
                const std::string retryKey = req.method == "POST" && req.hasHeader("opc-retry-token")
                                                 ? req.header("opc-retry-token") + " " + req.target
                                                 : std::string();
                auto seen = retryKey.empty() ? retryAnswers_.end() : retryAnswers_.find(retryKey);
                if (seen != retryAnswers_.end()) {
                    res = seen->second;
                } else {
                    (*m.handler)(req, res);
                    if (!retryKey.empty() && res.status >= 200 && res.status < 300) {
                        if (retryAnswers_.size() >= 10000) retryAnswers_.clear();
                        retryAnswers_[retryKey] = res;
                    }
                }
            } catch (const std::exception&) {
                res = ApiResponse{};
                auth.error(res, 500, "InternalServerError", "Internal error occurred.");
            }
        }
        if (fault.action == "status" && fault.afterEffect) {
            // The work is done (and remembered under its retry token); only
            // the answer is lost on its way back.
            res = ApiResponse{};
            answerFault(auth, fault, res);
        }
        if (fault.action == "truncate" || fault.action == "reset" || fault.action == "stall") {
            res.transportFault = fault.action;
            res.stallMs = fault.stallMs;
        }
    }
    res.setHeader("opc-request-id", requestId);
    if (req.hasHeader("opc-client-request-id")) res.setHeader("opc-client-request-id", req.header("opc-client-request-id"));

    stats_.recordRequest(req.method, pattern, req.host, res.status);
    entry.timeMs = req.nowMs;
    entry.requestId = requestId;
    entry.method = req.method;
    entry.target = req.target;
    entry.host = req.host;
    entry.pattern = pattern;
    entry.headers.assign(req.headers.begin(), req.headers.end());
    entry.body = req.body;
    entry.status = res.transportFault == "close" ? 0 : res.status;
    entry.responseBody = res.body.substr(0, RequestLog::kMaxResponseBody + 1);
    log_.add(std::move(entry));
}

}  // namespace ocwemu
