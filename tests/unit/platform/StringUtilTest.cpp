#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LoopbackTlsServer.h"
#include "platform/StringUtil.h"

using namespace OracleCloudSDKWrapper;
using Parts = std::vector<std::string>;

namespace {

TEST(StringUtil, SplitKeepsEmptyPartsAndGivesNoneForEmptyText) {
    EXPECT_EQ(StringUtil::Split("", '|'), Parts{});
    EXPECT_EQ(StringUtil::Split("/a/b", '/'), (Parts{"", "a", "b"}));
    EXPECT_EQ(StringUtil::Split("a||b|", '|'), (Parts{"a", "", "b", ""}));
    EXPECT_EQ(StringUtil::Split("|", '|'), (Parts{"", ""}));
    EXPECT_EQ(StringUtil::Split("abc", '|'), Parts{"abc"});
}

TEST(StringUtil, TrimRemovesGivenCharactersFromBothEndsOnly) {
    EXPECT_EQ(StringUtil::Trim(" \t a b \r\n"), "a b");
    EXPECT_EQ(StringUtil::Trim(" \t\r\n "), "");
    EXPECT_EQ(StringUtil::Trim(""), "");
    EXPECT_EQ(StringUtil::Trim("cookie=1\r\n", "\r\n"), "cookie=1");
    EXPECT_EQ(StringUtil::Trim("//x//", "/"), "x");
}

TEST(StringUtil, FindNoCaseComparesAsciiLettersWithoutCase) {
    EXPECT_EQ(StringUtil::FindNoCase("Content-Type: x", "content-type"), 0u);
    EXPECT_EQ(StringUtil::FindNoCase("abcABC", "ABC", 1), 3u);
    EXPECT_EQ(StringUtil::FindNoCase("abc", "abcd"), std::string::npos);
    EXPECT_EQ(StringUtil::FindNoCase("abc", "c", 3), std::string::npos);
    EXPECT_EQ(StringUtil::FindNoCase("abc", "a", 99), std::string::npos);
    EXPECT_EQ(StringUtil::FindNoCase("abc", "", 2), 2u);
    EXPECT_EQ(StringUtil::FindNoCase("HTTPS://host", "https://"), 0u);
}

TEST(StringUtil, FormatHandlesLongOutput) {
    std::string big(5000, 'q');
    EXPECT_EQ(StringUtil::Format("%s-%d-%s", "a", 42, big.c_str()), "a-42-" + big);
    EXPECT_EQ(StringUtil::Format("%s", ""), "");
}

TEST(PathUtil, JoinPutsExactlyOneSlashBetweenParts) {
    EXPECT_EQ(PathUtil::Join("/opt/agent", "certificates"), "/opt/agent/certificates");
    EXPECT_EQ(PathUtil::Join("/opt/agent/", "/certificates"), "/opt/agent/certificates");
    EXPECT_EQ(PathUtil::Join("/opt//", "//x"), "/opt/x");
    EXPECT_EQ(PathUtil::Join("/", "key.pem"), "/key.pem");
    EXPECT_EQ(PathUtil::Join("", "key.pem"), "key.pem");
    EXPECT_EQ(PathUtil::Join("dir", ""), "dir");
}

TEST(FileUtil, ReadFileGivesWholeContentsOrTheSystemErrorText) {
    ocwtest::TempDir dir;
    std::string bytes("line1\n\0binary\xff", 14);
    std::string path = dir.write("f.bin", bytes);
    std::string contents, error;
    ASSERT_TRUE(FileUtil::ReadFile(path, contents, error));
    EXPECT_EQ(contents, bytes);
    EXPECT_EQ(error, "");

    EXPECT_FALSE(FileUtil::ReadFile(dir.path() + "/missing.pem", contents, error));
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_EQ(contents, "");
    EXPECT_FALSE(FileUtil::ReadFile(dir.path(), contents, error));
    EXPECT_EQ(error, "Is a directory");
}

}  // namespace
