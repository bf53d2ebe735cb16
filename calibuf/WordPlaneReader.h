// Reads whole chunk files into planes, without a store.
#pragma once

#include <cstddef>
#include <istream>
#include <optional>

#include "calibuf/ChunkLayout.h"
#include "calibuf/WordElementKind.h"
#include "calibuf/WordPlanes.h"

namespace trevolt {

/// The planes of the chunk file of elements of `kind` whose header, with sides of 1 to 65535, was
/// just read from the stream: its pixels as a store of that size has them when it has read the file
/// with its origin at its own. Only whole and plain files are taken: each pixel of the area is in one
/// chunk, no chunk begins outside it, and each decodes; what reaches past the area on the right and at
/// the bottom is cut off. Nothing for any other file, and without memory, which the thread's transfer
/// report hears of; the stream then stands anywhere and may have failed. No more memory is asked for
/// than chunks of the file's length can fill. The decoding is shared among `threads` threads at most.
std::optional<CWordPlanes> ReadWordPlanes(std::istream& stream, const SChunkHeader& header,
                                          const WordElementKind& kind, std::size_t threads);

} // namespace trevolt
