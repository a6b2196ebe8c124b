#include "errors/Exception.h"
#include "pellumkelddk/user/FileLock.h"
#include "support/Machine.h"
#include "vydynlib/dynload.h"
#include "vyplat/quarks/memoryFault.h"
#include "vysys/stdpath.h"
#include "vysys/windowsRegistry.h"
#include <fstream>
#include <gtest/gtest.h>

namespace vykeltest {

namespace {

/// The document of an operating system failure: the four fields, then two objects.
std::string document(const char* constant, const char* file, int line, const std::string& objects) {
    return std::string("{\"error_constant\":\"") + constant + "\",\"file\":\"includes/" + file +
           "\",\"line\":" + std::to_string(line) + ",\"component\":\"vykeldevenum\"," + objects + "}";
}

/// "internal_error" with the text that this system has for the error.
std::string win32Error(DWORD error) {
    char* text = nullptr;
    FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                       FORMAT_MESSAGE_IGNORE_INSERTS,
                   nullptr, error, 0x400, reinterpret_cast<char*>(&text), 0, nullptr);
    std::string escaped;
    for (const char* at = text != nullptr ? text : ""; *at != '\0'; ++at)
        escaped += *at == '\r' ? "\\r" : *at == '\n' ? "\\n" : std::string(1, *at);
    LocalFree(text);
    return "\"internal_error\":{\"api\":\"win32\",\"code\":" + std::to_string(error) +
           (escaped.empty() ? "" : ",\"string\":\"" + escaped + "\"") + "}";
}

std::string registryError(const char* file, int line, DWORD error, const char* description) {
    return document("vyplaterr_resourceNotFound", file, line,
                    win32Error(error) + ",\"vysys_debug\":{\"desc\":\"" + description + "\"}");
}

class PlatformTest : public testing::Test {
protected:
    PlatformTest() { vyerr::initStatus(&status); }
    ~PlatformTest() override { vyerr::releaseStatus(&status); }

    /// The text recorded, with the code in front; empties the record.
    std::string takeError() {
        const std::string error = std::to_string(status.code) + (status.json != nullptr ? status.json : "");
        vyerr::releaseStatus(&status);
        return error;
    }

    Machine machine;
    vyerr::Status status;
    static constexpr const char* key = "SOFTWARE\\Morvance\\VY-KEL\\Plugins\\";
};

} // namespace

TEST_F(PlatformTest, ReadsTheRegistry) {
    const DWORD binary = REG_BINARY;
    const std::string longText(2 * 1001, 'x');
    EXPECT_EQ(vysys::countSubkeys(key, status), 0u);
    machine.registerPlugin("b", &binary, longText.data(), longText.size());
    machine.registerPlugin("A", &binary, "a\0\0\0b\0c", 7);
    machine.registerPlugin(u8"é", nullptr, nullptr, 0);
    EXPECT_EQ(vysys::countSubkeys(key, status), 3u);
    const std::string expectedNames[] = {"A", "b", u8"é"};
    for (std::uint32_t i = 0; i < 3; ++i) {
        vysys::Utf8Vector name;
        vysys::getSubkeyName(key, i, name, status);
        EXPECT_EQ(std::string(name.begin(), name.end()), expectedNames[i]);
    }
    std::string longExpected;
    for (int i = 0; i < 1001; ++i)
        longExpected += "\xE7\xA1\xB8"; // U+7878
    const struct {
        const char* name;
        std::string value;
    } values[] = {{"A\\", std::string("a\0b", 3)}, {"b", longExpected}};
    for (const auto& each : values) {
        vysys::Utf8Vector value;
        vysys::readStringValue((std::string(key) + each.name).c_str(), "EnumeratorPluginPath", value, status);
        EXPECT_EQ(std::string(value.begin(), value.end()), each.value);
    }
    EXPECT_EQ(takeError(), "0");
}

TEST_F(PlatformTest, RecordsWhatTheRegistryRefused) {
    vysys::Utf8Vector text;
    EXPECT_EQ(vysys::countSubkeys("missing", status), 0u);
    EXPECT_EQ(takeError(),
              "-52006" + registryError("vysys/windowsRegistry.cpp", 91, 2, "RegOpenKeyEx failed"));
    vysys::getSubkeyName(key, 0, text, status);
    EXPECT_EQ(takeError(),
              "-52006" + registryError("vysys/windowsRegistry.cpp", 58, 259, "RegEnumKey failed"));
    vysys::readStringValue(key, "missing", text, status);
    EXPECT_EQ(takeError(), "-52006" + registryError("vysys/stdpath.cpp", 246, 2, "RegQueryValue failed"));
    status.code = -1;
    machine.registerPlugin("a", nullptr, nullptr, 0);
    EXPECT_EQ(vysys::countSubkeys(key, status), 0u);
    vysys::getSubkeyName(key, 0, text, status);
    vysys::readStringValue("missing", "missing", text, status);
    EXPECT_EQ(text.begin(), text.end());
    EXPECT_EQ(takeError(), "-1");
}

