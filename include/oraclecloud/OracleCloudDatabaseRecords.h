#pragma once
// Database and PaaS family: Classic DBCS, JCS and MySQLCS service instances and
// jobs, OCI DB systems, databases, homes, nodes and backups, and the options of
// PaaS / database backup and restore. Plain value records: defaults are empty
// text, 0 and false; copy and move are member-wise. Password members are
// secrets and are never logged.
#include <ctime>
#include <string>
#include <vector>

namespace OracleCloudSDKWrapper {

// One compute node of a DBCS service instance.
struct SOracleDBComputeNodeLib {
    std::string connectDescriptor;
    std::string connectDescriptorWithPublicIp;
    std::string createdBy;
    std::string creationJobId;
    std::time_t creationTime = 0;
    std::string hostname;
    bool initialPrimary = false;
    int listenerPort = 0;
    std::string pdbName;
    std::string reservedIp;
    std::string shape;
    std::string sid;
    std::string status;
    std::string storageAllocated;
};

// A Classic DBCS service instance; OCI DB systems are mapped into it as well
// (hostname into serviceName, id into databaseId, compartment into
// cloudStorageContainer, subnet into sid, availability domain into
// computeSiteName, CPU cores into numIpReservations).
struct SOracleDBInstanceInfoLib {
    std::string serviceName;
    std::string version;
    std::string status;
    std::string description;
    std::string identityDomain;
    std::time_t creationTime = 0;
    std::time_t lastModifiedTime = 0;
    std::string createdBy;
    std::string smPluginVersion;
    std::string toolsVersion;
    std::string backupSupportedVersion;
    std::string serviceUri;
    std::string databaseId;
    int numNodes = 0;
    std::string level;
    std::string edition;
    std::string shape;
    std::string subscriptionType;
    std::string creationJobId;
    int numIpReservations = 0;
    std::string backupDestination;
    std::string cloudStorageContainer;
    bool failoverDatabase = false;
    bool racDatabase = false;
    std::string currentVersion;
    std::string sid;
    std::string demoPdb;
    int listenerPort = 0;
    std::string timezone;
    std::string charset;
    std::string ncharset;
    bool isClone = false;
    std::string cloneSupportedVersion;
    std::string computeSiteName;
    std::string jaasInstancesUsingService;
    std::string sshKeyName;        // looked up into sshPublicKey before creation when that is empty
    std::string sshPublicKey;
    std::string backupSubnetId;
    std::vector<SOracleDBComputeNodeLib> computeNodes;

