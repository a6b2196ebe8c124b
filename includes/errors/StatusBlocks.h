#ifndef ERRORS_STATUSBLOCKS_H
#define ERRORS_STATUSBLOCKS_H

#include "errors/Status.h"
#include "vykel/StatusBlock.h"
#include <cstdint>

/// The library's side of the public StatusBlock.
namespace vyerr {

using vykel::StatusBlock;

/// Makes a code-only block, as the library uses for itself and hands to plug-ins: size 8, code 0; nothing
/// else of the block is touched. Returns `block`.
inline StatusBlock* initStatusBlock(StatusBlock* block) noexcept {
    block->structSize = 8;
    block->code = 0;
    return block;
}

/// Stores a code, and in a block of full size where it was raised, unless the first-error-wins rule refuses.
/// Of `component` the first 9 characters are kept; of a `file` longer than 100 characters the first and the
/// last 49 with ".." between. Returns true when the code was stored.
bool setStatusBlock(StatusBlock* block, std::int32_t code, const char* component, const char* file,
                    std::uint32_t line) noexcept;

/// Copies a record's error into a block: the code, and of the text the last 9 characters of "component", the
/// last 100 of "file", and "line". Always returns true.
bool statusToBlock(const Status* status, StatusBlock* block) noexcept;

} // namespace vyerr

#endif
