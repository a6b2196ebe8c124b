#include "machine/Setup.h"

#include "ConfigurationFolder.h"
#include "errors/Exception.h"
#include "machine/HeldPlace.h"
#include "PluginRegistrations.h"
#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Text.h"
#include "vybase/owners.h"
#include <array>

namespace vykeldev {
namespace {

std::string withoutLast(std::string path) {
    path.pop_back(); // the backslash at its end
    return path;
}

std::string keyPath() {
    return withoutLast(vykel::pluginsKey);
}

std::string folderPath() {
    try {
        return withoutLast(vykel::getConfigurationFolder());
    } catch (const vyerr::Exception&) {
        throw Failure("the common application data folder cannot be found", "",
                      "Check that the folder (usually ProgramData on drive C) exists and that the registry "
                      "has its right path.");
    }
}

enum class KeyAccess { Open, Make };

/// Opens or makes the key. Returns whether it is there now.
bool reachKey(KeyAccess access) {
    const bool makes = access == KeyAccess::Make;
    const WideString path = toWide(keyPath());
    HKEY handle = nullptr;
    const LSTATUS error = makes
                              ? RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr,
                                                REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, &handle, nullptr)
                              : RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &handle);
    const vybase::RegistryKey key(handle);
    if (!key && error != ERROR_FILE_NOT_FOUND)
        throw systemFailure(
            concat(makes ? "making" : "opening", " the registry key 'HKEY_LOCAL_MACHINE\\", keyPath(), "'"),
            static_cast<DWORD>(error), repeatSetup);
    return key != nullptr;
}

// The rights. Administrators (BA) and the system (SY) may do everything, ordinary users (BU) what a last
// entry or two say. Nothing is inherited from the folder above.
constexpr const char* closedFolder = "O:BAD:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)";
constexpr const char* readOnlyFolder = "O:BAD:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)(A;OICI;0x1200a9;;;BU)";
/// Users list and read the folder and make files in it; they cannot rename it, make it a link or make folders
/// in it. With the files they do everything but give rights.
constexpr const char* sharedFolder =
    "O:BAD:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)(A;;0x1200ab;;;BU)(A;OIIO;0x1301bf;;;BU)";
/// Users read and lock the file. A lock needs no more, and who may write a file may be able to make it a
/// link.
constexpr const char* lockFile = "O:BAD:P(A;;FA;;;BA)(A;;FA;;;SY)(A;;0x120089;;;BU)";
constexpr const char* sharedFile = "O:BAD:P(A;;FA;;;BA)(A;;FA;;;SY)(A;;0x1301bf;;;BU)";

/// The two folders and the two lock files, in the order in which they are made.
std::array<Place, 4> places() {
    const std::string folder = folderPath();
    return {{{true, folder.substr(0, folder.rfind('\\'))},
             {true, folder},
             {false, folder + "\\DeviceList.lck"},
             {false, folder + "\\vykel.lck"}}};
}

/// Lets all users change the legacy file, and the new one that a client which was killed left beside it.
void shareLegacyFiles(const std::string& folder) {
    for (const char* const name : {"\\vykel.ini", "\\vykel.TMP"}) {
        const Place place = {false, folder + name};
        if (const FileHandle file = openPlace(place, READ_CONTROL | WRITE_DAC | WRITE_OWNER))
            setRights(place, file.get(), sharedFile);
    }
}

} // namespace

std::string describe(const SetupItem& item) {
    return std::string(item.kind) + ' ' + printable(item.place);
}

std::vector<SetupItem> examineSetup() {
    std::vector<SetupItem> items{
        {"registry key", "HKEY_LOCAL_MACHINE\\" + keyPath(), reachKey(KeyAccess::Open)}};
    for (const Place& place : places())
        items.push_back(
            {place.isFolder ? "folder" : "lock file", place.path, openPlace(place, 0) != nullptr});
    return items;
}

std::vector<SetupItem> completeSetup(bool resetRights) {
    std::vector<SetupItem> items = examineSetup();
    const auto [upperPlace, lowerPlace, numbersPlace, aliasesPlace] = places();
    HeldPlace upper(upperPlace, nullptr, readOnlyFolder, resetRights);
    if (resetRights)
        upper.setRights(readOnlyFolder);
    // Users get their rights to the folder when the lock files are in it.
    HeldPlace lower(lowerPlace, &upper, closedFolder, resetRights);
    HeldPlace numbers(numbersPlace, &lower, lockFile, resetRights);
    HeldPlace aliases(aliasesPlace, &lower, lockFile, resetRights);
    if (resetRights) {
        numbers.setRights(lockFile);
        aliases.setRights(lockFile);
    }
    if (resetRights || lower.isNew())
        lower.setRights(sharedFolder);
    if (resetRights)
        shareLegacyFiles(lowerPlace.path);
    if (!items[0].present)
        reachKey(KeyAccess::Make); // last: only files and folders have to be taken back
    std::size_t item = 0;
    for (HeldPlace* const place : {&upper, &lower, &numbers, &aliases}) {
        items[++item].present = !place->isNew(); // one that was there may have been made anew
        place->keep();
    }
    return items;
}

} // namespace vykeldev
