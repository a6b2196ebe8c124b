// The legacy alias file: what the preview says of any file is what the transfer then does. Each of the first
// four bytes makes a device, the rest is the file.
#include "child/Preview.h"
#include "errors/Exception.h"
#include "Fuzz.h"
#include "support/IniDescription.h"
#include "support/LegacyDevice.h"
#include "support/TestFiles.h"
#include "TraditionalAliasTransferManager.h"
#include <set>

namespace {

using namespace vykeldev;
using vykelfuzz::check;
using vykeltest::LegacyDevice;
using Devices = std::list<LegacyDevice>;

constexpr std::size_t deviceCount = 4;

Devices makeDevices(const std::uint8_t* bytes) {
    constexpr const char* aliases[] = {"", "", "Named", nullptr};
    Devices devices;
    for (std::size_t i = 0; i < deviceCount; ++i) {
        const std::uint32_t number = bytes[i] & 7;
        devices.emplace_back(number != 7 ? number : vykel::noDeviceNumber, aliases[bytes[i] >> 3 & 3],
                             "T" + std::to_string(bytes[i] >> 5));
    }
    return devices;
}

/// The entries as the file shows them, in any order: a transfer writes records last, and without the blanks
/// at the ends of their texts.
using Entries = std::multiset<std::pair<std::string, std::string>>;

void add(Entries& entries, const LegacyEntry& entry) {
    const auto textOf = [](const auto& text) { return text ? '=' + vykeltest::trim(*text) : ""; };
    entries.emplace(textOf(entry.alias), textOf(entry.target));
}

Preview preview(const std::string& path, Devices& real) {
    const LegacyFile file(path);
    PreviewDevices devices;
    for (LegacyDevice& device : real)
        devices.add(device);
    return previewTransfer(file, devices);
}

/// Whether the transfer fails, and what it leaves in the file.
bool transfer(const LegacyFile& file, Devices& devices, Entries& left) {
    for (const LegacyEntry& entry : file.entries())
        add(left, entry);
    try {
        if (vykel::TraditionalAliasTransferManager::transfer(&file.document(), tableOf(devices))) {
            left.clear();
            for (const LegacyEntry& entry : file.entries())
                add(left, entry);
        }
        vykelfuzz::note(vykeltest::describe(file.document()));
        return false;
    } catch (const vyerr::ExceptionBase& exception) {
        vykelfuzz::note(std::to_string(exception.status()->code) + exception.status()->json);
        return true;
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < deviceCount)
        return 0;
    static const vykelfuzz::ScratchFolder folder;
    const std::string path = (folder.path / "vykel.ini").string();
    vykeltest::writeFile(path, vykelfuzz::textOf(data + deviceCount, size - deviceCount));

    Devices devices = makeDevices(data);
    const Preview expected = preview(path, devices);
    Entries stay;
    std::multiset<std::pair<std::uint32_t, std::string>> moves, moved;
    for (const EntryPreview& entry : expected.entries) {
        if (entry.stays)
            add(stay, entry);
        if (entry.moves)
            moves.emplace(entry.device, *entry.alias);
    }
    devices = makeDevices(data);
    Entries left;
    check(transfer(LegacyFile(path), devices, left) == expected.fails);
    check(left == stay);
    for (const LegacyDevice& device : devices) {
        vykelfuzz::note(device.calls + ' ' + device.alias);
        if (device.calls.find('S') != std::string::npos)
            moved.emplace(device.number, device.alias);
    }
    check(expected.fails || moved == moves);
    return 0;
}
