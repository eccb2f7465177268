#include "Emulator.h"

#include "classic/ClassicCloud.h"
#include "classic/ClassicJson.h"
#include "common/AdminApi.h"
#include "common/HttpServer.h"
#include "common/Ids.h"
#include "common/Pipeline.h"
#include "common/Router.h"
#include "common/TimeUtil.h"
#include "common/TlsMaterial.h"
#include "oci/OciCloud.h"
#include "oci/OciErrors.h"
#include "oci/OciWorld.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace ocwemu {

struct Emulator::Impl {
    Store store;
    Stats stats;
    RequestLog log;
    FaultRules faults;
    KeyRegistry keys;
    OciWorld world;
    std::unique_ptr<OciCloud> oci;
    ClassicAccount classicAccount;
    std::unique_ptr<ClassicCloud> classic;
    Router routes;
    Router adminRoutes;
    std::unique_ptr<AdminApi> admin;
    std::unique_ptr<Pipeline> pipeline;
    HttpServer server;
    int defaultAttachmentLimit = 32;
};

std::string EmulatorInfo::toJsonLine() const {
    return ToJson(JObject{{"oci_endpoint", endpoint},
                          {"ca_file", caFile},
                          {"oci_config", ociConfig},
                          {"ini", ini},
                          {"tenancy", tenancy},
                          {"user", user},
                          {"fingerprint", fingerprint},
                          {"key_file", keyFile},
                          {"region", region},
                          {"state_dir", stateDir},
                          {"namespace", namespaceName},
                          {"port", port},
                          {"classic_endpoint", classicEndpoint},
                          {"paas_endpoint", paasEndpoint},
                          {"identity_domain", identityDomain},
                          {"classic_user", classicUser},
                          {"classic_profile", classicProfile}});
}

Emulator::Emulator(EmulatorOptions options) : options_(std::move(options)) {}

Emulator::~Emulator() {
    stop();
    if (!tempStateDir_.empty()) {
        std::error_code ec;
        std::filesystem::remove_all(tempStateDir_, ec);
    }
}

Stats& Emulator::stats() { return impl_->stats; }
RequestLog& Emulator::requestLog() { return impl_->log; }
FaultRules& Emulator::faults() { return impl_->faults; }
Store& Emulator::store() { return impl_->store; }
void Emulator::expireClassicSessions() {
    if (impl_ && impl_->classic) impl_->classic->expireSessions();
}

