#include "output/Table.h"

#include "system/DisplayText.h"
#include "system/Text.h"
#include <algorithm>
#include <ostream>
#include <string>

namespace vykeldev {
namespace {

std::string cell(const Column& column, const Json& value) {
    if (value.is_null())
        return column.absent;
    const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    return (column.kind == Column::Kind::DeviceNumber ? "KEL" : "") + printable(text);
}

} // namespace

void printTable(std::ostream& out, bool colour, const std::vector<Column>& columns, const Json& rows) {
    std::vector<std::string> lines(rows.size() + 1);
    for (const Column& column : columns) {
        std::vector<std::string> cells{column.heading};
        for (const Json& row : rows)
            cells.push_back(cell(column, row.at(column.member)));
        std::size_t width = 0;
        for (const std::string& text : cells)
            width = std::max(width, displayWidth(text));
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string padding(width - displayWidth(cells[i]), ' ');
            lines[i] += (column.kind == Column::Kind::Count ? padding + cells[i] : cells[i] + padding) + "  ";
        }
    }
    for (std::string& line : lines) {
        const bool bold = colour && &line == &lines.front();
        out << (bold ? "\x1b[1m" : "") << trimmed(std::move(line)) << '\n' << (bold ? "\x1b[0m" : "");
    }
}

} // namespace vykeldev
