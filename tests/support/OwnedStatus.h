#ifndef TESTS_OWNEDSTATUS_H
#define TESTS_OWNEDSTATUS_H

#include "errors/Status.h"

namespace vykeltest {

/// A record that is released at the end of its life.
struct OwnedStatus : vyerr::Status {
    explicit OwnedStatus(std::int32_t initialCode = 0) {
        initStatus(this);
        code = initialCode;
    }
    ~OwnedStatus() { releaseStatus(this); }
};

} // namespace vykeltest

#endif
