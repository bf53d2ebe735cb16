// Elements to word planes and back in vectors of one or of two lanes: the one source of the
// kernels, for the files that compile it for one width each. A lane has eight words. The elements
// of a group go through the lanes eight by eight, by the same steps; in a plane they are
// neighbours. A step is another for one lane only where processors without AVX2 lack its
// instructions.
//
// A file that is compiled for some processors only must share no function with the others: of one
// that several files have, as they have inline functions and templates, the linker keeps a single
// copy for the whole program, and that may be the one with AVX2. So everything here belongs to the
// file that includes it, and nothing of the library is used that would be compiled along;
// tools/check-own-code.sh sees to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "calibuf/PlaneKernels.h"

namespace trevolt {
namespace {

constexpr std::size_t kLaneBytes = 16;
constexpr std::size_t kLaneElements = 8;
constexpr std::size_t kLineBytes = 64; ///< a cache line

using OneLane [[gnu::vector_size(kLaneBytes)]] = std::uint16_t;
using TwoLanes [[gnu::vector_size(2 * kLaneBytes)]] = std::uint16_t;

template <class Words>
constexpr bool kIsOneLane = sizeof(Words) == kLaneBytes;

template <class Words>
constexpr std::size_t kGroup = sizeof(Words) / kWordBytes; ///< elements that are moved at a time

template <class Words>
struct Octet {
    Words rows[8];
};

template <class Words>
struct Quartet {
    Words rows[4];
};

/// What is known of elements of W words.
template <std::size_t W>
struct Shape {
    static constexpr std::size_t kBytes = W * kWordBytes;
    static constexpr std::size_t kLaneStep = kLaneElements * kBytes; ///< to the upper lane's
    /// Elements behind a group that its loads and stores reach into.
    static constexpr std::size_t kReach = W == 3 ? 1 : 0;
};

// ---- vectors ----

template <class Words>
Words Load(const void* from) {
    Words words;
    std::memcpy(&words, from, sizeof words);
    return words;
}

template <class Words>
void Store(void* to, Words words) {
    std::memcpy(to, &words, sizeof words);
}

/// The lower lane from `from`, the upper one, if there is one, from `step` bytes on.
template <class Words>
Words LoadLanes(const std::byte* from, std::size_t step) {
    if constexpr (kIsOneLane<Words>)
        return Load<Words>(from);
    else
        return __builtin_shufflevector(Load<OneLane>(from), Load<OneLane>(from + step), 0, 1, 2, 3,
                                       4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}

template <class Words>
void StoreLanes(std::byte* to, std::size_t step, Words words) {
    if constexpr (kIsOneLane<Words>) {
        Store(to, words);
    } else {
        Store(to, __builtin_shufflevector(words, words, 0, 1, 2, 3, 4, 5, 6, 7));
        Store(to + step, __builtin_shufflevector(words, words, 8, 9, 10, 11, 12, 13, 14, 15));
    }
}

/// One lane of four words from each of two places.
template <class Words>
Words LoadHalves(const std::byte* lower, const std::byte* upper) {
    std::uint64_t halves[2];
    std::memcpy(&halves[0], lower, sizeof halves[0]);
    std::memcpy(&halves[1], upper, sizeof halves[1]);
    return Load<Words>(halves);
}

template <class Words>
void StoreHalves(std::byte* lower, std::byte* upper, Words words) {
    std::uint64_t halves[2];
    Store(halves, words);
    std::memcpy(lower, &halves[0], sizeof halves[0]);
    std::memcpy(upper, &halves[1], sizeof halves[1]);
}

/// Where a place in the lower lanes of two vectors stands in vectors of two lanes.
constexpr int InLower(int place) { return place < 8 ? place : place + 8; }
constexpr int InUpper(int place) { return InLower(place) + 8; }

/// In each lane, the lane's words from the places `From`: 0 to 7 in `a`, 8 to 15 in `b`.
template <int... From, class Words>
Words Shuffle(Words a, Words b) {
    if constexpr (kIsOneLane<Words>)
        return __builtin_shufflevector(a, b, From...);
    else
        return __builtin_shufflevector(a, b, InLower(From)..., InUpper(From)...);
}

using Places = std::make_integer_sequence<int, 8>; ///< of a lane

/// The words of `words`, but at place `At` that of `other`.
template <int At, class Words, int... I>
Words PutWord(Words words, Words other, std::integer_sequence<int, I...> /*places*/) {
    return Shuffle<(I == At ? 8 + I : I)...>(words, other);
}

/// The words of `below` up to place `Count`, of `above` from there on.
template <int Count, class Words, int... I>
Words Join(Words below, Words above, std::integer_sequence<int, I...> /*places*/) {
    return Shuffle<(I < Count ? I : 8 + I)...>(below, above);
}

/// The words `Count` places up, the last ones at the first places.
template <int Count, class Words, int... I>
Words Rotate(Words words, std::integer_sequence<int, I...> /*places*/) {
    return Shuffle<((I + 8 - Count) % 8)...>(words, words);
}

template <class Words>
Words InterleaveLow(Words a, Words b) {
    return Shuffle<0, 8, 1, 9, 2, 10, 3, 11>(a, b);
}

template <class Words>
Words InterleaveHigh(Words a, Words b) {
    return Shuffle<4, 12, 5, 13, 6, 14, 7, 15>(a, b);
}

/// Rows to columns, and columns to rows: interleaving row i with row i + 4 three times over.
template <class Words>
Octet<Words> Transpose(Octet<Words> octet) {
    for (int round = 0; round < 3; ++round) {
        Octet<Words> mixed;
        for (std::size_t i = 0; i < 4; ++i) {
            mixed.rows[2 * i] = InterleaveLow(octet.rows[i], octet.rows[i + 4]);
            mixed.rows[2 * i + 1] = InterleaveHigh(octet.rows[i], octet.rows[i + 4]);
        }
        octet = mixed;
    }
    return octet;
}

/// Two rounds make of four planes four vectors of two 4-word elements a lane, three of these the
/// planes.
template <int Rounds, class Words>
Quartet<Words> Interleave(Quartet<Words> quartet) {
    for (int round = 0; round < Rounds; ++round) {
        const auto& [a, b, c, d] = quartet.rows;
        quartet = {
            {InterleaveLow(a, c), InterleaveHigh(a, c), InterleaveLow(b, d), InterleaveHigh(b, d)}};
    }
    return quartet;
}

// ---- hints to the cache ----
//
// Short stores that fill a line, or many lines by turns, wait for each line unless it was asked
// for. GCC takes a function of hints alone for one without effect and drops its calls, unless it is
// always inlined.

/// Asks for the line `ahead` bytes behind `at`. It may lie behind what is ever written: nothing is
/// touched.
[[gnu::always_inline]] inline void PrefetchForWriting(const void* at, std::size_t ahead) {
    constexpr int kForWriting = 1;
    const std::uintptr_t line = reinterpret_cast<std::uintptr_t>(at) + ahead;
    __builtin_prefetch(reinterpret_cast<const void*>(line), kForWriting); // NOLINT(*-no-int-to-ptr)
}

/// Asks for a line of each of W planes, a few lines ahead of element `e`, where a line begins.
template <std::size_t W>
[[gnu::always_inline]] inline void PrefetchPlanes(const std::uint16_t* planes, std::size_t e,
                                                  std::size_t stride) {
    constexpr std::size_t kAhead = 4 * kLineBytes;
    if (e * kWordBytes % kLineBytes != 0)
        return;
    for (std::size_t k = 0; k < W; ++k)
        PrefetchForWriting(planes + k * stride + e, kAhead);
}

/// Asks for the lines of `count` bytes of elements, a few lines ahead of `to`.
[[gnu::always_inline]] inline void PrefetchElements(const std::byte* to, std::size_t count) {
    constexpr std::size_t kAhead = 8 * kLineBytes;
    for (std::size_t line = 0; line < count; line += kLineBytes)
        PrefetchForWriting(to, kAhead + line);
}

// ---- to planes ----

template <class Words, std::size_t W>
Octet<Words> LoadRows(const std::byte* from) {
    Octet<Words> octet;
    for (std::size_t e = 0; e < kLaneElements; ++e)
        octet.rows[e] = LoadLanes<Words>(from + e * Shape<W>::kBytes, Shape<W>::kLaneStep);
    return octet;
}

template <std::size_t Count, class Rows>
void StorePlanes(std::uint16_t* planes, std::size_t stride, const Rows& rows) {
    for (std::size_t k = 0; k < Count; ++k)
        Store(planes + k * stride, rows.rows[k]);
}

/// The last four words of elements 2i and 2i + 1, in each lane; with W = 3 all three words and any
/// fourth one.
template <class Words, std::size_t W>
Words LoadPair(const std::byte* from, std::size_t i) {
    using S = Shape<W>;
    constexpr std::size_t kFirst = W < 8 ? 0 : kLaneBytes;
    const std::byte* const pair = from + 2 * i * S::kBytes;
    if constexpr (kIsOneLane<Words>) {
        return LoadHalves<Words>(pair + kFirst, pair + S::kBytes + kFirst);
    } else {
        const auto words = LoadLanes<Words>(pair + kFirst, S::kLaneStep);
        if constexpr (W == 3)
            return Shuffle<0, 1, 2, 0, 3, 4, 5, 0>(words, words);
        else if constexpr (W == 4)
            return words;
        else // the second element's are the upper half of the third vector
            return Shuffle<0, 1, 2, 3, 12, 13, 14, 15>(
                words, LoadLanes<Words>(pair + 2 * kLaneBytes, S::kLaneStep));
    }
}

/// Nine words a pixel are one more than a lane has. Word 8 of element e stands e words into vector
/// e + 1 of its lane.
template <class Words, int... E>
Words LoadNinthWords(const std::byte* from, std::integer_sequence<int, E...> /*elements*/) {
    using S = Shape<9>;
    if constexpr (kIsOneLane<Words>) {
        std::uint16_t ninthWords[kLaneElements];
        for (std::size_t e = 0; e < kLaneElements; ++e)
            std::memcpy(ninthWords + e, from + e * S::kBytes + kLaneBytes, kWordBytes);
        return Load<Words>(ninthWords);
    } else {
        Words words{};
        ((words = PutWord<E>(words, LoadLanes<Words>(from + (E + 1) * kLaneBytes, S::kLaneStep),
                             Places())),
         ...);
        return words;
    }
}

template <class Words, std::size_t W>
void GatherGroup(const std::byte* from, std::uint16_t* planes, std::size_t stride) {
    if constexpr (W >= 8)
        StorePlanes<8>(planes, stride, Transpose(LoadRows<Words, W>(from)));
    if constexpr (W == 9) {
        Store(planes + 8 * stride, LoadNinthWords<Words>(from, Places()));
    } else {
        const Quartet<Words> pairs{{LoadPair<Words, W>(from, 0), LoadPair<Words, W>(from, 1),
                                    LoadPair<Words, W>(from, 2), LoadPair<Words, W>(from, 3)}};
        constexpr std::size_t kFirst = W < 8 ? 0 : 8;
        StorePlanes<W - kFirst>(planes + kFirst * stride, stride, Interleave<3>(pairs));
    }
}

template <class Words, std::size_t W>
std::size_t GatherGroups(const std::byte* elements, std::size_t first, std::size_t count,
                         std::uint16_t* planes, std::size_t stride) {
    std::size_t e = first;
    for (; e + kGroup<Words> + Shape<W>::kReach <= count; e += kGroup<Words>) {
        PrefetchPlanes<W>(planes, e, stride);
        GatherGroup<Words, W>(elements + e * Shape<W>::kBytes, planes + e, stride);
    }
    return e;
}

template <class Words>
std::size_t Gather(const std::byte* elements, std::size_t first, std::size_t count,
                   std::uint16_t* planes, const SPlaneLayout& layout) {
    switch (layout.wordCount) {
    case 3:
        return GatherGroups<Words, 3>(elements, first, count, planes, layout.stride);
    case 4:
        return GatherGroups<Words, 4>(elements, first, count, planes, layout.stride);
    case 9:
        return GatherGroups<Words, 9>(elements, first, count, planes, layout.stride);
    case 12:
        return GatherGroups<Words, 12>(elements, first, count, planes, layout.stride);
    default:
        return first;
    }
}

// ---- to elements ----

template <std::size_t Count, class Words, std::size_t N>
void LoadPlanes(Words (&rows)[N], const std::byte* const* planes, std::size_t at) {
    for (std::size_t k = 0; k < Count; ++k)
        rows[k] = Load<Words>(planes[k] + at);
}

/// Vector J of the nine that eight elements of nine words fill: the end of element J - 1, behind
/// it that element's word 8, which stands at the same place among the eight ninth words, and the
/// beginning of element J.
template <int J, class Words>
Words NinthVector(const Octet<Words>& octet, Words ninthWords) {
    if constexpr (J == 0) {
        return octet.rows[0];
    } else {
        const Words end =
            PutWord<J - 1>(Rotate<J - 1>(octet.rows[J - 1], Places()), ninthWords, Places());
        if constexpr (J == 8)
            return end;
        else
            return Join<J>(end, Rotate<J>(octet.rows[J], Places()), Places());
    }
}

template <class Words, int... J>
void StoreNines(std::byte* to, const Octet<Words>& octet, const std::byte* ninthPlane,
                std::integer_sequence<int, J...> /*vectors*/) {
    using S = Shape<9>;
    if constexpr (kIsOneLane<Words>) {
        for (std::size_t e = 0; e < kLaneElements; ++e)
            Store(to + e * S::kBytes, octet.rows[e]);
        for (std::size_t e = 0; e < kLaneElements; ++e)
            std::memcpy(to + e * S::kBytes + kLaneBytes, ninthPlane + e * kWordBytes, kWordBytes);
    } else {
        const auto ninthWords = Load<Words>(ninthPlane);
        (StoreLanes(to + J * kLaneBytes, S::kLaneStep, NinthVector<J>(octet, ninthWords)), ...);
    }
}

/// Two elements of twelve words fill three vectors.
template <class Words>
void StoreTwelves(std::byte* to, const Octet<Words>& octet, const Quartet<Words>& pairs) {
    constexpr std::size_t kStep = Shape<12>::kLaneStep;
    for (std::size_t i = 0; i < 4; ++i) {
        std::byte* const pair = to + 2 * i * Shape<12>::kBytes;
        const Words second = octet.rows[2 * i + 1];
        StoreLanes(pair, kStep, octet.rows[2 * i]);
        StoreLanes(pair + kLaneBytes, kStep,
                   Shuffle<0, 1, 2, 3, 8, 9, 10, 11>(pairs.rows[i], second));
        StoreLanes(pair + 2 * kLaneBytes, kStep,
                   Shuffle<4, 5, 6, 7, 12, 13, 14, 15>(second, pairs.rows[i]));
    }
}

template <class Words>
void StoreFours(std::byte* to, const Quartet<Words>& pairs) {
    for (std::size_t i = 0; i < 4; ++i)
        StoreLanes(to + i * kLaneBytes, Shape<4>::kLaneStep, pairs.rows[i]);
}

/// Eight elements of three words fill three vectors. The halves of one lane each reach one word
/// into the next element, which is stored thereafter.
template <class Words>
void StoreThrees(std::byte* to, const Quartet<Words>& pairs) {
    using S = Shape<3>;
    if constexpr (kIsOneLane<Words>) {
        for (std::size_t i = 0; i < 4; ++i)
            StoreHalves(to + 2 * i * S::kBytes, to + (2 * i + 1) * S::kBytes, pairs.rows[i]);
    } else {
        const auto& [pair0, pair1, pair2, pair3] = pairs.rows;
        const Words a = Shuffle<0, 1, 2, 4, 5, 6, 0, 0>(pair0, pair0);
        const Words b = Shuffle<2, 4, 5, 6, 0, 0, 0, 1>(pair1, pair1);
        const Words c = Shuffle<5, 6, 0, 0, 0, 1, 2, 4>(pair2, pair2);
        const Words d = Shuffle<0, 0, 0, 1, 2, 4, 5, 6>(pair3, pair3);
        StoreLanes(to, S::kLaneStep, Join<6>(a, b, Places()));
        StoreLanes(to + kLaneBytes, S::kLaneStep, Join<4>(b, c, Places()));
        StoreLanes(to + 2 * kLaneBytes, S::kLaneStep, Join<2>(c, d, Places()));
    }
}

template <class Words, std::size_t W>
void ScatterGroup(const std::byte* const* planes, std::size_t at, std::byte* to) {
    Octet<Words> octet;
    if constexpr (W >= 8) {
        LoadPlanes<8>(octet.rows, planes, at);
        octet = Transpose(octet);
    }
    Quartet<Words> pairs{};
    if constexpr (W != 9) {
        LoadPlanes<W % 8>(pairs.rows, planes + W / 8 * 8, at);
        pairs = Interleave<2>(pairs);
    }
    if constexpr (W == 3)
        StoreThrees(to, pairs);
    else if constexpr (W == 4)
        StoreFours(to, pairs);
    else if constexpr (W == 9)
        StoreNines(to, octet, planes[8] + at, std::make_integer_sequence<int, 9>());
    else
        StoreTwelves(to, octet, pairs);
}

template <class Words, std::size_t W>
std::size_t ScatterGroups(const std::byte* const* planes, std::byte* elements, std::size_t first,
                          std::size_t count) {
    std::size_t e = first;
    for (; e + kGroup<Words> + Shape<W>::kReach <= count; e += kGroup<Words>) {
        std::byte* const to = elements + e * Shape<W>::kBytes;
        PrefetchElements(to, kGroup<Words> * Shape<W>::kBytes);
        ScatterGroup<Words, W>(planes, e * kWordBytes, to);
    }
    return e;
}

template <class Words>
std::size_t Scatter(const std::byte* const* planes, std::size_t wordCount, std::byte* elements,
                    std::size_t first, std::size_t count) {
    switch (wordCount) {
    case 3:
        return ScatterGroups<Words, 3>(planes, elements, first, count);
    case 4:
        return ScatterGroups<Words, 4>(planes, elements, first, count);
    case 9:
        return ScatterGroups<Words, 9>(planes, elements, first, count);
    case 12:
        return ScatterGroups<Words, 12>(planes, elements, first, count);
    default:
        return first;
    }
}

template <class Words>
constexpr SPlaneKernels kKernelsOf{&Gather<Words>, &Scatter<Words>};

} // namespace
} // namespace trevolt
