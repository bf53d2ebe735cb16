#include "formats/TextNumber.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace trevolt {
namespace {

constexpr std::uint32_t kUnitsInOne = 100000; // five decimals
constexpr double kShortLimit = 1e9;           // units that fit a uint32 with their rounding

char* WriteText(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

char* WriteAnyFixed5(char* out, float value) {
    if (std::isnan(value))
        return WriteText(out, "nan");
    if (std::isinf(value))
        return WriteText(out, value < 0 ? "-inf" : "inf");
    return std::to_chars(out, out + kFixed5Chars, static_cast<double>(value),
                         std::chars_format::fixed, 5)
        .ptr;
}

/// Nearest integer, ties to even. `value` is at least 0 and below the short limit.
std::uint32_t RoundToEven(double value) {
    const auto whole = static_cast<std::uint32_t>(value);
    const double rest = value - whole; // exact
    const bool up = rest > 0.5 || (rest == 0.5 && (whole & 1U) != 0);
    return whole + (up ? 1U : 0U);
}

char* WriteWhole(char* out, std::uint32_t value) {
    if (value >= 10)
        return std::to_chars(out, out + kFixed5Chars, value).ptr;
    *out = static_cast<char>('0' + value);
    return out + 1;
}

} // namespace

char* WriteFixed5(char* out, float value) {
    // 24 bits of the float times 12 bits of 3125 (100000 is 3125 × 2^5): the product is exact.
    const double units = std::fabs(static_cast<double>(value)) * kUnitsInOne;
    if (!(units < kShortLimit))
        return WriteAnyFixed5(out, value);
    const std::uint32_t rounded = RoundToEven(units);
    if (std::signbit(value))
        *out++ = '-';
    out = WriteWhole(out, rounded / kUnitsInOne);
    *out++ = '.';
    std::uint32_t decimals = rounded % kUnitsInOne;
    for (int k = 4; k >= 0; --k, decimals /= 10)
        out[k] = static_cast<char>('0' + decimals % 10);
    return out + 5;
}

char* WritePadded5(char* out, std::uint32_t value) {
    std::memset(out, ' ', kPadded5Chars);
    char* const end = out + kPadded5Chars;
    char* digit = end;
    do {
        *--digit = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    return end;
}

} // namespace trevolt
