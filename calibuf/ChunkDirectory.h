// The directory of a chunk file or memory image, as it lies in memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "calibuf/ChunkLayout.h"

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

} // namespace trevolt
