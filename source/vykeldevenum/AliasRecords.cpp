#include "AliasRecords.h"

#include "ini/IniEdit.h"
#include "ini/IniText.h"

namespace vykel {

namespace {

constexpr int iniFound = 1;

/// Reads and decodes a text. False when there is none, or memory is short.
bool readText(const vyini::IniDocument& document, vyini::IniSection& section, const char* key,
              std::string& text) {
    const vyini::IniEntry* const entry = vyini::findIniEntry(&section, document.caseSensitive, key);
    vyini::IniString decoded;
    if (entry == nullptr || vyini::decodeIniValue(entry->value, decoded) != 0)
        return false;
    text = decoded.get();
    return true;
}

} // namespace

std::string aliasSectionName(std::size_t index) {
    return "Alias" + std::to_string(index);
}

std::string resourceName(std::uint32_t deviceNumber) {
    return std::string("KEL").append(std::to_string(deviceNumber));
}

AliasLayout aliasLayoutOf(vyini::IniDocument* document) {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    if (vyini::getIniUInt(document, "General", "MajorVersion", &major) != iniFound ||
        vyini::getIniUInt(document, "General", "MinorVersion", &minor) != iniFound)
        return AliasLayout::ByResourceName;
    if (major >= 15)
        return AliasLayout::ByTokenFormat2;
    return major == 14 && minor == 7 ? AliasLayout::ByTokenFormat1 : AliasLayout::ByResourceName;
}

vyini::IniSection* findAliasSection(vyini::IniDocument* document, std::size_t index) {
    return vyini::findIniSection(document, aliasSectionName(index).c_str());
}

AliasFlaw readAliasRecord(const vyini::IniDocument& document, vyini::IniSection& section,
                          TraditionalAliasRecord& record) {
    const bool hasAlias = readText(document, section, "Alias", record.alias);
    const bool hasToken = readText(document, section, "PersistentToken", record.persistentToken);
    const vyini::IniEntry* const local = vyini::findIniEntry(&section, document.caseSensitive, "Local");
    record.local = local != nullptr && vyini::compareIniNames(local->value, "True", 0) == 0;
    if (!hasAlias)
        return AliasFlaw::NoAlias;
    if (!hasToken)
        return AliasFlaw::NoToken;
    if (local == nullptr)
        return AliasFlaw::NoLocal;
    const bool isKnown = record.local || vyini::compareIniNames(local->value, "False", 0) == 0;
    return isKnown ? AliasFlaw::None : AliasFlaw::UnknownLocal;
}

} // namespace vykel
