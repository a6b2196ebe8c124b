#include "support/Table.h"

#include "support/Text.h"
#include <algorithm>
#include <ostream>
#include <utility>

namespace vykeldev {

Table::Table(std::vector<Column> all) : columns(std::move(all)) {
    for (const Column& column : columns)
        widths.push_back(displayWidth(column.heading));
}

void Table::addRow(const std::vector<std::string>& cells) {
    Row row;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        row.push_back(printable(cells.at(i)));
        widths[i] = std::max(widths[i], displayWidth(row.back()));
    }
    rows.push_back(std::move(row));
}

void Table::print(std::ostream& out, bool colour) const {
    Row headings;
    for (const Column& column : columns)
        headings.push_back(column.heading);
    out << (colour ? "\x1b[1m" : "");
    printRow(out, headings);
    out << (colour ? "\x1b[0m" : "");
    for (const Row& row : rows)
        printRow(out, row);
}

void Table::printRow(std::ostream& out, const Row& row) const {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string padding(widths[i] - displayWidth(row[i]), ' ');
        line += columns[i].align == Align::Right ? padding + row[i] : row[i] + padding;
        line += "  ";
    }
    out << trimmed(std::move(line)) << '\n';
}

} // namespace vykeldev
