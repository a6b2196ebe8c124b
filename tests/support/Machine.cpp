#include "support/Machine.h"

#include <cstdlib>
#include <stdexcept>

namespace vykeltest {

namespace {

constexpr const char* machineVariable = "VYKEL_TEST_MACHINE";
constexpr const char* pluginsKey = "SOFTWARE\\Morvance\\VY-KEL\\Plugins";
constexpr const char* foldersKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

std::string machineId(bool& owned) {
    static int count = 0;
    const char* const given = std::getenv(machineVariable);
    owned = given == nullptr || *given == '\0';
    return owned ? "vykel-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count) : given;
}

/// Creates the key if necessary and writes a value; with a null type, only the key.
void writeValue(const std::string& key, const char* value, const DWORD* type, const void* data,
                std::size_t size) {
    HKEY handle = nullptr;
    LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, wide(key).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                    nullptr, &handle, nullptr);
    RegCloseKey(handle);
    if (error == ERROR_SUCCESS && type != nullptr)
        error = RegSetKeyValueW(HKEY_LOCAL_MACHINE, wide(key).c_str(), wide(value).c_str(), *type, data,
                                static_cast<DWORD>(size));
    if (error != ERROR_SUCCESS)
        throw std::runtime_error("cannot write the test's registry: " + std::to_string(error));
}

void writeText(const std::string& key, const char* value, const WideString& text) {
    const DWORD type = REG_SZ;
    writeValue(key, value, &type, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
}

} // namespace

WideString wide(const std::string& utf8) {
    return fs::u8path(utf8).string<WCHAR>();
}

Machine::Machine() : id(machineId(owned)), root(enterMachine(id)) {
    if (!owned)
        return;
    setEnvironment(machineVariable, id);
    fs::remove_all(fs::temp_directory_path() / id); // of a test that was killed and had this process number
    fs::create_directories(root.folder);
    setFolderName(root.name);
    setPluginsKey(true);
    setConfigurationFolder(true);
}

Machine::~Machine() {
    if (!owned)
        return;
    setEnvironment(machineVariable, "");
    leaveMachine(id);
}

void Machine::setFolderName(const std::string& utf8) {
    writeText(foldersKey, "Common AppData", wide(utf8));
}

void Machine::setConfigurationFolder(bool exists) {
    if (exists)
        fs::create_directories(configurationFolder());
    else
        fs::remove_all(configurationFolder());
}

void Machine::setPluginsKey(bool exists) {
    if (exists)
        writeValue(pluginsKey, nullptr, nullptr, nullptr, 0);
    else
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, wide(pluginsKey).c_str());
}

void Machine::registerPlugin(const std::string& name, const DWORD* type, const void* data, std::size_t size) {
    writeValue(std::string(pluginsKey) + "\\" + name, "EnumeratorPluginPath", type, data, size);
}

void Machine::registerPlugin(const std::string& name, const fs::path& path) {
    writeText(std::string(pluginsKey) + "\\" + name, "EnumeratorPluginPath", path.string<WCHAR>());
}

fs::path Machine::copyLibrary(const std::string& library, const std::string& name) const {
    const fs::path copy = root.folder / fs::u8path(name + pluginExtension);
    fs::copy_file(programFolder() / (library + pluginExtension), copy, fs::copy_options::overwrite_existing);
    return copy;
}

fs::path Machine::install(const std::string& library, const std::string& name) {
    const fs::path copy = copyLibrary(library, name);
    registerPlugin(name, copy);
    return copy;
}

} // namespace vykeltest
