// Text conversions that never look at the process's locale.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
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

/// The decimal integer that `text` begins with, after blanks and with an optional sign, kept inside
/// int32; 0 when it begins with none.
inline std::int32_t LeadingInteger(std::wstring_view text) {
    constexpr std::int64_t kBeyondInt32 = std::int64_t{1} << 32;
    text.remove_prefix(std::min(text.find_first_not_of(L" \t"), text.size()));
    const bool isNegative = text.starts_with(L'-');
    if (isNegative || text.starts_with(L'+'))
        text.remove_prefix(1);
    std::int64_t value = 0;
    for (const wchar_t c : text) {
        if (c < L'0' || c > L'9')
            break;
        value = std::min(value * 10 + (c - L'0'), kBeyondInt32);
    }
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(isNegative ? -value : value, Limits::min(), Limits::max()));
}

} // namespace trevolt
