#include <gtest/gtest.h>
#include <stdlib.h>

#include <atomic>
#include <thread>
#include <vector>

#include "LoopbackTlsServer.h"
#include "platform/PlatformConfig.h"

using namespace OracleCloudSDKWrapper;
using ocwtest::ScopedConfigFile;

namespace {

const char* const kIni =
    "; agent configuration\n"
    "# another comment style\n"
    "toplevel = 1\n"
    "[VirtualServer]\n"
    "  nOCIPageLimit =  50  \r\n"
    "sOCIRequestRetryIntervalMultiplier=1.5\n"
    "sProxyPassword = a;b#c=d\n"
    "nNegative=-7\n"
    "nNotNumber=12abc\n"
    "nEmpty=\n"
    "nDup=1\n"
    "nDup=2\n"
    "line without equals sign\n"
    "[ Base ]\n"
    "dBASEHOME = /opt/agent///\n"
    "dRoot=/\n"
    "nLogLevel=4\n";

TEST(PlatformConfig, ValuesAreReadBySectionAndKeyWithTheirRules) {
    ScopedConfigFile cfg(kIni);
    struct Case {
        const char* section;
        const char* key;
        long long fallback;
        long long number;
    };
    const Case numbers[] = {
        {"VirtualServer", "nOCIPageLimit", 0, 50},       // blanks and CR trimmed
        {"virtualserver", "NOCIPAGELIMIT", 0, 50},       // names without regard to case
        {"Base", "nLogLevel", 0, 4},                     // blanks inside the brackets trimmed
        {"", "toplevel", 0, 1},
        {"VirtualServer", "toplevel", 9, 9},             // keys do not leak across sections
        {"VirtualServer", "nDup", 0, 2},                 // the later duplicate wins
        {"VirtualServer", "nNegative", 0, -7},
        {"VirtualServer", "nMissing", 30, 30},
        {"NoSuchSection", "nOCIPageLimit", 3, 3},
        {"VirtualServer", "nNotNumber", 5, 5},
        {"VirtualServer", "nEmpty", 6, 6},
        {"VirtualServer", "sOCIRequestRetryIntervalMultiplier", 2, 2},
    };
    for (const Case& c : numbers) {
        EXPECT_EQ(PlatformConfig::getNumber(c.section, c.key, c.fallback), c.number) << c.section << "/" << c.key;
    }
    EXPECT_EQ(PlatformConfig::getStringTrim("VirtualServer", "sOCIRequestRetryIntervalMultiplier"), "1.5");
    EXPECT_EQ(PlatformConfig::getStringTrim("VirtualServer", "sProxyPassword"), "a;b#c=d")
        << "no inline comments: values may hold ';', '#' and '='";
    EXPECT_EQ(PlatformConfig::getStringTrim("VirtualServer", "sMissing", "dflt"), "dflt");
    EXPECT_EQ(PlatformConfig::getStringTrim("VirtualServer", "nEmpty", "dflt"), "") << "present but empty";
    EXPECT_EQ(PlatformConfig::getDirectory("Base", "dBASEHOME"), "/opt/agent") << "trailing slashes dropped";
    EXPECT_EQ(PlatformConfig::getDirectory("Base", "dRoot"), "/");
    EXPECT_EQ(PlatformConfig::getDirectory("Base", "dMissing", "/def/"), "/def");
}

TEST(PlatformConfig, GivesDefaultsWhenFileIsMissing) {
    ScopedConfigFile cfg("");
    PlatformConfig::setConfigFile("/nonexistent/dir/agent.ini");
    EXPECT_EQ(PlatformConfig::getConfigFile(), "/nonexistent/dir/agent.ini");
    EXPECT_EQ(PlatformConfig::getNumber("VirtualServer", "nOCIPageLimit", 11), 11);
    EXPECT_EQ(PlatformConfig::getStringTrim("Base", "dBASEHOME", "x"), "x");
}

TEST(PlatformConfig, FallsBackToFileNamedByEnvironment) {
    ocwtest::TempDir dir;
    std::string path = dir.write("env.ini", "[VirtualServer]\nnOCIPageLimit=77\n");
    ScopedConfigFile cfg("");  // restores the previous file afterwards
    const char* old = getenv("OCW_CONFIG");
    std::string saved = old ? old : "";
    setenv("OCW_CONFIG", path.c_str(), 1);
    PlatformConfig::setConfigFile("");  // no explicit file: the environment decides
    EXPECT_EQ(PlatformConfig::getConfigFile(), path);
    EXPECT_EQ(PlatformConfig::getNumber("VirtualServer", "nOCIPageLimit", 0), 77);
    unsetenv("OCW_CONFIG");
    PlatformConfig::reload();
    EXPECT_EQ(PlatformConfig::getNumber("VirtualServer", "nOCIPageLimit", 0), 0);
    if (old) setenv("OCW_CONFIG", saved.c_str(), 1);
}

TEST(PlatformConfig, RereadsFileOnReloadAndCountsGenerations) {
    ocwtest::TempDir dir;
    std::string path = dir.write("a.ini", "[Base]\nnLogLevel=1\n");
    ScopedConfigFile cfg("");
    PlatformConfig::setConfigFile(path);
    unsigned long g1 = PlatformConfig::generation();
    EXPECT_EQ(PlatformConfig::getNumber("Base", "nLogLevel", 0), 1);
    dir.write("a.ini", "[Base]\nnLogLevel=3\n");
    EXPECT_EQ(PlatformConfig::getNumber("Base", "nLogLevel", 0), 1) << "cached until reloaded";
    PlatformConfig::reload();
    EXPECT_EQ(PlatformConfig::getNumber("Base", "nLogLevel", 0), 3);
    EXPECT_GT(PlatformConfig::generation(), g1);
}

TEST(PlatformConfig, ServesManyThreadsWhileReloading) {
    ScopedConfigFile cfg(kIni);
    std::vector<std::thread> readers;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t)
        readers.emplace_back([&] {
            for (int i = 0; i < 2000; ++i)
                if (PlatformConfig::getNumber("VirtualServer", "nOCIPageLimit", 0) != 50) ++wrong;
        });
    for (int i = 0; i < 50; ++i) PlatformConfig::reload();
    for (auto& t : readers) t.join();
    EXPECT_EQ(wrong.load(), 0);
}

}  // namespace
