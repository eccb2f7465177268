// Builds against the installed headers only and calls into the installed
// shared library: a facade for each cloud type, a call that must fail cleanly
// before Connect, and its explanation arriving through the caller's log sink.
#include <cstdio>
#include <string>
#include <vector>

#include <oraclecloud/OracleCloudWrapper.h>

using namespace OracleCloudSDKWrapper;

int main() {
    int errorLines = 0;
    COracleCloudWrapper::SetLogSink([&errorLines](int level, const char*, const std::string&) {
        if (level == 0) ++errorLines;
    });
    COracleCloudWrapper oci(ORACLE_CLOUD_INFRASTRUCTURE);
    COracleCloudWrapper classic(ORACLE_CLOUD_CLASSIC);
    std::vector<SVMInfoLib> vms;
    const bool listed = oci.GetVMInfoList(vms, 0, "");
    COracleCloudWrapper::SetLogSink(nullptr);

    if (oci.GetCloudType() != ORACLE_CLOUD_INFRASTRUCTURE || classic.GetCloudType() != ORACLE_CLOUD_CLASSIC) {
        std::printf("wrong cloud type\n");
        return 1;
    }
    if (listed || errorLines == 0) {
        std::printf("an unconnected facade listed instances (%d, %d error lines)\n", listed, errorLines);
        return 1;
    }
    std::printf("consumer ok\n");
    return 0;
}
