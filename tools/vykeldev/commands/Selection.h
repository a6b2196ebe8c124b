#ifndef VYKELDEV_COMMANDS_SELECTION_H
#define VYKELDEV_COMMANDS_SELECTION_H

#include "commands/Devices.h"
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vykeldev {

/// Which devices of a reading are wanted, and in which order.
struct Selection {
    std::optional<std::string> number; ///< As text, such as "KEL3".
    std::optional<std::string> alias;
    std::optional<std::string> token;
    std::string sort; ///< "number", "alias" or "token"; empty: in the order of the list.
};

/// The options for it. `selection` must outlive the parsing.
void addSelectionOptions(CLI::App& command, Selection& selection);

/// Leaves only the devices that are wanted. Devices without a number or an alias are sorted after the others.
void select(std::vector<DeviceInfo>& devices, const Selection& selection);

} // namespace vykeldev

#endif
