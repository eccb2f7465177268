#pragma once
// The most recent requests with their headers and bodies, kept in memory so
// tests can check what a client really sent ("/_emulator/requests?last=N").
// Thread-safe; older entries fall out of a fixed-size ring.
#include "common/JsonUtil.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace ocwemu {

struct LoggedRequest {
    std::int64_t timeMs = 0;
    std::string requestId;
    std::string method;
    std::string target;
    std::string host;
    std::string pattern;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;          // capped at kMaxBody bytes, secrets masked
    bool bodyTruncated = false;
    int status = 0;
    std::string responseBody;  // capped at kMaxResponseBody bytes, secrets masked
    std::string rejection;     // signature rejection reason, if any
    std::string fault;         // id of the fault rule applied, if any
};

// The JSON text with the values of secret members ("adminPassword",
// "password", ...) replaced by "*****"; other text unchanged.
std::string MaskSecrets(const std::string& body);

class RequestLog {
public:
    static constexpr size_t kMaxBody = 256 * 1024;
    static constexpr size_t kMaxResponseBody = 16 * 1024;

    explicit RequestLog(size_t capacity = 2000) : capacity_(capacity) {}
    void add(LoggedRequest entry);
    // The last `n` entries, oldest first.
    std::vector<LoggedRequest> last(size_t n) const;
    JArray toJson(size_t n) const;
    void clear();

private:
    size_t capacity_;
    mutable std::mutex mutex_;
    std::deque<LoggedRequest> entries_;
};

}  // namespace ocwemu
