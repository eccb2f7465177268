#include "oci/OracleCloudInfrastructureOperations.h"
#include "oci/OracleCloudInfrastructureOperationsBodies.h"

#include "parser/OracleCloudParser.h"
#include "platform/PlatformConfig.h"
#include "platform/StringUtil.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

namespace {

constexpr uint32_t kDefaultOperationTimeout = 2400;
constexpr uint32_t kDefaultOperationWaitTime = 30;

}  // namespace

COracleCloudInfrastructureOperations::COracleCloudInfrastructureOperations(COracleCloudBaseConnection* connection,
                                                                           COracleCloudParser* parser)
    : COracleCloudBaseOperations(connection, parser),
      operationTimeout(ReadWaitSeconds(&m_debugLog, "nOCIOperationTimeout", kDefaultOperationTimeout)),
      operationWaitTime(ReadWaitSeconds(&m_debugLog, "nOCIOperationWaitTime", kDefaultOperationWaitTime)) {
    OCW_LOG_LVL(2, &m_debugLog, "OCI operation timeout [%u] s, poll interval [%u] s", operationTimeout,
                operationWaitTime);
}

COracleCloudInfrastructureOperations::~COracleCloudInfrastructureOperations() = default;

bool COracleCloudInfrastructureOperations::DeleteObjectFromLink(const std::string& link) {
    std::string response;
    if (m_connection->del(link, std::string(), response)) {
        return true;
    }
    setLastErrorFromFailedRequest(response);
    return false;
}

bool COracleCloudInfrastructureOperations::prepareInstanceJson(const SVMInfoLib& vm, JsonObject& body) {
    body = ocioperations::LaunchFromImageBody(vm);
    if (!vm.sshKeys.empty() && body.if_contains("metadata") == nullptr) {
        // The key text is a secret file's content: name the problem, not the text.
        OCW_LOG_DEBUG(&m_debugLog, "No public key found in the key text for instance [%s]; launching without one",
                      vm.vmName.c_str());
    }
    return true;
}

void COracleCloudInfrastructureOperations::setLastErrorFromFailedRequest(const std::string& response) {
    SetLastErrorFromFailedRequest(response, m_connection->GetLastError());
}

bool COracleCloudInfrastructureOperations::postJson(EOracleServiceType service, const std::string& path,
                                                    const std::string& body, std::string& response) {
    m_connection->setService(service);
    response.clear();
    if (m_connection->post(path, body, response)) {
        return true;
    }
    setLastErrorFromFailedRequest(response);
    return false;
}

}  // namespace OracleCloudSDKWrapper
