// Distinct exit codes: usage errors, refused credentials, missing resources,
// interruption.

#include "CliFixture.h"
#include "common/ApiKeys.h"

namespace ocwtest {
namespace {

using CliExitCodes = CliTest;

TEST_F(CliExitCodes, UsageErrorsExitWith2BeforeAnyRequest) {
    const size_t before = Requests().size();
    const std::vector<std::vector<std::string>> bad = {
        {"instances", "frobnicate"},
        {"volumes", "attach", "only-one-argument"},
        {"instances", "list", "--no-such-option"},
        {"volumes", "attach", "v", "i", "--type", "floppy"},
        {"objects", "put", "bucket", "object"},  // neither --file nor --text
        {"volumes", "restore", "backup"},        // neither --name nor --replace
        {"db", "restore", "database", "--latest", "--scn", "1"},
    };
    for (const auto& args : bad) {
        const CliResult r = Ocw(args);
        std::string line;
        for (const auto& a : args) line += a + " ";
        EXPECT_EQ(r.exitCode, 2) << line << "\n" << r.out << r.err;
        EXPECT_FALSE(r.err.empty()) << line;
    }
    EXPECT_EQ(OcwRaw({}).exitCode, 2);
    EXPECT_EQ(Requests().size(), before);
    // Help is not an error.
    const CliResult help = OcwRaw({"volumes", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("snapshot"), std::string::npos);
}

TEST_F(CliExitCodes, UnusableProfileExitsWith3WithoutARequest) {
    const ocwemu::EmulatorInfo& i = info();
    const size_t before = Requests().size();
    const std::string noKey = dir_.write("no-key", "[DEFAULT]\nuser=" + i.user + "\nfingerprint=" +
                                                       i.fingerprint + "\nkey_file=" + dir_.path() +
                                                       "/missing.pem\ntenancy=" + i.tenancy + "\nregion=" +
                                                       i.region + "\n");
    CliResult r = OcwRaw({"--config-file", noKey, "--ini", i.ini, "regions"});
    EXPECT_EQ(r.exitCode, 3) << r.err;
    EXPECT_NE(r.err.find("missing.pem"), std::string::npos) << r.err;

    const std::string noTenancy = dir_.write("no-tenancy", "[DEFAULT]\nuser=" + i.user + "\nfingerprint=" +
                                                               i.fingerprint + "\nkey_file=" + i.keyFile + "\n");
    r = OcwRaw({"--config-file", noTenancy, "--ini", i.ini, "regions"});
    EXPECT_EQ(r.exitCode, 3) << r.err;
    EXPECT_NE(r.err.find("tenancy, region"), std::string::npos) << r.err;

    r = OcwRaw({"--config-file", dir_.path() + "/nothing-here", "regions"});
    EXPECT_EQ(r.exitCode, 3) << r.err;
    EXPECT_EQ(Requests().size(), before);
}

TEST_F(CliExitCodes, MissingResourcesExitWith4) {
    const std::string ghost = "ocid1.instance.oc1.phx.aaaaaaaaghostghostghostghostghostghostghostghostghostghost12";
    CliResult r = Ocw({"instances", "show", ghost});
    EXPECT_EQ(r.exitCode, 4) << r.err;
    EXPECT_NE(r.err.find("NotAuthorizedOrNotFound"), std::string::npos) << r.err;

    r = Ocw({"instances", "stop", ghost});
    EXPECT_EQ(r.exitCode, 4) << r.err;

    r = Ocw({"volumes", "show", "ocid1.volume.oc1.phx.aaaaaaaaghostghostghostghostghostghostghostghostghostghost12"});
    EXPECT_EQ(r.exitCode, 4) << r.err;

    r = Ocw({"backups", "delete", "ocid1.volumebackup.oc1.phx.aaaaaaaaghostghostghostghostghostghostghostghostghost12"});
    EXPECT_EQ(r.exitCode, 4) << r.err;
}

TEST_F(CliExitCodes, UnreadableAgentConfigurationIsAUsageError) {
    const CliResult r = OcwRaw({"--config-file", info().ociConfig, "--ini", dir_.path() + "/none.ini", "regions"});
    EXPECT_EQ(r.exitCode, 2) << r.err;
    EXPECT_NE(r.err.find("none.ini"), std::string::npos);
}

TEST_F(CliExitCodes, AgentConfigurationComesFromOCW_CONFIGByDefault) {
    CliRunOptions options;
    options.env["OCW_CONFIG"] = info().ini;
    const CliResult r = OcwRaw({"--config-file", info().ociConfig, "regions"}, options);
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("us-phoenix-1"), std::string::npos);
}

TEST_F(CliExitCodes, CtrlCDuringAWaitExitsWith130AndShowsTheStateReached) {
    // Transitions that take a minute keep the stop waiting.
    TempDir slowState;
    ocwemu::Emulator slow(OwnEmulatorOptions(slowState, 60000));
    ASSERT_TRUE(slow.start()) << slow.lastError();
    const std::vector<std::string> base{"--config-file", slow.info().ociConfig, "--ini", slow.info().ini};
    std::vector<std::string> list = base;
    list.insert(list.end(), {"--json", "instances", "list"});
    const std::string id = IdOf(Json(OcwRaw(list)), "displayName", "ocw-web-1");
    ASSERT_FALSE(id.empty());

    std::vector<std::string> stop = base;
    stop.insert(stop.end(), {"instances", "stop", id});
    CliRunOptions options;
    options.interruptAfterMs = 4000;  // time to connect, ask and see one poll even on a busy machine
    options.timeoutMs = 30000;
    const CliResult r = OcwRaw(stop, options);
    EXPECT_EQ(r.exitCode, 130) << r.out << r.err;
    EXPECT_NE(r.err.find("interrupted by Ctrl-C"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("stop instance " + id), std::string::npos) << r.err;
    // The progress fed from the library's wait saw the instance stopping,
    // and the message names the instance left in that state.
    EXPECT_NE(r.err.find(": STOPPING"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("resource " + id + ", last state STOPPING"), std::string::npos) << r.err;
    EXPECT_TRUE(r.out.empty()) << r.out;
}

}  // namespace
}  // namespace ocwtest
