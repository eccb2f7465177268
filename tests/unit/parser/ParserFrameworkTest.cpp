// The generic readers both mappings rely on: what a bad document does (false,
// one error line with the reason and the masked text), list walking, string
// lists, key paths, and the text helpers. (Arbitrary and cut-off bodies are the
// JSON mapping fuzz target's.)
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogCapture.h"
#include "parser/OracleCloudParser.h"

using namespace OracleCloudSDKWrapper;
using ocwtest::LogCapture;
using ::testing::ElementsAre;

namespace {

// The document part of a failure line: the reason comes first, the text after the line break.
std::string LoggedDocument(const LogCapture& log) {
    auto lines = log.lines();
    return lines.size() == 1 ? lines[0].text.substr(lines[0].text.find('\n') + 1) : "<" + log.all() + ">";
}

}  // namespace

TEST(ParserFramework, ObjectThatDoesNotReadFailsWithOneErrorLineAndLeavesTheRecord) {
    struct Case {
        const char* body;
        const char* reason;  // "" for a blank text, which is not logged
    };
    const Case cases[] = {
        {R"({"message": "Incorrect username or pass)", "at offset"},  // cut off mid-string
        {R"({"message": "x",})", "at offset"},                         // trailing comma
        {"<html><body>502 Bad Gateway</body></html>", "at offset"},    // a proxy's error page
        {R"({"message": "x"} trailing)", "at offset"},
        {R"([{"message": "inside a list"}])", "not an object"},
        {"42", "not an object"},
        {"", ""},
        {" \r\n\t", ""},
    };
    COracleCloudParser parser;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.body);
        LogCapture log;
        SMessageInfoLib msg;
        msg.message = "untouched";
        EXPECT_FALSE(parser.ParseObject(c.body, msg));
        EXPECT_EQ(msg.message, "untouched");
        if (*c.reason == '\0') {
            EXPECT_TRUE(log.lines().empty());
            continue;
        }
        ASSERT_EQ(log.lines().size(), 1u);
        const ocwtest::LogLine line = log.lines()[0];
        EXPECT_EQ(line.level, 0);
        EXPECT_EQ(line.text.rfind("Exception parsing json object - ", 0), 0u) << line.text;
        EXPECT_NE(line.text.find(c.reason), std::string::npos) << line.text;
        EXPECT_EQ(LoggedDocument(log), c.body);
        EXPECT_NE(line.signature.find("ParseObject"), std::string::npos) << line.signature;
    }
}

TEST(ParserFramework, ObjectWithoutTheKeyStillReadsAndAClassicParserHasNoOciRecords) {
    COracleCloudParser parser;
    LogCapture log;
    SMessageInfoLib msg;
    EXPECT_TRUE(parser.ParseObject(R"({"message": "Authorization token is invalid"})", msg));
    EXPECT_EQ(msg.message, "Authorization token is invalid");
    SMessageInfoLib onlyCode;
    EXPECT_TRUE(parser.ParseObject(R"({"code": "NotAuthenticated"})", onlyCode));
    EXPECT_EQ(onlyCode.message, "");
    SImageInfoLib image;
    EXPECT_FALSE(parser.ParseObject(R"({"id": "ocid1.image.oc1..aaaa"})", image));
    EXPECT_TRUE(log.lines().empty()) << "nothing to log for a record the cloud does not have";
}

