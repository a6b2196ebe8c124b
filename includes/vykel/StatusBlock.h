#ifndef VYKEL_STATUSBLOCK_H
#define VYKEL_STATUSBLOCK_H

#include <cstdint>

/// What clients and plug-ins see of the library.
namespace vykel {

/// The caller-owned record into which an operation reports its outcome. Its layout is a binary contract.
///
/// The caller makes it, sets `structSize` to its size in bytes and `code` to 0, and reads `code` afterwards.
/// The first error wins: a negative code is never replaced, a positive one (warning) only by a negative one.
/// A record of 208 bytes or more also receives where the error was raised. A smaller one (8 bytes are enough)
/// has only the first two fields, and nothing after them is ever touched.
///
/// A plug-in must check `structSize` before it writes anything but `code`: the blocks that the library hands
/// to plug-ins have 8 bytes. A block belongs to one thread; nothing keeps a pointer to it after the call.
struct StatusBlock {
    std::uint32_t structSize;     ///< Size in bytes of the caller's record: 8, or 208 and more.
    std::int32_t code;            ///< 0 success, negative error, positive warning; see StatusCode.
    char component[10];           ///< Name of the raising component, NUL-terminated, zero-padded.
    char file[101];               ///< Source file of the raise site, NUL-terminated, zero-padded.
    unsigned char padding1[1];    ///< Never read or written.
    std::uint32_t line;           ///< Source line of the raise site.
    unsigned char padding2[4];    ///< Never read or written.
    std::uint64_t reserved;       ///< 0 whenever the detail fields were written.
    unsigned char unassigned[72]; ///< Never read or written.
};

// The sizes of the members add up to the whole: no hidden padding, so every offset is fixed by the order.
static_assert(sizeof(StatusBlock) == 4 + 4 + 10 + 101 + 1 + 4 + 4 + 8 + 72, "StatusBlock has hidden padding");
static_assert(sizeof(StatusBlock) == 208, "StatusBlock's size is a binary contract");

/// A block of full size with code 0: what a client passes to learn component, file and line of an error.
inline StatusBlock makeStatusBlock() noexcept {
    StatusBlock block = {};
    block.structSize = static_cast<std::uint32_t>(sizeof(StatusBlock));
    return block;
}

} // namespace vykel

#endif
