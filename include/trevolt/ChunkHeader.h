// The header that word files and memory images begin with.
#pragma once

#include <array>
#include <cstdint>

namespace trevolt {

/// A format identifier as it stands in a file: a GUID in its usual memory layout.
using ChunkFormatId = std::array<std::uint8_t, 16>;

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