TEST(ParserFramework, ListKeepsObjectsInOrderAfterTheCallersAndSkipsOtherElements) {
    COracleCloudParser parser;
    std::vector<SDiskInfoLib> disks(1);
    disks[0].name = "already there";
    ASSERT_TRUE(parser.ParseList(R"({"result": [{"name": "/C/u/boot", "size": "21474836480"}, 42, null, "stray",
        [1, 2], {"name": "/C/u/data", "status": "Initializing"}]})",
                                 "result", disks));
    ASSERT_EQ(disks.size(), 3u);
    EXPECT_EQ(disks[0].name, "already there");
    EXPECT_EQ(disks[1].sizeBytes, 21474836480ULL);
    EXPECT_EQ(disks[2].status, "Initializing");

    // Records whose conversion failed are kept too.
    std::vector<SImageInfoLib> images;
    EXPECT_TRUE(parser.ParseList(R"({"result": [{"id": "a"}, {"id": "b"}]})", "result", images));
    EXPECT_EQ(images.size(), 2u);

    // The Java service lists its instances by name; without a key the document is the list.
    std::vector<SJavaInstanceInfoLib> services;
    ASSERT_TRUE(parser.ParseList(R"({"services": {"jcs1": {"serviceName": "jcs1"}, "skip": "not an instance",
        "jcs2": {"serviceName": "jcs2", "state": "STOPPED"}}})",
                                 "services", services));
    ASSERT_EQ(services.size(), 2u);
    EXPECT_EQ(services[1].state, "STOPPED");
    std::vector<SOracleDBComputeNodeLib> nodes;
    EXPECT_TRUE(parser.ParseList(R"([{"hostname": "db1-1"}, 7, {"hostname": "db1-2"}])", nodes));
    EXPECT_EQ(nodes.size(), 2u);
}

TEST(ParserFramework, ListThatIsMissingOrNoListFailsWithItsReason) {
    struct Case {
        const char* body;
        const char* key;
        const char* reason;
    };
    const Case cases[] = {
        {R"({"message": "Authorization token is invalid"})", "result", "[result] - no member \"result\""},
        {R"({"result": "/Compute-acme/jdoe/"})", "result", "[result] - "},
        {R"({"result": 3})", "result", "not a list"},
        {R"(["/Compute-acme/"])", "result", "not an object"},
        {R"({"result": [)", "result", "at offset"},
        {R"({"hostname": "db1-1"})", "", "[] - document is an object, not a list"},
    };
    COracleCloudParser parser;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.body);
        LogCapture log;
        std::vector<SDiskInfoLib> disks;
        EXPECT_FALSE(*c.key ? parser.ParseList(c.body, c.key, disks) : parser.ParseList(c.body, disks));
        EXPECT_TRUE(disks.empty());
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_EQ(log.lines()[0].text.rfind("Exception parsing json list [", 0), 0u);
        EXPECT_NE(log.lines()[0].text.find(c.reason), std::string::npos) << log.lines()[0].text;
        EXPECT_EQ(LoggedDocument(log), c.body);
    }
}

TEST(ParserFramework, DirectoryListingsBecomeNamedRecordsOrStrings) {
    COracleCloudParser parser;
    const char* listing = R"({"result": ["/Compute-acme/jdoe/deploy-key", {"name": "/Compute-acme/jdoe/ops"}, 5]})";
    std::vector<SKeyPairInfoLib> keys;
    ASSERT_TRUE(parser.ParseList(listing, "result", keys));
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0].fullName, "/Compute-acme/jdoe/deploy-key");
    EXPECT_EQ(keys[0].name, "deploy-key");
    EXPECT_EQ(keys[1].name, "ops");
    // Plain strings: names are copied, objects kept as their JSON text.
    std::vector<std::string> names;
    ASSERT_TRUE(parser.ParseList(listing, "result", names));
    EXPECT_THAT(names, ElementsAre("/Compute-acme/jdoe/deploy-key", R"({"name":"/Compute-acme/jdoe/ops"})"));
    // Records without a string mapping ignore bare names.
    std::vector<SVMInfoLib> vms;
    ASSERT_TRUE(parser.ParseList(listing, "result", vms));
    EXPECT_EQ(vms.size(), 1u);

    // Counting form: names only, appended; an empty directory is not an error.
    std::vector<std::string> more{"/Compute-acme/"};
    EXPECT_EQ(parser.ParseListAsStrings(R"({"result": ["/Compute-acme/jdoe/", {"x": 1}, "/Compute-acme/ops/"]})",
                                        "result", more),
              2);
    EXPECT_THAT(more, ElementsAre("/Compute-acme/", "/Compute-acme/jdoe/", "/Compute-acme/ops/"));
    LogCapture log;
    EXPECT_EQ(parser.ParseListAsStrings(R"({"result": []})", "result", more), 0);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(parser.ParseListAsStrings(R"({"result": {"a": "b"}})", "result", more), 0);
    EXPECT_EQ(log.errors().size(), 1u);
}

