#include "formats/TextScan.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>

#include "common/TextConversion.h"

namespace trevolt {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

/// Where the first digit other than 0 stands in a mantissa: the number of places before the point,
/// counted from it, negative behind it.
std::int64_t LeadingPlace(std::string_view mantissa) {
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t first = mantissa.find_first_not_of("0.");
    return static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
}

/// The float32 nearest to mantissa × base^exponent, given as the text `number` whose beginning is
/// `mantissa`.
float ToFloat(std::string_view number, std::string_view mantissa, std::int32_t exponent,
              bool hexadecimal) {
    const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
    float value = 0.0F;
    const auto result =
        std::from_chars(number.data(), number.data() + number.size(), value, format);
    if (result.ec != std::errc::result_out_of_range)
        return value;
    const std::int64_t bitsOrDecades = hexadecimal ? 4 : 1;
    return LeadingPlace(mantissa) * bitsOrDecades + exponent > 0 ? kInfinity : 0.0F;
}

} // namespace

bool CTextScan::TakeInteger(std::int32_t& value) {
    SkipBlanks();
    const auto taken = TakeSaturatedInteger(m_at, std::unreachable_sentinel); // the NUL is no digit
    value = taken.value_or(value);
    return taken.has_value();
}

bool CTextScan::TakeAnyReal(float& value) {
    const bool negative = *m_at == '-';
    if (negative || *m_at == '+')
        ++m_at;
    float magnitude = 0.0F;
    if (!TakeNamed(magnitude) && !TakeNumber(magnitude))
        return false;
    value = negative ? -magnitude : magnitude;
    return true;
}

bool CTextScan::TakeWord(std::string_view lowerCase) {
    const char* at = m_at;
    for (const char c : lowerCase)
        if (ToLower(*at++) != c)
            return false;
    m_at = at;
    return true;
}

/// "inf", "infinity" and "nan". What begins a longer name must be the whole of it.
bool CTextScan::TakeNamed(float& magnitude) {
    if (TakeWord("nan")) {
        magnitude = std::numeric_limits<float>::quiet_NaN();
        return true;
    }
    magnitude = kInfinity;
    return TakeWord("inf") && (ToLower(*m_at) != 'i' || TakeWord("inity"));
}

bool CTextScan::TakeNumber(float& magnitude) {
    const bool hexadecimal = TakeWord("0x");
    const char* const begin = m_at;
    std::ptrdiff_t digits = TakeDigits(hexadecimal);
    const bool hasPoint = TakeLiteral(".");
    if (hasPoint)
        digits += TakeDigits(hexadecimal);
    if (digits == 0) { // of "0x." the 0 is a number, and the rest is taken with it
        magnitude = 0.0F;
        return hexadecimal && hasPoint;
    }
    const std::string_view mantissa(begin, static_cast<std::size_t>(m_at - begin));
    const std::int32_t exponent = TakeExponent(hexadecimal ? 'p' : 'e');
    magnitude =
        ToFloat({begin, static_cast<std::size_t>(m_at - begin)}, mantissa, exponent, hexadecimal);
    return true;
}

/// Takes digits and tells how many.
std::ptrdiff_t CTextScan::TakeDigits(bool hexadecimal) {
    const char* const begin = m_at;
    const auto isWanted = [hexadecimal](char c) {
        const char lower = ToLower(c);
        return IsDigit(c) || (hexadecimal && lower >= 'a' && lower <= 'f');
    };
    while (isWanted(*m_at))
        ++m_at;
    return m_at - begin;
}

/// Takes an exponent when there is one; 0 without digits.
std::int32_t CTextScan::TakeExponent(char mark) {
    if (ToLower(*m_at) != mark)
        return 0;
    ++m_at;
    std::int32_t exponent = 0;
    if (!IsBlank(*m_at))
        TakeInteger(exponent); // takes a sign without digits too
    return exponent;
}

} // namespace trevolt
