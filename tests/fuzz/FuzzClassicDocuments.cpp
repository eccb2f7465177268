// The Compute Classic and PaaS answers as the Classic backend reads them: a
// directory listing ({"result": [names]}), the objects under it (instances,
// volumes, snapshots, attachments, orchestrations), a saved orchestration
// walked along "oplans/objects/instances", the PaaS service lists and job
// documents. Besides "no crash, no leak, no uncaught exception" it checks:
// - a listing's names are exactly its string elements, in order;
// - an instance's short names carry no "/", a template is an entry without a
//   shape, its disks are the objects of "storage_attachments", and a disk is
//   bootable only when it says so or sits in the slot "boot_order" names;
// - the walk along the orchestration path finds exactly the objects there;
// - a job's status, message and tag are the document's, and a PaaS job keeps
//   the whole document it came from;
// - a failure's log line never shows a secret member's value.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzSecrets.h"
#include "FuzzSupport.h"
#include "parser/OracleCloudParser.h"

namespace {

using namespace OracleCloudSDKWrapper;

std::string Where(const char* entry, const std::string& text) {
    return std::string(entry) + " on [" + ocwfuzz::Show(text) + "]";
}

const JsonObject* TopObject(bool valid, const JsonValue& doc) { return valid ? doc.if_object() : nullptr; }

std::string StringMember(const JsonObject& obj, const char* key) {
    const JsonValue* v = obj.if_contains(key);
    return v != nullptr && v->is_string() ? std::string(v->get_string().c_str(), v->get_string().size())
                                          : std::string();
}

void CheckListing(COracleCloudParser& parser, const std::string& text, const JsonObject* top) {
    std::vector<std::string> names;
    const int n = parser.ParseListAsStrings(text, "result", names);
    std::vector<std::string> expected;
    const JsonValue* result = top != nullptr ? top->if_contains("result") : nullptr;
    if (result != nullptr && result->is_array()) {
        for (const JsonValue& v : result->get_array()) {
            if (v.is_string()) expected.emplace_back(v.get_string().c_str(), v.get_string().size());
        }
    }
    OCW_FUZZ_CHECK(n == static_cast<int>(names.size()) && names == expected, Where("listing names", text));
}

void CheckInstance(const SVMInfoLib& vm, const JsonObject& obj, const std::string& text) {
    OCW_FUZZ_CHECK(vm.guid.find('/') == std::string::npos && vm.vmName.find('/') == std::string::npos,
                   Where("instance short names", text));
    OCW_FUZZ_CHECK(vm.fullName == StringMember(obj, "name"), Where("instance name", text));
    OCW_FUZZ_CHECK(vm.isTemplate == StringMember(obj, "shape").empty(), Where("template", text));
    size_t attachments = 0;
    const JsonValue* list = obj.if_contains("storage_attachments");
    if (list != nullptr && list->is_array()) {
        for (const JsonValue& v : list->get_array()) attachments += v.is_object() ? 1 : 0;
    }
    OCW_FUZZ_CHECK(vm.disks.size() == attachments, Where("instance disks", text));
    for (size_t i = 0; i < vm.disks.size(); ++i) {
        const JsonObject* own = nullptr;
        size_t seen = 0;
        for (const JsonValue& v : list->get_array()) {
            if (v.is_object() && seen++ == i) own = &v.get_object();
        }
        const JsonValue* flag = own->if_contains("bootable");
        const bool saysBootable = flag != nullptr && flag->is_bool() && flag->get_bool();
        OCW_FUZZ_CHECK(!vm.disks[i].bootable || saysBootable || vm.disks[i].index == vm.bootDiskIndex,
                       Where("bootable disk", text));
    }
}

void CheckObjects(COracleCloudParser& parser, const std::string& text, const JsonObject* top) {
    SVMInfoLib vm;
    OCW_FUZZ_CHECK(parser.ParseObject(text, vm) == (top != nullptr), Where("ParseObject", text));
    if (top != nullptr) CheckInstance(vm, *top, text);

    std::vector<SVMInfoLib> instances;
    const bool listed = parser.ParseList(text, "result", instances);
    const JsonValue* result = top != nullptr ? top->if_contains("result") : nullptr;
    OCW_FUZZ_CHECK(listed == (result != nullptr && (result->is_array() || result->is_object())),
                   Where("ParseList(result)", text));
    if (listed && result->is_array()) {
        size_t i = 0;
        for (const JsonValue& v : result->get_array()) {
            if (v.is_object()) CheckInstance(instances.at(i++), v.get_object(), text);
        }
        OCW_FUZZ_CHECK(i == instances.size(), Where("instances length", text));
    }

    SDiskInfoLib disk;
    SSnapshotInfoLib snapshot;
    SStorageAttachmentInfoLib attachment;
    SOrchestrationInfoLib orchestration;
    parser.ParseObject(text, disk);
    parser.ParseObject(text, snapshot);
    parser.ParseObject(text, attachment);
    parser.ParseObject(text, orchestration);
    if (top != nullptr) {
        OCW_FUZZ_CHECK(disk.guid.find('/') == std::string::npos, Where("volume short name", text));
        OCW_FUZZ_CHECK(orchestration.name == StringMember(*top, "name"), Where("orchestration name", text));
    }
    std::vector<SDiskInfoLib> volumes;
    parser.ParseList(text, "result", volumes);
    std::vector<SSnapshotInfoLib> snapshots;
    parser.ParseList(text, "result", snapshots);
}

// Objects found along a key path the way the orchestration walk is
// documented: nested objects and every object of an array are followed, and
// the objects of every array under the last key are counted.
size_t CountAlongPath(const JsonValue& v, const std::vector<std::string>& path, size_t depth) {
    if (const JsonArray* a = v.if_array()) {
        size_t n = 0;
        for (const JsonValue& element : *a) {
            if (depth == path.size()) {
                n += element.is_object() ? 1 : 0;
            } else if (element.is_object()) {
                n += CountAlongPath(element, path, depth);
            }
        }
        return n;
    }
    const JsonObject* o = v.if_object();
    if (o == nullptr || depth == path.size()) return 0;
    const JsonValue* next = o->if_contains(path[depth]);
    if (next == nullptr) return 0;
    if (depth + 1 == path.size()) return next->is_array() ? CountAlongPath(*next, path, depth + 1) : 0;
    return CountAlongPath(*next, path, depth + 1);
}

void CheckOrchestrationWalk(COracleCloudParser& parser, const std::string& text, bool valid, const JsonValue& doc) {
    const std::vector<std::string> path = {"oplans", "objects", "instances"};
    std::vector<SVMInfoLib> planned;
    const bool ok = parser.ParseListAlongPath(text, path, planned);
    if (!ok) {
        OCW_FUZZ_CHECK(planned.empty(), Where("ParseListAlongPath", text));
        return;
    }
    OCW_FUZZ_CHECK(valid && doc.is_object(), Where("ParseListAlongPath", text));
    OCW_FUZZ_CHECK(planned.size() == CountAlongPath(doc, path, 0), Where("ParseListAlongPath length", text));
}

void CheckJobs(COracleCloudParser& parser, const std::string& text, const JsonObject* top) {
    SOracleJobInfoLib job;
    OCW_FUZZ_CHECK(parser.ExtractOraStatusAndTag(text, job) == (top != nullptr), Where("ExtractOraStatusAndTag", text));
    if (top != nullptr) {
        OCW_FUZZ_CHECK(job.jobStatus == StringMember(*top, "job_status"), Where("job status", text));
        std::string message;
        const JsonValue* lines = top->if_contains("message");
        if (lines != nullptr && lines->is_array()) {
            for (const JsonValue& v : lines->get_array()) {
                if (!v.is_string()) continue;
                if (!message.empty()) message += '\n';
                message.append(v.get_string().c_str(), v.get_string().size());
            }
        }
        OCW_FUZZ_CHECK(job.message == message, Where("job message", text));
        OCW_FUZZ_CHECK(job.tag.empty() || job.message.find(job.tag) != std::string::npos, Where("job tag", text));
    }

    SJavaMySQLJobInfoLib paasJob;
    OCW_FUZZ_CHECK(parser.ParseObject(text, paasJob) == (top != nullptr), Where("PaaS job", text));
    if (top != nullptr) {
        JsonValue again;
        OCW_FUZZ_CHECK(JsonHelper::Parse(paasJob.fullInfo, again) && again == JsonValue(*top),
                       Where("PaaS job document", text));
    }
    std::vector<SJavaMySQLJobInfoLib> jobs;
    parser.ParseList(text, "jobs", jobs);
    std::vector<SJavaInstanceInfoLib> java;
    parser.ParseList(text, "services", java);
    std::vector<SOracleDBInstanceInfoLib> databases;
    parser.ParseList(text, "services", databases);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static COracleCloudParser parser;
    ocwfuzz::ResetLog();

    const std::string text(reinterpret_cast<const char*>(data), size);
    JsonValue doc;
    const bool valid = JsonHelper::Parse(text, doc);
    const JsonObject* top = TopObject(valid, doc);

    CheckListing(parser, text, top);
    CheckObjects(parser, text, top);
    CheckOrchestrationWalk(parser, text, valid, doc);
    CheckJobs(parser, text, top);
    if (valid) ocwfuzz::CheckNoSecretLogged(text, doc);
    return 0;
}
