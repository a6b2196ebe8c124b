// The cost of a life, compared with loading the same plug-ins by hand; and of `vykeldev list`, compared with
// a program that only loads the DLL. The machine is a folder with copies of the sample plug-in.
#include "ThreadTime.h"
#include "vykel/PluginEntryPoints.h"
#include "vykel/vykeldevenum.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <windows.h>

namespace {

namespace fs = std::filesystem;

constexpr int devicesEach = 4;

const fs::path programs = fs::read_symlink("/proc/self/exe").parent_path();

/// Runs a program beside this one to its end. Returns the processor time that it and its children took, in
/// seconds; a negative number when it failed.
double run(std::vector<std::string> command) {
    command[0] = (programs / command[0]).string();
    std::vector<char*> arguments;
    for (std::string& each : command)
        arguments.push_back(each.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = posix_spawn(&child, arguments[0], &quiet, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&quiet);
    rusage used = {};
    if (status != 0 || wait4(child, &status, 0, &used) != child || status != 0)
        return -1;
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

/// The machine of this process and its children: plug-ins whose devices have numbers, a legacy file
/// whose aliases have all moved.
class Machine {
public:
    explicit Machine(int count) {
        fs::create_directories(root / "c" / "ProgramData");
        setenv("WINHOST_ROOT", root.c_str(), 1);
        isReady = run({"vykeldev", "setup"}) >= 0;
        std::ofstream(root / "c" / "ProgramData" / "Morvance" / "VY-KEL" / "vykel.ini")
            << "[General]\nMajorVersion=15\nMinorVersion=0\n";
        for (int i = 0; i < count; ++i) {
            const std::string name = "plugin" + std::to_string(i);
            fs::copy_file(programs / "simulated.so", root / (name + ".so"));
            std::ofstream devices(root / (name + ".devices"));
            for (int n = 0; n < devicesEach; ++n)
                devices << "token=\"" << name << '/' << n << "\" number=" << i * devicesEach + n << '\n';
            devices.close();
            isReady = isReady && run({"vykeldev", "register", name, (root / (name + ".so")).string()}) >= 0;
        }
    }
    ~Machine() { fs::remove_all(root); }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    const fs::path root = fs::temp_directory_path() / ("vykel-bench-life-" + std::to_string(getpid()));
    bool isReady = false;
};

std::uint32_t live() {
    vykel::IDeviceList* list = nullptr;
    std::uint32_t count = 0;
    if (vykeldevenum_initialize() == 0 && vykeldevenum_getAllKelDevices(0, &list) == 0) {
        vykel::StatusBlock status = vykel::makeStatusBlock();
        list->refresh(&status);
        count = status.code == 0 ? list->getCount() : 0;
        for (std::uint32_t i = 0; i < count; ++i)
            benchmark::DoNotOptimize(list->getDevice(i, 0, &status));
        list->release();
    }
    vykeldevenum_finalize();
    return count;
}

template <class Function>
Function* entryPoint(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

/// A plug-in that is loaded, with its list, by hand.
class Plugin {
public:
    explicit Plugin(const WCHAR* path) : module(LoadLibraryExW(path, nullptr, 0)) {
        const auto getInterface =
            entryPoint<decltype(vykel_getPluginInterface)>(module, "vykel_getPluginInterface");
        const auto initialize =
            entryPoint<decltype(vykel_initializePlugin)>(module, "vykel_initializePlugin");
        finalize = entryPoint<decltype(vykel_finalizePlugin)>(module, "vykel_finalizePlugin");
        if (initialize() != 0 || getInterface(0, &list) != 0)
            std::abort();
    }

    HMODULE module;
    decltype(&vykel_finalizePlugin) finalize;
    vykel::IDeviceList* list = nullptr;
};

std::vector<Plugin> loadAllByHand() {
    std::vector<Plugin> plugins;
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"SOFTWARE\\Morvance\\VY-KEL\\Plugins", 0, KEY_READ, &key);
    WCHAR name[256];
    for (DWORD i = 0, length = 256;
         RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) == 0; ++i, length = 256) {
        HKEY registration = nullptr;
        WCHAR path[512] = {};
        DWORD size = sizeof path;
        RegOpenKeyExW(key, name, 0, KEY_READ, &registration);
        RegQueryValueExW(registration, u"EnumeratorPluginPath", nullptr, nullptr,
                         reinterpret_cast<BYTE*>(path), &size);
        RegCloseKey(registration);
        plugins.emplace_back(path);
    }
    RegCloseKey(key);
    return plugins;
}

/// The floor: what every client of these plug-ins must do, written for these plug-ins.
std::uint32_t liveByHand() {
    std::uint32_t count = 0;
    std::vector<Plugin> plugins = loadAllByHand();
    vykel::StatusBlock status = vykel::makeStatusBlock();
    for (const Plugin& plugin : plugins) {
        plugin.list->refresh(&status);
        const std::uint32_t devices = plugin.list->getCount();
        for (std::uint32_t i = 0; i < devices; ++i)
            benchmark::DoNotOptimize(plugin.list->getDevice(i, 0, &status)->getNumber());
        count += devices;
    }
    for (const Plugin& plugin : plugins)
        plugin.list->release();
    for (const Plugin& plugin : plugins) {
        plugin.finalize();
        FreeLibrary(plugin.module);
    }
    return count;
}

/// Reports the median of the times, because some take many times as long as others. Each way is taken in
/// turn, so that other work on the machine slows both alike.
template <class First, class Second>
void measureInTurn(benchmark::State& state, bool timesFirst, First first, Second second) {
    const Machine machine(static_cast<int>(state.range(0)));
    std::vector<double> seconds;
    for (auto _ : state) {
        const double times[] = {first(), second()};
        if (!machine.isReady || times[0] < 0 || times[1] < 0) {
            state.SkipWithError("devices are missing, or a program failed");
            return;
        }
        seconds.push_back(times[timesFirst ? 0 : 1]);
        state.SetIterationTime(seconds.back());
    }
    std::sort(seconds.begin(), seconds.end());
    state.counters["median"] = seconds[seconds.size() / 2];
}

void measureLife(benchmark::State& state, bool timesFirst) {
    const auto timed = [&](std::uint32_t (*pass)()) {
        return [&state, pass] {
            const double start = bench::threadSeconds();
            const bool complete = pass() == static_cast<std::uint32_t>(state.range(0) * devicesEach);
            return complete ? bench::threadSeconds() - start : -1;
        };
    };
    measureInTurn(state, timesFirst, timed(live), timed(liveByHand));
}

void measureProgram(benchmark::State& state, bool timesFirst) {
    measureInTurn(
        state, timesFirst,
        [] {
            return run({"vykeldev", "list"});
        },
        [] { return run({"bench_empty"}); });
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("plugins")->Arg(1)->Arg(8)->Arg(32)->UseManualTime();
}

BENCHMARK_CAPTURE(measureLife, library, true)->Name("Life/vykel")->Apply(sizes);
BENCHMARK_CAPTURE(measureLife, byHand, false)->Name("Life/floor")->Apply(sizes);
BENCHMARK_CAPTURE(measureProgram, list, true)->Name("List/vykel")->Apply(sizes);
BENCHMARK_CAPTURE(measureProgram, empty, false)->Name("List/floor")->Apply(sizes);

} // namespace
