// The writers of chunk files and memory images.

#include <algorithm>

#include "calibuf/CaliBuf.h"
#include "calibuf/ChunkStream.h"
#include "calibuf/PlaneCodec.h"

namespace trevolt {
namespace {

/// A part of one block.
struct SPiece {
    const BlockRecord* block;
    SPixelRect rect;
};

SPixelRect BlockRect(const BlockRecord& block) { return BlockRectAt(block.nX, block.nY); }

/// What `rect` covers of the allocated blocks, in the order of a file's chunks.
std::vector<SPiece> PiecesOf(const CCaliBuf& store, const SPixelRect& rect) {
    std::vector<SPiece> pieces;
    ForEachTouchedBlock(rect, [&](std::uint32_t index) {
        const BlockRecord* const block = store.BlockWithData(index);
        if (block == nullptr)
            return;
        const SPixelRect piece = Intersect(BlockRect(*block), rect);
        if (piece.Width() >= 0 && piece.Height() >= 0)
            pieces.push_back({block, piece});
    });
    return pieces;
}

/// Elements of the largest piece.
std::size_t LargestOf(const std::vector<SPiece>& pieces) {
    std::int64_t elements = 0;
    for (const SPiece& piece : pieces)
        elements = std::max(elements, piece.rect.Width() * piece.rect.Height());
    return static_cast<std::size_t>(elements);
}

/// Makes chunks of pieces of a store's blocks, one by one, and hands each to `add(record, bytes)`.
class CChunkMaker {
  public:
    /// For pieces of at most `maxElements` elements.
    explicit CChunkMaker(const CCaliBuf& store, std::size_t maxElements = kBlockElements)
        : m_store(store),
          m_codec(store.ElemSize(), maxElements),
          m_piece(store.ElemSize() * maxElements),
          m_compressed(store.ElemSize() * maxElements * 2) {}

    bool IsReady() const {
        return m_codec.IsReady() && static_cast<bool>(m_piece) && static_cast<bool>(m_compressed);
    }

    template <class Add>
    Status Make(const BlockRecord& block, const SPixelRect& piece, const Add& add) {
        SChunkRecord record = MakeChunkRecord(block.nIndex, piece);
        const Status status =
            m_codec.Compress(m_compressed.Data(), record.totalSize, PackedElements(block, piece),
                             record.planeSizes.data(), record.Elements());
        if (Failed(status))
            return status;
        add(record, std::span<const std::byte>(m_compressed.Data(), record.totalSize));
        return S_OK;
    }

    /// Makes every allocated block a whole chunk, in allocation order; the result is the last one's.
    template <class Add>
    Status MakeAll(const Add& add) {
        Status status = S_OK;
        for (const std::uint32_t index : m_store.UsedBlocks()) {
            const BlockRecord* const block = m_store.BlockWithData(index);
            status = block == nullptr ? E_COEF_NOBUFFER : Make(*block, BlockRect(*block), add);
        }
        return status;
    }

    template <class Add>
    void MakePieces(const std::vector<SPiece>& pieces, const Add& add) {
        for (const SPiece& piece : pieces)
            DropStatus(Make(*piece.block, piece.rect, add)); // a lost chunk leaves the others whole
    }

  private:
    /// The piece's elements row behind row: rows as wide as the block are so already.
    const std::byte* PackedElements(const BlockRecord& block, const SPixelRect& piece) {
        if (piece.Width() == kBlockWidth)
            return block.pData + (static_cast<std::size_t>(piece.top) - block.nY) * kBlockWidth *
                                     m_store.ElemSize();
        m_store.CopyRectOut(block.nIndex, piece, m_piece.Data());
        return m_piece.Data();
    }

    const CCaliBuf& m_store;
    CPlaneCodec m_codec;
    CBudgetBlock m_piece;
    CBudgetBlock m_compressed;
};

/// Whether a rectangle is turned over or larger than the grid.
bool IsBadRect(const SPixelRect& rect) {
    return rect.Width() < 0 || rect.Width() > kGridWidth || rect.Height() < 0 ||
           rect.Height() > kGridHeight;
}

/// What a band adds to the places of its records.
struct SShift {
    std::int32_t x;
    std::int32_t y;

    bool KeepsInGrid(const SPixelRect& rect) const {
        return std::int64_t{rect.left} + x >= 0 && std::int64_t{rect.right} + x <= kGridWidth &&
               std::int64_t{rect.top} + y >= 0 && std::int64_t{rect.bottom} + y <= kGridHeight;
    }

    void Apply(SChunkRecord& record) const {
        constexpr auto kWidth = static_cast<std::int32_t>(kBlockWidth);
        constexpr auto kHeight = static_cast<std::int32_t>(kBlockHeight);
        constexpr auto kColumns = static_cast<std::int32_t>(kGridColumns);
        record.index += static_cast<std::uint32_t>(x / kWidth + y / kHeight * kColumns);
        record.x += static_cast<std::uint32_t>(x);
        record.y += static_cast<std::uint32_t>(y);
    }
};

/// The space that a band has in its file.
struct SBandSpace {
    std::uint64_t recordsAt;    ///< its first record
    std::uint64_t directoryEnd; ///< behind the records of the whole area
    std::uint64_t dataAt;       ///< its first data byte, 0 for the first band

    bool Holds(std::uint64_t recordBytes) const {
        return recordsAt >= kChunkHeaderBytes && recordsAt <= directoryEnd &&
               recordBytes <= directoryEnd - recordsAt && (dataAt == 0 || dataAt >= directoryEnd);
    }

