#include "common/TlsMaterial.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>

namespace ocwemu {
namespace {

constexpr long kValidDays = 3650;
// A certificate that expires within this many seconds is replaced rather than
// handed to a server that may run for a while.
constexpr long kMinRemainingSeconds = 7L * 24 * 3600;

struct X509Deleter { void operator()(X509* p) const { X509_free(p); } };
struct PkeyDeleter { void operator()(EVP_PKEY* p) const { EVP_PKEY_free(p); } };
struct BioDeleter { void operator()(BIO* p) const { BIO_free(p); } };
struct BnDeleter { void operator()(BIGNUM* p) const { BN_free(p); } };
struct NamesDeleter { void operator()(GENERAL_NAMES* p) const { GENERAL_NAMES_free(p); } };
struct ExtDeleter { void operator()(X509_EXTENSION* p) const { X509_EXTENSION_free(p); } };
using X509Ptr = std::unique_ptr<X509, X509Deleter>;
using PkeyPtr = std::unique_ptr<EVP_PKEY, PkeyDeleter>;
using BioPtr = std::unique_ptr<BIO, BioDeleter>;
using BnPtr = std::unique_ptr<BIGNUM, BnDeleter>;
using NamesPtr = std::unique_ptr<GENERAL_NAMES, NamesDeleter>;
using ExtPtr = std::unique_ptr<X509_EXTENSION, ExtDeleter>;

// Drains OpenSSL's error queue into one readable text.
std::string OpenSslErrors() {
    std::string text;
    unsigned long code;
    while ((code = ERR_get_error()) != 0) {
        char buf[256];
        ERR_error_string_n(code, buf, sizeof(buf));
        if (!text.empty()) text += "; ";
        text += buf;
    }
    return text.empty() ? std::string("no OpenSSL error recorded") : text;
}

[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error("TLS material: " + what + " (" + OpenSslErrors() + ")");
}

std::string Lower(std::string s) {
    for (auto& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// Accepts host names and a leading "*." wildcard label; anything else (blanks,
// commas, empty labels) is refused before it can reach a certificate.
void CheckDnsName(const std::string& name) {
    std::string rest = name;
    if (rest.rfind("*.", 0) == 0) rest = rest.substr(2);
    bool ok = !rest.empty() && rest.size() <= 253 && rest.front() != '.' && rest.back() != '.' &&
              rest.find("..") == std::string::npos;
    for (char c : rest) {
        if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '.')) ok = false;
    }
    if (!ok) throw std::runtime_error("TLS material: invalid DNS name '" + name + "'");
}

// The octets of an IPv4 or IPv6 address text, as a subjectAltName holds them.
std::string IpOctets(const std::string& ip) {
    ASN1_OCTET_STRING* os = a2i_IPADDRESS(ip.c_str());
    if (!os) {
        ERR_clear_error();
        throw std::runtime_error("TLS material: invalid IP address '" + ip + "'");
    }
    std::string bytes(reinterpret_cast<const char*>(ASN1_STRING_get0_data(os)),
                      static_cast<size_t>(ASN1_STRING_length(os)));
    ASN1_OCTET_STRING_free(os);
    return bytes;
}

struct NameSet {
    std::set<std::string> dns;  // lower case
    std::set<std::string> ips;  // octets
};

NameSet WantedNames(const std::vector<std::string>& dnsNames, const std::vector<std::string>& ipAddresses) {
    NameSet set;
    for (const auto& n : dnsNames) {
        CheckDnsName(n);
        set.dns.insert(Lower(n));
    }
    for (const auto& ip : ipAddresses) set.ips.insert(IpOctets(ip));
    if (set.dns.empty() && set.ips.empty())
        throw std::runtime_error("TLS material: a server certificate needs at least one DNS name or IP address");
    return set;
}

NameSet CertificateNames(X509* cert) {
    NameSet set;
    NamesPtr gens(static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(cert, NID_subject_alt_name, nullptr, nullptr)));
    if (!gens) return set;
    for (int i = 0; i < sk_GENERAL_NAME_num(gens.get()); ++i) {
        const GENERAL_NAME* gen = sk_GENERAL_NAME_value(gens.get(), i);
        if (gen->type == GEN_DNS) {
            const ASN1_IA5STRING* s = gen->d.dNSName;
            set.dns.insert(Lower(std::string(reinterpret_cast<const char*>(ASN1_STRING_get0_data(s)),
                                             static_cast<size_t>(ASN1_STRING_length(s)))));
        } else if (gen->type == GEN_IPADD) {
            const ASN1_OCTET_STRING* s = gen->d.iPAddress;
            set.ips.insert(std::string(reinterpret_cast<const char*>(ASN1_STRING_get0_data(s)),
                                       static_cast<size_t>(ASN1_STRING_length(s))));
        }
    }
    return set;
}

PkeyPtr NewKey() {
    PkeyPtr key(EVP_EC_gen("P-256"));
    if (!key) Fail("cannot generate an EC P-256 key");
    return key;
}

void AddExtension(X509* cert, X509* issuer, int nid, const char* value) {
    X509V3_CTX ctx;
    X509V3_set_ctx_nodb(&ctx);
    X509V3_set_ctx(&ctx, issuer, cert, nullptr, nullptr, 0);
    ExtPtr ext(X509V3_EXT_conf_nid(nullptr, &ctx, nid, value));
    if (!ext || !X509_add_ext(cert, ext.get(), -1)) Fail(std::string("cannot add extension ") + value);
}

void SetSubject(X509* cert, const std::string& commonName) {
    X509_NAME* name = X509_get_subject_name(cert);
    auto add = [&](const char* field, const std::string& value) {
        if (!X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8,
                                        reinterpret_cast<const unsigned char*>(value.c_str()), -1, -1, 0))
            Fail("cannot set subject field " + std::string(field));
    };
    add("O", "OracleCloudSDKWrapper emulator");
    add("CN", commonName);
}

