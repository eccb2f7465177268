// The generic readers: failure handling and log lines, list walking, string
// lists, key paths, and the text helpers both mappings rely on.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ParserTestSupport.h"
#include "parser/OracleCloudParser.h"

using namespace OracleCloudSDKWrapper;
using ParserTest::LogCapture;

namespace {

const char* kVolumeList = R"({
  "result": [
    {"name": "/Compute-acme/jdoe/web1_boot", "size": "21474836480", "status": "Online"},
    42,
    null,
    "stray text",
    [1, 2],
    {"name": "/Compute-acme/jdoe/web1_data", "size": "107374182400", "status": "Initializing"}
  ]
})";

}  // namespace

TEST(ParserFramework, ParseObjectLogsReasonAndTextForMalformedJson) {
    COracleCloudParser parser;
    const std::vector<std::string> bodies = {
        R"({"message": "Incorrect username or pass)",                  // cut off mid-string
        R"({"message": "x",})",                                         // trailing comma
        "<html><body>502 Bad Gateway</body></html>",                    // proxy error page
        R"({"message": "x"} trailing)",                                 // garbage after the document
    };
    for (const std::string& body : bodies) {
        LogCapture log;
        SMessageInfoLib msg;
        msg.message = "untouched";
        EXPECT_FALSE(parser.ParseObject(body, msg)) << body;
        EXPECT_EQ("untouched", msg.message) << body;
        ASSERT_EQ(1u, log.lines().size()) << body;
        const LogCapture::Line& line = log.lines()[0];
        EXPECT_EQ(0, line.level);
        EXPECT_EQ(0u, line.text.rfind("Exception parsing json object - ", 0)) << line.text;
        // The reason comes first, the document after the line break.
        EXPECT_EQ(body, line.text.substr(line.text.find('\n') + 1));
        EXPECT_NE(std::string::npos, line.signature.find("ParseObject")) << line.signature;
    }
}

TEST(ParserFramework, ParseObjectOfBlankTextFailsWithoutLogLine) {
    COracleCloudParser parser;
    LogCapture log;
    SMessageInfoLib msg;
    EXPECT_FALSE(parser.ParseObject("", msg));
    EXPECT_FALSE(parser.ParseObject(" \r\n\t", msg));
    EXPECT_TRUE(log.lines().empty());
}

TEST(ParserFramework, ParseObjectRejectsDocumentsThatAreNotObjects) {
    COracleCloudParser parser;
    for (const char* body : {R"([{"message": "inside a list"}])", R"("axabcdefgh")", "42", "null", "true"}) {
        LogCapture log;
        SMessageInfoLib msg;
        EXPECT_FALSE(parser.ParseObject(body, msg)) << body;
        EXPECT_TRUE(msg.message.empty());
        ASSERT_EQ(1u, log.errorCount()) << body;
        EXPECT_NE(std::string::npos, log.lines()[0].text.find("not an object")) << log.lines()[0].text;
    }
}

TEST(ParserFramework, ParseObjectPassesOnTheMappingResult) {
    COracleCloudParser parser;
    LogCapture log;
    SMessageInfoLib msg;
    EXPECT_TRUE(parser.ParseObject(R"({"message": "Authorization token is invalid"})", msg));
    EXPECT_EQ("Authorization token is invalid", msg.message);

    // An object without the key still converts: the field keeps its default.
    SMessageInfoLib onlyCode;
    EXPECT_TRUE(parser.ParseObject(R"({"code": "NotAuthenticated"})", onlyCode));
    EXPECT_EQ("", onlyCode.message);

    // Classic has no source for OCI-only records: false, but nothing to log.
    SImageInfoLib image;
    EXPECT_FALSE(parser.ParseObject(R"({"id": "ocid1.image.oc1..aaaa"})", image));
    EXPECT_EQ("", image.id);
    EXPECT_TRUE(log.lines().empty());
}

