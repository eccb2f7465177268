// Configuration capture and orchestration restore. Their composition lands in
// a later step; until then each one fails visibly instead of doing half the job.
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/DebugLog.h"

namespace OracleCloudSDKWrapper {

#define OCW_NOT_IMPLEMENTED_YET()                            \
    do {                                                     \
        OCW_LOG_ERROR(this, "NOT IMPLEMENTED in this build"); \
        return false;                                        \
    } while (0)

bool COracleCloudWrapper::GetInstanceConfigurations(const std::string&, std::map<std::string, std::string>&) {
    OCW_NOT_IMPLEMENTED_YET();
}

bool COracleCloudWrapper::ReadInstanceConfig(const std::string&, SVMInfoLib&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::ReadInstanceOrchestration(const std::string&, SVMInfoLib&) { OCW_NOT_IMPLEMENTED_YET(); }

bool COracleCloudWrapper::DeployVMFromOrchestration(SVMInfoLib&) { OCW_NOT_IMPLEMENTED_YET(); }

#undef OCW_NOT_IMPLEMENTED_YET

}  // namespace OracleCloudSDKWrapper
