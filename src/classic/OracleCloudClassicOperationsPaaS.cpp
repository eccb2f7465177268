// The PaaS half of the Classic operations: database services created,
// scaled, powered and deleted, and the backup, restore and backup deletion
// jobs of database, Java and MySQL services.
#include <exception>

#include "classic/ClassicNames.h"
#include "classic/OracleCloudClassicOperations.h"
#include "classic/OracleCloudClassicOperationsBodies.h"
#include "transport/OracleCloudBaseConnection.h"
#include "transport/RequestBodyMask.h"

namespace OracleCloudSDKWrapper {

using namespace classicnames;
using namespace classicoperations;

namespace {

// "<database root>/<domain>/<service>".
std::string DatabaseServiceLink(const std::string& domain, const std::string& service) {
    return Join(Join(kDatabaseRoot, domain), service);
}

// The plain user name of an account given as "<domain>/<user>".
std::string PlainUserName(const std::string& user) {
    const size_t slash = user.rfind('/');
    return slash == std::string::npos ? user : user.substr(slash + 1);
}

}  // namespace

bool COracleCloudClassicOperations::formBody(const JsonObject& body, const char* operation, std::string& text) {
    try {
        text = JsonHelper::Serialize(body);
        return true;
    } catch (const std::exception&) {
        return OCW_FAIL("The Request json could not be formed for %s", operation);
    }
}

bool COracleCloudClassicOperations::sendPaaSBody(bool put, const std::string& link, const JsonObject& body,
                                                 const char* operation, std::string& response) {
    std::string text;
    return formBody(body, operation, text) && sendBody(put, link, text, response);
}

bool COracleCloudClassicOperations::takeJobUri(const std::string& candidate, const std::string& link,
                                               const char* source, std::string& jobUri) {
    if (candidate.empty()) {
        return OCW_FAIL("The answer of [%s] named no job in [%s]", link.c_str(), source);
    }
    jobUri = candidate;
    OCW_LOG_DEBUG(&m_debugLog, "Job [%s] started by [%s]", jobUri.c_str(), link.c_str());
    return true;
}

bool COracleCloudClassicOperations::startDatabaseJob(const std::string& link, const JsonObject& body,
                                                     const char* operation, std::string& jobUri) {
    std::string response;
    if (!sendPaaSBody(false, link, body, operation, response)) {
        return false;
    }
    return takeJobUri(COracleCloudBaseConnection::headerLineValue(m_connection->getHttpResponseHeader("location")),
                      link, "location", jobUri);
}

bool COracleCloudClassicOperations::startManagedServiceJob(const char* collection, const std::string& service,
                                                           const char* action, const JsonObject& body,
                                                           const char* operation, bool jobInTargetUri,
                                                           std::string& jobUri) {
    const std::string link =
        Join(Join(Join(Join(kInstanceMgmtRoot, m_connection->getIdentityDomain()), collection), service), action) +
        "/";
    std::string response;
    if (!sendPaaSBody(false, link, body, operation, response)) {
        return false;
    }
    // These answers are not written to the log by the connection; the text
    // shown here is masked all the same.
    JsonValue reply;
    try {
        boost::json::error_code error;
        reply = boost::json::parse(boost::json::string_view(response.data(), response.size()), error);
        if (error || !reply.is_object()) {
            return OCW_FAIL("The response [%s] is not in valid JSON format.",
                            MaskSecretsInBody(response, true).c_str());
        }
    } catch (const std::exception&) {
        return OCW_FAIL("Catch. The response is not in valid JSON format.[%s]",
                        MaskSecretsInBody(response, true).c_str());
    }
    if (jobInTargetUri) {
        return takeJobUri(JsonHelper::GetStringValue(reply.get_object(), "target_uri"), link, "target_uri", jobUri);
    }
    return takeJobUri(COracleCloudBaseConnection::headerLineValue(m_connection->getHttpResponseHeader("location")),
                      link, "location", jobUri);
}

// ---- database services -------------------------------------------------------------

bool COracleCloudClassicOperations::CreateDBInstance(SOracleDBInstanceInfoLib& db) {
    const std::string domain = m_connection->getIdentityDomain();
    const JsonObject body = DBCreateBody(db, PlainUserName(m_connection->getUser()), m_connection->getPwd());
    std::string response;
    if (!sendPaaSBody(false, Join(kDatabaseRoot, domain), body, "create instance", response)) {
        return false;
    }
    OCW_LOG_DEBUG(&m_debugLog, "Creation of database service [%s] accepted; waiting for it to run",
                  db.serviceName.c_str());
    return WaitForObjectToReachEndState(DatabaseServiceLink(domain, db.serviceName), db, "Running");
}

bool COracleCloudClassicOperations::DeleteDBInstance(const SOracleDBInstanceInfoLib& db) {
    return DeleteObjectFromLink(DatabaseServiceLink(m_connection->getIdentityDomain(), db.serviceName));
}

bool COracleCloudClassicOperations::ScaleDBInstance(const SOracleDBInstanceInfoLib& db) {
    std::string response;
    return sendPaaSBody(true, DatabaseServiceLink(m_connection->getIdentityDomain(), db.serviceName) + "/",
                        DBScaleBody(db), "scale DB instance", response);
}

bool COracleCloudClassicOperations::DBInstancePowerOp(const std::string& operation,
                                                      const SOracleDBInstanceInfoLib& db) {
    std::string response;
    // "launching instance" is the text this failure has always been reported with.
    return sendPaaSBody(false, DatabaseServiceLink(m_connection->getIdentityDomain(), db.serviceName) + "/",
                        DBPowerBody(operation, db), "launching instance", response);
}

bool COracleCloudClassicOperations::StartDBInstance(const SOracleDBInstanceInfoLib& db) {
    return DBInstancePowerOp("start", db);
}

bool COracleCloudClassicOperations::StopDBInstance(const SOracleDBInstanceInfoLib& db) {
    return DBInstancePowerOp("stop", db);
}

bool COracleCloudClassicOperations::RestartDBInstance(const SOracleDBInstanceInfoLib& db) {
    return DBInstancePowerOp("restart", db);
}

// ---- backups and restores ------------------------------------------------------------

bool COracleCloudClassicOperations::BackupDBInstance(const SOracleDBInstanceInfoLib& db,
                                                     const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                                     std::string&) {
    return startDatabaseJob(DatabaseServiceLink(m_connection->getIdentityDomain(), db.serviceName) + "/backups/",
                            DBBackupBody(options), "backup DB instance", jobUri);
}

bool COracleCloudClassicOperations::RestoreDBInstance(const SOracleDBInstanceInfoLib& db,
                                                      const SPaaSBackupRestoreOptionsLib& options,
                                                      std::string& jobUri, std::string&) {
    JsonObject body;
    if (!DBRestoreBody(options, body)) {
        return OCW_FAIL("The Request should contain valid restore input parmeters. tag/latest/scn/timestamp");
    }
    return startDatabaseJob(
        DatabaseServiceLink(m_connection->getIdentityDomain(), db.serviceName) + "/backups/recovery/", body,
        "restore DB instance", jobUri);
}

bool COracleCloudClassicOperations::DeleteDBBackup(const SOracleDBInstanceInfoLib&,
                                                   const SPaaSBackupRestoreOptionsLib&, std::string&,
                                                   std::string&) {
    return OCW_FAIL("Deleting a database backup is not supported on Oracle Cloud Classic");
}

bool COracleCloudClassicOperations::BackupJavaInstance(const SJavaInstanceInfoLib& java,
                                                       const SPaaSBackupRestoreOptionsLib& options,
                                                       std::string& jobUri, std::string&) {
    return startManagedServiceJob(kJavaInstances, java.serviceName, "backups", JavaBackupBody(options),
                                  "backup Java instance", false, jobUri);
}

bool COracleCloudClassicOperations::RestoreJavaInstance(const SJavaInstanceInfoLib& java,
                                                        const SPaaSBackupRestoreOptionsLib& options,
                                                        std::string& jobUri, std::string&) {
    return startManagedServiceJob(kJavaInstances, java.serviceName, "restoredbackups", JavaRestoreBody(options),
                                  "restore Java instance", true, jobUri);
}

bool COracleCloudClassicOperations::DeleteJavaBackup(const SJavaInstanceInfoLib& java,
                                                     const SPaaSBackupRestoreOptionsLib& options, std::string& jobUri,
                                                     std::string&) {
    return startManagedServiceJob(kJavaInstances, java.serviceName, "deletedbackups", DeleteBackupBody(options),
                                  "delete Java backup", false, jobUri);
}

bool COracleCloudClassicOperations::BackupMySQLInstance(const SMySQLInstanceInfoLib& mysql,
                                                        const SPaaSBackupRestoreOptionsLib& options,
                                                        std::string& jobUri, std::string&) {
    return startManagedServiceJob(kMySQLInstances, mysql.serviceName, "backups", MySQLBackupBody(options),
                                  "backup MySQL instance", false, jobUri);
}

bool COracleCloudClassicOperations::RestoreMySQLInstance(const SMySQLInstanceInfoLib& mysql,
                                                         const SPaaSBackupRestoreOptionsLib& options,
                                                         std::string& jobUri, std::string&) {
    return startManagedServiceJob(kMySQLInstances, mysql.serviceName, "restoredbackups", MySQLRestoreBody(options),
                                  "restore MySQL instance", false, jobUri);
}

bool COracleCloudClassicOperations::DeleteMySQLBackup(const SMySQLInstanceInfoLib& mysql,
                                                      const SPaaSBackupRestoreOptionsLib& options,
                                                      std::string& jobUri, std::string&) {
    return startManagedServiceJob(kMySQLInstances, mysql.serviceName, "deletedbackups", DeleteBackupBody(options),
                                  "deleting MySQL backup", false, jobUri);
}

}  // namespace OracleCloudSDKWrapper
