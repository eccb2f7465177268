#pragma once
// The Compute Classic objects without a lifecycle of their own: shapes
// (read-only), machine images, SSH keys, security lists, IP networks, IP
// reservations and IP associations. Create 201, whole-object PUT 200, delete
// 204, duplicate 409, as for every Compute Classic object.
#include "classic/ClassicService.h"

namespace ocwemu {

class CatalogService : public ClassicService {
public:
    using ClassicService::ClassicService;
    void registerRoutes(Router& router) override;

    // Seeding and the other families: an object of one of these kinds from
    // the members a client would post (defaults filled in); the caller has
    // checked the name.
    Resource& make(const ClassicKind& k, const std::string& name, const JObject& body, std::int64_t nowMs);
};

}  // namespace ocwemu