TEST_F(PlatformTest, FindsTheSharedDataFolder) {
    std::string folder = "old";
    const std::string name = u8"gerät \U0001F600";
    fs::create_directories(machine.folder() / fs::u8path(name));
    const struct {
        std::string reported;
        std::string folder;
    } folders[] = {{"", ""}, {"\\", ""}, {"\\" + name, "\\" + name}};
    for (const auto& each : folders) {
        machine.setFolderName(machine.folderName() + each.reported);
        vysys::getSharedDataFolder(folder, status);
        EXPECT_EQ(folder, machine.folderName() + each.folder + "\\Morvance");
    }
    EXPECT_EQ(takeError(), "0");
    machine.setFolderName(machine.folderName() + "\\missing");
    vysys::getSharedDataFolder(folder, status);
    EXPECT_EQ(takeError(),
              "-52006" + document("vyplaterr_resourceNotFound", "vysys/stdpath.cpp", 283,
                                  "\"internal_error\":{\"api\":\"hresult\",\"code\":-2147024894},"
                                  "\"vysys_debug\":{\"desc\":\"SHGetFolderPathW failed\"}"));
    const struct {
        std::string path;
        const char* trimmed;
    } paths[] = {{std::string(" \t C:\\a b\\ \\\0\0", 13), "C:\\a b"},
                 {" \\ ", ""},
                 {"", ""},
                 {"\xC2\xA0x", "\xC2\xA0x"}};
    for (auto each : paths) {
        vysys::trimPath(each.path);
        EXPECT_EQ(each.path, each.trimmed);
    }
}

TEST_F(PlatformTest, RecordsWhatTheLoaderRefused) {
    const auto recorded = [](int line, const char* subjectKey, const std::string& subject, DWORD error) {
        return "-52005" +
               document("vyplaterr_invalidParameter", "vydynlib/dynload.cpp", line,
                        std::string("\"vydynlib_debug\":{\"debug\":\"failed to vydynlib_load library\",\"") +
                            subjectKey + "\":\"" + subject + "\"}," + win32Error(error));
    };
    EXPECT_EQ(vydynlib::loadLibrary("missing", status), nullptr);
    EXPECT_EQ(takeError(), recorded(94, "path", "missing", ERROR_MOD_NOT_FOUND));
    const HMODULE module = vydynlib::loadLibrary((programFolder() / libraryFile).u8string().c_str(), status);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(vydynlib::getSymbol(module, "vykeldevenum_finalize", status), nullptr);
    EXPECT_EQ(vydynlib::getSymbol(module, "missing", status), nullptr);
    EXPECT_EQ(takeError(), recorded(177, "vydynlib_symbol", "missing", ERROR_PROC_NOT_FOUND));
    status.code = -1;
    EXPECT_EQ(vydynlib::getSymbol(module, "vykeldevenum_finalize", status), nullptr);
    EXPECT_EQ(vydynlib::loadLibrary("missing", status), nullptr);
    EXPECT_EQ(takeError(), "-1");
    vydynlib::LibraryHandle handle;
    handle.unload();
    handle.reset(module);
    handle.unload();
    EXPECT_EQ(handle.get(), nullptr);
}

TEST_F(PlatformTest, RecordsALockFileThatCannotBeMade) {
    try {
        vykel::openLockFile((machine.folder() / "missing" / "x.lck").string().c_str());
        FAIL();
    } catch (const vyerr::Exception& exception) {
        EXPECT_EQ(exception.status()->code, -50209);
        EXPECT_STREQ(exception.what(),
                     "{\"error_constant\":\"vykel::toInteger(code_)\",\"file\":\"includes/pellumkelddk/user/"
                     "FileLock.cpp\",\"line\":47,\"component\":\"vykeldevenum\"}");
    }
    EXPECT_FALSE(fs::exists(machine.folder() / "missing"));
}

TEST_F(PlatformTest, CatchesTheMemoryFaultAlone) {
    const auto run = [](DWORD code) {
        return vyplat::completesWithoutMemoryFault(
            [](void* given) { raiseStructuredException(*static_cast<DWORD*>(given)); }, &code);
    };
    EXPECT_TRUE(vyplat::completesWithoutMemoryFault([](void*) {}, nullptr));
    EXPECT_FALSE(run(0xC0000017));
    EXPECT_TRUE(passesOn([&] { run(0xC0000018); }));
    EXPECT_THROW(vyplat::completesWithoutMemoryFault([](void*) { throw 1; }, nullptr), int);
}

} // namespace vykeltest