// A new certificate with random serial, ten years of validity (starting an hour
// back to tolerate clock skew) and the subject key set.
X509Ptr NewCertificate(EVP_PKEY* key, const std::string& commonName) {
    X509Ptr cert(X509_new());
    if (!cert || !X509_set_version(cert.get(), X509_VERSION_3)) Fail("cannot create a certificate");
    BnPtr serial(BN_new());
    // 127 random bits with the top bit clear: positive and under the 20-octet limit.
    if (!serial || !BN_rand(serial.get(), 127, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY) ||
        !BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(cert.get())))
        Fail("cannot set a random serial number");
    if (!X509_gmtime_adj(X509_getm_notBefore(cert.get()), -3600) ||
        !X509_time_adj_ex(X509_getm_notAfter(cert.get()), kValidDays, 0, nullptr))
        Fail("cannot set the validity period");
    SetSubject(cert.get(), commonName);
    if (!X509_set_pubkey(cert.get(), key)) Fail("cannot set the public key");
    return cert;
}

void Sign(X509* cert, EVP_PKEY* issuerKey) {
    if (X509_sign(cert, issuerKey, EVP_sha256()) <= 0) Fail("cannot sign the certificate");
}

X509Ptr MakeCa(EVP_PKEY* key) {
    X509Ptr cert = NewCertificate(key, "OracleCloudSDKWrapper emulator CA");
    if (!X509_set_issuer_name(cert.get(), X509_get_subject_name(cert.get()))) Fail("cannot set the issuer");
    AddExtension(cert.get(), cert.get(), NID_basic_constraints, "critical,CA:TRUE");
    AddExtension(cert.get(), cert.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    AddExtension(cert.get(), cert.get(), NID_subject_key_identifier, "hash");
    AddExtension(cert.get(), cert.get(), NID_authority_key_identifier, "keyid:always");
    Sign(cert.get(), key);
    return cert;
}

// The names go in as GENERAL_NAMEs rather than as a config string so that no
// character of a name can be read as config syntax.
void AddSubjectAltNames(X509* cert, const std::vector<std::string>& dnsNames,
                        const std::vector<std::string>& ipAddresses) {
    NamesPtr gens(sk_GENERAL_NAME_new_null());
    if (!gens) Fail("out of memory");
    for (const auto& n : dnsNames) {
        GENERAL_NAME* gen = GENERAL_NAME_new();
        ASN1_IA5STRING* s = ASN1_IA5STRING_new();
        if (!gen || !s || !ASN1_STRING_set(s, n.data(), static_cast<int>(n.size()))) {
            GENERAL_NAME_free(gen);
            ASN1_IA5STRING_free(s);
            Fail("cannot encode DNS name " + n);
        }
        GENERAL_NAME_set0_value(gen, GEN_DNS, s);
        sk_GENERAL_NAME_push(gens.get(), gen);
    }
    for (const auto& ip : ipAddresses) {
        GENERAL_NAME* gen = GENERAL_NAME_new();
        ASN1_OCTET_STRING* os = a2i_IPADDRESS(ip.c_str());
        if (!gen || !os) {
            GENERAL_NAME_free(gen);
            ASN1_OCTET_STRING_free(os);
            Fail("cannot encode IP address " + ip);
        }
        GENERAL_NAME_set0_value(gen, GEN_IPADD, os);
        sk_GENERAL_NAME_push(gens.get(), gen);
    }
    if (!X509_add1_ext_i2d(cert, NID_subject_alt_name, gens.get(), 0, X509V3_ADD_REPLACE))
        Fail("cannot add subjectAltName");
}

X509Ptr MakeServer(EVP_PKEY* key, X509* ca, EVP_PKEY* caKey, const std::vector<std::string>& dnsNames,
                   const std::vector<std::string>& ipAddresses) {
    std::string cn = !dnsNames.empty() ? dnsNames.front() : ipAddresses.front();
    if (cn.size() > 64) cn = "ocw-emulator";
    X509Ptr cert = NewCertificate(key, cn);
    if (!X509_set_issuer_name(cert.get(), X509_get_subject_name(ca))) Fail("cannot set the issuer");
    AddExtension(cert.get(), ca, NID_basic_constraints, "critical,CA:FALSE");
    AddExtension(cert.get(), ca, NID_key_usage, "critical,digitalSignature");
    AddExtension(cert.get(), ca, NID_ext_key_usage, "serverAuth");
    AddExtension(cert.get(), ca, NID_subject_key_identifier, "hash");
    AddExtension(cert.get(), ca, NID_authority_key_identifier, "keyid:always");
    AddSubjectAltNames(cert.get(), dnsNames, ipAddresses);
    Sign(cert.get(), caKey);
    return cert;
}

// Missing or unreadable files simply mean "create anew", so reading never throws.
X509Ptr ReadCert(const std::string& path) {
    BioPtr bio(BIO_new_file(path.c_str(), "r"));
    X509Ptr cert(bio ? PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr) : nullptr);
    ERR_clear_error();
    return cert;
}