TEST(ParserFramework, ListAlongAPathCollectsEveryListAtItsEnd) {
    // A saved orchestration (v1): oplans -> objects -> instances.
    const char* orchestration = R"({"name": "/Compute-acme/jdoe/web1_master", "oplans": [
        {"label": "boot", "objects": [{"name": "/Compute-acme/jdoe/web1_boot"}]},
        {"label": "web", "objects": [
          {"instances": [{"name": "/Compute-acme/jdoe/web1", "shape": "oc3"}]},
          {"instances": [{"name": "/Compute-acme/jdoe/web2", "shape": "oc4"}, "skipped"]}]}]})";
    COracleCloudParser parser;
    std::vector<SVMInfoLib> vms;
    ASSERT_TRUE(parser.ParseListAlongPath(orchestration, {"oplans", "objects", "instances"}, vms));
    ASSERT_EQ(vms.size(), 2u);
    EXPECT_EQ(vms[1].shape, "oc4");
    LogCapture log;
    std::vector<SVMInfoLib> none;
    EXPECT_FALSE(parser.ParseListAlongPath(R"({"name": "x", "objects": []})", {"oplans", "objects", "instances"}, none));
    EXPECT_EQ(log.errors().size(), 1u);
    EXPECT_EQ(log.errors()[0].rfind("Exception parsing json list [oplans/objects/instances] - ", 0), 0u);
}

TEST(ParserHelpers, LastPathPartIsTheTextAfterTheLastSlash) {
    const std::pair<const char*, const char*> cases[] = {
        {"/a/b", "b"}, {"/Compute-acme/jdoe/web1/8f3c2a1e", "8f3c2a1e"}, {"web1", ""}, {"", ""},
        {"/Compute-acme/jdoe/", ""}, {"/", ""}, {"/x", "x"}, {"a//c d", "c d"},
    };
    for (const auto& c : cases) EXPECT_EQ(COracleCloudParser::GetRSubStrFromLastSlash(c.first), c.second) << c.first;
}

TEST(ParserHelpers, TimeIsReadInEveryFormTheServicesSend) {
    const std::pair<const char*, long long> cases[] = {
        {"2020-01-02T03:04:05Z", 1577934245},
        {"2016-08-25T21:10:29.600Z", 1472159429},  // OCI milliseconds
        {"2016-08-25T21:10:29.600123+00:00", 1472159429},
        {"2016-08-25T21:10:29+02:00", 1472159429 - 7200},
        {"2016-08-25T21:10:29-0130", 1472159429 + 5400},
        {"Tue May 3 0:35:23 UTC 2016", 1462235723},  // DBCS
        {"", 0}, {"yesterday", 0}, {"2020-01-02", 0}, {"Tue May 3 0:35:23 PDT 2016", 0},
    };
    for (const auto& c : cases) EXPECT_EQ(COracleCloudParser::ParseTimeUtc(c.first), c.second) << c.first;
}

TEST(ParserFramework, LoggedTextNeverShowsSecretValues) {
    const std::pair<const char*, const char*> cases[] = {
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
    COracleCloudParser parser;
    for (const auto& c : cases) {
        LogCapture log;
        SInstanceCredentialsInfoLib credentials;
        EXPECT_FALSE(parser.ParseObject(c.first, credentials)) << c.first;
        EXPECT_EQ(LoggedDocument(log), c.second);
    }
}
