#ifndef TESTS_FAKEPLUGINS_H
#define TESTS_FAKEPLUGINS_H

#include "vykel/IDevice.h"
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vykeltest {

/// What a call of a fake plug-in does, if nothing ordinary. A negative value is the code that the call
/// reports.
enum Answer : std::int32_t {
    Ordinary,
    Yes,  ///< isStale: true; entry points: a warning
    Null, ///< getDevice, getInterface: success with null
    ThrowBadAlloc,
    ThrowInvalidArgument,
    ThrowBadCast,
    ThrowSystemError,
    ThrowLogicError,
    ThrowOwnType,
    ThrowLibraryError ///< the library's own exception: ConfigurationFault, raised at plugin.cpp:7
};

struct FakeDevice {
    std::uint32_t number = vykel::noDeviceNumber;
    std::uint32_t sortKey = 0;
    std::int32_t version = 0;
    const char* alias = nullptr; ///< null: it takes none
};

/// What a fake plug-in asks the test. A plug-in's name is the name of its file without extension.
struct FakeHost {
    /// The plug-ins find this object by its address in this variable.
    static constexpr const char* environmentVariable = "VYKEL_TEST_FAKE_PLUGINS";
    /// Answers each call of a plug-in; argument -1: the call has none.
    virtual Answer call(const char* plugin, const char* operation, std::int64_t argument) = 0;
    /// The devices that a plug-in sees.
    virtual std::vector<FakeDevice>& devices(const char* plugin) = 0;

protected:
    ~FakeHost() = default;
};

/// The test's side of all fake plug-ins in its process: what they see, what they do, what they were asked.
class FakePlugins final : FakeHost {
public:
    FakePlugins();

    /// By plug-in, what it sees at its refresh.
    std::map<std::string, std::vector<FakeDevice>> devicesOf;
    /// By call, for example "a.refresh", "a.getDevice(2)", or "a.getDevice" for every argument. Other calls
    /// are ordinary.
    std::map<std::string, std::int32_t> answers;
    /// By call, without its argument, what the plug-in does in it first, once.
    std::map<std::string, std::function<void()>> actions;
    bool logging = true;

    /// The calls since the last time, in order, separated by blanks; all of them, or those of some
    /// operations.
    std::string takeLog(const std::vector<std::string>& operations = {});

private:
    Answer call(const char* plugin, const char* operation, std::int64_t argument) override;
    std::vector<FakeDevice>& devices(const char* plugin) override { return devicesOf[plugin]; }

    std::vector<std::pair<std::string, std::string>> log; // operation and text
};

} // namespace vykeltest

#endif
