#include "oci/Paging.h"

#include "common/Base64.h"
#include "oci/OciErrors.h"

#include <cstdlib>
#include <cstring>

namespace ocwemu {

// Plain ASCII without '>', '?' and '~' never encodes to '+' or '/'; the '.'
// tail keeps the raw length off a multiple of three so there is always padding.
static const std::string kTokenPrefix = "ocw-page:";

std::string EncodePageToken(std::size_t offset) {
    std::string raw = kTokenPrefix + std::to_string(offset);
    if (raw.size() % 3 == 0) raw += '.';
    return Base64Encode(raw);
}

bool DecodePageToken(const std::string& token, std::size_t& offset) {
    std::string raw;
    if (!Base64Decode(token, raw)) return false;
    if (raw.compare(0, kTokenPrefix.size(), kTokenPrefix) != 0) return false;
    std::string digits = raw.substr(kTokenPrefix.size());
    if (!digits.empty() && digits.back() == '.') digits.pop_back();
    if (digits.empty() || digits.size() > 12 || digits.find_first_not_of("0123456789") != std::string::npos)
        return false;
    offset = static_cast<std::size_t>(std::strtoull(digits.c_str(), nullptr, 10));
    return true;
}

bool ReadPageWindow(const ApiRequest& req, std::size_t defaultLimit, std::size_t maxLimit, PageWindow& out,
                    ApiResponse& res) {
    out.offset = 0;
    out.limit = defaultLimit;
    if (req.hasParam("limit")) {
        const std::string v = req.param("limit");
        char* end = nullptr;
        long long n = std::strtoll(v.c_str(), &end, 10);
        if (v.empty() || *end != '\0' || n < 1 || static_cast<unsigned long long>(n) > maxLimit) {
            err::InvalidParameter(res, "Invalid limit: must be an integer between 1 and " + std::to_string(maxLimit));
            return false;
        }
        out.limit = static_cast<std::size_t>(n);
    }
    if (req.hasParam("page")) {
        if (!DecodePageToken(req.param("page"), out.offset)) {
            err::InvalidParameter(res, "Invalid page token");
            return false;
        }
    }
    return true;
}

void SetNextPage(ApiResponse& res, const PageWindow& w, std::size_t total) {
    if (w.offset + w.limit < total) res.setHeader("opc-next-page", EncodePageToken(w.offset + w.limit));
}

}  // namespace ocwemu
