// What tells one kind of word store from another: one row a kind. A new kind is an element struct
// and its entry in the list of trevolt/WordElements.h, and a row here; only its own oddities need
// code.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "calibuf/ChunkLayout.h"
#include "calibuf/WordElementKind.h"
#include "trevolt/PixelRect.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Which word of an element a channel number means.
struct SChannelRule {
    bool wraps;         ///< the remainder by `count` is the word; else the number itself is
    std::int32_t count; ///< words that can be meant

    /// Nothing for a negative number, except one whose remainder is 0, and, without wrapping, for
    /// one that is too large.
    constexpr std::optional<std::uint32_t> WordOf(std::int32_t channel) const {
        const std::int32_t word = wraps ? channel % count : channel;
        if (word < 0 || word >= count)
            return std::nullopt;
        return static_cast<std::uint32_t>(word);
    }
};

/// The file-kind value that virtual-green files carry.
inline constexpr std::uint8_t kVirtualGreenFileKind = 2;

struct SWordKind {
    ChunkFormatId formatId;
    /// Of the kind's files with extra words, where it has any.
    std::optional<ChunkFormatId> extraWordFormatId = std::nullopt;
    /// Header byte 67 holds the object's file-kind value and must match when loading.
    bool hasFileKind;
    /// A size is also told of a `.9fcoef` or `.3fcoef` file under the kind's name.
    bool sizesFloatFiles = false;
    /// The answer when a file does not open for a rectangle or a band.
    Status outputOpenFailed;
    /// The rectangle's extent that must not be 0 for its blocks to be written.
    std::int64_t (SPixelRect::*writtenExtent)() const;
    SChannelRule fillChannel; ///< of FillRectChannel
    SChannelRule setChannel;  ///< of SetPixelChannel
    SChannelRule readChannel; ///< of the float transfers
    /// The coefficient map's value behind each word.
    std::array<std::uint8_t, kMaxWords> mapValues;
    /// The map's values that a loaded file sets to 0; others without a word stay as they were.
    std::span<const std::uint8_t> zeroedMapValues = {};
    /// Words that a map element becomes; those past the element's own go to the next one in memory.
    std::size_t convertedWords;

    /// Whether the kind's files may open so.
    constexpr bool HasFormat(const ChunkFormatId& format) const {
        return format == formatId || format == extraWordFormatId;
    }
};

inline constexpr SChannelRule kModulo3{true, 3};
inline constexpr SChannelRule kModulo4{true, 4};
inline constexpr SChannelRule kNineWords{false, 9};
inline constexpr SChannelRule kTwelveWords{false, 12};

inline constexpr std::array<std::uint8_t, 6> kOffDiagonal{1, 2, 3, 5, 6, 7};
/// Of the values behind the matrix, the middle row's has a word.
inline constexpr std::array<std::uint8_t, 8> kOffGreenDiagonal{1, 2, 3, 5, 6, 7, 9, 11};

/// The row of an element's kind; an element without one does not build.
template <class Element>
extern const SWordKind kWordKind;

/// {81555D7F-5A30-4958-B765-9E3D63B728E8}
template <>
inline constexpr SWordKind kWordKind<S3WordCoef>{.formatId = {0x7F, 0x5D, 0x55, 0x81, 0x30, 0x5A,
                                                              0x58, 0x49, 0xB7, 0x65, 0x9E, 0x3D,
                                                              0x63, 0xB7, 0x28, 0xE8},
                                                 .hasFileKind = false,
                                                 .sizesFloatFiles = true,
                                                 .outputOpenFailed = E_HANDLE,
                                                 .writtenExtent = &SPixelRect::Width,
                                                 .fillChannel = kModulo3,
                                                 .setChannel = kModulo3,
                                                 .readChannel = kModulo3,
                                                 .mapValues = {0, 4, 8},
                                                 .zeroedMapValues = kOffDiagonal,
                                                 .convertedWords = 3};

