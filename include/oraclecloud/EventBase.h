#pragma once
#include "oraclecloud/Export.h"

namespace OracleCloudSDKWrapper {

// Base of the objects that write log lines. It is the "context" handed to every
// log call; the host program can tag a context with the job it works for, so
// that a shared log can be split per job.
class OCW_API EventBase {
public:
    EventBase() = default;
    virtual ~EventBase() = default;
    EventBase(const EventBase&) = default;
    EventBase& operator=(const EventBase&) = default;

    // The job this object works for: its own id when one was set, otherwise the
    // process-wide default (0 until the host program sets one).
    unsigned long getJobId() const;
    void setJobId(unsigned long jobId) { m_jobId = jobId; m_hasJobId = true; }

    static void setDefaultJobId(unsigned long jobId);

private:
    unsigned long m_jobId = 0;
    bool m_hasJobId = false;
};

}  // namespace OracleCloudSDKWrapper
