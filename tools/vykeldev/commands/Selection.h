#ifndef VYKELDEV_COMMANDS_SELECTION_H
#define VYKELDEV_COMMANDS_SELECTION_H

#include "child/Devices.h"
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vykeldev {

/// Which devices of a reading are wanted.
struct Selection {
    std::optional<std::string> number; ///< As text, such as "KEL3".
    std::optional<std::string> alias;
    std::optional<std::string> token;
};

/// The options for it. `selection` must outlive the parsing.
void addSelectionOptions(CLI::App& command, Selection& selection);

/// Leaves only the devices that are wanted.
void select(std::vector<DeviceInfo>& devices, const Selection& selection);

} // namespace vykeldev

#endif
