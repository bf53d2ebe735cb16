#include "calibuf/WordPlaneReader.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "calibuf/ChunkPlacer.h"
#include "calibuf/ChunkStructure.h"
#include "calibuf/PlaneLayout.h"
#include "common/OrderedJobs.h"
#include "platform/FileStream.h"

namespace trevolt {
namespace {

constexpr std::uint64_t kReadBytes = std::uint64_t{256} << 10; ///< small chunks come together
constexpr std::uint64_t kMostTimesLarger = 255;                ///< what LZ4 makes of a byte

/// Where chunks go when the area's left top comes to the planes'.
SPlacement PlacementOf(const SChunkHeader& header) {
    return {-std::int64_t{header.originX}, -std::int64_t{header.originY}, 0, 0};
}

/// The blocks of a store of the header's size, none of which keeps anything.
class CSizedTarget : public CChunkTarget {
  public:
    explicit CSizedTarget(const SChunkHeader& header)
        : m_columns(BlocksCovering(header.width, kBlockWidth)),
          m_rows(BlocksCovering(header.height, kBlockHeight)) {}

    bool HasBlock(std::uint32_t index) const override {
        return index % kGridColumns < m_columns && index / kGridColumns < m_rows;
    }
    bool Put(const SChunkPiece& /*piece*/) override { return true; }

  private:
    std::int64_t m_columns;
    std::int64_t m_rows;
};

/// Planes as they take chunks: what blocks have past the area is cut off.
class CPlaneTarget final : public CSizedTarget {
  public:
    /// Planes that hold all their pixels, or take the memory of blocks as chunks fall on them.
    CPlaneTarget(const SChunkHeader& header, CWordPlanes& planes, bool isWhole)
        : CSizedTarget(header), m_planes(planes), m_isWhole(isWhole) {}

    bool Put(const SChunkPiece& piece) override {
        const auto left = static_cast<std::uint32_t>(piece.rect.left);
        const auto top = static_cast<std::uint32_t>(piece.rect.top);
        if (left >= m_planes.Width() || top >= m_planes.Height())
            return true;
        if (!m_isWhole && !m_planes.HoldBlock(left, top)) {
            m_wasRefused = true;
            return false;
        }
        const std::uint32_t right =
            std::min(static_cast<std::uint32_t>(piece.rect.right), m_planes.Width());
        const std::uint32_t bottom =
            std::min(static_cast<std::uint32_t>(piece.rect.bottom), m_planes.Height());
        const auto pitch = static_cast<std::size_t>(piece.area.Width()) * kWordBytes;
        for (std::size_t k = 0; k < m_planes.Kind().wordCount; ++k) {
            const std::byte* from = piece.codec.DecodedPlane(k) + piece.Start() * kWordBytes;
            for (std::uint32_t y = top; y < bottom; ++y, from += pitch)
                std::memcpy(m_planes.At(k, left, y), from, (right - left) * kWordBytes);
        }
        return true;
    }

    /// Whether the memory of a block was refused.
    bool WasRefused() const { return m_wasRefused; }

  private:
    CWordPlanes& m_planes;
    bool m_isWhole;
    bool m_wasRefused = false;
};

/// What a directory comes to.
struct SChunkSum {
    std::uint64_t bytes = 0; ///< compressed
    std::size_t count = 0;
};

/// Nothing when there is a record whose chunk cannot be sound.
std::optional<SChunkSum> SumChunks(const SChunkDirectory& directory, std::size_t elemSize) {
    SChunkSum sum;
    for (std::uint32_t i = 0; i < directory.count; ++i) {
        const SChunkRecord record = directory[i];
        if (IsUnused(record))
            continue;
        if (!IsPossibleChunk(record, elemSize) ||
            record.totalSize * kMostTimesLarger < record.Elements() * elemSize)
            return std::nullopt;
        sum.bytes += record.totalSize;
        ++sum.count;
    }
    return sum;
}

/// Reads the chunks of a plain file in order, some at a time, for threads that decode them.
class CChunkFeed {
  public:
    CChunkFeed(std::istream& stream, const SChunkDirectory& directory)
        : m_stream(stream), m_directory(directory) {}

    /// Records of the directory, the end excluded.
    struct SRun {
        std::uint32_t first;
        std::uint32_t end;
    };

    /// The next records, whose chunks are then in `bytes`, which must hold the largest one; none
    /// behind the last record, and once the file is known to be damaged.
    SRun Next(CBudgetBlock& bytes) {
        const std::lock_guard lock(m_mutex);
        if (!m_isIntact)
            return {m_next, m_next};
        const std::uint32_t first = m_next;
        std::size_t count = 0;
        for (; m_next < m_directory.count; ++m_next) {
            const std::uint32_t size = m_directory[m_next].totalSize;
            if (size > bytes.Size() - count)
                break;
            count += size;
        }
        m_stream.read(reinterpret_cast<char*>(bytes.Data()), static_cast<std::streamsize>(count));
        if (!m_stream)
            m_isIntact = false;
        return {first, m_isIntact ? m_next : first};
    }

    /// Tells that a chunk is not sound.
    void GiveUp() {
        const std::lock_guard lock(m_mutex);
        m_isIntact = false;
    }

    /// Whether all of the file was there and sound, once the threads are done.
    bool IsIntact() const { return m_isIntact; }

