// Reads the blocks of an LZ4 frame that are independent of each other, on several threads.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/BoundedSource.h"
#include "common/ContentSink.h"
#include "trevolt/MassiveBuf.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// What a frame's header says of the blocks behind it.
struct SFrameBlocks {
    std::size_t largestBytes = 0; ///< of a block, stored or decoded
    bool haveChecksums = false;
    bool hasContentChecksum = false;
};

/// Where a frame's content goes, which is to have so many bytes: one of both.
struct SFrameTarget {
    std::uint64_t bytes = 0;
    CMassiveBuf* buffer = nullptr; ///< allocated in that size
    CContentSink* sink = nullptr;
};

/// Takes what `source` has, which must be the blocks of a frame, its end mark and its content's
/// checksum and nothing behind them, and gives what they hold to `target`. Up to `threads` threads
/// decode, each one block, or a piece of it, at a time. The stream is read by one of them at a time,
/// block by block, and one at a time hands a block to a sink. E_FAIL when anything of it is wrong,
/// E_OUTOFMEMORY when the memory for a block in work is refused, of which the thread's transfer report
/// hears; a sink may have taken something then.
Status ReadFrameBlocks(CBoundedSource& source, const SFrameBlocks& blocks, std::size_t threads,
                       const SFrameTarget& target);

} // namespace trevolt
