#include "e2e/EmulatorFixture.h"

#include <httplib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "common/ApiKeys.h"
#include "common/TimeUtil.h"
#include "platform/DebugLog.h"
#include "platform/PlatformConfig.h"

namespace ocwtest {
namespace e2e {

using OracleCloudSDKWrapper::COracleCloudWrapper;

namespace {

// Started once, stopped by the environment at the end of the program (or by
// the static destructor when no environment ran).
struct EmulatorHolder {
    std::mutex mutex;
    std::unique_ptr<ocwemu::Emulator> emulator;
    std::string startError;
    bool tried = false;
};

EmulatorHolder& Holder() {
    static EmulatorHolder holder;
    return holder;
}

class StopEmulatorAtEnd : public ::testing::Environment {
public:
    void TearDown() override {
        EmulatorHolder& h = Holder();
        std::lock_guard<std::mutex> lock(h.mutex);
        if (!h.emulator) return;
        h.emulator->stop();
        // The state directory is this run's own (a new temporary one), so
        // nothing of it is needed afterwards.
        std::error_code ignored;
        std::filesystem::remove_all(h.emulator->info().stateDir, ignored);
    }
};

// Registered while the test program starts; gtest owns the object.
[[maybe_unused]] const ::testing::Environment* const kEnvironment = ::testing::AddGlobalTestEnvironment(new StopEmulatorAtEnd);

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

ocwemu::Emulator* SharedEmulator() {
    EmulatorHolder& h = Holder();
    std::lock_guard<std::mutex> lock(h.mutex);
    if (!h.tried) {
        h.tried = true;
        ocwemu::EmulatorOptions options;
        options.provisionMs = kProvisionMs;
        options.pageSize = kEmulatorPageSize;
        options.compartments = kScaleCompartments;
        options.instances = kScaleInstances;
        options.threads = 8;
        auto emulator = std::make_unique<ocwemu::Emulator>(options);
        if (emulator->start()) {
            h.emulator = std::move(emulator);
        } else {
            h.startError = emulator->lastError();
        }
    }
    if (!h.emulator) {
        ADD_FAILURE() << "the emulator did not start: " << h.startError;
        return nullptr;
    }
    return h.emulator.get();
}

// ---- log capture ------------------------------------------------------------

struct ScopedLogCapture::State {
    mutable std::mutex mutex;
    std::vector<CapturedLogLine> lines;
};

ScopedLogCapture::ScopedLogCapture(int level) : state_(std::make_shared<State>()) {
    std::shared_ptr<State> state = state_;
    OracleCloudSDKWrapper::DebugLog::SetSink([state](const OracleCloudSDKWrapper::LogRecord& record) {
        std::lock_guard<std::mutex> lock(state->mutex);
        state->lines.push_back(CapturedLogLine{record.level, record.signature ? record.signature : "", record.text});
    });
    OracleCloudSDKWrapper::DebugLog::SetThreshold(level);
}

ScopedLogCapture::~ScopedLogCapture() {
    OracleCloudSDKWrapper::DebugLog::SetSink(nullptr);
    OracleCloudSDKWrapper::DebugLog::ResetThreshold();
}

std::vector<CapturedLogLine> ScopedLogCapture::lines() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->lines;
}

std::vector<CapturedLogLine> ScopedLogCapture::matching(const std::string& needle) const {
    std::vector<CapturedLogLine> out;
    for (const CapturedLogLine& line : lines()) {
        if (line.text.find(needle) != std::string::npos) out.push_back(line);
    }
    return out;
}

ScopedLogTrigger::ScopedLogTrigger(const std::string& needle, std::function<void()> action, int level)
    : fired_(std::make_shared<bool>(false)) {
    std::shared_ptr<bool> fired = fired_;
    OracleCloudSDKWrapper::DebugLog::SetSink(
        [needle, action, fired](const OracleCloudSDKWrapper::LogRecord& record) {
            if (!*fired && record.text.find(needle) != std::string::npos) {
                *fired = true;
                action();
            }
        });
    OracleCloudSDKWrapper::DebugLog::SetThreshold(level);
}

ScopedLogTrigger::~ScopedLogTrigger() {
    OracleCloudSDKWrapper::DebugLog::SetSink(nullptr);
    OracleCloudSDKWrapper::DebugLog::ResetThreshold();
}

// ---- fixture ----------------------------------------------------------------

void EmulatorTest::SetUp() {
    emulator_ = SharedEmulator();
    ASSERT_NE(emulator_, nullptr);
    ResetEmulator("demo");
    WriteConfig();
}

void EmulatorTest::ResetEmulator(const std::string& seed) {
    // The admin interface is the only way to re-seed; it is unsigned and
    // answers loopback clients only.
    httplib::Client client(info().endpoint);
    client.set_ca_cert_path(info().caFile.c_str());
    client.enable_server_certificate_verification(true);
    client.set_connection_timeout(5, 0);
    client.set_read_timeout(30, 0);
    std::string body = "{\"seed\":\"" + seed + "\"}";
    httplib::Result result = client.Post("/_emulator/reset", body, "application/json");
    ASSERT_TRUE(result) << "reset request failed: " << httplib::to_string(result.error());
    ASSERT_EQ(result->status, 200) << result->body;
}

std::string EmulatorTest::ScratchDir() const {
    std::string dir = info().stateDir + "/e2e-" + std::to_string(::getpid());
    ::mkdir(dir.c_str(), 0700);
    return dir;
}

void EmulatorTest::WriteConfig(const std::map<std::string, std::string>& overrides) {
    std::map<std::string, std::string> vs{
        {"sOCIEndpointOverride", info().endpoint},
        {"sCACertFile", info().caFile},
        {"nOCIRequestRetryInitialIntervalInSeconds", "0"},
        {"sOCIRequestRetryIntervalMultiplier", "1.0"},
        {"nOCIMaximumRequestRetryCount", "6"},
        {"nOCIOperationWaitTime", "1"},
        {"nOCIOperationTimeout", "60"},
        {"nHttpConnectTimeoutSeconds", "5"},
        {"nHttpTransferTimeoutSeconds", "30"},
        {"nOracleCloudOperationWaitTime", "1"},
        {"nOracleCloudOperationTimeout", "60"},
    };
    for (const auto& kv : overrides) {
        if (kv.second.empty()) {
            vs.erase(kv.first);
        } else {
            vs[kv.first] = kv.second;
        }
    }
    configFile_ = ScratchDir() + "/ocw.ini";
    {
        std::ofstream out(configFile_, std::ios::trunc);
        out << "[Base]\ndBASEHOME=" << info().stateDir << "\n\n[VirtualServer]\n";
        for (const auto& kv : vs) out << kv.first << "=" << kv.second << "\n";
        ASSERT_TRUE(out.good()) << "cannot write " << configFile_;
    }
    OracleCloudSDKWrapper::PlatformConfig::setConfigFile(configFile_);
}

std::string EmulatorTest::UserToken(const std::string& region, const std::string& keyFile) const {
    std::string token = info().user + "|" + info().fingerprint + "|" + (keyFile.empty() ? info().keyFile : keyFile);
    if (!region.empty()) token += "|" + region;
    return token;
}

std::unique_ptr<COracleCloudWrapper> EmulatorTest::ConnectFacade(const std::string& region,
                                                                 const std::string& keyFile,
                                                                 const std::string& passPhrase) {
    auto facade = std::make_unique<COracleCloudWrapper>(OracleCloudSDKWrapper::ORACLE_CLOUD_INFRASTRUCTURE);
    if (!facade->Connect(info().tenancy, UserToken(region.empty() ? info().region : region, keyFile), passPhrase,
                         OracleCloudSDKWrapper::OCI_SERVICE_CORE)) {
        ADD_FAILURE() << "Connect failed: " << facade->GetLastError();
        return nullptr;
    }
    return facade;
}

std::string EmulatorTest::WriteUnknownKeyFile() {
    ocwemu::PKeyPtr key = ocwemu::GenerateRsaKey();
    if (!key) {
        ADD_FAILURE() << "cannot generate an RSA key";
        return {};
    }
    static int counter = 0;
    std::string file = ScratchDir() + "/unknown-key-" + std::to_string(++counter) + ".pem";
    std::string error;
    if (!ocwemu::WritePrivateKeyPem(file, key.get(), "", error)) {
        ADD_FAILURE() << "cannot write " << file << ": " << error;
        return {};
    }
    return file;
}

std::vector<ocwemu::LoggedRequest> EmulatorTest::Requests() const {
    return emulator_->requestLog().last(1000000);
}

std::vector<ocwemu::LoggedRequest> EmulatorTest::RequestsTo(const std::string& method,
                                                            const std::string& targetPrefix,
                                                            const std::string& hostPart) const {
    std::vector<ocwemu::LoggedRequest> out;
    for (ocwemu::LoggedRequest& r : Requests()) {
        if (!method.empty() && r.method != method) continue;
        if (!StartsWith(r.target, targetPrefix)) continue;
        if (!hostPart.empty() && r.host.find(hostPart) == std::string::npos) continue;
        out.push_back(std::move(r));
    }
    return out;
}

size_t EmulatorTest::CountRequests(const std::string& method, const std::string& targetPrefix,
                                   const std::string& hostPart) const {
    return RequestsTo(method, targetPrefix, hostPart).size();
}

void EmulatorTest::ClearRequestLog() { emulator_->requestLog().clear(); }

std::string EmulatorTest::AddStatusFault(const std::string& method, const std::string& pathPrefix, int status,
                                         int times, const std::string& hostPart) {
    ocwemu::FaultRule rule;
    rule.method = method;
    rule.pathPrefix = pathPrefix;
    rule.host = hostPart;
    rule.action = "status";
    rule.status = status;
    rule.times = times;
    ocwemu::DefaultErrorFor(status, rule.code, rule.message);
    return emulator_->faults().add(rule);
}

void EmulatorTest::RemoveFault(const std::string& id) { emulator_->faults().remove(id); }

void EmulatorTest::HoldState(const std::string& resourceId, const std::string& state) {
    std::lock_guard<std::mutex> lock(emulator_->store().mutex());
    emulator_->store().hold(resourceId, state);
}

void EmulatorTest::ReleaseState(const std::string& resourceId) {
    std::lock_guard<std::mutex> lock(emulator_->store().mutex());
    emulator_->store().release(resourceId);
}

std::string EmulatorTest::FindResourceId(const std::string& kind, const std::string& name) {
    std::lock_guard<std::mutex> lock(emulator_->store().mutex());
    for (ocwemu::Resource* r : emulator_->store().list(kind, "", ocwemu::NowMs())) {
        if (ocwemu::JStr(r->doc, "displayName") == name || ocwemu::JStr(r->doc, "name") == name) return r->id;
    }
    return {};
}

std::vector<std::string> EmulatorTest::ResourceIds(const std::string& kind, const std::string& compartmentId) {
    std::lock_guard<std::mutex> lock(emulator_->store().mutex());
    std::vector<std::string> ids;
    for (ocwemu::Resource* r : emulator_->store().list(kind, compartmentId, ocwemu::NowMs())) ids.push_back(r->id);
    return ids;
}

std::string EmulatorTest::ResourceMember(const std::string& id, const std::string& member) {
    std::lock_guard<std::mutex> lock(emulator_->store().mutex());
    ocwemu::Resource* r = emulator_->store().get(id, ocwemu::NowMs());
    if (r == nullptr) return {};
    if (member == "id") return r->id;
    return ocwemu::JStr(r->doc, member.c_str());
}

}  // namespace e2e
}  // namespace ocwtest
