// The directory of a chunk file or memory image, as it lies in memory, and what its readers ask of its
// records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>

#include "calibuf/ChunkLayout.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// `count` records with a list of `planeCount` sizes each; owns nothing.
struct SChunkDirectory {
    const std::byte* bytes;
    std::uint32_t count;
    std::uint32_t planeCount;

    SChunkRecord operator[](std::uint32_t i) const {
        return DecodeChunkRecord(bytes + std::size_t{i} * ChunkRecordBytes(planeCount), planeCount);
    }
};

/// Reads `count` records at the stream's position. E_FAIL, and the stream has failed, when it is too
/// short for them; E_COEF_NOBUFFER when there is no memory.
Status ReadDirectory(std::istream& stream, std::uint32_t count, std::uint32_t planeCount,
                     CBudgetBlock& bytes);

/// Reads the directory of the part for elements of `elemSize` bytes of a file whose header was just
/// read: right behind the header, and for single words where the header says, a position in the
/// stream. E_FAIL when that points into a header; else as `ReadDirectory`.
Status ReadRectDirectory(std::istream& stream, const SChunkHeader& header, std::size_t elemSize,
                         std::uint32_t planeCount, CBudgetBlock& bytes);

/// A record that fills no chunk: reserved directory space that stayed empty, or an area without
/// columns.
inline bool IsUnused(const SChunkRecord& record) {
    return record.Elements() == 0 && record.totalSize == 0;
}

/// The largest of a directory's possible chunks: what scratch memory must hold. A file of one
/// small cabinet needs little.
struct SLargestChunk {
    std::size_t elements = 0;
    std::size_t compressedBytes = 0;

    SLargestChunk(const SChunkDirectory& directory, std::size_t elemSize);
};

} // namespace trevolt