template <>
inline constexpr SWordKind kWordKind<S9WordCoef>{
    .formatId = kChromaChunkFormat,
    .extraWordFormatId = kChromaChunkFormat2,
    .hasFileKind = false,
    .sizesFloatFiles = true,
    .outputOpenFailed = E_COEF_OPENFAILED,
    .writtenExtent = &SPixelRect::Width,
    .fillChannel = kModulo3,
    .setChannel = kModulo3,
    .readChannel = kNineWords,
    .mapValues = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
    .convertedWords = 12};

/// {E8757D78-79A0-47D0-AF66-80F61B2FB479}
template <>
inline constexpr SWordKind kWordKind<S4WordCoef>{.formatId = {0x78, 0x7D, 0x75, 0xE8, 0xA0, 0x79,
                                                              0xD0, 0x47, 0xAF, 0x66, 0x80, 0xF6,
                                                              0x1B, 0x2F, 0xB4, 0x79},
                                                 .hasFileKind = true,
                                                 .outputOpenFailed = E_HANDLE,
                                                 .writtenExtent = &SPixelRect::Height,
                                                 .fillChannel = kModulo4,
                                                 .setChannel = kModulo4,
                                                 .readChannel = kModulo4,
                                                 .mapValues = {0, 4, 10, 8},
                                                 .zeroedMapValues = kOffGreenDiagonal,
                                                 .convertedWords = 4};

/// {DFF152B6-8A3F-4C68-A538-B724DACB6BF4}
template <>
inline constexpr SWordKind kWordKind<S12WordCoef>{
    .formatId = {0xB6, 0x52, 0xF1, 0xDF, 0x3F, 0x8A, 0x68, 0x4C, 0xA5, 0x38, 0xB7, 0x24, 0xDA, 0xCB,
                 0x6B, 0xF4},
    .hasFileKind = true,
    .outputOpenFailed = E_HANDLE,
    .writtenExtent = &SPixelRect::Height,
    .fillChannel = kModulo4,
    .setChannel = kTwelveWords,
    .readChannel = kTwelveWords,
    .mapValues = {0, 1, 9, 2, 3, 4, 10, 5, 6, 7, 11, 8},
    .convertedWords = 12};

/// A kind's row and what its files have of each pixel.
struct SListedWordKind {
    const SWordKind* row;
    const WordElementKind* element;
};

/// Every kind.
inline constexpr std::array kWordKinds{
#define TREVOLT_LISTED_KIND(kind, element, sizes)                                                  \
    SListedWordKind{&kWordKind<element>, &kWordElementKind<element>},
    TREVOLT_WORD_KINDS(TREVOLT_LISTED_KIND)
#undef TREVOLT_LISTED_KIND
};

/// The kind's entry, null for a value that is no kind.
constexpr const SListedWordKind* FindListedKind(EWordKind kind) {
    const auto place = static_cast<std::size_t>(kind); // the list is in the kinds' order
    return place < kWordKinds.size() ? &kWordKinds[place] : nullptr;
}

/// The element that word files of this format have; null for the format of no kind, and for one of
/// two stores.
constexpr const WordElementKind* FindElementOfFormat(const ChunkFormatId& formatId) {
    for (const SListedWordKind& kind : kWordKinds)
        if (kind.row->formatId == formatId)
            return kind.element;
    return nullptr;
}

/// What visit<Element>() makes of the kind's element; `otherwise` for a value that is no kind.
template <class Result, class Visit>
constexpr Result VisitElementOf(EWordKind kind, Result otherwise, const Visit& visit) {
    switch (kind) {
#define TREVOLT_ELEMENT_CASE(name, element, sizes)                                                 \
    case EWordKind::name:                                                                          \
        return visit.template operator()<element>();
        TREVOLT_WORD_KINDS(TREVOLT_ELEMENT_CASE)
#undef TREVOLT_ELEMENT_CASE
    }
    return otherwise;
}

} // namespace trevolt
