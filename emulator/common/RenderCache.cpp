#include "common/RenderCache.h"

namespace ocwemu {

const std::string& CachedRender(const Store& store, const Resource& r, std::int64_t nowMs, const std::string& variant,
                                const RenderFn& render) {
    RenderedText& cached = r.rendered;
    std::string state = store.state(r, nowMs);
    if (cached.json.empty() || cached.docVersion != r.doc.version() || cached.state != state ||
        cached.variant != variant) {
        cached.json = render(r, state);
        cached.docVersion = r.doc.version();
        cached.state = std::move(state);
        cached.variant = variant;
    }
    return cached.json;
}

}  // namespace ocwemu
