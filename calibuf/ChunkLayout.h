// The layout of chunk files, shared by their readers and writers: a header of 168 bytes, a
// directory of chunk records, the compressed chunks. docs/formats/chunk.md describes it with an
// example. All integers are little-endian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "calibuf/WordElementKind.h"
#include "trevolt/ChunkHeader.h"

namespace trevolt {

inline constexpr std::size_t kChunkHeaderBytes = 168;
using ChunkHeaderBytes = std::array<std::byte, kChunkHeaderBytes>;

/// Offsets of the header's fields; what lies between and behind them is zero.
namespace chunk_header {
inline constexpr std::size_t kFormatId = 0;         ///< 16 bytes
inline constexpr std::size_t kVersion = 16;         ///< u32
inline constexpr std::size_t kOriginX = 20;         ///< u32
inline constexpr std::size_t kOriginY = 24;         ///< u32
inline constexpr std::size_t kWidth = 28;           ///< u32
inline constexpr std::size_t kHeight = 32;          ///< u32
inline constexpr std::size_t kRecordCount = 36;     ///< u32
inline constexpr std::size_t kFileKind = 67;        ///< u8
inline constexpr std::size_t kOwnerData = 69;       ///< 16 bytes
inline constexpr std::size_t kOwnerFlag = 85;       ///< u8
inline constexpr std::size_t kDirectoryOffset = 86; ///< u32, not aligned
} // namespace chunk_header

/// The 168 bytes of a header.
ChunkHeaderBytes EncodeChunkHeader(const SChunkHeader& header);

/// The fields in the 168 bytes at `bytes`; nothing is checked.
SChunkHeader DecodeChunkHeader(const std::byte* bytes);

/// Offsets of a record's fields.
namespace chunk_record {
inline constexpr std::size_t kIndex = 0;       ///< u32
inline constexpr std::size_t kX = 4;           ///< u32
inline constexpr std::size_t kY = 8;           ///< u32
inline constexpr std::size_t kWidth = 12;      ///< u16
inline constexpr std::size_t kHeight = 14;     ///< u16
inline constexpr std::size_t kTotalSize = 16;  ///< u32
inline constexpr std::size_t kPlaneSizes = 20; ///< planeCount × u32
} // namespace chunk_record

/// One entry of the directory.
struct SChunkRecord {
    std::uint32_t index = 0;                           ///< block index of the chunk
    std::uint32_t x = 0;                               ///< left edge in pixels
    std::uint32_t y = 0;                               ///< top edge in pixels
    std::uint16_t width = 0;                           ///< elements, at most 256
    std::uint16_t height = 0;                          ///< rows, at most 128
    std::uint32_t totalSize = 0;                       ///< compressed bytes of all planes
    std::array<std::uint32_t, kMaxWords> planeSizes{}; ///< compressed bytes of each word plane

    std::uint32_t Elements() const { return std::uint32_t{width} * height; }
    friend bool operator==(const SChunkRecord&, const SChunkRecord&) = default;
};

/// Bytes of a record that lists `planeCount` sizes.
constexpr std::size_t ChunkRecordBytes(std::uint32_t planeCount) {
    return chunk_record::kPlaneSizes + sizeof(std::uint32_t) * planeCount;
}

/// Writes the `ChunkRecordBytes(planeCount)` bytes of a record; `planeCount` is at most
/// `kMaxWords`.
void EncodeChunkRecord(const SChunkRecord& record, std::uint32_t planeCount, std::byte* bytes);

/// The record in the `ChunkRecordBytes(planeCount)` bytes at `bytes`; nothing is checked.
SChunkRecord DecodeChunkRecord(const std::byte* bytes, std::uint32_t planeCount);

} // namespace trevolt
