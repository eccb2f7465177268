#pragma once
// The structured query language of the resource search service, as far as
// clients use it:
//   query <type>[, <type>...] | all resources [return allAdditionalFields]
//         [where <condition>] [sorted by <attribute> [asc|desc]]
// where a condition combines comparisons "<attribute> <op> <value>" (op one
// of = != =~ !=~; values in single quotes or bare words) with && and ||
// (&& binds tighter) and parentheses. Attribute and type names are
// case-insensitive.
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ocwemu {

class SearchQuery {
public:
    // false with a reason when the text is not a query.
    bool parse(const std::string& text, std::string& error);

    // Lower-case type names; empty means "all".
    const std::vector<std::string>& types() const { return types_; }
    bool returnAllAdditionalFields() const { return allFields_; }
    const std::string& sortAttribute() const { return sortBy_; }
    bool sortDescending() const { return sortDesc_; }

    // Evaluates the condition; `lookup` gives an attribute's value by its
    // lower-case name ("" when absent). True when the query has no condition.
    bool matches(const std::function<std::string(const std::string&)>& lookup) const;

    struct Node;

private:
    std::vector<std::string> types_;
    bool allFields_ = false;
    std::string sortBy_;
    bool sortDesc_ = false;
    std::shared_ptr<Node> where_;
};

}  // namespace ocwemu
