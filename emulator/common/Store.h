#pragma once
// The in-memory cloud: every resource of every kind, with its lifecycle.
//
// Lifecycle states are a timeline of (instant, state) steps written when an
// operation starts (PROVISIONING now, RUNNING after the provisioning delay);
// the state a reader sees is simply the last step whose instant has passed.
// Nothing runs in the background and nothing touches the disk.
//
// Not internally locked: callers hold mutex() for the whole request so that a
// handler sees and changes a consistent world. Resource pointers stay valid
// until clear().
#include "common/JsonUtil.h"
#include "common/ResourceDoc.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ocwemu {

struct StateStep {
    std::int64_t atMs;
    std::string state;
};

// A resource's answer text as last rendered, with what it was rendered from
// (see common/RenderCache.h).
struct RenderedText {
    std::uint64_t docVersion = 0;
    std::string state;
    std::string variant;  // what else the text depends on (the host in Classic URIs)
    std::string json;     // empty: nothing rendered yet
};

struct Resource {
    std::string id;
    std::string kind;           // "instance", "volume", "bucket", ...
    std::string compartmentId;  // index key of lists; may be empty
    std::string region;         // empty for global resources
    ResourceDoc doc;            // every member except "lifecycleState"
    std::vector<StateStep> timeline;  // ascending instants; never empty once added
    std::int64_t createdMs = 0;
    std::int64_t goneAtMs = 0;  // from this instant the resource answers 404 (0: never)
    std::uint64_t seq = 0;      // creation order
    // Filled and read by CachedRender (common/RenderCache.h) under the store lock.
    mutable RenderedText rendered;
};

class Store {
public:
    std::mutex& mutex() { return mutex_; }

    // Adds a resource (its id must be new) and returns the stored copy.
    Resource& add(Resource r);
    // The resource, or null when unknown or gone at `nowMs`. A non-empty
    // `kind` must match as well.
    Resource* get(const std::string& id, std::int64_t nowMs, const std::string& kind = {});
    // Resources of a kind in creation order, optionally of one compartment,
    // excluding those gone at `nowMs`.
    std::vector<Resource*> list(const std::string& kind, const std::string& compartmentId, std::int64_t nowMs);

    // Removes a resource for good (objects, whose names can be reused at once).
    // Pointers to it become invalid.
    bool erase(const std::string& id);

    // The state at `nowMs`, or the held state while a hold is set.
    std::string state(const Resource& r, std::int64_t nowMs) const;
    // Replaces the timeline: each step is (state, offset in ms from nowMs).
    // `retentionMs` > 0 makes the resource disappear that long after the last step.
    void schedule(Resource& r, std::int64_t nowMs, const std::vector<std::pair<std::string, std::int64_t>>& steps,
                  std::int64_t retentionMs = 0);

    void hold(const std::string& id, const std::string& state);
    bool release(const std::string& id);
    JObject holdsJson() const;
    void clearHolds();

    void clear();
    size_t size() const { return byId_.size(); }

private:
    std::mutex mutex_;
    std::uint64_t nextSeq_ = 1;
    std::unordered_map<std::string, std::unique_ptr<Resource>> byId_;
    std::unordered_map<std::string, std::vector<Resource*>> byKind_;
    std::unordered_map<std::string, std::unordered_map<std::string, std::vector<Resource*>>> byKindCompartment_;
    std::map<std::string, std::string> holds_;
};

}  // namespace ocwemu
