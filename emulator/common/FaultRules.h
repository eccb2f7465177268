#pragma once
// Injected faults ("/_emulator/faults"): rules matched by method, path prefix
// and host that answer a status (before or after the request took effect),
// delay, close the connection, cut the body short, reset the connection in
// the middle of the body or stall there, either a number of times or with a
// probability. Thread-safe.
//
// Holding a resource in a lifecycle state is also a fault the admin
// interface offers; it lives in the Store because it changes what reads see.
#include "common/JsonUtil.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace ocwemu {

struct FaultRule {
    std::string id;            // assigned by add()
    std::string method;        // empty: any method
    std::string pathPrefix;    // empty: any path; compared with the raw path
    std::string host;          // empty: any host; else must occur in the Host header
    std::string action = "status";  // "status" | "close" | "truncate" | "reset" | "stall" | "delay"
    int status = 0;            // for "status": the HTTP status to answer
    std::string code;          // error code in the body (default from the status)
    std::string message;       // error message (default from the status)
    std::string body;          // for "status": a raw answer instead of the JSON error (a proxy's page)
    std::string contentType;   // of that raw answer (default text/plain)
    bool afterEffect = false;  // for "status": the request is carried out first, then its answer replaced (a lost answer)
    int times = -1;            // applications left; -1 = unlimited
    double probability = 1.0;  // chance that a matching request is hit
    int delayMs = 0;           // added delay before answering (any action); for "stall" the pause mid-body
    std::uint64_t hits = 0;

    // Reads a rule from the admin body; false with a reason on bad input.
    static bool FromJson(const JObject& o, FaultRule& out, std::string& error);
    JObject toJson() const;
};

// What to do with one request. Several matching rules add their delays; the
// first rule with an action other than "delay" decides the action.
struct FaultDecision {
    int delayMs = 0;
    std::string action;  // empty: answer normally
    int status = 0;
    std::string code;
    std::string message;
    std::string body;         // raw answer instead of the error document (empty: the document)
    std::string contentType;
    bool afterEffect = false;
    int stallMs = 0;     // "stall": the pause in the middle of the body
    std::string ruleId;  // the rule that chose the action (or the last delay rule)
};

class FaultRules {
public:
    std::string add(FaultRule rule);
    bool remove(const std::string& id);
    void clear();
    FaultDecision match(const std::string& method, const std::string& path, const std::string& host);
    JArray toJson() const;

private:
    mutable std::mutex mutex_;
    std::vector<FaultRule> rules_;
    std::uint64_t nextId_ = 1;
};

// The error code and message the services use with a status.
void DefaultErrorFor(int status, std::string& code, std::string& message);

}  // namespace ocwemu
