#ifndef TESTS_MACHINE_H
#define TESTS_MACHINE_H

#include "support/Platform.h"
#include <filesystem>
#include <string>
#include <windows.h>

namespace vykeltest {

namespace fs = std::filesystem;
using WideString = std::basic_string<WCHAR>;

WideString wide(const std::string& utf8);

/// A machine for one test: a registry and a common data folder of its own, with the plug-ins' key and the
/// configuration folder in place. The child processes of a test see its machine.
class Machine {
public:
    Machine();
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// The common data folder, and what the system calls it.
    const fs::path& folder() const { return root.folder; }
    const std::string& folderName() const { return root.name; }
    /// What the system answers from now on when asked for the common data folder.
    void setFolderName(const std::string& utf8);

    fs::path configurationFolder() const { return root.folder / "Morvance" / "VY-KEL"; }
    void setConfigurationFolder(bool exists);
    void setPluginsKey(bool exists);

    /// Registers a plug-in with a value of any type and bytes, without any (a null type), or with a path.
    void registerPlugin(const std::string& name, const DWORD* type, const void* data, std::size_t size);
    void registerPlugin(const std::string& name, const fs::path& path);

    /// Copies a built library under another name, and registers the copy under that name.
    fs::path install(const std::string& library, const std::string& name);
    fs::path copyLibrary(const std::string& library, const std::string& name) const;

private:
    std::string id;
    bool owned;
    MachineRoot root;
};

} // namespace vykeltest

#endif
