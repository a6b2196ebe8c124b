#ifndef ERRORS_STATUSBLOCKS_H
#define ERRORS_STATUSBLOCKS_H

#include "errors/RaiseSite.h"
#include "errors/Status.h"
#include "vykel/StatusBlock.h"
#include "vykel/StatusCodes.h"
#include <cstdint>

/// The library's side of the public StatusBlock.
namespace vyerr {

using vykel::StatusBlock;

/// Makes a code-only block, as the library uses for itself and hands to plug-ins: size 8, code 0. Nothing
/// else of the block is written. Returns `block`.
inline StatusBlock* initStatusBlock(StatusBlock* block) noexcept {
    block->structSize = 8;
    block->code = 0;
    return block;
}

/// Stores a code when replacesCode allows it, and in a block of full size also where it was raised. The block
/// takes the first 9 characters of `component`; of a `file` longer than 100 characters it takes the first and
/// the last 49, with ".." between. Returns whether the code was stored.
bool setStatusBlock(StatusBlock* block, std::int32_t code, const char* component, const char* file,
                    std::uint32_t line) noexcept;

/// Stores an error that this library raises at a site, as setStatusBlock does.
void storeError(StatusBlock* block, vykel::StatusCode code, RaiseSite site) noexcept;

/// Copies a record's code into a block when replacesCode allows it, and from its text the last 9 characters
/// of "component", the last 100 of "file", and "line". Always returns true.
bool statusToBlock(const Status* status, StatusBlock* block) noexcept;

} // namespace vyerr

#endif
