// The layout of chunk files, shared by their readers and writers: a header of 168 bytes, a
// directory of chunk records, the compressed chunks. docs/formats/chunk.md describes it with an
// example. All integers are little-endian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <ostream>

#include "calibuf/WordElementKind.h"
#include "trevolt/ChunkHeader.h"

namespace trevolt {

// The identifiers that are not one word kind's alone; the others stand in the kinds' rows.

/// {6F2EB08F-C395-4016-8420-FBC16614B30A}: memory images of every store, and the plain chroma files.
inline constexpr ChunkFormatId kChromaChunkFormat{0x8F, 0xB0, 0x2E, 0x6F, 0x95, 0xC3, 0x16, 0x40,
                                                  0x84, 0x20, 0xFB, 0xC1, 0x66, 0x14, 0xB3, 0x0A};
/// {A23034AE-2359-413B-96B9-6F93737CA368}: brightness files in a second layout, which nothing here
/// reads or writes.
inline constexpr ChunkFormatId kBrightChunkFormat2{0xAE, 0x34, 0x30, 0xA2, 0x59, 0x23, 0x3B, 0x41,
                                                   0x96, 0xB9, 0x6F, 0x93, 0x73, 0x7C, 0xA3, 0x68};
/// {F4ED140C-FC3A-4ED3-97CB-786E63DEAF99}: chroma files in their second layout, with extra words.
inline constexpr ChunkFormatId kChromaChunkFormat2{0x0C, 0x14, 0xED, 0xF4, 0x3A, 0xFC, 0xD3, 0x4E,
                                                   0x97, 0xCB, 0x78, 0x6E, 0x63, 0xDE, 0xAF, 0x99};

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

/// The header at the stream's position, behind which the stream then stands. Nothing, and the stream
/// has failed, when it ends before; the fields are not checked.
std::optional<SChunkHeader> ReadChunkHeader(std::istream& stream);

/// Whether a header can lead to a directory there.
constexpr bool IsDirectoryOffset(std::streamoff position) {
    return position >= 0 && position <= std::streamoff{UINT32_MAX};
}

/// Writes the header's 168 bytes at the stream's position.
void WriteChunkHeader(std::ostream& stream, const SChunkHeader& header);

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
