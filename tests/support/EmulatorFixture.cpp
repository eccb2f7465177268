#include "EmulatorFixture.h"

#include <httplib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <thread>

#include "common/ApiKeys.h"
#include "common/TimeUtil.h"
#include "TestKeys.h"
#include "TestSecrets.h"
#include "platform/PlatformConfig.h"

namespace ocwtest {

using OracleCloudSDKWrapper::COracleCloudWrapper;

namespace {

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

// Writes down the secrets of the emulator's account (its API key, the Classic
// password) and, from then on, every secret a client sends it or it answers
// (what its request log masks), for the log tap's check.
void RecordEmulatorSecrets(ocwemu::Emulator& emulator) {
    if (LogTapDir().empty()) return;
    RecordPrivateKeyFile(emulator.info().keyFile);
    RecordSecret("password", emulator.info().classicPassword);
    emulator.requestLog().setSecretWitness([](const std::string& name, const std::string& value) {
        if (name != "authorization") {
            RecordSecret(name, value);
            return;
        }
        // Basic credentials: the encoded text, "user:password" and the password.
        RecordSecret("basic", value);
        const std::string decoded = Base64Decode(value);
        RecordSecret("basic", decoded);
        if (decoded.find(':') != std::string::npos) RecordSecret("password", decoded.substr(decoded.find(':') + 1));
    });
}

}  // namespace

ocwemu::Emulator* SharedEmulator() {
    // Started on first use; stopped, and its temporary state directory
    // removed, by the destructor when the program ends.
    static std::string startError;
    static std::unique_ptr<ocwemu::Emulator> emulator = [] {
        ocwemu::EmulatorOptions options;
        options.provisionMs = kProvisionMs;
        options.pageSize = kEmulatorPageSize;
        options.compartments = kScaleCompartments;
        options.instances = kScaleInstances;
        options.threads = 16;  // a keep-alive connection holds a worker: room for the concurrency test's agents
        auto started = std::make_unique<ocwemu::Emulator>(options);
        if (started->start()) {
            RecordEmulatorSecrets(*started);
            return started;
        }
        startError = started->lastError();
        return std::unique_ptr<ocwemu::Emulator>();
    }();
    if (!emulator) ADD_FAILURE() << "the emulator did not start: " << startError;
    return emulator.get();
}

// ---- fixture ----------------------------------------------------------------

void EmulatorTest::SetUp() {
    emulator_ = SharedEmulator();
    ASSERT_NE(emulator_, nullptr);
    ResetEmulator("demo");
    WriteConfig();
}

void EmulatorTest::ResetEmulator(const std::string& seed) {
    std::string answer;
    ASSERT_EQ(Admin("POST", "reset", "{\"seed\":\"" + seed + "\"}", &answer), 200) << answer;
}

int EmulatorTest::Admin(const std::string& method, const std::string& path, const std::string& body,
                        std::string* answer) {
    // The admin interface is unsigned and answers loopback clients only.
    httplib::Client client(info().endpoint);
    client.set_ca_cert_path(info().caFile.c_str());
    client.enable_server_certificate_verification(true);
    client.set_connection_timeout(5, 0);
    client.set_read_timeout(30, 0);
    const std::string target = "/_emulator/" + path;
    httplib::Result result = method == "GET"      ? client.Get(target)
                             : method == "DELETE" ? client.Delete(target)
                                                  : client.Post(target, body, "application/json");
    if (!result) {
        if (answer != nullptr) *answer = httplib::to_string(result.error());
        return 0;
    }
    if (answer != nullptr) *answer = result->body;
    return result->status;
}

void EmulatorTest::SetAttachmentLimit(int limit) {
    std::string answer;
    ASSERT_EQ(Admin("POST", "limits", "{\"attachmentsPerInstance\":" + std::to_string(limit) + "}", &answer), 200)
        << answer;
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
    RecordSecret("passphrase", passPhrase);
    auto facade = std::make_unique<COracleCloudWrapper>(OracleCloudSDKWrapper::ORACLE_CLOUD_INFRASTRUCTURE);
    if (!facade->Connect(info().tenancy, UserToken(region.empty() ? info().region : region, keyFile), passPhrase,
                         OracleCloudSDKWrapper::OCI_SERVICE_CORE)) {
        ADD_FAILURE() << "Connect failed: " << facade->GetLastError();
        return nullptr;
    }
    return facade;
}

std::unique_ptr<OciBackend> EmulatorTest::ConnectBackend() {
    auto backend = std::make_unique<OciBackend>();
    if (!backend->connection.connect(info().tenancy, UserToken(info().region), "",
                                     OracleCloudSDKWrapper::OCI_SERVICE_CORE)) {
        ADD_FAILURE() << "connect failed: " << backend->connection.GetLastError();
        return nullptr;
    }
    return backend;
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
    RecordPrivateKeyFile(file);
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

boost::json::object EmulatorTest::BodyOf(const ocwemu::LoggedRequest& request) {
    boost::system::error_code ec;
    boost::json::value v = boost::json::parse(request.body, ec);
    return !ec && v.is_object() ? v.as_object() : boost::json::object();
}

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

std::string EmulatorTest::MemberJson(const std::string& id, const std::string& member) {
    std::lock_guard<std::mutex> lock(emulator_->store().mutex());
    ocwemu::Resource* r = emulator_->store().get(id, ocwemu::NowMs());
    const boost::json::value* v = r == nullptr ? nullptr : r->doc.if_contains(member);
    return v == nullptr ? std::string() : boost::json::serialize(*v);
}

std::string EmulatorTest::StateOf(const std::string& id) {
    std::lock_guard<std::mutex> lock(emulator_->store().mutex());
    ocwemu::Resource* r = emulator_->store().get(id, ocwemu::NowMs());
    return r == nullptr ? std::string() : emulator_->store().state(*r, ocwemu::NowMs());
}

bool EmulatorTest::WaitForState(const std::string& id, const std::string& state) {
    for (int i = 0; i < 250; ++i) {
        if (StateOf(id) == state) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

}  // namespace ocwtest
