#pragma once
// Storage family: volumes, snapshots (volume backups), attachments, buckets.
// Plain value records: defaults are empty text, 0 and false (except
// SSnapshotInfoLib::isComplete); copy and move are member-wise.
#include <ctime>
#include <string>
#include <vector>

namespace OracleCloudSDKWrapper {

// A volume attached to an instance (Classic storage attachment, OCI volume or
// boot volume attachment).
struct SStorageAttachmentInfoLib {
    int index = 0;                 // Classic disk slot
    std::string volumeName;        // Classic volume path; OCI volume or boot volume id
    std::string instanceName;
    std::string state;
    std::string name;
    std::string attachmentId;      // OCI attachment id
    std::string attachmentType;    // OCI: "iscsi", "paravirtualized", ...
    std::string iscsiIpv4;         // set only for "iscsi" attachments
    std::string iscsiIqn;          // iSCSI target name
    std::string iscsiPort;         // decimal text
};

// A block or boot volume.
struct SDiskInfoLib {
    std::string volumeName;
    std::string guid;
    std::string name;              // Classic full path; OCI display name
    std::string parentName;
    std::string extraName1;        // spare
    std::string extraName2;        // spare
    std::string compartmentId;
    std::string description;
    std::string properties;
    std::string availabilityDomain;
    std::string iscsiPortal;       // "<address>:<port>" of the attachment (OCI detail fill)
    std::string iscsiTarget;       // target name of the attachment (OCI detail fill)
    int index = 0;                 // Classic disk slot, 1..10
    unsigned long long sizeBytes = 0;
    bool isAttached = false;
    bool bootable = false;
    std::string status;
    std::vector<SStorageAttachmentInfoLib> attachments;
};

// A Classic storage snapshot or an OCI volume / boot volume backup.
struct SSnapshotInfoLib {
    std::string guid;
    std::string snapshotId;
    std::string name;
    std::string parentName;
    std::time_t startTime = 0;     // seconds since the epoch, UTC
    unsigned long long sizeBytes = 0;
    std::string status;
    std::string volumeName;        // Classic volume path; OCI volume or boot volume id
    std::string description;
    bool isComplete = true;        // false asks the backend for an integrity snapshot
};

// An OCI boot volume attachment as the service returns it.
struct SBootVolumeAttachmentInfo {
    std::string displayName;
    std::string instanceId;
    std::string bootVolumeId;
    std::string lifecycleState;
};

// An OCI object storage bucket.
struct SStorageBucketInfoLib {
    std::string name;
    std::string compartmentId;
};

// Extension: an OCI object storage object as a bucket's listing shows it
// (COracleCloudWrapper::ListObjects).
struct SStorageObjectInfoLib {
    std::string name;              // exactly as stored: blanks, "#", "?", "%", non-ASCII letters kept
    unsigned long long sizeBytes = 0;
    std::string md5;               // base64 MD5 of the content
    std::string timeCreated;       // RFC 3339 text
};

}  // namespace OracleCloudSDKWrapper
