// What callers hand to a coefficient object's view transfers, and what it tells of its store.
#pragma once

#include <cstdint>

namespace trevolt {

/// A caller's pixels, whole elements of the store's words, not owned. Row r starts at
/// words + r × pitch × (words an element).
struct SWordView {
    const std::uint16_t* words = nullptr;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Elements from row to row, at least the width of what lies in the store.
    std::uint32_t pitch = 0;
};

/// As SWordView, to be written.
struct SWordTarget {
    std::uint16_t* words = nullptr;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t pitch = 0;
};

struct SStoreInfo {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t elementBytes = 0;
    std::uint32_t planeCount = 0; ///< sizes in a chunk record
    std::uint32_t blockCount = 0; ///< allocated blocks
    std::uint32_t bytesInUse = 0;
    std::uint64_t sizeLimit = 0;
    std::uint64_t maxImageBytes = 0; ///< what a memory image may need

    friend bool operator==(const SStoreInfo&, const SStoreInfo&) = default;
};

} // namespace trevolt
