#include "PaaSJobs.h"

#include <algorithm>
#include <cctype>

namespace ocw {

using OracleCloudSDKWrapper::COracleCloudWrapper;

OracleCloudSDKWrapper::EOracleServiceType ServiceOf(PaaSKind kind) {
    switch (kind) {
        case PaaSKind::Java: return OracleCloudSDKWrapper::ORACLE_SERVICE_PAAS_JAVA;
        case PaaSKind::MySql: return OracleCloudSDKWrapper::ORACLE_SERVICE_PAAS_MYSQL;
        default: return OracleCloudSDKWrapper::ORACLE_SERVICE_PAAS_DATABASE;
    }
}

const char* CommandOf(PaaSKind kind) {
    return kind == PaaSKind::Java ? "java" : kind == PaaSKind::MySql ? "mysql" : "db";
}

PaaSKind KindOfJobUri(const std::string& uri) {
    if (uri.find("/MySQLCS/") != std::string::npos || uri.find("/mysqlcs/") != std::string::npos) {
        return PaaSKind::MySql;
    }
    // Java and MySQL jobs are also named by the activity log
    // (".../activitylog/<domain>/job/<id>"); both are read the same way.
    if (uri.find("/jaas/") != std::string::npos || uri.find("/activitylog/") != std::string::npos) {
        return PaaSKind::Java;
    }
    return PaaSKind::Database;
}

namespace {

// The services spell their states differently ("In Progress", "Succeeded",
// "SUCCEED", "COMPLETED"); one spelling lets one wait handle them all.
std::string Normalized(const std::string& status) {
    std::string out;
    for (char c : status) {
        if (!std::isspace(static_cast<unsigned char>(c))) out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return out;
}

}  // namespace

bool ReadJob(Session& s, PaaSKind kind, const std::string& uri, std::string& status, boost::json::object& details) {
    COracleCloudWrapper& c = s.cloud();
    if (kind == PaaSKind::Database) {
        OracleCloudSDKWrapper::SOracleJobInfoLib job;
        if (!c.QueryBackupRestoreJobStatus(uri, job)) return false;
        status = Normalized(job.jobStatus);
        details = boost::json::object{{"uri", uri}, {"status", job.jobStatus}, {"tag", job.tag}, {"message", job.message}};
        return true;
    }
    OracleCloudSDKWrapper::SJavaMySQLJobInfoLib job;
    if (!c.QueryJavaMySQLBackupRestoreJobStatus(uri, job)) return false;
    status = Normalized(job.status);
    details = boost::json::object{{"uri", uri},
                                  {"status", job.status},
                                  {"jobId", job.jobId},
                                  {"backupId", job.backupId},
                                  {"tag", job.tag},
                                  {"message", job.statusDetails}};
    return true;
}

boost::json::object FollowJob(Session& s, PaaSKind kind, const std::string& uri, const std::string& label) {
    boost::json::object details;
    s.waitFor({label, uri, [&](std::string& state) { return ReadJob(s, kind, uri, state, details); },
               {"SUCCEEDED", "SUCCEED", "COMPLETED"},
               {"FAILED"}});
    return details;
}

}  // namespace ocw