  private:
    std::mutex m_mutex;
    std::istream& m_stream;
    const SChunkDirectory& m_directory;
    std::uint32_t m_next = 0;
    bool m_isIntact = true;
};

/// One thread's share of the decoding.
class CPlaneFiller {
  public:
    CPlaneFiller(CPlaneTarget& target, std::size_t elemSize, std::size_t maxElements,
                 std::size_t readBytes)
        : m_placer(target, elemSize, maxElements), m_bytes(readBytes) {}

    bool IsReady() const { return m_placer.IsReady() && static_cast<bool>(m_bytes); }

    void FillFrom(CChunkFeed& feed, const SChunkDirectory& directory, const SPlacement& placement) {
        for (auto run = feed.Next(m_bytes); run.first != run.end; run = feed.Next(m_bytes)) {
            const std::byte* compressed = m_bytes.Data();
            for (std::uint32_t i = run.first; i < run.end; ++i) {
                const SChunkRecord record = directory[i];
                if (IsUnused(record))
                    continue;
                m_placer.Take(record, compressed, placement);
                compressed += record.totalSize;
            }
            if (m_placer.Counts().failed != 0)
                return feed.GiveUp();
        }
    }

  private:
    CChunkPlacer m_placer;
    CBudgetBlock m_bytes;
};

/// One filler a thread; none without memory for all of them.
std::vector<CPlaneFiller> MakeFillers(std::size_t count, CPlaneTarget& target,
                                      const SChunkDirectory& directory, std::size_t elemSize,
                                      std::uint64_t fileBytes) {
    const SLargestChunk largest(directory, elemSize);
    const std::size_t readBytes = std::max<std::size_t>(
        largest.compressedBytes, static_cast<std::size_t>(std::min(kReadBytes, fileBytes)));
    std::vector<CPlaneFiller> fillers;
    fillers.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        fillers.emplace_back(target, elemSize, largest.elements, readBytes);
        if (!fillers.back().IsReady())
            return {};
    }
    return fillers;
}

SPlanesRead WithoutPlanes(Status status, const WordElementKind& kind) {
    return {status, CWordPlanes(kind, 0, 0)};
}

/// Reads chunks that hold each pixel of the area once, if all are sound; nothing if not.
std::optional<SPlanesRead> ReadPlain(std::istream& stream, const SChunkDirectory& directory,
                                     const SChunkHeader& header, const WordElementKind& kind,
                                     std::size_t threads) {
    const auto sum = SumChunks(directory, kind.elemSize);
    if (!sum || sum->count == 0 || sum->bytes > BytesToEnd(stream).value_or(0))
        return std::nullopt;
    CWordPlanes planes(kind, header.width, header.height);
    if (!planes.HoldAll())
        return WithoutPlanes(E_COEF_NOBUFFER, kind);
    CPlaneTarget target(header, planes, true);
    const std::size_t workers = std::clamp<std::size_t>(threads, 1, sum->count);
    std::vector<CPlaneFiller> fillers =
        MakeFillers(workers, target, directory, kind.elemSize, sum->bytes);
    if (fillers.empty())
        return WithoutPlanes(E_COEF_NOBUFFER, kind);
    CChunkFeed feed(stream, directory);
    ShareOut(workers, workers,
             [&](std::size_t i) { fillers[i].FillFrom(feed, directory, PlacementOf(header)); });
    if (!feed.IsIntact())
        return std::nullopt;
    return SPlanesRead{S_OK, std::move(planes)};
}

/// Reads whatever the chunks are, one after the other.
SPlanesRead ReadInOrder(std::istream& stream, const SChunkDirectory& directory,
                        const SChunkHeader& header, const WordElementKind& kind) {
    CWordPlanes planes(kind, header.width, header.height);
    CPlaneTarget target(header, planes, false);
    const SChunksRead read =
        ReadChunks(stream, directory, kind.elemSize, target, PlacementOf(header), AllChunksWanted);
    if (target.WasRefused())
        return WithoutPlanes(E_COEF_NOBUFFER, kind);
    return {read.status, std::move(planes)};
}

} // namespace

SPlanesRead ReadWordPlanes(std::istream& stream, const SChunkHeader& header,
                           const WordElementKind& kind, std::size_t threads) {
    CBudgetBlock records;
    const Status status =
        ReadRectDirectory(stream, header, kind.elemSize, kind.planeCount, records);
    if (Failed(status))
        return WithoutPlanes(status, kind);
    const SChunkDirectory directory{records.Data(), header.recordCount, kind.planeCount};
    const std::streamoff dataAt = stream.tellg();
    const auto coverage =
        NoteStructure(directory, header, header.originX, header.originY, kind.elemSize);
    NoteStrayBytes(stream, directory, header, kind.elemSize);
    if (coverage && coverage->HasEachPixelOnce()) {
        if (auto plain = ReadPlain(stream, directory, header, kind, threads))
            return std::move(*plain);
        stream.clear();
        stream.seekg(dataAt);
    }
    return ReadInOrder(stream, directory, header, kind);
}

Status PassOverChunks(std::istream& stream, const SChunkHeader& header,
                      const WordElementKind& kind) {
    CBudgetBlock records;
    const Status status =
        ReadRectDirectory(stream, header, kind.elemSize, kind.planeCount, records);
    if (Failed(status))
        return status;
    const SChunkDirectory directory{records.Data(), header.recordCount, kind.planeCount};
    NoteStructure(directory, header, header.originX, header.originY, kind.elemSize);
    NoteStrayBytes(stream, directory, header, kind.elemSize);
    CSizedTarget target(header);
    return ReadChunks(stream, directory, kind.elemSize, target, PlacementOf(header),
                      AllChunksWanted)
        .status;
}

} // namespace trevolt
