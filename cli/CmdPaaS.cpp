// Classic PaaS: db|java|mysql list|show|backup|restore|delete-backup and
// jobs show. Backups and restores run as jobs of the service: ocw follows
// each to its end, or prints the job URI at once with --no-wait.
#include <iostream>
#include <memory>

#include "ClassicJson.h"
#include "Commands.h"
#include "InFlight.h"
#include "Output.h"
#include "PaaSJobs.h"

namespace ocw {

using boost::json::object;
using OracleCloudSDKWrapper::COracleCloudWrapper;
using OracleCloudSDKWrapper::SPaaSBackupRestoreOptionsLib;

namespace {

const char* Title(PaaSKind kind) {
    return kind == PaaSKind::Java ? "Java service" : kind == PaaSKind::MySql ? "MySQL service" : "database service";
}

// Every service of the kind as its JSON record; `pick` (when not empty)
// receives the facade record of the service named so.
struct Services {
    std::vector<object> rows;
    std::vector<OracleCloudSDKWrapper::SOracleDBInstanceInfoLib> db;
    std::vector<OracleCloudSDKWrapper::SJavaInstanceInfoLib> java;
    std::vector<OracleCloudSDKWrapper::SMySQLInstanceInfoLib> mysql;
};

Services ListServices(Session& s, PaaSKind kind) {
    Services out;
    const std::string what = std::string("list ") + Title(kind) + "s";
    switch (kind) {
        case PaaSKind::Database:
            s.call(what, [&](COracleCloudWrapper& c) { return c.GetDBInstanceList(out.db); });
            for (const auto& r : out.db) out.rows.push_back(DbServiceJson(r, false));
            break;
        case PaaSKind::Java:
            s.call(what, [&](COracleCloudWrapper& c) { return c.GetJavaInstanceList(out.java); });
            for (const auto& r : out.java) out.rows.push_back(JavaMySqlServiceJson(r, r.state));
            break;
        case PaaSKind::MySql:
            s.call(what, [&](COracleCloudWrapper& c) { return c.GetMySQLInstanceList(out.mysql); });
            for (const auto& r : out.mysql) out.rows.push_back(JavaMySqlServiceJson(r, ""));
            break;
    }
    return out;
}

// Index of the named service in the listing; CliError(kExitNotFound) when absent.
size_t FindService(const Services& all, PaaSKind kind, const std::string& name) {
    std::string known;
    for (size_t i = 0; i < all.rows.size(); ++i) {
        const std::string each = all.rows[i].at("name").as_string().c_str();
        if (each == name) return i;
        known += (known.empty() ? "" : ", ") + each;
    }
    throw CliError(kExitNotFound, std::string("no ") + Title(kind) + " " + name +
                                      (known.empty() ? std::string(" (there are none)") : " (services: " + known + ")"));
}

void RunList(Session& s, PaaSKind kind) {
    ListOutput out({{"name", "NAME"}, {"state", "STATE"}, {"version", "VERSION"}, {"edition", "EDITION"}});
    for (object& row : ListServices(s, kind).rows) out.add(std::move(row));
    out.print(std::cout, s.json());
}

void RunShow(Session& s, PaaSKind kind, const std::string& name) {
    if (kind == PaaSKind::Database) {
        OracleCloudSDKWrapper::SOracleDBInstanceInfoLib db;
        s.call("read database service " + name, [&](COracleCloudWrapper& c) { return c.GetDBInstanceInfo(name, db); });
        PrintRecord(std::cout, DbServiceJson(db, true), s.json());
        return;
    }
    Services all = ListServices(s, kind);
    PrintRecord(std::cout, all.rows[FindService(all, kind, name)], s.json());
}

enum class JobOp { Backup, Restore, DeleteBackup };

struct JobOptions {
    std::string service, tag, scn, timestamp, backupId, notes;
    bool latest = false, keepForever = false, full = false, databaseIncluded = false, noWait = false;
};

SPaaSBackupRestoreOptionsLib LibraryOptions(PaaSKind kind, JobOp op, const JobOptions& o) {
    if (op == JobOp::Restore && kind == PaaSKind::Database &&
        o.tag.empty() + !o.latest + o.scn.empty() + o.timestamp.empty() != 3) {
        throw CliError(kExitUsage, "db restore needs exactly one of --tag, --latest, --scn and --timestamp");
    }
    if (op != JobOp::Backup && kind != PaaSKind::Database && o.backupId.empty()) {
        throw CliError(kExitUsage, std::string(CommandOf(kind)) + " " + (op == JobOp::Restore ? "restore" : "delete-backup") +
                                       " needs --backup-id");
    }
    SPaaSBackupRestoreOptionsLib lib;
    lib.tag = o.tag;
    lib.latest = o.latest;
    lib.scn = o.scn;
    lib.timestamp = o.timestamp;
    lib.backupId = o.backupId;
    lib.notes = o.notes;
    lib.keepForever = o.keepForever;
    lib.fullBackup = o.full;
    lib.databaseIncluded = o.databaseIncluded;
    return lib;
}

bool StartJob(COracleCloudWrapper& c, PaaSKind kind, JobOp op, const Services& all, size_t i,
              const SPaaSBackupRestoreOptionsLib& options, std::string& uri) {
    std::string info;
    switch (kind) {
        case PaaSKind::Database:
            return op == JobOp::Backup ? c.BackupDBInstance(all.db[i], options, uri, info)
                                       : c.RestoreDBInstance(all.db[i], options, uri, info);
        case PaaSKind::Java:
            return op == JobOp::Backup    ? c.BackupJavaInstance(all.java[i], options, uri, info)
                   : op == JobOp::Restore ? c.RestoreJavaInstance(all.java[i], options, uri, info)
                                          : c.DeleteJavaBackup(all.java[i], options, uri, info);
        case PaaSKind::MySql:
            return op == JobOp::Backup    ? c.BackupMySQLInstance(all.mysql[i], options, uri, info)
                   : op == JobOp::Restore ? c.RestoreMySQLInstance(all.mysql[i], options, uri, info)
                                          : c.DeleteMySQLBackup(all.mysql[i], options, uri, info);
    }
    return false;
}

void RunJob(Session& s, PaaSKind kind, JobOp op, const JobOptions& o) {
    const SPaaSBackupRestoreOptionsLib options = LibraryOptions(kind, op, o);
    const Services all = ListServices(s, kind);
    const size_t index = FindService(all, kind, o.service);
    const char* verb = op == JobOp::Backup ? "backup" : op == JobOp::Restore ? "restore" : "backup deletion";
    const std::string label = std::string(verb) + " of " + Title(kind) + " " + o.service;
    std::string uri;
    s.call("start the " + label, [&](COracleCloudWrapper& c) { return StartJob(c, kind, op, all, index, options, uri); });
    InFlight::Track(uri);
    if (o.noWait) {
        PrintResult(std::cout, "Started the " + label + "; follow it with: ocw jobs show " + uri,
                    object{{"uri", uri}, {"service", o.service}, {"status", "started"}}, s.json());
        return;
    }
    object job = FollowJob(s, kind, uri, label);
    const std::string tag = job.contains("tag") ? std::string(job.at("tag").as_string().c_str()) : std::string();
    PrintResult(std::cout, "The " + label + " completed" + (tag.empty() ? std::string() : " (tag " + tag + ")"), job,
                s.json());
}

void RunJobShow(Session& s, const std::string& uri) {
    const PaaSKind kind = KindOfJobUri(uri);
    s.setService(ServiceOf(kind));
    std::string status;
    object details;
    s.call("read job " + uri, [&](COracleCloudWrapper&) { return ReadJob(s, kind, uri, status, details); });
    PrintRecord(std::cout, details, s.json());
}

void AddJobCommand(CLI::App& group, Action& action, PaaSKind kind, JobOp op) {
    auto o = std::make_shared<JobOptions>();
    const std::string title = Title(kind);
    const char* name = op == JobOp::Backup ? "backup" : op == JobOp::Restore ? "restore" : "delete-backup";
    const std::string help = op == JobOp::Backup    ? "back up a " + title + " and follow the job to its end"
                             : op == JobOp::Restore ? "restore a " + title + " and follow the job to its end"
                                                    : "delete a backup of a " + title + " and follow the job";
    CLI::App* cmd = group.add_subcommand(name, help);
    cmd->add_option("service", o->service, "service name")->required();
    if (op == JobOp::Backup) {
        cmd->add_flag("--keep-forever", o->keepForever, "keep the backup until it is deleted");
        if (kind != PaaSKind::Database) cmd->add_option("--notes", o->notes, "notes stored with the backup");
        if (kind == PaaSKind::Java) {
            cmd->add_flag("--full", o->full, "a full backup");
            cmd->add_flag("--database-included", o->databaseIncluded, "include the service's database");
        }
    } else if (kind == PaaSKind::Database) {
        cmd->add_option("--tag", o->tag, "the backup's tag");
        cmd->add_flag("--latest", o->latest, "the latest backup");
        cmd->add_option("--scn", o->scn, "a system change number");
        cmd->add_option("--timestamp", o->timestamp, "a point in time, e.g. 2026-11-24T05:00:00");
    } else {
        cmd->add_option("--backup-id", o->backupId, "the backup's id (its job's backupId)");
        if (op == JobOp::Restore) cmd->add_option("--notes", o->notes, "notes of the restore");
    }
    cmd->add_flag("--no-wait", o->noWait, "print the job URI at once instead of following the job");
    cmd->callback([&action, o, kind, op] {
        action = [o, kind, op](Session& s) {
            s.setService(ServiceOf(kind));
            RunJob(s, kind, op, *o);
        };
    });
}

}  // namespace

void RegisterPaaSCommands(CLI::App& app, Action& action) {
    for (PaaSKind kind : {PaaSKind::Database, PaaSKind::Java, PaaSKind::MySql}) {
        const std::string title = Title(kind);
        CLI::App* group = app.add_subcommand(CommandOf(kind), "Classic PaaS: " + title + "s");
        group->require_subcommand(1);
        group->add_subcommand("list", "list the " + title + "s")->callback([&action, kind] {
            action = [kind](Session& s) {
                s.setService(ServiceOf(kind));
                RunList(s, kind);
            };
        });
        AddOneArgumentCommand(*group, action, "show", "show one " + title, "service", "service name",
                              [kind](Session& s, const std::string& name) {
                                  s.setService(ServiceOf(kind));
                                  RunShow(s, kind, name);
                              });
        AddJobCommand(*group, action, kind, JobOp::Backup);
        AddJobCommand(*group, action, kind, JobOp::Restore);
        // The library cannot delete a database service's backups (its
        // DeleteDBBackup always fails without a request).
        if (kind != PaaSKind::Database) AddJobCommand(*group, action, kind, JobOp::DeleteBackup);
    }
    CLI::App* jobs = app.add_subcommand("jobs", "Classic PaaS jobs (backups, restores, backup deletions)");
    jobs->require_subcommand(1);
    AddOneArgumentCommand(*jobs, action, "show", "the state of a job, by the URI a --no-wait command printed", "uri",
                          "job URI", RunJobShow);
}

}  // namespace ocw
