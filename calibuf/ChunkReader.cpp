// The readers of chunk files and memory images.

#include <algorithm>

#include "calibuf/CaliBuf.h"
#include "calibuf/ChunkCoverage.h"
#include "calibuf/ChunkDirectory.h"
#include "calibuf/PlaneCodec.h"
#include "platform/FileStream.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

/// Where chunks go: the shift that is added to a record's position, and how many columns and rows
/// of a chunk are taken (all of them unless both are non-zero).
struct SPlacement {
    std::int64_t shiftX = 0;
    std::int64_t shiftY = 0;
    std::uint32_t clipWidth = 0;
    std::uint32_t clipHeight = 0;

    bool IsClipped() const { return clipWidth != 0 && clipHeight != 0; }
};

/// A chunk's area in the store, in pixels. It may reach past the grid.
struct SChunkArea {
    std::int64_t left;
    std::int64_t top;
    std::int64_t right;
    std::int64_t bottom;

    std::int64_t FirstColumn() const { return left / kBlockWidth; }
    std::int64_t LastColumn() const { return (right - 1) / kBlockWidth; }
    std::int64_t FirstRow() const { return top / kBlockHeight; }
    std::int64_t LastRow() const { return (bottom - 1) / kBlockHeight; }
    bool IsInOneBlock() const { return FirstColumn() == LastColumn() && FirstRow() == LastRow(); }
};

/// The part of `area` in the block at (column, row). The block lies in the grid.
SPixelRect CutToBlock(const SChunkArea& area, std::int64_t column, std::int64_t row) {
    const std::int64_t x = column * kBlockWidth;
    const std::int64_t y = row * kBlockHeight;
    return {static_cast<std::int32_t>(std::max(area.left, x)),
            static_cast<std::int32_t>(std::max(area.top, y)),
            static_cast<std::int32_t>(std::min(area.right, x + kBlockWidth)),
            static_cast<std::int32_t>(std::min(area.bottom, y + kBlockHeight))};
}

/// Decodes chunks into the blocks of a store, and keeps count.
class CChunkPlacer {
  public:
    /// For chunks of at most `maxElements` elements.
    CChunkPlacer(CCaliBuf& store, std::size_t maxElements)
        : m_store(store),
          m_codec(store.ElemSize(), maxElements),
          m_elements(store.ElemSize() * maxElements) {}

    bool IsReady() const { return m_codec.IsReady() && static_cast<bool>(m_elements); }

    /// Takes the next chunk; `compressed` is null when its bytes are not there.
    void Take(const SChunkRecord& record, const std::byte* compressed,
              const SPlacement& placement) {
        Count(Place(record, compressed, placement));
    }

    /// Counts a chunk that no store of the kind can have.
    void CountImpossible() { Count(Outcome::Failed); }

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

    void Count(Outcome outcome) {
        switch (outcome) {
        case Outcome::Read:
            ++m_counts.read;
            m_result = S_OK;
            break;
        case Outcome::DecodedOnly:
            ++m_counts.skipped;
            m_result = S_OK;
            break;
        case Outcome::Skipped:
            ++m_counts.skipped;
            break;
        case Outcome::NotMissed:
            ++m_counts.failed;
            break;
        case Outcome::Failed:
            ++m_counts.failed;
            m_result = E_FAIL;
            break;
        }
    }

    Outcome Place(const SChunkRecord& record, const std::byte* compressed,
                  const SPlacement& placement) {
        const std::int64_t left = record.x + placement.shiftX;
        const std::int64_t top = record.y + placement.shiftY;
        if (left < 0 || top < 0)
            return Outcome::Failed;
        const SChunkArea area{left, top, left + record.width, top + record.height};
        if (compressed == nullptr)
            return FallsOnABlock(area) ? Outcome::Failed : Outcome::NotMissed;
        return area.IsInOneBlock() ? PlaceWhole(record, compressed, area, placement)
                                   : PlacePieces(record, compressed, area, placement);
    }

