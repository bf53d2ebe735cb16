// What the tests of the coefficient objects share: the four kinds as types, stores with content,
// and the words of a pixel whatever the kind.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/ColorCorrectCoefSlots.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"
#include "tests/support/TestFiles.h"

namespace trevolt::test {

/// What the tests must know of a kind, in figures of their own.
template <class Object>
struct KindOf;
template <>
struct KindOf<CCNewBrightCorrectCoef> {
    using Element = S3WordCoef;
    static constexpr CoefKinds kKind = kBright;
    static constexpr ChunkFormatId kFormat{0x7F, 0x5D, 0x55, 0x81, 0x30, 0x5A, 0x58, 0x49,
                                           0xB7, 0x65, 0x9E, 0x3D, 0x63, 0xB7, 0x28, 0xE8};
    static constexpr Status kOutputOpenFailed = E_HANDLE;
    static constexpr std::size_t kRecordBytes = 56;
    static constexpr auto kSize = &CColorCorrectCoef::GetBrightCoefSize;
    static constexpr auto kInfo = &CColorCorrectCoef::GetBrightCoefInfo;
    static constexpr auto kTurnedBand = &CColorCorrectCoef::SaveTurnedBandB;
    static constexpr auto kTurnedFile = &CColorCorrectCoef::SaveTurnedFileB;
    static constexpr const wchar_t* kSampleName = L"Cab_07";
    static constexpr const wchar_t* kSampleExtension = L".3wcoef";
};
template <>
struct KindOf<CCNewChromaCorrectCoef> {
    using Element = S9WordCoef;
    static constexpr CoefKinds kKind = kChroma;
    static constexpr ChunkFormatId kFormat{0x8F, 0xB0, 0x2E, 0x6F, 0x95, 0xC3, 0x16, 0x40,
                                           0x84, 0x20, 0xFB, 0xC1, 0x66, 0x14, 0xB3, 0x0A};
    static constexpr Status kOutputOpenFailed = E_COEF_OPENFAILED;
    static constexpr std::size_t kRecordBytes = 56;
    static constexpr auto kSize = &CColorCorrectCoef::GetChromaCoefSize;
    static constexpr auto kInfo = &CColorCorrectCoef::GetChromaCoefInfo;
    static constexpr auto kTurnedBand = &CColorCorrectCoef::SaveTurnedBandC;
    static constexpr auto kTurnedFile = &CColorCorrectCoef::SaveTurnedFileC;
    static constexpr const wchar_t* kSampleName = L"Cab_06";
    static constexpr const wchar_t* kSampleExtension = L".9wcoef";
};
template <>
struct KindOf<CVirtualGreenBrightCorrectCoef> {
    using Element = S4WordCoef;
    static constexpr CoefKinds kKind = kGreenBright;
    static constexpr ChunkFormatId kFormat{0x78, 0x7D, 0x75, 0xE8, 0xA0, 0x79, 0xD0, 0x47,
                                           0xAF, 0x66, 0x80, 0xF6, 0x1B, 0x2F, 0xB4, 0x79};
    static constexpr Status kOutputOpenFailed = E_HANDLE;
    static constexpr std::size_t kRecordBytes = 68;
    static constexpr auto kSize = &CColorCorrectCoef::GetVBCoefSize;
    static constexpr auto kInfo = &CColorCorrectCoef::GetVBCoefInfo;
    static constexpr auto kTurnedBand = &CColorCorrectCoef::SaveTurnedBandVB;
    static constexpr auto kTurnedFile = &CColorCorrectCoef::SaveTurnedFileVB;
    static constexpr const wchar_t* kSampleName = L"Cab_08";
    static constexpr const wchar_t* kSampleExtension = L".4wcoef";
};
template <>
struct KindOf<CVirtualGreenChromaCorrectCoef> {
    using Element = S12WordCoef;
    static constexpr CoefKinds kKind = kGreenChroma;
    static constexpr ChunkFormatId kFormat{0xB6, 0x52, 0xF1, 0xDF, 0x3F, 0x8A, 0x68, 0x4C,
                                           0xA5, 0x38, 0xB7, 0x24, 0xDA, 0xCB, 0x6B, 0xF4};
    static constexpr Status kOutputOpenFailed = E_HANDLE;
    static constexpr std::size_t kRecordBytes = 68;
    static constexpr auto kSize = &CColorCorrectCoef::GetVCCoefSize;
    static constexpr auto kInfo = &CColorCorrectCoef::GetVCCoefInfo;
    static constexpr auto kTurnedBand = &CColorCorrectCoef::SaveTurnedBandVC;
    static constexpr auto kTurnedFile = &CColorCorrectCoef::SaveTurnedFileVC;
    static constexpr const wchar_t* kSampleName = L"Cab_09";
    static constexpr const wchar_t* kSampleExtension = L".12wcoef";
};

using AllKinds = ::testing::Types<CCNewBrightCorrectCoef, CCNewChromaCorrectCoef,
                                  CVirtualGreenBrightCorrectCoef, CVirtualGreenChromaCorrectCoef>;
/// The kinds that load and save through a coefficient map.
using MapKinds = ::testing::Types<CCNewBrightCorrectCoef, CCNewChromaCorrectCoef>;
using GreenKinds = ::testing::Types<CVirtualGreenBrightCorrectCoef, CVirtualGreenChromaCorrectCoef>;

template <class Object>
using ElementOf = typename KindOf<Object>::Element;

template <class Object>
constexpr std::size_t kWordsOf = ElementOf<Object>{}.w.size();

/// The map value behind word k; none for the virtual-green words, which no file of a map holds.
template <class Object>
constexpr std::optional<std::size_t> MapValueOf(std::size_t k) {
    using Value = std::optional<std::size_t>;
    constexpr std::array<Value, 12> kGreenChromaValues{0, 1, {}, 2, 3, 4, {}, 5, 6, 7, {}, 8};
    constexpr std::array<Value, 4> kGreenBrightValues{0, 4, {}, 8};
    switch (kWordsOf<Object>) {
    case 3:
        return 4 * k;
    case 4:
        return kGreenBrightValues[k];
    case 12:
        return kGreenChromaValues[k];
    default:
        return k;
    }
}

/// The word that pixel (x, y) gets from `FillWithPattern`.
constexpr std::uint16_t PatternWord(std::uint32_t x, std::uint32_t y, std::size_t k) {
    return static_cast<std::uint16_t>(x * 193U + y * 7919U + k * 4111U + 5U);
}

template <class Element>
Element PatternElement(std::uint32_t x, std::uint32_t y) {
    Element element;
    for (std::size_t k = 0; k < element.w.size(); ++k)
        element.w[k] = PatternWord(x, y, k);
    return element;
}

/// Gives every pixel of the object's store, and of the chroma kind's second one, words of its own.
template <class Object>
void FillWithPattern(Object& object) {
    for (std::uint32_t y = 0; y < object.GetHeight(); ++y)
        for (std::uint32_t x = 0; x < object.GetWidth(); ++x) {
            if (auto* pixel = object.FindPixel(x, y))
                *pixel = PatternElement<ElementOf<Object>>(x, y);
            if constexpr (std::is_same_v<Object, CCNewChromaCorrectCoef>)
                if (auto* extra = object.FindExtraWord(x, y))
                    extra->w[0] = PatternWord(x, y, 9);
        }
}

/// An object with a pattern of this size.
template <class Object>
void CreateWithPattern(Object& object, std::uint16_t width, std::uint16_t height) {
    ASSERT_EQ(object.Create(width, height), S_OK);
    FillWithPattern(object);
}

template <class Object>
std::wstring DigestOf(const Object& object) {
    std::wstring digest;
    EXPECT_EQ(object.GetStoreDigest(digest), S_OK);
    return digest;
}

/// The kind's cabinet among the samples, or what it turns to: `angle` is part of its name.
template <class Object>
std::wstring CabinetSample(const std::wstring& folder = L"cabinet",
                           const std::wstring& angle = L"") {
    return Sample(folder + L"/" + KindOf<Object>::kSampleName + angle +
                  KindOf<Object>::kSampleExtension);
}

/// The header of a word file.
inline SChunkHeader HeaderOf(const Bytes& file) {
    EXPECT_GE(file.size(), kChunkHeaderBytes);
    return DecodeChunkHeader(file.data());
}

/// The whole of an object's store.
inline SPixelRect Whole(const CColorCorrectCoef& object) {
    return {0, 0, static_cast<std::int32_t>(object.GetWidth()),
            static_cast<std::int32_t>(object.GetHeight())};
}

/// Words of a pixel, the default element's for a missing one.
template <class Object>
auto WordsAt(const Object& object, std::uint32_t x, std::uint32_t y) {
    const auto* pixel = object.FindPixel(x, y);
    return pixel == nullptr ? ElementOf<Object>{}.w : pixel->w;
}

/// Whether both stores have the same size and the same words in every pixel.
template <class Object>
::testing::AssertionResult SamePixels(const Object& a, const Object& b) {
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight())
        return ::testing::AssertionFailure() << "sizes differ";
    for (std::uint32_t y = 0; y < a.GetHeight(); ++y)
        for (std::uint32_t x = 0; x < a.GetWidth(); ++x)
            if (WordsAt(a, x, y) != WordsAt(b, x, y))
                return ::testing::AssertionFailure() << "pixel " << x << ", " << y << " differs";
    return ::testing::AssertionSuccess();
}

} // namespace trevolt::test
