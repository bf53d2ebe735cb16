// What tells one kind of word store from another: one row a kind. A new kind is an element struct
// (calibuf/WordElements.h) and a row here; only its own oddities need code.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "calibuf/ChunkLayout.h"
#include "calibuf/WordElementKind.h"
#include "trevolt/ColorCorrectCoef.h"
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

struct SWordKind {
    ChunkFormatId formatId;
    /// Header byte 67 holds the object's file-kind value and must match when loading.
    bool hasFileKind;
    /// The answer when a file does not open for a rectangle or a band.
    Status outputOpenFailed;
    /// The rectangle's extent that must not be 0 for its blocks to be written.
    std::int64_t (SPixelRect::*writtenExtent)() const;
    /// The object's operation that tells the size of a file of the kind.
    Status (CColorCorrectCoef::*querySize)(const wchar_t* path, std::uint32_t& width,
                                           std::uint32_t& height);
    SChannelRule fillChannel; ///< of FillRectChannel
    SChannelRule setChannel;  ///< of SetPixelChannel
    SChannelRule readChannel; ///< of the float transfers
    /// The coefficient map's value behind each word.
    std::array<std::uint8_t, kMaxWords> mapValues;
    /// Words that a map element becomes; those past the element's own go to the next one in memory.
    std::size_t convertedWords;
};

inline constexpr SChannelRule kModulo3{true, 3};
inline constexpr SChannelRule kModulo4{true, 4};
inline constexpr SChannelRule kNineWords{false, 9};
inline constexpr SChannelRule kTwelveWords{false, 12};

/// The row of an element's kind; an element without one does not build.
template <class Element>
extern const SWordKind kWordKind;

template <>
inline constexpr SWordKind kWordKind<S3WordCoef>{.formatId = kBrightChunkFormat,
                                                 .hasFileKind = false,
                                                 .outputOpenFailed = E_HANDLE,
                                                 .writtenExtent = &SPixelRect::Width,
                                                 .querySize = &CColorCorrectCoef::GetBrightCoefSize,
                                                 .fillChannel = kModulo3,
                                                 .setChannel = kModulo3,
                                                 .readChannel = kModulo3,
                                                 .mapValues = {0, 4, 8},
                                                 .convertedWords = 3};

template <>
inline constexpr SWordKind kWordKind<S9WordCoef>{
    .formatId = kChromaChunkFormat,
    .hasFileKind = false,
    .outputOpenFailed = E_COEF_OPENFAILED,
    .writtenExtent = &SPixelRect::Width,
    .querySize = &CColorCorrectCoef::GetChromaCoefSize,
    .fillChannel = kModulo3,
    .setChannel = kModulo3,
    .readChannel = kNineWords,
    .mapValues = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
    .convertedWords = 12};

template <>
inline constexpr SWordKind kWordKind<S4WordCoef>{.formatId = kVirtualGreenBrightChunkFormat,
                                                 .hasFileKind = true,
                                                 .outputOpenFailed = E_HANDLE,
                                                 .writtenExtent = &SPixelRect::Height,
                                                 .querySize = &CColorCorrectCoef::GetVBCoefSize,
                                                 .fillChannel = kModulo4,
                                                 .setChannel = kModulo4,
                                                 .readChannel = kModulo4,
                                                 .mapValues = {0, 4, 10, 8},
                                                 .convertedWords = 4};

template <>
inline constexpr SWordKind kWordKind<S12WordCoef>{
    .formatId = kVirtualGreenChromaChunkFormat,
    .hasFileKind = true,
    .outputOpenFailed = E_HANDLE,
    .writtenExtent = &SPixelRect::Height,
    .querySize = &CColorCorrectCoef::GetVCCoefSize,
    .fillChannel = kModulo4,
    .setChannel = kTwelveWords,
    .readChannel = kTwelveWords,
    .mapValues = {0, 1, 9, 2, 3, 4, 10, 5, 6, 7, 11, 8},
    .convertedWords = 12};

/// What files of one word format have of each pixel.
struct SWordFormat {
    ChunkFormatId formatId;
    const WordElementKind* element;
};

template <class Element>
inline constexpr SWordFormat kWordFormat{kWordKind<Element>.formatId, &kWordElementKind<Element>};

inline constexpr std::array kWordFormats{kWordFormat<S3WordCoef>, kWordFormat<S9WordCoef>,
                                         kWordFormat<S4WordCoef>, kWordFormat<S12WordCoef>};

/// The element that word files of this format have; null for the format of no kind.
constexpr const WordElementKind* FindElementOfFormat(const ChunkFormatId& formatId) {
    for (const SWordFormat& format : kWordFormats)
        if (format.formatId == formatId)
            return format.element;
    return nullptr;
}

} // namespace trevolt
