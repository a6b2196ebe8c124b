#include "errors/Exception.h"
#include "pellumkelddk/shared/Common.h"
#include "pellumkelddk/user/FileLock.h"
#include "support/Machine.h"
#include "support/OwnedStatus.h"
#include "vydynlib/dynload.h"
#include "vyfile/internal/FileLockImpl.h"
#include "vyplat/quarks/memoryFault.h"
#include "vyplat/quarks/synchronization.h"
#include "vysys/stdpath.h"
#include "vysys/textConversion.h"
#include "vysys/windowsRegistry.h"
#include <atomic>
#include <gtest/gtest.h>
#include <io.h>
#include <regex>
#include <thread>

namespace {

using namespace vykeltest;
using vykel::StatusCode;

class PlatformTest : public testing::Test {
protected:
    /// Expects the code and the document recorded, with an asterisk for the system's text; empties the
    /// record.
    void expectError(StatusCode code, const std::string& constant, const std::string& place,
                     const std::string& objects) {
        const std::string document = std::regex_replace(status.json, std::regex("\"[^\"]+\\\\r\\\\n\""), "*");
        EXPECT_EQ(status.code, toInteger(code));
        EXPECT_EQ(document, "{\"error_constant\":\"vyplaterr_" + constant + "\",\"file\":\"includes/" +
                                place + ",\"component\":\"vykeldevenum\"," + objects + "}");
        vyerr::releaseStatus(&status);
    }
    void expectNotFound(const std::string& place, const std::string& error, const std::string& call) {
        expectError(StatusCode::ResourceNotFound, "resourceNotFound", place,
                    "\"internal_error\":{\"api\":" + error + "},\"vysys_debug\":{\"desc\":\"" + call +
                        " failed\"}");
    }
    void expectNotLoaded(const std::string& place, const std::string& subject, DWORD error) {
        expectError(StatusCode::InvalidParameter, "invalidParameter", "vydynlib/dynload.cpp\"," + place,
                    "\"vydynlib_debug\":{\"debug\":\"failed to vydynlib_load library\"," + subject +
                        ":\"missing\"},\"internal_error\":{\"api\":\"win32\",\"code\":" +
                        std::to_string(error) + ",\"string\":*}");
    }

    Machine machine;
    OwnedStatus status;
    static constexpr const char* key = "SOFTWARE\\Morvance\\VY-KEL\\Plugins\\";
};

TEST_F(PlatformTest, RecordsWhatTheRegistryRefused) {
    vysys::Utf8Vector text;
    EXPECT_EQ(vysys::countSubkeys("missing", status), 0u);
    expectNotFound(R"(vysys/windowsRegistry.cpp","line":91)", R"("win32","code":2,"string":*)",
                   "RegOpenKeyEx");
    vysys::getSubkeyName(key, 0, text, status);
    expectNotFound(R"(vysys/windowsRegistry.cpp","line":58)", R"("win32","code":259,"string":*)",
                   "RegEnumKey");
    vysys::readStringValue(key, "missing", text, status);
    expectNotFound(R"(vysys/stdpath.cpp","line":246)", R"("win32","code":2,"string":*)", "RegQueryValue");
    EXPECT_EQ(text.begin(), text.end());
}

TEST_F(PlatformTest, FindsTheSharedDataFolder) {
    std::string folder = "old";
    const std::string name = u8"\\gerät \U0001F600";
    fs::create_directories(machine.folder() / fs::u8path(name.substr(1)));
    for (const std::string& reported : {std::string(), std::string("\\"), name}) {
        machine.setFolderName(machine.folderName() + reported);
        vysys::getSharedDataFolder(folder, status);
        EXPECT_EQ(folder, machine.folderName() + (reported == name ? name : "") + "\\Morvance");
    }
    EXPECT_EQ(status.code, 0);
    machine.setFolderName(machine.folderName() + "\\missing");
    vysys::getSharedDataFolder(folder, status);
    expectNotFound(R"(vysys/stdpath.cpp","line":283)", R"("hresult","code":-2147024894)", "SHGetFolderPathW");
    vysys::trimPath(folder = std::string(" \t \xC2\xA0 C:\\b\\ \\\0\0", 15));
    EXPECT_EQ(folder, "\xC2\xA0 C:\\b");
    vysys::trimPath(folder = " \\ ");
    EXPECT_EQ(folder, "");
}

TEST_F(PlatformTest, LoadsLibraries) {
    EXPECT_EQ(vydynlib::loadLibrary("missing", status), nullptr);
    expectNotLoaded("\"line\":94", "\"path\"", ERROR_MOD_NOT_FOUND);
    const HMODULE module = vydynlib::loadLibrary((programFolder() / libraryFile).u8string().c_str(), status);
    const FARPROC symbol = vydynlib::getSymbol(module, "vykeldevenum_finalize", status);
    EXPECT_EQ(vydynlib::getSymbol(module, "missing", status), nullptr);
    expectNotLoaded("\"line\":177", "\"vydynlib_symbol\"", ERROR_PROC_NOT_FOUND);
    constexpr DWORD byAddress =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE found = nullptr;
    vydynlib::LibraryHandle handle;
    handle.reset(module);
    EXPECT_TRUE(GetModuleHandleExW(byAddress, reinterpret_cast<LPCWSTR>(symbol), &found));
    handle.reset(nullptr); // unloads the library held before
    EXPECT_FALSE(GetModuleHandleExW(byAddress, reinterpret_cast<LPCWSTR>(symbol), &found));
}

