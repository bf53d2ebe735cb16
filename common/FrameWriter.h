// Writes a content that is made piece by piece as one standard LZ4 frame, so that it need not stand
// in memory as a whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>

#include "trevolt/MemoryBudget.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Gives `count` bytes (1 to 4 MiB) of a content from `offset` on by their address: in place, or
/// made in `scratch`, which is empty and kept until the piece is written. Null when the memory is
/// refused. It is asked for pieces that follow each other, from several threads at once, and must
/// not throw.
using FramePieceSource =
    std::function<const std::byte*(std::uint64_t offset, std::size_t count, CBudgetBlock& scratch)>;

/// Writes a content of `byteCount` bytes at the stream's position as one LZ4 frame with content size
/// and content checksum (an empty content as an empty frame without the size, which cannot declare
/// it), in independent blocks of 4 MiB of the content. Up to `threads` threads, the calling one among
/// them, make, compress and write pieces, each one at a time; the stream is written to by one of them
/// at a time, in the order of the pieces, and the bytes are the same for every number of threads.
/// Nothing is sought or flushed. E_FAIL when the stream fails, or when the memory for a piece is
/// refused, of which the thread's transfer report hears; the frame is not whole then.
Status WriteFrame(std::ostream& stream, std::uint64_t byteCount, std::size_t threads,
                  const FramePieceSource& source);

} // namespace trevolt
