// Networks (through the search service), regions, subscriptions, data centres
// and availability domains.
#include "oci/OracleCloudInfrastructureQueries.h"
#include "oci/OracleCloudInfrastructureQueriesEngine.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {

namespace {
const char* const kCoreVersion = "/20160918";
}  // namespace

// ---- networks -----------------------------------------------------------------

bool COracleCloudInfrastructureQueries::_GetSubnetList(const std::string& vcnId, std::vector<SSubnetInfoLib>& subnets,
                                                       const std::string& region) {
    std::string query = std::string("query Subnet resources where ") + "vcnId = '" + vcnId + "'";
    return _ExecuteSearchServiceQuery(query, region, subnets);
}

bool COracleCloudInfrastructureQueries::GetNetworkList(std::vector<SNetworkInfoLib>& networks,
                                                       const std::string& /*compartmentId*/,
                                                       const std::string& availabilityDomain,
                                                       const std::string& region) {
    size_t first = networks.size();
    if (!_ExecuteSearchServiceQuery(std::string("query Vcn resources"), region, networks)) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to query VCNs");
        return false;
    }
    for (size_t i = first; i < networks.size(); ++i) {
        SNetworkInfoLib& vcn = networks[i];
        if (!_GetSubnetList(vcn.id, vcn.subnets, region)) {
            OCW_LOG_ERROR(&m_debugLog, "Failed to get subnet list for network:[%s][%s]", vcn.name.c_str(),
                          vcn.id.c_str());
            return false;
        }
        if (availabilityDomain.empty()) {
            continue;
        }
        // Regional subnets (no domain) serve every domain and always stay.
        auto otherDomain = [&availabilityDomain](const SSubnetInfoLib& subnet) {
            return !subnet.availabilityDomain.empty() &&
                   StringUtil::FindNoCase(subnet.availabilityDomain, availabilityDomain) == std::string::npos;
        };
        vcn.subnets.erase(std::remove_if(vcn.subnets.begin(), vcn.subnets.end(), otherDomain), vcn.subnets.end());
    }
    return true;
}

// ---- regions and domains --------------------------------------------------------

bool COracleCloudInfrastructureQueries::GetRegionInfoList(std::vector<SRegionInfoLib>& regions,
                                                          unsigned long long /*flags*/) {
    std::string path = std::string(kCoreVersion) + "/regions";
    return _GetPaginatedList(path, OCI_SERVICE_IDENTITY, std::string(), regions);
}

bool COracleCloudInfrastructureQueries::GetSubscribedRegionInfoList(std::vector<SRegionInfoLib>& regions,
                                                                    unsigned long long /*flags*/) {
    std::string path = std::string(kCoreVersion) + "/tenancies" + "/" + m_connection->getIdentityDomain() +
                       "/regionSubscriptions";
    return _GetPaginatedList(path, OCI_SERVICE_IDENTITY, std::string(), regions);
}

bool COracleCloudInfrastructureQueries::GetDCInfoList(std::vector<SDataCenterInfoLib>& dataCenters,
                                                      unsigned long long flags, unsigned long long /*flags2*/,
                                                      const std::string& /*region*/) {
    std::vector<SRegionInfoLib> regions;
    if (!GetSubscribedRegionInfoList(regions, flags)) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to get the list of subscribed regions");
        return false;
    }
    for (const SRegionInfoLib& region : regions) {
        SDataCenterInfoLib dataCenter;
        dataCenter.name = region.regionName;
        dataCenter.regionKey = region.regionKey;
        dataCenters.push_back(std::move(dataCenter));
    }
    return true;
}

bool COracleCloudInfrastructureQueries::GetAvailabilityDomainList(std::vector<SAvailabilityDomainInfoLib>& domains,
                                                                  unsigned long long /*flags*/,
                                                                  const std::string& compartmentId,
                                                                  const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/availabilityDomains" + "?compartmentId=" + compartmentId;
    return _GetPaginatedList(path, OCI_SERVICE_IDENTITY, region, domains);
}

// ---- key pairs and security groups (none in OCI) ---------------------------------

bool COracleCloudInfrastructureQueries::GetKeyPairList(std::vector<SKeyPairInfoLib>& /*keyPairs*/) {
    OCW_LOG_LVL(2, &m_debugLog, "returning true");
    return true;
}

bool COracleCloudInfrastructureQueries::GetSecurityGroupList(std::vector<SSecurityGroupInfoLib>& /*groups*/) {
    return true;
}

}  // namespace OracleCloudSDKWrapper
