#pragma once
#include <ctime>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "oraclecloud/OracleCloudRecords.h"
#include "platform/JsonHelper.h"

namespace OracleCloudSDKWrapper {

// Turns response bodies into records. The generic entry points (ParseObject,
// ParseList, ...) walk a document and hand every JSON object to the virtual
// Convert overload of the record type, so a subclass that overrides Convert
// (the OCI parser) reuses the walking unchanged. This class holds the Compute
// Classic / PaaS mappings.
//
// Failure contract of the entry points: they never throw. A document that is
// malformed or has the wrong shape (top level not an object, list key absent or
// not a list) gives false and one error line in the parser's log:
//   "Exception parsing json object - %s\n%s"      (ParseObject, ExtractOraStatusAndTag)
//   "Exception parsing json list [%s] - %s\n%s"   (the list readers)
// with the problem and then the JSON text, in which the values of members named
// like secrets ("password", "adminPassword", "chapSecret", ...) are replaced by
// "********" even when the text is cut off. An empty (or blank) text gives false without a log
// line: there is nothing to read. A Convert result of false is passed on by
// ParseObject, but ConvertList keeps such records (a list is never shorter than
// its object elements).
//
// The object is stateless apart from its logger; one parser serves every
// request of its backend, on one thread at a time.
class COracleCloudParser : public JsonHelper {
public:
    COracleCloudParser() = default;
    ~COracleCloudParser() override = default;
    COracleCloudParser(const COracleCloudParser&) = delete;
    COracleCloudParser& operator=(const COracleCloudParser&) = delete;

    // ---- generic entry points --------------------------------------------

    // One JSON object into one record: Convert's result, false for malformed
    // text or a top level that is not an object.
    template <typename T>
    bool ParseObject(const std::string& text, T& out) {
        try {
            JsonValue doc;
            if (!ReadDocument(text, doc)) return false;
            return Convert(RequireObject(doc), out);
        } catch (const std::exception& e) {
            OCW_LOG_ERROR(&m_debugLog, "Exception parsing json object - %s\n%s", e.what(), TextForLog(text).c_str());
            return false;
        }
    }

    // The list under listKey of a top-level object, appended to out. The list
    // is normally an array; an object under the key is read as the list of its
    // member values (the Java service lists its instances keyed by name).
    template <typename T>
    bool ParseList(const std::string& text, const std::string& listKey, std::vector<T>& out) {
        try {
            JsonValue doc;
            if (!ReadDocument(text, doc)) return false;
            const JsonValue& list = RequireListMember(RequireObject(doc), listKey);
            if (const JsonArray* array = list.if_array()) return ConvertList(*array, out);
            for (const auto& member : list.get_object()) AppendElement(member.value(), out);
            return true;
        } catch (const std::exception& e) {
            OCW_LOG_ERROR(&m_debugLog, "Exception parsing json list [%s] - %s\n%s", listKey.c_str(), e.what(),
                          TextForLog(text).c_str());
            return false;
        }
    }

    // A document that is itself an array (OCI lists, DBCS compute nodes).
    template <typename T>
    bool ParseList(const std::string& text, std::vector<T>& out) {
        try {
            JsonValue doc;
            if (!ReadDocument(text, doc)) return false;
            return ConvertList(RequireArray(doc), out);
        } catch (const std::exception& e) {
            OCW_LOG_ERROR(&m_debugLog, "Exception parsing json list [%s] - %s\n%s", "", e.what(),
                          TextForLog(text).c_str());
            return false;
        }
    }

    // Follows keyPath from the top-level object through nested objects and
    // arrays of objects (every element is followed) and converts the objects of
    // every list found under the last key, in document order. Used for saved
    // orchestration documents: {"oplans", "objects", "instances"}. False (and a
    // log line) when no list is found along the path.
    template <typename T>
    bool ParseListAlongPath(const std::string& text, const std::vector<std::string>& keyPath, std::vector<T>& out) {
        std::string pathText = JoinKeyPath(keyPath);
        try {
            JsonValue doc;
            if (!ReadDocument(text, doc)) return false;
            std::vector<const JsonArray*> lists = FindListsAlongPath(RequireObject(doc), keyPath);
            for (const JsonArray* list : lists) ConvertList(*list, out);
            return true;
        } catch (const std::exception& e) {
            OCW_LOG_ERROR(&m_debugLog, "Exception parsing json list [%s] - %s\n%s", pathText.c_str(), e.what(),
                          TextForLog(text).c_str());
            return false;
        }
    }

