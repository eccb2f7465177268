#include "common/FaultRules.h"

#include <cctype>
#include <random>

namespace ocwemu {

void DefaultErrorFor(int status, std::string& code, std::string& message) {
    switch (status) {
        case 400: code = "InvalidParameter"; message = "The request is invalid."; break;
        case 401:
            code = "NotAuthenticated";
            message = "The required information to complete authentication was not provided or was incorrect.";
            break;
        case 404: code = "NotAuthorizedOrNotFound"; message = "Authorization failed or requested resource not found."; break;
        case 409: code = "IncorrectState"; message = "The resource is in a conflicting state."; break;
        case 429: code = "TooManyRequests"; message = "Too many requests for the user."; break;
        case 500: code = "InternalServerError"; message = "Internal error occurred."; break;
        case 502: code = "BadGateway"; message = "Bad gateway."; break;
        case 503: code = "ServiceUnavailable"; message = "The service is currently unavailable."; break;
        case 504: code = "GatewayTimeout"; message = "Gateway timeout."; break;
        default: code = "InjectedFault"; message = "Fault injected by the emulator."; break;
    }
}

bool FaultRule::FromJson(const JObject& o, FaultRule& out, std::string& error) {
    out = FaultRule{};
    out.method = JStr(o, "method");
    for (auto& c : out.method) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    out.pathPrefix = JStr(o, "pathPrefix");
    out.host = JStr(o, "host");
    out.action = JStr(o, "action");
    auto status = JInt(o, "status");
    auto delay = JInt(o, "delayMs");
    if (out.action.empty()) out.action = status ? "status" : (delay ? "delay" : "");
    if (out.action != "status" && out.action != "close" && out.action != "truncate" && out.action != "reset" &&
        out.action != "stall" && out.action != "delay") {
        error = "action must be one of status, close, truncate, reset, stall, delay";
        return false;
    }
    if (out.action == "status") {
        if (!status || *status < 100 || *status > 599) {
            error = "status must be an HTTP status between 100 and 599";
            return false;
        }
        out.status = static_cast<int>(*status);
    }
    out.code = JStr(o, "code");
    out.message = JStr(o, "message");
    out.body = JStr(o, "body");
    out.contentType = JStr(o, "contentType");
    if (!out.body.empty() && out.action != "status") {
        error = "body goes with action status";
        return false;
    }
    if (const auto* after = o.if_contains("afterEffect")) {
        if (!after->is_bool() || (after->get_bool() && out.action != "status")) {
            error = "afterEffect is a boolean that goes with action status";
            return false;
        }
        out.afterEffect = after->get_bool();
    }
    if (out.status && (out.code.empty() || out.message.empty())) {
        std::string code, message;
        DefaultErrorFor(out.status, code, message);
        if (out.code.empty()) out.code = code;
        if (out.message.empty()) out.message = message;
    }
    if (auto t = JInt(o, "times")) out.times = static_cast<int>(*t);
    if (auto p = JNum(o, "probability")) {
        if (*p < 0 || *p > 1) {
            error = "probability must be between 0 and 1";
            return false;
        }
        out.probability = *p;
    }
    if (delay) {
        if (*delay < 0 || *delay > 600000) {
            error = "delayMs must be between 0 and 600000";
            return false;
        }
        out.delayMs = static_cast<int>(*delay);
    }
    return true;
}

JObject FaultRule::toJson() const {
    return JObject{{"id", id},         {"method", method},   {"pathPrefix", pathPrefix},
                   {"host", host},     {"action", action},   {"status", status},
                   {"code", code},     {"message", message}, {"body", body},
                   {"contentType", contentType},             {"afterEffect", afterEffect},
                   {"times", times},
                   {"probability", probability}, {"delayMs", delayMs}, {"hits", hits}};
}

std::string FaultRules::add(FaultRule rule) {
    std::lock_guard<std::mutex> lock(mutex_);
    rule.id = "fault-" + std::to_string(nextId_++);
    rules_.push_back(rule);
    return rule.id;
}

bool FaultRules::remove(const std::string& id) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = rules_.begin(); it != rules_.end(); ++it)
        if (it->id == id) {
            rules_.erase(it);
            return true;
        }
    return false;
}

void FaultRules::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    rules_.clear();
}

FaultDecision FaultRules::match(const std::string& method, const std::string& path, const std::string& host) {
    thread_local std::mt19937 rng{std::random_device{}()};
    FaultDecision d;
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& r : rules_) {
        if (r.times == 0) continue;
        if (!r.method.empty() && r.method != method) continue;
        if (!r.pathPrefix.empty() && path.compare(0, r.pathPrefix.size(), r.pathPrefix) != 0) continue;
        if (!r.host.empty() && host.find(r.host) == std::string::npos) continue;
        if (r.action != "delay" && !d.action.empty()) continue;  // the action is already decided
        if (r.probability < 1.0 && std::uniform_real_distribution<double>(0.0, 1.0)(rng) >= r.probability) continue;
        if (r.times > 0) --r.times;
        ++r.hits;
        if (r.action == "stall")
            d.stallMs = r.delayMs;
        else
            d.delayMs += r.delayMs;
        d.ruleId = r.id;
        if (r.action != "delay") {
            d.action = r.action;
            d.status = r.status;
            d.code = r.code;
            d.message = r.message;
            d.body = r.body;
            d.contentType = r.contentType.empty() ? "text/plain" : r.contentType;
            d.afterEffect = r.afterEffect;
        }
    }
    return d;
}

JArray FaultRules::toJson() const {
    std::lock_guard<std::mutex> lock(mutex_);
    JArray out;
    for (const auto& r : rules_) out.push_back(r.toJson());
    return out;
}

}  // namespace ocwemu
