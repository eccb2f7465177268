#pragma once
#include <string>

#include "oraclecloud/OracleCloudMessageRecords.h"

namespace OracleCloudSDKWrapper {

class COracleCloudBaseConnection;

// Where a failed call leaves its traces in the facade: the last error text
// and (Extension) the failure record that goes with it. The record's request
// part is the connection's last failed request, but only when that request
// was sent after `mark` (taken before the call): a wait that ran out or a
// refused argument must not carry an older request's status.
struct FacadeErrorSlot {
    std::string& text;
    SOracleCloudFailureInfoLib& failure;
    const COracleCloudBaseConnection* connection;

    // The connection's request count now.
    unsigned long long mark() const;
    // Makes `message` the last error, with the record of the last request that
    // failed after `since` (none: a record with only the message).
    void take(const std::string& message, unsigned long long since) const;
    // The failure record alone (message: the backend's text), for the calls
    // whose designed contract leaves the last error text unchanged.
    void record(const std::string& message, unsigned long long since) const;
};

// Runs one call on a backend object and, when it fails, takes over the
// backend's error text as the facade's last error (with its failure record).
// A missing backend (only possible with injected backends) fails without a
// request and without text.
template <class Backend, class Call>
bool ForwardToBackend(const FacadeErrorSlot& slot, Backend* backend, Call&& call) {
    if (backend == nullptr) {
        return false;
    }
    const unsigned long long since = slot.mark();
    if (call(*backend)) {
        return true;
    }
    slot.take(backend->GetLastError(), since);
    return false;
}

}  // namespace OracleCloudSDKWrapper
