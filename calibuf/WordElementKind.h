// What block stores and chunk records must know of the word elements: one row an element.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "trevolt/WordElements.h"

namespace trevolt {

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
