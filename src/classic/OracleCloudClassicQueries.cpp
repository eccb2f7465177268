// The non-template link readers, the directory walk for names, and the
// inventory views (data centre, cluster, hosts, containers) of the Classic
// queries.
#include "classic/OracleCloudClassicQueries.h"

#include "classic/ClassicNames.h"
#include "classic/OracleCloudClassicQueriesEngine.h"
#include "platform/PlatformConfig.h"

namespace OracleCloudSDKWrapper {

using namespace classicnames;

namespace {

constexpr uint32_t kDefaultBootPollSeconds = 5;

}  // namespace

COracleCloudClassicQueries::COracleCloudClassicQueries(COracleCloudBaseConnection* connection,
                                                       COracleCloudParser* parser)
    : COracleCloudBaseQueries(connection, parser),
      bootPollSeconds(static_cast<uint32_t>(PlatformConfig::getNumber("VirtualServer", "nOracleCloudOperationWaitTime",
                                                                      kDefaultBootPollSeconds))) {}

COracleCloudClassicQueries::~COracleCloudClassicQueries() = default;

bool COracleCloudClassicQueries::CheckConnection() { return true; }

bool COracleCloudClassicQueries::isPaaS() {
    const EOracleServiceType service = m_connection->getService();
    return service == ORACLE_SERVICE_PAAS_DATABASE || service == ORACLE_SERVICE_PAAS_JAVA ||
           service == ORACLE_SERVICE_PAAS_MYSQL;
}

bool COracleCloudClassicQueries::readLink(const std::string& link, std::string& response, bool directoryListing) {
    response.clear();
    if (m_connection->get(link, response, directoryListing, true)) {
        return true;
    }
    SetLastErrorFromFailedRequest(response, m_connection->GetLastError());
    return false;
}

// ---- link readers -------------------------------------------------------------

bool COracleCloudClassicQueries::GetListFromLink(const std::string& link, std::vector<std::string>& names) {
    std::string response;
    if (!readLink(classicqueries::ListLink(link), response, true)) {
        return false;
    }
    if (m_parser->ParseListAsStrings(response, "result", names) == 0) {
        SetLastError("No names are listed under [" + link + "]");
        return false;
    }
    return true;
}

bool COracleCloudClassicQueries::GetListFromLink(const std::string& link, std::vector<SOracleSSHKeyLib>& keys) {
    std::string response;
    if (!readLink(classicqueries::ListLink(link), response, false)) {
        return false;
    }
    if (!m_parser->ParseList(response, "items", keys)) {
        SetLastError("Failed to parse the list of [" + link + "]");
        return false;
    }
    return true;
}

bool COracleCloudClassicQueries::isWalkDepth(int levels) {
    if (levels >= 2) {
        return true;
    }
    // The root alone lists containers, never objects.
    return OCW_FAIL("[%d] is not a valid number of levels to traverse", levels);
}

bool COracleCloudClassicQueries::GetResourceNamesFromURITraversal(const std::string& uri, int levels,
                                                                  std::vector<std::string>& names) {
    if (!isWalkDepth(levels)) {
        return false;
    }
    const std::string base = classicqueries::ListLink(uri);
    std::vector<std::string> current(1, std::string());
    names.clear();
    while (levels != 0) {
        for (const std::string& name : current) {
            const std::string url = classicqueries::ChildLink(base, name);
            std::vector<std::string> children;
            if (!GetListFromLink(url, children)) {
                // A container the caller cannot read (or an empty one) is left out.
                OCW_LOG_ERROR(&m_debugLog, "failed to traverse children for [%s] ", url.c_str());
                continue;
            }
            names.insert(names.end(), children.begin(), children.end());
        }
        if (--levels != 0) {
            current = std::move(names);
            names.clear();
        }
    }
    return true;
}

// ---- inventory views ------------------------------------------------------------

namespace {

// "/Compute-acme/jdoe/" -> host "/Compute-acme/jdoe" named "jdoe" in "Compute-acme".
void HostFromContainer(const std::string& container, const std::string& domain, SHostInfoLib& host) {
    std::string path = container;
    while (!path.empty() && path.back() == '/') path.pop_back();
    host.hostId = path;
    host.hostName = path.substr(path.rfind('/') + 1);
    host.parentId = domain;
    host.isConnected = true;
    host.state = "available";
}

void ContainerFromHost(const SHostInfoLib& host, SContainerInfoLib& container) {
    container.name = host.hostName;
    container.guid = host.hostId;
    container.clusterUuid = "/" + host.parentId + "/";
    container.compartmentId = host.parentId;
    container.state = host.state;
}

bool NamesHost(const SHostInfoLib& host, const std::string& id, const std::string& name) {
    return (!id.empty() && (host.hostId == id || host.hostId + "/" == id)) || (!name.empty() && host.hostName == name);
}

}  // namespace

bool COracleCloudClassicQueries::listUserContainers(std::vector<std::string>& containers) {
    return GetResourceNamesFromURITraversal(kInstance, 2, containers);
}

bool COracleCloudClassicQueries::GetHostInfoList(std::vector<SHostInfoLib>& hosts, const std::string& /*parentId*/,
                                                 unsigned long long /*flags*/, const std::string& /*region*/) {
    std::vector<std::string> containers;
    if (!listUserContainers(containers)) {
        return false;
    }
    const std::string domain = m_connection->getIdentityDomain();
    for (const std::string& container : containers) {
        SHostInfoLib host;
        HostFromContainer(container, domain, host);
        hosts.push_back(std::move(host));
    }
    return true;
}

bool COracleCloudClassicQueries::GetHostInfo(const std::string& hostId, const std::string& hostName,
                                             SHostInfoLib& host, unsigned long long flags, const std::string& region) {
    std::vector<SHostInfoLib> hosts;
    if (!GetHostInfoList(hosts, std::string(), flags, region)) {
        return false;
    }
    for (const SHostInfoLib& candidate : hosts) {
        if (NamesHost(candidate, hostId, hostName)) {
            host = candidate;
            return true;
        }
    }
    OCW_LOG_ERROR(&m_debugLog, "Host [%s][%s] was not found", hostId.c_str(), hostName.c_str());
    SetLastError("Host [" + hostId + "][" + hostName + "] was not found");
    return false;
}

bool COracleCloudClassicQueries::GetContainerInfoList(std::vector<SContainerInfoLib>& containers,
                                                      const std::string& parentId, unsigned long long flags,
                                                      const std::string& region) {
    std::vector<SHostInfoLib> hosts;
    if (!GetHostInfoList(hosts, parentId, flags, region)) {
        return false;
    }
    for (const SHostInfoLib& host : hosts) {
        SContainerInfoLib container;
        ContainerFromHost(host, container);
        containers.push_back(std::move(container));
    }
    return true;
}

bool COracleCloudClassicQueries::GetContainerInfo(const std::string& containerId, const std::string& containerName,
                                                  SContainerInfoLib& container, unsigned long long flags,
                                                  const std::string& region) {
    SHostInfoLib host;
    if (!GetHostInfo(containerId, containerName, host, flags, region)) {
        return false;
    }
    ContainerFromHost(host, container);
    return true;
}

bool COracleCloudClassicQueries::GetClusterInfoList(std::vector<SClusterInfoLib>& clusters, unsigned long long flags,
                                                    const std::string& region) {
    SClusterInfoLib cluster;
    if (!GetClusterInfo(std::string(), cluster, flags, region)) {
        return false;
    }
    clusters.push_back(std::move(cluster));
    return true;
}

bool COracleCloudClassicQueries::GetClusterInfo(const std::string& clusterId, SClusterInfoLib& cluster,
                                                unsigned long long flags, const std::string& region) {
    const std::string domain = m_connection->getIdentityDomain();
    const std::string guid = "/" + domain + "/";
    if (!clusterId.empty() && clusterId != guid && clusterId != domain) {
        OCW_LOG_ERROR(&m_debugLog, "Cluster [%s] was not found", clusterId.c_str());
        SetLastError("Cluster [" + clusterId + "] was not found");
        return false;
    }
    cluster.name = domain;
    cluster.guid = guid;
    cluster.dataCenterName = domain;
    cluster.hosts.clear();
    return GetHostInfoList(cluster.hosts, domain, flags, region);
}

bool COracleCloudClassicQueries::GetDCInfoList(std::vector<SDataCenterInfoLib>& dataCenters,
                                               unsigned long long /*flags*/, unsigned long long /*flags2*/,
                                               const std::string& /*region*/) {
    // The site is known from the connection alone: no request.
    SDataCenterInfoLib site;
    site.name = m_connection->getIdentityDomain();
    site.guid = m_connection->getServer();
    dataCenters.push_back(std::move(site));
    return true;
}

}  // namespace OracleCloudSDKWrapper
