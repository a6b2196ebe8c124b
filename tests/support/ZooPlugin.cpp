// A plug-in that is wrong in one way, named by the environment variable VYKEL_ZOO_FAULT; right without it. It
// has two devices: one with a number and an alias, kept in the file VYKEL_ZOO_STATE, and one with neither.

#include "vykel/PluginEntryPoints.h"
#include "vykel/StatusCodes.h"
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>
#if !defined(_WIN32)
#include <csignal>
#include <unistd.h>
#endif

namespace {

using vykel::StatusBlock;
using vykel::StatusCode;

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

const std::string fault = variable("VYKEL_ZOO_FAULT");
int initialisations = 0;

void crash() {
    volatile int* volatile nowhere = nullptr; // the compiler must not know
    *nowhere = 0;
}

struct UnloadCrash {
    ~UnloadCrash() {
        if (fault == "crashes-unloading")
            crash();
    }
} const unloadCrash;
std::thread::id firstThread;

bool has(const char* name) {
    return fault == name;
}

void storeError(StatusBlock* status, StatusCode code) {
    if (has("keeps-warnings") && status->code > 0)
        return;
    if (status->code >= 0 || has("replaces-errors"))
        status->code = vykel::toInteger(code);
    if (has("fills-small-blocks"))
        std::strcpy(status->component, "zoo");
}

/// What outlives the process: number and alias of the first device.
struct State {
    std::uint32_t number = 7;
    std::string alias;

    static State load() {
        State state;
        std::ifstream file(variable("VYKEL_ZOO_STATE"));
        file >> state.number >> std::ws;
        std::getline(file, state.alias);
        return state;
    }
    void save() const { std::ofstream(variable("VYKEL_ZOO_STATE")) << number << '\n' << alias << '\n'; }
};

class Device final : public vykel::IDevice {
public:
    std::size_t index = 0;

    std::int32_t getVersion() override { return 2; }
    const char* getPersistentToken(std::uint32_t format) override {
        static int calls = 0;
        static char shared[32];
        static const auto born = std::chrono::system_clock::now().time_since_epoch().count();
        if (has("null-token") && format == 2)
            return nullptr;
        if (has("latin-1-token"))
            return "Ger\xE4t";
        token = std::string("zoo/device ") +
                std::to_string(has("changing-token") ? ++calls : static_cast<int>(index));
        if (has("process-token"))
            token += std::to_string(born);
        if (!has("one-buffer"))
            return token.c_str();
        std::snprintf(shared, sizeof shared, "%s", token.c_str());
        return shared;
    }
    std::uint32_t getSortKey() override { return 0; }
    void setNumber(std::uint32_t number, StatusBlock* status) override {
        if (has("refuses-numbers"))
            return storeError(status, StatusCode::GeneralFault);
        if (index != 0)
            return; // this one never has a number
        kept.number = number;
        if (!has("forgets-numbers"))
            change([&](State& state) { state.number = number; });
        if (has("crashes-numbering") && number != 7)
            std::abort();
#if !defined(_WIN32)
        if (has("interrupts") && number != 7)
            kill(getppid(), SIGINT);
#endif
    }
    std::uint32_t getNumber() override {
        if (index != 0)
            return vykel::noDeviceNumber;
        return has("forgets-numbers") ? kept.number : State::load().number;
    }
    const char* getAlias() override {
        if (index != 0)
            return nullptr;
        if (!has("caches-aliases"))
            own.alias = State::load().alias;
        return own.alias.c_str();
    }
    void setAlias(const char* alias, std::int32_t, std::int32_t, StatusBlock*) override {
        own.alias = alias;
        change([&](State& state) { state.alias = has("cuts-aliases") ? own.alias.substr(0, 3) : own.alias; });
    }

private:
    template <class Edit>
    static void change(Edit&& edit) {
        State state = State::load();
        edit(state);
        state.save();
    }

