// The cost of numbering devices, compared with a floor: what every way of numbering must do. That is the
// virtual calls of the devices, setNumber in the order of the keys, and one sort of the keys that wait.
#include "DeviceNumbering.h"
#include "errors/StatusBlocks.h"
#include "ThreadTime.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace {

class BenchDevice final : public vykel::IDevice {
public:
    explicit BenchDevice(std::uint32_t key) : sortKey(key) {}

    std::int32_t getVersion() override { return 0; }
    const char* getPersistentToken(std::uint32_t) override { return ""; }
    std::uint32_t getSortKey() override { return sortKey; }
    void setNumber(std::uint32_t value, vykel::StatusBlock*) override { number = value; }
    std::uint32_t getNumber() override { return number; }
    const char* getAlias() override { return nullptr; }
    void setAlias(const char*, std::int32_t, std::int32_t, vykel::StatusBlock*) override {}

    std::uint32_t sortKey;
    std::uint32_t number = vykel::noDeviceNumber;
};

/// Devices with random keys. Of every `oneInNumbered` devices one has a number already; 0 means that none
/// has.
struct Machine {
    Machine(std::size_t count, std::size_t oneInNumbered) : table(1) {
        std::mt19937 random(4711);
        for (std::size_t i = 0; i < count; ++i) {
            devices.push_back(std::make_unique<BenchDevice>(random()));
            table[0].push_back(devices.back().get());
            if (oneInNumbered == 0 || i % oneInNumbered != 0)
                waitingInKeyOrder.push_back(devices.back().get());
        }
        std::stable_sort(waitingInKeyOrder.begin(), waitingInKeyOrder.end(),
                         [](const auto* a, const auto* b) { return a->sortKey < b->sortKey; });
        reset(oneInNumbered);
    }

    void reset(std::size_t oneInNumbered) {
        for (std::size_t i = 0; i < devices.size(); ++i) {
            const bool numbered = oneInNumbered != 0 && i % oneInNumbered == 0;
            devices[i]->number = numbered ? static_cast<std::uint32_t>(2 * i) : vykel::noDeviceNumber;
        }
    }

    std::vector<std::unique_ptr<BenchDevice>> devices;
    std::vector<BenchDevice*> waitingInKeyOrder;
    vykel::DeviceTable table;
};

/// The floor: only what every way of numbering must do.
void floorPass(const Machine& machine) {
    std::vector<std::uint32_t> keys;
    keys.reserve(machine.devices.size());
    for (vykel::IDevice* const device : machine.table[0])
        if (device->getNumber() == vykel::noDeviceNumber)
            keys.push_back(device->getSortKey());
    std::sort(keys.begin(), keys.end());
    benchmark::DoNotOptimize(keys.data());
    std::uint32_t candidate = 0;
    for (vykel::IDevice* const device : machine.waitingInKeyOrder) {
        vykel::StatusBlock block;
        device->setNumber(candidate++, vyerr::initStatusBlock(&block));
    }
}

template <class Pass>
void measure(benchmark::State& state, Pass pass) {
    const auto oneInNumbered = static_cast<std::size_t>(state.range(1));
    Machine machine(static_cast<std::size_t>(state.range(0)), oneInNumbered);
    for (auto _ : state) {
        machine.reset(oneInNumbered);
        const double start = bench::threadSeconds();
        pass(machine);
        state.SetIterationTime(bench::threadSeconds() - start);
    }
}

void numbering(benchmark::State& state) {
    measure(state, [](const Machine& machine) { vykel::numberDevices(machine.table); });
}

void numberingFloor(benchmark::State& state) {
    measure(state, floorPass);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"devices", "oneInNumbered"})->UseManualTime();
    for (const int oneInNumbered : {0, 2})
        for (const int devices : {1000, 10000, 100000, 1000000})
            benchmark->Args({devices, oneInNumbered});
}

BENCHMARK(numbering)->Name("Number/vykel")->Apply(sizes);
BENCHMARK(numberingFloor)->Name("Number/floor")->Apply(sizes);

} // namespace