    // The strings of the list under listKey, appended to out (other elements
    // are skipped). Returns how many names were appended: 0 for a failure as
    // well as for an empty list.
    int ParseListAsStrings(const std::string& text, const std::string& listKey, std::vector<std::string>& out);

    // One page of a search-service answer: the objects of its "items" list,
    // each through ConvertQueryItem, appended to out.
    template <typename T>
    bool ParseQueryResult(const std::string& text, std::vector<T>& out) {
        try {
            JsonValue doc;
            if (!ReadDocument(text, doc)) return false;
            const JsonValue& items = RequireListMember(RequireObject(doc), "items");
            const JsonArray* array = items.if_array();
            if (array == nullptr) throw std::runtime_error("\"items\" is not a list");
            for (const JsonValue& v : *array) {
                if (const JsonObject* o = v.if_object()) {
                    T t{};
                    ConvertQueryItem(*o, t);
                    out.push_back(std::move(t));
                }
            }
            return true;
        } catch (const std::exception& e) {
            OCW_LOG_ERROR(&m_debugLog, "Exception parsing json list [%s] - %s\n%s", "items", e.what(),
                          TextForLog(text).c_str());
            return false;
        }
    }

    // Appends one record per object element, whatever Convert returns. String
    // elements become records too where a string mapping exists (bare names of
    // Classic directory listings: std::string, SKeyPairInfoLib,
    // SSecurityGroupInfoLib); every other element is skipped. Always true.
    template <typename T>
    bool ConvertList(const JsonArray& array, std::vector<T>& out) {
        for (const JsonValue& v : array) AppendElement(v, out);
        return true;
    }

    // The list under key of obj; false when there is no list under that key.
    template <typename T>
    bool ConvertNestedList(const JsonObject& obj, const std::string& key, std::vector<T>& out) {
        const JsonArray* array = FindArrayValue(obj, key);
        if (array == nullptr) return false;
        return ConvertList(*array, out);
    }

    // The object under key of obj through Convert; false when absent.
    template <typename T>
    bool ConvertNestedObject(const JsonObject& obj, const std::string& key, T& out) {
        const JsonObject* nested = FindObjectValue(obj, key);
        if (nested == nullptr) return false;
        return Convert(*nested, out);
    }

    // String lists: string elements are appended, others skipped.
    bool ConvertNestedListString(const JsonObject& obj, const std::string& key, std::vector<std::string>& out);
    bool ConvertListString(const JsonArray& array, std::vector<std::string>& out);

    // ---- record mappings (Classic) -----------------------------------------
    // Each fills the record from one object. A key that is absent or of another
    // kind leaves the field at its default; the result is true unless noted.

    virtual bool Convert(const JsonObject& obj, SHostInfoLib& out);  // no mapping: untouched
    virtual bool Convert(const JsonObject& obj, SVMInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SKeyPairInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SIPAssociationLib& out);
    virtual bool Convert(const JsonObject& obj, SSecurityGroupInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SInstanceShapeInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SNetworkInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SContainerInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SDiskInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SSnapshotInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SStorageAttachmentInfoLib& out);
    virtual bool Convert(const std::string& name, SKeyPairInfoLib& out);
    virtual bool Convert(const std::string& name, SSecurityGroupInfoLib& out);
    virtual bool Convert(const std::string& text, std::string& out);
    virtual bool Convert(const JsonObject& obj, SMessageInfoLib& out);
    virtual bool Convert(const JsonObject& obj, std::string& out);  // the object as JSON text
    virtual bool Convert(const JsonObject& obj, SRebootInstanceReqInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SOrchestrationInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SOracleDBInstanceInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SOracleDBComputeNodeLib& out);
    virtual bool Convert(const JsonObject& obj, SOracleSSHKeyLib& out);
    virtual bool Convert(const JsonObject& obj, SJavaMySQLInfoBaseLib& out);
    virtual bool Convert(const JsonObject& obj, SJavaInstanceInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SMySQLInstanceInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SJavaMySQLJobInfoLib& out);

    // Records only OCI answers fill. The Classic parser has no source for
    // them: false, record untouched (the OCI parser overrides these).
    virtual bool Convert(const JsonObject& obj, SImageInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SSubnetInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SRegionInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SAvailabilityDomainInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SBootVolumeAttachmentInfo& out);
    virtual bool Convert(const JsonObject& obj, SInstanceCredentialsInfoLib& out);
    virtual bool Convert(const JsonObject& obj, STenancyInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SVnicAttachmentInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SVNicInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SOCIDbBackupConfigLib& out);
    virtual bool Convert(const JsonObject& obj, SOCIDbBackupInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SOCIDbHomeInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SOCIDbSystemInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SOCIDatabaseInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SOCIDbNodeInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SStorageBucketInfoLib& out);
    virtual bool Convert(const JsonObject& obj, SStorageObjectInfoLib& out);  // Extension
    virtual bool Convert(const JsonObject& obj, SAPIErrorInfoLib& out);

