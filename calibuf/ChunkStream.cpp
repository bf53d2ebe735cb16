#include "calibuf/ChunkStream.h"

#include <algorithm>
#include <array>

namespace trevolt {

SPixelRect BlockRectAt(std::uint32_t x, std::uint32_t y) {
    const auto left = static_cast<std::int32_t>(x);
    const auto top = static_cast<std::int32_t>(y);
    return {left, top, left + static_cast<std::int32_t>(kBlockWidth),
            top + static_cast<std::int32_t>(kBlockHeight)};
}

SPixelRect Intersect(const SPixelRect& a, const SPixelRect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

SChunkRecord MakeChunkRecord(std::uint32_t index, const SPixelRect& piece) {
    return {.index = index,
            .x = static_cast<std::uint32_t>(piece.left),
            .y = static_cast<std::uint32_t>(piece.top),
            .width = static_cast<std::uint16_t>(piece.Width()),
            .height = static_cast<std::uint16_t>(piece.Height())};
}

std::vector<std::byte> CChunkRecords::DirectoryBytes() const {
    const std::size_t recordBytes = ChunkRecordBytes(m_planeCount);
    std::vector<std::byte> bytes(m_records.size() * recordBytes);
    for (std::size_t i = 0; i < m_records.size(); ++i)
        EncodeChunkRecord(m_records[i], m_planeCount, bytes.data() + i * recordBytes);
    return bytes;
}

void WriteBytes(std::ostream& stream, std::span<const std::byte> bytes) {
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
}

void WriteBytesAt(std::ostream& stream, std::ostream::pos_type position,
                  std::span<const std::byte> bytes) {
    stream.seekp(position);
    WriteBytes(stream, bytes);
}

void WriteZeros(std::ostream& stream, std::uint64_t bytes) {
    constexpr std::array<std::byte, 4096> kZeros{};
    while (bytes > 0 && stream) {
        const std::uint64_t piece = std::min<std::uint64_t>(bytes, kZeros.size());
        WriteBytes(stream, std::span(kZeros).first(static_cast<std::size_t>(piece)));
        bytes -= piece;
    }
}

CChunkStream::CChunkStream(std::ostream& stream, std::uint32_t planeCount,
                           std::uint64_t recordCount)
    : m_stream(stream), m_directoryAt(stream.tellp()), m_records(planeCount) {
    WriteZeros(stream, recordCount * ChunkRecordBytes(planeCount));
}

} // namespace trevolt
