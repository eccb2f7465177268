#pragma once
// ocwemu::Emulator — the local OCI and Cloud Classic clouds, startable in-process.
//
//   ocwemu::EmulatorOptions opts;          // defaults: 127.0.0.1, free port, temp state dir, demo seed
//   opts.provisionMs = 100;                 // lifecycle transitions settle after 0.1 s
//   ocwemu::Emulator emu(opts);
//   if (!emu.start()) fail(emu.lastError());
//   const ocwemu::EmulatorInfo& i = emu.info();
//   // i.endpoint ("https://127.0.0.1:<port>"), i.caFile, i.ociConfig (OCI config file, profile
//   // DEFAULT), i.ini (library configuration with [VirtualServer] sOCIEndpointOverride,
//   // sCACertFile, nOCIOperationWaitTime=1, nOCIRequestRetryInitialIntervalInSeconds=1,
//   // nOracleCloudOperationWaitTime=1 and
//   // [Base] dBASEHOME), i.tenancy, i.user, i.fingerprint, i.keyFile, i.region
//   ...
//   emu.stop();                             // also done by the destructor
//
// The same port serves every OCI service (routing by path, any Host), Compute
// Classic and the Classic PaaS services (their paths do not collide), and the
// admin interface under /_emulator/ (see common/AdminApi.h). Tests can reach
// the admin objects directly through stats(), requestLog(), faults() and
// store() as well.
//
// Cloud Classic (unless options.classicAccount is false): one account whose
// identity domain and user are options; its password is made once per state
// directory. In-process users find everything in info():
//   i.classicEndpoint   Compute Classic REST endpoint ("https://127.0.0.1:<port>"; login at
//                       "authenticate/" as "/Compute-<identityDomain>/<classicUser>")
//   i.paasEndpoint      the PaaS REST endpoint (basic credentials <classicUser>:<password>,
//                       X-ID-TENANT-NAME: <identityDomain>)
//   i.identityDomain, i.classicUser
//   i.classicPassword   the password; in-process only: never in the ready line nor a log
//   i.classicProfile    the Classic profile file (mode 0600; keys in docs/emulator.md)
// Sessions last options.classicSessionMs (GET "refresh/" extends one);
// expireClassicSessions() ends them all at once, as DELETE
// /_emulator/classic/sessions does, so a test can make a session die in the
// middle of a wait.
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
    bool classicAccount = true;                     // serve Cloud Classic (Compute Classic and PaaS)
    std::string classicIdentityDomain = "acme";
    std::string classicUser = "jdoe";
    std::int64_t classicSessionMs = 30LL * 60 * 1000;  // lifetime of a Compute Classic login session
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
    // Cloud Classic; empty when the emulator serves no Classic account.
    std::string classicEndpoint;
    std::string paasEndpoint;
    std::string identityDomain;
    std::string classicUser;
    std::string classicProfile;
    std::string classicPassword;  // never part of toJsonLine()

    // The one line printed when ready: {"oci_endpoint", "ca_file", "oci_config",
    // "ini", "tenancy", "user", "fingerprint", "key_file", "region", ...,
    // "classic_endpoint", "paas_endpoint", "identity_domain", "classic_user",
    // "classic_profile"}.
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
    // Ends every Compute Classic session now: the next request with an old
    // cookie gets 401 "Authorization token is invalid".
    void expireClassicSessions();

private:
    struct Impl;
    EmulatorOptions options_;
    EmulatorInfo info_;
    std::string error_;
    std::string tempStateDir_;  // created by start(), removed by the destructor
    std::unique_ptr<Impl> impl_;
};

}  // namespace ocwemu