    // Creation and scaling inputs (not filled from answers).
    std::string adminPassword;
    std::string cloudStorageUser;       // empty: the account's own credentials are used
    std::string cloudStoragePwd;
    std::string databaseType;           // "type" of the creation parameters
    std::string usableStorage;
    std::string dbName;
    std::string pdbName;
    bool disasterRecovery = false;
    bool goldenGate = false;
    bool instantBackup = false;         // create from an existing backup ("ibkup")
    bool instantBackupOnPremise = false;  // source is a backup of a cloud service
    std::string ibkupServiceId;
    std::string ibkupDatabaseId;
    std::string ibkupCloudStorageContainer;
    std::string ibkupCloudStorageUser;
    std::string ibkupCloudStoragePassword;
    std::string ibkupDecryptionKey;
    std::string ibkupWalletFileContent;
    std::string additionalStorage;      // scaling: extra storage in GB
    std::string usage;                  // scaling: use of the extra storage
    std::string newShape;               // scaling: target shape
    std::string componentInstanceName;  // scaling / power: component to act on
    std::string vmName;                 // power operations: one VM of the service
};

// Common part of a JCS or MySQLCS service instance.
struct SJavaMySQLInfoBaseLib {
    std::string serviceName;
    std::string serviceType;
    std::string serviceVersion;
    std::string releaseVersion;
    int serviceId = 0;
    std::string serviceLevel;
    std::string serviceLevelDisplayName;
    std::string serviceStateDisplayName;
    std::string edition;
    std::string editionDisplayName;
    std::string metaVersion;
    std::string meteringFrequency;
    std::string meteringFrequencyDisplayName;
    std::string computeSiteName;
    std::string creator;
    std::string domainName;
};

struct SJavaInstanceInfoLib : SJavaMySQLInfoBaseLib {
    std::string adminHostName;
    std::string creationDate;
    std::string fmwRoot;
    std::string wlsRoot;
    std::string keyComponentInstance;
    std::string state;
    int totalSsdStorage = 0;
    std::string allAssociations;
    std::string patching;
};

struct SMySQLInstanceInfoLib : SJavaMySQLInfoBaseLib {
    std::string backupDestination;
    std::string cloudStorageContainer;
    std::string dataVolumeSize;
    std::string localBackupVolumeMount;
    std::string localBackupVolumeSize;
    std::string mysqlPort;
    std::string totalSharedStorage;
    std::string patching;
};

// A JCS / MySQLCS backup or restore job.
struct SJavaMySQLJobInfoLib {
    std::string backupId;
    std::string backupStartDate;
    std::string backupCompleteDate;
    std::string backupDate;
    std::string expirationDate;
    std::string initiatedBy;
    std::string jobId;
    std::string recoveryStartDate;
    std::string recoveryCompleteDate;
    std::string size;
    std::string sizeInBytes;
    std::string tag;
    std::string status;
    std::string statusDetails;
    std::string storageContainer;
    std::string href;
    std::string jobHistory;
    std::string fullInfo;
    bool full = false;
    bool local = false;
    bool localCopy = false;
    bool databaseIncluded = false;
    bool staticDataIncluded = false;
    bool configDataIncluded = false;
    bool otdIncluded = false;
};

// A DBCS job status.
struct SOracleJobInfoLib {
    std::string jobStatus;
    std::string message;
    std::string tag;   // backup tag found in the message
};

// The caller's options for a PaaS or OCI database backup or restore. Only the
// members the chosen operation uses are read.
struct SPaaSBackupRestoreOptionsLib {
    bool keepForever = false;
    bool fullBackup = false;
    bool databaseIncluded = false;
    bool latest = false;
    bool forceScaleIn = false;
    bool pauseOtd = false;
    bool resetBinaries = false;
    bool restoreConfig = false;
    std::string backupId;
    std::string notes;
    std::string restoreId;
    std::string restoreType;
    std::string tag;
    std::string scn;
    std::string timestamp;
};

// Automatic backup settings of an OCI database.
struct SOCIDbBackupConfigLib {
    bool autoBackupEnabled = false;
};

struct SOCIDbSystemInfoLib {
    std::string availabilityDomain;
    std::string backupSubnetId;
    std::string clusterName;
    std::string compartmentId;
    std::string databaseEdition;
    std::string diskRedundancy;
    std::string displayName;
    std::string domain;
    std::string hostname;
    std::string id;
    std::string lastPatchHistoryEntryId;
    std::string licenseModel;
    std::string lifecycleDetails;
    std::string lifecycleState;
    std::string scanDnsRecordId;
    std::string shape;
    std::string subnetId;
    std::string timeCreated;
    std::string version;
    std::vector<std::string> scanIpIds;
    std::vector<std::string> sshPublicKeys;
    std::vector<std::string> vipIds;
    int cpuCoreCount = 0;
    int dataStoragePercentage = 0;
    int dataStorageSizeInGBs = 0;
    int listenerPort = 0;
    int nodeCount = 0;
    int recoStorageSizeInGB = 0;
};

struct SOCIDatabaseInfoLib {
    std::string characterSet;
    std::string compartmentId;
    std::string dbHomeId;
    std::string dbName;
    std::string dbUniqueName;
    std::string dbWorkload;
    std::string id;
    std::string lifecycleDetails;
    std::string lifecycleState;
    std::string ncharacterSet;
    std::string pdbName;
    std::string timeCreated;
    SOCIDbBackupConfigLib dbBackupConfig;
};

struct SOCIDbHomeInfoLib {
    std::string compartmentId;
    std::string dbSystemId;
    std::string dbVersion;
    std::string displayName;
    std::string id;
    std::string lastPatchHistoryEntryId;
    std::string lifecycleState;
    std::string timeCreated;
};

struct SOCIDbNodeInfoLib {
    std::string dbSystemId;
    std::string hostname;
    std::string id;
    std::string lifecycleState;
    std::string timeCreated;
    std::string vnicId;
};

struct SOCIDbBackupInfoLib {
    std::string availabilityDomain;
    std::string compartmentId;
    std::string databaseId;
    std::string displayName;
    std::string id;
    std::string lifecycleDetails;
    std::string lifecycleState;
    std::string timeEnded;
    std::string timeStarted;
    std::string type;
};

}  // namespace OracleCloudSDKWrapper
