// The text of the simulated devices: any text may be read. What is written into it, and each line of the
// journal, reads back; a journal's line that was cut off does not.
#include "DeviceText.h"
#include "Fuzz.h"
#include <algorithm>

namespace {

using namespace simulated;
using vykelfuzz::check;

void checkSame(const std::vector<DeviceEntry>& left, const std::vector<DeviceEntry>& right) {
    const auto same = [](const DeviceEntry& a, const DeviceEntry& b) {
        return a.token == b.token && a.token2 == b.token2 && a.version == b.version &&
               a.sortKey == b.sortKey && a.number == b.number && a.alias == b.alias && a.line == b.line;
    };
    check(std::equal(left.begin(), left.end(), right.begin(), right.end(), same));
}

void checkChange(const DeviceChange& change) {
    const std::string line = formatChange(change);
    const auto read = parseChange(line);
    check(read && read->token == change.token && read->number == change.number &&
          read->alias == change.alias);
    for (std::size_t length = 0; length < line.size(); ++length)
        check(!parseChange(line.substr(0, length)));
}

void rewrite(const std::string& text, std::vector<DeviceEntry> devices) {
    const std::string same = rewriteDevices(text, devices); // but for numbers with leading zeros
    checkSame(parseDevices(same), devices);
    check(rewriteDevices(same, devices) == same);
    std::string alias = "\"\\\r\n#=";
    std::uint32_t number = 0;
    for (DeviceEntry& device : devices) {
        device.number = number++;
        device.alias = alias;
        alias = device.token;
        checkChange({device.token, device.number, device.alias});
        checkChange({device.token, {}, device.token2});
    }
    const std::string written = rewriteDevices(text, devices);
    checkSame(parseDevices(written), devices);
    check(std::count(written.begin(), written.end(), '\n') == std::count(text.begin(), text.end(), '\n'));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = vykelfuzz::textOf(data, size);
    parseChange(text);
    std::vector<DeviceEntry> devices;
    try {
        devices = parseDevices(text);
    } catch (const TextError& error) {
        const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
        check(error.line >= 1 && error.line <= static_cast<std::size_t>(lines) && *error.what() != '\0');
        return 0;
    }
    rewrite(text, std::move(devices));
    return 0;
}
