#include "common/Handlers.h"

#include <algorithm>

namespace ocwemu {

Handler FindThen(Finder find, ResourceHandler then) {
    return [find = std::move(find), then = std::move(then)](ApiRequest& req, ApiResponse& res) {
        if (Resource* r = find(req, res)) then(req, res, *r);
    };
}

Handler ListThen(ListScope scope, ListRule rule, ListAnswer answer) {
    return [scope = std::move(scope), rule = std::move(rule), answer = std::move(answer)](ApiRequest& req,
                                                                                          ApiResponse& res) {
        std::vector<Resource*> items;
        if (!scope(req, res, rule.kind, items)) return;
        KeepMatching(req, items, rule.filters);
        if (rule.refine) rule.refine(req, items);
        answer(req, res, std::move(items));
    };
}

void KeepMatching(const ApiRequest& req, std::vector<Resource*>& items, const std::vector<std::string>& names) {
    for (const std::string& n : names) {
        if (!req.hasParam(n)) continue;
        const std::string want = req.param(n);
        items.erase(
            std::remove_if(items.begin(), items.end(), [&](Resource* r) { return JStr(r->doc, n.c_str()) != want; }),
            items.end());
    }
}

}  // namespace ocwemu
