// What all writers of chunk files share: pieces of the grid as chunks, and the stream's order of
// directory space, chunks, records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <span>
#include <vector>

#include "calibuf/BlockGrid.h"
#include "calibuf/ChunkLayout.h"
#include "trevolt/PixelRect.h"

namespace trevolt {

/// Calls visit(index) for every block of the grid that `rect` touches, in the order of a file's
/// chunks: column by column.
template <class Visit>
void ForEachTouchedBlock(const SPixelRect& rect, const Visit& visit) {
    const SBlockSpan span = BlocksTouchedBy(rect);
    for (std::int64_t column = span.column0; column < span.column1; ++column)
        for (std::int64_t row = span.row0; row < span.row1; ++row)
            visit(BlockIndexAt(column, row));
}

/// The block whose left top is pixel (x, y).
SPixelRect BlockRectAt(std::uint32_t x, std::uint32_t y);

SPixelRect Intersect(const SPixelRect& a, const SPixelRect& b);

/// The record of what `piece` holds of block `index`; its sizes are still 0.
SChunkRecord MakeChunkRecord(std::uint32_t index, const SPixelRect& piece);

/// The records of a file's chunks in the order in which they stand there.
class CChunkRecords {
  public:
    explicit CChunkRecords(std::uint32_t planeCount) : m_planeCount(planeCount) {}

    /// Makes room: so many records are then added without memory being asked for.
    void Reserve(std::size_t count) { m_records.reserve(count); }
    void Add(const SChunkRecord& record) { m_records.push_back(record); }
    std::vector<std::byte> DirectoryBytes() const;

  private:
    std::uint32_t m_planeCount;
    std::vector<SChunkRecord> m_records;
};

void WriteBytes(std::ostream& stream, std::span<const std::byte> bytes);

void WriteBytesAt(std::ostream& stream, std::ostream::pos_type position,
                  std::span<const std::byte> bytes);

/// Writes zeros from the current position: directory space that its records will overwrite.
void WriteZeros(std::ostream& stream, std::uint64_t bytes);

/// A directory at the stream's position and the chunks behind it. Failures stay in the stream's state.
class CChunkStream {
  public:
    /// Reserves a directory of `recordCount` records that list `planeCount` sizes each.
    CChunkStream(std::ostream& stream, std::uint32_t planeCount, std::uint64_t recordCount);

    /// As `CChunkRecords::Reserve`.
    void Reserve(std::size_t count) { m_records.Reserve(count); }

    /// Writes the chunk behind those before it.
    void Add(const SChunkRecord& record, std::span<const std::byte> bytes) {
        WriteBytes(m_stream, bytes);
        m_records.Add(record);
    }

    /// Writes the records of all chunks to where the directory is; what they do not fill stays zero.
    /// The stream then stands behind the last one.
    void WriteDirectory() { WriteBytesAt(m_stream, m_directoryAt, m_records.DirectoryBytes()); }

  private:
    std::ostream& m_stream;
    std::ostream::pos_type m_directoryAt;
    CChunkRecords m_records;
};

} // namespace trevolt
