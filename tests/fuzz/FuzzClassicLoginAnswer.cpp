// The Classic answers whose headers the library acts on: the login answer's
// "Set-Cookie" line (kept, then sent back as "Cookie:" with every request)
// and a PaaS job's "Location" (an absolute URL the caller polls). Each input
// is the header block of a real HTTP answer served from a loopback socket:
//   "HTTP/1.1 200 OK\r\n" <input> "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"
// Checks:
// - the cookie kept is the Set-Cookie line from its 12th character on without
//   its line end, or nothing when a line break remains inside;
// - the next request carries it as exactly one "Cookie:" line and no header
//   line more than an ordinary cookie gives (the server's text cannot add a
//   header), or, when the client refuses the text, no cookie at all;
// - the cookie never reaches the log, at the most verbose level;
// - the job address taken from "Location" has no blank or line end at either
//   end, and the URL polled is that address when it is absolute and lies
//   under the service otherwise.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzLoopbackServer.h"
#include "FuzzSupport.h"
#include "parser/OracleCloudParser.h"
#include "platform/HttpClient.h"
#include "platform/StringUtil.h"
#include "transport/OracleCloudClassicConnection.h"

namespace {

using namespace OracleCloudSDKWrapper;

const char* const kService = "https://dbaas.emulator.test/paas/api/v1.1";

std::vector<std::string> HeaderLines(const std::string& request) {
    std::vector<std::string> lines;
    size_t start = request.find("\r\n");
    while (start != std::string::npos) {
        start += 2;
        size_t end = request.find("\r\n", start);
        if (end == std::string::npos || end == start) break;
        lines.push_back(request.substr(start, end - start));
        start = end;
    }
    return lines;
}

std::vector<std::string> CookieLines(const std::vector<std::string>& lines) {
    std::vector<std::string> cookies;
    for (const std::string& line : lines) {
        if (StringUtil::FindNoCase(line, "cookie:") == 0) cookies.push_back(line);
    }
    return cookies;
}

// Sends one request with the cookie as the session connection does and
// returns the header lines the server saw.
std::vector<std::string> SendWithCookie(HttpClient& client, ocwfuzz::LoopbackServer& server, const std::string& url,
                                        const std::string& cookie, bool& accepted) {
    server.SetAnswer("HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    client.FreeHeaderList();
    accepted = client.AppendHeader(0, "Cookie:" + cookie);
    client.SendHttpRequest(HTTP_REQ_GET, url, nullptr, 0, false, false, nullptr);
    return HeaderLines(server.LastRequest());
}

void CheckCookie(HttpClient& client, ocwfuzz::LoopbackServer& server, const std::string& url,
                 const std::string& input, size_t ordinaryLineCount) {
    const char* found = client.GetHttpResponseHeader("Set-Cookie:");
    const std::string line = found != nullptr ? found : "";
    const std::string cookie = COracleCloudClassicConnection::CookieFromSetCookieLine(line);
    const std::string where = "[" + ocwfuzz::Show(input) + "] cookie [" + ocwfuzz::Show(cookie) + "]";
    std::string expected = line.size() > 11 ? line.substr(11) : "";
    while (!expected.empty() && (expected.back() == '\r' || expected.back() == '\n')) expected.pop_back();
    if (expected.find_first_of("\r\n") != std::string::npos) expected.clear();
    OCW_FUZZ_CHECK(cookie == expected, where);
    OCW_FUZZ_CHECK(cookie.find_first_of("\r\n") == std::string::npos, where);
    // The connection keeps only a non-empty cookie.
    if (cookie.empty()) return;

    bool accepted = false;
    const std::vector<std::string> lines = SendWithCookie(client, server, url, cookie, accepted);
    const std::vector<std::string> cookies = CookieLines(lines);
    OCW_FUZZ_CHECK(cookies.size() <= 1, where);
    OCW_FUZZ_CHECK(lines.size() <= ordinaryLineCount, where + " lines " + std::to_string(lines.size()));
    if (!accepted) OCW_FUZZ_CHECK(cookies.empty(), where);
    if (!cookies.empty()) OCW_FUZZ_CHECK(cookie.find(StringUtil::Trim(cookies[0].substr(7))) != std::string::npos, where);

    if (cookie.size() >= 4) {
        for (const std::string& logged : ocwfuzz::LoggedLines()) {
            OCW_FUZZ_CHECK(logged.find(cookie) == std::string::npos, where + " logged: " + ocwfuzz::Show(logged));
        }
    }
}

void CheckLocation(const char* found, COracleCloudClassicConnection& connection, const std::string& input) {
    if (found == nullptr) return;
    const std::string address = COracleCloudBaseConnection::headerLineValue(found);
    const std::string where = "[" + ocwfuzz::Show(input) + "] address [" + ocwfuzz::Show(address) + "]";
    auto trimmed = [](char c) { return c == ' ' || c == '\r' || c == '\n'; };
    OCW_FUZZ_CHECK(address.empty() || (!trimmed(address.front()) && !trimmed(address.back())), where);
    OCW_FUZZ_CHECK(std::string(found).find(address) != std::string::npos, where);

    std::string polled;
    connection.computeUrl(kService, address, polled);
    const bool absolute =
        StringUtil::FindNoCase(address, "https://") == 0 || StringUtil::FindNoCase(address, "http://") == 0;
    if (absolute) {
        OCW_FUZZ_CHECK(polled == address, where);
    } else {
        OCW_FUZZ_CHECK(polled == std::string(kService) + "/" + address, where + " polled " + ocwfuzz::Show(polled));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static ocwfuzz::LoopbackServer* server = new ocwfuzz::LoopbackServer;
    static COracleCloudParser parser;
    static COracleCloudClassicConnection connection(&parser);
    static HttpClient* client = [] {
        auto* c = new HttpClient;
        c->HttpClientInit("Content-Type: application/oracle-compute-v3+json", true, true);
        return c;
    }();
    static const std::string url = "http://127.0.0.1:" + std::to_string(server->port()) + "/authenticate/";
    // Header lines of a request with an ordinary cookie: no server text may
    // make a request longer than this.
    static const size_t ordinaryLineCount = [] {
        bool accepted = false;
        return SendWithCookie(*client, *server, url, " nimbula=eyJpZGVudGl0eSI6ICJ4In0=; Path=/", accepted).size();
    }();
    ocwfuzz::ResetLog(4);

    const std::string input(reinterpret_cast<const char*>(data), size);
    server->SetAnswer("HTTP/1.1 200 OK\r\n" + input + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    client->FreeHeaderList();
    client->SendHttpRequest(HTTP_REQ_POST, url, "{}", 2, false, false, nullptr);

    // The location check logs the service URL, which a cookie text may
    // happen to be part of: the cookie goes first, with only its own lines
    // (its second request replaces the answer, so the location is kept).
    const char* location = client->GetHttpResponseHeader("Location");
    const std::string locationLine = location != nullptr ? location : "";
    CheckCookie(*client, *server, url, input, ordinaryLineCount);
    CheckLocation(location != nullptr ? locationLine.c_str() : nullptr, connection, input);
    return 0;
}
