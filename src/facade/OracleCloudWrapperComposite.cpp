// Operations that combine several backend calls (volumes, snapshots,
// configuration capture, object storage). Their composition lands in a later
// step; until then each one fails visibly instead of doing half the job.
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

#define OCW_NOT_IMPLEMENTED_YET()                            \
    do {                                                     \
        OCW_LOG_ERROR(this, "NOT IMPLEMENTED in this build"); \
        return false;                                        \
    } while (0)

bool COracleCloudWrapper::AttachVolume(const std::string&, const std::string&, bool&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::AttachVolume(const std::string&, const std::string&, bool&, SStorageAttachmentInfoLib&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::DetachVolumes(const std::vector<std::string>&, const std::string&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::DetachVolume(const std::string&, const std::string&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::CreateVolume(SDiskInfoLib&, const std::string&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::ValidateInstanceInfoForRestore(const SVMInfoLib&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::IsImageImportOperationCompleted(const std::string&, bool&, const std::string&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::ReConfigureVM(const std::string&, std::vector<SDiskInfoLib>&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::DoesVMExist(const std::string&, const std::string&, bool&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::GetSnapshotStatus(const std::string&, std::string&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::GetVolumeStatus(const std::string&, std::string&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::MakeVolumeBootable(const std::string&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::ClearDescriptionForVolume(const std::string&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::GetAvailabilityDomainListForTenancy(std::vector<SAvailabilityDomainInfoLib>&,
                                                              const std::string&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::CreateVolumeSnapshot(const std::string&, const std::string&, const std::string&,
                                               std::string&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::CreateIntegritySnapshot(const std::string&, const std::string&, const std::string&,
                                                  std::string&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::CreateVolumeFromSnapshot(const std::string&, const std::string&, std::string&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::RevertToIntegritySnapshot(const std::string&, const std::string&, std::string&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::GetInstanceConfigurations(const std::string&, std::map<std::string, std::string>&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::ReadInstanceConfig(const std::string&, SVMInfoLib&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::ReadInstanceOrchestration(const std::string&, SVMInfoLib&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::DeployVMFromOrchestration(SVMInfoLib&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::UploadToObjectStorage(const std::string&, const std::string&, const std::string&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::CreateImage(const std::string&, const std::string&, SImageInfoLib&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::DeleteStorageObject(const std::string&, const std::string&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::GetPublicKeyForKeyName(const std::string&, std::string&) { OCW_NOT_IMPLEMENTED_YET(); }

#undef OCW_NOT_IMPLEMENTED_YET

}  // namespace OracleCloudSDKWrapper
