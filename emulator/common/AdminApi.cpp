#include "common/AdminApi.h"

#include <cstdlib>

namespace ocwemu {

void AdminApi::registerRoutes(Router& r) {
    const RouteAuth none = RouteAuth::None;
    r.add("GET", "/_emulator/info", [this](ApiRequest&, ApiResponse& res) { res.json(200, hooks_.info()); }, none);
    r.add("GET", "/_emulator/stats", [this](ApiRequest&, ApiResponse& res) { res.json(200, stats_.toJson()); }, none);
    r.add("GET", "/_emulator/requests",
          [this](ApiRequest& req, ApiResponse& res) {
              long long n = req.hasParam("last") ? std::atoll(req.param("last").c_str()) : 50;
              if (n < 0) n = 0;
              res.json(200, log_.toJson(static_cast<size_t>(n)));
          },
          none);
    r.add("GET", "/_emulator/faults",
          [this](ApiRequest&, ApiResponse& res) {
              JObject holds;
              {
                  std::lock_guard<std::mutex> lock(store_.mutex());
                  holds = store_.holdsJson();
              }
              res.json(200, JObject{{"rules", faults_.toJson()}, {"holds", holds}});
          },
          none);
    r.add("POST", "/_emulator/faults", [this](ApiRequest& q, ApiResponse& s) { addFault(q, s); }, none);
    r.add("DELETE", "/_emulator/faults", [this](ApiRequest& q, ApiResponse& s) { deleteFault(q, s); }, none);
    r.add("DELETE", "/_emulator/faults/{id}", [this](ApiRequest& q, ApiResponse& s) { deleteFault(q, s); }, none);
    r.add("POST", "/_emulator/keys",
          [this](ApiRequest& req, ApiResponse& res) {
              JObject body, out;
              std::string error;
              if (!ParseJsonObject(req.body, body, error) || !hooks_.addKey(body, out, error))
                  return res.error(400, "InvalidParameter", error);
              res.json(200, out);
          },
          none);
    r.add("GET", "/_emulator/limits", [this](ApiRequest&, ApiResponse& res) { res.json(200, hooks_.limits()); }, none);
    r.add("POST", "/_emulator/limits",
          [this](ApiRequest& req, ApiResponse& res) {
              JObject body;
              std::string error;
              if (!ParseJsonObject(req.body, body, error) || !hooks_.setLimits(body, error))
                  return res.error(400, "InvalidParameter", error);
              res.json(200, hooks_.limits());
          },
          none);
    r.add("POST", "/_emulator/reset", [this](ApiRequest& q, ApiResponse& s) { reset(q, s); }, none);
}

void AdminApi::addFault(ApiRequest& req, ApiResponse& res) {
    JObject body;
    std::string error;
    if (!ParseJsonObject(req.body, body, error)) return res.error(400, "InvalidParameter", error);
    if (JHas(body, "resourceId") || JHas(body, "state")) {
        const std::string id = JStr(body, "resourceId"), state = JStr(body, "state");
        if (id.empty() || state.empty())
            return res.error(400, "InvalidParameter", "holding a state needs resourceId and state");
        std::lock_guard<std::mutex> lock(store_.mutex());
        store_.hold(id, state);
        return res.json(200, JObject{{"id", "hold:" + id}, {"resourceId", id}, {"state", state}});
    }
    FaultRule rule;
    if (!FaultRule::FromJson(body, rule, error)) return res.error(400, "InvalidParameter", error);
    const std::string id = faults_.add(rule);
    JObject out = rule.toJson();
    out["id"] = id;
    res.json(200, out);
}

void AdminApi::deleteFault(ApiRequest& req, ApiResponse& res) {
    const std::string& id = req.path("id");
    if (id.empty()) {
        faults_.clear();
        std::lock_guard<std::mutex> lock(store_.mutex());
        store_.clearHolds();
        return res.noContent(204);
    }
    bool removed = false;
    if (id.rfind("hold:", 0) == 0) {
        std::lock_guard<std::mutex> lock(store_.mutex());
        removed = store_.release(id.substr(5));
    } else {
        removed = faults_.remove(id);
    }
    if (!removed) return res.error(404, "NotFound", "No fault rule " + id);
    res.noContent(204);
}

void AdminApi::reset(ApiRequest& req, ApiResponse& res) {
    JObject body;
    std::string error;
    if (!ParseJsonObject(req.body, body, error)) return res.error(400, "InvalidParameter", error);
    faults_.clear();
    hooks_.resetKeysAndLimits();
    {
        std::lock_guard<std::mutex> lock(store_.mutex());
        store_.clear();
        if (!hooks_.reseed(JStr(body, "seed"), error)) return res.error(400, "InvalidParameter", error);
    }
    stats_.reset();
    log_.clear();
    res.json(200, hooks_.info());
}

}  // namespace ocwemu
