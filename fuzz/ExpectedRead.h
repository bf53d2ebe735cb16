// What a read of chunks must come to, reckoned the slow way: record by record from the input's
// bytes, without the readers and their codec.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <lz4.h>

#include "calibuf/CaliBuf.h"
#include "calibuf/ChunkDirectory.h"
#include "calibuf/PlaneCodec.h"
#include "calibuf/WordElementKind.h"

namespace trevolt::fuzz {

/// How a reader takes its input.
struct SReading {
    std::uint64_t directoryAt = kChunkHeaderBytes;
    std::int64_t shiftX = 0;
    std::int64_t shiftY = 0;
    std::uint32_t clipWidth = 0; ///< nothing is clipped unless both are non-zero
    std::uint32_t clipHeight = 0;
    std::uint64_t firstIndex = 0; ///< only records of blocks from here
    std::uint64_t endIndex = std::uint64_t{1} << 32;

    bool Wants(const SChunkRecord& record) const {
        return record.index >= firstIndex && record.index < endIndex;
    }
};

struct SExpectedRead {
    Status status = S_OK;
    SChunkCounts counts{};
    bool endsTooEarly = false;
    std::uint64_t dataEnd = 0; ///< behind the data of the last record
};

/// The directory that `reading` finds in the input; nothing when it is not there whole.
inline std::optional<SChunkDirectory> DirectoryOf(std::span<const std::byte> input,
                                                  const CCaliBuf& store, const SReading& reading) {
    if (input.size() < kChunkHeaderBytes || reading.directoryAt > input.size())
        return std::nullopt;
    const std::uint32_t count = DecodeChunkHeader(input.data()).recordCount;
    const std::uint64_t bytes = std::uint64_t{count} * ChunkRecordBytes(store.PlaneCount());
    if (bytes > input.size() - reading.directoryAt)
        return std::nullopt;
    return SChunkDirectory{input.data() + reading.directoryAt, count, store.PlaneCount()};
}

/// Reckons a read, chunk by chunk.
class CReckoner {
  public:
    CReckoner(const CCaliBuf& store, const SReading& reading)
        : m_store(store), m_reading(reading) {}

    SExpectedRead Reckon(std::span<const std::byte> input) {
        const auto directory = DirectoryOf(input, m_store, m_reading);
        if (!directory)
            return {.status = E_FAIL, .endsTooEarly = true};
        std::uint64_t at = m_reading.directoryAt + std::uint64_t{directory->count} *
                                                       ChunkRecordBytes(directory->planeCount);
        for (std::uint32_t i = 0; i < directory->count; ++i) {
            const SChunkRecord record = (*directory)[i];
            const std::uint64_t from = at;
            at += record.totalSize;
            if (record.Elements() == 0 && record.totalSize == 0)
                continue;
            m_read.endsTooEarly |= at > input.size();
            if (m_reading.Wants(record))
                Take(record, at > input.size() ? nullptr : input.data() + from);
        }
        m_read.dataEnd = at;
        return m_read;
    }

  private:
    void Take(const SChunkRecord& record, const std::byte* compressed) {
        const std::int64_t left = record.x + m_reading.shiftX;
        const std::int64_t top = record.y + m_reading.shiftY;
        if (!IsPossibleChunk(record, m_store.ElemSize()) || left < 0 || top < 0)
            return Fail();
        FindBlocks(record, left, top);
        if (compressed == nullptr) {
            ++m_read.counts.failed;
            if (m_found > 0)
                m_read.status = E_FAIL;
            return;
        }
        if (m_blocks == 1 && m_found == 0) {
            ++m_read.counts.skipped;
            return;
        }
        if (!Decodes(record, compressed))
            return Fail();
        m_read.status = S_OK;
        ++(m_taken > 0 ? m_read.counts.read : m_read.counts.skipped);
    }

    void Fail() {
        ++m_read.counts.failed;
        m_read.status = E_FAIL;
    }

    /// Counts the blocks under a chunk, those that are there, and those that clipping leaves a part.
    void FindBlocks(const SChunkRecord& record, std::int64_t left, std::int64_t top) {
        const bool isClipped = m_reading.clipWidth != 0 && m_reading.clipHeight != 0;
        m_blocks = m_found = m_taken = 0;
        for (std::int64_t x = left; x < left + record.width;
             x = (x / kBlockWidth + 1) * kBlockWidth)
            for (std::int64_t y = top; y < top + record.height;
                 y = (y / kBlockHeight + 1) * kBlockHeight) {
                ++m_blocks;
                if (m_store.BlockWithData(BlockIndexAt(x / kBlockWidth, y / kBlockHeight)) ==
                    nullptr)
                    continue;
                ++m_found;
                if (!isClipped ||
                    (x - left < m_reading.clipWidth && y - top < m_reading.clipHeight))
                    ++m_taken;
            }
    }

    /// Whether each of the planes is an LZ4 block of just its words.
    bool Decodes(const SChunkRecord& record, const std::byte* compressed) {
        const std::size_t planeBytes = std::size_t{2} * record.Elements();
        m_plane.resize(planeBytes);
        std::uint32_t left = record.totalSize;
        for (std::size_t k = 0; k < FindWordElementKind(m_store.ElemSize())->wordCount; ++k) {
            const std::uint32_t size = record.planeSizes[k];
            if (size > left ||
                LZ4_decompress_safe(reinterpret_cast<const char*>(compressed), m_plane.data(),
                                    static_cast<int>(size),
                                    static_cast<int>(planeBytes)) != static_cast<int>(planeBytes))
                return false;
            compressed += size;
            left -= size;
        }
        return true;
    }

    const CCaliBuf& m_store;
    const SReading& m_reading;
    SExpectedRead m_read;
    std::vector<char> m_plane;
    int m_blocks = 0;
    int m_found = 0;
    int m_taken = 0;
};

/// The pixels of the stated size, its corner at (x, y), that no record holds, painted one by one;
/// nothing where that would take long.
inline std::optional<std::uint64_t> PaintMissingPixels(const SChunkDirectory& directory,
                                                       const SChunkHeader& header, std::uint64_t x,
                                                       std::uint64_t y) {
    constexpr std::uint64_t kMostPixels = 1 << 16;
    constexpr std::uint32_t kMostRecords = 64;
    const std::uint64_t pixels = std::uint64_t{header.width} * header.height;
    if (pixels > kMostPixels || directory.count > kMostRecords)
        return std::nullopt;
    std::vector<bool> isHeld(static_cast<std::size_t>(pixels));
    for (std::uint32_t i = 0; i < directory.count; ++i) {
        const SChunkRecord record = directory[i];
        const std::uint64_t right =
            std::uint64_t{record.x} + std::min<std::uint32_t>(record.width, kBlockWidth);
        const std::uint64_t bottom =
            std::uint64_t{record.y} + std::min<std::uint32_t>(record.height, kBlockHeight);
        for (std::uint64_t row = std::max<std::uint64_t>(record.y, y);
             row < std::min(bottom, y + header.height); ++row)
            for (std::uint64_t column = std::max<std::uint64_t>(record.x, x);
                 column < std::min(right, x + header.width); ++column)
                isHeld[static_cast<std::size_t>((row - y) * header.width + column - x)] = true;
    }
    return static_cast<std::uint64_t>(std::ranges::count(isHeld, false));
}

} // namespace trevolt::fuzz
