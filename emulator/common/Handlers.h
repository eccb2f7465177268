#pragma once
// The two shapes that open and close most service handlers, declared once
// for both clouds instead of being written out in every handler:
//
//  - "find or 404": a handler that works on the resource named by the
//    request receives it found; when there is none, the service's 404 is
//    answered and the handler does not run.
//  - "list": the request's scope (an OCI compartment, a Classic container)
//    is read or refused, the resources of one kind in it are collected, the
//    query filters are applied, and the list is answered.
//
// Each cloud's service base supplies what differs: how a resource is found,
// what its 404 looks like, what a scope is and how a list is answered
// (oci/OciService.h, classic/ClassicService.h).
#include "common/Router.h"
#include "common/Store.h"

#include <functional>
#include <string>
#include <vector>

namespace ocwemu {

using ResourceHandler = std::function<void(ApiRequest&, ApiResponse&, Resource&)>;
// The resource a request names, or null with the 404 already written.
using Finder = std::function<Resource*(const ApiRequest&, ApiResponse&)>;

Handler FindThen(Finder find, ResourceHandler then);

struct ListRule {
    std::string kind;
    // Query parameters that, when given, must equal the stored string
    // member of the same name.
    std::vector<std::string> filters;
    // Further selection plain equality cannot express; may be empty.
    std::function<void(const ApiRequest&, std::vector<Resource*>&)> refine;
};

// Collects the resources of `kind` in the request's scope; false with the
// refusal written when the scope is missing or unknown.
using ListScope =
    std::function<bool(const ApiRequest&, ApiResponse&, const std::string& kind, std::vector<Resource*>& items)>;
using ListAnswer = std::function<void(const ApiRequest&, ApiResponse&, std::vector<Resource*> items)>;

Handler ListThen(ListScope scope, ListRule rule, ListAnswer answer);

// Keeps the items whose stored member equals each named query parameter given.
void KeepMatching(const ApiRequest& req, std::vector<Resource*>& items, const std::vector<std::string>& names);

}  // namespace ocwemu
