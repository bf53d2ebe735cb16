#include "calibuf/PlaneTransposeWide.h"

#include <utility>

#include <immintrin.h>

#include "calibuf/PlanePrefetch.h"

// Nothing here may be shared with files that are compiled for every processor: no function of a
// header that is not always inlined.

namespace trevolt {
namespace {

// A vector has two lanes of eight words. Elements 0 to 7 of a group go through the lower lanes and
// elements 8 to 15 through the upper ones, by the same steps; in a plane the two are neighbours.
constexpr std::size_t kLaneElements = 8;
constexpr std::size_t kGroup = 2 * kLaneElements;
constexpr std::size_t kWordBytes = sizeof(std::uint16_t);
constexpr std::size_t kLaneBytes = 16;

struct Octet {
    __m256i rows[8];
};

struct Quartet {
    __m256i rows[4];
};

/// What is known of elements of W words.
template <std::size_t W>
struct Shape {
    static constexpr std::size_t kBytes = W * kWordBytes;
    static constexpr std::size_t kLaneStep = kLaneElements * kBytes; ///< to the upper lanes
    /// Elements behind a group that its loads reach into.
    static constexpr std::size_t kReach = W == 3 ? 1 : 0;
};

__m128i LoadLane(const std::byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

/// The lower lane from `from`, the upper one from `step` bytes on.
__m256i LoadLanes(const std::byte* from, std::size_t step) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadLane(from)), LoadLane(from + step),
                                   1);
}

void StoreLower(std::byte* to, __m256i words) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_castsi256_si128(words));
}

void StoreUpper(std::byte* to, __m256i words) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_extracti128_si256(words, 1));
}

void StoreLanes(std::byte* to, std::size_t step, __m256i words) {
    StoreLower(to, words);
    StoreUpper(to + step, words);
}

__m256i LoadPlane(const std::byte* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

void StorePlane(std::uint16_t* to, __m256i words) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), words);
}

/// Rows to columns, and columns to rows: interleaving row i with row i + 4 three times over.
Octet Transpose(Octet octet) {
    for (int round = 0; round < 3; ++round) {
        Octet mixed;
        for (std::size_t i = 0; i < 4; ++i) {
            mixed.rows[2 * i] = _mm256_unpacklo_epi16(octet.rows[i], octet.rows[i + 4]);
            mixed.rows[2 * i + 1] = _mm256_unpackhi_epi16(octet.rows[i], octet.rows[i + 4]);
        }
        octet = mixed;
    }
    return octet;
}

constexpr int kNone = -1;

/// The two bytes of a word's place, as a byte shuffle takes them.
constexpr short BytesOfWord(int word) {
    return static_cast<short>(word == kNone ? -1 : (2 * word + 1) << 8 | 2 * word);
}

/// In both lanes, the lane's words in the order that `From` tells, zero for `kNone`.
template <int... From>
__m256i PickWords(__m256i words) {
    return _mm256_shuffle_epi8(words,
                               _mm256_broadcastsi128_si256(_mm_setr_epi16(BytesOfWord(From)...)));
}

/// Four vectors of two 4-word elements a lane to four planes.
Quartet PairsToPlanes(const Quartet& pairs) {
    // Words of the two elements side by side, then of four, then of eight.
    Quartet zipped;
    for (std::size_t i = 0; i < 4; ++i)
        zipped.rows[i] = PickWords<0, 4, 1, 5, 2, 6, 3, 7>(pairs.rows[i]);
    const __m256i low01 = _mm256_unpacklo_epi32(zipped.rows[0], zipped.rows[1]);
    const __m256i low23 = _mm256_unpacklo_epi32(zipped.rows[2], zipped.rows[3]);
    const __m256i high01 = _mm256_unpackhi_epi32(zipped.rows[0], zipped.rows[1]);
    const __m256i high23 = _mm256_unpackhi_epi32(zipped.rows[2], zipped.rows[3]);
    return {{_mm256_unpacklo_epi64(low01, low23), _mm256_unpackhi_epi64(low01, low23),
             _mm256_unpacklo_epi64(high01, high23), _mm256_unpackhi_epi64(high01, high23)}};
}

/// Four planes to four vectors of two 4-word elements a lane.
Quartet PlanesToPairs(const Quartet& planes) {
    const __m256i low01 = _mm256_unpacklo_epi16(planes.rows[0], planes.rows[1]);
    const __m256i low23 = _mm256_unpacklo_epi16(planes.rows[2], planes.rows[3]);
    const __m256i high01 = _mm256_unpackhi_epi16(planes.rows[0], planes.rows[1]);
    const __m256i high23 = _mm256_unpackhi_epi16(planes.rows[2], planes.rows[3]);
    return {{_mm256_unpacklo_epi32(low01, low23), _mm256_unpackhi_epi32(low01, low23),
             _mm256_unpacklo_epi32(high01, high23), _mm256_unpackhi_epi32(high01, high23)}};
}

