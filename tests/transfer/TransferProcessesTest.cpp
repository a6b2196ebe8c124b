// Numbers and legacy aliases among rival processes, and under kills: no number is given twice, no alias is
// lost or handed over twice, and nobody ever sees half a file.
#include "DeviceNumbering.h"
#include "support/TransferMachine.h"
#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <random>
#include <thread>

namespace {

using namespace vykeltest;
using std::chrono::milliseconds;

constexpr std::uint32_t deviceCount = 64;
constexpr std::uint32_t slices = 8;

/// What all processes gave to which device, a line each.
struct Store {
    fs::path file;

    void append(std::uint32_t device, const std::string& text) const {
        const std::string line = std::to_string(device) + " " + text + "\n";
        std::ofstream(file, std::ios::binary | std::ios::app) << line << std::flush;
    }
    /// In order of the devices.
    std::vector<std::pair<std::uint32_t, std::string>> lines() const {
        std::vector<std::pair<std::uint32_t, std::string>> all;
        std::ifstream text(file);
        std::uint32_t device = 0;
        for (std::string given; text >> device >> given;)
            all.emplace_back(device, given);
        std::sort(all.begin(), all.end());
        return all;
    }
};

/// A device whose alias outlives the process.
struct NamedDevice final : LegacyDevice {
    NamedDevice(std::uint32_t deviceNumber, const std::string& deviceAlias, Store aliases)
        : LegacyDevice(deviceNumber, deviceAlias.c_str()), store(std::move(aliases)) {}
    void setAlias(const char* text, std::int32_t, std::int32_t, vykel::StatusBlock*) override {
        alias = text;
        store.append(number, text);
    }
    Store store;
};

/// A device whose number outlives the process. Each process numbers them in an order of its own, so that two
/// that overlap would give a number twice.
struct NumberedDevice final : LegacyDevice {
    NumberedDevice(std::uint32_t place, Store numbers)
        : LegacyDevice(vykel::noDeviceNumber, ""), index(place), store(std::move(numbers)) {}
    std::uint32_t getSortKey() override { return (index + GetCurrentProcessId()) * 7 % deviceCount; }
    std::uint32_t getNumber() override {
        for (const auto& [device, given] : store.lines())
            if (device == index)
                return static_cast<std::uint32_t>(std::stoul(given));
        return number;
    }
    void setNumber(std::uint32_t given, vykel::StatusBlock*) override {
        std::this_thread::sleep_for(milliseconds(1)); // time for a rival
        store.append(index, std::to_string(given));
    }
    std::uint32_t index;
    Store store;
};

struct SharedMachine : TransferMachine {
    const Store aliases{machine.folder() / "aliases"};
    const Store numbers{machine.folder() / "numbers"};
    std::string before = "[General]\nMajorVersion=13\n[Aliases]\n";
    const std::string after = saved("[General]\nMajorVersion=13\n[End]\nwhole=1\n");

    SharedMachine() {
        for (std::uint32_t i = 0; i < deviceCount; ++i)
            before += "Alias" + std::to_string(i) + "=KEL" + std::to_string(i) + "\n";
        before += "[End]\nwhole=1\n";
    }

    void reset() const {
        fs::remove(aliases.file);
        fs::remove(temporaryFile);
        writeFile(iniFile, before);
    }

    void expectEachGivenOnce() const {
        const auto lines = aliases.lines();
        ASSERT_EQ(lines.size(), deviceCount);
        for (std::uint32_t i = 0; i < deviceCount; ++i)
            ASSERT_EQ(lines[i], std::make_pair(i, "Alias" + std::to_string(i)));
    }

    /// One transfer with the devices whose number leaves that remainder, or with all of them.
    std::int32_t transfer(std::uint32_t modulus = 1, std::uint32_t remainder = 0) const {
        std::string given[deviceCount];
        for (const auto& [number, alias] : aliases.lines())
            given[number] = alias;
        std::list<NamedDevice> devices;
        for (std::uint32_t i = remainder; i < deviceCount; i += modulus)
            devices.emplace_back(i, given[i], aliases);
        return vykeltest::transfer(tableOf(devices)).code;
    }

