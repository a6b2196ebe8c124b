// The texts of the sample plug-in: any text may be read, and each line of a numbers file that the plug-in
// writes reads back, but not when it was cut off.
#include "DeviceText.h"
#include "Fuzz.h"
#include <algorithm>

namespace {

using namespace simulated;
using vykelfuzz::check;

std::size_t lineCount(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
}

void checkError(const TextError& error, const std::string& text) {
    check(error.line >= 1 && error.line <= lineCount(text) && *error.what() != '\0');
}

void checkChange(const DeviceEntry& change) {
    const std::string line = formatChange(change);
    const Changes read = parseChanges("bad\n" + line + "\n\n" + line);
    check(read.error->line == 1 && read.entries.size() == 2);
    for (const DeviceEntry& entry : read.entries)
        check(entry.token == change.token && entry.number == change.number && entry.alias == change.alias);
    for (std::size_t length = 1; length < line.size(); ++length)
        check(parseChanges(line.substr(0, length)).entries.empty());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = vykelfuzz::textOf(data, size);
    const Changes changes = parseChanges(text);
    if (changes.error)
        checkError(*changes.error, text);
    for (const DeviceEntry& entry : changes.entries) {
        checkChange(entry);
        checkChange({entry.token, "", 1, 0, 7, entry.token2 + "\"\\\r\n#="});
    }
    try {
        check(parseDevices(text).size() == changes.entries.size() && !changes.error);
    } catch (const TextError& error) {
        checkError(error, text);
    }
    return 0;
}
