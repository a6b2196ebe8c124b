// Numbers and legacy aliases among rival processes, and under kills: no number is given twice, no alias is
// lost or handed over twice, and nobody ever sees half a file.
#include "DeviceNumbering.h"
#include "support/TransferMachine.h"
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <thread>

namespace {

using namespace vykeltest;
using std::chrono::milliseconds;

constexpr std::uint32_t deviceCount = 64;
constexpr std::uint32_t slices = 8;
constexpr std::uint32_t killedEach = 16; ///< one process is killed in so many numbers

using Lines = std::vector<std::pair<std::uint32_t, std::string>>;

/// What all processes gave: a number and a word in each line of the file, sorted.
Lines linesOf(const fs::path& file) {
    Lines lines;
    std::ifstream text(file);
    std::uint32_t number = 0;
    for (std::string word; text >> number >> word;)
        lines.emplace_back(number, word);
    std::sort(lines.begin(), lines.end());
    return lines;
}

struct SharedMachine : TransferMachine {
    /// scripts/prove runs more processes, and with a file that takes time to be saved.
    const bool proof = std::getenv("VYKEL_PROOF") != nullptr;
    const fs::path numbers = machine.folder() / "numbers"; ///< the number and the device's token
    const fs::path aliases = machine.folder() / "aliases"; ///< the device's number and its alias
    milliseconds pause{0};                                 ///< of each device, before it takes something
    std::string before = "[General]\nMajorVersion=13\n[Aliases]\n";
    const std::string end = "[End]\nx=" + std::string(proof ? 1000000 : 1, 'x') + "\nwhole=1\n";
    const std::string after = saved("[General]\nMajorVersion=13\n" + end);
    Lines eachOnce;

    SharedMachine() {
        for (std::uint32_t i = 0; i < deviceCount; ++i) {
            eachOnce.emplace_back(i, "Alias" + std::to_string(i));
            before += eachOnce.back().second + "=KEL" + std::to_string(i) + "\n";
        }
        before += end;
    }

    void reset() const {
        fs::remove(aliases);
        writeFile(iniFile, before);
    }

    void give(const fs::path& file, const std::string& line) const {
        std::this_thread::sleep_for(pause); // time for a rival
        std::ofstream(file, std::ios::binary | std::ios::app) << line + "\n" << std::flush;
    }

