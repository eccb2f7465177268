#pragma once
// The one Cloud Classic account the emulator serves: identity domain, user
// and password (the same for Compute Classic and the PaaS services), the
// knobs its services read, and its Compute Classic login sessions.
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace ocwemu {

struct ClassicAccount {
    bool exists = true;
    std::string identityDomain = "acme";
    std::string user = "jdoe";
    std::string password;
    std::int64_t provisionMs = 1000;
    std::int64_t sessionLifetimeMs = 30LL * 60 * 1000;    // extended by GET refresh/
    std::int64_t sessionHardLimitMs = 3LL * 3600 * 1000;  // no refresh goes beyond

    // "/Compute-acme": the identity domain's container.
    std::string domainContainer() const { return "/Compute-" + identityDomain; }
    // "/Compute-acme/jdoe": the user's container (and login user name).
    std::string userContainer() const { return domainContainer() + "/" + user; }
};

// Login sessions of Compute Classic. Thread-safe (checked before the store
// lock is taken).
class ClassicSessions {
public:
    // A new session token valid for the account's lifetime.
    std::string open(const ClassicAccount& account, std::int64_t nowMs);
    bool valid(const std::string& token, std::int64_t nowMs) const;
    // Extends a live session by the lifetime, never past its hard limit.
    bool refresh(const std::string& token, const ClassicAccount& account, std::int64_t nowMs);
    // Every session ends now (clients must log in again).
    void expireAll();
    std::size_t live(std::int64_t nowMs) const;

private:
    struct Session {
        std::int64_t expiresMs;
        std::int64_t hardLimitMs;
    };
    mutable std::mutex mutex_;
    std::map<std::string, Session> sessions_;
};

// The token of the "nimbula" cookie in a Cookie header. Clients send either
// "nimbula=<token>" or the whole Set-Cookie value they received
// ("nimbula=<token>; Path=/; Max-Age=1800", sometimes after a blank).
std::string NimbulaToken(const std::string& cookieHeader);

}  // namespace ocwemu
