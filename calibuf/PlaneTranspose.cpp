#include "calibuf/PlaneTranspose.h"

#include <array>
#include <cstring>

#include "calibuf/PlanePrefetch.h"
#include "calibuf/PlaneTransposeWide.h"

namespace trevolt {
namespace {

// Eight elements are turned at a time, in registers: tiles of 8 × 8 and 8 × 4 words, single words
// one by one. Wide loads and stores of 3-word elements reach one word into the next element; the
// last elements are therefore moved word by word.
constexpr std::size_t kGroup = 8;
constexpr std::size_t kWordBytes = sizeof(std::uint16_t);

using Planes = std::span<const std::byte* const>;

using Words8 [[gnu::vector_size(16)]] = std::uint16_t;
using Octet = std::array<Words8, 8>;
using Quartet = std::array<Words8, 4>;

Words8 InterleaveLow(Words8 a, Words8 b) {
    return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
}

Words8 InterleaveHigh(Words8 a, Words8 b) {
    return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}

Words8 Load8(const void* from) {
    Words8 words;
    std::memcpy(&words, from, sizeof words);
    return words;
}

void Store8(void* to, Words8 words) { std::memcpy(to, &words, sizeof words); }

/// Four words of each of two elements.
Words8 LoadPair(const std::byte* first, const std::byte* second) {
    std::array<std::uint64_t, 2> halves;
    std::memcpy(&halves[0], first, sizeof halves[0]);
    std::memcpy(&halves[1], second, sizeof halves[1]);
    return Load8(halves.data());
}

void StorePair(std::byte* first, std::byte* second, Words8 words) {
    std::array<std::uint64_t, 2> halves;
    Store8(halves.data(), words);
    std::memcpy(first, &halves[0], sizeof halves[0]);
    std::memcpy(second, &halves[1], sizeof halves[1]);
}

/// Rows to columns, and columns to rows: interleaving row i with row i + 4 three times over.
Octet Transpose(Octet rows) {
    for (int round = 0; round < 3; ++round) {
        Octet mixed;
        for (std::size_t i = 0; i < 4; ++i) {
            mixed[2 * i] = InterleaveLow(rows[i], rows[i + 4]);
            mixed[2 * i + 1] = InterleaveHigh(rows[i], rows[i + 4]);
        }
        rows = mixed;
    }
    return rows;
}

/// Four vectors of two 4-word elements each to four planes.
Quartet PairsToPlanes(Quartet pairs) {
    for (int round = 0; round < 3; ++round)
        pairs = {InterleaveLow(pairs[0], pairs[2]), InterleaveHigh(pairs[0], pairs[2]),
                 InterleaveLow(pairs[1], pairs[3]), InterleaveHigh(pairs[1], pairs[3])};
    return pairs;
}

/// Four planes to four vectors of two 4-word elements each.
Quartet PlanesToPairs(Quartet planes) {
    for (int round = 0; round < 2; ++round)
        planes = {InterleaveLow(planes[0], planes[2]), InterleaveHigh(planes[0], planes[2]),
                  InterleaveLow(planes[1], planes[3]), InterleaveHigh(planes[1], planes[3])};
    return planes;
}

/// How elements of W words are made of tiles.
template <std::size_t W>
struct Tiles {
    static constexpr std::size_t kBytes = W * kWordBytes;
    static constexpr bool kHasOctet = W >= 8;
    static constexpr std::size_t kRestAt = kHasOctet ? 8 : 0; ///< first word behind the octet
    static constexpr std::size_t kRest = W - kRestAt;
    static constexpr bool kHasQuartet = kRest == 3 || kRest == 4;
    static_assert(kHasQuartet || kRest == 1);

