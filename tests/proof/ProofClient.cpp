// A client that calls the library only through its exports. scripts/prove runs it, and says what must come
// out.
#include "support/TestFiles.h"
#include "vykel/vykeldevenum.h"
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>
#include <windows.h>
#ifndef _WIN32
#include <csignal>
#include <malloc.h>
#ifdef __SANITIZE_ADDRESS__
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // the compiler may lack its header
#endif
#endif

namespace {

using namespace vykeltest;
using std::chrono::microseconds;
using Arguments = std::vector<std::string>;

/// One life of a client. Returns its first error; calls `look` with the refreshed list.
template <class Look>
std::int32_t live(Look look) {
    if (const std::int32_t code = vykeldevenum_initialize(); code < 0)
        return code;
    vykel::IDeviceList* list = nullptr;
    std::int32_t result = vykeldevenum_getAllKelDevices(0, &list);
    if (result >= 0) {
        vykel::StatusBlock status = vykel::makeStatusBlock();
        list->refresh(&status);
        look(*list, status);
        result = status.code;
        list->release();
    }
    const std::int32_t code = vykeldevenum_finalize();
    return result < 0 ? result : code;
}

[[noreturn]] void killThisProcess() {
#ifdef _WIN32
    TerminateProcess(GetCurrentProcess(), 9);
#else
    std::raise(SIGKILL);
#endif
    std::abort(); // not reached
}

/// life [MICROSECONDS]: prints what a client sees; is killed so long after its start.
int life(const Arguments& arguments) {
    if (!arguments.empty())
        std::thread([after = microseconds(std::stol(arguments[0]))] {
            std::this_thread::sleep_for(after);
            killThisProcess();
        }).detach();
    const auto begin = std::chrono::steady_clock::now();
    const std::int32_t code = live([](vykel::IDeviceList& list, vykel::StatusBlock& status) {
        std::printf("refresh %d %s:%u\n", static_cast<int>(status.code), status.file, status.line);
        for (std::uint32_t i = 0; i < list.getCount(); ++i) {
            vykel::IDevice* const device = list.getDevice(i, 0, &status);
            const char* const alias = device->getAlias();
            std::printf("%d %u %u %s %s\n", static_cast<int>(device->getVersion()), device->getSortKey(),
                        device->getNumber(), device->getPersistentToken(1), alias != nullptr ? alias : "-");
        }
    });
    std::printf("code %d\n", static_cast<int>(code));
    std::fprintf(stderr, "%.0f\n",
                 std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count());
    return 0;
}

/// The bytes that this process has allocated, and the number of its open handles.
void printUse() {
#ifdef _WIN32
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count; ++i)
        for (PROCESS_HEAP_ENTRY entry = {}; HeapWalk(heaps[i], &entry) != 0;)
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
#else
    const fs::directory_iterator open("/proc/self/fd");
    const auto handles = std::distance(begin(open), end(open));
#ifdef __SANITIZE_ADDRESS__
    const std::size_t bytes = __sanitizer_get_current_allocated_bytes();
#else
    const std::size_t bytes = mallinfo2().uordblks;
#endif
#endif
    std::printf("%zu %ld\n", bytes, static_cast<long>(handles));
}

/// lives COUNT [LIBRARY...]: so many lives; or each library is only loaded and unloaded as often. Prints the
/// number of devices, and what is in use after a tenth and at the end.
int lives(const Arguments& arguments) {
    const int count = std::stoi(arguments[0]);
    std::setvbuf(stdout, nullptr, _IONBF, 0); // its buffer would count
    unsigned long devices = 0;
    for (int i = 1; i <= count; ++i) {
        for (std::size_t each = 1; each < arguments.size(); ++each) {
            const auto path = fs::u8path(arguments[each]).string<WCHAR>();
            if (FreeLibrary(LoadLibraryExW(path.c_str(), nullptr, 0)) == 0)
                return 1;
        }
        if (arguments.size() == 1 &&
            live([&](vykel::IDeviceList& list, vykel::StatusBlock&) { devices += list.getCount(); }) != 0)
            return 1;
        if (i == count / 10 || i == count)
            printUse();
    }
    std::printf("%lu\n", devices);
    return 0;
}

/// threads THREADS COUNT: so many lives in each thread. Prints the number of devices they saw.
int threads(const Arguments& arguments) {
    std::atomic<unsigned long> devices{0}, failures{0};
    std::vector<std::thread> running;
    for (int i = std::stoi(arguments[0]); i > 0; --i)
        running.emplace_back([&] {
            for (int left = std::stoi(arguments[1]); left > 0; --left)
                if (live([&](vykel::IDeviceList& list, vykel::StatusBlock&) {
                        devices += list.getCount();
                    }) != 0)
                    ++failures;
        });
    for (std::thread& each : running)
        each.join();
    std::printf("%lu %lu\n", devices.load(), failures.load());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string name = argc > 1 ? argv[1] : "";
    const Arguments rest(argv + (argc > 1 ? 2 : argc), argv + argc);
    return name == "life"      ? life(rest)
           : name == "lives"   ? lives(rest)
           : name == "threads" ? threads(rest)
                               : 2;
}
