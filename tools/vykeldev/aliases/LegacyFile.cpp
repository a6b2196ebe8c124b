#include "aliases/LegacyFile.h"

#include "ConfigurationFolder.h"
#include "Failure.h"
#include "ini/IniLoad.h"
#include "pellumkelddk/user/FileLock.h"
#include "Text.h"
#include "TraditionalAliasTransferManager.h"
#include "vyfile/internal/FileLockImpl.h"
#include <optional>

namespace vykeldev::aliases {

LegacyFile::LegacyFile() : filePath(vykel::TraditionalAliasTransferManager().iniPath()) {
    const std::string lockPath = vykel::getConfigurationFolder() + "vykel.lck";
    const vykel::FileStream stream{std::fopen(lockPath.c_str(), "rb")};
    std::optional<vyfile::FileLockImpl> lock;
    if (stream != nullptr)
        lock.emplace(stream.get()).lock();
    found = load(first) && load(second);
}

bool LegacyFile::load(const vykel::AutoIniText& text) const {
    const int result = vyini::loadIniFile(text.document(), filePath.c_str());
    if (result == 0 || result == vyini::IniNoFile)
        return result == 0;
    const std::string what = "reading '" + printable(filePath) + "' failed with " + std::to_string(result);
    const std::string meaning = "Every refresh leaves the file as it is and moves no alias.";
    if (result == vyini::IniWideText)
        throw Failure(what + ": it is UTF-16 or UTF-32", meaning, "Save it as UTF-8.");
    throw Failure(what, meaning, "Close the program that holds it, and see that this user may read it.");
}

} // namespace vykeldev::aliases
