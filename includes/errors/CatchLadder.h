#ifndef ERRORS_CATCHLADDER_H
#define ERRORS_CATCHLADDER_H

#include "errors/RaiseSite.h"
#include "errors/StatusBlocks.h"

namespace vyerr {

/// Turns the exception being handled into a code in a block (an error already there wins). Called within a
/// catch clause. `boundary` names the boundary itself; an Exception brings a site of its own.
void translateCurrentException(StatusBlock* block, RaiseSite boundary) noexcept;

/// Runs a boundary's body. Whatever it throws ends here and becomes a code in the block.
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
