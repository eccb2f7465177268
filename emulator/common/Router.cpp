#include "common/Router.h"

namespace ocwemu {

void Router::add(const std::string& method, const std::string& pattern, Handler handler, RouteAuth auth) {
    Route r;
    r.method = method;
    r.pattern = method + " " + pattern;
    r.handler = std::move(handler);
    r.auth = auth;
    size_t pos = 0;
    while (pos < pattern.size()) {
        if (pattern[pos] == '/') {
            ++pos;
            continue;
        }
        size_t end = pattern.find('/', pos);
        if (end == std::string::npos) end = pattern.size();
        r.parts.push_back(pattern.substr(pos, end - pos));
        pos = end;
    }
    routes_.push_back(std::move(r));
}

bool Router::matches(const Route& r, const ApiRequest& req, std::map<std::string, std::string>& params,
                     std::string& tail) {
    const auto& segs = req.segments;
    size_t n = r.parts.size();
    bool hasTail = n > 0 && r.parts.back().rfind("{*", 0) == 0;
    if (hasTail ? segs.size() < n : segs.size() != n) return false;
    for (size_t i = 0; i < n; ++i) {
        const std::string& p = r.parts[i];
        if (hasTail && i + 1 == n) {
            std::string joined;
            for (size_t j = i; j < segs.size(); ++j) {
                if (j > i) joined += '/';
                joined += segs[j];
            }
            tail = joined;
            params[p.substr(2, p.size() - 3)] = joined;
            return true;
        }
        if (p.size() > 2 && p.front() == '{' && p.back() == '}') {
            if (segs[i].empty()) return false;
            params[p.substr(1, p.size() - 2)] = segs[i];
        } else if (p != segs[i]) {
            return false;
        }
    }
    return true;
}

void Router::area(const std::string& pathPrefix, RouteAuth auth) { areas_.emplace_back(pathPrefix, auth); }

RouteAuth Router::areaOf(const std::string& rawPath) const {
    size_t best = 0;
    RouteAuth auth = fallback_;
    for (const auto& a : areas_) {
        const size_t n = a.first.size();
        // A path shorter than the prefix has no character at n to look at.
        if (n <= best || rawPath.size() < n || rawPath.compare(0, n, a.first) != 0) continue;
        // Whole segments only: "/instance" owns "/instance/x", not "/instances".
        const bool segment = n == 0 || a.first.back() == '/' || rawPath.size() == n || rawPath[n] == '/';
        if (segment) {
            best = n;
            auth = a.second;
        }
    }
    return auth;
}

Router::Match Router::find(ApiRequest& req) const {
    Match m;
    m.auth = areaOf(req.rawPath);
    // HEAD is answered by the GET handler (the server drops the body).
    const std::string method = req.method == "HEAD" ? std::string("GET") : req.method;
    for (const auto& r : routes_) {
        std::map<std::string, std::string> params;
        std::string tail;
        if (!matches(r, req, params, tail)) continue;
        m.pathKnown = true;
        bool sameMethod = r.method == method || (req.method == "HEAD" && r.method == "HEAD");
        if (!sameMethod) continue;
        m.handler = &r.handler;
        m.pattern = r.pattern;
        m.auth = r.auth;
        req.pathParams = std::move(params);
        req.tail = std::move(tail);
        return m;
    }
    return m;
}

}  // namespace ocwemu
