#pragma once
// The members of a stored resource: readable like the JSON object it holds,
// writable only through edit() and set(). Every write counts as a change, so
// a rendering cached for one version() is known to be stale after the next
// write (see Resource::rendered), without each writer having to remember to
// drop it.
#include "common/JsonUtil.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace ocwemu {

class ResourceDoc {
public:
    // Reading: anything that takes a const JObject& takes a ResourceDoc.
    operator const JObject&() const { return members_; }
    const JObject& members() const { return members_; }
    const JValue& at(boost::json::string_view key) const { return members_.at(key); }
    const JValue* if_contains(boost::json::string_view key) const { return members_.if_contains(key); }
    bool contains(boost::json::string_view key) const { return members_.contains(key); }
    std::size_t size() const { return members_.size(); }
    JObject::const_iterator begin() const { return members_.begin(); }
    JObject::const_iterator end() const { return members_.end(); }

    // Writing. The returned reference is for changes made right away: a
    // rendering taken between edit() and a later write through it would
    // not see that write.
    JObject& edit() {
        ++version_;
        return members_;
    }
    template <class T>
    void set(boost::json::string_view key, T&& value) {
        edit()[key] = std::forward<T>(value);
    }

    // Grows with every edit() and set(); starts at 0.
    std::uint64_t version() const { return version_; }

private:
    JObject members_;
    std::uint64_t version_ = 0;
};

}  // namespace ocwemu
