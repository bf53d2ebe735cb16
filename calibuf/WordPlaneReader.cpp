#include "calibuf/WordPlaneReader.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <vector>

#include "calibuf/ChunkCoverage.h"
#include "calibuf/ChunkDirectory.h"
#include "calibuf/PlaneCodec.h"
#include "common/OrderedJobs.h"
#include "platform/FileStream.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

constexpr std::uint64_t kReadBytes = std::uint64_t{256} << 10; ///< small chunks come together
constexpr std::uint64_t kMostTimesLarger = 255;                ///< what LZ4 makes of a byte

/// What a chunk holds of the area, counted from the area's left top.
struct SAreaPiece {
    std::size_t x;
    std::size_t y;
    std::size_t width;
    std::size_t height;
};

/// Nothing for a chunk that begins outside the area.
std::optional<SAreaPiece> FindAreaPiece(const SChunkRecord& record, const SChunkHeader& header) {
    if (record.x < header.originX || record.y < header.originY)
        return std::nullopt;
    const std::uint32_t x = record.x - header.originX;
    const std::uint32_t y = record.y - header.originY;
    if (x >= header.width || y >= header.height)
        return std::nullopt;
    return SAreaPiece{x, y, std::min<std::uint32_t>(record.width, header.width - x),
                      std::min<std::uint32_t>(record.height, header.height - y)};
}

/// What a directory comes to, when its chunks may stand for the header's area.
struct SPlainChunks {
    std::uint64_t pixels = 0; ///< of the area, counted chunk by chunk
    std::uint64_t bytes = 0;  ///< compressed
    std::uint32_t count = 0;
};

/// Nothing when there is a record that no plain file has.
std::optional<SPlainChunks> SumPlainChunks(const SChunkDirectory& directory,
                                           const SChunkHeader& header, std::size_t elemSize) {
    SPlainChunks sum;
    for (std::uint32_t i = 0; i < directory.count; ++i) {
        const SChunkRecord record = directory[i];
        if (IsUnused(record))
            continue;
        const auto piece = FindAreaPiece(record, header);
        if (!piece || !IsPossibleChunk(record, elemSize) ||
            record.totalSize * kMostTimesLarger < record.Elements() * elemSize)
            return std::nullopt;
        sum.pixels += piece->width * piece->height;
        sum.bytes += record.totalSize;
        ++sum.count;
    }
    return sum;
}

/// Whether the chunks hold each pixel of the header's area once.
bool IsCoveredOnce(const SChunkDirectory& directory, const SPlainChunks& chunks,
                   const SChunkHeader& header) {
    const SStatedArea area{header.originX, header.originY,
                           std::uint64_t{header.originX} + header.width,
                           std::uint64_t{header.originY} + header.height};
    return chunks.pixels == area.Pixels() &&
           (chunks.count == 1 || CountMissingPixels(directory, area) == 0U);
}

/// Reads the chunks of a file in order, some at a time, for threads that decode them.
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
    CPlaneFiller(const WordElementKind& kind, std::size_t maxElements, std::size_t readBytes)
        : m_codec(kind.elemSize, maxElements), m_bytes(readBytes) {}

    bool IsReady() const { return m_codec.IsReady() && static_cast<bool>(m_bytes); }

    void FillFrom(CChunkFeed& feed, const SChunkDirectory& directory, const SChunkHeader& header,
                  CWordPlanes& planes) {
        for (auto run = feed.Next(m_bytes); run.first != run.end; run = feed.Next(m_bytes)) {
            const std::byte* compressed = m_bytes.Data();
            for (std::uint32_t i = run.first; i < run.end; ++i) {
                const SChunkRecord record = directory[i];
                if (IsUnused(record))
                    continue;
                if (Failed(m_codec.Decode(record, compressed)))
                    return feed.GiveUp();
                Put(record, *FindAreaPiece(record, header), planes);
                compressed += record.totalSize;
            }
        }
    }

  private:
    void Put(const SChunkRecord& record, const SAreaPiece& piece, CWordPlanes& planes) const {
        for (std::size_t k = 0; k < planes.WordCount(); ++k) {
            const std::byte* from = m_codec.DecodedPlane(k);
            for (std::size_t row = 0; row < piece.height; ++row) {
                std::memcpy(planes.Row(k, piece.y + row) + piece.x, from,
                            piece.width * sizeof(std::uint16_t));
                from += record.width * sizeof(std::uint16_t);
            }
        }
    }

    CPlaneCodec m_codec;
    CBudgetBlock m_bytes;
};

/// One filler a thread; none without memory for all of them.
std::vector<CPlaneFiller> MakeFillers(std::size_t count, const WordElementKind& kind,
                                      const SLargestChunk& largest, std::uint64_t fileBytes) {
    const std::size_t readBytes = std::max<std::size_t>(
        largest.compressedBytes, static_cast<std::size_t>(std::min(kReadBytes, fileBytes)));
    std::vector<CPlaneFiller> fillers;
    fillers.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        fillers.emplace_back(kind, largest.elements, readBytes);
        if (!fillers.back().IsReady())
            return {};
    }
    return fillers;
}

} // namespace

std::optional<CWordPlanes> ReadWordPlanes(std::istream& stream, const SChunkHeader& header,
                                          const WordElementKind& kind, std::size_t threads) {
    CBudgetBlock records;
    if (Failed(ReadDirectory(stream, header.recordCount, kind.planeCount, records)))
        return std::nullopt;
    const SChunkDirectory directory{records.Data(), header.recordCount, kind.planeCount};
    const auto chunks = SumPlainChunks(directory, header, kind.elemSize);
    if (!chunks || chunks->bytes > BytesToEnd(stream).value_or(0) ||
        !IsCoveredOnce(directory, *chunks, header))
        return std::nullopt;
    CWordPlanes planes(kind.wordCount, header.width, header.height);
    if (!planes)
        return std::nullopt;
    const std::size_t workers =
        std::min<std::size_t>(std::max<std::size_t>(threads, 1), chunks->count);
    std::vector<CPlaneFiller> fillers =
        MakeFillers(workers, kind, SLargestChunk(directory, kind.elemSize), chunks->bytes);
    if (fillers.empty())
        return std::nullopt;
    CChunkFeed feed(stream, directory);
    ShareOut(workers, workers,
             [&](std::size_t i) { fillers[i].FillFrom(feed, directory, header, planes); });
    if (!feed.IsIntact())
        return std::nullopt;
    return planes;
}

} // namespace trevolt
