#ifndef ERRORS_CATCHLADDER_H
#define ERRORS_CATCHLADDER_H

#include "errors/RaiseSite.h"
#include "errors/StatusBlocks.h"

namespace vyerr {

/// Turns the exception being handled into a code in a block (an error that it already holds wins). Called
/// within a catch clause. `boundary` is the site to store when the exception carries none.
void translateCurrentException(StatusBlock* block, RaiseSite boundary) noexcept;

/// Runs a boundary's body. Whatever it throws stops here and becomes a code in the block.
template <class Body>
void runGuarded(StatusBlock* block, RaiseSite boundary, Body&& body) noexcept {
    try {
        body();
    } catch (...) {
        translateCurrentException(block, boundary);
    }
}

} // namespace vyerr

#endif
