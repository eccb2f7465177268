// The PaaS request bodies byte for byte. The emulator's request log masks
// every password, so the creation bodies (admin, cloud storage and instant
// backup passwords) can only be checked here; the choice of restore point and
// the option flags are data tables.
#include <gtest/gtest.h>

#include <functional>

#include "classic/OracleCloudClassicOperationsBodies.h"

using namespace OracleCloudSDKWrapper;
using namespace OracleCloudSDKWrapper::classicoperations;

namespace {

std::string Text(const JsonObject& body) { return JsonHelper::Serialize(body); }

SOracleDBInstanceInfoLib Database() {
    SOracleDBInstanceInfoLib db;
    db.serviceName = "orders";
    db.description = "orders db";
    db.level = "PAAS";
    db.shape = "oc3";
    db.subscriptionType = "HOURLY";
    db.version = "12.2.0.1";
    db.sshPublicKey = "ssh-rsa AAAA k";
    db.backupDestination = "BOTH";
    db.cloudStorageContainer = "Storage-acme/dbbackups";
    db.adminPassword = "Adm1n#pw";
    db.sid = "ORCL";
    db.databaseType = "db";
    db.usableStorage = "25";
    return db;
}

}  // namespace

TEST(ClassicPaaSCreateBody, AccountCredentialsCreateTheContainerAndOptionalMembersStayOut) {
    EXPECT_EQ(Text(DBCreateBody(Database(), "jdoe", "Acc0unt#pw")),
              R"({"serviceName":"orders","description":"orders db","level":"PAAS","shape":"oc3",)"
              R"("subscriptionType":"HOURLY","version":"12.2.0.1","vmPublicKeyText":"ssh-rsa AAAA k",)"
              R"("cloudStorageContainer":"Storage-acme/dbbackups","cloudStorageUser":"jdoe",)"
              R"("cloudStoragePwd":"Acc0unt#pw","createStorageContainerIfMissing":true,)"
              R"("parameters":[{"backupDestination":"BOTH","adminPassword":"Adm1n#pw","sid":"ORCL",)"
              R"("type":"db","usableStorage":"25"}]})");
}

TEST(ClassicPaaSCreateBody, RecordCredentialsFlagsAndInstantBackupFromOnPremiseFiles) {
    SOracleDBInstanceInfoLib db = Database();
    db.edition = "EE";
    db.cloudStorageUser = "backup-user";
    db.cloudStoragePwd = "St0rage#pw";
    db.listenerPort = 1522;
    db.charset = "AL32UTF8";
    db.ncharset = "UTF8";
    db.racDatabase = true;
    db.goldenGate = true;
    db.timezone = "UTC";
    db.instantBackup = true;
    db.ibkupDatabaseId = "1234";
    db.ibkupCloudStorageContainer = "Storage-acme/onprem";
    db.ibkupCloudStoragePassword = "Ibkup#pw";
    db.ibkupCloudStorageUser = "onprem-user";
    db.ibkupWalletFileContent = "d2FsbGV0";
    EXPECT_EQ(Text(DBCreateBody(db, "jdoe", "Acc0unt#pw")),
              R"({"serviceName":"orders","description":"orders db","edition":"EE","level":"PAAS","shape":"oc3",)"
              R"("subscriptionType":"HOURLY","version":"12.2.0.1","vmPublicKeyText":"ssh-rsa AAAA k",)"
              R"("cloudStorageContainer":"Storage-acme/dbbackups","cloudStorageUser":"backup-user",)"
              R"("cloudStoragePwd":"St0rage#pw","parameters":[{"backupDestination":"BOTH",)"
              R"("adminPassword":"Adm1n#pw","listenerPort":1522,"charset":"AL32UTF8","ncharset":"UTF8",)"
              R"("sid":"ORCL","type":"db","usableStorage":"25","isRac":"yes","goldenGate":"yes",)"
              R"("timezone":"UTC","ibkup":"yes","ibkupDatabaseID":"1234",)"
              R"("ibkupCloudStorageContainer":"Storage-acme/onprem","ibkupCloudStoragePassword":"Ibkup#pw",)"
              R"("ibkupCloudStorageUser":"onprem-user","ibkupWalletFileContent":"d2FsbGV0"}]})");
}

