#pragma once
// The Classic PaaS services (database, Java, MySQL) as ocw sees them: which
// facade service each one connects to, and the one way their backup and
// restore jobs are followed to their end.
#include <boost/json.hpp>

#include <string>

#include "Session.h"

namespace ocw {

enum class PaaSKind { Database, Java, MySql };

OracleCloudSDKWrapper::EOracleServiceType ServiceOf(PaaSKind kind);
// "db", "java", "mysql".
const char* CommandOf(PaaSKind kind);
// The kind a job URI belongs to, as far as reading it goes: database
// service jobs ("/dbcs/...") have a reader of their own, Java and MySQL
// jobs (".../activitylog/..." and the like) share one.
PaaSKind KindOfJobUri(const std::string& uri);

// One read of a job: its status in upper case without blanks ("INPROGRESS",
// "RUNNING", "SUCCEEDED", "SUCCEED", "COMPLETED", "FAILED") and what the
// service says about it. False when the job could not be read.
bool ReadJob(Session& session, PaaSKind kind, const std::string& uri, std::string& status,
             boost::json::object& details);

// Follows the job with ocw's own wait (progress, --timeout, a failed job
// ends the command) and returns its final details.
boost::json::object FollowJob(Session& session, PaaSKind kind, const std::string& uri, const std::string& label);

}  // namespace ocw
