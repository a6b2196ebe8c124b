// The faults of the stand-in for Windows: other tests depend on them.
#include "winhost/faults.h"
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

namespace fs = std::filesystem;
using winhost::Call;
using winhost::Effect;
using winhost::ScopedFault;

namespace {

class Winhost : public ::testing::Test {
protected:
    void SetUp() override {
        root = fs::temp_directory_path() / ("winhost-" + std::to_string(::getpid()));
        ::setenv("WINHOST_ROOT", root.c_str(), 1);
        fs::create_directories(root / "c");
    }
    void TearDown() override {
        EXPECT_EQ(winhost::openResources(), resourcesBefore);
        fs::remove_all(root);
    }
    fs::path root;
    const std::ptrdiff_t resourcesBefore = winhost::openResources();
};

} // namespace

TEST_F(Winhost, FaultsStrikeByCount) {
    const std::string path = (root / "f").string();
    const auto open = [&] {
        std::FILE* const file = std::fopen(path.c_str(), "ab");
        return file != nullptr && std::fclose(file) == 0;
    };
    const auto pattern = [&](const winhost::Fault& fault) {
        const ScopedFault armed(fault);
        std::string result;
        for (int i = 0; i < 4; ++i)
            result += open() ? '+' : '-';
        return result + std::to_string(armed.struck());
    };
    EXPECT_EQ(pattern({Call::fopen, 2}), "+-++1");
    EXPECT_EQ(pattern({Call::fopen, 2, Effect::FailOnward}), "+---3");
    EXPECT_EQ(pattern({Call::fclose, 1}), "-+++1");
    EXPECT_EQ(pattern({Call::Any, 4}), "+-++1");
    const pid_t child = ::fork();
    if (child == 0) {
        pattern({Call::fopen, 3, Effect::Kill});
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WTERMSIG(status), SIGKILL);

    const struct {
        Call call;
        std::uintmax_t kept; // of the six bytes
    } rows[] = {{Call::fwrite, 3}, {Call::fflush, 0}, {Call::fclose, 0}};
    for (const auto& row : rows) {
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        const ScopedFault armed({row.call, 1, Effect::Fail, ERROR_DISK_FULL});
        errno = 0;
        std::fwrite("abcdef", 1, 6, file);
        if (row.call == Call::fflush)
            std::fflush(file);
        EXPECT_EQ(std::ferror(file) != 0, row.call != Call::fclose);
        std::fclose(file);
        EXPECT_EQ(errno, ENOSPC);
        EXPECT_EQ(fs::file_size(path), row.kept);
    }

    CRITICAL_SECTION section;
    const ScopedFault armed({Call::InitializeCriticalSection, 1});
    EXPECT_THROW(InitializeCriticalSection(&section), winhost::StructuredException);
}
