#include "classic/InstanceService.h"

#include "classic/ClassicJson.h"
#include "common/Ids.h"

#include <random>

namespace ocwemu {

using namespace classic;

void InstanceService::registerRoutes(Router& r) {
    auto bound = [this](void (InstanceService::*fn)(ApiRequest&, ApiResponse&, Resource&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s, Resource& o) { (this->*fn)(q, s, o); };
    };
    auto bind = [this](void (InstanceService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    addGetRoutes(r, kInstance, {"tags", "availability_domain", "state"});
    on(r, "PUT", "/instance/{*name}", withObject(kInstance, bound(&InstanceService::putInstance)));
    on(r, "DELETE", "/instance/{*name}", withObject(kInstance, bound(&InstanceService::deleteInstance)));
    // Older clients post to the user container ("launchplan/Compute-acme/jdoe/").
    on(r, "POST", "/launchplan", bind(&InstanceService::postLaunchPlan));
    on(r, "POST", "/launchplan/{*container}", bind(&InstanceService::postLaunchPlan));
    addGetRoutes(r, kReboot, {"instance", "name", "state"});
    on(r, "POST", "/rebootinstancerequest", bind(&InstanceService::postReboot));
    on(r, "DELETE", "/rebootinstancerequest/{*name}", withObject(kReboot, bound(&InstanceService::deleteReboot)));
}

static std::string PrivateIp() {
    static thread_local std::mt19937 rng{std::random_device{}()};
    return "10." + std::to_string(rng() % 250 + 1) + "." + std::to_string(rng() % 250) + "." +
           std::to_string(rng() % 250 + 2);
}

static JArray Strings(const JObject& o, const char* key) {
    JArray out;
    if (const JArray* a = JArr(o, key))
        for (const JValue& v : *a)
            if (v.is_string()) out.push_back(v);
    return out;
}

Resource* InstanceService::launch(const JObject& spec, std::int64_t nowMs, ApiResponse& res,
                                  const std::string& orchestration, const Timeline& steps) {
    const std::string shape = JStr(spec, "shape");
    if (shape.empty()) return ClassicMessage(res, 400, "An instance needs a shape"), nullptr;
    Resource* shapeObject = object(kShape, shape, nowMs);
    if (!shapeObject) return ClassicMessage(res, 400, "Shape " + shape + " does not exist"), nullptr;
    std::string requested = JStr(spec, "name");
    if (requested.empty()) requested = account_.userContainer() + "/" + RandomUuid();
    if (!acceptNewName(res, requested)) return nullptr;
    const std::string imagelist = JStr(spec, "imagelist");
    const JArray bootOrder = JArr(spec, "boot_order") ? *JArr(spec, "boot_order") : JArray{};
    // The volumes to attach at launch; boot_order [n] boots from the volume at index n.
    std::vector<std::pair<std::int64_t, std::string>> volumes;
    if (const JArray* atts = JArr(spec, "storage_attachments")) {
        for (const JValue& v : *atts) {
            if (!v.is_object()) continue;
            volumes.emplace_back(JInt(v.get_object(), "index").value_or(0), JStr(v.get_object(), "volume"));
        }
    }
    if (!bootOrder.empty()) {
        const std::int64_t bootIndex = bootOrder[0].is_int64() ? bootOrder[0].get_int64() : 0;
        const std::string* bootVolume = nullptr;
        for (const auto& v : volumes)
            if (v.first == bootIndex) bootVolume = &v.second;
        Resource* bv = bootVolume ? object(kVolume, *bootVolume, nowMs) : nullptr;
        if (!bv) return ClassicMessage(res, 400, "boot_order names no attached storage volume"), nullptr;
        if (!JBool(bv->doc, "bootable").value_or(false))
            return ClassicMessage(res, 400, "Storage volume " + *bootVolume + " is not bootable"), nullptr;
    } else if (imagelist.empty()) {
        return ClassicMessage(res, 400, "An instance needs an imagelist or a bootable storage volume"), nullptr;
    }
    for (const JValue& key : Strings(spec, "sshkeys")) {
        const std::string keyName(key.get_string().c_str());
        Resource* k = object(kSshKey, keyName, nowMs);
        if (!k) return ClassicMessage(res, 400, "SSH key " + keyName + " does not exist"), nullptr;
        if (!JBool(k->doc, "enabled").value_or(true))
            return ClassicMessage(res, 400, "SSH key " + keyName + " is disabled"), nullptr;
    }
    const std::string uuid = RandomUuid();
    const std::string name = requested + "/" + uuid;
    const std::string label = JHas(spec, "label") ? JStr(spec, "label") : requested.substr(requested.rfind('/') + 1);
    const std::string domain = "compute-" + account_.identityDomain + ".oraclecloud.internal.";
    const std::string host = JHas(spec, "hostname") ? JStr(spec, "hostname") : uuid.substr(0, 6);
    const std::string ip = PrivateIp();
    JObject networking;
    if (const JObject* given = JObj(spec, "networking")) networking = *given;
    if (networking.empty()) networking["eth0"] = JObject{};
    for (auto& nic : networking) {
        if (!nic.value().is_object()) continue;
        JObject& n = nic.value().as_object();
        if (!n.contains("ipnetwork")) {
            if (!n.contains("vethernet")) n["vethernet"] = "/oracle/public/default";
            if (!n.contains("seclists"))
                n["seclists"] = JArray{JValue(account_.domainContainer() + "/default/default")};
            if (!n.contains("dns")) n["dns"] = JArray{JValue(host + "." + domain)};
        }
        if (!n.contains("model")) n["model"] = "";
        if (!n.contains("nat")) n["nat"] = nullptr;
    }
    JObject attributes;
    if (const JObject* given = JObj(spec, "attributes")) attributes = *given;
    if (!orchestration.empty()) attributes["nimbula_orchestration"] = orchestration;
    const std::string shapeName = JStr(shapeObject->doc, "name");
    JObject doc{
        {"id", uuid},
        {"account", account_.domainContainer() + "/default"},
        {"shape", shapeName},
        {"desired_state", "running"},
        {"error_reason", ""},
        {"imagelist", bootOrder.empty() ? JValue(imagelist) : JValue(nullptr)},
        {"entry", bootOrder.empty() ? JValue(1) : JValue(nullptr)},
        {"image_format", "raw"},
        {"platform", JHas(spec, "platform") ? JStr(spec, "platform") : std::string("linux")},
        {"label", label},
        {"hostname", host + "." + domain},
        {"domain", domain},
        {"ip", ip},
        {"vcable_id", account_.userContainer() + "/" + RandomUuid()},
        {"networking", std::move(networking)},
        {"storage_attachments", JArray{}},
        {"boot_order", bootOrder},
        {"sshkeys", Strings(spec, "sshkeys")},
        {"attributes", std::move(attributes)},
        {"tags", Strings(spec, "tags")},
        {"start_time", Timestamp(nowMs)},
        {"reverse_dns", JBool(spec, "reverse_dns").value_or(true)},
        {"fingerprint", "7e:2b:" + RandomAlnum(2) + ":" + RandomAlnum(2) + ":00:9f:1c:55:0e:6a:34:cd:02:7b:41:aa"},
        {"vnc", ip + ":5900"},
        {"placement_requirements", JArray{JValue("/system/compute/placement/default")}},
        {"priority", "/oracle/public/default"},
        {"quota", account_.domainContainer()},
        {"quota_reservation", nullptr},
        {"site", ""},
        {"disk_attach", ""},
        {"hypervisor", JObject{{"mode", "hvm"}}},
        {"availability_domain", "/" + std::string("site-1a")},
        {"virtio", nullptr},
        {"resource_requirements", JObject{{"cpus", shapeObject->doc.at("cpus")},
                                          {"ram", shapeObject->doc.at("ram")},
                                          {"root_disk_size", shapeObject->doc.at("root_disk_size")},
                                          {"gpus", 0}}}};
    const std::int64_t p = P();
    Timeline timeline =
        steps.empty() ? Timeline{{"queued", 0}, {"initializing", p / 4}, {"starting", p / 2}, {"running", p}} : steps;
    Resource& inst = addObject(kInstance, name, std::move(doc), nowMs, timeline);
    for (const auto& v : volumes) {
        if (!storage_.attach(inst, v.second, v.first, true, nowMs, 0, res)) {
            storage_.releaseInstance(inst, nowMs);
            store_.erase(inst.id);
            return nullptr;
        }
    }
    return &inst;
}

void InstanceService::postLaunchPlan(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const JArray* specs = JArr(body, "instances");
    if (!specs || specs->empty()) return ClassicMessage(res, 400, "A launch plan needs at least one instance");
    std::vector<Resource*> launched;
    for (const JValue& spec : *specs) {
        Resource* inst = spec.is_object() ? launch(spec.get_object(), req.nowMs, res) : nullptr;
        if (!inst) {
            // All or nothing: what this plan launched before goes again.
            for (Resource* done : launched) {
                storage_.releaseInstance(*done, req.nowMs);
                store_.erase(done->id);
            }
            if (!spec.is_object()) ClassicMessage(res, 400, "Every launch plan instance must be an object");
            return;
        }
        launched.push_back(inst);
    }
    std::string out = "{\"relationships\": [], \"instances\": [";
    for (size_t i = 0; i < launched.size(); ++i) out += (i ? ", " : "") + render(req, *launched[i]);
    out += "]}";
    res.status = 201;
    res.body = std::move(out);
    res.contentType = kComputeJson;
}

void InstanceService::putInstance(ApiRequest& req, ApiResponse& res, Resource& inst) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string name = JStr(inst.doc, "name"), s = stateOf(inst, req.nowMs);
    const std::string desired = JStr(body, "desired_state");
    if (!desired.empty() && desired != "running" && desired != "shutdown")
        return ClassicMessage(res, 400, "Invalid desired_state " + desired + ": use running or shutdown");
    if (JHas(body, "shape") && JStr(body, "shape") != JStr(inst.doc, "shape")) {
        if (s != "shutdown")
            return ClassicMessage(res, 409, "The shape of instance " + name + " changes only while shut down");
        if (!object(kShape, JStr(body, "shape"), req.nowMs))
            return ClassicMessage(res, 400, "Shape " + JStr(body, "shape") + " does not exist");
    }
    const bool transitioning = s != "running" && s != "shutdown";
    if (!desired.empty() && desired != JStr(inst.doc, "desired_state") && transitioning)
        return ClassicMessage(res, 409, "Instance " + name + " is " + s + "; its desired state cannot change now");
    if (JHas(body, "shape")) inst.doc.set("shape", JStr(body, "shape"));
    if (const JArray* tags = JArr(body, "tags")) inst.doc.set("tags", *tags);
    if (desired == "shutdown" && s == "running") {
        store_.schedule(inst, req.nowMs, {{"stopping", 0}, {"shutdown", P()}});
        inst.doc.set("desired_state", desired);
    } else if (desired == "running" && s == "shutdown") {
        store_.schedule(inst, req.nowMs, {{"starting", 0}, {"running", P()}});
        inst.doc.set("desired_state", desired);
        inst.doc.set("ip", PrivateIp());  // a restart releases the shared-network address
    }
    respondObject(req, res, inst);
}

void InstanceService::remove(Resource& inst, std::int64_t nowMs) {
    storage_.releaseInstance(inst, nowMs);
    removeObject(inst, nowMs, "stopping");
}

void InstanceService::deleteInstance(ApiRequest& req, ApiResponse& res, Resource& inst) {
    if (stateOf(inst, req.nowMs) != "stopping" || inst.goneAtMs == 0) remove(inst, req.nowMs);
    res.noContent(204);
}

void InstanceService::postReboot(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string instanceName = JStr(body, "instance");
    Resource* inst = object(kInstance, instanceName, req.nowMs);
    if (!inst) return ClassicMessage(res, 400, "Instance " + instanceName + " does not exist");
    if (stateOf(*inst, req.nowMs) != "running")
        return ClassicMessage(
            res, 409,
            "Instance " + instanceName + " is " + stateOf(*inst, req.nowMs) + "; only running instances reboot");
    const std::string requestId = RandomUuid();
    JObject r{{"instance", instanceName},
              {"hard", JBool(body, "hard").value_or(false)},
              {"error_reason", ""},
              {"creation_time", Timestamp(req.nowMs)},
              {"instance_id", JStr(inst->doc, "id")},
              {"request_id", requestId}};
    Resource& rr =
        addObject(kReboot, instanceName + "/" + requestId, std::move(r), req.nowMs, {{"active", 0}, {"complete", P()}});
    respondObject(req, res, rr, 201);
}

void InstanceService::deleteReboot(ApiRequest&, ApiResponse& res, Resource& r) {
    store_.erase(r.id);
    res.noContent(204);
}

}  // namespace ocwemu
