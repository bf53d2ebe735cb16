// How much of the area that a file states its directory holds.
#pragma once

#include <cstddef>
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

/// Measures how a directory holds the area whose left top is (x, y), in the records' own coordinates,
/// and whose size the header states, and notes in the thread's transfer report what is missing.
/// Nothing is noted of a part for single words (`elemSize` 2): extra words go beside a matrix
/// store, whose part of the file is the one that counts. Nothing then, and as above.
std::optional<SCoverage> NoteCoverage(const SChunkDirectory& directory, const SChunkHeader& header,
                                      std::uint64_t x, std::uint64_t y, std::size_t elemSize);

} // namespace trevolt