    std::string token;
    State own = State::load();
    static State kept; // by this process
};

State Device::kept = State::load();

class List final : public vykel::IDeviceList {
public:
    List() : shown(has("full-from-the-start") ? 2 : 0) {
        for (std::size_t i = 0; i < devices.size(); ++i)
            devices[i].index = i;
    }
    std::int32_t getVersion() override {
        if (has("throws"))
            throw std::logic_error("zoo");
        return 0;
    }
    bool isStale() override {
        if (has("slow-stale"))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return shown == 0 || has("always-stale");
    }
    void refresh(StatusBlock* status) override {
        if (has("crashes"))
            crash();
#if !defined(_WIN32)
        if (has("starts-process") || has("hangs-by-name")) {
            const pid_t started = has("starts-process") ? fork() : getpid();
            if (started == 0 && close(STDOUT_FILENO) == 0)
                execlp("sleep", "sleep", "100", nullptr);
            std::ofstream(variable("VYKEL_ZOO_STATE")) << started;
        }
#endif
        if (has("hangs") || has("hangs-by-name"))
            std::this_thread::sleep_for(std::chrono::minutes(1));
        while (has("floods"))
            std::puts("a line of no end of lines");
        if (has("exits")) {
            std::puts("{\"calling\":5}\n{\"outcome\":\"passed\"}"); // it may print what it likes
            std::fflush(stdout);
            std::_Exit(0);
        }
        if (has("ends-by-foreign-exception")) // as its runtime does when nobody catches it
            std::_Exit(static_cast<int>(0xE06D7363));
        if (has("throws-own-type"))
            throw State();
        static int refreshes = 0;
        if (has("fails") || has("fails-and-crashes") || (has("wears-out") && ++refreshes > 500))
            return storeError(status, StatusCode::GeneralFault);
        if (has("one-thread") && std::this_thread::get_id() != firstThread)
            return storeError(status, StatusCode::GeneralFault);
        if (has("clears-codes"))
            status->code = 0;
        shown = 2;
    }
    std::uint32_t getCount() override {
        return has("counts-down") && shown > 0 ? shown-- : shown;
    }
    vykel::IDevice* getDevice(std::uint32_t index, std::int32_t minimumVersion,
                              StatusBlock* status) override {
        if (index == 1 && (has("null-device") || has("refuses-device"))) {
            if (has("refuses-device"))
                storeError(status, StatusCode::GeneralFault);
            return nullptr;
        }
        if (index >= shown) {
            if (!has("any-index") && !has("silent-index"))
                storeError(status, StatusCode::InvalidParameter);
            return has("any-index") ? &devices[0] : nullptr;
        }
        if (minimumVersion > 2 && !has("any-device-version")) {
            storeError(status, StatusCode::VersionMismatch);
            return nullptr;
        }
        if (!has("one-object"))
            return &devices[index];
        devices[0].index = index;
        return &devices[0];
    }
    void release() override {
        static int releases = 0;
        if (has("fails-and-crashes"))
            crash();
        if (has("leaks-handles") && ++releases % 8 == 0 && // a process may have 1,024 of them
            std::fopen(variable("VYKEL_ZOO_STATE").c_str(), "r") == nullptr)
            std::abort();
        if (!has("leaks-lists") && !has("one-list"))
            delete this;
    }
    void attach(std::uint64_t token, StatusBlock* status) override {
        static std::vector<std::string> kept;
        if (has("leaks-attachments"))
            kept.emplace_back(64, 'x');
        if (!attached.insert(token).second)
            storeError(status, StatusCode::InvalidParameter);
    }
    void detach(std::uint64_t token) override {
        if (!has("stays-attached"))
            attached.erase(token);
    }

private:
    ~List() override = default;

    std::array<Device, 2> devices;
    std::uint32_t shown;
    std::set<std::uint64_t> attached;
};

} // namespace

std::int32_t vykel_initializePlugin() {
    if (has("refuses") || (has("initialises-once") && initialisations > 0))
        return vykel::toInteger(StatusCode::GeneralFault);
    ++initialisations;
    firstThread = std::this_thread::get_id();
    return 0;
}

std::int32_t vykel_getPluginInterface(std::int32_t version, vykel::IDeviceList** list) {
    if (has("no-list"))
        return vykel::toInteger(StatusCode::GeneralFault);
    if (version != 0 && !has("any-interface-version"))
        return vykel::toInteger(StatusCode::VersionMismatch);
    static List* const only = has("one-list") ? new List : nullptr;
    if (!has("null-list"))
        *list = only != nullptr ? only : new List;
    return 0;
}

#ifndef ZOO_WITHOUT_FINALIZE
std::int32_t vykel_finalizePlugin() {
    if (!has("initialises-once"))
        --initialisations;
    if (has("tells-its-end"))
        std::ofstream(variable("VYKEL_ZOO_STATE")) << 1 << '\n';
    return 0;
}

// It can also stand in for the library itself.
VYKEL_PLUGIN_EXPORT std::int32_t vykeldevenum_initialize() {
    return vykel_initializePlugin();
}

VYKEL_PLUGIN_EXPORT std::int32_t vykeldevenum_getAllKelDevices(std::int32_t version,
                                                               vykel::IDeviceList** list) {
    return vykel_getPluginInterface(version, list);
}

VYKEL_PLUGIN_EXPORT std::int32_t vykeldevenum_finalize() {
    return vykel_finalizePlugin();
}
#endif