TEST_F(PlatformTest, DoesNothingAfterAnError) {
    vysys::Utf16String units;
    vysys::utf8ToUtf16("abc", units, status);
    EXPECT_TRUE(units.resize(1, status));
    EXPECT_EQ(units.c_str()[1], 0); // what is cut off stays terminated
    status.code = -1;
    EXPECT_FALSE(units.resize(300, status));
    EXPECT_EQ(units.end() - units.begin(), 1);
    machine.registerPlugin("a", nullptr, nullptr, 0);
    EXPECT_EQ(vysys::countSubkeys(key, status), 0u);
    vysys::Utf8Vector text;
    vysys::getSubkeyName(key, 0, text, status);
    vysys::readStringValue("missing", "missing", text, status);
    EXPECT_EQ(text.begin(), text.end());
    std::string folder = "kept";
    vysys::getSharedDataFolder(folder, status);
    EXPECT_EQ(folder, "kept");
    EXPECT_EQ(vydynlib::loadLibrary((programFolder() / libraryFile).u8string().c_str(), status), nullptr);
    EXPECT_EQ(vydynlib::getSymbol(nullptr, "missing", status), nullptr);
    EXPECT_TRUE(status.code == -1 && status.json == nullptr);
}

TEST_F(PlatformTest, LocksAWholeFile) {
    const fs::path path = machine.folder() / "x.lck";
    const vykel::FileStream stream = vykel::openLockFile(path.string().c_str());
    const vykel::FileStream other = vykel::openLockFile(path.string().c_str());
    vyfile::FileLockImpl(stream.get()).lock();
    OVERLAPPED range = {};
    range.Offset = range.OffsetHigh = 0x7FFFFFFF;
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(other.get())));
    EXPECT_FALSE(LockFileEx(handle, LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &range));
}

TEST_F(PlatformTest, CatchesOnlyTheMemoryFault) {
    const auto run = [](DWORD code) {
        return vyplat::completesWithoutMemoryFault(
            [](void* given) { RaiseException(*static_cast<DWORD*>(given), 0, 0, nullptr); }, &code);
    };
    EXPECT_TRUE(vyplat::completesWithoutMemoryFault([](void*) {}, nullptr));
    EXPECT_FALSE(run(0xC0000017));
    EXPECT_DEATH([&]() noexcept { run(0xC0000018); }(), "");
    EXPECT_THROW(vyplat::completesWithoutMemoryFault([](void*) { throw 1; }, nullptr), int);
    EXPECT_EQ(vyplat::criticalSectionSite.line, 881);
}

TEST(Synchronization, IsSetUpOnceWhicheverThreadComesFirst) {
    static std::atomic<int> runs;
    runs = 0; // also when the tests are repeated
    const auto initialize = [](vykel::StatusBlock*) {
        std::this_thread::sleep_for(std::chrono::milliseconds(runs++ + 20));
    };
    vyplat::OnceInitializer once(initialize, [] {}), afterAnError(initialize, [] { ++runs; });
    vykel::StatusBlock status[2] = {vykel::makeStatusBlock(), vykel::makeStatusBlock()};
    std::thread other([&] { once.run(&status[0]); });
    once.run(&status[1]);
    other.join();
    status[0].code = -1;
    afterAnError.run(&status[0]);
    EXPECT_TRUE(runs == 1 && status[0].code == -1);
    const vyplat::CriticalSectionGuard nothing(nullptr);
    vyplat::CriticalSection section;
    for (const int i : {1, 0}) { // it is not set up after an error, and is ended only once
        section.initialize(&status[i]);
        section.destroy();
        section.destroy();
    }
}

TEST(Buffers, RefuseMoreThanThereCanBe) {
    const volatile std::size_t all = SIZE_MAX; // the compiler must not know it: it would warn
    OwnedStatus refused[2];
    vysys::Utf16String text;
    vysys::Utf8Vector bytes;
    EXPECT_FALSE(text.resize(all / 2, refused[0]));
    bytes.append("abc", 3, refused[1]);
    bytes.append("", all - 1, refused[1]);
    EXPECT_EQ(bytes.end() - bytes.begin(), 3);
    EXPECT_THROW(vykel::toCount32(all), std::invalid_argument);
    for (const OwnedStatus& status : refused)
        EXPECT_EQ(status.code, toInteger(StatusCode::MemoryFull));
}

} // namespace