    bool FallsOnABlock(const SChunkArea& area) const {
        for (std::int64_t column = area.FirstColumn(); column <= area.LastColumn(); ++column)
            for (std::int64_t row = area.FirstRow(); row <= area.LastRow(); ++row)
                if (m_store.BlockWithData(BlockIndexAt(column, row)) != nullptr)
                    return true;
        return false;
    }

    /// A chunk inside one block: nothing is decoded for a missing block.
    Outcome PlaceWhole(const SChunkRecord& record, const std::byte* compressed,
                       const SChunkArea& area, const SPlacement& placement) {
        const std::uint32_t index = BlockIndexAt(area.FirstColumn(), area.FirstRow());
        const BlockRecord* const block = m_store.BlockWithData(index);
        if (block == nullptr)
            return Outcome::Skipped;
        if (Failed(m_codec.Decode(record, compressed)))
            return Outcome::Failed;
        SPixelRect piece = CutToBlock(area, area.FirstColumn(), area.FirstRow());
        const bool isAtItsPlace = BlockIndexOfPixel(block->nX, block->nY) == index &&
                                  PlaceInBlock(block->nX, block->nY) == 0;
        if (isAtItsPlace && piece.Width() == kBlockWidth && !placement.IsClipped()) {
            m_codec.Scatter(m_store.FindElement(static_cast<std::uint32_t>(piece.left),
                                                static_cast<std::uint32_t>(piece.top)));
            return Outcome::Read;
        }
        m_codec.Scatter(m_elements.Data());
        Clip(piece, area, placement);
        return CopyPiece(index, piece, area, record.width);
    }

    /// A chunk over several blocks: decoded once, then copied to those that are there.
    Outcome PlacePieces(const SChunkRecord& record, const std::byte* compressed,
                        const SChunkArea& area, const SPlacement& placement) {
        if (Failed(m_codec.Decode(record, compressed)))
            return Outcome::Failed;
        m_codec.Scatter(m_elements.Data());
        Outcome outcome = Outcome::DecodedOnly;
        const auto note = [&outcome](Outcome piece) {
            if (outcome != Outcome::Failed)
                outcome = piece;
        };
        for (std::int64_t column = area.FirstColumn(); column <= area.LastColumn(); ++column) {
            for (std::int64_t row = area.FirstRow(); row <= area.LastRow(); ++row) {
                const std::uint32_t index = BlockIndexAt(column, row);
                if (m_store.BlockWithData(index) == nullptr)
                    continue;
                SPixelRect piece = CutToBlock(area, column, row);
                if (Clip(piece, area, placement))
                    note(CopyPiece(index, piece, area, record.width));
            }
        }
        return outcome;
    }

    /// Cuts `piece` to the clip area at the chunk's corner; false when nothing is left of it.
    static bool Clip(SPixelRect& piece, const SChunkArea& area, const SPlacement& placement) {
        if (!placement.IsClipped())
            return true;
        piece.right = static_cast<std::int32_t>(
            std::min<std::int64_t>(piece.right, area.left + placement.clipWidth));
        piece.bottom = static_cast<std::int32_t>(
            std::min<std::int64_t>(piece.bottom, area.top + placement.clipHeight));
        return piece.Width() > 0 && piece.Height() > 0;
    }

    Outcome CopyPiece(std::uint32_t index, const SPixelRect& piece, const SChunkArea& area,
                      std::uint32_t stride) {
        const auto start =
            static_cast<std::uint32_t>((piece.top - area.top) * stride + (piece.left - area.left));
        const Status status = m_store.CopyRectIn(index, m_elements.Data(), piece, start, stride);
        return Failed(status) ? Outcome::Failed : Outcome::Read;
    }

    CCaliBuf& m_store;
    CPlaneCodec m_codec;
    CBudgetBlock m_elements; ///< one decoded chunk
    SChunkCounts m_counts;
    Status m_result = S_OK;
};

