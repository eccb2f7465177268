// backups list|show|delete: database backups, and volume backups by OCID.
#include <ctime>
#include <iostream>
#include <memory>

#include "Commands.h"
#include "DbWalk.h"
#include "Ocid.h"
#include "Output.h"
#include "RecordJson.h"
#include "Walk.h"

namespace ocw {

using boost::json::object;
using OracleCloudSDKWrapper::COracleCloudWrapper;

namespace {

const std::vector<Column> kBackupColumns{{"displayName", "NAME"}, {"kind", "KIND"},
                                         {"lifecycleState", "STATE"}, {"compartment", "COMPARTMENT"},
                                         {"timeCreated", "CREATED"}, {"sourceId", "SOURCE"}, {"id", "ID"}};

std::string Rfc3339(std::time_t t) {
    if (t == 0) return std::string();
    std::tm tm{};
    gmtime_r(&t, &tm);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &tm);
    return text;
}

object DbBackupRow(const oci::SOCIDbBackupInfoLib& b, const std::string& compartment) {
    object row = ToJson(b);
    row["kind"] = "database";
    row["compartment"] = compartment;
    row["timeCreated"] = b.timeStarted;
    row["sourceId"] = b.databaseId;
    return row;
}

// Volume, boot volume and database backups of every compartment walked (or
// only the database backups of one database or DB system).
void RunList(Session& s, const std::string& compartment, const std::string& database, const std::string& dbSystem) {
    ListOutput out(kBackupColumns);
    if (!database.empty() || !dbSystem.empty()) {
        const std::string c = s.compartmentOr(compartment);
        std::vector<std::string> ids{database};
        if (database.empty()) {
            ids.clear();
            for (const oci::SOCIDatabaseInfoLib& d : ListDatabases(s, compartment, dbSystem)) ids.push_back(d.id);
        }
        for (const std::string& id : ids) {
            std::vector<oci::SOCIDbBackupInfoLib> backups;
            s.call("list backups of database " + id,
                   [&](COracleCloudWrapper& f) { return f.GetDbBackupList(backups, c, id); });
            for (const oci::SOCIDbBackupInfoLib& b : backups) out.add(DbBackupRow(b, std::string()));
        }
        out.print(std::cout, s.json());
        return;
    }
    ForEachCompartment(s, compartment, "list backups", [&](const oci::SContainerInfoLib& c) {
        const size_t before = out.size();
        std::vector<oci::SSnapshotInfoLib> volumeBackups;
        s.call("list volume backups of compartment " + c.guid,
               [&](COracleCloudWrapper& f) { return f.ListVolumeBackups(volumeBackups, c.guid, ""); });
        for (const oci::SSnapshotInfoLib& b : volumeBackups) {
            const bool boot = b.snapshotId.find(".bootvolumebackup.") != std::string::npos;
            out.add(object{{"displayName", b.description},
                           {"kind", boot ? "boot volume" : "volume"},
                           {"lifecycleState", b.status},
                           {"compartment", c.name},
                           {"compartmentId", c.guid},
                           {"timeCreated", Rfc3339(b.startTime)},
                           {"sizeInGBs", b.sizeBytes >> 30},
                           {"sourceId", b.volumeName},
                           {"id", b.snapshotId}});
        }
        for (const oci::SOCIDatabaseInfoLib& d : ListDatabases(s, c.guid, "")) {
            std::vector<oci::SOCIDbBackupInfoLib> backups;
            s.call("list backups of database " + d.id,
                   [&](COracleCloudWrapper& f) { return f.GetDbBackupList(backups, c.guid, d.id); });
            for (const oci::SOCIDbBackupInfoLib& b : backups) {
                object row = DbBackupRow(b, c.name);
                row["compartmentId"] = c.guid;
                out.add(std::move(row));
            }
        }
        return out.size() - before;
    });
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
    CLI::App* group = app.add_subcommand("backups", "volume, boot volume and database backups");
    group->require_subcommand(1);
    {
        struct Opts { std::string compartment, database, dbSystem; };
        auto o = std::make_shared<Opts>();
        CLI::App* cmd = group->add_subcommand(
            "list", "list the volume, boot volume and database backups of every compartment (or of one)");
        cmd->add_option("-c,--compartment", o->compartment, "only this compartment (default: every compartment)")
            ->check(OcidOf(kCompartmentOcid));
        cmd->add_option("--database", o->database, "only the backups of this database OCID")
            ->check(OcidOf(kDatabaseOcid));
        cmd->add_option("--db-system", o->dbSystem, "only the backups of this DB system's databases")
            ->check(OcidOf(kDbSystemOcid));
        cmd->callback([&action, o] {
            action = [o](Session& s) { RunList(s, o->compartment, o->database, o->dbSystem); };
        });
    }
    {
        auto id = std::make_shared<std::string>();
        CLI::App* cmd = group->add_subcommand("show", "show a database backup, or the state of a volume backup");
        cmd->add_option("backup", *id, "backup OCID (database, volume or boot volume backup)")
            ->required()
            ->check(OcidOf(kBackupOcid));
        cmd->callback([&action, id] { action = [id](Session& s) { RunShow(s, *id); }; });
    }
    {
        auto id = std::make_shared<std::string>();
        CLI::App* cmd = group->add_subcommand("delete", "delete a database, volume or boot volume backup");
        cmd->add_option("backup", *id, "backup OCID")->required()->check(OcidOf(kBackupOcid));
        cmd->callback([&action, id] { action = [id](Session& s) { RunDelete(s, *id); }; });
    }
}

}  // namespace ocw
