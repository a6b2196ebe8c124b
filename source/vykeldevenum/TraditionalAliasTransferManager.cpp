#include "TraditionalAliasTransferManager.h"

#include "ConfigurationFolder.h"
#include "errors/ScopedStatus.h"
#include "ini/IniEdit.h"
#include "ini/IniEscape.h"
#include "ini/IniLoad.h"
#include "ini/IniSave.h"
#include "pellumkelddk/user/AutoIniText.h"
#include "pellumkelddk/user/FileLock.h"
#include "PluginCall.h"
#include "vyfile/internal/FileLockImpl.h"
#include <cstring>
#include <map>
#include <string_view>
#include <unordered_map>

namespace vykel {

namespace {

constexpr vyerr::RaiseSite saveSite{__FILE__, 95};
constexpr vyerr::RaiseSite resourceAliasSite{__FILE__, 142};
constexpr vyerr::RaiseSite resourceNameSite{__FILE__, 151};
constexpr vyerr::RaiseSite recordAliasSite{__FILE__, 280};
constexpr vyerr::RaiseSite recordTokenSite{__FILE__, 286};
constexpr vyerr::RaiseSite recordLocalSite{__FILE__, 293};
constexpr vyerr::RaiseSite recordDeleteSite{__FILE__, 300};
constexpr vyerr::RaiseSite recordWriteSite{__FILE__, 343};

constexpr const char* aliasesSection = "Aliases";
constexpr int iniDone = 1;

[[noreturn]] void raiseFault(vyerr::RaiseSite site) {
    vyerr::raiseError(StatusCode::ConfigurationFault, vyerr::constant::deviceEnumeration, site);
}

std::string numbered(const char* prefix, std::uint32_t number) {
    return prefix + std::to_string(number);
}

// The calls of a device, each of them guarded. Texts are the device's, valid until its next call.

std::uint32_t numberOf(IDevice& device) {
    return callPlugin([&] { return device.getNumber(); });
}

const char* aliasOf(IDevice& device) {
    return callPlugin([&] { return device.getAlias(); });
}

/// Whether a device takes part: it has a number and takes aliases.
bool takesPart(IDevice& device) {
    return numberOf(device) != noDeviceNumber && aliasOf(device) != nullptr;
}

/// Gives a device the alias, unless it has one already. Throws the device's code when it refuses.
void handOver(IDevice& device, const std::string& alias, AliasTransferObserver* observer) {
    const char* const current = aliasOf(device);
    const bool given = current != nullptr && *current == '\0';
    if (observer != nullptr)
        observer->onConsumed(alias, numberOf(device), given);
    if (!given)
        return;
    vyerr::ScopedStatusBlock status;
    callPlugin([&] { device.setAlias(alias.c_str(), 1, 0, status.get()); });
    status.check();
}

/// Resource name to alias. Of several aliases for one name the last in the file counts.
using ResourceNames = std::map<std::string, std::string>;

ResourceNames readResourceNames(vyini::IniDocument* document, std::uint32_t count) {
    ResourceNames names;
    for (std::uint32_t i = 1; i <= count; ++i) {
        vyini::IniSection* const section = vyini::findIniSection(document, aliasesSection);
        const vyini::IniEntry* const entry = section != nullptr ? vyini::getIniEntry(section, i) : nullptr;
        if (entry == nullptr)
            raiseFault(resourceAliasSite);
        if (entry->value == nullptr)
            raiseFault(resourceNameSite);
        names[entry->value] = entry->key;
    }
    return names;
}

/// The records of one run by token: of equal tokens only the first record that is left counts.
class RecordsByToken {
public:
    explicit RecordsByToken(std::vector<TraditionalAliasRecord>& all)
        : records(all), consumed(all.size(), false), nextEqual(all.size(), none) {
        first.reserve(all.size());
        for (std::size_t i = all.size(); i-- > 0;) {
            const auto [slot, isNew] = first.try_emplace(all[i].persistentToken, i);
            if (!isNew) {
                nextEqual[i] = slot->second;
                slot->second = i;
            }
        }
    }

