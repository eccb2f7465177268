#pragma once
// Database look-ups shared by the "db" and "backups" commands.
#include <string>
#include <vector>

#include "Session.h"

namespace ocw {

// The databases of a compartment: of one DB system when dbSystem is given,
// else of all DB systems of the compartment.
std::vector<OracleCloudSDKWrapper::SOCIDatabaseInfoLib> ListDatabases(Session& session, const std::string& compartment,
                                                                      const std::string& dbSystem);

OracleCloudSDKWrapper::SOCIDatabaseInfoLib ReadDatabase(Session& session, const std::string& id);

// True when the OCID names a database backup (as opposed to a volume backup).
bool IsDbBackupId(const std::string& id);

}  // namespace ocw
