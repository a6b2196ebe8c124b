// A plug-in that is wrong in the ways that the environment variable VYKEL_ZOO_FAULT names; right without it.
// No name is part of another one. It has two devices: one with a number and an alias, kept in the file
// VYKEL_ZOO_STATE, and one with neither.

#include "vykel/PluginEntryPoints.h"
#include "vykel/StatusCodes.h"
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using vykel::StatusBlock;
using vykel::StatusCode;

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

const std::string faults = variable("VYKEL_ZOO_FAULT");
const std::string stateFile = variable("VYKEL_ZOO_STATE");

bool has(const char* fault) {
    return faults.find(fault) != std::string::npos;
}

/// What would colour, ring, and turn the text of a terminal.
const std::string controls = "\x1B[31m\a\n\x7F\xC2\x9B"
                             "2J\xE2\x80\xAE\xE2\x81\xA6";

void crashIf(bool wanted) {
    if (wanted)
        __builtin_trap();
}

/// For faults that only the host's tests ask for.
void shellIf(const char* fault, const char* command) {
    crashIf(has(fault) && std::system(command) != 0);
}

std::nullptr_t fail(StatusBlock* status, StatusCode code) {
    if (has("keeps_warnings") && status->code > 0)
        return nullptr;
    if (status->code >= 0 || has("replaces_errors"))
        status->code = vykel::toInteger(code);
    if (has("fills_small_blocks"))
        reinterpret_cast<char*>(status)[207] = 'z'; // of 208 bytes that it might have
    return nullptr;
}

const struct Module {
    Module() { crashIf(has("crashes_loading")); }
    ~Module() { crashIf(has("crashes_unloading")); }
} module;

/// What outlives the process: number and alias of the first device.
struct State {
    State() { std::getline(std::ifstream(stateFile) >> number >> std::ws, alias); }
    void save() const { std::ofstream(stateFile) << number << '\n' << alias << '\n'; }

    std::uint32_t number = 7;
    std::string alias;
};

State remembered; // by this process
std::atomic<std::uint32_t> listsMade{0};

struct Device final : vykel::IDevice {
    explicit Device(std::uint32_t itsIndex) : index(itsIndex) {}

    std::int32_t getVersion() override { return has("throws_version") ? throw std::logic_error("zoo") : 2; }
    const char* getPersistentToken(std::uint32_t format) override {
        static std::atomic<unsigned> calls{0};
        static const unsigned process = std::random_device()();
        static std::atomic<int> reads{0};
        if (has("throws_controls") && (format == 1 || ++reads > 2)) // in format 2 after one reading
            throw std::runtime_error(controls);
        const unsigned part = has("token_by_call")      ? ++calls
                              : has("token_by_refresh") ? refreshes
                              : has("token_by_process") ? process
                                                        : 0;
        token = (has("latin_1_token") ? "<Ger\xE4t " : "zoo ") + (has("controls_token") ? controls : "") +
                std::to_string(part) + "/device " + std::to_string(has("one_token") ? 0 : index);
        if (has("one_buffer") && index == 0)
            this[1].token = token;
        return has("null_token") && format == 2 ? nullptr : token.c_str();
    }
    std::uint32_t getSortKey() override {
        return has("throws_key") ? throw 1 : has("counts_lists") ? listsMade.load() : 0;
    }
    void setNumber(std::uint32_t number, StatusBlock* status) override {
        if (has("refuses_numbers"))
            fail(status, StatusCode::GeneralFault);
        else if (index == 0) {
            remembered = State();
            remembered.number = number;
            if (!has("forgets_numbers"))
                remembered.save();
            crashIf(has("crashes_numbering") && number != 7);
            if (number != 7)
                shellIf("interrupts_check", "kill -INT $(awk '/^PPid/ { print $2 }' /proc/$PPID/status)");
        }
    }
    std::uint32_t getNumber() override {
        if (index != 0 && !has("one_token"))
            return vykel::noDeviceNumber;
        return has("forgets_numbers") ? remembered.number : State().number;
    }
    const char* getAlias() override {
        if (!has("caches_aliases"))
            own = State();
        return index == 0 ? own.alias.c_str() : nullptr;
    }
    void setAlias(const char* alias, std::int32_t, std::int32_t, StatusBlock*) override {
        if (has("never_the_same_alias") && alias == std::string("Pump"))
            return;
        own = State();
        own.alias = std::string(alias).substr(0, has("cuts_aliases") ? 3 : std::string::npos);
        own.save();
    }

    std::uint32_t index;
    unsigned refreshes = 0; // of its list
    std::string token;
    State own;
};

struct List final : vykel::IDeviceList {
    List() { ++listsMade; }

