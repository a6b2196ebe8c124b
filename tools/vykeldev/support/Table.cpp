#include "support/Table.h"

#include "support/Text.h"
#include <algorithm>
#include <ostream>
#include <utility>

namespace vykeldev {

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {
    for (const Column& column : columns_)
        widths_.push_back(displayWidth(column.heading));
}

void Table::addRow(const std::vector<std::string>& cells) {
    Row row;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        row.push_back(printable(cells.at(i)));
        widths_[i] = std::max(widths_[i], displayWidth(row.back()));
    }
    rows_.push_back(std::move(row));
}

void Table::print(std::ostream& out, bool colour) const {
    Row headings;
    for (const Column& column : columns_)
        headings.push_back(column.heading);
    out << (colour ? "\x1b[1m" : "");
    printRow(out, headings);
    out << (colour ? "\x1b[0m" : "");
    for (const Row& row : rows_)
        printRow(out, row);
}

void Table::printRow(std::ostream& out, const Row& row) const {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string padding(widths_[i] - displayWidth(row[i]), ' ');
        line += columns_[i].align == Align::Right ? padding + row[i] : row[i] + padding;
        line += "  ";
    }
    out << trimmed(std::move(line)) << '\n';
}

} // namespace vykeldev
