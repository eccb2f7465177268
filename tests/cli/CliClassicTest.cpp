// ocw with a Cloud Classic profile against the emulator: the profile forms
// and where the password comes from, the instance, volume, snapshot,
// orchestration and inventory commands.
#include <sys/stat.h>

#include <filesystem>

#include "CliFixture.h"

namespace ocwtest {
namespace {

class CliClassic : public CliTest {
protected:
    // A Classic profile in the test's directory with the emulator's account
    // and `passwordLines` (e.g. "password_file=pw"), mode 0600.
    std::string WriteProfile(const std::string& passwordLines) {
        const ocwemu::EmulatorInfo& i = info();
        const std::string path = dir_.write("classic", "[DEFAULT]\ncompute_endpoint=" + i.classicEndpoint +
                                                           "\npaas_endpoint=" + i.paasEndpoint + "\nidentity_domain=" +
                                                           i.identityDomain + "\nuser=" + i.classicUser +
                                                           "\nca_file=" + i.caFile + "\n" + passwordLines + "\n");
        ::chmod(path.c_str(), 0600);
        return path;
    }

    // The full name of a seeded object of the account.
    std::string Full(const std::string& name) const { return ClassicUserPath() + "/" + name; }

    // The disks of an instance as `volumes list --instance` shows them.
    boost::json::value Disks(const std::string& instance) {
        const CliResult r = OcwClassic({"--json", "volumes", "list", "--instance", instance});
        EXPECT_EQ(r.exitCode, 0) << r.err;
        return Json(r);
    }
};

TEST_F(CliClassic, EmulatorProfileWorksAsItIsAndItsCaIsTrusted) {
    // No agent configuration: the profile's ca_file alone must make TLS work.
    const CliResult r = OcwRaw({"--config-file", info().classicProfile, "--json", "instances", "list"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const boost::json::value list = Json(r);
    for (const char* name : {"web1", "web2", "db1"}) {
        EXPECT_EQ(TextOf(list, "name", name, "fullName").rfind(Full(name) + "/", 0), 0u) << name << r.out;
    }
    EXPECT_EQ(CountRequests("POST", "/authenticate/"), 1u);
}

TEST_F(CliClassic, PasswordComesFromFileOrEnvironmentAndItsAbsenceExitsWith3) {
    dir_.write("pw", info().classicPassword + "\n");
    dir_.write("wrong", "not-the-password\n");
    const struct {
        const char* lines;
        std::map<std::string, std::string> env;
        int exitCode;
        const char* says;  // in stderr
    } cases[] = {
        {"password_file=pw", {}, 0, ""},
        {"password_env=MY_CLASSIC_PW", {{"MY_CLASSIC_PW", info().classicPassword}}, 0, ""},
        {"", {{"OCW_CLASSIC_PASSWORD", info().classicPassword}}, 0, ""},
        {"", {}, 3, "has no password: set password_file=FILE or password_env=VARIABLE"},
        {"password_env=MY_CLASSIC_PW", {}, 3, "MY_CLASSIC_PW, which is not set"},
        {"password_file=missing", {}, 3, "cannot be read"},
        {"password_file=wrong", {}, 3, "cannot log in"},
    };
    for (const auto& c : cases) {
        CliRunOptions options;
        options.env = c.env;
        const CliResult r = OcwRaw({"--config-file", WriteProfile(c.lines), "--ini", info().ini, "networks"}, options);
        EXPECT_EQ(r.exitCode, c.exitCode) << c.lines << "\n" << r.err;
        EXPECT_NE(r.err.find(c.says), std::string::npos) << c.lines << "\n" << r.err;
        EXPECT_EQ(r.err.find(info().classicPassword), std::string::npos) << "the password was printed";
    }
    // A password written into a profile that others can read is refused.
    const std::string open = WriteProfile("password=" + info().classicPassword);
    ::chmod(open.c_str(), 0644);
    const CliResult r = OcwRaw({"--config-file", open, "--ini", info().ini, "networks"});
    EXPECT_EQ(r.exitCode, 3);
    EXPECT_NE(r.err.find("can be read by others"), std::string::npos) << r.err;
}

TEST_F(CliClassic, ShowListsDisksBySlotAndMissingObjectsExitWith4) {
    const CliResult r = OcwClassic({"--json", "instances", "show", "web1"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const boost::json::value shown = Json(r);
    const boost::json::value& disks = shown.at("disks");
    EXPECT_EQ(TextOf(disks, "name", "web1-boot", "fullName"), Full("web1-boot"));
    EXPECT_EQ(TextOf(disks, "name", "web1-data", "fullName"), Full("web1-data"));
    for (const auto& args : std::vector<std::vector<std::string>>{
             {"instances", "show", "nosuch"}, {"volumes", "show", "nosuch"}, {"snapshots", "show", "web1-data/nosuch"}}) {
        const CliResult missing = OcwClassic(args);
        EXPECT_EQ(missing.exitCode, 4) << args[0] << " " << args[1] << "\n" << missing.err;
    }
}

TEST_F(CliClassic, PowerCommandsWaitForTheStateTheyAskFor) {
    const struct { const char* command; const char* state; } steps[] = {
        {"stop", "shutdown"}, {"start", "running"}, {"reboot", "running"}};
    for (const auto& step : steps) {
        const CliResult r = OcwClassic({"--json", "instances", step.command, "web1"});
        ASSERT_EQ(r.exitCode, 0) << step.command << "\n" << r.err;
        EXPECT_EQ(Text(Json(r), "state"), step.state);
        EXPECT_EQ(StateOf(ClassicResourceId("instance", Full("web1/"))), step.state) << step.command;
    }
}

TEST_F(CliClassic, VolumeIsSnapshottedRestoredAttachedAtAFreeSlotDetachedAndDeleted) {
    CliResult r = OcwClassic({"--json", "volumes", "snapshot", "web1-data", "-n", "cli"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Text(Json(r), "state"), "completed");
    r = OcwClassic({"--json", "volumes", "restore", "web1-data/cli", "-n", "web1-data-copy"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Text(Json(r), "fullName"), Full("web1-data-copy"));

    // db1 uses slots 1 and 2.
    r = OcwClassic({"--json", "volumes", "attach", "web1-data-copy", "db1"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Json(r).at("index").as_int64(), 3);
    EXPECT_EQ(TextOf(Disks("db1"), "name", "web1-data-copy", "fullName"), Full("web1-data-copy"));

    ASSERT_EQ(OcwClassic({"volumes", "detach", "web1-data-copy", "db1"}).exitCode, 0);
    EXPECT_TRUE(TextOf(Disks("db1"), "name", "web1-data-copy", "fullName").empty());
    for (const auto& args : std::vector<std::vector<std::string>>{{"volumes", "delete", "web1-data-copy"},
                                                                  {"snapshots", "delete", "web1-data/cli"}}) {
        r = OcwClassic(args);
        EXPECT_EQ(r.exitCode, 0) << args[0] << "\n" << r.err;
    }
    EXPECT_EQ(RequestsTo("DELETE", "/storage/volume" + Full("web1-data-copy")).size(), 1u);
    EXPECT_EQ(RequestsTo("DELETE", "/storage/snapshot" + Full("web1-data/cli")).size(), 1u);
}

TEST_F(CliClassic, InstanceLaunchedFromANewBootVolumeRunsAndIsDeleted) {
    ASSERT_EQ(OcwClassic({"volumes", "create", "-n", "cli-boot", "--size-gb", "20"}).exitCode, 0);
    ASSERT_EQ(OcwClassic({"volumes", "bootable", "cli-boot"}).exitCode, 0);
    CliResult r = OcwClassic({"--json", "instances", "launch", "-n", "cli-vm", "--shape", "oc3", "--boot-volume",
                              "cli-boot", "--ssh-key", info().classicUser + "-key"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Text(Json(r), "state"), "running");
    EXPECT_EQ(Text(Json(r), "fullName").rfind(Full("cli-vm/"), 0), 0u) << r.out;
    const auto plan = RequestsTo("POST", "/launchplan/");
    ASSERT_EQ(plan.size(), 1u);
    EXPECT_NE(plan[0].body.find(Full(info().classicUser + "-key")), std::string::npos) << plan[0].body;

    ASSERT_EQ(OcwClassic({"instances", "delete", "cli-vm"}).exitCode, 0);
    EXPECT_EQ(OcwClassic({"instances", "show", "cli-vm"}).exitCode, 4);
}

TEST_F(CliClassic, CapturedOrchestrationsRedeployTheInstanceOnAnotherBootVolume) {
    const std::string saved = dir_.path() + "/saved";
    CliResult r = OcwClassic({"--json", "orchestrations", "capture", "web2", "-d", saved});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    for (const char* file : {"web2.json", "web2_master.json", "web2_instance.json", "web2_storage.json"}) {
        EXPECT_GT(std::filesystem::file_size(saved + "/" + file), 0u) << file;
    }
    ASSERT_EQ(OcwClassic({"volumes", "create", "-n", "web2-copy-boot", "--size-gb", "20"}).exitCode, 0);
    ASSERT_EQ(OcwClassic({"volumes", "bootable", "web2-copy-boot"}).exitCode, 0);
    r = OcwClassic({"--json", "orchestrations", "redeploy", "web2", "-d", saved, "-n", "web2-copy", "--boot-volume",
                    "web2-copy-boot"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Text(Json(r), "fullName").rfind(Full("web2-copy/"), 0), 0u) << r.out;
    const boost::json::value disks = Disks("web2-copy");
    EXPECT_EQ(TextOf(disks, "name", "web2-copy-boot", "fullName"), Full("web2-copy-boot")) << disks;
    // Without a saved configuration nothing is sent.
    r = OcwClassic({"orchestrations", "redeploy", "web1", "-d", saved});
    EXPECT_EQ(r.exitCode, 2) << r.err;
}

TEST_F(CliClassic, InventoryListsShowTheSeededAccount) {
    const struct { const char* command; const char* name; } lists[] = {
        {"keypairs", "jdoe-key"}, {"security-lists", "web"}, {"networks", "backend"}};
    for (const auto& list : lists) {
        const CliResult r = OcwClassic({"--json", list.command});
        ASSERT_EQ(r.exitCode, 0) << list.command << "\n" << r.err;
        EXPECT_FALSE(TextOf(Json(r), "name", list.name, "fullName").empty()) << list.command << "\n" << r.out;
    }
}

}  // namespace
}  // namespace ocwtest
