#include "common/Store.h"

#include <algorithm>
#include <stdexcept>

namespace ocwemu {

Resource& Store::add(Resource r) {
    if (r.timeline.empty()) throw std::logic_error("resource without lifecycle: " + r.id);
    r.seq = nextSeq_++;
    auto owned = std::make_unique<Resource>(std::move(r));
    Resource* p = owned.get();
    auto inserted = byId_.emplace(p->id, std::move(owned));
    if (!inserted.second) throw std::logic_error("duplicate resource id: " + p->id);
    byKind_[p->kind].push_back(p);
    byKindCompartment_[p->kind][p->compartmentId].push_back(p);
    return *p;
}

bool Store::erase(const std::string& id) {
    auto it = byId_.find(id);
    if (it == byId_.end()) return false;
    Resource* p = it->second.get();
    auto drop = [p](std::vector<Resource*>& v) { v.erase(std::remove(v.begin(), v.end(), p), v.end()); };
    drop(byKind_[p->kind]);
    drop(byKindCompartment_[p->kind][p->compartmentId]);
    holds_.erase(id);
    byId_.erase(it);
    return true;
}

static bool Gone(const Resource& r, std::int64_t nowMs) { return r.goneAtMs != 0 && nowMs >= r.goneAtMs; }

Resource* Store::get(const std::string& id, std::int64_t nowMs, const std::string& kind) {
    auto it = byId_.find(id);
    if (it == byId_.end()) return nullptr;
    Resource* r = it->second.get();
    if (!kind.empty() && r->kind != kind) return nullptr;
    return Gone(*r, nowMs) ? nullptr : r;
}

std::vector<Resource*> Store::list(const std::string& kind, const std::string& compartmentId, std::int64_t nowMs) {
    std::vector<Resource*> out;
    const std::vector<Resource*>* src = nullptr;
    if (compartmentId.empty()) {
        auto it = byKind_.find(kind);
        if (it != byKind_.end()) src = &it->second;
    } else {
        auto it = byKindCompartment_.find(kind);
        if (it != byKindCompartment_.end()) {
            auto jt = it->second.find(compartmentId);
            if (jt != it->second.end()) src = &jt->second;
        }
    }
    if (!src) return out;
    out.reserve(src->size());
    for (Resource* r : *src)
        if (!Gone(*r, nowMs)) out.push_back(r);
    return out;
}

std::string Store::state(const Resource& r, std::int64_t nowMs) const {
    auto h = holds_.find(r.id);
    if (h != holds_.end()) return h->second;
    const std::string* current = &r.timeline.front().state;
    for (const auto& step : r.timeline) {
        if (step.atMs > nowMs) break;
        current = &step.state;
    }
    return *current;
}

void Store::schedule(Resource& r, std::int64_t nowMs, const std::vector<std::pair<std::string, std::int64_t>>& steps,
                     std::int64_t retentionMs) {
    if (steps.empty()) return;
    r.timeline.clear();
    for (const auto& s : steps) r.timeline.push_back(StateStep{nowMs + s.second, s.first});
    r.goneAtMs = retentionMs > 0 ? r.timeline.back().atMs + retentionMs : 0;
}

void Store::hold(const std::string& id, const std::string& state) { holds_[id] = state; }

bool Store::release(const std::string& id) { return holds_.erase(id) != 0; }

JObject Store::holdsJson() const {
    JObject o;
    for (const auto& h : holds_) o[h.first] = h.second;
    return o;
}

void Store::clearHolds() { holds_.clear(); }

void Store::clear() {
    byKindCompartment_.clear();
    byKind_.clear();
    byId_.clear();
    holds_.clear();
}

}  // namespace ocwemu
