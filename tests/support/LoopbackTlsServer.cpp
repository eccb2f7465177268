#include "LoopbackTlsServer.h"

#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "common/TlsMaterial.h"
#include "platform/PlatformConfig.h"

namespace ocwtest {
namespace {

// One CA per test process: every server of the process shares it, and
// parallel test processes never rewrite each other's files.
const std::string& ProcessTlsDir() {
    static TempDir dir;
    return dir.path();
}

}  // namespace

std::string RecordedRequest::header(const std::string& name) const {
    auto it = headers.find(name);
    return it == headers.end() ? std::string() : it->second;
}

bool RecordedRequest::hasHeader(const std::string& name) const { return headers.find(name) != headers.end(); }

LoopbackTlsServer::LoopbackTlsServer() : LoopbackTlsServer(Options()) {}

LoopbackTlsServer::LoopbackTlsServer(Options options) : m_options(std::move(options)) {
    std::string dir = m_options.tlsDir.empty() ? ProcessTlsDir() : m_options.tlsDir;
    ocwemu::TlsMaterial tls = ocwemu::EnsureTlsMaterial(dir, m_options.dnsNames, m_options.ipAddresses);
    m_caFile = tls.caCertFile;
    m_server = std::make_unique<httplib::SSLServer>(tls.serverCertFile.c_str(), tls.serverKeyFile.c_str());
    if (!m_server->is_valid()) throw std::runtime_error("cannot set up the TLS server with " + tls.serverCertFile);
    m_server->set_keep_alive_timeout(m_options.keepAliveTimeoutSeconds);
    m_server->set_keep_alive_max_count(m_options.keepAliveMaxCount);
    m_server->set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_remotePorts.insert(req.remote_port);
        }
        (void)res;
        return httplib::Server::HandlerResponse::Unhandled;
    });
    // Runs after the handler and before the answer is written, so the record
    // is complete by the time the client sees the answer.
    m_server->set_post_routing_handler(
        [this](const httplib::Request& req, httplib::Response& res) { record(req, res); });
    m_port = m_server->bind_to_any_port("127.0.0.1");
    if (m_port <= 0) throw std::runtime_error("cannot bind a loopback port");
}

LoopbackTlsServer::~LoopbackTlsServer() {
    // A bound but never started server only releases its socket through stop().
    if (!m_started) {
        try {
            start();
        } catch (...) {
        }
    }
    stop();
}

httplib::Server& LoopbackTlsServer::server() { return *m_server; }

void LoopbackTlsServer::start() {
    if (m_started) return;
    m_started = true;
    m_thread = std::thread([this] { m_server->listen_after_bind(); });
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!m_server->is_running()) {
        if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("loopback server did not start");
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void LoopbackTlsServer::stop() {
    if (m_server && m_server->is_running()) m_server->stop();
    if (m_thread.joinable()) m_thread.join();
}

std::string LoopbackTlsServer::baseUrl() const { return "https://127.0.0.1:" + std::to_string(m_port); }

std::string LoopbackTlsServer::url(const std::string& path) const {
    if (!path.empty() && path[0] != '/') return baseUrl() + "/" + path;
    return baseUrl() + path;
}

std::vector<std::pair<std::string, std::string>> LoopbackTlsServer::clientConfig() const {
    return {{"sCACertFile", m_caFile}, {"nHttpConnectTimeoutSeconds", "2"}, {"nHttpTransferTimeoutSeconds", "5"}};
}

void LoopbackTlsServer::record(const httplib::Request& req, const httplib::Response& res) {
    RecordedRequest r;
    r.method = req.method;
    r.target = req.target;
    r.path = req.path;
    r.headers = req.headers;
    r.body = req.body;
    r.status = res.status;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_remotePorts.insert(req.remote_port);
    m_requests.push_back(std::move(r));
}

size_t LoopbackTlsServer::connectionCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_remotePorts.size();
}

size_t LoopbackTlsServer::requestCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests.size();
}

std::vector<RecordedRequest> LoopbackTlsServer::requests() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

RecordedRequest LoopbackTlsServer::lastRequest() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests.empty() ? RecordedRequest() : m_requests.back();
}

ScopedConfigFile::ScopedConfigFile(const std::string& iniText)
    : m_previous(OracleCloudSDKWrapper::PlatformConfig::getConfigFile()) {
    std::string pattern = (std::filesystem::temp_directory_path() / "ocw-config-XXXXXX.ini").string();
    int fd = mkstemps(&pattern[0], 4);
    if (fd < 0) throw std::runtime_error("cannot create a temporary configuration file");
    close(fd);
    m_path = pattern;
    std::ofstream(m_path, std::ios::binary | std::ios::trunc) << iniText;
    OracleCloudSDKWrapper::PlatformConfig::setConfigFile(m_path);
}

namespace {

std::string ToIni(const ScopedConfigFile::Sections& sections) {
    std::string text;
    for (const auto& section : sections) {
        text += "[" + section.first + "]\n";
        for (const auto& kv : section.second) text += kv.first + "=" + kv.second + "\n";
    }
    return text;
}

}  // namespace

ScopedConfigFile::ScopedConfigFile(const Sections& sections) : ScopedConfigFile(ToIni(sections)) {}

ScopedConfigFile::~ScopedConfigFile() {
    OracleCloudSDKWrapper::PlatformConfig::setConfigFile(m_previous);
    std::error_code ec;
    std::filesystem::remove(m_path, ec);
}

}  // namespace ocwtest
