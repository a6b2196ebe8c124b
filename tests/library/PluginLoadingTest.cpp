#include "errors/Exception.h"
#include "PellumKelPlugin.h"
#include "support/LibraryTest.h"
#include "support/TestFiles.h"
#include "support/Unwinding.h"

#include <algorithm>
#include <exception>

namespace vykeltest {

using PluginLoadingTest = LibraryTest;

TEST_F(PluginLoadingTest, TakesValuesOfAnyShape) {
    constexpr std::size_t all = 9999;
    const struct {
        const char* name;
        bool loads;
        DWORD type;
        std::size_t cut;   // units of the text that are left out at its end
        std::size_t extra; // bytes written after the text, the terminator among them
    } shapes[] = {
        {"binary", true, REG_BINARY, 0, 2},        {"empty", false, REG_SZ, all, 2},
        {"expandable", true, REG_EXPAND_SZ, 0, 2}, {"long", true, REG_SZ, 0, 1000},
        {"missing", false, REG_SZ, 1, 2},          {"nothing", false, REG_SZ, all, 0},
        {"odd", true, REG_BINARY, 0, 3},           {"text", false, REG_SZ, 0, 2},
        {"unterminated", true, REG_SZ, 0, 0},
    };
    std::string expected;
    for (const auto& shape : shapes) {
        const fs::path path = machine.copyLibrary("fake_plugin", shape.name);
        if (shape.name == std::string("text"))
            writeFile(path, "no library");
        WideString text = path.string<WCHAR>();
        text.resize(text.size() - std::min(text.size(), shape.cut));
        const std::size_t bytes = text.size() * sizeof(WCHAR) + shape.extra;
        // What follows an unterminated text in memory is no 0: nobody may terminate it by chance.
        text.append(shape.extra / 2, 0).append(2, u'x');
        machine.registerPlugin(shape.name, &shape.type, text.data(), bytes);
        if (shape.loads)
            expected += (expected.empty() ? "" : " ") + std::string(shape.name) + ".initialize";
    }
    machine.registerPlugin("novalue", nullptr, nullptr, 0);
    EXPECT_EQ(library.initialize(), success);
    EXPECT_EQ(plugins.takeLog(), expected);
}

TEST_F(PluginLoadingTest, LeavesOutEachThatFailsAndKeepsTheRegistrysOrder) {
    const struct {
        const char* library;
        std::int32_t initialize;
        const char* log;
    } cases[] = {
        {"fake_plugin", Yes, "a.initialize B.initialize c.initialize"}, // a warning is no refusal
        {"fake_plugin_without_finalize", 0, "a.initialize B.unload c.initialize"},
        {"fake_plugin", -7, "a.initialize B.initialize B.unload c.initialize"},
        {"fake_plugin", ThrowOwnType, "a.initialize B.initialize B.unload c.initialize"},
    };
    machine.install("fake_plugin", "c");
    machine.install("fake_plugin", "a");
    machine.registerPlugin("b0", machine.folder() / "missing");
    for (const auto& each : cases) {
        SCOPED_TRACE(each.log);
        machine.install(each.library, "B");
        plugins.answers["B.initialize"] = each.initialize;
        whileUnwinding([&] { EXPECT_EQ(library.initialize(), success); });
        EXPECT_EQ(plugins.takeLog(), each.log);
        library.newList();
        const bool stays = each.initialize == Yes;
        EXPECT_EQ(plugins.takeLog({"getInterface"}),
                  stays ? "a.getInterface(0) B.getInterface(0) c.getInterface(0)"
                        : "a.getInterface(0) c.getInterface(0)");
        EXPECT_EQ(library.finalize(), success);
        EXPECT_EQ(plugins.takeLog(), stays ? "a.finalize a.unload B.finalize B.unload c.finalize c.unload"
                                           : "a.finalize a.unload c.finalize c.unload");
    }
}

TEST_F(PluginLoadingTest, ReportsItsOwnFailuresAndUnloadsOnce) {
    machine.install("fake_plugin", "a");
    vykel::PellumKelPlugin plugin((machine.folderName() + "\\a") + pluginExtension);
    const auto fail = [&](const char* call, std::int32_t answer, int line,
                          void (*step)(vykel::PellumKelPlugin&)) {
        plugins.answers = {{call, answer}};
        try {
            step(plugin);
            EXPECT_EQ(line, 0);
        } catch (const vyerr::Exception& exception) {
            const std::string text = exception.errorInfoJson();
            EXPECT_NE(text.find("PellumKelPlugin.cpp\",\"line\":" + std::to_string(line) + ","),
                      std::string::npos)
                << text;
            EXPECT_EQ(exception.status()->code, line == 31 ? pluginNotInitialized : answer);
        }
    };
    const auto get = [](vykel::PellumKelPlugin& each) { EXPECT_NE(each.getInterface(), nullptr); };
    fail("", -7, 31, get);
    fail("a.initialize", -7, 54, [](vykel::PellumKelPlugin& each) { each.load(); });
    fail("", -7, 31, get);
    fail("a.initialize", Yes, 0, [](vykel::PellumKelPlugin& each) { each.initialize(); });
    fail("a.getInterface", -7, 38, get);
    fail("a.getInterface", Yes, 0, get); // a warning is no refusal
    plugin.unload();
    plugin.unload();
    EXPECT_EQ(plugins.takeLog({"finalize", "unload"}), "a.finalize a.unload");
}

TEST_F(PluginLoadingTest, APluginWithoutListThisTimeStays) {
    start({"a", "b", "c"});
    for (const std::int32_t answer : {std::int32_t{-7}, std::int32_t{Null}, std::int32_t{ThrowLogicError}}) {
        plugins.answers["b.getInterface"] = answer;
        EXPECT_EQ(refresh(*library.newList()), success);
        EXPECT_EQ(plugins.takeLog({"release"}), "a.release c.release");
    }
    plugins.answers = {{"a.finalize", ThrowOwnType}};
    library.newList();
    EXPECT_EQ(plugins.takeLog({"release"}), "a.release b.release c.release");
    EXPECT_EQ(library.finalize(), success);
    EXPECT_EQ(plugins.takeLog(), "a.finalize a.unload b.finalize b.unload c.finalize c.unload");
}

TEST_F(PluginLoadingTest, ExceptionsOfPluginsBecomeCodesAndLeaveNoTrace) {
    const struct {
        Answer answer;
        std::int32_t code;
    } exceptions[] = {{ThrowBadAlloc, memoryFull},     {ThrowInvalidArgument, invalidParameter},
                      {ThrowBadCast, badCast},         {ThrowSystemError, osFault},
                      {ThrowLogicError, generalFault}, {ThrowOwnType, generalFault}};
    const char* const reported[] = {"isStale",   "refresh",    "getCount",  "getDevice",
                                    "getNumber", "getSortKey", "setNumber", "attach"};
    const char* const silent[] = {"initialize", "getInterface", "release", "finalize"};
    const auto run = [&](const std::string& call, Answer answer, std::int32_t code) {
        SCOPED_TRACE(call + " " + std::to_string(answer));
        plugins.answers = {{"b." + call, answer}};
        plugins.devicesOf["b"] = {{}};
        ASSERT_EQ(library.initialize(), success);
        {
            const ListPtr list = library.newList();
            vykel::StatusBlock status = vykel::makeStatusBlock();
            list->refresh(&status);
            list->attach(7, &status);
            EXPECT_EQ(status.code, code);
        }
        ASSERT_EQ(library.finalize(), success);
        ASSERT_EQ(std::uncaught_exceptions(), 0);
    };
    for (const std::string& runtime : pluginsByRuntime()) {
        SCOPED_TRACE(runtime);
        machine.install(runtime, "b");
        for (const auto& exception : exceptions) {
            for (const char* const call : reported)
                run(call, exception.answer, exception.code);
            for (const char* const call : silent)
                run(call, exception.answer, success);
        }
    }
    // The library still reports its own failures after all this.
    plugins.answers.clear();
    ASSERT_EQ(library.initialize(), success);
    machine.setConfigurationFolder(false);
    EXPECT_EQ(refresh(*library.newList()), configurationFault);
}

#if defined(_WIN32)
TEST_F(PluginLoadingTest, ServesAPluginOfTheOtherWindowsAbi) {
    const fs::path built = programFolder() / "other_abi_plugin.dll";
    machine.registerPlugin("other", built);
    const HMODULE plugin = LoadLibraryExW(built.string<WCHAR>().c_str(), nullptr, 0);
    ASSERT_NE(plugin, nullptr);
    ASSERT_EQ(library.initialize(), success);
    {
        const ListPtr list = library.newList();
        vykel::StatusBlock status = vykel::makeStatusBlock();
        list->refresh(&status);
        ASSERT_EQ(list->getCount(), 1u);
        vykel::IDevice* const device = list->getDevice(0, 3, &status);
        EXPECT_EQ(device->getNumber(), 0u);
        EXPECT_STREQ(device->getPersistentToken(2), "other-2");
        device->setAlias("alias", 1, 0, &status);
        EXPECT_STREQ(device->getAlias(), "alias");
        list->attach(7, &status);
        EXPECT_EQ(status.code, success);
        list->attach(8, &status);
        EXPECT_EQ(status.code, -7);
    }
    EXPECT_EQ(symbolOf<std::int32_t (*)()>(plugin, "otherAbiReleased")(), 1);
    EXPECT_EQ(library.finalize(), success);
    FreeLibrary(plugin);
}
#endif

} // namespace vykeltest
