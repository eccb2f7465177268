// The header lines of an answer reach the library through libcurl's header
// callback into HttpClient, which keeps the block of the final answer and
// finds a line by name; the OCI engines then cut the page token out of the
// "opc-next-page" line. That path has no pure entry point, so this target
// serves each input as the header block of a real HTTP answer from a
// loopback socket, right after an ordinary answer on the same client:
//   "HTTP/1.1 200 OK\r\n" <input> "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"
// and the connection is closed after it, so no input can make the client
// wait. Checks: a header line found by name starts with that name and a
// colon (any case) and is one line; the token taken from it keeps the page
// token contract (see FuzzResponseHeaders.cpp).
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzLoopbackServer.h"
#include "FuzzSupport.h"
#include "oci/OracleCloudInfrastructureQueries.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "platform/HttpClient.h"
#include "transport/OracleCloudInfrastructureConnection.h"

namespace {

using namespace OracleCloudSDKWrapper;

class PageEngineProbe : public COracleCloudInfrastructureQueries {
public:
    using COracleCloudInfrastructureQueries::COracleCloudInfrastructureQueries;
    using COracleCloudInfrastructureQueries::_GetNextPageTokenFromHeader;
};

bool StartsWithNoCase(const std::string& line, const std::string& prefix) {
    if (line.size() < prefix.size()) return false;
    for (size_t i = 0; i < prefix.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(line[i])) != std::tolower(static_cast<unsigned char>(prefix[i])))
            return false;
    }
    return true;
}

bool IsTrimmed(char c) { return c == '\n' || c == '\r' || c == ' '; }

void CheckLine(const char* name, const char* found, const std::string& input) {
    if (found == nullptr) return;
    const std::string line(found);
    const std::string where = std::string(name) + " in [" + ocwfuzz::Show(input) + "] gives [" +
                              ocwfuzz::Show(line) + "]";
    OCW_FUZZ_CHECK(StartsWithNoCase(line, std::string(name) + ":"), where);
    size_t nl = line.find('\n');
    OCW_FUZZ_CHECK(nl == std::string::npos || nl + 1 == line.size(), where);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static ocwfuzz::LoopbackServer* server = new ocwfuzz::LoopbackServer;
    static COracleCloudInfrastructureParser parser;
    static COracleCloudInfrastructureConnection connection(&parser);
    static PageEngineProbe engine(&connection, &parser);
    static HttpClient* client = [] {
        auto* c = new HttpClient;
        c->HttpClientInit(nullptr, true, true);
        return c;
    }();
    ocwfuzz::ResetLog(2);

    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::string url = "http://127.0.0.1:" + std::to_string(server->port()) + "/20160918/instances";
    // Connections reuse their client, so the fuzzed answer always follows an
    // ordinary one on the same client: whatever the previous answer left in
    // the client (and in libcurl) is there, and the same input behaves the
    // same way whatever ran before it.
    server->SetAnswer("HTTP/1.1 200 OK\r\nopc-request-id: first\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    client->SendHttpRequest(HTTP_REQ_GET, url, nullptr, 0, false, false, nullptr);
    server->SetAnswer("HTTP/1.1 200 OK\r\n" + input + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    client->SendHttpRequest(HTTP_REQ_GET, url, nullptr, 0, false, false, nullptr);

    for (const char* name : {"opc-next-page", "opc-request-id", "Content-Length", "retry-after"}) {
        CheckLine(name, client->GetHttpResponseHeader(name), input);
    }
    const char* line = client->GetHttpResponseHeader("opc-next-page");
    if (line != nullptr) {
        const std::string header(line);
        const std::string token = engine._GetNextPageTokenFromHeader(header);
        const std::string value = header.substr(header.find(':') + 1);
        bool hasContent = false;
        for (char c : value) hasContent = hasContent || !IsTrimmed(c);
        const std::string where = "[" + ocwfuzz::Show(header) + "] token [" + ocwfuzz::Show(token) + "]";
        OCW_FUZZ_CHECK(token.empty() != hasContent, where);
        if (!token.empty()) {
            OCW_FUZZ_CHECK(!IsTrimmed(token.front()) && !IsTrimmed(token.back()), where);
            OCW_FUZZ_CHECK(value.find(token) != std::string::npos, where);
        }
    }
    return 0;
}
