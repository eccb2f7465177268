#pragma once
// Helpers shared by the restore and backup-cycle operation tests: an operations
// object of its own (for the calls the facade does not expose with every
// argument), the demo world's placement, a PuTTY key text, request body
// reading and the emulator's attachment limit.
#include <gtest/gtest.h>
#include <httplib.h>

#include <boost/json.hpp>
#include <memory>
#include <string>

#include "common/JsonUtil.h"
#include "common/TimeUtil.h"
#include "e2e/EmulatorFixture.h"
#include "oci/OracleCloudInfrastructureOperations.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "transport/OracleCloudInfrastructureConnection.h"

namespace restoretest {

using namespace OracleCloudSDKWrapper;

// A PuTTY key file as saved on Windows (CRLF), public part over two lines.
inline const char* const kPuttyKeyText =
    "PuTTY-User-Key-File-2: ssh-rsa\r\n"
    "Encryption: none\r\n"
    "Comment: restore-key\r\n"
    "Public-Lines: 2\r\n"
    "AAAAB3NzaC1yc2EAAAADAQABAAABAQC7\r\n"
    "restoretestkeybody==\r\n"
    "Private-Lines: 1\r\n"
    "AAAAthisisprivate\r\n"
    "Private-MAC: 0a1b2c\r\n";
inline const char* const kExpectedKeyLine = "ssh-rsa AAAAB3NzaC1yc2EAAAADAQABAAABAQC7restoretestkeybody== restore-key";

// Parser, connection and operations connected as the emulator's user, built
// from the configuration current at construction.
struct DirectOperations {
    COracleCloudInfrastructureParser parser;
    COracleCloudInfrastructureConnection connection{&parser};
    COracleCloudInfrastructureOperations ops{&connection, &parser};

    bool connect(const ocwemu::EmulatorInfo& info, const std::string& userToken) {
        return connection.connect(info.tenancy, userToken, "", OCI_SERVICE_CORE);
    }
};

// The resource's lifecycle state as the emulator would answer it now.
inline std::string StateOf(ocwemu::Emulator& emu, const std::string& id) {
    std::lock_guard<std::mutex> lock(emu.store().mutex());
    ocwemu::Resource* r = emu.store().get(id, ocwemu::NowMs());
    return r == nullptr ? std::string("<gone>") : emu.store().state(*r, ocwemu::NowMs());
}

// A member of the stored document as JSON text ("" when absent).
inline std::string MemberJson(ocwemu::Emulator& emu, const std::string& id, const std::string& member) {
    std::lock_guard<std::mutex> lock(emu.store().mutex());
    ocwemu::Resource* r = emu.store().get(id, ocwemu::NowMs());
    if (r == nullptr) return std::string();
    const boost::json::value* v = r->doc.if_contains(member);
    return v == nullptr ? std::string() : boost::json::serialize(*v);
}

inline boost::json::object BodyOf(const ocwemu::LoggedRequest& request) {
    boost::system::error_code ec;
    boost::json::value v = boost::json::parse(request.body, ec);
    if (ec || !v.is_object()) return {};
    return v.as_object();
}

// Sets the emulator's per-instance block volume attachment limit through its
// admin interface (it is reset with the emulator).
inline bool SetAttachmentLimit(const ocwemu::EmulatorInfo& info, int limit) {
    httplib::SSLClient client("127.0.0.1", info.port);
    client.set_ca_cert_path(info.caFile.c_str());
    client.enable_server_certificate_verification(true);
    auto res = client.Post("/_emulator/limits", "{\"attachmentsPerInstance\":" + std::to_string(limit) + "}",
                           "application/json");
    return res && res->status == 200;
}

// Where the demo world lets an instance be launched.
struct DemoPlacement {
    std::string compartmentId;
    std::string availabilityDomain;
    std::string publicSubnetId;
    std::string imageId;
};

}  // namespace restoretest
