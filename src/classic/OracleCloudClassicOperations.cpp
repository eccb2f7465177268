// Construction and tunables of the Classic operations, and the link
// operations every other operation sends through.
#include "classic/OracleCloudClassicOperations.h"

#include "classic/ClassicNames.h"
#include "classic/OracleCloudClassicOperationsBodies.h"
#include "parser/OracleCloudParser.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

namespace {

constexpr uint32_t kDefaultOperationTimeout = 900;
constexpr uint32_t kDefaultOperationWaitTime = 5;

}  // namespace

COracleCloudClassicOperations::COracleCloudClassicOperations(COracleCloudBaseConnection* connection,
                                                             COracleCloudParser* parser)
    : COracleCloudBaseOperations(connection, parser),
      operationTimeout(ReadWaitSeconds(&m_debugLog, "nOracleCloudOperationTimeout", kDefaultOperationTimeout)),
      operationWaitTime(ReadWaitSeconds(&m_debugLog, "nOracleCloudOperationWaitTime", kDefaultOperationWaitTime)) {
    OCW_LOG_LVL(2, &m_debugLog, "Classic operation timeout [%u] s, poll interval [%u] s", operationTimeout,
                operationWaitTime);
}

COracleCloudClassicOperations::~COracleCloudClassicOperations() = default;

bool COracleCloudClassicOperations::SetOperationTimeout(unsigned int seconds) {
    operationTimeout = seconds;
    return true;
}

bool COracleCloudClassicOperations::DeleteObjectFromLink(const std::string& link) {
    std::string response;
    if (m_connection->del(link, std::string(), response)) {
        return true;
    }
    SetLastErrorFromFailedRequest(response, m_connection->GetLastError());
    return false;
}

bool COracleCloudClassicOperations::sendBody(bool put, const std::string& link, const std::string& body,
                                             std::string& response) {
    response.clear();
    const bool sent = put ? m_connection->put(link, body, response) : m_connection->post(link, body, response);
    if (!sent) {
        SetLastErrorFromFailedRequest(response, m_connection->GetLastError());
    }
    return sent;
}

bool COracleCloudClassicOperations::PutObjectToLink(const std::string& link, const std::string& body) {
    std::string response;
    return sendBody(true, link, body, response);
}

bool COracleCloudClassicOperations::PostObjectToLink(const std::string& link, const std::string& body) {
    std::string response;
    return sendBody(false, link, body, response);
}

bool COracleCloudClassicOperations::PostObjectToLinkAndGetResult(const std::string& link, const std::string& body,
                                                                 std::string& response) {
    return sendBody(false, link, body, response);
}

template <typename T>
bool COracleCloudClassicOperations::sendAndParse(bool put, const std::string& link, const std::string& body,
                                                 T& record) {
    std::string response;
    if (!sendBody(put, link, body, response)) {
        return false;
    }
    if (!m_parser->ParseObject(response, record)) {
        return OCW_FAIL("Failed to parse the answer of [%s]", link.c_str());
    }
    return true;
}

template <typename T>
bool COracleCloudClassicOperations::PostObjectToLinkAndGetResult(const std::string& link, const std::string& body,
                                                                 T& record) {
    return sendAndParse(false, link, body, record);
}

template <typename T>
bool COracleCloudClassicOperations::PutObjectToLinkAndGetResult(const std::string& link, const std::string& body,
                                                                T& record) {
    return sendAndParse(true, link, body, record);
}

template bool COracleCloudClassicOperations::PostObjectToLinkAndGetResult<SSnapshotInfoLib>(const std::string&,
                                                                                           const std::string&,
                                                                                           SSnapshotInfoLib&);
template bool COracleCloudClassicOperations::PostObjectToLinkAndGetResult<SDiskInfoLib>(const std::string&,
                                                                                       const std::string&,
                                                                                       SDiskInfoLib&);
template bool COracleCloudClassicOperations::PostObjectToLinkAndGetResult<SStorageAttachmentInfoLib>(
    const std::string&, const std::string&, SStorageAttachmentInfoLib&);
template bool COracleCloudClassicOperations::PostObjectToLinkAndGetResult<SOrchestrationInfoLib>(
    const std::string&, const std::string&, SOrchestrationInfoLib&);
template bool COracleCloudClassicOperations::PostObjectToLinkAndGetResult<SRebootInstanceReqInfoLib>(
    const std::string&, const std::string&, SRebootInstanceReqInfoLib&);
template bool COracleCloudClassicOperations::PutObjectToLinkAndGetResult<SDiskInfoLib>(const std::string&,
                                                                                      const std::string&,
                                                                                      SDiskInfoLib&);

bool COracleCloudClassicOperations::prepareInstanceJson(const SVMInfoLib& vm, JsonObject& body) {
    if (!classicoperations::InstanceBody(vm, getDomain(), body)) {
        return OCW_FAIL("No bootable volumes found for instance [%s]", vm.vmName.c_str());
    }
    return true;
}

bool COracleCloudClassicOperations::changeInstancePowerState(const std::string& instance, const std::string& state) {
    return PutObjectToLink(classicnames::ObjectLink(classicnames::kInstance, instance),
                           JsonHelper::Serialize(classicoperations::PowerStateBody(state)));
}

}  // namespace OracleCloudSDKWrapper
