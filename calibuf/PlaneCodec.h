// CPlaneCodec: compresses and decodes chunks of a store, one after the other, in the same scratch
// memory. Used by one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "calibuf/ChunkLayout.h"
#include "calibuf/PlaneTranspose.h"
#include "common/MemoryBudget.h"
#include "common/StatusCodes.h"

namespace trevolt {

class CPlaneCodec {
  public:
    /// For elements of `elemSize` bytes and chunks of at most `maxElements` elements.
    CPlaneCodec(std::size_t elemSize, std::size_t maxElements);

    /// False when the scratch memory was refused; nothing may be called then.
    bool IsReady() const { return static_cast<bool>(m_scratch); }

    /// Compresses `count` packed elements (at most `maxElements`); see
    /// `CCaliBuf::CompressPlanes`.
    Status Compress(std::byte* destination, std::uint32_t& total, const std::byte* source,
                    std::uint32_t* planeSizes, std::size_t count);

    /// Decodes a chunk of at most `maxElements` elements; see `CCaliBuf::DecompressPlanes`.
    Status Decompress(const SChunkRecord& record, const std::byte* compressed,
                      std::byte* destination, std::uint32_t& total);

  private:
    std::uint16_t* Plane(std::size_t k);

    /// Plane k's `count` words from its compressed block: in the block itself where they stand there
    /// as they are, else in scratch memory. Null for a block of anything else.
    const std::byte* DecodePlane(std::size_t k, std::span<const std::byte> block,
                                 std::size_t count);

    std::size_t m_elemSize;
    bool m_isKnownKind;
    SPlaneLayout m_layout;
    CBudgetBlock m_scratch;
};

/// Whether a store of `elemSize`-byte elements can have such a chunk: its width and height those of
/// a block or less, but not 0, and its compressed size within twice a raw block.
bool IsPossibleChunk(const SChunkRecord& record, std::size_t elemSize);

} // namespace trevolt
