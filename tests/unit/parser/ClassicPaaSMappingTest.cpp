// Classic PaaS documents (no emulator serves them yet): DBCS service
// instances, compute nodes and job status, service SSH keys, Java and MySQL
// service instances and jobs.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogCapture.h"
#include "parser/OracleCloudParser.h"

using namespace OracleCloudSDKWrapper;
using ocwtest::LogCapture;

namespace {

const char* kDbcsInstance = R"({
  "service_name": "db12c-xp-si",
  "version": "12.1.0.2",
  "status": "Running",
  "identity_domain": "usexample",
  "creation_time": "2016-05-03T00:35:23Z",
  "last_modified_time": "Tue May 3 0:35:23 UTC 2016",
  "num_nodes": "1",
  "edition": "EE_HP",
  "creation_job_id": 2631813,
  "num_ip_reservations": 1,
  "cloud_storage_container": "Storage-usexample/dbcsbackups",
  "failover_database": false,
  "rac_database": true,
  "sid": "ORCL",
  "pdbName": "PDB1",
  "listenerPort": 1521,
  "ncharset": "AL16UTF16",
  "compute_site_name": "EM003_Z19",
  "connect_descriptor": "db12c-xp-si:1521/PDB1.usexample.oraclecloud.internal",
  "total_shared_storage": 82
})";

const char* kComputeNodes = R"([
  {"status": "Running", "creation_job_id": "2631813", "creation_time": "2016-05-03T00:35:23Z", "listenerPort": 1521,
   "initialPrimary": true, "storageAllocated": 97, "reservedIP": "129.152.1.2", "hostname": "db12c-xp-si"},
  {"status": "Running", "hostname": "db12c-xp-si-2", "initialPrimary": false, "storageAllocated": "97",
   "reservedIP": "129.152.1.3", "listenerPort": "1521"}
])";

std::string JobStatus(const std::string& messages) {
    return R"({"service_name": "db12c-xp-si", "version": "12.1.0.2", "status": "Running",
      "job_start_date": "Mon Jan 09 18:25:18 UTC 2017", "job_status": "Succeeded", "message": )" +
           messages + "}";
}

}  // namespace

TEST(ClassicDatabase, ServiceInstanceMapsEverySnakeCaseKey) {
    COracleCloudParser parser;
    SOracleDBInstanceInfoLib db;
    ASSERT_TRUE(parser.ParseObject(kDbcsInstance, db));
    EXPECT_EQ(db.serviceName + "|" + db.version + "|" + db.status + "|" + db.identityDomain + "|" + db.edition + "|" +
                  db.cloudStorageContainer + "|" + db.sid + "|" + db.ncharset + "|" + db.computeSiteName,
              "db12c-xp-si|12.1.0.2|Running|usexample|EE_HP|Storage-usexample/dbcsbackups|ORCL|AL16UTF16|EM003_Z19");
    EXPECT_EQ(1462235723, db.creationTime);
    EXPECT_EQ(1462235723, db.lastModifiedTime);  // the Java date form of the same instant
    EXPECT_EQ(1, db.numNodes);                    // sent as text
    EXPECT_EQ("2631813", db.creationJobId);       // sent as a number
    EXPECT_EQ(1, db.numIpReservations);
    EXPECT_TRUE(db.racDatabase);
    EXPECT_FALSE(db.failoverDatabase);
    EXPECT_EQ(1521, db.listenerPort);
    // Caller inputs are never filled from an answer.
    EXPECT_EQ("", db.pdbName);
    EXPECT_EQ("", db.adminPassword);
    EXPECT_TRUE(db.computeNodes.empty());
}

TEST(ClassicDatabase, ComputeNodeArrayAcceptsNumbersAndTexts) {
    COracleCloudParser parser;
    std::vector<SOracleDBComputeNodeLib> nodes;
    ASSERT_TRUE(parser.ParseList(kComputeNodes, nodes));
    ASSERT_EQ(2u, nodes.size());
    const SOracleDBComputeNodeLib& first = nodes[0];
    EXPECT_EQ(first.hostname + "|" + first.reservedIp + "|" + first.storageAllocated + "|" + first.creationJobId,
              "db12c-xp-si|129.152.1.2|97|2631813");
    EXPECT_TRUE(first.initialPrimary);
    EXPECT_EQ(1521, first.listenerPort);
    EXPECT_EQ(1462235723, first.creationTime);
    EXPECT_EQ("97", nodes[1].storageAllocated);
    EXPECT_EQ(1521, nodes[1].listenerPort);
    EXPECT_FALSE(nodes[1].initialPrimary);
}

