// The word elements: what a calibration buffer holds of one pixel. An element is a run of unsigned
// 16-bit words in which 65535 stands for 1.0. A new word kind is one struct and one row here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "common/FixedPoint.h"

namespace trevolt {

/// The extra word of a pixel. Unlike every other kind it starts at 0.
struct SWordCoef {
    std::array<std::uint16_t, 1> w{0};
};

/// Red, green and blue gain.
struct S3WordCoef {
    std::array<std::uint16_t, 3> w{kFullScale, kFullScale, kFullScale};
};

/// Gains of four emitters.
struct S4WordCoef {
    std::array<std::uint16_t, 4> w{kFullScale, kFullScale, kFullScale, kFullScale};
};

/// A row-major 3×3 colour matrix; the default is the identity.
struct S9WordCoef {
    std::array<std::uint16_t, 9> w{kFullScale, 0, 0, 0, kFullScale, 0, 0, 0, kFullScale};
};

/// A colour matrix of four emitters.
struct S12WordCoef {
    std::array<std::uint16_t, 12> w{kFullScale, 0, 0, 0, 0, kFullScale,
                                    kFullScale, 0, 0, 0, 0, kFullScale};
};

/// The most words that an element has, and the longest compressed-size list of a chunk record.
inline constexpr std::size_t kMaxWords = 12;

/// What a store and its chunk records must know of an element kind.
struct WordElementKind {
    std::uint16_t elemSize;   ///< bytes an element
    std::uint32_t wordCount;  ///< words an element: the planes that are stored
    std::uint32_t planeCount; ///< compressed sizes a chunk record lists; those past the words are 0
    std::array<std::uint16_t, kMaxWords> defaultWords; ///< the first `wordCount` of them count
};

template <class T>
constexpr WordElementKind MakeWordElementKind(std::uint32_t planeCount) {
    constexpr T kNeutral{};
    static_assert(sizeof(T) == sizeof kNeutral.w, "elements lie in files as they lie in memory");
    WordElementKind kind{sizeof(T), kNeutral.w.size(), planeCount, {}};
    for (std::size_t i = 0; i < kNeutral.w.size(); ++i)
        kind.defaultWords[i] = kNeutral.w[i];
    return kind;
}

/// The list of compressed sizes is longer than the words of the 3- and the 4-word kind: their
/// records have the size of the records of the matrix kind beside them.
inline constexpr std::array<WordElementKind, 5> kWordElementKinds{
    MakeWordElementKind<SWordCoef>(1),    MakeWordElementKind<S3WordCoef>(9),
    MakeWordElementKind<S4WordCoef>(12),  MakeWordElementKind<S9WordCoef>(9),
    MakeWordElementKind<S12WordCoef>(12),
};

/// The kind whose elements have `elemSize` bytes, null when there is none.
constexpr const WordElementKind* FindWordElementKind(std::size_t elemSize) {
    for (const WordElementKind& kind : kWordElementKinds)
        if (kind.elemSize == elemSize)
            return &kind;
    return nullptr;
}

/// The kind of element type T.
template <class T>
inline constexpr const WordElementKind& kWordElementKind = *FindWordElementKind(sizeof(T));

} // namespace trevolt
