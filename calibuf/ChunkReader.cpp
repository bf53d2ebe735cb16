// The readers of chunk files and memory images into a store.

#include "calibuf/CaliBuf.h"
#include "calibuf/ChunkPlacer.h"
#include "calibuf/ChunkStructure.h"

namespace trevolt {
namespace {

/// A store's blocks as they take chunks.
class CStoreTarget final : public CChunkTarget {
  public:
    /// For chunks of at most `maxElements` elements.
    CStoreTarget(CCaliBuf& store, std::size_t maxElements)
        : m_store(store), m_elements(store.ElemSize() * maxElements) {}

    bool IsReady() const { return static_cast<bool>(m_elements); }

    bool HasBlock(std::uint32_t index) const override {
        return m_store.BlockWithData(index) != nullptr;
    }

    bool Put(const SChunkPiece& piece) override {
        if (FillsBlockRows(piece)) {
            piece.codec.Scatter(m_store.FindElement(static_cast<std::uint32_t>(piece.rect.left),
                                                    static_cast<std::uint32_t>(piece.rect.top)));
            return true;
        }
        if (piece.isFirst)
            piece.codec.Scatter(m_elements.Data());
        return !Failed(m_store.CopyRectIn(piece.index, m_elements.Data(), piece.rect, piece.Start(),
                                          static_cast<std::uint32_t>(piece.area.Width())));
    }

  private:
    /// Whether the chunk's elements lie in the block one behind the other, as they are decoded.
    bool FillsBlockRows(const SChunkPiece& piece) const {
        const BlockRecord& block = *m_store.Block(piece.index);
        return piece.IsWholeChunk() && piece.rect.Width() == kBlockWidth &&
               BlockIndexOfPixel(block.nX, block.nY) == piece.index &&
               PlaceInBlock(block.nX, block.nY) == 0;
    }

    CCaliBuf& m_store;
    CBudgetBlock m_elements; ///< one decoded chunk
};

/// Reads the chunks of a directory, behind which the stream stands, into the store.
template <class Wanted>
Status ReadIntoStore(std::istream& stream, const SChunkDirectory& directory, CCaliBuf& store,
                     SChunkCounts& counts, const SPlacement& placement, const Wanted& isWanted) {
    CStoreTarget target(store, SLargestChunk(directory, store.ElemSize()).elements);
    if (!target.IsReady())
        return E_COEF_NOBUFFER;
    const SChunksRead read =
        ReadChunks(stream, directory, store.ElemSize(), target, placement, isWanted);
    counts = read.counts;
    return read.status;
}

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
    CBudgetBlock directoryBytes;
    const Status status =
        ReadRectDirectory(stream, *header, m_nElemSize, m_nPlaneCount, directoryBytes);
    if (Failed(status))
        return status;
    const SChunkDirectory directory{directoryBytes.Data(), header->recordCount, m_nPlaneCount};
    NoteStructure(directory, *header, header->originX, header->originY, m_nElemSize);
    NoteStrayBytes(stream, directory, *header, m_nElemSize);
    const SPlacement placement{std::int64_t{x} - header->originX, std::int64_t{y} - header->originY,
                               clipWidth, clipHeight};
    return ReadIntoStore(stream, directory, *this, m_lastRead, placement, AllChunksWanted);
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
    return ReadIntoStore(stream, directory, *this, m_lastRead, placement, isInBand);
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
    NoteStructure(directory, header, 0, 0, m_nElemSize);
    const SLargestChunk largest(directory, m_nElemSize);
    CStoreTarget target(*this, largest.elements);
    CChunkPlacer placer(target, m_nElemSize, largest.elements);
    if (!target.IsReady() || !placer.IsReady())
        return E_FAIL;
    const std::size_t dataAt = kChunkHeaderBytes + static_cast<std::size_t>(directoryBytes);
    CMemoryBytes data(source + dataAt, length - dataAt);
    PlaceChunks(directory, data, placer, m_nElemSize, SPlacement{header.originX, header.originY},
                AllChunksWanted);
    m_lastRead = placer.Counts();
    CTransferReport::NoteFailedChunks(m_lastRead.failed);
    return placer.Result();
}

Status CCaliBuf::LoadFromMemory(const std::byte* source) {
    return LoadFromMemory(source, std::size_t{PTRDIFF_MAX});
}

} // namespace trevolt