    TraditionalAliasRecord* find(std::string_view token) {
        const auto slot = first.find(token);
        return slot != first.end() && slot->second != none ? &records[slot->second] : nullptr;
    }

    void consume(const TraditionalAliasRecord& record) {
        std::size_t& index = first.find(record.persistentToken)->second;
        consumed[index] = true;
        index = nextEqual[index];
    }

    std::vector<TraditionalAliasRecord> takeRemaining() {
        std::vector<TraditionalAliasRecord> remaining;
        for (std::size_t i = 0; i < records.size(); ++i)
            if (!consumed[i])
                remaining.push_back(std::move(records[i]));
        return remaining;
    }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    std::vector<TraditionalAliasRecord>& records;
    std::unordered_map<std::string_view, std::size_t> first; // its texts are the records'
    std::vector<bool> consumed;
    std::vector<std::size_t> nextEqual;
};

std::string readText(const vyini::IniDocument* document, vyini::IniSection* section, const char* key,
                     vyerr::RaiseSite site) {
    const vyini::IniEntry* const entry = vyini::findIniEntry(section, document->caseSensitive, key);
    vyini::IniString text;
    if (entry == nullptr || vyini::decodeIniValue(entry->value, text) != 0)
        raiseFault(site);
    return text.get();
}

bool readLocal(const vyini::IniDocument* document, vyini::IniSection* section) {
    const vyini::IniEntry* const entry = vyini::findIniEntry(section, document->caseSensitive, "Local");
    if (entry != nullptr && vyini::compareIniNames(entry->value, "True", 0) == 0)
        return true;
    if (entry == nullptr || vyini::compareIniNames(entry->value, "False", 0) != 0)
        raiseFault(recordLocalSite);
    return false;
}

void setValue(vyini::IniDocument* document, const std::string& section, const char* key, const char* value,
              int quote) {
    if (vyini::setIniValue(document, section.c_str(), key, value, quote) != iniDone)
        raiseFault(recordWriteSite);
}

void setEncoded(vyini::IniDocument* document, const std::string& section, const char* key,
                const std::string& text) {
    vyini::IniString encoded;
    if (vyini::encodeIniValue(text.c_str(), encoded) != 0)
        raiseFault(recordWriteSite);
    setValue(document, section, key, encoded.get(), '"');
}

void save(vyini::IniDocument* document, const std::string& path) {
    document->maxLineLength = -1; // no value is ever split
    document->splitChar = 0;
    document->writeFlags = vyini::IniSafeSave | vyini::IniFlushToDisk;
    if (vyini::saveIniFile(document, path.c_str()) != 0)
        raiseFault(saveSite);
}

} // namespace

TraditionalAliasTransferManager::TraditionalAliasTransferManager()
    : iniFilePath(getConfigurationFolder()), lockFilePath(iniFilePath) {
    iniFilePath += "vykel.ini";
    lockFilePath += "vykel.lck";
}

void TraditionalAliasTransferManager::transferAliases(const DeviceTable& devicesPerList) {
    const FileStream stream = openLockFile(lockFilePath.c_str());
    vyfile::FileLockImpl fileLock(stream.get());
    fileLock.lock();
    AutoIniText text;
    if (vyini::loadIniFile(text.document(), iniFilePath.c_str()) != 0)
        return;
    if (transfer(text.document(), devicesPerList))
        save(text.document(), iniFilePath);
}

AliasLayout TraditionalAliasTransferManager::layoutOf(vyini::IniDocument* document) {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    if (vyini::getIniUInt(document, "General", "MajorVersion", &major) != iniDone ||
        vyini::getIniUInt(document, "General", "MinorVersion", &minor) != iniDone)
        return AliasLayout::ByResourceName;
    if (major >= 15)
        return AliasLayout::ByTokenFormat2;
    return major == 14 && minor == 7 ? AliasLayout::ByTokenFormat1 : AliasLayout::ByResourceName;
}

bool TraditionalAliasTransferManager::transfer(vyini::IniDocument* document,
                                               const DeviceTable& devicesPerList,
                                               AliasTransferObserver* observer) {
    switch (layoutOf(document)) {
    case AliasLayout::ByTokenFormat2:
        return transferByPersistentToken(document, devicesPerList, 2, observer);
    case AliasLayout::ByTokenFormat1:
        return transferByPersistentToken(document, devicesPerList, 1, observer);
    case AliasLayout::ByResourceName:
        break;
    }
    return transferByResourceName(document, devicesPerList, observer);
}

bool TraditionalAliasTransferManager::transferByResourceName(vyini::IniDocument* document,
                                                             const DeviceTable& devicesPerList,
                                                             AliasTransferObserver* observer) {
    const std::uint32_t count = vyini::countIniEntries(vyini::findIniSection(document, aliasesSection));
    if (count == 0)
        return false;
    ResourceNames names = readResourceNames(document, count);
    bool changed = false;
    for (const auto& devices : devicesPerList) {
        for (IDevice* const device : devices) {
            if (!takesPart(*device))
                continue;
            const auto found = names.find(numbered("KEL", numberOf(*device)));
            if (found == names.end())
                continue;
            handOver(*device, found->second, observer);
            vyini::deleteIniEntry(document, aliasesSection, found->second.c_str());
            names.erase(found);
            changed = true;
        }
    }
    if (names.empty())
        vyini::deleteIniSection(document, aliasesSection);
    return changed;
}

bool TraditionalAliasTransferManager::transferByPersistentToken(vyini::IniDocument* document,
                                                                const DeviceTable& devicesPerList,
                                                                std::uint32_t tokenFormat,
                                                                AliasTransferObserver* observer) {
    std::vector<TraditionalAliasRecord> records;
    readAliasRecords(document, records);
    if (records.empty())
        return false;
    RecordsByToken byToken(records);
    bool changed = false;
    for (const auto& devices : devicesPerList) {
        for (IDevice* const device : devices) {
            if (!takesPart(*device))
                continue;
            const char* const token = callPlugin([=] { return device->getPersistentToken(tokenFormat); });
            const TraditionalAliasRecord* const record = token != nullptr ? byToken.find(token) : nullptr;
            if (record == nullptr || !record->local)
                continue;
            handOver(*device, record->alias, observer);
            byToken.consume(*record);
            changed = true;
        }
    }
    if (changed)
        writeAliasRecords(document, byToken.takeRemaining());
    return changed;
}

void TraditionalAliasTransferManager::readAliasRecords(vyini::IniDocument* document,
                                                       std::vector<TraditionalAliasRecord>& records) {
    records.clear();
    for (std::uint32_t i = 0;; ++i) {
        const std::string name = numbered("Alias", i);
        vyini::IniSection* const section = vyini::findIniSection(document, name.c_str());
        if (section == nullptr)
            return;
        TraditionalAliasRecord record;
        record.alias = readText(document, section, "Alias", recordAliasSite);
        record.persistentToken = readText(document, section, "PersistentToken", recordTokenSite);
        record.local = readLocal(document, section);
        if (vyini::deleteIniSection(document, name.c_str()) != iniDone)
            raiseFault(recordDeleteSite);
        records.push_back(std::move(record));
    }
}

void TraditionalAliasTransferManager::writeAliasRecords(vyini::IniDocument* document,
                                                        const std::vector<TraditionalAliasRecord>& records) {
    while (vyini::deleteIniSection(document, "Alias0") == iniDone) {
    }
    for (std::size_t i = 0; i < records.size(); ++i) {
        const std::string section = numbered("Alias", static_cast<std::uint32_t>(i));
        setEncoded(document, section, "Alias", records[i].alias);
        setEncoded(document, section, "PersistentToken", records[i].persistentToken);
        setValue(document, section, "Local", records[i].local ? "True" : "False", 0);
    }
}

} // namespace vykel
