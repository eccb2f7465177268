// db systems|databases|backup|restore: OCI database systems.
#include <iostream>
#include <memory>

#include "Commands.h"
#include "Ocid.h"
#include "DbWalk.h"
#include "Output.h"
#include "RecordJson.h"

namespace ocw {

using boost::json::object;
using OracleCloudSDKWrapper::COracleCloudWrapper;

namespace {

void RunSystems(Session& s, const std::string& compartment) {
    std::vector<oci::SOCIDbSystemInfoLib> systems;
    const std::string c = s.compartmentOr(compartment);
    s.call("list DB systems", [&](COracleCloudWrapper& f) { return f.GetDbSystemList(systems, c); });
    ListOutput out({{"displayName", "NAME"}, {"lifecycleState", "STATE"}, {"shape", "SHAPE"},
                    {"databaseEdition", "EDITION"}, {"nodeCount", "NODES"}, {"id", "ID"}});
    for (const oci::SOCIDbSystemInfoLib& system : systems) out.add(ToJson(system));
    out.print(std::cout, s.json());
}

void RunDatabases(Session& s, const std::string& compartment, const std::string& dbSystem) {
    ListOutput out({{"dbName", "NAME"}, {"lifecycleState", "STATE"}, {"pdbName", "PDB"},
                    {"autoBackupEnabled", "AUTO_BACKUP"}, {"id", "ID"}});
    for (const oci::SOCIDatabaseInfoLib& database : ListDatabases(s, compartment, dbSystem)) out.add(ToJson(database));
    out.print(std::cout, s.json());
}

void RunBackup(Session& s, const std::string& id, const std::string& name, bool wait) {
    const oci::SOCIDatabaseInfoLib database = ReadDatabase(s, id);
    oci::SPaaSBackupRestoreOptionsLib options;
    options.tag = name.empty() ? database.dbName + "-ocw-backup" : name;
    options.notes = options.tag;
    std::string job;
    s.call("back up database " + id, [&](COracleCloudWrapper& f) { return f.BackupDBInstance(database, options, job); });
    std::string state = "CREATING";
    if (wait && IsDbBackupId(job)) {
        state = s.waitFor({"database backup " + options.tag, job,
                           [&](std::string& st) {
                               oci::SOCIDbBackupInfoLib backup;
                               if (!s.cloud().GetDbBackupInfo(backup, job)) return false;
                               st = backup.lifecycleState;
                               return true;
                           },
                           {"ACTIVE"},
                           {"FAILED", "DELETED"}});
    }
    PrintResult(std::cout, "Backup of database " + database.dbName + ": " + job + " (" + state + ")",
                object{{"id", job}, {"databaseId", id}, {"lifecycleState", state}}, s.json());
}

struct RestoreOptions {
    std::string database, scn, timestamp;
    bool latest = false;
    bool noWait = false;
};

void RunRestore(Session& s, const RestoreOptions& o) {
    if (static_cast<int>(o.latest) + static_cast<int>(!o.scn.empty()) + static_cast<int>(!o.timestamp.empty()) != 1) {
        throw CliError(kExitUsage, "db restore needs exactly one of --latest, --scn and --timestamp");
    }
    const oci::SOCIDatabaseInfoLib database = ReadDatabase(s, o.database);
    oci::SPaaSBackupRestoreOptionsLib options;
    options.latest = o.latest;
    options.scn = o.scn;
    options.timestamp = o.timestamp;
    std::string job;
    s.call("restore database " + o.database,
           [&](COracleCloudWrapper& f) { return f.RestoreDBInstance(database, options, job); });
    std::string state = "RESTORE_IN_PROGRESS";
    if (!o.noWait) {
        state = s.waitFor({"restore database " + database.dbName, o.database,
                           [&](std::string& st) {
                               oci::SOCIDatabaseInfoLib current;
                               if (!s.cloud().GetDatabaseInfo(current, o.database)) return false;
                               st = current.lifecycleState;
                               return true;
                           },
                           {"AVAILABLE"},
                           {"FAILED", "RESTORE_FAILED", "TERMINATED"}});
    }
    PrintResult(std::cout, "Database " + database.dbName + " restored (" + state + ")",
                object{{"id", o.database}, {"lifecycleState", state}}, s.json());
}

}  // namespace

void RegisterDatabaseCommands(CLI::App& app, Action& action) {
    CLI::App* group = app.add_subcommand("db", "OCI database systems, databases and their backups");
    group->require_subcommand(1);
    {
        auto compartment = std::make_shared<std::string>();
        CLI::App* cmd = group->add_subcommand("systems", "list the DB systems of a compartment");
        AddCompartmentOption(*cmd, *compartment);
        cmd->callback([&action, compartment] { action = [compartment](Session& s) { RunSystems(s, *compartment); }; });
    }
    {
        struct Opts { std::string compartment, dbSystem; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand("databases", "list the databases of a compartment's DB systems");
        AddCompartmentOption(*cmd, o->compartment);
        cmd->add_option("--db-system", o->dbSystem, "only this DB system OCID")->check(OcidOf(kDbSystemOcid));
        cmd->callback([&action, o] { action = [o](Session& s) { RunDatabases(s, o->compartment, o->dbSystem); }; });
    }
    {
        struct Opts { std::string database, name; bool noWait = false; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand("backup", "back up a database and wait until the backup is active");
        cmd->add_option("database", o->database, "database OCID")->required()->check(OcidOf(kDatabaseOcid));
        cmd->add_option("-n,--name", o->name, "backup name (default <dbName>-ocw-backup)");
        cmd->add_flag("--no-wait", o->noWait, "return once the backup is requested");
        cmd->callback([&action, o] { action = [o](Session& s) { RunBackup(s, o->database, o->name, !o->noWait); }; });
    }
    {
        auto o = std::make_shared<RestoreOptions>();
        CLI::App* cmd = group->add_subcommand("restore", "restore a database in place and wait until it is available");
        cmd->add_option("database", o->database, "database OCID")->required()->check(OcidOf(kDatabaseOcid));
        cmd->add_flag("--latest", o->latest, "to the latest backup");
        cmd->add_option("--scn", o->scn, "to this system change number");
        cmd->add_option("--timestamp", o->timestamp, "to this time (RFC 3339)");
        cmd->add_flag("--no-wait", o->noWait, "return once the restore is requested");
        cmd->callback([&action, o] { action = [o](Session& s) { RunRestore(s, *o); }; });
    }
}

}  // namespace ocw
