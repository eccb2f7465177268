// The OCI config reader on its own: profiles, inheritance, key file lookup.
#include <gtest/gtest.h>

#include <unistd.h>

#include "CliRunner.h"
#include "OciConfigFile.h"

namespace ocwtest {
namespace {

using ocw::OciConfigFile;
using ocw::OciProfile;

const char kBase[] =
    "[DEFAULT]\n"
    "user=ocid1.user.oc1..u\n"
    "fingerprint=aa:bb\n"
    "key_file=key.pem\n"
    "tenancy=ocid1.tenancy.oc1..t\n"
    "region=us-phoenix-1\n";

TEST(OciConfigFile, ProfileOverridesDefaultAndKeepsTheRest) {
    TempDir dir;
    dir.write("key.pem", "k");
    dir.write("other.pem", "k");
    OciConfigFile config;
    ASSERT_TRUE(config.parse(std::string(kBase) + "\n; comment\n[DR]\nRegion = us-ashburn-1\nkey_file=other.pem\n",
                             dir.path() + "/config"))
        << config.error();
    OciProfile p;
    ASSERT_TRUE(config.resolve("DR", "", p)) << config.error();
    EXPECT_EQ(p.region, "us-ashburn-1");
    EXPECT_EQ(p.user, "ocid1.user.oc1..u");
    EXPECT_EQ(p.keyFile, dir.path() + "/other.pem");  // relative to the config file
    ASSERT_TRUE(config.resolve("DEFAULT", "eu-frankfurt-1", p));
    EXPECT_EQ(p.region, "eu-frankfurt-1");
    EXPECT_EQ(config.profileNames(), (std::vector<std::string>{"DEFAULT", "DR"}));
}

TEST(OciConfigFile, MissingKeysAreNamed) {
    TempDir dir;
    OciConfigFile config;
    ASSERT_TRUE(config.parse("[DEFAULT]\nuser=u\n", dir.path() + "/config"));
    OciProfile p;
    EXPECT_FALSE(config.resolve("DEFAULT", "", p));
    EXPECT_NE(config.error().find("lacks fingerprint, key_file, tenancy, region"), std::string::npos) << config.error();
}

TEST(OciConfigFile, KeyFileMustBeReadable) {
    TempDir dir;
    OciConfigFile config;
    ASSERT_TRUE(config.parse(kBase, dir.path() + "/config"));
    OciProfile p;
    EXPECT_FALSE(config.resolve("DEFAULT", "", p));
    EXPECT_NE(config.error().find("key.pem"), std::string::npos);
}

TEST(OciConfigFile, TildeMeansHome) {
    const char* home = getenv("HOME");
    ASSERT_NE(home, nullptr);
    EXPECT_EQ(OciConfigFile::ExpandHome("~/.oci/key.pem"), std::string(home) + "/.oci/key.pem");
    EXPECT_EQ(OciConfigFile::ExpandHome("~other/x"), "~other/x");
    EXPECT_EQ(OciConfigFile::ExpandHome("/abs"), "/abs");
}

TEST(OciConfigFile, SeparatorOfTheLibrarysUserTextIsRefused) {
    TempDir dir;
    dir.write("key.pem", "k");
    OciConfigFile config;
    ASSERT_TRUE(config.parse(std::string(kBase) + "[X]\nuser=ocid1.user|evil\n", dir.path() + "/config"));
    OciProfile p;
    EXPECT_FALSE(config.resolve("X", "", p));
    EXPECT_NE(config.error().find("'|'"), std::string::npos);
}

TEST(OciConfigFile, MalformedLinesAreReportedWithTheirNumber) {
    OciConfigFile config;
    EXPECT_FALSE(config.parse("[DEFAULT]\nuser=u\njust words\n", "/x/config"));
    EXPECT_EQ(config.error(), "/x/config:3: expected key=value");
    EXPECT_FALSE(config.parse("user=u\n", "/x/config"));
    EXPECT_FALSE(config.parse("[DEFAULT\n", "/x/config"));
}

TEST(OciConfigFile, EnvironmentChoosesFileAndProfile) {
    setenv("OCI_CLI_CONFIG_FILE", "/etc/oci/config", 1);
    setenv("OCI_CLI_PROFILE", "PROD", 1);
    EXPECT_EQ(OciConfigFile::DefaultPath(), "/etc/oci/config");
    EXPECT_EQ(OciConfigFile::DefaultProfile(), "PROD");
    unsetenv("OCI_CLI_CONFIG_FILE");
    unsetenv("OCI_CLI_PROFILE");
    EXPECT_EQ(OciConfigFile::DefaultProfile(), "DEFAULT");
    EXPECT_NE(OciConfigFile::DefaultPath().find("/.oci/config"), std::string::npos);
}

}  // namespace
}  // namespace ocwtest
