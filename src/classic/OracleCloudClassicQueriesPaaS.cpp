// The PaaS reads: database service instances and their compute nodes, the
// database service's SSH keys, Java and MySQL service instances, and the
// states of backup and restore jobs.
#include "classic/ClassicNames.h"
#include "classic/OracleCloudClassicQueries.h"
#include "classic/OracleCloudClassicQueriesEngine.h"

namespace OracleCloudSDKWrapper {

using namespace classicnames;

namespace {

// "<root>/<domain>" and below.
std::string DatabaseLink(const std::string& domain) { return Join(kDatabaseRoot, domain); }
std::string InstanceMgmtLink(const std::string& domain, const char* below) {
    return Join(Join(kInstanceMgmtRoot, domain), below);
}

}  // namespace

bool COracleCloudClassicQueries::GetDBInstanceList(std::vector<SOracleDBInstanceInfoLib>& instances) {
    return GetListFromLink(DatabaseLink(m_connection->getIdentityDomain()), instances, false);
}

bool COracleCloudClassicQueries::GetDBInstanceInfo(const std::string& name, SOracleDBInstanceInfoLib& instance) {
    return GetObjectFromLink(Join(DatabaseLink(m_connection->getIdentityDomain()), name), instance);
}

bool COracleCloudClassicQueries::GetComputeNodeList(const std::string& name,
                                                    std::vector<SOracleDBComputeNodeLib>& nodes) {
    // Deliberate: the service answers the nodes as a bare JSON array, not
    // under "services" like its other lists, so they are read as one.
    std::string response;
    const std::string link = Join(Join(DatabaseLink(m_connection->getIdentityDomain()), name), "servers") + "/";
    if (!readLink(link, response, false)) {
        return false;
    }
    if (!m_parser->ParseList(response, nodes)) {
        SetLastError("Failed to parse the list of [" + link + "]");
        return false;
    }
    return true;
}

bool COracleCloudClassicQueries::GetSSHKeysList(std::vector<SOracleSSHKeyLib>& keys) {
    return GetListFromLink(InstanceMgmtLink(m_connection->getIdentityDomain(), "services/dbaas/credentials"), keys);
}

bool COracleCloudClassicQueries::GetSSHKeyByName(const std::string& name, SOracleSSHKeyLib& key) {
    std::vector<SOracleSSHKeyLib> keys;
    if (!GetSSHKeysList(keys)) {
        return false;
    }
    for (const SOracleSSHKeyLib& candidate : keys) {
        const std::string& full = candidate.computeKeyName;
        const bool endsWithName = full.size() > name.size() &&
                                  full.compare(full.size() - name.size(), name.size(), name) == 0 &&
                                  full[full.size() - name.size() - 1] == '/';
        if (full == name || endsWithName) {
            key = candidate;
            return true;
        }
    }
    OCW_LOG_ERROR(&m_debugLog, "SSH key [%s] was not found", name.c_str());
    SetLastError("SSH key [" + name + "] was not found");
    return false;
}

bool COracleCloudClassicQueries::GetJavaInstanceList(std::vector<SJavaInstanceInfoLib>& instances) {
    return GetListFromLink(InstanceMgmtLink(m_connection->getIdentityDomain(), kJavaInstances), instances, false);
}

bool COracleCloudClassicQueries::GetMySQLInstanceList(std::vector<SMySQLInstanceInfoLib>& instances) {
    return GetListFromLink(InstanceMgmtLink(m_connection->getIdentityDomain(), kMySQLInstances), instances, false);
}

bool COracleCloudClassicQueries::QueryBackupRestoreJobStatus(const std::string& jobUri, SOracleJobInfoLib& job) {
    std::string response;
    if (!readLink(jobUri, response, false)) {
        return false;
    }
    if (!m_parser->ExtractOraStatusAndTag(response, job)) {
        OCW_LOG_ERROR(&m_debugLog, "The job status of [%s] could not be read", jobUri.c_str());
    }
    // The read decides the result; a document that cannot be taken apart
    // leaves the record as it was (and is logged above).
    return true;
}

bool COracleCloudClassicQueries::QueryJavaMySQLBackupRestoreJobStatus(const std::string& jobUri,
                                                                      SJavaMySQLJobInfoLib& job) {
    return GetObjectFromLink(jobUri, job);
}

}  // namespace OracleCloudSDKWrapper
