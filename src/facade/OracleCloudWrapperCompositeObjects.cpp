// Object storage for image import, and the public key text of a key pair.
#include "facade/FacadeForward.h"
#include "facade/OracleCloudBaseOperations.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

namespace {

// Objects live inside the tenant's namespace, which the caller never supplies.
// It is asked for on every call; the OCI queries answer repeats from a cache.
// The lookup's failure is logged by the caller only and leaves the facade's
// last error alone; a failure of the operation itself hands its text over.
template <class Call>
bool WithTenantNamespace(COracleCloudBaseQueries* queries, COracleCloudBaseOperations* operations,
                         const FacadeErrorSlot& slot, bool& namespaceMissing, Call&& call) {
    namespaceMissing = false;
    std::string tenantNamespace;
    if (queries == nullptr || !queries->GetNamespaceForTenant(tenantNamespace)) {
        namespaceMissing = true;
        return false;
    }
    if (operations == nullptr) {
        return false;
    }
    const unsigned long long since = slot.mark();
    if (!call(*operations, tenantNamespace)) {
        slot.take(operations->GetLastError(), since);
        return false;
    }
    return true;
}

}  // namespace

bool COracleCloudWrapper::UploadToObjectStorage(const std::string& bucket, const std::string& object,
                                                const std::string& content) {
    bool namespaceMissing = false;
    const bool done = WithTenantNamespace(
        m_queries, m_operations, errorSlot(), namespaceMissing,
        [&](COracleCloudBaseOperations& operations, const std::string& tenantNamespace) {
            return operations.UploadToObjectStorage(tenantNamespace, bucket, object, content);
        });
    if (namespaceMissing) {
        OCW_LOG_ERROR(this, "Could not obtain storage namespace for the tenant");
    }
    return done;
}

bool COracleCloudWrapper::CreateImage(const std::string& bucket, const std::string& object, SImageInfoLib& image) {
    bool namespaceMissing = false;
    const bool done = WithTenantNamespace(
        m_queries, m_operations, errorSlot(), namespaceMissing,
        [&](COracleCloudBaseOperations& operations, const std::string& tenantNamespace) {
            return operations.CreateImage(tenantNamespace, bucket, object, image);
        });
    if (namespaceMissing) {
        OCW_LOG_ERROR(this, "Could not obtain storage namespace for the tenant");
    }
    return done;
}

bool COracleCloudWrapper::DeleteStorageObject(const std::string& bucket, const std::string& object) {
    bool namespaceMissing = false;
    const bool done = WithTenantNamespace(
        m_queries, m_operations, errorSlot(), namespaceMissing,
        [&](COracleCloudBaseOperations& operations, const std::string& tenantNamespace) {
            return operations.DeleteStorageObject(tenantNamespace, bucket, object);
        });
    if (namespaceMissing) {
        OCW_LOG_ERROR(this, "Could not obtain storage namespace for the tenant");
    }
    return done;
}

bool COracleCloudWrapper::GetPublicKeyForKeyName(const std::string& keyName, std::string& publicKey) {
    if (keyName.empty()) {
        OCW_LOG_DEBUG(this, "Cannot fetch public key as an empty key name was provided");
        return false;
    }
    SKeyPairInfoLib key;
    // A key without text cannot be put on an instance, so it counts as missing.
    if (m_queries == nullptr || !m_queries->GetKeyInfoForKeyName(keyName, key) || key.keyText.empty()) {
        OCW_LOG_DEBUG(this, "Failed to fetch public key for key [%s]", keyName.c_str());
        return false;
    }
    publicKey = key.keyText;
    return true;
}

}  // namespace OracleCloudSDKWrapper
