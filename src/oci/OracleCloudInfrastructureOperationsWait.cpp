// The state waits of the OCI operations. Every operation that waits for the
// cloud goes through these templates, so polling interval, timeout arithmetic
// and messages live in this one place.
#include "oci/OracleCloudInfrastructureOperationsInternal.h"

namespace OracleCloudSDKWrapper {

template <typename T>
bool COracleCloudInfrastructureOperations::WaitForObjectToReachEndState(const std::string& path, T& record,
                                                                        const std::string& endState,
                                                                        const std::string& invalidState) {
    const uint64_t start = monotonicSeconds();
    for (;;) {
        // The first poll comes after a full interval: a state read right after
        // the request would only show the transition it started.
        pauseBetweenPolls(operationWaitTime);
        std::string response;
        if (!m_connection->get(path, response, false, true)) {
            setLastErrorFromFailedRequest(response);
            return false;
        }
        T current{};
        if (m_parser == nullptr || !m_parser->ParseObject(response, current)) {
            SetLastError("Failed to parse response JSON");
            return false;
        }
        const std::string state = ocilifecycle::State(current);
        if (state == endState) {
            ocilifecycle::SetState(record, endState);
            return true;
        }
        if (!invalidState.empty() && state == invalidState) {
            return OCI_OPS_FAIL("Resource [%s] went into invalid state[%s], while waiting for status to reach end state",
                                ocilifecycle::Id(current).c_str(), state.c_str());
        }
        OCW_LOG_DEBUG(&m_debugLog, "Current  status : [%s], waiting for status to change", state.c_str());
        if (monotonicSeconds() - start > operationTimeout) {
            return OCI_OPS_FAIL("Timeout waiting for status end state for  [%s]", ocilifecycle::Id(current).c_str());
        }
    }
}

template <typename T>
bool COracleCloudInfrastructureOperations::WaitForAllItemsToBeDeleted(std::vector<std::string> paths,
                                                                      const std::string& deletedState) {
    if (paths.empty()) return true;
    const uint64_t start = monotonicSeconds();
    for (;;) {
        // Unlike the single-object wait, the budget is checked before sleeping.
        if (monotonicSeconds() - start > operationTimeout) {
            return OCI_OPS_FAIL("Timeout waiting for all items to be deleted");
        }
        OCW_LOG_DEBUG(&m_debugLog, "Waiting for %d item(s) to be deleted", static_cast<int>(paths.size()));
        pauseBetweenPolls(operationWaitTime);
        for (auto it = paths.begin(); it != paths.end();) {
            std::string response;
            if (!m_connection->get(*it, response, false, true)) {
                if (m_connection->getLastHTTPErrorCode() == 404) {
                    it = paths.erase(it);
                    continue;
                }
                OCW_LOG_DEBUG(&m_debugLog, "Connection Error");
                setLastErrorFromFailedRequest(response);
                return false;
            }
            T item{};
            if (m_parser == nullptr || !m_parser->ParseObject(response, item)) {
                return OCI_OPS_FAIL("Error parsing the response JSON");
            }
            if (ocilifecycle::State(item) == deletedState) {
                it = paths.erase(it);
            } else {
                ++it;
            }
        }
        if (paths.empty()) {
            OCW_LOG_DEBUG(&m_debugLog, "All items deleted");
            return true;
        }
    }
}

template <typename T>
bool COracleCloudInfrastructureOperations::deleteAndWaitUntilGone(const std::string& deletePath,
                                                                  const std::string& resourcePath,
                                                                  const std::string& goneState, bool wait) {
    if (!DeleteObjectFromLink(deletePath)) return false;
    if (!wait) return true;

    std::string response;
    if (!m_connection->get(resourcePath, response, false, true)) {
        if (m_connection->getLastHTTPErrorCode() == 404) return true;  // already gone
        setLastErrorFromFailedRequest(response);
        return false;
    }
    T record{};
    if (m_parser == nullptr || !m_parser->ParseObject(response, record)) {
        return OCI_OPS_FAIL("Could not parse JSON ");
    }
    if (WaitForObjectToReachEndState(resourcePath, record, goneState, std::string())) return true;

    // The service accepted the delete; a wait that ran out on a resource that
    // still answers is not a failure of the delete itself.
    response.clear();
    if (m_connection->get(resourcePath, response, false, true)) return true;
    return m_connection->getLastHTTPErrorCode() == 404;
}

template bool COracleCloudInfrastructureOperations::WaitForObjectToReachEndState<SVMInfoLib>(
    const std::string&, SVMInfoLib&, const std::string&, const std::string&);
template bool COracleCloudInfrastructureOperations::WaitForObjectToReachEndState<SDiskInfoLib>(
    const std::string&, SDiskInfoLib&, const std::string&, const std::string&);
template bool COracleCloudInfrastructureOperations::WaitForObjectToReachEndState<SStorageAttachmentInfoLib>(
    const std::string&, SStorageAttachmentInfoLib&, const std::string&, const std::string&);
template bool COracleCloudInfrastructureOperations::WaitForObjectToReachEndState<SOracleDBInstanceInfoLib>(
    const std::string&, SOracleDBInstanceInfoLib&, const std::string&, const std::string&);
template bool COracleCloudInfrastructureOperations::WaitForObjectToReachEndState<SVnicAttachmentInfoLib>(
    const std::string&, SVnicAttachmentInfoLib&, const std::string&, const std::string&);
template bool COracleCloudInfrastructureOperations::WaitForAllItemsToBeDeleted<SStorageAttachmentInfoLib>(
    std::vector<std::string>, const std::string&);
template bool COracleCloudInfrastructureOperations::deleteAndWaitUntilGone<SVMInfoLib>(const std::string&,
                                                                                     const std::string&,
                                                                                     const std::string&, bool);
template bool COracleCloudInfrastructureOperations::deleteAndWaitUntilGone<SStorageAttachmentInfoLib>(
    const std::string&, const std::string&, const std::string&, bool);

}  // namespace OracleCloudSDKWrapper
