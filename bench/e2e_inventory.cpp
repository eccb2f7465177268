// End to end through the facade against an in-process emulator over HTTPS on
// loopback: what an inventory walk and a single request cost the agent.
//
//   bench_e2e_inventory --benchmark_repetitions=5 --benchmark_report_aggregates_only=true
//
// BM_VMInfoList     GetVMInfoList over the whole "scale" tenancy (20
//                   compartments, 10,000 instances) with nOCIPageLimit 100 and
//                   1000, one connected facade reused across iterations, as an
//                   agent does between inventories.
// BM_SignedGet      one GetVMInfo without details (a single signed GET of one
//                   instance) with the private key cache on and off: the
//                   per-request price of re-reading and decoding the key.
// BM_ClassicVMInfoList  GetVMInfoList over the Classic account of the same
//                   emulator (its "scale" seed: kClassicInstances instances in
//                   one user container, found by walking the directories).
// BM_ClassicVMInfo  one Classic GetVMInfo with its disks, by full name (one
//                   listing) and by short name (the walk first), each followed
//                   by the instance's attachments and one read per volume.
//
// Both run on wall time, because the caller waits for the server. Counters
// per iteration:
//   requests         requests the emulator answered (its own counter)
//   client_cpu_ms    CPU time of the calling thread: signing, TLS, curl, JSON
//   server_cpu_ms    CPU time of every other thread of the process, which are
//                    the emulator's workers (TLS, routing, serialising)
//   server_us_per_req  server_cpu_ms spread over the requests
// When client plus server CPU is well below the wall time on a loaded
// machine, the rest is waiting for a core, not work the emulator adds.
// Results and how to read them: docs/benchmarks.md.
#include <benchmark/benchmark.h>
#include <time.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Emulator.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "platform/PlatformConfig.h"
#include "transport/PrivateKeyCache.h"

using namespace OracleCloudSDKWrapper;

