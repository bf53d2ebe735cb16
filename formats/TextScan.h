// CTextScan: takes numbers and literals from a line as C's scanf does in the C locale, whatever
// the process's locale is. Used by one thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace trevolt {

class CTextScan {
  public:
    /// Scans `line`, which must be followed by a NUL in memory and outlive the scan. A NUL in it
    /// ends the scan, as it ends a C string.
    explicit CTextScan(std::string_view line) : m_at(line.data()) {}

    /// Takes `text` when it stands here; else false.
    bool TakeLiteral(std::string_view text) {
        const char* at = m_at;
        for (const char c : text)
            if (*at++ != c)
                return false;
        m_at = at;
        return true;
    }

    /// As "%d": leading blanks, an optional sign, decimal digits. Numbers that no int32 holds
    /// saturate. False, and `value` unchanged, when there is none.
    bool TakeInteger(std::int32_t& value);

    /// As "%f": leading blanks, an optional sign, then a decimal or hexadecimal number, "inf",
    /// "infinity" or "nan" in any case, rounded correctly to float32; too large ones are infinite
    /// and too small ones 0. An exponent mark without digits is taken and counts as none. False,
    /// and `value` unchanged, when there is none.
    bool TakeReal(float& value) {
        SkipBlanks();
        return TakeShortDecimal(value) || TakeAnyReal(value);
    }

    /// Takes blanks; whether the scan then stands at `end`, where its line ends.
    bool TakeBlanksTo(const char* end) {
        SkipBlanks();
        return m_at == end;
    }

  private:
    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }
    static bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

    void SkipBlanks() {
        while (IsBlank(*m_at))
            ++m_at;
    }

    /// Takes a number such as "0.81630": digits and a point, nothing else. When both the digits
    /// without the point and the power of ten are exact as float32, their quotient is the correctly
    /// rounded number. False, and nothing is taken, for other texts.
    bool TakeShortDecimal(float& value) {
        const char* at = m_at;
        const bool negative = *at == '-';
        at += negative ? 1 : 0;
        const char* const wholeBegin = at;
        std::uint32_t digits = 0;
        for (; IsDigit(*at); ++at)
            digits = digits * 10 + static_cast<std::uint32_t>(*at - '0');
        auto digitCount = at - wholeBegin;
        std::ptrdiff_t decimals = 0;
        if (*at == '.') {
            const char* const fractionBegin = ++at;
            for (; IsDigit(*at); ++at)
                digits = digits * 10 + static_cast<std::uint32_t>(*at - '0');
            decimals = at - fractionBegin;
            digitCount += decimals;
        }
        if (digitCount < 1 || digitCount > kShortDigits || digits > kLargestExact ||
            ContinuesNumber(*at))
            return false;
        const float quotient =
            static_cast<float>(digits) / kPowersOfTen[static_cast<std::size_t>(decimals)];
        value = negative ? -quotient : quotient;
        m_at = at;
        return true;
    }

    /// Whether `c` behind digits begins an exponent or turns a 0 into a hexadecimal prefix.
    static bool ContinuesNumber(char c) {
        const auto lower = static_cast<char>(c | 0x20);
        return lower == 'e' || lower == 'x';
    }

    bool TakeAnyReal(float& value);
    bool TakeWord(std::string_view lowerCase);
    bool TakeNamed(float& magnitude);
    bool TakeNumber(float& magnitude);
    std::ptrdiff_t TakeDigits(bool hexadecimal);
    std::int32_t TakeExponent(char mark);

    static constexpr std::ptrdiff_t kShortDigits = 9;                      // fit a uint32
    static constexpr std::uint32_t kLargestExact = std::uint32_t{1} << 24; // as float32
    static constexpr std::array<float, kShortDigits + 1> kPowersOfTen{1e0F, 1e1F, 1e2F, 1e3F, 1e4F,
                                                                      1e5F, 1e6F, 1e7F, 1e8F, 1e9F};

    const char* m_at;
};

} // namespace trevolt
