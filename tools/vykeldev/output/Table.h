#ifndef VYKELDEV_OUTPUT_TABLE_H
#define VYKELDEV_OUTPUT_TABLE_H

#include "output/Json.h"
#include <iosfwd>
#include <vector>

namespace vykeldev {

/// A column of a table: how it shows a member of the rows' objects.
struct Column {
    enum class Kind { Text, Count, DeviceNumber };

    const char* heading;
    const char* member;
    Kind kind = Kind::Text;   ///< A count is aligned at the right; a device's number is shown as in KEL3.
    const char* absent = "-"; ///< Shown for null.
};

/// Prints a JSON array of objects as a table whose columns are aligned by their width on a terminal, headings
/// first, in bold when `colour`. Texts may hold anything; they are made printable.
void printTable(std::ostream& out, bool colour, const std::vector<Column>& columns, const Json& rows);

} // namespace vykeldev

#endif
