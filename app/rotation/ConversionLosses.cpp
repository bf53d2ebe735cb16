#include "app/rotation/ConversionLosses.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <string_view>

#include <fmt/format.h>

#include "app/rotation/SamePixel.h"
#include "formats/SanitizeMatrix.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr std::size_t kMatrixValues = 9;

/// A value that is stored in so many bits as a part of the largest one, rounded with halves away from 0.
template <class Integer>
void CountFixedPoint(float value, SConversionLosses& losses) {
    constexpr float kOne = std::numeric_limits<Integer>::max();
    constexpr float kIntegers = 9223372036854775808.0F; // 2^63
    const float scaled = value * kOne;
    if (scaled > -0.5F && scaled < kOne + 0.5F) {
        const auto stored = static_cast<Integer>(scaled); // a value that is held comes out whole
        losses.roundedValues += static_cast<float>(stored) / kOne != value ? 1U : 0U;
    } else if (scaled >= -kIntegers && scaled < kIntegers) {
        ++losses.wrappedValues;
    } else {
        ++losses.zeroedValues;
    }
}

/// The value that is read where this one was written with five decimals.
float WithFiveDecimals(float value) {
    constexpr double kDecimals = 1e5; // the product is exact
    const double scaled = std::nearbyint(static_cast<double>(value) * kDecimals);
    return static_cast<float>(scaled / kDecimals);
}

/// Whether each stored value is one of the form's, too: every 255th is a whole number of 65535ths.
bool HoldsValuesOf(EStoredValue source, EStoredValue form) {
    switch (form) {
    case EStoredValue::Float:
        return true;
    case EStoredValue::Word:
        return source == EStoredValue::Word || source == EStoredValue::Byte;
    case EStoredValue::Byte:
        return source == EStoredValue::Byte;
    case EStoredValue::Text:
        break;
    }
    return false;
}

bool HoldsAnyBesideMatrix(const SElementForm& form) {
    return (form.Values() & ~kWholeMatrix).any();
}

bool IsSame(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

/// A pixel that has a line.
void CountText(const SMatrixCoef& pixel, SConversionLosses& losses) {
    std::array<float, kMatrixValues> written{};
    std::transform(pixel.m.begin(), pixel.m.begin() + kMatrixValues, written.begin(),
                   WithFiveDecimals);
    std::array<float, kMatrixValues> read = written;
    SanitizeMatrix(read);
    for (std::size_t k = 0; k < kMatrixValues; ++k)
        if (!IsSame(read[k], written[k]))
            ++losses.cleanedValues;
        else if (!IsSame(written[k], pixel.m[k]))
            ++losses.roundedValues;
}

/// Counts what a form loses, pixel by pixel.
class CLossCount {
  public:
    explicit CLossCount(const SElementForm& form) : m_form(form) {
        const MapValues held = form.Values();
        for (const std::uint8_t place : kMapForm.places)
            if (!held.test(place))
                (kWholeMatrix.test(place) ? m_offDiagonal : m_besideMatrix).push_back(place);
    }

    void Add(const SMatrixCoef& pixel) {
        if (IsAnyLost(pixel, m_offDiagonal))
            ++m_losses.offDiagonalPixels;
        if (IsAnyLost(pixel, m_besideMatrix))
            ++m_losses.besideMatrixPixels;
        AddStored(pixel);
    }

    const SConversionLosses& Losses() const { return m_losses; }

  private:
    /// Whether a value differs from the default, which is read in its place.
    bool IsAnyLost(const SMatrixCoef& pixel, const std::vector<std::uint8_t>& places) const {
        return std::ranges::any_of(
            places, [&](std::uint8_t place) { return pixel.m[place] != m_default.m[place]; });
    }

    void AddStored(const SMatrixCoef& pixel) {
        switch (m_form.value) {
        case EStoredValue::Float:
            break;
        case EStoredValue::Word:
            AddFixedPoint<std::uint16_t>(pixel);
            break;
        case EStoredValue::Byte:
            AddFixedPoint<std::uint8_t>(pixel);
            break;
        case EStoredValue::Text:
            AddText(pixel);
            break;
        }
    }

    template <class Integer>
    void AddFixedPoint(const SMatrixCoef& pixel) {
        for (const std::uint8_t place : m_form.Places())
            CountFixedPoint<Integer>(pixel.m[place], m_losses);
    }

    void AddText(const SMatrixCoef& pixel) {
        if (HasSameBits(pixel, m_default))
            ++m_losses.defaultPixels;
        else
            CountText(pixel, m_losses);
    }

    const SElementForm m_form;
    const SMatrixCoef m_default;
    std::vector<std::uint8_t> m_offDiagonal; ///< places that the form does not hold
    std::vector<std::uint8_t> m_besideMatrix;
    SConversionLosses m_losses;
};

/// What a value is stored as, and how.
struct SStoredText {
    EStoredValue value = EStoredValue::Float; // of which nothing is told
    std::string_view wrapped;
    std::string_view rounded;
};

constexpr std::array kStoredTexts{
    SStoredText{EStoredValue::Word, "the low 16 bits of value x 65535", "whole 65535ths"},
    SStoredText{EStoredValue::Byte, "the low 8 bits of value x 255", "whole 255ths"},
    SStoredText{EStoredValue::Text, "", "five decimals"},
};

/// How a loss is told: of a single pixel or value, and of several.
struct SLossText {
    std::uint64_t SConversionLosses::*count;
    std::string_view one;
    std::string_view several;
    std::string_view rest; ///< may name {target}, {wrapped} and {rounded}
};

constexpr std::array kLossTexts{
    SLossText{&SConversionLosses::offDiagonalPixels, "pixel has", "pixels have",
              "entries off the diagonal, which {target} does not hold"},
    SLossText{&SConversionLosses::besideMatrixPixels, "pixel has", "pixels have",
              "values beside the matrix, which {target} does not hold"},
    SLossText{&SConversionLosses::zeroedValues, "value is no number", "values are no numbers",
              "or beyond all integers and became 0"},
    SLossText{&SConversionLosses::wrappedValues, "value is", "values are",
              "out of the range 0 to 1 and wrapped: {wrapped} stand there"},
    SLossText{&SConversionLosses::cleanedValues, "value is", "values are",
              "changed when the text is read, which takes values from 0 to 1 and columns whose sum "
              "is 1 at most"},
    SLossText{&SConversionLosses::roundedValues, "value is", "values are", "rounded to {rounded}"},
};

} // namespace