/// The bytes of a stream from its position on, taken in order. What is not there is null; the
/// position then still moves on, so that later bytes are taken from the right place.
class CStreamBytes {
  public:
    /// `largest` is the most that one `Take` asks for.
    CStreamBytes(std::istream& stream, std::size_t largest)
        : m_stream(stream),
          m_scratch(largest),
          m_at(static_cast<std::uint64_t>(std::max<std::streamoff>(stream.tellg(), 0))),
          m_end(m_at + BytesToEnd(stream).value_or(0)) {}

    bool IsReady() const { return static_cast<bool>(m_scratch); }

    const std::byte* Take(std::uint32_t count) {
        Settle();
        if (!Advance(count))
            return nullptr;
        m_stream.read(reinterpret_cast<char*>(m_scratch.Data()), count);
        return m_stream ? m_scratch.Data() : nullptr;
    }

    void Skip(std::uint32_t count) {
        Advance(count);
        m_mustSeek = true;
    }

    /// Goes behind what was taken and skipped; a stream that has failed stays where it is.
    void Settle() {
        if (m_mustSeek)
            m_stream.seekg(static_cast<std::streamoff>(m_at));
        m_mustSeek = false;
    }

  private:
    /// Moves on; false, told by the stream's state, too, when that passes the stream's end.
    bool Advance(std::uint32_t count) {
        m_at += count;
        if (m_at > m_end)
            m_stream.setstate(std::ios::failbit);
        return m_at <= m_end;
    }

    std::istream& m_stream;
    CBudgetBlock m_scratch;
    std::uint64_t m_at;
    std::uint64_t m_end;
    bool m_mustSeek = false;
};

/// The bytes of a memory image behind its directory; as `CStreamBytes`.
class CMemoryBytes {
  public:
    CMemoryBytes(const std::byte* bytes, std::size_t count) : m_bytes(bytes), m_count(count) {}

    const std::byte* Take(std::uint32_t count) {
        const std::uint64_t from = m_at;
        m_at += count;
        return m_at > m_count ? nullptr : m_bytes + from;
    }

    void Skip(std::uint32_t count) { m_at += count; }

  private:
    const std::byte* m_bytes;
    std::uint64_t m_count;
    std::uint64_t m_at = 0;
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

/// Reads the chunks of a directory, behind which the stream stands.
template <class Wanted>
Status ReadChunks(std::istream& stream, const SChunkDirectory& directory, CCaliBuf& store,
                  SChunkCounts& counts, const SPlacement& placement, const Wanted& isWanted) {
    const SLargestChunk largest(directory, store.ElemSize());
    CStreamBytes source(stream, largest.compressedBytes);
    CChunkPlacer placer(store, largest.elements);
    if (!source.IsReady() || !placer.IsReady())
        return E_COEF_NOBUFFER;
    PlaceChunks(directory, source, placer, store.ElemSize(), placement, isWanted);
    source.Settle();
    counts = placer.Counts();
    CTransferReport::NoteFailedChunks(counts.failed);
    return placer.Result();
}

/// Notes what a directory leaves out of the area whose left top is (x, y), in the records' own
/// coordinates, and whose size the header states. Not that of a single-word store: extra words go
/// beside a matrix store, whose part of the file is the one that counts.
void NoteMissingPixels(const SChunkDirectory& directory, const SChunkHeader& header,
                       std::uint64_t x, std::uint64_t y, std::size_t elemSize) {
    if (elemSize == sizeof(SWordCoef))
        return;
    const SStatedArea area{x, y, x + header.width, y + header.height};
    if (const auto missing = CountMissingPixels(directory, area))
        CTransferReport::NoteMissingPixels(*missing);
}

bool AllWanted(const SChunkRecord& /*record*/) { return true; }

/// The top edge of the last record with this block index, 0 when there is none. Directory space
/// that stayed empty reads as a record of block 0 at the top.
std::uint32_t TopOfChunk(const SChunkDirectory& directory, std::uint32_t index) {
    std::uint32_t top = 0;
    for (std::uint32_t i = 0; i < directory.count; ++i) {
        const SChunkRecord record = directory[i];
        if (record.index == index)
            top = record.y;
    }
    return top;
}

} // namespace