namespace {

constexpr int kCompartments = 20;
constexpr int kInstances = 10000;
// The Classic half of the "scale" seed holds at most 500 instances.
constexpr int kClassicInstances = 500;

ocwemu::Emulator* SharedEmulator()
{
    static std::unique_ptr<ocwemu::Emulator> emulator = [] {
        ocwemu::EmulatorOptions options;
        options.seed = "scale";
        options.compartments = kCompartments;
        options.instances = kInstances;
        options.provisionMs = 0;
        options.threads = 8;  // the benchmark holds one keep-alive connection at a time
        auto emu = std::make_unique<ocwemu::Emulator>(options);
        if (!emu->start()) {
            std::fprintf(stderr, "emulator did not start: %s\n", emu->lastError().c_str());
            return std::unique_ptr<ocwemu::Emulator>();
        }
        return emu;
    }();
    return emulator.get();
}

// A configuration of our own rather than the emulator's ocw.ini, so the page
// limit is the only thing that differs between the cases.
bool UseConfig(const ocwemu::EmulatorInfo& info, int pageLimit)
{
    const std::string file = info.stateDir + "/bench-limit-" + std::to_string(pageLimit) + ".ini";
    std::ofstream out(file, std::ios::trunc);
    out << "[Base]\ndBASEHOME=" << info.stateDir << "\n\n[VirtualServer]\n"
        << "sOCIEndpointOverride=" << info.endpoint << "\n"
        << "sCACertFile=" << info.caFile << "\n"
        << "nOCIPageLimit=" << pageLimit << "\n";
    out.close();
    if (!out) return false;
    PlatformConfig::setConfigFile(file);
    return true;
}

std::unique_ptr<COracleCloudWrapper> ConnectFacade(const ocwemu::EmulatorInfo& info, std::string& error)
{
    auto facade = std::make_unique<COracleCloudWrapper>(ORACLE_CLOUD_INFRASTRUCTURE);
    const std::string user = info.user + "|" + info.fingerprint + "|" + info.keyFile + "|" + info.region;
    if (!facade->Connect(info.tenancy, user, "", OCI_SERVICE_CORE)) {
        error = "Connect failed: " + facade->GetLastError();
        return nullptr;
    }
    return facade;
}

double CpuSeconds(clockid_t clock)
{
    timespec ts{};
    clock_gettime(clock, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// Client-thread and whole-process CPU plus the emulator's request count,
// taken around the timed loop (setup requests such as Connect stay outside).
struct Usage {
    double thread = 0;
    double process = 0;
    std::uint64_t requests = 0;

    static Usage now(ocwemu::Emulator& emu)
    {
        return Usage{CpuSeconds(CLOCK_THREAD_CPUTIME_ID), CpuSeconds(CLOCK_PROCESS_CPUTIME_ID), emu.stats().total()};
    }
};

void ReportUsage(benchmark::State& state, const Usage& before, const Usage& after)
{
    const double clientCpu = after.thread - before.thread;
    const double serverCpu = (after.process - before.process) - clientCpu;
    const double requests = static_cast<double>(after.requests - before.requests);
    state.counters["requests"] = benchmark::Counter(requests, benchmark::Counter::kAvgIterations);
    state.counters["client_cpu_ms"] = benchmark::Counter(clientCpu * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["server_cpu_ms"] = benchmark::Counter(serverCpu * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["server_us_per_req"] = requests > 0 ? serverCpu * 1e6 / requests : 0.0;
}

// state.range(0): nOCIPageLimit.
void BM_VMInfoList(benchmark::State& state)
{
    ocwemu::Emulator* emu = SharedEmulator();
    if (emu == nullptr) {
        state.SkipWithError("emulator did not start");
        return;
    }
    const int pageLimit = static_cast<int>(state.range(0));
    if (!UseConfig(emu->info(), pageLimit)) {
        state.SkipWithError("cannot write the configuration");
        return;
    }
    std::string error;
    std::unique_ptr<COracleCloudWrapper> facade = ConnectFacade(emu->info(), error);
    if (!facade) {
        state.SkipWithError(error.c_str());
        return;
    }
    std::vector<SVMInfoLib> vms;
    vms.reserve(kInstances);
    const Usage before = Usage::now(*emu);
    for (auto _ : state) {
        vms.clear();
        if (!facade->GetVMInfoList(vms, 0, "")) {
            error = "GetVMInfoList failed: " + facade->GetLastError();
            state.SkipWithError(error.c_str());
            break;
        }
        if (vms.size() != static_cast<size_t>(kInstances)) {
            error = "GetVMInfoList returned " + std::to_string(vms.size()) + " instances";
            state.SkipWithError(error.c_str());
            break;
        }
    }
    ReportUsage(state, before, Usage::now(*emu));
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(vms.size()));
}

// state.range(0): 1 = private key cache on.
void BM_SignedGet(benchmark::State& state)
{
    ocwemu::Emulator* emu = SharedEmulator();
    if (emu == nullptr) {
        state.SkipWithError("emulator did not start");
        return;
    }
    const bool cache = state.range(0) != 0;
    if (!UseConfig(emu->info(), 0)) {
        state.SkipWithError("cannot write the configuration");
        return;
    }
    std::string error;
    std::unique_ptr<COracleCloudWrapper> facade = ConnectFacade(emu->info(), error);
    std::vector<SVMInfoLib> vms;
    if (facade) {
        // One instance id to read; the first page is enough.
        std::vector<SHostInfoLib> compartments;
        if (facade->GetHostInfoList(compartments, "", 0, "") && !compartments.empty()) {
            for (const SHostInfoLib& c : compartments) {
                if (facade->GetVMInfoListForHost(vms, c.hostId, c.hostName, 0, "") && !vms.empty()) break;
            }
        }
    }
    if (!facade || vms.empty()) {
        state.SkipWithError(facade ? "no instance to read" : error.c_str());
        return;
    }
    const std::string id = vms.front().guid;
    PrivateKeyCache::instance().setEnabled(cache);
    SVMInfoLib vm;
    const Usage before = Usage::now(*emu);
    for (auto _ : state) {
        if (!facade->GetVMInfo("", id, vm, 0, "")) {
            error = "GetVMInfo failed: " + facade->GetLastError();
            state.SkipWithError(error.c_str());
            break;
        }
        benchmark::DoNotOptimize(vm.guid.data());
    }
    ReportUsage(state, before, Usage::now(*emu));
    state.SetItemsProcessed(state.iterations());
    state.SetLabel(cache ? "key cache on" : "key cache off");
    PrivateKeyCache::instance().setEnabled(true);
}

std::unique_ptr<COracleCloudWrapper> ConnectClassicFacade(const ocwemu::EmulatorInfo& info, std::string& error)
{
    auto facade = std::make_unique<COracleCloudWrapper>(ORACLE_CLOUD_CLASSIC);
    if (!facade->Connect(info.classicEndpoint, info.identityDomain + "/" + info.classicUser, info.classicPassword,
                         ORACLE_SERVICE_COMPUTE)) {
        error = "Classic Connect failed: " + facade->GetLastError();
        return nullptr;
    }
    return facade;
}

void BM_ClassicVMInfoList(benchmark::State& state)
{
    ocwemu::Emulator* emu = SharedEmulator();
    std::string error;
    std::unique_ptr<COracleCloudWrapper> facade =
        emu != nullptr && UseConfig(emu->info(), 0) ? ConnectClassicFacade(emu->info(), error) : nullptr;
    if (!facade) {
        state.SkipWithError(emu == nullptr ? "emulator did not start" : error.c_str());
        return;
    }
    std::vector<SVMInfoLib> vms;
    const Usage before = Usage::now(*emu);
    for (auto _ : state) {
        vms.clear();
        if (!facade->GetVMInfoList(vms, 0, "") || vms.size() != static_cast<size_t>(kClassicInstances)) {
            error = "GetVMInfoList: " + std::to_string(vms.size()) + " instances; " + facade->GetLastError();
            state.SkipWithError(error.c_str());
            break;
        }
    }
    ReportUsage(state, before, Usage::now(*emu));
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(vms.size()));
}

// state.range(0): 1 = by short name ("vm250"), 0 = by full name.
void BM_ClassicVMInfo(benchmark::State& state)
{
    ocwemu::Emulator* emu = SharedEmulator();
    std::string error;
    std::unique_ptr<COracleCloudWrapper> facade =
        emu != nullptr && UseConfig(emu->info(), 0) ? ConnectClassicFacade(emu->info(), error) : nullptr;
    SVMInfoLib vm;
    if (!facade || !facade->GetVMInfo("vm250", "", vm, 16, "")) {
        state.SkipWithError(facade ? "no instance vm250" : error.c_str());
        return;
    }
    const bool shortName = state.range(0) != 0;
    const std::string name = shortName ? std::string("vm250") : vm.fullName;
    const Usage before = Usage::now(*emu);
    for (auto _ : state) {
        if (!facade->GetVMInfo(name, "", vm, 16, "") || vm.disks.size() != 1) {
            error = "GetVMInfo failed: " + facade->GetLastError();
            state.SkipWithError(error.c_str());
            break;
        }
    }
    ReportUsage(state, before, Usage::now(*emu));
    state.SetItemsProcessed(state.iterations());
    state.SetLabel(shortName ? "short name" : "full name");
}

}  // namespace

BENCHMARK(BM_ClassicVMInfoList)->MinTime(1.5)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ClassicVMInfo)->ArgName("short")->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_VMInfoList)->ArgName("page_limit")->Arg(100)->Arg(1000)->MinTime(1.5)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SignedGet)->ArgName("cache")->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
