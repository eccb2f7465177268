#include "facade/OperationPoller.h"

#include <chrono>
#include <limits>

#include "platform/DebugLog.h"
#include "platform/PlatformConfig.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {

uint32_t OperationPoller::ReadWaitSeconds(const EventBase* log, const char* key, uint32_t def) {
    const long long value = PlatformConfig::getNumber("VirtualServer", key, def);
    if (value < 0 || value > static_cast<long long>(std::numeric_limits<uint32_t>::max())) {
        OCW_LOG_ERROR(log, "Value [%lld] of [%s] is out of range. Using default [%u]", value, key, def);
        return def;
    }
    return static_cast<uint32_t>(value);
}

uint64_t OperationPoller::monotonicSeconds() {
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count());
}

void OperationPoller::pauseBetweenPolls(uint32_t seconds) {
    PlatformSleep(static_cast<unsigned long>(seconds) * 1000UL);
}

}  // namespace OracleCloudSDKWrapper
