#pragma once
// The most recent requests with their headers and bodies, kept in memory so
// tests can check what a client really sent ("/_emulator/requests?last=N").
// Thread-safe; older entries fall out of a fixed-size ring.
#include "common/JsonUtil.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
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

// Sees each value the log masks, before it is masked: the member or header it
// came in ("password", "adminPassword", "authorization", "cookie", ...) and the
// value. The tests' proof that no secret reaches a client's log takes its
// list of secrets from here.
using SecretWitness = std::function<void(const std::string& name, const std::string& value)>;

// The JSON text with the values of secret members ("adminPassword",
// "password", ...) replaced by "*****"; other text unchanged. `witness`, when
// given, is told each value replaced.
std::string MaskSecrets(const std::string& body, const SecretWitness* witness = nullptr);

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
    // Installs (or, with an empty function, removes) the witness of the values add() masks.
    void setSecretWitness(SecretWitness witness);

private:
    size_t capacity_;
    mutable std::mutex mutex_;
    std::shared_ptr<const SecretWitness> witness_;
    std::deque<LoggedRequest> entries_;
};

}  // namespace ocwemu
