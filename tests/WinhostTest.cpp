// The stand-in for Windows that the host builds run on: what it must get right for other tests to mean
// something.
#include "winhost/faults.h"
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <io.h>
#include <shlobj.h>
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
template <typename Body>
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
        fs::create_directories(root / "c/Folder");
    }
    void TearDown() override {
        EXPECT_EQ(winhost::openResources(), resourcesBefore);
        fs::remove_all(root);
    }
    void writeRegistry(const std::string& content) const {
        std::ofstream(root / "registry.reg", std::ios::binary) << content;
    }
    std::string makeFile(const char* name) const {
        const fs::path path = root / name;
        std::ofstream(path) << name;
        return path.string();
    }
    fs::path root;
    const std::ptrdiff_t resourcesBefore = winhost::openResources();
};

struct Key {
    explicit Key(LPCWSTR path, REGSAM access = KEY_READ) {
        status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access, &handle);
    }
    ~Key() {
        if (status == ERROR_SUCCESS)
            RegCloseKey(handle);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    HKEY handle = nullptr;
    LSTATUS status;
};

/// A value as "type:bytes in hex", or "error n".
std::string valueOf(const Key& key, LPCWSTR name) {
    BYTE data[64];
    DWORD type = 0, size = sizeof data;
    if (const LSTATUS error = RegQueryValueExW(key.handle, name, nullptr, &type, data, &size))
        return "error " + std::to_string(error);
    std::string text = std::to_string(type) + ":";
    for (DWORD i = 0; i < size; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", data[i]);
        text += digits;
    }
    return text;
}

HANDLE lockHandle(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

BOOL tryLock(HANDLE file) {
    OVERLAPPED record = {};
    return LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &record);
}

} // namespace

TEST_F(Winhost, ReadsWhatTheRegistryEditorExports) {
    const std::string body =
        "Windows Registry Editor Version 5.00\n\n; note\n[HKEY_LOCAL_MACHINE\\Software\\K]\n"
        "@=\"d\"\n\"Text\"=\"a\\\\b\\\"\xC3\xA9\"\n\"Two\"=\"1\n2\"\n\"Number\"=dword:0000a0ff\n"
        "\"Bin\"=hex:01,\\\n  02,03\n\"Raw\"=hex(1):41,00\n\"None\"=hex(0):\n\"Gone\"=\"x\"\n"
        "\"GONE\"=-\nnonsense\n\"half\n\"=\n\"Bad\"=hex(zz):01\n[HKEY_LOCAL_MACHINE\\Software\\Cut]\n"
        "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\CUT]\n";
    std::string crlf, utf16 = "\xFF\xFE";
    for (const char byte : body) {
        crlf += byte == '\n' ? "\r\n" : std::string(1, byte);
        utf16 += byte == '\xC3' ? std::string("\xE9\0", 2) : byte == '\xA9' ? "" : std::string{byte, '\0'};
    }
    for (const std::string& file : {body, "\xEF\xBB\xBF" + body, crlf, utf16}) {
        writeRegistry(file);
        const Key key(u"SOFTWARE\\k\\");
        ASSERT_EQ(key.status, ERROR_SUCCESS);
        EXPECT_EQ(valueOf(key, nullptr), "1:64000000");
        EXPECT_EQ(valueOf(key, u"TEXT"), "1:61005c0062002200e9000000");
        EXPECT_EQ(valueOf(key, u"Number"), "4:ffa00000");
        EXPECT_EQ(valueOf(key, u"Bin"), "3:010203");
        EXPECT_EQ(valueOf(key, u"Raw"), "1:4100");
        EXPECT_EQ(valueOf(key, u"None"), "0:");
        EXPECT_EQ(valueOf(key, u"Gone"), "error 2");
        EXPECT_EQ(valueOf(key, u"Bad"), "error 2");
        EXPECT_EQ(Key(u"Software\\Cut").status, ERROR_FILE_NOT_FOUND);
    }
    writeRegistry("REGEDIT\n");
    EXPECT_EQ(Key(u"Software\\K").status, ERROR_BADDB);
    fs::remove(root / "registry.reg");
    EXPECT_EQ(Key(u"Software\\K").status, ERROR_FILE_NOT_FOUND);
}

TEST_F(Winhost, DrivePathsLieBelowTheRootInAnyCase) {
    std::FILE* const file = std::fopen("c:/folder\\New.txt", "wb");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_TRUE(fs::exists(root / "c/Folder/New.txt"));
    EXPECT_NE(GetFileAttributesW(u"C:\\FOLDER\\NEW.TXT"), INVALID_FILE_ATTRIBUTES);
    WCHAR path[MAX_PATH];
    EXPECT_EQ(SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, path),
              static_cast<HRESULT>(0x80070002));
    writeRegistry("Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\"
                  "CurrentVersion\\Explorer\\User Shell Folders]\n\"Common AppData\"=\"C:\\\\Folder\"\n");
    EXPECT_EQ(SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, path), S_OK);
    EXPECT_EQ(std::u16string(path), u"C:\\Folder");
    ::unsetenv("WINHOST_ROOT");
    EXPECT_EQ(std::fopen("C:\\Folder\\New.txt", "rb"), nullptr);
    EXPECT_EQ(GetFullPathNameW(u"C:/a/./b\\..\\c", MAX_PATH, path, nullptr), 6U);
    EXPECT_EQ(std::u16string(path), u"C:\\a\\c");
}

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

    std::FILE* const file = std::fopen(path.c_str(), "wb");
    {
        const ScopedFault armed({Call::fwrite, 1});
        EXPECT_EQ(std::fwrite("abcdef", 1, 6, file), 3U);
        EXPECT_EQ(errno, ENOSPC);
        EXPECT_NE(std::ferror(file), 0);
    }
    std::fclose(file);
    EXPECT_EQ(fs::file_size(path), 3U);

    CRITICAL_SECTION section;
    const ScopedFault armed({Call::InitializeCriticalSection, 1});
    EXPECT_THROW(InitializeCriticalSection(&section), winhost::StructuredException);
}