TEST(ClassicPaaSCreateBody, NoBackupDestinationSendsNoStorageAndACloudServiceSourceNamesTheService) {
    SOracleDBInstanceInfoLib db = Database();
    db.backupDestination = "NONE";
    db.disasterRecovery = true;
    db.failoverDatabase = true;
    db.instantBackup = true;
    db.instantBackupOnPremise = true;
    db.ibkupServiceId = "orders-prod";
    db.ibkupCloudStoragePassword = "unused";
    EXPECT_EQ(Text(DBCreateBody(db, "jdoe", "Acc0unt#pw")),
              R"({"serviceName":"orders","description":"orders db","level":"PAAS","shape":"oc3",)"
              R"("subscriptionType":"HOURLY","version":"12.2.0.1","vmPublicKeyText":"ssh-rsa AAAA k",)"
              R"("parameters":[{"backupDestination":"NONE","adminPassword":"Adm1n#pw","sid":"ORCL",)"
              R"("type":"db","usableStorage":"25","disasterRecovery":"yes","failoverDatabase":"yes",)"
              R"("ibkup":"yes","ibkupOnPremise":false,"ibkupServiceID":"orders-prod"}]})");
}

TEST(ClassicPaaSServiceBodies, ScaleAndPowerSendOnlyWhatIsSet) {
    SOracleDBInstanceInfoLib db;
    EXPECT_EQ(Text(DBScaleBody(db)), "{}");
    db.usage = "fra";  // without additional storage there is nothing to use it for
    db.newShape = "oc4";
    EXPECT_EQ(Text(DBScaleBody(db)), R"({"shape":"oc4"})");
    db.additionalStorage = "100";
    db.componentInstanceName = "DB_1";
    EXPECT_EQ(Text(DBScaleBody(db)),
              R"({"additionalStorage":"100","usage":"fra","shape":"oc4","componentInstanceName":"DB_1"})");
    EXPECT_EQ(Text(DBPowerBody("stop", db)), R"({"lifecycleState":"stop"})");
    db.vmName = "orders-db-1";
    EXPECT_EQ(Text(DBPowerBody("restart", db)), R"({"lifecycleState":"restart","vmName":"orders-db-1"})");
}

TEST(ClassicPaaSRestorePoint, TagThenLatestThenScnThenTimestamp) {
    struct Case {
        const char* tag;
        bool latest;
        const char* scn;
        const char* timestamp;
        const char* body;  // nullptr: no restore point
    };
    const Case cases[] = {
        {"TAG1", true, "42", "09-Jan-2017 18:30:00", R"({"tag":"TAG1"})"},
        {"", true, "42", "09-Jan-2017 18:30:00", R"({"latest":""})"},
        {"", false, "42", "09-Jan-2017 18:30:00", R"({"scn":"42"})"},
        {"", false, "", "09-Jan-2017 18:30:00", R"({"timestamp":"09-Jan-2017 18:30:00"})"},
        {"", false, "", "", nullptr},
    };
    for (const Case& c : cases) {
        SPaaSBackupRestoreOptionsLib options;
        options.tag = c.tag;
        options.latest = c.latest;
        options.scn = c.scn;
        options.timestamp = c.timestamp;
        JsonObject body;
        EXPECT_EQ(DBRestoreBody(options, body), c.body != nullptr) << c.tag << c.latest << c.scn << c.timestamp;
        if (c.body != nullptr) EXPECT_EQ(Text(body), c.body);
    }
}

TEST(ClassicPaaSBackupBodies, FlagsAreTheStringTrueAndOnlyWhenSet) {
    SPaaSBackupRestoreOptionsLib all;
    all.keepForever = all.fullBackup = all.databaseIncluded = all.latest = true;
    all.forceScaleIn = all.pauseOtd = all.resetBinaries = all.restoreConfig = true;
    all.backupId = "1461865468064";
    all.notes = "before patch";
    all.restoreId = "01/09/2017 18:30:00";
    all.restoreType = "PIT";
    const SPaaSBackupRestoreOptionsLib none;
    const struct {
        const char* name;
        std::function<JsonObject(const SPaaSBackupRestoreOptionsLib&)> build;
        const char* withAll;
    } cases[] = {
        {"database backup", DBBackupBody, R"({"keepForever":"true"})"},
        {"Java backup", JavaBackupBody,
         R"({"notes":"before patch","databaseIncluded":"true","full":"true","keepForever":"true"})"},
        {"Java restore", JavaRestoreBody,
         R"({"backupId":"1461865468064","notes":"before patch","forcScaleIn":"true","pauseOTD":"true",)"
         R"("resetBinaries":"true","restoreConfig":"true"})"},
        {"MySQL backup", MySQLBackupBody, R"({"notes":"before patch","keepForever":"true"})"},
        {"MySQL restore", MySQLRestoreBody,
         R"({"notes":"before patch","backupId":"1461865468064","restoreId":"01/09/2017 18:30:00",)"
         R"("restoreType":"PIT"})"},
        {"backup deletion", DeleteBackupBody, R"({"backupId":"1461865468064"})"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Text(c.build(all)), c.withAll) << c.name;
        EXPECT_EQ(Text(c.build(none)), "{}") << c.name;
    }
}
