#include "errors/CatchLadder.h"
#include "PellumKelPlugin.h"
#include "PluginRegistrations.h"
#include "support/LibraryTest.h"
#include "support/Unwinding.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <tuple>

namespace vykeltest {

using PluginLoadingTest = LibraryTest;

/// The fake plug-ins that differ only in the place of their C++ runtime. On Windows each brings its own.
#ifdef _WIN32
constexpr const char* runtimes[] = {"fake_plugin"};
#else
constexpr const char* runtimes[] = {"fake_plugin", "fake_plugin_own_runtime"};
#endif

TEST_F(PluginLoadingTest, TakesValuesOfAnyShape) {
    constexpr std::size_t all = 9999;
    const auto nameOf = [](const std::string& start) { // the longest that the registry allows
        return start + u8"é" + std::string(254 - start.size(), 'n');
    };
    const struct {
        const char* name;
        DWORD type;
        std::size_t cut;   // units of the text that are left out at its end
        std::size_t extra; // bytes written after the text, the terminator among them
    } shapes[] = {
        {"binary", REG_BINARY, 0, 2}, {"empty", REG_SZ, all, 2}, {"expandable", REG_EXPAND_SZ, 0, 2},
        {"long", REG_SZ, 0, 4000},    {"missing", REG_SZ, 1, 2}, {"nothing", REG_SZ, all, 0},
        {"odd", REG_BINARY, 0, 3},    {"text", REG_SZ, 0, 2},    {"unterminated", REG_SZ, 0, 0}};
    for (const auto& shape : shapes) {
        const fs::path path = machine.copyLibrary("fake_plugin", shape.name);
        if (shape.name == std::string("text"))
            fs::resize_file(path, 10); // no library any more
        WideString text = path.string<WCHAR>();
        text.resize(text.size() - std::min(text.size(), shape.cut));
        const std::size_t bytes = text.size() * sizeof(WCHAR) + shape.extra;
        // What follows an unterminated text in memory is no 0: nobody may terminate it by chance.
        text.append(shape.extra / 2, 0).append(2, u'x');
        machine.registerPlugin(nameOf(shape.name), &shape.type, text.data(), bytes);
    }
    machine.registerPlugin(nameOf("novalue"), nullptr, nullptr, 0);
    EXPECT_EQ(library.initialize(), success);
    EXPECT_EQ(plugins.takeLog(), "binary.initialize expandable.initialize long.initialize odd.initialize "
                                 "unterminated.initialize");
}

TEST_F(PluginLoadingTest, LeavesOutEachThatFailsAndKeepsTheRegistrysOrder) {
    const std::tuple<const char*, std::int32_t, std::string, const char*> cases[] = {
        {"fake_plugin", Yes, "B.initialize", "B.finalize B.unload "}, // a warning is no refusal
        {"fake_plugin_without_finalize", 0, "B.unload", ""},
        {"fake_plugin", -7, "B.initialize B.unload", ""},
        {"fake_plugin", ThrowOwnType, "B.initialize B.unload", ""}};
    machine.install("fake_plugin", "c");
    machine.install("fake_plugin", "a");
    machine.registerPlugin("b0", machine.folder() / "missing");
    for (const auto& [file, answer, begun, ended] : cases) {
        SCOPED_TRACE(begun);
        machine.install(file, "B");
        plugins.answers["B.initialize"] = answer;
        whileUnwinding([&] { EXPECT_EQ(library.initialize(), success); });
        EXPECT_EQ(library.finalize(), success);
        EXPECT_EQ(plugins.takeLog(), "a.initialize " + begun + " c.initialize a.finalize a.unload " + ended +
                                         "c.finalize c.unload");
    }
}

TEST_F(PluginLoadingTest, ReportsItsOwnFailuresAndUnloadsOnce) {
    vykel::PellumKelPlugin missing("missing"), plugin((machine.folderName() + "\\a") + pluginExtension);
    machine.install("fake_plugin", "a");
    const std::function<void()> load = [&] { plugin.load(); };
    const std::function<void()> getList = [&] { EXPECT_NE(plugin.getInterface(), nullptr); };
    const std::tuple<const char*, std::int32_t, std::function<void()>, std::int32_t, std::uint32_t> cases[] =
        {{"", 0, [] { vykel::pluginName(9); }, resourceNotFound, 58},
         {"", 0, [] { vykel::pluginPath("none"); }, resourceNotFound, 91},
         {"", 0, [&] { missing.load(); }, invalidParameter, 94},
         {"", 0, getList, pluginNotInitialized, 31},
         {"a.initialize", -7, load, -7, 54},
         {"", 0, getList, pluginNotInitialized, 31},
         {"a.initialize", Yes, load, success, 0},
         {"a.getInterface", -7, getList, -7, 38},
         {"a.getInterface", Yes, getList, success, 0}}; // a warning is no refusal
    for (const auto& [call, answer, step, code, line] : cases) {
        plugins.answers = {{call, answer}};
        vykel::StatusBlock status = vykel::makeStatusBlock();
        whileUnwinding([&, &work = step] { vyerr::runGuarded(&status, {"", 0}, work); });
        EXPECT_EQ(status.code, code) << line;
        EXPECT_EQ(status.line, line);
    }
    plugin.unload();
    plugin.unload();
    EXPECT_EQ(plugins.takeLog({"finalize", "unload"}), "a.finalize a.unload");
}

TEST_F(PluginLoadingTest, APluginWithoutListThisTimeStays) {
    start({"a", "b", "c"}).reset();
    plugins.takeLog();
    EXPECT_EQ(library.initialize(), success);
    EXPECT_EQ(library.finalize(), success); // as many finalize as initialise
    EXPECT_EQ(plugins.takeLog(), "");
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
    const std::pair<Answer, std::int32_t> exceptions[] = {{ThrowBadAlloc, memoryFull},
                                                          {ThrowInvalidArgument, invalidParameter},
                                                          {ThrowBadCast, badCast},
                                                          {ThrowSystemError, osFault},
                                                          {ThrowLogicError, generalFault},
                                                          {ThrowOwnType, generalFault},
                                                          {ThrowLibraryError, configurationFault}};
    const std::string reported = "isStale refresh getCount getDevice getNumber getSortKey setNumber attach";
    std::istringstream calls(reported + " initialize getInterface release finalize");
    for (std::string call; calls >> call;) {
        for (const char* const pluginFile : runtimes) {
            machine.install(pluginFile, "b");
            for (const auto& [answer, code] : exceptions) {
                SCOPED_TRACE(pluginFile + (" " + call) + " " + std::to_string(answer));
                plugins.answers = {{"b." + call, answer}};
                plugins.devicesOf["b"] = {{}};
                ASSERT_EQ(library.initialize(), success);
                {
                    const ListPtr list = library.newList();
                    vykel::StatusBlock status = vykel::makeStatusBlock();
                    list->refresh(&status);
                    list->attach(7, &status);
                    EXPECT_EQ(status.code, reported.find(call) != std::string::npos ? code : success);
                    EXPECT_EQ(status.file == std::string("plugin.cpp"), status.code == configurationFault);
                }
                ASSERT_EQ(library.finalize(), success);
                ASSERT_EQ(std::uncaught_exceptions(), 0);
            }
        }
    }
    // The library still reports its own failures after all this. What cannot report a code passes an
    // exception on.
    ASSERT_EQ(library.initialize(), success);
    plugins.answers = {{"b.detach", ThrowOwnType}};
    const ListPtr list = library.newList();
    EXPECT_THROW(list->detach(7), std::runtime_error);
    machine.setConfigurationFolder(false);
    EXPECT_EQ(refresh(*list), configurationFault);
}

} // namespace vykeltest
