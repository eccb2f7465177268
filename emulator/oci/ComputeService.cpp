#include "oci/ComputeService.h"

#include "oci/OciErrors.h"
#include "common/Ids.h"
#include "oci/Paging.h"
#include "oci/Shapes.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace ocwemu {

static const std::string kV = "/20160918";

void ComputeService::registerRoutes(Router& r) {
    auto bind = [this](void (ComputeService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    r.add("GET", kV + "/instances",
          listOf({"instance", {"availabilityDomain", "displayName", "capacityReservationId"}}));
    r.add("POST", kV + "/instances", bind(&ComputeService::launchInstance));
    r.add("GET", kV + "/instances/{instanceId}", getOne("instanceId", "instance"));
    r.add("PUT", kV + "/instances/{instanceId}",
          withResource("instanceId", "instance", bound(&ComputeService::updateInstance)));
    r.add("POST", kV + "/instances/{instanceId}",
          withResource("instanceId", "instance", bound(&ComputeService::instanceAction)));
    r.add("DELETE", kV + "/instances/{instanceId}",
          withResource("instanceId", "instance", bound(&ComputeService::terminateInstance)));
    r.add("GET", kV + "/instances/{instanceId}/initialCredentials",
          withResource("instanceId", "instance", bound(&ComputeService::initialCredentials)));
    r.add("GET", kV + "/shapes", bind(&ComputeService::listShapes));
}

Resource* ComputeService::launch(const std::string& region, std::int64_t nowMs, const JObject& body,
                                 ApiResponse& res, std::int64_t delayMs) {
    const std::string c = JStr(body, "compartmentId");
    const std::string ad = JStr(body, "availabilityDomain");
    const std::string shapeName = JStr(body, "shape");
    if (c.empty()) return err::MissingParameter(res, "compartmentId"), nullptr;
    if (ad.empty()) return err::MissingParameter(res, "availabilityDomain"), nullptr;
    if (shapeName.empty()) return err::MissingParameter(res, "shape"), nullptr;
    if (!compartmentExists(c, nowMs)) return err::RelatedNotFound(res, "compartment " + c), nullptr;
    if (!world_.knownAvailabilityDomain(region, ad))
        return err::InvalidParameter(res, "Invalid availabilityDomain: " + ad), nullptr;
    const ShapeInfo* shape = FindShape(shapeName);
    if (!shape) return err::InvalidParameter(res, "Shape " + shapeName + " is not valid."), nullptr;

    double ocpus = shape->ocpus, memory = shape->memoryInGBs;
    if (shape->flexible) {
        const JObject* sc = JObj(body, "shapeConfig");
        ocpus = sc ? JNum(*sc, "ocpus").value_or(1.0) : 1.0;
        memory = sc ? JNum(*sc, "memoryInGBs").value_or(ocpus * shape->memPerOcpuDefault)
                    : ocpus * shape->memPerOcpuDefault;
        if (ocpus < shape->minOcpus || ocpus > shape->maxOcpus)
            return err::InvalidParameter(res, "ocpus is out of range for shape " + shapeName), nullptr;
        if (memory < std::max(shape->minMemory, ocpus * shape->memPerOcpuMin) ||
            memory > std::min(shape->maxMemory, ocpus * shape->memPerOcpuMax))
            return err::InvalidParameter(res, "memoryInGBs is out of range for shape " + shapeName), nullptr;
    }

    // The source: an image (sourceDetails or the legacy imageId) or a boot volume.
    const JObject* src = JObj(body, "sourceDetails");
    std::string sourceType = src ? JStr(*src, "sourceType") : std::string(JHas(body, "imageId") ? "image" : "");
    if (sourceType.empty()) return err::MissingParameter(res, "sourceDetails"), nullptr;
    Resource* image = nullptr;
    Resource* bootVolume = nullptr;
    std::int64_t bootSize = 47;
    auto findRegional = [&](const std::string& id, const char* kind) -> Resource* {
        Resource* r = store_.get(id, nowMs, kind);
        return r && (r->region.empty() || r->region == region) ? r : nullptr;
    };
    if (sourceType == "image") {
        const std::string imageId = src ? JStr(*src, "imageId") : JStr(body, "imageId");
        if (imageId.empty()) return err::MissingParameter(res, "sourceDetails.imageId"), nullptr;
        image = findRegional(imageId, "image");
        if (!image) return err::RelatedNotFound(res, "image " + imageId), nullptr;
        if (stateOf(*image, nowMs) != "AVAILABLE")
            return err::InvalidParameter(res, "The image " + imageId + " is not AVAILABLE."), nullptr;
        bootSize = std::max<std::int64_t>(47, JInt(image->doc, "sizeInMBs").value_or(0) / 1024);
        if (src)
            if (auto s = JInt(*src, "bootVolumeSizeInGBs")) {
                if (*s < 50 || *s > 32768)
                    return err::InvalidParameter(res, "bootVolumeSizeInGBs must be between 50 and 32768"), nullptr;
                bootSize = *s;
            }
    } else if (sourceType == "bootVolume") {
        const std::string bvId = src ? JStr(*src, "bootVolumeId") : std::string();
        if (bvId.empty()) return err::MissingParameter(res, "sourceDetails.bootVolumeId"), nullptr;
        bootVolume = findRegional(bvId, "bootvolume");
        if (!bootVolume) return err::RelatedNotFound(res, "boot volume " + bvId), nullptr;
        if (stateOf(*bootVolume, nowMs) != "AVAILABLE" || storage_.bootVolumeInUse(*bootVolume, nowMs))
            return err::IncorrectState(res, "The boot volume is not AVAILABLE or is attached."), nullptr;
        if (JStr(bootVolume->doc, "availabilityDomain") != ad)
            return err::InvalidParameter(res, "The boot volume is in another availability domain."), nullptr;
        image = findRegional(JStr(bootVolume->doc, "imageId"), "image");
    } else {
        return err::InvalidParameter(res, "Invalid sourceType: " + sourceType), nullptr;
    }

    const JObject* vnicDetails = JObj(body, "createVnicDetails");
    std::string subnetId = vnicDetails ? JStr(*vnicDetails, "subnetId") : std::string();
    if (subnetId.empty()) subnetId = JStr(body, "subnetId");
    if (subnetId.empty()) return err::MissingParameter(res, "createVnicDetails.subnetId"), nullptr;
    Resource* subnet = findRegional(subnetId, "subnet");
    if (!subnet) return err::RelatedNotFound(res, "subnet " + subnetId), nullptr;
    const JValue& subnetAd = subnet->doc.at("availabilityDomain");
    if (subnetAd.is_string() && subnetAd.as_string() != ad)
        return err::InvalidParameter(res, "The subnet is in another availability domain."), nullptr;

    Resource inst = newResource("instance", "instance", c, region, nowMs);
    std::string name = JStr(body, "displayName");
    if (name.empty()) name = "instance" + std::to_string(nowMs % 100000000);
    inst.doc.set("availabilityDomain", ad);
    inst.doc.set("region", world_.instanceRegionValue(region));
    inst.doc.set("shape", shapeName);
    inst.doc.set("displayName", name);
    std::string fd = JStr(body, "faultDomain");
    inst.doc.set("faultDomain", fd.empty() ? "FAULT-DOMAIN-" + std::to_string(1 + nowMs % 3) : fd);
    inst.doc.set("imageId", image ? JValue(image->id) : JValue(nullptr));
    if (sourceType == "image") {
        JObject sd{{"sourceType", "image"}, {"imageId", image->id}, {"bootVolumeSizeInGBs", bootSize}};
        inst.doc.set("sourceDetails", sd);
    } else {
        inst.doc.set("sourceDetails", JObject{{"sourceType", "bootVolume"}, {"bootVolumeId", bootVolume->id}});
    }
    inst.doc.set("shapeConfig", InstanceShapeConfig(*shape, ocpus, memory));
    inst.doc.set("metadata", JObj(body, "metadata") ? body.at("metadata") : JValue(JObject{}));
    inst.doc.set("extendedMetadata", JObj(body, "extendedMetadata") ? body.at("extendedMetadata") : JValue(JObject{}));
    inst.doc.set("launchMode", image ? JStr(image->doc, "launchMode") : std::string("PARAVIRTUALIZED"));
    inst.doc.set("launchOptions", JObject{{"bootVolumeType", "PARAVIRTUALIZED"},
                                          {"firmware", "UEFI_64"},
                                          {"networkType", "PARAVIRTUALIZED"},
                                          {"remoteDataVolumeType", "PARAVIRTUALIZED"},
                                          {"isPvEncryptionInTransitEnabled", false},
                                          {"isConsistentVolumeNamingEnabled", true}});
    inst.doc.set("instanceOptions", JObject{{"areLegacyImdsEndpointsDisabled", false}});
    inst.doc.set("availabilityConfig",
                 JObject{{"isLiveMigrationPreferred", nullptr}, {"recoveryAction", "RESTORE_INSTANCE"}});
    inst.doc.set("agentConfig", JObject{{"isMonitoringDisabled", false},
                                        {"isManagementDisabled", false},
                                        {"areAllPluginsDisabled", false},
                                        {"pluginsConfig", nullptr}});
    inst.doc.set("freeformTags", JObj(body, "freeformTags") ? body.at("freeformTags") : JValue(JObject{}));
    inst.doc.set("definedTags", JObj(body, "definedTags") ? body.at("definedTags") : JValue(JObject{}));
    inst.doc.set("systemTags", JObject{});
    inst.doc.set("timeMaintenanceRebootDue", nullptr);
    if (image) {
        std::string os = JStr(image->doc, "operatingSystem");
        std::transform(os.begin(), os.end(), os.begin(), [](unsigned char ch) { return std::tolower(ch); });
        if (os.find("windows") != std::string::npos) inst.doc.set("_password", RandomAlnum(12) + "Aa1!");
    }
    Resource& added = addResource(std::move(inst), nowMs, {{"PROVISIONING", 0}, {"RUNNING", delayMs}});

    Resource* bv = bootVolume;
    if (!bv) bv = &storage_.createBootVolume(added, image->id, bootSize, nowMs, delayMs);
    storage_.attachBootVolume(added, *bv, nowMs, delayMs);
    network_.attachNewVnic(added, *subnet, vnicDetails ? *vnicDetails : JObject{}, true, nowMs, delayMs);
    return &added;
}

Resource& ComputeService::seedInstance(const std::string& compartmentId, const std::string& ad,
                                       const std::string& name, const std::string& shape, const Resource& image,
                                       const Resource& subnet, std::int64_t nowMs) {
    JObject body{{"compartmentId", compartmentId},
                 {"availabilityDomain", ad},
                 {"displayName", name},
                 {"shape", shape},
                 {"sourceDetails", JObject{{"sourceType", "image"}, {"imageId", image.id}}},
                 {"createVnicDetails", JObject{{"subnetId", subnet.id}}}};
    ApiResponse res;
    Resource* r = launch(subnet.region, nowMs, body, res, 0);
    if (!r) throw std::runtime_error("cannot seed instance " + name + ": " + res.body);
    return *r;
}

void ComputeService::launchInstance(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    Resource* inst = launch(req.region, req.nowMs, body, res, P());
    if (!inst) return;
    respondOne(res, *inst, req.nowMs);
    setWorkRequest(res, req.region);
}

void ComputeService::updateInstance(ApiRequest& req, ApiResponse& res, Resource& inst) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string s = stateOf(inst, req.nowMs);
    if (s == "TERMINATING" || s == "TERMINATED") return err::IncorrectState(res, "The instance is " + s + ".");
    CopyMembers(
        body, inst.doc.edit(),
        {"displayName", "metadata", "extendedMetadata", "freeformTags", "definedTags", "agentConfig", "faultDomain"});
    respondOne(res, inst, req.nowMs);
}

void ComputeService::instanceAction(ApiRequest& req, ApiResponse& res, Resource& inst) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    std::string action;
    if (!requireParam(req, res, "action", action)) return;
    std::transform(action.begin(), action.end(), action.begin(), [](unsigned char ch) { return std::toupper(ch); });
    const std::string s = stateOf(inst, req.nowMs);
    auto incorrect = [&] { err::IncorrectState(res, "Instance is in " + s + " state; cannot " + action + "."); };
    const std::int64_t now = req.nowMs;
    if (action == "START") {
        if (s == "STOPPED")
            store_.schedule(inst, now, {{"STARTING", 0}, {"RUNNING", P()}});
        else if (s != "RUNNING" && s != "STARTING")
            return incorrect();
    } else if (action == "STOP" || action == "SOFTSTOP") {
        if (s == "RUNNING")
            store_.schedule(inst, now, {{"STOPPING", 0}, {"STOPPED", P()}});
        else if (s != "STOPPED" && s != "STOPPING")
            return incorrect();
    } else if (action == "RESET" || action == "SOFTRESET" || action == "DIAGNOSTICREBOOT" ||
               action == "REBOOTMIGRATE") {
        if (s != "RUNNING") return incorrect();
        store_.schedule(inst, now, {{"STOPPING", 0}, {"STARTING", P() / 2}, {"RUNNING", P()}});
    } else if (action == "SENDDIAGNOSTICINTERRUPT") {
        if (s != "RUNNING") return incorrect();
    } else {
        return err::InvalidParameter(res, "Invalid action: " + req.param("action"));
    }
    respondOne(res, inst, now);
    setWorkRequest(res, req.region);
}