    /// One numbering of all devices.
    void giveNumbers() const {
        std::list<NumberedDevice> devices;
        for (std::uint32_t i = 0; i < deviceCount; ++i)
            devices.emplace_back(i, numbers);
        vykel::assignDeviceNumbers(tableOf(devices));
    }
};

/// Numbers the devices, then transfers to every slice of them, beginning at one of this process's own. A
/// reader may have the file open, which refuses the replace on Windows: then it tries again, as a client
/// does.
const NamedRole rival("rival", [] {
    const SharedMachine shared;
    shared.giveNumbers();
    const std::uint32_t first = GetCurrentProcessId() / 4 % slices;
    for (std::uint32_t i = 0; i < slices; ++i) {
        std::int32_t code = configurationFault;
        for (int tries = 0; code == configurationFault && tries < 1000; ++tries) {
            code = shared.transfer(slices, (first + i) % slices);
            std::this_thread::sleep_for(milliseconds(code == success ? 0 : 1));
        }
        if (code != success)
            return 1;
    }
    return 0;
});

const NamedRole transferOnce("transferOnce", [] { return SharedMachine().transfer() == success ? 0 : 1; });

/// Is killed at any moment of a transfer.
const NamedRole victim("victim", [] {
    const SharedMachine shared;
    std::thread([] {
        std::random_device random;
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 6000));
        killThisProcess();
    }).detach();
    return static_cast<int>(shared.transfer());
});

/// Checks what a process left that was killed during a transfer.
void expectNothingLost(const SharedMachine& shared) {
    const std::string text = readFile(shared.iniFile);
    ASSERT_TRUE(text == shared.before || text == shared.after) << text;
    ASSERT_EQ(shared.transfer(), success);
    ASSERT_EQ(readFile(shared.iniFile), shared.after);
    ASSERT_FALSE(fs::exists(shared.temporaryFile));
    shared.expectEachGivenOnce();
}

TEST(TransferProcesses, RivalsGiveEachNumberAndAliasOnceAndReadersSeeWholeFiles) {
    const SharedMachine shared;
    shared.reset();
    auto rivals = startRoles("rival", slices);
    for (std::future<int>& child : rivals) {
        while (child.wait_for(milliseconds(3)) != std::future_status::ready) {
            const std::string text = readFile(shared.iniFile); // empty: it could not be opened just then
            EXPECT_EQ(text.compare(0, 9, text.empty() ? "" : "[General]"), 0) << text;
            EXPECT_EQ(text.empty(), text.find("whole=1") == std::string::npos) << text;
        }
        EXPECT_EQ(child.get(), 0);
    }
    EXPECT_EQ(readFile(shared.iniFile), shared.after);
    shared.expectEachGivenOnce();
    std::vector<std::uint32_t> numbers;
    for (const auto& [device, number] : shared.numbers.lines())
        numbers.push_back(static_cast<std::uint32_t>(std::stoul(number)));
    std::sort(numbers.begin(), numbers.end());
    ASSERT_EQ(numbers.size(), deviceCount);
    for (std::uint32_t i = 0; i < deviceCount; ++i)
        EXPECT_EQ(numbers[i], i);
}

TEST(TransferProcesses, KilledAtAnyMomentLosesNothing) {
    const SharedMachine shared;
    for (int i = 0; i < 500 && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        shared.reset();
        runRole("victim");
        expectNothingLost(shared);
    }
}

#if !defined(_WIN32)
// Before every single call of the system that a transfer makes.
TEST(TransferProcesses, KilledAtEveryStepLosesNothing) {
    const SharedMachine shared;
    int step = 0;
    for (int exitCode = -1; exitCode != 0 && !HasFatalFailure();) {
        SCOPED_TRACE(++step);
        shared.reset();
        setEnvironment("WINHOST_FAULT", "Any:" + std::to_string(step) + ":kill");
        exitCode = runRole("transferOnce");
        setEnvironment("WINHOST_FAULT", "");
        expectNothingLost(shared);
    }
    EXPECT_GT(step, 20);
}
#endif

} // namespace
