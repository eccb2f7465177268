// backups list|show|delete: database backups, and volume backups by OCID.
#include <iostream>
#include <memory>

#include "Commands.h"
#include "DbWalk.h"
#include "Output.h"
#include "RecordJson.h"

namespace ocw {

using boost::json::object;
using OracleCloudSDKWrapper::COracleCloudWrapper;

namespace {

void RunList(Session& s, const std::string& compartment, const std::string& database, const std::string& dbSystem) {
    const std::string c = s.compartmentOr(compartment);
    std::vector<std::string> databases;
    if (!database.empty()) {
        databases.push_back(database);
    } else {
        for (const oci::SOCIDatabaseInfoLib& d : ListDatabases(s, compartment, dbSystem)) databases.push_back(d.id);
    }
    ListOutput out({{"displayName", "NAME"}, {"lifecycleState", "STATE"}, {"type", "TYPE"}, {"timeEnded", "ENDED"},
                    {"id", "ID"}, {"databaseId", "DATABASE_ID"}});
    for (const std::string& id : databases) {
        std::vector<oci::SOCIDbBackupInfoLib> backups;
        s.call("list backups of database " + id, [&](COracleCloudWrapper& f) { return f.GetDbBackupList(backups, c, id); });
        for (const oci::SOCIDbBackupInfoLib& b : backups) out.add(ToJson(b));
    }
    out.print(std::cout, s.json());
}

void RunShow(Session& s, const std::string& id) {
    if (IsDbBackupId(id)) {
        oci::SOCIDbBackupInfoLib backup;
        s.call("read database backup " + id, [&](COracleCloudWrapper& f) { return f.GetDbBackupInfo(backup, id); });
        PrintRecord(std::cout, ToJson(backup), s.json());
        return;
    }
    std::string status;
    s.call("read volume backup " + id, [&](COracleCloudWrapper& f) { return f.GetSnapshotStatus(id, status); });
    PrintRecord(std::cout, object{{"id", id}, {"lifecycleState", status}}, s.json());
}

void RunDelete(Session& s, const std::string& id) {
    if (IsDbBackupId(id)) {
        oci::SOCIDbBackupInfoLib backup;
        s.call("read database backup " + id, [&](COracleCloudWrapper& f) { return f.GetDbBackupInfo(backup, id); });
        const oci::SOCIDatabaseInfoLib database = ReadDatabase(s, backup.databaseId);
        oci::SPaaSBackupRestoreOptionsLib options;
        options.backupId = id;
        std::string job;
        s.call("delete database backup " + id,
               [&](COracleCloudWrapper& f) { return f.DeleteDBBackup(database, options, job); });
    } else {
        s.call("delete volume backup " + id, [&](COracleCloudWrapper& f) { return f.DeleteVolumeSnapshot(id); });
    }
    PrintResult(std::cout, "Backup " + id + " is being deleted", object{{"id", id}, {"lifecycleState", "DELETING"}},
                s.json());
}

}  // namespace

void RegisterBackupCommands(CLI::App& app, Action& action) {
    CLI::App* group = app.add_subcommand("backups", "database backups; volume backups by OCID");
    group->require_subcommand(1);
    {
        struct Opts { std::string compartment, database, dbSystem; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand("list", "list the database backups of a compartment");
        AddCompartmentOption(*cmd, o->compartment);
        cmd->add_option("--database", o->database, "only this database OCID");
        cmd->add_option("--db-system", o->dbSystem, "only databases of this DB system OCID");
        cmd->callback([&action, o] {
            action = [o](Session& s) { RunList(s, o->compartment, o->database, o->dbSystem); };
        });
    }
    {
        auto id = std::make_shared<std::string>();
        CLI::App* cmd = group->add_subcommand("show", "show a database backup, or the state of a volume backup");
        cmd->add_option("backup", *id, "backup OCID (database, volume or boot volume backup)")->required();
        cmd->callback([&action, id] { action = [id](Session& s) { RunShow(s, *id); }; });
    }
    {
        auto id = std::make_shared<std::string>();
        CLI::App* cmd = group->add_subcommand("delete", "delete a database, volume or boot volume backup");
        cmd->add_option("backup", *id, "backup OCID")->required();
        cmd->callback([&action, id] { action = [id](Session& s) { RunDelete(s, *id); }; });
    }
}

}  // namespace ocw
