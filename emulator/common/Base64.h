#pragma once
// Standard base64 (RFC 4648 alphabet with "=" padding): page tokens, digests,
// basic credentials.
#include <string>

namespace ocwemu {

std::string Base64Encode(const std::string& bytes);
// false when `text` is not padded base64 of that alphabet.
bool Base64Decode(const std::string& text, std::string& bytes);

}  // namespace ocwemu
