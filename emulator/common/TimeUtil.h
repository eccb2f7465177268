#pragma once
// Wall-clock helpers in the formats the cloud uses on the wire.
#include <cstdint>
#include <string>

namespace ocwemu {

// Milliseconds since the Unix epoch (system clock).
std::int64_t NowMs();

// "2026-11-21T10:00:00.000Z": RFC 3339 in UTC with milliseconds, as every
// OCI timestamp member is written.
std::string Rfc3339(std::int64_t epochMs);

// `epochMs` in UTC through strftime's `format` (glibc's "%-d" and "%-H" included),
// for the date texts of the Classic services ("09-Jan-2017 18:26:06 UTC").
std::string FormatUtc(std::int64_t epochMs, const char* format);

// RFC 1123 date of an HTTP header ("Tue, 07 Mar 2023 09:05:01 GMT").
std::string HttpDate(std::int64_t epochSeconds);

// Parses an RFC 1123 date (the only form the SDKs send in "date"/"x-date").
// false when the text is not such a date.
bool ParseHttpDate(const std::string& text, std::int64_t& epochSeconds);

}  // namespace ocwemu
