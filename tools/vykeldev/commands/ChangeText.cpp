#include "commands/ChangeText.h"

#include "output/Json.h"
#include "system/DisplayText.h"
#include "system/Text.h"
#include <iomanip>

namespace vykeldev {
namespace {

using ChangeKind = DeviceChange::Kind;

struct KindName {
    const char* name;
    const char* colour;
};

const KindName& nameOf(ChangeKind kind) noexcept {
    static constexpr KindName names[] = {{"present", ""},         {"added", "\x1b[32m"},
                                         {"removed", "\x1b[31m"}, {"renumbered", "\x1b[33m"},
                                         {"renamed", "\x1b[33m"}, {"kept", ""}};
    return names[static_cast<std::size_t>(kind)];
}

std::string aliasText(const std::optional<std::string>& alias) {
    return alias ? '"' + printable(*alias) + '"' : "-";
}

} // namespace

std::string toText(const DeviceChange& change, bool colour) {
    const KindName& kind = nameOf(change.kind);
    std::string line =
        concat(colour ? kind.colour : "", std::left, std::setw(12), kind.name, colour ? "\x1b[0m" : "",
               std::setw(8), numberText(change.now.number), printable(change.now.token));
    if (change.kind == ChangeKind::Renumbered)
        line += "  was " + numberText(change.before.number);
    else if (change.kind == ChangeKind::Renamed)
        line += "  alias " + aliasText(change.now.alias) + ", was " + aliasText(change.before.alias);
    else if (change.now.alias)
        line += "  alias " + aliasText(change.now.alias);
    return line;
}

Json toDocument(const DeviceChange& change, std::uint32_t tokenFormat) {
    Json event = {{"schemaVersion", 1},          {"event", nameOf(change.kind).name},
                  {"tokenFormat", tokenFormat},  {"token", change.now.token},
                  {"number", change.now.number}, {"alias", change.now.alias}};
    if (change.kind == ChangeKind::Renumbered)
        event["previousNumber"] = change.before.number;
    else if (change.kind == ChangeKind::Renamed)
        event["previousAlias"] = change.before.alias;
    return event;
}

} // namespace vykeldev