    /// Goes to where the data starts; the first band reserves the directory before it.
    void SeekData(std::ostream& stream) const {
        stream.seekp(static_cast<std::streamoff>(dataAt == 0 ? recordsAt : dataAt));
        if (dataAt == 0)
            WriteZeros(stream, directoryEnd - recordsAt);
    }
};

auto AddTo(CChunkStream& chunks) {
    return [&](const SChunkRecord& record, std::span<const std::byte> bytes) {
        chunks.Add(record, bytes);
    };
}

} // namespace

Status CCaliBuf::WriteAllChunks(std::ostream& stream) const {
    CChunkMaker maker(*this);
    if (!maker.IsReady())
        return E_COEF_NOBUFFER;
    CChunkStream chunks(stream, m_nPlaneCount, UsedBlocks().size());
    const Status status = maker.MakeAll(AddTo(chunks));
    chunks.WriteDirectory();
    return status;
}

Status CCaliBuf::CheckWrittenRect(const SPixelRect& rect) {
    if (rect.top == rect.bottom)
        return E_FAIL;
    return IsBadRect(rect) ? E_COEF_INVALIDARG : S_OK;
}

Status CCaliBuf::WriteRectChunks(std::ostream& stream, const SPixelRect& rect) const {
    if (const Status status = CheckWrittenRect(rect); Failed(status))
        return status;
    const std::vector<SPiece> pieces = PiecesOf(*this, rect);
    CChunkMaker maker(*this, LargestOf(pieces));
    if (!maker.IsReady())
        return E_COEF_NOBUFFER;
    CChunkStream chunks(stream, m_nPlaneCount, BlocksTouchedBy(rect).Count());
    maker.MakePieces(pieces, AddTo(chunks));
    chunks.WriteDirectory();
    return S_OK;
}

Status CCaliBuf::WriteBandChunks(std::ostream& stream, const SPixelRect& band,
                                 const SPixelRect& whole, std::uint64_t& directoryPosition,
                                 std::uint64_t& dataPosition, std::int32_t shiftX,
                                 std::int32_t shiftY) const {
    if (const Status status = CheckWrittenRect(band); Failed(status))
        return status;
    if (IsBadRect(whole))
        return E_COEF_INVALIDARG;
    const std::uint64_t recordBytes = ChunkRecordBytes(m_nPlaneCount);
    const SBandSpace space{
        .recordsAt = directoryPosition == 0 ? kChunkHeaderBytes : directoryPosition,
        .directoryEnd = kChunkHeaderBytes + recordBytes * BlocksTouchedBy(whole).Count(),
        .dataAt = dataPosition};
    const SShift shift{shiftX, shiftY};
    const std::vector<SPiece> pieces = PiecesOf(*this, band);
    if (!space.Holds(recordBytes * pieces.size()) ||
        !std::ranges::all_of(pieces, [&](const SPiece& p) { return shift.KeepsInGrid(p.rect); }))
        return E_COEF_INVALIDARG;
    CChunkMaker maker(*this, LargestOf(pieces));
    if (!maker.IsReady())
        return E_COEF_NOBUFFER;
    space.SeekData(stream);
    CChunkRecords chunks(m_nPlaneCount);
    maker.MakePieces(pieces, [&](SChunkRecord record, std::span<const std::byte> bytes) {
        WriteBytes(stream, bytes);
        shift.Apply(record);
        chunks.Add(record);
    });
    const std::streamoff dataEnd = stream.tellp();
    const std::vector<std::byte> records = chunks.DirectoryBytes();
    WriteBytesAt(stream, static_cast<std::streamoff>(space.recordsAt), records);
    if (dataEnd >= 0)
        dataPosition = static_cast<std::uint64_t>(dataEnd);
    directoryPosition = space.recordsAt + records.size();
    return S_OK;
}

std::uint64_t CCaliBuf::MaxMemoryImageBytes() const {
    return kChunkHeaderBytes +
           UsedBlocks().size() * std::uint64_t{ChunkRecordBytes(m_nPlaneCount) + CompressedBound()};
}

Status CCaliBuf::SaveToMemory(std::byte* destination, std::uint32_t originX, std::uint32_t originY,
                              std::uint64_t* imageBytes) const {
    CChunkMaker maker(*this);
    if (destination == nullptr || !maker.IsReady())
        return E_FAIL;
    const auto count = static_cast<std::uint32_t>(UsedBlocks().size());
    std::byte* const records = destination + kChunkHeaderBytes;
    std::byte* data = records + ChunkRecordBytes(m_nPlaneCount) * count;
    std::fill(records, data, std::byte{0}); // for chunks that fail
    CChunkRecords chunks(m_nPlaneCount);
    const auto add = [&](const SChunkRecord& record, std::span<const std::byte> bytes) {
        data = std::copy(bytes.begin(), bytes.end(), data);
        chunks.Add(record);
    };
    const Status status = maker.MakeAll(add);
    const ChunkHeaderBytes header = EncodeChunkHeader({.formatId = kChromaChunkFormat,
                                                       .originX = originX,
                                                       .originY = originY,
                                                       .width = m_nWidth,
                                                       .height = m_nHeight,
                                                       .recordCount = count});
    std::copy(header.begin(), header.end(), destination);
    const std::vector<std::byte> directory = chunks.DirectoryBytes();
    std::copy(directory.begin(), directory.end(), records);
    if (imageBytes != nullptr)
        *imageBytes = static_cast<std::uint64_t>(data - destination);
    return status;
}

} // namespace trevolt
