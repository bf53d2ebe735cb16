// Text conversions that never look at the process's locale.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace trevolt {

/// `text` with A to Z folded to a to z; every other character stays.
inline std::wstring ToLowerAscii(std::wstring_view text) {
    std::wstring lowered(text);
    for (wchar_t& c : lowered)
        if (c >= L'A' && c <= L'Z')
            c = static_cast<wchar_t>(c - L'A' + L'a');
    return lowered;
}

/// Takes the decimal integer that stands at `at`, with an optional sign, and moves `at` behind it:
/// the integer, kept inside int32. Nothing without a digit; a sign is taken then all the same.
template <class Iterator, class Sentinel>
std::optional<std::int32_t> TakeSaturatedInteger(Iterator& at, Sentinel end) {
    constexpr std::int64_t kBeyondInt32 = std::int64_t{1} << 32;
    const bool isNegative = at != end && *at == '-';
    if (isNegative || (at != end && *at == '+'))
        ++at;
    const Iterator firstDigit = at;
    std::int64_t magnitude = 0;
    for (; at != end && *at >= '0' && *at <= '9'; ++at)
        magnitude = std::min(magnitude * 10 + (*at - '0'), kBeyondInt32);
    if (at == firstDigit)
        return std::nullopt;
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(isNegative ? -magnitude : magnitude,
                                                              Limits::min(), Limits::max()));
}

/// The decimal integer that `text` begins with, after blanks and with an optional sign, kept inside
/// int32; 0 when it begins with none.
inline std::int32_t LeadingInteger(std::wstring_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(L" \t"), text.size()));
    auto at = text.begin();
    return TakeSaturatedInteger(at, text.end()).value_or(0);
}

} // namespace trevolt