    std::int32_t transfer(std::uint32_t modulus = 1, std::uint32_t remainder = 0) const;
};

/// A device whose alias outlives the process. What others gave is read when the first of a transfer's devices
/// is asked: then the transfer holds its lock.
struct NamedDevice final : LegacyDevice {
    NamedDevice(const SharedMachine& owner, Lines& read, std::uint32_t place)
        : LegacyDevice(place, ""), shared(owner), lines(read) {}
    const char* getAlias() override {
        if (lines.empty())
            lines = linesOf(shared.aliases);
        for (const auto& [device, given] : lines)
            if (device == number)
                alias = given;
        return alias.c_str();
    }
    void setAlias(const char* text, std::int32_t, std::int32_t, vykel::StatusBlock*) override {
        alias = text;
        shared.give(shared.aliases, std::to_string(number) + " " + text);
    }
    const SharedMachine& shared;
    Lines& lines;
};

/// A device whose number outlives the process. Each process numbers them in an order of its own, so that two
/// that overlap would give a number twice.
struct NumberedDevice final : LegacyDevice {
    NumberedDevice(const SharedMachine& owner, std::uint32_t place)
        : LegacyDevice(place, "", std::to_string(place)), shared(owner) {}
    std::uint32_t getSortKey() override { return (number + GetCurrentProcessId()) * 7 % deviceCount; }
    std::uint32_t getNumber() override {
        for (const auto& [given, device] : linesOf(shared.numbers))
            if (device == token)
                return given;
        return vykel::noDeviceNumber;
    }
    void setNumber(std::uint32_t given, vykel::StatusBlock*) override {
        shared.give(shared.numbers, std::to_string(given) + " " + token);
        if (shared.proof && given % killedEach == 2)
            TerminateProcess(GetCurrentProcess(), 1); // while it holds the lock
    }
    const SharedMachine& shared;
};

/// One transfer with the devices whose number leaves that remainder, or with all of them.
std::int32_t SharedMachine::transfer(std::uint32_t modulus, std::uint32_t remainder) const {
    Lines read;
    std::list<NamedDevice> devices;
    for (std::uint32_t i = remainder; i < deviceCount; i += modulus)
        devices.emplace_back(*this, read, i);
    return vykeltest::transfer(tableOf(devices)).code;
}

int runNumberer() {
    SharedMachine shared;
    shared.pause = milliseconds(1);
    std::list<NumberedDevice> devices;
    for (std::uint32_t i = 0; i < deviceCount; ++i)
        devices.emplace_back(shared, i);
    vykel::assignDeviceNumbers(tableOf(devices));
    return 0;
}

/// Transfers to every slice of the devices, beginning at one of this process's own. A reader may have the
/// file open, which refuses the replace on Windows: then it tries again, as a client does.
int runRival() {
    SharedMachine shared;
    shared.pause = milliseconds(1);
    for (std::uint32_t i = 0; i < slices; ++i) {
        std::int32_t code = configurationFault;
        for (int tries = 0; code == configurationFault && tries < 1000; ++tries) {
            code = shared.transfer(slices, (GetCurrentProcessId() / 4 + i) % slices);
            std::this_thread::sleep_for(milliseconds(code == success ? 0 : 1));
        }
        if (code != success)
            return 1;
    }
    return 0;
}

/// What this program does as a child process, on the same machine.
const std::map<std::string, int (*)()> roles = {
    {"numberer", runNumberer}, {"rival", runRival}, {"transferOnce", [] {
                                                         return SharedMachine().transfer() == success ? 0 : 1;
                                                     }}};

using Children = std::vector<std::future<ProgramResult>>;

/// Starts children in that role, before this process opens a file that they would keep open.
Children startRoles(const std::string& name, std::size_t count = slices) {
    Children children(count);
    for (auto& child : children)
        child = startProgram("transfer_tests", name);
    return children;
}

TEST(TransferProcesses, RivalsGiveEachAliasOnceAndReadersSeeWholeFiles) {
    const SharedMachine shared;
    shared.reset();
    Children rivals = startRoles("rival");
    std::string last = shared.before;
    int changes = 0; // that the reader saw
    for (auto& child : rivals) {
        while (child.wait_for(milliseconds(3)) != std::future_status::ready) {
            std::ifstream file(shared.iniFile, std::ios::binary); // on Windows sometimes not opened
            const std::string text{std::istreambuf_iterator<char>(file), {}};
            EXPECT_EQ(text.find("[General]") == 0 && text.find("whole=1") != std::string::npos,
                      file.is_open())
                << text.substr(0, 1000);
            const std::string left = text.substr(0, text.find("[End]"));
            for (const auto& [number, alias] : shared.eachOnce)
                EXPECT_TRUE(left.find('\n' + alias + '=') == left.npos ||
                            last.find('\n' + alias + '=') != last.npos)
                    << alias << " came back";
            changes += file.is_open() && left != last;
            last = file.is_open() ? left : last;
        }
        EXPECT_EQ(child.get().exitCode, 0);
    }
    EXPECT_GT(changes, 1); // the first is that it saw the file at all
    EXPECT_EQ(readFile(shared.iniFile), shared.after);
    EXPECT_EQ(linesOf(shared.aliases), shared.eachOnce);
}

TEST(TransferProcesses, RivalsGiveEachNumberOnce) {
    const SharedMachine shared;
    Children numberers = startRoles("numberer", shared.proof ? 2 * slices : slices);
    const auto killed = std::count_if(numberers.begin(), numberers.end(),
                                      [](auto& child) { return child.get().exitCode != 0; });
    EXPECT_EQ(killed, shared.proof ? std::ptrdiff_t{deviceCount / killedEach} : 0);
    std::printf("killed: %d\n", static_cast<int>(killed));
    const Lines numbers = linesOf(shared.numbers);
    EXPECT_EQ(numbers.size(), deviceCount);
    for (std::uint32_t i = 0; i < numbers.size(); ++i)
        EXPECT_EQ(numbers[i].first, i);
}

#if !defined(_WIN32)
// Before every single call of the system that a transfer makes; scripts/prove kills at any moment.
TEST(TransferProcesses, KilledAtEveryStepLosesNothing) {
    const SharedMachine shared;
    int step = 0;
    for (int exitCode = -1; exitCode != 0;) {
        SCOPED_TRACE(++step);
        shared.reset();
        setEnvironment("WINHOST_FAULT", "Any:" + std::to_string(step) + ":kill");
        exitCode = startRoles("transferOnce", 1).front().get().exitCode;
        setEnvironment("WINHOST_FAULT", "");
        const std::string text = readFile(shared.iniFile);
        ASSERT_TRUE(text == shared.before || text == shared.after) << text;
        ASSERT_EQ(shared.transfer(), success);
        ASSERT_EQ(readFile(shared.iniFile), shared.after);
        ASSERT_FALSE(fs::exists(shared.temporaryFile));
        ASSERT_EQ(linesOf(shared.aliases), shared.eachOnce);
    }
    EXPECT_GT(step, 20);
}
#endif

} // namespace

int main(int argc, char** argv) {
    if (const auto role = roles.find(argv[argc - 1]); role != roles.end())
        return role->second();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
