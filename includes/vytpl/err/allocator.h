#ifndef VYTPL_ERR_ALLOCATOR_H
#define VYTPL_ERR_ALLOCATOR_H

#include "errors/ErrorInfo.h"
#include "vykel/StatusCodes.h"

namespace vytpl {

/// Records that a buffer of this template library found no memory: MemoryFull.
inline void reportMemoryFull(vyerr::Status& status) noexcept {
    vyerr::recordError(&status, vykel::toInteger(vykel::StatusCode::MemoryFull), vyerr::constant::memoryFull,
                       __FILE__, 32);
}

} // namespace vytpl

#endif
