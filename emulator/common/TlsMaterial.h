#pragma once
#include <string>
#include <vector>

namespace ocwemu {

// Files of a private certificate authority and of one server certificate it
// issued. The CA certificate is what a client is told to trust (the library's
// "sCACertFile"); the server certificate and its key are what a TLS server
// presents.
struct TlsMaterial {
    std::string caCertFile;      // <dir>/ca.pem
    std::string caKeyFile;       // <dir>/ca-key.pem (mode 0600)
    std::string serverCertFile;  // <dir>/server.pem
    std::string serverKeyFile;   // <dir>/server-key.pem (mode 0600)
};

// Makes sure `dir` holds a CA and a server certificate issued by it whose
// subjectAltName lists every name of `dnsNames` and every address of
// `ipAddresses` (IPv4 or IPv6 text). DNS names may be wildcards of the form
// "*.example.com"; a wildcard covers exactly one label, so OCI service hosts
// need "*.us-phoenix-1.oraclecloud.com", not "*.oraclecloud.com". Keys are EC P-256, signatures SHA-256, validity ten years,
// serial numbers random.
//
// Files already there are reused when they are intact, unexpired, belong
// together and cover the names; a valid CA is kept even when the server
// certificate must be reissued, so clients that already trust it keep working.
// The directory is created when missing. Concurrent callers (threads or
// processes) on the same directory are serialised by a lock file; files are
// replaced by rename so a reader never sees half a file.
//
// Throws std::runtime_error with a readable text (including OpenSSL's reason)
// on bad names or any file or crypto failure.
TlsMaterial EnsureTlsMaterial(const std::string& dir, const std::vector<std::string>& dnsNames,
                              const std::vector<std::string>& ipAddresses);

// Like EnsureTlsMaterial, but always creates a new CA and server certificate.
TlsMaterial RecreateTlsMaterial(const std::string& dir, const std::vector<std::string>& dnsNames,
                                const std::vector<std::string>& ipAddresses);

}  // namespace ocwemu
