// The engines' non-template parts, the connection check and the compartment
// tree (the hosts and containers of the caller's inventory model).
#include "oci/OracleCloudInfrastructureQueries.h"

#include "oci/OracleCloudInfrastructureQueriesEngine.h"
#include "platform/PlatformConfig.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {

namespace {
const char* const kCoreVersion = "/20160918";
}  // namespace

COracleCloudInfrastructureQueries::COracleCloudInfrastructureQueries(COracleCloudBaseConnection* connection,
                                                                     COracleCloudParser* parser)
    : COracleCloudBaseQueries(connection, parser), pageLimit(0) {
    pageLimit = static_cast<uint32_t>(PlatformConfig::getNumber("VirtualServer", "nOCIPageLimit", 0));
}

COracleCloudInfrastructureQueries::~COracleCloudInfrastructureQueries() = default;

// ---- engines ------------------------------------------------------------------

bool COracleCloudInfrastructureQueries::_connectAndRunQuery(const std::string& path, EOracleServiceType type,
                                                            const std::string& region, std::string& response) {
    m_connection->setService(type);
    OciRegionSwitch regionSwitch(m_connection, region, &m_debugLog);
    if (m_connection->get(path, response, false, true)) {
        return true;
    }
    if (response.empty()) {
        SetLastError(m_connection->GetLastError());
    } else {
        SetLastErrorFromResponse(response);
    }
    return false;
}

std::string COracleCloudInfrastructureQueries::_GetPageUrl(const std::string& path, const std::string& token,
                                                           const char* tokenName) {
    std::string url = path;
    if (pageLimit != 0) {
        url += url.find('?') != std::string::npos ? "&" : "?";
        url += "limit=" + std::to_string(pageLimit);
    }
    if (!token.empty()) {
        std::string encoded = m_connection->urlEncode(token);
        url += url.find('?') != std::string::npos ? "&" : "?";
        url += std::string(tokenName) + "=" + encoded;
    }
    return url;
}

std::string COracleCloudInfrastructureQueries::_GetNextPageTokenFromHeader(const std::string& header) {
    size_t colon = header.find(':');
    if (header.empty() || colon == std::string::npos) {
        return std::string();
    }
    OCW_LOG_LVL(2, &m_debugLog, "nextPageHeader: [%s]", header.c_str());
    std::string token = COracleCloudBaseConnection::headerLineValue(header);
    OCW_LOG_LVL(2, &m_debugLog, "nextPageToken: [%s]", token.c_str());
    return token;
}

// ---- connection check ---------------------------------------------------------

bool COracleCloudInfrastructureQueries::_GetTenancy() {
    std::string path = std::string(kCoreVersion) + "/tenancies" + "/" + m_connection->getIdentityDomain();
    std::string response;
    return _connectAndRunQuery(path, OCI_SERVICE_IDENTITY, std::string(), response);
}

bool COracleCloudInfrastructureQueries::CheckConnection() { return _GetTenancy(); }

// ---- compartments -------------------------------------------------------------

bool COracleCloudInfrastructureQueries::GetContainerInfo(const std::string& containerId,
                                                         const std::string& /*containerName*/,
                                                         SContainerInfoLib& container, unsigned long long /*flags*/,
                                                         const std::string& region) {
    std::string path = std::string(kCoreVersion) + "/compartments" + "/" + containerId;
    if (!_ReadSingle(path, OCI_SERVICE_IDENTITY, region, container)) {
        return false;
    }
    if (containerId.find(".tenancy.") != std::string::npos) {
        container.name += " (root)";
    }
    return true;
}

bool COracleCloudInfrastructureQueries::GetContainerInfoList(std::vector<SContainerInfoLib>& containers,
                                                             const std::string& parentId, unsigned long long flags,
                                                             const std::string& region) {
    std::string parent = parentId.empty() ? m_connection->getIdentityDomain() : parentId;
    std::string path = std::string(kCoreVersion) + "/compartments" + "?compartmentId=" + parent;
    if (!_GetPaginatedList(path, OCI_SERVICE_IDENTITY, region, containers)) {
        return false;
    }
    SContainerInfoLib root;
    if (!GetContainerInfo(parent, std::string(), root, flags, region)) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to query root compartment info");
        return false;
    }
    containers.push_back(std::move(root));
    return true;
}

namespace {
void CopyCompartmentToHost(const SContainerInfoLib& compartment, const std::string& region, SHostInfoLib& host) {
    host.hostId = compartment.guid;
    host.hostName = compartment.name;
    host.parentId = compartment.compartmentId;
    host.region = region;
    host.state = compartment.state;
    host.description = compartment.description;
}
}  // namespace

bool COracleCloudInfrastructureQueries::GetHostInfoList(std::vector<SHostInfoLib>& hosts, const std::string& parentId,
                                                        unsigned long long flags, const std::string& region) {
    std::vector<SContainerInfoLib> compartments;
    if (!GetContainerInfoList(compartments, parentId, flags, region)) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to get compartment list");
        return false;
    }
    for (const SContainerInfoLib& compartment : compartments) {
        SHostInfoLib host;
        CopyCompartmentToHost(compartment, region, host);
        hosts.push_back(std::move(host));
    }
    return true;
}

bool COracleCloudInfrastructureQueries::GetHostInfo(const std::string& hostId, const std::string& hostName,
                                                    SHostInfoLib& host, unsigned long long flags,
                                                    const std::string& region) {
    if (hostId.empty()) {
        OCW_LOG_DEBUG(&m_debugLog, "Compartment Id is empty.  Compartment info will not be fetched");
        return true;
    }
    SContainerInfoLib compartment;
    if (!GetContainerInfo(hostId, hostName, compartment, flags, region)) {
        OCW_LOG_ERROR(&m_debugLog, "Failed to get compartment info for ID: [%s]", hostId.c_str());
        return false;
    }
    CopyCompartmentToHost(compartment, region, host);
    return true;
}

}  // namespace OracleCloudSDKWrapper
