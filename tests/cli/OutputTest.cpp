// Tables and JSON from the same records; log lines turned into failure facts.
#include <gtest/gtest.h>

#include <sstream>

#include "LogRouter.h"
#include "Output.h"

namespace ocwtest {
namespace {

using boost::json::object;

TEST(Output, TableColumnsAreAsWideAsTheirWidestCell) {
    ocw::ListOutput list({{"name", "NAME"}, {"size", "SIZE"}, {"boot", "BOOT"}});
    list.add(object{{"name", "a"}, {"size", 100}, {"boot", true}});
    list.add(object{{"name", "longer-name"}, {"size", 5}, {"boot", false}});
    std::ostringstream out;
    list.print(out, false);
    EXPECT_EQ(out.str(),
              "NAME         SIZE  BOOT\n"
              "a            100   yes\n"
              "longer-name  5     no\n");
}

TEST(Output, JsonKeepsColumnOrderAndFillsMissingMembersWithNull) {
    ocw::ListOutput list({{"b", "B"}, {"a", "A"}});
    list.add(object{{"a", "x"}});
    std::ostringstream out;
    list.print(out, true);
    EXPECT_EQ(out.str(), "[{\"b\":null,\"a\":\"x\"}]\n");
}

TEST(Output, RecordPrintsScalarsThenNestedTables) {
    std::ostringstream out;
    ocw::PrintRecord(out,
                     object{{"id", "i"}, {"disks", boost::json::array{object{{"id", "d1"}, {"gb", 5}}}}, {"state", ""}},
                     false);
    EXPECT_EQ(out.str(),
              "id:    i\n"
              "state: -\n"
              "\n"
              "disks:\n"
              "  id  gb\n"
              "  d1  5\n");
}

TEST(LogRouter, ErrorBodyAfterAFailedRequestGivesCodeAndMessage) {
    ocw::LogRouter& router = ocw::LogRouter::Instance();
    router.beginCall();
    // A successful response before carries a "code" too: it must not count.
    router.onLine(2, "f()", "Response from [https://h/x]:\n{\"code\":\"FYI\",\"message\":\"fine\"} ");
    router.onLine(0, "bool HttpClient::SendHttpRequest()", "HTTP GET [https://h/y] answered with status 404");
    router.onLine(0, "bool A::B::C::send(int)", "Error: API failed. operation [0]. URL[https://h/y]. Request []");
    router.onLine(2, "f()",
                  "Response from [https://h/y]:\n{\"code\":\"NotAuthorizedOrNotFound\",\"message\":\"gone\"} ");
    ocw::CallFailure f = router.failure();
    EXPECT_EQ(f.serviceCode, "NotAuthorizedOrNotFound");
    EXPECT_EQ(f.serviceMessage, "gone");
    EXPECT_TRUE(f.requestFailed);
    EXPECT_EQ(f.httpStatus, 404);
    EXPECT_EQ(f.lastErrorLine, "Error: API failed. operation [0]. URL[https://h/y]. Request []");
    router.beginCall();
    EXPECT_TRUE(router.failure().serviceCode.empty());
    EXPECT_EQ(router.failure().httpStatus, 0);
    router.onLine(2, "f()", "Failed to generate authorization header for request[0][/x]");
    EXPECT_TRUE(router.failure().signingFailed);
    router.onLine(0, "bool HttpClient::SendHttpRequest()", "HTTP GET [https://h/z] failed: Could not resolve host: h");
    EXPECT_EQ(router.failure().transportError, "Could not resolve host: h");
}

TEST(LogRouter, ShortSignatureKeepsClassAndMethod) {
    EXPECT_EQ(ocw::ShortSignature("bool OracleCloudSDKWrapper::COracleCloudWrapper::GetVMInfo(const string&, int)"),
              "COracleCloudWrapper::GetVMInfo");
    EXPECT_EQ(ocw::ShortSignature("void f()"), "f");
}

}  // namespace
}  // namespace ocwtest
