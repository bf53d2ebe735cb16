// Reads chunk files into planes, without a store.
#pragma once

#include <cstddef>
#include <istream>

#include "calibuf/ChunkLayout.h"
#include "calibuf/WordElementKind.h"
#include "calibuf/WordPlanes.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// What was read of a file.
struct SPlanesRead {
    Status status;
    CWordPlanes planes;
};

/// Reads the chunk file of elements of `kind` whose header, with sides up to 65535, was just read
/// from the stream. The planes then hold what a store of the header's size holds that was filled with
/// defaults and has read the file with its origin at its own; status, stream and the thread's transfer
/// report tell what they tell of `CCaliBuf::ReadRectChunks`. E_COEF_NOBUFFER, and no planes, also
/// when the planes' memory is refused. No more memory is asked for than for the blocks that sound
/// chunks lie in. The decoding of a plain file is shared among `threads` threads at most: of one whose
/// chunks hold each pixel of the area once and are all sound.
SPlanesRead ReadWordPlanes(std::istream& stream, const SChunkHeader& header,
                           const WordElementKind& kind, std::size_t threads);

/// As above, but only to tell what became of the chunks: nothing is kept.
Status PassOverChunks(std::istream& stream, const SChunkHeader& header,
                      const WordElementKind& kind);

} // namespace trevolt
