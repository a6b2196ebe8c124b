#include "TraditionalAliasTransferManager.h"

#include "AliasRecords.h"
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
#include <utility>
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
void check(const AliasRecord& record, AliasLayout layout) {
    const bool byName = layout == AliasLayout::ByResourceName;
    switch (record.flaw) {
    case AliasFlaw::None:
        return;
    case AliasFlaw::NoAlias:
        raiseFault(byName ? resourceAliasSite : recordAliasSite);
    case AliasFlaw::NoTarget:
        raiseFault(byName ? resourceNameSite : recordTokenSite);
    case AliasFlaw::NoLocal:
    case AliasFlaw::UnknownLocal:
        raiseFault(recordLocalSite);
    }
}

std::vector<AliasRecord> readNames(vyini::IniDocument* document) {
    std::vector<AliasRecord> records = readNamedAliases(document);
    for (const AliasRecord& record : records)
        check(record, AliasLayout::ByResourceName);
    return records;
}

/// Moves the records of the layout by token out of the document.
std::vector<AliasRecord> takeRecords(vyini::IniDocument* document, AliasLayout layout) {
    std::vector<AliasRecord> records;
    while (vyini::IniSection* const section = findAliasSection(document, records.size())) {
        AliasRecord record = readTokenAlias(*document, *section);
        check(record, layout);
        if (vyini::deleteIniSection(document, aliasSectionName(records.size()).c_str()) != iniDone)
            raiseFault(recordDeleteSite);
        records.push_back(std::move(record));
    }
    return records;
}

/// Takes the consumed entries of the layout by resource name out of the document.
void removeNames(vyini::IniDocument* document, const AliasTable& table) {
    for (const AliasRecord& record : table.all())
        if (table.isConsumed(record))
            vyini::deleteIniEntry(document, aliasesSection, record.alias->c_str());
    if (table.empty()) // only entries that never counted are left in it
        vyini::deleteIniSection(document, aliasesSection);
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

/// Writes the records that are left as new sections at the end of the document, numbered from 0.
void writeRecords(vyini::IniDocument* document, const AliasTable& table) {
    while (vyini::deleteIniSection(document, aliasSectionName(0).c_str()) == iniDone) {
    }
    std::size_t index = 0;
    for (const AliasRecord& record : table.all()) {
        if (table.isConsumed(record))
            continue;
        const std::string section = aliasSectionName(index++);
        setEncoded(document, section, "Alias", *record.alias);
        setEncoded(document, section, "PersistentToken", *record.target);
        setValue(document, section, "Local", record.local ? "True" : "False", 0);
    }
}

// Calls of a device. The texts are the device's own, and valid until its next call.

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

/// The record that counts for a device, or null.
const AliasRecord* recordFor(IDevice& device, const AliasTable& table, AliasLayout layout) {
    if (layout == AliasLayout::ByResourceName)
        return table.find(resourceName(numberOf(device)));
    const std::uint32_t format = layout == AliasLayout::ByTokenFormat1 ? 1 : 2;
    const char* const token = callPlugin([&] { return device.getPersistentToken(format); });
    return token != nullptr ? table.find(token) : nullptr;
}

/// Gives a device the alias, unless it has one already. Throws the device's code when it refuses.
void handOver(IDevice& device, const std::string& alias) {
    const char* const current = aliasOf(device);
    if (current == nullptr || *current != '\0')
        return;
    vyerr::ScopedStatusBlock status;
    callPlugin([&] { device.setAlias(alias.c_str(), 1, 0, status.get()); });
    status.check();
}

/// Hands the records over to their devices and consumes them. Returns whether there was one.
bool handOverAll(const DeviceTable& devicesPerList, AliasTable& table, AliasLayout layout) {
    bool changed = false;
    for (const auto& devices : devicesPerList) {
        for (IDevice* const device : devices) {
            const AliasRecord* const record =
                takesPart(*device) ? recordFor(*device, table, layout) : nullptr;
            if (record == nullptr || !record->local)
                continue;
            handOver(*device, *record->alias);
            table.consume(*record);
            changed = true;
        }
    }
    return changed;
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
    const bool byName = layout == AliasLayout::ByResourceName;
    AliasTable table(byName ? readNames(document) : takeRecords(document, layout), layout);
    if (table.empty())
        return false;
    const bool changed = handOverAll(devicesPerList, table, layout);
    if (changed && byName)
        removeNames(document, table);
    else if (changed)
        writeRecords(document, table);
    return changed;
}

} // namespace vykel
