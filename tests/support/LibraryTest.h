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

    /// Installs fake plug-ins under these names and initialises the library.
    void start(const std::vector<std::string>& names) {
        for (const std::string& name : names)
            machine.install("fake_plugin", name);
        ASSERT_EQ(library.initialize(), 0);
        plugins.takeLog();
    }
};

} // namespace vykeltest

#endif
