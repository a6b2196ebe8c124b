#ifndef BENCH_INIPEERS_H
#define BENCH_INIPEERS_H

#include "ini/IniEdit.h"
#include "ini/IniReader.h"
#include "ini/IniWriter.h"
#define SI_NO_CONVERSION // bytes only, like the others
#include <glib.h>
#include <ini.h>
#include <memory>
#include <SimpleIni.h>
#include <string>
#include <unordered_map>

/// The engine and its peers with the same operations. Each loads a file into a model that finds a value by
/// section and key. Every operation returns whether it did its work; the benchmarks stop when one did not.
namespace bench {

class Vykel {
public:
    static constexpr const char* name = "vykel";
    bool load(const char* path) { return vyini::loadIniFile(document.get(), path) == 0; }
    bool find(const char* section, const char* key) {
        vyini::IniSection* found = vyini::findIniSection(document.get(), section);
        const vyini::IniEntry* entry = vyini::findIniEntry(found, document->caseSensitive, key);
        return entry != nullptr && *entry->value != '\0';
    }
    bool removeSection(const char* section) { return vyini::deleteIniSection(document.get(), section) == 1; }
    bool removeKey(const char* section, const char* key) {
        return vyini::deleteIniEntry(document.get(), section, key) == 1;
    }
    bool save(const char* path) {
        document->writeFlags = 0;
        document->maxLineLength = -1;
        return vyini::saveIniFile(document.get(), path) == 0;
    }
    bool saveSafely(const char* path) {
        document->writeFlags = vyini::IniSafeSave | vyini::IniFlushToDisk;
        document->maxLineLength = -1;
        return vyini::saveIniFile(document.get(), path) == 0;
    }

private:
    struct Free {
        void operator()(vyini::IniDocument* owned) const { vyini::freeIniDocument(owned); }
    };
    std::unique_ptr<vyini::IniDocument, Free> document{vyini::createIniDocument()};
};

class SimpleIni {
public:
    static constexpr const char* name = "simpleini";
    bool load(const char* path) { return ini.LoadFile(path) == SI_OK; }
    bool find(const char* section, const char* key) { return ini.GetValue(section, key) != nullptr; }
    bool removeSection(const char* section) { return ini.Delete(section, nullptr); }
    bool removeKey(const char* section, const char* key) { return ini.Delete(section, key); }
    bool save(const char* path) { return ini.SaveFile(path, false) == SI_OK; }

private:
    CSimpleIniA ini{true};
};

class GKeyFile {
public:
    static constexpr const char* name = "gkeyfile";
    bool load(const char* path) {
        return g_key_file_load_from_file(file.get(), path, G_KEY_FILE_NONE, nullptr) != FALSE;
    }
    bool find(const char* section, const char* key) {
        const std::unique_ptr<char, decltype(&g_free)> value(
            g_key_file_get_value(file.get(), section, key, nullptr), &g_free);
        return value != nullptr;
    }
    bool removeSection(const char* section) {
        return g_key_file_remove_group(file.get(), section, nullptr) != FALSE;
    }
    bool removeKey(const char* section, const char* key) {
        return g_key_file_remove_key(file.get(), section, key, nullptr) != FALSE;
    }
    bool save(const char* path) { return g_key_file_save_to_file(file.get(), path, nullptr) != FALSE; }

private:
    std::unique_ptr<::GKeyFile, decltype(&g_key_file_free)> file{g_key_file_new(), &g_key_file_free};
};

/// inih only parses, so its handler builds the model.
class Inih {
public:
    static constexpr const char* name = "inih";
    bool load(const char* path) { return ini_parse(path, &Inih::store, this) == 0; }
    bool find(const char* section, const char* key) {
        const auto found = sections.find(section);
        return found != sections.end() && found->second.find(key) != found->second.end();
    }
    bool removeSection(const char* section) { return sections.erase(section) == 1; }
    bool removeKey(const char* section, const char* key) { return sections[section].erase(key) == 1; }

private:
    static int store(void* user, const char* section, const char* key, const char* value) {
        static_cast<Inih*>(user)->sections[section][key] = value;
        return 1;
    }
    std::unordered_map<std::string, std::unordered_map<std::string, std::string>> sections;
};

} // namespace bench

#endif
