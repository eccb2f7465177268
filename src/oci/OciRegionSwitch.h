#pragma once
// Sends the requests of one call to another region: switches the connection
// for the life of the object and back at its end, whatever way the call
// leaves. A region equal to the current one (or empty) changes nothing and
// logs nothing.
#include <string>

#include "platform/DebugLog.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

class OciRegionSwitch {
public:
    OciRegionSwitch(COracleCloudBaseConnection* connection, const std::string& region, const EventBase* logContext)
        : m_connection(connection), m_logContext(logContext) {
        if (region.empty() || region == m_connection->getRegion()) return;
        m_savedRegion = m_connection->getRegion();
        m_switched = true;
        m_connection->setRegion(region);
        OCW_LOG_LVL(2, m_logContext, "Region set to: %s", m_connection->getRegion().c_str());
    }
    ~OciRegionSwitch() {
        if (!m_switched) return;
        m_connection->setRegion(m_savedRegion);
        OCW_LOG_LVL(2, m_logContext, "Region reset to: %s", m_connection->getRegion().c_str());
    }
    OciRegionSwitch(const OciRegionSwitch&) = delete;
    OciRegionSwitch& operator=(const OciRegionSwitch&) = delete;

private:
    COracleCloudBaseConnection* m_connection;
    const EventBase* m_logContext;
    std::string m_savedRegion;
    bool m_switched = false;
};

}  // namespace OracleCloudSDKWrapper
