// The cost of a client's whole life, compared with a floor: the same plug-ins found in the registry, loaded
// and asked by hand. And that of `vykeldev list`, compared with a program that only loads the library.
// scripts/bench makes the machine: it registers eight plug-ins of one device each.
#include "vykel/PluginEntryPoints.h"
#include "vykel/vykeldevenum.h"
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <windows.h>

namespace {

using Path = std::basic_string<WCHAR>;

constexpr std::uint32_t plugins = 8;

void require(bool holds, const char* what) {
    if (!holds)
        throw std::runtime_error(what);
}

/// Refreshes a list and asks its devices. Returns how many there are.
std::uint32_t useList(vykel::IDeviceList& list) {
    vykel::StatusBlock status = vykel::makeStatusBlock();
    if (list.isStale())
        list.refresh(&status);
    require(status.code >= 0, "a refresh failed");
    const std::uint32_t count = list.getCount();
    for (std::uint32_t i = 0; i < count; ++i)
        benchmark::DoNotOptimize(list.getDevice(i, 0, &status)->getNumber());
    list.release();
    return count;
}

void live() {
    require(vykeldevenum_initialize() == 0, "the library cannot be initialised");
    vykel::IDeviceList* list = nullptr;
    require(vykeldevenum_getAllKelDevices(0, &list) == 0, "there is no list");
    require(useList(*list) == plugins, "devices are missing");
    vykeldevenum_finalize();
}

template <class Function>
Function* find(HMODULE library, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
}

/// A plug-in that is loaded and has a list, as the library must do it, and nothing else.
struct ByHand {
    explicit ByHand(const Path& path) : library(LoadLibraryExW(path.c_str(), nullptr, 0)) {
        require(library != nullptr, "a plug-in cannot be loaded");
        find<decltype(vykel_initializePlugin)>(library, "vykel_initializePlugin")();
        find<decltype(vykel_getPluginInterface)>(library, "vykel_getPluginInterface")(0, &list);
    }
    void end() const {
        find<decltype(vykel_finalizePlugin)>(library, "vykel_finalizePlugin")();
        FreeLibrary(library);
    }

    HMODULE library;
    vykel::IDeviceList* list = nullptr;
};

/// The path of a registered plug-in.
Path pluginPath(HKEY key, DWORD index) {
    WCHAR name[256] = {};
    DWORD length = std::size(name);
    RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
    HKEY plugin = nullptr;
    require(RegOpenKeyExW(key, name, 0, KEY_READ, &plugin) == ERROR_SUCCESS, "a key cannot be opened");
    const char value[] = "EnumeratorPluginPath";
    WCHAR path[MAX_PATH] = {};
    DWORD bytes = sizeof path;
    RegQueryValueExW(plugin, Path(value, std::end(value)).c_str(), nullptr, nullptr,
                     reinterpret_cast<BYTE*>(path), &bytes);
    RegCloseKey(plugin);
    return path;
}

void liveByHand() {
    const char name[] = "SOFTWARE\\Morvance\\VY-KEL\\Plugins";
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, Path(name, std::end(name)).c_str(), 0, KEY_READ, &key);
    std::vector<ByHand> loaded;
    for (DWORD i = 0; i < plugins; ++i)
        loaded.emplace_back(pluginPath(key, i));
    RegCloseKey(key);
    for (const ByHand& plugin : loaded)
        require(useList(*plugin.list) == 1, "a device is missing");
    for (const ByHand& plugin : loaded)
        plugin.end();
}

void life(benchmark::State& state) {
    for (auto _ : state)
        live();
}

void lifeFloor(benchmark::State& state) {
    for (auto _ : state)
        liveByHand();
}

/// Times a process by the clock, from its start to its end.
void timeProcess(benchmark::State& state, std::vector<const char*> command) {
    command.push_back(nullptr);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const pid_t process = fork();
        if (process == 0) {
            close(STDOUT_FILENO);
            execv(command[0], const_cast<char* const*>(command.data()));
            _exit(127);
        }
        int status = 0;
        waitpid(process, &status, 0);
        require(status == 0 || WEXITSTATUS(status) == 1, "a program cannot be started"); // 1: nobody reads
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
}

void list(benchmark::State& state) {
    timeProcess(state, {VYKELDEV, "list"});
}

void listFloor(benchmark::State& state) {
    timeProcess(state, {"/proc/self/exe", "--load"});
}

BENCHMARK(life)->Name("Life/vykel")->ArgName("plugins")->Arg(plugins);
BENCHMARK(lifeFloor)->Name("Life/floor")->ArgName("plugins")->Arg(plugins);
BENCHMARK(list)->Name("List/vykel")->ArgName("plugins")->Arg(plugins)->UseManualTime();
BENCHMARK(listFloor)->Name("List/floor")->ArgName("plugins")->Arg(plugins)->UseManualTime();

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::string(argv[1]) == "--load") {
        const std::string library = LIBRARY;
        return LoadLibraryExW(Path(library.begin(), library.end()).c_str(), nullptr, 0) != nullptr ? 0 : 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
