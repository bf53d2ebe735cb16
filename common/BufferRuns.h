// Ranges of a buffer in blocks as the runs that lie together in memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "trevolt/MassiveBuf.h"

namespace trevolt {

/// Calls `use(address, count)` for each run of the `count` bytes of `buffer` from `offset` on, which
/// must lie in it, in their order, as long as it answers true. Whether all did.
template <class Buffer, class Use>
bool EachRun(Buffer& buffer, std::uint64_t offset, std::size_t count, Use use) {
    while (count > 0) {
        const auto block = static_cast<std::size_t>(offset / buffer.BlockBytes());
        const auto inBlock = static_cast<std::size_t>(offset % buffer.BlockBytes());
        const std::size_t run = std::min(count, buffer.BlockSize(block) - inBlock);
        if (!use(buffer.Block(block) + inBlock, run))
            return false;
        offset += run;
        count -= run;
    }
    return true;
}

/// The address of such bytes in one run: in place, or copied into `scratch` when they lie in several
/// blocks. Null when the memory for that is refused.
inline const std::byte* InOneRun(const CMassiveBuf& buffer, std::uint64_t offset, std::size_t count,
                                 CBudgetBlock& scratch) {
    const std::byte* run = nullptr;
    const bool isOneRun =
        EachRun(buffer, offset, count, [&](const std::byte* from, std::size_t there) {
            run = from;
            return there == count;
        });
    if (isOneRun)
        return run;
    scratch = CBudgetBlock(count);
    if (!scratch)
        return nullptr;
    std::byte* to = scratch.Data();
    EachRun(buffer, offset, count, [&](const std::byte* from, std::size_t there) {
        std::memcpy(to, from, there);
        to += there;
        return true;
    });
    return scratch.Data();
}

} // namespace trevolt