Status CCaliBuf::ReadRectChunks(std::istream& stream, std::uint32_t x, std::uint32_t y,
                                std::uint32_t clipWidth, std::uint32_t clipHeight) {
    m_lastRead = {};
    const auto header = ReadChunkHeader(stream);
    if (!header)
        return E_FAIL;
    if (m_nElemSize == sizeof(SWordCoef)) {
        if (header->directoryOffset < kChunkHeaderBytes)
            return E_FAIL;
        stream.seekg(static_cast<std::streamoff>(header->directoryOffset));
    }
    CBudgetBlock directoryBytes;
    const Status status = ReadDirectory(stream, header->recordCount, m_nPlaneCount, directoryBytes);
    if (Failed(status))
        return status;
    const SChunkDirectory directory{directoryBytes.Data(), header->recordCount, m_nPlaneCount};
    NoteMissingPixels(directory, *header, header->originX, header->originY, m_nElemSize);
    const SPlacement placement{std::int64_t{x} - header->originX, std::int64_t{y} - header->originY,
                               clipWidth, clipHeight};
    return ReadChunks(stream, directory, *this, m_lastRead, placement, AllWanted);
}

Status CCaliBuf::ReadBandChunks(std::istream& stream, std::uint32_t x, std::uint32_t y,
                                std::uint32_t firstIndex, std::uint32_t endIndex) {
    m_lastRead = {};
    const auto header = ReadChunkHeader(stream);
    if (!header)
        return E_FAIL;
    // Counted from the end of the header, unlike above.
    if (m_nElemSize == sizeof(SWordCoef))
        stream.seekg(static_cast<std::streamoff>(header->directoryOffset), std::ios::cur);
    CBudgetBlock directoryBytes;
    const Status status = ReadDirectory(stream, header->recordCount, m_nPlaneCount, directoryBytes);
    if (Failed(status))
        return status;
    const SChunkDirectory directory{directoryBytes.Data(), header->recordCount, m_nPlaneCount};
    const SPlacement placement{x, std::int64_t{y} - TopOfChunk(directory, firstIndex)};
    const auto isInBand = [&](const SChunkRecord& record) {
        return record.index >= firstIndex && record.index < endIndex;
    };
    return ReadChunks(stream, directory, *this, m_lastRead, placement, isInBand);
}

Status CCaliBuf::LoadFromMemory(const std::byte* source, std::size_t length) {
    m_lastRead = {};
    if (source == nullptr || length < kChunkHeaderBytes)
        return E_FAIL;
    const SChunkHeader header = DecodeChunkHeader(source);
    const std::uint64_t directoryBytes =
        std::uint64_t{header.recordCount} * ChunkRecordBytes(m_nPlaneCount);
    if (directoryBytes > length - kChunkHeaderBytes)
        return E_FAIL;
    const SChunkDirectory directory{source + kChunkHeaderBytes, header.recordCount, m_nPlaneCount};
    NoteMissingPixels(directory, header, 0, 0, m_nElemSize);
    CChunkPlacer placer(*this, SLargestChunk(directory, m_nElemSize).elements);
    if (!placer.IsReady())
        return E_FAIL;
    const std::size_t dataAt = kChunkHeaderBytes + static_cast<std::size_t>(directoryBytes);
    CMemoryBytes data(source + dataAt, length - dataAt);
    PlaceChunks(directory, data, placer, m_nElemSize, SPlacement{header.originX, header.originY},
                AllWanted);
    m_lastRead = placer.Counts();
    CTransferReport::NoteFailedChunks(m_lastRead.failed);
    return placer.Result();
}

Status CCaliBuf::LoadFromMemory(const std::byte* source) {
    return LoadFromMemory(source, std::size_t{PTRDIFF_MAX});
}

} // namespace trevolt
