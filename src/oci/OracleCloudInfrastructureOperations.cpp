#include "oci/OracleCloudInfrastructureOperations.h"
#include "oci/OracleCloudInfrastructureOperationsBodies.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <limits>

#include "parser/OracleCloudParser.h"
#include "platform/PlatformConfig.h"
#include "platform/StringUtil.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

namespace {

constexpr uint32_t kDefaultOperationTimeout = 2400;
constexpr uint32_t kDefaultOperationWaitTime = 30;

// A configured value that does not fit the 32-bit field would wrap into a
// nonsense wait; keep the default and say so.
uint32_t ReadSeconds(DebugLog* log, const char* key, uint32_t def) {
    const long long value = PlatformConfig::getNumber("VirtualServer", key, def);
    if (value < 0 || value > static_cast<long long>(std::numeric_limits<uint32_t>::max())) {
        OCW_LOG_ERROR(log, "Value [%lld] of [%s] is out of range. Using default [%u]", value, key, def);
        return def;
    }
    return static_cast<uint32_t>(value);
}

}  // namespace

COracleCloudInfrastructureOperations::COracleCloudInfrastructureOperations(COracleCloudBaseConnection* connection,
                                                                           COracleCloudParser* parser)
    : COracleCloudBaseOperations(connection, parser),
      operationTimeout(ReadSeconds(&m_debugLog, "nOCIOperationTimeout", kDefaultOperationTimeout)),
      operationWaitTime(ReadSeconds(&m_debugLog, "nOCIOperationWaitTime", kDefaultOperationWaitTime)) {
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

uint64_t COracleCloudInfrastructureOperations::monotonicSeconds() {
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count());
}

void COracleCloudInfrastructureOperations::pauseBetweenPolls(uint32_t seconds) {
    PlatformSleep(static_cast<unsigned long>(seconds) * 1000UL);
}

void COracleCloudInfrastructureOperations::setLastErrorFromFailedRequest(const std::string& response) {
    if (response.empty()) {
        SetLastError(m_connection->GetLastError());
    } else {
        SetLastErrorFromResponse(response);
    }
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

bool COracleCloudInfrastructureOperations::failWith(const char* signature, const char* fmt, ...) {
    char buffer[1024];
    va_list args;
    va_start(args, fmt);
    vsnprintf(buffer, sizeof buffer, fmt, args);
    va_end(args);
    DebugLog::Error(&m_debugLog, signature, "%s", buffer);
    SetLastError(buffer);
    return false;
}

}  // namespace OracleCloudSDKWrapper
