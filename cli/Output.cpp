#include "Output.h"

#include <algorithm>

namespace ocw {

namespace {

void PrintTable(std::ostream& out, const std::vector<Column>& columns, const std::vector<boost::json::object>& rows,
                const std::string& indent) {
    std::vector<size_t> widths;
    for (const Column& c : columns) widths.push_back(c.header.size());
    std::vector<std::vector<std::string>> cells;
    for (const boost::json::object& row : rows) {
        std::vector<std::string> line;
        for (size_t i = 0; i < columns.size(); ++i) {
            const boost::json::value* v = row.if_contains(columns[i].key);
            line.push_back(v != nullptr ? CellText(*v) : std::string("-"));
            widths[i] = std::max(widths[i], line.back().size());
        }
        cells.push_back(std::move(line));
    }
    auto emit = [&](const std::vector<std::string>& line) {
        std::string text = indent;
        for (size_t i = 0; i < line.size(); ++i) {
            text += line[i];
            if (i + 1 < line.size()) text += std::string(widths[i] - line[i].size() + 2, ' ');
        }
        out << text << '\n';
    };
    std::vector<std::string> header;
    for (const Column& c : columns) header.push_back(c.header);
    emit(header);
    for (const auto& line : cells) emit(line);
    if (rows.empty()) out << indent << "(none)\n";
}

bool IsTableMember(const boost::json::value& v) {
    return v.is_array() && !v.get_array().empty() && v.get_array().front().is_object();
}

}  // namespace

std::string CellText(const boost::json::value& value) {
    switch (value.kind()) {
        case boost::json::kind::null:
            return "-";
        case boost::json::kind::bool_:
            return value.get_bool() ? "yes" : "no";
        case boost::json::kind::int64:
            return std::to_string(value.get_int64());
        case boost::json::kind::uint64:
            return std::to_string(value.get_uint64());
        case boost::json::kind::double_:
            return boost::json::serialize(value);
        case boost::json::kind::string:
            return value.get_string().empty() ? std::string("-") : std::string(value.get_string());
        case boost::json::kind::array: {
            std::string joined;
            for (const boost::json::value& item : value.get_array()) {
                joined += (joined.empty() ? "" : ",") + CellText(item);
            }
            return joined.empty() ? std::string("-") : joined;
        }
        case boost::json::kind::object:
            return boost::json::serialize(value);
    }
    return "-";
}

boost::json::array ListOutput::toJson() const {
    boost::json::array list;
    for (const boost::json::object& row : rows_) {
        boost::json::object ordered;
        for (const Column& c : columns_) {
            const boost::json::value* v = row.if_contains(c.key);
            ordered[c.key] = v != nullptr ? *v : boost::json::value(nullptr);
        }
        list.push_back(std::move(ordered));
    }
    return list;
}

void ListOutput::print(std::ostream& out, bool json) const {
    if (json) {
        out << boost::json::serialize(toJson()) << '\n';
        return;
    }
    PrintTable(out, columns_, rows_, "");
}

void PrintRecord(std::ostream& out, const boost::json::object& record, bool json) {
    if (json) {
        out << boost::json::serialize(record) << '\n';
        return;
    }
    size_t width = 0;
    for (const auto& member : record) {
        if (!IsTableMember(member.value())) width = std::max(width, member.key().size());
    }
    for (const auto& member : record) {
        if (IsTableMember(member.value())) continue;
        const std::string key(member.key());
        out << key << ':' << std::string(width - key.size() + 1, ' ') << CellText(member.value()) << '\n';
    }
    for (const auto& member : record) {
        if (!IsTableMember(member.value())) continue;
        // Columns are the union of the rows' members, in order of appearance.
        std::vector<Column> columns;
        std::vector<boost::json::object> rows;
        for (const boost::json::value& item : member.value().get_array()) {
            if (!item.is_object()) continue;
            for (const auto& field : item.get_object()) {
                const std::string key(field.key());
                if (std::none_of(columns.begin(), columns.end(), [&](const Column& c) { return c.key == key; })) {
                    columns.push_back({key, key});
                }
            }
            rows.push_back(item.get_object());
        }
        out << '\n' << std::string(member.key()) << ":\n";
        PrintTable(out, columns, rows, "  ");
    }
}

void PrintResult(std::ostream& out, const std::string& text, const boost::json::object& result, bool json) {
    if (json) {
        out << boost::json::serialize(result) << '\n';
    } else {
        out << text << '\n';
    }
}

}  // namespace ocw
