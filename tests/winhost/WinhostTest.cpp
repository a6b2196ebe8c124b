// The faults of the stand-in for Windows: other tests depend on them.
#include "support/Machine.h"
#include "winhost/faults.h"
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vykeltest {

using namespace winhost;

TEST(Winhost, FaultsStrikeByCount) {
    const std::ptrdiff_t resources = openResources();
    const Machine machine;
    const std::string path = (machine.folder() / "f").string();
    const auto pattern = [&](const Fault& fault) {
        const ScopedFault armed(fault);
        std::string result;
        for (int i = 0; i < 4; ++i) {
            std::FILE* const file = std::fopen(path.c_str(), "ab");
            result += file != nullptr && std::fclose(file) == 0 ? '+' : '-';
        }
        return result + std::to_string(armed.struck());
    };
    EXPECT_EQ(pattern({Call::fopen, 2}), "+-++1");
    EXPECT_EQ(pattern({Call::fopen, 2, Effect::FailOnward}), "+---3");
    EXPECT_EQ(pattern({Call::Any, 4}), "+-++1");
    EXPECT_EXIT(pattern({Call::fopen, 3, Effect::Kill}), testing::KilledBySignal(SIGKILL), "");

    // What a call that fails keeps of the six bytes.
    const std::pair<Call, std::uintmax_t> rows[] = {{Call::fwrite, 3}, {Call::fflush, 0}, {Call::fclose, 0}};
    for (const auto& [call, kept] : rows) {
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        const ScopedFault armed({call, 1, Effect::Fail, ERROR_DISK_FULL});
        errno = 0;
        std::fwrite("abcdef", 1, 6, file);
        if (call == Call::fflush)
            std::fflush(file);
        EXPECT_EQ(std::ferror(file) != 0, call != Call::fclose);
        std::fclose(file);
        EXPECT_EQ(errno, ENOSPC);
        EXPECT_EQ(fs::file_size(path), kept);
    }

    EXPECT_EQ(openResources(), resources);
}

} // namespace vykeltest
