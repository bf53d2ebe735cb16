// Text without what stands around it.
#pragma once

#include <array>
#include <string_view>

namespace trevolt {

/// `text` without the blanks and tabs around it.
template <class Char>
constexpr std::basic_string_view<Char> Trimmed(std::basic_string_view<Char> text) {
    constexpr std::array<Char, 3> kBlanks{' ', '\t', '\0'};
    const auto first = text.find_first_not_of(kBlanks.data());
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks.data()) - first + 1);
}

} // namespace trevolt
