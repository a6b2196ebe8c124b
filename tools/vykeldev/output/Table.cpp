#include "output/Table.h"

#include "system/DisplayText.h"
#include "system/Text.h"
#include <algorithm>
#include <ostream>
#include <utility>

namespace vykeldev {

Table::Table(std::vector<Column> tableColumns) : columns(std::move(tableColumns)) {
    std::vector<std::string> headings;
    for (const Column& column : columns)
        headings.emplace_back(column.heading);
    addRow(headings);
}

void Table::addRow(const std::vector<std::string>& cells) {
    std::vector<std::string>& row = rows.emplace_back();
    for (const std::string& cell : cells)
        row.push_back(printable(cell));
}

void Table::print(std::ostream& out, bool colour) const {
    std::vector<std::size_t> widths(columns.size());
    for (const auto& row : rows)
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    for (const auto& row : rows) {
        const bool bold = colour && &row == &rows.front();
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const std::string padding(widths[i] - displayWidth(row[i]), ' ');
            line += (columns[i].align == Align::Right ? padding + row[i] : row[i] + padding) + "  ";
        }
        out << (bold ? "\x1b[1m" : "") << trimmed(std::move(line)) << '\n' << (bold ? "\x1b[0m" : "");
    }
}

} // namespace vykeldev