bool HoldsAllOf(const SElementForm& source, const SElementForm& form) {
    return HoldsValuesOf(source.value, form.value) && (source.Values() & ~form.Values()).none();
}

std::string DescribeDefaultsBeside(const SElementForm& source, const SFileKind& kind) {
    if (HoldsAnyBesideMatrix(source) || !HoldsAnyBesideMatrix(FormOfKind(kind)))
        return {};
    return fmt::format("it holds no values beside the matrix: those of {} are the default 0, 1, 0",
                       WideToShownUtf8(kind.extension));
}

SConversionLosses CountLosses(const CChromaCorrectCoef& map, const SPixelRect& rect,
                              const SElementForm& form) {
    CLossCount count(form);
    for (std::int32_t y = rect.top; y < rect.bottom; ++y)
        for (std::int32_t x = rect.left; x < rect.right; ++x)
            count.Add(map.ElementOrDefault(x, y));
    return count.Losses();
}

SConversionLosses CountLosses(const CChromaCorrectCoef& map, const SElementForm& form) {
    return CountLosses(map, {0, 0, map.Width(), map.Height()}, form);
}

std::vector<std::string> DescribeLosses(const SConversionLosses& losses, const SElementForm& form,
                                        const std::string& target) {
    const auto* const stored = std::ranges::find(kStoredTexts, form.value, &SStoredText::value);
    const SStoredText how = stored == kStoredTexts.end() ? SStoredText{} : *stored;
    std::vector<std::string> told;
    for (const SLossText& loss : kLossTexts)
        if (const std::uint64_t count = losses.*loss.count; count != 0)
            told.push_back(fmt::format(
                "{} {} {}", count, count == 1 ? loss.one : loss.several,
                fmt::format(fmt::runtime(loss.rest), fmt::arg("target", target),
                            fmt::arg("wrapped", how.wrapped), fmt::arg("rounded", how.rounded))));
    return told;
}

std::vector<std::string> DescribeLosses(const CChromaCorrectCoef& map, const SPixelRect& rect,
                                        const SFileKind& kind) {
    const SElementForm& form = FormOfKind(kind);
    return DescribeLosses(CountLosses(map, rect, form), form, WideToShownUtf8(kind.extension));
}

} // namespace trevolt
