// Processor and memory figures derived from OCI shape names, the shape
// record built from a shape list answer, and the sort/unique comparators.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "parser/OracleCloudInfrastructureParser.h"

using namespace OracleCloudSDKWrapper;

TEST(OciShapeRules, CpuCountIsTheNumberAfterTheLastDot) {
    struct Case {
        const char* shape;
        unsigned int cpus;
    };
    const Case cases[] = {
        {"VM.Standard2.4", 4},         {"BM.Standard1.36", 36},  {"VM.Standard1.1", 1},
        {"BM.DenseIO2.52", 52},        {"VM.GPU3.2", 2},         {"VM.Standard.E2.1.Micro", 0},
        {"VM.Standard.E4.Flex", 0},    {"VMStandard4", 0},       {"", 0},
        {"VM.Standard2.", 0},          {"VM.Standard2.-4", 0},   {"VM.Standard2.8x", 8},
        {"VM.Standard2.99999999999999999999", 0},                {"VM.Standard2.4096", 4096},
    };
    for (const Case& c : cases) EXPECT_EQ(c.cpus, getNumCPUFromOCIShape(c.shape)) << c.shape;
}

TEST(OciShapeRules, MemoryFollowsTheFirstMatchingRule) {
    struct Case {
        const char* shape;
        unsigned int gb;
    };
    const Case cases[] = {
        {"VM.Standard1.1", 7},      {"VM.Standard1.16", 112},   {"VM.Standard2.1", 15},
        {"VM.Standard2.24", 360},   {"VM.DenseIO1.4", 60},      {"VM.DenseIO2.8", 120},
        {"BM.Standard1.36", 256},   {"BM.Standard2.52", 768},   {"BM.DenseIO2.52", 768},
        {"BM.DenseIO1.36", 512},    {"BM.HighIO1.36", 512},     {"BM.GPU2.2", 192},
        // A VM.Standard2 name is caught by its per-CPU rule before "2.52".
        {"VM.Standard2.52", 780},
        // Later families and flexible shapes have no rule.
        {"VM.Standard.E4.Flex", 0}, {"VM.Standard.E2.1.Micro", 0}, {"BM.Standard.E3.128", 0},
        {"VM.GPU3.1", 0},           {"", 0},
        // A per-CPU rule with no readable CPU count gives 0, not garbage.
        {"VM.Standard2.Flex", 0},
    };
    for (const Case& c : cases) EXPECT_EQ(c.gb, getMemoryInGBsFromOCIShape(c.shape)) << c.shape;
}

TEST(OciShapeRules, ShapeListEntryGetsNameCpusAndMemory) {
    COracleCloudInfrastructureParser parser;
    std::vector<SInstanceShapeInfoLib> shapes;
    ASSERT_TRUE(parser.ParseList(R"([
      {"shape": "VM.Standard2.2"},
      {"shape": "VM.Standard.E4.Flex", "isFlexible": true, "ocpus": 1.0, "memoryInGBs": 16.0,
       "ocpuOptions": {"min": 1.0, "max": 64.0}, "memoryOptions": {"minInGBs": 1.0, "maxInGBs": 1024.0}},
      {"shape": "BM.Standard2.52", "ocpus": 52.0, "memoryInGBs": 768.0}])",
                                 shapes));
    ASSERT_EQ(3u, shapes.size());
    EXPECT_EQ("VM.Standard2.2", shapes[0].name);
    EXPECT_EQ("VM.Standard2.2", shapes[0].uri);
    EXPECT_EQ(2, shapes[0].cpuCount);
    EXPECT_EQ(30 * 1024, shapes[0].memoryMB);
    EXPECT_EQ(0, shapes[0].ioCount);
    EXPECT_EQ(0, shapes[1].cpuCount);  // the name decides, not the answer's figures
    EXPECT_EQ(0, shapes[1].memoryMB);
    EXPECT_EQ(52, shapes[2].cpuCount);
    EXPECT_EQ(768 * 1024, shapes[2].memoryMB);
}

TEST(OciShapeRules, SortAndUniqueLeaveEachNameOnceInByteOrder) {
    auto shape = [](const char* name, const char* tag) {
        SInstanceShapeInfoLib s;
        s.name = name;
        s.uri = tag;  // tells apart the entries of one name
        return s;
    };
    // Shapes repeat per availability domain in a real answer.
    std::vector<SInstanceShapeInfoLib> list = {
        shape("VM.Standard2.2", "ad1"),  shape("VM.Standard2.16", "ad1"), shape("BM.Standard2.52", "ad1"),
        shape("VM.Standard2.2", "ad2"),  shape("VM.Standard2.1", "ad1"),  shape("VM.Standard2.16", "ad2"),
        shape("vm.lowercase", "ad1"),    shape("VM.Standard2.2", "ad3"),
    };
    std::stable_sort(list.begin(), list.end(), comparatorSInstanceShapeinfoLibSort);
    list.erase(std::unique(list.begin(), list.end(), comparatorSInstanceShapeinfoLib), list.end());

    std::vector<std::string> names;
    for (const auto& s : list) names.push_back(s.name);
    EXPECT_EQ((std::vector<std::string>{"BM.Standard2.52", "VM.Standard2.1", "VM.Standard2.16", "VM.Standard2.2",
                                        "vm.lowercase"}),
              names);
    EXPECT_EQ("ad1", list[3].uri);  // the first of each run is kept

    SInstanceShapeInfoLib a = shape("VM.Standard2.1", "x"), b = shape("VM.Standard2.1", "y");
    EXPECT_FALSE(comparatorSInstanceShapeinfoLibSort(a, b));
    EXPECT_FALSE(comparatorSInstanceShapeinfoLibSort(b, a));
    EXPECT_TRUE(comparatorSInstanceShapeinfoLib(a, b));
    EXPECT_FALSE(comparatorSInstanceShapeinfoLib(a, shape("VM.Standard2.10", "x")));
}
