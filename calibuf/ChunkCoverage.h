// How much of the area that a file states its directory holds.
#pragma once

#include <cstdint>
#include <optional>

#include "calibuf/ChunkDirectory.h"

namespace trevolt {

/// An area in pixels, right and bottom exclusive. In 64 bits: origin and size of a file together
/// pass 32.
struct SStatedArea {
    std::uint64_t left;
    std::uint64_t top;
    std::uint64_t right;
    std::uint64_t bottom;

    std::uint64_t Pixels() const { return (right - left) * (bottom - top); }
};

/// How records hold the pixels of an area.
struct SCoverage {
    std::uint64_t missing = 0;  ///< in no record's rectangle
    std::uint64_t repeated = 0; ///< in those of several records

    bool HasEachPixelOnce() const { return missing == 0 && repeated == 0; }
};

/// How the records hold `area` (right and bottom not below left and top, each less than 2^32 away).
/// A record larger than a block counts as one of a block's size. Whether the chunks themselves are
/// sound is not looked at. Memory and time are in proportion to the records, whatever the area.
/// Nothing when the memory is refused, which the thread's transfer report tells.
std::optional<SCoverage> MeasureCoverage(const SChunkDirectory& directory, const SStatedArea& area);

} // namespace trevolt
