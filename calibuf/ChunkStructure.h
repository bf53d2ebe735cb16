// What a file's directory is told of: everything in which it differs from what a writer makes, but for
// the content of the chunks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>

#include "calibuf/ChunkCoverage.h"
#include "calibuf/ChunkDirectory.h"
#include "calibuf/ChunkLayout.h"

namespace trevolt {

/// Measures how a directory holds the area whose left top is (x, y), in the records' own coordinates,
/// and whose size the header states. Notes in the thread's transfer report what is missing, what is
/// repeated, chunks that reach out of the area, and those with a block index that is not that of their
/// place. Of a part for single words (`elemSize` 2) only the pixels without one are noted, as such:
/// extra words go beside a matrix store, whose part of the file is the one that counts. Time and
/// memory are in proportion to the records. Nothing as `MeasureCoverage`.
std::optional<SCoverage> NoteStructure(const SChunkDirectory& directory, const SChunkHeader& header,
                                       std::uint64_t x, std::uint64_t y, std::size_t elemSize);

/// Notes how many bytes there are behind the chunks of the directory that the stream stands behind: up
/// to the part for extra words where the file has one and this is not it (`elemSize` 2), else to
/// the stream's end. The stream stays where it is.
void NoteStrayBytes(std::istream& stream, const SChunkDirectory& directory,
                    const SChunkHeader& header, std::size_t elemSize);

} // namespace trevolt