TEST(ClassicDatabaseJob, TagComesFromTheLastMessageOnly) {
    COracleCloudParser parser;
    struct Case {
        const char* messages;
        const char* tag;
    };
    const Case cases[] = {
        {R"(["Starting backup", "Database backup completed with [TAG20170109T182518]"])", "TAG20170109T182518"},
        // A later message without the marker clears an earlier tag.
        {R"(["Database backup completed with [TAG20170109T182518]", "Cleaning up"])", ""},
        {R"(["Database backup completed with [TAG1]", "Database backup completed with [TAG2] at 18:30"])", "TAG2"},
        // The marker may follow other text; the tag is taken from the marker on.
        {R"(["[db12c] Database backup completed with [TAG3] [extra]"])", "TAG3"},
        {R"(["Database backup completed with [TAG4"])", "TAG4"},
        // No messages: nothing decides, the record's tag stays.
        {R"([])", "stale"},
    };
    for (const Case& c : cases) {
        SOracleJobInfoLib job;
        job.tag = "stale";
        ASSERT_TRUE(parser.ExtractOraStatusAndTag(JobStatus(c.messages), job)) << c.messages;
        EXPECT_EQ(c.tag, job.tag) << c.messages;
        EXPECT_EQ("Succeeded", job.jobStatus);
    }
}

TEST(ClassicDatabaseJob, MessagesAreJoinedAndBadDocumentsFail) {
    COracleCloudParser parser;
    SOracleJobInfoLib job;
    ASSERT_TRUE(parser.ExtractOraStatusAndTag(JobStatus(R"(["Starting backup", 7, "Backup done"])"), job));
    EXPECT_EQ("Starting backup\nBackup done", job.message);

    SOracleJobInfoLib inProgress;
    ASSERT_TRUE(parser.ExtractOraStatusAndTag(R"({"job_status": "In Progress"})", inProgress));
    EXPECT_EQ("In Progress", inProgress.jobStatus);
    EXPECT_EQ("", inProgress.message);

    for (const char* body : {"<html>Service Unavailable</html>", R"(["job_status"])", R"({"job_status": "In Pro)"}) {
        LogCapture log;
        SOracleJobInfoLib failed;
        EXPECT_FALSE(parser.ExtractOraStatusAndTag(body, failed)) << body;
        ASSERT_EQ(1u, log.lines().size()) << body;
        EXPECT_EQ(0u, log.lines()[0].text.rfind("Exception parsing json object - ", 0));
    }
    LogCapture quiet;
    SOracleJobInfoLib empty;
    EXPECT_FALSE(parser.ExtractOraStatusAndTag("", empty));
    EXPECT_TRUE(quiet.lines().empty());
}

TEST(ClassicJava, InstanceTakesCommonAndJavaFields) {
    const char* jcs = R"({"services": {"jcs1": {
      "serviceId": 41823, "serviceName": "jcs1", "serviceType": "JaaS", "domainName": "usexample",
      "releaseVersion": "12.2.1.2.180117", "editionDisplayName": "Enterprise Edition", "state": "READY",
      "creationDate": "2018-02-01T10:11:12.345+0000", "totalSSDStorage": 95,
      "WLS_ROOT": "https://129.152.2.3:7002/console",
      "attributes": {"FMW_ROOT": {"displayName": "FMW Root", "type": "URL", "value": "https://129.152.2.3:7002/em"}},
      "components": {"WLS": {"adminHostName": "jcs1-wls-1", "state": "READY"}},
      "allAssociations": [{"displayName": "db12c-xp-si", "type": "DBAAS"}],
      "patching": {"currentOperation": {}, "totalAvailablePatches": 2}}}})";
    COracleCloudParser parser;
    std::vector<SJavaInstanceInfoLib> list;
    ASSERT_TRUE(parser.ParseList(jcs, "services", list));
    ASSERT_EQ(1u, list.size());
    const SJavaInstanceInfoLib& j = list[0];
    EXPECT_EQ(41823, j.serviceId);
    EXPECT_EQ(95, j.totalSsdStorage);
    EXPECT_EQ(j.serviceName + "|" + j.releaseVersion + "|" + j.editionDisplayName + "|" + j.domainName + "|" + j.state +
                  "|" + j.wlsRoot,
              "jcs1|12.2.1.2.180117|Enterprise Edition|usexample|READY|https://129.152.2.3:7002/console");
    EXPECT_EQ("https://129.152.2.3:7002/em", j.fmwRoot);  // from the attribute map
    EXPECT_EQ("jcs1-wls-1", j.adminHostName);            // from the WebLogic component
    EXPECT_EQ(R"([{"displayName":"db12c-xp-si","type":"DBAAS"}])", j.allAssociations);
    EXPECT_NE(std::string::npos, j.patching.find("\"totalAvailablePatches\":2"));
}

