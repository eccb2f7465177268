// The CA and server certificate that loopback servers and the emulator present.
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "LoopbackTlsServer.h"
#include "common/TlsMaterial.h"

namespace {

std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

X509* LoadCert(const std::string& path) {
    FILE* f = fopen(path.c_str(), "r");
    if (!f) return nullptr;
    X509* c = PEM_read_X509(f, nullptr, nullptr, nullptr);
    fclose(f);
    return c;
}

// Verifies the server certificate against the CA alone, for a TLS server
// purpose and the given host name or IP address, the way a client would.
bool VerifiesFor(const ocwemu::TlsMaterial& m, const std::string& host, bool isIp) {
    X509* ca = LoadCert(m.caCertFile);
    X509* leaf = LoadCert(m.serverCertFile);
    X509_STORE* store = X509_STORE_new();
    X509_STORE_add_cert(store, ca);
    X509_STORE_CTX* ctx = X509_STORE_CTX_new();
    X509_STORE_CTX_init(ctx, store, leaf, nullptr);
    X509_VERIFY_PARAM* param = X509_STORE_CTX_get0_param(ctx);
    X509_VERIFY_PARAM_set_purpose(param, X509_PURPOSE_SSL_SERVER);
    if (isIp)
        X509_VERIFY_PARAM_set1_ip_asc(param, host.c_str());
    else
        X509_VERIFY_PARAM_set1_host(param, host.c_str(), host.size());
    bool ok = X509_verify_cert(ctx) == 1;
    X509_STORE_CTX_free(ctx);
    X509_STORE_free(store);
    X509_free(leaf);
    X509_free(ca);
    return ok;
}

TEST(TlsMaterial, IssuesServerCertificateForEveryNameFromItsOwnCa) {
    ocwtest::TempDir dir;
    auto m = ocwemu::EnsureTlsMaterial(dir.path() + "/tls", {"localhost", "*.us-phoenix-1.oraclecloud.com"},
                                       {"127.0.0.1", "::1"});
    EXPECT_EQ(m.caCertFile, dir.path() + "/tls/ca.pem");
    EXPECT_TRUE(VerifiesFor(m, "localhost", false));
    EXPECT_TRUE(VerifiesFor(m, "iaas.us-phoenix-1.oraclecloud.com", false)) << "wildcard covers service hosts";
    EXPECT_FALSE(VerifiesFor(m, "a.iaas.us-phoenix-1.oraclecloud.com", false)) << "a wildcard covers one label";
    EXPECT_TRUE(VerifiesFor(m, "127.0.0.1", true));
    EXPECT_TRUE(VerifiesFor(m, "::1", true));
    EXPECT_FALSE(VerifiesFor(m, "example.com", false));
    EXPECT_FALSE(VerifiesFor(m, "127.0.0.2", true));

    X509* ca = LoadCert(m.caCertFile);
    ASSERT_NE(ca, nullptr);
    EXPECT_EQ(X509_check_ca(ca), 1);
    EXPECT_TRUE(X509_get_key_usage(ca) & KU_KEY_CERT_SIGN);
    X509_free(ca);

    struct stat st {};
    ASSERT_EQ(stat(m.serverKeyFile.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u) << "private keys are owner-only";
    ASSERT_EQ(stat(m.caKeyFile.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
}

TEST(TlsMaterial, KeepsWhatStillFitsReissuesForNewNamesAndReplacesWhatIsDamaged) {
    ocwtest::TempDir dir;
    auto m = ocwemu::EnsureTlsMaterial(dir.path(), {"localhost", "a.example"}, {"127.0.0.1"});
    const std::string ca = Slurp(m.caCertFile), server = Slurp(m.serverCertFile), key = Slurp(m.serverKeyFile);
    ocwemu::EnsureTlsMaterial(dir.path(), {"A.EXAMPLE"}, {"127.0.0.1"});
    EXPECT_EQ(Slurp(m.caCertFile) + Slurp(m.serverCertFile) + Slurp(m.serverKeyFile), ca + server + key);

    auto next = ocwemu::EnsureTlsMaterial(dir.path(), {"localhost", "b.example"}, {"127.0.0.1"});
    EXPECT_EQ(Slurp(next.caCertFile), ca) << "clients trusting the CA keep working";
    EXPECT_TRUE(VerifiesFor(next, "b.example", false));

    std::ofstream(m.serverCertFile) << "not a certificate";
    EXPECT_TRUE(VerifiesFor(ocwemu::EnsureTlsMaterial(dir.path(), {"localhost"}, {}), "localhost", false));
    // A server key that does not belong to the certificate.
    ocwtest::TempDir other;
    std::ofstream(m.serverKeyFile) << Slurp(ocwemu::EnsureTlsMaterial(other.path(), {"localhost"}, {}).serverKeyFile);
    const std::string mismatched = Slurp(m.serverCertFile);
    ocwemu::EnsureTlsMaterial(dir.path(), {"localhost"}, {});
    EXPECT_NE(Slurp(m.serverCertFile), mismatched);
    EXPECT_EQ(Slurp(m.caCertFile), ca);

    // A lost CA key, or an explicit recreation, means a new CA.
    std::remove(m.caKeyFile.c_str());
    auto fresh = ocwemu::EnsureTlsMaterial(dir.path(), {"localhost"}, {});
    EXPECT_NE(Slurp(fresh.caCertFile), ca);
    EXPECT_TRUE(VerifiesFor(fresh, "localhost", false));
    const std::string freshCa = Slurp(fresh.caCertFile);
    EXPECT_NE(Slurp(ocwemu::RecreateTlsMaterial(dir.path(), {"localhost"}, {}).caCertFile), freshCa);
}

TEST(TlsMaterial, RejectsBadNamesWithReadableText) {
    ocwtest::TempDir dir;
    for (auto names : std::vector<std::vector<std::string>>{{"bad name"}, {"a,b"}, {"x..y"}, {"a.*.b"}, {""}}) {
        try {
            ocwemu::EnsureTlsMaterial(dir.path(), names, {});
            ADD_FAILURE() << "accepted " << names[0];
        } catch (const std::runtime_error& e) {
            EXPECT_NE(std::string(e.what()).find("'" + names[0] + "'"), std::string::npos) << e.what();
        }
    }
    EXPECT_THROW(ocwemu::EnsureTlsMaterial(dir.path(), {}, {"300.1.1.1"}), std::runtime_error);
    EXPECT_THROW(ocwemu::EnsureTlsMaterial(dir.path(), {}, {}), std::runtime_error);
    EXPECT_THROW(ocwemu::EnsureTlsMaterial("", {"localhost"}, {}), std::runtime_error);
    EXPECT_THROW(ocwemu::EnsureTlsMaterial("/proc/no/such/dir", {"localhost"}, {}), std::runtime_error);
}

}  // namespace
