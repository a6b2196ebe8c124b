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

/// A machine for one test: its own registry, with the key of the plug-ins, and its own common data folder,
/// with the configuration folder. The child processes of the test use the same machine.
class Machine {
public:
    Machine();
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// The common data folder, and its name for the system.
    const fs::path& folder() const { return root.folder; }
    const std::string& folderName() const { return root.name; }
    /// Sets the name that the system gives for the common data folder.
    void setFolderName(const std::string& utf8);

    fs::path configurationFolder() const { return root.folder / "Morvance" / "VY-KEL"; }
    void setConfigurationFolder(bool exists);
    void setPluginsKey(bool exists);

    /// Registers a plug-in with a value of any type and bytes, without a value (a null type), or with a path.
    void registerPlugin(const std::string& name, const DWORD* type, const void* data, std::size_t size);
    void registerPlugin(const std::string& name, const fs::path& path);

    /// Both copy a built library under another name; install also registers the copy under that name.
    fs::path install(const std::string& library, const std::string& name);
    fs::path copyLibrary(const std::string& library, const std::string& name) const;

private:
    std::string id;
    bool owned;
    MachineRoot root;
};

} // namespace vykeltest

#endif
