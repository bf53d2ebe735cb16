// What became of the chunks of a file or image that was read.
#pragma once

#include <cstdint>

namespace trevolt {

struct SChunkCounts {
    std::uint32_t read = 0;    ///< decoded into at least one block
    std::uint32_t skipped = 0; ///< fell on blocks that are not allocated, or was clipped away
    std::uint32_t failed = 0;  ///< bad record, damaged or missing data

    friend bool operator==(const SChunkCounts&, const SChunkCounts&) = default;
};

} // namespace trevolt