TEST(ParserFramework, ParseListKeepsObjectsInOrderAndSkipsOtherElements) {
    COracleCloudParser parser;
    std::vector<SDiskInfoLib> disks(1);  // the caller's entries stay in front
    disks[0].name = "already there";
    ASSERT_TRUE(parser.ParseList(kVolumeList, "result", disks));
    ASSERT_EQ(3u, disks.size());
    EXPECT_EQ("already there", disks[0].name);
    EXPECT_EQ("/Compute-acme/jdoe/web1_boot", disks[1].name);
    EXPECT_EQ(21474836480ULL, disks[1].sizeBytes);
    EXPECT_EQ("/Compute-acme/jdoe/web1_data", disks[2].name);
    EXPECT_EQ("Initializing", disks[2].status);
}

TEST(ParserFramework, ParseListKeepsRecordsWhoseConversionFailed) {
    COracleCloudParser parser;
    std::vector<SImageInfoLib> images;
    EXPECT_TRUE(parser.ParseList(R"({"result": [{"id": "a"}, {"id": "b"}]})", "result", images));
    EXPECT_EQ(2u, images.size());
}

TEST(ParserFramework, ParseListFailsAndLogsWhenTheListIsMissingOrNoList) {
    COracleCloudParser parser;
    struct Case {
        const char* body;
        const char* reason;
    };
    const Case cases[] = {
        {R"({"message": "Authorization token is invalid"})", "no member \"result\""},
        {R"({"result": "/Compute-acme/jdoe/"})", "not a list"},
        {R"({"result": 3})", "not a list"},
        {R"(["/Compute-acme/"])", "not an object"},
        {R"({"result": [)", "at offset"},
    };
    for (const Case& c : cases) {
        LogCapture log;
        std::vector<SDiskInfoLib> disks;
        EXPECT_FALSE(parser.ParseList(c.body, "result", disks)) << c.body;
        EXPECT_TRUE(disks.empty());
        ASSERT_EQ(1u, log.lines().size()) << c.body;
        const std::string& text = log.lines()[0].text;
        EXPECT_EQ(0u, text.rfind("Exception parsing json list [result] - ", 0)) << text;
        EXPECT_NE(std::string::npos, text.find(c.reason)) << text;
        EXPECT_EQ(c.body, text.substr(text.find('\n') + 1));
    }
}

TEST(ParserFramework, ParseListReadsAListKeyedByName) {
    // The Java service lists its instances as {"services": {"<name>": {...}}}.
    COracleCloudParser parser;
    std::vector<SJavaInstanceInfoLib> services;
    ASSERT_TRUE(parser.ParseList(R"({"services": {
        "jcs1": {"serviceName": "jcs1", "state": "READY"},
        "skip": "not an instance",
        "jcs2": {"serviceName": "jcs2", "state": "STOPPED"}}})",
                                 "services", services));
    ASSERT_EQ(2u, services.size());
    EXPECT_EQ("jcs1", services[0].serviceName);
    EXPECT_EQ("STOPPED", services[1].state);
}

TEST(ParserFramework, ParseListWithoutKeyNeedsATopLevelList) {
    COracleCloudParser parser;
    std::vector<SOracleDBComputeNodeLib> nodes;
    EXPECT_TRUE(parser.ParseList(R"([{"hostname": "db1-1"}, 7, {"hostname": "db1-2"}])", nodes));
    ASSERT_EQ(2u, nodes.size());
    EXPECT_EQ("db1-2", nodes[1].hostname);

    LogCapture log;
    EXPECT_FALSE(parser.ParseList(R"({"hostname": "db1-1"})", nodes));
    EXPECT_EQ(2u, nodes.size());
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(0u, log.lines()[0].text.rfind("Exception parsing json list [] - document is an object, not a list", 0));
}

