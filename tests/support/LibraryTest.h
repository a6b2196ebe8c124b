#ifndef TESTS_LIBRARYTEST_H
#define TESTS_LIBRARYTEST_H

#include "support/Codes.h"
#include "support/FakePlugins.h"
#include "support/LoadedLibrary.h"
#include "support/Machine.h"
#include <gtest/gtest.h>

namespace vykeltest {

/// The whole library on a machine of its own.
class LibraryTest : public testing::Test {
protected:
    ~LibraryTest() override {
        while (library.finalize() == 0) { // otherwise its plug-ins stay loaded and outlive the test
        }
    }

    Machine machine;
    FakePlugins plugins;
    LoadedLibrary library;

    /// Installs fake plug-ins under these names, initialises the library and makes a list.
    ListPtr start(const std::vector<std::string>& names) {
        for (const std::string& name : names)
            machine.install("fake_plugin", name);
        EXPECT_EQ(library.initialize(), 0);
        ListPtr list = library.newList();
        plugins.takeLog();
        return list;
    }
};

} // namespace vykeltest

#endif
