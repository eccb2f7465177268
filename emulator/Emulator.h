#pragma once
// ocwemu::Emulator — the local OCI cloud, startable in-process.
//
//   ocwemu::EmulatorOptions opts;          // defaults: 127.0.0.1, free port, temp state dir, demo seed
//   opts.provisionMs = 100;                 // lifecycle transitions settle after 0.1 s
//   ocwemu::Emulator emu(opts);
//   if (!emu.start()) fail(emu.lastError());
//   const ocwemu::EmulatorInfo& i = emu.info();
//   // i.endpoint ("https://127.0.0.1:<port>"), i.caFile, i.ociConfig (OCI config file, profile
//   // DEFAULT), i.ini (library configuration with [VirtualServer] sOCIEndpointOverride,
//   // sCACertFile, nOCIOperationWaitTime=1, nOCIRequestRetryInitialIntervalInSeconds=1 and
//   // [Base] dBASEHOME), i.tenancy, i.user, i.fingerprint, i.keyFile, i.region
//   ...
//   emu.stop();                             // also done by the destructor
//
// The same port serves every OCI service (routing by path, any Host) and the
// admin interface under /_emulator/ (see common/AdminApi.h). Tests can reach
// the admin objects directly through stats(), requestLog(), faults() and
// store() as well.
//
// Thread-safety: start() and stop() from one thread; the server itself runs
// on its own worker threads.
#include "common/ApiKeys.h"
#include "common/FaultRules.h"
#include "common/RequestLog.h"
#include "common/Stats.h"
#include "common/Store.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ocwemu {

struct EmulatorOptions {
    std::string listenHost = "127.0.0.1";
    int port = 0;                 // 0: a free port
    std::string stateDir;         // empty: a new directory under $TMPDIR (or /tmp), removed by the destructor
    std::string seed = "demo";    // demo | empty | scale
    int compartments = 20;        // scale seed only
    int instances = 1000;         // scale seed only
    std::int64_t provisionMs = 1000;
    std::string passPhrase;       // encrypts the API key file when set
    std::vector<std::string> regions{"us-phoenix-1", "us-ashburn-1"};  // the first is the home region
    std::size_t pageSize = 10;    // default page size of lists
    int threads = 32;             // worker threads (one per open keep-alive connection)
    std::int64_t retentionMs = 12LL * 3600 * 1000;  // TERMINATED/DELETED resources stay readable this long
};

struct EmulatorInfo {
    std::string endpoint;  // "https://127.0.0.1:<port>"
    int port = 0;
    std::string caFile;
    std::string ociConfig;
    std::string ini;
    std::string tenancy;
    std::string user;
    std::string fingerprint;
    std::string keyFile;
    std::string region;    // home region
    std::string stateDir;
    std::string namespaceName;

    // The one line printed when ready: {"oci_endpoint", "ca_file", "oci_config",
    // "ini", "tenancy", "user", "fingerprint", "key_file", "region", ...}.
    std::string toJsonLine() const;
};

class Emulator {
public:
    explicit Emulator(EmulatorOptions options = {});
    ~Emulator();
    Emulator(const Emulator&) = delete;
    Emulator& operator=(const Emulator&) = delete;

    // Creates or reuses the state directory's files (TLS material, API key,
    // oci-config, ocw.ini), seeds the cloud and starts serving. Returns once
    // the port accepts connections; false with lastError() on failure.
    bool start();
    // Stops serving and joins the worker threads. Idempotent.
    void stop();

    const EmulatorInfo& info() const { return info_; }
    const std::string& lastError() const { return error_; }

    Stats& stats();
    RequestLog& requestLog();
    FaultRules& faults();
    Store& store();  // lock store().mutex() while touching it

private:
    struct Impl;
    EmulatorOptions options_;
    EmulatorInfo info_;
    std::string error_;
    std::string tempStateDir_;  // created by start(), removed by the destructor
    std::unique_ptr<Impl> impl_;
};

}  // namespace ocwemu
