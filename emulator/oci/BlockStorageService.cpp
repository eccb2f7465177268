#include "oci/BlockStorageService.h"

#include "oci/OciErrors.h"
#include "common/Ids.h"
#include "common/TimeUtil.h"

namespace ocwemu {

static const std::string kV = "/20160918";

static bool Detached(const std::string& s) { return s == "DETACHED" || s == "DETACHING"; }

void BlockStorageService::registerRoutes(Router& r) {
    auto bind = [this](void (BlockStorageService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    auto bindB = [this](void (BlockStorageService::*fn)(ApiRequest&, ApiResponse&, bool), bool boot) {
        return [this, fn, boot](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s, boot); };
    };
    r.add("GET", kV + "/volumes",
          listOf({"volume", {"availabilityDomain", "displayName", "volumeGroupId"}}, Compartment::Optional));
    r.add("POST", kV + "/volumes", bind(&BlockStorageService::createVolume));
    r.add("GET", kV + "/volumes/{volumeId}", getOne("volumeId", "volume"));
    r.add("PUT", kV + "/volumes/{volumeId}",
          withResource("volumeId", "volume", bound(&BlockStorageService::updateVolume)));
    r.add("DELETE", kV + "/volumes/{volumeId}",
          withResource("volumeId", "volume", bound(&BlockStorageService::deleteAnyVolume)));
    r.add("GET", kV + "/bootVolumes",
          listOf({"bootvolume", {"availabilityDomain", "volumeGroupId"}}, Compartment::Optional));
    r.add("POST", kV + "/bootVolumes", bind(&BlockStorageService::createBootVolumeApi));
    r.add("GET", kV + "/bootVolumes/{bootVolumeId}", getOne("bootVolumeId", "bootvolume"));
    r.add("DELETE", kV + "/bootVolumes/{bootVolumeId}",
          withResource("bootVolumeId", "bootvolume", bound(&BlockStorageService::deleteAnyVolume)));
    r.add("GET", kV + "/volumeAttachments",
          listOf({"volumeattachment", {"availabilityDomain", "instanceId", "volumeId"}}));
    r.add("POST", kV + "/volumeAttachments", bind(&BlockStorageService::attachVolume));
    r.add("GET", kV + "/volumeAttachments/{volumeAttachmentId}", getOne("volumeAttachmentId", "volumeattachment"));
    r.add("DELETE", kV + "/volumeAttachments/{volumeAttachmentId}",
          withResource("volumeAttachmentId", "volumeattachment", bound(&BlockStorageService::detachVolume)));
    r.add("GET", kV + "/bootVolumeAttachments",
          listOf({"bootvolumeattachment", {"availabilityDomain", "instanceId", "bootVolumeId"}}, Compartment::Required,
                 {"availabilityDomain"}));
    r.add("POST", kV + "/bootVolumeAttachments", bind(&BlockStorageService::attachBootVolumeApi));
    r.add("GET", kV + "/bootVolumeAttachments/{bootVolumeAttachmentId}",
          getOne("bootVolumeAttachmentId", "bootvolumeattachment"));
    r.add(
        "DELETE", kV + "/bootVolumeAttachments/{bootVolumeAttachmentId}",
        withResource("bootVolumeAttachmentId", "bootvolumeattachment", bound(&BlockStorageService::detachBootVolume)));
    for (bool boot : {false, true}) {
        const std::string base = kV + (boot ? "/bootVolumeBackups" : "/volumeBackups");
        const char* idp = boot ? "bootVolumeBackupId" : "volumeBackupId";
        const char* kind = boot ? "bootvolumebackup" : "volumebackup";
        r.add("GET", base,
              listOf({kind, boot ? std::vector<std::string>{"bootVolumeId", "displayName", "sourceBootVolumeBackupId"}
                                 : std::vector<std::string>{"volumeId", "displayName", "sourceVolumeBackupId"}}));
        r.add("POST", base, bindB(&BlockStorageService::createBackup, boot));
        r.add("GET", base + "/{" + idp + "}", getOne(idp, kind));
        r.add("DELETE", base + "/{" + idp + "}", withResource(idp, kind, bound(&BlockStorageService::deleteBackup)));
    }
}

// --- helpers ------------------------------------------------------------------

Resource& BlockStorageService::makeVolume(bool boot, const std::string& compartmentId, const std::string& region,
                                          const std::string& ad, const std::string& name, std::int64_t sizeInGBs,
                                          std::int64_t nowMs,
                                          const std::vector<std::pair<std::string, std::int64_t>>& steps) {
    Resource v = newResource(boot ? "bootvolume" : "volume", boot ? "bootvolume" : "volume", compartmentId, region,
                             nowMs);
    v.doc.set("availabilityDomain", ad);
    v.doc.set("displayName", name);
    v.doc.set("sizeInGBs", sizeInGBs);
    v.doc.set("sizeInMBs", sizeInGBs * 1024);
    v.doc.set("vpusPerGB", 10);
    v.doc.set("isAutoTuneEnabled", false);
    v.doc.set("kmsKeyId", nullptr);
    v.doc.set("volumeGroupId", nullptr);
    v.doc.set("sourceDetails", nullptr);
    v.doc.set("freeformTags", JObject{});
    v.doc.set("definedTags", JObject{});
    v.doc.set("systemTags", JObject{});
    return addResource(std::move(v), nowMs, steps);
}

bool BlockStorageService::volumeInUse(const Resource& volume, std::int64_t nowMs) const {
    for (Resource* a : store_.list("volumeattachment", "", nowMs))
        if (JStr(a->doc, "volumeId") == volume.id && !Detached(stateOf(*a, nowMs))) return true;
    return false;
}

bool BlockStorageService::bootVolumeInUse(const Resource& bootVolume, std::int64_t nowMs) const {
    for (Resource* a : store_.list("bootvolumeattachment", "", nowMs))
        if (JStr(a->doc, "bootVolumeId") == bootVolume.id && !Detached(stateOf(*a, nowMs))) return true;
    return false;
}

int BlockStorageService::activeAttachments(const Resource& instance, std::int64_t nowMs) const {
    int n = 0;
    for (Resource* a : store_.list("volumeattachment", instance.compartmentId, nowMs))
        if (JStr(a->doc, "instanceId") == instance.id && !Detached(stateOf(*a, nowMs))) ++n;
    return n;
}

Resource& BlockStorageService::createBootVolume(const Resource& instance, const std::string& imageId,
                                                std::int64_t sizeInGBs, std::int64_t nowMs, std::int64_t delayMs) {
    Resource& bv = makeVolume(true, instance.compartmentId, instance.region, JStr(instance.doc, "availabilityDomain"),
                              JStr(instance.doc, "displayName") + " (Boot Volume)", sizeInGBs, nowMs,
                              {{"PROVISIONING", 0}, {"AVAILABLE", delayMs}});
    bv.doc.set("imageId", imageId);
    return bv;
}

Resource& BlockStorageService::attachBootVolume(const Resource& instance, const Resource& bootVolume,
                                                std::int64_t nowMs, std::int64_t delayMs) {
    Resource a = newResource("bootvolumeattachment", "bootvolumeattachment", instance.compartmentId, instance.region, nowMs);
    a.doc.set("availabilityDomain", JStr(instance.doc, "availabilityDomain"));
    a.doc.set("bootVolumeId", bootVolume.id);
    a.doc.set("instanceId", instance.id);
    a.doc.set("displayName", "Remote boot attachment for instance");
    a.doc.set("isPvEncryptionInTransitEnabled", false);
    a.doc.set("encryptionInTransitType", "NONE");
    return addResource(std::move(a), nowMs, {{"ATTACHING", 0}, {"ATTACHED", delayMs}});
}

Resource& BlockStorageService::makeVolumeAttachment(const Resource& instance, const Resource& volume,
                                                    const std::string& type, const JObject& body,
                                                    std::int64_t nowMs, std::int64_t delayMs) {
    int index = 0;
    for (Resource* a : store_.list("volumeattachment", instance.compartmentId, nowMs))
        if (JStr(a->doc, "instanceId") == instance.id) ++index;
    Resource a = newResource("volumeattachment", "volumeattachment", instance.compartmentId, instance.region, nowMs);
    a.doc.set("attachmentType", type);
    a.doc.set("availabilityDomain", JStr(instance.doc, "availabilityDomain"));
    a.doc.set("instanceId", instance.id);
    a.doc.set("volumeId", volume.id);
    a.doc.set("displayName", JHas(body, "displayName") ? JStr(body, "displayName") : "volumeattachment" + std::to_string(index + 1));
    std::string device = JStr(body, "device");
    if (device.empty()) device = std::string("/dev/oracleoci/oraclevd") + static_cast<char>('b' + index % 25);
    a.doc.set("device", device);
    a.doc.set("isReadOnly", JBool(body, "isReadOnly").value_or(false));
    a.doc.set("isShareable", JBool(body, "isShareable").value_or(false));
    a.doc.set("isPvEncryptionInTransitEnabled", JBool(body, "isPvEncryptionInTransitEnabled").value_or(false));
    a.doc.set("isMultipath", false);
    a.doc.set("isVolumeCreatedDuringLaunch", false);
    if (type == "iscsi") {
        a.doc.set("iscsiLoginState", "UNKNOWN");
        a.doc.set("isAgentAutoIscsiLoginEnabled", JBool(body, "isAgentAutoIscsiLoginEnabled").value_or(false));
        a.doc.set("_ipv4", "169.254.2." + std::to_string(2 + index % 250));
        a.doc.set("_iqn", "iqn.2015-12.com.oracleiaas:" + RandomUuid());
        if (JBool(body, "useChap").value_or(false)) {
            a.doc.set("chapUsername", "ocid1.volume.chap");
            a.doc.set("chapSecret", RandomAlnum(16));
        }
    }
    return addResource(std::move(a), nowMs, {{"ATTACHING", 0}, {"ATTACHED", delayMs}});
}

Resource& BlockStorageService::makeBackup(bool boot, const Resource& volume, const std::string& name,
                                          const std::string& type, std::int64_t nowMs,
                                          const std::vector<std::pair<std::string, std::int64_t>>& steps) {
    Resource b = newResource(boot ? "bootvolumebackup" : "volumebackup", boot ? "bootvolumebackup" : "volumebackup",
                             volume.compartmentId, volume.region, nowMs);
    const std::int64_t size = JInt(volume.doc, "sizeInGBs").value_or(50);
    const std::int64_t unique = type == "FULL" ? size : std::max<std::int64_t>(1, size / 10);
    b.doc.set("displayName", name);
    b.doc.set(boot ? "bootVolumeId" : "volumeId", volume.id);
    b.doc.set("type", type);
    b.doc.set("sourceType", "MANUAL");
    b.doc.set("sizeInGBs", size);
    b.doc.set("uniqueSizeInGBs", unique);
    if (!boot) {
        b.doc.set("sizeInMBs", size * 1024);
        b.doc.set("uniqueSizeInMbs", unique * 1024);
    } else {
        b.doc.set("imageId", JStr(volume.doc, "imageId"));
    }
    b.doc.set("timeRequestReceived", Rfc3339(nowMs));
    b.doc.set("expirationTime", nullptr);
    b.doc.set("kmsKeyId", nullptr);
    b.doc.set("freeformTags", JObject{});
    b.doc.set("definedTags", JObject{});
    b.doc.set("systemTags", JObject{});
    b.doc.set("_availabilityDomain", JStr(volume.doc, "availabilityDomain"));
    return addResource(std::move(b), nowMs, steps);
}

void BlockStorageService::releaseInstance(const Resource& instance, bool preserveBootVolume, std::int64_t nowMs) {
    for (Resource* a : store_.list("volumeattachment", instance.compartmentId, nowMs))
        if (JStr(a->doc, "instanceId") == instance.id && !Detached(stateOf(*a, nowMs)))
            store_.schedule(*a, nowMs, {{"DETACHING", 0}, {"DETACHED", P()}}, world_.retentionMs);
    for (Resource* a : store_.list("bootvolumeattachment", instance.compartmentId, nowMs)) {
        if (JStr(a->doc, "instanceId") != instance.id || Detached(stateOf(*a, nowMs))) continue;
        store_.schedule(*a, nowMs, {{"DETACHING", 0}, {"DETACHED", P()}}, world_.retentionMs);
        if (preserveBootVolume) continue;
        if (Resource* bv = store_.get(JStr(a->doc, "bootVolumeId"), nowMs, "bootvolume"))
            store_.schedule(*bv, nowMs, {{"TERMINATING", 0}, {"TERMINATED", P()}}, world_.retentionMs);
    }
}

Resource& BlockStorageService::seedVolume(const std::string& compartmentId, const std::string& region,
                                          const std::string& ad, const std::string& name, std::int64_t sizeInGBs,
                                          std::int64_t nowMs) {
    return makeVolume(false, compartmentId, region, ad, name, sizeInGBs, nowMs, {{"AVAILABLE", 0}});
}

Resource& BlockStorageService::seedVolumeAttachment(const Resource& instance, const Resource& volume,
                                                    std::int64_t nowMs) {
    return makeVolumeAttachment(instance, volume, "iscsi", JObject{}, nowMs, 0);
}

Resource& BlockStorageService::seedVolumeBackup(const Resource& volume, const std::string& name, std::int64_t nowMs) {
    return makeBackup(false, volume, name, "FULL", nowMs, {{"AVAILABLE", 0}});
}

// --- volumes and boot volumes ------------------------------------------------

void BlockStorageService::createVolume(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string c = JStr(body, "compartmentId");
    std::string ad = JStr(body, "availabilityDomain");
    if (c.empty()) return err::MissingParameter(res, "compartmentId");
    if (!compartmentExists(c, req.nowMs)) return err::RelatedNotFound(res, "compartment " + c);
    std::string sourceType, sourceId;
    if (const JObject* src = JObj(body, "sourceDetails")) {
        sourceType = JStr(*src, "type");
        sourceId = JStr(*src, "id");
        if (sourceType != "volumeBackup" && sourceType != "volume")
            return err::InvalidParameter(res, "Unsupported sourceDetails type: " + sourceType);
        if (sourceId.empty()) return err::MissingParameter(res, "sourceDetails.id");
    } else if (JHas(body, "volumeBackupId")) {
        sourceType = "volumeBackup";
        sourceId = JStr(body, "volumeBackupId");
    }
    std::int64_t size = 1024;
    Resource* source = nullptr;
    if (!sourceType.empty()) {
        source = find(req, sourceId, sourceType == "volume" ? "volume" : "volumebackup");
        if (!source) return err::RelatedNotFound(res, sourceType + " " + sourceId);
        if (stateOf(*source, req.nowMs) != "AVAILABLE")
            return err::IncorrectState(res, "The source " + sourceType + " is not AVAILABLE.");
        size = JInt(source->doc, "sizeInGBs").value_or(size);
        if (ad.empty()) ad = JStr(source->doc, sourceType == "volume" ? "availabilityDomain" : "_availabilityDomain");
    }
    if (ad.empty()) return err::MissingParameter(res, "availabilityDomain");
    if (!world_.knownAvailabilityDomain(req.region, ad))
        return err::InvalidParameter(res, "Invalid availabilityDomain: " + ad);
    if (auto s = JInt(body, "sizeInGBs")) {
        size = *s;
    } else if (auto mb = JInt(body, "sizeInMBs")) {
        size = *mb / 1024;
    }
    if (size < 50 || size > 32768) return err::InvalidParameter(res, "sizeInGBs must be between 50 and 32768");
    std::string name = JStr(body, "displayName");
    if (name.empty()) name = "volume" + std::to_string(req.nowMs % 1000000);
    const bool restoring = sourceType == "volumeBackup";
    Resource& v = makeVolume(false, c, req.region, ad, name, size, req.nowMs,
                             {{restoring ? "RESTORING" : "PROVISIONING", 0}, {"AVAILABLE", P()}});
    if (source) v.doc.set("sourceDetails", JObject{{"type", sourceType}, {"id", sourceId}});
    if (auto vpus = JInt(body, "vpusPerGB")) v.doc.set("vpusPerGB", *vpus);
    CopyMembers(body, v.doc.edit(), {"freeformTags", "definedTags", "kmsKeyId"});
    respondOne(res, v, req.nowMs);
}

void BlockStorageService::updateVolume(ApiRequest& req, ApiResponse& res, Resource& v) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    if (stateOf(v, req.nowMs) != "AVAILABLE") return err::IncorrectState(res, "The volume is not AVAILABLE.");
    if (auto s = JInt(body, "sizeInGBs")) {
        if (*s < JInt(v.doc, "sizeInGBs").value_or(0)) return err::InvalidParameter(res, "A volume cannot shrink.");
        v.doc.set("sizeInGBs", *s);
        v.doc.set("sizeInMBs", *s * 1024);
    }
    CopyMembers(body, v.doc.edit(), {"displayName", "freeformTags", "definedTags", "vpusPerGB"});
    respondOne(res, v, req.nowMs);
}

void BlockStorageService::createBootVolumeApi(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string c = JStr(body, "compartmentId");
    if (c.empty()) return err::MissingParameter(res, "compartmentId");
    if (!compartmentExists(c, req.nowMs)) return err::RelatedNotFound(res, "compartment " + c);
    const JObject* src = JObj(body, "sourceDetails");
    if (!src) return err::MissingParameter(res, "sourceDetails");
    const std::string type = JStr(*src, "type"), id = JStr(*src, "id");
    if (type != "bootVolumeBackup" && type != "bootVolume")
        return err::InvalidParameter(res, "Unsupported sourceDetails type: " + type);
    Resource* source = find(req, id, type == "bootVolume" ? "bootvolume" : "bootvolumebackup");
    if (!source) return err::RelatedNotFound(res, type + " " + id);
    if (stateOf(*source, req.nowMs) != "AVAILABLE")
        return err::IncorrectState(res, "The source " + type + " is not AVAILABLE.");
    std::string ad = JStr(body, "availabilityDomain");
    if (ad.empty()) ad = JStr(source->doc, type == "bootVolume" ? "availabilityDomain" : "_availabilityDomain");
    if (!world_.knownAvailabilityDomain(req.region, ad))
        return err::InvalidParameter(res, "Invalid availabilityDomain: " + ad);
    std::int64_t size = JInt(body, "sizeInGBs").value_or(JInt(source->doc, "sizeInGBs").value_or(50));
    std::string name = JStr(body, "displayName");
    if (name.empty()) name = "bootvolume" + std::to_string(req.nowMs % 1000000);
    Resource& v = makeVolume(true, c, req.region, ad, name, size, req.nowMs,
                             {{type == "bootVolumeBackup" ? "RESTORING" : "PROVISIONING", 0}, {"AVAILABLE", P()}});
    v.doc.set("imageId", JStr(source->doc, "imageId"));
    v.doc.set("sourceDetails", JObject{{"type", type}, {"id", id}});
    CopyMembers(body, v.doc.edit(), {"freeformTags", "definedTags", "kmsKeyId"});
    respondOne(res, v, req.nowMs);
}

void BlockStorageService::deleteAnyVolume(ApiRequest& req, ApiResponse& res, Resource& v) {
    const bool boot = v.kind == "bootvolume";
    const std::string s = stateOf(v, req.nowMs);
    if (s == "TERMINATED") return err::NotAuthorizedOrNotFound(res);
    if (s == "TERMINATING") return res.noContent(204);
    if (s == "PROVISIONING" || s == "RESTORING")
        return err::IncorrectState(res, "The volume is still being provisioned.");
    if (boot ? bootVolumeInUse(v, req.nowMs) : volumeInUse(v, req.nowMs))
        return err::Conflict(res, "The volume is attached to an instance and cannot be deleted.");
    store_.schedule(v, req.nowMs, {{"TERMINATING", 0}, {"TERMINATED", P()}}, world_.retentionMs);
    res.noContent(204);
}

// --- attachments ---------------------------------------------------------------

void BlockStorageService::attachVolume(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    std::string type = JStr(body, "type");
    const std::string instanceId = JStr(body, "instanceId"), volumeId = JStr(body, "volumeId");
    if (type.empty()) return err::MissingParameter(res, "type");
    if (type == "service_determined") type = "paravirtualized";
    if (type != "iscsi" && type != "paravirtualized" && type != "emulated")
        return err::InvalidParameter(res, "Invalid attachment type: " + type);
    if (instanceId.empty()) return err::MissingParameter(res, "instanceId");
    if (volumeId.empty()) return err::MissingParameter(res, "volumeId");
    Resource* inst = find(req, instanceId, "instance");
    if (!inst) return err::NotAuthorizedOrNotFound(res);
    Resource* vol = find(req, volumeId, "volume");
    if (!vol) return err::NotAuthorizedOrNotFound(res);
    const std::string is = stateOf(*inst, req.nowMs);
    if (is != "RUNNING" && is != "STOPPED")
        return err::IncorrectState(res, "The instance is " + is + "; volumes attach to RUNNING or STOPPED instances.");
    if (stateOf(*vol, req.nowMs) != "AVAILABLE") return err::IncorrectState(res, "The volume is not AVAILABLE.");
    if (JStr(vol->doc, "availabilityDomain") != JStr(inst->doc, "availabilityDomain"))
        return err::InvalidParameter(res, "The volume and the instance are in different availability domains.");
    if (volumeInUse(*vol, req.nowMs) && !JBool(body, "isShareable").value_or(false))
        return err::Conflict(res, "The volume is already attached.");
    if (activeAttachments(*inst, req.nowMs) >= world_.attachmentsPerInstance.load())
        return err::LimitExceeded(res, "The instance has reached its limit of " +
                                           std::to_string(world_.attachmentsPerInstance.load()) +
                                           " block volume attachments.");
    Resource& a = makeVolumeAttachment(*inst, *vol, type, body, req.nowMs, P());
    respondOne(res, a, req.nowMs);
    setWorkRequest(res, req.region);
}

void BlockStorageService::detachVolume(ApiRequest& req, ApiResponse& res, Resource& a) {
    const std::string s = stateOf(a, req.nowMs);
    if (s == "DETACHED") return err::NotAuthorizedOrNotFound(res);
    if (s == "DETACHING") return res.noContent(204);
    if (s == "ATTACHING") return err::IncorrectState(res, "The volume is still attaching.");
    store_.schedule(a, req.nowMs, {{"DETACHING", 0}, {"DETACHED", P()}}, world_.retentionMs);
    res.noContent(204);
    setWorkRequest(res, req.region);
}

void BlockStorageService::attachBootVolumeApi(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string instanceId = JStr(body, "instanceId"), bvId = JStr(body, "bootVolumeId");
    if (instanceId.empty()) return err::MissingParameter(res, "instanceId");
    if (bvId.empty()) return err::MissingParameter(res, "bootVolumeId");
    Resource* inst = find(req, instanceId, "instance");
    Resource* bv = find(req, bvId, "bootvolume");
    if (!inst || !bv) return err::NotAuthorizedOrNotFound(res);
    if (stateOf(*inst, req.nowMs) != "STOPPED")
        return err::IncorrectState(res, "A boot volume can only be attached to a STOPPED instance.");
    if (stateOf(*bv, req.nowMs) != "AVAILABLE" || bootVolumeInUse(*bv, req.nowMs))
        return err::IncorrectState(res, "The boot volume is not AVAILABLE or is attached.");
    for (Resource* a : store_.list("bootvolumeattachment", inst->compartmentId, req.nowMs))
        if (JStr(a->doc, "instanceId") == inst->id && !Detached(stateOf(*a, req.nowMs)))
            return err::Conflict(res, "The instance already has a boot volume.");
    Resource& a = attachBootVolume(*inst, *bv, req.nowMs, P());
    if (JHas(body, "displayName")) a.doc.set("displayName", JStr(body, "displayName"));
    respondOne(res, a, req.nowMs);
}

void BlockStorageService::detachBootVolume(ApiRequest& req, ApiResponse& res, Resource& a) {
    const std::string s = stateOf(a, req.nowMs);
    if (s == "DETACHED") return err::NotAuthorizedOrNotFound(res);
    if (s == "DETACHING") return res.noContent(204);
    Resource* inst = store_.get(JStr(a.doc, "instanceId"), req.nowMs, "instance");
    if (inst && stateOf(*inst, req.nowMs) != "STOPPED" && stateOf(*inst, req.nowMs) != "TERMINATED")
        return err::IncorrectState(res, "The instance must be STOPPED to detach its boot volume.");
    store_.schedule(a, req.nowMs, {{"DETACHING", 0}, {"DETACHED", P()}}, world_.retentionMs);
    res.noContent(204);
}

// --- backups -------------------------------------------------------------------

void BlockStorageService::createBackup(ApiRequest& req, ApiResponse& res, bool boot) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const char* idKey = boot ? "bootVolumeId" : "volumeId";
    const std::string volumeId = JStr(body, idKey);
    if (volumeId.empty()) return err::MissingParameter(res, idKey);
    Resource* v = find(req, volumeId, boot ? "bootvolume" : "volume");
    if (!v) return err::NotAuthorizedOrNotFound(res);
    if (stateOf(*v, req.nowMs) != "AVAILABLE") return err::IncorrectState(res, "The volume is not AVAILABLE.");
    std::string type = JStr(body, "type");
    if (type.empty()) type = "INCREMENTAL";
    if (type != "FULL" && type != "INCREMENTAL") return err::InvalidParameter(res, "Invalid backup type: " + type);
    std::string name = JStr(body, "displayName");
    if (name.empty()) name = JStr(v->doc, "displayName") + " backup";
    Resource& b = makeBackup(boot, *v, name, type, req.nowMs,
                             {{"REQUEST_RECEIVED", 0}, {"CREATING", P() / 3}, {"AVAILABLE", P()}});
    CopyMembers(body, b.doc.edit(), {"freeformTags", "definedTags", "kmsKeyId"});
    respondOne(res, b, req.nowMs);
}

void BlockStorageService::deleteBackup(ApiRequest& req, ApiResponse& res, Resource& b) {
    const std::string s = stateOf(b, req.nowMs);
    if (s == "TERMINATED") return err::NotAuthorizedOrNotFound(res);
    if (s == "TERMINATING") return res.noContent(204);
    if (s != "AVAILABLE" && s != "FAULTY") return err::IncorrectState(res, "The backup is still being created.");
    store_.schedule(b, req.nowMs, {{"TERMINATING", 0}, {"TERMINATED", P()}}, world_.retentionMs);
    res.noContent(204);
}

}  // namespace ocwemu
