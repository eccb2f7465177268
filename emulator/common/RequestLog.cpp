#include "common/RequestLog.h"

#include "common/TimeUtil.h"

namespace ocwemu {

void RequestLog::add(LoggedRequest entry) {
    if (entry.body.size() > kMaxBody) {
        entry.body.resize(kMaxBody);
        entry.bodyTruncated = true;
    }
    if (entry.responseBody.size() > kMaxResponseBody) entry.responseBody.resize(kMaxResponseBody);
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.push_back(std::move(entry));
    while (entries_.size() > capacity_) entries_.pop_front();
}

std::vector<LoggedRequest> RequestLog::last(size_t n) const {
    std::lock_guard<std::mutex> lock(mutex_);
    size_t count = std::min(n, entries_.size());
    return std::vector<LoggedRequest>(entries_.end() - static_cast<std::ptrdiff_t>(count), entries_.end());
}

JArray RequestLog::toJson(size_t n) const {
    JArray out;
    for (const auto& e : last(n)) {
        JObject headers;
        for (const auto& h : e.headers) headers[h.first] = h.second;
        out.push_back(JObject{{"time", Rfc3339(e.timeMs)},
                              {"requestId", e.requestId},
                              {"method", e.method},
                              {"target", e.target},
                              {"host", e.host},
                              {"pattern", e.pattern},
                              {"headers", std::move(headers)},
                              {"body", e.body},
                              {"bodyTruncated", e.bodyTruncated},
                              {"status", e.status},
                              {"responseBody", e.responseBody},
                              {"rejection", e.rejection},
                              {"fault", e.fault}});
    }
    return out;
}

void RequestLog::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
}

}  // namespace ocwemu
