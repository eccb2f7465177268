#include "platform/EventBase.h"

#include <atomic>

namespace OracleCloudSDKWrapper {
namespace {
std::atomic<unsigned long> g_defaultJobId{0};
}

unsigned long EventBase::getJobId() const {
    return m_hasJobId ? m_jobId : g_defaultJobId.load(std::memory_order_relaxed);
}

void EventBase::setDefaultJobId(unsigned long jobId) {
    g_defaultJobId.store(jobId, std::memory_order_relaxed);
}

}  // namespace OracleCloudSDKWrapper
