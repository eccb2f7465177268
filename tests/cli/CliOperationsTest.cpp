// Operations through ocw change the emulated cloud as the commands say.
#include <chrono>
#include <thread>

#include "CliFixture.h"
#include "common/RequestLog.h"
#include "common/Store.h"

namespace ocwtest {
namespace {

class CliOperations : public CliTest {
protected:
    std::string PublicSubnet() {
        const boost::json::value networks = Json(Ocw({"--json", "networks"}));
        for (const auto& vcn : networks.as_array()) {
            for (const auto& s : vcn.at("subnets").as_array()) {
                if (s.at("displayName").as_string() == "ocw-demo-public") return std::string(s.at("id").as_string());
            }
        }
        return std::string();
    }
};

std::string Str(const boost::json::value& v, const char* key) {
    const boost::json::value* member = v.is_object() ? v.get_object().if_contains(key) : nullptr;
    return member != nullptr && member->is_string() ? std::string(member->get_string()) : std::string();
}

TEST_F(CliOperations, SnapshotRestoreAttachDetachAndDeleteAVolume) {
    const boost::json::value volumes = Json(Ocw({"--json", "volumes", "list"}));
    const std::string data = IdOf(volumes, "displayName", "ocw-data-1");
    const std::string helper = IdOf(Json(Ocw({"--json", "instances", "list"})), "displayName", "ocw-web-2");
    ASSERT_FALSE(data.empty());
    ASSERT_FALSE(helper.empty());

    CliResult r = Ocw({"--json", "volumes", "snapshot", data, "--name", "cli-test-backup"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string backup = Str(Json(r), "id");
    EXPECT_EQ(Str(Json(r), "lifecycleState"), "AVAILABLE");
    EXPECT_EQ(backup.rfind("ocid1.volumebackup.", 0), 0u) << backup;
    // Progress of ocw's own wait went to stderr, not into the JSON.
    EXPECT_NE(r.err.find("backup cli-test-backup"), std::string::npos) << r.err;

    r = Ocw({"--json", "volumes", "restore", backup, "--name", "cli-test-restored"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string restored = Str(Json(r), "id");
    ASSERT_EQ(restored.rfind("ocid1.volume.", 0), 0u) << r.out;

    r = Ocw({"--json", "volumes", "attach", restored, helper});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Str(Json(r), "lifecycleState"), "ATTACHED");
    EXPECT_EQ(Str(Json(r), "attachmentType"), "iscsi");
    EXPECT_FALSE(Str(Json(r), "iqn").empty()) << r.out;

    // The helper now lists the restored volume among its volumes.
    r = Ocw({"--json", "volumes", "list", "--instance", helper});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(IdOf(Json(r), "id", restored), restored);

    r = Ocw({"volumes", "detach", restored, helper});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    r = Ocw({"--json", "volumes", "list", "--instance", helper});
    EXPECT_TRUE(IdOf(Json(r), "id", restored).empty()) << r.out;

    EXPECT_EQ(Ocw({"volumes", "delete", restored}).exitCode, 0);
    EXPECT_EQ(Ocw({"backups", "delete", backup}).exitCode, 0);
}

TEST_F(CliOperations, IntegritySnapshotReplacesAVolume) {
    CliResult r = Ocw({"--json", "volumes", "create", "--name", "cli-scratch", "--size-gb", "50"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string volume = Str(Json(r), "id");
    ASSERT_FALSE(volume.empty()) << r.out;

    r = Ocw({"--json", "volumes", "snapshot", volume, "--integrity"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string backup = Str(Json(r), "id");

    r = Ocw({"--json", "volumes", "restore", backup, "--replace", volume});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string replacement = Str(Json(r), "id");
    EXPECT_FALSE(replacement.empty());
    EXPECT_NE(replacement, volume);

    // The replaced volume is going or gone.
    r = Ocw({"--json", "volumes", "show", volume});
    EXPECT_TRUE(r.exitCode == 4 || Str(Json(r), "lifecycleState").rfind("TERMINAT", 0) == 0) << r.out << r.err;
}

TEST_F(CliOperations, PowerCycleReportsTheStatesItWaitedFor) {
    const std::string id = IdOf(Json(Ocw({"--json", "instances", "list"})), "displayName", "ocw-web-2");
    CliResult r = Ocw({"instances", "stop", id});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("STOPPED"), std::string::npos);
    r = Ocw({"--json", "instances", "show", id});
    EXPECT_EQ(Str(Json(r), "lifecycleState"), "STOPPED");
    r = Ocw({"instances", "start", id});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    r = Ocw({"instances", "reboot", id});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    r = Ocw({"--json", "instances", "show", id});
    EXPECT_EQ(Str(Json(r), "lifecycleState"), "RUNNING");
}

TEST_F(CliOperations, ImageImportFromObjectStorageAndLaunchFromIt) {
    CliResult r = Ocw({"objects", "put", "ocw-demo-bucket", "cli/disk.vmdk", "--text", "# Disk DescriptorFile\n"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string compartment = IdOf(Json(Ocw({"--json", "compartments"})), "name", "ocw-demo");
    r = Ocw({"--json", "images", "import", "--bucket", "ocw-demo-bucket", "--object", "cli/disk.vmdk", "--name",
             "cli-image", "-c", compartment});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string image = Str(Json(r), "id");
    EXPECT_EQ(Str(Json(r), "lifecycleState"), "AVAILABLE");

    const std::string subnet = PublicSubnet();
    r = Ocw({"--json", "instances", "launch", "--name", "cli-restored", "--shape", "VM.Standard2.1", "--image", image,
             "-c", compartment, "--subnet", subnet});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string instance = Str(Json(r), "id");
    r = Ocw({"--json", "instances", "show", instance});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Str(Json(r), "imageId"), image);
    EXPECT_EQ(Str(Json(r), "lifecycleState"), "RUNNING");

    r = Ocw({"instances", "delete", instance});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("terminated"), std::string::npos);
    EXPECT_EQ(Ocw({"images", "delete", image}).exitCode, 0);
    EXPECT_EQ(Ocw({"objects", "delete", "ocw-demo-bucket", "cli/disk.vmdk"}).exitCode, 0);
    // Deleting it again finds nothing.
    EXPECT_EQ(Ocw({"objects", "delete", "ocw-demo-bucket", "cli/disk.vmdk"}).exitCode, 4);
}

TEST_F(CliOperations, KeptBootVolumeOfATerminatedInstanceBootsANewOne) {
    const std::string app = IdOf(Json(Ocw({"--json", "instances", "list"})), "displayName", "ocw-app-1");
    CliResult r = Ocw({"--json", "instances", "show", app});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    std::string boot;
    const boost::json::value shown = Json(r);
    const std::string compartment = Str(shown, "compartmentId");
    for (const auto& v : shown.at("volumes").as_array()) {
        if (v.at("bootable").as_bool()) boot = std::string(v.at("id").as_string());
    }
    ASSERT_FALSE(boot.empty()) << r.out;

    r = Ocw({"instances", "delete", app});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    r = Ocw({"--json", "volumes", "show", boot});
    ASSERT_EQ(r.exitCode, 0) << "the boot volume must survive the termination: " << r.err;

    r = Ocw({"instances", "launch", "--name", "cli-reborn", "--shape", "VM.Standard2.1", "--boot-volume", boot});
    EXPECT_EQ(r.exitCode, 2) << "a boot volume launch without a subnet";
    r = Ocw({"--json", "instances", "launch", "--name", "cli-reborn", "--shape", "VM.Standard.E4.Flex", "--ocpus", "2",
             "--memory-gb", "16", "--boot-volume", boot, "-c", compartment, "--subnet", PublicSubnet()});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    r = Ocw({"--json", "instances", "show", Str(Json(r), "id")});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const boost::json::value vm = Json(r);
    EXPECT_EQ(Str(vm, "lifecycleState"), "RUNNING");
    EXPECT_EQ(vm.at("ocpus").to_number<int>(), 2);
    EXPECT_EQ(vm.at("memoryInGBs").to_number<int>(), 16);
    EXPECT_EQ(IdOf(vm.at("volumes"), "id", boot), boot);
}

TEST_F(CliOperations, DatabaseBackupsAreListedBackedUpAndDeleted) {
    const std::string compartment = IdOf(Json(Ocw({"--json", "compartments"})), "name", "ocw-demo-db");
    CliResult r = Ocw({"--json", "db", "systems", "-c", compartment});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_FALSE(IdOf(Json(r), "displayName", "ocw-demo-db").empty()) << r.out;

    r = Ocw({"--json", "db", "databases", "-c", compartment});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string database = IdOf(Json(r), "dbName", "DEMODB");
    ASSERT_FALSE(database.empty()) << r.out;

    r = Ocw({"--json", "backups", "list", "-c", compartment});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_FALSE(IdOf(Json(r), "displayName", "ocw-demo-db-backup").empty()) << r.out;

    r = Ocw({"--json", "db", "backup", database, "--name", "cli-db-backup"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string backup = Str(Json(r), "id");
    ASSERT_EQ(backup.rfind("ocid1.dbbackup.", 0), 0u) << r.out;
    EXPECT_EQ(Str(Json(r), "lifecycleState"), "ACTIVE");

    r = Ocw({"backups", "delete", backup});
    EXPECT_EQ(r.exitCode, 0) << r.err;
}

TEST_F(CliOperations, DatabaseRestoreWaitsPastTheStateTheCloudStillShowsRightAfterTheRequest) {
    // A restore that keeps the database UPDATING for a while, and a cloud that
    // goes on answering AVAILABLE for a moment after accepting it.
    TempDir slowState;
    ocwemu::Emulator slow(OwnEmulatorOptions(slowState, 2500));
    ASSERT_TRUE(slow.start()) << slow.lastError();
    const auto run = [this, &slow](std::vector<std::string> args) {
        args.insert(args.begin(), {"--config-file", slow.info().ociConfig, "--ini", slow.info().ini, "--json"});
        return OcwRaw(args);
    };
    const std::string compartment = IdOf(Json(run({"compartments"})), "name", "ocw-demo-db");
    const std::string database = IdOf(Json(run({"db", "databases", "-c", compartment})), "dbName", "DEMODB");
    ASSERT_FALSE(database.empty());
    {
        std::lock_guard<std::mutex> lock(slow.store().mutex());
        slow.store().hold(database, "AVAILABLE");
    }
    // The stale answer lasts well under ocw's poll interval (1 s in the
    // emulator's ini) after the restore request.
    std::thread catchUp([&slow, &database] {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        bool requested = false;
        while (!requested && std::chrono::steady_clock::now() < deadline) {
            for (const ocwemu::LoggedRequest& request : slow.requestLog().last(20)) {
                requested = requested || (request.method == "POST" &&
                                          request.target.find("/actions/restore") != std::string::npos);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        std::lock_guard<std::mutex> lock(slow.store().mutex());
        slow.store().release(database);
    });
    const CliResult r = run({"db", "restore", database, "--latest"});
    catchUp.join();

    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Str(Json(r), "lifecycleState"), "AVAILABLE");
    // ocw saw the restore under way instead of taking the stale AVAILABLE for its end.
    EXPECT_NE(r.err.find("restore database DEMODB: UPDATING"), std::string::npos) << r.err;
}

}  // namespace
}  // namespace ocwtest
