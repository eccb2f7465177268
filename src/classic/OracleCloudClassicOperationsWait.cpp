// The waits of the Classic operations: an object reaching its end state, a
// link going to 404, and a set of attachments going away. They run the poll
// loop shared with the OCI backend (OperationPoller); what a poll reads and
// the Classic messages live here.
#include <set>

#include "classic/ClassicNames.h"
#include "classic/OracleCloudClassicOperations.h"
#include "facade/LifecycleState.h"
#include "parser/OracleCloudParser.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

namespace {

constexpr long kHttpNotFound = 404;

// The name a wait's log lines give the awaited object.
const std::string& NameOf(const SVMInfoLib& r) { return r.fullName; }
const std::string& NameOf(const SDiskInfoLib& r) { return r.name; }
const std::string& NameOf(const SStorageAttachmentInfoLib& r) { return r.name; }
const std::string& NameOf(const SOrchestrationInfoLib& r) { return r.name; }
const std::string& NameOf(const SRebootInstanceReqInfoLib& r) { return r.name; }
const std::string& NameOf(const SOracleDBInstanceInfoLib& r) { return r.serviceName; }

}  // namespace

template <typename T>
bool COracleCloudClassicOperations::WaitForObjectToReachEndState(const std::string& link, T& record,
                                                                const std::string& endState) {
    const char* const where = __PRETTY_FUNCTION__;
    std::string name;
    bool errorState = false;
    const WaitEnd end = pollUntilSettled(operationWaitTime, operationTimeout, [&] {
        std::string response;
        if (!m_connection->get(link, response, false, true)) {
            SetLastErrorFromFailedRequest(response, m_connection->GetLastError());
            return PollResult::Failed;
        }
        T current{};
        if (!m_parser->ParseObject(response, current)) {
            SetLastError("Failed to parse the answer of [" + link + "]");
            return PollResult::Failed;
        }
        const std::string& state = lifecycle::State(current);
        name = NameOf(current);
        DebugLog::Debug(&m_debugLog, where, "Current  status : [%s], waiting for status to change", state.c_str());
        if (state == endState) {
            lifecycle::SetState(record, endState);
            return PollResult::Done;
        }
        if (state == "error" || state == "terminal_error") {
            errorState = true;
            return PollResult::Failed;
        }
        return PollResult::Pending;
    });
    if (end == WaitEnd::Done) return true;
    if (errorState) return OCW_FAIL("Error waiting for status to reach end state for [%s]", name.c_str());
    if (end == WaitEnd::TimedOut) return OCW_FAIL("Timeout waiting for status end state for  [%s]", name.c_str());
    return false;
}

bool COracleCloudClassicOperations::WaitForLinkTo404(const std::string& link) {
    const char* const where = __PRETTY_FUNCTION__;
    const auto announce = [&] { DebugLog::Debug(&m_debugLog, where, "waiting for [%s] to get deleted", link.c_str()); };
    const WaitEnd end = pollUntilSettled(operationWaitTime, operationTimeout, announce, [&] {
        std::string response;
        if (!m_connection->get(link, response, false, false) && m_connection->getLastHTTPErrorCode() == kHttpNotFound) {
            return PollResult::Done;
        }
        return PollResult::Pending;
    });
    if (end == WaitEnd::Done) return true;
    return OCW_FAIL("Timeout waiting for [%s] to get deleted", link.c_str());
}

bool COracleCloudClassicOperations::AreAllAttachmentsDeleted(const std::vector<std::string>& attachments) {
    if (attachments.empty()) {
        OCW_LOG_DEBUG(&m_debugLog, "No attachments have been provided to check status");
        return true;
    }
    const char* const where = __PRETTY_FUNCTION__;
    const std::set<std::string> wanted(attachments.begin(), attachments.end());
    std::set<std::string> gone;
    const auto announce = [&] {
        DebugLog::Debug(&m_debugLog, where, "%d/%d attachments have been detached so far", static_cast<int>(gone.size()),
                        static_cast<int>(attachments.size()));
    };
    // Deliberately bounded by the operation timeout: an attachment that never
    // goes (or a cloud that stops answering) must not hang the caller.
    const WaitEnd end = pollUntilSettled(operationWaitTime, operationTimeout, announce, [&] {
        for (const std::string& attachment : wanted) {
            if (gone.count(attachment) != 0) continue;
            std::string response;
            if (!m_connection->get(classicnames::ObjectLink(classicnames::kAttachment, attachment), response, false,
                                   true) &&
                m_connection->getLastHTTPErrorCode() == kHttpNotFound) {
                gone.insert(attachment);
            }
        }
        return gone.size() == wanted.size() ? PollResult::Done : PollResult::Pending;
    });
    if (end == WaitEnd::Done) return true;
    return OCW_FAIL("Timeout waiting for attachments to get deleted: %d/%d have been detached",
                    static_cast<int>(gone.size()), static_cast<int>(attachments.size()));
}

template bool COracleCloudClassicOperations::WaitForObjectToReachEndState<SVMInfoLib>(const std::string&,
                                                                                     SVMInfoLib&,
                                                                                     const std::string&);
template bool COracleCloudClassicOperations::WaitForObjectToReachEndState<SDiskInfoLib>(const std::string&,
                                                                                       SDiskInfoLib&,
                                                                                       const std::string&);
template bool COracleCloudClassicOperations::WaitForObjectToReachEndState<SStorageAttachmentInfoLib>(
    const std::string&, SStorageAttachmentInfoLib&, const std::string&);
template bool COracleCloudClassicOperations::WaitForObjectToReachEndState<SOrchestrationInfoLib>(
    const std::string&, SOrchestrationInfoLib&, const std::string&);
template bool COracleCloudClassicOperations::WaitForObjectToReachEndState<SRebootInstanceReqInfoLib>(
    const std::string&, SRebootInstanceReqInfoLib&, const std::string&);
template bool COracleCloudClassicOperations::WaitForObjectToReachEndState<SOracleDBInstanceInfoLib>(
    const std::string&, SOracleDBInstanceInfoLib&, const std::string&);

}  // namespace OracleCloudSDKWrapper
