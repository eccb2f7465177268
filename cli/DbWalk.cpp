#include "DbWalk.h"

namespace ocw {

using OracleCloudSDKWrapper::COracleCloudWrapper;
using OracleCloudSDKWrapper::SOCIDatabaseInfoLib;

std::vector<SOCIDatabaseInfoLib> ListDatabases(Session& s, const std::string& compartment, const std::string& dbSystem) {
    const std::string c = s.compartmentOr(compartment);
    std::vector<std::string> systems;
    if (!dbSystem.empty()) {
        systems.push_back(dbSystem);
    } else {
        std::vector<OracleCloudSDKWrapper::SOCIDbSystemInfoLib> list;
        s.call("list DB systems", [&](COracleCloudWrapper& f) { return f.GetDbSystemList(list, c); });
        for (const auto& system : list) {
            if (system.lifecycleState != "TERMINATED") systems.push_back(system.id);
        }
    }
    std::vector<SOCIDatabaseInfoLib> result;
    for (const std::string& system : systems) {
        std::vector<OracleCloudSDKWrapper::SOCIDbHomeInfoLib> homes;
        s.call("list DB homes of " + system, [&](COracleCloudWrapper& f) { return f.GetDbHomeList(homes, c, system); });
        for (const auto& home : homes) {
            std::vector<SOCIDatabaseInfoLib> databases;
            s.call("list databases of DB home " + home.id,
                   [&](COracleCloudWrapper& f) { return f.GetDatabaseList(databases, c, home.id); });
            result.insert(result.end(), databases.begin(), databases.end());
        }
    }
    return result;
}

SOCIDatabaseInfoLib ReadDatabase(Session& s, const std::string& id) {
    SOCIDatabaseInfoLib database;
    s.call("read database " + id, [&](COracleCloudWrapper& f) { return f.GetDatabaseInfo(database, id); });
    return database;
}

bool IsDbBackupId(const std::string& id) { return id.rfind("ocid1.dbbackup.", 0) == 0; }

}  // namespace ocw
