#pragma once
// A resource's answer text is kept in the resource and reused until its
// members, its state or the variant change, so answering a list of unchanged
// resources copies text instead of rebuilding and serialising every document.
#include "common/Store.h"

#include <functional>
#include <string>

namespace ocwemu {

// Builds the text of `r` in `state`; must depend on nothing but the members,
// the kind, the state and the variant.
using RenderFn = std::function<std::string(const Resource& r, const std::string& state)>;

// Call with the store lock held; the reference is valid until the resource
// is rendered again or erased.
const std::string& CachedRender(const Store& store, const Resource& r, std::int64_t nowMs, const std::string& variant,
                                const RenderFn& render);

}  // namespace ocwemu
