#include "calibuf/TurnedChunkWriter.h"

#include <algorithm>
#include <span>
#include <vector>

#include "calibuf/ChunkStream.h"
#include "calibuf/PlaneCodec.h"
#include "common/ElementTurn.h"
#include "common/HeldExceptions.h"
#include "common/OrderedJobs.h"
#include "common/SequencedStep.h"
#include "trevolt/MemoryBudget.h"

namespace trevolt {
namespace {

/// What one block has of the turned picture.
struct STurnedPiece {
    std::uint32_t index;
    SPixelRect rect;
};

/// In the order of a file's chunks.
std::vector<STurnedPiece> PiecesOf(const SPixelRect& picture) {
    std::vector<STurnedPiece> pieces;
    ForEachTouchedBlock(picture, [&](std::uint32_t index) {
        const SPixelRect block =
            BlockRectAt(index % kGridColumns * kBlockWidth, index / kGridColumns * kBlockHeight);
        pieces.push_back({index, Intersect(block, picture)});
    });
    return pieces;
}

/// A plane's rows as the turn takes them, with what lies beyond the plane.
class CPlaneRows {
  public:
    CPlaneRows(const CWordPlanes& planes, std::size_t k, std::uint16_t beyond)
        : m_planes(planes),
          m_plane(planes.FindPlane(k)),
          m_width(planes.Width()),
          m_height(planes.Height()),
          m_k(k),
          m_beyond(beyond) {}

    const std::uint16_t* operator()(std::int64_t x, std::int64_t y, std::int32_t count) const {
        const auto column = static_cast<std::uint32_t>(x);
        const auto row = static_cast<std::uint32_t>(y);
        const auto length = static_cast<std::uint32_t>(count);
        const bool isInside = row < m_height && column + length <= m_width;
        if (isInside && m_plane != nullptr)
            return m_plane + std::size_t{row} * m_width + column;
        if (const std::uint16_t* const run =
                isInside ? m_planes.FindRun(m_k, column, row, length) : nullptr)
            return run;
        for (std::uint32_t done = 0; done < length;) {
            const std::uint32_t toEdge = kBlockWidth - (column + done) % kBlockWidth;
            const std::uint32_t part = std::min(length - done, toEdge);
            FillRun(column + done, row, part, &m_run[done]);
            done += part;
        }
        return m_run.data();
    }

  private:
    /// Puts the `count` words from (x, y) on, all of one block's columns, at `to`.
    void FillRun(std::uint32_t x, std::uint32_t y, std::uint32_t count, std::uint16_t* to) const {
        const std::uint32_t inside = x < m_width && y < m_height ? std::min(count, m_width - x) : 0;
        const std::uint16_t* const words =
            inside == 0 ? nullptr : m_planes.FindRun(m_k, x, y, inside);
        if (words == nullptr)
            std::fill_n(to, inside, m_planes.Kind().defaultWords[m_k]);
        else
            std::copy_n(words, inside, to);
        std::fill_n(to + inside, count - inside, m_beyond);
    }

    const CWordPlanes& m_planes;
    const std::uint16_t* m_plane; ///< null where the planes lie in blocks
    std::uint32_t m_width;
    std::uint32_t m_height;
    std::size_t m_k;
    std::uint16_t m_beyond;
    mutable std::array<std::uint16_t, kTurnTile> m_run{}; ///< a run that is not held in one piece
};

/// Makes chunks of turned planes, one after the other, in the same memory.
class CTurnedChunk {
  public:
    CTurnedChunk(const WordElementKind& kind, std::size_t maxElements)
        : m_codec(kind.elemSize, maxElements),
          m_bytes(CPlaneCodec::MostCompressedBytes(kind.wordCount, maxElements)) {}

    bool IsReady() const { return m_codec.IsReady() && static_cast<bool>(m_bytes); }

    void Make(const CWordPlanes& planes, const SPlaneTurn& turn, const STurnedPiece& piece) {
        m_record = MakeChunkRecord(piece.index, piece.rect);
        const SPixelRect rect = turn.InPicture(piece.rect);
        for (std::size_t k = 0; k < planes.Kind().wordCount; ++k)
            GatherTurned(turn.code, turn.size.width, turn.size.height, rect,
                         CPlaneRows(planes, k, turn.beyond[k]), m_codec.Plane(k),
                         piece.rect.Width());
        m_record.totalSize =
            m_codec.CompressFilled(m_bytes.Data(), m_record.planeSizes.data(), m_record.Elements());
    }

    const SChunkRecord& Record() const { return m_record; }
    std::span<const std::byte> Bytes() const { return {m_bytes.Data(), m_record.totalSize}; }

  private:
    CPlaneCodec m_codec;
    CBudgetBlock m_bytes;
    SChunkRecord m_record;
};

/// One for each thread; none without memory for all of them.
std::vector<CTurnedChunk> MakeChunks(std::size_t count, const WordElementKind& kind,
                                     const SPixelRect& picture) {
    const auto elements =
        static_cast<std::size_t>(std::min<std::int64_t>(picture.Width(), kBlockWidth) *
                                 std::min<std::int64_t>(picture.Height(), kBlockHeight));
    std::vector<CTurnedChunk> chunks;
    chunks.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        chunks.emplace_back(kind, elements);
        if (!chunks.back().IsReady())
            return {};
    }
    return chunks;
}

Status WriteChunks(std::ostream& stream, const CWordPlanes& planes, const SPlaneTurn& turn,
                   std::size_t threads) {
    const WordElementKind& kind = planes.Kind();
    const std::vector<STurnedPiece> pieces = PiecesOf(turn.Rect());
    const std::size_t workers = std::clamp<std::size_t>(threads, 1, pieces.size());
    std::vector<CTurnedChunk> chunks = MakeChunks(workers, kind, turn.Rect());
    if (chunks.empty())
        return E_COEF_NOBUFFER;
    CChunkStream output(stream, kind.planeCount, pieces.size());
    output.Reserve(pieces.size()); // a thread that adds has nobody to catch what that throws
    CSequencedStep adding;
    ShareOut(pieces.size(), workers, [&](std::size_t i) {
        // The other threads hold one piece each at most: of as many before this one as there are
        // chunks, one is added, so the first of them is.
        CTurnedChunk& chunk = chunks[i % chunks.size()];
        chunk.Make(planes, turn, pieces[i]);
        return adding.Do(i, [&] {
            output.Add(chunk.Record(), chunk.Bytes());
            return stream.good();
        });
    });
    output.WriteDirectory();
    return S_OK;
}

} // namespace

SPixelRect SPlaneTurn::Rect() const {
    const PixelSize turned = CQuarterTurn(code, size.width, size.height).TurnedSize();
    return {static_cast<std::int32_t>(place.x), static_cast<std::int32_t>(place.y),
            static_cast<std::int32_t>(place.x + turned.width),
            static_cast<std::int32_t>(place.y + turned.height)};
}

SPixelRect SPlaneTurn::InPicture(const SPixelRect& rect) const {
    const auto left = static_cast<std::int32_t>(place.x);
    const auto top = static_cast<std::int32_t>(place.y);
    return {rect.left - left, rect.top - top, rect.right - left, rect.bottom - top};
}

Status WriteTurnedChunks(std::ostream& stream, const CWordPlanes& planes, const SPlaneTurn& turn,
                         std::size_t threads) {
    return HoldingExceptions(stream, [&] { return WriteChunks(stream, planes, turn, threads); });
}

} // namespace trevolt
