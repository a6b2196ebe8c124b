#include "TraditionalAliasTransferManager.h"

#include "ConfigurationFolder.h"
#include "errors/ScopedStatus.h"
#include "ini/IniEdit.h"
#include "ini/IniReader.h"
#include "ini/IniText.h"
#include "ini/IniWriter.h"
#include "pellumkelddk/user/AutoIniText.h"
#include "pellumkelddk/user/FileLock.h"
#include "PluginCall.h"
#include "vyfile/internal/FileLockImpl.h"
#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

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

constexpr int iniDone = 1;

[[noreturn]] void raiseFault(vyerr::RaiseSite site) {
    vyerr::raiseError(StatusCode::ConfigurationFault, vyerr::constant::deviceEnumeration, site);
}

/// Raises the fault of a malformed record.
void checkFlaw(AliasFlaw flaw) {
    switch (flaw) {
    case AliasFlaw::None:
        return;
    case AliasFlaw::NoAlias:
        raiseFault(recordAliasSite);
    case AliasFlaw::NoToken:
        raiseFault(recordTokenSite);
    case AliasFlaw::NoLocal:
    case AliasFlaw::UnknownLocal:
        raiseFault(recordLocalSite);
    }
}

/// The aliases of the layout by resource name. Of several aliases for one device the last is kept.
std::map<std::string, std::string> readAliasesByName(vyini::IniDocument* document) {
    std::vector<const vyini::IniEntry*> entries;
    const std::uint32_t count = vyini::countIniEntries(vyini::findIniSection(document, aliasesSection));
    for (std::uint32_t n = 1; n <= count; ++n) {
        const vyini::IniEntry* const entry =
            vyini::getIniEntry(vyini::findIniSection(document, aliasesSection), n);
        if (entry == nullptr)
            raiseFault(resourceAliasSite);
        if (entry->value == nullptr)
            raiseFault(resourceNameSite);
        entries.push_back(entry);
    }
    // A large map is filled and searched faster when it is filled in its order.
    std::stable_sort(entries.begin(), entries.end(), [](const auto* left, const auto* right) {
        return std::strcmp(left->value, right->value) < 0;
    });
    std::map<std::string, std::string> aliases;
    for (const vyini::IniEntry* const entry : entries)
        aliases.insert_or_assign(aliases.end(), entry->value, entry->key);
    return aliases;
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

/// Calls `visit` for every device that takes part: it has a number and takes aliases.
template <class Visit>
void visitDevices(const DeviceTable& devicesPerList, Visit visit) {
    for (const auto& devices : devicesPerList)
        for (IDevice* const device : devices)
            if (callPlugin(
                    [=] { return device->getNumber() != noDeviceNumber && device->getAlias() != nullptr; }))
                visit(*device);
}

/// Gives a device the alias, unless it has one already. Throws the device's code when it refuses.
void handOver(IDevice& device, const std::string& alias) {
    const char* const current = callPlugin([&] { return device.getAlias(); });
    if (current == nullptr || *current != '\0')
        return;
    vyerr::ScopedStatusBlock status;
    callPlugin([&] { device.setAlias(alias.c_str(), 1, 0, status.get()); });
    status.check();
}

void save(vyini::IniDocument* document, const std::string& path) {
    document->maxLineLength = -1; // split no value
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

bool TraditionalAliasTransferManager::transfer(vyini::IniDocument* document,
                                               const DeviceTable& devicesPerList) {
    const AliasLayout layout = aliasLayoutOf(document);
    if (layout == AliasLayout::ByResourceName)
        return transferByResourceName(document, devicesPerList);
    return transferByPersistentToken(document, devicesPerList, layout == AliasLayout::ByTokenFormat1 ? 1 : 2);
}

bool TraditionalAliasTransferManager::transferByResourceName(vyini::IniDocument* document,
                                                             const DeviceTable& devicesPerList) {
    std::map<std::string, std::string> aliases = readAliasesByName(document);
    if (aliases.empty())
        return false;
    bool changed = false;
    visitDevices(devicesPerList, [&](IDevice& device) {
        const std::uint32_t number = callPlugin([&] { return device.getNumber(); });
        const auto found = aliases.find(resourceName(number));
        if (found == aliases.end())
            return;
        handOver(device, found->second);
        vyini::deleteIniEntry(document, aliasesSection, found->second.c_str());
        aliases.erase(found);
        changed = true;
    });
    if (aliases.empty()) // only entries that were never used are left
        vyini::deleteIniSection(document, aliasesSection);
    return changed;
}

bool TraditionalAliasTransferManager::transferByPersistentToken(vyini::IniDocument* document,
                                                                const DeviceTable& devicesPerList,
                                                                std::uint32_t tokenFormat) {
    AliasRecords records;
    readAliasRecords(document, records);
    if (records.empty())
        return false;
    // Records of one token keep the order of the file: the first is used, and after its removal the next.
    std::multimap<std::string_view, AliasRecords::iterator> byToken;
    for (auto record = records.begin(); record != records.end(); ++record)
        byToken.emplace(record->persistentToken, record);
    bool changed = false;
    visitDevices(devicesPerList, [&](IDevice& device) {
        const char* const token = callPlugin([&] { return device.getPersistentToken(tokenFormat); });
        if (token == nullptr)
            return;
        const auto found = byToken.lower_bound(token);
        if (found == byToken.end() || found->first != token || !found->second->local)
            return;
        handOver(device, found->second->alias);
        const auto record = found->second;
        byToken.erase(found);
        records.erase(record);
        changed = true;
    });
    if (changed)
        writeAliasRecords(document, records);
    return changed;
}

void TraditionalAliasTransferManager::readAliasRecords(vyini::IniDocument* document, AliasRecords& records) {
    records.clear();
    while (vyini::IniSection* const section = findAliasSection(document, records.size())) {
        const std::string name = aliasSectionName(records.size());
        checkFlaw(readAliasRecord(*document, *section, records.emplace_back()));
        if (vyini::deleteIniSection(document, name.c_str()) != iniDone)
            raiseFault(recordDeleteSite);
    }
}

void TraditionalAliasTransferManager::writeAliasRecords(vyini::IniDocument* document,
                                                        const AliasRecords& records) {
    while (vyini::deleteIniSection(document, aliasSectionName(0).c_str()) == iniDone) {
    }
    std::size_t index = 0;
    for (const TraditionalAliasRecord& record : records) {
        const std::string section = aliasSectionName(index++);
        setEncoded(document, section, "Alias", record.alias);
        setEncoded(document, section, "PersistentToken", record.persistentToken);
        setValue(document, section, "Local", record.local ? "True" : "False", 0);
    }
}

} // namespace vykel
