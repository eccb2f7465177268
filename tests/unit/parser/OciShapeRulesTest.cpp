// Processor and memory figures derived from OCI shape names (the listing,
// sorting and collapsing of shapes runs end to end).
#include <gtest/gtest.h>

#include <string>

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