    std::int32_t getVersion() override {
        return has("throws_standard_type") ? throw std::logic_error("zoo") : 0;
    }
    bool isStale() override {
        if (has("slow_stale"))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return has("throws_stale") ? throw State() : shown == 0 || has("always_stale");
    }
    void refresh(StatusBlock* status) override {
        static std::atomic<int> refreshes{0}, threads{0};
        thread_local const int thread = ++threads;
        if (has("prints"))
            std::puts("{");
        crashIf(has("crashes_refreshing"));
        shellIf("starts_process", "sleep 100 >&- & echo $! >\"$VYKEL_ZOO_STATE\"");
        shellIf("tells_its_process", "echo $PPID >\"$VYKEL_ZOO_STATE\"");
        if (has("slow_refresh") || has("steady_refresh"))
            std::this_thread::sleep_for(std::chrono::milliseconds(has("slow_refresh") ? 2100 : 50));
        if (has("hangs"))
            std::this_thread::sleep_for(std::chrono::minutes(1));
        while (has("floods"))
            std::puts("a line of no end of lines");
        if (has("exits")) {
            for (std::size_t length = 0; length < 40; ++length) // it may print what it likes
                std::puts((std::string(length, 'x') + R"({"outcome":0,"done":true})").c_str());
            std::fflush(stdout);
            std::_Exit(0);
        }
        if (has("ends_by_foreign_exception")) // as its runtime does when nobody catches it
            std::_Exit(static_cast<int>(0xE06D7363));
        if (has("throws_own_type"))
            throw State();
        if (has("fails_refreshing") || (has("wears_out") && ++refreshes > 500) ||
            (has("two_threads") && thread > 2))
            return static_cast<void>(fail(status, StatusCode::GeneralFault));
        if (has("clears_codes"))
            status->code = 0;
        for (Device& device : devices)
            ++device.refreshes;
        shown = 2;
    }
    std::uint32_t getCount() override { return has("counts_down") && shown > 0 ? shown-- : shown; }
    vykel::IDevice* getDevice(std::uint32_t index, std::int32_t version, StatusBlock* status) override {
        if (index == 1 && has("refuses_device"))
            return fail(status, StatusCode::GeneralFault);
        if (index == 1 && has("null_device"))
            return nullptr;
        if (has("last_index") && index == 0xFFFFFFFF)
            return &devices[0];
        if (index >= shown)
            return has("silent_index") ? nullptr : fail(status, StatusCode::InvalidParameter);
        if (version > 2 && !has("any_device_version"))
            return fail(status, StatusCode::VersionMismatch);
        if (has("forgets_codes"))
            status->code = 0;
        if (!has("one_object"))
            return &devices[index];
        devices[0].index = index;
        return &devices[0];
    }
    void release() override {
        static std::atomic<int> releases{0};
        crashIf(has("crashes_releasing") || (has("crashes_attached") && !attached.empty()));
        crashIf(has("leaks_handles") && ++releases % 8 == 0 &&
                dup(1) < 0); // a process may have 1,024 of them
        if (!has("leaks_lists") && !has("one_list"))
            delete this;
    }
    void attach(std::uint64_t token, StatusBlock* status) override {
        static std::vector<std::string> leaked;
        if (has("leaks_attachments"))
            leaked.emplace_back(64, 'x');
        if (!attached.insert(token).second)
            fail(status, StatusCode::InvalidParameter);
    }
    void detach(std::uint64_t token) override {
        if (!has("stays_attached"))
            attached.erase(token);
    }

    Device devices[2] = {Device(0), Device(1)};
    std::uint32_t shown = has("full_from_the_start") ? 2 : 0;
    std::set<std::uint64_t> attached;
};

int initialized = 0; // now

} // namespace

std::int32_t vykel_initializePlugin() {
    static int initializedEver = 0;
    if (has("refuses_initialize") || initialized == 2 || (has("initializes_twice") && ++initializedEver > 2))
        return vykel::toInteger(StatusCode::GeneralFault);
    ++initialized;
    return 0;
}

std::int32_t vykel_getPluginInterface(std::int32_t version, vykel::IDeviceList** list) {
    if (has("makes_no_list"))
        return vykel::toInteger(StatusCode::GeneralFault);
    if (version != 0 && !has("any_interface_version"))
        return vykel::toInteger(StatusCode::VersionMismatch);
    static List* const only = has("one_list") ? new List : nullptr;
    if (!has("null_list"))
        *list = only != nullptr ? only : new List;
    return 0;
}

std::int32_t vykel_finalizePlugin() {
    --initialized;
    if (has("tells_its_end"))
        std::ofstream(stateFile) << 1 << '\n';
    return 0;
}
