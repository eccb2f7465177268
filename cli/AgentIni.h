#pragma once
// The agent configuration file (INI) that the library reads its tunables from
// ([VirtualServer], [Base]). ocw hands it to the library through the
// environment variable OCW_CONFIG, which must be set before the first facade
// is built, and reads the two wait tunables itself so that its own polling
// (snapshots, image imports, database backups) paces like the library's.
#include <string>

namespace ocw {

struct AgentIni {
    std::string path;              // empty: no file, library defaults apply
    long long waitSeconds = 30;    // [VirtualServer] nOCIOperationWaitTime
    long long timeoutSeconds = 2400;  // [VirtualServer] nOCIOperationTimeout
    long long classicWaitSeconds = 5;       // [VirtualServer] nOracleCloudOperationWaitTime
    long long classicTimeoutSeconds = 900;  // [VirtualServer] nOracleCloudOperationTimeout

    // given (--ini) or else $OCW_CONFIG. False with error when a file was
    // named but cannot be read. On success OCW_CONFIG names the absolute path.
    bool locate(const std::string& given, std::string& error);

    // Makes the library trust caFile (a Classic profile's ca_file) as well:
    // unless the configuration already names it as sCACertFile, a private
    // temporary copy with the key added becomes OCW_CONFIG (path stays the
    // user's file). Call after locate(), before the first facade is built.
    bool trust(const std::string& caFile, std::string& error);
    std::string derived;  // the temporary copy; its owner removes it
};

}  // namespace ocw
