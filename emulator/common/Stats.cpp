#include "common/Stats.h"

namespace ocwemu {

void Stats::recordRequest(const std::string& method, const std::string& pattern, const std::string& host,
                          int status) {
    std::lock_guard<std::mutex> lock(mutex_);
    ++total_;
    ++byMethod_[method];
    ++byPattern_[pattern];
    ++byHost_[host];
    ++byStatus_[std::to_string(status)];
}

void Stats::recordRejection(const std::string& reason) {
    std::lock_guard<std::mutex> lock(mutex_);
    ++rejections_;
    ++byReason_[reason];
}

void Stats::recordFault(const std::string& ruleId) {
    std::lock_guard<std::mutex> lock(mutex_);
    ++faults_;
    ++byRule_[ruleId];
}

static JObject ToObject(const std::map<std::string, std::uint64_t>& m) {
    JObject o;
    for (const auto& kv : m) o[kv.first] = kv.second;
    return o;
}

JObject Stats::toJson() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return JObject{{"total", total_},
                   {"byMethod", ToObject(byMethod_)},
                   {"byPattern", ToObject(byPattern_)},
                   {"byHost", ToObject(byHost_)},
                   {"byStatus", ToObject(byStatus_)},
                   {"signatureRejections", JObject{{"total", rejections_}, {"byReason", ToObject(byReason_)}}},
                   {"faults", JObject{{"total", faults_}, {"byRule", ToObject(byRule_)}}}};
}

std::uint64_t Stats::total() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return total_;
}

void Stats::reset() {
    std::lock_guard<std::mutex> lock(mutex_);
    total_ = rejections_ = faults_ = 0;
    byMethod_.clear();
    byPattern_.clear();
    byHost_.clear();
    byStatus_.clear();
    byReason_.clear();
    byRule_.clear();
}

}  // namespace ocwemu
