#ifndef TESTS_SIMULATEDPLUGIN_H
#define TESTS_SIMULATEDPLUGIN_H

#include "support/Codes.h"
#include "support/LoadedLibrary.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include "vykel/PluginEntryPoints.h"
#include <gtest/gtest.h>

namespace vykeltest {

/// The sample plug-in as a library, with a devices file.
class SimulatedPlugin : public testing::Test {
protected:
    ~SimulatedPlugin() override { FreeLibrary(module); }

    ListPtr makeList() const {
        vykel::IDeviceList* list = nullptr;
        EXPECT_EQ(getInterface(0, &list), success);
        return ListPtr(list);
    }
    /// A new list of these devices.
    ListPtr makeList(const std::string& devices) const {
        writeFile(devicesFile, devices);
        ListPtr list = makeList();
        EXPECT_EQ(refresh(*list), success);
        return list;
    }
    vykel::IDevice& deviceAt(const ListPtr& list, std::uint32_t index) {
        return *list->getDevice(index, 0, &status);
    }

    Machine machine;
    vykel::StatusBlock status = vykel::makeStatusBlock(); ///< for all calls of a test
    const fs::path devicesFile = machine.folder() / "left.devices";
    const fs::path journal = machine.folder() / "left.devices.journal";
    const fs::path temporary = machine.folder() / "left.devices.tmp";
    const HMODULE module =
        LoadLibraryExW(machine.copyLibrary("simulated", "left").string<WCHAR>().c_str(), nullptr, 0);
    decltype(&vykel_getPluginInterface) const getInterface =
        Symbol{GetProcAddress(module, "vykel_getPluginInterface")};
};

} // namespace vykeltest

#endif