TEST(ParserFramework, DirectoryListingsBecomeNamedRecords) {
    COracleCloudParser parser;
    const char* listing = R"({"result": ["/Compute-acme/jdoe/deploy-key", {"name": "/Compute-acme/jdoe/ops"}, 5]})";

    std::vector<SKeyPairInfoLib> keys;
    ASSERT_TRUE(parser.ParseList(listing, "result", keys));
    ASSERT_EQ(2u, keys.size());
    EXPECT_EQ("/Compute-acme/jdoe/deploy-key", keys[0].fullName);
    EXPECT_EQ("deploy-key", keys[0].name);
    EXPECT_EQ("ops", keys[1].name);

    std::vector<SSecurityGroupInfoLib> groups;
    ASSERT_TRUE(parser.ParseList(R"({"result": ["/Compute-acme/default/default"]})", "result", groups));
    ASSERT_EQ(1u, groups.size());
    EXPECT_EQ("default", groups[0].name);

    // Plain strings: names are copied, objects kept as their JSON text.
    std::vector<std::string> names;
    ASSERT_TRUE(parser.ParseList(listing, "result", names));
    ASSERT_EQ(2u, names.size());
    EXPECT_EQ("/Compute-acme/jdoe/deploy-key", names[0]);
    EXPECT_EQ(R"({"name":"/Compute-acme/jdoe/ops"})", names[1]);

    // Records without a string mapping ignore bare names.
    std::vector<SVMInfoLib> vms;
    ASSERT_TRUE(parser.ParseList(listing, "result", vms));
    EXPECT_EQ(1u, vms.size());
}

TEST(ParserFramework, ParseListAsStringsCountsTheNamesItAppends) {
    COracleCloudParser parser;
    std::vector<std::string> names{"/Compute-acme/"};
    EXPECT_EQ(2, parser.ParseListAsStrings(R"({"result": ["/Compute-acme/jdoe/", {"x": 1}, "/Compute-acme/ops/"]})",
                                           "result", names));
    EXPECT_EQ((std::vector<std::string>{"/Compute-acme/", "/Compute-acme/jdoe/", "/Compute-acme/ops/"}), names);

    LogCapture log;
    // An empty directory is not an error of the document.
    EXPECT_EQ(0, parser.ParseListAsStrings(R"({"result": []})", "result", names));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(0, parser.ParseListAsStrings(R"({"message": "no"})", "result", names));
    EXPECT_EQ(0, parser.ParseListAsStrings(R"({"result": {"a": "b"}})", "result", names));
    EXPECT_EQ(0, parser.ParseListAsStrings("{\"result\": [\"/Compute-", "result", names));
    EXPECT_EQ(3u, log.errorCount());
    EXPECT_EQ(3u, names.size());
}

TEST(ParserFramework, ParseListAlongPathCollectsEveryListAtTheEnd) {
    // A saved orchestration (v1): oplans -> objects -> instances.
    const char* orchestration = R"({
      "name": "/Compute-acme/jdoe/web1_master",
      "oplans": [
        {"label": "boot", "obj_type": "storage/volume", "objects": [{"name": "/Compute-acme/jdoe/web1_boot"}]},
        {"label": "web", "obj_type": "launchplan", "objects": [
          {"instances": [{"name": "/Compute-acme/jdoe/web1", "shape": "oc3", "label": "web1"}]},
          {"instances": [{"name": "/Compute-acme/jdoe/web2", "shape": "oc4"}, "skipped"]}
        ]}
      ]})";
    COracleCloudParser parser;
    std::vector<SVMInfoLib> vms;
    ASSERT_TRUE(parser.ParseListAlongPath(orchestration, {"oplans", "objects", "instances"}, vms));
    ASSERT_EQ(2u, vms.size());
    EXPECT_EQ("/Compute-acme/jdoe/web1", vms[0].fullName);
    EXPECT_EQ("oc4", vms[1].shape);

    LogCapture log;
    std::vector<SVMInfoLib> none;
    EXPECT_FALSE(parser.ParseListAlongPath(R"({"name": "x", "objects": []})", {"oplans", "objects", "instances"},
                                           none));
    EXPECT_TRUE(none.empty());
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(0u, log.lines()[0].text.rfind("Exception parsing json list [oplans/objects/instances] - ", 0));
}