PkeyPtr ReadKey(const std::string& path) {
    BioPtr bio(BIO_new_file(path.c_str(), "r"));
    PkeyPtr key(bio ? PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr) : nullptr);
    ERR_clear_error();
    return key;
}

bool LongEnoughValid(X509* cert) {
    time_t soon = time(nullptr) + kMinRemainingSeconds;
    time_t now = time(nullptr);
    return X509_cmp_time(X509_get0_notBefore(cert), &now) < 0 && X509_cmp_time(X509_get0_notAfter(cert), &soon) > 0;
}

bool UsableCa(X509* ca, EVP_PKEY* caKey) {
    bool ok = ca && caKey && X509_check_private_key(ca, caKey) == 1 && X509_check_ca(ca) >= 1 &&
              X509_verify(ca, caKey) == 1 && LongEnoughValid(ca);
    ERR_clear_error();
    return ok;
}

bool UsableServer(X509* cert, EVP_PKEY* key, X509* ca, EVP_PKEY* caKey, const NameSet& wanted) {
    if (!cert || !key) return false;
    bool ok = X509_check_private_key(cert, key) == 1 && X509_verify(cert, caKey) == 1 &&
              X509_check_issued(ca, cert) == X509_V_OK && LongEnoughValid(cert);
    ERR_clear_error();
    if (!ok) return false;
    NameSet have = CertificateNames(cert);
    for (const auto& n : wanted.dns)
        if (!have.dns.count(n)) return false;
    for (const auto& ip : wanted.ips)
        if (!have.ips.count(ip)) return false;
    return true;
}

// Writes next to the target and renames, so a concurrent reader sees either
// the old or the new file. Keys are created owner-only from the start.
template <typename WriteFn>
void WriteAtomically(const std::string& path, bool secret, WriteFn write) {
    std::string tmp = path + ".tmp." + std::to_string(getpid());
    int fd = open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, secret ? 0600 : 0644);
    if (fd < 0) throw std::runtime_error("TLS material: cannot create " + tmp + ": " + std::strerror(errno));
    BioPtr bio(BIO_new_fd(fd, BIO_CLOSE));
    if (!bio) {
        close(fd);
        unlink(tmp.c_str());
        Fail("cannot open " + tmp);
    }
    bool ok = write(bio.get()) && BIO_flush(bio.get()) == 1;
    if (ok) ok = fsync(fd) == 0;
    bio.reset();
    if (!ok) {
        unlink(tmp.c_str());
        Fail("cannot write " + path);
    }
    if (rename(tmp.c_str(), path.c_str()) != 0) {
        int err = errno;
        unlink(tmp.c_str());
        throw std::runtime_error("TLS material: cannot rename " + tmp + " to " + path + ": " + std::strerror(err));
    }
}