void ComputeService::terminateInstance(ApiRequest& req, ApiResponse& res, Resource& inst) {
    const std::string s = stateOf(inst, req.nowMs);
    if (s == "TERMINATED") return err::NotAuthorizedOrNotFound(res);
    if (s != "TERMINATING") {
        store_.schedule(inst, req.nowMs, {{"TERMINATING", 0}, {"TERMINATED", P()}}, world_.retentionMs);
        storage_.releaseInstance(inst, req.param("preserveBootVolume") == "true", req.nowMs);
        network_.detachAll(inst, req.nowMs);
    }
    res.noContent(204);
    setWorkRequest(res, req.region);
}

void ComputeService::initialCredentials(ApiRequest& req, ApiResponse& res, Resource& inst) {
    const std::string password = JStr(inst.doc, "_password");
    if (password.empty()) return err::NotAuthorizedOrNotFound(res);
    res.json(200, JObject{{"username", "opc"}, {"password", password}});
}

void ComputeService::listShapes(ApiRequest& req, ApiResponse& res) {
    std::string c;
    if (!requireCompartment(req, res, c)) return;
    PageWindow w;
    if (!ReadPageWindow(req, world_.pageSize, world_.maxPageSize, w, res)) return;
    std::vector<std::string> ads;
    if (req.hasParam("availabilityDomain")) {
        if (!world_.knownAvailabilityDomain(req.region, req.param("availabilityDomain")))
            return err::InvalidParameter(res, "Invalid availabilityDomain: " + req.param("availabilityDomain"));
        ads.push_back(req.param("availabilityDomain"));
    } else {
        // Without a domain the service lists the shapes of every domain in turn.
        ads = world_.availabilityDomains(req.region);
    }
    if (req.hasParam("imageId") && !find(req, req.param("imageId"), "image")) return err::NotAuthorizedOrNotFound(res);
    std::vector<const ShapeInfo*> all;
    for (size_t i = 0; i < ads.size(); ++i)
        for (const auto& s : Shapes())
            if (!req.hasParam("shape") || req.param("shape") == s.name) all.push_back(&s);
    JArray page;
    for (size_t i = w.offset; i < all.size() && i < w.offset + w.limit; ++i) page.push_back(ShapeJson(*all[i]));
    res.json(200, page);
    SetNextPage(res, w, all.size());
}

}  // namespace ocwemu
