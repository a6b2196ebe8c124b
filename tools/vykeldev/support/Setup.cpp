#include "support/Setup.h"

#include "ConfigurationFolder.h"
#include "errors/Exception.h"
#include "platform/SharedFolder.h"
#include "PluginRegistrations.h"
#include "support/DisplayText.h"
#include "support/Failure.h"
#include "support/Text.h"
#include "vysys/windowsRegistry.h"

namespace vykeldev {
namespace {

constexpr const char* repeat = "Remove the cause and run 'vykeldev setup' again.";

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

/// `open` opens or makes the key and returns the system's error.
template <class Open>
bool reachKey(const char* action, Open open) {
    vysys::RegistryKey key;
    const LSTATUS error = open(toWide(keyPath()).c_str(), &key.handle);
    key.opened = error == ERROR_SUCCESS;
    if (!key.opened && error != ERROR_FILE_NOT_FOUND)
        throw systemFailure(std::string(action) + " the registry key 'HKEY_LOCAL_MACHINE\\" + keyPath() + "'",
                            static_cast<DWORD>(error), repeat);
    return key.opened;
}

bool keyExists() {
    return reachKey("opening", [](LPCWSTR path, PHKEY key) {
        return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, key);
    });
}

void makeKey() {
    reachKey("making", [](LPCWSTR path, PHKEY key) {
        return RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                               nullptr, key, nullptr);
    });
}

bool folderExists(const std::string& path) {
    const DWORD attributes = GetFileAttributesW(toWide(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
            return false;
        throw systemFailure("looking for the folder '" + printable(path) + "'", error, repeat);
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        throw Failure("'" + printable(path) + "' is a file", "A folder of this name is needed.",
                      "Move the file away and run 'vykeldev setup' again.");
    }
    return true;
}

DWORD makeFolder(const std::string& path) {
    return CreateDirectoryW(toWide(path).c_str(), nullptr) ? ERROR_SUCCESS : GetLastError();
}

/// A folder that is removed again when it is new and keep() was not called.
class NewFolder {
public:
    /// Does nothing when the folder is there. Throws Failure.
    NewFolder(const std::string& path, DWORD (*make)(const std::string&)) : widePath(toWide(path)) {
        const DWORD error = folderExists(path) ? ERROR_ALREADY_EXISTS : make(path);
        isNew = error == ERROR_SUCCESS;
        if (!isNew && error != ERROR_ALREADY_EXISTS)
            throw systemFailure("making the folder '" + printable(path) + "'", error, repeat);
    }
    ~NewFolder() {
        if (isNew)
            RemoveDirectoryW(widePath.c_str());
    }
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;

    void keep() noexcept { isNew = false; }

private:
    const WideString widePath;
    bool isNew = false;
};

} // namespace

std::string describe(const SetupItem& item) {
    return std::string(item.kind) + ' ' + printable(item.place);
}

std::vector<SetupItem> examineSetup() {
    const std::string folder = folderPath();
    return {{"registry key", "HKEY_LOCAL_MACHINE\\" + keyPath(), keyExists()},
            {"folder", folder, folderExists(folder)}};
}

std::vector<SetupItem> completeSetup(bool resetRights) {
    std::vector<SetupItem> before = examineSetup();
    const bool keyPresent = before[0].present;
    const std::string& folder = before[1].place;
    NewFolder upper(folder.substr(0, folder.rfind('\\')), makeFolder);
    NewFolder lower(folder, makeSharedFolder);
    if (resetRights && before[1].present)
        shareFolder(folder);
    if (!keyPresent)
        makeKey(); // last: only folders have to be taken back
    upper.keep();
    lower.keep();
    return before;
}

} // namespace vykeldev
