#include "classic/StorageService.h"

#include "classic/ClassicJson.h"
#include "common/Ids.h"

#include <algorithm>
#include <cctype>

namespace ocwemu {

using namespace classic;

static const std::int64_t kGiB = 1024LL * 1024 * 1024;
static const char* kDefaultProperty = "/oracle/public/storage/default";

void StorageService::registerRoutes(Router& r) {
    auto bind = [this](void (StorageService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    auto bound = [this](void (StorageService::*fn)(ApiRequest&, ApiResponse&, Resource&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s, Resource& o) { (this->*fn)(q, s, o); };
    };
    addGetRoutes(r, kVolume, {"name", "tags", "status"});
    on(r, "POST", "/storage/volume", bind(&StorageService::postVolume));
    on(r, "PUT", "/storage/volume/{*name}", withObject(kVolume, bound(&StorageService::putVolume)));
    on(r, "DELETE", "/storage/volume/{*name}", withObject(kVolume, bound(&StorageService::deleteVolume)));
    addGetRoutes(r, kSnapshot, {"name", "tags", "status", "volume"},
                 [](const ApiRequest& req, std::vector<Resource*>& items) {
                     // since/until compare with the snapshot time at the precision given ("2016", "2016-06-17").
                     for (const char* bound : {"since", "until"}) {
                         if (!req.hasParam(bound)) continue;
                         const std::string limit = req.param(bound);
                         const bool since = bound[0] == 's';
                         items.erase(std::remove_if(items.begin(), items.end(),
                                                    [&](Resource* s) {
                                                        const std::string t =
                                                            JStr(s->doc, "snapshot_timestamp").substr(0, limit.size());
                                                        return since ? t < limit : t > limit;
                                                    }),
                                     items.end());
                     }
                 });
    on(r, "POST", "/storage/snapshot", bind(&StorageService::postSnapshot));
    on(r, "DELETE", "/storage/snapshot/{*name}", withObject(kSnapshot, bound(&StorageService::deleteSnapshot)));
    addGetRoutes(r, kAttachment, {"instance_name", "storage_volume_name", "state", "name"});
    on(r, "POST", "/storage/attachment", bind(&StorageService::postAttachment));
    on(r, "DELETE", "/storage/attachment/{*name}", withObject(kAttachment, bound(&StorageService::deleteAttachment)));
}

bool StorageService::ParseSize(const std::string& text, std::int64_t& bytes) {
    if (text.empty() || !std::isdigit(static_cast<unsigned char>(text[0]))) return false;
    size_t used = 0;
    long long n = 0;
    try {
        n = std::stoll(text, &used);
    } catch (...) {
        return false;
    }
    const std::string unit = text.substr(used);
    long long mult = 1;
    if (unit.size() > 1) return false;
    if (!unit.empty()) {
        switch (std::tolower(static_cast<unsigned char>(unit[0]))) {
            case 'b':
                mult = 1;
                break;
            case 'k':
                mult = 1024LL;
                break;
            case 'm':
                mult = 1024LL * 1024;
                break;
            case 'g':
                mult = kGiB;
                break;
            case 't':
                mult = 1024LL * kGiB;
                break;
            default:
                return false;
        }
    }
    if (n > (1LL << 53) / mult) return false;
    bytes = n * mult;
    return true;
}

// Properties are Oracle names; a client that leaves out the leading "/" means the same one.
static JArray Properties(const JObject& body) {
    JArray out;
    if (const JArray* given = JArr(body, "properties"))
        for (const JValue& p : *given)
            if (p.is_string()) {
                std::string s(p.get_string().c_str());
                out.push_back(JValue(s.empty() || s[0] == '/' ? s : "/" + s));
            }
    if (out.empty()) out.push_back(JValue(kDefaultProperty));
    return out;
}

// --- volumes ---------------------------------------------------------------------

Resource* StorageService::createVolume(const JObject& body, std::int64_t nowMs, const Timeline& steps,
                                       ApiResponse& res) {
    const std::string name = JStr(body, "name");
    if (!acceptNewName(res, name) || !requireAbsent(res, kVolume, name, nowMs)) return nullptr;
    const std::string snapshotName = JStr(body, "snapshot");
    Resource* snapshot = nullptr;
    if (!snapshotName.empty()) {
        snapshot = object(kSnapshot, snapshotName, nowMs);
        if (!snapshot) {
            ClassicMessage(res, 400, "Storage snapshot " + snapshotName + " does not exist");
            return nullptr;
        }
        if (stateOf(*snapshot, nowMs) != "completed") {
            ClassicMessage(res, 409, "Storage snapshot " + snapshotName + " is not completed");
            return nullptr;
        }
    }
    std::int64_t size = 0;
    const std::string sizeText = JStr(body, "size");
    if (sizeText.empty() && snapshot) {
        ParseSize(JStr(snapshot->doc, "size"), size);
    } else if (!ParseSize(sizeText, size)) {
        ClassicMessage(res, 400, "Invalid size " + sizeText + ": give bytes or a number with B, K, M, G or T");
        return nullptr;
    }
    if (size < kGiB || size > 2048 * kGiB) {
        ClassicMessage(res, 400, "Invalid size " + sizeText + ": a storage volume holds 1 GB to 2 TB");
        return nullptr;
    }
    std::int64_t parentSize = 0;
    if (snapshot && ParseSize(JStr(snapshot->doc, "size"), parentSize) && size < parentSize) {
        ClassicMessage(res, 400, "A volume made from a snapshot must be at least as large as the snapshot");
        return nullptr;
    }
    JObject v{{"size", std::to_string((size + kGiB - 1) / kGiB * kGiB)},
              {"properties", Properties(body)},
              {"description", JHas(body, "description") ? JValue(JStr(body, "description")) : JValue(nullptr)},
              {"bootable", JBool(body, "bootable").value_or(false)},
              {"imagelist", JHas(body, "imagelist") ? JValue(JStr(body, "imagelist")) : JValue(nullptr)},
              {"imagelist_entry", JInt(body, "imagelist_entry").value_or(JHas(body, "imagelist") ? 1 : -1)},
              {"machineimage_name", JHas(body, "imagelist") ? JValue(JStr(body, "imagelist")) : JValue(nullptr)},
              {"platform", JHas(body, "platform") ? JValue(JStr(body, "platform")) : JValue("linux")},
              {"hypervisor", nullptr},
              {"managed", true},
              {"readonly", false},
              {"shared", false},
              {"writecache", false},
              {"storage_pool", account_.domainContainer() + "/storagepool/iscsi/thruput_1"},
              {"snapshot", snapshot ? JValue(snapshotName) : JValue(nullptr)},
              {"snapshot_id", snapshot ? JValue(JStr(snapshot->doc, "snapshot_id")) : JValue(nullptr)},
              {"snapshot_account", snapshot ? JValue(JStr(snapshot->doc, "account")) : JValue(nullptr)},
              {"quota", nullptr},
              {"tags", JArr(body, "tags") ? JValue(*JArr(body, "tags")) : JValue(JArray{})},
              {"status_timestamp", Timestamp(nowMs)}};
    return &addObject(kVolume, name, std::move(v), nowMs, steps);
}

void StorageService::postVolume(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (Resource* v = createVolume(body, req.nowMs, {{"Initializing", 0}, {"Online", P()}}, res))
        respondObject(req, res, *v, 201);
}

void StorageService::putVolume(ApiRequest& req, ApiResponse& res, Resource& v) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string name = JStr(v.doc, "name");
    if (JHas(body, "name") && JStr(body, "name") != name)
        return ClassicMessage(res, 400, "The name in the body differs from the volume's name " + name);
    if (stateOf(v, req.nowMs) != "Online")
        return ClassicMessage(res, 409, "Storage volume " + name + " is " + stateOf(v, req.nowMs));
    std::int64_t size = 0, current = 0;
    ParseSize(JStr(v.doc, "size"), current);
    if (JHas(body, "size")) {
        if (!ParseSize(JStr(body, "size"), size)) return ClassicMessage(res, 400, "Invalid size " + JStr(body, "size"));
        // Sizes in whole GB round up, so "10G" for a volume of 10 GB and some bytes keeps it.
        size = (size + kGiB - 1) / kGiB * kGiB;
        if (size < current) return ClassicMessage(res, 400, "A storage volume cannot shrink");
    }
    JObject& doc = v.doc.edit();
    if (size > current) doc["size"] = std::to_string(size);
    if (JHas(body, "description") || body.contains("description")) doc["description"] = JStr(body, "description");
    if (auto b = JBool(body, "bootable")) doc["bootable"] = *b;
    if (JArr(body, "properties")) doc["properties"] = Properties(body);
    if (const JArray* tags = JArr(body, "tags")) doc["tags"] = *tags;
    if (JHas(body, "imagelist")) doc["imagelist"] = JStr(body, "imagelist");
    doc["status_timestamp"] = Timestamp(req.nowMs);
    respondObject(req, res, v);
}

bool StorageService::attached(const std::string& volumeName, std::int64_t nowMs) const {
    for (Resource* a : store_.list(kAttachment.storeKind(), "", nowMs))
        if (JStr(a->doc, "storage_volume_name") == volumeName && stateOf(*a, nowMs) != "detaching") return true;
    return false;
}

void StorageService::deleteVolume(ApiRequest& req, ApiResponse& res, Resource& v) {
    const std::string name = JStr(v.doc, "name"), s = stateOf(v, req.nowMs);
    if (s == "Deleting") return res.noContent(204);
    if (s == "Initializing") return ClassicMessage(res, 409, "Storage volume " + name + " is still being initialized");
    if (attached(name, req.nowMs)) return ClassicMessage(res, 409, "Storage volume " + name + " is attached");
    removeObject(v, req.nowMs, "Deleting");
    res.noContent(204);
}

// --- snapshots ---------------------------------------------------------------------

Resource& StorageService::makeSnapshot(const Resource& volume, const std::string& name, const JObject& body,
                                       std::int64_t nowMs, const Timeline& steps) {
    std::string property = JStr(body, "property");
    if (property.empty()) property = "/oracle/public/storage/snapshot/default";
    std::string id = RandomUuid() + RandomUuid();
    id.erase(std::remove(id.begin(), id.end(), '-'), id.end());
    JObject s{{"volume", JStr(volume.doc, "name")},
              {"snapshot_id", id},
              {"size", JStr(volume.doc, "size")},
              {"description", JHas(body, "description") ? JValue(JStr(body, "description")) : JValue(nullptr)},
              {"property", property},
              {"machineimage_name", volume.doc.at("machineimage_name")},
              {"platform", JStr(volume.doc, "platform")},
              {"parent_volume_bootable", JBool(volume.doc, "bootable").value_or(false) ? "true" : "false"},
              {"tags", JArr(body, "tags") ? JValue(*JArr(body, "tags")) : JValue(JArray{})},
              {"start_timestamp", Timestamp(nowMs)},
              {"snapshot_timestamp", Timestamp(nowMs)},
              {"status_timestamp", Timestamp(nowMs)}};
    return addObject(kSnapshot, name.empty() ? JStr(volume.doc, "name") + "/" + id : name, std::move(s), nowMs, steps);
}

Resource& StorageService::seedSnapshot(const Resource& volume, const std::string& name, std::int64_t nowMs) {
    return makeSnapshot(volume, name,
                        JObject{{"property", "/oracle/private/storage/snapshot/collocated"}, {"description", "seeded"}},
                        nowMs, {{"completed", 0}});
}

void StorageService::postSnapshot(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string volumeName = JStr(body, "volume"), name = JStr(body, "name");
    Resource* v = object(kVolume, volumeName, req.nowMs);
    if (!v) return ClassicMessage(res, 400, "Storage volume " + volumeName + " does not exist");
    if (stateOf(*v, req.nowMs) != "Online")
        return ClassicMessage(res, 409, "Storage volume " + volumeName + " is " + stateOf(*v, req.nowMs));
    if (!name.empty()) {
        if (name.rfind(volumeName + "/", 0) != 0)
            return ClassicMessage(
                res, 400, "Invalid name " + name + ": a snapshot is named under its volume, " + volumeName + "/<name>");
        if (!acceptNewName(res, name) || !requireAbsent(res, kSnapshot, name, req.nowMs)) return;
    }
    Resource& s = makeSnapshot(*v, name, body, req.nowMs, {{"initializing", 0}, {"completed", P()}});
    respondObject(req, res, s, 201);
}

void StorageService::deleteSnapshot(ApiRequest& req, ApiResponse& res, Resource& s) {
    const std::string name = JStr(s.doc, "name");
    if (stateOf(s, req.nowMs) == "initializing")
        return ClassicMessage(res, 409, "Storage snapshot " + name + " is still being created");
    for (Resource* v : store_.list(kVolume.storeKind(), "", req.nowMs))
        if (JStr(v->doc, "snapshot") == name && stateOf(*v, req.nowMs) != "Deleting")
            return ClassicMessage(res, 409,
                                  "Storage snapshot " + name + " was used to create volume " + JStr(v->doc, "name") +
                                      " and cannot be deleted");
    removeObject(s, req.nowMs, "deleting");
    res.noContent(204);
}

// --- attachments ---------------------------------------------------------------------

Resource* StorageService::attach(Resource& instance, const std::string& volumeName, std::int64_t index, bool atLaunch,
                                 std::int64_t nowMs, std::int64_t delayMs, ApiResponse& res) {
    const std::string instanceName = JStr(instance.doc, "name");
    if (index < 1 || index > 10) {
        ClassicMessage(res, 400, "Invalid index " + std::to_string(index) + ": storage attachments use 1 to 10");
        return nullptr;
    }
    Resource* v = object(kVolume, volumeName, nowMs);
    if (!v) {
        ClassicMessage(res, 400, "Storage volume " + volumeName + " does not exist");
        return nullptr;
    }
    if (!atLaunch && stateOf(*v, nowMs) != "Online") {
        ClassicMessage(res, 409, "Storage volume " + volumeName + " is " + stateOf(*v, nowMs));
        return nullptr;
    }
    if (attached(volumeName, nowMs) && !JBool(v->doc, "shared").value_or(false)) {
        ClassicMessage(res, 409, "Storage volume " + volumeName + " is already attached");
        return nullptr;
    }
    const JArray* current = JArr(instance.doc, "storage_attachments");
    if (current)
        for (const JValue& a : *current)
            if (a.is_object() && JInt(a.get_object(), "index").value_or(0) == index) {
                ClassicMessage(res, 409,
                               "Index " + std::to_string(index) + " of instance " + instanceName + " is in use");
                return nullptr;
            }
    const std::string name = instanceName + "/" + RandomUuid();
    JObject a{{"index", index},    {"instance_name", instanceName}, {"storage_volume_name", volumeName},
              {"readonly", false}, {"hypervisor", nullptr},         {"_launch", atLaunch}};
    Resource& att = addObject(kAttachment, name, std::move(a), nowMs, {{"attaching", 0}, {"attached", delayMs}});
    JArray list = current ? *current : JArray{};
    list.push_back(JObject{{"index", index}, {"name", name}, {"storage_volume_name", volumeName}});
    instance.doc.set("storage_attachments", std::move(list));
    return &att;
}

void StorageService::postAttachment(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string instanceName = JStr(body, "instance_name");
    Resource* inst = object(kInstance, instanceName, req.nowMs);
    if (!inst) return ClassicMessage(res, 400, "Instance " + instanceName + " does not exist");
    const std::string s = stateOf(*inst, req.nowMs);
    if (s != "running" && s != "shutdown")
        return ClassicMessage(res, 409,
                              "Instance " + instanceName + " is " + s + "; volumes attach to running instances");
    if (Resource* a = attach(*inst, JStr(body, "storage_volume_name"), JInt(body, "index").value_or(0), false,
                             req.nowMs, P(), res))
        respondObject(req, res, *a, 201);
}

static void DropFromInstance(Resource& instance, const std::string& attachmentName) {
    const JArray* current = JArr(instance.doc, "storage_attachments");
    if (!current) return;
    JArray list;
    for (const JValue& a : *current)
        if (!a.is_object() || JStr(a.get_object(), "name") != attachmentName) list.push_back(a);
    instance.doc.set("storage_attachments", std::move(list));
}

void StorageService::deleteAttachment(ApiRequest& req, ApiResponse& res, Resource& a) {
    const std::string name = JStr(a.doc, "name"), s = stateOf(a, req.nowMs);
    if (s == "detaching") return res.noContent(204);
    if (JBool(a.doc, "_launch").value_or(false))
        return ClassicMessage(
            res, 409, "Storage attachment " + name + " was made when the instance was launched and cannot be detached");
    if (s == "attaching") return ClassicMessage(res, 409, "Storage attachment " + name + " is still attaching");
    removeObject(a, req.nowMs, "detaching");
    if (Resource* inst = object(kInstance, JStr(a.doc, "instance_name"), req.nowMs)) DropFromInstance(*inst, name);
    res.noContent(204);
}

void StorageService::releaseInstance(Resource& instance, std::int64_t nowMs) {
    const std::string name = JStr(instance.doc, "name");
    for (Resource* a : store_.list(kAttachment.storeKind(), "", nowMs))
        if (JStr(a->doc, "instance_name") == name && stateOf(*a, nowMs) != "detaching")
            removeObject(*a, nowMs, "detaching");
}

}  // namespace ocwemu
