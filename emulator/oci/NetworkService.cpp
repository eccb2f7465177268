#include "oci/NetworkService.h"

#include "oci/OciErrors.h"
#include "common/Ids.h"

#include <cstdio>
#include <random>

namespace ocwemu {

static const std::string kV = "/20160918";

void NetworkService::registerRoutes(Router& r) {
    auto bind = [this](void (NetworkService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    r.add("GET", kV + "/vcns", listOf({"vcn", {"displayName"}}));
    r.add("POST", kV + "/vcns", bind(&NetworkService::createVcn));
    r.add("GET", kV + "/vcns/{vcnId}", getOne("vcnId", "vcn"));
    r.add("DELETE", kV + "/vcns/{vcnId}", withResource("vcnId", "vcn", bound(&NetworkService::deleteVcn)));
    r.add("GET", kV + "/subnets", listOf({"subnet", {"vcnId", "displayName"}}));
    r.add("POST", kV + "/subnets", bind(&NetworkService::createSubnet));
    r.add("GET", kV + "/subnets/{subnetId}", getOne("subnetId", "subnet"));
    r.add("DELETE", kV + "/subnets/{subnetId}",
          withResource("subnetId", "subnet", bound(&NetworkService::deleteSubnet)));
    r.add("GET", kV + "/vnics/{vnicId}", getOne("vnicId", "vnic"));
    r.add("GET", kV + "/vnicAttachments", listOf({"vnicattachment", {"instanceId", "vnicId", "availabilityDomain"}}));
    r.add("POST", kV + "/vnicAttachments", bind(&NetworkService::attachVnic));
    r.add("GET", kV + "/vnicAttachments/{vnicAttachmentId}", getOne("vnicAttachmentId", "vnicattachment"));
    r.add("DELETE", kV + "/vnicAttachments/{vnicAttachmentId}",
          withResource("vnicAttachmentId", "vnicattachment", bound(&NetworkService::detachVnic)));
}

Resource& NetworkService::makeVcn(const std::string& compartmentId, const std::string& region,
                                  const std::string& name, const std::string& cidr, std::int64_t nowMs,
                                  std::int64_t delayMs) {
    Resource v = newResource("vcn", "vcn", compartmentId, region, nowMs);
    v.doc.set("displayName", name);
    v.doc.set("cidrBlock", cidr);
    v.doc.set("cidrBlocks", JArray{JValue(cidr)});
    std::string label;
    for (char c : name)
        if (std::isalnum(static_cast<unsigned char>(c)) && label.size() < 15)
            label += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    v.doc.set("dnsLabel", label.empty() ? "vcn" : label);
    v.doc.set("vcnDomainName", JStr(v.doc, "dnsLabel") + ".oraclevcn.com");
    v.doc.set("defaultRouteTableId", MakeOcid("routetable", world_.ocidRegion(region)));
    v.doc.set("defaultSecurityListId", MakeOcid("securitylist", world_.ocidRegion(region)));
    v.doc.set("defaultDhcpOptionsId", MakeOcid("dhcpoptions", world_.ocidRegion(region)));
    v.doc.set("freeformTags", JObject{});
    v.doc.set("definedTags", JObject{});
    return addResource(std::move(v), nowMs, {{"PROVISIONING", 0}, {"AVAILABLE", delayMs}});
}

Resource& NetworkService::makeSubnet(const Resource& vcn, const std::string& name, const std::string& cidr,
                                     const std::string& ad, bool prohibitPublicIp, std::int64_t nowMs,
                                     std::int64_t delayMs) {
    Resource s = newResource("subnet", "subnet", vcn.compartmentId, vcn.region, nowMs);
    s.doc.set("vcnId", vcn.id);
    s.doc.set("displayName", name);
    s.doc.set("cidrBlock", cidr);
    s.doc.set("availabilityDomain", ad.empty() ? JValue(nullptr) : JValue(ad));
    std::string label;
    for (char c : name)
        if (std::isalnum(static_cast<unsigned char>(c)) && label.size() < 15)
            label += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    s.doc.set("dnsLabel", label.empty() ? "subnet" : label);
    s.doc.set("subnetDomainName", JStr(s.doc, "dnsLabel") + "." + JStr(vcn.doc, "vcnDomainName"));
    s.doc.set("prohibitPublicIpOnVnic", prohibitPublicIp);
    s.doc.set("routeTableId", JStr(vcn.doc, "defaultRouteTableId"));
    s.doc.set("securityListIds", JArray{JValue(JStr(vcn.doc, "defaultSecurityListId"))});
    s.doc.set("dhcpOptionsId", JStr(vcn.doc, "defaultDhcpOptionsId"));
    // "10.0.1.0/24" -> router at .1, VNICs from .2 on.
    std::string base = cidr.substr(0, cidr.rfind('.'));
    s.doc.set("virtualRouterIp", base + ".1");
    s.doc.set("virtualRouterMac", "00:00:17:00:00:01");
    s.doc.set("_ipBase", base);
    s.doc.set("_nextIp", 2);
    s.doc.set("freeformTags", JObject{});
    s.doc.set("definedTags", JObject{});
    return addResource(std::move(s), nowMs, {{"PROVISIONING", 0}, {"AVAILABLE", delayMs}});
}

Resource& NetworkService::seedVcn(const std::string& compartmentId, const std::string& region,
                                  const std::string& name, const std::string& cidr, std::int64_t nowMs) {
    return makeVcn(compartmentId, region, name, cidr, nowMs, 0);
}

Resource& NetworkService::seedSubnet(const Resource& vcn, const std::string& name, const std::string& cidr,
                                     const std::string& ad, std::int64_t nowMs) {
    return makeSubnet(vcn, name, cidr, ad, false, nowMs, 0);
}

std::string NetworkService::nextPrivateIp(Resource& subnet) {
    std::int64_t n = JInt(subnet.doc, "_nextIp").value_or(2);
    subnet.doc.set("_nextIp", n + 1);
    // Past .254 the addresses wrap into the next octet of a wider block.
    std::string base = JStr(subnet.doc, "_ipBase");
    if (n <= 254) return base + "." + std::to_string(n);
    size_t dot = base.rfind('.');
    int third = std::atoi(base.substr(dot + 1).c_str()) + static_cast<int>(n / 254);
    return base.substr(0, dot) + "." + std::to_string(third % 256) + "." + std::to_string(n % 254 + 1);
}

Resource& NetworkService::attachNewVnic(const Resource& instance, const Resource& subnet,
                                        const JObject& details, bool primary, std::int64_t nowMs,
                                        std::int64_t delayMs) {
    thread_local std::mt19937 rng{std::random_device{}()};
    Resource& subnetMut = *store_.get(subnet.id, nowMs);
    const std::string ad = JStr(instance.doc, "availabilityDomain");
    Resource vnic = newResource("vnic", "vnic", instance.compartmentId, instance.region, nowMs);
    vnic.doc.set("availabilityDomain", ad);
    vnic.doc.set("displayName", JHas(details, "displayName") ? JStr(details, "displayName")
                                                             : JStr(instance.doc, "displayName") + (primary ? "" : "-vnic"));
    vnic.doc.set("hostnameLabel", JHas(details, "hostnameLabel") ? JValue(JStr(details, "hostnameLabel")) : JValue(nullptr));
    vnic.doc.set("isPrimary", primary);
    char mac[32];
    std::snprintf(mac, sizeof mac, "02:00:17:%02X:%02X:%02X", static_cast<unsigned>(rng() & 255),
                  static_cast<unsigned>(rng() & 255), static_cast<unsigned>(rng() & 255));
    vnic.doc.set("macAddress", mac);
    vnic.doc.set("privateIp", JHas(details, "privateIp") ? JStr(details, "privateIp") : nextPrivateIp(subnetMut));
    const bool wantPublic = JBool(details, "assignPublicIp").value_or(!JBool(subnet.doc, "prohibitPublicIpOnVnic").value_or(false));
    if (wantPublic)
        vnic.doc.set("publicIp", "129.146." + std::to_string(rng() % 250 + 1) + "." + std::to_string(rng() % 250 + 1));
    else
        vnic.doc.set("publicIp", nullptr);
    vnic.doc.set("skipSourceDestCheck", JBool(details, "skipSourceDestCheck").value_or(false));
    vnic.doc.set("subnetId", subnet.id);
    vnic.doc.set("nsgIds", JArray{});
    vnic.doc.set("freeformTags", JObject{});
    vnic.doc.set("definedTags", JObject{});
    Resource& v = addResource(std::move(vnic), nowMs, {{"PROVISIONING", 0}, {"AVAILABLE", delayMs}});

    int nicIndex = 0;
    if (!primary)  // the primary VNIC is always index 0; the scan matters only for later ones
        for (Resource* a : store_.list("vnicattachment", instance.compartmentId, nowMs))
            if (JStr(a->doc, "instanceId") == instance.id) ++nicIndex;
    Resource att = newResource("vnicattachment", "vnicattachment", instance.compartmentId, instance.region, nowMs);
    att.doc.set("availabilityDomain", ad);
    att.doc.set("displayName", JStr(v.doc, "displayName"));
    att.doc.set("instanceId", instance.id);
    att.doc.set("subnetId", subnet.id);
    att.doc.set("vnicId", v.id);
    att.doc.set("nicIndex", nicIndex);
    att.doc.set("vlanTag", 100 + nicIndex);
    return addResource(std::move(att), nowMs, {{"ATTACHING", 0}, {"ATTACHED", delayMs}});
}

void NetworkService::detachAll(const Resource& instance, std::int64_t nowMs) {
    for (Resource* a : store_.list("vnicattachment", instance.compartmentId, nowMs)) {
        if (JStr(a->doc, "instanceId") != instance.id) continue;
        const std::string s = stateOf(*a, nowMs);
        if (s == "DETACHED" || s == "DETACHING") continue;
        store_.schedule(*a, nowMs, {{"DETACHING", 0}, {"DETACHED", P()}}, world_.retentionMs);
        if (Resource* v = store_.get(JStr(a->doc, "vnicId"), nowMs, "vnic"))
            store_.schedule(*v, nowMs, {{"TERMINATING", 0}, {"TERMINATED", P()}}, world_.retentionMs);
    }
}

void NetworkService::createVcn(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string c = JStr(body, "compartmentId");
    if (c.empty()) return err::MissingParameter(res, "compartmentId");
    if (!compartmentExists(c, req.nowMs)) return err::RelatedNotFound(res, "compartment " + c);
    std::string cidr = JStr(body, "cidrBlock");
    if (cidr.empty())
        if (const JArray* blocks = JArr(body, "cidrBlocks"))
            if (!blocks->empty() && blocks->at(0).is_string()) cidr = std::string(blocks->at(0).as_string());
    if (cidr.empty()) return err::MissingParameter(res, "cidrBlock");
    std::string name = JStr(body, "displayName");
    if (name.empty()) name = "vcn" + std::to_string(req.nowMs % 100000);
    Resource& v = makeVcn(c, req.region, name, cidr, req.nowMs, P());
    if (JHas(body, "dnsLabel")) v.doc.set("dnsLabel", JStr(body, "dnsLabel"));
    respondOne(res, v, req.nowMs);
}

void NetworkService::deleteVcn(ApiRequest& req, ApiResponse& res, Resource& v) {
    for (Resource* s : listIn(req, "subnet", v.compartmentId))
        if (JStr(s->doc, "vcnId") == v.id && stateOf(*s, req.nowMs) != "TERMINATED")
            return res.error(409, "Conflict", "The VCN still has subnets.");
    store_.schedule(v, req.nowMs, {{"TERMINATING", 0}, {"TERMINATED", P()}}, world_.retentionMs);
    res.noContent(204);
}

void NetworkService::createSubnet(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string vcnId = JStr(body, "vcnId");
    const std::string cidr = JStr(body, "cidrBlock");
    if (vcnId.empty()) return err::MissingParameter(res, "vcnId");
    if (cidr.empty()) return err::MissingParameter(res, "cidrBlock");
    Resource* vcn = find(req, vcnId, "vcn");
    if (!vcn) return err::RelatedNotFound(res, "VCN " + vcnId);
    const std::string ad = JStr(body, "availabilityDomain");
    if (!ad.empty() && !world_.knownAvailabilityDomain(req.region, ad))
        return err::InvalidParameter(res, "Invalid availabilityDomain: " + ad);
    std::string name = JStr(body, "displayName");
    if (name.empty()) name = "subnet" + std::to_string(req.nowMs % 100000);
    Resource& s = makeSubnet(*vcn, name, cidr, ad, JBool(body, "prohibitPublicIpOnVnic").value_or(false),
                             req.nowMs, P());
    if (JHas(body, "dnsLabel")) s.doc.set("dnsLabel", JStr(body, "dnsLabel"));
    respondOne(res, s, req.nowMs);
}

void NetworkService::deleteSubnet(ApiRequest& req, ApiResponse& res, Resource& s) {
    for (Resource* v : listIn(req, "vnic", ""))
        if (JStr(v->doc, "subnetId") == s.id && stateOf(*v, req.nowMs) != "TERMINATED")
            return res.error(409, "Conflict", "The subnet still has VNICs.");
    store_.schedule(s, req.nowMs, {{"TERMINATING", 0}, {"TERMINATED", P()}}, world_.retentionMs);
    res.noContent(204);
}

void NetworkService::attachVnic(ApiRequest& req, ApiResponse& res) {
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string instanceId = JStr(body, "instanceId");
    const JObject* details = JObj(body, "createVnicDetails");
    if (instanceId.empty()) return err::MissingParameter(res, "instanceId");
    if (!details) return err::MissingParameter(res, "createVnicDetails");
    Resource* inst = find(req, instanceId, "instance");
    if (!inst) return err::RelatedNotFound(res, "instance " + instanceId);
    const std::string st = stateOf(*inst, req.nowMs);
    if (st != "RUNNING" && st != "STOPPED")
        return err::IncorrectState(res, "The instance must be RUNNING or STOPPED to attach a VNIC.");
    const std::string subnetId = JStr(*details, "subnetId");
    if (subnetId.empty()) return err::MissingParameter(res, "createVnicDetails.subnetId");
    Resource* subnet = find(req, subnetId, "subnet");
    if (!subnet) return err::RelatedNotFound(res, "subnet " + subnetId);
    Resource& att = attachNewVnic(*inst, *subnet, *details, false, req.nowMs, P());
    if (JHas(body, "displayName")) att.doc.set("displayName", JStr(body, "displayName"));
    respondOne(res, att, req.nowMs);
    setWorkRequest(res, req.region);
}

void NetworkService::detachVnic(ApiRequest& req, ApiResponse& res, Resource& a) {
    const std::string s = stateOf(a, req.nowMs);
    if (s == "DETACHED" || s == "DETACHING") return err::IncorrectState(res, "The VNIC is already detached.");
    Resource* vnic = store_.get(JStr(a.doc, "vnicId"), req.nowMs, "vnic");
    if (vnic && JBool(vnic->doc, "isPrimary").value_or(false))
        return err::InvalidParameter(res, "The primary VNIC cannot be detached.");
    store_.schedule(a, req.nowMs, {{"DETACHING", 0}, {"DETACHED", P()}}, world_.retentionMs);
    if (vnic) store_.schedule(*vnic, req.nowMs, {{"TERMINATING", 0}, {"TERMINATED", P()}}, world_.retentionMs);
    res.noContent(204);
}

}  // namespace ocwemu
