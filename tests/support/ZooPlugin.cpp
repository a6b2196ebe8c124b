// A plug-in that is wrong in the ways that the environment variable VYKEL_ZOO_FAULT names (one, or two with a
// comma between them); right without it. It has two devices: one with a number and an alias, kept in the file
// VYKEL_ZOO_STATE, and one with neither.

#include "vykel/PluginEntryPoints.h"
#include "vykel/StatusCodes.h"
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
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

const std::string faults = variable("VYKEL_ZOO_FAULT");
const std::string fault = faults.substr(0, faults.find(','));
const std::string otherFault = faults.substr(faults.find(',') + 1);

bool has(const char* name) {
    return fault == name || otherFault == name;
}

int initialised = 0;    // now
int initialisedAll = 0; // since the library was loaded
int listsMade = 0;
std::thread::id firstThread;

void crashIf(bool wanted) {
    volatile int* volatile nowhere = nullptr; // the compiler must not know
    if (wanted)
        *nowhere = 0;
}

const struct AtUnload {
    ~AtUnload() { crashIf(has("crashes-unloading")); }
} atUnload;

void fail(StatusBlock* status, StatusCode code) {
    if (has("keeps-warnings") && status->code > 0)
        return;
    if (status->code >= 0 || has("replaces-errors"))
        status->code = vykel::toInteger(code);
    if (has("fills-small-blocks"))
        reinterpret_cast<char*>(status)[207] = 'z'; // of 208 bytes that it might have
}

/// What outlives the process: number and alias of the first device.
struct State {
    State() {
        std::ifstream file(variable("VYKEL_ZOO_STATE"));
        file >> number >> std::ws;
        std::getline(file, alias);
    }
    void save() const { std::ofstream(variable("VYKEL_ZOO_STATE")) << number << '\n' << alias << '\n'; }

    std::uint32_t number = 7;
    std::string alias;
};

State remembered; // by this process

class Device final : public vykel::IDevice {
public:
    std::size_t index = 0;
    int refreshes = 0; // of its list

    std::int32_t getVersion() override { return 2; }
    const char* getPersistentToken(std::uint32_t format) override {
        static int calls = 0;
        static char shared[32];
        static const auto born = std::chrono::system_clock::now().time_since_epoch().count();
        if (has("null-token") && format == 2)
            return nullptr;
        token = has("latin-1-token") ? "<Ger\xE4t" : "zoo/device ";
        token +=
            std::to_string(has("one-token") ? 0 : index) + (has("process-token") ? std::to_string(born) : "");
        if (has("changing-token") || has("refresh-token"))
            token += "/" + std::to_string(has("changing-token") ? ++calls : refreshes);
        std::snprintf(shared, sizeof shared, "%s", token.c_str());
        return has("one-buffer") ? shared : token.c_str();
    }
    std::uint32_t getSortKey() override {
        return has("counts-lists") ? static_cast<std::uint32_t>(listsMade) : 0;
    }
    void setNumber(std::uint32_t number, StatusBlock* status) override {
        if (has("refuses-numbers"))
            return fail(status, StatusCode::GeneralFault);
        if (index != 0)
            return; // this one never has a number
        remembered.number = number;
        State state;
        state.number = number;
        if (!has("forgets-numbers"))
            state.save();
        if (has("crashes-numbering") && number != 7)
            std::abort();
#if !defined(_WIN32)
        if (has("interrupts") && number != 7)
            kill(getppid(), SIGINT);
#endif
    }
    std::uint32_t getNumber() override {
        if (index != 0 && !has("one-token"))
            return vykel::noDeviceNumber;
        return has("forgets-numbers") ? remembered.number : State().number;
    }
    const char* getAlias() override {
        if (index != 0)
            return nullptr;
        if (!has("caches-aliases"))
            own.alias = State().alias;
        return own.alias.c_str();
    }
    void setAlias(const char* alias, std::int32_t, std::int32_t, StatusBlock*) override {
        own = State();
        own.alias = std::string(alias).substr(0, has("cuts-aliases") ? 3 : std::string::npos);
        own.save();
    }

private:
    std::string token;
    State own;
};

class List final : public vykel::IDeviceList {
public:
    List() {
        ++listsMade;
        devices[1].index = 1;
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
        static int refreshes = 0;
        crashIf(has("crashes"));
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
            for (std::size_t length = 0; length < 40; ++length) // it may print what it likes
                std::puts((std::string(length, 'x') + R"({"outcome":"passed"})").c_str());
            std::fflush(stdout);
            std::_Exit(0);
        }
        if (has("ends-by-foreign-exception")) // as its runtime does when nobody catches it
            std::_Exit(static_cast<int>(0xE06D7363));
        if (has("throws-own-type"))
            throw State();
        if (has("fails") || has("fails-and-crashes") || (has("wears-out") && ++refreshes > 500) ||
            (has("one-thread") && std::this_thread::get_id() != firstThread))
            return fail(status, StatusCode::GeneralFault);
        if (has("clears-codes"))
            status->code = 0;
        for (Device& device : devices)
            ++device.refreshes;
        shown = 2;
    }
    std::uint32_t getCount() override {
        return has("counts-down") && shown > 0 ? shown-- : shown;
    }
    vykel::IDevice* getDevice(std::uint32_t index, std::int32_t minimumVersion,
                              StatusBlock* status) override {
        if (index == 1 && has("refuses-device"))
            fail(status, StatusCode::GeneralFault);
        if (index == 1 && (has("refuses-device") || has("null-device")))
            return nullptr;
        if (index >= shown) {
            if (has("any-index") || (has("last-index") && index == 0xFFFFFFFF))
                return &devices[0];
            if (!has("silent-index"))
                fail(status, StatusCode::InvalidParameter);
            return nullptr;
        }
        if (minimumVersion > 2 && !has("any-device-version")) {
            fail(status, StatusCode::VersionMismatch);
            return nullptr;
        }
        if (!has("one-object"))
            return &devices[index];
        devices[0].index = index;
        return &devices[0];
    }
    void release() override {
        static int releases = 0;
        crashIf(has("fails-and-crashes") || (has("crashes-attached") && !attached.empty()));
        if (has("leaks-handles") && ++releases % 8 == 0 && // a process may have 1,024 of them
            std::fopen(variable("VYKEL_ZOO_STATE").c_str(), "r") == nullptr)
            std::abort();
        if (!has("leaks-lists") && !has("one-list"))
            delete this;
    }
    void attach(std::uint64_t token, StatusBlock* status) override {
        static std::vector<std::string> leaked;
        if (has("leaks-attachments"))
            leaked.emplace_back(64, 'x');
        if (!attached.insert(token).second)
            fail(status, StatusCode::InvalidParameter);
    }
    void detach(std::uint64_t token) override {
        if (!has("stays-attached"))
            attached.erase(token);
    }

private:
    ~List() override = default;

    std::array<Device, 2> devices;
    std::uint32_t shown = has("full-from-the-start") ? 2 : 0;
    std::set<std::uint64_t> attached;
};

} // namespace

std::int32_t vykel_initializePlugin() {
    ++initialisedAll;
    if (has("refuses") || initialised == 2 || (has("initialises-twice") && initialisedAll > 2))
        return vykel::toInteger(StatusCode::GeneralFault);
    ++initialised;
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
    --initialised;
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
