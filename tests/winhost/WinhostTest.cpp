// The faults of the stand-in for Windows: other tests depend on them.
#include "support/Machine.h"
#include "winhost/faults.h"
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <shlobj.h>
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

TEST(Winhost, IsAsStrictAsWindows) {
    Machine machine;
    HKEY key = nullptr, readOnly = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, u"x", 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr), 0);
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"x", 0, KEY_READ, &readOnly), 0);
    BYTE bytes[] = {1, 2, 3};
    EXPECT_EQ(RegSetKeyValueW(key, nullptr, u"v", REG_BINARY, bytes, 3), 0);
    EXPECT_EQ(RegSetKeyValueW(readOnly, nullptr, u"v", REG_BINARY, bytes, 3), ERROR_ACCESS_DENIED);
    for (DWORD room = 2; room <= 3; ++room) {
        DWORD size = room;
        EXPECT_EQ(RegQueryValueExW(readOnly, u"v", nullptr, nullptr, bytes, &size),
                  room == 2 ? ERROR_MORE_DATA : ERROR_SUCCESS);
        EXPECT_EQ(size, 3U);
    }
    EXPECT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, u"x"), 0);
    EXPECT_EQ(RegSetKeyValueW(key, nullptr, u"v", REG_BINARY, bytes, 3), ERROR_KEY_DELETED);
    RegCloseKey(key);
    RegCloseKey(readOnly);

    // Half a surrogate pair becomes U+FFFD. The last code point of one unit, and the first of two.
    const WCHAR halves[] = {0xD83D, u'A', 0xDE00, 0};
    char text[8];
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, halves, -1, text, 8, nullptr, nullptr), 8);
    EXPECT_STREQ(text, "\xEF\xBF\xBD"
                       "A\xEF\xBF\xBD");
    WCHAR units[4];
    EXPECT_EQ(
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "\xEF\xBF\xBF\xF0\x90\x80\x80", -1, units, 4), 4);

    machine.setFolderName("C:\\" + std::string(MAX_PATH - 3, 'x')); // no room for its end
    WCHAR path[MAX_PATH];
    EXPECT_EQ(SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path), E_FAIL);

    const ScopedFault armed({Call::CreateDirectoryW, 2});
    EXPECT_EQ(CreateDirectoryW(u"C:\\f", nullptr), TRUE);
    EXPECT_EQ(CreateDirectoryW(u"C:\\g", nullptr), FALSE);
    EXPECT_EQ(CreateDirectoryW(u"C:\\f", nullptr), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
}

} // namespace vykeltest
