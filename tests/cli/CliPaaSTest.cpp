// ocw with a Cloud Classic profile against the emulator's PaaS services:
// database, Java and MySQL services listed and shown, backups and restores
// followed to their job's end or handed back as a job URI, and the jobs
// read by their URI.
#include "CliFixture.h"

namespace ocwtest {
namespace {

using CliPaaS = CliTest;

// The seeded service of each kind, and the path of its service's API.
const struct Kind {
    const char* command;
    const char* service;
    const char* backupPath;  // after the identity domain
} kKinds[] = {
    {"db", "orcl-db", "/orcl-db/backups"},
    {"java", "shop-jcs", "/services/jaas/instances/shop-jcs/backups"},
    {"mysql", "shop-mysql", "/services/MySQLCS/instances/shop-mysql/backups"},
};

std::string BackupUrl(const Kind& kind, const std::string& domain) {
    return std::string(kind.command) == "db"
               ? "/paas/service/dbcs/api/v1.1/instances/" + domain + kind.backupPath
               : "/paas/api/v1.1/instancemgmt/" + domain + kind.backupPath;
}

TEST_F(CliPaaS, ServicesOfEachKindAreListedShownAndAMissingOneExitsWith4) {
    for (const Kind& kind : kKinds) {
        CliResult r = OcwClassic({"--json", kind.command, "list"});
        ASSERT_EQ(r.exitCode, 0) << kind.command << "\n" << r.err;
        EXPECT_FALSE(TextOf(Json(r), "name", kind.service, "name").empty()) << r.out;
        r = OcwClassic({"--json", kind.command, "show", kind.service});
        ASSERT_EQ(r.exitCode, 0) << kind.command << "\n" << r.err;
        EXPECT_EQ(Text(Json(r), "name"), kind.service);
        EXPECT_EQ(OcwClassic({kind.command, "show", "nosuch"}).exitCode, 4) << kind.command;
    }
}

TEST_F(CliPaaS, JobsShowReadsAJobOfEachServiceByItsUri) {
    for (const Kind& kind : kKinds) {
        const std::string uri = PaaSPost(BackupUrl(kind, info().identityDomain), "{}");
        ASSERT_FALSE(uri.empty());
        const CliResult r = OcwClassic({"--json", "jobs", "show", uri});
        ASSERT_EQ(r.exitCode, 0) << kind.command << "\n" << r.err;
        EXPECT_EQ(Text(Json(r), "uri"), uri);
        EXPECT_FALSE(Text(Json(r), "status").empty()) << r.out;
    }
}

TEST_F(CliPaaS, BackupOfEachKindIsFollowedToItsJobsEnd) {
    for (const Kind& kind : kKinds) {
        const CliResult r = OcwClassic({"--json", kind.command, "backup", kind.service});
        ASSERT_EQ(r.exitCode, 0) << kind.command << "\n" << r.err;
        const std::string uri = Text(Json(r), "uri");
        EXPECT_FALSE(uri.empty()) << r.out;
        EXPECT_EQ(CountRequests("POST", BackupUrl(kind, info().identityDomain)), 1u) << kind.command;
        EXPECT_GE(CountRequests("GET", uri.substr(uri.find("/paas/"))), 1u) << "the job was not polled";
    }
}

TEST_F(CliPaaS, NoWaitHandsBackTheJobUriThatJobsShowFollows) {
    CliResult r = OcwClassic({"--json", "db", "backup", "orcl-db", "--no-wait"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string uri = Text(Json(r), "uri");
    ASSERT_EQ(uri.rfind("https://", 0), 0u) << r.out;
    EXPECT_EQ(CountRequests("GET", uri.substr(uri.find("/paas/"))), 0u) << "--no-wait polled the job";
    r = OcwClassic({"--json", "jobs", "show", uri});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_FALSE(Text(Json(r), "status").empty());
}

TEST_F(CliPaaS, DatabaseRestoreByEachPointIsFollowedAndWithoutOneIsRefused) {
    // A restore needs a completed backup; its job names the backup's tag.
    const CliResult backup = OcwClassic({"--json", "db", "backup", "orcl-db"});
    ASSERT_EQ(backup.exitCode, 0) << backup.err;
    const std::string tag = Text(Json(backup), "tag");
    ASSERT_FALSE(tag.empty()) << backup.out;
    const std::vector<std::vector<std::string>> points = {
        {"--latest"}, {"--tag", tag}, {"--scn", "1234567"}, {"--timestamp", "2026-11-24T05:00:00"}};
    for (const auto& point : points) {
        std::vector<std::string> args{"--json", "db", "restore", "orcl-db"};
        args.insert(args.end(), point.begin(), point.end());
        const CliResult r = OcwClassic(args);
        EXPECT_EQ(r.exitCode, 0) << point[0] << "\n" << r.err;
    }
    ClearRequestLog();
    for (const auto& args : std::vector<std::vector<std::string>>{{"db", "restore", "orcl-db"},
                                                                  {"db", "restore", "orcl-db", "--latest", "--scn", "1"},
                                                                  {"java", "restore", "shop-jcs"},
                                                                  {"mysql", "delete-backup", "shop-mysql"}}) {
        EXPECT_EQ(OcwClassic(args).exitCode, 2) << args[0] << " " << args[1];
    }
    EXPECT_TRUE(Requests().empty());
}

TEST_F(CliPaaS, JavaAndMySqlBackupsAreRestoredAndDeletedByTheirId) {
    for (const Kind& kind : {kKinds[1], kKinds[2]}) {
        CliResult r = OcwClassic({"--json", kind.command, "backup", kind.service});
        ASSERT_EQ(r.exitCode, 0) << kind.command << "\n" << r.err;
        const std::string backup = Text(Json(r), "backupId");
        ASSERT_FALSE(backup.empty()) << r.out;
        for (const char* op : {"restore", "delete-backup"}) {
            r = OcwClassic({"--json", kind.command, op, kind.service, "--backup-id", backup});
            EXPECT_EQ(r.exitCode, 0) << kind.command << " " << op << "\n" << r.err;
        }
    }
}

}  // namespace
}  // namespace ocwtest
