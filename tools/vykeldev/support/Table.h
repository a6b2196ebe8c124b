#ifndef VYKELDEV_SUPPORT_TABLE_H
#define VYKELDEV_SUPPORT_TABLE_H

#include <iosfwd>
#include <string>
#include <vector>

namespace vykeldev {

/// Rows of text in columns, aligned by their width on a terminal.
class Table {
public:
    enum class Align { Left, Right };
    struct Column {
        std::string heading;
        Align align;
    };

    explicit Table(std::vector<Column> all);

    /// Adds a row with one cell for each column. Cells may hold any text; they are made printable.
    void addRow(const std::vector<std::string>& cells);

    /// Writes headings and rows, the headings bold when `colour`.
    void print(std::ostream& out, bool colour) const;

private:
    using Row = std::vector<std::string>;
    void printRow(std::ostream& out, const Row& row) const;

    std::vector<Column> columns;
    std::vector<std::size_t> widths;
    std::vector<Row> rows;
};

} // namespace vykeldev

#endif
