#pragma once
// Compute family: instances, images, shapes, key pairs, hosts and the grouping
// records of the caller's inventory tree. Plain value records: defaults are
// empty text, 0 and false; copy and move are member-wise.
#include <string>
#include <vector>

#include "oraclecloud/OracleCloudNetworkRecords.h"
#include "oraclecloud/OracleCloudStorageRecords.h"

namespace OracleCloudSDKWrapper {

// One virtual machine (instance), or an image/template when isTemplate is set.
struct SVMInfoLib {
    std::string vmName;
    std::string guid;               // Classic instance uuid; OCI instance id
    std::string vmPathPart;         // spare
    std::string compartmentId;      // OCI compartment; Classic owner part of the name (or host name)
    std::string extraInfo;          // spare
    std::string availabilityDomain;
    std::string imageId;
    std::string platform;           // "Windows", "Linux" or the cloud's own text
    std::string ipAddress;
    std::string launchMode;
    std::string region;
    unsigned int cpuCount = 0;
    unsigned long long memoryMB = 0;
    unsigned long long nicCount = 0;
    unsigned long long diskCount = 0;
    std::string state;
    unsigned long long sizeBytes = 0;
    std::string fullName;           // Classic full path; OCI id
    bool isTemplate = false;
    std::string shape;
    std::string status;             // second copy of state, used by waits
    std::string administratorPassword;  // Windows password given at launch; never logged
    bool enableRdp = false;
    int bootDiskIndex = 0;
    std::vector<SDiskInfoLib> disks;
    std::vector<SSecurityGroupInfoLib> securityGroups;
    std::vector<std::string> sshKeys;
    std::vector<SVNicInfoLib> vnics;
    std::string vcableId;
    unsigned long long bootVolumeSizeGB = 0;  // 0 = the image's default size
};

// A Classic SSH key pair.
struct SKeyPairInfoLib {
    std::string name;       // short name
    std::string fullName;   // full path
    std::string keyText;    // public key text
};

// A PaaS service SSH key.
struct SOracleSSHKeyLib {
    std::string computeKeyName;
    std::string publicKey;
    std::string description;
    std::string serviceName;
};

// A "host" of the caller's inventory tree: an OCI compartment, or the Classic
// account. hostId is the compartment id (OCI) / host part (Classic), hostName
// the compartment name (OCI) / user (Classic); the facade lists a host's VMs
// and networks with hostId first and hostName second.
struct SHostInfoLib {
    std::string hostId;
    std::string hostName;
    std::string parentId;           // containing compartment / account
    std::string region;
    unsigned int cpuCount = 0;
    unsigned long long memoryMB = 0;
    unsigned long long vmCount = 0;
    unsigned long long diskCount = 0;
    bool isConnected = false;
    bool isInMaintenance = false;
    std::string state;
    std::string description;
    std::vector<SVMInfoLib> vms;
    std::vector<SKeyPairInfoLib> keyPairs;
    std::vector<SSecurityGroupInfoLib> securityGroups;
    std::vector<std::string> sshKeys;
    std::vector<SNetworkInfoLib> networks;
};

// A Classic container or an OCI compartment.
struct SContainerInfoLib {
    std::string name;
    std::string guid;
    std::string clusterUuid;
    unsigned long long maxCapacity = 0;
    std::string description;
    std::string state;
    std::string compartmentId;
};

// A group of hosts.
struct SClusterInfoLib {
    std::string name;
    std::string guid;
    std::string dataCenterName;
    std::vector<SHostInfoLib> hosts;
};

// A data centre of the inventory tree: an OCI subscribed region or the Classic site.
struct SDataCenterInfoLib {
    std::string name;
    std::string guid;
    std::vector<SNetworkInfoLib> networks;
    std::vector<SSecurityGroupInfoLib> securityGroups;
    std::vector<SKeyPairInfoLib> keyPairs;
    std::string regionKey;
};

struct SInstanceShapeInfoLib {
    std::string name;
    std::string uri;
    int cpuCount = 0;
    int memoryMB = 0;
    int ioCount = 0;
};

// An OCI image.
struct SImageInfoLib {
    std::string baseImageId;
    std::string compartmentId;
    std::string displayName;
    std::string id;
    std::string lifecycleState;
    std::string operatingSystem;
    std::string operatingSystemVersion;
    bool createImageAllowed = false;
    std::string timeCreated;
    std::string launchMode;
};

// Initial Windows credentials of an OCI instance. password is a secret: never logged.
struct SInstanceCredentialsInfoLib {
    std::string username;
    std::string password;
};

// A Classic reboot request.
struct SRebootInstanceReqInfoLib {
    std::string name;
    std::string state;
};

// A Classic orchestration; vm is the first instance found under its objects.
struct SOrchestrationInfoLib {
    std::string name;
    std::string status;
    SVMInfoLib vm;
};

struct STenancyInfoLib {
    std::string name;
    std::string homeRegionKey;
    std::string description;
    std::string freeformTags;
};

}  // namespace OracleCloudSDKWrapper
