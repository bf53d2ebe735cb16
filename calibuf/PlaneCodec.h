// CPlaneCodec: compresses and decodes chunks of a store, one after the other, in the same scratch
// memory. Used by one thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "calibuf/ChunkLayout.h"
#include "calibuf/PlaneTranspose.h"
#include "calibuf/WordElementKind.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/StatusCodes.h"

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

    /// What `CompressFilled` may need at its destination for planes of `count` words.
    static std::size_t MostCompressedBytes(std::size_t wordCount, std::size_t count);

    /// Room for the `maxElements` words of plane k, which the caller fills for `CompressFilled`.
    std::uint16_t* Plane(std::size_t k);

    /// Compresses the first `count` words (at most `maxElements`) of the planes that the caller has
    /// filled, back to back, to the bytes that `Compress` makes of such elements. Sets one size for
    /// each word in `planeSizes` and returns their sum.
    std::uint32_t CompressFilled(std::byte* destination, std::uint32_t* planeSizes,
                                 std::size_t count);

    /// Decodes the planes of a chunk of at most `maxElements` elements, up to the first that does
    /// not decode to exactly its words; E_FAIL then, and for a record that no chunk can have. What
    /// was decoded stays, in part in `compressed` itself, for `Scatter`.
    Status Decode(const SChunkRecord& record, const std::byte* compressed);

    /// Puts the words of the decoded planes into the chunk's packed elements at `destination` and
    /// leaves everything else there alone. Returns the decoded bytes.
    std::uint32_t Scatter(std::byte* destination) const;

    /// The words of plane k, which was decoded, row by row; they need not be aligned.
    const std::byte* DecodedPlane(std::size_t k) const { return m_planes[k]; }

  private:
    /// Plane k's `count` words from its compressed block: in the block itself where they stand there
    /// as they are, else in scratch memory. Null for a block of anything else.
    const std::byte* DecodePlane(std::size_t k, std::span<const std::byte> block,
                                 std::size_t count);

    std::size_t m_elemSize;
    bool m_isKnownKind;
    SPlaneLayout m_layout;
    CBudgetBlock m_scratch;
    std::array<const std::byte*, kMaxWords> m_planes{}; ///< of the last `Decode`
    std::size_t m_decoded = 0;                          ///< how many of them there are
    std::size_t m_count = 0;                            ///< words of each
};

/// Whether a store of `elemSize`-byte elements can have such a chunk: its width and height those of
/// a block or less, but not 0, and its compressed size within twice a raw block.
bool IsPossibleChunk(const SChunkRecord& record, std::size_t elemSize);

} // namespace trevolt
