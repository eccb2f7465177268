// Response bodies are the cloud's text: whatever arrives is walked by both
// parsers' entry points for every record type they map. Besides "no crash, no
// leak, no uncaught exception" the target checks the walking contract:
// - a text that is not a JSON document (or is blank) gives false and nothing;
// - ParseObject fails on any top level other than an object;
// - a list is never shorter (or longer) than its object elements, plus its
//   string elements for the records that have a string mapping;
// - a failure's log line never shows the string value of a member named like
//   a secret ("password", "adminPassword", "cloudStoragePwd", "chapSecret").
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "FuzzSecrets.h"
#include "FuzzSupport.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "parser/OracleCloudParser.h"

namespace {

using namespace OracleCloudSDKWrapper;

// Records whose lists also turn bare strings into elements (Classic directory
// listings name their entries).
template <typename T>
struct HasStringMapping : std::false_type {};
template <>
struct HasStringMapping<std::string> : std::true_type {};
template <>
struct HasStringMapping<SKeyPairInfoLib> : std::true_type {};
template <>
struct HasStringMapping<SSecurityGroupInfoLib> : std::true_type {};

struct Document {
    bool valid = false;
    JsonValue value;
};

template <typename T>
size_t ExpectedLength(const JsonArray& array) {
    size_t n = 0;
    for (const JsonValue& v : array) {
        if (v.is_object() || (HasStringMapping<T>::value && v.is_string())) ++n;
    }
    return n;
}

template <typename T>
size_t ExpectedLength(const JsonObject& object) {
    size_t n = 0;
    for (const auto& member : object) {
        const JsonValue& v = member.value();
        if (v.is_object() || (HasStringMapping<T>::value && v.is_string())) ++n;
    }
    return n;
}

std::string Where(const char* entry, const std::string& text) {
    return std::string(entry) + " on [" + ocwfuzz::Show(text) + "]";
}

// ParseObject and the top-level ParseList of one record type.
template <typename T>
void WalkTopLevel(COracleCloudParser& parser, const std::string& text, const Document& doc) {
    T one{};
    bool ok = parser.ParseObject(text, one);
    if (!doc.valid || !doc.value.is_object()) OCW_FUZZ_CHECK(!ok, Where("ParseObject", text));

    std::vector<T> list;
    ok = parser.ParseList(text, list);
    if (doc.valid && doc.value.is_array()) {
        OCW_FUZZ_CHECK(ok, Where("ParseList", text));
        OCW_FUZZ_CHECK(list.size() == ExpectedLength<T>(doc.value.get_array()), Where("ParseList length", text));
    } else {
        OCW_FUZZ_CHECK(!ok && list.empty(), Where("ParseList", text));
    }
}

// ParseList under a key: an array, or an object read as its member values.
template <typename T>
void WalkKeyedList(COracleCloudParser& parser, const std::string& text, const Document& doc, const char* key) {
    std::vector<T> list;
    bool ok = parser.ParseList(text, key, list);
    const JsonValue* member = nullptr;
    if (doc.valid && doc.value.is_object()) member = doc.value.get_object().if_contains(key);
    if (member != nullptr && member->is_array()) {
        OCW_FUZZ_CHECK(ok && list.size() == ExpectedLength<T>(member->get_array()), Where("ParseList(key)", text));
    } else if (member != nullptr && member->is_object()) {
        OCW_FUZZ_CHECK(ok && list.size() == ExpectedLength<T>(member->get_object()), Where("ParseList(key)", text));
    } else {
        OCW_FUZZ_CHECK(!ok && list.empty(), Where("ParseList(key)", text));
    }
}

template <typename T>
void WalkQueryResult(COracleCloudParser& parser, const std::string& text, const Document& doc) {
    std::vector<T> items;
    bool ok = parser.ParseQueryResult(text, items);
    const JsonValue* member = nullptr;
    if (doc.valid && doc.value.is_object()) member = doc.value.get_object().if_contains("items");
    if (member != nullptr && member->is_array()) {
        size_t objects = 0;
        for (const JsonValue& v : member->get_array()) objects += v.is_object() ? 1 : 0;
        OCW_FUZZ_CHECK(ok && items.size() == objects, Where("ParseQueryResult", text));
    } else {
        OCW_FUZZ_CHECK(!ok && items.empty(), Where("ParseQueryResult", text));
    }
}

// The entry points that every text goes through, whatever its shape.
void WalkShapeIndependent(COracleCloudParser& parser, const std::string& text, const Document& doc) {
    WalkTopLevel<SVMInfoLib>(parser, text, doc);
    WalkKeyedList<SVMInfoLib>(parser, text, doc, "result");
    WalkKeyedList<std::string>(parser, text, doc, "result");
    WalkKeyedList<SJavaInstanceInfoLib>(parser, text, doc, "services");
    WalkQueryResult<SNetworkInfoLib>(parser, text, doc);
    WalkQueryResult<SSubnetInfoLib>(parser, text, doc);

    std::vector<std::string> names;
    int n = parser.ParseListAsStrings(text, "result", names);
    OCW_FUZZ_CHECK(n >= 0 && static_cast<size_t>(n) == names.size(), Where("ParseListAsStrings", text));

    std::vector<SVMInfoLib> planned;
    parser.ParseListAlongPath(text, {"oplans", "objects", "instances"}, planned);

    SOracleJobInfoLib job;
    bool ok = parser.ExtractOraStatusAndTag(text, job);
    if (doc.valid) OCW_FUZZ_CHECK(ok == doc.value.is_object(), Where("ExtractOraStatusAndTag", text));
}

// Every record type with a mapping, for documents that parse: the failure
// path is the same for all of them and needs no repetition.
void WalkAllRecords(COracleCloudParser& parser, const std::string& text, const Document& doc) {
    WalkTopLevel<SHostInfoLib>(parser, text, doc);
    WalkTopLevel<SKeyPairInfoLib>(parser, text, doc);
    WalkTopLevel<SIPAssociationLib>(parser, text, doc);
    WalkTopLevel<SSecurityGroupInfoLib>(parser, text, doc);
    WalkTopLevel<SInstanceShapeInfoLib>(parser, text, doc);
    WalkTopLevel<SNetworkInfoLib>(parser, text, doc);
    WalkTopLevel<SContainerInfoLib>(parser, text, doc);
    WalkTopLevel<SDiskInfoLib>(parser, text, doc);
    WalkTopLevel<SSnapshotInfoLib>(parser, text, doc);
    WalkTopLevel<SStorageAttachmentInfoLib>(parser, text, doc);
    WalkTopLevel<SMessageInfoLib>(parser, text, doc);
    WalkTopLevel<std::string>(parser, text, doc);
    WalkTopLevel<SRebootInstanceReqInfoLib>(parser, text, doc);
    WalkTopLevel<SOrchestrationInfoLib>(parser, text, doc);
    WalkTopLevel<SOracleDBInstanceInfoLib>(parser, text, doc);
    WalkTopLevel<SOracleDBComputeNodeLib>(parser, text, doc);
    WalkTopLevel<SOracleSSHKeyLib>(parser, text, doc);
    WalkTopLevel<SJavaMySQLInfoBaseLib>(parser, text, doc);
    WalkTopLevel<SJavaInstanceInfoLib>(parser, text, doc);
    WalkTopLevel<SMySQLInstanceInfoLib>(parser, text, doc);
    WalkTopLevel<SJavaMySQLJobInfoLib>(parser, text, doc);
    WalkTopLevel<SImageInfoLib>(parser, text, doc);
    WalkTopLevel<SSubnetInfoLib>(parser, text, doc);
    WalkTopLevel<SRegionInfoLib>(parser, text, doc);
    WalkTopLevel<SAvailabilityDomainInfoLib>(parser, text, doc);
    WalkTopLevel<SBootVolumeAttachmentInfo>(parser, text, doc);
    WalkTopLevel<SInstanceCredentialsInfoLib>(parser, text, doc);
    WalkTopLevel<STenancyInfoLib>(parser, text, doc);
    WalkTopLevel<SVnicAttachmentInfoLib>(parser, text, doc);
    WalkTopLevel<SVNicInfoLib>(parser, text, doc);
    WalkTopLevel<SOCIDbBackupConfigLib>(parser, text, doc);
    WalkTopLevel<SOCIDbBackupInfoLib>(parser, text, doc);
    WalkTopLevel<SOCIDbHomeInfoLib>(parser, text, doc);
    WalkTopLevel<SOCIDbSystemInfoLib>(parser, text, doc);
    WalkTopLevel<SOCIDatabaseInfoLib>(parser, text, doc);
    WalkTopLevel<SOCIDbNodeInfoLib>(parser, text, doc);
    WalkTopLevel<SStorageBucketInfoLib>(parser, text, doc);
    WalkTopLevel<SAPIErrorInfoLib>(parser, text, doc);
    WalkKeyedList<SKeyPairInfoLib>(parser, text, doc, "result");
    WalkKeyedList<SSecurityGroupInfoLib>(parser, text, doc, "result");
    WalkKeyedList<SDiskInfoLib>(parser, text, doc, "result");
    WalkKeyedList<SOracleDBInstanceInfoLib>(parser, text, doc, "services");
    WalkKeyedList<SMySQLInstanceInfoLib>(parser, text, doc, "services");
}

void CheckTextHelpers(const std::string& text) {
    std::string last = COracleCloudParser::GetRSubStrFromLastSlash(text);
    OCW_FUZZ_CHECK(last.find('/') == std::string::npos, Where("GetRSubStrFromLastSlash", text));
    (void)COracleCloudParser::ParseTimeUtc(text);
    (void)getNumCPUFromOCIShape(text);
    (void)getMemoryInGBsFromOCIShape(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static COracleCloudInfrastructureParser ociParser;
    static COracleCloudParser classicParser;
    ocwfuzz::ResetLog();

    const std::string text(reinterpret_cast<const char*>(data), size);
    Document doc;
    doc.valid = JsonHelper::Parse(text, doc.value);

    for (COracleCloudParser* parser : {static_cast<COracleCloudParser*>(&ociParser), &classicParser}) {
        WalkShapeIndependent(*parser, text, doc);
        if (doc.valid) WalkAllRecords(*parser, text, doc);
    }
    if (doc.valid) ocwfuzz::CheckNoSecretLogged(text, doc.value);
    CheckTextHelpers(text);
    return 0;
}
