// The state waits of the OCI operations. Every operation that waits for the
// cloud goes through these templates, which run the poll loop shared with the
// Classic backend (OperationPoller): polling interval and timeout arithmetic
// live there, what a poll reads and the OCI messages live here.
#include "oci/OracleCloudInfrastructureOperationsInternal.h"

namespace OracleCloudSDKWrapper {

template <typename T>
bool COracleCloudInfrastructureOperations::WaitForObjectToReachEndState(const std::string& path, T& record,
                                                                        const std::string& endState,
                                                                        const std::string& invalidState) {
    // Lines logged from inside the poll carry this function's signature.
    const char* const where = __PRETTY_FUNCTION__;
    std::string id;
    std::string invalidSeen;
    const WaitEnd end = pollUntilSettled(operationWaitTime, operationTimeout, [&] {
        std::string response;
        if (!m_connection->get(path, response, false, true)) {
            setLastErrorFromFailedRequest(response);
            return PollResult::Failed;
        }
        T current{};
        if (m_parser == nullptr || !m_parser->ParseObject(response, current)) {
            SetLastError("Failed to parse response JSON");
            return PollResult::Failed;
        }
        const std::string state = ocilifecycle::State(current);
        id = ocilifecycle::Id(current);
        if (state == endState) {
            ocilifecycle::SetState(record, endState);
            return PollResult::Done;
        }
        if (!invalidState.empty() && state == invalidState) {
            invalidSeen = state;
            return PollResult::Failed;
        }
        DebugLog::Debug(&m_debugLog, where, "Current  status : [%s], waiting for status to change", state.c_str());
        return PollResult::Pending;
    });
    if (end == WaitEnd::Done) return true;
    if (!invalidSeen.empty()) {
        return OCI_OPS_FAIL("Resource [%s] went into invalid state[%s], while waiting for status to reach end state",
                            id.c_str(), invalidSeen.c_str());
    }
    if (end == WaitEnd::TimedOut) {
        return OCI_OPS_FAIL("Timeout waiting for status end state for  [%s]", id.c_str());
    }
    return false;
}

template <typename T>
bool COracleCloudInfrastructureOperations::WaitForAllItemsToBeDeleted(std::vector<std::string> paths,
                                                                      const std::string& deletedState) {
    if (paths.empty()) return true;
    const char* const where = __PRETTY_FUNCTION__;
    bool parseFailed = false;
    // Unlike the single-object wait, each round announces itself before it sleeps.
    const auto announce = [&] {
        DebugLog::Debug(&m_debugLog, where, "Waiting for %d item(s) to be deleted", static_cast<int>(paths.size()));
    };
    const WaitEnd end = pollUntilSettled(operationWaitTime, operationTimeout, announce, [&] {
        for (auto it = paths.begin(); it != paths.end();) {
            std::string response;
            if (!m_connection->get(*it, response, false, true)) {
                if (m_connection->getLastHTTPErrorCode() == 404) {
                    it = paths.erase(it);
                    continue;
                }
                DebugLog::Debug(&m_debugLog, where, "Connection Error");
                setLastErrorFromFailedRequest(response);
                return PollResult::Failed;
            }
            T item{};
            if (m_parser == nullptr || !m_parser->ParseObject(response, item)) {
                parseFailed = true;
                return PollResult::Failed;
            }
            if (ocilifecycle::State(item) == deletedState) {
                it = paths.erase(it);
            } else {
                ++it;
            }
        }
        return paths.empty() ? PollResult::Done : PollResult::Pending;
    });
    if (end == WaitEnd::Done) {
        OCW_LOG_DEBUG(&m_debugLog, "All items deleted");
        return true;
    }
    if (parseFailed) return OCI_OPS_FAIL("Error parsing the response JSON");
    if (end == WaitEnd::TimedOut) return OCI_OPS_FAIL("Timeout waiting for all items to be deleted");
    return false;
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
