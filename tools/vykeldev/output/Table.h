#ifndef VYKELDEV_OUTPUT_TABLE_H
#define VYKELDEV_OUTPUT_TABLE_H

#include <iosfwd>
#include <string>
#include <vector>

namespace vykeldev {

/// Rows of text in columns that are aligned by their width on a terminal.
class Table {
public:
    enum class Align { Left, Right };
    struct Column {
        const char* heading;
        Align align;
    };

    explicit Table(std::vector<Column> tableColumns);

    /// Adds a row with one cell for each column. Cells may hold any text; they are made printable.
    void addRow(const std::vector<std::string>& cells);

    /// Writes headings and rows, the headings bold when `colour`.
    void print(std::ostream& out, bool colour) const;

private:
    std::vector<Column> columns;
    std::vector<std::vector<std::string>> rows; ///< The first one: the headings.
};

} // namespace vykeldev

#endif