// ---- to planes ----

Octet LoadRows(const std::byte* from, std::size_t elementBytes) {
    Octet octet;
    for (std::size_t e = 0; e < kLaneElements; ++e)
        octet.rows[e] = LoadLanes(from + e * elementBytes, kLaneElements * elementBytes);
    return octet;
}

template <std::size_t Count, class Rows>
void StorePlanes(std::uint16_t* planes, std::size_t stride, const Rows& rows) {
    for (std::size_t k = 0; k < Count; ++k)
        StorePlane(planes + k * stride, rows.rows[k]);
}

/// The last four words of elements 2i and 2i + 1, in each lane; of all three words with W = 3.
template <std::size_t W>
__m256i LoadPair(const std::byte* from, std::size_t i) {
    using S = Shape<W>;
    const std::byte* const pair = from + 2 * i * S::kBytes;
    if constexpr (W == 3)
        return PickWords<0, 1, 2, kNone, 3, 4, 5, kNone>(LoadLanes(pair, S::kLaneStep));
    else if constexpr (W == 4)
        return LoadLanes(pair, S::kLaneStep);
    else // the lower half of the second vector and the upper half of the third one
        return _mm256_blend_epi32(LoadLanes(pair + kLaneBytes, S::kLaneStep),
                                  LoadLanes(pair + 2 * kLaneBytes, S::kLaneStep), 0b11001100);
}

/// Nine words a pixel are one more than a vector: word 8 of element e stands e words into vector
/// e + 1 of its lane.
template <std::size_t... E>
__m256i LoadNinthWords(const std::byte* from, std::index_sequence<E...> /*elements*/) {
    __m256i words = _mm256_setzero_si256();
    ((words = _mm256_blend_epi16(words, LoadLanes(from + (E + 1) * kLaneBytes, Shape<9>::kLaneStep),
                                 1 << E)),
     ...);
    return words;
}

template <std::size_t W>
void GatherGroup(const std::byte* from, std::uint16_t* planes, std::size_t stride) {
    if constexpr (W >= 8)
        StorePlanes<8>(planes, stride, Transpose(LoadRows(from, Shape<W>::kBytes)));
    if constexpr (W == 9) {
        StorePlane(planes + 8 * stride, LoadNinthWords(from, std::make_index_sequence<8>()));
    } else {
        const Quartet pairs{{LoadPair<W>(from, 0), LoadPair<W>(from, 1), LoadPair<W>(from, 2),
                             LoadPair<W>(from, 3)}};
        constexpr std::size_t kFirst = W < 8 ? 0 : 8;
        StorePlanes<W - kFirst>(planes + kFirst * stride, stride, PairsToPlanes(pairs));
    }
}

template <std::size_t W>
std::size_t Gather(const std::byte* elements, std::size_t count, std::uint16_t* planes,
                   const SPlaneLayout& layout) {
    std::size_t e = 0;
    for (; e + kGroup + Shape<W>::kReach <= count; e += kGroup) {
        PrefetchPlanes(planes, e, layout);
        GatherGroup<W>(elements + e * Shape<W>::kBytes, planes + e, layout.stride);
    }
    return e;
}

// ---- to elements ----

template <std::size_t Count, class Rows>
void LoadPlanes(Rows& rows, const std::byte* const* planes, std::size_t at) {
    for (std::size_t k = 0; k < Count; ++k)
        rows.rows[k] = LoadPlane(planes[k] + at);
}

/// Vector J of the nine that eight elements of nine words fill: the end of element J - 1, behind
/// it that element's word 8, which stands at the same place among the eight ninth words, and the
/// beginning of element J.
template <std::size_t J>
__m256i NinthVector(const Octet& rows, __m256i ninthWords) {
    __m256i words = _mm256_setzero_si256();
    if constexpr (J < 8)
        words = _mm256_bslli_epi128(rows.rows[J], J * kWordBytes);
    if constexpr (J > 0) {
        words = _mm256_or_si256(words, _mm256_bsrli_epi128(rows.rows[J - 1], (9 - J) * kWordBytes));
        words = _mm256_blend_epi16(words, ninthWords, 1 << (J - 1));
    }
    return words;
}

