#ifndef TESTS_FAKEHOST_H
#define TESTS_FAKEHOST_H

#include "vykel/IDevice.h"
#include <cstdint>

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
};

/// The test's side of the fake plug-ins in its process. They find it by the address in this environment
/// variable. A plug-in's name is the name of its file without extension.
class FakeHost {
public:
    static constexpr const char* environmentVariable = "VYKEL_TEST_FAKE_HOST";

    /// Answers each call of a plug-in; argument -1: the call has none.
    virtual Answer call(const char* plugin, const char* operation, std::int64_t argument) = 0;
    /// The devices that a plug-in sees at its refresh.
    virtual FakeDevice* devices(const char* plugin, std::uint32_t& count) = 0;

protected:
    ~FakeHost() = default;
};

} // namespace vykeltest

#endif
