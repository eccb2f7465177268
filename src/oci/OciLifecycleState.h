#pragma once
// The OCI view of a record's lifecycle: its state (shared with the Classic
// backend, facade/LifecycleState.h) and the resource id (OCID) a log line
// names the record by.
#include <string>

#include "facade/LifecycleState.h"

namespace OracleCloudSDKWrapper {
namespace ocilifecycle {

using lifecycle::SetState;
using lifecycle::State;

inline const std::string& Id(const SVMInfoLib& r) { return r.guid; }
inline const std::string& Id(const SDiskInfoLib& r) { return r.guid; }
inline const std::string& Id(const SStorageAttachmentInfoLib& r) { return r.attachmentId; }
inline const std::string& Id(const SOracleDBInstanceInfoLib& r) { return r.databaseId; }
inline const std::string& Id(const SVnicAttachmentInfoLib& r) { return r.id; }
inline const std::string& Id(const SImageInfoLib& r) { return r.id; }
inline const std::string& Id(const SSnapshotInfoLib& r) { return r.snapshotId; }

}  // namespace ocilifecycle
}  // namespace OracleCloudSDKWrapper