template <std::size_t... J>
void StoreNines(std::byte* to, const Octet& rows, __m256i ninthWords,
                std::index_sequence<J...> /*vectors*/) {
    (StoreLanes(to + J * kLaneBytes, Shape<9>::kLaneStep, NinthVector<J>(rows, ninthWords)), ...);
}

/// Two elements of twelve words fill three vectors.
void StoreTwelves(std::byte* to, const Octet& rows, const Quartet& pairs) {
    constexpr std::size_t kStep = Shape<12>::kLaneStep;
    for (std::size_t i = 0; i < 4; ++i) {
        std::byte* const pair = to + 2 * i * Shape<12>::kBytes;
        const __m256i second = rows.rows[2 * i + 1];
        StoreLanes(pair, kStep, rows.rows[2 * i]);
        StoreLanes(pair + kLaneBytes, kStep, _mm256_unpacklo_epi64(pairs.rows[i], second));
        StoreLanes(pair + 2 * kLaneBytes, kStep, _mm256_unpackhi_epi64(second, pairs.rows[i]));
    }
}

void StoreFours(std::byte* to, const Quartet& pairs) {
    for (std::size_t i = 0; i < 4; ++i)
        StoreLanes(to + i * kLaneBytes, Shape<4>::kLaneStep, pairs.rows[i]);
}

/// Eight elements of three words fill three vectors.
void StoreThrees(std::byte* to, const Quartet& pairs) {
    constexpr std::size_t kStep = Shape<3>::kLaneStep;
    const auto& [pair0, pair1, pair2, pair3] = pairs.rows;
    StoreLanes(to, kStep,
               _mm256_or_si256(PickWords<0, 1, 2, 4, 5, 6, kNone, kNone>(pair0),
                               PickWords<kNone, kNone, kNone, kNone, kNone, kNone, 0, 1>(pair1)));
    StoreLanes(to + kLaneBytes, kStep,
               _mm256_or_si256(PickWords<2, 4, 5, 6, kNone, kNone, kNone, kNone>(pair1),
                               PickWords<kNone, kNone, kNone, kNone, 0, 1, 2, 4>(pair2)));
    StoreLanes(to + 2 * kLaneBytes, kStep,
               _mm256_or_si256(PickWords<5, 6, kNone, kNone, kNone, kNone, kNone, kNone>(pair2),
                               PickWords<kNone, kNone, 0, 1, 2, 4, 5, 6>(pair3)));
}

template <std::size_t W>
void ScatterGroup(const std::byte* const* planes, std::size_t at, std::byte* to) {
    Octet rows;
    if constexpr (W >= 8) {
        LoadPlanes<8>(rows, planes, at);
        rows = Transpose(rows);
    }
    Quartet rest{};
    if constexpr (W != 9) {
        LoadPlanes<W % 8>(rest, planes + W / 8 * 8, at);
        rest = PlanesToPairs(rest);
    }
    if constexpr (W == 3)
        StoreThrees(to, rest);
    else if constexpr (W == 4)
        StoreFours(to, rest);
    else if constexpr (W == 9)
        StoreNines(to, rows, LoadPlane(planes[8] + at), std::make_index_sequence<9>());
    else
        StoreTwelves(to, rows, rest);
}

template <std::size_t W>
std::size_t Scatter(const std::byte* const* planes, std::byte* elements, std::size_t count) {
    std::size_t e = 0;
    for (; e + kGroup <= count; e += kGroup) {
        std::byte* const to = elements + e * Shape<W>::kBytes;
        PrefetchElements(to, kGroup * Shape<W>::kBytes);
        ScatterGroup<W>(planes, e * kWordBytes, to);
    }
    return e;
}

} // namespace

std::size_t GatherPlanesWide(const std::byte* elements, std::size_t count, std::uint16_t* planes,
                             const SPlaneLayout& layout) {
    switch (layout.wordCount) {
    case 3:
        return Gather<3>(elements, count, planes, layout);
    case 4:
        return Gather<4>(elements, count, planes, layout);
    case 9:
        return Gather<9>(elements, count, planes, layout);
    case 12:
        return Gather<12>(elements, count, planes, layout);
    default:
        return 0;
    }
}

std::size_t ScatterPlanesWide(const std::byte* const* planes, std::size_t wordCount,
                              std::byte* elements, std::size_t count) {
    switch (wordCount) {
    case 3:
        return Scatter<3>(planes, elements, count);
    case 4:
        return Scatter<4>(planes, elements, count);
    case 9:
        return Scatter<9>(planes, elements, count);
    case 12:
        return Scatter<12>(planes, elements, count);
    default:
        return 0;
    }
}

} // namespace trevolt
