#pragma once
// Where each record keeps its lifecycle state, so the generic waits and list
// filters of both backends can read and write the state of any record type.
// The records name this field differently (state, status, lifecycleState);
// one overload per record type keeps that knowledge in this file only.
#include <string>

#include "oraclecloud/OracleCloudRecords.h"

namespace OracleCloudSDKWrapper {
namespace lifecycle {

inline const std::string& State(const SVMInfoLib& r) { return r.state; }
inline const std::string& State(const SDiskInfoLib& r) { return r.status; }
inline const std::string& State(const SStorageAttachmentInfoLib& r) { return r.state; }
inline const std::string& State(const SOracleDBInstanceInfoLib& r) { return r.status; }
inline const std::string& State(const SVnicAttachmentInfoLib& r) { return r.lifecycleState; }
inline const std::string& State(const SImageInfoLib& r) { return r.lifecycleState; }
inline const std::string& State(const SSnapshotInfoLib& r) { return r.status; }
inline const std::string& State(const SOrchestrationInfoLib& r) { return r.status; }
inline const std::string& State(const SRebootInstanceReqInfoLib& r) { return r.state; }

// A VM keeps its state twice; waits read `state` and set both.
inline void SetState(SVMInfoLib& r, const std::string& s) { r.state = s; r.status = s; }
inline void SetState(SDiskInfoLib& r, const std::string& s) { r.status = s; }
inline void SetState(SStorageAttachmentInfoLib& r, const std::string& s) { r.state = s; }
inline void SetState(SOracleDBInstanceInfoLib& r, const std::string& s) { r.status = s; }
inline void SetState(SVnicAttachmentInfoLib& r, const std::string& s) { r.lifecycleState = s; }
inline void SetState(SImageInfoLib& r, const std::string& s) { r.lifecycleState = s; }
inline void SetState(SSnapshotInfoLib& r, const std::string& s) { r.status = s; }
inline void SetState(SOrchestrationInfoLib& r, const std::string& s) { r.status = s; }
inline void SetState(SRebootInstanceReqInfoLib& r, const std::string& s) { r.state = s; }

}  // namespace lifecycle
}  // namespace OracleCloudSDKWrapper
