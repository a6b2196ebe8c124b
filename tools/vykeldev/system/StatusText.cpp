#include "system/StatusText.h"

#include "system/DisplayText.h"
#include <algorithm>

namespace vykeldev {
namespace {

/// A text of a fixed-size field, which a faulty writer may have left without its end.
template <std::size_t size>
std::string fieldText(const char (&field)[size]) {
    return printable(std::string(field, std::find(field, field + size, '\0')));
}

} // namespace

std::string placeIn(const vykel::StatusBlock& status) {
    const std::string file = fieldText(status.file);
    return file.empty() || status.line == 0 ? file : file + ":" + std::to_string(status.line);
}

std::string originText(const vykel::StatusBlock& status) {
    const std::string place = placeIn(status);
    return place.empty() ? "" : "; the plug-in names " + place;
}

} // namespace vykeldev
