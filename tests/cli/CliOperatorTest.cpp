// What an operator meets when something goes wrong: waits that survive a
// hiccup and name what they leave behind, request ids, JSON errors, input
// refused before it reaches the cloud, listings for cleaning up, and a
// command line that says what it knows.
#include "CliFixture.h"
#include "common/FaultRules.h"
#include "common/Store.h"

namespace ocwtest {
namespace {

class CliOperator : public CliTest {
protected:
    std::string AddFault(const std::string& method, const std::string& pathPrefix, const std::string& action,
                         int status, int times, const std::string& body = std::string()) {
        ocwemu::FaultRule rule;
        rule.method = method;
        rule.pathPrefix = pathPrefix;
        rule.action = action;
        rule.status = status;
        rule.times = times;
        rule.body = body;
        if (status != 0) ocwemu::DefaultErrorFor(status, rule.code, rule.message);
        return emu().faults().add(rule);
    }

    std::string IdByName(const std::vector<std::string>& listCommand, const std::string& name) {
        std::vector<std::string> args{"--json"};
        args.insert(args.end(), listCommand.begin(), listCommand.end());
        const std::string key = listCommand.front() == "compartments" ? "name" : "displayName";
        return IdOf(Json(Ocw(args)), key, name);
    }

    // stderr parsed as the JSON error document of --json.
    static boost::json::object ErrorJson(const CliResult& r) {
        boost::system::error_code ec;
        const boost::json::value v = boost::json::parse(r.err.substr(r.err.find("{\"error\"")), ec);
        if (ec || !v.is_object() || !v.as_object().contains("error")) {
            ADD_FAILURE() << "stderr has no JSON error: " << r.err;
            return {};
        }
        return v.at("error").as_object();
    }
};

std::string Member(const boost::json::object& o, const char* key) {
    const boost::json::value* v = o.if_contains(key);
    return v != nullptr && v->is_string() ? std::string(v->get_string()) : std::string();
}

TEST_F(CliOperator, OwnWaitTriesAgainAfterATransientPollFailure) {
    const std::string data = IdByName({"volumes", "list"}, "ocw-data-1");
    for (const char* action : {"status", "close"}) {
        SCOPED_TRACE(action);
        // libcurl tries a dropped keep-alive connection once more by itself:
        // a closed connection must meet that try as well.
        const bool close = std::string(action) == "close";
        AddFault("GET", "/20160918/volumeBackups/", action, close ? 0 : 503, close ? 2 : 1);
        const CliResult r = Ocw({"--json", "volumes", "snapshot", data});
        EXPECT_EQ(r.exitCode, 0) << r.err;
        EXPECT_NE(r.err.find("poll failed"), std::string::npos) << r.err;
        EXPECT_EQ(Member(Json(r).as_object(), "lifecycleState"), "AVAILABLE");
    }
}

TEST_F(CliOperator, WaitThatGivesUpNamesTheResourceItsLastStateAndTheRequestId) {
    const std::string data = IdByName({"volumes", "list"}, "ocw-data-1");
    AddFault("GET", "/20160918/volumeBackups/", "status", 503, -1);

    CliResult r = Ocw({"--timeout", "3", "volumes", "snapshot", data});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("gave up after 3 s; raise --timeout"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("HTTP 503"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("opc-request-id "), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("ocw: resource ocid1.volumebackup."), std::string::npos) << r.err;

    r = Ocw({"--json", "--timeout", "3", "volumes", "snapshot", data});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(r.out.empty()) << r.out;
    const boost::json::object error = ErrorJson(r);
    EXPECT_EQ(error.at("httpStatus").to_number<int>(), 503);
    EXPECT_EQ(Member(error, "code"), "ServiceUnavailable");
    EXPECT_EQ(Member(error, "opcRequestId").size(), 32u);
    const std::string backup = Member(error.at("resource").as_object(), "id");
    EXPECT_EQ(backup.rfind("ocid1.volumebackup.", 0), 0u) << r.err;
    // The backup the wait left behind is real, and now findable.
    emu().faults().clear();
    EXPECT_FALSE(IdOf(Json(Ocw({"--json", "backups", "list"})), "id", backup).empty());
}

TEST_F(CliOperator, CtrlCInTheMiddleOfAWaitNamesTheResourceAndItsLastState) {
    // Transitions that take a minute keep what the commands create in the making.
    TempDir slowState;
    ocwemu::Emulator slow(OwnEmulatorOptions(slowState, 60000));
    ASSERT_TRUE(slow.start()) << slow.lastError();
    const auto run = [&slow](std::vector<std::string> args, const CliRunOptions& options = {}) {
        args.insert(args.begin(), {"--config-file", slow.info().ociConfig, "--ini", slow.info().ini, "--json"});
        return RunProgram(OcwPath(), args, options);
    };
    const std::string data = IdOf(Json(run({"volumes", "list"})), "displayName", "ocw-data-1");
    const std::string image = Member(Json(run({"images", "list"})).as_array().at(0).as_object(), "id");
    std::string subnet;
    const boost::json::value networks = Json(run({"networks"}));
    for (const auto& vcn : networks.as_array()) {
        for (const auto& s : vcn.at("subnets").as_array()) subnet = Member(s.as_object(), "id");
    }
    const struct {
        std::vector<std::string> args;
        const char* kind;   // of the resource named
        const char* state;  // the last one seen
    } cases[] = {
        // ocw's own wait on the backup it asked for
        {{"volumes", "snapshot", data, "--name", "interrupted"}, "ocid1.volumebackup.", "REQUEST_RECEIVED"},
        // the library's wait on an instance whose id only its log told
        {{"instances", "launch", "-n", "interrupted", "--shape", "VM.Standard2.1", "--image", image, "--subnet", subnet},
         "ocid1.instance.",
         "PROVISIONING"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args.front());
        CliRunOptions options;
        options.interruptAfterMs = 4000;  // time to connect, ask and see one poll even on a busy machine
        const CliResult r = run(c.args, options);
        EXPECT_EQ(r.exitCode, 130) << r.err;
        const boost::json::object error = ErrorJson(r);
        EXPECT_NE(Member(error, "message").find("interrupted by Ctrl-C"), std::string::npos) << r.err;
        const boost::json::object resource = error.at("resource").as_object();
        EXPECT_EQ(Member(resource, "id").rfind(c.kind, 0), 0u) << r.err;
        EXPECT_EQ(Member(resource, "lastState"), c.state) << r.err;
    }
}

TEST_F(CliOperator, WrongInputIsRefusedBeforeAnyRequest) {
    const std::string volume = IdByName({"volumes", "list"}, "ocw-data-1");
    const std::string instance = IdByName({"instances", "list"}, "ocw-web-1");
    const size_t before = Requests().size();
    const struct {
        std::vector<std::string> args;
        const char* says;
    } cases[] = {
        {{"instances", "show", volume}, "not an instance OCID"},
        {{"instances", "show", instance + " "}, "holds a blank"},
        {{"volumes", "attach", volume, volume}, "not an instance OCID"},
        {{"instances", "launch", "-n", "x", "--shape", "VM.Standard2.1", "--image", "ocid1.image.oc1..x"},
         "--subnet is required"},
        {{"instances", "lst"}, "unknown command 'lst' for 'ocw instances'; choices: list, show, launch"},
        {{"volumes"}, "'ocw volumes' needs a command: list, show"},
    };
    for (const auto& c : cases) {
        const CliResult r = Ocw(c.args);
        EXPECT_EQ(r.exitCode, 2) << r.err;
        EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
    }
    const CliResult json = Ocw({"--json", "instances", "lst"});
    EXPECT_EQ(json.exitCode, 2);
    EXPECT_EQ(ErrorJson(json).at("exitCode").to_number<int>(), 2);
    EXPECT_EQ(Requests().size(), before);
}

TEST_F(CliOperator, DetachFromAnInstanceTheVolumeIsNotAttachedToIsRefused) {
    const std::string volume = IdByName({"volumes", "list"}, "ocw-data-1");  // attached to ocw-web-1
    const std::string other = IdByName({"instances", "list"}, "ocw-web-2");
    const CliResult r = Ocw({"volumes", "detach", volume, other});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_NE(r.err.find("not attached to " + other), std::string::npos) << r.err;
}

TEST_F(CliOperator, FailedReadsAreErrorsWithTheirStatusNeverEmptyResults) {
    const std::string instance = IdByName({"instances", "list"}, "ocw-web-1");
    const struct {
        const char* pathPrefix;
        int status;
        const char* body;  // empty: the service's JSON error
        std::vector<std::string> args;
        int exitCode;
        const char* says;
    } cases[] = {
        {"/20160918/bootVolumes", 503, "", {"volumes", "list"}, 1, "(ServiceUnavailable)"},
        {"/20160918/vnicAttachments", 503, "", {"instances", "show", instance}, 1, "network interfaces could not be read"},
        {"/20160918/instances/", 502, "<html>Bad Gateway</html>", {"instances", "show", instance}, 1, "HTTP 502"},
        {"/20160918/instances/", 404, "404 page not found", {"instances", "show", instance}, 4, "HTTP 404"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pathPrefix);
        const std::string fault = AddFault("GET", c.pathPrefix, "status", c.status, -1, c.body);
        const CliResult r = Ocw(c.args);
        emu().faults().remove(fault);
        EXPECT_EQ(r.exitCode, c.exitCode) << r.out << r.err;
        EXPECT_TRUE(r.out.empty()) << r.out;
        EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
        EXPECT_EQ(r.err.find("parsing json"), std::string::npos) << r.err;
    }
}

TEST_F(CliOperator, ListingsCoverEveryCompartmentWithItsName) {
    // One slow page makes the listing long enough to show its progress.
    ocwemu::FaultRule slow;
    slow.pathPrefix = "/20160918/volumes";
    slow.action = "delay";
    slow.delayMs = 1500;
    slow.times = 1;
    emu().faults().add(slow);
    CliResult r = Ocw({"--json", "volumes", "list"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const boost::json::value volumes = Json(r);
    EXPECT_NE(r.err.find("list volumes: compartment "), std::string::npos) << r.err;
    const auto volume = [&](const std::string& name) {
        for (const auto& v : volumes.as_array()) {
            if (Member(v.as_object(), "displayName") == name) return v.as_object();
        }
        return boost::json::object();
    };
    EXPECT_EQ(volume("ocw-scratch").at("attachedTo").as_array().size(), 0u) << "an unattached volume is listed";
    EXPECT_EQ(Member(volume("ocw-app-1 (Boot Volume)"), "compartment"), "ocw-demo-apps");

    r = Ocw({"--json", "backups", "list"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_FALSE(IdOf(Json(r), "displayName", "ocw-data-1-backup").empty()) << r.out;
    EXPECT_FALSE(IdOf(Json(r), "displayName", "ocw-demo-db-backup").empty()) << r.out;

    r = Ocw({"--json", "objects", "list", "ocw-demo-bucket"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    ASSERT_EQ(Json(r).as_array().size(), 2u) << r.out;
    EXPECT_EQ(Member(Json(r).as_array()[0].as_object(), "compartment"), "ocw-demo");
    EXPECT_EQ(Ocw({"objects", "list", "no-such-bucket"}).exitCode, 4);
}

TEST_F(CliOperator, CommandLineSaysWhatItKnows) {
    CliResult r = OcwRaw({"--version"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.out.rfind("ocw 1.0.0 (OracleCloudSDKWrapper library 1.0.0)", 0), 0u) << r.out;

    r = OcwRaw({"volumes", "snapshot", "--help"});
    EXPECT_EQ(r.exitCode, 0);
    for (const char* global : {"--profile", "--json", "--timeout SECONDS", "--region"}) {
        EXPECT_NE(r.out.find(global), std::string::npos) << global << "\n" << r.out;
    }

    // The completion generated at build time from the command definitions.
    r = RunProgram("/bin/bash", {"-c", std::string("source ") + OCW_BASH_COMPLETION +
                                           "; COMP_WORDS=(ocw instances l); COMP_CWORD=2; _ocw; echo \"${COMPREPLY[@]}\";"
                                           " COMP_WORDS=(ocw volumes list --c); COMP_CWORD=3; _ocw; echo \"${COMPREPLY[@]}\""});
    EXPECT_EQ(r.out, "list launch\n--compartment --config-file\n") << r.err;

    // A reader that has what it wanted (| head -1) is not an error.
    CliRunOptions gone;
    gone.readerGone = true;
    r = Ocw({"instances", "list"}, gone);
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.err.empty()) << r.err;
}

}  // namespace
}  // namespace ocwtest
