// Extensions of the facade (not in the designed interface): the failure
// record that goes with the last error, the library's version, and the
// listings an operator needs to find what backups and restores left behind.
#include "facade/FacadeForward.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/LibraryVersion.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

unsigned long long FacadeErrorSlot::mark() const {
    return connection != nullptr ? connection->getRequestSequence() : 0;
}

void FacadeErrorSlot::take(const std::string& message, unsigned long long since) const {
    text = message;
    record(message, since);
}

void FacadeErrorSlot::record(const std::string& message, unsigned long long since) const {
    SOracleCloudFailureInfoLib entry;
    if (connection != nullptr && connection->getFailedRequestSequence() > since) {
        entry = connection->getLastRequestFailure();
    }
    entry.message = message;
    failure = std::move(entry);
}

FacadeErrorSlot COracleCloudWrapper::errorSlot() { return FacadeErrorSlot{m_lastError, m_lastFailure, m_connection}; }

std::string COracleCloudWrapper::GetLibraryVersion() { return LibraryVersion(); }

bool COracleCloudWrapper::ListVolumes(std::vector<SDiskInfoLib>& volumes, const std::string& compartmentId,
                                      const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](COracleCloudBaseQueries& queries) {
        return queries.ListVolumes(volumes, compartmentId, region);
    });
}

bool COracleCloudWrapper::ListVolumeBackups(std::vector<SSnapshotInfoLib>& backups, const std::string& compartmentId,
                                            const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](COracleCloudBaseQueries& queries) {
        return queries.ListVolumeBackups(backups, compartmentId, region);
    });
}

bool COracleCloudWrapper::ListVolumeAttachments(std::vector<SStorageAttachmentInfoLib>& attachments,
                                                const std::string& compartmentId, const std::string& region) {
    return ForwardToBackend(errorSlot(), m_queries, [&](COracleCloudBaseQueries& queries) {
        return queries.ListVolumeAttachments(attachments, compartmentId, region);
    });
}

bool COracleCloudWrapper::ListObjects(const std::string& bucket, std::vector<SStorageObjectInfoLib>& objects) {
    // Unlike the designed object storage calls, a failed namespace lookup is
    // reported: a listing that cannot be made must not read as an empty one.
    return ForwardToBackend(errorSlot(), m_queries, [&](COracleCloudBaseQueries& queries) {
        std::string tenantNamespace;
        return queries.GetNamespaceForTenant(tenantNamespace) &&
               queries.ListObjects(objects, tenantNamespace, bucket);
    });
}

}  // namespace OracleCloudSDKWrapper
