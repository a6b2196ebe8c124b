#include "commands/Selection.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <tuple>

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
    command.add_option("--sort", selection.sort, "Sorts the devices by number, alias or token")
        ->check(CLI::IsMember({"number", "alias", "token"}))
        ->type_name("WHAT");
}

void select(std::vector<DeviceInfo>& devices, const Selection& selection) {
    devices.erase(std::remove_if(devices.begin(), devices.end(),
                                 [&](const DeviceInfo& device) { return !isWanted(device, selection); }),
                  devices.end());
    const auto sortBy = [&](auto key) {
        std::stable_sort(devices.begin(), devices.end(),
                         [&](const DeviceInfo& a, const DeviceInfo& b) { return key(a) < key(b); });
    };
    if (selection.sort == "number")
        sortBy([](const DeviceInfo& device) { return device.number; }); // the one that means none is the last
    else if (selection.sort == "alias")
        sortBy([](const DeviceInfo& device) {
            const std::string alias = device.alias.value_or("");
            return std::tuple(alias.empty(), alias);
        });
    else if (selection.sort == "token")
        sortBy([](const DeviceInfo& device) { return device.token; });
}

} // namespace vykeldev
