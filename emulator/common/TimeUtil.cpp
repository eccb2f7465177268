#include "common/TimeUtil.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace ocwemu {

std::int64_t NowMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string Rfc3339(std::int64_t epochMs) {
    std::time_t secs = static_cast<std::time_t>(epochMs / 1000);
    int millis = static_cast<int>(epochMs % 1000);
    if (millis < 0) millis += 1000;
    std::tm tm{};
    gmtime_r(&secs, &tm);
    char buf[64];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", tm.tm_year + 1900, tm.tm_mon + 1,
                  tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, millis);
    return buf;
}

static const char* const kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
static const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string HttpDate(std::int64_t epochSeconds) {
    std::time_t secs = static_cast<std::time_t>(epochSeconds);
    std::tm tm{};
    gmtime_r(&secs, &tm);
    char buf[64];
    std::snprintf(buf, sizeof buf, "%s, %02d %s %04d %02d:%02d:%02d GMT", kDays[tm.tm_wday], tm.tm_mday,
                  kMonths[tm.tm_mon], tm.tm_year + 1900, tm.tm_hour, tm.tm_min, tm.tm_sec);
    return buf;
}

bool ParseHttpDate(const std::string& text, std::int64_t& epochSeconds) {
    char wday[4] = {0}, mon[4] = {0}, zone[4] = {0};
    int day = 0, year = 0, hh = 0, mm = 0, ss = 0, consumed = 0;
    if (std::sscanf(text.c_str(), "%3[A-Za-z], %d %3[A-Za-z] %d %d:%d:%d %3[A-Z]%n", wday, &day, mon, &year, &hh,
                    &mm, &ss, zone, &consumed) != 8)
        return false;
    if (consumed != static_cast<int>(text.size())) return false;
    if (std::strcmp(zone, "GMT") != 0 && std::strcmp(zone, "UTC") != 0) return false;
    int month = -1;
    for (int i = 0; i < 12; ++i)
        if (std::strcmp(mon, kMonths[i]) == 0) month = i;
    if (month < 0 || day < 1 || day > 31 || hh > 23 || mm > 59 || ss > 60 || year < 1970) return false;
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month;
    tm.tm_mday = day;
    tm.tm_hour = hh;
    tm.tm_min = mm;
    tm.tm_sec = ss;
    epochSeconds = static_cast<std::int64_t>(timegm(&tm));
    return true;
}

std::string FormatUtc(std::int64_t epochMs, const char* format) {
    const std::time_t t = static_cast<std::time_t>(epochMs / 1000);
    std::tm tm{};
    gmtime_r(&t, &tm);
    char buf[96];
    const size_t n = std::strftime(buf, sizeof buf, format, &tm);
    return std::string(buf, n);
}

}  // namespace ocwemu
