// What block stores and chunk records must know of the word elements: one row an element.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "trevolt/WordElements.h"

namespace trevolt {

/// The most words that an element has, and the longest compressed-size list of a chunk record. A
/// coefficient map has no more values a pixel.
inline constexpr std::size_t kMaxWords = 12;

/// What a store and its chunk records must know of an element kind.
struct WordElementKind {
    std::uint16_t elemSize;   ///< bytes an element
    std::uint32_t wordCount;  ///< words an element: the planes that are stored
    std::uint32_t planeCount; ///< compressed sizes a chunk record lists; those past the words are 0
    std::array<std::uint16_t, kMaxWords> defaultWords; ///< the first `wordCount` of them count
};

template <class T, std::uint32_t PlaneCount>
constexpr WordElementKind MakeWordElementKind() {
    constexpr T kNeutral{};
    static_assert(sizeof(T) == sizeof kNeutral.w, "elements lie in files as they lie in memory");
    static_assert(kNeutral.w.size() <= PlaneCount && PlaneCount <= kMaxWords,
                  "a record lists a size for every word");
    WordElementKind kind{sizeof(T), kNeutral.w.size(), PlaneCount, {}};
    for (std::size_t i = 0; i < kNeutral.w.size(); ++i)
        kind.defaultWords[i] = kNeutral.w[i];
    return kind;
}

/// The extra word, which is no kind of its own, and the kinds' elements.
inline constexpr std::array kWordElementKinds{MakeWordElementKind<SWordCoef, 1>(),
#define TREVOLT_ELEMENT_KIND(kind, element, sizes) MakeWordElementKind<element, sizes>(),
                                              TREVOLT_WORD_KINDS(TREVOLT_ELEMENT_KIND)
#undef TREVOLT_ELEMENT_KIND
};

/// The kind whose elements have `elemSize` bytes, null when there is none.
constexpr const WordElementKind* FindWordElementKind(std::size_t elemSize) {
    for (const WordElementKind& kind : kWordElementKinds)
        if (kind.elemSize == elemSize)
            return &kind;
    return nullptr;
}

constexpr bool TellSizesKindsApart() {
    for (const WordElementKind& kind : kWordElementKinds)
        if (FindWordElementKind(kind.elemSize) != &kind)
            return false;
    return true;
}
static_assert(TellSizesKindsApart(), "a store knows its elements by their size");

/// The kind of element type T.
template <class T>
inline constexpr const WordElementKind& kWordElementKind = *FindWordElementKind(sizeof(T));

} // namespace trevolt