namespace {

bool MakeDirs(const std::string& path) {
    std::string cur;
    std::stringstream in(path);
    std::string part;
    if (!path.empty() && path[0] == '/') cur = "/";
    while (std::getline(in, part, '/')) {
        if (part.empty()) continue;
        cur += part + "/";
        if (::mkdir(cur.c_str(), 0700) != 0 && errno != EEXIST) return false;
    }
    return true;
}

bool WriteFileAtomic(const std::string& path, const std::string& text, mode_t mode) {
    const std::string tmp = path + ".tmp";
    {
        std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
        if (!out) return false;
        out << text;
        if (!out) return false;
    }
    ::chmod(tmp.c_str(), mode);
    return std::rename(tmp.c_str(), path.c_str()) == 0;
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool IsIpLiteral(const std::string& h) {
    return !h.empty() && h.find_first_not_of("0123456789.") == std::string::npos ? true
                                                                                  : h.find(':') != std::string::npos;
}

// The password of an earlier run on this state directory, or a new one.
std::string ClassicPasswordIn(const std::string& profile) {
    std::stringstream in(ReadFile(profile));
    std::string line;
    while (std::getline(in, line))
        if (line.rfind("password=", 0) == 0 && line.size() > 9) return line.substr(9);
    return "Ocw-" + RandomAlnum(16);
}

}  // namespace

bool Emulator::start() {
    if (impl_) {
        error_ = "the emulator is already started";
        return false;
    }
    if (options_.regions.empty()) {
        error_ = "at least one region is needed";
        return false;
    }
    if (options_.pageSize < 1 || options_.pageSize > 1000) {
        error_ = "the page size must be between 1 and 1000";
        return false;
    }
    auto impl = std::make_unique<Impl>();
    try {
        // State directory.
        std::string dir = options_.stateDir;
        if (dir.empty()) {
            const char* tmp = std::getenv("TMPDIR");
            std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/ocw-emulator-XXXXXX";
            std::vector<char> buf(templ.begin(), templ.end());
            buf.push_back('\0');
            if (!::mkdtemp(buf.data())) throw std::runtime_error("cannot create a temporary state directory");
            dir = buf.data();
            tempStateDir_ = dir;
        } else if (!MakeDirs(dir)) {
            throw std::runtime_error("cannot create the state directory " + dir);
        }
        char resolved[PATH_MAX];
        if (::realpath(dir.c_str(), resolved)) dir = resolved;
        info_.stateDir = dir;

        // TLS for 127.0.0.1, localhost and the services' canonical host names.
        std::vector<std::string> dns{"localhost"};
        for (const auto& r : options_.regions) {
            dns.push_back("*." + r + ".oraclecloud.com");
            dns.push_back("*." + r + ".oci.oraclecloud.com");
        }
        std::vector<std::string> ips{"127.0.0.1", "::1"};
        if (IsIpLiteral(options_.listenHost) && options_.listenHost != "0.0.0.0" && options_.listenHost != "::" &&
            options_.listenHost != "127.0.0.1" && options_.listenHost != "::1")
            ips.push_back(options_.listenHost);
        TlsMaterial tls = EnsureTlsMaterial(dir + "/tls", dns, ips);
        info_.caFile = tls.caCertFile;

        // The tenancy's identities stay the same across runs on one state directory.
        OciWorld& w = impl->world;
        const std::string idFile = dir + "/identity.json";
        JObject ids;
        std::string parseError;
        if (!ParseJsonObject(ReadFile(idFile), ids, parseError) || JStr(ids, "tenancy").empty()) {
            ids = JObject{{"tenancy", MakeOcid("tenancy", "")},
                          {"user", MakeOcid("user", "")},
                          {"namespace", "ocw" + RandomAlnum(9)}};
            if (!WriteFileAtomic(idFile, ToJson(ids) + "\n", 0600))
                throw std::runtime_error("cannot write " + idFile);
        }
        w.tenancyId = JStr(ids, "tenancy");
        w.userId = JStr(ids, "user");
        w.namespaceName = JStr(ids, "namespace");
        for (const auto& r : options_.regions) w.regions.push_back(OciRegion{r, RegionKeyFor(r)});
        w.provisionMs = options_.provisionMs < 0 ? 0 : options_.provisionMs;
        w.pageSize = options_.pageSize;
        w.retentionMs = options_.retentionMs;

        // The user's API key (reused while the pass phrase still opens it).
        info_.keyFile = dir + "/oci_api_key.pem";
        PKeyPtr key = LoadPrivateKeyPem(info_.keyFile, options_.passPhrase);
        if (!key) {
            key = GenerateRsaKey();
            std::string keyError;
            if (!key || !WritePrivateKeyPem(info_.keyFile, key.get(), options_.passPhrase, keyError))
                throw std::runtime_error("cannot create the API key: " + keyError);
            WriteFileAtomic(dir + "/oci_api_key_public.pem", PublicKeyPem(key.get()), 0644);
        }
        info_.fingerprint = impl->keys.add(w.tenancyId, w.userId, key, true);
        info_.tenancy = w.tenancyId;
        info_.user = w.userId;
        info_.region = w.homeRegion();
        info_.namespaceName = w.namespaceName;

        impl->oci = std::make_unique<OciCloud>(impl->store, w, impl->keys);
        ClassicAccount& ca = impl->classicAccount;
        ca.exists = options_.classicAccount;
        ca.identityDomain = options_.classicIdentityDomain;
        ca.user = options_.classicUser;
        ca.provisionMs = w.provisionMs;
        ca.sessionLifetimeMs = options_.classicSessionMs;
        ca.password = ClassicPasswordIn(dir + "/classic-profile");
        impl->classic = std::make_unique<ClassicCloud>(impl->store, ca);
        {
            std::lock_guard<std::mutex> lock(impl->store.mutex());
            std::string seedError;
            if (!impl->oci->seed(options_.seed, options_.compartments, options_.instances, NowMs(), seedError) ||
                !impl->classic->seed(options_.seed, options_.instances, NowMs(), seedError))
                throw std::runtime_error(seedError);
        }
        impl->oci->registerRoutes(impl->routes);
        impl->classic->registerRoutes(impl->routes);

        Impl* p = impl.get();
        AdminHooks hooks;
        hooks.info = [this] {
            JObject o;
            boost::system::error_code ec;
            JValue v = boost::json::parse(info_.toJsonLine(), ec);
            if (!ec && v.is_object()) o = v.as_object();
            return o;
        };
        hooks.addKey = [p](const JObject& body, JObject& out, std::string& error) {
            PKeyPtr pub = ParsePublicKeyPem(JStr(body, "publicKey"));
            if (!pub) {
                error = "publicKey must be a PEM public key";
                return false;
            }
            std::string user = JStr(body, "user");
            if (user.empty()) user = p->world.userId;
            const std::string fp = p->keys.add(p->world.tenancyId, user, pub, false);
            out = JObject{{"fingerprint", fp},
                          {"keyId", p->world.tenancyId + "/" + user + "/" + fp},
                          {"tenancy", p->world.tenancyId},
                          {"user", user}};
            return true;
        };
        hooks.limits = [p] { return JObject{{"attachmentsPerInstance", p->world.attachmentsPerInstance.load()}}; };
        hooks.setLimits = [p](const JObject& body, std::string& error) {
            auto n = JInt(body, "attachmentsPerInstance");
            if (!n || *n < 0 || *n > 1000) {
                error = "attachmentsPerInstance must be a number from 0 to 1000";
                return false;
            }
            p->world.attachmentsPerInstance = static_cast<int>(*n);
            return true;
        };
        const EmulatorOptions opts = options_;
        hooks.reseed = [p, opts](const std::string& seed, std::string& error) {
            if (p->pipeline) p->pipeline->clearRetryTokens();
            const std::string mode = seed.empty() ? opts.seed : seed;
            return p->oci->seed(mode, opts.compartments, opts.instances, NowMs(), error) &&
                   p->classic->seed(mode, opts.instances, NowMs(), error);
        };
        hooks.resetKeysAndLimits = [p] {
            p->keys.removeTemporary();
            p->world.attachmentsPerInstance = p->defaultAttachmentLimit;
        };
        impl->admin = std::make_unique<AdminApi>(impl->stats, impl->log, impl->faults, impl->store, hooks);
        impl->admin->registerRoutes(impl->adminRoutes);
        impl->classic->registerAdminRoutes(impl->adminRoutes);

        OciCloud* oci = impl->oci.get();
        std::map<RouteAuth, AuthScheme> schemes;
        schemes[RouteAuth::OciSignature] =
            AuthScheme{[oci](const ApiRequest& rq, RouteAuth a, ApiResponse& rs, std::string& reason) {
                           return oci->authenticate(rq, a, rs, reason);
                       },
                       OciError};
        schemes[RouteAuth::None] =
            AuthScheme{[](const ApiRequest&, RouteAuth, ApiResponse&, std::string&) { return true; }, OciError};
        schemes[RouteAuth::Admin] =
            AuthScheme{[](const ApiRequest& rq, RouteAuth, ApiResponse& rs, std::string& reason) {
                           if (IsLoopback(rq.remoteAddr)) return true;
                           reason = "admin from a remote address";
                           rs.error(403, "NotAllowed", "The admin interface answers loopback clients only.");
                           return false;
                       },
                       [](ApiResponse& rs, int status, const std::string& code, const std::string& message) {
                           rs.error(status, code, message);
                       }};
        impl->classic->addAuthSchemes(schemes);
        impl->pipeline = std::make_unique<Pipeline>(
            impl->routes, impl->adminRoutes, impl->store, impl->stats, impl->log, impl->faults, std::move(schemes),
            [oci](const ApiRequest& rq, RouteAuth a, std::string& region, ApiResponse& rs) {
                // Only OCI hosts name regions; Classic endpoints are sites of their own.
                return (a != RouteAuth::OciSignature && a != RouteAuth::OciSignatureUnsignedBody) ||
                       oci->resolveRegion(rq, region, rs);
            });

        Pipeline* pipeline = impl->pipeline.get();
        std::string listenError;
        if (!impl->server.start(options_.listenHost, options_.port, tls.serverCertFile, tls.serverKeyFile,
                                options_.threads, [pipeline](ApiRequest& rq, ApiResponse& rs) { pipeline->handle(rq, rs); },
                                listenError))
            throw std::runtime_error(listenError);
        info_.port = impl->server.port();
        const bool wildcard = options_.listenHost == "0.0.0.0" || options_.listenHost == "::" || options_.listenHost.empty();
        std::string host = wildcard ? std::string("127.0.0.1") : options_.listenHost;
        if (host.find(':') != std::string::npos) host = "[" + host + "]";
        info_.endpoint = "https://" + host + ":" + std::to_string(info_.port);

        // Client configuration files.
        info_.ociConfig = dir + "/oci-config";
        std::string cfg = "[DEFAULT]\nuser=" + info_.user + "\nfingerprint=" + info_.fingerprint +
                          "\nkey_file=" + info_.keyFile + "\ntenancy=" + info_.tenancy + "\nregion=" + info_.region +
                          "\n";
        if (!options_.passPhrase.empty()) cfg += "pass_phrase=" + options_.passPhrase + "\n";
        if (!WriteFileAtomic(info_.ociConfig, cfg, 0600)) throw std::runtime_error("cannot write " + info_.ociConfig);
        info_.ini = dir + "/ocw.ini";
        std::string ini = "[Base]\ndBASEHOME=" + dir + "\n\n[VirtualServer]\nsOCIEndpointOverride=" + info_.endpoint +
                          "\nsCACertFile=" + info_.caFile +
                          "\nnOCIOperationWaitTime=1\nnOCIRequestRetryInitialIntervalInSeconds=1\nnOracleCloudOperationWaitTime=1\n";
        if (!WriteFileAtomic(info_.ini, ini, 0600)) throw std::runtime_error("cannot write " + info_.ini);
        if (ca.exists) {
            info_.classicEndpoint = info_.endpoint;
            info_.paasEndpoint = info_.endpoint;
            info_.identityDomain = ca.identityDomain;
            info_.classicUser = ca.user;
            info_.classicPassword = ca.password;
            info_.classicProfile = dir + "/classic-profile";
            const std::string profile = "[DEFAULT]\ncompute_endpoint=" + info_.classicEndpoint +
                                        "\npaas_endpoint=" + info_.paasEndpoint +
                                        "\nidentity_domain=" + ca.identityDomain + "\nuser=" + ca.user +
                                        "\npassword=" + ca.password + "\nca_file=" + info_.caFile + "\n";
            if (!WriteFileAtomic(info_.classicProfile, profile, 0600))
                throw std::runtime_error("cannot write " + info_.classicProfile);
        }
    } catch (const std::exception& e) {
        error_ = e.what();
        impl->server.stop();
        return false;
    }
    impl_ = std::move(impl);
    return true;
}

void Emulator::stop() {
    if (impl_) impl_->server.stop();
}

}  // namespace ocwemu
