// Detail fillers: complete records the caller already holds by running the
// facade's own reads on them.
#include "oraclecloud/OracleCloudWrapper.h"

namespace OracleCloudSDKWrapper {

namespace {
constexpr unsigned long long kNetworksKeysAndGroups = 1ULL << 26;
constexpr unsigned long long kHostVMs = 1ULL << 29;
}  // namespace

bool COracleCloudWrapper::FillVMInfoDetails(SVMInfoLib& vm, unsigned long long flags, const std::string& region) {
    if (flags == 0) {
        return true;
    }
    return GetVMInfo(vm.vmName, vm.guid, vm, flags, region);
}

bool COracleCloudWrapper::FillVMInfoListDetails(std::vector<SVMInfoLib>& vms, unsigned long long flags,
                                                const std::string& region) {
    for (SVMInfoLib& vm : vms) {
        if (!FillVMInfoDetails(vm, flags, region)) {
            return false;
        }
    }
    return true;
}

bool COracleCloudWrapper::FillHostInfoDetails(SHostInfoLib& host, const std::string& availabilityDomain,
                                              unsigned long long flags, const std::string& region) {
    if ((flags & kHostVMs) != 0 && !GetVMInfoListForHost(host.vms, host.hostId, host.hostName, flags, region)) {
        return false;
    }
    // A host whose networks were already read keeps them.
    if ((flags & kNetworksKeysAndGroups) != 0 && host.networks.empty()) {
        return GetNetworkList(host.networks, host.hostId, availabilityDomain, region);
    }
    return true;
}

bool COracleCloudWrapper::FillHostInfoListDetails(std::vector<SHostInfoLib>& hosts, unsigned long long flags,
                                                  const std::string& region) {
    for (SHostInfoLib& host : hosts) {
        if (!FillHostInfoDetails(host, std::string(), flags, region)) {
            return false;
        }
    }
    return true;
}

bool COracleCloudWrapper::FillDCInfoDetails(SDataCenterInfoLib& dataCenter, unsigned long long flags,
                                            unsigned long long /*flags2*/, const std::string& /*region*/) {
    if ((flags & kNetworksKeysAndGroups) == 0) {
        return true;
    }
    return GetKeyPairList(dataCenter.keyPairs) && GetSecurityGroupList(dataCenter.securityGroups, std::string());
}

bool COracleCloudWrapper::FillDCInfoListDetails(std::vector<SDataCenterInfoLib>& dataCenters,
                                                unsigned long long flags, unsigned long long flags2,
                                                const std::string& region) {
    for (SDataCenterInfoLib& dataCenter : dataCenters) {
        if (!FillDCInfoDetails(dataCenter, flags, flags2, region)) {
            return false;
        }
    }
    return true;
}

}  // namespace OracleCloudSDKWrapper