TEST(ParserFramework, NestedConvertersFailOnlyWhenTheKeyIsMissing) {
    COracleCloudParser parser;
    JsonValue doc;
    ASSERT_TRUE(JsonHelper::Parse(
        R"({"sshkeys": ["/Compute-acme/jdoe/k1", 3, "/Compute-acme/jdoe/k2"], "attachments": [],
            "msg": {"message": "m"}, "notAList": {"a": 1}})",
        doc));
    const JsonObject& obj = doc.as_object();

    std::vector<std::string> keys;
    EXPECT_TRUE(parser.ConvertNestedListString(obj, "sshkeys", keys));
    EXPECT_EQ((std::vector<std::string>{"/Compute-acme/jdoe/k1", "/Compute-acme/jdoe/k2"}), keys);
    EXPECT_FALSE(parser.ConvertNestedListString(obj, "absent", keys));
    EXPECT_FALSE(parser.ConvertNestedListString(obj, "notAList", keys));

    std::vector<SStorageAttachmentInfoLib> attachments;
    EXPECT_TRUE(parser.ConvertNestedList(obj, "attachments", attachments));
    EXPECT_FALSE(parser.ConvertNestedList(obj, "msg", attachments));

    SMessageInfoLib msg;
    EXPECT_TRUE(parser.ConvertNestedObject(obj, "msg", msg));
    EXPECT_EQ("m", msg.message);
    EXPECT_FALSE(parser.ConvertNestedObject(obj, "sshkeys", msg));
}

TEST(ParserHelpers, GetRSubStrFromLastSlashTakesOnlyTextAfterASlash) {
    EXPECT_EQ("b", COracleCloudParser::GetRSubStrFromLastSlash("/a/b"));
    EXPECT_EQ("8f3c2a1e", COracleCloudParser::GetRSubStrFromLastSlash("/Compute-acme/jdoe/web1/8f3c2a1e"));
    EXPECT_EQ("", COracleCloudParser::GetRSubStrFromLastSlash("web1"));   // no slash: not a name
    EXPECT_EQ("", COracleCloudParser::GetRSubStrFromLastSlash(""));
    EXPECT_EQ("", COracleCloudParser::GetRSubStrFromLastSlash("/Compute-acme/jdoe/"));
    EXPECT_EQ("", COracleCloudParser::GetRSubStrFromLastSlash("/"));
    EXPECT_EQ("x", COracleCloudParser::GetRSubStrFromLastSlash("/x"));
    EXPECT_EQ("c d", COracleCloudParser::GetRSubStrFromLastSlash("a//c d"));
}

TEST(ParserHelpers, ParseTimeUtcReadsTheServicesTimeForms) {
    EXPECT_EQ(1577934245, COracleCloudParser::ParseTimeUtc("2020-01-02T03:04:05Z"));
    EXPECT_EQ(1472159429, COracleCloudParser::ParseTimeUtc("2016-08-25T21:10:29.600Z"));   // OCI milliseconds
    EXPECT_EQ(1472159429, COracleCloudParser::ParseTimeUtc("2016-08-25T21:10:29.600123+00:00"));
    EXPECT_EQ(1472159429 - 7200, COracleCloudParser::ParseTimeUtc("2016-08-25T21:10:29+02:00"));
    EXPECT_EQ(1472159429 + 5400, COracleCloudParser::ParseTimeUtc("2016-08-25T21:10:29-0130"));
    EXPECT_EQ(1462235723, COracleCloudParser::ParseTimeUtc("Tue May 3 0:35:23 UTC 2016"));  // DBCS
    EXPECT_EQ(0, COracleCloudParser::ParseTimeUtc(""));
    EXPECT_EQ(0, COracleCloudParser::ParseTimeUtc("yesterday"));
    EXPECT_EQ(0, COracleCloudParser::ParseTimeUtc("2020-01-02"));
    EXPECT_EQ(0, COracleCloudParser::ParseTimeUtc("Tue May 3 0:35:23 PDT 2016"));
}

