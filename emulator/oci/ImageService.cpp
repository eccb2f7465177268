#include "oci/ImageService.h"

#include "oci/OciErrors.h"
#include "oci/ObjectStorageService.h"

namespace ocwemu {

static const std::string kV = "/20160918";

void ImageService::registerRoutes(Router& r) {
    auto bind = [this](void (ImageService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    r.add("GET", kV + "/images", bind(&ImageService::listImages));
    r.add("POST", kV + "/images", bind(&ImageService::createImage));
    r.add("GET", kV + "/images/{imageId}", getOne("imageId", "image"));
    r.add("PUT", kV + "/images/{imageId}", withResource("imageId", "image", bound(&ImageService::updateImage)));
    r.add("DELETE", kV + "/images/{imageId}", withResource("imageId", "image", bound(&ImageService::deleteImage)));
    r.add("POST", kV + "/images/{imageId}/actions/export",
          withResource("imageId", "image", bound(&ImageService::exportImage)));
}

Resource& ImageService::makeImage(const std::string& compartmentId, const std::string& region,
                                  const std::string& name, const std::string& os, const std::string& osVersion,
                                  const std::string& launchMode, std::int64_t sizeInMBs, std::int64_t nowMs,
                                  const std::vector<std::pair<std::string, std::int64_t>>& steps) {
    Resource img = newResource("image", "image", compartmentId, region, nowMs);
    if (compartmentId.empty()) img.doc.set("compartmentId", nullptr);
    img.doc.set("displayName", name);
    img.doc.set("operatingSystem", os);
    img.doc.set("operatingSystemVersion", osVersion);
    img.doc.set("createImageAllowed", true);
    img.doc.set("launchMode", launchMode);
    img.doc.set("baseImageId", nullptr);
    img.doc.set("sizeInMBs", sizeInMBs);
    img.doc.set("billableSizeInGBs", compartmentId.empty() ? JValue(nullptr) : JValue(sizeInMBs / 1024 + 1));
    img.doc.set("listingType", "NONE");
    img.doc.set("agentFeatures", nullptr);
    img.doc.set("launchOptions", JObject{{"bootVolumeType", "PARAVIRTUALIZED"},
                                         {"firmware", "UEFI_64"},
                                         {"networkType", "PARAVIRTUALIZED"},
                                         {"remoteDataVolumeType", "PARAVIRTUALIZED"},
                                         {"isPvEncryptionInTransitEnabled", false},
                                         {"isConsistentVolumeNamingEnabled", true}});
    img.doc.set("freeformTags", JObject{});
    img.doc.set("definedTags", JObject{});
    return addResource(std::move(img), nowMs, steps);
}

Resource& ImageService::seedPlatformImage(const std::string& name, const std::string& os,
                                          const std::string& osVersion, const std::string& launchMode,
                                          std::int64_t nowMs) {
    return makeImage("", "", name, os, osVersion, launchMode, 47694, nowMs, {{"AVAILABLE", 0}});
}

void ImageService::listImages(ApiRequest& req, ApiResponse& res) {
    std::string c;
    if (!requireCompartment(req, res, c)) return;
    // Platform images come first, then the compartment's own.
    std::vector<Resource*> items = listIn(req, "image", "");
    items.erase(std::remove_if(items.begin(), items.end(), [](Resource* r) { return !r->compartmentId.empty(); }),
                items.end());
    for (Resource* r : listIn(req, "image", c)) items.push_back(r);
    KeepMatching(req, items, {"displayName", "operatingSystem", "operatingSystemVersion"});
    respondList(req, res, std::move(items));
}

void ImageService::createImage(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string c = JStr(body, "compartmentId");
    if (c.empty()) return err::MissingParameter(res, "compartmentId");
    if (!compartmentExists(c, req.nowMs)) return err::RelatedNotFound(res, "compartment " + c);
    std::string name = JStr(body, "displayName");
    if (name.empty()) name = "image" + std::to_string(req.nowMs % 100000000);
    const std::string instanceId = JStr(body, "instanceId");
    const JObject* src = JObj(body, "imageSourceDetails");
    if (!instanceId.empty()) {
        Resource* inst = find(req, instanceId, "instance");
        if (!inst) return err::RelatedNotFound(res, "instance " + instanceId);
        const std::string s = stateOf(*inst, req.nowMs);
        if (s != "RUNNING" && s != "STOPPED")
            return err::IncorrectState(res, "An image can be captured from a RUNNING or STOPPED instance only.");
        Resource* base = store_.get(JStr(inst->doc, "imageId"), req.nowMs, "image");
        Resource& img = makeImage(c, req.region, name, base ? JStr(base->doc, "operatingSystem") : "Custom",
                                  base ? JStr(base->doc, "operatingSystemVersion") : "", JStr(inst->doc, "launchMode"),
                                  47694, req.nowMs, {{"PROVISIONING", 0}, {"AVAILABLE", P()}});
        img.doc.set("baseImageId", base ? JValue(base->id) : JValue(nullptr));
        store_.schedule(*inst, req.nowMs, {{"CREATING_IMAGE", 0}, {s, P()}});
        respondOne(res, img, req.nowMs);
        setWorkRequest(res, req.region);
        return;
    }
    if (!src) return err::MissingParameter(res, "instanceId or imageSourceDetails");
    const std::string type = JStr(*src, "sourceType");
    std::string ns, bucket, object;
    if (type == "objectStorageTuple") {
        ns = JStr(*src, "namespaceName");
        bucket = JStr(*src, "bucketName");
        object = JStr(*src, "objectName");
        if (ns.empty() || bucket.empty() || object.empty())
            return err::MissingParameter(res, "namespaceName, bucketName and objectName");
    } else if (type == "objectStorageUri") {
        const std::string uri = JStr(*src, "sourceUri");
        if (uri.empty()) return err::MissingParameter(res, "sourceUri");
        ParseObjectUri(uri, ns, bucket, object);
    } else {
        return err::InvalidParameter(res, "Invalid imageSourceDetails sourceType: " + type);
    }
    std::int64_t sizeMb = 47694;
    if (!object.empty()) {
        Resource* obj = store_.get(ObjectKey(ns, bucket, object), req.nowMs, "object");
        if (!obj) return err::InvalidParameter(res, "The object " + object + " was not found in bucket " + bucket + ".");
        sizeMb = std::max<std::int64_t>(1, JInt(obj->doc, "size").value_or(0) / (1024 * 1024));
    }
    std::string launchMode = JStr(body, "launchMode");
    if (launchMode.empty()) launchMode = JStr(*src, "sourceImageType") == "VMDK" ? "EMULATED" : "PARAVIRTUALIZED";
    std::string os = JStr(*src, "operatingSystem");
    Resource& img = makeImage(c, req.region, name, os.empty() ? "Custom" : os, JStr(*src, "operatingSystemVersion"),
                              launchMode, sizeMb, req.nowMs, {{"IMPORTING", 0}, {"AVAILABLE", P()}});
    CopyMembers(body, img.doc.edit(), {"freeformTags", "definedTags"});
    respondOne(res, img, req.nowMs);
    setWorkRequest(res, req.region);
}

void ImageService::updateImage(ApiRequest& req, ApiResponse& res, Resource& img) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (img.compartmentId.empty()) return err::NotAuthorizedOrNotFound(res);  // platform images belong to nobody
    CopyMembers(body, img.doc.edit(),
                {"displayName", "operatingSystem", "operatingSystemVersion", "freeformTags", "definedTags"});
    respondOne(res, img, req.nowMs);
}

void ImageService::deleteImage(ApiRequest& req, ApiResponse& res, Resource& img) {
    if (img.compartmentId.empty()) return err::NotAuthorizedOrNotFound(res);
    const std::string s = stateOf(img, req.nowMs);
    if (s == "DELETED") return err::NotAuthorizedOrNotFound(res);
    if (s != "AVAILABLE" && s != "DISABLED") return err::IncorrectState(res, "The image is " + s + ".");
    store_.schedule(img, req.nowMs, {{"DELETED", 0}}, world_.retentionMs);
    res.noContent(204);
}

void ImageService::exportImage(ApiRequest& req, ApiResponse& res, Resource& img) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (stateOf(img, req.nowMs) != "AVAILABLE") return err::IncorrectState(res, "The image is not AVAILABLE.");
    const std::string type = JStr(body, "destinationType");
    if (type != "objectStorageTuple" && type != "objectStorageUri")
        return err::InvalidParameter(res, "Invalid destinationType: " + type);
    store_.schedule(img, req.nowMs, {{"EXPORTING", 0}, {"AVAILABLE", P()}});
    respondOne(res, img, req.nowMs);
    setWorkRequest(res, req.region);
}

}  // namespace ocwemu
