// ocw-demo: builds a facade for each cloud type and shows how the library
// answers before any backend request exists: every call returns false, and
// what the library has to say about it arrives through the log sink.
#include <cstdio>
#include <string>
#include <vector>

#include "oraclecloud/OracleCloudWrapper.h"

using namespace OracleCloudSDKWrapper;

namespace {

int g_logLines = 0;

void PrintLogLine(int level, const char* signature, const std::string& text) {
    ++g_logLines;
    std::printf("    log[%s] %s: %s\n", level == 0 ? "error" : "debug", signature, text.c_str());
}

struct Tally {
    int calls = 0;
    int falseAnswers = 0;
};

// Prints the call first, so that the log lines it causes appear under it.
template <class Call>
void Show(Tally& tally, const COracleCloudWrapper& facade, const char* call, Call&& run) {
    std::printf("  %s\n", call);
    const bool result = run();
    ++tally.calls;
    if (!result) {
        ++tally.falseAnswers;
    }
    std::printf("    -> %s", result ? "true" : "false");
    if (!result && !facade.GetLastError().empty()) {
        std::printf("  (last error: %s)", facade.GetLastError().c_str());
    }
    std::printf("\n");
}

const char* CloudName(EOracleCloudType type) {
    switch (type) {
        case ORACLE_CLOUD_CLASSIC:
            return "Classic compute";
        case ORACLE_CLOUD_INFRASTRUCTURE:
            return "OCI";
        case ORACLE_CLOUD_CLASSIC_PAAS:
            return "Classic PaaS";
        default:
            return "Classic (unspecified)";
    }
}

void RunOne(EOracleCloudType type, Tally& tally) {
    std::printf("\n== cloud type %d (%s) ==\n", static_cast<int>(type), CloudName(type));
    COracleCloudWrapper facade(type);

    std::vector<SVMInfoLib> vms;
    std::vector<SRegionInfoLib> regions;
    std::vector<SKeyPairInfoLib> keys;
    std::vector<SOracleDBInstanceInfoLib> databases;
    SVMInfoLib vm;
    std::string created;

    const EOracleServiceType service =
        type == ORACLE_CLOUD_INFRASTRUCTURE ? OCI_SERVICE_IDENTITY : ORACLE_SERVICE_COMPUTE;
    Show(tally, facade, "Connect(\"demo-server\", \"demo-user\", \"\", ...)",
         [&] { return facade.Connect("demo-server", "demo-user", "", service); });
    Show(tally, facade, "SetOperationTimeout(60)", [&] { return facade.SetOperationTimeout(60); });
    Show(tally, facade, "CheckConnection()", [&] { return facade.CheckConnection(); });
    Show(tally, facade, "GetVMInfoList(vms, 0, \"\")", [&] { return facade.GetVMInfoList(vms, 0, ""); });
    Show(tally, facade, "GetVMInfo(\"demo-vm\", \"\", vm, 16, \"\")",
         [&] { return facade.GetVMInfo("demo-vm", "", vm, 16, ""); });
    Show(tally, facade, "GetRegionList(regions)", [&] { return facade.GetRegionList(regions); });
    Show(tally, facade, "GetKeyPairList(keys)", [&] { return facade.GetKeyPairList(keys); });
    Show(tally, facade, "GetDBInstanceList(databases)", [&] { return facade.GetDBInstanceList(databases); });
    Show(tally, facade, "LaunchInstance(vm)", [&] { return facade.LaunchInstance(vm); });
    Show(tally, facade, "RebootInstance(\"\")", [&] { return facade.RebootInstance(""); });
    Show(tally, facade, "DeleteVolume(\"\")", [&] { return facade.DeleteVolume(""); });
    Show(tally, facade, "CreateVolumeSnapshot(\"/vol\", ...)",
         [&] { return facade.CreateVolumeSnapshot("/vol", "demo", "snap", created); });
    Show(tally, facade, "FillVMInfoDetails(vm, 0, \"\")", [&] { return facade.FillVMInfoDetails(vm, 0, ""); });
}

}  // namespace

int main() {
    COracleCloudWrapper::SetLogSink(PrintLogLine);
    COracleCloudWrapper::SetLogLevel(1);

    std::printf("ocw-demo: the facade before any cloud requests exist.\n");
    std::printf("Calls the backend cannot serve answer false at once; argument checks and\n");
    std::printf("unfinished operations say why in the log.\n");

    Tally tally;
    const EOracleCloudType types[] = {ORACLE_CLOUD_UNSPECIFIED, ORACLE_CLOUD_CLASSIC, ORACLE_CLOUD_INFRASTRUCTURE,
                                      ORACLE_CLOUD_CLASSIC_PAAS};
    for (EOracleCloudType type : types) {
        RunOne(type, tally);
    }

    COracleCloudWrapper::SetLogSink(nullptr);
    std::printf("\nSummary: %zu facades built, %d calls, %d answered false, %d log lines.\n",
                sizeof(types) / sizeof(types[0]), tally.calls, tally.falseAnswers, g_logLines);
    return 0;
}
