#pragma once
// Results of commands, printed either as aligned tables (for people) or as
// JSON (--json, for scripts). A command describes its result once, as JSON
// values; the table form is derived from it, so both forms always agree.
#include <boost/json.hpp>

#include <ostream>
#include <string>
#include <vector>

namespace ocw {

struct Column {
    std::string key;     // member name in the JSON form
    std::string header;  // column title in the table form
};

// A list of records with the same members.
class ListOutput {
public:
    explicit ListOutput(std::vector<Column> columns) : columns_(std::move(columns)) {}

    void add(boost::json::object row) { rows_.push_back(std::move(row)); }
    size_t size() const { return rows_.size(); }

    // JSON: one array of objects (every column's member, in column order).
    // Table: a header line and one line per row, columns padded to the widest
    // cell; an empty list prints the header and "(none)".
    void print(std::ostream& out, bool json) const;

    boost::json::array toJson() const;

private:
    std::vector<Column> columns_;
    std::vector<boost::json::object> rows_;
};

// One record. Scalars print as "key: value" lines; members that hold arrays of
// objects print as indented tables below them.
void PrintRecord(std::ostream& out, const boost::json::object& record, bool json);

// A success message for people; in JSON mode the given object instead.
void PrintResult(std::ostream& out, const std::string& text, const boost::json::object& result, bool json);

// Table text of one value: strings as they are, true/false as yes/no, numbers
// in decimal, null and empty text as "-", arrays of scalars joined with ",".
std::string CellText(const boost::json::value& value);

}  // namespace ocw
