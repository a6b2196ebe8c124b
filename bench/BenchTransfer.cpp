// The cost of moving aliases to their devices, compared with only reading and writing the same file.
#include "ini/IniReader.h"
#include "ini/IniWriter.h"
#include "pellumkelddk/user/AutoIniText.h"
#include "TraditionalAliasTransferManager.h"
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

class BenchDevice final : public vykel::IDevice {
public:
    explicit BenchDevice(std::uint32_t index) : number(index), token("token" + std::to_string(index)) {}

    std::int32_t getVersion() override { return 0; }
    const char* getPersistentToken(std::uint32_t) override { return token.c_str(); }
    std::uint32_t getSortKey() override { return 0; }
    void setNumber(std::uint32_t, vykel::StatusBlock*) override {}
    std::uint32_t getNumber() override { return number; }
    const char* getAlias() override { return ""; }
    void setAlias(const char*, std::int32_t, std::int32_t, vykel::StatusBlock*) override {}

private:
    std::uint32_t number;
    std::string token;
};

/// A file with one record for each device, in the opposite order of the devices. Every second record can
/// move.
struct Machine {
    Machine(std::uint32_t count, bool byToken) : table(1) {
        std::ofstream file(path);
        if (byToken)
            file << "[General]\nMajorVersion=15\nMinorVersion=0\n";
        else
            file << "[Aliases]\n";
        for (std::uint32_t i = count; i-- > 0;) {
            if (byToken) {
                file << "[Alias" << count - 1 - i << "]\nAlias=\"Alias " << i << "\"\nPersistentToken=\"token"
                     << i << "\"\nLocal=" << (i % 2 == 0 ? "True" : "False") << '\n';
            } else {
                file << "Alias " << i << "=KEL" << (i % 2 == 0 ? i : i + count) << '\n';
            }
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            devices.push_back(std::make_unique<BenchDevice>(i));
            table[0].push_back(devices.back().get());
        }
    }
    ~Machine() {
        std::remove(path.c_str());
        std::remove(saved.c_str());
    }

    std::string path =
        (std::filesystem::temp_directory_path() / ("vykel-bench-transfer-" + std::to_string(getpid())))
            .string();
    std::string saved = path + ".saved";
    std::vector<std::unique_ptr<BenchDevice>> devices;
    vykel::DeviceTable table;
};

void measure(benchmark::State& state, bool moves) {
    Machine machine(static_cast<std::uint32_t>(state.range(0)), state.range(1) != 0);
    for (auto _ : state) {
        const vykel::AutoIniText text;
        if (vyini::loadIniFile(text.document(), machine.path.c_str()) != 0)
            state.SkipWithError("load");
        if (moves && !vykel::TraditionalAliasTransferManager::transfer(text.document(), machine.table))
            state.SkipWithError("nothing moved");
        text.document()->writeFlags = 0;
        if (vyini::saveIniFile(text.document(), machine.saved.c_str()) != 0)
            state.SkipWithError("save");
    }
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"devices", "byToken"})->ArgsProduct({{1000, 100000}, {0, 1}});
}

BENCHMARK_CAPTURE(measure, transfer, true)->Name("Transfer/vykel")->Apply(sizes);
BENCHMARK_CAPTURE(measure, fileOnly, false)->Name("Transfer/floor")->Apply(sizes);

} // namespace
