#pragma once
// List paging as the OCI services do it: "limit" and "page" query parameters in,
// an opaque "opc-next-page" header out, absent on the last page.
//
// Tokens are base64 that always ends in "=" padding, so they need URL-encoding
// in a query string. They never contain "+" or "/": the official TypeScript
// SDK puts query values into the URL unencoded, and a "+" would arrive as a
// blank. A token that does not decode gets 400 InvalidParameter.
#include "common/Api.h"

#include <cstddef>
#include <string>

namespace ocwemu {

std::string EncodePageToken(std::size_t offset);
// false when the token was not made by EncodePageToken.
bool DecodePageToken(const std::string& token, std::size_t& offset);

struct PageWindow {
    std::size_t offset = 0;
    std::size_t limit = 0;
};

// Reads "limit" (1..maxLimit, default defaultLimit) and "page". false with
// a 400 already written to `res` on a bad value.
bool ReadPageWindow(const ApiRequest& req, std::size_t defaultLimit, std::size_t maxLimit, PageWindow& out,
                    ApiResponse& res);

// Sets opc-next-page when items remain after this window.
void SetNextPage(ApiResponse& res, const PageWindow& w, std::size_t total);

}  // namespace ocwemu
