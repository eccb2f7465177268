#include "oci/ObjectStorageService.h"

#include "oci/OciErrors.h"
#include "common/Ids.h"
#include "common/Base64.h"
#include "oci/Paging.h"
#include "common/TimeUtil.h"

#include <openssl/evp.h>

#include <algorithm>
#include <set>

namespace ocwemu {

std::string BucketKey(const std::string& ns, const std::string& bucket) { return "bucket:" + ns + "/" + bucket; }

std::string ObjectKey(const std::string& ns, const std::string& bucket, const std::string& object) {
    return "object:" + ns + "/" + bucket + "/" + object;
}

bool ParseObjectUri(const std::string& uri, std::string& ns, std::string& bucket, std::string& object) {
    size_t n = uri.find("/n/");
    if (n == std::string::npos) return false;
    size_t b = uri.find("/b/", n + 3);
    if (b == std::string::npos) return false;
    size_t o = uri.find("/o/", b + 3);
    if (o == std::string::npos) return false;
    ns = uri.substr(n + 3, b - n - 3);
    bucket = uri.substr(b + 3, o - b - 3);
    return PercentDecode(uri.substr(o + 3), object, false);
}

static std::string Md5Base64(const std::string& data) {
    unsigned char md[EVP_MAX_MD_SIZE];
    unsigned int len = 0;
    EVP_Digest(data.data(), data.size(), md, &len, EVP_md5(), nullptr);
    return Base64Encode(std::string(reinterpret_cast<char*>(md), len));
}

void ObjectStorageService::registerRoutes(Router& r) {
    auto bind = [this](void (ObjectStorageService::*fn)(ApiRequest&, ApiResponse&)) {
        return [this, fn](ApiRequest& q, ApiResponse& s) { (this->*fn)(q, s); };
    };
    r.add("GET", "/n", bind(&ObjectStorageService::getNamespace));
    r.add("GET", "/n/{namespaceName}", bind(&ObjectStorageService::getNamespaceMetadata));
    r.add("GET", "/n/{namespaceName}/b", bind(&ObjectStorageService::listBuckets));
    r.add("POST", "/n/{namespaceName}/b", bind(&ObjectStorageService::createBucket));
    r.add("GET", "/n/{namespaceName}/b/{bucketName}", bind(&ObjectStorageService::getBucket));
    r.add("POST", "/n/{namespaceName}/b/{bucketName}", bind(&ObjectStorageService::updateBucket));
    r.add("DELETE", "/n/{namespaceName}/b/{bucketName}", bind(&ObjectStorageService::deleteBucket));
    r.add("GET", "/n/{namespaceName}/b/{bucketName}/o", bind(&ObjectStorageService::listObjects));
    r.add("PUT", "/n/{namespaceName}/b/{bucketName}/o/{*objectName}", bind(&ObjectStorageService::putObject),
          RouteAuth::OciSignatureUnsignedBody);
    r.add("GET", "/n/{namespaceName}/b/{bucketName}/o/{*objectName}", bind(&ObjectStorageService::getObject));
    r.add("DELETE", "/n/{namespaceName}/b/{bucketName}/o/{*objectName}", bind(&ObjectStorageService::deleteObject));
}

bool ObjectStorageService::checkNamespace(const ApiRequest& req, ApiResponse& res) const {
    if (req.path("namespaceName") == world_.namespaceName) return true;
    res.error(404, "NamespaceNotFound",
              "You do not have authorization to perform this request, or the requested resource could not be found.");
    return false;
}

Resource* ObjectStorageService::findBucket(const ApiRequest& req, ApiResponse& res) const {
    if (!checkNamespace(req, res)) return nullptr;
    const std::string& name = req.path("bucketName");
    Resource* b = store_.get(BucketKey(world_.namespaceName, name), req.nowMs, "bucket");
    if (b && (b->region.empty() || b->region == req.region)) return b;
    res.error(404, "BucketNotFound",
              "Either the bucket named '" + name + "' does not exist in the namespace '" + world_.namespaceName +
                  "' or you are not authorized to access it");
    return nullptr;
}

JObject ObjectStorageService::renderBucket(const Resource& b, bool summary, const std::string& fields,
                                           std::int64_t nowMs) const {
    JObject o = RenderResource(store_, b, nowMs);
    if (summary) {
        JObject s;
        for (const char* k : {"namespace", "name", "compartmentId", "createdBy", "timeCreated", "etag"}) s[k] = o[k];
        if (fields.find("tags") != std::string::npos) {
            s["freeformTags"] = o["freeformTags"];
            s["definedTags"] = o["definedTags"];
        }
        return s;
    }
    if (fields.find("approximateCount") != std::string::npos || fields.find("approximateSize") != std::string::npos) {
        std::int64_t count = 0, size = 0;
        for (Resource* obj : store_.list("object", b.id, nowMs)) {
            ++count;
            size += JInt(obj->doc, "size").value_or(0);
        }
        o["approximateCount"] = count;
        o["approximateSize"] = size;
    }
    return o;
}

Resource& ObjectStorageService::seedBucket(const std::string& compartmentId, const std::string& region,
                                           const std::string& name, std::int64_t nowMs) {
    Resource b = newResource("bucket", "bucket", compartmentId, region, nowMs);
    b.doc.set("id", b.id);
    b.id = BucketKey(world_.namespaceName, name);
    b.doc.set("namespace", world_.namespaceName);
    b.doc.set("name", name);
    b.doc.set("createdBy", world_.userId);
    b.doc.set("etag", RandomUuid());
    b.doc.set("metadata", JObject{});
    b.doc.set("publicAccessType", "NoPublicAccess");
    b.doc.set("storageTier", "Standard");
    b.doc.set("objectEventsEnabled", false);
    b.doc.set("replicationEnabled", false);
    b.doc.set("isReadOnly", false);
    b.doc.set("versioning", "Disabled");
    b.doc.set("autoTiering", "Disabled");
    b.doc.set("kmsKeyId", nullptr);
    b.doc.set("freeformTags", JObject{});
    b.doc.set("definedTags", JObject{});
    return addResource(std::move(b), nowMs, {{"ACTIVE", 0}});
}

Resource& ObjectStorageService::writeObject(const Resource& bucket, const std::string& name, const std::string& data,
                                            const std::string& contentType, const JObject& meta, std::int64_t nowMs) {
    const std::string key = ObjectKey(world_.namespaceName, JStr(bucket.doc, "name"), name);
    std::string created = Rfc3339(nowMs);
    if (Resource* old = store_.get(key, nowMs, "object")) {
        created = JStr(old->doc, "timeCreated");
        store_.erase(key);
    }
    Resource o;
    o.id = key;
    o.kind = "object";
    o.compartmentId = bucket.id;  // objects are indexed by their bucket
    o.region = bucket.region;
    o.createdMs = nowMs;
    o.doc.set("name", name);
    o.doc.set("size", static_cast<std::int64_t>(data.size()));
    o.doc.set("md5", Md5Base64(data));
    o.doc.set("etag", RandomUuid());
    o.doc.set("timeCreated", created);
    o.doc.set("timeModified", Rfc3339(nowMs));
    o.doc.set("storageTier", "Standard");
    o.doc.set("archivalState", nullptr);
    o.doc.set("_data", data);
    o.doc.set("_contentType", contentType);
    o.doc.set("_meta", meta);
    return addResource(std::move(o), nowMs, {{"AVAILABLE", 0}});
}

Resource& ObjectStorageService::seedObject(const Resource& bucket, const std::string& name, const std::string& data,
                                           std::int64_t nowMs) {
    return writeObject(bucket, name, data, "application/octet-stream", JObject{}, nowMs);
}

void ObjectStorageService::getNamespace(ApiRequest&, ApiResponse& res) {
    res.json(200, JValue(world_.namespaceName));
}

void ObjectStorageService::getNamespaceMetadata(ApiRequest& req, ApiResponse& res) {
    if (!checkNamespace(req, res)) return;
    res.json(200, JObject{{"namespace", world_.namespaceName},
                          {"defaultS3CompartmentId", world_.tenancyId},
                          {"defaultSwiftCompartmentId", world_.tenancyId}});
}

void ObjectStorageService::listBuckets(ApiRequest& req, ApiResponse& res) {
    if (!checkNamespace(req, res)) return;
    std::string c;
    if (!requireCompartment(req, res, c)) return;
    PageWindow w;
    if (!ReadPageWindow(req, world_.pageSize, world_.maxPageSize, w, res)) return;
    std::vector<Resource*> items = listIn(req, "bucket", c);
    std::sort(items.begin(), items.end(),
              [](Resource* a, Resource* b) { return JStr(a->doc, "name") < JStr(b->doc, "name"); });
    JArray page;
    for (size_t i = w.offset; i < items.size() && i < w.offset + w.limit; ++i)
        page.push_back(renderBucket(*items[i], true, req.param("fields"), req.nowMs));
    res.json(200, page);
    SetNextPage(res, w, items.size());
}

void ObjectStorageService::createBucket(ApiRequest& req, ApiResponse& res) {
    if (!checkNamespace(req, res)) return;
    JObject body;
    if (!parseBody(req, res, body)) return;
    const std::string name = JStr(body, "name"), c = JStr(body, "compartmentId");
    if (name.empty()) return err::MissingParameter(res, "name");
    if (c.empty()) return err::MissingParameter(res, "compartmentId");
    if (name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.") !=
            std::string::npos ||
        name.size() > 256)
        return err::InvalidParameter(res, "Invalid bucket name: " + name);
    if (!compartmentExists(c, req.nowMs)) return err::RelatedNotFound(res, "compartment " + c);
    if (store_.get(BucketKey(world_.namespaceName, name), req.nowMs, "bucket"))
        return res.error(409, "BucketAlreadyExists", "Either the bucket '" + name +
                                                           "' in namespace '" + world_.namespaceName +
                                                           "' already exists or you are not authorized to create it");
    Resource& b = seedBucket(c, req.region, name, req.nowMs);
    CopyMembers(body, b.doc.edit(), {"metadata", "publicAccessType", "storageTier", "objectEventsEnabled", "freeformTags",
                              "definedTags", "versioning", "autoTiering", "kmsKeyId"});
    res.json(200, renderBucket(b, false, "", req.nowMs));
    res.setHeader("etag", JStr(b.doc, "etag"));
}

void ObjectStorageService::getBucket(ApiRequest& req, ApiResponse& res) {
    Resource* b = findBucket(req, res);
    if (!b) return;
    res.json(200, renderBucket(*b, false, req.param("fields"), req.nowMs));
    res.setHeader("etag", JStr(b->doc, "etag"));
}

void ObjectStorageService::updateBucket(ApiRequest& req, ApiResponse& res) {
    JObject body;
    Resource* b = findBucket(req, res);
    if (!b || !parseBody(req, res, body)) return;
    CopyMembers(body, b->doc.edit(), {"metadata", "publicAccessType", "objectEventsEnabled", "freeformTags", "definedTags",
                               "versioning", "autoTiering", "kmsKeyId"});
    b->doc.set("etag", RandomUuid());
    res.json(200, renderBucket(*b, false, "", req.nowMs));
    res.setHeader("etag", JStr(b->doc, "etag"));
}

void ObjectStorageService::deleteBucket(ApiRequest& req, ApiResponse& res) {
    Resource* b = findBucket(req, res);
    if (!b) return;
    if (!store_.list("object", b->id, req.nowMs).empty())
        return res.error(409, "BucketNotEmpty", "Bucket named '" + JStr(b->doc, "name") + "' is not empty. Delete all objects first.");
    store_.erase(b->id);
    res.noContent(204);
}

void ObjectStorageService::listObjects(ApiRequest& req, ApiResponse& res) {
    Resource* b = findBucket(req, res);
    if (!b) return;
    std::size_t limit = 1000;
    if (req.hasParam("limit")) {
        long long n = std::atoll(req.param("limit").c_str());
        if (n < 1 || n > 1000) return err::InvalidParameter(res, "limit must be between 1 and 1000");
        limit = static_cast<std::size_t>(n);
    }
    const std::string prefix = req.param("prefix"), start = req.param("start"), end = req.param("end"),
                      delimiter = req.param("delimiter"), startAfter = req.param("startAfter");
    std::set<std::string> wanted{"name"};
    std::string fields = req.param("fields");
    for (size_t p = 0; p <= fields.size();) {
        size_t comma = fields.find(',', p);
        if (comma == std::string::npos) comma = fields.size();
        if (comma > p) wanted.insert(fields.substr(p, comma - p));
        p = comma + 1;
    }
    std::vector<Resource*> objs = store_.list("object", b->id, req.nowMs);
    std::sort(objs.begin(), objs.end(),
              [](Resource* x, Resource* y) { return JStr(x->doc, "name") < JStr(y->doc, "name"); });
    JArray objects;
    std::set<std::string> prefixes;
    std::string next;
    std::size_t count = 0;
    for (Resource* o : objs) {
        const std::string name = JStr(o->doc, "name");
        if (name.compare(0, prefix.size(), prefix) != 0) continue;
        if (!start.empty() && name < start) continue;
        if (!startAfter.empty() && name <= startAfter) continue;
        if (!end.empty() && name >= end) continue;
        if (!delimiter.empty()) {
            size_t d = name.find(delimiter, prefix.size());
            if (d != std::string::npos) {
                prefixes.insert(name.substr(0, d + delimiter.size()));
                continue;
            }
        }
        if (count == limit) {
            next = name;
            break;
        }
        JObject item;
        for (const auto& f : wanted)
            if (o->doc.contains(f)) item[f] = o->doc.at(f);
        objects.push_back(std::move(item));
        ++count;
    }
    JArray pre;
    for (const auto& p : prefixes) pre.push_back(JValue(p));
    JObject out{{"objects", std::move(objects)}, {"prefixes", std::move(pre)}};
    if (!next.empty()) out["nextStartWith"] = next;
    res.json(200, out);
}

void ObjectStorageService::putObject(ApiRequest& req, ApiResponse& res) {
    Resource* b = findBucket(req, res);
    if (!b) return;
    const std::string& name = req.path("objectName");
    if (name.empty() || name.size() > 1024) return err::InvalidParameter(res, "Invalid object name");
    const std::string md5 = Md5Base64(req.body);
    if (req.hasHeader("content-md5") && req.header("content-md5") != md5)
        return res.error(400, "UnmatchedContentMD5", "The computed MD5 of the request body (" + md5 +
                                                          ") does not match the Content-MD5 header (" +
                                                          req.header("content-md5") + ")");
    const std::string key = ObjectKey(world_.namespaceName, req.path("bucketName"), name);
    if (req.header("if-none-match") == "*" && store_.get(key, req.nowMs, "object"))
        return res.error(412, "IfNoneMatchFailed", "The object already exists.");
    JObject meta;
    for (const auto& h : req.headers)
        if (h.first.rfind("opc-meta-", 0) == 0) meta[h.first] = h.second;
    std::string type = req.header("content-type");
    if (type.empty()) type = "application/octet-stream";
    Resource& o = writeObject(*b, name, req.body, type, meta, req.nowMs);
    res.noContent(200);
    res.setHeader("etag", JStr(o.doc, "etag"));
    res.setHeader("opc-content-md5", md5);
    res.setHeader("last-modified", HttpDate(req.nowMs / 1000));
    res.setHeader("version-id", RandomUuid());
}

void ObjectStorageService::getObject(ApiRequest& req, ApiResponse& res) {
    Resource* b = findBucket(req, res);
    if (!b) return;
    const std::string& name = req.path("objectName");
    Resource* o = store_.get(ObjectKey(world_.namespaceName, req.path("bucketName"), name), req.nowMs, "object");
    if (!o)
        return res.error(404, "ObjectNotFound",
                         "The object '" + name + "' was not found in the bucket '" + req.path("bucketName") + "'");
    res.status = 200;
    res.body = JStr(o->doc, "_data");
    res.contentType = JStr(o->doc, "_contentType");
    res.setHeader("etag", JStr(o->doc, "etag"));
    res.setHeader("content-md5", JStr(o->doc, "md5"));
    res.setHeader("last-modified", HttpDate(o->createdMs / 1000));
    res.setHeader("storage-tier", "Standard");
    if (const JObject* meta = JObj(o->doc, "_meta"))
        for (const auto& kv : *meta) res.setHeader(std::string(kv.key()), JStr(*meta, std::string(kv.key()).c_str()));
}

void ObjectStorageService::deleteObject(ApiRequest& req, ApiResponse& res) {
    Resource* b = findBucket(req, res);
    if (!b) return;
    const std::string& name = req.path("objectName");
    if (!store_.erase(ObjectKey(world_.namespaceName, req.path("bucketName"), name)))
        return res.error(404, "ObjectNotFound",
                         "The object '" + name + "' was not found in the bucket '" + req.path("bucketName") + "'");
    res.noContent(204);
    res.setHeader("last-modified", HttpDate(req.nowMs / 1000));
}

}  // namespace ocwemu
