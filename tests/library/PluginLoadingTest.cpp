#include "support/LibraryTest.h"

#include <exception>
#include <fstream>

namespace vykeltest {

using PluginLoadingTest = LibraryTest;

TEST_F(PluginLoadingTest, TakesValuesOfAnyShape) {
    std::ofstream(machine.folder() / "text") << "no library";
    struct Shape {
        const char* name;
        bool loads;
        bool registered; // has a value at all
        DWORD type;
        std::size_t cut;   // units without the terminator that are left out
        std::size_t extra; // bytes written behind the text
    };
    const Shape shapes[] = {
        {"binary", true, true, REG_BINARY, 0, 2},        {"empty", false, true, REG_SZ, 9999, 2},
        {"expandable", true, true, REG_EXPAND_SZ, 0, 2}, {"long", true, true, REG_SZ, 0, 1000},
        {"missing", false, true, REG_SZ, 1, 2}, // the path without its last character
        {"nothing", false, true, REG_SZ, 9999, 0},       {"novalue", false, false, REG_SZ, 0, 0},
        {"odd", true, true, REG_BINARY, 0, 3},           {"text", false, true, REG_SZ, 0, 2},
        {"unterminated", true, true, REG_SZ, 0, 0},
    };
    std::string expected;
    for (const Shape& shape : shapes) {
        const bool isText = shape.name == std::string("text");
        const fs::path path =
            isText ? machine.folder() / "text" : machine.copyLibrary("fake_plugin", shape.name);
        WideString text = path.string<WCHAR>();
        text.resize(text.size() - std::min(text.size(), shape.cut));
        const std::size_t bytes = text.size() * sizeof(WCHAR) + shape.extra;
        // What follows an unterminated text in memory is no 0: nobody may terminate it by chance.
        text.append(shape.extra / 2, 0).append(2, u'x');
        machine.registerPlugin(shape.name, shape.registered ? &shape.type : nullptr, text.data(), bytes);
        if (shape.loads)
            expected += (expected.empty() ? "" : " ") + std::string(shape.name) + ".initialize";
    }
    EXPECT_EQ(library.initialize(), 0);
    EXPECT_EQ(plugins.takeLog(), expected);
}

TEST_F(PluginLoadingTest, LeavesOutEachThatFailsAndKeepsTheRegistrysOrder) {
    struct Case {
        const char* library;
        std::int32_t initialize;
        const char* log;
    };
    const Case cases[] = {
        {"fake_plugin", 1, "a.initialize B.initialize c.initialize"}, // a warning is no refusal
        {"fake_plugin_without_finalize", 0, "a.initialize B.unload c.initialize"},
        {"fake_plugin", -7, "a.initialize B.initialize B.unload c.initialize"},
        {"fake_plugin", ThrowBadAlloc, "a.initialize B.initialize B.unload c.initialize"},
        {"fake_plugin", ThrowOwnType, "a.initialize B.initialize B.unload c.initialize"},
    };
    machine.install("fake_plugin", "c");
    machine.install("fake_plugin", "a");
    for (const Case& each : cases) {
        SCOPED_TRACE(each.log);
        machine.install(each.library, "B");
        plugins.answers["B.initialize"] = each.initialize;
        EXPECT_EQ(library.initialize(), 0);
        EXPECT_EQ(plugins.takeLog(), each.log);
        library.newList();
        const bool stays = each.initialize == 1;
        EXPECT_EQ(plugins.takeLog({"getInterface"}),
                  stays ? "a.getInterface(0) B.getInterface(0) c.getInterface(0)"
                        : "a.getInterface(0) c.getInterface(0)");
        EXPECT_EQ(library.finalize(), 0);
        EXPECT_EQ(plugins.takeLog(), stays ? "a.finalize a.unload B.finalize B.unload c.finalize c.unload"
                                           : "a.finalize a.unload c.finalize c.unload");
    }
}

TEST_F(PluginLoadingTest, InitialisesALibraryRegisteredTwiceTwice) {
    const auto path = machine.install("fake_plugin", "a");
    machine.registerPlugin("again", path);
    plugins.devicesOf["a"] = {{0}};
    ASSERT_EQ(library.initialize(), 0);
    {
        const ListPtr list = library.newList();
        EXPECT_EQ(refresh(*list), 0);
        EXPECT_EQ(list->getCount(), 2u);
    }
    EXPECT_EQ(library.finalize(), 0);
    EXPECT_EQ(plugins.takeLog({"initialize", "finalize", "unload"}),
              "a.initialize a.initialize a.finalize a.finalize a.unload");
}

TEST_F(PluginLoadingTest, APluginWithoutListThisTimeStays) {
    start({"a", "b", "c"});
    for (const std::int32_t answer : {std::int32_t{-7}, std::int32_t{Null}, std::int32_t{ThrowLogicError}}) {
        plugins.answers["b.getInterface"] = answer;
        library.newList();
        EXPECT_EQ(plugins.takeLog({"release"}), "a.release c.release");
    }
    plugins.answers.clear();
    library.newList();
    EXPECT_EQ(plugins.takeLog({"release"}), "a.release b.release c.release");
    plugins.answers["a.finalize"] = ThrowOwnType;
    EXPECT_EQ(library.finalize(), 0);
    EXPECT_EQ(plugins.takeLog(), "a.finalize a.unload b.finalize b.unload c.finalize c.unload");
}

TEST_F(PluginLoadingTest, ExceptionsOfPluginsBecomeCodesAndLeaveNoTrace) {
    const struct {
        Answer answer;
        std::int32_t code;
    } exceptions[] = {{ThrowBadAlloc, -52000},    {ThrowInvalidArgument, -52005}, {ThrowBadCast, -52004},
                      {ThrowSystemError, -52008}, {ThrowLogicError, -52003},      {ThrowOwnType, -52003}};
    const struct {
        const char* call;
        bool reported;
    } calls[] = {{"b.initialize", false}, {"b.getInterface", false}, {"b.isStale", true},
                 {"b.refresh", true},     {"b.getCount", true},      {"b.getDevice", true},
                 {"b.getNumber", true},   {"b.getSortKey", true},    {"b.setNumber", true},
                 {"b.attach", true},      {"b.release", false},      {"b.finalize", false}};
    plugins.devicesOf["b"] = {{}};
    for (const std::string& runtime : pluginsByRuntime()) {
        machine.install(runtime, "b");
        for (int round = 0; round < 2; ++round) {
            for (const auto& exception : exceptions) {
                for (const auto& call : calls) {
                    SCOPED_TRACE(runtime + " " + call.call + " " + std::to_string(exception.answer));
                    plugins.answers = {{call.call, exception.answer}};
                    plugins.devicesOf["b"][0] = {};
                    ASSERT_EQ(library.initialize(), 0);
                    {
                        const ListPtr list = library.newList();
                        vykel::StatusBlock status = vykel::makeStatusBlock();
                        list->refresh(&status);
                        list->attach(7, &status);
                        EXPECT_EQ(status.code, call.reported ? exception.code : 0);
                    }
                    ASSERT_EQ(library.finalize(), 0);
                    ASSERT_EQ(std::uncaught_exceptions(), 0);
                }
            }
        }
    }
    // The library's own failures are still told after all this.
    plugins.answers.clear();
    ASSERT_EQ(library.initialize(), 0);
    machine.setConfigurationFolder(false);
    EXPECT_EQ(refresh(*library.newList()), -50209);
    machine.setFolderName(machine.folderName() + "\\missing");
    EXPECT_THROW(library.newList(), std::int32_t);
}

TEST_F(PluginLoadingTest, LoadsAPathOutsideAscii) {
    machine.registerPlugin("a",
                           fs::u8path(machine.copyLibrary("fake_plugin", u8"gerät \U0001F600").u8string()));
    EXPECT_EQ(library.initialize(), 0);
    EXPECT_NE(plugins.takeLog({"initialize"}), "");
}

#if defined(_WIN32)
TEST_F(PluginLoadingTest, ServesAPluginOfTheOtherWindowsAbi) {
    const fs::path built = programFolder() / "other_abi_plugin.dll";
    machine.registerPlugin("other", built);
    const HMODULE plugin = LoadLibraryExW(built.string<WCHAR>().c_str(), nullptr, 0);
    ASSERT_NE(plugin, nullptr);
    ASSERT_EQ(library.initialize(), 0);
    {
        const ListPtr list = library.newList();
        vykel::StatusBlock status = vykel::makeStatusBlock();
        list->refresh(&status);
        ASSERT_EQ(list->getCount(), 1u);
        vykel::IDevice* const device = list->getDevice(0, 3, &status);
        EXPECT_EQ(list->getDevice(0, 3, &status), device);
        EXPECT_EQ(device->getNumber(), 0u);
        EXPECT_STREQ(device->getPersistentToken(2), "other-2");
        device->setAlias("alias", 1, 0, &status);
        EXPECT_STREQ(device->getAlias(), "alias");
        list->attach(7, &status);
        EXPECT_EQ(status.code, 0);
        list->attach(8, &status);
        EXPECT_EQ(status.code, -7);
    }
    EXPECT_EQ(symbolOf<std::int32_t (*)()>(plugin, "otherAbiReleased")(), 1);
    EXPECT_EQ(library.finalize(), 0);
    FreeLibrary(plugin);
}
#endif

} // namespace vykeltest
