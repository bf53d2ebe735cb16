// Puts chunks where they belong. Which part of a chunk falls where, and whether it counts as read,
// skipped or failed, is reckoned here alone, whatever takes the parts.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <istream>

#include "calibuf/BlockGrid.h"
#include "calibuf/ChunkBytes.h"
#include "calibuf/ChunkCounts.h"
#include "calibuf/ChunkDirectory.h"
#include "calibuf/PlaneCodec.h"
#include "trevolt/PixelRect.h"
#include "trevolt/StatusCodes.h"
#include "trevolt/TransferReport.h"

namespace trevolt {

/// Where chunks go: the shift that is added to a record's position, and how many columns and rows
/// of a chunk are taken (all of them unless both are non-zero).
struct SPlacement {
    std::int64_t shiftX = 0;
    std::int64_t shiftY = 0;
    std::uint32_t clipWidth = 0;
    std::uint32_t clipHeight = 0;

    bool IsClipped() const { return clipWidth != 0 && clipHeight != 0; }
};

/// A chunk's area in the grid, in pixels. It may reach past the grid.
struct SChunkArea {
    std::int64_t left;
    std::int64_t top;
    std::int64_t right;
    std::int64_t bottom;

    std::int64_t Width() const { return right - left; }
    std::int64_t FirstColumn() const { return left / kBlockWidth; }
    std::int64_t LastColumn() const { return (right - 1) / kBlockWidth; }
    std::int64_t FirstRow() const { return top / kBlockHeight; }
    std::int64_t LastRow() const { return (bottom - 1) / kBlockHeight; }
    bool IsInOneBlock() const { return FirstColumn() == LastColumn() && FirstRow() == LastRow(); }
};

/// What one block of the grid has of a chunk.
struct SChunkPiece {
    const CPlaneCodec& codec; ///< holds the chunk's decoded planes
    const SChunkArea& area;   ///< of the whole chunk
    std::uint32_t index;      ///< of the block
    SPixelRect rect;          ///< not empty, in the block and in the chunk
    bool isFirst;             ///< of this chunk

    /// The place of the piece's left top among the chunk's elements.
    std::uint32_t Start() const {
        return static_cast<std::uint32_t>((rect.top - area.top) * area.Width() +
                                          (rect.left - area.left));
    }
    bool IsWholeChunk() const {
        return rect.left == area.left && rect.top == area.top && rect.right == area.right &&
               rect.bottom == area.bottom;
    }
};

/// What takes chunks, piece by piece, and has some blocks of the grid.
class CChunkTarget {
  public:
    virtual ~CChunkTarget() = default;
    CChunkTarget(const CChunkTarget&) = delete;
    CChunkTarget& operator=(const CChunkTarget&) = delete;

    /// Whether block `index` can take anything; no block has the index `kNoBlock`.
    virtual bool HasBlock(std::uint32_t index) const = 0;
    /// Takes a piece of a block that is there; false when it cannot be taken.
    virtual bool Put(const SChunkPiece& piece) = 0;

  protected:
    CChunkTarget() = default;
};

/// Decodes chunks for a target, and keeps count. Used by one thread.
class CChunkPlacer {
  public:
    /// For chunks of at most `maxElements` elements of `elemSize` bytes.
    CChunkPlacer(CChunkTarget& target, std::size_t elemSize, std::size_t maxElements)
        : m_target(target), m_codec(elemSize, maxElements) {}

    /// False when scratch memory was refused; no chunk may be taken then.
    bool IsReady() const { return m_codec.IsReady(); }

    /// Takes the next chunk; `compressed` is null when its bytes are not there.
    void Take(const SChunkRecord& record, const std::byte* compressed,
              const SPlacement& placement) {
        Count(Place(record, compressed, placement));
    }

    /// Counts a chunk that no store of the kind can have.
    void CountImpossible() { Count(Outcome::Failed); }

    /// That of the last chunk that was decoded or failed.
    Status Result() const { return m_result; }
    const SChunkCounts& Counts() const { return m_counts; }

  private:
    enum class Outcome {
        Read,
        DecodedOnly, ///< whole, but none of its blocks is there
        Skipped,     ///< not looked at: its only block is not there
        NotMissed,   ///< its bytes are not there, and neither is a block for it
        Failed
    };

    void Count(Outcome outcome);
    Outcome Place(const SChunkRecord& record, const std::byte* compressed,
                  const SPlacement& placement);
    Outcome PutPieces(const SChunkArea& area, const SPlacement& placement);
    bool FallsOnABlock(const SChunkArea& area) const;

    CChunkTarget& m_target;
    CPlaneCodec m_codec;
    SChunkCounts m_counts;
    Status m_result = S_OK;
};

/// Takes the chunks of a directory from `source` in order, those whose record `isWanted`.
template <class Source, class Wanted>
void PlaceChunks(const SChunkDirectory& directory, Source& source, CChunkPlacer& placer,
                 std::size_t elemSize, const SPlacement& placement, const Wanted& isWanted) {
    for (std::uint32_t i = 0; i < directory.count; ++i) {
        const SChunkRecord record = directory[i];
        if (IsUnused(record))
            continue;
        if (!isWanted(record)) {
            source.Skip(record.totalSize);
        } else if (IsPossibleChunk(record, elemSize)) {
            placer.Take(record, source.Take(record.totalSize), placement);
        } else {
            source.Skip(record.totalSize);
            placer.CountImpossible();
        }
    }
}

inline bool AllChunksWanted(const SChunkRecord& /*record*/) { return true; }

/// What became of a directory's chunks.
struct SChunksRead {
    Status status = S_OK;
    SChunkCounts counts;
};

/// Reads the chunks of a directory, behind which the stream stands, in order. E_COEF_NOBUFFER when
/// scratch memory is refused, else that of the last chunk that was decoded or failed; the thread's
/// transfer report hears of those that failed.
template <class Wanted>
SChunksRead ReadChunks(std::istream& stream, const SChunkDirectory& directory, std::size_t elemSize,
                       CChunkTarget& target, const SPlacement& placement, const Wanted& isWanted) {
    const SLargestChunk largest(directory, elemSize);
    CStreamBytes source(stream, largest.compressedBytes);
    CChunkPlacer placer(target, elemSize, largest.elements);
    if (!source.IsReady() || !placer.IsReady())
        return {E_COEF_NOBUFFER, {}};
    PlaceChunks(directory, source, placer, elemSize, placement, isWanted);
    source.Settle();
    CTransferReport::NoteFailedChunks(placer.Counts().failed);
    return {placer.Result(), placer.Counts()};
}

} // namespace trevolt