    // One item of a search-service answer (ParseQueryResult). No Classic
    // source: false, record untouched.
    virtual bool ConvertQueryItem(const JsonObject& obj, SNetworkInfoLib& out);
    virtual bool ConvertQueryItem(const JsonObject& obj, SSubnetInfoLib& out);

    // ---- helpers ------------------------------------------------------------

    // The text after the last "/"; empty when s is empty, has no "/" or ends
    // in "/". Classic names are paths, and an unqualified text is deliberately
    // not taken as a name.
    static std::string GetRSubStrFromLastSlash(const std::string& s);

    // The "networking" map of a Classic instance: members are visited in key
    // order; "eth0" (the shared network, unless it names an "ipnetwork")
    // contributes its "seclists" as security groups, every other interface
    // one SVNicInfoLib named after its "ipnetwork" (privateIp: its "ip").
    // Always true.
    bool ExtractIPNetworksAndSecurity(const JsonObject& networking, std::vector<SVNicInfoLib>& vnics,
                                      std::vector<SSecurityGroupInfoLib>& groups);

    // A requested instance (an entry of a launch plan or an orchestration's
    // template) is named without the uuid a running instance has: its vmName
    // is the last part of its name, and it has no uuid. Applied to a VM record
    // converted from such a request.
    static void ReadAsRequestedInstance(SVMInfoLib& vm);

    // A DBCS job-status document: "job_status" into jobStatus, the "message"
    // entries (joined by "\n") into message, and the backup tag of a
    // "Database backup completed with [<tag>]" message into tag. Only the last
    // message decides the tag: one without the marker clears it. False for a
    // text that is not a JSON object (logged like ParseObject).
    bool ExtractOraStatusAndTag(const std::string& text, SOracleJobInfoLib& job);

    // "%Y-%m-%dT%H:%M:%SZ" as UTC seconds. Fractional seconds are ignored and
    // a numeric offset ("+02:00") is applied; the PaaS date form
    // "Tue May 3 0:35:23 UTC 2016" is accepted too. 0 when the text matches
    // neither.
    static std::time_t ParseTimeUtc(const std::string& text);

protected:
    // Any scalar as text: strings as they are, numbers in decimal, booleans as
    // "true"/"false", objects and arrays as JSON text; "" for null or absent.
    static std::string GetValueText(const JsonObject& obj, const std::string& key);
    // Integers given as a JSON number (a real is truncated) or as decimal text.
    static int64_t GetIntOrText(const JsonObject& obj, const std::string& key);
    static int ClampToInt(int64_t value);
    // The part of s before its last "/" (s itself when it has none).
    static std::string CutAtLastSlash(const std::string& s);

private:
    // text with the values of secret-named members masked, for the log.
    static std::string TextForLog(const std::string& text);
    // Parses text. False for a blank text; throws std::runtime_error with the
    // parser's reason for malformed text.
    static bool ReadDocument(const std::string& text, JsonValue& doc);
    static const JsonObject& RequireObject(const JsonValue& doc);
    static const JsonArray& RequireArray(const JsonValue& doc);
    // The array (or object) under key; throws when absent or of another kind.
    static const JsonValue& RequireListMember(const JsonObject& obj, const std::string& key);
    static std::vector<const JsonArray*> FindListsAlongPath(const JsonObject& root,
                                                            const std::vector<std::string>& keyPath);
    static std::string JoinKeyPath(const std::vector<std::string>& keyPath);

    template <typename T>
    void AppendElement(const JsonValue& v, std::vector<T>& out) {
        if (const JsonObject* o = v.if_object()) {
            T t{};
            Convert(*o, t);
            out.push_back(std::move(t));
        } else if (const boost::json::string* s = v.if_string()) {
            AppendFromString(std::string(s->data(), s->size()), out, 0);
        }
    }

    // Chosen when a Convert(const std::string&, T&) overload exists.
    template <typename T>
    auto AppendFromString(const std::string& s, std::vector<T>& out, int)
        -> decltype(this->Convert(s, std::declval<T&>()), void()) {
        T t{};
        Convert(s, t);
        out.push_back(std::move(t));
    }
    template <typename T>
    void AppendFromString(const std::string&, std::vector<T>&, long) {}
};

}  // namespace OracleCloudSDKWrapper
