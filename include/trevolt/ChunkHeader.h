// The header that word files and memory images begin with.
#pragma once

#include <array>
#include <cstdint>

namespace trevolt {

/// A format identifier as it stands in a file: a GUID in its usual memory layout.
using ChunkFormatId = std::array<std::uint8_t, 16>;

/// {6F2EB08F-C395-4016-8420-FBC16614B30A}: memory images and the plain chroma store.
inline constexpr ChunkFormatId kChromaChunkFormat{0x8F, 0xB0, 0x2E, 0x6F, 0x95, 0xC3, 0x16, 0x40,
                                                  0x84, 0x20, 0xFB, 0xC1, 0x66, 0x14, 0xB3, 0x0A};
/// {81555D7F-5A30-4958-B765-9E3D63B728E8}: the brightness store.
inline constexpr ChunkFormatId kBrightChunkFormat{0x7F, 0x5D, 0x55, 0x81, 0x30, 0x5A, 0x58, 0x49,
                                                  0xB7, 0x65, 0x9E, 0x3D, 0x63, 0xB7, 0x28, 0xE8};
/// {A23034AE-2359-413B-96B9-6F93737CA368}: the brightness store, second layout.
inline constexpr ChunkFormatId kBrightChunkFormat2{0xAE, 0x34, 0x30, 0xA2, 0x59, 0x23, 0x3B, 0x41,
                                                   0x96, 0xB9, 0x6F, 0x93, 0x73, 0x7C, 0xA3, 0x68};
/// {F4ED140C-FC3A-4ED3-97CB-786E63DEAF99}: the chroma store, second layout (with extra words).
inline constexpr ChunkFormatId kChromaChunkFormat2{0x0C, 0x14, 0xED, 0xF4, 0x3A, 0xFC, 0xD3, 0x4E,
                                                   0x97, 0xCB, 0x78, 0x6E, 0x63, 0xDE, 0xAF, 0x99};
/// {E8757D78-79A0-47D0-AF66-80F61B2FB479}: the virtual-green brightness store.
inline constexpr ChunkFormatId kVirtualGreenBrightChunkFormat{
    0x78, 0x7D, 0x75, 0xE8, 0xA0, 0x79, 0xD0, 0x47, 0xAF, 0x66, 0x80, 0xF6, 0x1B, 0x2F, 0xB4, 0x79};
/// {DFF152B6-8A3F-4C68-A538-B724DACB6BF4}: the virtual-green chroma store.
inline constexpr ChunkFormatId kVirtualGreenChromaChunkFormat{
    0xB6, 0x52, 0xF1, 0xDF, 0x3F, 0x8A, 0x68, 0x4C, 0xA5, 0x38, 0xB7, 0x24, 0xDA, 0xCB, 0x6B, 0xF4};

inline constexpr std::uint32_t kChunkFormatVersion = 1;

/// The header's fields.
struct SChunkHeader {
    ChunkFormatId formatId{};
    std::uint32_t version = kChunkFormatVersion;
    std::uint32_t originX = 0; ///< pixel column of the stored area's left edge
    std::uint32_t originY = 0; ///< pixel row of the stored area's top edge
    std::uint32_t width = 0;   ///< pixels
    std::uint32_t height = 0;  ///< pixels
    std::uint32_t recordCount = 0;
    std::uint8_t fileKind = 0;                ///< of the owning coefficient object
    std::array<std::uint8_t, 16> ownerData{}; ///< zero when not given
    std::uint8_t ownerFlag = 0;               ///< zero when not given
    std::uint32_t directoryOffset = 0;        ///< single-word stores only: see the readers

    friend bool operator==(const SChunkHeader&, const SChunkHeader&) = default;
};

} // namespace trevolt
