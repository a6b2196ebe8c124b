#include "commands/Selection.h"

#include <algorithm>
#include <CLI/CLI.hpp>

namespace vykeldev {
namespace {

bool isWanted(const DeviceInfo& device, const Selection& selection) {
    return (!selection.number || numberText(device.number) == *selection.number) &&
           (!selection.alias || device.alias == selection.alias) &&
           (!selection.token || device.token == *selection.token);
}

} // namespace

void addSelectionOptions(CLI::App& command, Selection& selection) {
    command.add_option("--number", selection.number, "Shows only the device of this number, such as KEL3")
        ->check(numberFlaw)
        ->type_name("KELn");
    command.add_option("--alias", selection.alias, "Shows only devices of exactly this alias")
        ->type_name("TEXT");
    command.add_option("--token", selection.token, "Shows only devices of exactly this token")
        ->type_name("TEXT");
}

void select(std::vector<DeviceInfo>& devices, const Selection& selection) {
    devices.erase(std::remove_if(devices.begin(), devices.end(),
                                 [&](const DeviceInfo& device) { return !isWanted(device, selection); }),
                  devices.end());
}

} // namespace vykeldev
