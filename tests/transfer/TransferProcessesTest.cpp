// The alias transfer among rivals, and under kills: no alias is lost or handed over twice, and nobody ever
// sees half a file.
#include "support/TransferMachine.h"
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <thread>

namespace {

using namespace vykeltest;

constexpr std::uint32_t aliasCount = 64;
constexpr std::uint32_t slices = 8;

/// A device whose alias outlives the process: each one given is a line in a file for all processes.
class StoredDevice final : public LegacyDevice {
public:
    StoredDevice(std::uint32_t deviceNumber, const std::string& storedAlias, fs::path file)
        : LegacyDevice(deviceNumber, storedAlias.c_str()), store(std::move(file)) {}
    void setAlias(const char* text, std::int32_t, std::int32_t, vykel::StatusBlock*) override {
        alias = text;
        const std::string line = std::to_string(number) + " " + text + "\n";
        std::ofstream(store, std::ios::binary | std::ios::app)
            .write(line.data(), static_cast<long>(line.size()));
    }

private:
    fs::path store;
};

struct SharedMachine : TransferMachine {
    fs::path store = machine.folder() / "aliases";
    std::string before = legacyText("\n", aliasCount);
    std::string after = legacyText("\r\n", 0);

    static std::string legacyText(const char* end, std::uint32_t aliases) {
        std::ostringstream text;
        text << "[General]" << end << "MajorVersion=13" << end << (*end == '\r' ? end : "");
        if (aliases != 0)
            text << "[Aliases]" << end;
        for (std::uint32_t i = 0; i < aliases; ++i)
            text << "Alias" << i << "=KEL" << i << end;
        text << "[End]" << end << "whole=1" << end << (*end == '\r' ? end : "");
        return text.str();
    }

    void reset() const {
        fs::remove(store);
        fs::remove(temporaryFile);
        writeFile(iniFile, before);
    }

    /// What was given to whom, in order of the devices.
    std::vector<std::pair<std::uint32_t, std::string>> given() const {
        std::vector<std::pair<std::uint32_t, std::string>> lines;
        std::ifstream file(store);
        std::uint32_t number = 0;
        for (std::string alias; file >> number >> alias;)
            lines.emplace_back(number, alias);
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    void expectEachGivenOnce() const {
        const auto lines = given();
        ASSERT_EQ(lines.size(), aliasCount);
        for (std::uint32_t i = 0; i < aliasCount; ++i)
            ASSERT_EQ(lines[i], std::make_pair(i, "Alias" + std::to_string(i)));
    }

    /// One transfer with the devices whose number leaves that remainder, or with all of them.
    std::int32_t transfer(std::uint32_t modulus = 1, std::uint32_t remainder = 0) const {
        std::string aliases[aliasCount];
        for (const auto& [number, alias] : given())
            aliases[number] = alias;
        std::vector<std::unique_ptr<StoredDevice>> devices;
        for (std::uint32_t i = remainder; i < aliasCount; i += modulus)
            devices.push_back(std::make_unique<StoredDevice>(i, aliases[i], store));
        return vykeltest::transfer(tableOf(devices)).code;
    }
};

/// Every slice of the devices, beginning at one of this process's own. A reader may have the file open, which
/// refuses the replace on Windows: then the transfer is tried again, as a client does.
int rival() {
    const SharedMachine shared;
    const std::uint32_t first = processId() / 4 % slices;
    for (std::uint32_t i = 0; i < slices; ++i) {
        int tries = 1000;
        std::int32_t code = success;
        while ((code = shared.transfer(slices, (first + i) % slices)) == configurationFault && --tries > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (code != success)
            return 1;
    }
    return 0;
}
const NamedRole rivalRole("rival", rival);

int transferOnce() {
    const SharedMachine shared;
    writeFile(shared.machine.folder() / "ready", "");
    return shared.transfer() == success ? 0 : 1;
}
const NamedRole transferOnceRole("transferOnce", transferOnce);

/// Checks what a process left that was killed during a transfer.
void expectNothingLost(const SharedMachine& shared) {
    const std::string text = readFile(shared.iniFile);
    ASSERT_TRUE(text == shared.before || text == shared.after) << text;
    ASSERT_EQ(shared.transfer(), success);
    ASSERT_EQ(readFile(shared.iniFile), shared.after);
    ASSERT_FALSE(fs::exists(shared.temporaryFile));
    shared.expectEachGivenOnce();
}

TEST(TransferProcesses, RivalsHandEachAliasOverOnceAndReadersSeeWholeFiles) {
    const SharedMachine shared;
    shared.reset();
    std::vector<ChildProcess> children;
    for (std::uint32_t i = 0; i < slices; ++i)
        children.emplace_back("rival");
    std::thread ends([&] {
        for (ChildProcess& child : children)
            EXPECT_EQ(child.wait(), 0);
        writeFile(shared.machine.folder() / "ended", "");
    });
    const std::string tail = "whole=1";
    while (!fs::exists(shared.machine.folder() / "ended")) {
        const std::string text = readFile(shared.iniFile); // empty: it could not be opened just then
        if (!text.empty()) {
            EXPECT_EQ(text.compare(0, 9, "[General]"), 0) << text;
            EXPECT_NE(text.find(tail), std::string::npos) << text;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    ends.join();
    EXPECT_EQ(readFile(shared.iniFile), shared.after);
    shared.expectEachGivenOnce();
}

TEST(TransferProcesses, KilledAtAnyMomentLosesNothing) {
    const SharedMachine shared;
    const fs::path ready = shared.machine.folder() / "ready";
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> delay(0, 6000);
    for (int i = 0; i < 500; ++i) {
        SCOPED_TRACE(i);
        shared.reset();
        fs::remove(ready);
        ChildProcess child("transferOnce");
        waitFor(ready);
        std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
        child.kill();
        expectNothingLost(shared);
        if (HasFatalFailure())
            return;
    }
}

#if !defined(_WIN32)
// Before every single call of the system that a transfer makes.
TEST(TransferProcesses, KilledAtEveryStepLosesNothing) {
    const SharedMachine shared;
    int killed = 0;
    for (int step = 1;; ++step) {
        SCOPED_TRACE(step);
        shared.reset();
        setEnvironment("WINHOST_FAULT", "Any:" + std::to_string(step) + ":kill");
        ChildProcess child("transferOnce");
        setEnvironment("WINHOST_FAULT", "");
        const int status = child.wait();
        expectNothingLost(shared);
        if (HasFatalFailure() || status == 0)
            break;
        ++killed;
    }
    EXPECT_GT(killed, 20);
}
#endif

} // namespace
