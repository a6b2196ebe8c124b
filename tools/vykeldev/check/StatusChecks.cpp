#include "check/StatusChecks.h"

#include "check/Session.h"
#include <limits>

namespace vykeldev::check {
namespace {

/// An error may replace a warning; a call that is `refused` must do so.
void mustKeepCode(const char* operation, std::int32_t before, std::int32_t after, bool refused = false) {
    const bool warned = before > 0;
    if ((warned && after < 0) || (after == before && !(warned && refused)))
        return;
    throw Broken(operation, " found the code ", before, " and left ", after);
}

} // namespace

void checkFirstErrorWins(const Subject& subject) {
    const Session session(subject);
    for (const std::int32_t preset : {-99, 99}) { // an error, a warning
        mustKeepCode("refresh", preset, session.list.refresh(preset));
        refresh(session.list);
        const std::uint32_t count = session.list.getCount();
        mustKeepCode("getDevice beyond the count", preset, session.list.getDevice(count, 0, preset).code,
                     true);
        if (count > 0)
            mustKeepCode("getDevice", preset, session.list.getDevice(0, 0, preset).code);
    }
}

// Every call of any rule is watched. These calls are the most likely to fill a block.
void checkStatusGuard(const Subject& subject) {
    const Session session(subject);
    const std::uint32_t count = session.list.getCount();
    session.list.getDevice(count);
    session.list.getDevice(0, std::numeric_limits<std::int32_t>::max());
    if (session.list.attach(1) >= 0)
        session.list.detach(1);
}

// The same. These are the operations that no other rule calls, and odd arguments.
void checkNoException(const Subject& subject) {
    try {
        const Session session(subject);
        session.list.getVersion();
        session.list.getDevice(0, std::numeric_limits<std::int32_t>::min());
        session.list.getDevice(std::numeric_limits<std::uint32_t>::max(),
                               std::numeric_limits<std::int32_t>::max());
        lookAtDevices(session.list, [](const Device& device, std::uint32_t) {
            device.getVersion();
            device.getSortKey();
            device.getPersistentToken(1);
            device.getAlias();
            device.getNumber();
        });
    } catch (const Broken&) { // an error is not an exception
    }
}

} // namespace vykeldev::check
