// The sample plug-in when calls of the system fail.
#include "plugin/SimulatedPlugin.h"
#include "winhost/faults.h"

namespace vykeltest {

TEST_F(SimulatedPlugin, NeitherLosesNorHalfKeepsWhenACallFails) {
    bool struck = true;
    const std::ptrdiff_t resources = winhost::openResources();
    for (std::size_t nth = 1; struck; ++nth) {
        status.code = success;
        {
            const ListPtr list = makeList("token=a alias=\"\"\ntoken=b\n");
            const winhost::ScopedFault fault({winhost::Call::Any, nth});
            deviceAt(list, 0).setAlias("A", 1, 0, &status);
            refresh(*list);
            struck = fault.struck() != 0;
            EXPECT_FALSE(fs::exists(temporary)) << nth;
        }
        const std::string alias = status.code < 0 ? "" : "A";
        EXPECT_EQ(refresh(*makeList()), 0);
        EXPECT_EQ(readFile(devicesFile), "token=a alias=\"" + alias + "\"\ntoken=b\n") << nth;
    }
    EXPECT_EQ(winhost::openResources(), resources);
}

TEST_F(SimulatedPlugin, FlushesAliasesAndFoldedFiles) {
    const ListPtr list = makeList("token=a alias=\"\"\n");
    const winhost::ScopedFault fault({winhost::Call::FlushFileBuffers, 1, winhost::Effect::FailOnward});
    deviceAt(list, 0).setNumber(1, &status);
    EXPECT_EQ(status.code, success);
    EXPECT_EQ(refresh(*list), success);
    EXPECT_EQ(readFile(devicesFile), "token=a alias=\"\"\n"); // the journal keeps the number
    deviceAt(list, 0).setAlias("A", 1, 0, &status);
    EXPECT_LT(status.code, 0);
}

} // namespace vykeltest