void WriteCert(const std::string& path, X509* cert) {
    WriteAtomically(path, false, [cert](BIO* b) { return PEM_write_bio_X509(b, cert) == 1; });
}

void WriteKey(const std::string& path, EVP_PKEY* key) {
    WriteAtomically(path, true, [key](BIO* b) {
        return PEM_write_bio_PrivateKey(b, key, nullptr, nullptr, 0, nullptr, nullptr) == 1;
    });
}

// Serialises makers within the process (flock locks belong to the open file,
// and two descriptors of one process would not exclude each other reliably
// across threads) and across processes.
class DirLock {
public:
    explicit DirLock(const std::string& dir) : m_guard(Mutex()) {
        std::string path = dir + "/.lock";
        m_fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (m_fd < 0) throw std::runtime_error("TLS material: cannot open " + path + ": " + std::strerror(errno));
        while (flock(m_fd, LOCK_EX) != 0) {
            if (errno != EINTR) {
                int err = errno;
                close(m_fd);
                throw std::runtime_error("TLS material: cannot lock " + path + ": " + std::strerror(err));
            }
        }
    }
    ~DirLock() {
        flock(m_fd, LOCK_UN);
        close(m_fd);
    }
    DirLock(const DirLock&) = delete;
    DirLock& operator=(const DirLock&) = delete;

private:
    static std::mutex& Mutex() {
        static std::mutex m;
        return m;
    }
    std::lock_guard<std::mutex> m_guard;
    int m_fd = -1;
};

TlsMaterial Paths(const std::string& dir) {
    TlsMaterial m;
    m.caCertFile = dir + "/ca.pem";
    m.caKeyFile = dir + "/ca-key.pem";
    m.serverCertFile = dir + "/server.pem";
    m.serverKeyFile = dir + "/server-key.pem";
    return m;
}

TlsMaterial Ensure(const std::string& dirIn, const std::vector<std::string>& dnsNames,
                   const std::vector<std::string>& ipAddresses, bool force) {
    if (dirIn.empty()) throw std::runtime_error("TLS material: no directory given");
    NameSet wanted = WantedNames(dnsNames, ipAddresses);
    std::string dir = dirIn;
    while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    if (ec) throw std::runtime_error("TLS material: cannot create directory " + dir + ": " + ec.message());

    DirLock lock(dir);
    TlsMaterial m = Paths(dir);
    X509Ptr ca;
    PkeyPtr caKey;
    if (!force) {
        ca = ReadCert(m.caCertFile);
        caKey = ReadKey(m.caKeyFile);
    }
    bool newCa = !UsableCa(ca.get(), caKey.get());
    if (newCa) {
        caKey = NewKey();
        ca = MakeCa(caKey.get());
    }
    if (!newCa) {
        X509Ptr server = ReadCert(m.serverCertFile);
        PkeyPtr serverKey = ReadKey(m.serverKeyFile);
        if (UsableServer(server.get(), serverKey.get(), ca.get(), caKey.get(), wanted)) return m;
    }
    PkeyPtr serverKey = NewKey();
    X509Ptr server = MakeServer(serverKey.get(), ca.get(), caKey.get(), dnsNames, ipAddresses);
    // Key before certificate: a server that reloads in between fails on a
    // mismatch rather than presenting a certificate whose key is gone.
    if (newCa) {
        WriteKey(m.caKeyFile, caKey.get());
        WriteCert(m.caCertFile, ca.get());
    }
    WriteKey(m.serverKeyFile, serverKey.get());
    WriteCert(m.serverCertFile, server.get());
    return m;
}

}  // namespace

TlsMaterial EnsureTlsMaterial(const std::string& dir, const std::vector<std::string>& dnsNames,
                              const std::vector<std::string>& ipAddresses) {
    return Ensure(dir, dnsNames, ipAddresses, false);
}

TlsMaterial RecreateTlsMaterial(const std::string& dir, const std::vector<std::string>& dnsNames,
                                const std::vector<std::string>& ipAddresses) {
    return Ensure(dir, dnsNames, ipAddresses, true);
}

}  // namespace ocwemu
