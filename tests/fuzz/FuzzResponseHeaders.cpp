// The page token of an OCI list comes from the server's raw "opc-next-page"
// header line and goes straight back into the next request's URL. The input is
// that raw line as the HTTP client hands it over ("opc-next-page: <token>\r\n",
// but anything a server may send). Checks:
// - no ":" (or an empty line) gives no token;
// - the token is a piece of the text after the first ":" with no blank, CR or
//   LF at either end, and is empty only when that text holds nothing else;
// - the next page URL is the path plus "page=" and the token percent-encoded:
//   only unreserved characters and %XX, decoding back to the token, so no
//   server text can add a line, a blank or another query argument.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "oci/OracleCloudInfrastructureQueries.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "transport/OracleCloudInfrastructureConnection.h"

namespace {

using namespace OracleCloudSDKWrapper;

// Reaches the engine's two page helpers; nothing else of the queries object
// is used, so no request is ever sent.
class PageEngineProbe : public COracleCloudInfrastructureQueries {
public:
    using COracleCloudInfrastructureQueries::COracleCloudInfrastructureQueries;
    using COracleCloudInfrastructureQueries::_GetNextPageTokenFromHeader;
    using COracleCloudInfrastructureQueries::_GetPageUrl;
    void SetPageLimit(uint32_t limit) { pageLimit = limit; }
};

bool IsTrimmed(char c) { return c == '\n' || c == '\r' || c == ' '; }

bool IsUnreserved(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_' || c == '~';
}

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// Decodes strictly: false for a character outside the unreserved set or a
// malformed escape.
bool PercentDecode(const std::string& encoded, std::string& out) {
    out.clear();
    for (size_t i = 0; i < encoded.size(); ++i) {
        char c = encoded[i];
        if (IsUnreserved(c)) {
            out += c;
            continue;
        }
        if (c != '%' || i + 2 >= encoded.size() || HexValue(encoded[i + 1]) < 0 || HexValue(encoded[i + 2]) < 0)
            return false;
        out += static_cast<char>(HexValue(encoded[i + 1]) * 16 + HexValue(encoded[i + 2]));
        i += 2;
    }
    return true;
}

void CheckToken(const std::string& header, const std::string& token) {
    const std::string where = "header [" + ocwfuzz::Show(header) + "] token [" + ocwfuzz::Show(token) + "]";
    size_t colon = header.find(':');
    if (colon == std::string::npos) {
        OCW_FUZZ_CHECK(token.empty(), where);
        return;
    }
    const std::string value = header.substr(colon + 1);
    bool hasContent = false;
    for (char c : value) hasContent = hasContent || !IsTrimmed(c);
    OCW_FUZZ_CHECK(token.empty() != hasContent, where);
    if (token.empty()) return;
    OCW_FUZZ_CHECK(!IsTrimmed(token.front()) && !IsTrimmed(token.back()), where);
    OCW_FUZZ_CHECK(value.find(token) != std::string::npos, where);
}

void CheckPageUrl(const std::string& path, const std::string& token, uint32_t limit, const std::string& url) {
    const std::string where = "path [" + path + "] token [" + ocwfuzz::Show(token) + "] url [" + ocwfuzz::Show(url) +
                              "]";
    OCW_FUZZ_CHECK(url.compare(0, path.size(), path) == 0, where);
    std::string expectedStart = path;
    if (limit != 0) {
        expectedStart += path.find('?') != std::string::npos ? "&" : "?";
        expectedStart += "limit=" + std::to_string(limit);
    }
    if (token.empty()) {
        OCW_FUZZ_CHECK(url == expectedStart, where);
        return;
    }
    expectedStart += expectedStart.find('?') != std::string::npos ? "&page=" : "?page=";
    OCW_FUZZ_CHECK(url.compare(0, expectedStart.size(), expectedStart) == 0, where);
    std::string decoded;
    OCW_FUZZ_CHECK(PercentDecode(url.substr(expectedStart.size()), decoded), where);
    OCW_FUZZ_CHECK(decoded == token, where);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static COracleCloudInfrastructureParser parser;
    static COracleCloudInfrastructureConnection connection(&parser);
    static PageEngineProbe engine(&connection, &parser);
    // Level 2 so the engine's "nextPageHeader"/"nextPageToken" lines are
    // formatted with the server's text, as they are when an agent debugs.
    ocwfuzz::ResetLog(2);

    const std::string header(reinterpret_cast<const char*>(data), size);
    const std::string token = engine._GetNextPageTokenFromHeader(header);
    CheckToken(header, token);

    // Both URL shapes the engines page: with and without a query of their own,
    // with and without a page size.
    const uint32_t limit = size % 2 == 0 ? 0u : static_cast<uint32_t>(size % 1000);
    engine.SetPageLimit(limit);
    for (const std::string path : {"/20160918/instances?compartmentId=ocid1.tenancy.oc1..aaaa", "/20180409/resources"}) {
        CheckPageUrl(path, token, limit, engine._GetPageUrl(path, token));
    }
    return 0;
}
