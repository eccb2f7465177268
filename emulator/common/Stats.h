#pragma once
// Request counters for the admin interface ("/_emulator/stats"). Thread-safe.
#include "common/JsonUtil.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace ocwemu {

class Stats {
public:
    // One answered request outside the admin interface. `pattern` is the
    // matched route ("GET /20160918/instances/{instanceId}") or "unmatched".
    void recordRequest(const std::string& method, const std::string& pattern, const std::string& host, int status);
    // A request refused for its signature, with the reason (see SignatureVerifier).
    void recordRejection(const std::string& reason);
    void recordFault(const std::string& ruleId);

    // {"total", "byMethod", "byPattern", "byHost", "byStatus",
    //  "signatureRejections": {"total", "byReason"}, "faults": {"total", "byRule"}}
    JObject toJson() const;
    std::uint64_t total() const;
    void reset();

private:
    mutable std::mutex mutex_;
    std::uint64_t total_ = 0;
    std::uint64_t rejections_ = 0;
    std::uint64_t faults_ = 0;
    std::map<std::string, std::uint64_t> byMethod_, byPattern_, byHost_, byStatus_, byReason_, byRule_;
};

}  // namespace ocwemu
