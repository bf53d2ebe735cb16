// Reads the blocks of an LZ4 frame that are independent of each other, on several threads.
#pragma once

#include <cstddef>

#include "common/BoundedSource.h"
#include "trevolt/MassiveBuf.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// What a frame's header says of the blocks behind it.
struct SFrameBlocks {
    std::size_t largestBytes = 0; ///< of a block, stored or decoded
    bool haveChecksums = false;
    bool hasContentChecksum = false;
};

/// Takes what `source` has, which must be the blocks of a frame, its end mark and its content's
/// checksum and nothing behind them, and fills `target`, allocated in the content's size, with what
/// they hold. Up to `threads` threads decode; the stream is read by one of them at a time, block by
/// block. E_FAIL when anything of it is wrong, E_OUTOFMEMORY when the memory for a block in work is
/// refused, of which the thread's transfer report hears.
Status ReadFrameBlocks(CBoundedSource& source, const SFrameBlocks& blocks, std::size_t threads,
                       CMassiveBuf& target);

} // namespace trevolt
