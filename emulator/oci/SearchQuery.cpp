#include "oci/SearchQuery.h"

#include <algorithm>
#include <cctype>

namespace ocwemu {

struct SearchQuery::Node {
    enum Kind { And, Or, Compare } kind = Compare;
    std::shared_ptr<Node> left, right;
    std::string attribute, op, value;
};

namespace {

std::string Lower(std::string s) {
    for (auto& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

struct Token {
    enum Type { Word, Quoted, Symbol, End } type;
    std::string text;
};

bool Tokenize(const std::string& s, std::vector<Token>& out, std::string& error) {
    size_t i = 0;
    while (i < s.size()) {
        char c = s[i];
        if (std::isspace(static_cast<unsigned char>(c))) {
            ++i;
        } else if (c == '\'') {
            size_t close = s.find('\'', i + 1);
            if (close == std::string::npos) {
                error = "unterminated string literal";
                return false;
            }
            out.push_back({Token::Quoted, s.substr(i + 1, close - i - 1)});
            i = close + 1;
        } else if (s.compare(i, 3, "!=~") == 0) {
            out.push_back({Token::Symbol, "!=~"});
            i += 3;
        } else if (s.compare(i, 2, "&&") == 0 || s.compare(i, 2, "||") == 0 || s.compare(i, 2, "!=") == 0 ||
                   s.compare(i, 2, "=~") == 0) {
            out.push_back({Token::Symbol, s.substr(i, 2)});
            i += 2;
        } else if (c == '=' || c == '(' || c == ')' || c == ',') {
            out.push_back({Token::Symbol, std::string(1, c)});
            ++i;
        } else {
            size_t j = i;
            while (j < s.size() && !std::isspace(static_cast<unsigned char>(s[j])) &&
                   std::string("'=!&|(),").find(s[j]) == std::string::npos)
                ++j;
            if (j == i) {
                error = std::string("unexpected character '") + c + "'";
                return false;
            }
            out.push_back({Token::Word, s.substr(i, j - i)});
            i = j;
        }
    }
    out.push_back({Token::End, ""});
    return true;
}

struct Parser {
    std::vector<Token> t;
    size_t pos = 0;
    std::string error;

    const Token& peek() const { return t[pos]; }
    bool word(const char* w) const { return peek().type == Token::Word && Lower(peek().text) == w; }
    bool symbol(const char* s) const { return peek().type == Token::Symbol && peek().text == s; }

    std::shared_ptr<SearchQuery::Node> orExpr() {
        auto left = andExpr();
        while (left && symbol("||")) {
            ++pos;
            auto right = andExpr();
            if (!right) return nullptr;
            auto n = std::make_shared<SearchQuery::Node>();
            n->kind = SearchQuery::Node::Or;
            n->left = left;
            n->right = right;
            left = n;
        }
        return left;
    }
    std::shared_ptr<SearchQuery::Node> andExpr() {
        auto left = primary();
        while (left && symbol("&&")) {
            ++pos;
            auto right = primary();
            if (!right) return nullptr;
            auto n = std::make_shared<SearchQuery::Node>();
            n->kind = SearchQuery::Node::And;
            n->left = left;
            n->right = right;
            left = n;
        }
        return left;
    }
    std::shared_ptr<SearchQuery::Node> primary() {
        if (symbol("(")) {
            ++pos;
            auto inner = orExpr();
            if (!inner) return nullptr;
            if (!symbol(")")) {
                error = "missing ')'";
                return nullptr;
            }
            ++pos;
            return inner;
        }
        if (peek().type != Token::Word) {
            error = "expected an attribute name";
            return nullptr;
        }
        auto n = std::make_shared<SearchQuery::Node>();
        n->attribute = Lower(peek().text);
        ++pos;
        if (!(symbol("=") || symbol("!=") || symbol("=~") || symbol("!=~"))) {
            error = "expected a comparison after " + n->attribute;
            return nullptr;
        }
        n->op = peek().text;
        ++pos;
        if (peek().type != Token::Word && peek().type != Token::Quoted) {
            error = "expected a value after " + n->op;
            return nullptr;
        }
        n->value = peek().text;
        ++pos;
        return n;
    }
};

bool Eval(const SearchQuery::Node& n, const std::function<std::string(const std::string&)>& lookup) {
    switch (n.kind) {
        case SearchQuery::Node::And: return Eval(*n.left, lookup) && Eval(*n.right, lookup);
        case SearchQuery::Node::Or: return Eval(*n.left, lookup) || Eval(*n.right, lookup);
        case SearchQuery::Node::Compare: break;
    }
    const std::string actual = lookup(n.attribute);
    if (n.op == "=") return Lower(actual) == Lower(n.value);
    if (n.op == "!=") return Lower(actual) != Lower(n.value);
    const bool contains = Lower(actual).find(Lower(n.value)) != std::string::npos;
    return n.op == "=~" ? contains : !contains;
}

}  // namespace

bool SearchQuery::parse(const std::string& text, std::string& error) {
    types_.clear();
    allFields_ = false;
    sortBy_.clear();
    sortDesc_ = false;
    where_.reset();
    Parser p;
    if (!Tokenize(text, p.t, error)) return false;
    if (!p.word("query")) {
        error = "a query starts with 'query'";
        return false;
    }
    ++p.pos;
    bool all = false;
    for (;;) {
        if (p.peek().type != Token::Word) {
            error = "expected a resource type";
            return false;
        }
        std::string type = Lower(p.peek().text);
        ++p.pos;
        if (type == "all") all = true; else types_.push_back(type);
        if (!p.symbol(",")) break;
        ++p.pos;
    }
    if (all) types_.clear();
    if (!p.word("resources")) {
        error = "expected 'resources' after the resource types";
        return false;
    }
    ++p.pos;
    if (p.word("return")) {
        ++p.pos;
        if (!p.word("alladditionalfields")) {
            error = "expected 'allAdditionalFields' after 'return'";
            return false;
        }
        ++p.pos;
        allFields_ = true;
    }
    if (p.word("where")) {
        ++p.pos;
        where_ = p.orExpr();
        if (!where_) {
            error = p.error;
            return false;
        }
    }
    if (p.word("sorted")) {
        ++p.pos;
        if (!p.word("by") || p.t[p.pos + 1].type != Token::Word) {
            error = "expected 'sorted by <attribute>'";
            return false;
        }
        ++p.pos;
        sortBy_ = Lower(p.peek().text);
        ++p.pos;
        if (p.word("asc") || p.word("desc")) {
            sortDesc_ = p.word("desc");
            ++p.pos;
        }
    }
    if (p.peek().type != Token::End) {
        error = "unexpected text '" + p.peek().text + "'";
        return false;
    }
    return true;
}

bool SearchQuery::matches(const std::function<std::string(const std::string&)>& lookup) const {
    return !where_ || Eval(*where_, lookup);
}

}  // namespace ocwemu
