#pragma once
// Where each OCI record keeps its lifecycle state and its identifier, so the
// generic waits and the queries' state filters can read and write the state of
// any record type. The records
// name these fields differently (state, status, lifecycleState); one overload
// per record type keeps that knowledge in this file only.
#include <string>

#include "oraclecloud/OracleCloudRecords.h"

namespace OracleCloudSDKWrapper {
namespace ocilifecycle {

inline const std::string& State(const SVMInfoLib& r) { return r.state; }
inline const std::string& State(const SDiskInfoLib& r) { return r.status; }
inline const std::string& State(const SStorageAttachmentInfoLib& r) { return r.state; }
inline const std::string& State(const SOracleDBInstanceInfoLib& r) { return r.status; }
inline const std::string& State(const SVnicAttachmentInfoLib& r) { return r.lifecycleState; }
inline const std::string& State(const SImageInfoLib& r) { return r.lifecycleState; }
inline const std::string& State(const SSnapshotInfoLib& r) { return r.status; }

// A VM keeps its state twice; waits read `state` and set both.
inline void SetState(SVMInfoLib& r, const std::string& s) { r.state = s; r.status = s; }
inline void SetState(SDiskInfoLib& r, const std::string& s) { r.status = s; }
inline void SetState(SStorageAttachmentInfoLib& r, const std::string& s) { r.state = s; }
inline void SetState(SOracleDBInstanceInfoLib& r, const std::string& s) { r.status = s; }
inline void SetState(SVnicAttachmentInfoLib& r, const std::string& s) { r.lifecycleState = s; }
inline void SetState(SImageInfoLib& r, const std::string& s) { r.lifecycleState = s; }
inline void SetState(SSnapshotInfoLib& r, const std::string& s) { r.status = s; }

// The resource id (OCID) a log line names the record by.
inline const std::string& Id(const SVMInfoLib& r) { return r.guid; }
inline const std::string& Id(const SDiskInfoLib& r) { return r.guid; }
inline const std::string& Id(const SStorageAttachmentInfoLib& r) { return r.attachmentId; }
inline const std::string& Id(const SOracleDBInstanceInfoLib& r) { return r.databaseId; }
inline const std::string& Id(const SVnicAttachmentInfoLib& r) { return r.id; }
inline const std::string& Id(const SImageInfoLib& r) { return r.id; }
inline const std::string& Id(const SSnapshotInfoLib& r) { return r.snapshotId; }

}  // namespace ocilifecycle
}  // namespace OracleCloudSDKWrapper