TEST(ClassicMySQL, InstanceTakesUpperCaseAttributes) {
    const char* mysql = R"({"services": [{
      "serviceId": "7781", "serviceName": "mysql1", "serviceType": "MySQLCS", "state": "READY",
      "BACKUP_DESTINATION": "BOTH", "CLOUD_STORAGE_CONTAINER": "Storage-Storage/Test1",
      "DATA_VOLUME_SIZE": "25G", "MYSQL_PORT": 3306, "totalSharedStorage": 50,
      "attributes": {"LOCAL_BACKUP_VOLUME_MOUNT": {"value": "/u01/backup"},
                     "LOCAL_BACKUP_VOLUME_SIZE": {"value": "50G"},
                     "MYSQL_PORT": {"value": "9999"}}}]})";
    COracleCloudParser parser;
    std::vector<SMySQLInstanceInfoLib> list;
    ASSERT_TRUE(parser.ParseList(mysql, "services", list));
    ASSERT_EQ(1u, list.size());
    const SMySQLInstanceInfoLib& m = list[0];
    EXPECT_EQ(7781, m.serviceId) << "a number sent as text";
    EXPECT_EQ(m.backupDestination + "|" + m.cloudStorageContainer + "|" + m.dataVolumeSize + "|" + m.totalSharedStorage,
              "BOTH|Storage-Storage/Test1|25G|50");
    EXPECT_EQ("3306", m.mysqlPort) << "the top level wins over the attribute map";
    EXPECT_EQ(m.localBackupVolumeMount + "|" + m.localBackupVolumeSize, "/u01/backup|50G") << "from the attribute map";
}

TEST(ClassicJavaMySQLJob, BackupAndRestoreItems) {
    const char* backups = R"({"backupInProgress": [], "lastFailedBackup": [], "backups": [
      {"backupId": "1461865468064", "backupStartDate": "2016-04-28T17:44:28.064+0000", "full": true, "local": true,
       "localCopy": false, "jobId": 9871, "status": "COMPLETED", "sizeInBytes": 1073741824,
       "jobHistory": [{"jobId": 9871, "operation": "backup", "status": "COMPLETED"}]},
      {"jobId": "9900", "backupId": "1461865468064", "recoveryStartDate": "2016-04-29T08:00:00.000+0000",
       "status": "Restore In Progress", "configDataIncluded": true, "otdIncluded": true}]})";
    COracleCloudParser parser;
    std::vector<SJavaMySQLJobInfoLib> jobs;
    ASSERT_TRUE(parser.ParseList(backups, "backups", jobs));
    ASSERT_EQ(2u, jobs.size());
    EXPECT_EQ(jobs[0].backupId + "|" + jobs[0].jobId + "|" + jobs[0].sizeInBytes + "|" + jobs[0].status,
              "1461865468064|9871|1073741824|COMPLETED");
    EXPECT_TRUE(jobs[0].full && jobs[0].local && !jobs[0].localCopy);
    EXPECT_EQ(R"([{"jobId":9871,"operation":"backup","status":"COMPLETED"}])", jobs[0].jobHistory);
    EXPECT_NE(std::string::npos, jobs[0].fullInfo.find("\"backupId\":\"1461865468064\""));
    EXPECT_EQ(jobs[1].jobId + "|" + jobs[1].status + "|" + jobs[1].recoveryStartDate,
              "9900|Restore In Progress|2016-04-29T08:00:00.000+0000");
    EXPECT_TRUE(jobs[1].configDataIncluded && jobs[1].otdIncluded && !jobs[1].full);
}
