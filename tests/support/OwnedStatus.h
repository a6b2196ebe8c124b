#ifndef TESTS_OWNEDSTATUS_H
#define TESTS_OWNEDSTATUS_H

#include "errors/Status.h"
#include "vykel/StatusCodes.h"
#include <string>

namespace vykeltest {

/// A record that is released at the end of its life.
struct OwnedStatus : vyerr::Status {
    explicit OwnedStatus(std::int32_t initialCode = 0) {
        initStatus(this);
        code = initialCode;
    }
    ~OwnedStatus() { releaseStatus(this); }
};

/// The code's number as text.
inline std::string numberOf(vykel::StatusCode code) {
    return std::to_string(vykel::toInteger(code));
}

} // namespace vykeltest

#endif
