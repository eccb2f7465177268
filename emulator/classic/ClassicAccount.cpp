#include "classic/ClassicAccount.h"

#include "common/Ids.h"

namespace ocwemu {

std::string ClassicSessions::open(const ClassicAccount& account, std::int64_t nowMs) {
    const std::string token = RandomAlnum(48);
    std::lock_guard<std::mutex> lock(mutex_);
    // Drop sessions that ended long ago so a login loop cannot grow the map.
    for (auto it = sessions_.begin(); it != sessions_.end();)
        it = it->second.expiresMs <= nowMs ? sessions_.erase(it) : std::next(it);
    sessions_[token] = Session{nowMs + account.sessionLifetimeMs, nowMs + account.sessionHardLimitMs};
    return token;
}

bool ClassicSessions::valid(const std::string& token, std::int64_t nowMs) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = sessions_.find(token);
    return it != sessions_.end() && nowMs < it->second.expiresMs;
}

bool ClassicSessions::refresh(const std::string& token, const ClassicAccount& account, std::int64_t nowMs) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = sessions_.find(token);
    if (it == sessions_.end() || nowMs >= it->second.expiresMs) return false;
    it->second.expiresMs = std::min(nowMs + account.sessionLifetimeMs, it->second.hardLimitMs);
    return true;
}

void ClassicSessions::expireAll() {
    std::lock_guard<std::mutex> lock(mutex_);
    sessions_.clear();
}

std::size_t ClassicSessions::live(std::int64_t nowMs) const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::size_t n = 0;
    for (const auto& s : sessions_) n += nowMs < s.second.expiresMs ? 1 : 0;
    return n;
}

std::string NimbulaToken(const std::string& cookieHeader) {
    size_t pos = 0;
    while (pos <= cookieHeader.size()) {
        size_t end = cookieHeader.find(';', pos);
        if (end == std::string::npos) end = cookieHeader.size();
        std::string part = cookieHeader.substr(pos, end - pos);
        const size_t first = part.find_first_not_of(" \t");
        part = first == std::string::npos ? std::string() : part.substr(first);
        while (!part.empty() && (part.back() == ' ' || part.back() == '\t')) part.pop_back();
        if (part.rfind("nimbula=", 0) == 0) return part.substr(8);
        pos = end + 1;
    }
    return {};
}

}  // namespace ocwemu
