// Hints to the cache for moving elements to planes and back. Short stores that fill a line, or many
// lines by turns, wait for each line unless it was asked for. All of this becomes part of its
// callers, so that it is compiled for the same processors as they.
#pragma once

#include <cstddef>
#include <cstdint>

#include "calibuf/PlaneTranspose.h"

namespace trevolt {

inline constexpr std::size_t kLineBytes = 64; ///< a cache line

/// Asks for the line `ahead` bytes behind `at`. It may lie behind what is ever written: nothing is
/// touched.
[[gnu::always_inline]] inline void PrefetchForWriting(const void* at, std::size_t ahead) {
    constexpr int kForWriting = 1;
    const std::uintptr_t line = reinterpret_cast<std::uintptr_t>(at) + ahead;
    __builtin_prefetch(reinterpret_cast<const void*>(line), kForWriting); // NOLINT(*-no-int-to-ptr)
}

/// Asks for a line of every plane, a few lines ahead of element `e`, where a line begins.
[[gnu::always_inline]] inline void PrefetchPlanes(const std::uint16_t* planes, std::size_t e,
                                                  const SPlaneLayout& layout) {
    constexpr std::size_t kAhead = 4 * kLineBytes;
    if (e * sizeof(std::uint16_t) % kLineBytes != 0)
        return;
    for (std::size_t k = 0; k < layout.wordCount; ++k)
        PrefetchForWriting(planes + k * layout.stride + e, kAhead);
}

/// Asks for the lines of `count` bytes of elements, a few lines ahead of `to`.
[[gnu::always_inline]] inline void PrefetchElements(const std::byte* to, std::size_t count) {
    constexpr std::size_t kAhead = 8 * kLineBytes;
    for (std::size_t line = 0; line < count; line += kLineBytes)
        PrefetchForWriting(to, kAhead + line);
}

} // namespace trevolt
