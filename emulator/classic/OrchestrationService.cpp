#include "classic/OrchestrationService.h"

#include "classic/ClassicJson.h"
#include "common/Ids.h"

namespace ocwemu {

using namespace classic;

void OrchestrationService::registerRoutes(Router& r) {
    auto bound = [this](void (OrchestrationService::*fn)(ApiRequest&, ApiResponse&, Resource&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s, Resource& o) { (this->*fn)(q, s, o); };
    };
    const std::string base = "/" + std::string(kOrchestration.base);
    addGetRoutes(r, kOrchestration, {"status", "name"});
    on(r, "POST", base, [this](ApiRequest& q, ApiResponse& s) { post(q, s); });
    on(r, "PUT", base + "/{*name}", withObject(kOrchestration, bound(&OrchestrationService::put)));
    on(r, "DELETE", base + "/{*name}", withObject(kOrchestration, bound(&OrchestrationService::del)));
}

Resource* OrchestrationService::create(const JObject& body, std::int64_t nowMs, bool settled, ApiResponse& res) {
    const std::string name = JStr(body, "name");
    if (!acceptNewName(res, name) || !requireAbsent(res, kOrchestration, name, nowMs)) return nullptr;
    std::string desired = JStr(body, "desired_state");
    if (desired.empty()) desired = "inactive";
    if (desired != "active" && desired != "inactive" && desired != "suspend")
        return ClassicMessage(res, 400, "Invalid desired_state " + desired + ": use active, inactive or suspend"),
               nullptr;
    const JArray* given = JArr(body, "objects");
    if (!given || given->size() > 100)
        return ClassicMessage(res, 400, "An orchestration needs a list of at most 100 objects"), nullptr;
    JArray objects;
    for (const JValue& v : *given) {
        const JObject* o = v.if_object();
        const std::string label = o ? JStr(*o, "label") : std::string();
        const std::string type = o ? JStr(*o, "type") : std::string();
        if (label.empty() || label.find(' ') != std::string::npos || label.size() > 256 || type.empty() ||
            !JObj(*o, "template"))
            return ClassicMessage(res, 400, "Every object needs a label without blanks, a type and a template"),
                   nullptr;
        if (type != "Instance" && type != "StorageVolume")
            return ClassicMessage(res, 400, "Unsupported object type " + type), nullptr;
        JObject obj = *o;
        obj["name"] = name + "/" + label;
        obj["orchestration"] = name;
        obj["account"] = account_.domainContainer() + "/default";
        if (!obj.contains("persistent")) obj["persistent"] = type == "StorageVolume";
        obj["desired_state"] = desired;
        obj["version"] = 1;
        obj["health"] = JObject{{"status", "inactive"}};
        objects.push_back(std::move(obj));
    }
    JObject doc{{"description", JStr(body, "description")},
                {"desired_state", desired},
                {"objects", std::move(objects)},
                {"tags", JArr(body, "tags") ? JValue(*JArr(body, "tags")) : JValue(JArray{})},
                {"version", 1},
                {"id", RandomUuid()},
                {"user", account_.userContainer()},
                {"time_created", Timestamp(nowMs)},
                {"time_updated", Timestamp(nowMs)},
                {"time_audited", Timestamp(nowMs)}};
    Resource& o = addObject(kOrchestration, name, std::move(doc), nowMs, {{"inactive", 0}});
    if (desired == "active") activate(o, nowMs, settled);
    return &o;
}

bool OrchestrationService::activate(Resource& o, std::int64_t nowMs, bool settled) {
    JObject& doc = o.doc.edit();
    JArray& objects = doc["objects"].as_array();
    const std::string orchestration = JStr(doc, "name");
    bool ok = true;
    for (JValue& v : objects) {
        JObject& obj = v.as_object();
        if (JStr(obj, "_instance").size() && object(kInstance, JStr(obj, "_instance"), nowMs)) continue;
        ApiResponse refusal;
        const JObject& tmpl = obj["template"].as_object();
        bool started = true;
        if (JStr(obj, "type") == "Instance") {
            Timeline steps;
            if (settled) steps = {{"running", 0}};
            Resource* inst = instances_.launch(tmpl, nowMs, refusal, orchestration, steps);
            if (inst) obj["_instance"] = JStr(inst->doc, "name");
            started = inst != nullptr;
        } else if (!object(kVolume, JStr(tmpl, "name"), nowMs)) {
            Timeline steps{{"Initializing", 0}, {"Online", settled ? 0 : P()}};
            started = storage_.createVolume(tmpl, nowMs, steps, refusal) != nullptr;
        }
        if (!started) {
            boost::system::error_code ec;
            JValue why = boost::json::parse(refusal.body, ec);
            obj["health"] =
                JObject{{"status", "error"},
                        {"error", !ec && why.is_object() ? JStr(why.as_object(), "message") : refusal.body}};
            ok = false;
        } else {
            obj["health"] = JObject{{"status", "active"}};
        }
        obj["desired_state"] = "active";
    }
    doc["desired_state"] = "active";
    doc["time_updated"] = Timestamp(nowMs);
    if (settled)
        store_.schedule(o, nowMs, {{ok ? "active" : "terminal_error", 0}});
    else
        store_.schedule(o, nowMs, {{"activating", 0}, {ok ? "active" : "terminal_error", P()}});
    return ok;
}

void OrchestrationService::deactivate(Resource& o, std::int64_t nowMs) {
    JObject& doc = o.doc.edit();
    for (JValue& v : doc["objects"].as_array()) {
        JObject& obj = v.as_object();
        // Non-persistent objects (instances) go; persistent ones (volumes) stay.
        if (Resource* inst = object(kInstance, JStr(obj, "_instance"), nowMs)) instances_.remove(*inst, nowMs);
        obj.erase("_instance");
        obj["desired_state"] = "inactive";
        obj["health"] = JObject{{"status", "inactive"}};
    }
    doc["desired_state"] = "inactive";
    doc["time_updated"] = Timestamp(nowMs);
    store_.schedule(o, nowMs, {{"deactivating", 0}, {"inactive", P()}});
}

void OrchestrationService::post(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (Resource* o = create(body, req.nowMs, false, res)) respondObject(req, res, *o, 201);
}

void OrchestrationService::put(ApiRequest& req, ApiResponse& res, Resource& o) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    std::string desired = req.param("desired_state");
    if (desired.empty()) desired = JStr(body, "desired_state");
    const std::string s = stateOf(o, req.nowMs);
    if (s == "activating" || s == "deactivating")
        return ClassicMessage(res, 409, "Orchestration " + JStr(o.doc, "name") + " is " + s);
    if (JHas(body, "description")) o.doc.set("description", JStr(body, "description"));
    if (desired == "active" && s != "active") {
        activate(o, req.nowMs, false);
    } else if ((desired == "inactive" || desired == "suspend") && s != "inactive") {
        deactivate(o, req.nowMs);
    } else if (!desired.empty() && desired != "active" && desired != "inactive" && desired != "suspend") {
        return ClassicMessage(res, 400, "Invalid desired_state " + desired + ": use active, inactive or suspend");
    }
    o.doc.set("version", JInt(o.doc, "version").value_or(1) + 1);
    respondObject(req, res, o);
}

void OrchestrationService::del(ApiRequest& req, ApiResponse& res, Resource& o) {
    const std::string s = stateOf(o, req.nowMs);
    const std::string terminate = req.param("terminate");
    if (s != "inactive" && s != "terminal_error" && terminate != "True" && terminate != "true")
        return ClassicMessage(res, 409,
                              "Orchestration " + JStr(o.doc, "name") + " is " + s +
                                  "; deactivate it first or delete with terminate=True");
    if (s != "inactive") deactivate(o, req.nowMs);
    removeObject(o, req.nowMs, "deleting");
    res.noContent(204);
}

}  // namespace ocwemu
