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

TEST(LogRouter, ShortSignatureKeepsClassAndMethod) {
    EXPECT_EQ(ocw::ShortSignature("bool OracleCloudSDKWrapper::COracleCloudWrapper::GetVMInfo(const string&, int)"),
              "COracleCloudWrapper::GetVMInfo");
    EXPECT_EQ(ocw::ShortSignature("void f()"), "f");
}

}  // namespace
}  // namespace ocwtest
