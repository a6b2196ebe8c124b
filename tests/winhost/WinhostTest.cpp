// The stand-in for Windows that the host builds run on: what it must get right for other tests to mean
// something.
#include "winhost/faults.h"
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <io.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

namespace fs = std::filesystem;
using winhost::Call;
using winhost::Effect;
using winhost::ScopedFault;

namespace {

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Runs `body` in a child process; how it ended, as waitpid tells.
template <class Body>
int inChild(Body body) {
    const pid_t child = ::fork();
    if (child == 0) {
        body();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

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
    std::string makeFile(const char* name) const {
        const fs::path path = root / name;
        std::ofstream(path) << name;
        return path.string();
    }
    fs::path root;
    const std::ptrdiff_t resourcesBefore = winhost::openResources();
};

HANDLE lockHandle(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

BOOL tryLock(HANDLE file) {
    OVERLAPPED record = {};
    return LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &record);
}

} // namespace

TEST_F(Winhost, LocksExcludeHandlesAndProcesses) {
    const std::string path = makeFile("lock");
    fs::permissions(path, fs::perms::owner_read);
    std::FILE* const first = std::fopen(path.c_str(), "rb");
    const HANDLE second =
        CreateFileA(path.c_str(), GENERIC_READ, shareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(tryLock(lockHandle(first)));
    EXPECT_FALSE(tryLock(second));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_LOCK_VIOLATION));
    EXPECT_EQ(inChild([&] { ::_exit(tryLock(lockHandle(std::fopen(path.c_str(), "rb")))); }), 0);
    std::fclose(first);
    EXPECT_TRUE(tryLock(second)); // closing the stream ended its lock
    CloseHandle(second);
}

TEST_F(Winhost, OpenFilesCannotBeReplaced) {
    const struct {
        const char *from, *to, *held;
        bool alone;
        DWORD error;
    } rows[] = {{"from", "to", nullptr, false, ERROR_SUCCESS},
                {"from", "to", "to", false, ERROR_ACCESS_DENIED},
                {"from", "to", "from", true, ERROR_SHARING_VIOLATION},
                {"from", "c", nullptr, false, ERROR_ACCESS_DENIED},
                {"none", "to", nullptr, false, ERROR_FILE_NOT_FOUND},
                {"from", "no/to", nullptr, false, ERROR_PATH_NOT_FOUND}};
    for (const auto& row : rows) {
        makeFile("from");
        makeFile("to");
        const std::string held = (root / (row.held != nullptr ? row.held : "free")).string();
        const HANDLE holder = CreateFileA(held.c_str(), GENERIC_READ | GENERIC_WRITE,
                                          row.alone ? 0 : shareAll, nullptr, OPEN_ALWAYS, 0, nullptr);
        std::FILE* const again = std::fopen(held.c_str(), "rb");
        EXPECT_EQ(again == nullptr, row.alone);
        if (again != nullptr)
            std::fclose(again);
        const BOOL moved =
            MoveFileExA((root / row.from).c_str(), (root / row.to).c_str(), MOVEFILE_REPLACE_EXISTING);
        EXPECT_EQ(moved == FALSE ? GetLastError() : 0, row.error) << row.from << " onto " << row.to;
        EXPECT_EQ(std::remove(held.c_str()), -1);
        CloseHandle(holder);
    }
    EXPECT_EQ(std::fopen((root / "c").c_str(), "rb"), nullptr); // a folder is no file
}

TEST_F(Winhost, FaultsStrikeByCount) {
    const std::string path = (root / "f").string();
    const auto open = [&] {
        std::FILE* const file = std::fopen(path.c_str(), "ab");
        return file != nullptr && std::fclose(file) == 0;
    };
    const auto pattern = [&](const winhost::Fault& fault) {
        const ScopedFault armed(fault);
        std::string result;
        for (int i = 0; i < 4; ++i) {
            result += open() ? '+' : '-';
        }
        return result + std::to_string(armed.calls());
    };
    EXPECT_EQ(pattern({Call::fopen, 2}), "+-++4");
    EXPECT_EQ(pattern({Call::fopen, 2, Effect::FailOnward}), "+---4");
    EXPECT_EQ(pattern({Call::fclose, 1}), "-+++4");
    EXPECT_EQ(pattern({Call::Any, 4}), "+-++8");
    EXPECT_EQ(pattern({Call::Any, 0, Effect::FailOnward}), "++++8");
    EXPECT_EQ(WTERMSIG(inChild([&] { pattern({Call::fopen, 3, Effect::Kill}); })), SIGKILL);

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
