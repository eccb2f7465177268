#pragma once
// Shared fixture of the OCI connection tests: a generated API key on disk, a
// real HTTPS server on loopback, and a configuration that sends every request
// there while the signature keeps the canonical service host.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "LoopbackTlsServer.h"
#include "OciSignatureCheck.h"
#include "../signing/LogCapture.h"
#include "../signing/TestRsaKeys.h"
#include "transport/OracleCloudInfrastructureConnection.h"

namespace ocw_test {

constexpr const char* kTenancy = "ocid1.tenancy.oc1..aaaatenancy";
constexpr const char* kUser = "ocid1.user.oc1..aaaauser";
constexpr const char* kFingerprint = "20:3b:97:13:55:1c:5b:0d:d3:37:d8:50:4e:c5:3a:34";
constexpr const char* kPassphrase = "conn-Pass-phrase-QUUX";

inline EVP_PKEY* connectionKey()
{
    static PkeyPtr key = generateRsaKey();
    return key.get();
}

// Records the pauses instead of sleeping when asked to, so the
// back-off arithmetic can be checked without waiting for it.
class TestConnection : public OracleCloudSDKWrapper::COracleCloudInfrastructureConnection {
public:
    explicit TestConnection(bool recordPausesOnly)
        : COracleCloudInfrastructureConnection(nullptr), m_recordOnly(recordPausesOnly)
    {
    }
    std::vector<unsigned> pauses;

protected:
    void sleepBeforeRetry(unsigned seconds) override
    {
        pauses.push_back(seconds);
        if (!m_recordOnly) {
            COracleCloudInfrastructureConnection::sleepBeforeRetry(seconds);
        }
    }

private:
    bool m_recordOnly;
};

class OciConnectionFixture : public ::testing::Test {
protected:
    using Entries = ocwtest::ScopedConfigFile::Entries;

    void SetUp() override
    {
        m_keyFile = m_dir.write("api_key.pem", toPem(connectionKey(), KeyFormat::Pkcs8Encrypted, kPassphrase));
    }

    // Starts the server (after the test registered its handlers) and writes the
    // configuration: trust of its CA, the override, and `extra` entries.
    void startServer(const Entries& extra = {}, bool withOverride = true)
    {
        m_server.start();
        Entries vs = m_server.clientConfig();
        if (withOverride) {
            vs.emplace_back("sOCIEndpointOverride", m_server.baseUrl());
        }
        vs.insert(vs.end(), extra.begin(), extra.end());
        configure(vs);
    }

    void configure(const Entries& virtualServer, const Entries& base = {})
    {
        m_config.reset();
        ocwtest::ScopedConfigFile::Sections sections{{"VirtualServer", virtualServer}};
        if (!base.empty()) {
            sections.emplace_back("Base", base);
        }
        m_config = std::make_unique<ocwtest::ScopedConfigFile>(sections);
    }

    std::unique_ptr<TestConnection> connected(OracleCloudSDKWrapper::EOracleServiceType service =
                                                  OracleCloudSDKWrapper::OCI_SERVICE_CORE,
                                              bool recordPausesOnly = true)
    {
        auto c = std::make_unique<TestConnection>(recordPausesOnly);
        EXPECT_TRUE(c->connect(kTenancy, std::string(kUser) + "|" + kFingerprint + "|" + m_keyFile + "|us-ashburn-1",
                               kPassphrase, service));
        return c;
    }

    static std::string keyId() { return std::string(kTenancy) + "/" + kUser + "/" + kFingerprint; }

    // Empty when the recorded request carries a valid OCI signature.
    static std::string verify(const ocwtest::RecordedRequest& r)
    {
        return checkOciSignature(connectionKey(), keyId(), r.method, r.target, r.body,
                                 [&](const std::string& name) { return r.header(name); });
    }

    TempDir m_dir;
    std::string m_keyFile;
    ocwtest::LoopbackTlsServer m_server;
    std::unique_ptr<ocwtest::ScopedConfigFile> m_config;
};

}  // namespace ocw_test
