#pragma once
// Network family: virtual networks, subnets, interfaces, security groups,
// regions and availability domains. Plain value records: defaults are empty
// text, 0 and false; copy and move are member-wise.
#include <string>
#include <vector>

namespace OracleCloudSDKWrapper {

// An OCI subnet; in a search result only id, displayName and availabilityDomain are set.
struct SSubnetInfoLib {
    std::string availabilityDomain;
    std::string cidrBlock;
    std::string compartmentId;
    std::string dhcpOptionsId;
    std::string displayName;
    std::string dnsLabel;
    std::string id;
    std::string lifecycleState;
    bool prohibitPublicIpOnVnic = false;
    std::string routeTableId;
    std::vector<std::string> securityListIds;
    std::string subnetDomainName;
    std::string vcnId;
    std::string virtualRouterIp;
    std::string virtualRouterMac;
    std::string timeCreated;
};

// A Classic IP network or an OCI virtual cloud network.
struct SNetworkInfoLib {
    std::string name;
    std::string ipAddressPrefix;
    bool publicNaptEnabled = false;
    std::string domainName;
    std::vector<SSubnetInfoLib> subnets;
    std::string id;  // OCI network id (search "identifier")
};

// One network interface of an instance.
struct SVNicInfoLib {
    std::string name;        // Classic: short name of the IP network; OCI: host name label
    std::string id;          // Classic: full IP network path; OCI: VNIC id
    std::string privateIp;
    std::string subnetId;
    std::string publicIp;
    std::string macAddress;
    unsigned long long flags = 0;
    bool assignPublicIp = false;  // asked for when an instance is launched
};

// An OCI VNIC attachment.
struct SVnicAttachmentInfoLib {
    std::string id;
    std::string displayName;
    std::string availabilityDomain;
    std::string compartmentId;
    std::string instanceId;
    std::string vnicId;
    std::string lifecycleState;
};

// A Classic security list / group. fullName is the full path, name the part after the last "/".
struct SSecurityGroupInfoLib {
    std::string name;
    std::string fullName;
};

// A Classic IP association.
struct SIPAssociationLib {
    std::string name;
};

struct SRegionInfoLib {
    std::string regionKey;
    std::string regionName;
    std::string status;
    bool isHomeRegion = false;
};

struct SAvailabilityDomainInfoLib {
    std::string name;
    std::string compartmentId;
};

}  // namespace OracleCloudSDKWrapper