    /// Elements whose groups touch nothing behind the last of `count` elements.
    static std::size_t GroupedElements(std::size_t count) {
        const std::size_t spill = kRest == 3 ? 1 : 0; // elements that wide accesses reach into
        return count < spill ? 0 : (count - spill) / kGroup * kGroup;
    }
};

template <std::size_t W>
void GatherGroup(const std::byte* from, std::uint16_t* planes, std::size_t stride) {
    using T = Tiles<W>;
    if constexpr (T::kHasOctet) {
        Octet rows;
        for (std::size_t e = 0; e < kGroup; ++e)
            rows[e] = Load8(from + e * T::kBytes);
        rows = Transpose(rows);
        for (std::size_t k = 0; k < kGroup; ++k)
            Store8(planes + k * stride, rows[k]);
    }
    const std::byte* rest = from + T::kRestAt * kWordBytes;
    std::uint16_t* restPlanes = planes + T::kRestAt * stride;
    if constexpr (T::kHasQuartet) {
        Quartet pairs;
        for (std::size_t i = 0; i < 4; ++i)
            pairs[i] = LoadPair(rest + 2 * i * T::kBytes, rest + (2 * i + 1) * T::kBytes);
        pairs = PairsToPlanes(pairs);
        for (std::size_t k = 0; k < T::kRest; ++k)
            Store8(restPlanes + k * stride, pairs[k]);
    } else {
        for (std::size_t e = 0; e < kGroup; ++e)
            std::memcpy(restPlanes + e, rest + e * T::kBytes, kWordBytes);
    }
}

template <std::size_t W>
void ScatterGroup(Planes planes, std::size_t at, std::byte* to) {
    using T = Tiles<W>;
    if constexpr (T::kHasOctet) {
        Octet rows;
        for (std::size_t k = 0; k < kGroup; ++k)
            rows[k] = Load8(planes[k] + at);
        rows = Transpose(rows);
        for (std::size_t e = 0; e < kGroup; ++e)
            Store8(to + e * T::kBytes, rows[e]);
    }
    std::byte* rest = to + T::kRestAt * kWordBytes;
    if constexpr (T::kHasQuartet) {
        Quartet pairs{};
        for (std::size_t k = 0; k < T::kRest; ++k)
            pairs[k] = Load8(planes[T::kRestAt + k] + at);
        pairs = PlanesToPairs(pairs);
        for (std::size_t i = 0; i < 4; ++i)
            StorePair(rest + 2 * i * T::kBytes, rest + (2 * i + 1) * T::kBytes, pairs[i]);
    } else {
        for (std::size_t e = 0; e < kGroup; ++e)
            std::memcpy(rest + e * T::kBytes, planes[T::kRestAt] + at + e * kWordBytes, kWordBytes);
    }
}

void GatherSingly(const std::byte* elements, std::size_t first, std::size_t count,
                  std::uint16_t* planes, const SPlaneLayout& layout) {
    const std::size_t elemSize = layout.wordCount * kWordBytes;
    for (std::size_t e = first; e < count; ++e)
        for (std::size_t k = 0; k < layout.wordCount; ++k)
            std::memcpy(planes + k * layout.stride + e, elements + e * elemSize + k * kWordBytes,
                        kWordBytes);
}

void ScatterSingly(Planes planes, std::byte* elements, std::size_t first, std::size_t count,
                   std::size_t elemSize) {
    for (std::size_t e = first; e < count; ++e)
        for (std::size_t k = 0; k < planes.size(); ++k)
            std::memcpy(elements + e * elemSize + k * kWordBytes, planes[k] + e * kWordBytes,
                        kWordBytes);
}

#ifdef TREVOLT_WIDE_KERNELS
constexpr bool kHasWideKernels = true;
bool HasWideVectors() { return __builtin_cpu_supports("avx2") != 0; }
#else
constexpr bool kHasWideKernels = false;
bool HasWideVectors() { return false; }
#endif

template <std::size_t W>
void Gather(const std::byte* elements, std::size_t count, std::uint16_t* planes,
            const SPlaneLayout& layout, EVectors vectors) {
    std::size_t e = 0;
    if constexpr (kHasWideKernels)
        if (vectors == EVectors::Widest && HasWideVectors())
            e = GatherPlanesWide(elements, count, planes, layout);
    for (; e < Tiles<W>::GroupedElements(count); e += kGroup) {
        PrefetchPlanes(planes, e, layout);
        GatherGroup<W>(elements + e * Tiles<W>::kBytes, planes + e, layout.stride);
    }
    GatherSingly(elements, e, count, planes, layout);
}

template <std::size_t W>
void Scatter(Planes planes, std::byte* elements, std::size_t count, EVectors vectors) {
    std::size_t e = 0;
    if constexpr (kHasWideKernels)
        if (vectors == EVectors::Widest && HasWideVectors())
            e = ScatterPlanesWide(planes.data(), W, elements, count);
    for (; e < Tiles<W>::GroupedElements(count); e += kGroup) {
        std::byte* const to = elements + e * Tiles<W>::kBytes;
        PrefetchElements(to, kGroup * Tiles<W>::kBytes);
        ScatterGroup<W>(planes, e * kWordBytes, to);
    }
    ScatterSingly(planes, elements, e, count, Tiles<W>::kBytes);
}

} // namespace

void GatherPlanes(const std::byte* elements, std::size_t count, std::uint16_t* planes,
                  const SPlaneLayout& layout, EVectors vectors) {
    if (count == 0)
        return;
    switch (layout.wordCount) {
    case 1:
        std::memcpy(planes, elements, count * kWordBytes);
        return;
    case 3:
        return Gather<3>(elements, count, planes, layout, vectors);
    case 4:
        return Gather<4>(elements, count, planes, layout, vectors);
    case 9:
        return Gather<9>(elements, count, planes, layout, vectors);
    case 12:
        return Gather<12>(elements, count, planes, layout, vectors);
    default:
        return GatherSingly(elements, 0, count, planes, layout);
    }
}

void ScatterPlanes(Planes planes, std::byte* elements, std::size_t count, std::size_t elemSize,
                   EVectors vectors) {
    if (count == 0)
        return;
    if (elemSize != planes.size() * kWordBytes)
        return ScatterSingly(planes, elements, 0, count, elemSize);
    switch (planes.size()) {
    case 1:
        std::memcpy(elements, planes[0], count * kWordBytes);
        return;
    case 3:
        return Scatter<3>(planes, elements, count, vectors);
    case 4:
        return Scatter<4>(planes, elements, count, vectors);
    case 9:
        return Scatter<9>(planes, elements, count, vectors);
    case 12:
        return Scatter<12>(planes, elements, count, vectors);
    default:
        return ScatterSingly(planes, elements, 0, count, elemSize);
    }
}

} // namespace trevolt