TEST(ParserFramework, LoggedTextNeverShowsSecretValues) {
    COracleCloudParser parser;
    struct Case {
        const char* body;
        const char* logged;
    };
    const Case cases[] = {
        // Cut off inside the secret.
        {R"({"username": "opc", "password": "Xy7#pQ)", R"({"username": "opc", "password": "********")"},
        // Cut off after it; escaped quotes do not end the value early.
        {R"({"password" : "a\"b\\", "username": "opc)", R"({"password" : "********", "username": "opc)"},
        // Valid JSON of the wrong shape, secrets at any depth and in any case.
        {R"([{"adminPassword": "Welc0me#1", "parameters": [{"cloudStoragePwd": "s3cr3t", "sid": "ORCL"}]}])",
         R"([{"adminPassword": "********", "parameters": [{"cloudStoragePwd": "********", "sid": "ORCL"}]}])"},
        {R"({"chapSecret": 12345, "iqn": "iqn.x",)", R"({"chapSecret": ********, "iqn": "iqn.x",)"},
        // A value that merely looks like a key name is not touched.
        {R"({"note": "password", "x": [)", R"({"note": "password", "x": [)"},
    };
    for (const Case& c : cases) {
        LogCapture log;
        SInstanceCredentialsInfoLib credentials;
        EXPECT_FALSE(parser.ParseObject(c.body, credentials)) << c.body;
        ASSERT_EQ(1u, log.lines().size()) << c.body;
        const std::string& text = log.lines()[0].text;
        EXPECT_EQ(c.logged, text.substr(text.find('\n') + 1)) << c.body;
    }

    LogCapture log;
    std::vector<SStorageAttachmentInfoLib> attachments;
    EXPECT_FALSE(parser.ParseList(R"({"chapSecret": "abc", "result": 1})", "result", attachments));
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(std::string::npos, log.lines()[0].text.find("abc"));
}

TEST(ParserFramework, EveryCutOffPrefixFailsCleanly) {
    // Bodies cut off by a dropped connection, at every possible byte.
    const std::string body = R"({"result": [{"name": "/Compute-acme/jdoe/web1/8f3c", "shape": "oc3",
      "networking": {"eth0": {"seclists": ["/Compute-acme/default/default"]}, "eth1": {"ipnetwork": "/C/u/n"}},
      "storage_attachments": [{"index": 1, "storage_volume_name": "/C/u/v"}], "size": "1024",
      "attributes": {"userdata": {"administrator_password": "Welc0me#2018"}}}]})";
    COracleCloudParser parser;
    LogCapture log;
    for (size_t n = 1; n < body.size(); ++n) {
        std::string prefix = body.substr(0, n);
        std::vector<SVMInfoLib> vms;
        SVMInfoLib vm;
        std::vector<std::string> names;
        EXPECT_FALSE(parser.ParseList(prefix, "result", vms)) << prefix;
        EXPECT_FALSE(parser.ParseObject(prefix, vm)) << prefix;
        EXPECT_EQ(0, parser.ParseListAsStrings(prefix, "result", names)) << prefix;
        EXPECT_TRUE(vms.empty());
    }
    for (const auto& line : log.lines()) EXPECT_EQ(std::string::npos, line.text.find("Welc0me")) << line.text;
    std::vector<SVMInfoLib> vms;
    ASSERT_TRUE(parser.ParseList(body, "result", vms));
    EXPECT_EQ("Welc0me#2018", vms.at(0).administratorPassword);
}
